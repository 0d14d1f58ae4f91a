#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Measures what each layer takes when it is linked alone, and writes docs/footprint.md.

footprint.py            writes the tables
footprint.py --check    writes nothing; fails when a figure grew by more than 5 %, or when the page
                        has other rows than those measured

Rows are the functions of the public headers that a layer can name, and those that a network hands
over to layers. A program with nothing but a row's functions is linked with the library at -Os; its
figures are those beyond the same program without them, what they draw of the C library included.
A last table has the library's part of a whole network, by source.
"""

import collections
import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
PARTS = ROOT / "tools" / "footprint"
sys.path.append(str(PARTS))

import call_graph  # noqa: E402
import public_functions  # noqa: E402

PAGE = ROOT / "docs" / "footprint.md"
WORK = ROOT / "build" / "footprint"
JOBS = len(os.sched_getaffinity(0))
TARGETS = ["m0", "m4f", "m55", "rv32"]
SECTIONS = {"text": ("text", "init", "vectors", "plt"), "data": ("data", "tdata"),
            "rodata": ("rodata", "ARM", "init_array", "fini_array", "srodata"),
            "bss": ("bss", "sbss", "tbss")}
HEADINGS = ["", "text", "rodata", "data", "bss", "stack", "heap"]
CORE = ["ai_platform_network_create", "ai_platform_network_init", "ai_platform_network_process",
        "ai_platform_network_get_error", "ai_platform_network_destroy"]
ALLOCATOR = "core_mem_alloc"
# What integer layers must do without: division of 64 bits, arithmetic of doubles, printing.
HEAVY = re.compile(r"__aeabi_(u?ldivmod|d(add|sub|mul|div|2.*)|.2d)|__u?(div|mod)di3|.*printf|"
                   r"__(add|sub|mul|div|fix|float|extend|trunc).*df.?")
IMAGE = {"int8_int8symwt alone": "-DNNLIB_QUANTIZED_TYPES=int8_int8symwt", "all types": None}
IMAGE_HEADINGS = ["", *("%s, %s" % (kind, build) for build in IMAGE for kind in ("text", "rodata"))]


def run(*command):
    done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit("%s\n%s" % (" ".join(map(str, command)), done.stderr))
    return done.stdout


class Build:
    def __init__(self, preset, name, *options):
        self.directory = WORK / name
        run("cmake", "--preset", preset, "-B", self.directory, "-DCMAKE_BUILD_TYPE=MinSizeRel",
            "-DCMAKE_CXX_FLAGS_MINSIZEREL=-Os -DNDEBUG -fcallgraph-info=su", *options)
        run("cmake", "--build", self.directory, "-j%d" % JOBS, "--target", "nnlib", "nnlib_board")
        self.setting = dict(re.findall(r"^(CMAKE_\w+):\w+=(.*)$", self.generated("CMakeCache.txt"),
                                       re.M))
        self.compiler = re.search(r'set\(CMAKE_C_COMPILER "(.*)"\)',
                                  self.generated("CMakeFiles/*/CMakeCCompiler.cmake")).group(1)
        self.emulator = re.search(r"PROGRAM=(.*?--);",
                                  self.generated("examples/CTestTestfile.cmake")).group(1)
        self.library = self.directory / "libnnlib.a"
        self.board = list(self.directory.glob("ports/bare_metal/**/*.obj"))

    def generated(self, pattern):
        return next(self.directory.glob(pattern)).read_text()

    def compile(self, text, name):
        source, compiled = self.directory / (name + ".c"), self.directory / (name + ".o")
        source.write_text(text)
        run(self.compiler, *self.setting["CMAKE_C_FLAGS"].split(), "-Os", "-I.", "-c", source, "-o",
            compiled)
        return compiled

    def link(self, main, name, *options):
        program = self.directory / (name + ".elf")
        run(self.compiler, *self.setting["CMAKE_C_FLAGS"].split(), main, *self.board,
            *self.setting["CMAKE_EXE_LINKER_FLAGS"].split(), *options, self.library, "-lm", "-o",
            program)
        return program

    def run(self, program):
        return run(*self.emulator.split(";"), program)

    def image(self, source):
        """{source of the library: {section kind: bytes}} of a program, which must run."""
        main, placed = self.compile(source.read_text(), source.stem), self.directory / "image.map"
        self.run(self.link(main, source.stem, "-Wl,-Map=%s" % placed))
        parts = collections.defaultdict(collections.Counter)
        for kind, size, member in re.findall(
                r"^ \.(text|rodata)\S*\s+0x\w+ +0x(\w+) \S*/libnnlib\.a\((\S+?)\.obj\)$",
                placed.read_text().split("\nLinker script and memory map\n")[1], re.M):
            parts[member][kind] += int(size, 16)
        return parts


class Target(Build):
    def __init__(self, name):
        super().__init__(name, name)
        self.graph = call_graph.CallGraph(
            self.call_graphs(), run(self.setting["CMAKE_READELF"], "-rW", self.library))
        self.empty_main = self.compile("int main(void) { return 0; }", "empty")
        self.empty, self.linked_anyway = self.measure([], "empty")
        self.heap = self.measure_heap()

    def call_graphs(self):
        """Of the present sources; the build directory may have those of earlier ones as well."""
        objects = self.directory / "CMakeFiles" / "nnlib.dir"
        return [graph for graph in objects.glob("**/*.ci")
                if (ROOT / graph.relative_to(objects).with_suffix("")).exists()]

    def measure(self, functions, name):
        """({section kind: bytes}, {symbol, ...}) of a program with these functions."""
        program = self.link(self.empty_main, name, *("-Wl,-u,%s" % f for f in functions))
        listing = run(self.setting["CMAKE_READELF"], "-SsW", program)
        program.unlink()
        sizes = collections.Counter()
        for section, size in re.findall(r"^ +\[ *\d+\] \.(\S+) +\w+ +\w+ \w+ (\w+)", listing, re.M):
            for kind, names in SECTIONS.items():
                if section in names or section.split(".")[0] in names:
                    sizes[kind] += int(size, 16)
        return sizes, set(re.findall(r" FUNC .* (\S+)$", listing, re.M))

    def measure_heap(self):
        main = self.compile((PARTS / "heap.c").read_text(), "heap")
        program = self.link(main, "heap", "-Wl,--wrap=malloc")
        printed = self.run(program)
        return {name: int(size) for name, size in map(str.split, printed.splitlines())}

    def row(self, title, functions):
        sizes, linked = self.measure(functions, functions[0])
        heavy = list(filter(HEAVY.fullmatch, linked - self.linked_anyway))
        if title.endswith("_integer") and heavy:
            sys.exit("%s draws %s" % (title, " ".join(heavy)))
        if ALLOCATOR in linked and title not in self.heap:
            sys.exit("%s can reach the heap: tools/footprint/heap.c must measure it" % title)
        return [sizes[kind] - self.empty[kind] for kind in HEADINGS[1:5]] + [
            max(self.graph.depth(f, linked) for f in functions),
            self.heap[title] if ALLOCATOR in linked else 0]


def all_rows():
    """[(group, [(title, [function, ...]), ...]), ...]"""
    headers = run("cc", "-E", "-I.", "nnlib.h")
    types = public_functions.by_type(headers)
    layers = types.pop("ai_layer_forward")
    core = ("", [("runtime core", CORE)])
    handed_over = [("all %s of %s" % (name, pathlib.Path(header).name), functions)
                   for name, of_headers in types.items() for header, functions in
                   of_headers.items()]
    return [core] + [(header, [(f, [f]) for f in functions]) for header, functions in
                     layers.items()] + [("handed over to layers", handed_over)]


def image_rows(builds):
    """{"": {source: figures}} of a whole network; builds: as in IMAGE"""
    images = [build.image(PARTS / "int8_network.c") for build in builds]
    figures = collections.defaultdict(list)
    for image in images:
        total = sum(image.values(), collections.Counter())
        for name, sizes in [("all", total), *((n, image[n]) for n in set().union(*images))]:
            figures[name] += [sizes["text"], sizes["rodata"]]
    in_order = sorted(figures.items(), key=lambda row: -sum(row[1]))
    return {"": {name if name == "all" else str(next(ROOT.glob("*/" + name)).relative_to(ROOT)): row
                 for name, row in in_order}}


def measure():
    """{target: (headings, {group: {title: figures}})}"""
    groups, tables = all_rows(), {}
    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        for name in TARGETS:
            target = Target(name)
            pending = {group: {title: pool.submit(target.row, title, functions)
                               for title, functions in rows} for group, rows in groups}
            tables[name] = HEADINGS, {group: {title: row.result() for title, row in rows.items()}
                                      for group, rows in pending.items()}
            if name == "m4f":
                image = image_rows(target if option is None else Build(name, "m4f-types", option)
                                   for option in IMAGE.values())
    return {**tables, "image": (IMAGE_HEADINGS, image)}


def table_text(headings, groups):
    figures = len(headings) - 1
    lines = [headings, ["---"] + ["---:"] * figures]
    for group, rows in groups.items():
        lines += [["*%s*" % group] + [""] * figures] if group else []
        lines += [[title] + row for title, row in rows.items()]
    return "".join("| %s |\n" % " | ".join(map(str, line)) for line in lines)


def table_rows(text):
    rows = [[cell.strip() for cell in line.split("|")[1:-1]] for line in text.splitlines()]
    return {row[0]: list(map(int, row[1:])) for row in rows if row[-1].isdigit()}


def complaints(tables, page):
    for name, (headings, groups) in tables.items():
        before = table_rows(page.split("<!-- %s -->\n" % name)[1])
        now = table_rows(table_text(headings, groups))
        for title in before.keys() ^ now.keys():
            yield "%s, %s: %s" % (name, title, "not on the page" if title in now else "on the page, "
                                  "but not there")
        for title in before.keys() & now.keys():
            for heading, old, new in zip(headings[1:], before[title], now[title]):
                if 100 * new > 105 * old:
                    yield "%s, %s: %s grew from %d to %d" % (name, title, heading, old, new)


def main():
    tables, page = measure(), PAGE.read_text()
    if "--check" in sys.argv:
        found = sorted(complaints(tables, page))
        sys.exit("\n".join(found) if found else 0)
    for name, table in tables.items():
        mark = "<!-- %s -->\n" % name
        before, _, after = page.split(mark)
        page = mark.join([before, table_text(*table), after])
    PAGE.write_text(page)


if __name__ == "__main__":
    main()
