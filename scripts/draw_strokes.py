#!/usr/bin/env python3
"""Draws the pictures of docs/strokes.md with the tool: scripts/draw_strokes.py MOUNTAIN.obj

A hand follows the ridge of a mountain seen from above, with a tremor and in whole pixels; and samples of a bell through
which a spline and a polynomial go.
"""

import math
import random
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
TOOL = ROOT / "build/release/bin/zngeom"
IMAGES = ROOT / "docs/images"

RIDGE = ((632, 300), (545, 322), (470, 345), (395, 378), (338, 412), (306, 408), (309, 330), (288, 272), (240, 222),
         (234, 192), (196, 168))


def run(*arguments):
    subprocess.run([TOOL, *map(str, arguments), "--quiet"], check=True, stdout=subprocess.DEVNULL)


def turn_top_to_front(mesh, turned):
    """The tool looks at the front of a surface; here that is what was above."""
    with open(mesh) as lines, open(turned, "w") as out:
        for line in lines:
            words = line.split()
            if words[:1] == ["v"]:
                line = f"v {words[1]} {-float(words[3])} {words[2]}\n"
            out.write(line)


def hand_drawn(places):
    """Samples along a polyline, slower near its corners, each up to seven pixels beside it."""
    random.seed(3)
    samples = []
    for (x0, y0), (x1, y1) in zip(places, places[1:]):
        count = max(2, round(math.hypot(x1 - x0, y1 - y0) / 12))
        for i in range(count):
            part = 0.5 - 0.5 * math.cos(math.pi * i / count)
            samples.append((round(x0 + part * (x1 - x0) + random.uniform(-7, 7)),
                            round(y0 + part * (y1 - y0) + random.uniform(-7, 7))))
    return samples + [places[-1]]


def write_table(path, rows):
    path.write_text("".join(f"{x} {y}\n" for x, y in rows))
    return path


def draw_mountain(mesh, folder):
    turned, picture = folder / "turned.obj", IMAGES / "stroke.png"
    turn_top_to_front(mesh, turned)
    run("check", turned, "--picture", picture, "--picture-size", "800x700")
    pen = write_table(folder / "pen.txt", hand_drawn(RIDGE))
    smooth = ("--smooth", "--drag", "0.95")
    for spacing, radius, colour, filter in ((0.5, 0.7, "20,20,20", ()), (0.5, 0.8, "30,90,220", smooth),
                                            (20, 3.5, "205,50,35", smooth)):
        run("stroke", pen, picture, "--spacing", spacing, *filter, "--image", picture, "--radius", radius,
            "--colour", colour)


def draw_curves(folder):
    table = write_table(folder / "bell.txt", [(x, 2 / (1 + x * x)) for x in range(-5, 6)])
    for method in ("spline", "newton"):
        run("curve", table, IMAGES / f"curve_{method}.svg", "--method", method, "--samples", 400)


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as name:
        draw_mountain(sys.argv[1], Path(name))
        draw_curves(Path(name))
