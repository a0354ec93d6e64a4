"""value panel: the panel of a node and its preview, drawn without a display; and what other commands load."""

import json

import numpy as np

from cli_support import (
    DONE, FILE_ERROR, NAN, NODE_ERROR, USAGE, VALUE, Picture, ValueTestCase, read_file,
    write_file, write_picture,
)
from first_twenty import FIRST_TWENTY

# The environment of a process that knows of no display.
WITHOUT_DISPLAY = {"DISPLAY": None, "WAYLAND_DISPLAY": None, "QT_QPA_PLATFORM": None}


class PanelTestCase(ValueTestCase):
    def draw(self, *arguments, name="panel.png"):
        """Draws a window and returns its pixels, rows x columns x red, green and blue."""
        result = self.value("panel", *arguments, "--screenshot", self.dir / name)
        self.assert_quiet(result)
        return read_file(self.dir / name).data[:, :, :3].astype(int)

    def preview(self, *arguments):
        """The middle of the preview, which an image of one value fills."""
        pixels = self.draw(*arguments)
        return tuple(pixels[pixels.shape[0] // 2, 280])

    def flat(self, value, low=0.0, high=1.0):
        """A file of one value."""
        picture = Picture(np.full((4, 4), value), VALUE, low=low, high=high)
        return write_picture(self.dir / "flat.exr", picture)


class ScreenshotTest(PanelTestCase):
    def test_every_node_has_a_panel(self):
        for name in (entry.class_name for entry in FIRST_TWENTY):
            with self.subTest(node=name):
                pixels = self.draw(name)
                panel = pixels[:, 560:]
                # An icon in colour, and text and lines on the ground.
                self.assertTrue((np.ptp(panel[16:48, 16:48], axis=2) > 60).any())
                self.assertGreater((np.abs(panel - panel[-2, -2]).sum(axis=2) > 200).sum(), 200)

    def test_every_node_opens_with_something_to_be_seen(self):
        for name in (entry.class_name for entry in FIRST_TWENTY):
            with self.subTest(node=name):
                picture = self.draw(name)[90:480, 90:470].mean(axis=2)
                # Neither black nor white all over, and not one gray.
                self.assertGreater(picture.std(), 10)
                self.assertGreater(picture.mean(), 10)
                self.assertLess(picture.mean(), 250)

    def test_what_is_set_comes_before_what_a_node_opens_with(self):
        def attributes(*arguments):
            result = self.value(
                "panel", "Value Condition", *arguments, "--screenshot", self.dir / "a.png", "--json"
            )
            return json.loads(result.out)["attributes"]

        self.assertEqual(attributes(), {"condition": "v_gt_a", "a": 0.5, "b": 0})
        self.assertEqual(
            attributes("--set", "condition=v_lt_a"), {"condition": "v_lt_a", "a": 0.5, "b": 0}
        )
        self.assertEqual(attributes("--set", "a=0.25"), {"condition": "v_gt_a", "a": 0.25, "b": 0})

    def test_a_result_is_shown_by_the_range_of_its_input(self):
        file = self.flat(0.25)
        for constant, gray in ((0, 64), (0.25, 128), (0.5, 191), (2, 255)):
            shown = self.preview("Value Add", "-i", file, "--set", f"constant={constant}")
            self.assertAlmostEqual(shown[0], gray, delta=1, msg=str(constant))

    def test_a_writer_shows_what_it_writes(self):
        picture = self.draw("ImageWriterNode")[90:480, 90:470]
        self.assertGreater(picture.std(), 10)

    def test_needs_no_display(self):
        result = self.value(
            "panel", "Value Clamp", "--screenshot", "panel.png", environment=WITHOUT_DISPLAY
        )
        self.assert_quiet(result)
        self.assert_files("panel.png")

    def test_themes_and_scales(self):
        light = self.draw("Value Clamp", "--theme", "light", name="light.png")
        dark = self.draw("Value Clamp", "--theme", "dark", name="dark.png")
        large = self.draw("Value Clamp", "--theme", "dark", "--scale", 2, name="large.png")
        self.assertGreater(light[:, 560:].mean(), 230)
        self.assertLess(dark[:, 560:].mean(), 60)
        self.assertEqual(large.shape[0], 2 * dark.shape[0])
        self.assertEqual(large.shape[1], 2 * dark.shape[1])

    def test_settings_show_in_panel_and_preview(self):
        file = self.flat(0.25)
        plain = self.draw("Value Add", "-i", file, name="plain.png")
        raised = self.draw("Value Add", "-i", file, "--set", "constant=0.5", name="raised.png")
        self.assertTrue((plain[:, 560:] != raised[:, 560:]).any())
        self.assertTrue((plain[:, :560] != raised[:, :560]).any())

    def test_preview_spans_the_declared_range(self):
        for value, high, grey in ((0.0, 1, 0), (1.0, 1, 255), (5.0, 10, 128), (3.0, 2, 255)):
            # Clamp declares its limits as the range.
            shown = self.preview("Value Clamp", "-i", self.flat(value), "--set", f"high={high}")
            self.assertEqual(shown, (grey, grey, grey), (value, high))

    def test_nan_is_seen(self):
        data = np.full((4, 4), NAN)
        picture = Picture(data, VALUE)
        write_picture(self.dir / "nan.exr", picture)
        shown = self.preview("Value Add", "-i", self.dir / "nan.exr")
        self.assertEqual(shown, (255, 0, 255))

    def test_color_is_color(self):
        data = np.zeros((4, 4, 4))
        data[:, :, 0] = 1.0
        data[:, :, 3] = 1.0
        write_file(self.dir / "red.exr", data.astype(np.float32))
        shown = self.preview("Value Add", "-i", self.dir / "red.exr")
        self.assertEqual(shown, (255, 0, 0))

    def test_two_inputs_by_their_plugs(self):
        one = self.flat(0.25)
        two = self.dir / "two.exr"
        write_picture(two, Picture(np.full((4, 4), 0.75), VALUE))
        shown = self.preview("Value Compare", "-i", f"image_b={one}", "-i", f"image_a={two}")
        # The first output is 1 where a is below b.
        self.assertEqual(shown, (0, 0, 0))
        shown = self.preview("Value Compare", "-i", one, "-i", two)
        self.assertEqual(shown, (255, 255, 255))

    def test_the_hosts_own_nodes_have_a_panel_too(self):
        self.draw("ImageTerrainNode")

    def test_json_answers_what_was_drawn(self):
        result = self.value(
            "panel", "Value Clamp", "--set", "high=0.5", "--screenshot", self.dir / "a.png", "--json"
        )
        self.assertEqual(result.code, DONE, str(result))
        answer = json.loads(result.out)
        self.assertEqual(answer["node"], "ImageValueClampNode")
        self.assertEqual(answer["attributes"], {"clamp": "both", "low": 0, "high": 0.5, "profile": "linear"})
        pixels = read_file(self.dir / "a.png").data
        self.assertEqual(answer["screenshot"]["width"], pixels.shape[1])
        self.assertEqual(answer["screenshot"]["height"], pixels.shape[0])
        self.assertTrue(answer["screenshot"]["written"])


class ErrorTest(PanelTestCase):
    def fails(self, code, words, *arguments):
        result = self.value("panel", *arguments, code=code)
        self.assert_one_error(result, *words)

    def test_wrong_usage(self):
        shot = ("--screenshot", self.dir / "a.png")
        self.fails(USAGE, ["NODE"], *shot)
        self.fails(USAGE, ["Value Clmp", "Value Clamp"], "Value Clmp", *shot)
        self.fails(USAGE, ["hihg"], "Value Clamp", "--set", "hihg=1", *shot)
        self.fails(USAGE, ["theme"], "Value Clamp", "--theme", "blue", *shot)
        self.fails(USAGE, ["scale"], "Value Clamp", "--scale", "3", *shot)
        self.fails(USAGE, ["image_c"], "Value Compare", "-i", f"image_c={self.flat(0)}", *shot)
        self.assertFalse((self.dir / "a.png").exists())

    def test_files(self):
        shot = ("--screenshot", self.dir / "a.png")
        self.fails(FILE_ERROR, ["missing.exr"], "Value Clamp", "-i", self.dir / "missing.exr", *shot)
        self.assert_files()
        self.fails(FILE_ERROR, ["a.xyz", ".png"], "Value Clamp", "--screenshot", self.dir / "a.xyz")
        self.fails(FILE_ERROR, ["nowhere"], "Value Clamp", "--screenshot", self.dir / "nowhere" / "a.png")
        self.assert_files()

    def test_a_node_that_reports_an_error_is_drawn_with_it(self):
        shot = ("--screenshot", self.dir / "a.png")
        self.fails(NODE_ERROR, ["larger than maximum"], "Value Add", "--max-size", "100", *shot)
        self.assert_files("a.png")

    def test_no_display(self):
        for extra in ({}, {"DISPLAY": ":32767"}):
            result = self.value(
                "panel", "Value Clamp", environment={**WITHOUT_DISPLAY, **extra}, code=NODE_ERROR
            )
            self.assert_one_error(result, "--screenshot")


class StartTest(PanelTestCase):
    def libraries(self, *arguments):
        """The files that the dynamic linker loads during a run."""
        trace = self.dir / "trace"
        tracing = {"LD_DEBUG": "files", "LD_DEBUG_OUTPUT": str(trace)}
        self.value(*arguments, environment={**WITHOUT_DISPLAY, **tracing})
        found = list(self.dir.glob("trace.*"))
        self.assertEqual(len(found), 1)
        text = found[0].read_text("utf-8", "replace")
        found[0].unlink()
        return text

    def test_only_the_panel_loads_the_widgets(self):
        document = self.dir / "graph.json"
        document.write_text(
            json.dumps(
                {
                    "format": "value-graph",
                    "version": 1,
                    "nodes": [{"id": "a", "type": "ImageTerrainNode"}],
                    "connections": [],
                    "outputs": [{"from": "a.image", "path": "a.exr"}],
                }
            )
        )
        for arguments in (("nodes",), ("check", str(document)), ("nodes", "Value Clamp")):
            loaded = self.libraries(*arguments)
            self.assertIn("Value.so", loaded)
            for library in ("libQt6Widgets", "libHostWidgets", "libValuePanel", "libQt6Gui"):
                self.assertNotIn(library, loaded, arguments)
        loaded = self.libraries("panel", "Value Clamp", "--screenshot", str(self.dir / "a.png"))
        for library in ("libQt6Widgets", "libHostWidgets", "libValuePanel"):
            self.assertIn(library, loaded)


class OptionsTest(PanelTestCase):
    def test_a_range_without_a_file_and_a_screenshot_without_a_name_are_wrong_usage(self):
        result = self.value("panel", "Relief", "--screenshot", "x.png", "--range", "0,1", code=USAGE)
        self.assert_one_error(result, "--range", "-i FILE")
        result = self.value("panel", "Relief", "--screenshot", "", code=USAGE)
        self.assert_one_error(result, "--screenshot")
        self.assert_files()
