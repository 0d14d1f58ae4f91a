# SPDX-License-Identifier: MIT
"""Integer dense and convolution layers."""

import numpy as np

from data import Lcg
from emit import Header
from quantized import RANGE, align_factor, requantize, wrap32

# Format suffix: types of activations and weights.
TYPES = {
    "uint8": (np.uint8, np.uint8),
    "int8sym": (np.uint8, np.int8),
    "int8_int8sym": (np.int8, np.int8),
}


class Layer:
    """A convolution: kernel (K_w, K_h), stride and pad (x, y), sizes as [H][W][C]. A dense layer is
    one of 1x1. The output scale is chosen so that no output saturates."""

    def __init__(self, seed, fmt, size, channels, kernel=(1, 1), stride=(1, 1), pad=(0, 0),
                 out=None, depthwise=False):
        self.per_channel = fmt.endswith("_CH")
        self.activation, self.weight = TYPES[fmt[:-3] if self.per_channel else fmt]
        self.kernel, self.stride, self.pad, self.depthwise = kernel, stride, pad, depthwise
        width, height = size
        c_in, self.channels = channels
        self.out = out or size
        lcg = Lcg(seed)
        self.x = lcg.integers(*RANGE[self.activation], (height, width, c_in))
        kernel_shape = (kernel[1], kernel[0], self.channels) if depthwise else (
            self.channels, kernel[1], kernel[0], c_in)
        self.w = lcg.integers(*RANGE[self.weight], kernel_shape)
        entries = self.channels if self.per_channel else 1
        self.x_zero = int(lcg.integers(*RANGE[self.activation], (1,))[0])
        self.w_zero = [0] * entries
        if self.weight is np.uint8:
            self.w_zero = [int(z) for z in lcg.integers(90, 170, (entries,))]
        self.bias = lcg.integers(-4000, 4000, (self.channels,))
        self.x_scale = np.float32(0.02) + np.float32(lcg.bits(8)) / np.float32(9001)
        self.w_scale = [np.float32(0.003) + np.float32(lcg.bits(8)) / np.float32(30011)
                        for _ in range(entries)]
        real = self.real()
        least, most = min(real.min(), 0), max(real.max(), 0)
        self.y_scale = np.float32((most - least) / 230)
        self.y_zero = RANGE[self.activation][0] + 12 - round(least / float(self.y_scale))

    def entry(self, o):
        return o if self.per_channel else 0

    def taps(self, y, x, o):
        """(weight, input) of output o of pixel (x, y), zero points taken off."""
        for ky in range(self.kernel[1]):
            for kx in range(self.kernel[0]):
                row = y * self.stride[1] + ky - self.pad[1]
                column = x * self.stride[0] + kx - self.pad[0]
                if not (0 <= row < self.x.shape[0] and 0 <= column < self.x.shape[1]):
                    continue
                for c in [o] if self.depthwise else range(self.x.shape[2]):
                    w = self.w[ky, kx, c] if self.depthwise else self.w[o, ky, kx, c]
                    yield (int(w) - self.w_zero[self.entry(o)],
                           int(self.x[row, column, c]) - self.x_zero)

    def over_outputs(self, value, dtype):
        width, height = self.out
        return np.array([[[value(y, x, o) for o in range(self.channels)] for x in range(width)]
                         for y in range(height)], dtype=dtype)

    def real(self):
        """The real-valued convolution that the layer stands for."""
        def value(y, x, o):
            scale = float(self.x_scale) * float(self.w_scale[self.entry(o)])
            return scale * float(self.bias[o]) + sum(
                (w * float(self.w_scale[self.entry(o)])) * (v * float(self.x_scale))
                for w, v in self.taps(y, x, o))
        return self.over_outputs(value, np.float64)

    def outputs(self):
        def value(y, x, o):
            scale = self.w_scale[self.entry(o)]
            product = scale * self.x_scale if self.per_channel else self.x_scale * scale
            acc = wrap32(int(self.bias[o]) + sum(w * v for w, v in self.taps(y, x, o)))
            return requantize(acc, align_factor(np.float32(product / self.y_scale)), self.y_zero,
                              self.activation)
        result = self.over_outputs(value, np.int64)
        self.check_meaning(result)
        return result.astype(self.activation)

    def check_meaning(self, result):
        """Outputs stand for the real convolution, to one step, where they do not saturate."""
        low, high = RANGE[self.activation]
        steps = self.real() / float(self.y_scale) + self.y_zero
        error = np.abs(np.clip(steps, low, high) - result)
        assert error.max() <= 0.75, error.max()

    def add_to(self, header, stem, fmt, reference):
        def add(name, values, dtype):
            header.add("%s_%s_%s" % (stem, name, fmt), np.array(values, dtype=dtype))
        add("in_data", self.x, self.activation)
        add("weight_data", self.w, self.weight)
        add("bias_data", self.bias, np.int32)
        add("out_reference", reference, self.activation)
        add("pscale_in", [self.x_scale], np.float32)
        add("pzeropoint_in", [self.x_zero], self.activation)
        add("pscale_weights", self.w_scale, np.float32)
        add("pzeropoint_weights", self.w_zero, self.weight)
        add("pscale_out", [self.y_scale], np.float32)
        add("pzeropoint_out", [self.y_zero], self.activation)


# stem, format, and the Layer's arguments; the seed is the place in the list.
CASES = [
    ("dense", "uint8", dict(size=(1, 1), channels=(7, 3))),
    ("dense", "uint8_CH", dict(size=(1, 1), channels=(9, 5))),
    ("dense_noscratch", "uint8", dict(size=(1, 1), channels=(6, 3))),
    ("dense", "int8sym", dict(size=(1, 1), channels=(18, 4))),
    ("dense_noscratch", "int8sym", dict(size=(1, 1), channels=(11, 2))),
    ("dense", "int8_int8sym", dict(size=(1, 1), channels=(10, 3))),
    ("dense", "int8_int8sym_CH", dict(size=(1, 1), channels=(13, 4))),
    ("dense_noscratch", "int8_int8sym", dict(size=(1, 1), channels=(7, 5))),
    ("conv1x1", "uint8", dict(size=(3, 2), channels=(4, 2))),
    ("conv1x1_odd_ch_in", "uint8", dict(size=(3, 3), channels=(5, 2))),
    ("conv1x1_odd_ch_inout", "uint8", dict(size=(2, 3), channels=(7, 3))),
    ("conv1x1", "int8_int8sym", dict(size=(3, 2), channels=(8, 2))),
    ("conv1x1_odd_ch_in", "int8_int8sym", dict(size=(3, 3), channels=(9, 4))),
    ("conv1x1", "int8_int8sym_CH", dict(size=(5, 1), channels=(6, 5))),
    ("conv_rgb", "uint8", dict(size=(5, 5), channels=(3, 4), kernel=(3, 3), stride=(2, 2),
                               pad=(1, 1), out=(3, 3))),
    ("conv_rgb", "int8sym", dict(size=(5, 5), channels=(3, 3), kernel=(2, 2), stride=(1, 1),
                                 out=(4, 4))),
    ("conv_rgb", "int8_int8sym", dict(size=(4, 4), channels=(3, 2), kernel=(3, 3), pad=(1, 1))),
    ("conv_rgb", "int8_int8sym_CH", dict(size=(5, 5), channels=(3, 5), kernel=(3, 3),
                                         stride=(2, 2), out=(2, 2))),
    ("conv_basic", "int8_int8sym_CH", dict(size=(5, 4), channels=(2, 3), kernel=(3, 2),
                                           stride=(2, 1), pad=(1, 0), out=(3, 3))),
    ("conv_k", "uint8", dict(size=(4, 5), channels=(2, 3), kernel=(2, 3), out=(3, 3))),
    ("conv_dw", "uint8", dict(size=(4, 3), channels=(3, 3), kernel=(3, 2), out=(2, 2),
                              depthwise=True)),
    ("conv_dw_group", "uint8", dict(size=(5, 4), channels=(9, 9), kernel=(3, 3), stride=(2, 1),
                                    pad=(1, 1), out=(3, 4), depthwise=True)),
    ("conv_dw", "int8sym", dict(size=(3, 4), channels=(2, 2), kernel=(2, 3), out=(2, 2),
                                depthwise=True)),
    ("conv_dw_group", "int8sym", dict(size=(4, 5), channels=(9, 9), kernel=(3, 2), stride=(1, 2),
                                      pad=(0, 1), out=(2, 3), depthwise=True)),
    ("conv_dw", "int8_int8sym", dict(size=(4, 4), channels=(3, 3), kernel=(3, 3), out=(2, 2),
                                     depthwise=True)),
    ("conv_dw", "int8_int8sym_CH", dict(size=(4, 3), channels=(6, 6), kernel=(2, 2), pad=(1, 0),
                                        out=(4, 2), depthwise=True)),
    ("conv_dw_group", "int8_int8sym", dict(size=(3, 5), channels=(8, 8), kernel=(2, 3),
                                           stride=(1, 2), pad=(0, 1), out=(2, 3),
                                           depthwise=True)),
    ("conv_dw_group4", "int8_int8sym", dict(size=(4, 3), channels=(4, 4), kernel=(3, 3),
                                            pad=(2, 1), out=(5, 3), depthwise=True)),
    ("conv_pad", "uint8", dict(size=(4, 3), channels=(2, 3), kernel=(3, 2), pad=(2, 1),
                               out=(6, 4))),
    ("conv_pad", "int8sym", dict(size=(3, 4), channels=(3, 2), kernel=(2, 3), pad=(1, 1),
                                 out=(4, 4))),
    ("conv_pad", "int8_int8sym", dict(size=(3, 3), channels=(4, 3), kernel=(3, 3), pad=(1, 2),
                                      out=(3, 5))),
    ("conv_stride", "uint8", dict(size=(7, 4), channels=(2, 3), kernel=(3, 2), stride=(2, 1),
                                  out=(3, 3))),
    ("conv_stride", "int8sym", dict(size=(5, 7), channels=(3, 2), kernel=(2, 2), stride=(3, 2),
                                    out=(2, 3))),
    ("conv_stride", "int8_int8sym", dict(size=(6, 5), channels=(1, 4), kernel=(2, 3),
                                         stride=(2, 2), out=(3, 2))),
    ("conv_nl_stride", "uint8", dict(size=(6, 5), channels=(2, 3), kernel=(2, 2), stride=(2, 1),
                                     out=(3, 4))),
    ("conv_fused", "uint8", dict(size=(6, 6), channels=(2, 3), kernel=(3, 2), pad=(1, 1),
                                 out=(6, 6))),
    ("conv_fused", "int8", dict(size=(5, 7), channels=(2, 2), kernel=(2, 3), pad=(0, 1),
                                out=(4, 7))),
    ("conv_unit_scale", "uint8", dict(size=(3, 2), channels=(4, 2), kernel=(2, 1), out=(2, 2))),
    ("conv_saturate", "uint8", dict(size=(3, 2), channels=(3, 2), kernel=(2, 2), out=(2, 1))),
]


def pool(cells, size, stride, out, average):
    """Pooling without padding, without change of quantization."""
    def value(y, x, c):
        window = [int(v) for v in cells[y * stride[1]:y * stride[1] + size[1],
                                        x * stride[0]:x * stride[0] + size[0], c].ravel()]
        if not average:
            return max(window)
        total = sum(window) + len(window) // 2
        return int(total / len(window))  # toward zero
    return np.array([[[value(y, x, c) for c in range(cells.shape[2])] for x in range(out[0])]
                     for y in range(out[1])])


def adapt(stem, fmt, layer):
    """What the cases with a point of their own change before they run."""
    if stem == "conv_unit_scale":  # factor 1: the saturated multiplier
        layer.x = 100 + layer.x % 5
        layer.w = layer.w_zero[0] + layer.w % 4 - 1
        layer.x_zero, layer.y_zero = 98, 90
        layer.bias = layer.bias % 20
        layer.x_scale = layer.y_scale = np.float32(1)
        layer.w_scale = [np.float32(1)]
    if stem == "conv_saturate":  # past both ends, by far
        layer.bias = np.array([3000000, -3000000])


def finish(stem, out, layer):
    """The functions and poolings behind some of the convolutions."""
    if stem == "conv_nl_stride":  # relu at the output zero point
        return np.maximum(out, layer.y_zero)
    if stem == "conv_fused":
        average = layer.activation is np.int8
        clipped = np.maximum(out, 190 if not average else -30)
        return pool(clipped.astype(np.int64), (3, 2), (2, 2) if not average else (1, 3),
                    (2, 3) if not average else (2, 2), average)
    return out


def exact_1x1():
    """int8 weights, one pixel, two outputs: 255, saturated, and 10."""
    layer = Layer(1000, "int8sym", size=(1, 1), channels=(4, 2))
    for channel, wanted in enumerate((290, 10)):
        layer.bias[channel] = 0
        scale = float(layer.x_scale) * float(layer.w_scale[0]) / float(layer.y_scale)
        acc = sum(w * v for w, v in layer.taps(0, 0, channel))
        layer.bias[channel] = round((wanted - layer.y_zero) / scale) - acc
    assert list(layer.outputs().ravel()) == [255, 10]
    return layer


def vectors():
    header = Header("conv_integer")
    for seed, (stem, fmt, arguments) in enumerate(CASES):
        layer = Layer(seed + 1, "int8_int8sym" if fmt == "int8" else fmt, **arguments)
        adapt(stem, fmt, layer)
        layer.add_to(header, stem, fmt, finish(stem, layer.outputs(), layer))
    exact = exact_1x1()
    exact.add_to(header, "conv1x1", "int8sym", exact.outputs())
    return header
