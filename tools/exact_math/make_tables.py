#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes the numbers behind exp, tanh and sinh: kernels/exact_math_tables.hpp.

make_tables.py           writes the file
make_tables.py --check   fails when the file differs from what would be written

Powers of 2 and minimax polynomials are computed with 60 digits. Needs python3-mpmath.
"""

import pathlib
import sys

from mpmath import cos, exp, log, lu_solve, matrix, mp, mpf, nint, pi, sinh, sqrt, tanh

mp.dps = 60
LN2 = log(mpf(2))
PATH = pathlib.Path(__file__).resolve().parents[2] / "kernels" / "exact_math_tables.hpp"


def solve_levelled(f, weight, points, degree):
    """The polynomial whose weighted errors at degree + 2 points are equal and alternate in sign."""
    n = degree + 2
    a, b = matrix(n, n), matrix(n, 1)
    for row, x in enumerate(points):
        for column in range(n - 1):
            a[row, column] = x**column
        a[row, n - 1] = (-1)**row / weight(x)
        b[row] = f(x)
    return list(lu_solve(a, b))[:n - 1]


def extremes(xs, errors):
    """The place of the largest error in each run of errors of one sign."""
    runs = []
    for x, error in zip(xs, errors):
        if runs and (runs[-1][1] > 0) == (error > 0):
            runs[-1] = max(runs[-1], (x, error), key=lambda point: abs(point[1]))
        else:
            runs.append((x, error))
    return [x for x, _ in runs]


def minimax(f, low, high, degree, weight=lambda x: mpf(1)):
    """Coefficients from x^0 on, with the least maximum of weight * |f - p|; and that maximum."""
    n = degree + 2
    spread = [(1 - cos(pi * (2 * k + 1) / (2 * n))) / 2 for k in range(n)]
    points = [low + (high - low) * s for s in spread]
    grid = [low + (high - low) * (1 - cos(pi * k / 400)) / 2 for k in range(401)]
    for _ in range(12):
        p = solve_levelled(f, weight, points, degree)
        errors = [weight(x) * (f(x) - sum(c * x**i for i, c in enumerate(p))) for x in grid]
        points = extremes(grid, errors)
        if len(points) != n:
            break
    return p, max(map(abs, errors))


def fixed(value, bits):
    return int(nint(value * mpf(2)**bits))


def array(comment, kind, name, values, suffix):
    lines = ["", "// " + comment, "inline constexpr %s %s[] = {" % (kind, name)]
    return lines + ["    %s," % (str(v) + suffix) for v in values] + ["};"]


def power_table():
    rows = []
    for i in range(32):
        value = fixed(mpf(2)**((i + mpf(0.5)) / 32), 55)
        rows.append("    {0x%08x, 0x%08x}," % (0x3f000000 + (value >> 32), value & 0xffffffff))
    return ["", "// 2^((i + 0.5) / 32) to 55 bits behind the point: the bits of a float below it, and "
            "32 more.", "struct PowerEntry {", "  uint32_t bits, more;", "};",
            "inline constexpr PowerEntry kPowers[] = {"] + rows + ["};"]


def of_square(f, limit):
    """g(z) = f(sqrt z), with the limit where z is almost 0."""
    return lambda z: limit if z < mpf(10)**-12 else f(sqrt(z))


def text():
    lines = ["// SPDX-License-Identifier: MIT", "// Written by tools/exact_math/make_tables.py; do not edit.",
             "// clang-format off", "#ifndef NNLIB_KERNELS_EXACT_MATH_TABLES_HPP",
             "#define NNLIB_KERNELS_EXACT_MATH_TABLES_HPP", "", "#include <cstdint>", "",
             "namespace nnlib::exact {"]
    lines += power_table()

    log2e = fixed(1 / LN2, 62)
    upper = (log2e + 2**31) >> 32
    lines += array("log2(e): in Q30, and what remains in Q62.", "int32_t", "kLog2E",
                   [upper, log2e - (upper << 32)], "")
    lines += ["", "// ln(2) / 64 in Q69.",
              "inline constexpr int64_t kLn2Over64 = %d;" % fixed(LN2 / 64, 69)]

    bits = lambda error: "2^%.1f" % (log(error) / LN2)
    p, error = minimax(lambda x: mpf(2)**x - 1, -mpf(2)**-6, mpf(2)**-6, 3)
    lines += array("2^x - 1 of |x| <= 2^-6, within %s: Q36, Q31, Q26, Q21, from x^0 on." % bits(error),
                   "int32_t", "kPowerFirst", [fixed(c, q) for c, q in zip(p, (36, 31, 26, 21))], "")
    p, error = minimax(lambda r: (exp(r) - 1) / r if r else mpf(1), -LN2 / 64,
                       LN2 / 64 + mpf(10)**-30, 6)
    lines += array("(e^r - 1) / r of |r| <= ln(2) / 64, within %s: Q62, from r^6 down." % bits(error),
                   "int64_t", "kExpSecond", [fixed(c, 62) for c in reversed(p)], "")

    p, error = minimax(lambda r: (exp(r) - 1) / r if r else mpf(1), -LN2 / 2 - mpf(10)**-6,
                       LN2 / 2 + mpf(2) * mpf(10)**-6, 7)
    lines += array("(e^r - 1) / r of |r| <= ln(2) / 2, within %s: from r^0 on." % bits(error), "double",
                   "kExpDoubles", [float(c).hex() for c in p], "")

    near_zero = lambda z: z + mpf(0.01)  # an error there is multiplied by z
    f = of_square(lambda x: (1 - tanh(x) / x) / x**2, mpf(1) / 3)
    for name, degree, kind, q, suffix in (("kTanhFirst", 5, "uint32_t", 33, "u"),
                                          ("kTanhSecond", 11, "uint64_t", 65, "u")):
        p, error = minimax(f, mpf(0), mpf(0.30175), degree, near_zero)
        lines += array("(1 - tanh(x) / x) / z of z = x^2 <= 0.30175 as a polynomial of -z, z times it "
                       "within about %s: Q%d, from z^%d down." % (bits(error), q, degree), kind, name,
                       [min(fixed(abs(c), q), 2**(q - 1) - 1) for c in reversed(p)], suffix)
    f = of_square(lambda x: (sinh(x) / x - 1) / x**2, mpf(1) / 6)
    p, error = minimax(f, mpf(0), mpf(0.2501), 5, near_zero)
    lines += array("(sinh(x) / x - 1) / z of z = x^2 <= 0.25, z times it within about %s: Q66, from z^5 "
                   "down." % bits(error), "uint64_t", "kSinhSecond", [fixed(c, 66) for c in reversed(p)], "u")
    return "\n".join(lines + ["", "}  // namespace nnlib::exact", "", "#endif", ""])


def main():
    if sys.argv[1:] == ["--check"]:
        if PATH.read_text(encoding="ascii") != text():
            sys.exit("%s differs from its formulas" % PATH.name)
    elif sys.argv[1:]:
        sys.exit(__doc__)
    else:
        PATH.write_text(text(), encoding="ascii")


if __name__ == "__main__":
    main()
