"""value validate: the library of the project, good libraries, and libraries that are each wrong in one way."""

import os
import unittest
from pathlib import Path

from cli_support import (
    DONE, FILE_ERROR, NODE_ERROR, PLUGIN_ERROR, USAGE, ValueTestCase, find_program,
)

CHECKS = [
    "load", "exports", "library-object", "count", "above-count", "descriptors", "names", "numbers",
    "icons", "factory", "attributes", "plugs", "exceptions", "nothing-connected", "tiny-images", "empty-images",
    "color-modes", "awkward-samples", "attribute-values", "disabled", "outputs", "events", "graph",
    "inputs-untouched", "memory-bounds", "references", "leaks", "repeatable", "threads",
    "floating-point", "process-state", "standard-output", "unload",
]

# For each library the checks that fail, each with words that its line holds.
BAD = {
    "UnstableCount": {"count": ["1 and then 2"]},
    "NegativeCount": {"count": ["-3"]},
    "DescriptorAboveCount": {"above-count": ["GetNodeInterface(4294967296)"]},
    "NullLibraryObject": {"library-object": ["null"]},
    "SharedDescriptor": {"descriptors": ["same descriptor twice"]},
    "NullDescriptor": {"descriptors": ["GetNodeInterface(1)", "null"]},
    "NoFactory": {"descriptors": ["without a factory"]},
    "ThrowingEntry": {"descriptors": ["the shelf is bare"]},
    "TwinNames": {"names": ["image parts", "node type 0"]},
    "TwinNumbers": {"numbers": ["900, 1, 7", "node type 0"]},
    "TakenNumbers": {"numbers": ["10, 16, 10", "ImageRectangleNode"]},
    "MissingIcon": {"icons": [":/Nowhere/Parts.png", ":/Nowhere/Parts12.png", "resolve"]},
    "ForeignFactory": {"factory": ["900, 1, 3", "900, 1, 4"]},
    "OtherNode": {"factory": ["901, 1, 2", "901, 1, 1"]},
    "BadAttributes": {"attributes": ["\"level\"", "outside its bounds 0 to 1", "\"style\"", "not in its list"]},
    "NoOutput": {"plugs": ["no output"]},
    "SilentError": {"tiny-images": ["1 x 5", "without a message"]},
    "OddState": {"tiny-images": ["1 x 5", "one line of text"]},
    "IgnoresEvents": {"events": ["event 11", "output \"image\""]},
    "ModifiesInput": {"inputs-untouched": ["input is changed"]},
    "WritesPastEnd": {"memory-bounds": ["directly behind the 16 bytes of samples"]},
    "ReadsPastEnd": {"memory-bounds": ["behind the end of the 16 bytes of samples of an image"]},
    "KeepsInput": {"references": ["an input image", "5 references"]},
    "LeaksImages": {"leaks": ["96 images"]},
    "LeaksMemory": {"leaks": ["bytes behind"]},
    "ForgetsSamples": {"repeatable": ["sample 3", "0.75 and then -3.5"]},
    "DependsOnThreads": {"threads": ["1 and with 2 threads"]},
    "ExitsInEvaluate": {"attribute-values": ["exit code 0", "\"style\" carrying nothing"]},
    "ThreadStays": {"unload": ["thread that the library started"]},
    "CrashesOnUnload": {"unload": ["unloading the library"]},
    "Noisy": {"standard-output": ["evaluating 5 x 3 value images", "noise"]},
    "EvaluatePrints": {"standard-output": ["evaluating nothing connected", "the shelf is bare"]},
    "EvaluateRounds": {"floating-point": ["rounded upward"]},
    "EvaluateFlushesToZero": {"floating-point": ["denormal numbers are taken for zero"]},
    "EvaluateTraps": {"floating-point": ["raises a signal"]},
    "EvaluateChangesFolder": {"process-state": ["working directory is \"/\""]},
    "EvaluateChangesSignal": {"process-state": ["SIGINT"]},
    "EvaluateChangesLocale": {"process-state": ["locale is \"C.UTF-8\""]},
    "EvaluateChangesMask": {"process-state": ["umask"]},
    "EvaluateCloses": {"process-state": ["descriptor 2 (standard error) is closed"]},
    "EvaluateStartsThread": {"unload": ["thread that the library started"]},
    "JoiningThrows": {"exceptions": ["OnAdded", "the shelf is bare"]},
    "SinkThrows": {"exceptions": ["IsSink", "the shelf is bare"]},
    "AliasThrows": {"plugs": ["the shelf is bare"], "exceptions": ["GetInplugAlias", "the shelf is bare"]},
    "SourceObserverThrows": {
        "exceptions": ["OnAttributeSourcesChanged", "the shelf is bare"],
        "graph": ["the shelf is bare"],
    },
    # The other checks disable the node, which is a change.
    "ObserverThrows": {
        "exceptions": ["OnNodeChanged", "the shelf is bare"],
        **dict.fromkeys(
            ["nothing-connected", "disabled", "graph", "inputs-untouched", "memory-bounds", "references",
             "floating-point", "process-state", "standard-output"],
            ["the shelf is bare"],
        ),
    },
    "ThrowsInIconPath": {"icons": ["the shelf is bare"], "exceptions": ["GetIconPath", "the shelf is bare"]},
    # Other checks use awkward samples as well.
    "CrashesOnNan": {
        "awkward-samples": ["evaluating 1 x 1 color images of awkward samples"],
        "repeatable": ["awkward samples"],
        "threads": ["awkward samples"],
    },
}


def find_library(name):
    folder = os.environ.get("VALUE_TEST_LIBRARIES")
    if not folder:
        folder = find_program().parent.parent / "TestLibraries"
    library = Path(folder) / f"{name}.so"
    if not library.is_file():
        raise AssertionError(f"the test library is missing: {library}")
    return library


class ValidateTestCase(ValueTestCase):
    def value(self, *arguments, **options):
        """As always, with more time: every node type is evaluated some thousand times."""
        return super().value(*arguments, timeout=900, **options)

    def validate(self, library, *options, code):
        """The one answer in JSON, with the checks by their names."""
        result = self.value("validate", library, "--json", *options, code=code)
        values = result.json_values()
        self.assertEqual(len(values), 1, str(result))
        answer = values[0]
        self.assertEqual([check["name"] for check in answer["checks"]], CHECKS)
        by_name = {check["name"]: check for check in answer["checks"]}
        for word in ("passed", "failed", "skipped"):
            counted = sum(check["result"] == word for check in answer["checks"])
            self.assertEqual(answer[word], counted)
        return answer, by_name

    def failed(self, checks):
        return [name for name in CHECKS if checks[name]["result"] == "failed"]


class GoodLibraryTest(ValidateTestCase):
    def test_the_project_s_own_library_passes(self):
        result = self.value("validate", find_program().parent / "Value.so")
        self.assert_quiet(result)
        lines = result.out.splitlines()
        self.assertEqual(lines[-1], "33 checks: 33 passed, 0 failed, 0 skipped")
        self.assertEqual(
            [line.split()[:2] for line in lines[:-1]], [["ok", name] for name in CHECKS]
        )
        self.assertRegex(result.out, r"\nok   leaks \(\d\d+ node types\)\n")

    def test_a_tiny_library_passes(self):
        answer, checks = self.validate(find_library("TinyLibrary"), code=DONE)
        self.assertEqual(answer["library"], "Parts")
        self.assertEqual(answer["nodes"], ["PartsNode7"])
        self.assertEqual([answer["passed"], answer["failed"], answer["skipped"]], [33, 0, 0])
        for check in checks.values():
            self.assertEqual(check["failures"], [])

    def test_what_a_library_prints_does_not_disturb(self):
        result = self.value("validate", find_library("Noisy"), code=NODE_ERROR)
        self.assert_quiet(result)
        # The line of the check that is about it.
        self.assertEqual(result.out.count("noise"), 1)
        self.assertTrue(result.out.endswith("33 checks: 32 passed, 1 failed, 0 skipped\n"))

    def test_quiet_leaves_the_exit_code(self):
        result = self.value("validate", "--quiet", find_library("TinyLibrary"))
        self.assertEqual((result.out, result.err), ("", ""))


class BadLibraryTest(ValidateTestCase):
    def test_each_is_caught_by_the_check_meant_for_it(self):
        for name, wanted in BAD.items():
            with self.subTest(library=name):
                answer, checks = self.validate(find_library(name), code=NODE_ERROR)
                self.assertEqual(self.failed(checks), [check for check in CHECKS if check in wanted])
                for check, words in wanted.items():
                    text = " ".join(failure["text"] for failure in checks[check]["failures"])
                    for word in words:
                        self.assertIn(word, text)

    def test_a_failure_is_a_line_that_names_check_and_node(self):
        result = self.value("validate", find_library("OtherNode"), code=NODE_ERROR)
        lines = [line for line in result.out.splitlines() if line.startswith("FAIL")]
        self.assertEqual(len(lines), 1, str(result))
        self.assertTrue(lines[0].startswith("FAIL factory: ImagePartsNode: "), lines[0])
        self.assertEqual(
            result.out.splitlines()[-1], "33 checks: 32 passed, 1 failed, 0 skipped"
        )

    def test_quiet_prints_failures_alone(self):
        result = self.value("validate", "--quiet", find_library("OtherNode"), code=NODE_ERROR)
        self.assertEqual(len(result.out.splitlines()), 1)
        self.assertTrue(result.out.startswith("FAIL factory: "))

    def test_a_node_without_descriptor_is_left_out_and_the_others_are_checked(self):
        _, checks = self.validate(find_library("NullDescriptor"), code=NODE_ERROR)
        self.assertEqual(checks["leaks"]["result"], "skipped")
        self.assertEqual(checks["leaks"]["nodes"], 1)
        self.assertEqual([skip["text"] for skip in checks["leaks"]["skips"]], ["there is no descriptor"])

    def test_a_crash_is_reported_with_its_signal_and_place(self):
        _, checks = self.validate(find_library("CrashesOnNan"), code=NODE_ERROR)
        (failure,) = checks["awkward-samples"]["failures"]
        self.assertEqual(failure["node"], "ImagePartsNode")
        # A sanitizer ends the process by itself.
        self.assertRegex(failure["text"], r"signal 11 \(segmentation fault\)|exit code (1|99) ")
        self.assertEqual(checks["unload"]["result"], "passed")

    def test_a_hang_ends_the_check_and_leaves_the_node_out(self):
        answer, checks = self.validate(
            find_library("HangsInEvaluate"), "--timeout", "3", code=NODE_ERROR
        )
        self.assertEqual(self.failed(checks), ["disabled"])
        (failure,) = checks["disabled"]["failures"]
        self.assertIn("within 3 s while evaluating the disabled node", failure["text"])
        after = CHECKS[CHECKS.index("disabled") + 1:-1]
        for name in after:
            self.assertEqual(checks[name]["result"], "skipped", name)
            self.assertIn("it hung in the check disabled", checks[name]["skips"][0]["text"])
        self.assertEqual(checks["unload"]["result"], "passed")
        self.assertEqual(answer["skipped"], len(after))


    def test_the_time_for_all_checks_ends_them(self):
        answer, checks = self.validate(
            find_library("HangsInEvaluate"), "--total-timeout", "4", code=NODE_ERROR
        )
        failed = self.failed(checks)
        self.assertEqual(len(failed), 1, failed)
        (failure,) = checks[failed[0]]["failures"]
        self.assertIn("the time for all checks, 4 s, is over", failure["text"])
        self.assertIn("--total-timeout", failure["text"])
        after = CHECKS[CHECKS.index(failed[0]) + 1:]
        for name in after:
            self.assertEqual(checks[name]["result"], "skipped", name)
            self.assertIn("4 s, is over", checks[name]["skips"][0]["text"])
        self.assertEqual(answer["skipped"], len(after))


class HostileTextTest(ValidateTestCase):
    def test_what_a_library_says_is_one_short_line(self):
        library = find_library("ManyLines")
        result = self.value("validate", library, code=NODE_ERROR)
        self.assert_quiet(result)
        lines = result.out.splitlines()
        self.assertRegex(result.out, r'(?m)^FAIL attributes: node type 0: attribute "level\\nok   forged .*\.\.\.x+')
        words = {check: {"ok", "FAIL", "skip"} for check in CHECKS}
        for line in lines[:-1]:
            word, check = line.replace(":", " ").split()[:2]
            self.assertIn(word, words.get(check, ()), line)
            self.assertLessEqual(len(line), 720, line)
        self.assertNotRegex(result.out, r"[^\n -~]")

        answer, checks = self.validate(library, code=NODE_ERROR)
        findings = [finding for check in checks.values() for finding in check["failures"] + check["skips"]]
        texts = [answer["library"], *answer["nodes"]]
        texts += [finding[key] for finding in findings for key in ("node", "text") if key in finding]
        self.assertGreater(len(texts), 3)
        for text in texts:
            self.assertRegex(text, r"\A[ -~]{1,600}\Z")

    def test_the_catalogue_shows_it_in_one_line_as_well(self):
        for words in ((), ("900,1,7",)):
            with self.subTest(words=words):
                out = self.value("nodes", *words, "--plugin", find_library("ManyLines"), "--trust-plugins").out
                self.assertIn("Display\\nok   forged", out)
                self.assertNotRegex(out, r"(?m)^ok|[^\n -~]")
                self.assertLessEqual(max(map(len, out.splitlines())), 2200)


class NoNodeLibraryTest(ValidateTestCase):
    def test_a_missing_file(self):
        result = self.value("validate", "nothing.so", code=FILE_ERROR)
        self.assert_one_error(result, "nothing.so")
        self.assertEqual(result.out, "")

    def test_a_file_that_is_not_a_library(self):
        self.save("fake.so", b"just some text")
        self.assert_one_error(self.value("validate", "fake.so", code=PLUGIN_ERROR), "fake.so")
        result = self.value("validate", "fake.so", "--json", code=PLUGIN_ERROR)
        self.assert_json_error(result, "fake.so")

    def test_a_folder(self):
        (self.dir / "folder.so").mkdir()
        self.assert_one_error(self.value("validate", "folder.so", code=PLUGIN_ERROR), "folder.so")

    def test_missing_entry_points_fail_a_check_and_skip_the_others(self):
        for name, missing in (("LacksOneExport", "GetNodeInterface"), ("ExportsNothing", "GetLibraryInterface")):
            with self.subTest(library=name):
                _, checks = self.validate(find_library(name), code=PLUGIN_ERROR)
                self.assertEqual(self.failed(checks), ["exports"])
                self.assertIn(missing, checks["exports"]["failures"][0]["text"])
                for check in CHECKS[2:]:
                    self.assertEqual(checks[check]["result"], "skipped")

    def test_a_crash_while_it_is_loaded(self):
        _, checks = self.validate(find_library("CrashesOnLoad"), code=PLUGIN_ERROR)
        self.assertEqual(self.failed(checks), ["load"])
        text = checks["load"]["failures"][0]["text"]
        self.assertIn("signal 6 (aborted) while loading the library", text)
        self.assertEqual(checks["exports"]["result"], "skipped")

    def test_wrong_usage(self):
        self.assert_one_error(self.value("validate", code=USAGE), "LIBRARY")
        for seconds in ("0", "-1", "soon", "nan"):
            with self.subTest(seconds=seconds):
                for option in ("--timeout", "--total-timeout"):
                    result = self.value("validate", "x.so", option, seconds, code=USAGE)
                    self.assert_one_error(result, option)
        for channel in ("zebra", "1", "900,901"):
            with self.subTest(channel=channel):
                self.value("validate", "x.so", "--child", channel, code=USAGE)


if __name__ == "__main__":
    unittest.main()
