"""value edit: the window of the editor drawn without a display, and what is wrong on its command line."""

import json

import numpy as np

from cli_support import (
    DONE, FILE_ERROR, INVALID, NODE_ERROR, USAGE, ValueTestCase, read_file,
)

# The environment of a process that knows of no display.
WITHOUT_DISPLAY = {"DISPLAY": None, "WAYLAND_DISPLAY": None, "QT_QPA_PLATFORM": None}

GRAPH = {
    "format": "value-graph",
    "version": 2,
    "nodes": [
        {"id": "height", "type": "ImageTerrainNode", "attributes": {"frame": [0, 0, 64, 64]}, "position": [0, 0]},
        {"id": "raised", "type": "ImageValueAddNode", "attributes": {"constant": 0.25}, "position": [220, 0]},
    ],
    "connections": [{"from": "height.image", "to": "raised.image", "index": 0}],
    "view": {"shown": "raised.image"},
}


class EditTestCase(ValueTestCase):
    def setUp(self):
        super().setUp()
        (self.dir / "graph.json").write_text(json.dumps(GRAPH))
        # Settings and journals of tests stay in their folder.
        self.environment = {
            **WITHOUT_DISPLAY,
            "XDG_STATE_HOME": str(self.dir / "state"),
            "XDG_CONFIG_HOME": str(self.dir / "config"),
        }

    def edit(self, *arguments, code=DONE):
        return self.value("edit", *arguments, environment=self.environment, code=code)

    def draw(self, *arguments, name="edit.png"):
        """Draws a window; its pixels, rows x columns x red, green and blue."""
        self.assert_quiet(self.edit(*arguments, "--screenshot", self.dir / name))
        return read_file(self.dir / name).data[:, :, :3].astype(int)


class ScreenshotTest(EditTestCase):
    def test_a_window_has_the_size_that_is_asked_for(self):
        pixels = self.draw("graph.json", "--size", "1000x700")
        self.assertEqual(pixels.shape[:2], (700, 1000))
        pixels = self.draw("graph.json", "--size", "800x600", "--scale", 2, name="large.png")
        self.assertEqual(pixels.shape[:2], (1200, 1600))

    def test_three_pixels_for_one(self):
        pixels = self.draw("graph.json", "--size", "800x600", "--scale", 3, name="huge.png")
        self.assertEqual(pixels.shape[:2], (1800, 2400))
        # Large pixels show more than small ones drawn large.
        blocks = pixels.reshape(600, 3, 800, 3, 3)
        self.assertTrue((blocks.max(axis=(1, 3)) != blocks.min(axis=(1, 3))).any())

    def test_german(self):
        english = self.draw("graph.json", name="english.png")
        self.environment = {**self.environment, "LC_ALL": "C.UTF-8", "LANGUAGE": "de"}
        german = self.draw("graph.json", name="german.png")
        # The menus at the top are other words.
        self.assertTrue((english[:24, :400] != german[:24, :400]).any())

    def test_themes(self):
        light = self.draw("graph.json", "--theme", "light", name="light.png")
        dark = self.draw("graph.json", "--theme", "dark", name="dark.png")
        self.assertGreater(light.mean(), 170)
        self.assertLess(dark.mean(), 90)

    def test_without_a_document_there_is_something_to_play_with(self):
        pixels = self.draw()
        # A picture has many levels of grey or color.
        self.assertGreater(len(np.unique(pixels.reshape(-1, 3), axis=0)), 300)

    def test_what_is_shown(self):
        one = self.draw("graph.json", name="one.png")
        two = self.draw("graph.json", "--shown", "height.image", name="two.png")
        self.assertTrue((one != two).any())

    def test_docks(self):
        one = self.draw("graph.json", name="one.png")
        two = self.draw("graph.json", "--dock", "history", "--dock", "profiler", name="two.png")
        self.assertTrue((one != two).any())

    def test_nothing_is_left_behind(self):
        self.draw("graph.json")
        self.assertEqual(json.loads((self.dir / "graph.json").read_text()), GRAPH)
        self.assertEqual([path.name for path in self.dir.rglob("*journal*")], [])

    def test_json_answers_what_was_drawn(self):
        result = self.edit("graph.json", "--screenshot", "a.png", "--size", "640x480", "--json")
        shot = json.loads(result.out)["screenshot"]
        self.assertEqual((shot["width"], shot["height"], shot["written"]), (640, 480, True))


class ErrorTest(EditTestCase):
    def fails(self, code, words, *arguments):
        self.assert_one_error(self.edit(*arguments, code=code), *words)

    def test_wrong_usage(self):
        shot = ("--screenshot", "a.png")
        self.fails(USAGE, ["--size", "12"], "graph.json", *shot, "--size", "12")
        self.fails(USAGE, ["--size", "10x10"], "graph.json", *shot, "--size", "10x10")
        self.fails(USAGE, ["--size", "--screenshot"], "graph.json", "--size", "800x600")
        self.fails(USAGE, ["histroy", "history"], "graph.json", *shot, "--dock", "histroy")
        self.fails(USAGE, ["raisd", "raised"], "graph.json", *shot, "--shown", "raisd.image")
        self.fails(USAGE, ["picture", "image"], "graph.json", *shot, "--shown", "raised.picture")
        self.fails(USAGE, ["scale"], "graph.json", *shot, "--scale", "4")
        self.fails(USAGE, ["--screenshot"], "graph.json", "--screenshot", "")
        self.assertFalse((self.dir / "a.png").exists())

    def test_files(self):
        self.fails(FILE_ERROR, ["none.json"], "none.json", "--screenshot", "a.png")
        self.fails(FILE_ERROR, ["a.xyz", ".png"], "graph.json", "--screenshot", "a.xyz")
        self.fails(FILE_ERROR, ["nowhere"], "graph.json", "--screenshot", "nowhere/a.png")

    def test_a_document_with_errors_is_not_opened(self):
        (self.dir / "bad.json").write_text(json.dumps({**GRAPH, "more": 1}))
        self.fails(INVALID, ["bad.json", "more"], "bad.json", "--screenshot", "a.png")
        self.assertFalse((self.dir / "a.png").exists())

    def test_no_display(self):
        self.fails(NODE_ERROR, ["--screenshot"], "graph.json")
