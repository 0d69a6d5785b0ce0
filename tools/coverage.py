#!/usr/bin/env python3
"""Runs all tests with counts of executed lines and branches, and compares them with the goals.

The library and the agent are built with counts; the test programs are those of the release build. Branches that only an
exception takes are left out: the compiler adds them to nearly every call. Every line of the library that is not executed
needs a reason in tests/uncovered.txt.
"""

import collections
import glob
import json
import os
import shutil
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = f"{ROOT}/build/coverage"
RELEASE = f"{ROOT}/build/release"
PREFIX = f"{BUILD}/wine"
PROGRAMS = f"{PREFIX}/drive_c/programs/coverage"
COUNTS = f"{PREFIX}/drive_c/counts"
GCOV = "x86_64-w64-mingw32-gcov-posix"

LIBRARY = ["win32", "frame", "paths", "fileops", "volumes", "security", "restore", "cache", "module", "exports"]
LINES_OF_LIBRARY, BRANCHES_OF_LIBRARY, LINES_OF_AGENT = 98.0, 92.0, 95.0  # percent: the goals

# Programs, and the tests that are left out: those of imports, data and stack, because the counts have some of their own,
# and those of time.
RUNS = [("tests", "-Imports.*:ListingStress.*Moment"), ("cache-tests", "*"), ("loading-tests", "*"), ("unit-tests", "*"),
        ("sweeps", "-ImportTable.*:*SharedState*:ThreadsTest.Other*:OverfilledStackBuffer.*"), ("agent-tests", "*"),
        ("agent-fault-tests", "-*IsKnown")]


# Tests that are scripts, because they need a terminal or a restart.
SCRIPTS = [("tests/agent/progress.sh", "agent"), ("tests/restart/restart.sh", "restart-tests")]


def run(*command, **options):
    environment = {**os.environ, "KESTROVANE_PREFIX": PREFIX, "GCOV_PREFIX": r"C:\counts",
                   "GCOV_PREFIX_STRIP": str(BUILD.count("/"))}
    return subprocess.run(command, env=environment, check=False, stdin=subprocess.DEVNULL, **options).returncode


def wine(*words, **options):
    return run(f"{ROOT}/tools/wine.sh", *words, **options)


def in_prefix(program):
    return f"C:\\programs\\coverage\\kestrovane-{program}.exe"


def run_tests():
    """Returns the programs whose tests failed."""
    shutil.rmtree(COUNTS, ignore_errors=True)
    os.makedirs(PROGRAMS, exist_ok=True)
    for build in (RELEASE, BUILD):  # what counts replaces the rest
        for file in glob.glob(f"{build}/bin/*.exe") + glob.glob(f"{build}/bin/*.dll"):
            shutil.copy2(file, PROGRAMS)
    failed = []

    def logged(name, start, *command):
        with open(f"{BUILD}/{name}.log", "wb") as log:
            if start(*command, stdout=log, stderr=subprocess.STDOUT) != 0:
                failed.append(f"build/coverage/{name}.log")

    for program, names in RUNS:
        logged(program, wine, in_prefix(program), f"--gtest_filter={names}", "--gtest_brief=1")
    for script, program in SCRIPTS:
        logged(os.path.basename(script), run, f"{ROOT}/{script}", f"{ROOT}/tools/wine.sh", in_prefix(program))
    return failed


class Source:
    """The counts of a source, over all objects that hold code of it."""

    def __init__(self):
        self.lines = collections.Counter()
        self.branches = {}  # by line and number of branches: how often each was taken
        self.functions = {}  # by line

    def add(self, file):
        for line in file["lines"]:
            number = line["line_number"]
            self.lines[number] += line["count"]
            self.functions[number] = line.get("function_name", "")
            taken = [branch["count"] for branch in line["branches"] if not branch["throw"]]
            if taken:
                key = (number, len(taken))
                self.branches[key] = [a + b for a, b in zip(self.branches.get(key, [0] * len(taken)), taken)]

    def executed(self):
        return sum(count > 0 for count in self.lines.values()), len(self.lines)

    def taken(self):
        counts = [count for branches in self.branches.values() for count in branches]
        return sum(count > 0 for count in counts), len(counts)


def read_counts():
    sources = collections.defaultdict(Source)
    for counts in glob.glob(f"{COUNTS}/**/*.gcda", recursive=True):
        built = f"{BUILD}/{os.path.relpath(counts, COUNTS)}"
        shutil.copy2(counts, built)
        output = subprocess.run([GCOV, "--json-format", "--stdout", "--branch-probabilities", built], check=True,
                                cwd=BUILD, capture_output=True, text=True).stdout
        for document in output.splitlines():
            for file in json.loads(document)["files"]:
                # A compiler cache writes paths relative to the build.
                base = BUILD if file["file"].startswith("..") else ROOT
                path = os.path.relpath(os.path.normpath(os.path.join(base, file["file"])), ROOT)
                if path.split("/")[0] in LIBRARY + ["agent"]:
                    sources[path].add(file)
    return sources


def percent(pair):
    return 100.0 * pair[0] / pair[1] if pair[1] else 100.0


def total(pairs):
    pairs = list(pairs)
    return sum(pair[0] for pair in pairs), sum(pair[1] for pair in pairs)


def line_report(name, files, sources):
    lines = total(sources[file].executed() for file in files)
    branches = total(sources[file].taken() for file in files)
    print(f"{name}: {percent(lines):.1f} % of {lines[1]} lines, {percent(branches):.1f} % of {branches[1]} branches")
    return percent(lines), percent(branches)


def read_reasons():
    """Reasons by file and line. A line of the file: file | line of the source | reason."""
    reasons = {}
    with open(f"{ROOT}/tests/uncovered.txt", encoding="utf-8") as entries:
        for entry in entries.read().splitlines():
            if entry and not entry.startswith("#"):
                file, rest = entry.split(" | ", 1)
                text, reason = rest.rsplit(" | ", 1)
                reasons[(file, text)] = reason
    return reasons


def uncovered(file, source):
    with open(f"{ROOT}/{file}", encoding="utf-8") as text:
        lines = text.read().splitlines()
    return [(number, lines[number - 1].strip()) for number, count in sorted(source.lines.items()) if count == 0]


def check_reasons(files, sources):
    """Prints every line of the library that is not executed. Returns whether all of them have a reason."""
    reasons = read_reasons()
    used = set()
    good = True
    for file in files:
        for number, text in uncovered(file, sources[file]):
            reason = reasons.get((file, text))
            print(f"  {file}:{number}: {text}: {reason or 'NO REASON'}")
            used.add((file, text))
            good = good and reason is not None
    for file, text in sorted(set(reasons) - used):
        print(f"tests/uncovered.txt: this line is executed, or no longer there: {file} | {text}")
        good = False
    return good


def report(sources):
    library = sorted(file for file in sources if not file.startswith("agent/"))
    agent = sorted(file for file in sources if file.startswith("agent/"))
    print("Branches that only an exception takes are left out.")
    for folder in LIBRARY:
        files = [file for file in library if file.startswith(folder + "/")]
        if files:
            line_report(folder, files, sources)
    lines, branches = line_report("library", library, sources)
    good = check_reasons(library, sources)
    for file in agent:
        missing = uncovered(file, sources[file])
        if missing:
            print(f"  {file}: lines {', '.join(str(number) for number, _ in missing)} are not executed")
    agent_lines, _ = line_report("agent", agent, sources)
    for what, figure, goal in (("lines of the library", lines, LINES_OF_LIBRARY),
                               ("branches of the library", branches, BRANCHES_OF_LIBRARY),
                               ("lines of the agent", agent_lines, LINES_OF_AGENT)):
        if figure < goal:
            print(f"coverage: {figure:.1f} % of the {what}, less than {goal} %")
            good = False
    return good


def main():
    if wine("start") != 0:
        sys.exit("coverage: no Wine prefix")
    try:
        failed = run_tests()
    finally:
        wine("stop")
    for log in failed:
        print(f"coverage: tests failed, see {log}")
    good = report(read_counts())
    sys.exit(0 if good and not failed else 1)


if __name__ == "__main__":
    main()
