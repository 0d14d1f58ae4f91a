# SPDX-License-Identifier: MIT
"""Well-known small networks with random weights, at reduced width."""

from tflite_file import Network

TWO = (2, 2)


def keyword_spotting(n, width):
    x = n.conv(n.input((1, 49, 10, 1)), width, (10, 4), TWO)
    for _ in range(4):
        x = n.conv(n.depthwise(x, (3, 3)), width, (1, 1))
    return n.softmax(n.dense(n.flat(n.average(x)), 12))


def visual_wake_words(n, width):
    x = n.conv(n.input((1, 48, 48, 3)), width, (3, 3), TWO)
    for stride, times in ((1, 2), (2, 4), (1, 4), (2, 8), (1, 8), (2, 16), (1, 16), (1, 16),
                          (1, 16), (1, 16), (1, 16), (2, 32), (1, 32)):
        x = n.conv(n.depthwise(x, (3, 3), (stride, stride)), times * width, (1, 1))
    return n.softmax(n.dense(n.flat(n.average(x)), 2))


def image_classification(n, width):
    shortcut = n.conv(n.input((1, 32, 32, 3)), width, (3, 3))
    x = n.conv(n.conv(shortcut, width, (3, 3)), width, (3, 3), relu=False)
    x = n.add(shortcut, x)
    for times in (2, 4):
        main = n.conv(x, times * width, (3, 3), TWO)
        main = n.conv(main, times * width, (3, 3), relu=False)
        x = n.add(n.conv(x, times * width, (1, 1), TWO, relu=False), main)
    return n.softmax(n.dense(n.flat(n.average(x)), 10))


def anomaly_detection(n, width):
    x = n.input((1, 20 * width))
    for units in (4, 4, 4, 4, 1, 4, 4, 4, 4):
        x = n.dense(x, units * width, relu=True)
    return n.dense(x, 20 * width)


def zero_points_everywhere(n, width):
    """uint8 with zero points of weights too; a window without padding, both kinds of pooling."""
    x = n.maximum(n.conv(n.input((1, 13, 11, 2)), width, (3, 2), same=False), TWO)
    x = n.conv(n.depthwise(x, (3, 3), relu=False), width + 1, (1, 1), relu=False)
    x = n.average(n.add(x, n.conv(x, width + 1, (3, 3)), relu=False), (2, 2))
    return n.dense(n.flat(x), 5)


def models():
    # Every integer is fixed: each layer rounds once, and no sum here lies so near to a tie that the
    # multipliers' 31 bits or a softmax in single precision would change it.
    for file, network, dtype, seed, width, count in (
            ("kws_int8", keyword_spotting, "int8", 41, 16, 0),
            ("vww_int8", visual_wake_words, "int8", 42, 2, 0),
            ("ic_int8", image_classification, "int8", 43, 8, 0),
            ("ad_int8", anomaly_detection, "int8", 44, 8, 0),
            ("kws_float", keyword_spotting, "float32", 45, 8, 4),
            ("uint8", zero_points_everywhere, "uint8", 46, 5, 0)):
        n = Network(seed, dtype)
        y = network(n, width)
        about = network.__doc__ or network.__name__.replace("_", " ")
        yield n.model(file, about, y, count)
