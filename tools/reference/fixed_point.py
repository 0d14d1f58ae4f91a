# SPDX-License-Identifier: MIT
"""Fixed-point layers on whole numbers, written from their formulas. Maps are [H][W][C]."""

import numpy as np


def saturate(value, bits):
    return max(-(1 << (bits - 1)), min((1 << (bits - 1)) - 1, value))


def finish(bias, products, fractions, bits):
    """The output of one sum; fractions: fractional bits of input, weights, bias and output."""
    fi, fw, fb, fo = fractions
    total, down = bias * 2**(fi + fw - fb) + products, fi + fw - fo
    if down > 0:
        return saturate((total + 2**(down - 1)) // 2**down, bits)
    return saturate(saturate(total, bits) * 2**-down, bits)


def conv(x, w, bias, fractions, bits, out, stride=(1, 1), pad=(0, 0), depthwise=False):
    """w: [O][Kh][Kw][I], depthwise [Kh][Kw][C]; out: (H, W); stride: (x, y); pad: (top, left)."""
    x, w = np.asarray(x), np.asarray(w)
    kh, kw = w.shape[:2] if depthwise else w.shape[1:3]
    channels = w.shape[2] if depthwise else w.shape[0]
    result = np.zeros(tuple(out) + (channels,), np.int64)
    for oy, ox, o in np.ndindex(result.shape):
        products = 0
        for ky, kx in np.ndindex(kh, kw):
            y, x0 = oy * stride[1] + ky - pad[0], ox * stride[0] + kx - pad[1]
            if 0 <= y < x.shape[0] and 0 <= x0 < x.shape[1]:
                if depthwise:
                    products += int(x[y, x0, o // (channels // x.shape[2])] * w[ky, kx, o])
                else:
                    products += int(np.dot(x[y, x0], w[o, ky, kx]))
        result[oy, ox, o] = finish(int(bias[o]), products, fractions, bits)
    return result


def dense(x, w, bias, fractions, bits):
    return [finish(int(b), int(np.dot(x, row)), fractions, bits) for row, b in zip(w, bias)]


def mean(cells):
    """To nearest, halves away from zero."""
    total, count = sum(cells), len(cells)
    magnitude = (2 * abs(total) + count) // (2 * count)
    return magnitude if total >= 0 else -magnitude


def pool(x, reduce, size, stride, out, pad=(0, 0)):
    """reduce: max or mean of a list; size and stride: (x, y); out: (H, W); pad: (top, left)."""
    result = np.zeros(tuple(out) + x.shape[2:], np.int64)
    for oy, ox, c in np.ndindex(result.shape):
        top, left = oy * stride[1] - pad[0], ox * stride[0] - pad[1]
        rows = range(max(top, 0), min(top + size[1], x.shape[0]))
        columns = range(max(left, 0), min(left + size[0], x.shape[1]))
        result[oy, ox, c] = reduce([int(x[y, x0, c]) for y in rows for x0 in columns])
    return result


def softmax(x, bits):
    """To the base two over the last axis: elements `bits` or more below the largest vanish."""
    fractions = bits - 1
    rows = []
    for row in np.reshape(x, (-1, np.shape(x)[-1])).tolist():
        exponents = [v - (max(row) - bits) for v in row]
        total = sum(2**e for e in exponents if e > 0)
        rows.append([saturate(2**(fractions + e) // total, bits) if e > 0 else 0
                     for e in exponents])
    return np.array(rows).reshape(np.shape(x))


def real(values, fraction_bits):
    """What the numbers stand for, to compare outputs with."""
    return np.array(values, np.float64) / 2.0**fraction_bits


def word(values, bits):
    values = np.asarray(values)
    assert np.all(values == np.vectorize(lambda v: saturate(int(v), bits))(values))
    return values.astype("int%d" % bits)
