# SPDX-License-Identifier: MIT
"""Data-movement layers: transpose, concat, time delay, time distributed. Arrays are [H][W][C]."""

import numpy as np

from data import Lcg
from emit import Header

# The input axis (0 batch, 1 channels, 2 width, 3 height) along each output axis.
TRANSPOSES = {"inv": (3, 2, 1, 0), "swap": (0, 1, 3, 2), "swap2": (0, 2, 3, 1)}


def vectors():
    header = Header("layers_ext")
    data = Lcg(71)

    def add(name, values):
        return header.add(name, values).astype(float)

    x = add("transpose_in_data", data.exact((4, 3, 2, 1)))
    for name, perm in TRANSPOSES.items():
        header.add("transpose_%s_out_reference" % name,
                   np.transpose(x, [3 - perm[3 - axis] for axis in range(4)]))

    a = add("concat_in0_data", data.exact((3, 2, 2)))
    b = add("concat_in1_data", data.exact((3, 2, 1)))
    c = add("concat_in2_data", data.exact((3, 2, 3)))
    d = add("concat_in3_data", data.exact((1, 2, 2)))
    header.add("concat_channels_out_reference", np.concatenate([a, b, c], axis=2))
    header.add("concat_height_out_reference", np.concatenate([d, a, a], axis=0))

    F, U, steps, delays = 3, 2, 9, [1, 0, 4, 3]
    x = add("time_delay_in_data", data.exact((steps + max(delays), F)))
    kernel = add("time_delay_weight_data", data.exact((U, len(delays), F)))
    bias = add("time_delay_bias_data", data.exact(U))
    header.add("time_delay_delay_data", np.array(delays, dtype=np.uint8))
    taps = np.stack([x[d:d + steps] for d in delays], axis=1)
    header.add("time_delay_out_reference", np.einsum("ujk,tjk->tu", kernel, taps) + bias)

    x = add("time_distributed_in_data", data.exact((4, F)))
    weights = add("time_distributed_weight_data", data.exact((U, F)))
    bias = add("time_distributed_bias_data", data.exact(U))
    scale = add("time_distributed_scale_data", data.exact(U))
    header.add("time_distributed_out_reference", (x @ weights.T + bias) * scale)
    return header
