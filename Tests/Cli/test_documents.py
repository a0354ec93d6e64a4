# SPDX-License-Identifier: Apache-2.0
"""Documents at their limits, and files that would be written twice."""

import json
import subprocess

from cli_support import (
    FILE_ERROR,
    INVALID,
    USAGE,
    ValueTestCase,
    document,
    find_program,
    link,
    node,
    output,
)


class LimitsTest(ValueTestCase):
    def run_in_small_stack(self, command, content):
        """The program with a stack of 256 KB, which an end by a signal fails."""
        self.save("graph.json", content)
        ended = subprocess.run(
            ["sh", "-c", 'ulimit -s 256; exec "$0" "$@"', str(find_program()), command, "graph.json"],
            cwd=self.dir, capture_output=True, text=True, timeout=300, check=False,
        )
        self.assertGreaterEqual(ended.returncode, 0, ended.stderr[:300])
        return ended

    def test_nesting_needs_no_stack(self):
        for text in (
            "[" * 50000,
            '{"nodes":' * 50000,
            json.dumps(document([node("a", "NumberNode", value="HERE")])).replace(
                '"HERE"', "[" * 1440 + "]" * 1440
            ),
        ):
            for command in ("check", "run"):
                with self.subTest(text=text[:10], command=command):
                    ended = self.run_in_small_stack(command, text)
                    self.assertEqual(ended.returncode, INVALID)
                    self.assertEqual(len(ended.stderr.splitlines()), 1)
                    self.assertIn("64 levels", ended.stderr)

    def test_text_behind_a_zero_byte(self):
        text = json.dumps(document([node("a", "NumberNode")]))
        (self.dir / "graph.json").write_text(text + "\0 and more", "utf-8")
        result = self.value("check", "graph.json", code=INVALID)
        self.assert_one_error(result, "graph.json", f"byte {len(text)}", "zero byte")

    def test_many_connections_at_one_node(self):
        # In proportion to the connections this takes a second or two; a walk for each of them took minutes.
        count = 20000
        nodes = [node("hub", "ImageValueAddNode")]
        nodes += [node(f"in{k}", "ImageRectangleNode") for k in range(count)]
        nodes += [node(f"out{k}", "ImageValueAddNode") for k in range(count)]
        links = [link("hub.image", f"out{k}.image", 0) for k in range(count)]
        links += [link(f"in{k}.image", "hub.image", k) for k in range(count)]
        self.save("graph.json", document(nodes, links))
        self.value("check", "graph.json")

    def test_a_newer_version(self):
        self.save("graph.json", {**document([]), "version": 3})
        for command in ("check", "run"):
            result = self.value(command, "graph.json", code=INVALID)
            self.assert_one_error(result, "graph.json", "version", "3", "1 to 2")

    def test_lines_of_hostile_text(self):
        hostile = "\x1b[2J\x07\u0085\u202e" + "x" * 100000
        self.save("graph.json", document(
            [node("a", hostile), node(hostile, "NumberNode"), node("r", "ImageReaderNode", path=hostile),
             node("b", "NumberNode", **{hostile: hostile})],
            # The first is left out: what is wrong with the node of that id has been said.
            [link(hostile, "b.value"), link("b.number", f"b.{hostile}")],
            [output("r.image", hostile, hostile), output("r.image", f"{hostile}/a.exr")],
        ))
        result = self.value("check", "graph.json", code=INVALID)
        self.assertEqual(len(result.err_lines), 6, str(result))
        results = [result, self.value("run", "graph.json", code=INVALID)]
        # A path is met when the file is read.
        self.save("graph.json", document(
            [node("r", "ImageReaderNode", path=hostile)], [], [output("r.image", "a.exr")]
        ))
        results.append(self.value("run", "graph.json", code=FILE_ERROR))
        for result in results:
            for line in result.err_lines:
                self.assertLessEqual(len(line), 300)
                self.assertTrue(line.isprintable(), repr(line))


class FedPathsTest(ValueTestCase):
    READER = document(
        [node("t", "TextNode", value="in.exr"), node("r", "ImageReaderNode")],
        [link("t.text", "r.path")],
        [output("r.image", "out.exr")],
    )

    def test_an_input_that_would_have_no_effect(self):
        self.save("graph.json", self.READER)
        result = self.value("run", "graph.json", "--input", "r=other.exr", code=USAGE)
        self.assert_one_error(result, "--input", '"r"', "connection")
        self.save("a.png", b"")
        result = self.value(
            "run", "graph.json", "--each", "r=*.png", "--output-dir", "results", code=USAGE
        )
        self.assert_one_error(result, '"r"', "connection")
        self.assert_files("graph.json", "a.png")

    def test_a_writer_never_overwrites_another_output(self):
        self.save("graph.json", document(
            [
                node("t", "TextNode", value="sub/../out.exr"),
                node("box", "ImageRectangleNode", frame=[0, 0, 2, 2]),
                node("w", "ImageWriterNode"),
            ],
            [link("box.image", "w.image"), link("t.text", "w.path")],
            [output("box.image", "out.exr")],
        ))
        self.value("check", "graph.json")
        result = self.value("run", "graph.json", code=FILE_ERROR)
        self.assert_one_error(result, '"w"', '"box.image"', "out.exr")
        self.assert_files("graph.json", "out.exr")
