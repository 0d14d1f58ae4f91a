# SPDX-License-Identifier: MIT
"""Integer addition with broadcasting."""

import numpy as np

from data import Lcg
from emit import Header
from quantized import RANGE, clamp, round_real, truncate

# name, type, shapes [H][W][C] of both inputs, scales and zero points of inputs and output
CASES = [
    ("sum_tensor_scalar", np.uint8, (2, 3, 5), (1, 1, 1), (0.04, 0.07, 0.09), (120, 31, 99)),
    ("sum_opt", np.uint8, (3, 2, 4), (3, 2, 4), (0.05, 0.05, 0.05), (101, 101, 101)),
    ("sum_tensor_scalar", np.int8, (3, 2, 4), (1, 1, 1), (0.03, 0.05, 0.05), (-7, 20, -31)),
    ("sum_opt", np.int8, (2, 3, 7), (2, 3, 7), (0.03, 0.045, 0.061), (12, -33, 5)),
]


def total(a, b, dtype, scales, zeros):
    if len(set(scales)) == 1 and len(set(zeros)) == 1:
        return clamp(a + b - zeros[2], dtype)
    first = np.float32(a - zeros[0]) * (scales[0] / scales[2])
    second = np.float32(b - zeros[1]) * (scales[1] / scales[2])
    if dtype is np.uint8:
        return truncate(second + first + (np.float32(zeros[2]) + np.float32(0.5)), dtype)
    return round_real(second + first + np.float32(zeros[2]), dtype)


def vectors():
    header = Header("eltwise_integer")
    for seed, (name, dtype, shape_a, shape_b, scales, zeros) in enumerate(CASES):
        stem = "%s_%%s_%s" % (name, np.dtype(dtype).name)
        lcg = Lcg(seed + 80)
        a = lcg.integers(*RANGE[dtype], shape_a)
        b = lcg.integers(*RANGE[dtype], shape_b)
        scales = [np.float32(s) for s in scales]
        y = [total(int(p), int(q), dtype, scales, zeros)
             for p, q in zip(a.ravel(), np.broadcast_to(b, shape_a).ravel())]
        header.add(stem % "in_data", a.astype(dtype))
        header.add(stem % "in2_data", b.astype(dtype))
        header.add(stem % "out_reference", np.array(y, dtype=dtype))
        for place, role in enumerate(("in", "in2", "out")):
            header.add(stem % ("pscale_" + role), np.array([scales[place]]))
            header.add(stem % ("pzeropoint_" + role), np.array([zeros[place]], dtype=dtype))
    return header
