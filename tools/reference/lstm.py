# SPDX-License-Identifier: MIT
"""LSTM layers: F = 5, U = 2; one weight set with peepholes and bias; a dense layer behind."""

import recurrent
from data import Lcg
from emit import Header


def vectors():
    header = Header("lstm")
    data = Lcg(8)
    F, U, outputs = 5, 2, 4
    x = header.add("lstm_in_data", data.exact((3, F), 2.0, 3)).astype(float)
    weights = [header.add("lstm_kernel_data", data.exact((4, U, F), 1.25, 3)).astype(float),
               header.add("lstm_recurrent_data", data.exact((4, U, U), 1.25, 3)).astype(float),
               header.add("lstm_peephole_data", data.exact((3, U), 1.0, 3)).astype(float),
               header.add("lstm_bias_data", data.exact((4, U), 1.0, 3)).astype(float)]

    def case(name, steps, **options):
        cell = recurrent.Lstm(*weights)
        header.add("lstm_%s_out_reference" % name, recurrent.run(cell, steps, **options))
        return cell

    case("ts_1", x[:1])
    recurrent.require_mixed_gates(case("ts_3", x))
    case("ts_3_rs", x, sequence=True)
    case("ts_3_back", x, go_backwards=True)
    case("ts_3_back_rs", x, sequence=True, go_backwards=True)
    dense = header.add("lstm_dense_weight_data", data.exact((outputs, U), 1.0, 3)).astype(float)
    bias = header.add("lstm_dense_bias_data", data.exact(outputs, 1.0, 3)).astype(float)
    cell = recurrent.Lstm(*weights, out_activation=recurrent.sigmoid)
    header.add("lstm_dense_out_reference", dense @ recurrent.run(cell, x) + bias)
    return header
