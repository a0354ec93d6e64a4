"""value nodes: the catalogue of node types, their plugs and their attributes."""

import re
import shlex

import numpy as np

from cli_support import (
    USAGE, VALUE, Picture, ValueTestCase, dictionaries, is_number, leaves, numbers, read_file,
    sample_picture, strings,
)
from first_twenty import FIRST_TWENTY


def has_numbers(text, three):
    """The three numbers stand in the text next to each other, whatever separates them."""
    return re.search(r"(?<!\d){}\D{{1,4}}{}\D{{1,4}}{}(?!\d)".format(*three), text) is not None


def same_number(got, wanted):
    return is_number(got) and abs(got - wanted) <= 1e-6 * max(1.0, abs(wanted))


def candidates(answer, name):
    """The objects of an answer that may describe the attribute of that name."""
    for item in dictionaries(answer):
        if any(isinstance(value, str) and value == name for value in item.values()):
            yield item
        if isinstance(item.get(name), dict):
            yield item[name]


def default_matches(item, wanted, words=None):
    """An entry whose key speaks of a default (or value) holds the wanted one."""
    for path, leaf in leaves(item):
        if "default" not in path and "value" not in path:
            continue
        if isinstance(wanted, bool):
            if leaf is wanted:
                return True
        elif words is not None:
            if leaf == words[wanted] or (is_number(leaf) and leaf == wanted):
                return True
        elif same_number(leaf, wanted):
            return True
    return False


def describes(item, form):
    """An object of the answer carries everything that the attribute's form has."""
    kind = form[0]
    if kind == "number":
        _, default, low, high = form
        found = numbers(item)
        return default_matches(item, default) and all(
            any(same_number(value, wanted) for value in found) for wanted in (low, high)
        )
    if kind == "flag":
        return default_matches(item, form[1])
    _, default, words = form
    split = [word for text in strings(item) for word in text.split(",")]
    in_order = [word for word in split if word in words]
    joined = ",".join(words)
    return default_matches(item, default, words) and joined in ",".join(in_order)


class CatalogTest(ValueTestCase):
    def test_lists_twenty_classes_and_display_names(self):
        result = self.value("nodes")
        self.assert_quiet(result)
        for class_name, display_name, *_ in FIRST_TWENTY:
            with self.subTest(node=class_name):
                self.assertIn(class_name, result.out)
                self.assertIn(display_name, result.out)

    def test_json_list_has_name_and_numbers_of_every_class(self):
        result = self.value("nodes", "--json")
        self.assert_quiet(result)
        values = result.json_values()
        self.assertEqual(len(values), 1)
        for class_name, display_name, three, *_ in FIRST_TWENTY:
            with self.subTest(node=class_name):
                entries = [
                    item
                    for item in dictionaries(values[0])
                    if class_name in item.values() or class_name in item
                ]
                entries = [
                    item[class_name] if isinstance(item.get(class_name), dict) else item
                    for item in entries
                ]
                self.assertEqual(len(entries), 1, f"{class_name} is not listed once")
                self.assertIn(display_name, strings(entries[0]))
                found = numbers(entries[0])
                text = " ".join(strings(entries[0]))
                self.assertTrue(
                    all(value in found for value in three) or has_numbers(text, three),
                    f"{class_name} lacks its numbers {three}",
                )

    def test_every_node_is_found_by_class_display_name_and_numbers(self):
        for class_name, display_name, three, *_ in FIRST_TWENTY:
            answers = []
            for name in (class_name, display_name, ",".join(map(str, three))):
                with self.subTest(name=name):
                    result = self.value("nodes", name)
                    self.assertIn(class_name, result.out)
                    self.assertIn(display_name, result.out)
                    self.assertTrue(has_numbers(result.out, three), str(result))
                    answers.append(result.out)
            with self.subTest(node=class_name):
                self.assertEqual(len(set(answers)), 1, "three names, three different answers")

    def test_text_names_plugs_attributes_and_choice_words(self):
        for class_name, _, _, attributes, inputs, outputs in FIRST_TWENTY:
            with self.subTest(node=class_name):
                out = self.value("nodes", class_name).out
                words = set(re.findall(r"[A-Za-z0-9_.]+", out))
                for name in [*attributes, *inputs, *outputs]:
                    self.assertIn(name, words)
                for form in attributes.values():
                    if form[0] == "choice":
                        for word in form[2]:
                            self.assertIn(word, out)

    def test_json_has_forms_defaults_bounds_and_choices(self):
        for class_name, _, _, attributes, _, _ in FIRST_TWENTY:
            answer = self.value("nodes", class_name, "--json").json_values()
            for name, form in attributes.items():
                with self.subTest(node=class_name, attribute=name):
                    found = list(candidates(answer, name))
                    self.assertTrue(found, f"no object describes {name}")
                    self.assertTrue(
                        any(describes(item, form) for item in found), f"{form} is not in {found}"
                    )

    def test_json_names_the_plugs(self):
        for class_name, _, _, _, inputs, outputs in FIRST_TWENTY:
            with self.subTest(node=class_name):
                found = strings(self.value("nodes", class_name, "--json").json_values())
                for name in [*inputs, *outputs]:
                    self.assertIn(name, found)

    def test_host_nodes_have_their_attributes(self):
        expected = {
            "ImageReaderNode": [
                "path", "color_mode", "range", "low", "high", "placement", "pin", "pivot",
            ],
            "ImageRectangleNode": ["frame", "color"],
            "ImageCheckerNode": [
                "frame", "rect_x_size", "rect_y_size",
                "color_00", "color_10", "color_01", "color_11",
            ],
            "ImageWavesNode": ["frame", "height", "wavelength"],
            "ImageTerrainNode": ["frame", "seed", "octaves", "wavelength"],
            "ImageWriterNode": ["path", "type", "float", "half", "uint16", "uint8"],
            "NumberNode": ["value", "number"],
            "FlagNode": ["value", "flag"],
            "TextNode": ["value", "text"],
            "ImageRerouteNode": ["image"],
        }
        for class_name, names in expected.items():
            with self.subTest(node=class_name):
                out = self.value("nodes", class_name).out
                for name in names:
                    self.assertIn(name, out)

    def test_unknown_names_are_wrong_usage(self):
        for name in ("NoSuchNode", "10,320,6", "value add extra", ""):
            with self.subTest(name=name):
                result = self.value("nodes", name, code=USAGE)
                self.assert_one_error(result, name)
        result = self.value("nodes", "NoSuchNode", "--json", code=USAGE)
        self.assert_json_error(result, "NoSuchNode")


class ListTest(ValueTestCase):
    def test_fits_a_terminal_of_80_columns(self):
        for arguments in ((), ("Relief",), ("Value Function",), ("Value Compare",), ("mask",)):
            with self.subTest(arguments=arguments):
                for line in self.value("nodes", *arguments).out.splitlines():
                    self.assertLessEqual(len(line), 80, line)

    def test_is_grouped_by_headings(self):
        lines = self.value("nodes").out.splitlines()
        headings = [line for line in lines if line and not line.startswith((" ", '"'))]
        self.assertEqual(len(headings), len(set(headings)), headings)
        self.assertTrue({"Arithmetic", "Masks", "Shape", "Files"} <= set(headings), headings)

    def test_a_page_shows_a_line_that_works(self):
        self.picture("in.exr", sample_picture(VALUE))
        for name in ("Value Add", "Value Compare", "Value Gradient", "Image Terrain"):
            with self.subTest(node=name):
                out = self.value("nodes", name).out
                use = re.search(r"^  use +value (.*(?:\n {11}.*)*)", out, re.MULTILINE).group(1)
                words = shlex.split(use.replace("...", ""))
                paths = iter(f"out{number}.exr" for number in range(9))
                for at, word in enumerate(words):
                    if word.endswith("FILE"):
                        file = "in.exr" if words[at - 1] == "-i" else next(paths)
                        words[at] = word[: -len("FILE")] + file
                self.value(*words)


class SearchTest(ValueTestCase):
    def found(self, *words):
        result = self.value("nodes", *words, "--json")
        self.assert_quiet(result)
        return [item["name"] for item in result.json_values()[0]["nodes"]]

    def test_artists_find_what_they_look_for(self):
        for words, name in (
            ("invert", "To Value"), ("negative", "To Value"), ("slope", "Value Gradient"),
            ("blur", "Relief"), ("edge", "Component Edges"), ("threshold", "Value Condition"),
            ("contour", "Value Steps"), ("terrace", "Value Steps"), ("emboss", "Relief"),
            ("bevel", "Relief"), ("occlusion", "Ambient Occlusion"),
            ("cavity", "Ambient Occlusion"), ("normalize", "To Value"), ("normalise", "To Value"),
            ("levels", "Value Clamp"), ("gamma", "Value Power"), ("dilate", "Distance"),
            ("erode", "Distance"), ("distance field", "Distance"), ("sdf", "Distance"),
            ("outline", "Component Edges"), ("glow", "Distance"), ("difference", "Value Subtract"),
            ("labels", "Connected Components"), ("islands", "Connected Components"),
            ("count", "Connected Components"), ("sine", "Value Function"),
            ("grey", "To Value"), ("gray", "To Value"), ("coast", "Distance"),
            ("noise", "Image Terrain"), ("checkerboard", "Image Checker"), ("save", "Image Writer"),
            ("open", "Image Reader"), ("soft mask", "Value Range"), ("sea level", "Value Clamp"),
        ):
            with self.subTest(words=words):
                self.assertIn(name, self.found(*words.split()))

    def test_the_best_comes_first(self):
        for words, name in (
            (("edge",), "Component Edges"), (("gradient",), "Value Gradient"), (("ADD",), "Value Add"),
            (("soft", "mask"), "Value Range"), (("mask", "soft"), "Value Range"),
            (("components",), "Connected Components"), (("sdf",), "Distance"),
        ):
            with self.subTest(words=words):
                self.assertEqual(self.found(*words)[0], name)

    def test_each_word_has_its_node_in_the_first_place(self):
        for word, name in (
            ("merge", "Value Add"), ("lerp", "Value Add"), ("mix", "Value Add"), ("blend", "Value Add"),
            ("overlay", "Value Add"), ("screen", "Value Multiply"), ("alpha", "Image Reader"),
            ("opacity", "Image Reader"), ("normalize", "To Value"), ("ridge", "Value Subtract"),
            ("curvature", "Value Subtract"), ("sharpen", "Value Subtract"), ("hillshade", "Value Gradient"),
            ("erosion", "Distance"), ("erode", "Distance"), ("dilate", "Distance"), ("dem", "Image Reader"),
            ("elevation", "Value Range"), ("terrain", "Image Terrain"), ("contour", "Component Edges"),
            ("outline", "Component Edges"), ("glow", "Distance"), ("shadow", "Ambient Occlusion"),
            ("bevel", "Relief"), ("emboss", "Relief"), ("smooth", "Relief"), ("gaussian", "Relief"),
            ("noise", "Image Terrain"), ("threshold", "Value Condition"), ("quantize", "Value Steps"),
            ("posterize", "Value Steps"), ("tile", "Image Terrain"), ("seamless", "Image Terrain"),
            ("invert", "To Value"), ("difference", "Value Subtract"), ("greater", "Value Condition"),
            ("file", "Image Reader"), ("slope", "Value Gradient"), ("darken", "Value Minimum"),
        ):
            with self.subTest(word=word):
                self.assertEqual(self.found(word)[0], name)
        # The name of a node shows all about it.
        self.assertTrue(self.value("nodes", "distance").out.startswith("Distance\n"))

    def test_tasks_of_several_nodes_come_with_the_way(self):
        for word, steps in (
            ("sharpen", ("Value Subtract", "Relief", "Value Multiply", "Value Add")),
            ("hillshade", ("Value Gradient", "Value Multiply", "Value Add")),
            ("ridge", ("Value Subtract", "Relief", "Docs/Cookbook.md")),
            ("contour", ("Value Steps", "Component Edges")), ("erosion", ("no node lets water flow",)),
            ("lerp", ("Value Multiply", "Value Add")), ("opacity", ("channels=A", "--opacity")),
            ("tile", ("no node makes",)), ("crop", ("No node crops",)),
        ):
            with self.subTest(word=word):
                hints = self.value("nodes", word, "--json").json_values()[0]["hints"]
                for step in steps:
                    self.assertIn(step, " ".join(hints))

    def test_what_no_node_does_is_said(self):
        for word, instead in (("histogram", "value stats"), ("voronoi", "Distance"), ("resize", "no node")):
            with self.subTest(word=word):
                self.assert_one_error(self.value("nodes", word, code=USAGE), f"\"{word}\": no node ", instead)
                self.assert_json_error(self.value("nodes", word, "--json", code=USAGE), "no node")

    def test_the_sharpening_of_the_hint_sharpens(self):
        # A step from 0 to 1 between the third and the fourth of six columns.
        data = np.zeros((6, 6), dtype=np.float32)
        data[:, 3:] = 1
        self.picture("step.exr", Picture(data, VALUE))
        for step in (
            ("apply", "Relief", "-i", "step.exr", "--set", "radius=0", "--set", "soften=1", "--set",
             "seamless=false", "-o", "soft.exr"),
            ("apply", "Value Subtract", "-i", "step.exr", "-i", "soft.exr", "-o", "detail.exr"),
            ("apply", "Value Multiply", "-i", "detail.exr", "--set", "constant=2", "-o", "much.exr"),
            ("apply", "Value Add", "-i", "step.exr", "-i", "much.exr", "-o", "sharp.exr"),
        ):
            self.value(*step)
        sharp = read_file(self.dir / "sharp.exr").data[:, :, 0]
        # Darker before the step and brighter behind it.
        self.assertTrue((sharp[:, 2] < -0.1).all() and (sharp[:, 3] > 1.1).all(), str(sharp))

    def test_all_words_are_held(self):
        one, other = set(self.found("mask")), set(self.found("seamless"))
        self.assertTrue(one & other)
        self.assertEqual(set(self.found("mask", "seamless")), one & other)
        self.assertEqual(set(self.found("mask seamless")), one & other)

    def test_an_attribute_and_its_sentence_are_enough(self):
        self.assertEqual(self.found("auto_level"), ["To Value"])
        self.assertEqual(self.found("pillow"), ["Relief"])
        self.assertIn("Image Terrain", self.found("octaves"))

    def test_text_and_json_have_the_same_nodes(self):
        out = self.value("nodes", "mask").out
        names = self.found("mask")
        self.assertGreater(len(names), 2)
        places = [out.index(f"\n  {name} " if at else f"  {name} ") for at, name in enumerate(names)]
        self.assertEqual(places, sorted(places))

    def test_hints_show_how(self):
        result = self.value("nodes", "invert")
        self.assertIn("--set low=1 --set high=0", " ".join(result.out.split()))
        answer = self.value("nodes", "blur", "--json").json_values()[0]
        self.assertEqual(len(answer["hints"]), 1)
        self.assertIn("soften", answer["hints"][0])

    def test_the_negative_of_the_hint_is_one(self):
        image = Picture([[0.0, 0.25, 1.0]], VALUE)
        self.picture("in.exr", image)
        self.value(
            "apply", "To Value", "-i", "in.exr", "--set", "low=1", "--set", "high=0", "-o", "out.exr"
        )
        self.assert_close(read_file(self.dir / "out.exr").data, [[1.0, 0.75, 0.0]])

    def test_grown_and_shrunk_masks_of_the_hints_are(self):
        # One set pixel in the middle of five by five, and all but it.
        data = np.zeros((5, 5), dtype=np.float32)
        data[2, 2] = 1
        self.picture("dot.exr", Picture(data, VALUE))
        self.picture("rest.exr", Picture(1 - data, VALUE))
        steps = (
            ("apply", "Distance", "-i", "dot.exr", "-o", "far.exr"),
            ("apply", "Value Condition", "-i", "far.exr", "--set", "condition=v_lte_a", "--set", "a=1",
             "-o", "grown.exr"),
            ("apply", "Value Condition", "-i", "far.exr", "--set", "condition=v_gt_a", "--set", "a=1",
             "-o", "shrunk.exr"),
        )
        for step in steps:
            self.value(*step)
        cross = np.zeros((5, 5), dtype=np.float32)
        cross[2, 1:4] = 1
        cross[1:4, 2] = 1
        self.assert_close(read_file(self.dir / "grown.exr").data, cross)
        # The dot is the negative of the rest, so what is far from it is the rest without its edge.
        self.assert_close(read_file(self.dir / "shrunk.exr").data, 1 - cross)

    def test_nothing_found_is_wrong_usage_with_the_closest_word(self):
        for words, closest in (
            (("terase",), "terrace"), (("bulr",), "blur"), (("gradiant",), "Value Gradient"),
            (("mask", "terase"), "terrace"),
        ):
            with self.subTest(words=words):
                result = self.value("nodes", *words, code=USAGE)
                self.assert_one_error(result, words[-1], closest)
        result = self.value("nodes", "zebra", "--json", code=USAGE)
        self.assert_json_error(result, "zebra")
