"""A picture that is drawn from flat shapes, and its file."""
import math
import random

import cairo
from PIL import Image

WIDTH, HEIGHT = 1200, 500
SCALE = 2  # drawn twice as large, so that thin lines come out smooth
LARGEST = 60_000  # bytes: the picture travels with every message


class Canvas:
    def __init__(self, seed):
        self.surface = cairo.ImageSurface(cairo.FORMAT_RGB24, WIDTH * SCALE, HEIGHT * SCALE)
        self.pen = cairo.Context(self.surface)
        self.pen.scale(SCALE, SCALE)
        self.pen.set_line_cap(cairo.LINE_CAP_ROUND)
        self.pen.set_line_join(cairo.LINE_JOIN_ROUND)
        self.chance = random.Random(seed)

    def colour(self, hex_digits, alpha=1.0):
        self.pen.set_source_rgba(*(int(hex_digits[i:i + 2], 16) / 255 for i in (1, 3, 5)), alpha)

    def fill(self, hex_digits, alpha=1.0):
        self.colour(hex_digits, alpha)
        self.pen.fill()

    def stroke(self, hex_digits, width, alpha=1.0):
        self.colour(hex_digits, alpha)
        self.pen.set_line_width(width)
        self.pen.stroke()

    def sky(self, *stops, top=0, bottom=HEIGHT):
        shade = cairo.LinearGradient(0, top, 0, bottom)
        for place, hex_digits in stops:
            shade.add_color_stop_rgb(place, *(int(hex_digits[i:i + 2], 16) / 255 for i in (1, 3, 5)))
        self.pen.set_source(shade)
        self.pen.rectangle(0, top, WIDTH, bottom - top)
        self.pen.fill()

    def box(self, x, y, width, height, hex_digits, radius=0.0, alpha=1.0):
        if radius:
            self.pen.new_sub_path()
            for cx, cy, turn in ((x + width - radius, y + radius, -1), (x + width - radius, y + height - radius, 0),
                                 (x + radius, y + height - radius, 1), (x + radius, y + radius, 2)):
                self.pen.arc(cx, cy, radius, turn * math.pi / 2, (turn + 1) * math.pi / 2)
            self.pen.close_path()
        else:
            self.pen.rectangle(x, y, width, height)
        self.fill(hex_digits, alpha)

    def disc(self, x, y, radius, hex_digits, alpha=1.0):
        self.oval(x, y, radius, radius, hex_digits, alpha)

    def oval_path(self, x, y, across, down, begin=0.0, end=2 * math.pi):
        self.pen.save()
        self.pen.translate(x, y)
        self.pen.scale(across, down)
        self.pen.arc(0, 0, 1, begin, end)
        self.pen.restore()

    def oval(self, x, y, across, down, hex_digits, alpha=1.0):
        self.pen.new_path()
        self.oval_path(x, y, across, down)
        self.fill(hex_digits, alpha)

    def shape(self, points, hex_digits, alpha=1.0):
        self.pen.move_to(*points[0])
        for point in points[1:]:
            self.pen.line_to(*point)
        self.pen.close_path()
        self.fill(hex_digits, alpha)

    def line(self, points, hex_digits, width, alpha=1.0):
        self.pen.move_to(*points[0])
        for point in points[1:]:
            self.pen.line_to(*point)
        self.stroke(hex_digits, width, alpha)

    def hills(self, base, height, length, phase, hex_digits, alpha=1.0):
        self.pen.move_to(0, HEIGHT)
        for x in range(0, WIDTH + 8, 8):
            wave = math.sin(x / length + phase) + 0.45 * math.sin(x / length * 2.3 + 2 * phase)
            self.pen.line_to(x, base - height * wave)
        self.pen.line_to(WIDTH, HEIGHT)
        self.pen.close_path()
        self.fill(hex_digits, alpha)

    def cloud(self, x, y, size, hex_digits="#ffffff", alpha=0.9):
        self.pen.push_group()
        self.box(x - 1.5 * size, y - 0.36 * size, 3 * size, 0.72 * size, hex_digits, 0.36 * size)
        self.disc(x - 0.45 * size, y - 0.35 * size, 0.55 * size, hex_digits)
        self.disc(x + 0.4 * size, y - 0.25 * size, 0.42 * size, hex_digits)
        self.pen.pop_group_to_source()
        self.pen.paint_with_alpha(alpha)

    def tree(self, x, ground, size, leaf, shade, trunk="#5b4636"):
        self.box(x - size * 0.05, ground - size * 0.5, size * 0.1, size * 0.5, trunk)
        self.oval(x, ground - size * 0.78, size * 0.33, size * 0.42, leaf)
        self.pen.save()
        self.pen.rectangle(x, ground - 2 * size, size, 2 * size)
        self.pen.clip()
        self.oval(x, ground - size * 0.78, size * 0.33, size * 0.42, shade)
        self.pen.restore()

    def leaf(self, x, y, length, angle, hex_digits, vein, alpha=1.0):
        self.pen.save()
        self.pen.translate(x, y)
        self.pen.rotate(math.radians(angle))
        self.pen.move_to(0, 0)
        self.pen.curve_to(length * 0.25, -length * 0.34, length * 0.75, -length * 0.3, length, 0)
        self.pen.curve_to(length * 0.75, length * 0.3, length * 0.25, length * 0.34, 0, 0)
        self.fill(hex_digits, alpha)
        self.pen.move_to(length * 0.04, 0)
        self.pen.line_to(length * 0.86, 0)
        for part in (0.3, 0.5, 0.68):
            for side in (-1, 1):
                self.pen.move_to(length * part, 0)
                self.pen.line_to(length * (part + 0.13), side * length * 0.13)
        self.stroke(vein, max(1.5, length / 70), 0.7)
        self.pen.restore()

    def save(self, file):
        picture = Image.frombuffer("RGB", (WIDTH * SCALE, HEIGHT * SCALE), bytes(self.surface.get_data()), "raw", "BGRX", 0, 1)
        picture = picture.resize((WIDTH, HEIGHT), Image.LANCZOS)
        for quality in range(90, 30, -3):
            picture.save(file, "JPEG", quality=quality, optimize=True, progressive=True, subsampling=0 if quality > 75 else 2)
            if file.stat().st_size <= LARGEST:
                return quality
        raise SystemExit(f"{file} is too large at any good quality")
