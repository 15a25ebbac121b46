#!/usr/bin/env python3
"""Checks that every header of the library compiles alone, and that the library does without run-time type information.

A header that the source of the same name includes first is compiled alone by every build. The others are compiled
here, with the warnings of our own build. Needs a configured release build (it configures one if there is none)."""

import json
import os
import re
import shlex
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
COMMANDS = ROOT / "build/release/compile_commands.json"
INCLUDE = re.compile(r'^\s*#\s*include\s*["<]([^">]+)[">]', re.MULTILINE)
TYPE_INFORMATION = re.compile(r"\b(dynamic_cast|typeid|type_index|std::any)\b")


def library_command():
    """The command with which our build compiles the library, without files and optimisation."""
    if not COMMANDS.exists():
        subprocess.run(["cmake", "--preset", "release"], cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    for entry in json.loads(COMMANDS.read_text()):
        if Path(entry["file"]).is_relative_to(ROOT / "znGeom"):
            words = shlex.split(entry["command"])
            return [word for word in words[:words.index("-o")] if word not in ("-O3", "-DNDEBUG")]
    sys.exit("headers: FAILED, the build compiles no file of the library")


def compile_alone(command, header):
    """The messages of the compiler; empty if the header compiles."""
    run = subprocess.run([*command, "-fno-rtti", "-fsyntax-only", "-x", "c++", "-"], input=f'#include "{header}"\n',
                         cwd=ROOT, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
    return run.stdout if run.returncode else ""


def library_files(suffix):
    return sorted(path.relative_to(ROOT).as_posix() for path in (ROOT / "znGeom").rglob("*" + suffix))


def is_compiled_by_its_source(header):
    source = (ROOT / header).with_suffix(".cpp")
    first = INCLUDE.search(source.read_text()) if source.exists() else None
    return first is not None and first[1] == header


def errors_in_text(file):
    text = (ROOT / file).read_text()
    if file.endswith(".h") and "#pragma once" not in text:
        yield f"{file} does not say #pragma once"
    for use in TYPE_INFORMATION.findall(text):
        yield f"{file} uses run-time type information: {use}"


def main():
    headers, sources = library_files(".h"), library_files(".cpp")
    errors = [error for file in headers + sources for error in errors_in_text(file)]
    command = library_command()
    alone = [header for header in headers if not is_compiled_by_its_source(header)]
    jobs = int(os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL") or os.cpu_count())
    with ThreadPoolExecutor(jobs) as pool:
        for header, messages in zip(alone, pool.map(lambda header: compile_alone(command, header), alone)):
            if messages:
                errors.append(f"{header} does not compile alone:\n{messages}")
    print("\n".join(errors), end="\n" if errors else "")
    print(f"headers: FAILED, {len(errors)} times" if errors else
          f"headers: {len(headers)} headers compile alone, {len(alone)} of them tried here; no run-time type information")
    return 1 if errors else 0


if __name__ == "__main__":
    sys.exit(main())
