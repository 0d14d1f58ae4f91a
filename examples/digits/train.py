#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Trains three small classifiers of scikit-learn's handwritten digits and writes them as ONNX.

    apt-get install python3-torch python3-sklearn
    /usr/bin/python3 examples/digits/train.py

writes beside itself cnn.onnx, separable.onnx, lstm.onnx and the data that the library is shown with:
test_images.bin (8x8 bytes of 0 to 16 an image), test_labels.bin (a byte an image), calibration.npy
(64 images of the training half, as the networks get them) and right.json (how many images of the
test half each network names right in PyTorch). The halves are the first and the second half of the
set, so the test half is written by people whom the training half has not seen.
"""

import json
import pathlib

import numpy as np
import torch
from sklearn.datasets import load_digits
from torch import nn

HERE = pathlib.Path(__file__).resolve().parent
EPOCHS = 60


class Rows(nn.Module):
    """The image's rows as steps of an LSTM; the last state decides."""

    def __init__(self):
        super().__init__()
        self.lstm = nn.LSTM(8, 24, batch_first=True)
        self.dense = nn.Linear(24, 10)

    def forward(self, x):
        states, _ = self.lstm(x)
        return self.dense(states[:, -1])


def convolution(inputs, outputs, size, stride=1, groups=1):
    return [nn.Conv2d(inputs, outputs, size, stride, size // 2, groups=groups, bias=False),
            nn.BatchNorm2d(outputs), nn.ReLU()]


def cnn():
    return nn.Sequential(*convolution(1, 12, 3), nn.MaxPool2d(2), *convolution(12, 24, 3),
                         nn.MaxPool2d(2), nn.Flatten(), nn.Linear(24 * 2 * 2, 10))


def separable():
    return nn.Sequential(*convolution(1, 16, 3), *convolution(16, 16, 3, 2, groups=16),
                         *convolution(16, 32, 1), *convolution(32, 32, 3, groups=32),
                         *convolution(32, 48, 1), nn.AvgPool2d(4), nn.Flatten(), nn.Linear(48, 10))


def train(model, images, labels):
    optimizer = torch.optim.Adam(model.parameters(), lr=0.01, weight_decay=1e-4)
    schedule = torch.optim.lr_scheduler.CosineAnnealingLR(optimizer, EPOCHS)
    for _ in range(EPOCHS):
        for batch in torch.randperm(len(images)).split(32):
            optimizer.zero_grad()
            nn.functional.cross_entropy(model(images[batch]), labels[batch]).backward()
            optimizer.step()
        schedule.step()
    return model.eval()


def main():
    torch.set_num_threads(1)
    digits = load_digits()
    images = digits.images.astype(np.float32)
    half = len(images) // 2
    (HERE / "test_images.bin").write_bytes(images[half:].astype(np.uint8).tobytes())
    (HERE / "test_labels.bin").write_bytes(digits.target[half:].astype(np.uint8).tobytes())
    scaled, labels = torch.tensor(images) / 16, torch.tensor(digits.target)
    np.save(HERE / "calibration.npy", scaled[:half:14][:64].numpy())
    right = {}
    for name, build, shape in (("cnn", cnn, (1, 8, 8)), ("separable", separable, (1, 8, 8)),
                               ("lstm", Rows, (8, 8))):
        torch.manual_seed(1)
        data = scaled.reshape(-1, *shape)
        model = train(build(), data[:half], labels[:half])
        with torch.no_grad():
            right[name] = int((model(data[half:]).argmax(1) == labels[half:]).sum())
        torch.onnx.export(model, torch.zeros(1, *shape), HERE / (name + ".onnx"),
                          input_names=["image"], output_names=["scores"])
    (HERE / "right.json").write_text(json.dumps(right) + "\n")


if __name__ == "__main__":
    main()
