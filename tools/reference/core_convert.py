# SPDX-License-Identifier: MIT
"""Format conversion: exact arithmetic on fractions, from the meaning of each format."""

from fractions import Fraction
from math import floor

import numpy as np

from emit import Header


def clamp(value, low, high):
    return max(low, min(high, value))


def half_away(value):
    return floor(value + Fraction(1, 2)) if value >= 0 else -floor(-value + Fraction(1, 2))


def to_fixed(values, bits, fraction_bits):
    limit = 1 << (bits - 1)
    return [clamp(half_away(Fraction(float(v)) * 2**fraction_bits), -limit, limit - 1)
            for v in values]


def shift_left(q, count, bits):
    limit = 1 << (bits - 1)
    return clamp(q << count, -limit, limit - 1)


def add_float(h, name, values, bits, fraction_bits):
    """A float to fixed point case; the input is left divided by 2^(integer bits)."""
    values = np.array(values, np.float32)
    h.add("float_to_%s_in_data" % name, values)
    h.add("float_to_%s_out_reference" % name,
          np.array(to_fixed(values, bits, fraction_bits), "int%d" % bits))
    h.add("float_to_%s_in_after" % name, values / np.float32(2**(bits - 1 - fraction_bits)))


def add_fixed(h, name, values, bits, convert, in_after=None):
    values, in_type = list(values), "int%d" % bits
    out_bits = 16 if name.endswith("q4_11") else 8
    h.add(name + "_in_data", np.array(values, in_type))
    h.add(name + "_out_reference", np.array([convert(q) for q in values], "int%d" % out_bits))
    h.add(name + "_in_after", np.array([in_after(q) if in_after else q for q in values], in_type))


def add_integer(h, kind, zero_point, values, scale, floats, rounded):
    """8-bit integers to float and back."""
    low, high = (-128, 127) if kind == "int8" else (0, 255)
    scale, step = np.float32(scale[0]), Fraction(scale[1])
    h.add(kind + "_to_float_in_data", np.array(values, kind))
    h.add(kind + "_to_float_scale", np.array([scale]))
    h.add(kind + "_zeropoint", np.array([zero_point], kind))
    h.add(kind + "_to_float_out_reference",
          np.array([(q - zero_point) * float(scale) for q in values]))
    h.add("float_to_%s_in_data" % kind, np.array(floats, np.float32))
    h.add("float_to_%s_scale" % kind, np.array([step], np.float32))
    h.add("float_to_%s_out_reference" % kind, np.array(
        [clamp(rounded(Fraction(x) / step + zero_point), low, high) for x in floats], kind))


def vectors():
    h = Header("core_convert")
    # Exact halves on both sides of zero, both limits, and values between.
    add_integer(h, "int8", -11, [-128, 127, -11, 38], (0.0371, "1/2"),
                [5.75, 4.75, -31.0, 69.5, -63.0], half_away)
    add_integer(h, "uint8", 151, [0, 255, 151, 38], (0.0173, "1/4"),
                [0.125, -0.125, -38.375, 26.25, 3.0625], lambda v: floor(v + Fraction(1, 2)))
    add_float(h, "q2_5", [1.234, -3.0 / 64, 3.0 / 64, 4.0], 8, 5)
    add_float(h, "q4_11", [-7.77, 16.0, 5.0 / 4096, -5.0 / 4096], 16, 11)

    add_fixed(h, "q4_11_to_q2_5", [-300, 8191, 8192, -32768], 16,
              lambda q: shift_left(q, 2, 16) >> 8, lambda q: shift_left(q, 2, 16))
    add_fixed(h, "q2_5_to_q4_11", [-128, 127, -1, 77], 8, lambda q: (q << 8) >> 2)
    add_fixed(h, "q4_11_to_q6_1", [-32768, 32767, -1025, 5000], 16, lambda q: (q >> 8) >> 2)
    add_fixed(h, "q6_1_to_q3_4", [-16, 15, 16, -77], 8, lambda q: shift_left(q, 3, 8))
    for name, bits, fraction_bits, values in (("q2_5", 8, 5, [-128, 127, 1, -77]),
                                              ("q4_11", 16, 11, [-32768, 32767, 1, -12345])):
        h.add(name + "_to_float_in_data", np.array(values, "int%d" % bits))
        h.add(name + "_to_float_out_reference", np.array(values) / 2.0**fraction_bits)

    bytes_ = np.array([0, 1, 127, 128, 129, 255, 77, 200, 13, 254])  # ten: two words and a rest
    h.add("uint8_to_int8_in_data", bytes_.astype(np.uint8))
    h.add("uint8_to_int8_out_reference", (bytes_ - 128).astype(np.int8))
    h.add("int8_to_uint8_in_data", (bytes_ - 128).astype(np.int8))
    h.add("int8_to_uint8_out_reference", bytes_.astype(np.uint8))
    return h
