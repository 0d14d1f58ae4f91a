#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Builds a program of each conformance suite alone for a Cortex-M4F, runs it under QEMU and writes
the memory that it takes into docs/on_your_chip.md.

suite_sizes.py            writes the table
suite_sizes.py --check    writes nothing; fails when a suite does, when a figure grew by more than
                          5 % and 64 bytes (an interrupt's frame), or when the page has other rows
"""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
PAGE = ROOT / "docs" / "on_your_chip.md"
MARK = "<!-- suites -->\n"
BUILD = ROOT / "build" / "m4f"
HEADINGS = ["suite", "cases", "flash", "static RAM", "heap", "stack"]
EMULATOR = ["tools/run_qemu.sh", "qemu-system-arm", "-M", "mps2-an386", "--"]


def run(*command):
    done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit("%s\n%s%s" % (" ".join(map(str, command)), done.stdout, done.stderr))
    return done.stdout + done.stderr


def row(title, program):
    code, data, bss = map(int, run("arm-none-eabi-size", program).splitlines()[1].split()[:3])
    printed = run(*EMULATOR, program)
    cases = re.search(r"Total Cases: (\d+)", printed).group(1)
    stack, heap = re.search(r"stack (\d+), heap (\d+)", printed).groups()
    return [title, cases, str(code + data), str(data + bss), heap, stack]


def measure():
    run("cmake", "--preset", "m4f")
    run("cmake", "--build", BUILD, "-j2", "--target", "lcut_single_suites", "lcut_unit_tests")
    suites = re.findall(r"SUITE\((\w+)\)", (ROOT / "test" / "suites.def").read_text())
    rows = [row(suite, BUILD / "test" / "single" / (suite + ".elf")) for suite in suites]
    return rows + [row("all", BUILD / "test" / "lcut_unit_tests.elf")]


def complaints(now, before):
    if [row[0] for row in now] != [row[0] for row in before]:
        yield "the page has other suites"
        return
    for new, old in zip(now, before):
        for heading, after, earlier in zip(HEADINGS[1:], new[1:], old[1:]):
            if int(after) > 1.05 * int(earlier) + 64:
                yield "%s: %s grew from %s to %s" % (new[0], heading, earlier, after)


def main():
    rows = measure()
    before, table, after = PAGE.read_text().split(MARK)
    if "--check" in sys.argv:
        known = [line.strip("| \n").split(" | ") for line in table.splitlines()[2:]]
        found = "\n".join(complaints(rows, known))
        sys.exit(found if found else 0)
    lines = [HEADINGS, ["---"] + ["---:"] * (len(HEADINGS) - 1)] + rows
    table = "".join("| %s |\n" % " | ".join(line) for line in lines)
    PAGE.write_text(MARK.join([before, table, after]))


if __name__ == "__main__":
    main()
