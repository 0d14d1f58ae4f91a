# SPDX-License-Identifier: MIT
"""Integer arithmetic of 8-bit quantized layers, on Python's unbounded integers."""

import math

import numpy as np

RANGE = {np.uint8: (0, 255), np.int8: (-128, 127)}


def clamp(value, dtype):
    low, high = RANGE[dtype]
    return min(max(value, low), high)


def wrap32(value):
    return (value + 2**31) % 2**32 - 2**31


def align_factor(x):
    """(multiplier, shift) of a positive float32 factor."""
    fraction, exponent = math.frexp(float(x))  # fraction of [0.5, 1)
    if fraction == 0.5 and x > 0.5:
        fraction, exponent = 1.0, exponent - 1  # 1 itself counts as normalised
    return min(int(fraction * 2**31), 2**31 - 1), -exponent


def requantize(acc, pair, zero, dtype):
    multiplier, shift = pair
    if shift > 0:
        p = wrap32(acc * 2) * multiplier >> 32
        r = (p + (1 << (shift - 1)) + (zero << shift)) >> shift
    else:
        p = (wrap32(acc << (1 - shift)) * multiplier + 2**31) >> 32
        r = p + zero
    return clamp(r, dtype)


def truncate(value, dtype):
    """A float cut off and saturated."""
    return clamp(int(value), dtype)


def round_real(value, dtype):
    """A float32 rounded as the requantizing element-wise kernels do."""
    value = np.float32(value)
    half = np.float32(-0.5 if dtype is np.int8 and value < 0 else 0.5)
    return truncate(value + half, dtype)
