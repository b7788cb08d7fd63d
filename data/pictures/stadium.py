"""Runners on a track."""
import math

import cairo

from canvas import HEIGHT, WIDTH


def sports(c):
    """A track and its stand, lit in the evening."""
    stand(c)
    floodlights(c)
    track(c)
    runners(c)


def stand(c):
    c.sky((0, "#16284a"), (0.5, "#3b4f86"), (0.8, "#e58a5f"), (1, "#f6bd7d"), bottom=300)
    for n in range(30):
        c.disc(c.chance.uniform(0, 1200), c.chance.uniform(0, 110), c.chance.uniform(0.7, 1.7), "#ffffff", 0.7)
    c.shape([(0, 176), (420, 150), (780, 150), (1200, 176), (1200, 300), (0, 300)], "#22304f")
    c.shape([(0, 168), (420, 142), (780, 142), (1200, 168), (1200, 180), (420, 154), (0, 180)], "#dfe6f0")
    for row in range(5):
        for n in range(80):
            x = 6 + n * 15.2 + (row % 2) * 7.6
            rise = 26 * min(1, max(0, (420 - x) / 420) + max(0, (x - 780) / 420))
            if c.chance.random() < 0.92:
                c.disc(x, 180 + rise * 0.9 + row * 18, 5.8, c.chance.choice(("#ffd23f", "#f4f1de", "#ee6c4d", "#8fb8de", "#e8e9f3", "#5c7fb8")))
    c.box(0, 262, WIDTH, 26, "#f4f1de")
    for n, tone in enumerate(("#0f766e", "#1d4e89", "#c2410c", "#0f766e", "#1d4e89", "#c2410c", "#0f766e", "#1d4e89")):
        c.box(n * 150 + 6, 266, 138, 18, tone, 3)


def floodlights(c):
    for x in (150, 1050):
        c.shape([(x - 5, 262), (x + 5, 262), (x + 3, 60), (x - 3, 60)], "#cfd8e6")
        c.box(x - 52, 26, 104, 50, "#5b6b88", 6)
        for n in range(10):
            c.disc(x - 38 + (n % 5) * 19, 40 + (n // 5) * 22, 8, "#fffbe6")
        c.pen.move_to(x - 46, 76)
        c.pen.line_to(x - 220, 300)
        c.pen.line_to(x + 220, 300)
        c.pen.line_to(x + 46, 76)
        c.fill("#fff6cf", 0.10)


def track(c):
    c.sky((0, "#3f9a56"), (1, "#2f8048"), top=288, bottom=HEIGHT)
    for n in range(0, 14, 2):
        c.shape([(600 + (n - 7) * 70, 288), (600 + (n - 6) * 70, 288), (600 + (n - 6) * 180, 500), (600 + (n - 7) * 180, 500)], "#368c4d")
    c.pen.save()
    c.pen.rectangle(0, 288, WIDTH, 212)
    c.pen.clip()
    centre_x, centre_y = 330, 640
    for across, down, tone in ((1130, 326, "#ffffff"), (1124, 321, "#b8452a"), (560, 120, "#ffffff"), (554, 116, "#37904f")):
        c.oval(centre_x, centre_y, across, down, tone)
    for n in range(1, 6):
        part = n / 6
        c.pen.new_path()
        c.oval_path(centre_x, centre_y, 554 + part * 570, 116 + part * 205)
        c.stroke("#ffffff", 2.2 + 1.2 * (1 - part))
    c.pen.restore()
    c.pen.select_font_face("DejaVu Sans", cairo.FONT_SLANT_NORMAL, cairo.FONT_WEIGHT_BOLD)
    for n in range(6):
        part = (n + 0.5) / 6
        angle = math.radians(-58)
        x = centre_x + (554 + part * 570) * math.cos(angle)
        y = centre_y + (116 + part * 205) * math.sin(angle)
        c.pen.save()
        c.pen.translate(x, y)
        c.pen.transform(cairo.Matrix(1, 0.22, -0.25, 0.8, 0, 0))
        c.pen.set_font_size(38 - 9 * part)
        extents = c.pen.text_extents(str(n + 1))
        c.pen.move_to(-extents.width / 2 - extents.x_bearing, extents.height / 2)
        c.colour("#ffffff")
        c.pen.show_text(str(n + 1))
        c.pen.restore()


def runners(c):
    runner(c, 250, 402, 1.18, "#ffd23f", "#12263f", "#6b4430")
    runner(c, 460, 396, 1.06, "#8fd3ff", "#1d4e89", "#c68b5e")
    runner(c, 74, 404, 1.1, "#f4f1de", "#c2410c", "#8d5a3b")


def runner(c, x, ground, size, shirt, shorts, skin):
    """In full stride to the right; `ground` is where the foot stands."""
    def at(dx, dy):
        return x + dx * size, ground + dy * size
    c.oval(x + 4 * size, ground + 3, 40 * size, 6, "#5a1f12", 0.35)
    c.line([at(-4, -62), at(-26, -56), at(-34, -72)], skin, 7.5 * size)
    c.line([at(0, -44), at(-16, -26), at(-42, -30)], skin, 10 * size)
    c.line([at(-42, -30), at(-47, -22)], "#ffffff", 7 * size)
    c.line([at(2, -44), at(26, -36), at(22, -4)], skin, 10 * size)
    c.line([at(20, -3), at(34, -1)], "#ffffff", 7 * size)
    c.line([at(0, -44), at(-9, -34)], shorts, 14 * size)
    c.line([at(2, -46), at(16, -40)], shorts, 14 * size)
    c.line([at(8, -78), at(0, -50)], shirt, 19 * size)
    c.line([at(9, -80), at(26, -66), at(42, -76)], skin, 7.5 * size)
    c.disc(*at(16, -99), 11 * size, skin)
    c.pen.new_path()
    c.pen.arc(*at(15, -101), 11.5 * size, math.pi * 0.86, math.pi * 1.92)
    c.fill("#231815")
