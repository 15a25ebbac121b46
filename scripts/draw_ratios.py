"""Draws the ratios of docs/performance.md as bars, on a logarithmic scale, from the first table of the page."""

import math
import re
from html import escape

MARGIN, NAMES, BAR, GAP, LABEL, WIDTH = 20, 350, 11, 12, 46, 900
MESHES = {"70 thousand triangles, in order": "small", "a million triangles, in order": "ordered",
          "a million triangles, shuffled": "shuffled", "": "ordered"}
STYLE = """
  text { font-family: sans-serif; font-size: 12px; fill: #1f2933 }
  .note { fill: #52606d; font-size: 11px }
  .axis { text-anchor: middle; fill: #52606d; font-size: 11px }
  .name { text-anchor: end }
  .grid { stroke: #e4e7eb }
  .even { stroke: #52606d; stroke-width: 1.5 }
  .small { fill: #9fb3c8 }
  .ordered { fill: #2b8a9d }
  .shuffled { fill: #de911d }
"""


class Picture:
    """One plot: its file beside the page, what it shows, and which rows of the table belong to it."""

    def __init__(self, file, title, belongs):
        self.file, self.title, self.belongs = file, title, belongs

    def link(self):
        return f"![{self.title}]({self.file})"


PICTURES = (
    Picture("images/performance_peers.svg", "Times as fast as other libraries", lambda peer: not peer.startswith(("memory", "the plain"))),
    Picture("images/performance_memory.svg", "Speed beside memory alone", lambda peer: peer.startswith("memory")),
)


def read_rows(page):
    """(work, mesh, peer, ratio) of the first table."""
    table = re.search(r"^\| Work .*?\n\n", page.read_text(), re.MULTILINE | re.DOTALL)[0].strip().splitlines()
    for line in table[2:]:
        work, mesh, _, peer, _, ratio = (cell.strip() for cell in line.split("|")[1:7])
        yield work, mesh, peer, float(ratio)


def grouped(rows):
    """The bars under (work, library) in the order of the table; a bar is (mesh, ratio)."""
    groups = {}
    for work, mesh, peer, ratio in rows:
        library = peer if peer.startswith("memory") else re.split(r"[ ,]", peer)[0]
        groups.setdefault((work, library), []).append((mesh, ratio))
    return groups


def plain(text):
    return escape(text.replace("`", ""))


def nice(ratio):
    return f"{ratio:.0f}" if ratio >= 10 else f"{ratio:.1f}" if ratio >= 0.995 else f"{ratio:.2f}"


def draw_group(parts, y, name, bars, x_of):
    """Two lines of names on the left, the bars from the line of even speed to their ratios; returns the height."""
    height = max(len(bars) * (BAR + 2), 30)
    work, library = name
    parts.append(f'<text class="name" x="{NAMES}" y="{y + 12}">{plain(work)}</text>')
    parts.append(f'<text class="name note" x="{NAMES}" y="{y + 26}">{plain(library)}</text>')
    for number, (mesh, ratio) in enumerate(bars):
        left, right = sorted((x_of(1), x_of(ratio)))
        top = y + number * (BAR + 2)
        parts.append(f'<rect class="{MESHES.get(mesh, 'ordered')}" x="{left:.1f}" y="{top}" width="{max(right - left, 1):.1f}" height="{BAR}"/>')
        place = f'x="{right + 4:.1f}"' if ratio >= 1 else f'x="{left - 4:.1f}" text-anchor="end"'
        parts.append(f'<text class="note" {place} y="{top + 9}">{nice(ratio)}</text>')
    return height + GAP


def draw_picture(path, title, groups):
    ratios = [ratio for bars in groups.values() for _, ratio in bars]
    low, high = math.floor(math.log2(min([*ratios, 1]))), max(math.ceil(math.log2(max([*ratios, 1]))), 1)
    left, right = NAMES + LABEL, WIDTH - MARGIN - LABEL

    def x_of(ratio):
        return left + (right - left) * (math.log2(ratio) - low) / (high - low)

    bars, y = [], 76
    for name, group in groups.items():
        y += draw_group(bars, y, name, group, x_of)
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {y + MARGIN}" width="{WIDTH}">',
             f"<title>{title}</title>", f"<style>{STYLE}</style>", f'<rect width="{WIDTH}" height="{y + MARGIN}" fill="white"/>',
             f'<text x="{MARGIN}" y="24" style="font-size: 15px; font-weight: bold">{title}</text>']
    used = {mesh for group in groups.values() for mesh, _ in group}
    x = MARGIN
    for mesh, style in MESHES.items():
        if mesh in used and mesh:
            parts += [f'<rect class="{style}" x="{x}" y="36" width="12" height="12"/>', f'<text x="{x + 18}" y="46">{mesh}</text>']
            x += 230
    for power in range(low, high + 1):
        x = x_of(2.0**power)
        parts.append(f'<line class="{"even" if power == 0 else "grid"}" x1="{x:.1f}" y1="70" x2="{x:.1f}" y2="{y - 4}"/>')
        parts.append(f'<text class="axis" x="{x:.1f}" y="{y + 10}">{2**power if power >= 0 else f"1/{2**-power}"}</text>')
    path.write_text("\n".join([*parts, *bars, "</svg>"]) + "\n")


def draw(page):
    rows = list(read_rows(page))
    for picture in PICTURES:
        draw_picture(page.parent / picture.file, picture.title, grouped(row for row in rows if picture.belongs(row[2])))
