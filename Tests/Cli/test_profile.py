"""Where the time goes: the table, the answer in JSON and the trace."""

import json

from cli_support import (
    DONE, FILE_ERROR, INVALID, USAGE, VALUE, ValueTestCase, document, node, output, sample_picture,
)

# Times of one run are sums of the same clock; JSON keeps them in doubles.
ROUNDING = 1e-6


def connection(start, end, index=None):
    made = {"from": start, "to": end}
    if index is not None:
        made["index"] = index
    return made


class ProfileTestCase(ValueTestCase):
    def setUp(self):
        super().setUp()
        self.save_picture("a.exr", sample_picture(VALUE, width=8, height=4))
        self.save(
            "graph.json",
            document(
                [
                    node("height", "ImageReaderNode", path="a.exr"),
                    node("raised", "ImageValueAddNode", constant=1),
                    node("both", "ImageValueMultiplyNode"),
                ],
                [
                    connection("height.image", "raised.image", 0),
                    connection("height.image", "both.image", 0),
                    connection("raised.image", "both.image", 1),
                ],
                [output("raised.image", "raised.exr"), output("both.image", "both.exr")],
            ),
        )

    def save_picture(self, name, picture):
        self.picture(name, picture)

    def profile(self, *arguments, code=DONE):
        result = self.value(*arguments, "--profile", "--json", code=code)
        *_, answer = result.json_values()
        return answer["profile"]

    def trace(self, *arguments, code=DONE):
        self.value(*arguments, "--trace", "trace.json", code=code)
        return json.loads((self.dir / "trace.json").read_text("utf-8"))

    def spans(self, trace):
        return [event for event in trace["traceEvents"] if event["ph"] == "X"]


class TableTest(ProfileTestCase):
    def test_every_node_and_every_output_has_a_line_on_standard_output(self):
        result = self.value("run", "graph.json", "--profile")
        for text in (
            "height (Image Reader): ", "raised (Value Add)\n", "both (Value Multiply)\n",
            "output raised.image: ", "output both.image: ", "everything else\n", "A plain copy of ",
        ):
            self.assertEqual(result.out.count(text), 1, str(result))
        self.assertEqual(result.err, "")
        self.assertTrue((self.dir / "both.exr").exists())

    def test_without_the_options_nothing_is_said(self):
        result = self.value("run", "graph.json")
        self.assertEqual(result.out, "")
        (answer,) = self.value("run", "graph.json", "--json").json_values()
        self.assertNotIn("profile", answer)

    def test_bytes_are_those_of_samples_and_files(self):
        profile = self.profile("run", "graph.json")
        samples = 8 * 4 * 4
        nodes = {entry["id"]: entry for entry in profile["nodes"]}
        self.assertEqual(set(nodes), {"height", "raised", "both"})
        for name, read in (("height", 0), ("raised", samples), ("both", 2 * samples)):
            self.assertEqual((nodes[name]["bytes_read"], nodes[name]["bytes_made"]), (read, samples))
            self.assertEqual(nodes[name]["evaluations"], 1)
        self.assertEqual(nodes["height"]["file_bytes"], (self.dir / "a.exr").stat().st_size)
        self.assertEqual(nodes["raised"]["type"], "Value Add")
        outputs = {entry["from"]: entry for entry in profile["outputs"]}
        self.assertEqual(set(outputs), {"raised.image", "both.image"})
        for name, entry in outputs.items():
            self.assertEqual(entry["bytes_read"], samples)
            file = self.dir / (name.split(".")[0] + ".exr")
            self.assertEqual(entry["file_bytes"], file.stat().st_size)

    def test_times_add_up_to_that_of_the_run(self):
        profile = self.profile("run", "graph.json")
        parts = [entry["seconds"] for entry in profile["nodes"] + profile["outputs"]]
        self.assertAlmostEqual(sum(parts) + profile["other_seconds"], profile["seconds"], delta=ROUNDING)
        self.assertEqual(profile["wall_seconds"], profile["seconds"])
        (reader,) = [entry for entry in profile["nodes"] if entry["id"] == "height"]
        self.assertLessEqual(reader["open_seconds"] + reader["decode_seconds"], reader["seconds"])
        for entry in profile["outputs"]:
            self.assertLessEqual(entry["encode_seconds"] + entry["save_seconds"], entry["seconds"] + ROUNDING)
        for entry in profile["nodes"]:
            moved = entry["bytes_read"] + entry["bytes_made"]
            self.assertAlmostEqual(entry["bytes_per_second"] * entry["seconds"], moved, delta=1e-3)
            share = entry["bytes_per_second"] / profile["copy_bytes_per_second"]
            self.assertAlmostEqual(entry["copy_share"], share, delta=1e-9)

    def test_the_copy_uses_the_threads_of_the_run(self):
        self.assertEqual(self.profile("run", "graph.json", "--threads", "1")["threads"], 1)

    def test_apply_has_it_too(self):
        profile = self.profile("apply", "Value Add", "-i", "a.exr", "-o", "b.exr")
        self.assertEqual({entry["id"] for entry in profile["nodes"]}, {"input 1", "Value Add"})
        self.assertEqual([entry["from"] for entry in profile["outputs"]], ["Value Add.image"])

    def test_runs_of_a_batch_are_added_up(self):
        for name in "pqr":
            self.save_picture(f"tile_{name}.exr", sample_picture(VALUE, width=8, height=4))
        profile = self.profile(
            "run", "graph.json", "--each", "height=tile_*.exr", "--output-dir", "done", "--jobs", "2"
        )
        self.assertEqual(profile["runs"], 3)
        self.assertEqual({entry["evaluations"] for entry in profile["nodes"]}, {3})
        self.assertEqual({entry["writes"] for entry in profile["outputs"]}, {3})
        (raised,) = [entry for entry in profile["nodes"] if entry["id"] == "raised"]
        self.assertEqual(raised["bytes_read"], 3 * 8 * 4 * 4)

    def test_a_writer_counts_its_file(self):
        self.save(
            "writer.json",
            document(
                [
                    node("height", "ImageReaderNode", path="a.exr"),
                    node("store", "ImageWriterNode", path="stored.exr"),
                ],
                [connection("height.image", "store.image")],
            ),
        )
        profile = self.profile("run", "writer.json")
        (writer,) = [entry for entry in profile["nodes"] if entry["id"] == "store"]
        self.assertEqual(writer["file_bytes"], (self.dir / "stored.exr").stat().st_size)
        self.assertEqual(profile["outputs"], [])

    def test_a_file_that_is_also_read_is_told_as_its_output(self):
        profile = self.profile("run", "graph.json", "--output", "both.image=a.exr")
        self.assertEqual({entry["from"] for entry in profile["outputs"]}, {"raised.image", "both.image"})

    def test_a_run_that_fails_still_has_its_profile(self):
        profile = self.profile("run", "graph.json", "--input", "height=missing.exr", code=FILE_ERROR)
        self.assertEqual([entry["id"] for entry in profile["nodes"]], ["height"])
        self.assertEqual(profile["outputs"], [])

    def test_a_document_that_is_wrong_has_none(self):
        self.save("graph.json", {"format": "value-graph", "version": 2, "nodes": 1})
        result = self.value("run", "graph.json", "--profile", code=INVALID)
        self.assertEqual(result.out, "")
        self.assertEqual(len(result.err_lines), 1)


class TraceTest(ProfileTestCase):
    def test_every_step_is_there_and_lies_within_what_it_belongs_to(self):
        trace = self.trace("run", "graph.json")
        spans = {event["name"]: event for event in self.spans(trace) if event["cat"] != "file"}
        self.assertEqual(
            set(spans),
            {"graph.json", "height", "raised", "both", "write raised.image", "write both.image"},
        )
        run = spans["graph.json"]
        self.assert_within(run, [event for event in spans.values() if event is not run])
        files = [event for event in self.spans(trace) if event["cat"] == "file"]
        self.assertEqual(
            sorted(event["name"] for event in files),
            ["decode", "encode", "encode", "open", "save", "save"],
        )
        self.assert_within(spans["height"], [e for e in files if e["name"] in ("open", "decode")])
        for name in ("raised", "both"):
            own = [e for e in files if e["args"]["file"].endswith(name + ".exr")]
            self.assertEqual([event["name"] for event in own], ["encode", "save"])
            self.assert_within(spans[f"write {name}.image"], own)

    def assert_within(self, outer, inner):
        for event in inner:
            self.assertGreaterEqual(event["dur"], 0)
            self.assertGreaterEqual(event["ts"], outer["ts"])
            self.assertLessEqual(event["ts"] + event["dur"], outer["ts"] + outer["dur"] + 1e-3)

    def test_no_two_nodes_of_a_row_overlap(self):
        nodes = [event for event in self.spans(self.trace("run", "graph.json")) if event["cat"] == "node"]
        nodes.sort(key=lambda event: event["ts"])
        for before, after in zip(nodes, nodes[1:]):
            self.assertLessEqual(before["ts"] + before["dur"], after["ts"] + 1e-3)

    def test_arguments_tell_what_a_step_did(self):
        spans = {event["name"]: event for event in self.spans(self.trace("run", "graph.json"))}
        self.assertEqual(
            spans["both"]["args"],
            {"type": "Value Multiply", "bytes_read": 256, "bytes_made": 128, "size": [8, 4]},
        )
        self.assertEqual(spans["open"]["args"]["file_bytes"], (self.dir / "a.exr").stat().st_size)

    def test_each_job_of_a_batch_has_a_row_with_a_name(self):
        for name in "pqrstuvw":
            self.save_picture(f"tile_{name}.exr", sample_picture(VALUE, width=8, height=4))
        trace = self.trace(
            "run", "graph.json", "--each", "height=tile_*.exr", "--output-dir", "done", "--jobs", "3"
        )
        runs = [event for event in self.spans(trace) if event["cat"] == "run"]
        self.assertEqual(sorted(event["name"] for event in runs), [f"tile_{n}.exr" for n in "pqrstuvw"])
        rows = {event["tid"] for event in runs}
        self.assertLessEqual(rows, {1, 2, 3})
        named = {e["tid"] for e in trace["traceEvents"] if e["name"] == "thread_name"}
        self.assertEqual(named, rows)
        for row in rows:
            own = sorted((e for e in runs if e["tid"] == row), key=lambda event: event["ts"])
            for before, after in zip(own, own[1:]):
                self.assertLessEqual(before["ts"] + before["dur"], after["ts"] + 1e-3)

    def test_the_trace_alone_prints_nothing(self):
        self.assertEqual(self.value("run", "graph.json", "--trace", "trace.json").out, "")

    def test_a_trace_that_cannot_be_written_is_told_before_the_run(self):
        (self.dir / "folder.json").mkdir()
        for name, code in (
            ("nowhere/trace.json", FILE_ERROR),
            ("folder.json", FILE_ERROR),
            ("/proc/trace.json", FILE_ERROR),
            ("trace", USAGE),
            ("raised.exr", USAGE),
            ("graph.json", USAGE),
            ("./graph.json", USAGE),
            ("", USAGE),
        ):
            with self.subTest(name=name):
                before = (self.dir / "graph.json").read_bytes()
                result = self.value("run", "graph.json", "--trace", name, code=code)
                self.assertEqual(len(result.err_lines), 1)
                self.assertIn(f"--trace {name}: ", result.err)
                self.assertFalse((self.dir / "raised.exr").exists())
                self.assertEqual((self.dir / "graph.json").read_bytes(), before)
