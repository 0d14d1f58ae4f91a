#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Builds and tests every target at both optimisations and writes the table into docs/targets.md.

matrix.py               every target
matrix.py TARGET ...    these; the others keep their rows
"""

import argparse
import itertools
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
PAGE = ROOT / "docs" / "targets.md"
MARK = "<!-- matrix -->\n"
TARGETS = ["m0", "m0-big", "m3-guarded", "m4f", "m7f", "m33", "m55", "rv32", "aarch64", "armhf",
           "mips-be", "s390x-be"]
BUILD_TYPES = {"-O2": "Release", "-Os": "MinSizeRel"}
HEADINGS = ["target", "optimisation", "tests", "cases", "failed", "image", "static RAM", "stack",
            "heap", "instructions per MAC"]
sys.path.append(str(ROOT / "tools" / "instructions"))
import count  # noqa: E402


def build(target, build_type):
    """Configures and builds; returns the build directory."""
    directory = ROOT / "build" / (target if build_type == "Release" else target + "-size")
    for command in (["cmake", "--preset", target, "-B", directory,
                     "-DCMAKE_BUILD_TYPE=" + build_type],
                    ["cmake", "--build", directory, "-j2"]):
        done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True)
        if done.returncode != 0:
            sys.exit("%s %s:\n%s" % (target, build_type, done.stderr))
    return directory


def number(pattern, text):
    found = re.search(pattern, text)
    return int(found.group(1)) if found else None


def instructions(target, directory):
    """Of the first layer that is counted, in some types."""
    if target not in count.MACHINES:
        return "-"
    counts = count.count(target, directory, "count_layers")
    first = next(iter(counts))[0]
    return ", ".join("%.2f" % counts[first, kind] for kind in ("float", "Q7", "int8 per channel"))


def row(target, optimisation):
    directory = build(target, BUILD_TYPES[optimisation])
    run = subprocess.run(["ctest", "-V", "--timeout", "120"], cwd=directory, capture_output=True,
                         text=True)
    # The lines of the program that the figures are of: the conformance program where there is one.
    name = next(n for n in ("lcut_unit_tests", "line_direction")
                if "Start %s" % n in re.sub(r"Start +\d+: ", "Start ", run.stdout))
    index = re.search(r"Start +(\d+): %s\b" % name, run.stdout).group(1)
    text = "".join(re.findall(r"^%s: .*\n" % index, run.stdout, re.M))
    program = next(p for p in directory.glob("*/" + name + "*") if p.suffix in ("", ".elf"))
    sizes = subprocess.run(["size", program], capture_output=True, text=True, check=True).stdout
    code, data, bss = map(int, sizes.splitlines()[1].split()[:3])
    passed, total = re.search(r"(\d+) tests failed out of (\d+)", run.stdout).groups()
    figures = [number(r"Total Cases: (\d+)", text), number(r"Failed Cases: (\d+)", text),
               code + data, data + bss, number(r"\[Board\].* stack (\d+)", text),
               number(r"\[Board\].* heap (\d+)", text)]
    tests = "%d of %s" % (int(total) - int(passed), total)
    return ([target, optimisation, tests] + ["-" if f is None else str(f) for f in figures]
            + [instructions(target, directory)])


def cells(line):
    return line.strip("| ").split(" | ")


def write_page(rows):
    """Replaces the rows of the same target and optimisation."""
    before, table, after = PAGE.read_text().split(MARK)
    known = {tuple(cells(line)[:2]): cells(line) for line in table.splitlines()[2:]}
    known.update((tuple(row[:2]), row) for row in rows)
    lines = [HEADINGS, ["---"] * len(HEADINGS)]
    lines += [known[key] for key in itertools.product(TARGETS, BUILD_TYPES) if key in known]
    table = "".join("| %s |\n" % " | ".join(line) for line in lines)
    PAGE.write_text(MARK.join([before, table, after]))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("targets", nargs="*", metavar="TARGET", help=" ".join(TARGETS))
    failures = False
    for target in parser.parse_args().targets or TARGETS:
        rows = [row(target, optimisation) for optimisation in BUILD_TYPES]
        write_page(rows)
        for r in rows:
            print(" ".join(r), flush=True)
            failures |= r[4] not in ("0", "-") or r[2].split()[0] != r[2].split()[2]
    sys.exit("failures" if failures else 0)


if __name__ == "__main__":
    main()
