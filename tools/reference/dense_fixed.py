# SPDX-License-Identifier: MIT
"""Fixed-point dense layers: two outputs of fixed values, from sums that need their rounding."""

import numpy as np

import fixed_point as fx
from data import Lcg
from emit import Header


def row_for(lcg, x, target, residue, fractions, bits):
    """Weights and bias whose sum, in output units, is target + residue steps of the sum's scale."""
    fi, fw, fb, fo = fractions
    wanted = target * 2**max(fi + fw - fo, 0) // 2**max(fo - fi - fw, 0) + residue
    while True:
        w = lcg.integers(-60, 60, len(x)) * 2**(bits - 8) + lcg.integers(0, 2**(bits - 8) - 1, len(x))
        bias, rest = divmod(wanted - int(np.dot(x, w)), 2**(fi + fw - fb))
        if rest == 0 and bias == fx.saturate(bias, bits):
            return w, bias


def add(h, lcg, name, in_bits, weight_bits, fractions, targets, residues):
    fi, fw, fb, fo = fractions
    x = lcg.integers(-100, 100, 5) * 2**(in_bits - 8) + lcg.integers(0, 2**(in_bits - 8) - 1, 5)
    if fi + fw < fo:
        x = lcg.integers(-3, 3, 5)
    rows = [row_for(lcg, x, t, r, fractions, weight_bits) for t, r in zip(targets, residues)]
    w, bias = [r[0] for r in rows], [r[1] for r in rows]
    result = fx.dense(x, w, bias, fractions, in_bits)
    assert result == list(targets), (name, result)
    h.add(name + "_in_data", fx.word(x, in_bits))
    h.add(name + "_weight_data", fx.word(w, weight_bits))
    h.add(name + "_bias_data", fx.word(bias, weight_bits))
    if fi + fw < fo:
        h.add(name + "_out_reference", fx.word(result, in_bits))
    else:
        h.add(name + "_out_reference", fx.real(result, fo))


def vectors():
    h, lcg = Header("dense_fixed"), Lcg(19)
    # Input, weights, bias and output: fractional bits. The sums lie half a step below the first
    # output (halves go up) and almost half a step above the second.
    add(h, lcg, "dense_q7", 8, 8, (4, 4, 3, 2), (60, 32), (-32, 31))
    add(h, lcg, "dense_q15", 16, 16, (11, 12, 11, 11), (30720, 16384), (-2048, 2047))
    add(h, lcg, "dense_Wq7Aq15", 16, 8, (11, 4, 2, 11), (30720, 16384), (-8, 7))
    # More fractional bits in the output than in the sum.
    add(h, lcg, "dense_q7_neg", 8, 8, (1, 1, 1, 3), (22, 20), (0, 0))
    return h
