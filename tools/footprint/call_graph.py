# SPDX-License-Identifier: MIT
"""Stack of a function, from what GCC's -fcallgraph-info=su tells of the library's sources."""

import collections
import re

# Relocations that hold a function's address; the others are of jumps, branches and calls.
ADDRESS = re.compile(r" R_(?:ARM_ABS32|ARM_THM_MOV\w+|ARM_REL32|RISCV_32|RISCV_\w*HI20) +\w+ +(\w\S*)")
THROUGH_POINTER = "__indirect_call"


class CallGraph:
    """Functions are named as in the graphs: "name", or "source:name" for one of a source's own."""

    def __init__(self, graphs, relocations):
        self.frames, self.calls = {}, collections.defaultdict(set)
        for graph in graphs:
            text = graph.read_text()
            for name, frame in re.findall(r'node: { title: "(.*?)" label: ".*?\\n(\d+) bytes', text):
                self.frames[name] = int(frame)
            for caller, callee in re.findall(r'sourcename: "(.*?)" targetname: "(.*?)"', text):
                self.calls[caller].add(callee)
        with_address = set(ADDRESS.findall(relocations))
        self.in_tables = {f for f in self.frames if self.symbol(f) in with_address}

    @staticmethod
    def symbol(function):
        return function.rpartition(":")[2]

    def depth(self, function, linked):
        """A call through a pointer may reach every function of the program (of the symbols linked)
        whose address is taken."""
        through_pointer = [f for f in self.in_tables if self.symbol(f) in linked]

        def below(caller, above):
            deepest = 0
            for callee in self.calls.get(caller, ()):
                for f in through_pointer if callee == THROUGH_POINTER else [callee]:
                    if f not in above:
                        deepest = max(deepest, below(f, above | {f}))
            return self.frames.get(caller, 0) + deepest

        return below(function, frozenset([function]))
