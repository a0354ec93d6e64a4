"""value nodes: the catalogue of node types, their plugs and their attributes."""

import re

from cli_support import (
    USAGE, ValueTestCase, dictionaries, is_number, leaves, numbers, strings,
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
        }
        for class_name, names in expected.items():
            with self.subTest(node=class_name):
                out = self.value("nodes", class_name).out
                for name in names:
                    self.assertIn(name, out)

    def test_unknown_names_are_wrong_usage(self):
        for name in ("NoSuchNode", "10,320,6", "Value", "value add extra", ""):
            with self.subTest(name=name):
                result = self.value("nodes", name, code=USAGE)
                self.assert_one_error(result, name)
        result = self.value("nodes", "NoSuchNode", "--json", code=USAGE)
        self.assert_json_error(result, "NoSuchNode")
