# SPDX-License-Identifier: MIT
"""Input data that bites: signed, irregular and reproducible on every machine."""

import numpy as np


class Lcg:
    """A 64-bit linear congruential generator (Knuth's MMIX constants), so that the vectors do not
    depend on a library's random numbers."""

    def __init__(self, seed):
        self._state = seed

    def bits(self, count):
        """An unsigned number of count bits, from the high end of the state."""
        self._state = (self._state * 6364136223846793005 + 1442695040888963407) % 2**64
        return self._state >> (64 - count)

    def integers(self, low, high, shape):
        """Whole numbers of [low, high], as int64."""
        span = high - low + 1
        flat = [low + self.bits(32) * span // 2**32 for _ in range(int(np.prod(shape)))]
        return np.array(flat, dtype=np.int64).reshape(shape)

    def exact(self, shape, limit=2.0, fraction_bits=4):
        """Multiples of 2^-fraction_bits of at most limit in magnitude, as float64: short sums of
        their products are exact in single precision."""
        steps = int(limit * 2**fraction_bits)
        return self.integers(-steps, steps, shape) / 2.0**fraction_bits

    def uniform(self, shape, limit=1.0):
        """Numbers of (-limit, limit) rounded to single precision, as float64."""
        flat = [(self.bits(24) / 2.0**23 - 1.0) * limit for _ in range(int(np.prod(shape)))]
        return np.array(flat).astype(np.float32).astype(np.float64).reshape(shape)
