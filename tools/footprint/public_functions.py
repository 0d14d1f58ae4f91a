# SPDX-License-Identifier: MIT
"""The functions that the public headers declare, by the function pointer type that they fit."""

import collections
import re


def declarations(preprocessed):
    """(header, (result, parameter types), name, whether it is a type) of every declaration."""
    for chunk in re.split(r"^(?=# \d+ )", preprocessed, flags=re.M):
        marker, _, text = chunk.partition("\n")
        header = marker.split('"')[1].removeprefix("./") if '"' in marker else None
        for typedef, result, name, parameters in re.findall(
                r"(typedef )?\b(\w+) (?:\(\*)?(\w+)\)?\(([^()]*)\);", text):
            types = re.sub(r" ?\b\w+(?=,|$)", "", " ".join(parameters.split()))
            yield header, (result, types), name, bool(typedef)


def by_type(preprocessed):
    """{type: {header: [function, ...]}}"""
    found = sorted(declarations(preprocessed), key=lambda declaration: declaration[0] or "")
    types = {signature: name for _, signature, name, is_type in found if is_type}
    functions = {name: collections.defaultdict(list) for name in types.values()}
    for header, signature, name, is_type in found:
        if not is_type and signature in types:
            functions[types[signature]][header].append(name)
    return functions
