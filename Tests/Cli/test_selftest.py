"""value selftest: what each node type tests, the files and lines it leaves, and references.

What the cases show is worked out by selftest_model, which knows nothing of the program. The
reference images of the repository are held against it, and the program against both.
"""

import re
import shutil

import numpy as np

from cli_support import (
    COLOR, DONE, FILE_ERROR, NODE_ERROR, PLUGIN_ERROR, REPOSITORY, USAGE, VALUE, F, Picture,
    ValueTestCase, read_file, stored_samples, write_picture,
)
from first_twenty import FIRST_TWENTY
from selftest_model import CASES, render

GOLDEN = REPOSITORY / "Tests" / "Golden"
INPUTS = REPOSITORY / "Value" / "SelfTests" / "Data"

# The blur is exact to 1e-5 of the range, and a slope multiplies what it gets by less than two.
BLURRED = 2e-5

TITLES = {
    "add": "Value.DLL Add Value",
    "multiply": "Value.DLL Multiply Value",
    "min": "Value.DLL Min Value",
    "max": "Value.DLL Max Value",
    "condition": "Value.DLL Value Condition",
    "relief/inner_bevel": "Value.DLL Relief Inner Bevel",
    "relief/levels": "Value.DLL Relief Levels",
    "absolute": "Value.DLL Value Absolute",
}

# Which tests a node type runs, in the order in which the library lists the types.
TESTS = {
    "Value Add": ["add"],
    "Value Subtract": ["add"],
    "Value Multiply": ["multiply"],
    "Value Divide": ["multiply"],
    "Value Power": ["multiply"],
    "Value Minimum": ["min"],
    "Value Maximum": ["max"],
    "Value Steps": ["absolute"],
    "Value Condition": ["condition"],
    "Relief": ["relief/inner_bevel", "relief/levels"],
}

WITHOUT_TEST = [entry.name for entry in FIRST_TWENTY if entry.name not in (*TESTS, "To Value")]


BY_DESIGN = (
    "Value Steps fails by design: its test asks for a node type that no library has any more"
)


def case_line(case, verdict="passed"):
    return re.compile(re.escape(case) + r": \d+\.\d\d ms, " + verdict)


class SelftestCase(ValueTestCase):
    def output(self, directory="", folder=None):
        return (folder or self.dir) / "output" / "nodes" / "value" / directory

    def assert_like_model(self, file, directory, case):
        """The file shows what the model gives: to the bit, but for what went through the blur."""
        wanted = render(directory, case, INPUTS)
        if not case.endswith("-soften"):
            self.assert_picture(file, wanted)
            return
        stored = read_file(file)
        self.assertEqual(stored.mode, wanted.mode)
        self.assert_close(stored.data, stored_samples(wanted), BLURRED)

    def assert_lines(self, result, directories):
        """Standard output has the titles, and below each its cases in order."""
        lines = [line for line in result.out.splitlines() if line]
        for directory in directories:
            self.assertEqual(lines.pop(0), TITLES[directory])
            for case in CASES[directory]:
                self.assertRegex(lines.pop(0), case_line(case))
        return lines


class ReferencesTest(SelftestCase):
    def test_the_references_are_those_of_all_cases(self):
        stored = sorted(str(file.relative_to(GOLDEN)) for file in GOLDEN.rglob("*.exr"))
        cases = sorted(f"{folder}/{case}.exr" for folder in CASES for case in CASES[folder])
        self.assertEqual(stored, cases)

    def test_the_references_show_what_the_model_gives(self):
        for directory, cases in CASES.items():
            for case in cases:
                with self.subTest(case=f"{directory}/{case}"):
                    self.assert_like_model(GOLDEN / directory / f"{case}.exr", directory, case)


class CasesTest(SelftestCase):
    def test_every_test_renders_its_cases_as_the_model_gives_them(self):
        for name, directories in TESTS.items():
            if name == "Value Steps":
                continue
            with self.subTest(node=name):
                folder = self.dir / name
                folder.mkdir()
                result = self.value("selftest", name, cwd=folder)
                self.assert_quiet(result)
                last = self.assert_lines(result, directories)
                count = sum(len(CASES[directory]) for directory in directories)
                self.assertEqual(last, [f"{name}: passed, {count} cases"])
                written = {file.stem for file in folder.rglob("*.exr")}
                pictures = {file.stem for file in folder.rglob("*.png")}
                self.assertEqual(written, {case for d in directories for case in CASES[d]})
                self.assertEqual(pictures, written)
                for directory in directories:
                    for case in CASES[directory]:
                        file = self.output(directory, folder) / f"{case}.exr"
                        self.assert_like_model(file, directory, case)

    def test_the_absolute_test_asks_for_a_type_that_does_not_exist(self):
        result = self.value("selftest", "Value Steps", code=NODE_ERROR)
        lines = [line for line in result.out.splitlines() if line]
        self.assertEqual(
            lines,
            [
                "Value.DLL Value Absolute",
                "ERROR: Failed to create waves node",
                "Value Steps: failed",
                BY_DESIGN,
            ],
        )
        self.assert_one_error(result, "Value Steps", "failed", "by design", "--expected")
        self.assertEqual(list(self.output("absolute").iterdir()), [])

    def test_all_tests_run_in_the_order_of_the_library(self):
        result = self.value("selftest", code=NODE_ERROR)
        verdicts = re.findall(r"^(.*): (passed|failed)(?:, \d+ cases)?$", result.out, re.MULTILINE)
        verdicts = [verdict for verdict in verdicts if verdict[0] in TESTS]
        self.assertEqual(sorted(name for name, _ in verdicts), sorted(TESTS))
        self.assertEqual({name for name, verdict in verdicts if verdict == "failed"}, {"Value Steps"})
        self.assertEqual(result.out.splitlines()[-2:], ["9 passed, 1 failed", BY_DESIGN])
        self.assert_one_error(result, "Value Steps")
        for directory, cases in CASES.items():
            names = {f"{case}.{kind}" for case in cases for kind in ("exr", "png")}
            folders = {"inner_bevel", "levels"} if directory == "relief" else set()
            self.assert_files(*names, *folders, folder=self.output(directory))

    def test_types_without_a_test_say_so(self):
        for name in WITHOUT_TEST:
            with self.subTest(node=name):
                result = self.value("selftest", name, code=NODE_ERROR)
                self.assert_one_error(result, name, "no self-test")
        result = self.value("selftest", "To Value")
        self.assert_one_error(result, "note", "To Value", "no self-test")
        self.assert_files()

    def test_a_picture_shows_the_declared_range_from_black_to_white(self):
        self.value("selftest", "Value Add")
        # Crossing bars, declared 0 to 2: nothing, one bar, both.
        bars = read_file(self.output("add") / "add-constant-a-constant-b.png").data
        for (x, y), shade in {(0, 0): 0, (4, 32): 128, (32, 4): 128, (32, 32): 255}.items():
            self.assertEqual([int(v) for v in bars[y, x, :3]], [shade] * 3, f"at {x}, {y}")
        self.assertEqual([int(bars[0, 0, 3]), int(bars[32, 4, 3])], [0, 255])
        # The constant does not change what is shown, as the range moves with the values.
        checker = read_file(self.output("add") / "checker-a.png").data
        raised = read_file(self.output("add") / "add-checker-a-5.png").data
        self.assertEqual([int(v) for v in checker[0, ::16, 0]], [0, 255, 0, 255])
        self.assertTrue(np.array_equal(checker, raised))


class InputsTest(SelftestCase):
    def test_inputs_of_the_working_directory_come_first(self):
        data = np.zeros((8, 8), F)
        data[2:6, 2:6] = 1
        (self.dir / "input").mkdir()
        # Its ending decides nothing: the file is known by what it holds.
        write_picture(self.dir / "ae.exr", Picture(data, VALUE))
        self.value("apply", "Value Add", "-i", "ae.exr", "-o", "input/ae.png", "--type", "uint8")
        self.value("selftest", "Relief")
        own = read_file(self.output("relief/levels") / "ae-levels-00-linear.exr").data
        shipped = read_file(self.output("relief/levels") / "rect_across-levels-00-linear.exr").data
        self.assertEqual(own.shape, (8, 8, 1))
        self.assertEqual(shipped.shape, (128, 128, 1))

    def test_a_damaged_input_fails_its_cases_and_no_others(self):
        (self.dir / "input").mkdir()
        self.save("input/ae.png", b"\x89PNG\r\n\x1a\n and nothing more")
        result = self.value("selftest", "Relief", code=FILE_ERROR)
        self.assertRegex(result.out, case_line("ae-levels-05-linear", "failed: .*ae.png"))
        self.assertRegex(result.out, case_line("rect_across-levels-05-linear"))
        self.assert_one_error(result, "Relief", "11 of 15 cases", "ae-inner_bevel-00-linear", "ae.png")


class ReferenceOptionTest(SelftestCase):
    def test_the_references_of_the_repository_pass(self):
        for name in ("Value Add", "Value Power", "Value Minimum", "Value Maximum",
                     "Value Condition", "Relief"):
            with self.subTest(node=name):
                result = self.value("selftest", name, "--reference", GOLDEN)
                self.assert_quiet(result)
                self.assertNotIn("without a reference", result.out)
                for directory in TESTS[name]:
                    for case in CASES[directory]:
                        self.assertRegex(
                            result.out, case_line(case, r"passed, at most \S+ from the reference")
                        )

    def test_what_an_earlier_run_wrote_is_a_reference(self):
        self.value("selftest", "Value Minimum")
        earlier = self.dir / "earlier"
        (self.dir / "output").rename(earlier)
        for folder in (earlier, earlier / "nodes", earlier / "nodes" / "value" / "min"):
            result = self.value("selftest", "Value Minimum", "--reference", folder)
            self.assertEqual(result.out.count("passed, at most 0 from the reference"), 16, str(result))

    def test_the_output_of_the_last_run_is_a_reference_until_it_is_written_again(self):
        self.value("selftest", "Relief")
        levels = self.output("relief/levels")
        shutil.copy(levels / "ae-levels-05-linear.exr", levels / "ae-levels-15-linear-soften.exr")
        result = self.value("selftest", "Relief", "--reference", "output", code=NODE_ERROR)
        self.assertRegex(result.out, case_line("ae-levels-15-linear-soften", "failed: .*differs"))
        self.assert_one_error(result, "Relief", "1 of 15 cases")

    def test_an_empty_name_is_not_a_folder(self):
        self.value("selftest", "Relief", "--reference", "", code=FILE_ERROR)
        self.assert_files()

    def change(self, alter):
        """A folder of references with one case changed."""
        folder = self.dir / "references"
        shutil.copytree(GOLDEN / "min", folder / "min")
        wanted = render("min", "min-checker-a-checker-b", INPUTS)
        write_picture(folder / "min" / "min-checker-a-checker-b.exr", alter(wanted))
        return folder

    def compare(self, alter, code):
        return self.value("selftest", "Value Minimum", "--reference", self.change(alter), code=code)

    @staticmethod
    def raising(amount, place=slice(None)):
        """Raises the samples at a place, or all of them."""
        def alter(picture):
            picture.data[place] += F(amount)
            return picture

        return alter

    def test_a_sample_beyond_the_largest_difference_fails(self):
        result = self.compare(self.raising(0.0102, (3, 3, 0)), NODE_ERROR)
        self.assertRegex(result.out, case_line("min-checker-a-checker-b", "failed: .*0.0102 at most"))
        self.assertEqual(result.out.count("passed, at most 0 from"), 15)
        self.assert_one_error(result, "Value Minimum", "1 of 16 cases", "min-checker-a-checker-b")

    def test_a_sample_within_it_passes(self):
        result = self.compare(self.raising(0.0098, (3, 3, 0)), DONE)
        self.assertRegex(result.out, case_line("min-checker-a-checker-b", "passed, at most 0.0098"))

    def test_a_mean_beyond_its_bound_fails_although_no_sample_is_far(self):
        result = self.compare(self.raising(0.006), NODE_ERROR)
        self.assertRegex(result.out, case_line("min-checker-a-checker-b", "failed: .*0.006 on average"))

    def test_another_size_or_mode_fails(self):
        result = self.compare(lambda picture: Picture(picture.data[:-1], VALUE), NODE_ERROR)
        self.assertRegex(result.out, case_line("min-checker-a-checker-b", "failed: .*size or mode"))
        shutil.rmtree(self.dir / "references")
        result = self.compare(self.as_color, NODE_ERROR)
        self.assertRegex(result.out, case_line("min-checker-a-checker-b", "failed: .*size or mode"))

    @staticmethod
    def as_color(picture):
        data = np.concatenate([picture.data] * 3 + [np.ones_like(picture.data)], axis=2)
        return Picture(data, COLOR)

    def test_a_case_without_a_reference_passes_and_says_so(self):
        folder = self.change(lambda picture: picture)
        (folder / "min" / "min-constant-a-5.exr").unlink()
        result = self.value("selftest", "Value Minimum", "--reference", folder)
        self.assertRegex(result.out, case_line("min-constant-a-5", "passed, without a reference"))

    def test_a_damaged_reference_is_a_file_error(self):
        folder = self.change(lambda picture: picture)
        self.save("references/min/min-constant-a-5.exr", b"no image")
        result = self.value("selftest", "Value Minimum", "--reference", folder, code=FILE_ERROR)
        self.assert_one_error(result, "min-constant-a-5.exr")
        self.assert_like_model(self.output("min") / "min-constant-a-5.exr", "min", "min-constant-a-5")

    def test_a_missing_folder_is_a_file_error(self):
        result = self.value("selftest", "Relief", "--reference", "nowhere", code=FILE_ERROR)
        self.assert_one_error(result, "--reference nowhere", "no such folder")
        self.assert_files()


class UsageTest(SelftestCase):
    def test_a_node_has_its_three_names(self):
        for words in (["ImageValueMinimumNode"], ["Value Minimum"], ["10,320,16"], ["10", "320", "16"]):
            result = self.value("selftest", *words)
            self.assertIn("Value Minimum: passed, 16 cases", result.out)

    def test_an_unknown_node_is_wrong_usage(self):
        result = self.value("selftest", "Value Minimun", code=USAGE)
        self.assert_one_error(result, "Value Minimun", "Value Minimum")
        self.assert_files()

    def test_an_empty_name_is_not_a_node(self):
        self.value("selftest", "", code=USAGE)
        self.assert_files()

    def test_quiet_leaves_only_errors(self):
        result = self.value("selftest", "--quiet", code=NODE_ERROR)
        self.assertEqual(result.out, "")
        self.assert_one_error(result, "Value Steps")

    def test_failures_by_design_can_be_expected(self):
        result = self.value("selftest", "--expected")
        self.assert_quiet(result)
        self.assertEqual(result.out.splitlines()[-2:], ["9 passed, 1 failed", BY_DESIGN])
        result = self.value("selftest", "--expected", "--quiet")
        self.assertEqual((result.out, result.err), ("", ""))
        (answer,) = self.value("selftest", "--expected", "--json").json_values()
        self.assertEqual([answer["passed"], answer["failed"]], [9, 1])
        self.assertEqual(answer["by_design"], ["ImageValueStepsNode"])
        self.assertNotIn("error", answer)
        for name in ("Value Steps", "Value Minimum"):
            self.assert_quiet(self.value("selftest", name, "--expected"))

    def test_other_failures_are_never_expected(self):
        self.save("output", "a file where the folder should be")
        result = self.value("selftest", "Value Maximum", "--expected", code=FILE_ERROR)
        self.assert_one_error(result, "Value Maximum", "16 of 16 cases")
        references = self.dir / "references"
        shutil.copytree(GOLDEN / "min", references / "max")
        work = self.dir / "work"
        work.mkdir()
        result = self.value("selftest", "--expected", "--reference", references, cwd=work)
        self.assertEqual(result.out.splitlines()[-2:], ["9 passed, 1 failed", BY_DESIGN])
        for file in sorted((references / "max").glob("min-*.exr")):
            file.rename(file.with_name(file.name.replace("min-", "max-")))
        result = self.value(
            "selftest", "--expected", "--reference", references, cwd=work, code=NODE_ERROR
        )
        self.assert_one_error(result, "Value Maximum", "differs from the reference")
        self.assertEqual(result.out.splitlines()[-2:], ["8 passed, 2 failed", BY_DESIGN])
        # A type without a self-test is an error as before.
        self.value("selftest", "Value Clamp", "--expected", cwd=work, code=NODE_ERROR)

    def test_a_library_that_cannot_be_loaded(self):
        self.value("selftest", "--plugin", "nothing.so", code=PLUGIN_ERROR)

    def test_a_directory_that_cannot_be_made_fails_every_case(self):
        self.save("output", "a file where the folder should be")
        result = self.value("selftest", "Value Maximum", code=FILE_ERROR)
        self.assert_one_error(result, "Value Maximum", "16 of 16 cases", "output/nodes/value/max")
        self.assert_files("output")

    def test_the_answer_as_json_is_all_of_standard_output(self):
        result = self.value("selftest", "--json", "--reference", GOLDEN, code=NODE_ERROR)
        (answer,) = result.json_values()
        self.assertEqual([answer["passed"], answer["failed"]], [9, 1])
        self.assertIn("Value Steps", answer["error"])
        self.assertEqual(answer["by_design"], ["ImageValueStepsNode"])
        by_node = {node["node"]: node for node in answer["nodes"]}
        steps = by_node["ImageValueStepsNode"]
        self.assertEqual(steps["result"], "failed")
        self.assertEqual(steps["output"], ["Value.DLL Value Absolute", "ERROR: Failed to create waves node"])
        relief = by_node["ImageReliefNode"]
        self.assertEqual(relief["result"], "passed")
        self.assertEqual(
            [(test["title"], test["directory"]) for test in relief["tests"]],
            [
                ("Value.DLL Relief Inner Bevel", "output/nodes/value/relief/inner_bevel"),
                ("Value.DLL Relief Levels", "output/nodes/value/relief/levels/"),
            ],
        )
        for test, directory in zip(relief["tests"], TESTS["Relief"]):
            self.assertEqual([case["name"] for case in test["cases"]], CASES[directory])
            for case in test["cases"]:
                self.assertTrue(case["passed"])
                self.assertLessEqual(case["largest_difference"], BLURRED)
                self.assertTrue((self.dir / case["file"]).is_file())

    def test_the_result_does_not_depend_on_the_threads(self):
        for threads in ("1", "16"):
            folder = self.dir / threads
            folder.mkdir()
            self.value("selftest", "Relief", "--threads", threads, cwd=folder)
        for case in CASES["relief/levels"]:
            one, many = (
                read_file(self.output("relief/levels", self.dir / threads) / f"{case}.exr").data
                for threads in ("1", "16")
            )
            self.assertTrue(np.array_equal(one, many), case)
