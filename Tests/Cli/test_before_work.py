"""What can be told before anything is read or computed is told then: inputs that are missing do not get a word in."""

import json

from cli_support import (
    DONE, FILE_ERROR, INVALID, USAGE, VALUE, Picture, ValueTestCase, arithmetic, document, link,
    node, output, sample_picture,
)


class BeforeWorkTestCase(ValueTestCase):
    def setUp(self):
        super().setUp()
        self.save("graph.json", self.graph("out.exr"))

    def graph(self, target, written="w.png"):
        return document(
            [
                node("height", "ImageReaderNode", path="missing.exr"),
                node("raised", "ImageValueAddNode", constant=0.25),
                node("w", "ImageWriterNode", path=written),
            ],
            [link("height.image", "raised.image"), link("raised.image", "w.image")],
            [output("raised.image", target)],
        )

    def apply(self, *options, code=USAGE):
        return self.value("apply", "Value Add", "-i", "missing.exr", *options, code=code)


class CompressionTest(BeforeWorkTestCase):
    def test_each_format_names_its_words(self):
        for name, words in (
            ("x.png", ("zip", "none")),
            ("x.exr", ("piz", "dwaa", "none")),
            ("x.tif", ("zip", "none", "lzw", "packbits")),
            ("x.jpg", ("1 to 100",)),
            ("x.jp2", ("lossless",)),
            ("x.webp", ("lossless",)),
            ("x.bmp", ("none",)),
            ("x.asc", ("none",)),
        ):
            with self.subTest(name=name):
                result = self.apply("-o", name, "--compression", "zap")
                self.assert_one_error(result, "--compression zap", f'"{name}"', *words)

    def test_the_words_of_a_format_pass(self):
        for name, word in (
            ("x.png", "none"), ("x.exr", "b44a"), ("x.tif", "deflate"), ("x.jpg", "jpeg:7"),
            ("x.jpg", "90"), ("x.jp2", "lossless"), ("x.bmp", "none"),
        ):
            with self.subTest(name=name, word=word):
                self.assert_one_error(
                    self.apply("-o", name, "--compression", word, code=FILE_ERROR), "missing.exr"
                )

    def test_standard_output(self):
        result = self.apply("-o", "-", "--format", "png", "--compression", "zap")
        self.assert_one_error(result, "--compression zap", "zip and none")

    def test_all_that_a_document_writes(self):
        # The output takes the word, the writer does not.
        result = self.value("run", "graph.json", "--compression", "piz", code=USAGE)
        self.assert_one_error(result, "--compression piz", '"w.png"', "zip and none")
        self.assert_files("graph.json")

    def test_results_of_a_batch(self):
        self.picture("a.exr", sample_picture(VALUE))
        batch = ("--each", "*.exr", "-o", "x.png", "--output-dir", "out")
        result = self.value("apply", "Value Add", *batch, "--compression", "zap", code=USAGE)
        self.assert_one_error(result, "--compression zap", "zip and none")
        result = self.value(
            "apply", "Value Add", *batch, "--name", "{stem}.tif", "--compression", "zap", code=USAGE
        )
        self.assert_one_error(result, "--compression zap", "packbits")
        self.assert_files("a.exr", "graph.json")
        # What counts is the format that is written in the end.
        self.value("apply", "Value Add", *batch, "--name", "{stem}.exr", "--compression", "piz")
        self.assertTrue((self.dir / "out/a.exr").exists())


class EndingTest(BeforeWorkTestCase):
    def test_on_the_command_line(self):
        for line in (
            ("apply", "Value Add", "-i", "missing.exr", "-o", "x.xyz"),
            ("apply", "Value Add", "-i", "missing.exr", "-o", "image=x.xyz"),
            ("run", "graph.json", "--output", "raised.image=x.xyz"),
            ("run", "graph.json", "--set", "w.path=x.xyz"),
        ):
            with self.subTest(line=line):
                self.assert_one_error(self.value(*line, code=USAGE), f"{line[-2]} {line[-1]}", ".exr, .tif")
        self.assert_files("graph.json")

    def test_the_last_setting_counts(self):
        result = self.value(
            "run", "graph.json", "--set", "w.path=x.xyz", "--set", "w.path=x.png", code=FILE_ERROR
        )
        self.assert_one_error(result, "missing.exr")

    def test_in_a_document(self):
        for content in (self.graph("out.xyz"), self.graph("out.exr", "w.xyz")):
            self.save("bad.json", content)
            result = self.value("run", "bad.json", code=INVALID)
            self.assert_one_error(result, "bad.json", ".xyz", "its ending names no image format")
        self.assert_files("bad.json", "graph.json")

    def test_a_document_whose_output_is_replaced(self):
        self.save("bad.json", self.graph("out.xyz"))
        result = self.value("run", "bad.json", "--output", "raised.image=x.png", code=FILE_ERROR)
        self.assert_one_error(result, "missing.exr")

    def test_results_of_a_batch_are_named_by_their_template(self):
        self.picture("a.exr", sample_picture(VALUE))
        self.value(
            "apply", "Value Add", "--each", "*.exr", "-o", "x.xyz", "--output-dir", "out",
            "--name", "{stem}.png",
        )
        self.assert_files("a.png", folder=self.dir / "out")


class TraceTest(BeforeWorkTestCase):
    def test_places_that_take_no_file(self):
        self.save("kept.json", b"{}").chmod(0o444)
        for name in ("nowhere/t.json", "/proc/value-trace.json", "kept.json"):
            with self.subTest(name=name):
                result = self.apply("-o", "x.exr", "--trace", name, code=FILE_ERROR)
                self.assert_one_error(result, f"--trace {name}: ")
        self.assertEqual((self.dir / "kept.json").read_bytes(), b"{}")

    def test_looking_leaves_nothing_behind(self):
        self.apply("-o", "nowhere/x.exr", "--trace", "t.json", "--compression", "zap")
        self.assert_files("graph.json")


class RangeTest(BeforeWorkTestCase):
    def test_a_range_the_wrong_way_round(self):
        for given, right in (("3,-2", "-2,3"), ("1,0.5", "0.5,1")):
            with self.subTest(given=given):
                self.assert_one_error(
                    self.apply("--range", given, "-o", "x.exr"), f"--range {given}", f"write --range {right}"
                )

    def test_a_range_without_extent_gets_a_note(self):
        picture = sample_picture(VALUE)
        self.picture("in.exr", picture)
        result = self.value("apply", "Value Add", "-i", "in.exr", "-o", "x.exr", "--range", "2,2")
        self.assert_one_error(result, "--range 2,2", "ends are equal")
        self.assert_picture(self.dir / "x.exr", arithmetic("Add", [picture]))


class BackslashTest(ValueTestCase):
    """In a document a backslash is a separator; in the name of a file that is there, it is a character."""

    NAME = "a\\b.exr"

    def setUp(self):
        super().setUp()
        self.wanted = Picture([[1.0, 2.0]], VALUE)
        self.picture(self.NAME, self.wanted)

    def test_files_that_a_pattern_finds(self):
        self.value("apply", "Value Add", "--each", "a*.exr", "-o", "x.exr", "--output-dir", "out")
        self.assert_picture(self.dir / "out" / "a_b_x.exr", arithmetic("Add", [self.wanted]))

    def test_readers_of_a_document(self):
        self.save("graph.json", document(
            [node("r", "ImageReaderNode", path="none.exr"), node("n", "ImageValueAddNode")],
            [link("r.image", "n.image")], [output("n.image", "x.exr")],
        ))
        sums = arithmetic("Add", [self.wanted])
        self.value("run", "graph.json", "--each", "r=*b.exr", "--output-dir", "out")
        self.assert_picture(self.dir / "out" / "a_b_x.exr", sums)
        for option in (("--input", f"r={self.NAME}"), ("--set", f"r.path={self.NAME}")):
            self.value("run", "graph.json", *option)
            self.assert_picture(self.dir / "x.exr", sums)

    def test_files_that_a_shell_finds(self):
        self.assertEqual(
            json.loads(self.value("stats", self.NAME, "--json").out)["measured"], [1.0, 2.0]
        )
        self.value("apply", "Value Add", "-i", self.NAME, "-o", "x.exr")
        self.save("g\\h.json", document([node("r", "ImageReaderNode", path=self.NAME)]))
        self.value("check", "g\\h.json", code=DONE)

    def test_a_file_in_a_folder_is_still_found(self):
        (self.dir / "sub").mkdir()
        self.picture("sub/c.exr", self.wanted)
        self.value("apply", "Value Add", "-i", "sub\\c.exr", "-o", "x.exr")
