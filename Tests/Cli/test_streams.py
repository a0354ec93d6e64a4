"""What the program says: lines that are short and safe to show, and streams and files that take
no more."""

import json
import os
import resource
import subprocess
import unicodedata

from cli_support import (
    DONE, FILE_ERROR, INVALID, NODE_ERROR, PLUGIN_ERROR, USAGE, VALUE, ValueTestCase, document,
    environment_with, find_program, node, output, run_value, sample_picture,
)

LONGEST = 300

# A sequence that clears the screen, a bell, DEL, a control character of two bytes, a mark that
# turns the direction of what follows, a line separator.
HOSTILE = "a\x1b[2Jb\x07c\x7fd\u009be\u202ef\u2028g"
ESCAPED = r"a\u001b[2Jb\u0007c\u007fd\u009be\u202ef\u2028g"


class LineTestCase(ValueTestCase):
    def assert_safe(self, result):
        """Nothing on standard error moves the cursor or is too long to read."""
        for line in result.err.split("\n"):
            self.assertLessEqual(len(line), LONGEST, line)
            for letter in line:
                self.assertNotIn(unicodedata.category(letter), ("Cc", "Cf", "Zl", "Zp"), ascii(line))
            self.assertNotIn("\ufffd", line)

    def refuse(self, *arguments, code):
        result = self.value(*arguments, code=code)
        self.assert_safe(result)
        self.assertEqual(len(result.err_lines), 1, str(result))
        return result


class SafeLineTest(LineTestCase):
    def test_names_on_the_command_line(self):
        self.save("graph.json", document([node("n", "NumberNode")]))
        for arguments, code in (
            (("nodes", HOSTILE), USAGE),
            (("check", HOSTILE), FILE_ERROR),
            (("stats", HOSTILE + ".exr"), FILE_ERROR),
            (("apply", HOSTILE, "-o", "x.exr"), USAGE),
            (("apply", "ImageWavesNode", "--set", HOSTILE, "-o", "x.exr"), USAGE),
            (("run", "graph.json", "--set", HOSTILE + "=1"), USAGE),
            (("run", "graph.json", "--input", HOSTILE + "=x.exr"), USAGE),
            (("validate", HOSTILE), FILE_ERROR),
        ):
            with self.subTest(arguments=arguments):
                self.assertIn(ESCAPED, self.refuse(*arguments, code=code).err)
        self.refuse("nodes", "--" + HOSTILE, code=USAGE)

    def test_names_in_a_document(self):
        for content in (
            document([node("n", HOSTILE)]),
            document([node("n", "NumberNode", **{HOSTILE: 1})]),
            document([node("n", "ImageReaderNode", path="x.exr", range=HOSTILE)]),
            document([node("n", "NumberNode")], [{"from": "n.number", "to": HOSTILE + ".x"}]),
            {**document([]), HOSTILE: 1},
        ):
            self.save("graph.json", content)
            for command in ("check", "run"):
                with self.subTest(content=content, command=command):
                    self.assertIn(ESCAPED, self.refuse(command, "graph.json", code=INVALID).err)

    def test_a_line_feed_does_not_start_a_line(self):
        result = self.refuse("check", "a\nvalue: all is well\r.json", code=FILE_ERROR)
        self.assertIn(r"a\nvalue: all is well\u000d.json", result.err)

    def test_bytes_that_are_not_utf_8(self):
        name = os.fsdecode(b"\xff\xc0\xaf.exr")
        ended = subprocess.run(
            [str(find_program()), "stats", "--json", name], cwd=self.dir,
            env=environment_with({}), capture_output=True, timeout=120, check=False,
        )
        self.assertEqual(ended.returncode, FILE_ERROR)
        self.assertIn(rb"\xff\xc0\xaf.exr", ended.stderr)
        answer = json.loads(ended.stdout.decode("utf-8"))
        self.assertIn(r"\xff\xc0\xaf.exr", answer["error"])

    def test_printed_names(self):
        self.save(HOSTILE + ".json", document([]))
        result = self.value("check", HOSTILE + ".json")
        self.assertIn(ESCAPED + ".json is valid\n", result.out)

    def test_notes(self):
        self.picture("in.exr", sample_picture(VALUE))
        name = "out" + "\x1b[31m" * 20 + ".png"
        result = self.value("apply", "Value Add", "-i", "in.exr", "-o", name)
        self.assert_safe(result)
        self.assert_names(result, "note", r"out\u001b[31m\u001b[31m")


class ShortLineTest(LineTestCase):
    def test_the_culprit_and_what_would_be_right_are_seen(self):
        name = "x" * 5000
        result = self.refuse("apply", "Value Add", "-i", f"{name}=y", "-o", "out.exr", code=USAGE)
        self.assertRegex(result.err, r"no input \"x+\.\.\.x+\"; it has image\n$")
        self.assertEqual(len(result.err.rstrip("\n")), LONGEST)
        result = self.refuse("apply", "Value Add", "--set", "constant=" + "z" * 4000, "-o", "out.exr",
                             code=USAGE)
        self.assertRegex(result.err, r"--set constant=z+\.\.\.z+: .*takes a number, not \"z+\.\.\.z*\"")

    def test_documents(self):
        name = "y" * 1000000
        for content, words in (
            (document([node("n", name)]), ("graph.json", '"n"', "there is no node type")),
            (document([node(name, "FlagNoed")]), ("graph.json", "FlagNoed", "FlagNode")),
            (document([node("n", "NumberNode", value=name)]), ("n.value", "it takes a number")),
        ):
            self.save("graph.json", content)
            with self.subTest(words=words):
                self.assert_names(self.value("check", "graph.json", code=INVALID), *words)
                self.assert_safe(self.value("check", "graph.json", code=INVALID))
                (answer,) = self.value("run", "graph.json", "--json", code=INVALID).json_values()
                self.assertLessEqual(len(answer["error"]), LONGEST)


class StandardOutputTest(ValueTestCase):
    COMMANDS = (
        ("--help",),
        ("nodes", "--help"),
        ("nodes",),
        ("nodes", "Value Clamp", "--json"),
        ("check", "graph.json"),
        ("check", "graph.json", "--json"),
        ("run", "graph.json", "--json"),
        ("stats", "in.exr"),
        ("stats", "in.exr", "--json"),
        ("selftest", "Value Minimum"),
        ("selftest", "Value Minimum", "--json"),
    )

    def setUp(self):
        super().setUp()
        self.picture("in.exr", sample_picture(VALUE))
        self.save("graph.json", document(
            [node("r", "ImageReaderNode", path="in.exr")], [], [output("r.image", "out.exr")]
        ))

    def test_one_that_is_full_is_a_file_error(self):
        for arguments in self.COMMANDS:
            with self.subTest(arguments=arguments), open("/dev/full", "wb") as full:
                result = self.value(*arguments, stdout=full, code=FILE_ERROR)
                self.assert_one_error(result, "standard output", "No space left on device")
        self.assertTrue((self.dir / "out.exr").is_file())

    def test_one_that_is_closed_is_a_file_error(self):
        for arguments in (("nodes",), ("check", "graph.json", "--json")):
            with self.subTest(arguments=arguments):
                result = self.value(*arguments, prepare=lambda: os.close(1), code=FILE_ERROR)
                self.assert_one_error(result, "standard output")

    def test_a_closed_one_does_not_lead_into_a_file_of_the_run(self):
        result = self.value("run", "graph.json", "--json", prepare=lambda: os.close(1), code=FILE_ERROR)
        self.assert_one_error(result, "standard output")
        self.assert_picture(self.dir / "out.exr", sample_picture(VALUE))
        self.assert_files("graph.json", "in.exr", "out.exr")

    def test_a_program_that_prints_nothing_does_not_care(self):
        with open("/dev/full", "wb") as full:
            self.assert_quiet(self.value("run", "graph.json", stdout=full))
            self.assert_quiet(self.value("check", "graph.json", "--quiet", stdout=full))

    def test_a_worse_error_keeps_its_code(self):
        with open("/dev/full", "wb") as full:
            result = self.value(
                "nodes", "--json", "--plugin", "nothing.so", stdout=full, code=PLUGIN_ERROR
            )
        self.assertEqual(len(result.err_lines), 2, str(result))
        self.assert_names(result, "nothing.so")
        self.assert_names(result, "standard output")

    def test_a_pipe_that_nobody_reads_any_more_is_not_an_error(self):
        for arguments in self.COMMANDS:
            with self.subTest(arguments=arguments):
                reader, writer = os.pipe()
                os.close(reader)
                try:
                    result = self.value(*arguments, stdout=writer)
                finally:
                    os.close(writer)
                self.assert_quiet(result)
        self.assertTrue((self.dir / "out.exr").is_file())

    def test_an_error_is_not_lost_with_the_pipe(self):
        reader, writer = os.pipe()
        os.close(reader)
        try:
            result = self.value("check", "missing.json", "--json", stdout=writer, code=FILE_ERROR)
        finally:
            os.close(writer)
        self.assert_one_error(result, "missing.json")


class FileSizeTest(ValueTestCase):
    @staticmethod
    def limit(bytes_written):
        """For a process that may write files of so many bytes and no larger ones."""
        _, highest = resource.getrlimit(resource.RLIMIT_FSIZE)
        return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (bytes_written, highest))

    def test_an_image_beyond_the_largest_file_is_a_file_error(self):
        self.picture("in.exr", sample_picture(VALUE, 200, 100, span=(0, 1)))
        # Some encoders report that they could not write everything, others do not.
        for name in ("out.exr", "out.png", "out.tif", "out.hdr", "out.tga"):
            with self.subTest(name=name):
                result = self.value(
                    "apply", "Value Add", "-i", "in.exr", "-o", name, "--type", "half",
                    prepare=self.limit(1024), code=FILE_ERROR,
                )
                errors = [line for line in result.err_lines if "value: note: " not in line]
                self.assertEqual(len(errors), 1, str(result))
                self.assertRegex(errors[0], f'cannot write "[^"]*{name}"')
                self.assert_files("in.exr")

    def test_the_other_outputs_are_written(self):
        self.picture("large.exr", sample_picture(VALUE, 300, 300))
        self.picture("small.exr", sample_picture(VALUE, 2, 2))
        self.save("graph.json", document(
            [node("l", "ImageReaderNode", path="large.exr"), node("s", "ImageReaderNode", path="small.exr")],
            [],
            [output("l.image", "l.exr"), output("s.image", "s.exr")],
        ))
        result = self.value("run", "graph.json", prepare=self.limit(100000), code=FILE_ERROR)
        self.assert_one_error(result, "l.image", "l.exr")
        self.assert_files("graph.json", "large.exr", "small.exr", "s.exr")

    def test_standard_output_beyond_it(self):
        with open(self.dir / "answer", "wb") as answer:
            result = self.value("nodes", stdout=answer, prepare=self.limit(100), code=FILE_ERROR)
        self.assert_one_error(result, "standard output")
        self.assertEqual((self.dir / "answer").stat().st_size, 100)


class ClosedStreamsTest(ValueTestCase):
    def test_errors_without_standard_error(self):
        result = run_value("nodes", "zebra", cwd=self.dir, prepare=lambda: os.close(2))
        self.assertEqual((result.code, result.out, result.err), (USAGE, "", ""))

    def test_self_tests_to_a_pipe_that_nobody_reads(self):
        reader, writer = os.pipe()
        os.close(reader)
        try:
            result = self.value("selftest", "Value Steps", stdout=writer, code=NODE_ERROR)
        finally:
            os.close(writer)
        self.assert_one_error(result, "Value Steps")
        self.assertEqual(self.value("selftest", "Value Steps", "--expected").code, DONE)
