#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes the table of docs/digits.md: the example's networks in every kind of numbers.

digits.py            writes the table
digits.py --check    writes nothing; fails when a network names other numbers of images right than
                     on the page, or int8 or Q7 loses more than it may

Each network is quantized by nnlib-import, run over the test half in memory, compiled at -O2 for
each target and run under QEMU, which counts the instructions of an inference.
"""

import json
import pathlib
import re
import sys

import numpy

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "tools" / "instructions"))

import count  # noqa: E402

DATA = ROOT / "examples" / "digits"
PAGE = ROOT / "docs" / "digits.md"
WORK = ROOT / "build" / "digits"
MARK = "<!-- digits -->\n"
MODELS = ["cnn", "separable", "lstm"]
TYPES = {"int8": 0.5, "uint8": 100, "q7": 1.5, "q15": 100}  # points that may be lost
TARGETS = ["m4f", "m55"]
HEADINGS = ["network", "numbers", "right", "of 899", "flash m4f", "RAM m4f", "heap",
            *("instructions %s" % target for target in TARGETS)]


def write_data():
    images = numpy.fromfile(DATA / "test_images.bin", numpy.uint8).reshape(-1, 64)
    WORK.mkdir(parents=True, exist_ok=True)
    numpy.save(WORK / "images.npy", images.astype(numpy.float32) / 16)
    numpy.save(WORK / "labels.npy", numpy.fromfile(DATA / "test_labels.bin", numpy.uint8))


def quantize(model, kind):
    """(right in float, right, heap) of a network on the host"""
    printed = count.run(
        ROOT / "build/release/importer/nnlib-import", "quantize", DATA / (model + ".onnx"), "--to",
        kind, "--calibrate", DATA / "calibration.npy", "--evaluate", WORK / "images.npy",
        "--labels", WORK / "labels.npy", "-o", WORK, "--name", "digits")
    heap = json.loads((WORK / "digits_report.json").read_text())["totals"]["heap_bytes"]
    return (*map(int, re.search(r"right: (\d+) of 899 in float, (\d+)", printed).groups()), heap)


def right_answers():
    """{(model, kind): (right, heap)}, PyTorch's and float's too"""
    count.run("cmake", "--preset", "release")
    count.run("cmake", "--build", "--preset", "release", "-j2", "--target", "nnlib-import")
    rows = {}
    for model, right in json.loads((DATA / "right.json").read_text()).items():
        rows[model, "PyTorch"] = (right, 0)
        for kind in TYPES:
            in_float, right, heap = quantize(model, kind)
            rows.setdefault((model, "float"), (in_float, heap))
            rows[model, kind] = (right, heap)
    return rows


def sizes(directory, program):
    """(flash, RAM)"""
    count.run("cmake", "--build", directory, "-j2", "--target", program)
    printed = count.run("arm-none-eabi-size", next(directory.glob("**/%s.elf" % program)))
    text, data, bss = map(int, printed.splitlines()[1].split()[:3])
    return text + data, data + bss


def measure():
    """{(model, kind): [flash, RAM]} and {(model, kind): [instructions, ...]}"""
    memory, instructions = {}, {}
    for target in TARGETS:
        directory = ROOT / "build" / ("digits-" + target)
        count.run("cmake", "--preset", target, "-B", directory)
        nothing = sizes(directory, "count_digits_nothing")
        for model in MODELS:
            for kind in ["float", *TYPES]:
                program = "count_digits_%s_%s" % (model, kind)
                size = sizes(directory, program)
                memory.setdefault((model, kind), [a - b for a, b in zip(size, nothing)])
                counted = count.count(target, directory, program)["inference", "digits"]
                instructions.setdefault((model, kind), []).append(round(counted))
    return memory, instructions


def losses(rows):
    for model in MODELS:
        for kind, most in TYPES.items():
            lost = 100 * (rows[model, "PyTorch"][0] - rows[model, kind][0]) / 899
            if lost > most:
                yield "%s in %s loses %.2f points" % (model, kind, lost)


def line(cells):
    return "| %s |\n" % " | ".join(map(str, cells))


def main():
    write_data()
    rows = right_answers()
    found = list(losses(rows))
    before, table, after = PAGE.read_text().split(MARK)
    if "--check" in sys.argv:
        there = dict(re.findall(r"^\| (\w+ \| \w+) \| (\d+)", table, re.M))
        now = {"%s | %s" % key: str(right) for key, (right, _) in rows.items()}
        found += ["%s: %s instead of %s" % (key, now.get(key), there.get(key))
                  for key in sorted({*there, *now}) if now.get(key) != there.get(key)]
        sys.exit("\n".join(found) or 0)
    memory, instructions = measure()
    table = line(HEADINGS) + line(["---"] * 2 + ["---:"] * (len(HEADINGS) - 2))
    for key, (right, heap) in rows.items():
        here = [*memory[key], heap, *instructions[key]] if key in memory else [""] * 5
        table += line([*key, right, "%.2f %%" % (100 * right / 899), *here])
    PAGE.write_text(MARK.join([before, table, after]))
    sys.exit("\n".join(found) or 0)


if __name__ == "__main__":
    main()
