"""Wrong usage, plug-ins that cannot be loaded, outputs that cannot be written, and the help."""

import ctypes.util
import os
from pathlib import Path

from cli_support import (
    FILE_ERROR, PLUGIN_ERROR, USAGE, VALUE, ValueTestCase, arithmetic, document, node, output,
    sample_picture,
)

COMMANDS = ("nodes", "apply", "run", "check", "stats", "doctor", "validate")


def system_library():
    """A shared library that every process has loaded and that is not a node library."""
    with open("/proc/self/maps", encoding="utf-8") as maps:
        for line in maps:
            path = line.split(maxsplit=5)[-1].strip()
            if Path(path).name.startswith(("libc.so", "libc-", "libm.so", "libm-")):
                return path
    return ctypes.util.find_library("m")


class UsageTest(ValueTestCase):
    def test_unknown_command_and_option(self):
        for arguments, culprit in (
            (("zebra",), "zebra"),
            (("--zebra",), "--zebra"),
            (("nodes", "--zebra"), "--zebra"),
            (("check", "--zebra", "x.json"), "--zebra"),
        ):
            with self.subTest(arguments=arguments):
                self.assert_one_error(self.value(*arguments, code=USAGE), culprit)

    def test_no_arguments(self):
        result = self.value(code=None)
        self.assertIn(result.code, (0, USAGE))
        self.assertTrue((result.out + result.err).strip())

    def test_options_without_their_value(self):
        for option in ("--plugin", "--threads", "--max-size", "--device"):
            with self.subTest(option=option):
                self.assert_one_error(self.value("nodes", option, code=USAGE), option)

    def test_json_error_of_wrong_usage(self):
        self.save("graph.json", document([], [], []))
        result = self.value("run", "graph.json", "--json", "--set", "zebra.constant=1", code=USAGE)
        self.assert_json_error(result, "zebra")
        self.assert_names(result, "zebra")


class PluginTest(ValueTestCase):
    def test_missing_file(self):
        result = self.value("nodes", "--plugin", "nothing.so", code=PLUGIN_ERROR)
        self.assert_one_error(result, "nothing.so")

    def test_file_that_is_not_a_library(self):
        for content in (b"", b"just some text", b"\x7fELF and then nothing"):
            with self.subTest(content=content):
                self.save("fake.so", content)
                result = self.value("nodes", "--plugin", "fake.so", code=PLUGIN_ERROR)
                self.assert_one_error(result, "fake.so")

    def test_folder(self):
        (self.dir / "folder.so").mkdir()
        result = self.value("nodes", "--plugin", "folder.so", code=PLUGIN_ERROR)
        self.assert_one_error(result, "folder.so")

    def test_library_without_the_three_entry_points(self):
        library = system_library()
        self.assertIsNotNone(library)
        result = self.value("nodes", "--plugin", library, code=PLUGIN_ERROR)
        self.assert_one_error(result, Path(library).name)

    def test_every_command_that_needs_nodes_fails(self):
        self.picture("in.exr", sample_picture(VALUE))
        self.save("graph.json", document(
            [node("r", "ImageReaderNode", path="in.exr")], [], [output("r.image", "out.exr")]
        ))
        for arguments in (
            ("apply", "Value Add", "-i", "in.exr", "-o", "out.exr"),
            ("run", "graph.json"),
            ("check", "graph.json"),
        ):
            with self.subTest(command=arguments[0]):
                result = self.value(*arguments, "--plugin", "nothing.so", code=PLUGIN_ERROR)
                self.assert_one_error(result, "nothing.so")
        self.assert_files("in.exr", "graph.json")

    def test_json_error(self):
        result = self.value("nodes", "--plugin", "nothing.so", "--json", code=PLUGIN_ERROR)
        self.assert_json_error(result, "nothing.so")

    def test_one_bad_library_of_two(self):
        self.save("fake.so", b"")
        result = self.value(
            "nodes", "--plugin", "fake.so", "--plugin", "nothing.so", code=PLUGIN_ERROR
        )
        self.assertTrue(result.err_lines)


class TargetTest(ValueTestCase):
    def setUp(self):
        super().setUp()
        self.image = sample_picture(VALUE, seed=1)
        self.picture("in.exr", self.image)

    def refuse(self, target, *words, code=FILE_ERROR):
        result = self.value("apply", "Value Add", "-i", "in.exr", "-o", target, code=code)
        self.assert_one_error(result, *words)
        return result

    def test_missing_folder_is_not_created(self):
        self.refuse("no/such/out.exr", "out.exr")
        self.assert_files("in.exr")
        result = self.value(
            "apply", "Value Add", "-i", "in.exr", "-o", "no/out.exr", "--json", code=FILE_ERROR
        )
        self.assert_json_error(result, "out.exr")
        self.assert_files("in.exr")

    def test_target_that_is_a_folder(self):
        (self.dir / "out.exr").mkdir()
        self.refuse("out.exr", "out.exr")
        self.assert_files("in.exr", "out.exr")
        self.assert_files(folder=self.dir / "out.exr")

    def test_folder_that_is_a_file(self):
        self.save("file", b"a file")
        self.refuse("file/out.exr", "out.exr")
        self.assert_files("in.exr", "file")

    def test_folder_that_takes_no_files(self):
        if os.geteuid() == 0:
            # Rights do not bind the administrator, the kernel's own folder does.
            self.refuse("/proc/value-out.exr", "value-out.exr")
            return
        closed = self.dir / "closed"
        closed.mkdir()
        closed.chmod(0o555)
        self.addCleanup(closed.chmod, 0o755)
        self.refuse("closed/out.exr", "out.exr")
        self.assert_files(folder=closed)

    def test_unknown_format(self):
        for target in ("out.zebra", "out"):
            with self.subTest(target=target):
                result = self.value(
                    "apply", "Value Add", "-i", "in.exr", "-o", target, code=None
                )
                self.assertIn(result.code, (USAGE, FILE_ERROR), str(result))
                self.assert_one_error(result, target)
                self.assert_files("in.exr")

    def test_name_that_is_too_long(self):
        self.refuse("z" * 300 + ".exr", "zzz")
        self.assert_files("in.exr")

    def test_longest_name_that_the_folder_takes(self):
        # The temporary name beside the target must not be what fails.
        name = "y" * 251 + ".exr"
        self.value("apply", "Value Add", "-i", "in.exr", "-o", name)
        self.assert_picture(self.dir / name, arithmetic("Add", [self.image]))
        self.assert_files("in.exr", name)

    def test_link_as_target(self):
        (self.dir / "store").mkdir()
        (self.dir / "out.exr").symlink_to(self.dir / "store" / "real.exr")
        self.value("apply", "Value Add", "-i", "in.exr", "-o", "out.exr")
        self.assert_picture(self.dir / "out.exr", arithmetic("Add", [self.image]))

    def test_failed_output_keeps_the_old_file(self):
        self.save("out.exr", b"old")
        self.value(
            "apply", "Value Add", "-i", "in.exr", "-i", "missing.exr", "-o", "out.exr",
            code=FILE_ERROR,
        )
        self.assertEqual((self.dir / "out.exr").read_bytes(), b"old")
        self.assert_files("in.exr", "out.exr")


class HelpTest(ValueTestCase):
    def test_program(self):
        result = self.value("--help")
        for command in COMMANDS:
            self.assertIn(command, result.out)
        self.assert_quiet(result)

    def test_every_command_shows_an_example(self):
        for command in COMMANDS:
            with self.subTest(command=command):
                result = self.value(command, "--help")
                self.assert_quiet(result)
                self.assertIn("example", result.out.lower())
                lines = [line for line in result.out.splitlines() if f"value {command}" in line]
                self.assertGreaterEqual(len(lines), 1, str(result))

    def test_options_of_all_commands_are_listed(self):
        for command in COMMANDS:
            text = self.value(command, "--help").out
            for option in ("--plugin", "--threads", "--max-size", "--device", "--any-device", "--quiet", "--json"):
                with self.subTest(command=command, option=option):
                    self.assertIn(option, text)

    def test_own_options_are_listed(self):
        for command, options in (
            ("apply", ("-i", "-o", "--set", "--range")),
            ("run", ("--set", "--input", "--output", "--each", "--output-dir", "--jobs")),
        ):
            text = self.value(command, "--help").out
            for option in options:
                with self.subTest(command=command, option=option):
                    self.assertIn(option, text)
