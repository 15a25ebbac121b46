#!/usr/bin/env python3
"""Checks that the C++ snippets of README.md and docs/ compile and run.

A block that has a main is a program. Any other is the body of a function, which begins with the lines of a comment
before the block; it may use scripts/checks/snippets.h, and a second comment says what holds afterwards:

    <!-- snippet: znGeom::CompactMesh mesh = grid(); -->
    <!-- afterwards: mesh.getNumTriangles() == 0 -->

A comment `<!-- snippet: file -->` marks a block that is a file of its own, outside any function. Programs run
where bunny.obj is a mesh. Needs the library of the release build (it builds one if there is none).
"""

import re
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
WORK = ROOT / "build/checks/snippets"
LIBRARY = ROOT / "build/release/znGeom/libznGeom.a"
BLOCK = re.compile(r"((?:^<!--[^\n]*-->\n+)*)^```cpp\n(.*?)^```$", re.MULTILINE | re.DOTALL)
COMMENT = re.compile(r"<!-- (snippet|afterwards): (.*?) -->")
# A page shows values that it does not go on to use.
FLAGS = ["-std=c++20", "-O0", "-DZNGEOM_STATIC", "-Wall", "-Wextra", "-Werror", "-Wno-unused-variable",
         "-Wno-unused-but-set-variable", f"-I{ROOT}"]

CUBE = ["v 0 0 0", "v 1 0 0", "v 1 1 0", "v 0 1 0", "v 0 0 1", "v 1 0 1", "v 1 1 1", "v 0 1 1"]
QUADS = ["f 1 4 3 2", "f 5 6 7 8", "f 1 2 6 5", "f 2 3 7 6", "f 3 4 8 7", "f 4 1 5 8"]
TRIANGLES = [f"f {a} {b} {c}" for a, b, c, d in (quad.split()[1:] for quad in QUADS)
             for b, c in ((b, c), (c, d))]


class Page:
    """The snippets of one page: whole programs, and functions that one program calls in turn."""

    def __init__(self, path):
        self.name = path.relative_to(ROOT).as_posix()
        self.programs, self.files, self.bodies, self.calls = [], [], [], []
        text = path.read_text()
        for number, block in enumerate(BLOCK.finditer(text), start=1):
            code = f'#line {text.count(chr(10), 0, block.start(2)) + 1} "{self.name}"\n{block[2]}'
            said = dict(COMMENT.findall(block[1]))
            if re.search(r"\bint main\(", code):
                self.programs.append(code)
            elif said.get("snippet") == "file":
                self.files.append(code)
            else:
                self.bodies.append(f"static bool snippet{number}()\n{{\n{said.get('snippet', '')}\n{code}\n"
                                   f"return {said.get('afterwards', 'true')};\n}}\n")
                self.calls.append(f'    if (!snippet{number}()) return std::puts("{self.name}: snippet {number} is wrong"), 1;')

    def sources(self):
        yield from self.programs
        if self.bodies or self.files:
            # Files come without the preamble, each in a namespace: they include what they need, or use what is here.
            head = '#include "scripts/checks/snippets.h"\n'
            files = [f"namespace file{number} {{\n{code}\n}}\n" for number, code in enumerate(self.files)]
            yield "\n".join([head, *files, *self.bodies, "int main()\n{", *self.calls, "}\n"])

    @property
    def count(self):
        return len(self.programs) + len(self.files) + len(self.bodies)


def run(command):
    """What a command printed if it failed, otherwise nothing."""
    done = subprocess.run(command, cwd=WORK, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300,
                          check=False)
    return f"{done.stdout}{command[0]} ended with {done.returncode}\n" if done.returncode else ""


def try_source(name, source):
    file, program = WORK / f"{name}.cpp", WORK / name
    file.write_text(source)
    return run(["g++", *FLAGS, str(file), str(LIBRARY), "-pthread", "-o", str(program)]) or run([str(program), "bunny.obj"])


def main():
    WORK.mkdir(parents=True, exist_ok=True)
    if not LIBRARY.exists():
        for command in (["cmake", "--preset", "release"], ["cmake", "--build", "--preset", "release", "--target", "znGeom"]):
            subprocess.run(command, cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    (WORK / "bunny.obj").write_text("\n".join(CUBE + TRIANGLES) + "\n")
    (WORK / "quads.obj").write_text("\n".join(CUBE + QUADS) + "\n")

    pages = [Page(path) for path in [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]]
    work = [(f"{page.name.replace('/', '_').removesuffix('.md')}_{number}", source)
            for page in pages for number, source in enumerate(page.sources())]
    with ThreadPoolExecutor(2) as pool:
        failures = [messages for messages in pool.map(lambda item: try_source(*item), work) if messages]
    print("\n".join(failures), end="\n" if failures else "")
    print(f"snippets: FAILED, {len(failures)} of {len(work)} programs" if failures else
          f"snippets: {sum(page.count for page in pages)} snippets of the pages compile and run")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
