#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes docs/networks.md: what whole networks take on a chip.

The networks of architectures.hpp are imported, emitted as C, compiled at -O2 for each target and
run under QEMU, which counts the instructions of one inference and of each layer."""

import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
sys.path.append(str(HERE.parent / "instructions"))

import count  # noqa: E402

PAGE = ROOT / "docs" / "networks.md"
NETWORKS = ROOT / "build" / "networks"
TARGETS = ["m4f", "m55"]
# Cycles per multiply-accumulate on a Cortex-M4 at 120 MHz, from published latencies.
PUBLISHED = {"keyword_spotting": ("8.2", "4.5"), "visual_wake_words": ("9.6", "4.8"),
             "image_classification": ("6.8", "3.7"), "anomaly_detection": ("4.6", "3.9")}


def emit():
    """{network: (arena, bound, bound with scratch)} in bytes"""
    count.run("cmake", "--preset", "release")
    count.run("cmake", "--build", "--preset", "release", "--target", "emit_networks")
    printed = count.run(ROOT / "build" / "release" / "tools" / "networks" / "emit_networks",
                        NETWORKS)
    rows = [line.split(";") for line in printed.splitlines()]
    return {row[0]: tuple(map(int, row[1:])) for row in rows}


class Target:
    def __init__(self, name):
        self.name = name
        self.directory = ROOT / "build" / ("networks-" + name)
        count.run("cmake", "--preset", name, "-B", self.directory, "-DNNLIB_NETWORKS=%s" % NETWORKS)
        self.nothing = self.size("run_nothing")

    def size(self, program):
        """(flash, RAM)"""
        count.run("cmake", "--build", self.directory, "-j2", "--target", program)
        binary = next(self.directory.glob("**/%s.elf" % program))
        printed = count.run("arm-none-eabi-size", binary)
        text, data, bss = map(int, printed.splitlines()[1].split()[:3])
        return text + data, data + bss

    def memory(self, network):
        """(flash, RAM) beyond an empty program, without the caller's input and output"""
        header = (NETWORKS / network / "network.h").read_text()
        ports = sum(map(int, re.findall(r"PUT_ELEMENTS (\d+)", header)))
        flash, ram = self.size("run_" + network)
        return flash - self.nothing[0], ram - self.nothing[1] - ports

    def instructions(self, network):
        """[(place and type, multiply-accumulates, instructions), ...], the whole network first"""
        counted = count.count(self.name, self.directory, "count_" + network)
        return [(name, int(macs), int(instructions))
                for (name, macs), instructions in counted.items()]


def table(headings, rows):
    lines = [headings, ["---"] + ["---:"] * (len(headings) - 1), *rows]
    return "".join("| %s |\n" % " | ".join(map(str, line)) for line in lines)


def per(instructions, macs):
    return "%.2f" % (instructions / macs) if macs else ""


def main():
    plans = emit()
    targets = [Target(name) for name in TARGETS]
    counted = {network: [target.instructions(network) for target in targets] for network in plans}
    speed = table(
        ["network", "multiply-accumulates", *("instructions %s" % t for t in TARGETS),
         *("per multiply-accumulate %s" % t for t in TARGETS), "TFLM cycles", "microTVM cycles"],
        [[network.replace("_", " "), runs[0][0][1], *(run[0][2] for run in runs),
          *(per(run[0][2], run[0][1]) for run in runs), *PUBLISHED[network]]
         for network, runs in counted.items()])
    memory = table(
        ["network", *("flash %s" % t for t in TARGETS), *("RAM %s" % t for t in TARGETS), "arena",
         "live activations", "with scratch", "arena above that"],
        [[network.replace("_", " "), *(t.memory(network)[0] for t in targets),
          *(t.memory(network)[1] for t in targets), *plan,
          "%.1f %%" % (100 * plan[0] / plan[2] - 100)] for network, plan in plans.items()])
    layers = ""
    for network, runs in counted.items():
        rows = [[first[0], first[1], *(cell for run in runs for cell in (
            run[i][2], per(run[i][2], run[i][1]), "%.1f %%" % (100 * run[i][2] / run[0][2])))]
                for i, first in enumerate(runs[0]) if i > 0]
        columns = [cell % t for t in TARGETS for cell in ("%s", "each on %s", "share on %s")]
        layers += "\n### %s\n\n" % network.replace("_", " ").capitalize() + table(
            ["layer", "multiply-accumulates", *columns], rows)
    page = PAGE.read_text()
    for mark, text in (("speed", speed), ("memory", memory), ("layers", layers)):
        mark = "<!-- %s -->\n" % mark
        before, _, after = page.split(mark)
        page = mark.join([before, text, after])
    PAGE.write_text(page)


if __name__ == "__main__":
    main()
