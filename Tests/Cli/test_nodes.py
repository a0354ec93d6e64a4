"""value nodes: the catalogue of node types, their plugs and their attributes."""

import re

from cli_support import (
    USAGE,
    ValueTestCase,
    dictionaries,
    is_number,
    leaves,
    numbers,
    strings,
)

CONDITIONS = (
    "v_eq_min,v_df_min,v_eq_max,v_df_max,v_lt_a,v_lte_a,v_eq_a,v_gte_a,v_gt_a,"
    "a_lt_v_lt_b,a_lte_v_lt_b,a_lt_v_lte_b,a_lte_v_lte_b"
)
FUNCTIONS = (
    "absolute,sine,cosine,tangent,arcsine,arccosine,arctangent,floor,ceil,inverse,log,log2,"
    "log10,exponential,square_root,cubic_root,deg_to_rad,rad_to_deg"
)
PRECISIONS = (
    "0.0000000001,0.000000001,0.00000001,0.0000001,0.000001,0.0001,0.001,0.01,0.1,1.0,10.0,"
    "100.0,1000.0,10000.0,100000.0,1000000.0,10000000.0,100000000.0,1000000000.0"
)


def number(default, low, high):
    return ("number", default, low, high)


def choice(words, default=0):
    return ("choice", default, words.split(","))


def flag(default):
    return ("flag", default)


def constant(default):
    return {"constant": number(default, -1e9, 1e9)}


# (class, display name, three numbers, attributes, input plugs, output plugs)
CATALOGUE = [
    (
        "ImageToValueNode",
        "To Value",
        (10, 320, 0),
        {
            "low": number(0, -999999999, 999999999),
            "high": number(1, -999999999, 999999999),
            "auto_level": flag(False),
        },
        ["image"],
        ["image"],
    ),
    ("ImageValueAddNode", "Value Add", (10, 320, 5), constant(0), ["image"], ["image"]),
    ("ImageValueSubtractNode", "Value Subtract", (10, 320, 90), constant(0), ["image"], ["image"]),
    ("ImageValueMultiplyNode", "Value Multiply", (10, 320, 10), constant(1), ["image"], ["image"]),
    ("ImageValueDivideNode", "Value Divide", (10, 320, 96), constant(1), ["image"], ["image"]),
    ("ImageValuePowerNode", "Value Power", (10, 320, 69), constant(0), ["image"], ["image"]),
    (
        "ImageValueMinimumNode",
        "Value Minimum",
        (10, 320, 16),
        constant(1000),
        ["image"],
        ["image"],
    ),
    (
        "ImageValueMaximumNode",
        "Value Maximum",
        (10, 320, 21),
        constant(-1000),
        ["image"],
        ["image"],
    ),
    (
        "ImageValueClampNode",
        "Value Clamp",
        (10, 320, 42),
        {
            "clamp": choice("both,low,high"),
            "low": number(0, -10000, 10000),
            "high": number(0, -10000, 10000),
            "profile": choice("linear,smooth,perlin,arc_out,arc_in"),
        },
        ["image"],
        ["image"],
    ),
    (
        "ImageValueStepsNode",
        "Value Steps",
        (10, 320, 80),
        {"steps": number(2, 2, 100000)},
        ["image"],
        ["image"],
    ),
    (
        "ImageValueConditionNode",
        "Value Condition",
        (10, 320, 32),
        {
            "condition": choice(CONDITIONS),
            "a": number(0, -10000, 10000),
            "b": number(0, -10000, 10000),
        },
        ["image"],
        ["image"],
    ),
    (
        "ImageValueCompareNode",
        "Value Compare",
        (10, 320, 37),
        {"precision": choice(PRECISIONS, 4)},
        ["image_a", "image_b"],
        [
            "image_a_l_b",
            "image_a_le_b",
            "image_a_eq_b",
            "image_a_df_b",
            "image_a_ge_b",
            "image_a_g_b",
        ],
    ),
    (
        "ImageValueRangeNode",
        "Value Range",
        (10, 320, 58),
        {
            "center": number(0, -10000, 10000),
            "size": number(0, 0, 10000),
            "falloff": number(0, 0, 10000),
            "profile": choice("linear,smooth,arc_out,arc_in"),
        },
        ["image"],
        ["image"],
    ),
    (
        "ImageValueFunctionNode",
        "Value Function",
        (10, 320, 64),
        {"function": choice(FUNCTIONS)},
        ["image"],
        ["image"],
    ),
    (
        "ImageReliefNode",
        "Relief",
        (10, 288, 26),
        {
            "radius": number(1, 0, 250),
            "multiplier": number(1, -1000, 1000),
            "style": choice("levels,inner_bevel,outer_bevel,emboss,pillow_emboss"),
            "profile": choice("linear,smooth,arc_out,arc_in"),
            "soften": number(0, 0, 16),
            "grow": flag(False),
            "seamless": flag(True),
        },
        ["image"],
        ["image"],
    ),
    (
        "ImageEuclideanDistanceNode",
        "Distance",
        (10, 288, 74),
        {"seamless": flag(True), "normalize": flag(False)},
        ["image"],
        ["image"],
    ),
    (
        "ImageComputeGradientNode",
        "Value Gradient",
        (10, 320, 48),
        {"seamless": flag(True)},
        ["image"],
        ["output_x", "output_y"],
    ),
    (
        "ImageAmbientOcclusionNode",
        "Ambient Occlusion",
        (10, 320, 85),
        {"radius": number(3, 3, 100), "seamless": flag(True)},
        ["image"],
        ["image"],
    ),
    (
        "ImageConnectedComponentsNode",
        "Connected Components",
        (10, 320, 101),
        {
            "threshold": number(0.1, 0, 1),
            "neighbors": choice("all,cross"),
            "seamless": flag(True),
        },
        ["image"],
        ["image"],
    ),
    (
        "ImageComponentEdgesNode",
        "Component Edges",
        (10, 320, 106),
        {
            "threshold": number(0.1, 0, 1),
            "neighbors": choice("all,cross"),
            "seamless": flag(True),
            "invert": flag(True),
        },
        ["image"],
        ["image"],
    ),
]


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
        for class_name, display_name, *_ in CATALOGUE:
            with self.subTest(node=class_name):
                self.assertIn(class_name, result.out)
                self.assertIn(display_name, result.out)

    def test_json_list_has_name_and_numbers_of_every_class(self):
        result = self.value("nodes", "--json")
        self.assert_quiet(result)
        values = result.json_values()
        self.assertEqual(len(values), 1)
        for class_name, display_name, three, *_ in CATALOGUE:
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
        for class_name, display_name, three, *_ in CATALOGUE:
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
        for class_name, _, _, attributes, inputs, outputs in CATALOGUE:
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
        for class_name, _, _, attributes, _, _ in CATALOGUE:
            answer = self.value("nodes", class_name, "--json").json_values()
            for name, form in attributes.items():
                with self.subTest(node=class_name, attribute=name):
                    found = list(candidates(answer, name))
                    self.assertTrue(found, f"no object describes {name}")
                    self.assertTrue(
                        any(describes(item, form) for item in found), f"{form} is not in {found}"
                    )

    def test_json_names_the_plugs(self):
        for class_name, _, _, _, inputs, outputs in CATALOGUE:
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
