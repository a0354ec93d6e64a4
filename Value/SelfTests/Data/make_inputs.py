#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Draws the images that the self-tests of Relief read, into the folder input/ beside this script.

ae.png           the letters a and e grown together: round and straight edges, holes, soft outlines
rect_across.png  rectangles that go across the borders of the image and meet themselves where it tiles
"""

import pathlib

import numpy as np
import OpenImageIO as oiio

SIDE = 128
FINER = 8


def plane():
    """The coordinates of points, eight times eight to a pixel."""
    points = (np.arange(SIDE * FINER) + 0.5) / FINER
    return np.meshgrid(points, points)


def ellipse(x, y, center_x, center_y, radius_x, radius_y):
    return np.hypot((x - center_x) / radius_x, (y - center_y) / radius_y) <= 1


def bar(x, y, left, top, right, bottom):
    return (x >= left) & (x < right) & (y >= top) & (y < bottom)


def draw_ae():
    x, y = plane()
    # The arch and the stem that both letters share, the bowl of the a, the ring of the e with its bar and its opening.
    arch = ellipse(x, y, 41, 50, 26, 24) & ~ellipse(x, y, 41, 52, 13, 13) & (y < 52)
    arch &= ~((x < 41) & (y > 44))
    stem = bar(x, y, 55, 48, 69, 94)
    bowl = ellipse(x, y, 41, 79, 28, 22) & ~ellipse(x, y, 43, 79, 14, 10) & (x < 62)
    ring = ellipse(x, y, 87, 64, 30, 38) & ~ellipse(x, y, 87, 64, 16, 25)
    ring &= ~((x > 87) & (y > 69) & (y < 80))
    crossbar = bar(x, y, 62, 59, 110, 69)
    ink = arch | stem | bowl | ring | crossbar
    return ink.reshape(SIDE, FINER, SIDE, FINER).mean((1, 3)) * 255


def draw_rect_across():
    shades = np.zeros((SIDE, SIDE))
    rows, columns = np.mgrid[0:SIDE, 0:SIDE]

    def fill(left, top, width, height, shade):
        inside = ((columns - left) % SIDE < width) & ((rows - top) % SIDE < height)
        shades[inside] = shade

    fill(96, 24, 64, 28, 255)    # across the right border
    fill(40, 104, 24, 56, 170)   # across the lower border
    fill(112, 112, 32, 32, 85)   # across the corner
    fill(72, 66, 20, 20, 255)    # across none
    return shades


def write(file, shades):
    layout = oiio.ImageSpec(SIDE, SIDE, 1, "uint8")
    layout.attribute("DateTime", "2024:01:01 00:00:00")
    output = oiio.ImageOutput.create(str(file))
    if not output.open(str(file), layout) or not output.write_image(np.floor(shades + 0.5).astype(np.uint8)[:, :, None]):
        raise SystemExit(f"cannot write {file}: {output.geterror()}")
    output.close()


if __name__ == "__main__":
    folder = pathlib.Path(__file__).parent / "input"
    folder.mkdir(exist_ok=True)
    write(folder / "ae.png", draw_ae())
    write(folder / "rect_across.png", draw_rect_across())
