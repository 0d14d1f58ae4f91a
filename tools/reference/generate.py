#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Regenerates test/reference/ from the models in this directory, byte for byte.

generate.py            writes every header
generate.py --check    writes nothing; fails when a header differs from what would be written
generate.py NAME ...   only the named models

A model is a module here with a function vectors() that returns an emit.Header, or a list of files.
"""

import argparse
import importlib
import pathlib
import sys

HERE = pathlib.Path(__file__).resolve().parent
TOOLS = {"generate", "emit", "data", "recurrent", "fixed_point", "quantized"}


def main():
    parser = argparse.ArgumentParser(description="Regenerates test/reference/.")
    parser.add_argument("--check", action="store_true", help="compare instead of writing")
    parser.add_argument("models", nargs="*")
    arguments = parser.parse_args()
    sys.path.insert(0, str(HERE))
    names = arguments.models or sorted(p.stem for p in HERE.glob("*.py") if p.stem not in TOOLS)
    stale = []
    for name in names:
        written = importlib.import_module(name).vectors()
        for file in written if isinstance(written, list) else [written]:
            text, path = file.text(), file.path()
            if not arguments.check:
                path.write_text(text, encoding="ascii")
            elif not path.exists() or path.read_text(encoding="ascii") != text:
                stale.append(path.name)
    if stale:
        sys.exit("differs from its model: " + ", ".join(stale))
    print("%d models %s" % (len(names), "checked" if arguments.check else "written"))


if __name__ == "__main__":
    main()
