#!/usr/bin/env python3
"""Draws docs/images/layers.svg: the folders of the repository in the rows that the check of includes uses.

A file may include its own folder and the rows below. Folders that don't exist yet are left out.
"""

import sys
from html import escape
from pathlib import Path

sys.dont_write_bytecode = True
sys.path.insert(0, str(Path(__file__).resolve().parent / "checks"))
import includes

ROOT = Path(__file__).resolve().parents[1]
PICTURE = ROOT / "docs/images/layers.svg"

# What a folder is about; one that is missing here is drawn with its name alone.
AROUND = {"apps/zngeom": "the tool", "examples": "small programs", "tests": "unit and fuzz tests", "bench": "benchmarks"}
NOTES = {"analysis": "derived data, measures", "cache": "derived objects kept", "curves": "lines on surfaces",
         "editing": "changes to a mesh", "files": "mesh files", "planar/polylines": "lines and segments",
         "planar/strokes": "spacing, splines", "planar/shapes": "hulls, packing, polygons",
         "spatial/shapes": "frusta, spheres, rays", "spatial/trees": "octree, quadtree, k-d tree",
         "spatial/queries": "nearest points, crossings", "repair": "broken meshes made whole", "scopes": "regions edited, merged back",
         "simplify": "fewer vertices", "shells": "seams, walls, collars", "parameterize": "surfaces laid flat", "solvers": "sparse systems", "topology": "the half-edge mesh",
         "foundation/machine": "compiler, machine, version", "foundation/linear": "value types",
         "foundation/containers": "lists, maps, references", "foundation/mesh": "the mesh model",
         "foundation/threads": "pool, loops, progress", "foundation/output": "log, messages, timer",
         "foundation/signals": "callbacks", "foundation/text": "strings, file names", "foundation/util": "small helpers"}

WIDTH, MARGIN, GAP, BOX_HEIGHT = 860, 24, 10, 46
STYLE = """
  text { font-family: sans-serif; fill: #1f2933; text-anchor: middle }
  .name { font-size: 13px; font-weight: bold }
  .note { font-size: 11px; fill: #52606d }
  .title { font-size: 13px; fill: #52606d; text-anchor: start }
  .layer { fill: #f5f7fa; stroke: #cbd2d9 }
  .around { fill: #e3f8ff; stroke: #2bb0ed }
  .subject { fill: #e3f9e5; stroke: #3f9142 }
  .foundation { fill: #fffbea; stroke: #de911d }
"""


def has_sources(folder):
    return any(path.suffix in (".h", ".cpp") for path in (ROOT / folder).rglob("*"))


def draw_box(x, y, width, kind, lines):
    parts = [f'<rect class="{kind}" x="{x:g}" y="{y}" width="{width:g}" height="{BOX_HEIGHT}" rx="5"/>']
    lines = [line for line in lines if line]
    first = y + BOX_HEIGHT / 2 - 8 * (len(lines) - 1) + 5
    for number, line in enumerate(lines):
        style = "note" if number else "name"
        parts.append(f'<text class="{style}" x="{x + width / 2:g}" y="{first + 16 * number:g}">{escape(line)}</text>')
    return parts


def draw_row(y, kind, boxes):
    """One row of folders, each a tuple of the lines in its box."""
    width = (WIDTH - 2 * MARGIN - GAP) / len(boxes) - GAP
    parts = []
    for number, lines in enumerate(boxes):
        parts += draw_box(MARGIN + GAP + number * (width + GAP), y, width, kind, lines)
    return parts


def draw_layer(top, title, kind, rows):
    """SVG of some rows under a title, the highest row first, and the height of it all."""
    height = 34 + len(rows) * (BOX_HEIGHT + GAP)
    parts = [f'<rect class="layer" x="{MARGIN}" y="{top}" width="{WIDTH - 2 * MARGIN}" height="{height}" rx="8"/>',
             f'<text class="title" x="{MARGIN + GAP}" y="{top + 21}">{escape(title)}</text>']
    for number, boxes in enumerate(rows):
        parts += draw_row(top + 32 + number * (BOX_HEIGHT + GAP), kind, boxes)
    return parts, height


def rows_of_library(in_foundation):
    """The rows inside foundation/ or outside it, the highest first."""
    for row in reversed(includes.ROWS):
        boxes = [(folder.removeprefix("foundation/"), NOTES.get(folder, "")) for folder in row
                 if folder.startswith("foundation/") == in_foundation and has_sources(f"znGeom/{folder}")]
        if boxes:
            yield boxes


def main():
    around = [(name, note) for name, note in AROUND.items() if has_sources(name)]
    layers = [("around the library: may include anything of it", "around", [around]),
              ("znGeom/: a folder may include the rows below it, not its neighbours", "subject", list(rows_of_library(False))),
              ("znGeom/foundation/", "foundation", list(rows_of_library(True)))]
    parts, top = [], MARGIN
    for title, kind, rows in layers:
        drawn, height = draw_layer(top, title, kind, rows)
        parts += drawn
        top += height + GAP

    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {top + MARGIN - GAP}" width="{WIDTH}">',
             "<title>Layers of znGeom</title>", f"<style>{STYLE}</style>",
             f'<rect width="{WIDTH}" height="{top + MARGIN - GAP}" fill="white"/>', *parts, "</svg>"]
    PICTURE.parent.mkdir(parents=True, exist_ok=True)
    PICTURE.write_text("\n".join(lines) + "\n")
    print(f"wrote {PICTURE.relative_to(ROOT)}")


if __name__ == "__main__":
    main()
