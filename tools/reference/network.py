# SPDX-License-Identifier: MIT
"""Whole networks of few layers, on exact data. Maps are [H][W][C], batches the first axis."""

import numpy as np

import data
import emit


# From 10000 on; without a name: no type.
LAYER_TYPES = ["", "ADD", "BN", "", "CONV2D", "DENSE", "GRU", "LRN", "LSTM", "NL", "NORM",
               "OPTIMIZED_CONV2D", "TRANSPOSE", "POOL", "SM", "SPLIT", "TIME_DELAY",
               "TIME_DISTRIBUTED", "", "CONCAT", "GEMM", "UPSAMPLE", "ELTWISE", "GENERIC",
               "INSTANCENORMALIZATION", "PAD", "SLICE", "TILE", "REDUCE", ""]


def relu(x):
    return np.maximum(x, 0)


def add_dense(header, name, lcg, outputs, inputs):
    w, b = lcg.exact((outputs, inputs)), lcg.exact((outputs,))
    header.add(name + "_weight_data", w)
    header.add(name + "_bias_data", b)
    return lambda x: x @ w.T + b


def vectors():
    header = emit.Header("network")
    header.add("layer_type_names", LAYER_TYPES)
    lcg = data.Lcg(9)

    x = header.add("net_in_data", lcg.exact((3,)))
    hidden = add_dense(header, "net_hidden", lcg, 4, 3)
    last = add_dense(header, "net_last", lcg, 2, 4)
    header.add("net_out_reference", last(relu(hidden(x))))

    # Two inputs of different size and number of batches; the shorter one is used again.
    inputs = lcg.exact((3, 3)), lcg.exact((3, 2))
    header.add("multi_in_0_data", inputs[0])
    header.add("multi_in_1_data", inputs[1])
    dense = add_dense(header, "multi", lcg, 2, 5)
    for name, batches in (("multi", (1, 1)), ("multi_3_2", (3, 2)), ("multi_2_3", (2, 3))):
        joined = [np.concatenate([x[i % n] for x, n in zip(inputs, batches)])
                  for i in range(max(batches))]
        header.add(name + "_out_reference", dense(np.array(joined)))

    x = header.add("fully_connected_in_data", lcg.exact((2, 2, 3)))
    header.add("fully_connected_out_reference",
               add_dense(header, "fully_connected", lcg, 4, 3)(x))

    x = header.add("net_bn_in_data", lcg.exact((2, 3, 2)))
    scale = header.add("net_bn_weight_data", lcg.exact((2,)))
    bias = header.add("net_bn_bias_data", lcg.exact((2,)))
    header.add("net_bn_out_reference", x * scale + bias)

    header.add("net_relu_in_data", np.array([1.0, 2.0, 3.0]))  # gives 16, 23 and -9.5
    header.add("net_relu_weight_data", np.array([[3.0, 2, 2], [-1, 3, 5], [2, -4, -1]]))
    header.add("net_relu_bias_data", np.array([3.0, 3.0, -0.5]))

    x = header.add("net_sm_in_data", lcg.exact((2, 3)))
    scores = add_dense(header, "net_sm", lcg, 4, 3)(x)
    powers = np.exp(scores)
    header.add("net_sm_out_reference", powers / powers.sum(axis=1, keepdims=True))
    return header
