# SPDX-License-Identifier: MIT
"""What torch.onnx.export leaves behind, in small float networks."""

import io

import torch
import torch.nn.functional as F
from torch import nn

from model import Model, ulps

EVAL = torch.onnx.TrainingMode.EVAL
PRESERVE = torch.onnx.TrainingMode.PRESERVE


def randomized(module):
    """Statistics of batch normalizations and flat parameters become irregular."""
    for m in module.modules():
        if isinstance(m, (nn.BatchNorm1d, nn.BatchNorm2d)):
            nn.init.uniform_(m.running_mean, -0.5, 0.5)
            nn.init.uniform_(m.running_var, 0.5, 2.0)
        if isinstance(m, (nn.BatchNorm1d, nn.BatchNorm2d, nn.LayerNorm)):
            nn.init.uniform_(m.weight, 0.5, 1.5)
            nn.init.uniform_(m.bias, -0.5, 0.5)
    return module.eval()


def export(file, about, module, shape, count=4, training=EVAL, dynamic=None, input_dims=None,
           seed=1):
    """A network of one input; `count` units in the last place are allowed."""
    torch.manual_seed(seed)
    module = randomized(module())
    x = torch.rand(shape) * 2 - 1
    names = ["y%d" % i for i in range(len(flat(module(x))))]
    content = io.BytesIO()
    torch.onnx.export(module, x, content, input_names=["x"], output_names=names, training=training,
                      dynamic_axes=dynamic, opset_version=13)
    with torch.no_grad():
        expected = [y.float().numpy() for y in flat(module.double()(x.double()))]
    return Model(file + ".onnx", content.getvalue(), about, {"x": x.numpy()},
                 dict(zip(names, expected)), ulps(count, expected), input_dims or {})


def flat(outputs):
    return [outputs] if isinstance(outputs, torch.Tensor) else list(outputs)


def convolution(inputs, outputs, size, stride=1, padding=0, groups=1):
    return nn.Sequential(nn.Conv2d(inputs, outputs, size, stride, padding, groups=groups, bias=False),
                         nn.BatchNorm2d(outputs), nn.ReLU())


def small_cnn():
    return nn.Sequential(convolution(2, 5, (3, 2), (2, 1), (1, 0)), nn.MaxPool2d((2, 3), (2, 1)),
                         convolution(5, 6, 3, padding=1), nn.AdaptiveAvgPool2d(1), nn.Flatten(),
                         nn.Linear(6, 4))


class Pools(nn.Module):
    """An empty Pad before AveragePool, the bounds of Clip as Constants, a ceiling."""

    def __init__(self):
        super().__init__()
        self.conv = nn.Conv2d(3, 4, 3)
        self.depthwise = nn.Conv2d(4, 4, 3, 2, 1, groups=4)

    def forward(self, x):
        x = F.avg_pool2d(F.relu6(4 * self.conv(x)), 2, padding=1)
        x = F.hardtanh(self.depthwise(x), -0.25, 0.5)
        return F.max_pool2d(F.avg_pool2d(x, 2, 1, 0, count_include_pad=False), 2, ceil_mode=True)


class Shared(nn.Module):
    """Equal parameters become one initialiser and Identity nodes."""

    def __init__(self):
        super().__init__()
        self.first, self.second, self.last = nn.Linear(6, 6), nn.Linear(6, 6), nn.Linear(6, 3)
        self.second.weight, self.second.bias = self.first.weight, self.first.bias
        self.norm, self.same = nn.LayerNorm(6), nn.LayerNorm(6)

    def forward(self, x):
        with torch.no_grad():
            self.same.load_state_dict(self.norm.state_dict())
        x = self.same(torch.tanh(self.first(self.norm(x))))
        return self.last(torch.sigmoid(self.second(x)))


class Tokens(nn.Module):
    """Linear of rank 3 is MatMul and Add; a mixer over both axes with transpositions between."""

    def __init__(self):
        super().__init__()
        self.over_tokens, self.over_channels = nn.Linear(5, 5), nn.Linear(8, 8)
        self.norm, self.head = nn.LayerNorm(8), nn.Linear(8, 3)

    def forward(self, x):
        x = x + self.over_tokens(self.norm(x).transpose(1, 2)).transpose(1, 2)
        x = x + F.gelu(self.over_channels(x))
        return self.head(x).softmax(-1)


class Attention(nn.Module):
    """Two heads of attention whose products are Einsum; a sum over tokens with weights."""

    def __init__(self):
        super().__init__()
        self.into, self.out = nn.Linear(6, 24), nn.Linear(8, 3)
        self.weights = nn.Parameter(torch.rand(5) - 0.4)

    def forward(self, x):
        q, k, v = self.into(x).reshape(1, 5, 6, 4).split(2, 2)
        scores = torch.einsum("bqhd,bkhd->bhqk", q, k).softmax(-1)
        seen = torch.einsum("bhqk,bkhd->bqhd", scores, v).reshape(1, 5, 8)
        return self.out(torch.einsum("...tc,t->...c", seen, self.weights))


class Gru(nn.Module):
    """Shape, Gather, Concat and Expand make the initial state; a bias inside the reset product."""

    def __init__(self):
        super().__init__()
        self.gru = nn.GRU(4, 5, batch_first=True)

    def forward(self, x):
        states, last = self.gru(x)
        return states, last


class Lstm(nn.Module):
    """Two layers, both directions; the last step is taken and classified."""

    def __init__(self):
        super().__init__()
        self.lstm = nn.LSTM(3, 4, num_layers=2, bidirectional=True, batch_first=True)
        self.head = nn.Linear(8, 3)

    def forward(self, x):
        return self.head(self.lstm(x)[0][:, -1])


class OneDimensional(nn.Module):
    """An open batch dimension, from which shapes are computed."""

    def __init__(self):
        super().__init__()
        self.conv, self.head = nn.Conv1d(3, 4, 5, 2, padding=2), nn.Linear(4 * 6, 2)

    def forward(self, x):
        x = F.leaky_relu(self.conv(x), 0.1)
        return self.head(x.reshape(x.shape[0], -1))


class Padded(nn.Module):
    """Paddings of one side, of edges and reflections; a transposed convolution that cuts."""

    def __init__(self):
        super().__init__()
        self.down, self.mid = nn.Conv2d(2, 4, 3, 2), nn.Conv2d(4, 4, (2, 3))
        self.up = nn.ConvTranspose2d(4, 2, 3, 2, padding=1, output_padding=1)

    def forward(self, x):
        x = torch.relu(self.down(F.pad(x, (0, 1, 0, 1))))
        x = torch.relu(self.mid(F.pad(x, (2, 0, 1, 0), mode="replicate")))
        return self.up(F.pad(x, (1, 0, 2, 0), mode="reflect"))


class Transposed(nn.Module):
    """Transpositions that belong to the model: channels last, rows as steps, halves exchanged."""

    def __init__(self):
        super().__init__()
        self.conv, self.head = nn.Conv2d(2, 3, 3, padding=1), nn.Linear(12, 4)

    def forward(self, x):
        rows = torch.relu(self.conv(x)).permute(0, 2, 3, 1).reshape(1, 5, 12)
        return self.head(torch.cat([rows[:, 2:], rows[:, :2]], 1)).permute(0, 2, 1)


class Skips(nn.Module):
    """Down, up and joined: concatenations of channels, both kinds of resizing."""

    def __init__(self):
        super().__init__()
        self.into, self.below = nn.Conv2d(1, 4, 3, padding=1), nn.Conv2d(4, 6, 3, padding=1)
        self.out = nn.Conv2d(11, 2, 1)

    def forward(self, x):
        top = F.elu(self.into(x))
        below = F.silu(self.below(F.max_pool2d(top, 2)))
        up = F.interpolate(below, scale_factor=2, mode="nearest")
        smooth = F.interpolate(below[:, :1], scale_factor=2, mode="bilinear", align_corners=False)
        return self.out(torch.cat([up, top, smooth], 1))


def models():
    yield export("cnn", "BatchNormalization folded by the exporter", small_cnn, (1, 2, 9, 8))
    yield export("cnn_unfolded", "BatchNormalization left as nodes", small_cnn, (1, 2, 9, 8),
                 training=PRESERVE)
    yield export("pools", Pools.__doc__, Pools, (1, 3, 15, 12))
    yield export("shared", Shared.__doc__, Shared, (1, 6))
    yield export("tokens", Tokens.__doc__, Tokens, (1, 5, 8))
    yield export("attention", Attention.__doc__, Attention, (1, 5, 6))
    yield export("gru", Gru.__doc__, Gru, (1, 7, 4))
    yield export("lstm", Lstm.__doc__, Lstm, (1, 6, 3))
    yield export("dynamic_batch", OneDimensional.__doc__, OneDimensional, (1, 3, 11),
                 dynamic={"x": {0: "N"}})
    yield export("padded", Padded.__doc__, Padded, (1, 2, 8, 7))
    yield export("transposed", Transposed.__doc__, Transposed, (1, 2, 5, 4))
    yield export("skips", Skips.__doc__, Skips, (1, 1, 8, 6))
