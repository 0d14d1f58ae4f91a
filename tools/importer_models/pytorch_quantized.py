# SPDX-License-Identifier: MIT
"""Quantized networks as PyTorch exports them; expected outputs are those of PyTorch's integers."""

import io

import torch
from torch import nn
from torch.ao.quantization import QConfig, get_default_qconfig_mapping, observer, qconfig_mapping
from torch.ao.quantization.fake_quantize import FakeQuantize
from torch.ao.quantization.quantize_fx import convert_fx, prepare_fx, prepare_qat_fx

from model import Model, quanta_float
from pytorch_float import convolution, randomized


class Net(nn.Module):
    def __init__(self):
        super().__init__()
        self.first, self.second = convolution(2, 6, 3, 2, 1), convolution(6, 6, 3, 1, 1, groups=6)
        self.third, self.fourth = nn.Conv2d(6, 6, 1), nn.Conv2d(6, 4, (3, 2), padding=(1, 0))
        self.clip, self.pool, self.head = nn.ReLU6(), nn.MaxPool2d(2), nn.Linear(16, 3)

    def forward(self, x):
        x = self.first(x)
        # PyTorch's own clip mixes up the channels of integers that lie channels last.
        x = self.clip((x + self.third(self.second(x))).contiguous())
        return self.head(torch.flatten(self.pool(self.fourth(x)), 1))


def export(file, about, prepare, mapping):
    torch.manual_seed(2)
    torch.backends.quantized.engine = "qnnpack"
    module = randomized(Net())
    x = torch.rand(1, 2, 10, 9) * 2 - 1
    if prepare is prepare_qat_fx:
        module.train()
    prepared = prepare(module, mapping, (x,))
    for _ in range(8):
        prepared(torch.rand(4, 2, 10, 9) * 2 - 1)
    network = convert_fx(prepared.eval())
    content = io.BytesIO()
    torch.onnx.export(network, x, content, input_names=["x"], output_names=["y"], opset_version=13)
    with torch.no_grad():
        y = network(x).numpy()
    scale = network.head.scale if hasattr(network.head, "scale") else network.head_scale_0
    # The exported graph rounds halves to even, the runtime upwards: one quantum.
    return Model(file + ".onnx", content.getvalue(), about, {"x": x.numpy()}, {"y": y},
                 quanta_float(1, scale))


def per_channel():
    weights = FakeQuantize.with_args(
        observer=observer.MovingAveragePerChannelMinMaxObserver, quant_min=-128, quant_max=127,
        dtype=torch.qint8, qscheme=torch.per_channel_symmetric, ch_axis=0)
    activations = FakeQuantize.with_args(observer=observer.MovingAverageMinMaxObserver,
                                         quant_min=0, quant_max=255, dtype=torch.quint8)
    return qconfig_mapping.QConfigMapping().set_global(QConfig(activations, weights))


def models():
    yield export("qnnpack", "uint8 activations, int8 weights with one scale of shape (1)",
                 prepare_fx, get_default_qconfig_mapping("qnnpack"))
    yield export("per_channel", "trained with quantization, scales for each channel",
                 prepare_qat_fx, per_channel())
