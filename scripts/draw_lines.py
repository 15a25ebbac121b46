#!/usr/bin/env python3
"""Draws the pictures of lines in docs/planar.md with the tool: scripts/draw_lines.py BUNNY.obj

Sections of a bunny all the way up, and one of its outlines thinned out at three tolerances.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
TOOL = ROOT / "build/release/bin/zngeom"
IMAGES = ROOT / "docs/images"


def run(*arguments):
    subprocess.run([TOOL, *map(str, arguments), "--quiet"], check=True, stdout=subprocess.DEVNULL)


def heights(mesh):
    with open(mesh) as lines:
        return [float(line.split()[2]) for line in lines if line.startswith("v ")]


def main():
    mesh = Path(sys.argv[1])
    low, high = min(heights(mesh)), max(heights(mesh))
    size = high - low
    run("section", mesh, IMAGES / "sections.svg", "--every", size / 24, "--along", "y", "--decimate", size / 1000)
    with tempfile.TemporaryDirectory() as folder:
        outline = Path(folder) / "outline.obj"
        run("section", mesh, outline, "--plane", "0,0,1,0")
        for number, part in enumerate((500, 100, 25), 1):
            run("polyline", outline, IMAGES / f"decimate_{number}.svg", "--decimate", size / part)


if __name__ == "__main__":
    main()
