# SPDX-License-Identifier: MIT
"""Single TFLite operators on one small map, in double; integers by dequantizing and rounding."""

import numpy as np
import torch
import torch.nn.functional as F

from data import Lcg
from emit import Header

H, W, C = 6, 5, 4


def nchw(x):
    return torch.tensor(x).permute(0, 3, 1, 2)


def nhwc(x):
    return x.permute(0, 2, 3, 1).numpy()


def same(size, kernel, stride, dilation=1):
    """Paddings before and after by TFLite's rule SAME."""
    total = max((-(-size // stride) - 1) * stride + (kernel - 1) * dilation + 1 - size, 0)
    return total // 2, total - total // 2


def conv(x, w, b, stride, dilation, groups=1):
    """w [O][Kh][Kw][I]; padding SAME."""
    top, bottom = same(x.shape[1], w.shape[1], stride[0], dilation[0])
    left, right = same(x.shape[2], w.shape[2], stride[1], dilation[1])
    padded = F.pad(nchw(x), (left, right, top, bottom))
    return nhwc(F.conv2d(padded, torch.tensor(w).permute(0, 3, 1, 2), torch.tensor(b), stride, 0,
                         dilation, groups))


def quantize(real, scale, zero):
    return np.clip(np.floor(real / scale + 0.5) + zero, -128, 127).astype(np.int8)


def real(q, scale, zero):
    return (q.astype(np.float64) - zero) * scale


def float_cases(h, rng):
    x = h.add("x", rng.exact((1, H, W, C)))
    y = h.add("y", rng.exact((1, H, W, C)))
    row = h.add("row", rng.exact((1, 1, 1, C)))
    w = h.add("conv_w", rng.exact((3, 3, 2, C)))
    b = h.add("conv_b", rng.exact((3,)))
    h.add("conv_strided", conv(x, w, b, (2, 1), (1, 1)))
    h.add("conv_dilated_relu6", np.clip(conv(x, w, b, (1, 1), (2, 2)), 0, 6))
    dw = h.add("depthwise_w", rng.exact((1, 3, 2, 2 * C)))
    db = h.add("depthwise_b", rng.exact((2 * C,)))
    h.add("depthwise", conv(x, dw.transpose(3, 1, 2, 0), db, (1, 2), (1, 1), C))
    tw = h.add("transpose_w", rng.exact((3, 3, 2, C)))
    full = F.conv_transpose2d(nchw(x), torch.tensor(tw).permute(3, 0, 1, 2), stride=(2, 3))
    # SAME makes 12 x 15 pixels of 13 x 14: the last row is cut, the last column nobody reaches.
    h.add("transpose_conv", np.pad(nhwc(full)[:, :2 * H], ((0, 0), (0, 0), (0, 1), (0, 0))))
    fw = h.add("dense_w", rng.exact((7, C)))
    fb = h.add("dense_b", rng.exact((7,)))
    h.add("dense_relu", np.maximum(x.reshape(-1, C) @ fw.T + fb, 0))
    h.add("add_row", x + row)
    h.add("mul", x * y)
    h.add("row_sub", row - x)
    h.add("maximum_row", np.maximum(x, row))
    h.add("minimum", np.minimum(x, y))
    h.add("max_pool", pooled(x, np.max))
    h.add("average_pool", pooled(x, np.mean))
    h.add("mean_hw", x.mean(axis=(1, 2)))
    h.add("mean_c", x.mean(axis=3))
    e = np.exp(x - x.max(axis=3, keepdims=True))
    h.add("softmax", e / e.sum(axis=3, keepdims=True))
    h.add("logistic", 1 / (1 + np.exp(-x)))
    h.add("hard_swish", x * np.clip(x + 3, 0, 6) / 6)
    h.add("leaky_relu", np.where(x < 0, x * 0.25, x))
    h.add("elu", np.where(x < 0, np.expm1(x), x))
    h.add("prelu", np.where(x < 0, x * row, x))
    h.add("pad", np.pad(x, ((0, 0), (1, 2), (0, 3), (1, 0)), constant_values=-1.5))
    h.add("mirror_pad", np.pad(x, ((0, 0), (2, 1), (1, 2), (0, 0)), mode="reflect"))
    h.add("concat", np.concatenate([x, y], axis=2))
    h.add("slice", x[:, 1:5, 2:4, 1:])
    h.add("strided", x[:, 1::2, ::3, 2])
    h.add("transposed", x.transpose(0, 3, 1, 2))
    h.add("nearest", x.repeat(2, axis=1).repeat(3, axis=2))
    h.add("linear_half", nhwc(F.interpolate(nchw(x), (9, 10), mode="bilinear",
                                            align_corners=False)))
    h.add("linear_corners", nhwc(F.interpolate(nchw(x), (9, 10), mode="bilinear",
                                               align_corners=True)))
    square = h.add("narrow_x", x[:, :, :4, :]).reshape(1, H // 2, 2, 2, 2, C).transpose(0, 1, 3, 2, 4, 5)
    h.add("space_to_depth", square.reshape(1, H // 2, 2, 4 * C))
    wide = x.reshape(1, H, W, 2, 2, 1).transpose(0, 1, 3, 2, 4, 5)
    h.add("depth_to_space", wide.reshape(1, 2 * H, 2 * W, 1))


def pooled(x, of):
    """Windows of 3 x 2, strides 2, SAME."""
    top, left = same(H, 3, 2)[0], same(W, 2, 2)[0]
    out = np.empty((1, -(-H // 2), -(-W // 2), C))
    for i in range(out.shape[1]):
        for j in range(out.shape[2]):
            rows = slice(max(2 * i - top, 0), 2 * i - top + 3)
            columns = slice(max(2 * j - left, 0), 2 * j - left + 2)
            out[0, i, j] = of(x[0, rows, columns].reshape(-1, C), axis=0)
    return out


def lstm_case(h, rng):
    steps, features, units = 5, 3, 2
    x = h.add("lstm_x", rng.exact((1, steps, features)))
    kernels = [rng.exact((units, features), 1.0) for _ in range(4)]
    recurrents = [rng.exact((units, units), 1.0) for _ in range(4)]
    biases = [rng.exact((units,), 1.0) for _ in range(4)]
    h.add("lstm_kernels", np.stack(kernels))
    h.add("lstm_recurrents", np.stack(recurrents))
    h.add("lstm_biases", np.stack(biases))
    sigmoid = lambda v: 1 / (1 + np.exp(-v))
    state, cell, out = np.zeros(units), np.zeros(units), []
    for t in range(steps):
        i, f, g, o = (k @ x[0, t] + r @ state + b for k, r, b in zip(kernels, recurrents, biases))
        cell = sigmoid(f) * cell + sigmoid(i) * np.tanh(g)
        state = sigmoid(o) * np.tanh(cell)
        out.append(state)
    h.add("lstm", np.stack(out))


def integer_cases(h, rng):
    """x: scale 1/16, zero point 5; y: 1/32, -9; outputs: scale 1/4, zero point 3."""
    q = h.add("qx", rng.integers(-128, 127, (1, H, W, C)).astype(np.int8))
    p = h.add("qy", rng.integers(-128, 127, (1, H, W, C)).astype(np.int8))
    x, y = real(q, 1 / 16, 5), real(p, 1 / 32, -9)
    scales = np.array([0.03, 0.05, 0.02])
    w = h.add("qconv_w", rng.integers(-127, 127, (3, 3, 2, C)).astype(np.int8))
    b = h.add("qconv_b", rng.integers(-900, 900, (3,)).astype(np.int32))
    wide = np.float32(scales).astype(np.float64)
    exact = conv(x, w * wide[:, None, None, None], b * wide / 16, (1, 1), (2, 1))
    h.add("qconv_dilated", quantize(exact, 1.0, 3))
    dw = h.add("qdepthwise_w", rng.integers(-127, 127, (1, 3, 2, 2 * C)).astype(np.int8))
    db = h.add("qdepthwise_b", rng.integers(-900, 900, (2 * C,)).astype(np.int32))
    exact = conv(x, (dw / 32.0).transpose(3, 1, 2, 0), db / 512.0, (1, 2), (1, 1), C)
    h.add("qdepthwise", quantize(exact, 1.0, 3))
    h.add("qadd_relu", np.maximum(quantize(x + y, 1 / 4, 3), 3).astype(np.int8))
    h.add("qmul", quantize(x * y, 1 / 4, 3))
    h.add("qsub", quantize(x - y, 1 / 4, 3))
    h.add("qlogistic", quantize(1 / (1 + np.exp(-x)), 1 / 256, -128))
    h.add("qconcat", np.concatenate([quantize(x, 1 / 4, 3), quantize(y, 1 / 4, 3)], axis=3))
    h.add("qmean", quantize(x.mean(axis=(1, 2)), 1 / 4, 3))
    h.add("qaverage", pooled(q.astype(np.float64), np.mean))  # quanta before rounding
    h.add("qpad", np.pad(q, ((0, 0), (1, 2), (0, 3), (0, 0)), constant_values=5))
    h.add("qdequantized", x)


def vectors():
    header = Header("importer_tflite")
    rng = Lcg(20)
    float_cases(header, rng)
    lstm_case(header, rng)
    integer_cases(header, rng)
    return header
