# SPDX-License-Identifier: MIT
"""Writes the C++ headers of reference vectors."""

import pathlib

import numpy as np

OUTPUT = pathlib.Path(__file__).resolve().parents[2] / "test" / "reference"

_TYPES = {
    "float32": "float", "uint8": "uint8_t", "int8": "int8_t", "uint16": "uint16_t",
    "int16": "int16_t", "uint32": "uint32_t", "int32": "int32_t", "text": "const char*",
}


def _kind(values):
    return "text" if values.dtype.kind == "U" else values.dtype.name


def _literal(value, kind):
    if kind == "text":
        return '"%s"' % value
    if kind == "float32":
        if not np.isfinite(value):
            raise ValueError("not a finite number: %r" % value)
        text = "%.9g" % value  # nine digits give the same float back
        return text + ("f" if any(c in text for c in ".e") else ".0f")
    return "%d%s" % (value, "u" if kind.startswith("u") else "")


def rows(values, per_line=8):
    """The lines of an array's initialiser."""
    literals = [_literal(v, _kind(values)) for v in values.ravel()]
    return ["    " + ", ".join(literals[i:i + per_line]) + ","
            for i in range(0, len(literals), per_line)]


def c_array(name, values):
    """A constant of a C header; texts one to a line."""
    text = _kind(values) == "text"
    declared = "static %s %s[] = {" % (
        "const char* const" if text else "const " + _TYPES[_kind(values)], name)
    return "\n".join([declared] + rows(values, 1 if text else 8) + ["};", ""])


class Header:
    """Collects named arrays and writes them as test/reference/<name>.h.

    An array keeps the order of its NumPy array (C order): give activations as [H][W][C]. float64
    arrays are rounded to float32; integer arrays must have an exact dtype of their own; arrays of
    strings are plain text.
    """

    def __init__(self, name):
        self.name = name
        self._arrays = {}

    def add(self, name, values):
        values = np.asarray(values)
        if values.dtype == np.float64:
            values = values.astype(np.float32)
        if _kind(values) not in _TYPES:
            raise TypeError("%s: give an explicit dtype, not %s" % (name, values.dtype))
        if name in self._arrays:
            raise KeyError("%s is there already" % name)
        self._arrays[name] = values
        return values

    def text(self):
        guard = "TEST_REFERENCE_%s_H" % self.name.upper()
        lines = ["// SPDX-License-Identifier: MIT",
                 "// Written by tools/reference/generate.py; do not edit.",
                 "#ifndef " + guard, "#define " + guard, "", "#include <cstdint>", ""]
        for name, values in self._arrays.items():
            lines.append("inline constexpr %s %s[] = {" % (_TYPES[_kind(values)], name))
            lines += rows(values) + ["};"]
        return "\n".join(lines + ["", "#endif", ""])

    def path(self):
        return OUTPUT / (self.name + ".h")
