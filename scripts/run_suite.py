#!/usr/bin/env python3
"""Runs the tests of one build and counts them: run_suite.py BUILD_FOLDER COUNTS_FILE

GoogleTest programs run whole, cut into as many shards as there are cores, because one process for every test is slow
under sanitizers. Everything else that CTest knows runs through CTest. The counts file gets "passed failed skipped".
"""

import json
import os
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

SHARD_TIMEOUT = 15 * 60
TEST_TIMEOUT = 5 * 60
RESULT = re.compile(r"\[ {1,7}(OK|FAILED|SKIPPED) {1,2}\] ([^\s,]+).*\(\d+ ms\)$")
START = re.compile(r"\[ RUN {6}\] (\S+)$")
FILTER = "--gtest_filter="


class Counts:
    def __init__(self):
        self.passed = self.failed = self.skipped = 0

    def add(self, other):
        self.passed += other.passed
        self.failed += other.failed
        self.skipped += other.skipped


def job_count():
    return int(os.environ.get("CMAKE_BUILD_PARALLEL_LEVEL") or os.cpu_count())


def list_tests(build):
    listing = subprocess.run(["ctest", "--test-dir", build, "--show-only=json-v1"], check=True, capture_output=True)
    return json.loads(listing.stdout)["tests"]


def google_test_name(test):
    """The name of a test of a GoogleTest program; None for any other test."""
    return next((word.removeprefix(FILTER) for word in test.get("command", []) if word.startswith(FILTER)), None)


def property_of(test, name):
    return next((entry["value"] for entry in test.get("properties", []) if entry["name"] == name), None)


def run_program(program, folder, names):
    """Runs some tests of a program. Returns its exit code, and what it printed."""
    # Files, not pipes and arguments: what a hanging program has printed is kept, and a filter may be long.
    with tempfile.NamedTemporaryFile("w+") as flags, tempfile.TemporaryFile() as output:
        flags.write(FILTER + ":".join(names))
        flags.flush()
        try:
            code = subprocess.run([program, "--gtest_color=no", f"--gtest_flagfile={flags.name}"], cwd=folder,
                                  stdout=output, stderr=subprocess.STDOUT, timeout=SHARD_TIMEOUT, check=False).returncode
        except subprocess.TimeoutExpired:
            code = f"no end after {SHARD_TIMEOUT} seconds"
        output.seek(0)
        return code, output.read().decode(errors="replace").splitlines()


def read_results(lines):
    """The results as (kind, test, what it printed), and the same for a test that began and did not end, if any."""
    results, running, said = [], "", []
    for line in lines:
        if start := START.search(line):
            running, said = start[1], []
        elif result := RESULT.search(line):
            results.append((result[1], result[2], said))
            running, said = "", []
        else:
            said.append(line)
    return results, (running, said)


def run_shard(program, folder, names):
    """Runs tests one after the other. After a crash the program is started again with the remaining ones."""
    results = []
    while names:
        code, lines = run_program(program, folder, names)
        found, (crashed, said) = read_results(lines)
        results += found
        done = {name for _, name, _ in found}
        if crashed:
            results.append(("FAILED", crashed, [*said[-200:], f"the program ended with {code}"]))
            done.add(crashed)
        elif code != 0 and all(kind != "FAILED" for kind, _, _ in found):
            results.append(("FAILED", "(outside of any test)", [*said[-200:], f"the program ended with {code}"]))
        left = [name for name in names if name not in done]
        if not crashed or len(left) == len(names):
            results += [("FAILED", name, ["it did not run"]) for name in left]
            break
        names = left
    return results


def run_google_test(program, folder, names):
    """Runs all tests of a program in as many shards as cores; prints the output of failed and skipped tests."""
    counts = Counts()
    shards = min(job_count(), len(names))
    with ThreadPoolExecutor(shards) as pool:
        for results in pool.map(lambda shard: run_shard(program, folder, names[shard::shards]), range(shards)):
            for kind, name, said in results:
                if kind == "OK":
                    counts.passed += 1
                elif kind == "SKIPPED":
                    counts.skipped += 1
                    print(f"skipped {name}: {' '.join(line.strip() for line in said[1:] if line.strip())}")
                else:
                    counts.failed += 1
                    print("\n".join([*said, f"FAILED {name}"]))
    return counts


def run_ctest(build, numbers):
    """Runs the tests with these numbers through CTest."""
    counts = Counts()
    with tempfile.TemporaryDirectory() as folder:
        report = Path(folder, "report.xml")
        run = subprocess.run(
            ["ctest", "--test-dir", build, "-I", "0,0,1," + ",".join(map(str, numbers)), "-j", str(job_count()),
             "--timeout", str(TEST_TIMEOUT), "--output-on-failure", "--output-junit", str(report)],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", check=False)
        if run.returncode != 0:
            print(run.stdout)
        if not report.exists():
            counts.failed = len(numbers)
            return counts
        for case in xml.etree.ElementTree.parse(report).getroot().iter("testcase"):
            status = case.get("status")
            if status == "run":
                counts.passed += 1
            elif status in ("notrun", "disabled") and case.find("skipped") is not None:
                counts.skipped += 1
                print(f"skipped {case.get('name')}")
            else:
                counts.failed += 1
    return counts


def main():
    build, counts_file = Path(sys.argv[1]).resolve(), Path(sys.argv[2])
    tests = list_tests(build)
    counts = Counts()
    programs, others = {}, []
    for number, test in enumerate(tests, start=1):
        name = google_test_name(test)
        if not name:
            others.append(number)
        elif property_of(test, "DISABLED"):
            counts.skipped += 1
        else:
            programs.setdefault((test["command"][0], property_of(test, "WORKING_DIRECTORY")), []).append(name)
    for (program, folder), names in programs.items():
        counts.add(run_google_test(program, folder, names))
    if others:
        counts.add(run_ctest(build, others))

    print(f"{build.name}: {counts.passed} tests passed, {counts.failed} failed, {counts.skipped} skipped")
    counts_file.write_text(f"{counts.passed} {counts.failed} {counts.skipped}\n")
    return 1 if counts.failed else 0


if __name__ == "__main__":
    sys.exit(main())
