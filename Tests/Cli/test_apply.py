"""value apply: one arithmetic node on image files."""

import numpy as np

from cli_support import (
    COLOR, FILE_ERROR, INF, NAN, NODE_ERROR, OPERATIONS, OVERSIZE, PAIR, SIGNED, USAGE, VALUE,
    F, Picture, ValueTestCase, arithmetic, read_file, round_half_down, sample_picture,
    stored_samples, write_file, write_picture,
)
from first_twenty import FIRST_TWENTY

THREE_NUMBERS = {
    name: ",".join(map(str, entry.numbers))
    for name in OPERATIONS
    for entry in FIRST_TWENTY
    if entry.name == f"Value {name}"
}

SMALLEST = np.frombuffer(np.uint32(1).tobytes(), dtype=F)[0]
LARGEST = np.finfo(F).max
EDGES = [0.0, -0.0, 1.0, -1.0, 2.0, -3.5, INF, -INF, NAN, SMALLEST, -SMALLEST, LARGEST, -LARGEST]


class ApplyTestCase(ValueTestCase):
    def inputs(self, pictures):
        """Stores the pictures and returns the options that name them, in order."""
        options = []
        for index, picture in enumerate(pictures):
            path = self.dir / f"in{index}.exr"
            write_picture(path, picture)
            options += ["-i", path]
        return options

    def check(self, name, pictures, constant=None, options=(), node=None, note=False):
        """Applies the node and compares the written file with the model; returns the run."""
        arguments = [*self.inputs(pictures), *options, "-o", self.dir / "out.exr"]
        if constant is not None:
            arguments += ["--set", f"constant={constant!r}"]
        result = self.value("apply", node or f"Value {name}", *arguments)
        if constant is not None and (name == "Power" or len(pictures) > 1):
            self.assert_one_error(result, "note:", "constant", "has no effect")
        elif not note:
            self.assert_quiet(result)
        self.assert_picture(self.dir / "out.exr", arithmetic(name, pictures, constant))
        return result


class OneImageTest(ApplyTestCase):
    def test_constant_joins_every_sample(self):
        picture = sample_picture(VALUE, seed=3)
        for name in OPERATIONS:
            for constant in (5.0, -0.1, 0.3):
                with self.subTest(node=name, constant=constant):
                    self.check(name, [picture], constant)

    def test_worked_examples(self):
        picture = Picture([[0.2, 3.0], [-3.0, 0.0]], VALUE)
        self.inputs([picture])
        quarter = F(0.2) + F(5)
        for name, constant, wanted in (
            ("Value Add", "5", [[quarter, 8.0], [2.0, 5.0]]),
            ("Value Subtract", "1", [[F(0.2) - F(1), 2.0], [-4.0, -1.0]]),
            ("Value Multiply", "-2", [[F(0.2) * F(-2), -6.0], [6.0, -0.0]]),
            ("Value Divide", "0", [[INF, INF], [-INF, NAN]]),
            ("Value Power", "7", [[0.2, 3.0], [-3.0, 0.0]]),
            ("Value Minimum", "0.2", [[0.2, 0.2], [-3.0, 0.0]]),
            ("Value Maximum", "0.2", [[0.2, 3.0], [0.2, 0.2]]),
        ):
            with self.subTest(node=name):
                out = self.dir / "out.exr"
                result = self.value(
                    "apply", name, "-i", "in0.exr", "--set", f"constant={constant}", "-o", out
                )
                if name != "Value Power":
                    self.assert_quiet(result)
                self.assert_samples(read_file(out).data, np.array(wanted, dtype=F))

    def test_defaults(self):
        picture = sample_picture(VALUE, seed=4)
        for name in OPERATIONS:
            with self.subTest(node=name):
                self.check(name, [picture])
        far = Picture([[999.0, 1000.0, 1001.0, -999.0, -1001.0, -1000.0]], VALUE)
        for name, wanted in (
            ("Minimum", [[999.0, 1000.0, 1000.0, -999.0, -1001.0, -1000.0]]),
            ("Maximum", [[999.0, 1000.0, 1001.0, -999.0, -1000.0, -1000.0]]),
            ("Multiply", far.data[:, :, 0]),
            ("Divide", far.data[:, :, 0]),
            ("Add", far.data[:, :, 0]),
            ("Subtract", far.data[:, :, 0]),
        ):
            with self.subTest(node=name):
                self.check(name, [far])
                self.assert_samples(read_file(self.dir / "out.exr").data, np.array(wanted, dtype=F))

    def test_edges_of_float(self):
        picture = Picture([EDGES], VALUE)
        for name in OPERATIONS:
            for constant in (0.0, -0.0, 1.0, -1e9, 1e-45, 0.1):
                with self.subTest(node=name, constant=constant):
                    self.check(name, [picture], constant)

    def test_minimum_of_equal_zeros_keeps_the_value(self):
        picture = Picture([[0.0, -0.0]], VALUE)
        for name in ("Minimum", "Maximum"):
            for constant in ("0", "-0.0"):
                with self.subTest(node=name, constant=constant):
                    self.inputs([picture])
                    self.value(
                        "apply", f"Value {name}", "-i", "in0.exr",
                        "--set", f"constant={constant}", "-o", "out.exr",
                    )
                    self.assert_samples(read_file(self.dir / "out.exr").data, picture.data)

    def test_power_ignores_its_constant(self):
        picture = Picture([EDGES], VALUE)
        for constant in (0.0, 2.0, -1.0, 1e9):
            with self.subTest(constant=constant):
                self.check("Power", [picture], constant)

    def test_all_colour_modes(self):
        for mode in (COLOR, SIGNED, VALUE, PAIR):
            picture = sample_picture(mode, seed=20 + mode, pin=(7, -2), pivot=(0.5, 0.25))
            for name in OPERATIONS:
                with self.subTest(mode=mode, node=name):
                    constant = 0.5 if name != "Subtract" else -0.5
                    self.check(name, [picture], constant)

    def test_range_of_the_output_is_what_its_finite_samples_span(self):
        for data, low, high in (
            ([[-1.5, 2.0, INF, -INF, NAN]], -1.5, 2.0),
            ([[INF, NAN, -INF]], 0.0, 0.0),
            ([[3.0, 3.0]], 3.0, 3.0),
        ):
            with self.subTest(data=data):
                self.inputs([Picture(data, VALUE, low=-50, high=60)])
                self.value("apply", "Value Add", "-i", "in0.exr", "-o", "out.exr")
                stored = read_file(self.dir / "out.exr")
                self.assertEqual((stored.low, stored.high), (low, high))

    def test_pin_and_pivot_come_back(self):
        picture = sample_picture(VALUE, pin=(-12, 34), pivot=(0.25, 1.5))
        self.check("Add", [picture], 1.0)


class NamesTest(ApplyTestCase):
    def test_display_name_class_name_and_numbers_do_the_same(self):
        picture = sample_picture(VALUE, seed=5)
        for name, three in THREE_NUMBERS.items():
            for node in (f"Value {name}", f"ImageValue{name}Node", three):
                with self.subTest(node=node):
                    self.check(name, [picture], 0.75, node=node)

    def test_unknown_node(self):
        self.inputs([sample_picture(VALUE)])
        for name in ("Value Adds", "ImageAddNode", "10,320,6"):
            with self.subTest(node=name):
                result = self.value(
                    "apply", name, "-i", "in0.exr", "-o", "out.exr", code=USAGE
                )
                self.assert_one_error(result, name)
        self.assert_files("in0.exr")

    def test_old_name_of_the_constant(self):
        picture = sample_picture(VALUE, seed=6)
        for name in OPERATIONS:
            with self.subTest(node=name):
                self.inputs([picture])
                self.value(
                    "apply", f"Value {name}", "-i", "in0.exr", "--set", "value=3", "-o", "out.exr"
                )
                self.assert_picture(self.dir / "out.exr", arithmetic(name, [picture], 3.0))

    def test_last_of_two_settings_wins(self):
        picture = sample_picture(VALUE, seed=7)
        self.inputs([picture])
        for settings in (
            ("constant=9", "constant=2"),
            ("constant=9", "value=2"),
            ("value=9", "constant=2"),
        ):
            with self.subTest(settings=settings):
                options = [part for setting in settings for part in ("--set", setting)]
                self.value("apply", "Value Add", "-i", "in0.exr", *options, "-o", "out.exr")
                self.assert_picture(self.dir / "out.exr", arithmetic("Add", [picture], 2.0))


class ConstantBoundsTest(ApplyTestCase):
    def test_constant_is_cut_to_its_bounds_with_a_note(self):
        picture = Picture([[0.0, 1.0]], VALUE)
        for given, kept in (("2e9", 1e9), ("-1e300", -1e9), ("1000000001", 1e9)):
            with self.subTest(constant=given):
                self.inputs([picture])
                result = self.value(
                    "apply", "Value Maximum" if kept > 0 else "Value Minimum",
                    "-i", "in0.exr", "--set", f"constant={given}", "-o", "out.exr",
                )
                self.assert_names(result, "constant")
                self.assert_samples(
                    read_file(self.dir / "out.exr").data, np.full((1, 2), kept, dtype=F)
                )

    def test_bounds_themselves_are_kept_silently(self):
        picture = Picture([[0.0]], VALUE)
        for constant in (1e9, -1e9):
            with self.subTest(constant=constant):
                self.check("Add", [picture], constant)


class ManyImagesTest(ApplyTestCase):
    def test_two_and_three_images_fold_in_order(self):
        pictures = [sample_picture(VALUE, seed=30 + k, span=(0.25, 3.0)) for k in range(3)]
        for name in OPERATIONS:
            for count in (2, 3):
                with self.subTest(node=name, count=count):
                    self.check(name, pictures[:count], 77.0)
                with self.subTest(node=name, count=count, order="reversed"):
                    self.check(name, pictures[:count][::-1])

    def test_worked_examples(self):
        pictures = [
            Picture([[2.0, -8.0, 0.0]], VALUE),
            Picture([[3.0, 0.5, 0.0]], VALUE),
            Picture([[2.0, 2.0, -1.0]], VALUE),
        ]
        for name, wanted in (
            ("Add", [[7.0, -5.5, -1.0]]),
            ("Subtract", [[-3.0, -10.5, 1.0]]),
            ("Multiply", [[12.0, -8.0, -0.0]]),
            ("Divide", [[F(F(2) / F(3)) / F(2), -8.0, NAN]]),
            ("Power", [[64.0, NAN, 1.0]]),
            ("Minimum", [[2.0, -8.0, -1.0]]),
            ("Maximum", [[3.0, 2.0, 0.0]]),
        ):
            with self.subTest(node=name):
                self.check(name, pictures)
                self.assert_samples(read_file(self.dir / "out.exr").data, np.array(wanted, dtype=F))

    def test_edges_of_float_pair_by_pair(self):
        first = np.repeat(np.array([EDGES], dtype=F), len(EDGES), axis=0)
        pictures = [Picture(first, VALUE), Picture(first.T, VALUE)]
        for name in OPERATIONS:
            with self.subTest(node=name):
                self.check(name, pictures)

    def test_power_edges(self):
        first = [0.0, -0.0, -0.0, -8.0, -2.0, 1.0, NAN, 4.0, INF, -INF, -INF, 0.0]
        second = [-1.0, -1.0, -2.0, F(1 / 3), 3.0, NAN, 0.0, 0.5, -1.0, 3.0, -3.0, 0.0]
        self.check("Power", [Picture([first], VALUE), Picture([second], VALUE)])
        wanted = [INF, -INF, INF, NAN, -8.0, 1.0, 1.0, 2.0, 0.0, -INF, -0.0, 1.0]
        self.assert_samples(read_file(self.dir / "out.exr").data, np.array([wanted], dtype=F))

    def test_nan_of_minimum_and_maximum_gives_the_first(self):
        pictures = [Picture([[NAN, 1.0]], VALUE), Picture([[1.0, NAN]], VALUE)]
        for name in ("Minimum", "Maximum"):
            with self.subTest(node=name):
                self.check(name, pictures)
                self.assert_samples(
                    read_file(self.dir / "out.exr").data, np.array([[NAN, 1.0]], dtype=F)
                )

    def test_images_of_every_mode_keep_it(self):
        for mode in (COLOR, SIGNED, VALUE, PAIR):
            pictures = [sample_picture(mode, seed=40 + k) for k in range(2)]
            for name in ("Add", "Multiply", "Minimum", "Maximum"):
                with self.subTest(mode=mode, node=name):
                    self.check(name, pictures)

    def test_five_images(self):
        pictures = [sample_picture(VALUE, seed=50 + k) for k in range(5)]
        self.check("Subtract", pictures)

    def test_same_file_twice(self):
        picture = sample_picture(VALUE, seed=8)
        self.inputs([picture])
        self.value("apply", "Value Add", "-i", "in0.exr", "-i", "in0.exr", "-o", "out.exr")
        self.assert_picture(self.dir / "out.exr", arithmetic("Add", [picture, picture]))

    def test_plugs_named_in_the_options(self):
        pictures = [sample_picture(VALUE, seed=9), sample_picture(VALUE, seed=10)]
        self.inputs(pictures)
        self.value(
            "apply", "Value Subtract", "-i", "image=in0.exr", "-i", "image=in1.exr",
            "-o", "image=out.exr",
        )
        self.assert_picture(self.dir / "out.exr", arithmetic("Subtract", pictures))

    def test_threads_do_not_change_a_bit(self):
        pictures = [sample_picture(VALUE, 67, 41, seed=60 + k) for k in range(3)]
        for threads in ("1", "2", "7"):
            with self.subTest(threads=threads):
                self.check("Divide", pictures, options=("--threads", threads))


class ExtentTest(ApplyTestCase):
    def check_extent(self, pictures, box):
        for name in OPERATIONS:
            with self.subTest(node=name):
                wanted = arithmetic(name, pictures)
                self.assertEqual(wanted.box()[2:], box[2:])
                self.assertEqual((wanted.width, wanted.height), (box[2] - box[0], box[3] - box[1]))
                self.check(name, pictures)

    def test_whole_pixels_go_down_at_halves(self):
        self.assertEqual([round_half_down(x) for x in (2.5, 2.51, -2.5, -2.49, 1.5, 3.0)],
                         [2, 3, -3, -2, 1, 3])

    def test_different_sizes_from_one_corner(self):
        pictures = [
            sample_picture(VALUE, 5, 3, seed=11, span=(0.5, 4.0)),
            sample_picture(VALUE, 2, 4, seed=12, span=(0.5, 4.0)),
        ]
        self.check_extent(pictures, (0, 0, 5, 4))

    def test_different_pins(self):
        pictures = [
            sample_picture(VALUE, 4, 3, seed=13, pin=(0, 0)),
            sample_picture(VALUE, 4, 3, seed=14, pin=(2, -1)),
        ]
        self.check_extent(pictures, (0, -1, 6, 3))

    def test_boxes_that_do_not_touch(self):
        pictures = [
            sample_picture(VALUE, 2, 2, seed=15, pin=(0, 0)),
            sample_picture(VALUE, 2, 2, seed=16, pin=(4, 4)),
        ]
        self.check_extent(pictures, (0, 0, 6, 6))

    def test_pivots_move_the_box(self):
        # 5 x 0.5 = 2.5 goes down to 2, 3 x 0.5 = 1.5 down to 1.
        pictures = [
            sample_picture(VALUE, 5, 3, seed=17, pin=(10, 10), pivot=(0.5, 0.5)),
            sample_picture(VALUE, 2, 2, seed=18, pin=(9, 9)),
        ]
        self.assertEqual(pictures[0].box(), (8, 9, 13, 12))
        self.check_extent(pictures, (8, 9, 13, 12))

    def test_negative_pivots(self):
        # 5 x -0.5 = -2.5 goes down to -3.
        pictures = [
            sample_picture(VALUE, 5, 3, seed=19, pin=(0, 0), pivot=(-0.5, 2.0)),
            sample_picture(VALUE, 2, 2, seed=20),
        ]
        self.assertEqual(pictures[0].box(), (3, -6, 8, -3))
        self.check_extent(pictures, (0, -6, 8, 2))

    def test_pivot_times_size_is_a_float_product(self):
        # The float nearest 0.3 is a little above it; times 5 it rounds to 1.5 and goes down.
        pictures = [
            sample_picture(VALUE, 5, 1, seed=21, pivot=(0.3, 0.0)),
            sample_picture(VALUE, 1, 1, seed=22),
        ]
        self.assertEqual(pictures[0].box(), (-1, 0, 4, 1))
        self.check_extent(pictures, (-1, 0, 4, 1))

    def test_equal_boxes_keep_pin_and_pivot_of_the_first(self):
        pictures = [
            sample_picture(VALUE, 4, 4, seed=23, pin=(2, 2), pivot=(0.5, 0.5)),
            sample_picture(VALUE, 4, 4, seed=24, pin=(0, 0)),
        ]
        self.assertEqual(pictures[0].box(), pictures[1].box())
        self.check_extent(pictures, (0, 0, 4, 4))
        self.check_extent(pictures[::-1], (0, 0, 4, 4))

    def test_first_pin_may_lie_outside_the_union(self):
        pictures = [
            sample_picture(VALUE, 3, 2, seed=25, pin=(20, -7), pivot=(2.0, -1.0)),
            sample_picture(VALUE, 4, 4, seed=26, pin=(13, -6)),
        ]
        self.assertEqual(pictures[0].box(), (14, -5, 17, -3))
        self.check_extent(pictures, (13, -6, 17, -2))

    def test_three_images_of_different_extent(self):
        pictures = [
            sample_picture(VALUE, 3, 3, seed=27, pin=(1, 1)),
            sample_picture(VALUE, 1, 6, seed=28, pin=(0, 0)),
            sample_picture(VALUE, 7, 1, seed=29, pin=(-1, 5), pivot=(0.5, 0.0)),
        ]
        self.check_extent(pictures, (-4, 0, 4, 6))

    def test_colour_images_of_different_extent(self):
        pictures = [
            sample_picture(COLOR, 3, 2, seed=31),
            sample_picture(COLOR, 2, 3, seed=32, pin=(2, 1)),
        ]
        self.check("Add", pictures)
        self.check("Maximum", pictures)


class MixedModesTest(ApplyTestCase):
    def test_every_pair_of_modes_becomes_values(self):
        for first in (COLOR, SIGNED, VALUE, PAIR):
            for second in (COLOR, SIGNED, VALUE, PAIR):
                if first == second:
                    continue
                pictures = [sample_picture(first, seed=33), sample_picture(second, seed=34)]
                for name in ("Add", "Subtract"):
                    with self.subTest(first=first, second=second, node=name):
                        self.check(name, pictures)
                        self.assertEqual(read_file(self.dir / "out.exr").mode, VALUE)

    def test_weighting_of_colour(self):
        color = Picture([[[0.5, 0.25, 1.0, 0.5], [1.0, 1.0, 1.0, 1.0]]], COLOR)
        value = Picture([[0.0, 0.0]], VALUE)
        self.check("Add", [color, value])
        # 0.5 x (0.5 + 0.25 + 1.0) = 0.875 and 3.0, each times the float nearest a third.
        wanted = np.array([[F(0.875) * F(0.33333334), F(3) * F(0.33333334)]])
        self.assert_samples(read_file(self.dir / "out.exr").data, wanted)

    def test_signed_gives_its_third_number_and_a_pair_its_first(self):
        signed = Picture([[[0.1, 0.2, -0.75, 0.4]]], SIGNED)
        pair = Picture([[[0.5, 9.0]]], PAIR)
        self.check("Add", [signed, pair])
        self.assert_samples(read_file(self.dir / "out.exr").data, np.array([[-0.25]], dtype=F))

    def test_three_modes_of_different_extent(self):
        pictures = [
            sample_picture(VALUE, 3, 2, seed=35),
            sample_picture(COLOR, 2, 4, seed=36, pin=(2, 0), pivot=(0.5, 0.5)),
            sample_picture(SIGNED, 2, 2, seed=37, pin=(-1, 1)),
        ]
        for name in OPERATIONS:
            with self.subTest(node=name):
                self.check(name, pictures)


class OversizeTest(ApplyTestCase):
    def far_apart(self):
        return [
            sample_picture(VALUE, 3, 2, seed=1),
            sample_picture(VALUE, 3, 2, seed=2, pin=(7, 5)),
        ]

    def test_result_larger_than_the_maximum_is_the_nodes_error(self):
        options = self.inputs(self.far_apart())
        for maximum in ("9", "7"):
            with self.subTest(maximum=maximum):
                result = self.value(
                    "apply", "Value Add", *options, "--max-size", maximum, "-o", "out.exr",
                    code=NODE_ERROR,
                )
                self.assert_one_error(result, OVERSIZE)
                self.assertTrue(
                    "Value Add" in result.err or "ImageValueAddNode" in result.err, str(result)
                )
        self.assert_files("in0.exr", "in1.exr")

    def test_json_error(self):
        options = self.inputs(self.far_apart())
        result = self.value(
            "apply", "Value Add", *options, "--max-size", "9", "--json", "-o", "out.exr",
            code=NODE_ERROR,
        )
        self.assert_json_error(result, OVERSIZE)
        self.assert_names(result, OVERSIZE)

    def test_result_of_exactly_the_maximum_is_fine(self):
        self.check("Add", self.far_apart(), options=("--max-size", "10"))

    def test_height_counts_as_width_does(self):
        pictures = [
            sample_picture(VALUE, 1, 2, seed=1),
            sample_picture(VALUE, 1, 2, seed=2, pin=(0, 9)),
        ]
        options = self.inputs(pictures)
        result = self.value(
            "apply", "Value Divide", *options, "--max-size", "10", "-o", "out.exr", code=NODE_ERROR
        )
        self.assert_one_error(result, OVERSIZE)
        self.check("Divide", pictures, options=("--max-size", "11"))

    def test_default_maximum(self):
        near = [sample_picture(VALUE, 1, 1), sample_picture(VALUE, 1, 1, seed=2, pin=(32767, 0))]
        self.check("Add", near)
        far = [sample_picture(VALUE, 1, 1), sample_picture(VALUE, 1, 1, seed=2, pin=(32768, 0))]
        options = self.inputs(far)
        (self.dir / "out.exr").unlink()
        result = self.value("apply", "Value Add", *options, "-o", "out.exr", code=NODE_ERROR)
        self.assert_one_error(result, OVERSIZE)
        self.check("Add", far, options=("--max-size", "32769"))

    def test_pins_at_the_ends_of_the_whole_numbers(self):
        options = self.inputs([
            sample_picture(VALUE, 2, 2, pin=(-2147483648, 0)),
            sample_picture(VALUE, 2, 2, seed=2, pin=(2147483645, 0)),
        ])
        result = self.value("apply", "Value Add", *options, "-o", "out.exr", code=NODE_ERROR)
        self.assert_one_error(result, OVERSIZE)

    def test_input_larger_than_the_maximum_is_a_file_error(self):
        self.picture("wide.exr", sample_picture(VALUE, 12, 2))
        self.picture("tall.exr", sample_picture(VALUE, 2, 12))
        for name in ("wide.exr", "tall.exr"):
            with self.subTest(name=name):
                result = self.value(
                    "apply", "Value Add", "-i", name, "--max-size", "11", "-o", "out.exr",
                    code=FILE_ERROR,
                )
                self.assert_one_error(result, name)
        self.assert_files("wide.exr", "tall.exr")
        self.value("apply", "Value Add", "-i", "wide.exr", "--max-size", "12", "-o", "out.exr")

    def test_an_old_output_survives_an_error(self):
        options = self.inputs(self.far_apart())
        self.save("out.exr", b"precious")
        self.value(
            "apply", "Value Add", *options, "--max-size", "9", "-o", "out.exr", code=NODE_ERROR
        )
        self.assertEqual((self.dir / "out.exr").read_bytes(), b"precious")
        self.assert_files("in0.exr", "in1.exr", "out.exr")


class OptionsTest(ApplyTestCase):
    def test_range_is_accepted(self):
        self.check("Add", [sample_picture(VALUE)], 1.0, options=("--range", "0,2"))
        self.check("Add", [sample_picture(VALUE)], 1.0, options=("--range", "-2.5,7e0"))

    def test_a_range_beyond_the_bounds_is_cut_with_a_note(self):
        # The bounds of the reader's "low" and "high" are plus and minus one thousand millions.
        for k in range(2):
            self.picture(f"in{k}.exr", sample_picture(VALUE, seed=k))
        result = self.value(
            "apply", "Value Add", "-i", "in0.exr", "-i", "in1.exr", "--range", "-2,3e9", "-o", "out.exr"
        )
        # The same range for both inputs is one note.
        self.assert_one_error(result, "note", "--range -2,3e9", "3000000000", "1000000000")
        result = self.value(
            "apply", "Value Add", "-i", "in0.exr", "--range", "-5e9,5e9", "-o", "out.exr", "--json"
        )
        self.assertEqual(len(result.json_values()[0]["notes"]), 2, str(result))

    def test_wrong_range(self):
        self.inputs([sample_picture(VALUE)])
        for given in ("0", "a,b", "0,1,2", "0;1", "", "0,1e999"):
            with self.subTest(range=given):
                self.value(
                    "apply", "Value Add", "-i", "in0.exr", "--range", given, "-o", "out.exr",
                    code=USAGE,
                )
        self.assert_files("in0.exr")

    def test_options_in_any_order(self):
        picture = sample_picture(VALUE, seed=40)
        self.inputs([picture])
        wanted = arithmetic("Add", [picture], 2.0)
        for order in (
            ("Value Add", "-i", "in0.exr", "--set", "constant=2", "-o", "out.exr"),
            ("-o", "out.exr", "--set", "constant=2", "-i", "in0.exr", "Value Add"),
            ("--set", "constant=2", "Value Add", "-o", "out.exr", "-i", "in0.exr"),
        ):
            with self.subTest(order=order):
                self.value("apply", *order)
                self.assert_picture(self.dir / "out.exr", wanted)
                (self.dir / "out.exr").unlink()

    def test_unknown_attribute_plug_and_wrong_values(self):
        self.inputs([sample_picture(VALUE)])
        for options, culprit in (
            (("--set", "zebra=1"), "zebra"),
            (("--set", "constant"), "constant"),
            (("--set", "constant="), "constant"),
            (("--set", "constant=abc"), "constant"),
            (("--set", "constant=1x"), "constant"),
            (("--set", "constant=true"), "constant"),
            (("--set", "constant=1e999"), "constant"),
            (("--set", "constant=[1,2]"), "constant"),
            (("-i", "zebra=in0.exr"), "zebra"),
            (("-o", "zebra=second.exr"), "zebra"),
            (("--zebra",), "--zebra"),
            (("--max-size", "abc"), "max-size"),
            (("--max-size", "-5"), "max-size"),
            (("--threads", "x"), "threads"),
        ):
            with self.subTest(options=options):
                result = self.value(
                    "apply", "Value Add", "-i", "in0.exr", *options, "-o", "out.exr", code=USAGE
                )
                self.assert_one_error(result, culprit)
        self.assert_files("in0.exr")

    def test_missing_parts(self):
        self.inputs([sample_picture(VALUE)])
        for arguments in (
            (),
            ("Value Add",),
            ("Value Add", "-i", "in0.exr"),
            ("Value Add", "-o", "out.exr"),
            ("-i", "in0.exr", "-o", "out.exr"),
            ("Value Add", "-i", "in0.exr", "-o"),
        ):
            with self.subTest(arguments=arguments):
                result = self.value("apply", *arguments, code=USAGE)
                self.assertTrue(result.err_lines, str(result))
        self.assert_files("in0.exr")

    def test_json_answer_of_a_success(self):
        self.inputs([sample_picture(VALUE)])
        result = self.value("apply", "Value Add", "-i", "in0.exr", "-o", "out.exr", "--json")
        self.assertEqual(len(result.json_values()), 1, str(result))
        self.assert_quiet(result)

    def test_quiet(self):
        self.inputs([sample_picture(VALUE)])
        result = self.value("apply", "Value Add", "-i", "in0.exr", "-o", "out.exr", "--quiet")
        self.assertEqual((result.out.strip(), result.err.strip()), ("", ""))

    def test_only_the_output_appears(self):
        self.inputs([sample_picture(VALUE)])
        self.value("apply", "Value Add", "-i", "in0.exr", "-o", "out.exr")
        self.assert_files("in0.exr", "out.exr")

    def test_output_may_replace_the_input(self):
        picture = sample_picture(VALUE, seed=41)
        self.inputs([picture])
        self.value("apply", "Value Add", "-i", "in0.exr", "--set", "constant=1", "-o", "in0.exr")
        self.assert_picture(self.dir / "in0.exr", arithmetic("Add", [picture], 1.0))
        self.assert_files("in0.exr")

    def test_names_with_blanks_and_letters_beyond_ascii(self):
        picture = sample_picture(VALUE, seed=42)
        self.picture("höhe über null.exr", picture)
        self.value("apply", "Value Add", "-i", "höhe über null.exr", "-o", "größe 2.exr")
        self.assert_picture(self.dir / "größe 2.exr", arithmetic("Add", [picture]))

    def test_backslashes_are_separators(self):
        (self.dir / "sub").mkdir()
        picture = sample_picture(VALUE, seed=43)
        self.picture("sub/in.exr", picture)
        self.value("apply", "Value Add", "-i", "sub\\in.exr", "-o", "sub\\out.exr")
        self.assert_picture(self.dir / "sub" / "out.exr", arithmetic("Add", [picture]))
        self.assert_files("sub")

    def test_eight_bit_output(self):
        data = np.array([[0.0, 0.2, 0.4], [0.6, 0.8, 1.0]])
        self.inputs([Picture(data, VALUE)])
        self.value("apply", "Value Add", "-i", "in0.exr", "-o", "out.png")
        stored = read_file(self.dir / "out.png")
        largest = {"uint8": 255, "uint16": 65535}[stored.kind]
        self.assert_samples(stored.data.astype(F), np.round(data * largest))

    def test_colour_survives_the_way_through_a_file(self):
        picture = sample_picture(COLOR, seed=44)
        self.check("Multiply", [picture])
        again = read_file(self.dir / "out.exr").data
        self.assert_samples(again, stored_samples(picture))

    def test_single_channel_without_notes_is_a_value_image(self):
        data = np.array([[0.5, 2.0]], dtype=F)
        write_file(self.dir / "plain.exr", data)
        self.value("apply", "Value Add", "-i", "plain.exr", "-o", "out.exr")
        self.assert_picture(self.dir / "out.exr", Picture(data, VALUE, low=0.5, high=2.0))


class OtherNodesTest(ApplyTestCase):
    """The nodes beyond arithmetic either do their work or say why not; none breaks down."""

    # One output of each; of Compare the one that tells where its two images are equal.
    NODES = {
        entry.name: "image_a_eq_b" if entry.name == "Value Compare" else entry.outputs[0]
        for entry in FIRST_TWENTY
        if entry.name.removeprefix("Value ") not in OPERATIONS
    }

    def test_each_answers(self):
        self.inputs([sample_picture(VALUE, span=(0.0, 1.0))])
        for name, plug in self.NODES.items():
            with self.subTest(node=name):
                given = "image_a=in0.exr" if name == "Value Compare" else "in0.exr"
                result = self.value(
                    "apply", name, "-i", given, "-o", f"{plug}=out.exr", code=None
                )
                self.assertIn(result.code, (0, NODE_ERROR), str(result))
                out = self.dir / "out.exr"
                self.assertEqual(out.exists(), result.code == 0, str(result))
                if out.exists():
                    self.assertEqual(read_file(out).data.shape[:2], (3, 5))
                    out.unlink()
                else:
                    self.assert_names(result)
                    self.assertTrue(result.err_lines, str(result))
