# SPDX-License-Identifier: MIT
"""Writes TFLite files layer by layer, and computes what they do: floats in double; integers as the
format's integer scheme has it, sums of integers scaled once and rounded once, halves upwards.
"""

import json
import pathlib
import subprocess
import tempfile

import numpy as np
import torch
import torch.nn.functional as F

from data import Lcg
from model import Model, quanta, ulps

SCHEMA = pathlib.Path(__file__).resolve().parents[2] / "importer" / "read" / "tflite.fbs"
CODES = {"float32": 0, "float64": 0, "int32": 2, "uint8": 3, "int8": 9}  # activations in double
OPERATORS = {"ADD": 0, "AVERAGE_POOL_2D": 1, "CONV_2D": 3, "DEPTHWISE_CONV_2D": 4,
             "FULLY_CONNECTED": 9, "MAX_POOL_2D": 17, "RESHAPE": 22, "SOFTMAX": 25}


def pads(size, kernel, stride, same):
    total = max((-(-size // stride) - 1) * stride + kernel - size, 0) if same else 0
    return total // 2, total - total // 2


class Activation:
    """Values as they are stored; real = (values - zero) * scale."""

    def __init__(self, number, values, scale, zero):
        self.number, self.values, self.scale, self.zero = number, values, scale, zero

    def steps(self):
        return self.values.astype(np.float64) - self.zero


class Network:
    """dtype: of activations; int8 weights have a scale for each channel, uint8 weights one scale
    and a zero point."""

    def __init__(self, seed, dtype):
        self.rng, self.dtype = Lcg(seed), np.dtype(dtype)
        self.float = self.dtype == np.float32
        self.tensors, self.operators = [], []
        self.buffers, self.inputs = [{}], []

    def tensor(self, values, scales=(), zeros=(), axis=0, constant=False):
        entry = {"shape": list(values.shape), "type": CODES[values.dtype.name],
                 "name": "t%d" % len(self.tensors)}
        if len(scales) > 0:
            entry["quantization"] = {"scale": [float(s) for s in scales],
                                     "zero_point": [int(z) for z in zeros], "axis": axis}
        if constant:
            entry["buffer"] = len(self.buffers)
            little = values.astype(values.dtype.newbyteorder("<")).tobytes()
            self.buffers.append({"data": list(little)})
        self.tensors.append(entry)
        return len(self.tensors) - 1

    def activation(self, values, scale=1.0, zero=0):
        """Of a scale that the values, in quanta, have already."""
        quantized = ((), ()) if self.float else ((scale,), (zero,))
        return Activation(self.tensor(values, *quantized), values, scale, zero)

    def input(self, shape):
        if self.float:
            x = self.activation(self.rng.uniform(shape).astype(np.float32))
        else:
            info = np.iinfo(self.dtype)
            values = self.rng.integers(info.min, info.max, shape).astype(self.dtype)
            x = self.activation(values, np.float32(1 / 127.5), info.max - 128)
        self.inputs.append(x)
        return x

    def result(self, sums, unit, relu=False, quantization=None):
        """The activation of sums * unit, of a scale that cuts off the largest few."""
        real = sums * unit
        if self.float:
            return self.activation((np.maximum(real, 0) if relu else real))
        info = np.iinfo(self.dtype)
        if quantization is None:
            low, high = (0.0 if relu else min(real.min(), 0.0)), max(real.max(), 0.0)
            scale = np.float32(0.97 * (high - low) / 255)
            zero = int(np.rint(-low * 0.97 / scale)) + info.min
        else:
            scale, zero = quantization
        values = np.floor(sums * (unit / np.float64(scale)) + 0.5) + zero
        values = np.clip(values, zero if relu else info.min, info.max)
        return self.activation(values.astype(self.dtype), scale, zero)

    def weights(self, shape, axis, fan_in, x, per_channel=True):
        """Tensor, its steps as floats, and the unit of sums of products with x."""
        # Sums have about the magnitude 1.5, at any depth.
        level = 1.5 / np.sqrt(fan_in * np.mean((x.steps() * x.scale)**2))
        if self.float:
            w = self.rng.uniform(shape, level * np.sqrt(3.0)).astype(np.float32)
            return self.tensor(w, constant=True), w.astype(np.float64), np.ones(1)
        count = shape[axis] if per_channel and self.dtype == np.int8 else 1
        spread = level / 73
        scales = (spread * (1 + self.rng.uniform((count,), 0.4))).astype(np.float32)
        info = np.iinfo(self.dtype)
        zero = 0 if self.dtype == np.int8 else 121
        w = self.rng.integers(max(info.min, -127), info.max, shape).astype(self.dtype)
        number = self.tensor(w, scales, [zero] * count, axis, constant=True)
        return number, w.astype(np.float64) - zero, scales.astype(np.float64) * np.float64(x.scale)

    def bias(self, count, unit):
        if self.float:
            b = self.rng.uniform((count,), 0.3).astype(np.float32)
            return self.tensor(b, constant=True), b.astype(np.float64)
        b = self.rng.integers(-2000, 2000, (count,)).astype(np.int32)
        return self.tensor(b, unit.astype(np.float32), [0] * len(unit), constant=True), b * 1.0

    def operator(self, name, inputs, output, kind=None, **options):
        entry = {"opcode_index": list(OPERATORS).index(name), "inputs": inputs,
                 "outputs": [output.number]}
        if kind:
            entry.update(options_type=kind, options=options)
        self.operators.append(entry)
        return output

    def windowed(self, name, kind, x, w, groups, kernel, strides, same, relu, weights, **options):
        number, unit = weights
        (top, bottom), (left, right) = (pads(x.values.shape[i + 1], kernel[i], strides[i], same)
                                        for i in range(2))
        bias, b = self.bias(w.shape[0], unit)
        padded = F.pad(torch.tensor(x.steps()).permute(0, 3, 1, 2), (left, right, top, bottom))
        sums = F.conv2d(padded, torch.tensor(w), torch.tensor(b), strides, groups=groups)
        y = self.result(sums.permute(0, 2, 3, 1).numpy(), unit, relu)
        return self.operator(name, [x.number, number, bias], y, kind, padding=0 if same else 1,
                             stride_h=strides[0], stride_w=strides[1], activation=int(relu),
                             **options)

    def conv(self, x, channels, kernel, strides=(1, 1), relu=True, same=True):
        inputs = x.values.shape[3]
        number, w, unit = self.weights((channels, *kernel, inputs), 0, inputs * kernel[0] * kernel[1],
                                       x)
        return self.windowed("CONV_2D", "Conv2D", x, w.transpose(0, 3, 1, 2), 1, kernel, strides,
                             same, relu, (number, unit))

    def depthwise(self, x, kernel, strides=(1, 1), relu=True, same=True):
        channels = x.values.shape[3]
        number, w, unit = self.weights((1, *kernel, channels), 3, kernel[0] * kernel[1], x)
        return self.windowed("DEPTHWISE_CONV_2D", "DepthwiseConv2D", x, w.transpose(3, 0, 1, 2),
                             channels, kernel, strides, same, relu, (number, unit),
                             depth_multiplier=1)

    def dense(self, x, outputs, relu=False):
        rows = x.steps().reshape(1, -1)
        number, w, unit = self.weights((outputs, rows.shape[1]), 0, rows.shape[1], x, False)
        bias, b = self.bias(outputs, unit)
        y = self.result(rows @ w.T + b, unit, relu)
        return self.operator("FULLY_CONNECTED", [x.number, number, bias], y, "FullyConnected",
                             activation=int(relu))

    def add(self, a, b, relu=True):
        sums = a.steps() * np.float64(a.scale) + b.steps() * np.float64(b.scale)
        return self.operator("ADD", [a.number, b.number], self.result(sums, 1.0, relu), "Add",
                             activation=int(relu))

    def pool(self, name, x, kernel, of):
        """Without overlap; average of integers rounds halves away from zero."""
        n, h, w, c = x.values.shape
        rows, columns = h // kernel[0], w // kernel[1]
        cut = x.values[:, :rows * kernel[0], :columns * kernel[1]].astype(np.float64)
        y = of(cut.reshape(n, rows, kernel[0], columns, kernel[1], c), axis=(2, 4))
        if not self.float:
            y = (np.sign(y) * np.floor(np.abs(y) + 0.5)).astype(self.dtype)
        y = self.activation(y, x.scale, x.zero)
        return self.operator(name, [x.number], y, "Pool2D", padding=1, stride_h=kernel[0],
                             stride_w=kernel[1], filter_height=kernel[0], filter_width=kernel[1])

    def average(self, x, kernel=None):
        return self.pool("AVERAGE_POOL_2D", x, kernel or x.values.shape[1:3], np.mean)

    def maximum(self, x, kernel):
        return self.pool("MAX_POOL_2D", x, kernel, np.max)

    def flat(self, x):
        shape = np.array([1, x.values.size], np.int32)
        y = self.activation(x.values.reshape(shape), x.scale, x.zero)
        return self.operator("RESHAPE", [x.number, self.tensor(shape, constant=True)], y)

    def softmax(self, x):
        e = np.exp(x.steps() * np.float64(x.scale))
        quantization = None if self.float else (np.float32(1 / 256), np.iinfo(self.dtype).min)
        y = self.result(e / e.sum(), 1.0, quantization=quantization)
        return self.operator("SOFTMAX", [x.number], y, "Softmax", beta=1.0)

    def model(self, file, about, y, count):
        graph = {"tensors": self.tensors, "inputs": [x.number for x in self.inputs],
                 "outputs": [y.number], "operators": self.operators, "name": file}
        codes = [{"short_code": c, "code": c} for c in OPERATORS.values()]
        text = json.dumps({"version": 3, "operator_codes": codes, "subgraphs": [graph],
                           "buffers": self.buffers})
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder) / "model.json"
            source.write_text(text)
            subprocess.run(["flatc", "-b", "-o", folder, SCHEMA, source], check=True)
            content = (pathlib.Path(folder) / "model.bin").read_bytes()
        values = y.values.astype(np.float32) if self.float else y.values
        return Model(file + ".tflite", content, about, {"x": self.inputs[0].values},
                     {"y": values}, ulps(count, [values]) if self.float else quanta(count))
