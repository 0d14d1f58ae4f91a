# SPDX-License-Identifier: MIT
"""Checksums of exp, sigmoid, tanh, cosh and sinh over some hundred thousand floats: the C library's
double functions, rounded. Sinh and cosh are infinite where a double cannot hold them."""

import math

import numpy as np

import emit


def inputs():
    """Bits of floats: from 2^-25 to 128 of either sign, then a stripe of all."""
    near = np.arange(0x33000000, 0x43000000, 1801, dtype=np.uint64)
    stripe = np.arange(0, 2**32, 65521, dtype=np.uint64)
    return np.concatenate([near, near | 0x80000000, stripe]).astype(np.uint32).view(np.float32)


def in_double(function, overflow):
    def of(x):
        try:
            return function(x)
        except OverflowError:
            return overflow(x)
    return lambda xs: np.array([of(x) for x in xs.tolist()], dtype=np.float64).astype(np.float32)


exp = in_double(math.exp, lambda x: math.inf)
tanh = in_double(math.tanh, None)
cosh = in_double(math.cosh, lambda x: math.inf)
sinh = in_double(math.sinh, lambda x: math.copysign(math.inf, x))


def sigmoid(xs):
    return np.float32(1) / (np.float32(1) + exp(-xs))


def checksum(results):
    """Of the results' bits; every NaN counts as 0x7fc00000."""
    words = np.where(np.isnan(results), np.float32(np.nan), results).view(np.uint32)
    total = 0
    for word in words.tolist():
        total = (total * 31 + word) % 2**32
    return total


def vectors():
    xs = inputs()
    header = emit.Header("exact_math")
    with np.errstate(all="ignore"):
        for name, function in ("exp", exp), ("sigmoid", sigmoid), ("tanh", tanh), ("cosh", cosh), ("sinh", sinh):
            header.add(name + "_checksum", np.array([checksum(function(xs))], dtype=np.uint32))
    return header
