# SPDX-License-Identifier: MIT
"""Fixed-point nonlinearities: the real functions of the numbers that the inputs stand for."""

import numpy as np

import fixed_point as fx
from emit import Header


def vectors():
    h = Header("nl_fixed")
    x = np.array([-128, 127, 0, -1, 1, 55, -90, 17, -33, 2, 101, -7])
    h.add("relu_q7_in_data", fx.word(x, 8))
    h.add("relu_q7_out_reference", np.maximum(fx.real(x, 5), 0))
    x = np.array([-32768, 32767, 12287, 12289, 0, -1, 5000, 12288, -300, 31, 20000, 7])
    h.add("relu6_q15_in_data", fx.word(x, 16))
    h.add("relu6_q15_params", fx.word([6 * 2**11], 16))
    h.add("relu6_q15_out_reference", np.clip(fx.real(x, 11), 0, 6))
    # Four integer bits, one more than the table has. Just below zero the table is coarse.
    x = np.array([-32768, 32767, 0, 700, -700, 3333, -7777, 14000, 250, -5000, 9000, -21000])
    h.add("sigmoid_q15_in_data", fx.word(x, 16))
    h.add("sigmoid_q15_out_reference", 1 / (1 + np.exp(-fx.real(x, 11))))
    x = np.array([-128, 127, 0, -1, 1, 9, -21, 33, -6, 14, -60, 4])
    h.add("tanh_q7_in_data", fx.word(x, 8))
    h.add("tanh_q7_out_reference", np.tanh(fx.real(x, 4)))
    return h
