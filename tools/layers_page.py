#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""docs/layers.md, the page "Layers and types": every layer function of the public headers with what
the network checker's table says of it. A function without a row, or a row without a function, is an
error. With --check nothing is written: the page must be what would be."""

import argparse
import collections
import itertools
import os
import re
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "tools/footprint"))
import public_functions  # noqa: E402

Row = collections.namedtuple("Row", "name record type other_type inputs outputs weights depthwise "
                                    "scratch in_place linked")

KINDS = {
    "f": "float32",
    "d": "float32 or table indices",
    "r": "float32 or table indices",
    "a": "any type",
    "s": "type of input 0",
    "i": "uint8 or int8, 1 scale",
    "w": "uint8 or int8, 1 or D scales",
    "t": "type of input 0, 1 scale",
    "e": "uint8 or int8",
    "k": "type of input 0",
    "q": "Q7 or Q15",
    "p": "Q, width of input 0",
    "b": "int32",
    "u": "uint32",
}

# Which scratch tensor, how much of it, in what unit.
SCRATCH = {
    "forward_conv2d": "0: `ai_conv2d_scratch_size` **elements**, for table indices only",
    "forward_conv2d_transpose": "0: `ai_conv2d_scratch_size` **elements**, for table indices only",
    "forward_conv2d_nl_pool": "0: rows (1, D, W_conv, rows), `ai_conv2d_nl_pool_scratch_size` "
                              "**elements**; 1: expanded weights, for table indices only",
    "forward_conv2d_integer": "0: `ai_conv2d_integer_scratch_size` bytes, aligned to 4; 1: with "
                              "`nl_func`, as many elements as output 0",
    "forward_conv2d_nl_pool_integer": "0: rows (1, D, W_conv, rows), at least as many as a pooling "
                                      "window is high; **1**: "
                                      "`ai_conv2d_nl_pool_integer_scratch_size` bytes, aligned to 4",
    "forward_dense_integer": "0: `ai_dense_integer_scratch_size` bytes, aligned to 4; optional with "
                             "1 scale",
    "forward_conv2d_fixed": "0: `ai_conv2d_fixed_scratch_size` bytes, aligned to 2",
    "forward_conv2d_nl_pool_fixed": "0: rows (1, D, W_conv, rows), at least as many as a pooling "
                                    "window is high; **1**: `ai_conv2d_nl_pool_fixed_scratch_size` "
                                    "bytes, aligned to 2",
    "forward_dense_fixed": "0: `ai_dense_fixed_scratch_size` bytes, aligned to 2; optional",
}

RESTRICTIONS = {
    "forward_conv2d": "depthwise weights (G = C = D) may be (1, x, y, D) as well",
    "forward_conv2d_transpose": "as `forward_conv2d`; output larger by at most stride - 1",
    "forward_conv2d_nl_pool": "as `forward_conv2d`; sizes below 65536",
    "forward_gemm": "three operands, inputs before weights, each (1, columns, 1, rows); C may spread "
                    "over rows and columns; at most 65535 elements where sizes do not fit",
    "forward_matmul": "B is input 1 or weights 0",
    "forward_relu": "`nl_params`: none, 1 value or 3",
    "forward_prelu": "slopes repeat over the input; data must lie at data_start",
    "forward_sm": "along the channels; data must lie at data_start",
    "forward_hardmax": "width 1",
    "forward_lrn": "an even `local_size` covers one channel more",
    "forward_eltwise": "sizes of 1 spread; in place only over an input of the output's size",
    "forward_reduce": "reduced sizes are 1 in the output",
    "forward_lstm": "S is 1 or T; heap: 12 U bytes; `out_activation` not null",
    "forward_gru": "S is 1 or T; heap: 12 U bytes, 8 U with `reset_after`",
    "_forward_gru_after": "**not to be installed**: `forward_gru` calls it",
    "forward_time_delay": "D delays; S at least T + the longest",
    "forward_time_distributed": "inner layers run once a step; at most 8 tensors in a list",
    "forward_pad": "reflection mirrors as many rows before as there are columns before",
    "forward_tile": "c, w, h: `repeats` 2, 1, 0",
    "forward_upsample": "bilinear: float32 only",
    "forward_concat": "same sizes but on `axis`; the output's array ends with its last element",
    "forward_slice": "output: end - start on each axis given",
    "forward_topK": "outputs: values, then indices; k on `axis`",
    "node_convert": "float32 at one end; to Q with integer bits the **input** is scaled in place",
    "node_convert_fixed": "same width and integer bits: nothing is written, one buffer is meant",
    "node_convert_integer": "uint8 to int8 or back, zero point moved by 128",
    "forward_conv2d_integer": "**no dilation**; G is 1 or C = D, else it hangs; uint8/uint8, "
                              "uint8/int8 or int8/int8 input/weights, else it hangs; int8 weights "
                              "have zero points 0; sizes below 65536",
    "forward_conv2d_nl_pool_integer": "as `forward_conv2d_integer`",
    "forward_dense_integer": "types as `forward_conv2d_integer`",
    "forward_add_integer": "sizes of 1 spread",
    "forward_relu_integer": "`nl_params`: the least value; same scale at both ends",
    "forward_clip_integer": "`nl_params`: 2 values; same scale at both ends",
    "forward_nl_integer": "`nl_params`: a table of 256 values",
    "forward_conv2d_fixed": "**no dilation**; G is 1 or C, D a multiple of G, else it hangs; 16 "
                            "bits: G 1 and everything square, else it hangs; bias with at most the "
                            "products' fractional bits",
    "forward_conv2d_nl_pool_fixed": "as `forward_conv2d_fixed`",
    "forward_dense_fixed": "8 bits with weights of 8, 16 with 8 or 16, else it hangs",
    "forward_relu_fixed": "output has input 0's fractional bits",
    "forward_relu_max_fixed": "`nl_params`: the maximum; output has input 0's fractional bits",
    "forward_tanh_fixed": "output has 7 or 15 fractional bits",
    "forward_sigmoid_fixed": "output has 7 or 15 fractional bits",
    "forward_sm_fixed": "input counts as raw integers; output has 7 or 15 fractional bits",
    "forward_mp_fixed": "output has input 0's fractional bits",
    "forward_ap_fixed": "output has input 0's fractional bits",
}

HEAD = """# Layers and types

Written by `tools/layers_page.py` from the public headers and the table of the network checker
(`check/layer_rules.cpp`), which tests what stands here; the headers tell the rest.

Dimensions are N, C, W, H, as in the tensor records. A letter is the same size wherever it stands in
a row; `#` means that many elements in whatever shape, `.` any size, brackets an optional tensor. G is
a convolution's `groups`, x and y its kernel, U the `n_units` of a recurrent layer. Weights lie in
memory with the first dimension innermost: (C/G, x, y, D) is [D][y][x][C/G]; behind a convolution's
weights and bias come the parameters of `nl_func`, if they are a tensor. In place: whether an output
may be an input's memory; *above*, also behind its start.

Scratch sizes are the same on a PC and on the target. Beside each size function the headers have the
size as a constant expression for static arrays (`AI_..._SCRATCH_BYTES`, `..._ELEMENTS`).
"""


def table_rows(program):
    printed = subprocess.run(program.split(), check=True, capture_output=True, text=True).stdout
    return [Row(*line.split("\t")) for line in printed.splitlines()]


def preprocessed(compiler):
    return subprocess.run([compiler, "-E", "-I.", "nnlib.h"],
                          check=True, capture_output=True, text=True, cwd=ROOT).stdout


def parameters(headers):
    """{record: names of the fields behind its base record}"""
    fields = {}
    for record, body in re.findall(r"typedef struct (ai_layer_\w+) \{(.*?)\} \1;", headers, re.S):
        fields[record] = re.findall(r"(\w+)(?:\[\d+\])?;", body)[1:]
    return fields


def declared(headers):
    """{function: header} of every layer function of the public headers, in their order."""
    layers = public_functions.by_type(headers)["ai_layer_forward"]
    return {name: header for header, names in layers.items() for name in names}


def dims(text):
    """The dimensions or elements behind a kind letter."""
    if text.startswith("("):
        return " " + re.sub(r",", ", ", text)
    return " " + text if text else ""


def tensors(rule):
    shown = []
    for word in rule.split():
        optional, repeats = word.startswith("?"), word.endswith("*")
        word = word.strip("?*")
        text = KINDS[word[0]] + dims(word[1:]) + (", ..." if repeats else "")
        shown.append(f"[{text}]" if optional else text)
    return "; ".join(shown) or "-"


def weights(row):
    text = tensors(row.weights)
    if row.depthwise:
        text += f"; depthwise: {tensors(row.depthwise.split()[0])}"
    return text


def cells(row, fields):
    kind = row.type + (f", {row.other_type}" if row.other_type else "")
    record = f"`{row.record}`" + (": " + ", ".join(fields[row.record]) if row.record in fields else "")
    return [kind, record, tensors(row.inputs), tensors(row.outputs), weights(row),
            SCRATCH.get(row.name, "-"), row.in_place, RESTRICTIONS.get(row.name, "-")]


def page(rows, headers, fields):
    text = HEAD
    for header, group in itertools.groupby(rows, key=lambda row: headers[row.name]):
        text += f"\n## [{header}](../{header})\n\n"
        text += ("| function | type | record: parameters | inputs | outputs | weights | scratch | in place | "
                 "remarks |\n|" + "---|" * 9 + "\n")
        for alike, same in itertools.groupby(group, key=lambda row: cells(row, fields)):
            names = ", ".join(f"`{row.name}`" for row in same)
            text += f"| {names} | " + " | ".join(alike) + " |\n"
    return text


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program", help="the built layer_table")
    parser.add_argument("--compiler", default="cc")
    parser.add_argument("--check", action="store_true")
    arguments = parser.parse_args()

    text = preprocessed(arguments.compiler)
    rows, headers = table_rows(arguments.program), declared(text)
    wrong = [f"{name} has no row in check/layer_rules.cpp"
             for name in headers.keys() - {row.name for row in rows}]
    wrong += [f"{row.name} is no function of the public headers" for row in rows
              if row.name not in headers]
    wrong += [f"{row.name} has scratch that is not described here" for row in rows
              if row.scratch and row.name not in SCRATCH]
    wrong += [f"{name} is described here, but there is no such row"
              for name in (SCRATCH.keys() | RESTRICTIONS.keys()) - {row.name for row in rows}]
    wrong += [f"{row.name} is linked by the checker alone" for row in rows if row.linked != "0"]
    if wrong:
        sys.exit("\n".join(wrong))
    order = list(headers)
    rows.sort(key=lambda row: order.index(row.name))
    path = os.path.join(ROOT, "docs/layers.md")
    text = page(rows, headers, parameters(text))
    if not arguments.check:
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
    elif not os.path.exists(path) or open(path, encoding="utf-8").read() != text:
        sys.exit("docs/layers.md is not what tools/layers_page.py writes")


if __name__ == "__main__":
    main()
