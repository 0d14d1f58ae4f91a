#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Counts instructions per multiply-accumulate under QEMU; writes them into docs/footprint.md."""

import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
PAGE = ROOT / "docs" / "footprint.md"
MARK = "<!-- instructions -->\n"
MACHINES = {
    "m4f": ["qemu-system-arm", "-M", "mps2-an386"],
    "m55": ["qemu-system-arm", "-M", "mps3-an547"],
    "rv32": ["qemu-system-riscv32", "-M", "virt", "-bios", "none"],
}


def run(*command, **options):
    done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, **options)
    if done.returncode != 0:
        sys.exit("%s\n%s%s" % (" ".join(map(str, command)), done.stdout, done.stderr))
    return done.stdout


def count(target, directory):
    """{(layer, type): instructions per multiply-accumulate} of a target's configured build"""
    plugin = ROOT / "build" / "region_counter.so"
    run("gcc", "-O2", "-shared", "-fPIC", "-o", plugin, HERE / "region_counter.c")
    run("cmake", "--build", directory, "-j2", "--target", "count_layers")
    program = next(directory.glob("**/count_layers.elf"))
    # Without the lowest bit, which tells of Thumb code.
    address = {name: int(at, 16) & ~1 for at, name in re.findall(
        r"^(\w+) \w (region_\w+)$", run("nm", program), re.M)}
    log = directory / "instructions.txt"
    options = "-plugin %s,begin=%d,end=%d -d plugin -D %s" % (
        plugin, address["region_begin"], address["region_end"], log)
    printed = run("tools/run_qemu.sh", *MACHINES[target], "--", program,
                  env={"PATH": "/usr/bin:/bin", "QEMU_EXTRA": options})
    rows = [line.split(";") for line in printed.split("\n") if line]
    return {(layer, kind): int(instructions) / int(products) for (layer, kind, products),
            instructions in zip(rows, log.read_text().split())}


def main():
    counts = {}
    for target in MACHINES:
        directory = ROOT / "build" / target
        run("cmake", "--preset", target, "-B", directory)
        counts[target] = count(target, directory)
    lines = [["layer", "type"] + list(MACHINES), ["---", "---"] + ["---:"] * len(MACHINES)]
    for key in next(iter(counts.values())):
        lines.append(list(key) + ["%.2f" % counts[target][key] for target in MACHINES])
    table = "".join("| %s |\n" % " | ".join(line) for line in lines)
    before, _, after = PAGE.read_text().split(MARK)
    PAGE.write_text(MARK.join([before, table, after]))


if __name__ == "__main__":
    main()
