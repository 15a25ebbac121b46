#!/usr/bin/env python3
"""Checks how files include one another.

Every include of a file of this repository is written from its root and names a file that exists, the library includes
nothing outside znGeom/, znGeom/foundation/ includes nothing outside itself, and includes form no circle.
"""

import re
import sys
from graphlib import CycleError, TopologicalSorter
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
FOLDERS = ("znGeom", "tests", "apps", "bench", "examples")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def source_files():
    for folder in FOLDERS:
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
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
        if file.startswith("znGeom/foundation/") and not name.startswith("znGeom/foundation/"):
            return "leads out of foundation"
    return None


def find_circle(graph):
    """One circle of the graph as a list of files, or an empty list."""
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
    if circle := find_circle(graph):
        errors.append("includes form a circle: " + " -> ".join(circle))

    print("\n".join(errors), end="\n" if errors else "")
    count = sum(map(len, graph.values()))
    print(f"includes: FAILED, {len(errors)} errors" if errors else f"includes: {count} includes in {len(graph)} files, no circle")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
