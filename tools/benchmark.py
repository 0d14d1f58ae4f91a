#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Builds and runs the benchmarks and writes their tables into docs/performance.md.

The program with other libraries beside (peers) runs where they are installed. The raw results stay
in build/bench/benchmark.json; with --tables the tables are written from those of an earlier run.
"""

import json
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
BUILD = ROOT / "build" / "bench"
RESULTS = BUILD / "benchmark.json"
PAGE = ROOT / "docs" / "performance.md"
MARK = "<!-- results -->\n"
INTEGERS = ["int8_int8symwt", "int8symwt", "uint8", "Q7", "Q15"]


def run(*command, **options):
    subprocess.run(command, cwd=ROOT, check=True, stdout=subprocess.DEVNULL, **options)


def measure():
    run("cmake", "--preset", "release", "-B", BUILD, "-DNNLIB_BUILD_BENCH=ON",
        "-DNNLIB_BUILD_TESTS=OFF")
    run("cmake", "--build", BUILD, "-j2")
    programs = [BUILD / "bench" / name for name in ("nnlib_bench_peers", "nnlib_bench")]
    run(next(p for p in programs if p.exists()), "--benchmark_out=%s" % RESULTS,
        "--benchmark_out_format=json", env=dict(os.environ, OMP_NUM_THREADS="1"))


def load():
    """{workload: {contestant: result}}, the fastest of what was measured more than once"""
    results = {}
    for result in json.loads(RESULTS.read_text())["benchmarks"]:
        if "error_message" not in result:
            workload, contestant = result["name"].split("/")[:2]
            known = results.setdefault(workload, {})
            known[contestant] = min(result, known.get(contestant, result),
                                    key=lambda r: r["real_time"])
    return results


def table(head, rows):
    lines = [head, ["---"] + ["---:"] * (len(head) - 1)] + rows
    return ["| " + " | ".join(cells) + " |" for cells in lines] + [""]


def microseconds(result):
    return "%.3g" % result["real_time"] if result else ""


def share(result, peak):
    return "%.0f %%" % (100 * result["Gops"] / peak["Gops"]) if result and peak else ""


def speed(result, other):
    """How many times as fast as the other."""
    return "%.2f" % (other["real_time"] / result["real_time"]) if result and other else ""


def peak_lines(peaks):
    for name, peak in peaks.items():
        rate = "%.1f Gop/s" % peak["Gops"] if "Gops" in peak else "%.1f GB/s" % (
            2**28 / peak["real_time"] / 1e3)
        yield "- %s: %s" % (name, rate)
    yield ""


def float_rows(results, peaks):
    for workload, times in results.items():
        ours, narrow = times.get("float32"), times.get("float32 narrow")
        if "naive" in times:
            of_peak = [share(t, peaks.get(p)) if t and "Gops" in t else "" for t, p in
                       ((ours, "multiply-add"), (narrow, "multiply-add narrow"))]
            yield [workload, microseconds(ours), of_peak[0], microseconds(narrow), of_peak[1],
                   *(speed(ours, times.get(c)) for c in ("naive", "oneDNN", "XNNPACK"))]


def integer_rows(results, peaks):
    for workload, times in results.items():
        ours, narrow = times.get(INTEGERS[0]), times.get(INTEGERS[0] + " narrow")
        if ours:
            yield [workload, *(microseconds(times.get(c)) for c in INTEGERS),
                   share(ours, peaks.get("16-bit pairs")), microseconds(narrow),
                   *(speed(ours, times.get(c)) for c in ("reference", "XNNPACK int8"))]


def other_rows(results):
    for workload, times in results.items():
        if not times.keys() & {"naive", *INTEGERS[:1]}:
            for contestant, time in times.items():
                if not contestant.endswith("narrow"):
                    yield [workload, contestant, microseconds(time),
                           microseconds(times.get(contestant + " narrow"))]


def tables():
    results = load()
    peaks = results.pop("peak", {})
    kept = [r["kept"] for times in results.values() for r in times.values()]
    return "\n".join([
        "What the core can do at most:", "", *peak_lines(peaks),
        "float32; times in microseconds a call, then the share of the peak, then how many times as",
        "fast as the others:", "",
        *table(["", "time", "of peak", "narrow", "of peak", "naive", "oneDNN", "XNNPACK"],
               list(float_rows(results, peaks))),
        "Integers with weight scales for each channel, and fixed point, in microseconds; share of",
        "the peak of 16-bit pairs, and speed beside the others, of int8_int8symwt:", "",
        *table(["", *INTEGERS, "of peak", "narrow", "reference", "XNNPACK"],
               list(integer_rows(results, peaks))),
        "The rest, in microseconds:", "",
        *table(["", "type", "time", "narrow"], list(other_rows(results))),
        "Medians of %d to %d kept batches." % (min(kept), max(kept)), ""])


def main():
    if "--tables" not in sys.argv:
        measure()
    before, _, rest = PAGE.read_text().partition(MARK)
    PAGE.write_text(before + MARK + tables() + MARK + rest.partition(MARK)[2])


if __name__ == "__main__":
    main()
