# SPDX-License-Identifier: MIT
"""Fixed-point pooling."""

import fixed_point as fx
from data import Lcg
from emit import Header


def vectors():
    h, lcg = Header("pool_fixed"), Lcg(21)
    limits = {"q7": 8, "q15": 16}

    def add(name, fraction_bits, shape, reduce, size, stride, out, pad=(0, 0)):
        bits = limits[name.split("_")[-1]]
        x = lcg.integers(-2**(bits - 1), 2**(bits - 1) - 1, shape)
        h.add(name + "_in_data", fx.word(x, bits))
        h.add(name + "_out_reference",
              fx.real(fx.pool(x, reduce, size, stride, out, pad), fraction_bits))

    # Maps [H][W][C]; window and stride (x, y); output (H, W); padding (top, left).
    add("max_pool_sq_q7", 5, (4, 4, 3), max, (2, 2), (2, 2), (2, 2))
    add("max_pool_q7", 5, (5, 4, 2), max, (3, 2), (1, 2), (3, 3), (1, 0))
    add("max_pool_q15", 12, (3, 6, 2), max, (2, 3), (2, 1), (2, 4), (1, 1))
    add("ave_pool_sq_q7", 5, (4, 4, 3), fx.mean, (2, 2), (2, 2), (2, 2))
    add("ave_pool_q7", 5, (5, 4, 2), fx.mean, (3, 2), (1, 2), (3, 3), (1, 0))
    add("ave_pool_q15", 12, (3, 6, 2), fx.mean, (2, 3), (2, 1), (2, 4), (1, 1))
    return h
