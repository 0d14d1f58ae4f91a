# SPDX-License-Identifier: MIT
"""The classifier of examples/shapes_float.c and shapes_int8.c: its pictures, its weights in both
types, and what the programs must print.

Filters are drawn; the dense layer is fitted to drawn pictures by least squares. The int8 network is
the float one quantized: a scale for each filter, activations by their range over the same pictures.
"""

import pathlib

import numpy as np

import emit
from data import Lcg
from quantized import align_factor, clamp, requantize, wrap32

EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"
NAMES = ["disc", "ring", "cross"]
INK = " .+*#"  # quarters
WIDTH, HEIGHT, FILTERS = 16, 12, 6
PICTURES = 6  # that the programs classify
TRAINING = 480


def picture(rng, kind):
    """A shape of that kind somewhere, with some noise, in quarters."""
    x0, y0, radius = rng.integers(20, 40, 1)[0], rng.integers(16, 28, 1)[0], rng.integers(10, 16, 1)[0]
    dx, dy = np.arange(WIDTH) - x0 / 4.0, (np.arange(HEIGHT) - y0 / 4.0)[:, None]
    distance, radius = np.sqrt(dx**2 + dy**2), radius / 4.0
    ink = {"disc": radius + 0.5 - distance, "ring": 1.25 - abs(distance - radius),
           "cross": np.where(np.maximum(abs(dx), abs(dy)) <= radius + 0.5,
                             1.25 - np.minimum(abs(dx), abs(dy)), 0)}[kind]
    noise = np.where(rng.integers(0, 40, distance.shape) == 0, 0.5, 0)
    return np.clip(np.floor(np.maximum(ink, noise) * 4), 0, 4) / 4.0


def windows(x, stride, fill):
    """[H_out, W_out, 3, 3, C]: the 3x3 windows of a map with a border of 1."""
    padded = np.pad(x, ((1, 1), (1, 1), (0, 0)), constant_values=fill)
    return np.array([[padded[y:y + 3, i:i + 3] for i in range(0, x.shape[1], stride)]
                     for y in range(0, x.shape[0], stride)])


def conv(x, weights, zero=0):
    return np.einsum("yxijc,oijc->yxo", windows(x, 1, zero) - zero, weights)


def depthwise(x, weights, zero=0):
    return np.einsum("yxijc,ijc->yxc", windows(x, 2, zero) - zero, weights)


def max_pool(x):
    return x.reshape(x.shape[0] // 2, 2, x.shape[1] // 2, 2, -1).max((1, 3))


def softmax(x):
    e = np.exp(x - x.max())
    return e / e.sum()


def drawn():
    """Weights of the first two layers, [out][y][x][in] and [y][x][channel], and biases."""
    rng = Lcg(224)
    return {"conv_weights": rng.exact((FILTERS, 3, 3, 1), 1.0), "conv_bias": rng.exact(FILTERS, 0.5),
            "depthwise_weights": rng.exact((3, 3, FILTERS), 1.0),
            "depthwise_bias": rng.exact(FILTERS, 0.5)}


def activations(p, x):
    """After each layer up to the scores."""
    pooled = max_pool(np.maximum(conv(x[:, :, None], p["conv_weights"]) + p["conv_bias"], 0))
    small = np.maximum(depthwise(pooled, p["depthwise_weights"]) + p["depthwise_bias"], 0)
    scores = p["dense_weights"] @ small.ravel() + p["dense_bias"] if "dense_bias" in p else None
    return pooled, small, scores


def fit(pictures, kinds):
    p = drawn()
    features = np.array([np.append(activations(p, x)[1], 1) for x in pictures])
    targets = np.array([[2.0 if name == kind else -2.0 for name in NAMES] for kind in kinds])
    solved = np.linalg.solve(features.T @ features + 2 * np.eye(features.shape[1]),
                             features.T @ targets).T
    solved = np.round(solved * 1024) / 1024
    return dict(p, dense_weights=solved[:, :-1], dense_bias=solved[:, -1])


# --- int8 --------------------------------------------------------------------------------------


def affine(low, high):
    """Scale (float32) and zero point for a range that holds 0."""
    scale = np.float32((high - low) / 255)
    return scale, int(round(-128 - low / float(scale)))


def quantize(p, pictures):
    """Weights, biases, scales and zero points of the int8 network."""
    maps = list(zip(*(activations(p, x) for x in pictures)))
    q = {"picture": affine(0, 1)}
    for name, values in zip(("conv", "depthwise", "dense"), maps):
        q[name] = affine(min(0, np.min(values)), np.max(values))
    for name, before, axis in (("conv", "picture", (1, 2, 3)), ("depthwise", "conv", (0, 1)),
                               ("dense", "depthwise", 1)):
        weights = p[name + "_weights"]
        scales = (abs(weights).max(axis) / 127).astype(np.float32)
        shape = np.expand_dims(scales.astype(float), axis)
        q[name + "_weights"] = np.round(weights / shape).astype(np.int8)
        q[name + "_bias"] = np.round(p[name + "_bias"] / (scales.astype(float) * float(q[before][0]))
                                     ).astype(np.int32)
        q[name + "_scales"] = scales
    return q


def requantized(q, name, before, sums):
    """Sums with the outputs along the last axis, as the layer's int8 values."""
    scale, zero = q[name]
    pairs = [align_factor(w * q[before][0] / scale) for w in q[name + "_scales"]]
    sums = sums + q[name + "_bias"].astype(np.int64)
    return np.array([requantize(wrap32(int(s)), pair, zero, np.int8)
                     for s, pair in zip(sums.ravel(), pairs * (sums.size // len(pairs)))]
                    ).reshape(sums.shape)


def scores_int8(q, x):
    def weights(name):
        return q[name + "_weights"].astype(np.int64)

    scale, zero = q["picture"]
    real = x.astype(np.float32) / scale + np.float32(zero)
    x = np.array([clamp(int(np.trunc(v + np.copysign(np.float32(0.5), v))), np.int8)
                  for v in real.ravel()]).reshape(HEIGHT, WIDTH, 1)
    x = requantized(q, "conv", "picture", conv(x, weights("conv"), zero))
    x = max_pool(np.maximum(x, q["conv"][1]))
    x = requantized(q, "depthwise", "conv", depthwise(x, weights("depthwise"), q["conv"][1]))
    x = np.maximum(x, q["depthwise"][1]).ravel() - q["depthwise"][1]
    x = requantized(q, "dense", "depthwise", weights("dense") @ x)
    return (x - q["dense"][1]) * float(q["dense"][0])


# --- files -------------------------------------------------------------------------------------


class File:
    def __init__(self, name, text):
        self._name, self._text = name, text

    def text(self):
        return self._text

    def path(self):
        return EXAMPLES / self._name


def header(name, comment, arrays):
    lines = ["/* SPDX-License-Identifier: MIT */",
             "/* Written by tools/reference/generate.py; do not edit.%s */" % comment,
             "#include <stdint.h>", ""]
    for title, values in arrays.items():
        lines.append(emit.c_array(title, values))
    return File("weights/%s.h" % name, "\n".join(lines))


def printed(name, distributions):
    lines = []
    for shares in distributions:
        # No digit hangs on the last bits of single precision.
        assert np.all(abs((shares * 10000) % 1 - 0.5) > 5e-3), "draw other pictures"
        lines.append(", ".join("%s %.4f" % pair for pair in zip(NAMES, shares)))
    return File(name + ".expected", "\n".join(lines + [""]))


def vectors():
    rng = Lcg(1615)
    kinds = [NAMES[i % 3] for i in range(TRAINING + PICTURES)]
    pictures = [picture(rng, kind) for kind in kinds]
    shown, pictures, kinds = pictures[TRAINING:], pictures[:TRAINING], kinds[:TRAINING]
    p = fit(pictures, kinds)
    q = quantize(p, pictures)
    text = np.array(["".join(INK[int(v * 4)] for v in row) for x in shown for row in x])
    weights = {k: v for k, v in q.items() if not isinstance(v, tuple)}
    weights.update((k + "_zeros", np.zeros(len(v), np.int8)) for k, v in q.items()
                   if k.endswith("_scales"))
    for k, (scale, zero) in ((k, v) for k, v in q.items() if isinstance(v, tuple)):
        weights.update({k + "_scale": np.array([scale]), k + "_zero": np.array([zero], np.int8)})
    return [
        header("shapes_pictures", " Pictures, row by row.", {"pictures": text}),
        header("shapes_float", "", {k: v.astype(np.float32) for k, v in p.items()}),
        header("shapes_int8", "", weights),
        printed("shapes_float", [softmax(activations(p, x)[2]) for x in shown]),
        printed("shapes_int8", [softmax(scores_int8(q, x)) for x in shown]),
    ]
