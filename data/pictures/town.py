"""A town hall, and scales between columns."""

from canvas import WIDTH

WALL, SHADE, DARK, ROOF = "#fbf7ee", "#ded4c2", "#b9ab93", "#1b4b72"


def fluted_column(c, x, top, bottom, width, light, shade, cap):
    c.box(x - width / 2, top, width, bottom - top, light)
    for part in (0.14, 0.4, 0.66):
        c.box(x - width / 2 + width * part, top + 6, width * 0.1, bottom - top - 12, shade, alpha=0.55)
    c.box(x + width * 0.28, top, width * 0.22, bottom - top, shade)
    c.box(x - width * 0.72, top - width * 0.3, width * 1.44, width * 0.3, cap, 2)
    c.box(x - width * 0.72, bottom, width * 1.44, width * 0.3, cap, 2)


def government(c):
    """A town hall with a dome in the morning."""
    morning_over_town(c)
    wings(c)
    portico(c)
    dome(c)
    square(c)


def morning_over_town(c):
    c.sky((0, "#8fc3e8"), (0.55, "#d9ecf7"), (0.85, "#fdebd2"))
    c.disc(930, 150, 150, "#fff6dd", 0.35)
    c.disc(930, 150, 96, "#fff1c4", 0.7)
    c.disc(930, 150, 58, "#ffe39a")
    for x, y, size in ((150, 110, 46), (355, 66, 30), (1090, 88, 38), (760, 60, 24)):
        c.cloud(x, y, size)
    skyline = ((0, 90, 120), (78, 60, 176), (140, 84, 138), (226, 50, 204), (282, 90, 150), (866, 70, 166), (940, 54, 218),
               (1000, 92, 142), (1096, 48, 190), (1146, 60, 124))
    for x, width, height in skyline:
        c.box(x, 418 - height, width, height, "#9db8d2")
        for wx in range(int(x) + 12, int(x + width) - 14, 20):
            for wy in range(418 - height + 16, 380, 26):
                c.box(wx, wy, 8, 12, "#bcd1e4" if c.chance.random() < 0.75 else "#ffe9b0")
    c.shape([(226, 214), (251, 168), (276, 214)], "#9db8d2")
    c.hills(404, 12, 150, 0.6, "#7fae85")


def wings(c):
    for side in (-1, 1):
        left = 600 + side * 232 - 92
        c.box(left, 290, 184, 128, WALL)
        c.box(left, 290, 184, 9, DARK)
        c.box(left - 7, 276, 198, 14, SHADE)
        for n in range(4):
            x = left + 20 + n * 40
            c.box(x, 318, 22, 40, ROOF, 2)
            c.box(x, 372, 22, 36, ROOF, 2)
            c.box(x - 3, 358, 28, 4, SHADE)


def portico(c):
    c.box(450, 268, 300, 150, WALL)
    c.box(462, 280, 276, 138, "#3b5a75")
    c.box(577, 324, 46, 94, "#7c4f2c", 3)
    c.box(599, 324, 2, 94, "#5c3a20")
    for n in range(6):
        fluted_column(c, 472 + n * 51.2, 290, 404, 22, WALL, SHADE, "#efe7d6")
    c.box(440, 262, 320, 18, SHADE)
    c.shape([(432, 262), (600, 196), (768, 262)], WALL)
    c.shape([(470, 256), (600, 206), (730, 256)], SHADE)
    c.disc(600, 238, 13, ROOF)
    c.disc(600, 238, 9, WALL)
    c.line([(600, 238), (600, 232)], ROOF, 2)
    c.line([(600, 238), (604, 240)], ROOF, 2)


def dome(c):
    c.box(534, 182, 132, 22, SHADE)
    c.box(546, 142, 108, 42, WALL)
    for n in range(5):
        c.box(556 + n * 20, 150, 9, 30, "#3b5a75", 4)
    c.box(538, 134, 124, 10, DARK)
    c.pen.move_to(546, 134)
    c.pen.curve_to(546, 62, 654, 62, 654, 134)
    c.fill(ROOF)
    c.pen.move_to(604, 134)
    c.pen.curve_to(640, 110, 640, 84, 604, 80)
    c.pen.curve_to(640, 80, 654, 104, 654, 134)
    c.fill("#143a5a")
    c.box(592, 58, 16, 24, WALL, 2)
    c.line([(600, 58), (600, 14)], "#6b7b8a", 3)
    c.pen.move_to(601, 16)
    c.pen.curve_to(618, 8, 630, 24, 650, 15)
    c.pen.line_to(650, 39)
    c.pen.curve_to(630, 48, 618, 32, 601, 40)
    c.fill("#c8442f")


def square(c):
    for n in range(4):
        c.box(446 - n * 14, 412 + n * 10, 308 + n * 28, 10, ("#efe7d6", "#ddd2bd")[n % 2])
    c.hills(474, 7, 210, 2.2, "#5f9a6b")
    c.shape([(520, 452), (680, 452), (840, 500), (360, 500)], "#efdfc4")
    for x, size in ((300, 104), (238, 84), (352, 70), (900, 104), (962, 84), (848, 70), (74, 118), (1130, 118), (150, 88), (1056, 88)):
        c.tree(x, 462 if size > 90 else 452, size, "#4d8f5c", "#3c7a4c")
    for x, coat in ((452, "#c8442f"), (476, "#1b4b72"), (742, "#e0a030"), (696, "#35607f")):
        c.box(x - 6, 452, 12, 24, coat, 5)
        c.disc(x, 446, 6, "#8a5a3c")


def legal(c):
    """Scales between two rows of columns, the sun behind them."""
    colonnades(c)
    scales(c)


def colonnades(c):
    c.sky((0, "#24344d"), (0.6, "#3f5474"), (1, "#7488a3"))
    for r, alpha in ((330, 0.10), (262, 0.14), (196, 0.2)):
        c.disc(600, 250, r, "#f2d9a0", alpha)
    c.disc(600, 250, 140, "#e9c87d")
    for side in (-1, 1):
        for n, (away, top, width) in enumerate(((196, 150, 24), (274, 128, 32), (366, 102, 42), (480, 68, 56))):
            x = 600 + side * away
            tone = (("#a9b3c1", "#8793a5", "#bcc5d0"), ("#bfc6cf", "#98a3b3", "#cfd6dd"), ("#d9dcdf", "#abb4c0", "#e6e8ea"),
                    ("#f1eee7", "#c4c7ca", "#faf7f0"))[n]
            fluted_column(c, x, top, 424 + n * 8, width, *tone)
        c.shape([(600 + side * 174, 140), (600 + side * 640, 0), (600 + side * 640, 32), (600 + side * 174, 155)], "#cfcdc6")
        c.shape([(600 + side * 168, 128), (600 + side * 640, -16), (600 + side * 640, 14), (600 + side * 168, 144)], "#f6f2ea")
    c.box(0, 434, WIDTH, 66, "#2a2f3c")
    for n, (wide, tone) in enumerate(((860, "#d8d5cd"), (960, "#c3c2bd"), (1080, "#adafb0"))):
        c.box(600 - wide / 2, 430 + n * 18, wide, 18, tone)
    c.box(0, 482, WIDTH, 18, "#20242f")


def scales(c):
    gold, dark, light = "#8a5a12", "#6b430b", "#b37d26"
    c.box(590, 140, 20, 262, gold, 6)
    c.box(602, 140, 8, 262, dark, 4)
    c.shape([(556, 404), (644, 404), (676, 430), (524, 430)], gold)
    c.shape([(600, 404), (644, 404), (676, 430), (600, 430)], dark)
    c.disc(600, 132, 17, gold)
    c.disc(595, 127, 6, light)
    c.pen.move_to(452, 170)
    c.pen.curve_to(520, 176, 560, 140, 600, 158)
    c.pen.curve_to(640, 140, 680, 176, 748, 170)
    c.stroke(gold, 10)
    for side in (-1, 1):
        x = 600 + side * 148
        c.disc(x, 170, 8, light)
        for reach in (-54, 54):
            c.line([(x, 172), (x + reach, 296)], dark, 2.5)
        c.pen.move_to(x - 64, 296)
        c.pen.curve_to(x - 50, 348, x + 50, 348, x + 64, 296)
        c.pen.close_path()
        c.fill(gold)
        c.pen.move_to(x, 335)
        c.pen.curve_to(x + 30, 334, x + 54, 322, x + 64, 296)
        c.pen.line_to(x, 296)
        c.fill(dark)
        c.box(x - 68, 290, 136, 9, light, 4)
