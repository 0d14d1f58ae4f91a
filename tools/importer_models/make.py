#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Writes test/importer/models/, the importer's own models with inputs and expected outputs.

    apt-get install python3-torch python3-onnx flatbuffers-compiler
    tools/importer_models/make.py            writes the folder
    tools/importer_models/make.py --check    writes nothing; fails when a file would be another one

Weights and inputs are pseudo-random. Expected outputs are PyTorch's or NumPy's, in double precision
or in integers. tools/check_models reads the folder.
"""

import argparse
import json
import pathlib
import sys
import warnings

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDER = ROOT / "test" / "importer" / "models"
sys.path.append(str(ROOT / "tools" / "reference"))

import pytorch_float
import pytorch_quantized
import qdq_by_hand
import tflite_networks


def port(name, array):
    return {"name": name, "shape": list(array.shape), "type": array.dtype.name}


def entry(model, files):
    """The model's part of the manifest; its data goes to files."""
    case = {"name": "random", "inputs": [], "outputs": []}
    for kind, arrays in (("inputs", model.inputs), ("outputs", model.outputs)):
        for i, array in enumerate(arrays.values()):
            name = "data/%s.%s%d.bin" % (model.file.replace(".", "_"), kind[:-1], i)
            files[name] = array.astype(array.dtype.newbyteorder("<")).tobytes()
            case[kind].append(name)
    return {"file": model.file, "about": model.about, "expect": "ok",
            "inputs": [port(*p) for p in model.inputs.items()],
            "outputs": [port(*p) for p in model.outputs.items()],
            "input_dims": model.input_dims, "tolerance": model.tolerance, "cases": [case]}


def contents():
    """Every file's bytes by its name."""
    files, entries = {}, []
    for family in (pytorch_float, pytorch_quantized, qdq_by_hand, tflite_networks):
        for model in family.models():
            files[model.file] = model.content
            entries.append(entry(model, files))
    manifest = {"format": 1, "byte_order": "little", "models": entries}
    files["manifest.json"] = (json.dumps(manifest, indent=1) + "\n").encode()
    return files


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--check", action="store_true", help="compare instead of writing")
    arguments = parser.parse_args()
    warnings.simplefilter("ignore")
    files = contents()
    there = {str(p.relative_to(FOLDER)): p for p in FOLDER.rglob("*") if p.is_file()}
    if arguments.check:
        stale = sorted(name for name in files.keys() | there.keys()
                       if name not in files or name not in there
                       or there[name].read_bytes() != files[name])
        if stale:
            sys.exit("differs from what is written: " + ", ".join(stale))
    else:
        (FOLDER / "data").mkdir(parents=True, exist_ok=True)
        for name in there.keys() - files.keys():
            there[name].unlink()
        for name, content in files.items():
            (FOLDER / name).write_bytes(content)
    print("%d files, %d bytes" % (len(files), sum(map(len, files.values()))))


if __name__ == "__main__":
    main()
