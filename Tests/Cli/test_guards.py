"""Node libraries that throw exceptions of their own types: every command ends with a line that says so."""

from cli_support import NODE_ERROR, PLUGIN_ERROR, VALUE, ValueTestCase, sample_picture
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

    def test_a_node_that_cannot_be_created_fails_its_run(self):
        self.picture("in.exr", sample_picture(VALUE))
        result = self.value(
            "apply", "Parts Node 2", "--plugin", find_library("ThrowsInCreateNode"), "--trust-plugins",
            "-o", "out.exr", code=None,
        )
        self.assertIn(result.code, (NODE_ERROR, PLUGIN_ERROR, 2, 3))
        self.assert_names(result, "the shelf is bare")
        self.assert_files("in.exr")
