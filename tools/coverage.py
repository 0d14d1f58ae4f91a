#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Measures what the tests reach of the runtime and the checker, and writes docs/robustness.md.

coverage.py          writes the table
coverage.py --list   prints the branches that are not reached in all instances of their code

The tests are built with Clang's source-based coverage and run on this machine: the conformance
program, the unit tests, those of the checker and the examples. Code for other instruction sets is
not compiled here, so not counted. Of a template or a kernel body that is compiled several times a
branch is reached when the best instance reaches it.
"""

import collections
import json
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
BUILD = ROOT / "build" / "coverage"
PAGE = ROOT / "docs" / "robustness.md"
MARK = "<!-- coverage -->\n"
FOLDERS = ["core", "layers", "layers_quantized", "kernels", "check"]
FLAGS = "-fprofile-instr-generate -fcoverage-mapping"


def run(*command, **options):
    done = subprocess.run(command, cwd=ROOT, stdout=subprocess.PIPE, text=True, **options)
    if done.returncode != 0:
        sys.exit("%s\n%s" % (" ".join(map(str, command)), done.stdout))
    return done.stdout


def programs():
    """The test programs that hold code of the runtime."""
    for path in sorted(BUILD.rglob("*")):
        if path.is_file() and os.access(path, os.X_OK) and "CMakeFiles" not in path.parts:
            if b"__llvm_covmap" in path.read_bytes():
                yield path


def measure():
    """The arguments of llvm-cov that name profile and programs."""
    BUILD.mkdir(parents=True, exist_ok=True)
    signals = BUILD / "signals.o"
    run("clang", "-O1", "-c", ROOT / "tools" / "coverage_signals.c", "-o", signals)
    run("cmake", "--preset", "clang", "-B", BUILD, "-DNNLIB_BUILD_FUZZERS=OFF",
        "-DNNLIB_BUILD_IMPORTER=OFF", "-DCMAKE_C_FLAGS=" + FLAGS, "-DCMAKE_CXX_FLAGS=" + FLAGS,
        "-DCMAKE_CXX_FLAGS_RELEASE=-O1", "-DCMAKE_C_FLAGS_RELEASE=-O1",
        "-DCMAKE_EXE_LINKER_FLAGS=%s" % signals)
    run("cmake", "--build", BUILD, "-j2")
    for old in BUILD.rglob("*.profraw"):
        old.unlink()
    profiles = {**os.environ, "LLVM_PROFILE_FILE": str(BUILD / "%p-%m.profraw")}
    run("ctest", "--test-dir", BUILD, "--output-on-failure", env=profiles)
    merged = BUILD / "all.profdata"
    run("llvm-profdata-14", "merge", "-o", merged, *BUILD.glob("*.profraw"))
    first, *others = programs()
    return ["-instr-profile", merged, first, *(x for o in others for x in ("-object", o))]


def export(arguments, *options):
    return json.loads(run("llvm-cov-14", "export", *options, *arguments))["data"][0]


def source(name):
    """The path in the tree of a source of the runtime or the checker, or None."""
    path = pathlib.PurePath(name.split("../")[-1])  # compiler caches make relative paths
    path = path.relative_to(ROOT) if ROOT in path.parents else path
    return path if path.parts[0] in FOLDERS else None


def table(data):
    best = {}
    for file in data["files"]:
        path = source(file["filename"])
        covered = file["summary"]["branches"]["covered"], file["summary"]["lines"]["covered"]
        if path and (path not in best or covered > best[path][0]):
            best[path] = covered, file["summary"]
    sums = collections.defaultdict(lambda: [0, 0, 0, 0])
    for path, (_, summary) in best.items():
        for kind, at in (("lines", 0), ("branches", 2)):
            for name in (path.parts[0], "all"):
                sums[name][at] += summary[kind]["covered"]
                sums[name][at + 1] += summary[kind]["count"]
    text = "| | lines | reached | branches | reached |\n| --- | ---: | ---: | ---: | ---: |\n"
    for name in (*FOLDERS, "all"):
        lines, all_lines, branches, all_branches = sums[name]
        text += "| %s | %d | %.1f %% | %d | %.1f %% |\n" % (
            name, all_lines, 100 * lines / all_lines, all_branches, 100 * branches / all_branches)
    return text


def missed(data):
    """Prints file:line:column and which way no instance of the code has gone."""
    reached = collections.defaultdict(lambda: [0, 0])
    for function in data["functions"]:
        for branch in function["branches"]:
            line, column, taken, not_taken, file = *branch[:2], *branch[4:7]
            ways = reached[source(function["filenames"][file]), line, column]
            ways[0] += taken
            ways[1] += not_taken
    unreached = {place: ways for place, ways in reached.items() if place[0] and 0 in ways}
    for (path, line, column), ways in sorted(unreached.items()):
        never = "never" if ways == [0, 0] else "never true" if ways[0] == 0 else "never false"
        text = (ROOT / path).read_text().splitlines()[line - 1].strip()
        print("%s:%d:%d: %s: %s" % (path, line, column, never, text))


def main():
    arguments = measure()
    if sys.argv[1:] == ["--list"]:
        missed(export(arguments))
        return
    before, _, after = PAGE.read_text().split(MARK)
    PAGE.write_text(MARK.join([before, table(export(arguments, "-summary-only")), after]))


if __name__ == "__main__":
    main()
