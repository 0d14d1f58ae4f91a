# SPDX-License-Identifier: MIT
"""Integer nonlinearities: tables, and limits in the quantized domain."""

import math

import numpy as np

from data import Lcg
from emit import Header
from quantized import RANGE, clamp


def table(function, dtype, in_scale, in_zero, out_scale, out_zero):
    low, high = RANGE[dtype]
    return [clamp(math.floor(function((q - in_zero) * in_scale) / out_scale + 0.5) + out_zero,
                  dtype) for q in range(low, high + 1)]


def sigmoid(x):
    return 1 / (1 + math.exp(-x))


# name, type, parameter bytes, element of (input, parameters)
LIMITS = [
    ("relu6", np.uint8, (31, 211)),  # 0 and 6 at scale 1 / 30, zero point 31
    ("relu", np.uint8, (113,)),
    ("clip", np.uint8, (60, 171)),
]
TABLES = [
    ("tanh", np.uint8, table(math.tanh, np.uint8, 0.025, 119, 1 / 128, 128)),
    ("sigmoid", np.uint8, table(sigmoid, np.uint8, 0.05, 131, 1 / 256, 0)),
    ("tanh", np.int8, table(math.tanh, np.int8, 0.025, -9, 1 / 128, 0)),
]


def inputs(seed, dtype, limits=()):
    """Both ends of the range, its middle, and others: four channels of three by two pixels."""
    low, high = RANGE[dtype]
    some = list(Lcg(seed).integers(low, high, (24,)))
    chosen = [low, high, low + 127, low + 128] + [p + d for p in limits for d in (-1, 0, 1)]
    return [int(v) for v in (chosen + some)[:24]]


def vectors():
    header = Header("nl_integer")

    def add(name, dtype, x, params, y):
        for role, values in (("in_data", x), ("params", params), ("out_reference", y)):
            header.add("%s_%s_%s" % (name, role, np.dtype(dtype).name),
                       np.array(values, dtype=dtype))
    for seed, (name, dtype, params) in enumerate(LIMITS):
        x = inputs(seed + 60, dtype, params)
        high = params[1] if len(params) > 1 else RANGE[dtype][1]
        add(name, dtype, x, params, [min(max(v, params[0]), high) for v in x])
    for seed, (name, dtype, params) in enumerate(TABLES):
        x = inputs(seed + 70, dtype)
        add(name, dtype, x, params, [params[v - RANGE[dtype][0]] for v in x])
    return header
