#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes kernels/arm_nntables.cpp, the look-up tables of tanh and sigmoid.

make_nntables.py           writes the file
make_nntables.py --check   fails when the file differs from what would be written

An entry is 2^(n-1) * f(k / steps), rounded to nearest and saturated to n signed bits. No value but
those at k = 0 lies near a half, so any double-precision math library gives the same tables.
"""

import math
import pathlib
import sys

PATH = pathlib.Path(__file__).resolve().parents[1] / "kernels" / "arm_nntables.cpp"


def sigmoid(x):
    return 1.0 / (1.0 + math.exp(-x))


def signed(position, count):
    return position if position < count // 2 else position - count


# suffix, bits, entries, steps per 1.0, position of an entry
KINDS = [
    ("Table_q7", 8, 256, 16, lambda i: signed(i, 256)),
    ("Table_q15", 16, 256, 16, lambda i: signed(i, 256)),
    ("HTable_q15", 16, 192, 16, lambda i: signed(i + 32, 256)),
    ("LTable_q15", 16, 128, 32, lambda i: signed(i, 128)),
]


def entries(function, bits, count, steps, position):
    scale = 1 << (bits - 1)
    values = (math.floor(scale * function(position(i) / steps) + 0.5) for i in range(count))
    return [max(-scale, min(scale - 1, value)) for value in values]


def text():
    lines = ["// SPDX-License-Identifier: MIT", "// Written by tools/make_nntables.py; do not edit.", "// clang-format off",
             '#include "kernels/arm_nntables.h"']
    for suffix, bits, *kind in KINDS:
        for name, function in ("tanh", math.tanh), ("sigmoid", sigmoid):
            values = [str(v) for v in entries(function, bits, *kind)]
            lines += ["", "const q%d_t %s%s[%d] = {" % (bits - 1, name, suffix, len(values))]
            lines += ["    " + ", ".join(values[i:i + 12]) + "," for i in range(0, len(values), 12)]
            lines.append("};")
    return "\n".join(lines) + "\n"


def main():
    if sys.argv[1:] == ["--check"]:
        if PATH.read_text(encoding="ascii") != text():
            sys.exit("%s differs from its formula" % PATH.name)
    elif sys.argv[1:]:
        sys.exit(__doc__)
    else:
        PATH.write_text(text(), encoding="ascii")


if __name__ == "__main__":
    main()
