"""A heart among leaves, and a sea under mountains."""
import math

import cairo

from canvas import HEIGHT, WIDTH


def health(c):
    """A heart with its beat, among leaves."""
    leaves(c)
    beating_heart(c)


def leaves(c):
    c.sky((0, "#dff5ef"), (1, "#bfe8de"))
    for x, y, r, alpha in ((600, 250, 330, 0.35), (600, 250, 250, 0.5), (600, 250, 176, 0.75)):
        c.disc(x, y, r, "#f3fcf9", alpha)
    for x, y, size in ((250, 92, 15), (948, 84, 19), (1066, 230, 12), (134, 214, 12), (420, 60, 10), (806, 432, 12), (352, 430, 15)):
        c.box(x - size, y - size / 3, 2 * size, 2 * size / 3, "#ffffff", 2)
        c.box(x - size / 3, y - size, 2 * size / 3, 2 * size, "#ffffff", 2)
    for mirror in (1, -1):
        at = (lambda x: x) if mirror == 1 else (lambda x: WIDTH - x)
        turn = (lambda a: a) if mirror == 1 else (lambda a: 180 - a)
        c.pen.move_to(at(-10), 520)
        c.pen.curve_to(at(60), 400, at(130), 330, at(170), 240)
        c.stroke("#2f7d6d", 6)
        for x, y, length, angle, tone in ((22, 474, 170, -14, "#2f8f7b"), (66, 410, 150, -98, "#57b09b"), (92, 376, 164, -8, "#3d9c87"),
                                          (126, 322, 130, -112, "#2f8f7b"), (144, 292, 134, -20, "#6fc3af"), (170, 240, 120, -66, "#3d9c87")):
            c.leaf(at(x), y, length, turn(angle), tone, "#d8f3ec")
        for x, y, length, angle, tone in ((96, 508, 132, -34, "#1f6f60"), (186, 512, 104, -58, "#2a7f6e"), (214, 512, 118, -12, "#1f6f60")):
            c.leaf(at(x), y, length, turn(angle), tone, "#bfe8de")


def beating_heart(c):
    def heart(x, y, size):
        c.pen.move_to(x, y + size * 0.92)
        c.pen.curve_to(x - size * 1.5, y + size * 0.05, x - size * 1.12, y - size * 1.02, x - size * 0.5, y - size * 0.92)
        c.pen.curve_to(x - size * 0.2, y - size * 0.88, x - size * 0.04, y - size * 0.68, x, y - size * 0.5)
        c.pen.curve_to(x + size * 0.04, y - size * 0.68, x + size * 0.2, y - size * 0.88, x + size * 0.5, y - size * 0.92)
        c.pen.curve_to(x + size * 1.12, y - size * 1.02, x + size * 1.5, y + size * 0.05, x, y + size * 0.92)
        c.pen.close_path()

    heart(606, 268, 148)
    c.fill("#8fcfc0", 0.55)
    heart(600, 258, 148)
    c.fill("#e8604f")
    heart(600, 258, 148)
    c.pen.save()
    c.pen.clip()
    c.pen.rectangle(600, 80, 240, 360)
    c.fill("#d44f40")
    c.oval(520, 178, 40, 26, "#f59a8c", 0.8)
    c.pen.restore()
    beat = [(0, 262), (330, 262), (372, 262), (392, 236), (414, 262), (470, 262), (498, 276), (536, 150), (580, 372), (614, 220),
            (634, 262), (690, 262), (716, 232), (742, 262), (800, 262), (1200, 262)]
    c.line(beat, "#0b5d57", 9, 0.25)
    heart(600, 258, 148)
    c.pen.save()
    c.pen.clip()
    c.line(beat, "#ffffff", 9)
    c.pen.restore()
    c.pen.save()
    c.pen.rectangle(0, 0, WIDTH, HEIGHT)
    heart(600, 258, 148)
    c.pen.set_fill_rule(cairo.FILL_RULE_EVEN_ODD)
    c.pen.clip()
    c.line(beat, "#0b7a70", 8)
    c.pen.restore()


def travel(c):
    """Mountains by the sea, a sail and a plane."""
    mountains(c)
    sea(c)
    boat(c)
    beach(c)
    flight(c)


def mountains(c):
    c.sky((0, "#3aa0d8"), (0.5, "#9ad7ee"), (1, "#ffe7c2"), bottom=330)
    c.disc(850, 190, 130, "#fff4cf", 0.4)
    c.disc(850, 190, 74, "#ffe08a")
    for x, y, size in ((180, 78, 40), (420, 140, 26), (1040, 72, 44), (690, 60, 28)):
        c.cloud(x, y, size, alpha=0.95)
    peaks = (([(-80, 330), (70, 190), (150, 240), (270, 130), (430, 330)], "#7ba3bd"),
             ([(230, 330), (370, 150), (420, 186), (470, 120), (700, 330)], "#5f8aa8"), ([(-40, 330), (120, 226), (330, 330)], "#4d7a98"))
    for points, tone in peaks:
        c.shape(points, tone)
    for x, y, foot, tone in ((270, 130, 392, "#6a93ae"), (470, 120, 700, "#4d7896")):
        c.shape([(x, y), (x + (330 - y) * (foot - x) / 210, 330), (x + 52, 330), (x + 20, y + 96), (x + 34, y + 60)], tone)
    c.shape(peaks[2][0], peaks[2][1])
    for x, y, size in ((470, 120, 54), (270, 130, 46)):
        c.shape([(x, y), (x + size * 0.78, y + size * 0.71), (x + size * 0.5, y + size * 0.62), (x + size * 0.26, y + size * 0.86),
                 (x, y + size * 0.6), (x - size * 0.28, y + size * 0.84), (x - size * 0.42, y + size * 0.6), (x - size * 0.66, y + size * 0.74)], "#f8fbfd")


def sea(c):
    c.sky((0, "#1c8fb4"), (1, "#0d5f86"), top=330, bottom=HEIGHT)
    for n in range(18):
        half = 44 - n * 1.2 + (n % 3) * 9
        c.box(850 - half + (n * 37 % 23 - 11), 336 + n * 8.4, 2 * half, 3.2, "#ffe9a8", 1.6, 0.75 - n * 0.025)
    for n in range(60):
        x, y = c.chance.uniform(0, 1200), 342 + c.chance.random() ** 1.3 * 140
        c.box(x, y, 18 + (y - 330) * 0.3, 2.6, "#8fd3e8", 1.3, 0.35)
    c.pen.move_to(0, 330)
    c.pen.curve_to(90, 318, 190, 322, 300, 332)
    c.pen.line_to(0, 344)
    c.fill("#3c7a5a")
    for x, height in ((24, 12), (60, 16), (98, 13), (150, 11), (200, 8)):
        c.shape([(x - 8, 330), (x, 330 - 2 * height), (x + 8, 330)], "#2f6649")


def boat(c):
    sail_x, sail_y = 640, 402
    c.shape([(sail_x - 60, sail_y), (sail_x + 66, sail_y), (sail_x + 42, sail_y + 24), (sail_x - 42, sail_y + 24)], "#b8402a")
    c.box(sail_x - 56, sail_y, 118, 6, "#f6efe2")
    c.line([(sail_x, sail_y), (sail_x, sail_y - 128)], "#6b4a33", 4)
    c.pen.move_to(sail_x + 5, sail_y - 124)
    c.pen.curve_to(sail_x + 40, sail_y - 92, sail_x + 60, sail_y - 46, sail_x + 60, sail_y - 10)
    c.pen.line_to(sail_x + 5, sail_y - 10)
    c.fill("#fffaf0")
    c.pen.move_to(sail_x - 5, sail_y - 110)
    c.pen.curve_to(sail_x - 22, sail_y - 76, sail_x - 44, sail_y - 36, sail_x - 50, sail_y - 10)
    c.pen.line_to(sail_x - 5, sail_y - 10)
    c.fill("#f3d9a4")
    c.box(sail_x - 74, sail_y + 24, 150, 3.5, "#c9eef7", 1.7, 0.8)


def beach(c):
    c.pen.move_to(1200, 418)
    c.pen.curve_to(1090, 430, 1010, 462, 930, 500)
    c.pen.line_to(1200, 500)
    c.fill("#f3dba8")
    c.pen.move_to(1200, 404)
    c.pen.curve_to(1086, 418, 1000, 454, 914, 500)
    c.stroke("#ffffff", 7, 0.75)
    palm(c, 1096, 462, 1.0)
    palm(c, 1150, 476, 0.78)
    c.shape([(1010, 478), (1064, 440), (1118, 478)], "#d9472b")
    c.shape([(1046, 453), (1064, 440), (1082, 453), (1090, 478), (1038, 478)], "#fff4e0")
    c.line([(1064, 440), (1064, 496)], "#7a5a3c", 4)


def flight(c):
    c.pen.set_dash([10, 13])
    c.pen.move_to(90, 232)
    c.pen.curve_to(240, 70, 380, 220, 520, 108)
    c.stroke("#ffffff", 4, 0.95)
    c.pen.set_dash([])
    plane(c, 560, 82, -26, 1.0)


def palm(c, x, ground, size):
    c.pen.move_to(x, ground)
    c.pen.curve_to(x + 4 * size, ground - 60 * size, x - 14 * size, ground - 110 * size, x - 30 * size, ground - 150 * size)
    c.stroke("#8a623f", 11 * size)
    top_x, top_y = x - 30 * size, ground - 150 * size
    for angle, length in ((-160, 78), (-196, 84), (-128, 58), (-50, 66), (-14, 84), (22, 78), (-90, 52)):
        c.pen.save()
        c.pen.translate(top_x, top_y)
        c.pen.rotate(math.radians(angle))
        c.pen.move_to(0, 0)
        drop = 22 if -90 < angle else -22
        c.pen.curve_to(length * 0.4 * size, -24 * size, length * 0.8 * size, -10 * size, length * size, drop * size)
        c.pen.curve_to(length * 0.7 * size, 6 * size, length * 0.35 * size, 2 * size, 0, 8 * size)
        c.fill("#2f8f5b" if int(angle) % 4 else "#247a4c")
        c.pen.restore()
    for dx in (-6, 5):
        c.disc(top_x + dx * size, top_y + 6 * size, 6.5 * size, "#6b4a2f")


def plane(c, x, y, angle, size):
    c.pen.save()
    c.pen.translate(x, y)
    c.pen.rotate(math.radians(angle))
    c.pen.scale(size, size)
    c.shape([(4, -4), (-22, -44), (-34, -44), (-20, -4)], "#d7e2ec")
    c.shape([(-44, -4), (-60, -26), (-70, -26), (-62, -2)], "#d9472b")
    c.pen.move_to(-66, 5)
    c.pen.curve_to(-40, -11, 30, -12, 50, -7)
    c.pen.curve_to(62, -4, 66, 3, 58, 6)
    c.pen.curve_to(40, 12, -30, 11, -66, 5)
    c.fill("#ffffff")
    c.shape([(10, 5), (-26, 52), (-40, 52), (-20, 5)], "#c3d3e0")
    for n in range(7):
        c.disc(-28 + n * 10, -2.5, 2.3, "#1c6f94")
    c.shape([(47, -5), (57, -2.5), (48, -1)], "#1c6f94")
    c.pen.restore()
