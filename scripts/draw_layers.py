#!/usr/bin/env python3
"""Draws docs/images/layers.svg: the folders of the repository in layers, and who includes whom.

A layer may include the layers below it. In the middle layer each box also names the neighbours that it does include.
"""

import re
from html import escape
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
PICTURE = ROOT / "docs/images/layers.svg"
INCLUDE = re.compile(r'^#include "znGeom/(\w+)/', re.MULTILINE)

# What a folder is about. A folder of the library that is missing here is drawn with its name alone.
AROUND = {"apps/zngeom": "the tool", "examples": "small programs", "tests": "unit and fuzz tests", "bench": "benchmarks"}
SUBSYSTEMS = {"analysis": "derived data, measures", "editing": "changes to a mesh", "files": "mesh files",
              "planar": "plane fits, polygons", "shells": "twin surfaces", "spatial": "boxes, octrees, queries",
              "topology": "the half-edge mesh"}
FOUNDATION = {"linear": "value types", "containers": "lists, maps, references", "mesh": "the mesh model",
              "threads": "pool, loops, progress", "output": "log, messages, timer", "signals": "callbacks",
              "text": "strings, file names", "util": "small helpers"}

WIDTH, MARGIN, GAP, BOX_HEIGHT, PER_ROW = 860, 24, 14, 62, 4
STYLE = """
  text { font-family: sans-serif; fill: #1f2933; text-anchor: middle }
  .name { font-size: 14px; font-weight: bold }
  .note { font-size: 11px; fill: #52606d }
  .title { font-size: 13px; fill: #52606d; text-anchor: start }
  .layer { fill: #f5f7fa; stroke: #cbd2d9 }
  .around { fill: #e3f8ff; stroke: #2bb0ed }
  .subsystem { fill: #e3f9e5; stroke: #3f9142 }
  .foundation { fill: #fffbea; stroke: #de911d }
  .down { stroke: #616e7c; stroke-width: 2; fill: #616e7c }
"""


def source_folders(parent):
    """The names of the folders in `parent` that hold source files."""
    return sorted({path.relative_to(parent).parts[0] for path in parent.rglob("*/*") if path.suffix in (".h", ".cpp")})


def describe_neighbours(name, names):
    """The other subsystem folders that files of one folder include, as words."""
    included = set()
    for path in (ROOT / "znGeom" / name).rglob("*"):
        if path.suffix in (".h", ".cpp"):
            included.update(INCLUDE.findall(path.read_text()))
    neighbours = [other for other in names if other in included and other != name]
    return "uses " + ", ".join(neighbours) if neighbours else ""


def draw_box(x, y, width, kind, lines):
    parts = [f'<rect class="{kind}" x="{x:g}" y="{y}" width="{width:g}" height="{BOX_HEIGHT}" rx="5"/>']
    lines = [line for line in lines if line]
    first = y + BOX_HEIGHT / 2 - 8 * (len(lines) - 1) + 5
    for number, line in enumerate(lines):
        style = "note" if number else "name"
        parts.append(f'<text class="{style}" x="{x + width / 2:g}" y="{first + 16 * number:g}">{escape(line)}</text>')
    return parts


def draw_layer(top, title, kind, folders):
    """SVG of one layer, and its height. A folder is a tuple of the lines in its box."""
    rows = (len(folders) + PER_ROW - 1) // PER_ROW
    height = 34 + rows * (BOX_HEIGHT + GAP)
    width = (WIDTH - 2 * MARGIN - GAP) / min(PER_ROW, len(folders)) - GAP
    parts = [f'<rect class="layer" x="{MARGIN}" y="{top}" width="{WIDTH - 2 * MARGIN}" height="{height}" rx="8"/>',
             f'<text class="title" x="{MARGIN + GAP}" y="{top + 21}">{escape(title)}</text>']
    for number, lines in enumerate(folders):
        row, place = divmod(number, PER_ROW)
        x = MARGIN + GAP + place * (width + GAP)
        parts += draw_box(x, top + 32 + row * (BOX_HEIGHT + GAP), width, kind, lines)
    return parts, height


def draw_arrow(y):
    x = WIDTH / 2
    return f'<path class="down" d="M{x:g} {y + 4} v18 h-6 l6 10 l6 -10 h-6"/>'


def main():
    around = [(name, note) for name, note in AROUND.items() if any((ROOT / name).rglob("*.cpp"))]
    names = [name for name in source_folders(ROOT / "znGeom") if name != "foundation"]
    subsystems = [(name, SUBSYSTEMS.get(name, ""), describe_neighbours(name, names)) for name in names]
    foundation = [(name, FOUNDATION.get(name, "")) for name in source_folders(ROOT / "znGeom/foundation")]
    layers = [("around the library: may include anything of it", "around", around),
              ("znGeom/: subsystems, may include foundation and one another, without circles", "subsystem", subsystems),
              ("znGeom/foundation/: includes nothing outside itself", "foundation", foundation)]
    parts, top = [], MARGIN
    for title, kind, folders in layers:
        if top > MARGIN:
            parts.append(draw_arrow(top))
            top += 36
        drawn, height = draw_layer(top, title, kind, folders)
        parts += drawn
        top += height

    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {top + MARGIN}" width="{WIDTH}">',
             "<title>Layers of znGeom</title>", f"<style>{STYLE}</style>",
             f'<rect width="{WIDTH}" height="{top + MARGIN}" fill="white"/>', *parts, "</svg>"]
    PICTURE.parent.mkdir(parents=True, exist_ok=True)
    PICTURE.write_text("\n".join(lines) + "\n")
    print(f"wrote {PICTURE.relative_to(ROOT)}")


if __name__ == "__main__":
    main()
