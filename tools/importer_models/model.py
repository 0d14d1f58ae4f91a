# SPDX-License-Identifier: MIT
"""A model file with inputs and expected outputs."""

import dataclasses

import numpy as np


@dataclasses.dataclass
class Model:
    file: str
    content: bytes
    about: str
    inputs: dict  # name: array
    outputs: dict
    tolerance: dict
    input_dims: dict = dataclasses.field(default_factory=dict)


def ulps(count, outputs):
    """A tolerance of so many units in the last place of the largest output: float kernels sum in
    single precision, the expected values are of double precision."""
    largest = max(np.abs(y).max() for y in outputs)
    return {"kind": "abs", "value": float(count * np.spacing(np.float32(largest)))}


def quanta(count):
    return {"kind": "quanta", "value": count}


def quanta_float(count, scale):
    return {"kind": "quanta_float", "value": count, "quantum": float(scale)}
