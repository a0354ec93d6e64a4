"""Mistyped command lines: one line that says what is wrong and what would be right, and the advice
works."""

import shlex
import time

from cli_support import (
    DONE, FILE_ERROR, SANITIZED, SLOWER, USAGE, VALUE, ValueTestCase, document, link, node, output,
    sample_picture,
)
from misspelt_lines import GROUPS


class MisspeltTestCase(ValueTestCase):
    def prepare(self):
        for entry in self.dir.iterdir():
            if entry.is_file():
                entry.unlink()
        self.picture("terrain.exr", sample_picture(VALUE, 8, 8))
        self.picture("mask.exr", sample_picture(VALUE, 8, 8, seed=2))
        self.save("graph.json", document(
            [
                node("height", "ImageReaderNode", path="terrain.exr"),
                node("raised", "ImageValueAddNode", constant=0.25),
                node("limited", "ImageValueClampNode", high=1),
            ],
            [link("height.image", "raised.image"), link("raised.image", "limited.image")],
            [output("limited.image", "out.exr")],
        ))

    def check_group(self, name):
        for typed, remedy, corrected in GROUPS[name]:
            with self.subTest(line=typed):
                self.prepare()
                result = self.value(*shlex.split(typed), code=USAGE)
                self.assert_one_error(result, remedy)
                if corrected:
                    self.value(*shlex.split(corrected), code=DONE)


class MisspeltCommands(MisspeltTestCase):
    def test_lines(self):
        self.check_group("commands")


class MisspeltNodesOfApply(MisspeltTestCase):
    def test_lines(self):
        self.check_group("apply_names")


class MisspeltFilesOfApply(MisspeltTestCase):
    def test_lines(self):
        self.check_group("apply_files")


class MisspeltOptionsOfApply(MisspeltTestCase):
    def test_lines(self):
        self.check_group("apply_options")


class MisspeltRun(MisspeltTestCase):
    def test_lines(self):
        self.check_group("run")


class MisspeltOthers(MisspeltTestCase):
    def test_lines(self):
        self.check_group("others")


class TableTest(ValueTestCase):
    def test_holds_many_different_lines(self):
        lines = [typed for group in GROUPS.values() for typed, _, _ in group]
        self.assertGreaterEqual(len(lines), 200)
        self.assertEqual(len(set(lines)), len(lines))


class OrderTest(MisspeltTestCase):
    def setUp(self):
        super().setUp()
        self.prepare()

    def test_the_first_error_is_told(self):
        result = self.value("apply", "Add", "--zebra", "-o", "x.exr", "--yak", code=USAGE)
        self.assert_one_error(result, "zebra")
        self.assertNotIn("yak", result.err)
        result = self.value("run", "one.json", "two.json", "three.json", code=USAGE)
        self.assert_one_error(result, "two.json")
        self.assertNotIn("three.json", result.err)

    def test_words_that_name_commands_are_words_behind_a_command(self):
        result = self.value("nodes", "check", "stats", code=USAGE)
        self.assert_one_error(result, "check")

    def test_options_that_look_like_files_stay_usable(self):
        self.value("apply", "Value Add", "-iterrain.exr", "-ox.exr", "--set=constant=0.5")
        self.value("apply", "--", "Value Add", code=USAGE)
        self.value("run", "--set", "raised.constant=-1", "--", "graph.json")

    def test_long_words_take_no_time(self):
        word = "a" * 100_000
        started = time.monotonic()
        for line in (
            (word,),
            ("--" + word,),
            ("nodes", word),
            ("apply", word, "-i", "terrain.exr", "-o", "x.exr"),
            ("apply", "Value Add", "-i", "terrain.exr", "-o", "x.exr", "--set", word + "=1"),
            ("apply", "Value Add", "-i", "terrain.exr", "-o", "x.exr", "--type", word),
            ("run", "graph.json", "--set", word + ".constant=1"),
        ):
            with self.subTest(line=line[0][:20]):
                result = self.value(*line, code=USAGE)
                self.assertEqual(len(result.err_lines), 1)
                self.assertLess(len(result.err_lines[0]), 600)
        self.assertLess(time.monotonic() - started, 10 * (SLOWER if SANITIZED else 1))

    def test_misspelt_endings(self):
        for target, closest in (("x.pgn", ".png"), ("x.exrr", ".exr"), ("x.tfif", ".tif"), ("x.jepg", ".jpeg")):
            with self.subTest(target=target):
                result = self.value(
                    "apply", "Value Add", "-i", "terrain.exr", "-o", target, code=None
                )
                self.assertIn(result.code, (USAGE, FILE_ERROR))
                self.assert_one_error(result, target, f'"{closest}"')
        self.assertFalse((self.dir / "x.pgn").exists())

    def test_json_carries_the_error(self):
        result = self.value("aply", "--json", code=USAGE)
        self.assert_json_error(result, "value apply")


class HelpTest(MisspeltTestCase):
    def test_help_is_found_wherever_it_is_asked_for(self):
        expected = self.value("run", "--help").out
        self.assertIn("GRAPH", expected)
        for line in (("help", "run"), ("--help", "run"), ("run", "help"), ("run", "-h")):
            with self.subTest(line=line):
                self.assertEqual(self.value(*line).out, expected)
        self.assertEqual(self.value("help").out, self.value("--help").out)

    def test_a_document_of_that_name_is_run(self):
        self.save("help", document([]))
        self.value("check", "help")
