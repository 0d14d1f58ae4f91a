# SPDX-License-Identifier: MIT
"""Element-wise functions, softmax and hardmax, in double precision."""

import math

import numpy as np

from emit import Header

SIGNED = [-2.5, 0.375, 1.75, -0.0625, 3.125, -1.5, 0.8125, -0.4375, 2.25, -3.0, 0.15625, -0.71875]
# Of these, and of the arguments in the table, no function of the math library gives a result of 2 or
# more: the tolerance is then at least one unit in the last place.
UNIT = [-0.4, 0.15, 0.83, -0.32, 0.06, -0.11, 0.55, -0.08, 0.92, -0.27, 0.36, -0.21]
SMALL = [2.2, -0.31, 1.4, -1.05, 0.06, 0.71, -1.2, 0.5, -0.83, 1.2, -0.02, 0.44]
POSITIVE = [0.3, 1.7, 0.24, 5.2, 0.9, 2.6, 0.51, 3.3, 1.1, 6.9, 0.17, 0.73]
FRACTIONS = [-0.5, 0.5, 1.5, -1.5, 2.5, -2.4999998, 0.49999997, -0.75, 8388607.5, -8388608.0, 7.0,
             -8388606.5]
UNWRITTEN = -28720636.0  # what the fixtures fill outputs with


def positive_part(x):
    return np.maximum(x, 0.0)


def elu(x, alpha):
    return positive_part(x) + np.minimum(0.0, alpha * (np.exp(x) - 1.0))


def leaky(x, threshold, slope, top=np.inf):
    """Linear below the threshold, the identity above it, cut at the top."""
    return np.where(x >= top, top, np.where(x < threshold, (x - threshold) * slope, x))


def half_away(x):
    return np.copysign(np.floor(np.abs(x) + 0.5), x)


def softmax(x):
    e = np.exp(x - x.max(axis=-1, keepdims=True))
    return e / e.sum(axis=-1, keepdims=True)


def first_maximum(x):
    return np.eye(x.shape[-1])[np.argmax(x, axis=-1)]


def f32(value):
    return float(np.float32(value))


# Name of the case, inputs, function of the inputs and of the parameters, parameters.
LAYERS = [
    ("relu", [1.0, 3.0, -2.0], positive_part, []),
    ("relu6", [1.0, 8.0, -2.0], lambda x, low, high: np.clip(x, low, high), [0.0, 6.0]),
    ("relu_thresholded", [1.0, 8.0, -2.0], lambda x, t: x * (x >= t), [f32(1.0000001)]),
    ("relu_generic", [1.0, 8.0, -2.0], leaky, [1.0, 0.5, 7.0]),
    ("relu_generic_no_max", [1.0, 8.0, -2.0], lambda x, t, s, _: leaky(x, t, s), [1.0, 0.5, -1.0]),
    ("elu", [1.0, 8.0, -2.0], elu, [0.5]),
    ("selu", [1.0, 8.0, -2.0], lambda x, a, g: g * elu(x, a), [f32(1.6732), f32(1.0507)]),
    ("sign", [2.0, 0.25, 0.0], lambda x: np.where(x > 0, 1.0, -1.0), []),
    ("clip", SIGNED, lambda x, low, high: np.clip(x, low, high), [-1.25, 2.5]),
    ("sigmoid", SIGNED, lambda x: 1.0 / (1.0 + np.exp(-x)), []),
    ("hard_sigmoid", [-2.5, 1.0, -2.0, 2.75, 2.5, -0.3],
     lambda x: np.clip(0.2 * x + 0.5, 0.0, 1.0), []),
    ("exp", [-3.0, 0.6, -0.25, 0.0, -1.75, 0.3125], np.exp, []),
    ("sqrt", [0.09, 2.0, 3.5, 0.0, 0.5, 1.21], np.sqrt, []),
    ("soft_plus", SIGNED, lambda x: np.log1p(np.exp(x)), []),
    ("soft_sign", SIGNED, lambda x: x / (1.0 + np.abs(x)), []),
    ("tanh", SIGNED, np.tanh, []),
    ("reciprocal", SIGNED[::2], lambda x: 1.0 / x, []),
]

KERNELS = [
    ("acos", UNIT, np.arccos),
    ("acosh", [1.0, 1.03, 3.6, 2.05, 1.5, 2.9], np.arccosh),
    ("atanh", UNIT, np.arctanh),
    ("asinh", SMALL, np.arcsinh),
    ("cosh", UNIT, np.cosh),
    ("sinh", UNIT, np.sinh),
    ("abs", SIGNED, np.abs),
    ("ceil", FRACTIONS, np.ceil),
    ("floor", FRACTIONS, np.floor),
    ("round", FRACTIONS, half_away),
    ("erf", SMALL, np.vectorize(math.erf)),
    ("asin", UNIT, np.arcsin),
    ("atan", SIGNED, np.arctan),
    ("cos", SIGNED, np.cos),
    ("sin", SIGNED, np.sin),
    ("tan", UNIT, np.tan),
    ("neg", SIGNED, np.negative),
    ("log", POSITIVE, np.log),
    ("rsqrt", POSITIVE, lambda x: x ** -0.5),
    ("reciprocal_u", POSITIVE, lambda x: 1.0 / x),
]


def vectors():
    h = Header("nl")
    for name, inputs, function, *parameters in LAYERS + KERNELS:
        x = h.add(name + "_in_data", np.array(inputs)).astype(np.float64)
        parameters = parameters[0] if parameters else []
        if parameters:
            h.add(name + "_params_data", np.array(parameters))
        h.add(name + "_out_reference", function(x, *parameters))

    # [pixel][channel]
    slopes = h.add("prelu_slope_data", np.array([0.0001, 0.0003, 0.0002])).astype(np.float64)
    x = h.add("prelu_in_data", np.array([[-2.0, -1.0, 5.0], [1.0, 8.0, -2.0]])).astype(np.float64)
    h.add("prelu_out_reference", np.where(x > 0, x, x * slopes))
    # The exponentials of the second and third pixel overflow or vanish without their maximum.
    x = h.add("soft_max_in_data", np.array([[0.5, -1.25, 2.0], [99.0, 98.5, 100.25],
                                            [-120.5, -119.0, -121.75], [0.25, 0.25, 0.25]]))
    h.add("soft_max_out_reference", softmax(x.astype(np.float64)))
    # Of a map two pixels wide and three high, as many pixels as it is high take part.
    x = h.add("hardmax_in_data", np.array([[-3.0, -1.5, -2.0, -1.5], [0.5, 4.0, -7.0, 4.5],
                                           [2.0, 1.0, 2.0, -0.5], [0.25, 1.0, 0.5, -1.0],
                                           [1.0, 2.0, 3.0, 4.0], [3.0, 1.0, 2.0, 0.5]]))
    h.add("hardmax_out_reference",
          np.where(np.arange(6)[:, None] < 3, first_maximum(x), UNWRITTEN))
    return h
