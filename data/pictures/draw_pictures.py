#!/usr/bin/env python3
"""Draws the pictures of the five designs, Template1.jpg to Template5.jpg, beside itself or into the folder that is named.

    data/pictures/draw_pictures.py [FOLDER]      (packages python3-cairo and python3-pil)

The pictures are kept with the sources, so that building needs neither; run this after a change and look at them.
"""
import sys
from pathlib import Path

from canvas import Canvas
from nature import health, travel
from stadium import sports
from town import government, legal


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent
    for number, draw in enumerate((government, health, legal, sports, travel), 1):
        canvas = Canvas(number)
        draw(canvas)
        file = folder / f"Template{number}.jpg"
        quality = canvas.save(file)
        print(f"{file}: {file.stat().st_size} bytes, quality {quality}")


if __name__ == "__main__":
    main()
