"""value check: every problem of a document is found and named, without evaluating it."""

import json
import xml.etree.ElementTree as ElementTree

from cli_support import (
    FILE_ERROR, INVALID, NODE_ERROR, REPOSITORY, VALUE, ValueTestCase, document, link, node, output,
    sample_picture,
)
from first_twenty import FIRST_TWENTY


def good():
    """A document without a flaw; its input file does not exist, which checking never notices."""
    return document(
        [
            node("src", "ImageReaderNode", path="missing.exr"),
            node("num", "NumberNode", value=2),
            node("yes", "FlagNode", value=True),
            node("word", "TextNode", value="linear"),
            node("add", "ImageValueAddNode"),
            node("clamp", "ImageValueClampNode", low=0, high=1),
            node("double", "ImageValueMultiplyNode", constant=0.5),
        ],
        [
            link("src.image", "add.image", 0),
            link("num.number", "add.constant"),
            link("add.image", "clamp.image", 0),
            link("word.text", "clamp.profile"),
            link("clamp.image", "double.image"),
        ],
        [output("double.image", "out.exr", "half")],
    )


class CheckTestCase(ValueTestCase):
    def check(self, content, code=0, options=()):
        self.save("graph.json", content)
        result = self.value("check", "graph.json", *options, code=code)
        self.assert_files("graph.json")
        return result

    def accept(self, content):
        """The document is valid. Most are too small to write anything, which is a note."""
        result = self.check(content)
        said = [line for line in result.err_lines if "nothing is written" not in line]
        self.assertEqual(said, [], str(result))

    def accept_with_note(self, content, *words):
        self.assert_names(self.check(content), *words)

    def refuse(self, content, *words):
        """The document is invalid, and a line of the answer has the words in it."""
        self.assert_names(self.check(content, INVALID), *words)

    def refuse_attribute(self, type_name, name, value):
        content = document([node("zebra", type_name, **{name: value})])
        self.refuse(content, name)


class ValidTest(CheckTestCase):
    def test_good_document(self):
        self.accept(good())

    def test_json_answer(self):
        result = self.check(good(), options=["--json"])
        self.assertEqual(len(result.json_values()), 1, str(result))

    def test_nodes_of_every_host_type_with_all_their_attributes(self):
        frame = [0, 0, 8, 8]
        self.accept(document([
            node("a", "ImageReaderNode", path="x.exr", color_mode="signed", range="custom", low=-1,
                 high=2, placement="custom", pin=[1, 2], pivot=[0.5, 0.5]),
            node("b", "ImageRectangleNode", frame=frame, color=[0, 0.5, 1, 1]),
            node("c", "ImageCheckerNode", frame=frame, rect_x_size=[2, 2], rect_y_size=[2, 2],
                 color_00=[0, 0, 0, 1], color_10=[1, 1, 1, 1], color_01=[1, 1, 1, 1],
                 color_11=[0, 0, 0, 1]),
            node("d", "ImageWavesNode", frame=frame, height=2, wavelength=4),
            node("e", "ImageTerrainNode", frame=frame, seed=1, octaves=3, wavelength=8),
            node("f", "ImageWriterNode", path="w.exr", type="uint16"),
            node("g", "NumberNode", value=-1e30),
            node("h", "FlagNode", value=False),
            node("i", "TextNode", value="any text, with \"quotes\" and ü"),
            node("j", "ImageRerouteNode"),
        ], [link("b.image", "j.image"), link("j.image", "f.image")]))

    def test_the_first_twenty_types_by_name_and_by_numbers(self):
        types = {
            **{entry.class_name: list(entry.numbers) for entry in FIRST_TWENTY},
            "ImageReaderNode": [10, 16, 5],
            "ImageRectangleNode": [10, 16, 10],
            "ImageCheckerNode": [10, 16, 16],
            "ImageWavesNode": [10, 16, 32],
            "ImageTerrainNode": [10, 16, 40],
            "ImageWriterNode": [10, 16, 6],
            "NumberNode": [10, 16, 48],
            "FlagNode": [10, 16, 49],
            "TextNode": [10, 16, 50],
            "ImageRerouteNode": [10, 16, 51],
        }
        path = {"ImageReaderNode": {"path": "x.exr"}, "ImageWriterNode": {"path": "y.exr"}}
        links = [link("ImageRectangleNode.image", "ImageWriterNode.image")]
        by_name = [node(name, name, **path.get(name, {})) for name in types]
        self.accept(document(by_name, links))
        by_numbers = [node(name, numbers, **path.get(name, {})) for name, numbers in types.items()]
        self.accept(document(by_numbers, links))

    def test_every_output_of_compare_and_gradient(self):
        names = ["image_a_l_b", "image_a_le_b", "image_a_eq_b", "image_a_df_b", "image_a_ge_b",
                 "image_a_g_b"]
        self.accept(document(
            [
                node("box", "ImageRectangleNode"),
                node("compare", "ImageValueCompareNode", precision="1.0"),
                node("slope", "ImageComputeGradientNode", seamless=False),
            ],
            [
                link("box.image", "compare.image_a"),
                link("box.image", "compare.image_b"),
                link("compare.image_a_g_b", "slope.image"),
            ],
            [output(f"compare.{name}", f"{name}.exr") for name in names]
            + [output("slope.output_x", "x.exr"), output("slope.output_y", "y.exr")],
        ))

    def test_old_names(self):
        self.accept(document([
            node("a", "ImageValueAddNode", value=1),
            node("b", "ImageValueClampNode", min=0, max=1),
            node("c", "ImageToValueNode", min=0, max=1, saturate=True),
            node("d", "ImageReliefNode", version=0, height=2),
        ]))

    def test_relief_height_is_old_only_in_documents_of_version_0(self):
        for version in (1, None):
            with self.subTest(version=version):
                content = document([node("d", "ImageReliefNode", version=version, height=2)])
                self.refuse(content, "height")

    def test_connection_to_an_old_name(self):
        self.accept(document(
            [
                node("n", "NumberNode"),
                node("a", "ImageValueAddNode"),
                node("c", "ImageValueClampNode"),
            ],
            [link("n.number", "a.value"), link("n.number", "c.max")],
        ))

    def test_choice_word_of_the_host_and_flags(self):
        self.accept(document(
            [node("yes", "FlagNode"), node("c", "ImageToValueNode")],
            [link("yes.flag", "c.auto_level")],
        ))

    def test_schema_ships(self):
        schema = json.loads((REPOSITORY / "Host" / "Documents" / "graph.schema.json").read_text("utf-8"))
        text = json.dumps(schema)
        for word in ("value-graph", "nodes", "connections", "outputs", "attributeVersion"):
            self.assertIn(word, text)


class NotesTest(CheckTestCase):
    """Notes are lines of the answer and leave the exit code alone."""

    def test_number_out_of_bounds(self):
        self.accept_with_note(document([node("a", "ImageValueAddNode", constant=2e9)]), "constant")
        self.accept_with_note(document([node("a", "ImageValueRangeNode", size=-1)]), "size")
        self.accept_with_note(document([node("a", "ImageReliefNode", radius=251)]), "radius")

    def test_obsolete_attribute(self):
        for value in (1, 0.5, True):
            with self.subTest(value=value):
                content = document([node("a", "ImageValueAddNode", mask_min=value)])
                self.accept_with_note(content, "mask_min")

    def test_obsolete_name_is_unknown_to_other_nodes(self):
        for name in ("Subtract", "Multiply", "Maximum"):
            with self.subTest(node=name):
                content = document([node("a", f"ImageValue{name}Node", mask_min=1)])
                self.refuse(content, "mask_min")

    def test_old_and_new_name_together(self):
        self.accept_with_note(
            document([node("a", "ImageValueMultiplyNode", value=1, constant=2)]), "value"
        )

    def test_notes_do_not_hide_errors(self):
        content = document([node("a", "ImageValueAddNode", constant=2e9, zebra=1)])
        result = self.check(content, INVALID)
        self.assert_names(result, "zebra")
        self.assert_names(result, "constant")


class EffectTest(CheckTestCase):
    """Settings that have no effect where they stand are notes."""

    def notes(self, nodes, links, outputs):
        result = self.check(document(nodes, links, outputs))
        self.assertIn("graph.json is valid", result.out)
        return result.err_lines

    def test_constant_with_several_images(self):
        for kind in ("Add", "Subtract", "Multiply", "Divide", "Minimum", "Maximum"):
            with self.subTest(kind=kind):
                nodes = [node("a", "ImageWavesNode"), node("b", "ImageWavesNode"),
                         node("n", f"ImageValue{kind}Node", constant=0.5)]
                links = [link("a.image", "n.image", 0)]
                outputs = [output("n.image", "out.exr")]
                self.assertEqual(self.notes(nodes, links, outputs), [])
                lines = self.notes(nodes, links + [link("b.image", "n.image", 1)], outputs)
                self.assertEqual(lines, [
                    'value: note: graph.json: "n.constant" has no effect with 2 images; it counts with one'
                ])

    def test_constant_of_power(self):
        nodes = [node("a", "ImageWavesNode"), node("n", "ImageValuePowerNode", constant=2)]
        (line,) = self.notes(nodes, [link("a.image", "n.image")], [output("n.image", "out.exr")])
        self.assertIn('"n.constant" has no effect', line)

    def test_attribute_that_is_set_and_fed(self):
        nodes = [node("a", "ImageWavesNode"), node("x", "NumberNode", value=1),
                 node("n", "ImageValueAddNode", constant=2)]
        links = [link("a.image", "n.image"), link("x.number", "n.constant")]
        (line,) = self.notes(nodes, links, [output("n.image", "out.exr")])
        self.assertIn('"n.constant" is set and has no effect, because a connection feeds it', line)

    def test_document_that_writes_nothing(self):
        (line,) = self.notes([node("a", "ImageWavesNode")], [], [])
        self.assertIn("nothing is written", line)

    def test_run_says_the_same(self):
        self.save("graph.json", document(
            [node("a", "ImageWavesNode"), node("n", "ImageValuePowerNode", constant=2)],
            [link("a.image", "n.image")], [output("n.image", "out.exr")],
        ))
        self.assert_one_error(self.value("run", "graph.json"), "note:", '"n.constant" has no effect')
        self.assert_quiet(self.value("run", "graph.json", "--quiet"))

    def test_apply_says_the_same(self):
        for name in ("a.exr", "b.exr"):
            self.picture(name, sample_picture(VALUE))
        for value in ("0", "2"):
            result = self.value("apply", "Value Add", "-i", "a.exr", "-i", "b.exr", "--set",
                                f"constant={value}", "-o", "out.exr")
            self.assert_one_error(result, "note:", '"Value Add.constant" has no effect with 2 images')
        self.assert_quiet(
            self.value("apply", "Value Add", "-i", "a.exr", "-i", "b.exr", "-o", "out.exr")
        )
        self.assert_quiet(
            self.value("apply", "Value Add", "-i", "a.exr", "--set", "constant=2", "-o", "out.exr")
        )


class BeforeARunTest(CheckTestCase):
    """What a run would find without reading or computing anything."""

    def test_image_that_cannot_arrive(self):
        nodes = [node("a", "ImageValueAddNode"), node("b", "ImageValueFunctionNode"),
                 node("w", "ImageWriterNode", path="w.exr")]
        links = [link("a.image", "b.image"), link("b.image", "w.image")]
        self.save("graph.json", document(nodes, links, [output("b.image", "out.exr")]))
        result = self.value("check", "graph.json", code=INVALID)
        cause = 'cannot get an image: nothing is connected to "image" of node "a"'
        self.assertEqual(result.err_lines, [
            f'value: graph.json: output "b.image" {cause}', f'value: graph.json: node "w" {cause}',
        ])
        # A run finds no more and no less.
        self.assertEqual(len(self.value("run", "graph.json", code=NODE_ERROR).err_lines), 2)

    def test_disabled_nodes_without_output(self):
        for kind, ok in (("ImageValueClampNode", False), ("ImageValueStepsNode", False),
                         ("ImageValueRangeNode", True), ("ImageWavesNode", False)):
            with self.subTest(kind=kind):
                made = [node("a", "ImageWavesNode"), node("n", kind, enabled=False)]
                links = [] if kind == "ImageWavesNode" else [link("a.image", "n.image")]
                content = document(made, links, [output("n.image", "out.exr")])
                if ok:
                    self.accept(content)
                else:
                    self.refuse(content, '"n" is disabled')

    def test_folders_and_endings(self):
        content = document(
            [node("a", "ImageWavesNode"), node("w", "ImageWriterNode", path="none\\w.letter")],
            [link("a.image", "w.image")],
            [output("a.image", "none/a.exr"), output("a.image", "b.pgn"), output("a.image", "c.EXR")],
        )
        result = self.check(content, INVALID)
        self.assertEqual(len(result.err_lines), 3, str(result))
        self.assert_names(result, "b.pgn", "ending")
        self.assert_names(result, "w.letter", "ending")
        self.assert_names(result, '"a.image"', '"w"', '"none"', "does not exist")
        (self.dir / "none").mkdir()
        self.save("graph.json", content)
        result = self.value("check", "graph.json", code=INVALID)
        self.assertEqual(len(result.err_lines), 2, str(result))

    def test_input_files_are_not_looked_for(self):
        self.accept(document([node("r", "ImageReaderNode", path="none/missing.exr")], [],
                             [output("r.image", "out.exr")]))

    def test_what_nothing_needs_is_fine(self):
        self.accept(document(
            [node("a", "ImageWavesNode"), node("r", "ImageReaderNode"), node("n", "ImageValueAddNode")],
            [link("r.image", "n.image")], [output("a.image", "out.exr")],
        ))


class HidingTest(CheckTestCase):
    """No problem hides another one."""

    def test_cut_document(self):
        whole = json.dumps(document(
            [node("a", "ImageZebraNode"), node("b", "ImageValueAddNode", giraffe=1)],
            [link("a.image", "b.image", 0), link("a.image", "b.rhino")],
        ))
        result = self.check(whole[:-10], INVALID)
        self.assertIn("parse error", result.err_lines[0])
        for word in ("ImageZebraNode", "giraffe", "rhino"):
            self.assert_names(result, word)
        self.assertEqual(len(result.err_lines), 4, str(result))

    def test_unknown_type(self):
        made = node("a", "ImageZebraNode", constant=1)
        made["position"] = "here"
        result = self.check(document(
            [made, node("b", "ImageValueAddNode", constant="1")],
            [link("a.image", "b.image"), link("a.other", "b.rhino")],
            [output("b.image", "out.exr"), output("a.image", "a.exr")],
        ), INVALID)
        for word in ("ImageZebraNode", "position", "b.constant", "rhino"):
            self.assert_names(result, word)
        self.assertEqual(len(result.err_lines), 4, str(result))

    def test_twins_are_looked_at_as_well(self):
        result = self.check(document(
            [node("twin", "NumberNode"), node("twin", "FlagNode", value=3, zebra=1)]
        ), INVALID)
        for word in ("already", "twin.value", "zebra"):
            self.assert_names(result, word)

    def test_both_ends_of_a_connection(self):
        result = self.check(document([], [link("lion.image", "zebra.image", -1)]), INVALID)
        for word in ("lion", "zebra", "index"):
            self.assert_names(result, word)


class ManyDocumentsTest(CheckTestCase):
    def setUp(self):
        super().setUp()
        self.save("good.json", document([node("a", "ImageWavesNode")], [], [output("a.image", "o.exr")]))
        self.save("note.json", document([node("a", "ImageWavesNode")]))
        self.save("bad.json", document([node("a", "ImageZebraNode")], [], [output("a.image", "o.exr")]))

    def test_each_is_told(self):
        result = self.value("check", "good.json", "note.json")
        self.assertEqual(result.out, "good.json is valid\nnote.json is valid\n")
        result = self.value("check", "bad.json", "good.json", code=INVALID)
        self.assertEqual(result.out, "good.json is valid\n")
        self.assert_one_error(result, "bad.json", "ImageZebraNode")

    def test_one_that_cannot_be_read_does_not_end_it(self):
        result = self.value("check", "none.json", "bad.json", "good.json", code=FILE_ERROR)
        self.assertEqual(result.out, "good.json is valid\n")
        self.assertEqual(len(result.err_lines), 2, str(result))
        self.assert_names(result, "none.json")
        self.assert_names(result, "bad.json")

    def test_json(self):
        result = self.value("check", "none.json", "good.json", "note.json", "bad.json", "--json",
                            code=FILE_ERROR)
        (answer,) = result.json_values()
        documents = answer["documents"]
        self.assertEqual([item["document"] for item in documents],
                         ["none.json", "good.json", "note.json", "bad.json"])
        self.assertEqual([item["valid"] for item in documents], [False, True, True, False])
        self.assertEqual([len(item["problems"]) for item in documents], [1, 0, 0, 1])
        self.assertEqual([len(item.get("notes", [])) for item in documents], [0, 0, 1, 0])
        self.assertIn("none.json", answer["error"])
        (single,) = self.value("check", "good.json", "--json").json_values()
        self.assertEqual(single, {"document": "good.json", "valid": True, "problems": []})

    def test_quiet(self):
        result = self.value("check", "good.json", "note.json", "--quiet")
        self.assertEqual((result.out, result.err_lines), ("", []))


class TextTest(CheckTestCase):
    """What is not JSON at all, or not the JSON of a document."""

    @staticmethod
    def with_attribute(kind, name, text):
        """The text of a document with one node, the attribute's value put in as it is."""
        content = document([node("n", kind, **{name: "HERE"})])
        return json.dumps(content).replace('"HERE"', text)

    def test_text_put_in_as_it_is(self):
        self.accept(self.with_attribute("NumberNode", "value", "-1.5e3"))

    def test_broken_text(self):
        whole = json.dumps(good())
        for name, text in (
            ("empty", ""),
            ("blank", "  \n"),
            ("cut", whole[:-20]),
            ("trailing", whole + "}"),
            ("two", whole + whole),
            ("comma", whole[:-1] + ",}"),
            ("words", "hello"),
            ("comment", "// hello\n" + whole),
            ("single quotes", whole.replace('"', "'")),
            ("deep", "[" * 200000),
            ("deep objects", '{"nodes":' * 100000),
            ("control", whole.replace('"src"', '"s\trc"')),
        ):
            with self.subTest(text=name):
                result = self.check(text, INVALID)
                self.assertTrue(result.err_lines, str(result))
                self.assert_names(result, "graph.json")

    def test_broken_utf8(self):
        text = json.dumps(good()).encode().replace(b"linear", b"lin\xff\xfear")
        self.assertTrue(self.check(text, INVALID).err_lines)
        self.assertTrue(self.check(b"\x00\x01\x02\x80", INVALID).err_lines)

    def test_not_an_object(self):
        for text in ("[]", "1", "null", "true", '"value-graph"'):
            with self.subTest(text=text):
                self.assertTrue(self.check(text, INVALID).err_lines)

    def test_format_and_version(self):
        for key, value in (
            ("format", "zebra-graph"),
            ("format", 1),
            ("format", None),
            ("version", 3),
            ("version", 0),
            ("version", "1"),
            ("version", 1.5),
        ):
            with self.subTest(key=key, value=value):
                content = good()
                content[key] = value
                self.refuse(content, key)
        for key in ("format", "version"):
            with self.subTest(missing=key):
                content = good()
                del content[key]
                self.refuse(content, key)

    def test_parts_of_the_wrong_kind(self):
        for key in ("nodes", "connections", "outputs"):
            for value in ({}, "x", 3, None, [3], ["x"], [None], [[]]):
                with self.subTest(key=key, value=value):
                    content = good()
                    content[key] = value
                    if key != "outputs":
                        content["outputs"] = []
                    if key == "nodes":
                        content["connections"] = []
                    self.assertTrue(self.check(content, INVALID).err_lines)

    def test_numbers_that_no_double_holds(self):
        for number in ("1e999", "-1e999", "1" + "0" * 400):
            for kind, name, text in (
                ("ImageValueAddNode", "constant", number),
                ("NumberNode", "value", number),
                ("ImageRectangleNode", "color", f"[1, {number}, 1, 1]"),
            ):
                with self.subTest(number=number[:8], name=name):
                    result = self.check(self.with_attribute(kind, name, text), INVALID)
                    self.assertTrue(result.err_lines)

    def test_words_that_are_no_numbers(self):
        for number in ("NaN", "Infinity", "-Infinity", "nan", "0x10", "01", "+1", ".5", "1."):
            with self.subTest(number=number):
                result = self.check(self.with_attribute("NumberNode", "value", number), INVALID)
                self.assertTrue(result.err_lines)

    def test_repeated_keys(self):
        whole = json.dumps(good())
        for name, text in (
            ("constant", whole.replace('"constant": 0.5', '"constant": 0.5, "constant": 0.5')),
            ("id", whole.replace('"id": "add"', '"id": "add", "id": "add"')),
            ("version", whole.replace('"version": 1', '"version": 1, "version": 1')),
            ("path", whole.replace('"path": "out.exr"', '"path": "out.exr", "path": "out2.exr"')),
            ("index", whole.replace('"index": 0', '"index": 0, "index": 1', 1)),
            ("nodes", whole[:-1] + ', "nodes": []}'),
        ):
            with self.subTest(key=name):
                self.assertNotEqual(text, whole)
                self.refuse(text, name)

    def test_unknown_keys(self):
        for place in ("document", "node", "connection", "output"):
            with self.subTest(place=place):
                content = good()
                target = {
                    "document": content,
                    "node": content["nodes"][4],
                    "connection": content["connections"][0],
                    "output": content["outputs"][0],
                }[place]
                target["zebra"] = 1
                self.refuse(content, "zebra")

    def test_missing_keys(self):
        for place, key in (("nodes", "id"), ("nodes", "type"), ("connections", "from"),
                           ("connections", "to"), ("outputs", "from"), ("outputs", "path")):
            with self.subTest(place=place, key=key):
                content = good()
                del content[place][0][key]
                self.refuse(content, key)


class NodesTest(CheckTestCase):
    def test_unknown_types(self):
        for kind, shown in (
            ("ImageZebraNode", "ImageZebraNode"),
            ("", "zebra"),
            ([10, 320, 6], "320"),
            ([10, 320], "zebra"),
            ([10, 320, 5, 5], "zebra"),
            ([10, 320, -5], "zebra"),
            ([10, 320, 5.5], "zebra"),
            ([10, 320, 4294967301], "zebra"),
            ([10, 320, "5"], "zebra"),
            (5, "zebra"),
            (None, "zebra"),
        ):
            with self.subTest(kind=kind):
                self.refuse(document([node("zebra", kind)]), shown)

    def test_duplicate_ids(self):
        self.refuse(
            document([node("zebra", "NumberNode"), node("zebra", "FlagNode")]), "zebra"
        )

    def test_ids_of_the_wrong_kind(self):
        for identity in (5, None, True, ["x"]):
            with self.subTest(id=identity):
                self.refuse(document([node(identity, "NumberNode")]), "id")

    def test_enabled_and_version_of_the_wrong_kind(self):
        for key, values in (
            ("enabled", ("yes", 1, 0, None, [])),
            ("attributeVersion", ("0", -1, 0.5, None, True, 1e30)),
            ("attributes", ([], "x", 3, None)),
        ):
            for value in values:
                with self.subTest(key=key, value=value):
                    made = node("zebra", "NumberNode")
                    made[key] = value
                    self.refuse(document([made]), key)

    def test_unknown_attributes(self):
        for kind in ("ImageValueAddNode", "NumberNode", "ImageReaderNode", "ImageReliefNode"):
            with self.subTest(kind=kind):
                extra = {"path": "x.exr"} if kind == "ImageReaderNode" else {}
                self.refuse(document([node("lion", kind, zebra=1, **extra)]), "zebra")

    def test_names_are_exact(self):
        for name in ("Constant", "CONSTANT", "constant ", "valu", "values"):
            with self.subTest(name=name):
                self.refuse(document([node("a", "ImageValueAddNode", **{name: 1})]), name.strip())

    def test_unknown_choice_words(self):
        for kind, name, word in (
            ("ImageValueClampNode", "profile", "zebra"),
            ("ImageValueClampNode", "profile", "Linear"),
            ("ImageValueRangeNode", "profile", "perlin"),
            ("ImageValueFunctionNode", "function", "sin"),
            ("ImageValueCompareNode", "precision", "0.00001"),
            ("ImageValueConditionNode", "condition", ""),
            ("ImageWriterNode", "type", "int32"),
        ):
            with self.subTest(kind=kind, word=word):
                self.refuse(document([node("n", kind, **{name: word})]), name)

    def test_values_of_the_wrong_kind(self):
        wrong = {
            "number": ("1", True, None, [1], {}),
            "flag": (1, 0, "true", None, [True]),
            "choice": (0, True, None, ["linear"]),
            "string": (1, True, None, ["x"]),
            "point": (1, "1,2", [1], [1, 2, 3], [1, "2"], None, {"x": 1, "y": 2}),
            "frame": (1, [1, 2], [1, 2, 3], [1, 2, 3, 4, 5], [1, 2, 3, None], "0,0,1,1"),
            "color": (1, [1, 1, 1], [1, 1, 1, 1, 1], [1, 1, 1, "1"], "#ffffff", None),
        }
        for kind, name, form in (
            ("ImageValueAddNode", "constant", "number"),
            ("ImageWavesNode", "height", "number"),
            ("NumberNode", "value", "number"),
            ("ImageReliefNode", "grow", "flag"),
            ("FlagNode", "value", "flag"),
            ("ImageValueClampNode", "profile", "choice"),
            ("TextNode", "value", "string"),
            ("ImageWriterNode", "path", "string"),
            ("ImageCheckerNode", "rect_x_size", "point"),
            ("ImageRectangleNode", "frame", "frame"),
            ("ImageRectangleNode", "color", "color"),
        ):
            for value in wrong[form]:
                with self.subTest(kind=kind, name=name, value=value):
                    self.refuse_attribute(kind, name, value)

    def test_reader_without_path(self):
        self.refuse(document([node("zebra", "ImageReaderNode")]), "zebra")
        self.refuse(document([node("zebra", "ImageReaderNode", path="")]), "zebra")


class ConnectionsTest(CheckTestCase):
    NODES = [
        node("num", "NumberNode"),
        node("yes", "FlagNode"),
        node("word", "TextNode"),
        node("box", "ImageRectangleNode"),
        node("box2", "ImageRectangleNode"),
        node("add", "ImageValueAddNode"),
        node("add2", "ImageValueAddNode"),
        node("add3", "ImageValueAddNode"),
        node("clamp", "ImageValueClampNode"),
    ]

    def refuse_links(self, links, *words):
        self.refuse(document(self.NODES, links), *words)

    def test_unknown_ends(self):
        for source, target, culprit in (
            ("zebra.image", "add.image", "zebra"),
            ("box.image", "zebra.image", "zebra"),
            ("box.zebra", "add.image", "zebra"),
            ("box.image", "add.zebra", "zebra"),
            ("box.frame", "add.image", "frame"),
            ("zebra", "add.image", "zebra"),
            ("box.image", "zebra", "zebra"),
            ("", "add.image", ""),
            ("box.image", "", ""),
            ("box.image.image", "add.image", ""),
        ):
            with self.subTest(source=source, target=target):
                self.refuse_links([link(source, target, 0)], culprit)

    def test_ends_and_index_of_the_wrong_kind(self):
        for key, value in (
            ("from", 3), ("from", None), ("to", ["add", "image"]), ("index", "0"), ("index", -1),
            ("index", 0.5), ("index", None), ("index", True), ("index", 1e30),
        ):
            with self.subTest(key=key, value=value):
                made = link("box.image", "add.image", 0)
                made[key] = value
                self.refuse_links([made], key)

    def test_second_connection_to_one_index(self):
        self.refuse_links(
            [link("box.image", "add.image", 3), link("box2.image", "add.image", 3)], "add"
        )
        self.refuse_links([link("box.image", "add.image"), link("box2.image", "add.image")], "add")

    def test_second_connection_to_a_single_plug(self):
        self.refuse_links(
            [link("box.image", "clamp.image", 0), link("box2.image", "clamp.image", 1)], "clamp"
        )
        self.refuse_links(
            [link("num.number", "add.constant"), link("num.number", "add.constant")], "add"
        )
        # An old name is the same plug.
        self.refuse_links(
            [link("num.number", "add.constant"), link("num.number", "add.value")], "add"
        )

    def test_kinds_that_do_not_match(self):
        for source, target in (
            ("box.image", "add.constant"),
            ("num.number", "add.image"),
            ("yes.flag", "add.constant"),
            ("word.text", "add.constant"),
            ("num.number", "clamp.profile"),
            ("yes.flag", "clamp.profile"),
            ("word.text", "clamp.low"),
            ("word.text", "yes.value"),
            ("num.number", "box.frame"),
            ("num.number", "word.value"),
        ):
            with self.subTest(source=source, target=target):
                self.refuse_links([link(source, target, 0)], target.split(".")[0])

    def test_cycles(self):
        for links in (
            [link("add.image", "add.image", 0)],
            [link("add.image", "add2.image", 0), link("add2.image", "add.image", 0)],
            [
                link("box.image", "add.image", 0),
                link("add.image", "add2.image", 0),
                link("add2.image", "add3.image", 0),
                link("add3.image", "add.image", 1),
            ],
        ):
            with self.subTest(links=len(links)):
                self.refuse_links(links, "add")

    def test_cycle_through_an_attribute(self):
        self.refuse(
            document([node("lion", "NumberNode")], [link("lion.number", "lion.value")]), "lion"
        )

    def test_large_cycle(self):
        count = 5000
        self.refuse(document(
            [node(f"n{k}", "ImageValueAddNode") for k in range(count)],
            [link(f"n{k}.image", f"n{(k + 1) % count}.image", 0) for k in range(count)],
        ), "n")


class OutputsTest(CheckTestCase):
    BOX = [node("box", "ImageRectangleNode"), node("num", "NumberNode")]

    def test_unknown_ends(self):
        for source in ("zebra.image", "box.zebra", "zebra"):
            with self.subTest(source=source):
                self.refuse(document(self.BOX, [], [output(source, "out.exr")]), "zebra")

    def test_output_that_is_not_an_image(self):
        self.refuse(document(self.BOX, [], [output("num.number", "out.exr")]), "num")

    def test_unknown_type(self):
        for kind in ("zebra", "Float", "int32", ""):
            with self.subTest(kind=kind):
                self.refuse(document(self.BOX, [], [output("box.image", "out.exr", kind)]), "type")
        made = output("box.image", "out.exr")
        made["type"] = 5
        self.refuse(document(self.BOX, [], [made]), "type")

    def test_paths_of_the_wrong_kind(self):
        for path in (5, None, [], True):
            with self.subTest(path=path):
                made = output("box.image", "")
                made["path"] = path
                self.refuse(document(self.BOX, [], [made]), "path")

    def test_two_outputs_with_one_path(self):
        for second in ("out.exr", "./out.exr", "sub/../out.exr", str(self.dir / "out.exr")):
            with self.subTest(second=second):
                self.refuse(
                    document(
                        self.BOX,
                        [],
                        [output("box.image", "out.exr"), output("box.image", second, "half")],
                    ),
                    "out.exr",
                )
        self.refuse(
            document(
                self.BOX,
                [],
                [output("box.image", "sub/out.exr"), output("box.image", "sub\\out.exr")],
            ),
            "out.exr",
        )


class ManyProblemsTest(CheckTestCase):
    CONTENT = document(
        [
            node("a", "ImageZebraNode"),
            node("b", "ImageValueAddNode", giraffe=1),
            node("c", "ImageValueClampNode", profile="elephant"),
            node("twin", "NumberNode"),
            node("twin", "NumberNode"),
            node("box", "ImageRectangleNode", color=[1, 1]),
        ],
        [link("hyena.image", "b.image", 0), link("box.image", "b.rhino", 1)],
        [output("okapi.image", "out.exr"), output("box.image", "x.exr", "lynx")],
    )
    CULPRITS = ("ImageZebraNode", "giraffe", "elephant", "twin", "color", "hyena", "rhino", "okapi",
                "lynx")

    def test_every_problem_has_a_line(self):
        result = self.check(self.CONTENT, INVALID)
        used = set()
        for culprit in self.CULPRITS:
            with self.subTest(culprit=culprit):
                lines = [k for k, line in enumerate(result.err_lines) if culprit in line]
                self.assertTrue(lines, str(result))
                used.update(lines)
        self.assertGreaterEqual(len(used), len(self.CULPRITS), str(result))

    def test_json_lists_them_too(self):
        result = self.check(self.CONTENT, INVALID, ["--json"])
        text = json.dumps(result.json_values(), ensure_ascii=False)
        for culprit in self.CULPRITS:
            with self.subTest(culprit=culprit):
                self.assertIn(culprit, text)
        self.assert_json_error(result)

    def test_document_that_cannot_be_read(self):
        result = self.value("check", "nothing.json", code=FILE_ERROR)
        self.assert_one_error(result, "nothing.json")
        self.assertTrue(self.value("check", self.dir, code=FILE_ERROR).err_lines)

    def test_checking_evaluates_nothing(self):
        self.picture("in.exr", sample_picture(VALUE))
        self.save("graph.json", document(
            [
                node("r", "ImageReaderNode", path="in.exr"),
                node("w", "ImageWriterNode", path="w.exr"),
            ],
            [link("r.image", "w.image", 0)],
            [output("r.image", "out.exr")],
        ))
        self.value("check", "graph.json")
        self.assert_files("graph.json", "in.exr")


class PictureTest(CheckTestCase):
    """--svg draws the document, laid out by Graphviz."""

    def test_a_valid_document_is_drawn(self):
        self.save("graph.json", good())
        self.value("check", "graph.json", "--svg", "graph.svg", code=0)
        picture = (self.dir / "graph.svg").read_text()
        self.assertIn("Value Clamp", picture)
        self.assertIn("</svg>", picture)

    def test_several_documents_are_refused(self):
        self.save("graph.json", good())
        self.assert_names(self.value("check", "graph.json", "graph.json", "--svg", "graph.svg", code=2), "--svg")

    def test_an_invalid_document_is_drawn_with_its_problem_and_stays_invalid(self):
        self.save("graph.json", document([node("lonely", "ImageValueClampNode")], [], [output("lonely.picture", "out.exr")]))
        result = self.value("check", "graph.json", "--svg", "graph.svg", code=INVALID)
        self.assert_names(result, "lonely")
        texts = ElementTree.parse(self.dir / "graph.svg").iter("{http://www.w3.org/2000/svg}text")
        words = " ".join("".join(text.itertext()) for text in texts).replace("\xa0", " ")
        # The problem is the only text that has the id in quotes.
        self.assertIn('"lonely', words)

    def test_of_what_is_no_document_the_problem_is_drawn(self):
        self.save("graph.json", "{")
        self.assert_one_error(self.value("check", "graph.json", "--svg", "graph.svg", code=INVALID), "graph.json")
        self.assertIn("parse", (self.dir / "graph.svg").read_text())

    def test_without_graphviz_the_package_is_named_and_an_earlier_picture_stays(self):
        self.save("graph.json", good())
        self.save("graph.svg", "earlier")
        (self.dir / "empty").mkdir()
        result = self.value("check", "graph.json", "--svg", "graph.svg", code=FILE_ERROR,
                            environment={"PATH": str(self.dir / "empty")})
        self.assert_one_error(result, "--svg", "graphviz")
        self.assertEqual((self.dir / "graph.svg").read_text(), "earlier")

    def test_a_folder_that_is_not_there_is_named(self):
        self.save("graph.json", good())
        result = self.value("check", "graph.json", "--svg", "none/graph.svg", code=FILE_ERROR)
        self.assert_one_error(result, "--svg", "none")
        self.assert_files("graph.json")
