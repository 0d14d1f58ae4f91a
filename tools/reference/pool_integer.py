# SPDX-License-Identifier: MIT
"""Integer max and average pooling."""

import numpy as np

from data import Lcg
from emit import Header
from quantized import RANGE, round_real

# name, type, average, input [H][W][C], pool and stride and pad (x, y), output (W, H), input scale
# and zero point, output scale and zero point.
CASES = [
    ("max_pool", np.uint8, False, (5, 6, 3), (3, 2), (2, 1), (1, 0), (3, 4), 0.031, 77, 0.031, 77),
    ("ave_pool", np.uint8, True, (4, 5, 5), (2, 3), (2, 1), (1, 2), (3, 5), 0.05, 130, 0.033, 101),
    ("max_pool", np.int8, False, (6, 4, 2), (2, 3), (1, 2), (0, 1), (3, 3), 0.04, -20, 0.058, 17),
    ("ave_pool", np.int8, True, (5, 7, 3), (3, 2), (3, 2), (2, 1), (3, 3), 0.02, -5, 0.02, -5),
]


def output(window, average, dtype, scales, zeros):
    total, count = sum(window), len(window)
    if scales[0] == scales[1] and zeros[0] == zeros[1]:
        return int((total + count // 2) / count) if average else max(window)
    m = np.float32(total) / np.float32(count) if average else np.float32(max(window))
    return round_real((m - np.float32(zeros[0])) * (scales[0] / scales[1]) + np.float32(zeros[1]),
                      dtype)


def vectors():
    header = Header("pool_integer")
    for seed, (name, dtype, average, shape, size, stride, pad, out, s_in, z_in, s_out,
               z_out) in enumerate(CASES):
        stem = "%s_%%s_%s" % (name, np.dtype(dtype).name)
        scales, zeros = (np.float32(s_in), np.float32(s_out)), (z_in, z_out)
        x = Lcg(seed + 40).integers(*RANGE[dtype], shape)
        if average and dtype is np.int8:
            x = np.minimum(x, 20)  # most sums are negative

        def window(oy, ox, c):
            return [int(x[row, column, c])
                    for row in range(oy * stride[1] - pad[1], oy * stride[1] - pad[1] + size[1])
                    for column in range(ox * stride[0] - pad[0], ox * stride[0] - pad[0] + size[0])
                    if 0 <= row < shape[0] and 0 <= column < shape[1]]
        y = [[[output(window(oy, ox, c), average, dtype, scales, zeros)
               for c in range(shape[2])] for ox in range(out[0])] for oy in range(out[1])]
        header.add(stem % "in_data", x.astype(dtype))
        header.add(stem % "out_reference", np.array(y, dtype=dtype))
        for role, place in (("in", 0), ("out", 1)):
            header.add(stem % ("pscale_" + role), np.array([scales[place]]))
            header.add(stem % ("pzeropoint_" + role), np.array([zeros[place]], dtype=dtype))
    return header
