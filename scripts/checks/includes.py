#!/usr/bin/env python3
"""Checks how files include one another.

Every include of a file of this repository is written from its root and names a file that exists, the library includes
nothing outside znGeom/, and includes form no cycle. The folders of the library are in rows: a file includes its own
folder and the rows above it. Beside each folder is the header of the same name, which includes all public headers in
it, and znGeom/znGeom.h includes all of these. Every public header includes, at least through others, the one that
requires the language version needed.
"""

import re
import sys
from graphlib import CycleError, TopologicalSorter
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FOLDERS = ("znGeom", "tests", "apps", "bench", "examples")
ROWS = (
    ("foundation/machine",),
    ("foundation/containers",),
    ("foundation/util", "foundation/linear", "foundation/text", "foundation/output", "foundation/signals"),
    ("foundation/threads",),
    ("foundation/mesh",),
    ("topology",),
    ("planar/polylines", "planar/strokes", "solvers"),
    ("planar/shapes",),
    ("files",),
    ("analysis",),
    ("editing", "spatial/shapes"),
    ("spatial/trees",),
    ("spatial/queries",),
    ("cache", "scopes"),
    ("repair", "simplify", "curves", "parameterize", "primitives"),
    ("shells",),
)
ROW_OF = {f"znGeom/{folder}": row for row, folders in enumerate(ROWS) for folder in folders}
UMBRELLA = "znGeom/znGeom.h"
LANGUAGE = "znGeom/foundation/machine/language.h"
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def source_files():
    for folder in FOLDERS:
        for path in sorted((ROOT / folder).rglob("*")):
            # What is in tests/package is a project of its own.
            if path.suffix in (".h", ".cpp") and not path.is_relative_to(ROOT / "tests/package"):
                yield path.relative_to(ROOT).as_posix()


def read_includes(file):
    """All includes of our own files, as (name, whether it is written in quotes)."""
    for bracket, name in INCLUDE.findall((ROOT / file).read_text(errors="replace")):
        if bracket == '"' or name.split("/")[0] in FOLDERS:
            yield name, bracket == '"'


def broken_rule(file, name, quoted):
    """The rule that one include breaks, or None."""
    if not (ROOT / name).is_file() or name.startswith("."):
        return "is not written from the root, or does not exist"
    if file.startswith("znGeom/"):
        if not quoted:
            return "stands in angle brackets inside the library"
        if not name.startswith("znGeom/"):
            return "leads out of the library"
        return broken_order(file, name)
    return None


def folder_of(file):
    """The folder of the table that a file is in, or None: what is in `internal` belongs to the folder above."""
    folder = file.rpartition("/")[0].removesuffix("/internal")
    return folder if folder in ROW_OF else None


def is_group(file):
    """Whether a file is an entry point for users: the header of a folder, or one in znGeom/ itself."""
    return file.count("/") == 1 or (ROOT / file.removesuffix(".h")).is_dir()


def broken_order(file, name):
    """The rule about the order of folders that one include within the library breaks, or None."""
    if is_group(file):
        return None
    if is_group(name):
        return "includes a whole folder inside the library"
    mine, other = folder_of(file), folder_of(name)
    if mine is None:
        return "stands in a file whose folder is in no row"
    return None if mine == other or (other and ROW_OF[other] < ROW_OF[mine]) else "is a step upward or sideways"


def missing_in_groups(graph):
    """Public headers missing from the header of their folder, and headers of folders missing from the next higher."""
    for file in public_headers(graph):
        if file == UMBRELLA:
            continue
        folder = file.rpartition("/")[0]
        group = UMBRELLA if folder == "znGeom" else f"{folder}.h"
        if file not in graph.get(group, []):
            yield f"{group} does not include {file}"


def public_headers(graph):
    return [file for file in graph if file.startswith("znGeom/") and file.endswith(".h") and "/internal/" not in file]


def without_language(graph):
    """Public headers that don't reach the one about the language."""
    asking, size = {LANGUAGE}, 0
    while len(asking) > size:
        size = len(asking)
        asking |= {file for file, names in graph.items() if asking & set(names)}
    return [f"{file} does not include {LANGUAGE}, nor a header that does" for file in public_headers(graph) if file not in asking]


def find_circle(graph):
    """One cycle of the graph as a list of files, or an empty list."""
    try:
        TopologicalSorter(graph).prepare()
    except CycleError as error:
        return list(reversed(error.args[1]))
    return []


def main():
    graph, errors = {}, []
    for file in source_files():
        graph[file] = []
        for name, quoted in read_includes(file):
            graph[file].append(name)
            if rule := broken_rule(file, name, quoted):
                errors.append(f"{file}: the include of {name} {rule}")
    errors += missing_in_groups(graph)
    errors += without_language(graph)
    if circle := find_circle(graph):
        errors.append("includes form a circle: " + " -> ".join(circle))

    print("\n".join(errors), end="\n" if errors else "")
    count = sum(map(len, graph.values()))
    print(f"includes: FAILED, {len(errors)} errors" if errors else f"includes: {count} includes in {len(graph)} files, no circle")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
