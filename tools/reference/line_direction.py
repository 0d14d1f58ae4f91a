# SPDX-License-Identifier: MIT
"""What examples/line_direction.c must print. Its pictures and weights are read from the source."""

import pathlib
import re

import numpy as np

import fixed_point as fx

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"


class Output:
    def text(self):
        source = re.sub(r"/\*.*?\*/", "", (EXAMPLES / "line_direction.c").read_text(), flags=re.S)

        def constants(name):
            return re.search(r" %s\[.*?\] = \{(.*?)\};" % name, source, re.S).group(1)

        def numbers(name, *shape):
            return np.array([int(n) for n in re.findall(r"-?\d+", constants(name))]).reshape(shape)

        def strings(name):
            return ["".join(re.findall(r'"(.*?)"', s)) for s in re.split(r",\s*\n", constants(name))]

        names = re.findall(r'"(.*?)"', constants("names"))
        lines = []
        for picture in filter(None, strings("pictures")):
            x = np.array([64 * (c == "#") for c in picture]).reshape(8, 8, 1)
            x = np.maximum(fx.conv(x, numbers("filters", 4, 3, 3, 1), numbers("filter_bias", 4),
                                   (6, 4, 2, 4), 8, (8, 8), pad=(1, 1)), 0)
            x = fx.pool(x, max, (4, 4), (4, 4), (2, 2)).ravel()
            x = fx.dense(x, numbers("weights", 4, 16), numbers("bias", 4), (4, 6, 4, 0), 8)
            shares = fx.softmax(x, 8)
            lines.append(", ".join("%s %d/128" % pair for pair in zip(names, shares)))
        return "\n".join(lines + [""])

    def path(self):
        return EXAMPLES / "line_direction.expected"


def vectors():
    return Output()
