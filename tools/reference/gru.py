# SPDX-License-Identifier: MIT
"""GRU layers: F = 5, U = 2; one weight set, different options."""

import recurrent
from data import Lcg
from emit import Header


def vectors():
    header = Header("gru")
    data = Lcg(2)
    F, U = 5, 2
    x = header.add("gru_in_data", data.exact((3, F), 2.0, 3)).astype(float)
    weights = [header.add("gru_kernel_data", data.exact((3, U, F), 1.25, 3)).astype(float),
               header.add("gru_recurrent_data", data.exact((3, U, U), 1.25, 3)).astype(float),
               header.add("gru_bias_data", data.exact((3, U), 1.0, 3)).astype(float)]

    def case(name, steps, options=None, **layer):
        cell = recurrent.Gru(*weights, **layer)
        header.add("gru_%s_out_reference" % name, recurrent.run(cell, steps, **(options or {})))
        return cell

    case("ts_1", x[:1])
    recurrent.require_mixed_gates(case("ts_3", x))
    case("ts_3_back", x, {"go_backwards": True})
    case("ts_3_rs", x, {"sequence": True})
    case("ts_3_rs_back", x, {"sequence": True, "go_backwards": True})
    case("ts_3_rs_back_reverse", x, {"sequence": True, "go_backwards": True, "reverse": True})
    case("linear_activation", x[:1], activation=recurrent.linear)
    case("linear_recurrent", x[:1], gate=recurrent.linear)
    case("reset_after", x, reset_after=True)
    return header
