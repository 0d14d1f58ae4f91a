# SPDX-License-Identifier: MIT
"""Binary element-wise and reduce layers: NumPy's own broadcasting over [H][W][C][N]."""

import numpy as np

from data import Lcg
from emit import Header


def custom(a, b):
    return (a + 10) * (b * 0.5) + 12.5


# Stem, operation and the shapes of the operands as N, C, W, H.
CASES = (
    ("sum_scalar", np.add, (1, 3, 4, 2), (1, 1, 1, 1)),
    ("sum", np.add, (1, 3, 4, 2), (1, 3, 4, 2)),
    ("sum_ch_ch_in", np.add, (2, 3, 1, 1), (1, 3, 1, 1)),
    ("sum_w_ch", np.add, (1, 3, 4, 1), (1, 1, 4, 1)),
    ("sum_w_ch_single", np.add, (1, 3, 4, 1), (1, 3, 1, 1)),
    ("custom_w_ch_ch_in", custom, (2, 3, 4, 1), (2, 1, 4, 1)),
    ("mul_h_w_ch_ch_in", np.multiply, (2, 3, 4, 2), (2, 1, 1, 1)),
    ("sum_h_w_ch_ch_in_v1", np.add, (2, 1, 4, 1), (1, 3, 1, 5)),
    ("sub_h_w_ch_ch_in_v2", np.subtract, (1, 3, 1, 2), (2, 3, 4, 1)),
    ("sum_h_w_ch_ch_in_v3", np.add, (2, 3, 4, 2), (1, 3, 1, 2)),
)


def vectors():
    header = Header("eltwise")
    data = Lcg(70)

    def operand(name, shape):
        return header.add(name + "_data", data.exact(shape[::-1])).astype(float)

    for stem, operation, shape_a, shape_b in CASES:
        a = operand(stem + "_in0", shape_a)
        b = operand(stem + "_in1", shape_b)
        header.add(stem + "_out_reference", operation(a, b))
    a = operand("chain_in0", (1, 3, 4, 2))
    b = operand("chain_in1", (1, 3, 1, 1))
    c = operand("chain_in2", (1, 1, 4, 2))
    header.add("chain_out_reference", custom(c, custom(a, b)))
    x = operand("reduce_in", (1, 5, 3, 2))
    for name, axis in (("channels", 2), ("width", 1)):
        header.add("reduce_sum_%s_out_reference" % name, x.sum(axis=axis, keepdims=True))
        header.add("reduce_min_%s_out_reference" % name, x.min(axis=axis, keepdims=True))
    # From a start value of its own, which lies among the minima.
    assert x.min(axis=1).min() < -1.25 < x.min(axis=1).max()
    header.add("reduce_sum_from_out_reference", 0.75 + x.sum(axis=1, keepdims=True))
    header.add("reduce_min_from_out_reference", np.minimum(-1.25, x.min(axis=1, keepdims=True)))
    return header
