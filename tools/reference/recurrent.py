# SPDX-License-Identifier: MIT
"""Recurrent cells in double precision, a unit at a time, written from their equations."""

import numpy as np


def hard_sigmoid(x):
    return min(max(0.2 * x + 0.5, 0.0), 1.0)


def sigmoid(x):
    return 1 / (1 + np.exp(-x))


def linear(x):
    return x


class Lstm:
    """Weights as lists of gates: i, f, c, o; peepholes: input, output, forget."""

    def __init__(self, kernel, recurrent, peepholes, bias, out_activation=np.tanh):
        self.weights = kernel, recurrent, peepholes, bias
        self.out_activation = out_activation
        self.units = len(bias[0])
        self.gate_inputs = []

    def start(self):
        return np.zeros(self.units), np.zeros(self.units)

    def step(self, x, state):
        h, c = state
        W, R, P, B = self.weights
        new_h, new_c = np.zeros(self.units), np.zeros(self.units)
        for u in range(self.units):
            a = [B[g][u] + R[g][u] @ h + W[g][u] @ x for g in range(4)]
            i = self._gate(a[0] + c[u] * P[0][u])
            f = self._gate(a[1] + c[u] * P[2][u])
            g = np.tanh(a[2] + c[u] * P[2][u])
            new_c[u] = i * g + f * c[u]
            o = self._gate(a[3] + new_c[u] * P[1][u])
            new_h[u] = self.out_activation(new_c[u]) * o
        return new_h, new_c

    def _gate(self, a):
        self.gate_inputs.append(a)
        return hard_sigmoid(a)


class Gru:
    """Weights as lists of gates: z, r, h."""

    def __init__(self, kernel, recurrent, bias, activation=np.tanh, gate=hard_sigmoid,
                 reset_after=False):
        self.weights = kernel, recurrent, bias
        self.units = len(bias[0])
        self.activation, self.gate, self.reset_after = activation, gate, reset_after
        self.gate_inputs = []

    def start(self):
        return (np.zeros(self.units),)

    def step(self, x, state):
        h, = state
        W, R, B = self.weights
        z, r = ([self._gate(R[g][u] @ h + B[g][u] + W[g][u] @ x) for u in range(self.units)]
                for g in (0, 1))
        new_h = np.zeros(self.units)
        for u in range(self.units):
            product = r[u] * (R[2][u] @ h) if self.reset_after else R[2][u] @ (r * h)
            n = self.activation(product + B[2][u] + W[2][u] @ x)
            new_h[u] = n * (1 - z[u]) + h[u] * z[u]
        return (new_h,)

    def _gate(self, a):
        self.gate_inputs.append(a)
        return self.gate(a)


def run(cell, steps, sequence=False, go_backwards=False, reverse=False):
    """The states after each step, [T][U], or the last one, [U]."""
    state, outputs = cell.start(), []
    for x in steps[::-1] if go_backwards else steps:
        state = cell.step(x, state)
        if not state[0].all():
            raise ValueError("a unit is shut altogether and would hide faults")
        outputs.append(state[0])
    if not sequence:
        return outputs[-1]
    return np.array(outputs[::-1] if reverse else outputs)


def require_mixed_gates(cell):
    """The gates' inputs must reach both ends of the hard sigmoid and the slope between."""
    a = np.array(cell.gate_inputs)
    low, high = np.sum(a < -2.5), np.sum(a > 2.5)
    if min(low, high) < 1 or low + high > 0.5 * len(a):
        raise ValueError("%d gates are shut and %d open of %d" % (low, high, len(a)))
