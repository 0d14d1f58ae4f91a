#!/usr/bin/python3
"""Measures what each layer takes when it is linked alone, and writes docs/footprint.md.

footprint.py            writes the tables
footprint.py --check    writes nothing; fails when a figure grew by more than 5 %

A program that names one layer's function is linked with the library at -Os; its figures are those
beyond the same program without the layer, what it draws of the C library included. The stack is the
deepest path of the compiler's call graph, without the C library's own frames and without functions
that the network hands over (nl_func, pool_func).
"""

import collections
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
PAGE = ROOT / "docs" / "footprint.md"
WORK = ROOT / "build" / "footprint"
TARGETS = ["m0", "m4f", "m55", "rv32"]
SECTIONS = {"text": ("text", "init", "vectors", "plt"), "data": ("data", "tdata"),
            "rodata": ("rodata", "ARM", "init_array", "fini_array", "srodata"),
            "bss": ("bss", "sbss", "tbss")}
HEADINGS = ["", "text", "rodata", "data", "bss", "stack", "heap"]

CORE = ["ai_platform_network_create", "ai_platform_network_init", "ai_platform_network_process",
        "ai_platform_network_get_error", "ai_platform_network_destroy"]

# One line for each table row: a layer's function, or several that go together.
ROWS = [
    ("runtime core", CORE),
    "forward_conv2d",
    "forward_conv2d_nl_pool",
    "forward_conv2d_transpose",
    "forward_dense",
    "forward_gemm",
    "forward_matmul",
    "forward_mp",
    "forward_ap",
    "forward_eltwise",
    "forward_add",
    "forward_relu",
    "forward_prelu",
    "forward_clip",
    "forward_sigmoid",
    "forward_tanh",
    "forward_erf",
    "forward_sm",
    "forward_bn",
    "forward_norm",
    "forward_lrn",
    "forward_reduce",
    "forward_concat",
    "forward_split",
    "forward_slice",
    "forward_pad",
    "forward_tile",
    "forward_transpose",
    "forward_upsample",
    "forward_lstm",
    "forward_gru",
    "forward_conv2d_fixed",
    "forward_conv2d_nl_pool_fixed",
    "forward_dense_fixed",
    "forward_mp_fixed",
    "forward_ap_fixed",
    "forward_relu_fixed",
    "forward_tanh_fixed",
    "forward_sm_fixed",
    "forward_conv2d_integer",
    "forward_conv2d_nl_pool_integer",
    "forward_dense_integer",
    "forward_mp_integer",
    "forward_ap_integer",
    "forward_add_integer",
    "forward_nl_integer",
]


def run(*command):
    done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit("%s\n%s" % (" ".join(map(str, command)), done.stderr))
    return done.stdout


class Target:
    def __init__(self, name):
        self.directory = WORK / name
        run("cmake", "--preset", name, "-B", self.directory, "-DCMAKE_BUILD_TYPE=MinSizeRel",
            "-DCMAKE_CXX_FLAGS_MINSIZEREL=-Os -DNDEBUG -fcallgraph-info=su")
        run("cmake", "--build", self.directory, "-j2", "--target", "nnlib", "nnlib_board")
        cache = (self.directory / "CMakeCache.txt").read_text()
        self.setting = dict(re.findall(r"^(CMAKE_\w+):\w+=(.*)$", cache, re.M))
        found = next(self.directory.glob("CMakeFiles/*/CMakeCCompiler.cmake")).read_text()
        self.compiler = re.search(r'set\(CMAKE_C_COMPILER "(.*)"\)', found).group(1)
        self.board = list(self.directory.glob("ports/bare_metal/**/*.obj"))
        self.frames, self.calls = self.call_graph()
        self.empty = self.sizes([])

    def call_graph(self):
        frames, calls = {}, collections.defaultdict(set)
        for graph in self.directory.glob("CMakeFiles/nnlib.dir/**/*.ci"):
            text = graph.read_text()
            for name, frame in re.findall(r'node: { title: "(.*?)" label: ".*?\\n(\d+) bytes', text):
                frames[name] = int(frame)
            for caller, callee in re.findall(r'sourcename: "(.*?)" targetname: "(.*?)"', text):
                calls[caller].add(callee)
        return frames, calls

    def depth(self, function, above=()):
        if function in above:
            return 0
        deeper = [self.depth(f, above + (function,)) for f in self.calls.get(function, ())]
        return self.frames.get(function, 0) + max(deeper, default=0)

    def link(self, functions):
        source, program = self.directory / "alone.c", self.directory / "alone.elf"
        source.write_text(
            '#include "nnlib.h"\ntypedef void (*function)(void);\n'
            "extern const function used[8];\nconst function used[8] = {%s(function)0};\n"
            "int main(void) { __asm__ volatile(\"\" ::\"r\"(used)); }\n"
            % "".join("(function)%s, " % f for f in functions))
        setting = self.setting
        run(self.compiler, *setting["CMAKE_C_FLAGS"].split(), "-Os", "-I.", source, *self.board,
            *setting["CMAKE_EXE_LINKER_FLAGS"].split(), self.directory / "libnnlib.a", "-lm", "-o",
            program)
        return program

    def sizes(self, functions):
        program = self.link(functions)
        sizes = collections.Counter()
        for section, size in re.findall(r"^\.([\w.]+) +(\d+) +\d+$", run("size", "-A", program),
                                        re.M):
            for kind, names in SECTIONS.items():
                if section in names or section.split(".")[0] in names:
                    sizes[kind] += int(size)
        nm = self.setting["CMAKE_NM"]
        sizes["heap"] = " core_mem_alloc" in run(nm, program)
        return sizes

    def row(self, functions):
        sizes = self.sizes(functions)
        figures = [sizes[kind] - self.empty[kind] for kind in HEADINGS[1:5]]
        stack = max(self.depth(f) for f in functions)
        return figures + [stack, "yes" if sizes["heap"] else "no"]


def measure():
    tables = {}
    for name in TARGETS:
        target, tables[name] = Target(name), {}
        for row in ROWS:
            title, functions = row if isinstance(row, tuple) else (row, [row])
            tables[name][title] = target.row(functions)
    return tables


def table_text(rows):
    lines = [HEADINGS, ["---"] + ["---:"] * 6] + [[title] + row for title, row in rows.items()]
    return "".join("| %s |\n" % " | ".join(map(str, line)) for line in lines)


def grown(tables, page):
    """Figures that are more than 5 % above the page's, which must have them all."""
    for name, rows in tables.items():
        section = page.split("<!-- %s -->\n" % name)[1]
        before = {cells[0]: cells[1:] for cells in
                  (line.strip("| ").split(" | ") for line in section.splitlines())}
        for title, row in rows.items():
            for heading, old, new in zip(HEADINGS[1:6], before.get(title, [0] * 6), row):
                if int(old) * 1.05 < new:
                    yield "%s, %s: %s grew from %s to %d" % (name, title, heading, old, new)


def main():
    tables, page = measure(), PAGE.read_text()
    if "--check" in sys.argv:
        growth = list(grown(tables, page))
        sys.exit("\n".join(growth) if growth else 0)
    for name, rows in tables.items():
        mark = "<!-- %s -->\n" % name
        before, _, after = page.split(mark)
        page = mark.join([before, table_text(rows), after])
    PAGE.write_text(page)


if __name__ == "__main__":
    main()
