#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The command line of nnlib-import: what it writes, what it refuses and its exit status.

usage: commands_test.py NNLIB_IMPORT MODELS_FOLDER
"""
import contextlib
import html.parser
import json
import os
import pathlib
import pty
import re
import subprocess
import sys
import tempfile
import unittest

import numpy

IMPORTER, MODELS = sys.argv[1], pathlib.Path(sys.argv[2])


def expected(name, kind="output0"):
    return MODELS / "data" / f"{name.replace('.', '_')}.{kind}.bin"


class Page(html.parser.HTMLParser):
    """Fails on tags that do not match, and collects the texts of pictures and tables."""
    VOID = {"meta", "link"}

    def __init__(self):
        super().__init__()
        self.open, self.tags, self.texts = [], [], []

    def handle_starttag(self, tag, attributes):
        self.tags.append((tag, dict(attributes)))
        if tag not in self.VOID and not self.get_starttag_text().endswith("/>"):
            self.open.append(tag)

    def handle_endtag(self, tag):
        if not self.get_starttag_text().endswith("/>") or self.open[-1:] == [tag]:
            assert self.open and self.open.pop() == tag, tag

    def handle_data(self, data):
        self.texts.append(data)


class Commands(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_tool(self, *arguments, status=0):
        done = subprocess.run([IMPORTER, *map(str, arguments)], capture_output=True, text=True,
                              cwd=self.folder)
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.assertEqual(done.stderr == "", status == 0)
        return done.stdout if status == 0 else done.stderr

    def npy(self, name, array):
        numpy.save(self.folder / name, array)
        return self.folder / name

    def test_wrong_use_is_2_and_a_refused_model_is_1(self):
        model = MODELS / "kws_int8.tflite"
        (self.folder / "short.bin").write_bytes(b"123")
        (self.folder / "text.npy").write_bytes(b"no numbers")
        for wrong in (["nothing.onnx"], [], ["report"], [model, "--colour"],
                      [model, "--io", "sideways"], [model, "--input-dim=N=0"],
                      [model, "--freeze=x"], [model, "-o", model],
                      ["run", model], ["run", model, "--input", "short.bin"],
                      ["check", model, "--input", "text.npy"],
                      ["check", model, "--expect", "short.bin", "--expect", "short.bin"],
                      ["report", model, "--profile", "short.bin"]):
            with self.subTest(wrong):
                self.assertNotEqual(self.run_tool(*wrong, status=2).strip(), "")
        (self.folder / "cut.tflite").write_bytes(model.read_bytes()[:5000])
        for command in ("convert", "check", "report", "run", "print"):
            self.assertNotEqual(self.run_tool(command, "cut.tflite", status=1).strip(), "")
        self.assertEqual([f.name for f in self.folder.iterdir() if f.suffix in (".c", ".h")], [])

    def test_progress_on_a_terminal_only(self):
        ours, terminal = pty.openpty()
        command = [IMPORTER, "check", MODELS / "kws_int8.tflite"]
        subprocess.run(command, stdout=subprocess.DEVNULL, stderr=terminal, check=True)
        os.close(terminal)
        shown = b""
        with contextlib.suppress(OSError):  # the other end is closed
            while chunk := os.read(ours, 1 << 16):
                shown += chunk
        os.close(ours)
        self.assertIn(b"reading", shown)
        self.assertTrue(shown.endswith(b"\r\x1b[K"), shown)

    def test_convert_is_the_default_and_writes_the_same_again(self):
        model = MODELS / "gru.onnx"
        said = self.run_tool(model, "-o", "a", "--name", "my-net")
        self.assertRegex(said, r"^my_net: arena \d+ bytes, .*; heap \d+\n$")
        self.assertEqual(said, self.run_tool("convert", model, "-o", "b", "--name", "my-net"))
        names = {"my_net.c", "my_net.h", *(f"my_net_report.{e}" for e in ("txt", "json", "html"))}
        self.assertEqual({f.name for f in (self.folder / "a").iterdir()}, names)
        for name in names:
            self.assertEqual((self.folder / "a" / name).read_bytes(),
                             (self.folder / "b" / name).read_bytes())

    def test_options_of_the_source(self):
        self.run_tool("--input-dim", "unused=3", MODELS / "cnn.onnx", "--weights=separate", "--section=.ram2", "--name=n")
        self.assertIn(".ram2", (self.folder / "n.c").read_text())
        self.assertTrue((self.folder / "n_weights.c").exists())
        self.run_tool(MODELS / "kws_int8.tflite", "--arena=caller", "--io-type=float",
                      "--strip-softmax", "--alignment=16", "--name=k")
        header = (self.folder / "k.h").read_text()
        self.assertIn("aligned to 16", header)
        self.assertIn("input: t0, 1 x 49 x 10 x 1 float", header)
        self.assertIn("k_init(void* arena)", header)
        self.assertIn("k_run(const float* input, float* output)", header)
        self.assertNotIn("forward_sm", (self.folder / "k.c").read_text())

    def test_files_of_elements(self):
        """A map in the model's order, as double and big-endian, several runs at once."""
        model = MODELS / "cnn.onnx"
        x = numpy.fromfile(expected("cnn.onnx", "input0"), "<f4").reshape(1, 2, 9, 8)
        y = numpy.fromfile(expected("cnn.onnx"), "<f4")
        both = self.npy("both.npy", numpy.concatenate([x[:, ::-1], x]).astype(">f8"))
        self.run_tool("run", model, "--input", both, "--output", "y.npy", "--layers", "layers")
        got = numpy.load(self.folder / "y.npy")
        self.assertEqual((got.shape, got.dtype), ((2, 1, 4), numpy.float32))
        numpy.testing.assert_allclose(got[1, 0], y, atol=2e-7)
        self.assertGreater(abs(got[0, 0] - y).max(), 1e-3)
        x.transpose(0, 2, 3, 1).tofile(self.folder / "x.bin")
        self.run_tool("run", model, "--input", "x.bin", "--output", "y.bin")
        self.assertEqual(numpy.fromfile(self.folder / "y.bin", "<f4").tolist(), got[1, 0].tolist())
        for wrong in (numpy.asfortranarray(x), x[:, :, 1:], x.astype(numpy.complex64)):
            self.run_tool("run", model, "--input", self.npy("wrong.npy", wrong), status=2)

    def test_floats_for_an_int8_input_are_quantized(self):
        model = MODELS / "kws_int8.tflite"
        raw = numpy.fromfile(expected("kws_int8.tflite", "input0"), numpy.int8)
        port = json.loads(self.run_tool("report", model, "--format=json"))["inputs"][0]
        real = (raw.astype(float) - port["zero_point"]) * port["scale"]
        floats = self.npy("x.npy", real.astype(numpy.float32))
        self.run_tool("run", model, "--input", floats, "--output", "y.bin")
        self.assertEqual((self.folder / "y.bin").read_bytes(),
                         expected("kws_int8.tflite").read_bytes())
        beyond = self.npy("beyond.npy", numpy.full(raw.size, 1e9))
        highest = self.npy("highest.npy", numpy.full(raw.size, 127, numpy.uint8))
        self.run_tool("run", model, "--input", beyond, "--output", "a.bin")
        self.run_tool("run", model, "--input", highest, "--output", "b.bin")
        self.assertEqual(*((self.folder / f).read_bytes() for f in ("a.bin", "b.bin")))
        self.run_tool("run", model, "--input",
                      self.npy("large.npy", numpy.full(raw.size, 128, numpy.uint8)), status=2)

    def test_check_against_outputs_and_layers(self):
        model, name = MODELS / "cnn.onnx", "cnn.onnx"
        x = numpy.fromfile(expected(name, "input0"), "<f4").reshape(1, 2, 9, 8)
        y = numpy.fromfile(expected(name), "<f4")
        y[2] += 0.5
        common = ["check", model, "--input", self.npy("x.npy", x)]
        said = self.run_tool(*common, "--expect", self.npy("y.npy", y))
        self.assertRegex(said, r"Gemm +y0 +f32 +[\d.]+ +0\.50 ")
        graph = self.run_tool("print", model)
        inner = re.search(r'"([^"]+)": f32\[1,(\d+),(\d+),(\d+)\] = conv2d\(.*pool="max_pool"', graph)
        shape = [int(inner[i]) for i in (4, 2, 3)]
        layers = self.folder / "layers"
        layers.mkdir()
        stem = re.sub(r"[^\w.-]", "_", inner[1].split("#")[0])
        numpy.save(layers / stem, numpy.full([1, *shape], 100.0))
        said = self.run_tool(*common, "--expect", self.npy("y.npy", y), "--layers", layers)
        rows = said.splitlines()[2:]
        self.assertEqual([row.split()[0] for row in rows], ["Conv", "Gemm"], said)

    def test_check_of_a_quantized_model_names_its_lossy_operator(self):
        x = expected("ic_int8.tflite", "input0")
        said = self.run_tool("check", MODELS / "ic_int8.tflite", "--input", x)
        rows = [line.split() for line in said.splitlines()[3:-1]]
        own = [float(row[2]) for row in rows]
        self.assertEqual(own, sorted(own))
        self.assertGreater(len(own), 10)

    def test_report_json(self):
        for name in ("kws_int8.tflite", "branches.onnx", "gru.onnx"):
            report = json.loads(self.run_tool("report", MODELS / name, "--format", "json"))
            layers, totals = report["layers"], report["totals"]
            self.assertEqual(sum(l["macs"] for l in layers), totals["macs"])
            self.assertEqual(max(l["heap_bytes"] for l in layers), totals["heap_bytes"])
            self.assertEqual(max(l["live_bytes"] for l in layers), totals["bound"])
            self.assertEqual({l["function"] for l in layers},
                             {f["name"] for f in report["functions"]})
            for block in report["arena"]:
                self.assertLessEqual(block["offset"] + block["bytes"], totals["arena_bytes"])
        self.assertEqual(totals["heap_bytes"], 12 * 4 + 4)  # U is 3, and the unit that carries the bias

    def test_report_page(self):
        """Tags match, nothing is loaded, and every layer stands in the table and in both pictures."""
        for name in ("branches.onnx", "lstm.onnx"):
            self.run_tool("report", MODELS / name, "-o", "page.html")
            page = Page()
            page.feed((self.folder / "page.html").read_text())
            page.close()
            self.assertEqual(page.open, [])
            for tag, attributes in page.tags:
                self.assertNotIn(tag, ("script", "img", "iframe", "object"))
                for key in ("src", "href"):
                    self.assertTrue(attributes.get(key, "data:").startswith("data:"))
            report = json.loads(self.run_tool("report", MODELS / name, "--format=json"))
            classes = [a.get("class", "").split() for t, a in page.tags if t == "rect"]
            boxes = len(report["layers"]) + len(report["inputs"]) + len(report["outputs"])
            self.assertEqual(sum("box" in c for c in classes), boxes)
            self.assertEqual(sum("block" in c for c in classes), len(report["arena"]))
            for layer in report["layers"]:
                self.assertIn(layer["function"], page.texts)

    def test_profile_of_this_network_only(self):
        model = MODELS / "cnn.onnx"
        layers = json.loads(self.run_tool("report", model, "--format=json"))["layers"]
        times = {"unit": "cycles", "layers": [
            {"function": l["function"], "shape": l["shape"], "ticks": 1000 * (i + 1), "macs": 0}
            for i, l in enumerate(layers)]}
        path = self.folder / "times.json"
        path.write_text(json.dumps(times))
        said = self.run_tool("report", model, "--profile", path)
        total = 500 * len(layers) * (len(layers) + 1)
        self.assertIn(f"measured: {total:,} cycles", said)
        self.assertRegex(said, rf"forward_conv2d.* 1,000 +{100000 / total:.1f} %")
        for change in (lambda l: l.pop(), lambda l: l[0].update(function="forward_sm"),
                       lambda l: l[1].update(shape=[1, 1, 1, 1]), lambda l: l[0].pop("ticks")):
            damaged = json.loads(json.dumps(times))
            change(damaged["layers"])
            path.write_text(json.dumps(damaged))
            self.run_tool("report", model, "--profile", path, status=2)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
