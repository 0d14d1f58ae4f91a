# SPDX-License-Identifier: MIT
"""Fixed-point softmax: a map of five channels, width 2 and height 3."""

import numpy as np

import fixed_point as fx
from data import Lcg
from emit import Header


def vectors():
    h = Header("sm_fixed")
    lcg = Lcg(22)
    for name, bits, x in (("soft_max_q7", 8, [[3, 3, 2, -9, 1], [-128, -121, 127, 126, 120]]),
                          ("soft_max_q15", 16, [[300, 300, 299, 284, 285],
                                                [-32768, -32767, -32766, -32755, -32753]])):
        x = np.concatenate([x, lcg.integers(-4, 4, (4, 5))])
        h.add(name + "_in_data", fx.word(x, bits))
        h.add(name + "_out_reference", fx.real(fx.softmax(x, bits), bits - 1))
    return h
