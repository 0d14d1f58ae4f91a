# SPDX-License-Identifier: MIT
"""Convolution, its transpose, and both fused with a nonlinearity and pooling. Maps are [H][W][C],
sizes of maps and kernels (channels, width, height) and (width, height), steps (x, y), pads (top,
left, bottom, right).

Data is exact, so that sums in single precision are, in whatever order.
"""

import numpy as np
import torch

import data
import emit


def planes(x):
    """[H][W][C] as PyTorch's [1][C][H][W]."""
    return torch.from_numpy(np.ascontiguousarray(x.transpose(2, 0, 1))[None])


def pixels(planes_):
    return planes_[0].numpy().transpose(1, 2, 0)


def filters(weights):
    """[C_out][K_h][K_w][C_in / groups], as PyTorch orders it."""
    return torch.from_numpy(np.ascontiguousarray(weights.transpose(0, 3, 1, 2)))


def convolve(x, weights, bias, stride, dilation, pads, groups):
    top, left, bottom, right = pads
    padded = np.pad(x, ((top, bottom), (left, right), (0, 0)))
    return pixels(torch.nn.functional.conv2d(
        planes(padded), filters(weights), torch.from_numpy(bias), stride[::-1], 0, dilation[::-1],
        groups))


def convolve_transposed(x, weights, bias, stride, dilation, pads, groups):
    parts = np.split(weights, groups)  # PyTorch wants [C_in][C_out / groups] of all groups
    kernel = torch.cat([filters(part).transpose(0, 1) for part in parts])
    full = pixels(torch.nn.functional.conv_transpose2d(
        planes(x), kernel.contiguous(), torch.from_numpy(bias), stride[::-1], 0, 0, groups,
        dilation[::-1]))
    top, left, bottom, right = pads
    return full[top:full.shape[0] - bottom, left:full.shape[1] - right]


def pool(x, kind, size, stride, pads, out):
    """Maximum or mean of the cells inside the map; out is (width, height)."""
    result = np.zeros((out[1], out[0], x.shape[2]))
    for row in range(out[1]):
        for column in range(out[0]):
            y, x0 = row * stride[1] - pads[0], column * stride[0] - pads[1]
            cells = x[max(y, 0):y + size[1], max(x0, 0):x0 + size[0]]
            result[row, column] = {"max": np.max, "mean": np.mean}[kind](cells, axis=(0, 1))
    return result


def packed(indices):
    """Rows of 4-bit indices, two in a byte, the first in the high half; an odd row's last low half
    takes no part."""
    rows = indices.reshape(-1, indices.shape[-1])
    odd = rows.shape[1] % 2
    rows = np.concatenate([rows, np.full((len(rows), odd), 9)], axis=1)
    return (rows[:, 0::2] * 16 + rows[:, 1::2]).astype(np.uint8)


def sigmoid(x):
    return 1 / (1 + np.exp(-x))


def softmax(x):
    e = np.exp(x - x.max(axis=2, keepdims=True))
    return e / e.sum(axis=2, keepdims=True)


class Cases:
    def __init__(self, header):
        self._header = header
        self._lcg = data.Lcg(41)

    def add(self, stem, size, kernel, filters_, stride=(1, 1), dilation=(1, 1), pads=(0, 0, 0, 0),
            groups=1, bias=True, dictionary=0, limit=2.0, transposed=False, after=None, pooled=None):
        channels, width, height = size
        shape = (filters_, kernel[1], kernel[0], channels // groups)
        x = self._array(stem, "in_data", self._lcg.exact((height, width, channels), limit))
        if dictionary:
            table = self._array(stem, "table", self._lcg.exact((2**dictionary,), limit))
            indices = self._lcg.integers(0, 2**dictionary - 1, shape)
            self._array(stem, "weight_data",
                        packed(indices) if dictionary == 4 else indices.astype(np.uint8))
            weights = table[indices].astype(np.float64)
        else:
            weights = self._lcg.exact(shape, limit)
            depthwise = groups == channels == filters_ > 1  # stored [K_h][K_w][C]
            self._array(stem, "weight_data",
                        weights[..., 0].transpose(1, 2, 0) if depthwise else weights)
        biases = np.zeros(filters_)
        if bias:
            biases = self._array(stem, "bias_data", self._lcg.exact((filters_,), limit))
        out = (convolve_transposed if transposed else convolve)(
            x.astype(np.float64), weights, biases.astype(np.float64), stride, dilation, pads, groups)
        if after == "prelu":  # a slope for each channel and column
            slopes = self._array(stem, "slope_data", self._lcg.exact(out.shape[1:], 1.0))
            out = np.where(out < 0, out * slopes, out)
        elif after:
            out = after(out)
        if pooled:
            out = pool(out, **pooled)
        self._array(stem, "out_reference", out)

    def _array(self, stem, name, values):
        return self._header.add("%s_%s" % (stem, name), values)


def vectors():
    header = emit.Header("conv")
    add = Cases(header).add
    add("conv_dw_5x1", (3, 9, 2), (5, 1), 3, groups=3, stride=(2, 1), pads=(0, 2, 0, 1))
    add("conv_1x1", (5, 3, 2), (1, 1), 9)
    add("conv_k", (3, 6, 4), (2, 3), 5)
    add("conv_flat", (3, 7, 1), (3, 1), 4)
    add("conv_flat_dict8", (3, 7, 1), (3, 1), 4, dictionary=8)
    add("conv_flat_dict4", (3, 7, 1), (3, 1), 4, dictionary=4)
    add("conv_dilation", (2, 8, 6), (3, 2), 3, dilation=(2, 2))
    add("conv_dilation_pad", (2, 5, 4), (3, 2), 3, dilation=(2, 2), pads=(1, 1, 1, 1))
    add("conv_dilation_pad_b", (2, 5, 4), (2, 3), 3, dilation=(2, 2), pads=(0, 1, 1, 0))
    add("conv_dilation_2pad", (2, 4, 3), (3, 2), 3, dilation=(2, 2), pads=(2, 2, 2, 2))
    add("conv_dilation_3pad", (2, 4, 3), (2, 3), 3, dilation=(2, 2), pads=(3, 3, 3, 3))
    add("conv_asim_dilation", (3, 8, 5), (3, 2), 2, dilation=(3, 2), pads=(1, 2, 0, 1))
    add("conv_group", (6, 5, 4), (3, 2), 9, groups=3, stride=(1, 2), pads=(1, 0, 1, 1))
    add("conv_depthwise", (5, 6, 4), (3, 2), 5, groups=5, pads=(1, 1, 0, 1))
    add("conv_no_bias", (4, 4, 3), (2, 2), 3, bias=False)
    add("conv_pad", (3, 4, 3), (3, 4), 4, pads=(2, 1, 1, 2))
    add("conv_transpose", (3, 3, 2), (2, 3), 4, transposed=True)
    add("conv_transpose_stride", (2, 3, 2), (3, 2), 3, stride=(2, 3), transposed=True)
    add("conv_transpose_stride_pad", (4, 4, 3), (3, 4), 6, stride=(2, 3), pads=(2, 1, 1, 0),
        dilation=(2, 1), groups=2, transposed=True)
    add("conv_stride", (3, 7, 6), (3, 2), 4, stride=(3, 2), pads=(1, 1, 0, 1))
    add("conv_prelu", (3, 4, 3), (2, 2), 4, after="prelu")

    # Arguments of the exponential and the hyperbolic tangent are small.
    max_2x2 = {"kind": "max", "size": (2, 2), "stride": (2, 2), "pads": (0, 0, 0, 0), "out": (3, 2)}
    for stem, channels, dictionary in (("", 3, 0), ("_dict8", 3, 8), ("_dict4", 4, 4)):
        add("conv_pad_sigmoid_max_pool" + stem, (channels, 6, 4), (3, 3), 5, pads=(1, 1, 1, 1),
            limit=0.5, dictionary=dictionary, after=sigmoid, pooled=max_2x2)
    add("conv_depthwise_max_pool", (5, 6, 5), (3, 2), 5, groups=5, pads=(0, 1, 0, 1),
        pooled={"kind": "max", "size": (3, 2), "stride": (3, 2), "pads": (0, 0, 0, 0),
                "out": (2, 2)})
    add("conv_avg_pool_strided", (2, 8, 7), (2, 3), 3, stride=(1, 2),
        pooled={"kind": "mean", "size": (3, 2), "stride": (2, 1), "pads": (0, 0, 0, 0),
                "out": (3, 2)})
    add("conv_avg_pool_large_stride", (2, 8, 9), (2, 2), 3,
        pooled={"kind": "mean", "size": (2, 2), "stride": (3, 3), "pads": (0, 0, 0, 0),
                "out": (2, 3)})
    add("conv_avg_pool_small_stride", (2, 6, 8), (2, 2), 3,
        pooled={"kind": "mean", "size": (2, 4), "stride": (1, 1), "pads": (0, 0, 0, 0),
                "out": (4, 4)})
    add("conv_max_pool_pool_pad", (2, 6, 5), (2, 2), 3,
        pooled={"kind": "max", "size": (3, 3), "stride": (2, 2), "pads": (1, 1, 1, 1),
                "out": (3, 2)})
    add("conv_max_pool_miniyolo", (3, 6, 6), (3, 3), 16, pads=(1, 1, 1, 1),
        after=lambda x: np.where(x < 0, x * 0.125, x),
        pooled={"kind": "max", "size": (2, 2), "stride": (2, 2), "pads": (0, 0, 0, 0),
                "out": (3, 3)})
    add("conv_pad_tanh_avg_pool", (2, 5, 4), (3, 2), 3, pads=(1, 1, 0, 1), limit=0.75, after=np.tanh,
        pooled={"kind": "mean", "size": (2, 3), "stride": (2, 1), "pads": (2, 1, 0, 0),
                "out": (3, 4)})
    add("conv_1x1_sm", (4, 3, 2), (1, 1), 5, limit=1.0, after=softmax)
    return header
