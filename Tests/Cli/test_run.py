"""value run: documents evaluated from end to end."""

import math
import resource

import numpy as np

from cli_support import (
    COLOR, DONE, FILE_ERROR, INF, INVALID, NAN, NODE_ERROR, OPERATIONS, OVERSIZE, PAIR, SANITIZED,
    SIGNED, USAGE, VALUE, F, Picture, ValueTestCase, arithmetic, document, link, node, output, read_file,
    sample_picture, write_file, write_picture,
)


class RunTestCase(ValueTestCase):
    def run_document(self, content, *options, code=0, **settings):
        self.save("graph.json", content)
        return self.value("run", "graph.json", *options, code=code, **settings)

    def stored(self, name="out.exr"):
        return read_file(self.dir / name)

    def reader(self, identity, picture, **attributes):
        """A reader of a file that holds the picture."""
        self.picture(f"{identity}.exr", picture)
        return node(identity, "ImageReaderNode", path=f"{identity}.exr", **attributes)

    def one_node(self, made, plug="image", kind=None):
        """Runs a document of one node whose output goes to out.exr."""
        content = document([made], outputs=[output(f"{made['id']}.{plug}", "out.exr", kind)])
        self.assert_quiet(self.run_document(content))
        return self.stored()


class ArithmeticDocumentTest(RunTestCase):
    def test_shipped_shape_of_a_document(self):
        picture = sample_picture(VALUE, seed=1)
        self.picture("terrain.exr", picture)
        result = self.run_document(
            """{
              "format": "value-graph", "version": 1,
              "nodes": [
                {"id": "height", "type": "ImageReaderNode", "attributes": {"path": "terrain.exr"}},
                {"id": "raised", "type": "ImageValueAddNode", "enabled": true,
                 "attributeVersion": 0, "attributes": {"constant": 0.25}}
              ],
              "connections": [{"from": "height.image", "to": "raised.image", "index": 0}],
              "outputs": [{"from": "raised.image", "path": "raised.exr", "type": "float"}]
            }"""
        )
        self.assert_quiet(result)
        self.assert_picture(self.dir / "raised.exr", arithmetic("Add", [picture], 0.25))
        self.assert_files("graph.json", "terrain.exr", "raised.exr")

    def test_all_seven_with_connections_out_of_order(self):
        pictures = [sample_picture(VALUE, seed=10 + k, span=(0.5, 2.0)) for k in range(3)]
        readers = [self.reader(f"r{k}", picture) for k, picture in enumerate(pictures)]
        nodes, links, outputs = list(readers), [], []
        for name in OPERATIONS:
            nodes.append(node(name, f"ImageValue{name}Node"))
            # The index decides, not the place in the list, and gaps do not matter.
            links += [
                link("r2.image", f"{name}.image", 9),
                link("r0.image", f"{name}.image", 2),
                link("r1.image", f"{name}.image", 3),
            ]
            outputs.append(output(f"{name}.image", f"{name}.exr"))
        self.assert_quiet(self.run_document(document(nodes, links, outputs)))
        for name in OPERATIONS:
            with self.subTest(node=name):
                self.assert_picture(self.dir / f"{name}.exr", arithmetic(name, pictures))

    def test_type_by_its_three_numbers(self):
        picture = sample_picture(VALUE, seed=2)
        self.assert_quiet(self.run_document(document(
            [self.reader("r", picture), node("add", [10, 320, 5], constant=2)],
            [link("r.image", "add.image")],
            [output("add.image", "out.exr")],
        )))
        self.assert_picture(self.dir / "out.exr", arithmetic("Add", [picture], 2.0))

    def test_host_types_by_their_three_numbers(self):
        picture = sample_picture(VALUE, seed=2)
        self.picture("in.exr", picture)
        self.assert_quiet(self.run_document(document(
            [
                node("r", [10, 16, 5], path="in.exr"),
                node("n", [10, 16, 48], value=3),
                node("add", "ImageValueAddNode"),
            ],
            [link("r.image", "add.image", 0), link("n.number", "add.constant")],
            [output("add.image", "out.exr")],
        )))
        self.assert_picture(self.dir / "out.exr", arithmetic("Add", [picture], 3.0))

    def test_one_source_on_two_indices(self):
        picture = sample_picture(VALUE, seed=3)
        self.run_document(document(
            [self.reader("r", picture), node("add", "ImageValueAddNode")],
            [link("r.image", "add.image", 0), link("r.image", "add.image", 1)],
            [output("add.image", "out.exr")],
        ))
        self.assert_picture(self.dir / "out.exr", arithmetic("Add", [picture, picture]))

    def test_diamond(self):
        picture = sample_picture(VALUE, seed=4)
        self.run_document(document(
            [
                self.reader("r", picture),
                node("left", "ImageValueMultiplyNode", constant=3),
                node("right", "ImageValueDivideNode", constant=4),
                node("join", "ImageValueSubtractNode"),
            ],
            [
                link("left.image", "join.image", 0),
                link("right.image", "join.image", 1),
                link("r.image", "left.image", 0),
                link("r.image", "right.image", 0),
            ],
            [output("join.image", "out.exr"), output("left.image", "left.exr")],
        ))
        left = arithmetic("Multiply", [picture], 3.0)
        right = arithmetic("Divide", [picture], 4.0)
        self.assert_picture(self.dir / "out.exr", arithmetic("Subtract", [left, right]))
        self.assert_picture(self.dir / "left.exr", left)

    def test_long_chain(self):
        length = 3000
        nodes = [node("n0", "ImageRectangleNode", frame=[0, 0, 2, 1], color=[0, 0, 0, 0])]
        nodes += [node(f"n{k}", "ImageValueAddNode", constant=1) for k in range(1, length + 1)]
        links = [link(f"n{k}.image", f"n{k + 1}.image", 0) for k in range(length)]
        self.run_document(
            document(nodes[::-1], links, [output(f"n{length}.image", "out.exr")])
        )
        self.assert_samples(
            self.stored().data,
            np.array([[[length * F(length)] * 3 + [length]] * 2], dtype=F),
        )

    def test_no_image_reaches_outside_value_of_the_first_fold(self):
        # Power of two images has 0 to the power 0, which is 1, where neither has a pixel; a
        # wider image joined later meets that 1 around it. Divide leaves NaN there.
        small = [sample_picture(VALUE, 2, 2, seed=5 + k, span=(1.0, 2.0)) for k in range(2)]
        wide = sample_picture(VALUE, 4, 3, seed=7)
        for name, around in (("Power", 1.0), ("Divide", NAN), ("Add", 0.0)):
            with self.subTest(node=name):
                self.run_document(document(
                    [
                        self.reader("a", small[0]),
                        self.reader("b", small[1]),
                        self.reader("w", wide),
                        node("inner", f"ImageValue{name}Node"),
                        node("outer", "ImageValueAddNode"),
                    ],
                    [
                        link("a.image", "inner.image", 0),
                        link("b.image", "inner.image", 1),
                        link("inner.image", "outer.image", 0),
                        link("w.image", "outer.image", 1),
                    ],
                    [output("outer.image", "out.exr")],
                ))
                inner = arithmetic(name, small)
                wanted = arithmetic("Add", [inner, wide])
                self.assert_picture(self.dir / "out.exr", wanted)
                corner = self.stored().data[2, 3, 0]
                self.assert_samples([[corner]], [[F(around) + wide.data[2, 3, 0]]])

    def test_one_image_has_nothing_but_zero_around_it(self):
        small = sample_picture(VALUE, 2, 2, seed=8)
        wide = sample_picture(VALUE, 4, 3, seed=9)
        self.run_document(document(
            [
                self.reader("s", small),
                self.reader("w", wide),
                node("inner", "ImageValueAddNode", constant=5),
                node("outer", "ImageValueAddNode"),
            ],
            [
                link("s.image", "inner.image", 0),
                link("inner.image", "outer.image", 0),
                link("w.image", "outer.image", 1),
            ],
            [output("outer.image", "out.exr")],
        ))
        wanted = arithmetic("Add", [arithmetic("Add", [small], 5.0), wide])
        self.assert_picture(self.dir / "out.exr", wanted)

    def test_image_without_pixels_is_ignored(self):
        picture = sample_picture(VALUE, seed=10)
        for frame in ([0, 0, 0, 5], [0, 0, 5, 0]):
            with self.subTest(frame=frame):
                self.run_document(document(
                    [
                        node("empty", "ImageRectangleNode", frame=frame),
                        self.reader("r", picture),
                        node("add", "ImageValueAddNode", constant=2),
                    ],
                    [link("empty.image", "add.image", 0), link("r.image", "add.image", 1)],
                    [output("add.image", "out.exr")],
                ))
                self.assert_picture(self.dir / "out.exr", arithmetic("Add", [picture], 2.0))


class AttributeTest(RunTestCase):
    def result_of(self, attributes, type_name="ImageValueAddNode", notes=(), extra=(), links=(),
                  **options):
        """Runs reader -> node with the attributes; the picture is all zeros."""
        picture = Picture([[0.0, 0.0]], VALUE)
        result = self.run_document(document(
            [self.reader("r", picture), node("n", type_name, **options, **attributes), *extra],
            [link("r.image", "n.image", 0), *links],
            [output("n.image", "out.exr")],
        ))
        if notes:
            for words in notes:
                self.assert_names(result, *words)
        else:
            self.assert_quiet(result)
        return self.stored().data[0, 0, 0]

    def test_whole_numbers_and_exponents(self):
        for text, wanted in (("5", 5.0), ("-3", -3.0), ("2.5e2", 250.0), ("1E-2", F(0.01))):
            with self.subTest(number=text):
                self.picture("r.exr", Picture([[0.0]], VALUE))
                self.run_document(
                    '{"format": "value-graph", "version": 1, "nodes": ['
                    '{"id": "r", "type": "ImageReaderNode", "attributes": {"path": "r.exr"}},'
                    '{"id": "n", "type": "ImageValueAddNode", "attributes": {"constant": '
                    + text
                    + '}}], "connections": [{"from": "r.image", "to": "n.image", "index": 0}],'
                    '"outputs": [{"from": "n.image", "path": "out.exr"}]}'
                )
                self.assertEqual(self.stored().data[0, 0, 0], F(wanted))

    def test_old_name(self):
        for name in OPERATIONS:
            with self.subTest(node=name):
                picture = Picture([[3.0]], VALUE)
                self.run_document(document(
                    [self.reader("r", picture), node("n", f"ImageValue{name}Node", value=2)],
                    [link("r.image", "n.image", 0)],
                    [output("n.image", "out.exr")],
                ))
                self.assert_picture(self.dir / "out.exr", arithmetic(name, [picture], 2.0))

    def test_new_name_wins_over_old_with_a_note(self):
        for attributes in ({"value": 3, "constant": 4}, {"constant": 4, "value": 3}):
            with self.subTest(attributes=attributes):
                self.assertEqual(self.result_of(attributes, notes=[("value",)]), 4)

    def test_obsolete_attribute_of_add_is_skipped_with_a_note(self):
        got = self.result_of({"mask_min": 7, "constant": 1}, notes=[("mask_min",)])
        self.assertEqual(got, 1)

    def test_out_of_bounds_is_cut_with_a_note(self):
        self.assertEqual(self.result_of({"constant": 5e9}, notes=[("constant",)]), F(1e9))
        self.assertEqual(self.result_of({"constant": -1e300}, notes=[("constant",)]), F(-1e9))

    def test_number_by_connection(self):
        for target in ("n.constant", "n.value"):
            with self.subTest(target=target):
                got = self.result_of(
                    {"constant": 50},
                    extra=[node("num", "NumberNode", value=1.5)],
                    links=[link("num.number", target)],
                )
                self.assertEqual(got, 1.5)

    def test_index_of_a_number_connection_may_be_given(self):
        got = self.result_of(
            {},
            extra=[node("num", "NumberNode", value=-1.5)],
            links=[link("num.number", "n.constant", 0)],
        )
        self.assertEqual(got, -1.5)

    def test_delivered_number_is_not_cut(self):
        got = self.result_of(
            {},
            extra=[node("num", "NumberNode", value=4e9)],
            links=[link("num.number", "n.constant")],
        )
        self.assertEqual(got, F(4e9))

    def test_delivered_number_beyond_float_becomes_infinite(self):
        got = self.result_of(
            {},
            extra=[node("num", "NumberNode", value=1e300)],
            links=[link("num.number", "n.constant")],
        )
        self.assertEqual(got, INF)

    def test_when_off_number_counts_as_zero(self):
        picture = Picture([[3.0, -2.0]], VALUE)
        for name in ("Add", "Subtract", "Multiply", "Divide", "Minimum", "Maximum", "Power"):
            with self.subTest(node=name):
                self.run_document(document(
                    [
                        self.reader("r", picture),
                        node("num", "NumberNode", enabled=False, value=9),
                        node("n", f"ImageValue{name}Node", constant=50),
                    ],
                    [link("r.image", "n.image", 0), link("num.number", "n.constant")],
                    [output("n.image", "out.exr")],
                ))
                self.assert_picture(self.dir / "out.exr", arithmetic(name, [picture], 0.0))

    def test_one_number_feeds_two_nodes(self):
        picture = Picture([[2.0]], VALUE)
        self.run_document(document(
            [
                self.reader("r", picture),
                node("num", "NumberNode", value=3),
                node("a", "ImageValueAddNode"),
                node("b", "ImageValueMultiplyNode"),
            ],
            [
                link("r.image", "a.image", 0),
                link("a.image", "b.image", 0),
                link("num.number", "a.constant"),
                link("num.number", "b.constant"),
            ],
            [output("b.image", "out.exr")],
        ))
        self.assertEqual(self.stored().data[0, 0, 0], 15)

    def test_text_feeds_path_and_choice(self):
        picture = sample_picture(COLOR, seed=3)
        path = self.picture("c.exr", picture)
        self.run_document(document(
            [
                node("where", "TextNode", value=str(path)),
                node("how", "TextNode", value="value"),
                node("r", "ImageReaderNode", path="unused.exr"),
            ],
            [link("where.text", "r.path"), link("how.text", "r.color_mode")],
            [output("r.image", "out.exr")],
        ))
        self.assert_samples(self.stored().data, picture.as_value().data)


class DisabledTest(RunTestCase):
    def test_when_off_arithmetic_copies_its_first_image_whole(self):
        first = sample_picture(VALUE, seed=11, pin=(4, -5), pivot=(0.5, 0.75), low=-9, high=11)
        second = sample_picture(VALUE, 2, 2, seed=12)
        for name in OPERATIONS:
            with self.subTest(node=name):
                self.run_document(document(
                    [
                        self.reader("a", first),
                        self.reader("b", second),
                        node("n", f"ImageValue{name}Node", enabled=False, constant=5),
                    ],
                    [link("a.image", "n.image", 1), link("b.image", "n.image", 4)],
                    [output("n.image", "out.exr")],
                ))
                self.assert_picture(self.dir / "out.exr", first)

    def test_when_off_arithmetic_ignores_an_image_without_pixels(self):
        picture = sample_picture(SIGNED, seed=13)
        self.run_document(document(
            [
                node("empty", "ImageRectangleNode", frame=[3, 3, 0, 0]),
                self.reader("r", picture),
                node("n", "ImageValueAddNode", enabled=False),
            ],
            [link("empty.image", "n.image", 0), link("r.image", "n.image", 1)],
            [output("n.image", "out.exr")],
        ))
        self.assert_picture(self.dir / "out.exr", picture)

    def test_when_off_reader_has_no_output(self):
        picture = sample_picture(VALUE, seed=14)
        off = self.reader("off", sample_picture(VALUE, seed=15))
        off["enabled"] = False
        content = document(
            [self.reader("on", picture), off, node("n", "ImageValueAddNode", constant=2)],
            [link("off.image", "n.image", 0), link("on.image", "n.image", 1)],
            [output("n.image", "out.exr")],
        )
        self.run_document(content)
        # One image is left, so the constant takes part.
        self.assert_picture(self.dir / "out.exr", arithmetic("Add", [picture], 2.0))

    def test_requested_output_without_image(self):
        for kind in ("ImageReaderNode", "ImageRectangleNode"):
            with self.subTest(kind=kind):
                off = node("off", kind, enabled=False)
                if kind == "ImageReaderNode":
                    off = self.reader("off", sample_picture(VALUE))
                    off["enabled"] = False
                result = self.run_document(
                    document(
                        [off, node("zebra", "ImageValueAddNode")],
                        [link("off.image", "zebra.image", 0)],
                        [output("zebra.image", "out.exr")],
                    ),
                    code=NODE_ERROR,
                )
                self.assert_one_error(result, "zebra")
                self.assertFalse((self.dir / "out.exr").exists())

    def test_node_without_any_connection(self):
        content = document(
            [
                node("lonely", "ImageValueAddNode"),
                node("box", "ImageRectangleNode", frame=[0, 0, 2, 1]),
            ],
            [],
            [output("lonely.image", "out.exr"), output("box.image", "box.exr")],
        )
        result = self.run_document(content, code=NODE_ERROR)
        self.assert_one_error(result, "lonely")
        self.assert_files("graph.json", "box.exr")

    def test_when_off_reader_of_a_missing_file_is_not_an_error(self):
        picture = sample_picture(VALUE, seed=16)
        self.run_document(document(
            [
                self.reader("on", picture),
                node("off", "ImageReaderNode", enabled=False, path="missing.exr"),
                node("n", "ImageValueMultiplyNode", constant=2),
            ],
            [link("off.image", "n.image", 0), link("on.image", "n.image", 1)],
            [output("n.image", "out.exr")],
        ))
        self.assert_picture(self.dir / "out.exr", arithmetic("Multiply", [picture], 2.0))


class GeneratorTest(RunTestCase):
    def test_rectangle(self):
        made = node("g", "ImageRectangleNode", frame=[-3, 7, 4, 2], color=[0.5, 0.25, 2.0, 0.5])
        self.one_node(made)
        data = np.tile(np.array([0.5, 0.25, 2.0, 0.5], dtype=F), (2, 4, 1))
        self.assert_picture(self.dir / "out.exr", Picture(data, COLOR, pin=(-3, 7)))

    def test_rectangle_defaults(self):
        self.one_node(node("g", "ImageRectangleNode"))
        self.assert_picture(self.dir / "out.exr", Picture(np.ones((64, 64, 4)), COLOR))

    def test_frame_is_rounded_with_halves_going_down(self):
        made = node("g", "ImageRectangleNode", frame=[0.5, -1.5, 2.5, 3.51])
        self.one_node(made)
        self.assert_picture(
            self.dir / "out.exr", Picture(np.ones((4, 2, 4)), COLOR, pin=(0, -2))
        )

    def test_checker(self):
        colors = {
            "color_00": [1.0, 0.0, 0.0, 1.0],
            "color_10": [0.0, 1.0, 0.0, 0.5],
            "color_01": [0.0, 0.0, 1.0, 0.25],
            "color_11": [0.25, 0.5, 0.75, 1.0],
        }
        made = node(
            "g", "ImageCheckerNode", frame=[5, -3, 8, 7],
            rect_x_size=[3, 100], rect_y_size=[100, 2], **colors,
        )
        self.one_node(made)
        data = np.empty((7, 8, 4), dtype=F)
        for y in range(7):
            for x in range(8):
                data[y, x] = colors[f"color_{(x // 3) % 2}{(y // 2) % 2}"]
        self.assert_picture(self.dir / "out.exr", Picture(data, COLOR, pin=(5, -3)))

    def test_waves(self):
        made = node("g", "ImageWavesNode", frame=[2, 3, 7, 4], height=2.5, wavelength=6)
        stored = self.one_node(made)
        wanted = np.empty((4, 7))
        for y in range(4):
            for x in range(7):
                distance = math.hypot(x + 0.5 - 3.5, y + 0.5 - 2.0)
                wanted[y, x] = 2.5 * math.sin(2 * math.pi * distance / 6)
        self.assert_close(stored.data, wanted, 1e-5)
        self.assert_header(stored, Picture(wanted, VALUE, pin=(2, 3), low=-2.5, high=2.5))

    def test_waves_defaults(self):
        stored = self.one_node(node("g", "ImageWavesNode"))
        self.assertEqual(stored.data.shape, (64, 64, 1))
        self.assertEqual((stored.low, stored.high), (-1, 1))
        distance = math.hypot(10.5 - 32, 20.5 - 32)
        wanted = math.sin(2 * math.pi * distance / 16)
        self.assertAlmostEqual(float(stored.data[20, 10, 0]), wanted, places=5)

    def test_terrain(self):
        made = node("g", "ImageTerrainNode", frame=[1, 2, 16, 8], seed=3, octaves=4, wavelength=8)
        stored = self.one_node(made)
        first = stored.data
        self.assertEqual(first.shape, (8, 16, 1))
        self.assert_header(stored, Picture(first, VALUE, pin=(1, 2)))
        self.assertTrue(np.isfinite(first).all())
        self.assertGreater(float(first.max() - first.min()), 0.0)
        again = self.one_node(made).data
        self.assert_samples(again, first)
        made["attributes"]["seed"] = 4
        self.assertFalse(np.array_equal(self.one_node(made).data, first))

    def test_generators_join_in_arithmetic(self):
        self.run_document(document(
            [
                node("a", "ImageRectangleNode", frame=[0, 1, 4, 2], color=[1, 1, 1, 1]),
                node("b", "ImageRectangleNode", frame=[1, 0, 2, 4], color=[0.5, 0.5, 0.5, 0.5]),
                node("n", "ImageValueAddNode"),
            ],
            [link("a.image", "n.image", 0), link("b.image", "n.image", 1)],
            [output("n.image", "out.exr")],
        ))
        a = Picture(np.ones((2, 4, 4)), COLOR, pin=(0, 1))
        b = Picture(np.full((4, 2, 4), 0.5), COLOR, pin=(1, 0))
        self.assert_picture(self.dir / "out.exr", arithmetic("Add", [a, b]))

    def test_generator_larger_than_the_maximum(self):
        for name in ("Rectangle", "Checker", "Waves", "Terrain"):
            kind = f"Image{name}Node"
            with self.subTest(kind=kind):
                result = self.run_document(
                    document(
                        [node("giant", kind, frame=[0, 0, 11, 2])],
                        [],
                        [output("giant.image", "out.exr")],
                    ),
                    "--max-size", "10", code=NODE_ERROR,
                )
                self.assert_one_error(result, "giant", OVERSIZE)
                self.assert_files("graph.json")


class ReaderTest(RunTestCase):
    def read(self, made, **options):
        content = document([made], outputs=[output(f"{made['id']}.image", "out.exr")])
        return self.run_document(content, **options)

    def test_stored_header_comes_back(self):
        for mode in (COLOR, SIGNED, VALUE, PAIR):
            with self.subTest(mode=mode):
                picture = sample_picture(
                    mode, seed=mode, pin=(-7, 9), pivot=(0.25, -1.5), low=-3.5, high=12.0
                )
                self.assert_quiet(self.read(self.reader("r", picture)))
                self.assert_picture(self.dir / "out.exr", picture)

    def test_fresh_header_without_notes(self):
        data = sample_picture(COLOR, seed=2)
        for channels, mode in ((1, VALUE), (4, COLOR)):
            with self.subTest(channels=channels):
                samples = data.data[:, :, :channels].copy()
                if mode == COLOR:
                    samples[:, :, 3] = 1
                write_file(self.dir / "r.exr", samples)
                self.read(node("r", "ImageReaderNode", path="r.exr"))
                self.assert_picture(self.dir / "out.exr", Picture(samples, mode))

    def test_range_attribute(self):
        data = [[-2.0, 0.5, 3.0, NAN, INF]]
        picture = Picture(data, VALUE, low=-50, high=60)
        for attributes, low, high in (
            ({}, -50, 60),
            ({"range": "declared", "low": 1, "high": 2}, -50, 60),
            ({"range": "measured"}, -2, 3),
            ({"range": "custom", "low": -0.25, "high": 8}, -0.25, 8),
        ):
            with self.subTest(attributes=attributes):
                self.read(self.reader("r", picture, **attributes))
                picture_as_read = Picture(data, VALUE, low=low, high=high)
                self.assert_picture(self.dir / "out.exr", picture_as_read)

    def test_custom_range_holds_for_every_mode(self):
        for mode in (COLOR, SIGNED, VALUE, PAIR):
            with self.subTest(mode=mode):
                picture = sample_picture(mode, seed=3)
                self.read(self.reader("r", picture, range="custom", low=-8, high=9))
                stored = self.stored()
                self.assertEqual((stored.low, stored.high), (-8, 9))

    def test_placement_attribute(self):
        picture = sample_picture(VALUE, seed=4, pin=(10, 20), pivot=(0.5, 0.25))
        for attributes, pin, pivot in (
            ({"placement": "file", "pin": [1, 1], "pivot": [1, 1]}, (10, 20), (0.5, 0.25)),
            ({"placement": "custom", "pin": [-3, 8], "pivot": [0.75, -0.5]}, (-3, 8), (0.75, -0.5)),
            ({"placement": "custom", "pin": [2.5, -1.5], "pivot": [0, 0]}, (2, -2), (0, 0)),
        ):
            with self.subTest(attributes=attributes):
                self.read(self.reader("r", picture, **attributes))
                stored = self.stored()
                self.assertEqual(tuple(stored.pin), pin)
                self.assertEqual(tuple(stored.pivot), pivot)

    def test_color_mode_value(self):
        for mode in (COLOR, SIGNED, PAIR):
            with self.subTest(mode=mode):
                picture = sample_picture(mode, seed=5, pin=(1, 2))
                self.read(self.reader("r", picture, color_mode="value"))
                stored = self.stored()
                if mode == COLOR:
                    self.assert_samples(stored.data, picture.as_value().data)
                self.assertEqual(stored.mode, VALUE)
                self.assertEqual(tuple(stored.pin), (1, 2))

    def test_color_mode_signed_takes_channels_plain(self):
        data = sample_picture(SIGNED, seed=6).data
        write_file(self.dir / "r.exr", data)
        self.read(node("r", "ImageReaderNode", path="r.exr", color_mode="signed"))
        self.assert_picture(self.dir / "out.exr", Picture(data, SIGNED))

    def test_color_mode_color_on_one_channel_is_opaque_grey(self):
        data = np.array([[0.5, 2.0, -1.0]], dtype=F)
        write_file(self.dir / "r.exr", data)
        self.read(node("r", "ImageReaderNode", path="r.exr", color_mode="color"))
        # A file without opacity makes one without it.
        stored = self.stored()
        self.assertEqual(stored.mode, COLOR)
        self.assert_samples(stored.data, np.stack([data, data, data], axis=2))

    def test_stored_range_goes_with_the_samples_into_another_mode(self):
        picture = sample_picture(COLOR, seed=7, low=-4, high=5)
        for mode in ("value", "signed", "color"):
            with self.subTest(mode=mode):
                self.read(self.reader("r", picture, color_mode=mode))
                stored = self.stored()
                self.assertEqual((stored.low, stored.high), (-4, 5))

    def test_range_of_a_mode_without_a_stored_one(self):
        data = sample_picture(COLOR, seed=8).data
        write_file(self.dir / "r.exr", data)
        for mode, wanted in (
            ("value", (0, 1)),
            ("signed", (-1, 1)),
            ("color", (0, 1)),
            ("auto", (0, 1)),
        ):
            with self.subTest(mode=mode):
                self.read(node("r", "ImageReaderNode", path="r.exr", color_mode=mode))
                stored = self.stored()
                self.assertEqual((stored.low, stored.high), wanted)

    def test_stored_mode_that_does_not_suit_the_channels(self):
        data = np.array([[0.5, 0.75]], dtype=F)
        for stored_mode in (COLOR, SIGNED, PAIR, 9, -1):
            with self.subTest(stored=stored_mode):
                write_file(self.dir / "r.exr", data, notes=[("value:mode", "int", stored_mode)])
                result = self.read(node("r", "ImageReaderNode", path="r.exr"))
                self.assertTrue(result.err_lines, "no note")
                self.assert_picture(self.dir / "out.exr", Picture(data, VALUE))


class OutputTypeTest(RunTestCase):
    DATA = np.array([[0.0, 0.25, 0.123], [0.77, 0.999, 1.0]], dtype=F)

    def write(self, name, kind, data=None, **options):
        self.picture("in.exr", Picture(self.DATA if data is None else data, VALUE))
        result = self.run_document(document(
            [node("r", "ImageReaderNode", path="in.exr")], [], [output("r.image", name, kind)]
        ), **options)
        return result, read_file(self.dir / name)

    def test_float(self):
        for name in ("out.exr", "out.tif"):
            with self.subTest(name=name):
                result, stored = self.write(name, "float")
                self.assert_quiet(result)
                self.assertEqual(stored.kind, "float")
                self.assert_samples(stored.data, self.DATA)

    def test_float_is_the_default(self):
        _, stored = self.write("out.exr", None)
        self.assertEqual(stored.kind, "float")

    def test_half_is_the_nearest(self):
        data = np.array([[0.1, 1.0 / 3.0, 1000.7, -2.0, INF, -0.0]], dtype=F)
        result, stored = self.write("out.exr", "half", data)
        self.assert_quiet(result)
        self.assertEqual(stored.kind, "half")
        self.assert_samples(stored.data.astype(F), data.astype(np.float16).astype(F))

    def test_whole_numbers_round_to_nearest(self):
        for name, kind, largest in (
            ("out.png", "uint8", 255),
            ("out.png", "uint16", 65535),
            ("out.tif", "uint8", 255),
            ("out.tif", "uint16", 65535),
        ):
            with self.subTest(name=name, kind=kind):
                result, stored = self.write(name, kind)
                self.assert_quiet(result)
                self.assertEqual(stored.kind, kind)
                wanted = np.rint(self.DATA.astype(np.float64) * largest)
                self.assert_samples(stored.data.astype(F), wanted)

    def test_values_outside_are_cut_and_counted(self):
        data = np.array([[-0.5, 0.25, 1.0, 1.5], [7.0, 0.0, -1e9, 0.2]], dtype=F)
        inside = np.clip(data, 0, 1).astype(np.float64)
        for kind, largest in (("uint8", 255), ("uint16", 65535)):
            with self.subTest(kind=kind):
                result, stored = self.write("out.png", kind, data)
                self.assert_samples(stored.data.astype(F), np.rint(inside * largest))
                self.assertTrue(
                    any("4" in line for line in result.err_lines),
                    f"no note that 4 values were cut\n{result}",
                )

    def test_infinities_are_cut(self):
        result, stored = self.write("out.png", "uint8", np.array([[INF, -INF, 1.0]], dtype=F))
        self.assert_samples(stored.data.astype(F), np.array([[255, 0, 255]]))
        self.assertTrue(any("2" in line for line in result.err_lines), str(result))

    def test_straight_colour_in_png(self):
        for color in ([0.25, 0.123, 0.77, 0.4], [1.0, 0.6, 0.2, 0.0]):
            for kind, largest in (("uint8", 255), ("uint16", 65535)):
                with self.subTest(color=color, kind=kind):
                    self.run_document(document(
                        [node("a", "ImageRectangleNode", frame=[0, 0, 1, 1], color=color)],
                        [],
                        [output("a.image", "out.png", kind)],
                    ))
                    wanted = np.rint(np.array([[color]]) * largest)
                    self.assert_samples(self.stored("out.png").data.astype(F), wanted)

    def test_colour_in_tiff_is_what_its_opacity_says(self):
        content = document(
            [node("a", "ImageRectangleNode", frame=[0, 0, 2, 1], color=[0.5, 0.25, 0.75, 0.5])],
            [],
            [output("a.image", "out.tif", "float")],
        )
        self.run_document(content)
        stored = self.stored("out.tif")
        factor = 1.0 if stored.straight else 0.5
        wanted = np.tile(
            np.array([0.5 * factor, 0.25 * factor, 0.75 * factor, 0.5], dtype=F), (1, 2, 1)
        )
        self.assert_samples(stored.data, wanted)

    def test_colour_in_exr_is_multiplied(self):
        self.one_node(node("a", "ImageRectangleNode", frame=[0, 0, 1, 1], color=[0.3, 0.7, 2, 0.6]))
        opacity = F(0.6)
        wanted = [F(0.3) * opacity, F(0.7) * opacity, F(2) * opacity, opacity]
        self.assert_samples(self.stored().data, [[wanted]])

    def test_signed_and_pairs_are_plain(self):
        for mode in (SIGNED, PAIR):
            with self.subTest(mode=mode):
                picture = sample_picture(mode, seed=9)
                self.one_node(self.reader("r", picture))
                stored = self.stored()
                self.assertEqual(stored.mode, mode)
                self.assert_samples(stored.data, picture.data)

    def test_several_types_of_one_image(self):
        self.picture("in.exr", Picture(self.DATA, VALUE))
        self.run_document(document(
            [node("r", "ImageReaderNode", path="in.exr")],
            [],
            [
                output("r.image", "f.exr", "float"),
                output("r.image", "h.exr", "half"),
                output("r.image", "s.png", "uint16"),
                output("r.image", "b.png", "uint8"),
            ],
        ))
        kinds = [read_file(self.dir / name).kind for name in ("f.exr", "h.exr", "s.png", "b.png")]
        self.assertEqual(kinds, ["float", "half", "uint16", "uint8"])


class WriterTest(RunTestCase):
    def test_writer_writes_every_type(self):
        data = np.array([[0.0, 0.25, 0.123, 1.0]], dtype=F)
        for name, kind, largest in (
            ("w.exr", "float", None),
            ("w.exr", "half", None),
            ("w.png", "uint16", 65535),
            ("w.png", "uint8", 255),
        ):
            with self.subTest(kind=kind):
                result = self.run_document(document(
                    [
                        self.reader("r", Picture(data, VALUE)),
                        node("w", "ImageWriterNode", path=name, type=kind),
                    ],
                    [link("r.image", "w.image", 0)],
                ))
                self.assert_quiet(result)
                stored = self.stored(name)
                self.assertEqual(stored.kind, kind)
                wanted = data.astype(np.float16) if kind == "half" else data
                if largest:
                    wanted = np.rint(data.astype(np.float64) * largest)
                self.assert_samples(stored.data.astype(F), wanted.astype(F))

    def test_writer_beside_an_output(self):
        picture = sample_picture(VALUE, seed=10)
        self.run_document(document(
            [
                self.reader("r", picture),
                node("n", "ImageValueAddNode", constant=1),
                node("w", "ImageWriterNode", path="w.exr"),
            ],
            [link("r.image", "w.image", 0), link("r.image", "n.image", 0)],
            [output("n.image", "out.exr")],
        ))
        self.assert_picture(self.dir / "w.exr", picture)
        self.assert_picture(self.dir / "out.exr", arithmetic("Add", [picture], 1.0))
        self.assert_files("graph.json", "r.exr", "w.exr", "out.exr")

    def test_two_files_of_one_name_when_a_connection_feeds_the_path(self):
        """Which file a writer makes is known only when it runs."""
        content = document(
            [
                self.reader("src", sample_picture(VALUE, seed=16)),
                node("where", "TextNode", value=str(self.dir / "twice.exr")),
                node("w", "ImageWriterNode", path="unused.exr"),
            ],
            [link("src.image", "w.image"), link("where.text", "w.path")],
            [output("src.image", "twice.exr")],
        )
        result = self.run_document(content, code=FILE_ERROR)
        self.assert_one_error(result, '"w"', "src.image", "twice.exr")

    def test_writer_that_cannot_write(self):
        picture = sample_picture(VALUE, seed=11)
        result = self.run_document(
            document(
                [self.reader("r", picture), node("w", "ImageWriterNode", path="no/w.exr")],
                [link("r.image", "w.image", 0)],
                [output("r.image", "out.exr")],
            ),
            code=FILE_ERROR,
        )
        self.assert_one_error(result, "w.exr")
        self.assert_picture(self.dir / "out.exr", picture)
        self.assert_files("graph.json", "r.exr", "out.exr")


class FailureTest(RunTestCase):
    def oversize(self):
        return (
            [
                node("p", "ImageRectangleNode", frame=[0, 0, 2, 2]),
                node("q", "ImageRectangleNode", frame=[40000, 0, 2, 2]),
                node("toolarge", "ImageValueAddNode"),
            ],
            [link("p.image", "toolarge.image", 0), link("q.image", "toolarge.image", 1)],
        )

    def test_node_error_names_the_node_and_the_rest_is_written(self):
        nodes, links = self.oversize()
        picture = sample_picture(VALUE, seed=12)
        result = self.run_document(
            document(
                [*nodes, self.reader("fine", picture)],
                links,
                [output("toolarge.image", "bad.exr"), output("fine.image", "out.exr")],
            ),
            code=NODE_ERROR,
        )
        self.assert_names(result, "toolarge", OVERSIZE)
        self.assert_picture(self.dir / "out.exr", picture)
        self.assert_files("graph.json", "fine.exr", "out.exr")

    def test_json_error(self):
        nodes, links = self.oversize()
        result = self.run_document(
            document(nodes, links, [output("toolarge.image", "bad.exr")]), "--json", code=NODE_ERROR
        )
        self.assert_json_error(result, "toolarge", OVERSIZE)

    def test_nodes_after_one_in_error_have_no_image(self):
        nodes, links = self.oversize()
        result = self.run_document(
            document(
                [*nodes, node("after", "ImageValueAddNode", constant=1)],
                [*links, link("toolarge.image", "after.image", 0)],
                [output("after.image", "bad.exr")],
            ),
            code=NODE_ERROR,
        )
        self.assert_names(result, "toolarge", OVERSIZE)
        self.assert_files("graph.json")

    def test_missing_file_names_it_and_the_rest_is_written(self):
        picture = sample_picture(VALUE, seed=13)
        result = self.run_document(
            document(
                [node("r", "ImageReaderNode", path="missing.exr"), self.reader("fine", picture)],
                [],
                [output("r.image", "bad.exr"), output("fine.image", "out.exr")],
            ),
            code=FILE_ERROR,
        )
        self.assert_names(result, "missing.exr")
        self.assert_picture(self.dir / "out.exr", picture)
        self.assert_files("graph.json", "fine.exr", "out.exr")

    def test_file_error_outranks_node_error(self):
        nodes, links = self.oversize()
        picture = sample_picture(VALUE, seed=14)
        broken = node("r", "ImageReaderNode", path="missing.exr")
        outputs = [
            output("toolarge.image", "bad.exr"),
            output("r.image", "bad2.exr"),
            output("fine.image", "out.exr"),
        ]
        for order in (outputs, outputs[::-1]):
            with self.subTest(order=[item["path"] for item in order]):
                result = self.run_document(
                    document([*nodes, broken, self.reader("fine", picture)], links, order),
                    code=FILE_ERROR,
                )
                self.assert_names(result, "toolarge", OVERSIZE)
                self.assert_names(result, "missing.exr")
                self.assert_picture(self.dir / "out.exr", picture)
                (self.dir / "out.exr").unlink()

    def test_missing_folder_of_one_output(self):
        picture = sample_picture(VALUE, seed=15)
        result = self.run_document(
            document(
                [self.reader("r", picture)],
                [],
                [output("r.image", "no/such/a.exr"), output("r.image", "out.exr")],
            ),
            code=FILE_ERROR,
        )
        self.assert_one_error(result, "a.exr")
        self.assert_picture(self.dir / "out.exr", picture)
        self.assert_files("graph.json", "r.exr", "out.exr")

    def test_unused_branches_do_not_fail(self):
        nodes, links = self.oversize()
        picture = sample_picture(VALUE, seed=16)
        result = self.run_document(document(
            [
                *nodes,
                node("gone", "ImageReaderNode", path="missing.exr"),
                node("unused", "ImageValueAddNode"),
                self.reader("fine", picture),
            ],
            [*links, link("gone.image", "unused.image", 0)],
            [output("fine.image", "out.exr")],
        ))
        self.assert_quiet(result)
        self.assert_picture(self.dir / "out.exr", picture)

    def test_input_larger_than_the_maximum(self):
        result = self.run_document(
            document(
                [self.reader("wide", sample_picture(VALUE, 12, 1))],
                [],
                [output("wide.image", "out.exr")],
            ),
            "--max-size", "11", code=FILE_ERROR,
        )
        self.assert_one_error(result, "wide.exr")

    def test_invalid_document_writes_nothing_and_counts_the_problems(self):
        picture = sample_picture(VALUE, seed=17)
        result = self.run_document(
            document(
                [
                    self.reader("fine", picture),
                    node("a", "ImageZebraNode"),
                    node("b", "ImageValueAddNode", giraffe=1),
                ],
                [link("fine.image", "nowhere.image", 0)],
                [output("fine.image", "out.exr")],
            ),
            code=INVALID,
        )
        self.assertEqual(len(result.err_lines), 1, str(result))
        self.assertTrue(
            any(word in result.err for word in ("ImageZebraNode", "giraffe", "nowhere")),
            str(result),
        )
        self.assertRegex(result.err, r"\b(2|two)\b")
        self.assert_files("graph.json", "fine.exr")

    def test_missing_document(self):
        result = self.value("run", "nothing.json", code=FILE_ERROR)
        self.assert_one_error(result, "nothing.json")
        result = self.value("run", "nothing.json", "--json", code=FILE_ERROR)
        self.assert_json_error(result, "nothing.json")

    def test_wrong_usage(self):
        self.save("graph.json", document([], [], []))
        self.assertTrue(self.value("run", code=USAGE).err_lines)
        result = self.value("run", "graph.json", "--zebra", code=USAGE)
        self.assert_one_error(result, "--zebra")


class OptionsTest(RunTestCase):
    def base(self):
        self.first = sample_picture(VALUE, seed=18)
        self.second = sample_picture(VALUE, 2, 4, seed=19)
        self.picture("second.exr", self.second)
        return document(
            [self.reader("src", self.first), node("add", "ImageValueAddNode", constant=1)],
            [link("src.image", "add.image", 0)],
            [output("add.image", "out.exr")],
        )

    def expect(self, picture, constant, name="out.exr"):
        self.assert_picture(self.dir / name, arithmetic("Add", [picture], constant))

    def test_set(self):
        self.assert_quiet(self.run_document(self.base(), "--set", "add.constant=4"))
        self.expect(self.first, 4.0)

    def test_set_takes_old_names_and_the_last_wins(self):
        self.run_document(self.base(), "--set", "add.constant=4", "--set", "add.value=-2")
        self.expect(self.first, -2.0)
        self.run_document(self.base(), "--set", "add.value=4", "--set", "add.constant=6")
        self.expect(self.first, 6.0)

    def test_set_is_cut_to_the_bounds_with_a_note(self):
        result = self.run_document(self.base(), "--set", "add.constant=5e9")
        self.assert_names(result, "constant")
        self.expect(self.first, 1e9)

    def test_set_every_kind_of_attribute(self):
        content = document(
            [node("g", "ImageRectangleNode")], [], [output("g.image", "out.exr")]
        )
        for frame in ("[1,2,3,4]", "1,2,3,4"):
            result = self.run_document(content, "--set", f"g.frame={frame}", code=None)
            if result.code == 0:
                self.assert_picture(
                    self.dir / "out.exr", Picture(np.ones((4, 3, 4)), COLOR, pin=(1, 2))
                )
                return
        self.fail(f"a frame could not be set\n{result}")

    def test_input(self):
        content = self.base()
        self.run_document(content, "--input", "src=second.exr")
        self.expect(self.second, 1.0)
        self.run_document(content, "--input", f"src={self.dir / 'second.exr'}")
        self.expect(self.second, 1.0)

    def test_output(self):
        self.run_document(self.base(), "--output", f"src.image={self.dir / 'extra.exr'}")
        self.assert_picture(self.dir / "extra.exr", self.first)

    def test_output_on_a_document_without_outputs(self):
        content = self.base()
        content["outputs"] = []
        self.run_document(content, "--output", "add.image=extra.exr")
        self.expect(self.first, 1.0, "extra.exr")
        self.assert_files("graph.json", "src.exr", "second.exr", "extra.exr")

    def test_options_before_and_after_the_document(self):
        self.save("graph.json", self.base())
        options = ["--set", "add.constant=3", "--input", "src=second.exr", "--threads", "2"]
        for arguments in (["graph.json", *options], [*options, "graph.json"],
                          [*options[:2], "graph.json", *options[2:]]):
            with self.subTest(arguments=arguments):
                self.value("run", *arguments)
                self.expect(self.second, 3.0)
                (self.dir / "out.exr").unlink()

    def test_wrong_options(self):
        content = self.base()
        for options, culprit in (
            (("--set", "zebra.constant=1"), "zebra"),
            (("--set", "add.zebra=1"), "zebra"),
            (("--set", "add=1"), "add"),
            (("--set", "add.constant"), "constant"),
            (("--set", "add.constant=abc"), "constant"),
            (("--set", "add.constant=1e999"), "constant"),
            (("--set", "src.color_mode=zebra"), "zebra"),
            (("--input", "zebra=second.exr"), "zebra"),
            (("--input", "add=second.exr"), "add"),
            (("--input", "src"), "src"),
            (("--output", "zebra.image=x.exr"), "zebra"),
            (("--output", "add.zebra=x.exr"), "zebra"),
            (("--output", "add.image"), "add.image"),
        ):
            with self.subTest(options=options):
                result = self.run_document(content, *options, code=USAGE)
                self.assert_one_error(result, culprit)
        self.assert_files("graph.json", "src.exr", "second.exr")

    def test_set_on_an_attribute_that_a_connection_feeds_has_no_effect(self):
        content = self.base()
        content["nodes"].append(node("n", "NumberNode", value=5))
        content["connections"].append(link("n.number", "add.constant"))
        for name in ("add.constant", "add.value"):
            with self.subTest(attribute=name):
                result = self.run_document(content, "--set", f"{name}=4")
                self.assert_one_error(result, "note", f"--set {name}=4", "no effect", "connection")
                self.expect(self.first, 5.0)
        self.assert_quiet(self.run_document(content, "--set", "n.value=7"))
        self.expect(self.first, 7.0)

    def test_input_of_a_reader_whose_path_a_connection_feeds(self):
        content = self.base()
        content["nodes"].append(node("where", "TextNode", value=str(self.dir / "src.exr")))
        content["connections"].append(link("where.text", "src.path"))
        result = self.run_document(content, "--input", "src=second.exr", code=USAGE)
        self.assert_one_error(result, "--input src=second.exr", '"src"', "connection")
        self.assert_files("graph.json", "src.exr", "second.exr")
        self.assert_quiet(self.run_document(content, "--set", f"where.value={self.dir}/second.exr"))
        self.expect(self.second, 1.0)

    def test_input_of_a_missing_file(self):
        result = self.run_document(self.base(), "--input", "src=gone.exr", code=FILE_ERROR)
        self.assert_one_error(result, "gone.exr")

    def test_paths_are_relative_to_the_document(self):
        folder = self.dir / "project"
        (folder / "images").mkdir(parents=True)
        elsewhere = self.dir / "elsewhere"
        elsewhere.mkdir()
        picture = sample_picture(VALUE, seed=20)
        self.picture("project/images/in.exr", picture)
        self.save("project/graph.json", document(
            [
                node("r", "ImageReaderNode", path="images/in.exr"),
                node("w", "ImageWriterNode", path="images\\w.exr"),
            ],
            [link("r.image", "w.image", 0)],
            [output("r.image", "images/out.exr"), output("r.image", "top.exr")],
        ))
        for cwd in (self.dir, elsewhere):
            with self.subTest(cwd=cwd.name):
                document_path = self.dir / "project" / "graph.json"
                self.value("run", document_path, cwd=cwd)
                for path in ("images/out.exr", "images/w.exr", "top.exr"):
                    self.assert_picture(folder / path, picture)
                    (folder / path).unlink()
        self.assert_files(folder=elsewhere)

    def test_relative_document_path_from_elsewhere(self):
        (self.dir / "project").mkdir()
        picture = sample_picture(VALUE, seed=21)
        self.picture("project/in.exr", picture)
        self.save("project/graph.json", document(
            [node("r", "ImageReaderNode", path="in.exr")], [], [output("r.image", "out.exr")]
        ))
        self.value("run", "project/graph.json")
        self.assert_picture(self.dir / "project" / "out.exr", picture)
        self.assert_files("project")

    def test_backslashes_in_paths(self):
        (self.dir / "sub").mkdir()
        picture = sample_picture(VALUE, seed=22)
        self.picture("sub/in.exr", picture)
        self.run_document(document(
            [node("r", "ImageReaderNode", path="sub\\in.exr")],
            [],
            [output("r.image", "sub\\out.exr")],
        ))
        self.assert_picture(self.dir / "sub" / "out.exr", picture)
        self.assert_files("graph.json", "sub")

    def test_json_answer_of_a_success(self):
        result = self.run_document(self.base(), "--json")
        self.assertEqual(len(result.json_values()), 1, str(result))
        self.assert_quiet(result)

    def test_reroutes_change_nothing(self):
        write_picture(self.dir / "in.exr", sample_picture(VALUE, 5, 4, seed=31))
        nodes = [node("r", "ImageReaderNode", path="in.exr"), node("add", "ImageValueAddNode", constant=1)]
        bends = [node("b", "ImageRerouteNode"), node("c", "ImageRerouteNode", enabled=False)]
        self.run_document(document(nodes, [link("r.image", "add.image")], [output("add.image", "out.exr")]))
        straight = (self.dir / "out.exr").read_bytes()
        links = [link("r.image", "b.image"), link("b.image", "c.image"), link("c.image", "add.image")]
        self.run_document(document(nodes + bends, links, [output("add.image", "out.exr")]))
        self.assertEqual((self.dir / "out.exr").read_bytes(), straight)

    def test_threads_do_not_change_a_bit(self):
        content = document(
            [node("g", "ImageTerrainNode", frame=[0, 0, 70, 50], seed=1)],
            [],
            [output("g.image", "out.exr")],
        )
        answers = []
        for threads in ("1", "2", "5"):
            self.run_document(content, "--threads", threads)
            answers.append(self.stored().data)
        self.assert_samples(answers[1], answers[0])
        self.assert_samples(answers[2], answers[0])


class BatchTest(RunTestCase):
    def setUp(self):
        super().setUp()
        self.photos = self.dir / "photos"
        self.photos.mkdir()
        self.pictures = {}
        for index, name in enumerate(("a", "b", "c")):
            self.pictures[name] = sample_picture(VALUE, 3 + index, 2, seed=70 + index)
            self.picture(f"photos/{name}.exr", self.pictures[name])
        self.content = document(
            [
                node("src", "ImageReaderNode", path="placeholder.exr"),
                node("add", "ImageValueAddNode", constant=1),
            ],
            [link("src.image", "add.image", 0)],
            [output("add.image", "raised.exr"), output("src.image", "plain.tif")],
        )
        self.results = self.dir / "results"

    def batch(self, *options, pattern="*.exr", code=0):
        return self.run_document(
            self.content, "--each", f"src={self.photos / pattern}",
            "--output-dir", self.results, *options, code=code,
        )

    def assert_results(self, *names, constant=1.0):
        self.assert_files(
            *[f"{name}_{kind}" for name in names for kind in ("raised.exr", "plain.tif")],
            folder=self.results,
        )
        for name in names:
            picture = self.pictures[name]
            self.assert_picture(
                self.results / f"{name}_raised.exr", arithmetic("Add", [picture], constant)
            )
            self.assert_samples(read_file(self.results / f"{name}_plain.tif").data, picture.data)

    def test_one_run_per_file(self):
        result = self.batch()
        self.assert_quiet(result)
        self.assert_results("a", "b", "c")
        self.assert_files("graph.json", "photos", "results")
        self.assert_files("a.exr", "b.exr", "c.exr", folder=self.photos)

    def test_jobs(self):
        for jobs in ("1", "2", "8"):
            with self.subTest(jobs=jobs):
                self.batch("--jobs", jobs)
                self.assert_results("a", "b", "c")

    def test_existing_folder_and_settings(self):
        self.results.mkdir()
        (self.results / "a_raised.exr").write_bytes(b"old")
        self.batch("--set", "add.constant=2.5")
        self.assert_results("a", "b", "c", constant=2.5)

    def test_patterns(self):
        for pattern, names in (("?.exr", "abc"), ("b*", "b"), ("[ac].exr", "ac"), ("c.exr", "c")):
            with self.subTest(pattern=pattern):
                self.results = self.dir / f"results-{names}-{len(pattern)}"
                self.batch(pattern=pattern)
                self.assert_results(*names)

    def test_relative_pattern_and_folder(self):
        self.run_document(
            self.content, "--each", "src=photos/*.exr", "--output-dir", "results"
        )
        self.assert_results("a", "b", "c")

    def test_output_in_a_subfolder_gives_its_file_name(self):
        self.content["outputs"] = [output("add.image", "deep/er/raised.exr")]
        self.batch()
        self.assert_files("a_raised.exr", "b_raised.exr", "c_raised.exr", folder=self.results)
        self.assert_files("graph.json", "photos", "results")

    def test_stem_keeps_inner_dots(self):
        self.pictures["d.e"] = sample_picture(VALUE, seed=90)
        self.picture("photos/d.e.exr", self.pictures["d.e"])
        self.batch(pattern="d*.exr")
        self.assert_results("d.e")

    def test_damaged_file_is_reported_and_the_rest_goes_on(self):
        (self.photos / "b.exr").write_bytes(b"not an image")
        for jobs in ("1", "3"):
            with self.subTest(jobs=jobs):
                result = self.batch("--jobs", jobs, code=FILE_ERROR)
                self.assert_names(result, "b.exr")
                self.assertFalse(any("a.exr" in line for line in result.err_lines), str(result))
                self.assert_results("a", "c")

    def test_damaged_file_with_json(self):
        (self.photos / "b.exr").write_bytes(b"")
        result = self.batch("--json", code=FILE_ERROR)
        self.assert_json_error(result, "b.exr")
        self.assert_results("a", "c")

    def test_pattern_without_match(self):
        result = self.batch(pattern="*.zebra", code=FILE_ERROR)
        self.assert_one_error(result, "zebra")
        self.assertEqual(list(self.dir.rglob("*raised*")), [])

    def test_two_files_of_one_stem(self):
        write_file(self.photos / "a.tif", np.ones((1, 1), dtype=F))
        result = self.batch(pattern="a.*", code=USAGE)
        self.assertEqual(len(result.err_lines), 1, str(result))
        self.assertEqual(list(self.dir.rglob("*raised*")), [])

    def test_two_outputs_of_one_file_name(self):
        self.content["outputs"] = [
            output("add.image", "x/raised.exr"), output("src.image", "y/raised.exr"),
        ]
        result = self.batch(code=USAGE)
        self.assert_one_error(result, "raised.exr")
        self.assertEqual(list(self.dir.rglob("*raised*")), [])

    def test_stem_and_name_that_run_together(self):
        # "a" with "b_raised.exr" and "a_b" with "raised.exr" would both be a_b_raised.exr.
        self.picture("photos/a_b.exr", sample_picture(VALUE))
        self.content["outputs"] = [
            output("add.image", "b_raised.exr"), output("src.image", "raised.exr"),
        ]
        self.batch(pattern="a*.exr", code=USAGE)
        self.assertEqual(list(self.dir.rglob("*raised*")), [])

    def test_wrong_node(self):
        for given in ("zebra", "add"):
            with self.subTest(node=given):
                result = self.run_document(
                    self.content, "--each", f"{given}={self.photos}/*.exr",
                    "--output-dir", self.results, code=USAGE,
                )
                self.assert_one_error(result, given)

    def test_a_reader_whose_path_a_connection_feeds(self):
        self.content["nodes"].append(node("where", "TextNode", value=str(self.photos / "a.exr")))
        self.content["connections"].append(link("where.text", "src.path"))
        result = self.batch(code=USAGE)
        self.assert_one_error(result, "--each src=", '"src"', "connection")
        self.assert_files("graph.json", "photos")

    def test_jobs_that_the_system_has_no_threads_for(self):
        """Each thread asks for a stack of 2 GB, and all there is to ask for is 21 GB."""
        for index in range(12):
            self.picture(f"photos/j{index}.exr", sample_picture(VALUE, seed=index))

        def limit():
            _, highest = resource.getrlimit(resource.RLIMIT_STACK)
            resource.setrlimit(resource.RLIMIT_STACK, (2 * 10**9, highest))
            if not SANITIZED:
                resource.setrlimit(resource.RLIMIT_AS, (21 * 10**9, 21 * 10**9))

        result = self.run_document(
            self.content, "--each", f"src={self.photos}/j*.exr", "--output-dir", self.results,
            "--jobs", "12", "--threads", "12", code=None, prepare=limit,
        )
        self.assertEqual(result.code, DONE, str(result))
        if not SANITIZED:
            self.assert_names(result, "note", "--jobs 12", "no more than")
        self.assertEqual(len(list(self.results.glob("*_raised.exr"))), 12)

    def test_wrong_jobs(self):
        for jobs in ("x", "-1", "1.5"):
            with self.subTest(jobs=jobs):
                self.batch("--jobs", jobs, code=USAGE)

    def test_output_folder_that_is_a_file(self):
        self.results.write_bytes(b"a file")
        self.batch(code=FILE_ERROR)
        self.assertEqual(self.results.read_bytes(), b"a file")


class CountOfErrorsTest(ValueTestCase):
    def test_run_counts_what_check_lists(self):
        self.save(
            "bad.json",
            document(
                [node("x", "ImageReliefNode", style="zz", radius="a")],
                outputs=[output("x.image", "a.exr"), output("x.image", "./a.exr")],
            ),
        )
        listed = self.value("check", "bad.json", code=INVALID)
        # Two attributes, the one path, and an image that cannot arrive.
        self.assertEqual(len(listed.err_lines), 4, str(listed))
        for line in listed.err_lines:
            self.assertTrue(line.startswith("value: bad.json: "), line)
        result = self.value("run", "bad.json", code=INVALID)
        self.assert_one_error(result, "(and 3 other errors;")

    def test_a_number_too_small_for_a_double_is_read_alike_everywhere(self):
        self.save(
            "tiny.json",
            '{"format": "value-graph", "version": 1, "nodes": [{"id": "n", "type": "NumberNode", '
            '"attributes": {"value": 1e-400}}], "connections": [], "outputs": []}',
        )
        self.value("check", "tiny.json")
        self.value("run", "tiny.json", "--set", "n.value=1e-400")
        self.value("run", "tiny.json", "--set", "n.value=1e400", code=USAGE)

    def test_a_display_name_in_a_document_names_the_type_that_is_meant(self):
        self.save("named.json", document([node("c", "Value Clamp")]))
        result = self.value("check", "named.json", code=INVALID)
        self.assert_one_error(result, "Value Clamp", "ImageValueClampNode")
