# SPDX-License-Identifier: MIT
"""Fixed-point convolutions."""

import numpy as np

import fixed_point as fx
from data import Lcg
from emit import Header


def vectors():
    h, lcg = Header("conv_fixed"), Lcg(18)

    def data(name, bits, shape, weight_shape, outputs):
        """Input [H][W][C], weights and biases of a convolution, as large as they may be."""
        top = 2**(bits - 1) - 1
        arrays = (lcg.integers(-top - 1, top, shape), lcg.integers(-top - 1, top, weight_shape),
                  lcg.integers(-top - 1, top, outputs))
        if bits == 16:  # headroom of the 32-bit sum
            arrays = (arrays[0] // 16, arrays[1] // 16, arrays[2])
        for role, array in zip(("in", "weight", "bias"), arrays):
            h.add("%s_%s_data" % (name, role), fx.word(array, bits))
        return arrays

    def add(name, bits, fractions, shape, weight_shape, outputs, **options):
        result = fx.conv(*data(name, bits, shape, weight_shape, outputs), fractions, bits,
                         **options)
        h.add(name + "_out_reference", fx.real(result, fractions[3]))

    def add_pooled(name, fractions, shape, weight_shape, relu, conv, pool):
        x = fx.conv(*data(name, 8, shape, weight_shape, weight_shape[0]), fractions, 8, **conv)
        x = np.maximum(x, 0) if relu else x
        return fx.pool(x, fx.mean, *pool)

    # Fractional bits of input, weights, bias and output; outputs are (H, W), strides (x, y), padding
    # (top, left).
    add("conv1x1_q7", 8, (4, 5, 3, 0), (3, 2, 4), (6, 1, 1, 4), 6, out=(3, 2))
    add("conv2x2_q7", 8, (4, 5, 2, 1), (5, 5, 3), (4, 2, 2, 3), 4, out=(3, 3), stride=(2, 2),
        pad=(1, 1))
    add("conv_flat_q7", 8, (4, 5, 3, 1), (1, 7, 2), (3, 1, 3, 2), 3, out=(1, 4), stride=(2, 1),
        pad=(0, 1))
    add("conv2x2_q15", 16, (12, 12, 14, 11), (4, 4, 3), (2, 2, 2, 3), 2, out=(3, 3), pad=(0, 0))
    add("conv_group_q7", 8, (4, 5, 3, 2), (3, 4, 6), (2, 3, 6), 6, out=(2, 3), pad=(0, 1),
        depthwise=True)

    h.add("conv_pad_avg_pool_out_reference", fx.real(add_pooled(
        "conv_pad_avg_pool", (4, 5, 3, 1), (4, 5, 2), (1, 3, 3, 2), False,
        dict(out=(3, 6), pad=(1, 2)), ((4, 3), (2, 2), (1, 2))), 1).ravel())
    h.add("conv_avg_pool_relu_out_reference", fx.word(add_pooled(
        "conv_avg_pool_relu", (4, 5, 3, 0), (9, 6, 4), (2, 2, 3, 4), True,
        dict(out=(8, 4)), ((2, 3), (2, 2), (4, 2), (1, 0))), 8))

    # Two outputs of fixed values with more fractional bits than their sums have.
    x, w, bias = np.array([[[3, -2, 1, 4]]]), np.array([[2, -1, 1, 0], [1, 1, -3, 2]]), [1, 2]
    result = fx.conv(x, w.reshape(2, 1, 1, 4), bias, (1, 1, 1, 3), 8, (1, 1))
    assert result.ravel().tolist() == [22, 20], result
    for role, array in (("in", x), ("weight", w), ("bias", bias)):
        h.add("conv1x1_neg_%s_data" % role, fx.word(array, 8))
    h.add("conv1x1_neg_out_reference", fx.word(result, 8))
    return h
