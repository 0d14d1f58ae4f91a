#!/usr/bin/python3
"""Builds and runs the benchmarks and writes their tables into docs/performance.md.

The program with other libraries beside (peers) runs where they are installed. The raw results stay
in build/bench/benchmark.json.
"""

import json
import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[1]
BUILD = ROOT / "build" / "bench"
PAGE = ROOT / "docs" / "performance.md"
COLUMNS = ["nnlib", "nnlib narrow", "naive", "oneDNN", "XNNPACK"]


def run(*command):
    return subprocess.run(command, cwd=ROOT, check=True, capture_output=True, text=True).stdout


def measure():
    """{workload: {contestant: result}}"""
    program = BUILD / "bench" / "nnlib_bench_peers"
    if not program.exists():
        program = BUILD / "bench" / "nnlib_bench"
    out = BUILD / "benchmark.json"
    run(program, "--benchmark_out=%s" % out, "--benchmark_out_format=json")
    results = {}
    for result in json.loads(out.read_text())["benchmarks"]:
        if "error_message" not in result:
            workload, contestant = result["name"].split("/")[:2]
            results.setdefault(workload, {})[contestant] = result
    return results


def row(*cells):
    return "| " + " | ".join(cells) + " |"


def ratio(of, to, key, percent=False):
    if not of or not to or key not in of or key not in to:
        return ""
    value = of[key] / to[key]
    return "%.0f %%" % (100 * value) if percent else "%.2f" % value


def tables(results):
    peaks = results.pop("peak")
    lines = ["Measured peaks: %s." % ", ".join(
        "%s %s" % (name, "%.1f GFLOP/s" % p["GFLOPS"] if "GFLOPS" in p
                   else "%.1f GB/s" % (2**28 / p["real_time"] / 1e3)) for name, p in peaks.items()),
             "", "Microseconds a call:", "",
             row("workload", *COLUMNS), row("---", *["---:"] * len(COLUMNS))]
    for workload, times in results.items():
        lines.append(row(workload, *("%.2f" % times[c]["real_time"] if c in times else ""
                                     for c in COLUMNS)))
    lines += ["", "Ratios; a speed above 1 is faster than the other:", "",
              row("workload", "of the peak", "narrow, of its peak", "speed to oneDNN",
                  "speed to XNNPACK", "speed to naive", "batches kept"),
              row("---", *["---:"] * 6)]
    for workload, times in results.items():
        ours, narrow = times.get("nnlib"), times.get("nnlib narrow")
        lines.append(row(
            workload, ratio(ours, peaks.get("multiply-add"), "GFLOPS", True),
            ratio(narrow, peaks.get("multiply-add narrow"), "GFLOPS", True),
            *(ratio(times.get(c), ours, "real_time") for c in ("oneDNN", "XNNPACK", "naive")),
            "%d" % min(t["kept"] for t in times.values())))
    return lines


def main():
    run("cmake", "--preset", "release", "-B", BUILD, "-DNNLIB_BUILD_BENCH=ON",
        "-DNNLIB_BUILD_TESTS=OFF")
    run("cmake", "--build", BUILD, "-j2")
    integers = run(BUILD / "bench" / "nnlib_bench_integer").rstrip()
    measured = "\n".join(tables(measure()) + ["", "8-bit integers, microseconds:", "", "```",
                                              integers, "```"])
    before, _, after = PAGE.read_text().partition("<!-- results -->\n")
    after = after.partition("<!-- results -->\n")[2]
    PAGE.write_text(before + "<!-- results -->\n" + measured + "\n<!-- results -->\n" + after)


if __name__ == "__main__":
    main()
