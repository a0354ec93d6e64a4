"""What "-" stands for: images and documents from standard input, images to standard output."""

import json
import os
import subprocess

from cli_support import (
    DONE, FILE_ERROR, INVALID, USAGE, VALUE, Result, ValueTestCase, arithmetic, document,
    environment_with, find_program, link, node, output, read_file, sample_picture,
)


class PipeTestCase(ValueTestCase):
    def setUp(self):
        super().setUp()
        self.source = sample_picture(VALUE, seed=70)
        self.picture("in.exr", self.source)

    def pipe(self, *arguments, given=b"", code=DONE):
        """Runs the program with bytes on standard input; standard output stays bytes."""
        ended = subprocess.run(
            [str(find_program()), *map(str, arguments)], cwd=self.dir, env=environment_with(None),
            input=given, capture_output=True, timeout=600, check=False,
        )
        result = Result(
            arguments, ended.returncode, ended.stdout.decode("utf-8", "replace"),
            ended.stderr.decode("utf-8", "replace"),
        )
        result.bytes = ended.stdout
        self.assertEqual(result.code, code, str(result))
        return result

    def read(self, name="in.exr"):
        return (self.dir / name).read_bytes()


class ImagesTest(PipeTestCase):
    def test_from_one_end_to_the_other(self):
        result = self.pipe(
            "apply", "Value Add", "-i", "-", "--set", "constant=2", "-o", "-", "--format", "exr",
            given=self.read(),
        )
        self.assert_quiet(result)
        (self.dir / "out.exr").write_bytes(result.bytes)
        self.assert_picture(self.dir / "out.exr", arithmetic("Add", [self.source], 2.0))
        self.assert_files("in.exr", "out.exr")

    def test_formats_are_told_by_their_content(self):
        for ending in ("exr", "tif", "hdr", "png"):
            with self.subTest(ending=ending):
                self.value("apply", "Value Add", "-i", "in.exr", "-o", f"stored.{ending}")
                stored = read_file(self.dir / f"stored.{ending}").data
                result = self.pipe(
                    "apply", "Value Add", "-i", "image=-", "-o", "image=-", "--format", "." + ending,
                    given=self.read(f"stored.{ending}"),
                )
                (self.dir / f"again.{ending}").write_bytes(result.bytes)
                self.assert_samples(read_file(self.dir / f"again.{ending}").data, stored)

    def test_a_chain_of_programs(self):
        program = find_program()
        line = (
            f"cat in.exr | '{program}' apply 'Value Add' -i - --set constant=2 -o - --format exr"
            f" | '{program}' apply 'Value Multiply' -i - --set constant=3 -o out.exr"
        )
        subprocess.run(
            ["bash", "-o", "pipefail", "-c", line], cwd=self.dir, env=environment_with(None),
            timeout=600, check=True,
        )
        raised = arithmetic("Add", [self.source], 2.0)
        self.assert_picture(self.dir / "out.exr", arithmetic("Multiply", [raised], 3.0))

    def test_the_reader_of_a_document(self):
        self.save("graph.json", document(
            [node("r", "ImageReaderNode", path="none.exr"), node("add", "ImageValueAddNode", constant=1)],
            [link("r.image", "add.image", 0)], [output("add.image", "unused.tif")],
        ))
        result = self.pipe(
            "run", "graph.json", "--input", "r=-", "--output", "add.image=-", "--format", "exr",
            given=self.read(),
        )
        (self.dir / "out.exr").write_bytes(result.bytes)
        self.assert_picture(self.dir / "out.exr", arithmetic("Add", [self.source], 1.0))
        self.assert_files("graph.json", "in.exr", "out.exr")

    def test_an_image_that_stays_while_files_change(self):
        for name in ("a", "b"):
            self.picture(f"{name}.exr", sample_picture(VALUE, seed=ord(name)))
        self.pipe(
            "apply", "Value Subtract", "--each", "[ab].exr", "-i", "-", "-o", "less.exr",
            "--output-dir", "results", given=self.read(),
        )
        for name in ("a", "b"):
            self.assert_picture(
                self.dir / f"results/{name}_less.exr",
                arithmetic("Subtract", [sample_picture(VALUE, seed=ord(name)), self.source]),
            )

    def test_what_is_no_image(self):
        for given in (b"", b"no image"):
            with self.subTest(given=given):
                result = self.pipe(
                    "apply", "Value Add", "-i", "-", "-o", "out.exr", given=given, code=FILE_ERROR
                )
                self.assert_one_error(result, "stdin")
                self.assert_files("in.exr")

    def test_a_file_in_the_place_of_standard_input(self):
        for command in (("stats", "-"), ("apply", "Value Add", "-i", "-", "-o", "out.exr")):
            with self.subTest(command=command):
                with open(self.dir / "in.exr", "rb") as stream:
                    ended = subprocess.run(
                        [str(find_program()), *command], cwd=self.dir, env=environment_with(None),
                        stdin=stream, capture_output=True, timeout=600, check=False,
                    )
                self.assertEqual((ended.returncode, ended.stderr), (DONE, b""))

    def test_what_cannot_be_read_is_a_file_error(self):
        for command in (
            ("stats", "-"), ("apply", "Value Add", "-i", "-", "-o", "out.exr"), ("check", "-"),
        ):
            with self.subTest(command=command):
                ended = subprocess.run(
                    [str(find_program()), *command], cwd=self.dir, env=environment_with(None),
                    stdin=os.open(self.dir, os.O_RDONLY), capture_output=True, text=True,
                    timeout=600, check=False,
                )
                self.assertEqual(ended.returncode, FILE_ERROR, ended.stderr)
                self.assertEqual(len(ended.stderr.splitlines()), 1, ended.stderr)

    def test_a_folder_for_temporary_files_that_is_not_there(self):
        result = self.value(
            "apply", "Value Add", "-i", "in.exr", "-o", "-", "--format", "png", code=FILE_ERROR,
            environment={"TMPDIR": "/nowhere/at/all"},
        )
        self.assert_one_error(result, "TMPDIR", "/nowhere/at/all")

    def test_messages_call_it_standard_output(self):
        self.value("apply", "Value Add", "-i", "in.exr", "--set", "constant=9", "-o", "high.exr")
        result = self.pipe(
            "apply", "Value Add", "-i", "high.exr", "-o", "-", "--format", "png"
        )
        self.assert_names(result, "note", "standard output", "cut")
        self.assertNotIn("/value-", result.err)

    def test_nothing_comes_out_where_it_fails(self):
        (self.dir / "in.exr").write_bytes(b"no image")
        result = self.pipe(
            "apply", "Value Add", "-i", "in.exr", "-o", "-", "--format", "png", code=FILE_ERROR
        )
        self.assertEqual(result.bytes, b"")


class DocumentsTest(PipeTestCase):
    def content(self, path="in.exr", constant=1.0):
        return json.dumps(document(
            [node("r", "ImageReaderNode", path=path),
             node("add", "ImageValueAddNode", constant=constant)],
            [link("r.image", "add.image", 0)], [output("add.image", "out.exr")],
        )).encode()

    def test_paths_start_from_the_working_directory(self):
        self.assert_quiet(self.pipe("run", "-", given=self.content()))
        self.assert_picture(self.dir / "out.exr", arithmetic("Add", [self.source], 1.0))

    def test_once_per_file(self):
        for name in ("a", "b"):
            self.picture(f"{name}.exr", sample_picture(VALUE, seed=ord(name)))
        self.assert_quiet(self.pipe(
            "run", "-", "--each", "r=[ab].exr", "--output-dir", "results", given=self.content()
        ))
        for name in ("a", "b"):
            self.assert_picture(
                self.dir / f"results/{name}_out.exr",
                arithmetic("Add", [sample_picture(VALUE, seed=ord(name))], 1.0),
            )

    def test_errors_name_standard_input(self):
        self.assert_one_error(self.pipe("run", "-", given=b"{", code=INVALID), "standard input")
        self.assert_one_error(self.pipe("run", "-", given=b"", code=INVALID), "standard input")


class UsageTest(PipeTestCase):
    def assert_refused(self, arguments, *words):
        result = self.pipe(*arguments, given=self.read(), code=USAGE)
        self.assert_one_error(result, *words)
        self.assertEqual(result.bytes, b"")
        self.assert_files("in.exr")

    def test_an_image_needs_a_format(self):
        self.assert_refused(
            ("apply", "Value Add", "-i", "in.exr", "-o", "-"), "--format", "standard output"
        )

    def test_a_format_that_there_is_not(self):
        self.assert_refused(
            ("apply", "Value Add", "-i", "in.exr", "-o", "-", "--format", "tiif"), "tiif", "the closest is tif"
        )

    def test_a_format_for_a_file(self):
        self.assert_refused(
            ("apply", "Value Add", "-i", "in.exr", "-o", "x.exr", "--format", "png"), "--format"
        )

    def test_one_answer(self):
        self.pipe(
            "apply", "Value Add", "-i", "in.exr", "-o", "-", "--format", "png", "--json", code=USAGE
        )

    def test_standard_input_is_read_once(self):
        self.assert_refused(
            ("apply", "Value Add", "-i", "-", "-i", "-", "-o", "x.exr"), "standard input", "twice"
        )

    def test_two_readers_of_standard_input(self):
        self.save("two.json", document(
            [node("a", "ImageReaderNode"), node("b", "ImageReaderNode"),
             node("sum", "ImageValueAddNode")],
            [link("a.image", "sum.image", 0), link("b.image", "sum.image", 1)],
            [output("sum.image", "out.exr")],
        ))
        result = self.pipe(
            "run", "two.json", "--input", "a=-", "--input", "b=-", given=self.read(), code=USAGE
        )
        self.assert_one_error(result, "b=-", "standard input", "twice")
        result = self.pipe("check", "-", "-", given=b"{}", code=USAGE)
        self.assert_one_error(result, "twice")

    def test_standard_output_takes_one_image(self):
        self.assert_refused(
            ("apply", "Value Compare", "-i", "in.exr", "-i", "in.exr", "-o", "image_a_g_b=-",
             "-o", "image_a_l_b=-", "--format", "png"), "twice",
        )
        self.pipe(
            "apply", "Value Add", "--each", "in.exr", "-o", "-", "--format", "png",
            "--output-dir", "results", code=USAGE,
        )
