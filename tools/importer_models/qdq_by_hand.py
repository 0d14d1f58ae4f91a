# SPDX-License-Identifier: MIT
"""Quantized ONNX graphs as other tools write them, computed literally in double."""

import numpy as np
import onnx
import torch
import torch.nn.functional as F
from onnx import TensorProto, helper, numpy_helper

from data import Lcg
from model import Model, quanta, quanta_float

TYPES = {np.int8: TensorProto.INT8, np.uint8: TensorProto.UINT8, np.float32: TensorProto.FLOAT}


class Graph:
    """Adds nodes and computes their values, in double or as integers, at the same time."""

    def __init__(self, seed):
        self.rng = Lcg(seed)
        self.nodes, self.constants, self.inputs, self.values = [], [], {}, {}

    def input(self, name, array):
        self.inputs[name] = array
        self.values[name] = array.astype(np.float64) if array.dtype == np.float32 else array
        return name

    def constant(self, array):
        name = "c%d" % len(self.constants)
        self.constants.append(numpy_helper.from_array(array, name))
        self.values[name] = array
        return name

    def node(self, operator, inputs, value, **attributes):
        name = "v%d" % len(self.nodes)
        self.nodes.append(helper.make_node(operator, inputs, [name], name=name, **attributes))
        self.values[name] = value
        return name

    def quantize(self, x, scale, zero):
        info = np.iinfo(zero.dtype)
        q = np.clip(np.rint(self.values[x] / np.float64(scale)) + zero, info.min, info.max)
        return self.node("QuantizeLinear", [x, self.constant(scale), self.constant(zero)],
                         q.astype(zero.dtype))

    def dequantize(self, q, scale, zero, axis=1):
        wide = self.values[q].astype(np.float64)
        shape = [1] * wide.ndim
        if scale.size > 1:
            shape[axis] = -1
        real = (wide - zero.reshape(shape)) * scale.astype(np.float64).reshape(shape)
        attributes = {"axis": axis} if scale.size > 1 else {}
        return self.node("DequantizeLinear", [q, self.constant(scale), self.constant(zero)], real,
                         **attributes)

    def both(self, x, zero, type=np.int8, scalar=True, headroom=1.0):
        """QuantizeLinear and DequantizeLinear with a scale that fits the values."""
        levels = 127 if type == np.int8 and zero == 0 else 255
        spread = np.abs(self.values[x]).max() * (1 if levels == 127 else 2)
        scale, zero = np.float32(spread * headroom / levels), type(zero)
        if not scalar:
            scale, zero = np.array([scale]), np.array([zero])
        return self.dequantize(self.quantize(x, np.array(scale), np.array(zero)),
                               np.array(scale), np.array(zero))

    def weights(self, shape, axis=0):
        """int8 weights, a scale for each index along the axis."""
        q = self.rng.integers(-127, 127, shape).astype(np.int8)
        scale = (0.004 + self.rng.uniform((shape[axis],), 0.002)).astype(np.float32)
        return self.dequantize(self.constant(q), scale, np.zeros(shape[axis], np.int8), axis), scale

    def bias(self, count, x_scale, scale):
        q = self.rng.integers(-400, 400, (count,)).astype(np.int32)
        return self.dequantize(self.constant(q), x_scale * scale, np.zeros(count, np.int32), 0)

    def scale_of(self, dequantized):
        node = next(n for n in self.nodes if n.output[0] == dequantized)
        return self.values[node.input[1]]

    def convolution(self, x, outputs, size, pads, strides=(1, 1), groups=1):
        w, scale = self.weights((outputs, self.values[x].shape[1] // groups, *size))
        b = self.bias(outputs, self.scale_of(x), scale)
        top, left, bottom, right = pads
        padded = F.pad(torch.tensor(self.values[x]), (left, right, top, bottom))
        y = F.conv2d(padded, torch.tensor(self.values[w]), torch.tensor(self.values[b]), strides,
                     groups=groups)
        return self.node("Conv", [x, w, b], y.numpy(), pads=pads, strides=strides, group=groups,
                         kernel_shape=size)

    def unary(self, operator, x, f, **attributes):
        return self.node(operator, [x], f(self.values[x]), **attributes)

    def model(self, file, about, output, count=1):
        y = self.values[output]
        if y.dtype == np.float64:
            y, tolerance = y.astype(np.float32), quanta_float(count, self.scale_of(output))
        else:
            tolerance = quanta(count)
        ports = [[helper.make_tensor_value_info(n, TYPES[a.dtype.type], a.shape)
                  for n, a in p.items()] for p in (self.inputs, {output: y})]
        graph = helper.make_graph(self.nodes, file, *ports, self.constants)
        content = helper.make_model(graph, opset_imports=[helper.make_opsetid("", 13)],
                                    ir_version=7)
        onnx.checker.check_model(content)
        return Model(file + ".onnx", content.SerializeToString(), about, self.inputs,
                     {output: y}, tolerance)


def float_ports(file="int8_float_ports"):
    """Float in and out around int8: scalar scales, one-sided pads, Clip with bounds as inputs."""
    g = Graph(31)
    x = g.both(g.input("x", g.rng.uniform((1, 3, 8, 7)).astype(np.float32)), 0)
    y = g.convolution(x, 5, (3, 3), (0, 0, 1, 1), (2, 2))
    y = g.node("Clip", [y, g.constant(np.float32(-0.5)), g.constant(np.float32(0.75))],
               np.clip(g.values[y], -0.5, 0.75))
    y = g.convolution(g.both(y, -7), 5, (3, 2), (1, 0, 1, 1), groups=5)
    y = g.both(g.unary("Relu", y, lambda v: np.maximum(v, 0)), -128)
    mean = g.unary("GlobalAveragePool", y, lambda v: v.mean((2, 3), keepdims=True))
    flat = g.unary("Flatten", g.both(mean, 3), lambda v: v.reshape(1, -1))
    w, scale = g.weights((4, 5))
    b = g.bias(4, g.scale_of(g.nodes[-4].output[0]), scale)
    y = g.node("Gemm", [flat, w, b], g.values[flat] @ g.values[w].T + g.values[b], transB=1)
    return g.model(file, float_ports.__doc__, g.both(y, 11))


def branches():
    """Scales of shape (1); parts of a concatenation of unequal scales; functions as tables."""
    g = Graph(32)
    x = g.both(g.input("x", g.rng.uniform((1, 4, 5, 6)).astype(np.float32)), 1, scalar=False)
    left = g.convolution(x, 3, (1, 1), (0, 0, 0, 0))
    left = g.both(g.unary("Sigmoid", g.both(left, 5), lambda v: 1 / (1 + np.exp(-v))), -128)
    right = g.convolution(x, 2, (3, 3), (1, 1, 1, 1))
    right = g.both(g.unary("Tanh", g.both(right, -3), np.tanh), 0, scalar=False)
    y = g.node("Concat", [left, right, x],
               np.concatenate([g.values[v] for v in (left, right, x)], 1), axis=1)
    y = g.both(g.unary("LeakyRelu", g.both(y, 9), lambda v: np.where(v < 0, v * 0.2, v),
                       alpha=0.2), -90)
    return g.model("branches", branches.__doc__, y)


def operators():
    """QLinearConv, its per-channel scales, and QLinearMatMul; integers in and out."""
    g = Graph(33)
    q = g.input("q", g.rng.integers(0, 255, (1, 3, 6, 5)).astype(np.uint8))
    w = g.rng.integers(-127, 127, (4, 3, 3, 2)).astype(np.int8)
    scales = np.float32([0.5, 0.25, 0.75, 0.3]) / 64
    bias = g.rng.integers(-900, 900, (4,)).astype(np.int32)
    sums = F.conv2d(torch.tensor(g.values[q].astype(np.float64) - 131), torch.tensor(w * 1.0),
                    torch.tensor(bias * 1.0), 1).numpy()
    real = sums * (0.02 * scales.astype(np.float64)).reshape(-1, 1, 1)
    number, u8, s8 = np.float32, np.uint8, np.int8
    y = g.node("QLinearConv", [q] + [g.constant(np.array(c)) for c in (
        number(0.02), u8(131), w, scales, np.zeros(4, s8), number(0.03), u8(100), bias)],
        np.clip(np.rint(real / 0.03) + 100, 0, 255).astype(u8))
    flat = g.node("Reshape", [y, g.constant(np.int64([4, 16]))], g.values[y].reshape(4, 16))
    m = g.rng.integers(-127, 127, (16, 5)).astype(s8)
    real = (g.values[flat].astype(np.float64) - 100) @ m * (0.03 * 0.01)
    y = g.node("QLinearMatMul", [flat] + [g.constant(np.array(c)) for c in (
        number(0.03), u8(100), m, number(0.01), s8(0), number(0.08), u8(120))],
        np.clip(np.rint(real / 0.08) + 120, 0, 255).astype(u8))
    return g.model("qlinear", operators.__doc__, y)


def models():
    return [float_ports(), branches(), operators()]
