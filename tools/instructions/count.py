#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Counts executed instructions of layers under QEMU, exactly.

count.py [TARGET...]   writes the columns of all or some targets into docs/footprint.md
count.py --check       writes nothing; fails when a row of the targets that CI checks, at -O2, is
                       slower by more than 3 % than on the page, or missing there
"""

import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
PAGE = ROOT / "docs" / "footprint.md"
MARK = "<!-- instructions -->\n"
BIG_M0 = "microbit -global nrf51-soc.flash-size=0x400000 -global nrf51-soc.sram-size=0x80000"
MACHINES = {name: ("qemu-system-%s -M %s" % machine).split() for name, machine in {
    "m0-big": ("arm", BIG_M0), "m3-guarded": ("arm", "mps2-an385"), "m4f": ("arm", "mps2-an386"),
    "m7f": ("arm", "mps2-an500"), "m33": ("arm", "mps2-an505"), "m55": ("arm", "mps3-an547"),
    "rv32": ("riscv32", "virt -bios none")}.items()}
CHECKED = ["m4f", "m55"]
FUSING = ["m4f", "m7f", "m33", "m55"]
LEVELS = ["O2", "Os"]
PROGRAMS = ["count_layers", "count_pooling", "count_element_wise"]
FUSED_PROGRAMS = PROGRAMS[:2]


def run(*command, **options):
    done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, **options)
    if done.returncode != 0:
        sys.exit("%s\n%s%s" % (" ".join(map(str, command)), done.stdout, done.stderr))
    return done.stdout


def count(target, directory, program):
    """{(layer, type or unit): instructions per unit} of a target's configured build"""
    plugin = ROOT / "build" / "region_counter.so"
    run("gcc", "-O2", "-shared", "-fPIC", "-o", plugin, HERE / "region_counter.c")
    run("cmake", "--build", directory, "-j2", "--target", program)
    binary = next(directory.glob("**/%s.elf" % program))
    # Without the lowest bit, which tells of Thumb code.
    address = {name: int(at, 16) & ~1 for at, name in re.findall(
        r"^(\w+) \w (region_\w+)$", run("nm", binary), re.M)}
    log = directory / "instructions.txt"
    options = "-plugin %s,begin=%d,end=%d -d plugin -D %s" % (
        plugin, address["region_begin"], address["region_end"], log)
    printed = run("tools/run_qemu.sh", *MACHINES[target], "--", binary,
                  env={"PATH": "/usr/bin:/bin", "QEMU_EXTRA": options})
    rows = [line.split(";") for line in printed.split("\n") if line]
    return {(layer, kind): int(instructions) / int(units) for (layer, kind, units), instructions
            in zip(rows, log.read_text().split())}


def build(target, level, fused):
    """Configures; at -O2 the folder is that of the preset, where most is built already."""
    name = ("fused-" if fused else "") + target + ("" if level == "O2" else "-" + level)
    directory = ROOT / "build" / name
    run("cmake", "--preset", target, "-B", directory, "-DCMAKE_CXX_FLAGS_RELEASE=-" + level,
        "-DNNLIB_FUSED_MULTIPLY_ADD=" + ("ON" if fused else "OFF"))
    return directory


def measure(target, level, programs=PROGRAMS, fused=False):
    directory = build(target, level, fused)
    rows = {}
    for program in programs:
        rows.update(count(target, directory, program))
    return rows


def with_fused(measured, target, level):
    """The same with a row behind each float layer, of the build that rounds product and sum once."""
    fused = measure(target, level, FUSED_PROGRAMS, True) if target in FUSING else {}
    rows = {}
    for (layer, kind), figure in measured.items():
        rows[layer, kind] = figure
        if kind == "float" or "pooling" in layer and kind == "float element":
            rows[layer, kind + ", fused"] = fused.get((layer, kind))
    return rows


def read_page():
    """{(layer, kind): {column: figure}}, and the text around the table"""
    before, table, after = PAGE.read_text().split(MARK)
    lines = [[cell.strip() for cell in line.split("|")[1:-1]] for line in table.splitlines()]
    columns = lines[0][2:]
    return {(line[0], line[1]): dict(zip(columns, line[2:])) for line in lines[2:]}, before, after


def write_page(measured):
    """measured: {column: {(layer, kind): instructions}}; rows are those of the last column."""
    rows, before, after = read_page()
    columns = ["%s %s" % (target, level) for target in MACHINES for level in LEVELS]
    lines = [["layer", "of"] + columns, ["---", "---"] + ["---:"] * len(columns)]
    for key in list(measured.values())[-1]:
        figures = {**rows.get(key, {}),
                   **{column: "%.2f" % of[key] if of[key] is not None else ""
                      for column, of in measured.items()}}
        lines.append([*key] + [figures.get(column, "") for column in columns])
    table = "".join("| %s |\n" % " | ".join(line) for line in lines)
    PAGE.write_text(MARK.join([before, table, after]))


def complaints():
    rows, _, _ = read_page()
    for target in CHECKED:
        for key, now in measure(target, "O2").items():
            figure = rows.get(key, {}).get(target + " O2", "")
            if not figure:
                yield "%s, %s of %s: not on the page" % (target, *key)
            elif now > 1.03 * float(figure) + 0.005:
                yield "%s, %s of %s: from %s to %.2f" % (target, *key, figure, now)


def main():
    if "--check" in sys.argv:
        found = list(complaints())
        sys.exit("\n".join(found) if found else 0)
    for target in sys.argv[1:] or MACHINES:
        for level in LEVELS:
            rows = with_fused(measure(target, level), target, level)
            write_page({"%s %s" % (target, level): rows})


if __name__ == "__main__":
    main()
