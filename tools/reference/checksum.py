# SPDX-License-Identifier: MIT
"""The 32-bit checksum of a byte pattern of odd length."""

import numpy as np

import emit


def checksum(data):
    words = [low + 256 * high for low, high in zip(data[0::2], data[1::2])]
    sums = np.cumsum(np.array(words, dtype=object))
    return sum(sums) % 2**16 * 2**16 + sum(words) % 2**16


def vectors():
    assert checksum([i % 256 for i in range(2000)]) == 0xD2082658
    noise = [(i * i * 37 + i // 3) % 251 + 4 for i in range(761)]
    header = emit.Header("checksum")
    header.add("noise", np.array(noise, dtype=np.uint8))
    header.add("noise_checksum", np.array([checksum(noise)], dtype=np.uint32))
    return header
