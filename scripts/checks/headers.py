#!/usr/bin/env python3
"""Checks that every header of the library compiles alone, and twice, with the warnings of our own build: with GCC, and
with Clang and -fno-rtti. The sources compile with -fno-rtti as well. Needs a configured release build (it configures
one if there is none)."""

import json
import os
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
COMMANDS = ROOT / "build/release/compile_commands.json"


def library_flags():
    """The flags with which our build compiles the library, without files and without -fno-rtti."""
    if not COMMANDS.exists():
        subprocess.run(["cmake", "--preset", "release"], cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    for entry in json.loads(COMMANDS.read_text()):
        if Path(entry["file"]).is_relative_to(ROOT / "znGeom"):
            words = shlex.split(entry["command"])[1:]
            return [word for word in words[:words.index("-o")] if word not in ("-fno-rtti", "-O3", "-DNDEBUG")]
    sys.exit("headers: FAILED, the build compiles no file of the library")


def compile_alone(compiler, flags, file):
    """The messages of the compiler; empty if the file compiles."""
    source = f'#include "{file}"\n' * (2 if file.endswith(".h") else 1)
    run = subprocess.run([*compiler, *flags, "-fsyntax-only", "-x", "c++", "-"], input=source, cwd=ROOT, text=True,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return run.stdout if run.returncode else ""


def library_files(suffix):
    return sorted(path.relative_to(ROOT).as_posix() for path in (ROOT / "znGeom").rglob("*" + suffix))


def main():
    flags = library_flags()
    headers, sources = library_files(".h"), library_files(".cpp")
    work = [(["g++"], file) for file in headers] + [(["clang++", "-fno-rtti"], file) for file in headers + sources]
    jobs = int(os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL") or os.cpu_count())
    failures = 0
    with ThreadPoolExecutor(jobs) as pool:
        for (compiler, file), messages in zip(work, pool.map(lambda item: compile_alone(item[0], flags, item[1]), work)):
            if messages:
                failures += 1
                print(f"{file} does not compile alone with {' '.join(compiler)}:\n{messages}")
    if failures:
        print(f"headers: FAILED, {failures} times")
        return 1
    print(f"headers: {len(headers)} headers compile alone, and the library does without run-time type information")
    return 0


if __name__ == "__main__":
    sys.exit(main())
