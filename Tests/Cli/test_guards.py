"""Node libraries that throw exceptions of their own types: every command ends with a line that says so."""

import shutil

from cli_support import (
    DONE, INVALID, NODE_ERROR, USAGE, VALUE, ValueTestCase, document, sample_picture,
)
from test_validate import find_library


class ThrowingLibraryTest(ValueTestCase):
    COMMANDS = {
        "GroupCode": (["nodes"], ["nodes", "Parts Node 2"], ["nodes", "--json"]),
        "IconPath": (["nodes"], ["nodes", "Parts Node 2"], ["doctor"]),
        "CreateNode": (["nodes"], ["nodes", "Parts Node 2"]),
    }

    def test_what_is_thrown_later_is_one_line(self):
        for operation, commands in self.COMMANDS.items():
            library = find_library(f"ThrowsIn{operation}")
            for command in commands:
                with self.subTest(operation=operation, command=command):
                    result = self.value(
                        *command, "--plugin", library, code=NODE_ERROR, environment={"XDG_CACHE_HOME": str(self.dir)}
                    )
                    self.assert_one_error(result, "the shelf is bare")

    def test_a_node_that_cannot_be_created_fails_its_run_with_its_library_named(self):
        self.save("graph.json", document([{"id": "made", "type": "PartsNode2"}]))
        for command, code, start in (
            (("apply", "Parts Node 2", "-o", "out.exr"), NODE_ERROR, "value: "),
            (("panel", "Parts Node 2", "--screenshot", "out.png"), NODE_ERROR, "value: "),
            (("run", "graph.json"), INVALID, "node \"made\": "),
            (("check", "graph.json"), INVALID, "node \"made\": "),
        ):
            with self.subTest(command=command):
                result = self.value(
                    *command, "--plugin", find_library("ThrowsInCreateNode"), "--trust-plugins", code=code
                )
                self.assert_one_error(
                    result, start + "node \"Parts Node 2\" of plug-in \"",
                    "ThrowsInCreateNode.so\": CreateNode threw an exception: the shelf is bare",
                )
                self.assert_files("graph.json")

    def test_the_error_names_library_and_node_and_the_others_are_listed(self):
        for operation in ("CreateNode", "GroupCode"):
            with self.subTest(operation=operation):
                result = self.value(
                    "nodes", "--json", "--plugin", find_library(f"ThrowsIn{operation}"), "--trust-plugins",
                    code=NODE_ERROR,
                )
                self.assert_one_error(result, f"ThrowsIn{operation}.so", "\"Parts Node 2\"", "the shelf is bare")
                self.assert_json_error(result, "the shelf is bare")
                classes = [entry["class"] for entry in result.json_values()[0]["nodes"]]
                self.assertIn("PartsNode1", classes)
                self.assertIn("ImageValueAddNode", classes)
                self.assertNotIn("PartsNode2", classes)


class ThrowingLibraryInFolderTest(ValueTestCase):
    def with_library(self, operation, *command, code=DONE):
        folder = self.dir / operation
        folder.mkdir(exist_ok=True)
        shutil.copy(find_library(f"ThrowsIn{operation}"), folder)
        environment = {"XDG_CACHE_HOME": str(self.dir / "cache"), "VALUE_PLUGIN_PATH": str(folder)}
        return self.value(*command, environment=environment, code=code)

    def test_one_bad_node_is_a_note_and_the_others_are_listed(self):
        for operation in ("CreateNode", "GroupCode", "IconPath"):
            for command in (["nodes"], ["nodes", "parts"]):
                with self.subTest(operation=operation, command=command):
                    result = self.with_library(operation, *command)
                    self.assert_one_error(
                        result, "value: note: ", f"ThrowsIn{operation}.so", "\"Parts Node 2\"", "it is left out"
                    )
                    self.assertIn("PartsNode1", result.out)
                    self.assertNotIn("PartsNode2", result.out)

    def test_a_search_for_other_nodes_says_nothing_of_it(self):
        for operation in ("CreateNode", "GroupCode", "IconPath"):
            with self.subTest(operation=operation):
                result = self.with_library(operation, "nodes", "mask")
                self.assert_quiet(result)
                self.assertIn("Relief", result.out)

    def test_the_bad_node_itself_is_an_error(self):
        for operation in ("CreateNode", "GroupCode", "IconPath"):
            with self.subTest(operation=operation):
                result = self.with_library(operation, "nodes", "Parts Node 2", "--json", code=NODE_ERROR)
                self.assert_one_error(result, f"ThrowsIn{operation}.so", "\"Parts Node 2\"", "the shelf is bare")
                self.assertEqual(result.out.count("\"error\""), 1)

    def test_doctor_names_library_and_node(self):
        result = self.with_library("IconPath", "doctor", code=NODE_ERROR)
        self.assert_one_error(result, "ThrowsInIconPath.so", "\"Parts Node 2\"", "the shelf is bare")
        self.assertIn("2 node types", result.out)

    def test_an_unknown_node_is_looked_for_among_the_others(self):
        result = self.with_library("CreateNode", "apply", "zebra crossing", "-o", "out.exr", code=USAGE)
        self.assert_one_error(result, "\"zebra crossing\"")

    def test_completions_go_on_without_it(self):
        names = self.with_library("CreateNode", "complete", "--", "nodes", "Parts")
        self.assertIn("Parts Node 1", names.out)
        self.assert_quiet(names)
        self.assert_quiet(self.with_library("CreateNode", "complete", "--", "apply", "Parts Node 2", "--set", ""))

    def test_a_batch_of_the_bad_node_is_one_error(self):
        self.picture("in.exr", sample_picture(VALUE))
        result = self.with_library(
            "CreateNode", "apply", "Parts Node 2", "--each", "*.exr", "-o", ".exr", "--output-dir", "out", code=None
        )
        self.assertNotEqual(result.code, DONE)
        self.assert_one_error(result, "ThrowsInCreateNode.so", "\"Parts Node 2\"", "the shelf is bare")
