# SPDX-License-Identifier: MIT
"""The float layers: dense, products of matrices, data movement, norms, pooling. Maps are [H][W][C]."""

import numpy as np

import data
import emit


UNWRITTEN = -28720636.0  # what the fixtures fill outputs with


def add_all(header, stem, **arrays):
    for name, values in arrays.items():
        header.add("%s_%s" % (stem, name), values)


def dense(header, lcg):
    x, w, b = lcg.exact((2, 2, 9)), lcg.exact((5, 9)), lcg.exact((5,))
    add_all(header, "dense", in_data=x, weight_data=w, bias_data=b, out_reference=x @ w.T + b)

    table, indices = lcg.exact((256,), 8), lcg.integers(0, 255, (5, 9))
    add_all(header, "dense_dict8", table=table, weight_data=indices.astype(np.uint8),
            out_reference=x @ table[indices].T)

    table, indices = lcg.exact((16,)), lcg.integers(0, 15, (5, 9))
    packed = indices[:, 0::2] * 16
    packed[:, :4] += indices[:, 1::2]
    packed[:, 4] += 6  # the other half of a row's last byte takes no part
    add_all(header, "dense_dict4", table=table, weight_data=packed.astype(np.uint8),
            out_reference=x @ table[indices].T + b)

    steps, w, b = lcg.exact((4, 2, 3)), lcg.exact((2, 3)), lcg.exact((2,))
    add_all(header, "distr_dense", in_data=steps, weight_data=w, bias_data=b,
            out_reference=steps @ w.T + b)


def products(header, lcg):
    """Y = alpha * op(A) * op(B) + beta * C, once with A and once with B transposed."""
    a, b, row = lcg.exact((3, 2)), lcg.exact((3, 4)), lcg.exact((1, 4))
    add_all(header, "gemm", in_data=a, weight_data=b, bias_data=row,
            out_reference=0.5 * (a.T @ b) - 0.25 * row)
    a, b, column = lcg.exact((2, 3)), lcg.exact((4, 3)), lcg.exact((2, 1))
    add_all(header, "gemm_3_inputs", a_data=a, b_data=b, c_data=column,
            out_reference=-1.5 * (a @ b.T) + 2.0 * column)
    for stem, n in (("matmul", 2), ("matmul_1", 1)):
        a, b = lcg.exact((2, 2, 3, n)), lcg.exact((2, 3, 4, n))  # [C][H][W][N]
        add_all(header, stem, a_data=a, b_data=b,
                out_reference=np.einsum("chkn,ckwn->chwn", a, b))


def movement(header, lcg):
    x = lcg.uniform((6, 3, 4))
    add_all(header, "slice", in_data=x, out_reference=x[2:5, :, 1:3])

    x = lcg.integers(-3, 3, (5, 2, 2)) / 1.0  # with many equal values
    order = np.argsort(-x, axis=0, kind="stable")[:3]
    add_all(header, "topk", in_data=x, out_reference=np.take_along_axis(x, order, axis=0),
            index_reference=order.astype(np.uint32))

    x = lcg.uniform((2, 3, 2))
    add_all(header, "tile", in_data=x, out_reference=np.tile(x, (2, 3, 4)))

    x = lcg.uniform((3, 4, 2))
    reflected = np.pad(x, ((2, 1), (1, 3), (0, 0)), mode="reflect")
    reflected[1] = UNWRITTEN  # as many rows before are mirrored as there are columns before
    add_all(header, "pad", in_data=x, reflect_out_reference=reflected,
            constant_out_reference=np.pad(x, ((1, 2), (2, 1), (0, 0)), constant_values=-0.75),
            edge_out_reference=np.pad(x, ((2, 1), (1, 3), (0, 0)), mode="edge"))


def bilinear_axis(size, scale, center):
    """Matrix of the weights with which the inputs of one axis enter its outputs."""
    weights = np.zeros((int(size * scale), size))
    for r in range(len(weights)):
        at = min(max((r - (scale - 1) / 2 * center) / scale, 0), size - 1)
        low = int(at)
        weights[r, low] += 1 - (at - low)
        weights[r, min(low + 1, size - 1)] += at - low
    return weights


def upsample(header, lcg):
    x = lcg.uniform((3, 2, 2))
    zeros = np.zeros((6, 6, 2))
    zeros[::2, ::3] = x
    rows, columns = np.arange(4) * 2 // 3, np.arange(6) // 3  # scales 1.5 and 3
    add_all(header, "upsample", in_data=x, z_out_reference=zeros,
            n_out_reference=x[rows][:, columns])
    for name, center in (("b", 0), ("b_center", 1)):
        out = np.einsum("rh,cw,hwk->rck", bilinear_axis(3, 2, center), bilinear_axis(2, 3, center), x)
        header.add("upsample_%s_out_reference" % name, out)


def norms(header, lcg):
    x, scale, bias = lcg.uniform((3, 2, 3)), lcg.uniform((3,), 0.25), lcg.uniform((3,), 0.25)
    spread = np.sqrt(x.var(axis=(0, 1)) + 0.125)
    add_all(header, "instance_norm", in_data=x, weight_data=scale, bias_data=bias,
            out_reference=(x - x.mean(axis=(0, 1))) * scale / spread + bias)

    x, scale, bias = lcg.exact((2, 3, 3)), lcg.exact((3,)), lcg.exact((3,))
    add_all(header, "batch_norm", in_data=x, weight_data=scale, bias_data=bias,
            out_reference=x * scale + bias, no_bias_out_reference=x * scale)

    x = lcg.uniform((1, 2, 7))
    near = np.abs(np.subtract.outer(np.arange(7), np.arange(7))) <= 2
    add_all(header, "lrn", in_data=x, out_reference=x * (0.5 * (x**2 @ near) + 1.25) ** -0.75)

    x = lcg.uniform((2, 2, 5), 3)
    length = np.sqrt((x**2).sum(axis=2, keepdims=True))
    add_all(header, "norm", in_data=x, out_reference=x / length)
    x = np.array([[[0.0, 0, 0], [3, 0, -4]]])  # the vector of zeros stays
    add_all(header, "norm_zero", in_data=x, out_reference=x / [[[1], [5]]],
            sum_out_reference=x / [[[1], [7]]])
    x = lcg.uniform((4, 3, 2))
    length = np.cbrt((np.abs(x) ** 3).sum(axis=0, keepdims=True))
    add_all(header, "lp_norm_height", in_data=x, out_reference=x / length)
    # Sums of magnitudes that divide the number of elements into powers of two.
    x = np.array([[[1, -0.5], [-2, 1.5], [3, 1]], [[-4, 0.25], [6, 0.125], [-2, -0.375]]])
    size = np.abs(x).sum(axis=1, keepdims=True)
    add_all(header, "lp_norm_width", in_data=x, out_reference=x * 3 / size)


def windows(x, pool, stride, pad, out):
    """Of each output pixel, the list of the input pixels inside the map. pool, stride, pad, out:
    (in y, in x)."""
    for oy in range(out[0]):
        for ox in range(out[1]):
            y, x0 = oy * stride[0] - pad[0], ox * stride[1] - pad[1]
            yield x[max(y, 0):y + pool[0], max(x0, 0):x0 + pool[1]].reshape(-1, x.shape[2])


def pooling(header, lcg):
    x = lcg.exact((3, 4, 2))
    header.add("ap_array_in_data", x)
    header.add("ap_array_out_reference",
               np.array([w.mean(axis=0) for w in windows(x, (2, 3), (2, 2), (1, 2), (2, 3))]))
    x = lcg.uniform((3, 5, 2)) - 0.5  # mostly negative: a padding of zeros would show
    cells = list(windows(x, (2, 3), (1, 2), (1, 2), (3, 3)))
    add_all(header, "pool", in_data=x, max_out_reference=np.array([w.max(axis=0) for w in cells]),
            avg_out_reference=np.array([w.mean(axis=0) for w in cells]),
            avg_count_pad_out_reference=np.array([w.sum(axis=0) / 6 for w in cells]))


def vectors():
    header = emit.Header("layers")
    lcg = data.Lcg(6)
    for part in (dense, products, movement, upsample, norms, pooling):
        part(header, lcg)
    return header
