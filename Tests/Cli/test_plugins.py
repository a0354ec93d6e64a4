"""Node libraries: where they are found, how they are examined, and what becomes of a run that one of them ends."""

import json
import os
import shutil
import signal
import subprocess
from pathlib import Path

from cli_support import (
    DONE, NODE_ERROR, PLUGIN_ERROR, SANITIZED, VALUE, ValueTestCase, document, environment_with, find_program,
    link, node, output, sample_picture,
)
from test_validate import find_library

LIMIT_S = 120

# What is found before a library is loaded, with words of the one line that says so.
REFUSED = {
    "LoadExits": ["exit code 0", "while loading it"],
    "LoadAborts": ["signal 6", "while loading it"],
    "LoadHangs": ["does not come back within 10 s", "while loading it"],
    "LoadPrints": ["standard output", "the shelf is bare", "while loading it"],
    "LoadCloses": ["descriptor 2 (standard error) is closed", "after loading it"],
    "LoadClosesAll": ["closes descriptors"],
    "LoadRounds": ["rounded upward", "after loading it"],
    "LoadFlushesToZero": ["after loading it"],
    "LoadChangesMask": ["umask", "after loading it"],
    "LoadChangesLocale": ["locale", "C.UTF-8"],
    "EntryQuickExits": ["exit code 0", "while reading its catalogue"],
    "EntryChangesFolder": ["the working directory is \"/\"", "after reading its catalogue"],
    "EntryChangesSignal": ["SIGINT", "after reading its catalogue"],
    "NodeEnds": ["exit code 0", "making a node of type ImagePartsNode"],
    "NodeTraps": ["raises a signal", "making a node of type ImagePartsNode"],
    "NodeCrashesAtItsEnd": ["signal 11", "destroying a node of type ImagePartsNode"],
    "UnloadEnds": ["exit code 0", "while letting it go"],
}

# What ends a run: the function that is named.
ENDS = {
    "EvaluateExits": "exit(0)",
    "EvaluateEnds": "_exit(0)",
    "EvaluateQuickExits": "quick_exit(0)",
    "EvaluateEndsByErrx": "ended the program",
}

CRASHES = {
    "EvaluateAborts": signal.SIGABRT,
    "EvaluateCrashes": signal.SIGSEGV,
    "EvaluateUsesUpStack": signal.SIGSEGV,
}


class PluginTestCase(ValueTestCase):
    def setUp(self):
        super().setUp()
        self.cache = self.dir / "cache"
        self.plugins = self.dir / "plugins"
        self.plugins.mkdir()

    def environment(self, *folders):
        return {
            "XDG_CACHE_HOME": str(self.cache),
            "VALUE_PLUGIN_PATH": ":".join(str(folder) for folder in folders) if folders else None,
        }

    def run_with(self, *arguments, folders=(), code=DONE):
        return self.value(*arguments, environment=self.environment(*folders), code=code)

    def copy(self, name, folder=None, as_name=None):
        target = (folder or self.plugins) / (as_name or f"{name}.so")
        shutil.copy(find_library(name), target)
        return target

    def classes(self, result):
        return [entry["class"] for entry in result.json_values()[0]["nodes"]]


class SearchTest(PluginTestCase):
    def test_plugin_adds_to_the_program_s_own(self):
        classes = self.classes(self.run_with("nodes", "--json", "--plugin", find_library("TinyLibrary")))
        self.assertIn("PartsNode7", classes)
        self.assertIn("ImageValueAddNode", classes)

    def test_no_default_plugins_leaves_the_others_out(self):
        self.copy("BehavesWell")
        classes = self.classes(self.run_with(
            "nodes", "--json", "--plugin", find_library("TinyLibrary"), "--no-default-plugins",
            folders=[self.plugins],
        ))
        self.assertIn("PartsNode7", classes)
        self.assertIn("ImageReaderNode", classes)
        self.assertNotIn("ImageValueAddNode", classes)
        self.assertNotIn("ImagePartsNode", classes)

    def test_every_library_of_every_folder_is_loaded(self):
        other = self.dir / "other"
        other.mkdir()
        self.copy("TinyLibrary")
        self.copy("BehavesWell", other)
        (other / "notes.txt").write_text("no library")
        result = self.run_with("nodes", "--json", folders=[self.plugins, "", other])
        self.assert_quiet(result)
        for name in ("PartsNode7", "ImagePartsNode", "ImageValueAddNode"):
            self.assertIn(name, self.classes(result))

    def test_one_file_counts_once(self):
        library = self.copy("TinyLibrary")
        (self.plugins / "again.so").symlink_to(library)
        os.link(library, self.dir / "hard.so")
        result = self.run_with(
            "nodes", "--json", "--plugin", library, "--plugin", "hard.so", folders=[self.plugins, self.plugins]
        )
        self.assert_quiet(result)
        self.assertEqual(self.classes(result).count("PartsNode7"), 1)

    def test_the_own_library_may_be_named(self):
        own = find_program().parent / "Value.so"
        self.assert_quiet(self.run_with("nodes", "--plugin", own))
        self.assertIn(
            "ImageValueAddNode",
            self.classes(self.run_with("nodes", "--json", "--no-default-plugins", "--plugin", own)),
        )

    def test_two_libraries_with_one_type_are_an_error_that_names_both(self):
        first = self.copy("BehavesWell", as_name="first.so")
        second = self.copy("Noisy", self.dir, as_name="second.so")
        for folders, arguments in (
            ([self.plugins], ["--plugin", second]),
            ([self.plugins, self.dir], []),
            ([], ["--plugin", first, "--plugin", second]),
        ):
            result = self.run_with("nodes", *arguments, folders=folders, code=PLUGIN_ERROR)
            errors = [line for line in result.err_lines if not line.startswith("value: note")]
            self.assertEqual(len(errors), 1, str(result))
            for word in ("first.so", "second.so", "ImagePartsNode"):
                self.assertIn(word, errors[0])

    def test_a_bad_file_in_a_folder_is_left_out_with_a_note(self):
        self.copy("TinyLibrary")
        self.copy("LoadExits")
        (self.plugins / "fake.so").write_text("just some text")
        (self.plugins / "dangling.so").symlink_to("nowhere.so")
        (self.plugins / "folder.so").mkdir()
        result = self.run_with("nodes", "--json", folders=[self.plugins])
        self.assertIn("PartsNode7", self.classes(result))
        self.assertEqual(len(result.err_lines), 3, str(result))
        for name, line in zip(("LoadExits.so", "dangling.so", "fake.so"), result.err_lines):
            self.assertTrue(line.startswith("value: note: "), line)
            self.assertIn(name, line)
            self.assertIn("left out", line)

    def test_the_same_file_named_by_plugin_is_an_error(self):
        bad = self.copy("LoadExits")
        result = self.run_with("nodes", "--plugin", bad, folders=[self.plugins], code=PLUGIN_ERROR)
        self.assert_one_error(result, "LoadExits.so", "exit code 0")

    def test_a_trusted_library_whose_names_throw_is_no_clash(self):
        bad = self.copy("ThrowsInName")
        result = self.run_with("nodes", "--json", "--trust-plugins", folders=[self.plugins])
        self.assertIn("ImageValueAddNode", self.classes(result))
        self.assert_one_error(result, "value: note: ", "ThrowsInName.so", "the shelf is bare", "it is left out")
        named = self.run_with("nodes", "--trust-plugins", "--plugin", bad, code=PLUGIN_ERROR)
        self.assert_one_error(named, "ThrowsInName.so", "the shelf is bare")
        self.assertNotIn("leave one of the two out", named.err)

    def test_a_library_with_one_type_twice_is_no_clash_either(self):
        self.copy("TwinNumbers")
        result = self.run_with("nodes", "--trust-plugins", folders=[self.plugins])
        self.assert_one_error(result, "value: note: ", "TwinNumbers.so", "it is left out")

    def test_a_missing_folder_is_a_note(self):
        result = self.run_with("nodes", folders=["nowhere", self.plugins])
        self.assertEqual(len(result.err_lines), 1, str(result))
        self.assertIn("VALUE_PLUGIN_PATH", result.err)
        self.assertIn("\"nowhere\"", result.err)
        self.assert_quiet(self.run_with("nodes", "--no-default-plugins", folders=["nowhere"]))


class ExaminationTest(PluginTestCase):
    def test_a_library_that_harms_the_program_is_one_line(self):
        for name, words in REFUSED.items():
            with self.subTest(library=name):
                library = find_library(name)
                result = self.run_with("nodes", "--plugin", library, code=PLUGIN_ERROR)
                # A sanitizer ends the process in its own way where it would crash.
                told = [word for word in words if not (SANITIZED and word.startswith("signal"))]
                self.assert_one_error(result, f"{name}.so", *told)
                self.assertEqual(result.out, "")
        # A bad result is not remembered.
        self.assertFalse(self.cache.exists())

    def test_an_error_is_in_the_answer_as_well(self):
        result = self.run_with(
            "nodes", "--json", "--plugin", find_library("LoadExits"), code=PLUGIN_ERROR
        )
        self.assert_json_error(result, "LoadExits.so", "exit code 0")

    def test_a_good_result_is_remembered_by_content(self):
        library = self.copy("TinyLibrary")
        self.run_with("nodes", "--plugin", library)
        remembered = list((self.cache / "value" / "plugins").iterdir())
        self.assertEqual(len(remembered), 1)
        self.assertRegex(remembered[0].name, r"^[0-9a-f]{64}-\d+\.\d+\.\d+")
        # Another name, the same content.
        self.run_with("nodes", "--plugin", self.copy("TinyLibrary", self.dir, "other.so"))
        self.assertEqual(list((self.cache / "value" / "plugins").iterdir()), remembered)
        self.run_with("nodes", "--plugin", find_library("BehavesWell"))
        self.assertEqual(len(list((self.cache / "value" / "plugins").iterdir())), 2)

    def test_what_was_remembered_is_not_examined_again(self):
        shown = [
            self.run_with("doctor", "--json", "--plugin", find_library("TinyLibrary"), code=None).json_values()[0]
            for _ in range(2)
        ]
        self.assertEqual([answer["libraries"][-1]["examination"] for answer in shown], ["passed", "remembered"])

    def test_a_cache_that_cannot_be_written_is_no_error(self):
        self.cache.write_text("a file where the folder should be")
        self.assert_quiet(self.run_with("nodes", "--plugin", find_library("TinyLibrary")))
        environment = {"XDG_CACHE_HOME": None, "HOME": None, "VALUE_PLUGIN_PATH": None}
        self.assert_quiet(
            self.value("nodes", "--plugin", find_library("TinyLibrary"), environment=environment)
        )

    def test_trusted_libraries_are_not_examined(self):
        # It prints as it is loaded, which only the examination minds.
        result = self.run_with("nodes", "--trust-plugins", "--plugin", find_library("LoadPrints"))
        self.assertIn("the shelf is bare", result.out)
        self.assertFalse(self.cache.exists())

    def test_a_trusted_library_that_ends_the_program_is_one_line(self):
        for name, words in (
            ("LoadExits", "exit(0) in its loading"),
            ("EntryQuickExits", "quick_exit(0) in GetLibraryInterface"),
            ("NodeEnds", "_Exit(0)"),
            ("UnloadEnds", "_exit(0) in its unloading"),
        ):
            with self.subTest(library=name):
                library = find_library(name)
                result = self.run_with(
                    "nodes", "Image Parts", "--trust-plugins", "--plugin", library, code=NODE_ERROR
                )
                self.assert_one_error(result, f"{name}.so", f"ended the program by {words}")


class RunTest(PluginTestCase):
    def setUp(self):
        super().setUp()
        self.picture("in.exr", sample_picture(VALUE))
        self.save("graph.json", document(
            [
                node("r", "ImageReaderNode", path="in.exr"),
                node("raised", "ImagePartsNode"),
                node("plain", "ImageValueAddNode"),
            ],
            [link("r.image", "raised.image"), link("r.image", "plain.image")],
            [output("raised.image", "raised.exr"), output("plain.image", "plain.exr")],
        ))

    def start(self, *arguments):
        """The program as it ends, by a signal too."""
        return subprocess.run(
            [str(find_program()), *map(str, arguments)], cwd=self.dir, timeout=LIMIT_S, check=False,
            env=environment_with(self.environment()), stdin=subprocess.DEVNULL, capture_output=True, text=True,
        )

    def assert_nothing_half_written(self):
        names = {entry.name for entry in self.dir.iterdir()}
        self.assertLessEqual(names, {"in.exr", "graph.json", "plain.exr", "cache", "plugins"})

    def test_a_node_that_ends_the_program_is_a_node_error(self):
        for name, words in ENDS.items():
            with self.subTest(library=name):
                result = self.run_with("run", "graph.json", "--plugin", find_library(name), code=NODE_ERROR)
                self.assert_names(result, "\"raised\"", f"{name}.so", words)
                # Built with sanitizers, standard error stays open for what the library prints.
                self.assertLessEqual(len(result.err_lines), 2 if SANITIZED else 1, str(result))
                self.assert_nothing_half_written()

    def test_the_name_of_a_file_makes_no_library_the_program_s_own(self):
        library = self.copy("EvaluateExits", as_name="libHostEvil.so")
        for arguments in ([], ["--trust-plugins"]):
            result = self.run_with("run", "graph.json", "--plugin", library, *arguments, code=NODE_ERROR)
            self.assert_one_error(result, "\"raised\"", "libHostEvil.so", "exit(0)")
            self.assert_nothing_half_written()

    def test_the_answer_in_json_has_the_error(self):
        result = self.run_with(
            "run", "graph.json", "--json", "--plugin", find_library("EvaluateExits"), code=NODE_ERROR
        )
        self.assertEqual(len(result.json_values()), 1)
        self.assert_json_error(result, "\\\"raised\\\"", "EvaluateExits.so", "exit(0)")

    def test_apply_names_the_node(self):
        result = self.run_with(
            "apply", "Image Parts", "-i", "in.exr", "-o", "out.exr", "--plugin", find_library("EvaluateExits"),
            code=NODE_ERROR,
        )
        self.assert_one_error(result, "EvaluateExits.so", "exit(0)")

    def test_a_crash_is_one_line_and_ends_the_program_by_its_signal(self):
        if SANITIZED:
            # A sanitizer takes the signals and reports at length.
            return
        for name, number in CRASHES.items():
            with self.subTest(library=name):
                ended = self.start("run", "graph.json", "--plugin", find_library(name))
                self.assertEqual(ended.returncode, -number, ended.stderr)
                lines = ended.stderr.splitlines()
                self.assertEqual(len(lines), 1, ended.stderr)
                for word in ("value: node \"raised\"", f"{name}.so", "crashed in Evaluate", f"signal {int(number)} "):
                    self.assertIn(word, lines[0])
                self.assert_nothing_half_written()

    def test_a_crash_is_in_the_answer_in_json(self):
        if SANITIZED:
            return
        ended = self.start("run", "graph.json", "--json", "--plugin", find_library("EvaluateCrashes"))
        self.assertIn("crashed in Evaluate", json.loads(ended.stdout)["error"])

    def test_a_crash_in_a_batch_names_the_node(self):
        if SANITIZED:
            return
        ended = self.start(
            "run", "graph.json", "--each", "r=in.exr", "--output-dir", "out", "--jobs", "2",
            "--plugin", find_library("EvaluateCrashes"),
        )
        self.assertEqual(ended.returncode, -signal.SIGSEGV, ended.stderr)
        self.assertIn("node \"raised\"", ended.stderr)
        self.assertEqual(list((self.dir / "out").glob(".*")), [])

    def test_a_stack_that_is_used_up_in_a_batch_is_one_line(self):
        if SANITIZED:
            return
        for i in range(4):
            self.picture(f"many{i}.exr", sample_picture(VALUE))
        command = (
            "run", "graph.json", "--each", "r=many*.exr", "--output-dir", "out", "--jobs", "4",
            "--plugin", find_library("EvaluateUsesUpStack"),
        )
        # Whichever of the threads is the first to crash has to say so.
        for _ in range(3):
            ended = self.start(*command)
            self.assertEqual(ended.returncode, -signal.SIGSEGV, ended.stderr)
            self.assertEqual(len(ended.stderr.splitlines()), 1, ended.stderr)
            self.assertIn("crashed in Evaluate", ended.stderr)
            self.assertIn("EvaluateUsesUpStack.so", ended.stderr)
        ended = self.start(*command, "--json")
        self.assertIn("crashed in Evaluate", json.loads(ended.stdout.splitlines()[-1])["error"])


class DoctorTest(PluginTestCase):
    def test_shows_where_each_library_is_from_and_why_one_is_left_out(self):
        self.copy("TinyLibrary")
        self.copy("LoadExits")
        result = self.run_with(
            "doctor", "--json", "--plugin", find_library("BehavesWell"), folders=[self.plugins, "nowhere"],
            code=None,
        )
        answer = result.json_values()[0]
        shown = {Path(entry["file"]).name: entry for entry in answer["libraries"]}
        self.assertEqual(list(shown), ["Value.so", "LoadExits.so", "TinyLibrary.so", "BehavesWell.so"])
        self.assertEqual(
            [entry["from"] for entry in shown.values()],
            ["program", "VALUE_PLUGIN_PATH", "VALUE_PLUGIN_PATH", "--plugin"],
        )
        self.assertEqual(
            [entry["examination"] for entry in shown.values()], ["own", "failed", "passed", "passed"]
        )
        self.assertIn("exit code 0", shown["LoadExits.so"]["problem"])
        self.assertEqual(sum("left out" in line for line in result.err_lines), 1, str(result))
        self.assertEqual([folder["folder"] for folder in answer["plugin_folders"]], [str(self.plugins), "nowhere"])
        self.assertEqual(answer["plugin_folders"][0]["libraries"], 2)
        self.assertIn("nowhere", answer["plugin_folders"][1]["problem"])

    def test_shows_it_as_text(self):
        self.copy("TinyLibrary")
        result = self.run_with("doctor", folders=[self.plugins], code=None)
        for words in ("from VALUE_PLUGIN_PATH, examined now", "from beside the program", "TinyLibrary.so: 1 node type"):
            self.assertIn(words, result.out)
        self.assertIn(f"{self.plugins}: 1 ", result.out)
        self.copy("LoadExits")
        again = self.run_with("doctor", folders=[self.plugins], code=None)
        for words in ("examined in an earlier run", "LoadExits.so: left out", "did not pass its examination"):
            self.assertIn(words, again.out)
        self.assertNotIn("All is well", again.out)
        (self.plugins / "LoadExits.so").unlink()
        trusted = self.run_with("doctor", "--trust-plugins", folders=[self.plugins], code=None)
        self.assertIn("trusted, not examined", trusted.out)

    def test_what_is_left_out_is_a_problem_with_its_remedy(self):
        self.copy("LoadExits")
        (self.dir / "file").write_text("")
        folders = [self.plugins, self.dir / "nowhere", self.dir / "file"]
        result = self.run_with("doctor", folders=folders, code=NODE_ERROR)
        self.assertNotIn("All is well", result.out)
        library, missing, file = result.err_lines
        for words in ("LoadExits.so", "take it out of the folder", "\"value validate FILE\""):
            self.assertIn(words, library)
        self.assertIn("nowhere\" cannot be read", missing)
        self.assertIn("create it, or take it out of the variable", missing)
        self.assertIn("name one that can be read, or take it out of the variable", file)
        answer = self.run_with("doctor", "--json", folders=folders, code=NODE_ERROR).json_values()[0]
        self.assertEqual([f"value: {problem}" for problem in answer["problems"]], result.err_lines)

    def test_every_bad_library_of_the_command_line_is_told(self):
        result = self.run_with(
            "doctor", "--plugin", find_library("LoadPrints"), "--plugin", "nothing.so", code=PLUGIN_ERROR
        )
        self.assertEqual(len(result.err_lines), 2, str(result))
        for line, name in zip(result.err_lines, ("LoadPrints.so", "nothing.so")):
            self.assertIn(name, line)
            self.assertIn("give another file with --plugin", line)

    def test_a_bad_library_of_the_command_line_is_an_error(self):
        result = self.run_with("doctor", "--plugin", find_library("LoadPrints"), code=PLUGIN_ERROR)
        self.assert_one_error(result, "LoadPrints.so", "standard output")
        self.assertIn("left out", result.out)
