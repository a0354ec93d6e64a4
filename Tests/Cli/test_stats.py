"""value stats: the figures of image files."""

import json
import math
import struct

import numpy as np

from cli_support import (
    COLOR, FILE_ERROR, INF, NAN, SIGNED, USAGE, VALUE, F, Picture, ValueTestCase, dictionaries,
    holds_number, is_number, leaves_under, sample_picture, write_file,
)


def bin_sums(histogram):
    """The sums that a histogram's bins may have, whatever shape it is written in: the numbers of
    each list in it, and the numbers that go by one key."""
    if isinstance(histogram, list) and histogram and all(is_number(bin) for bin in histogram):
        yield sum(histogram)
    elif isinstance(histogram, list):
        by_key = {}
        for item in histogram:
            if isinstance(item, dict):
                for key, value in item.items():
                    if is_number(value):
                        by_key[key] = by_key.get(key, 0) + value
            yield from bin_sums(item)
        yield from by_key.values()
    elif isinstance(histogram, dict):
        for value in histogram.values():
            yield from bin_sums(value)


class StatsTest(ValueTestCase):
    def stats(self, name, *options):
        result = self.value("stats", name, "--json", *options)
        self.assert_quiet(result)
        values = result.json_values()
        self.assertEqual(len(values), 1, str(result))
        return values[0]

    def assert_number_under(self, answer, wanted, *words, tolerance=1e-5):
        found = leaves_under(answer, *words)
        self.assertTrue(found, f"nothing is called {' or '.join(words)} in {answer}")
        self.assertTrue(
            holds_number(found, wanted, tolerance), f"{wanted} is not among {found} ({words})"
        )

    def assert_mode(self, answer, mode, word):
        """The answer tells the mode, by its number or by its word."""
        found = leaves_under(answer, "mode")
        shown = [str(leaf).lower().replace("colour", "color") for leaf in found]
        self.assertTrue(
            any(text == str(mode) or word in text for text in shown), f"{word} is not in {found}"
        )

    def test_figures_of_a_value_image(self):
        picture = sample_picture(VALUE, seed=1, span=(-2.5, 7.25), low=-3, high=8)
        self.picture("in.exr", picture)
        answer = self.stats("in.exr")
        samples = picture.data.astype(np.float64)
        self.assert_number_under(answer, 5, "size", "width")
        self.assert_number_under(answer, 3, "size", "height")
        self.assert_mode(answer, VALUE, "value")
        self.assert_number_under(answer, -3, "declared")
        self.assert_number_under(answer, 8, "declared")
        self.assert_number_under(answer, samples.min(), "measured")
        self.assert_number_under(answer, samples.max(), "measured")
        self.assert_number_under(answer, samples.mean(), "mean")

    def test_deviation(self):
        # Mean 5, squared distances from it 32 in eight samples.
        self.picture("in.exr", Picture([[2, 4, 4, 4], [5, 5, 7, 9]], VALUE))
        answer = self.stats("in.exr")
        self.assert_number_under(answer, 5, "mean")
        found = leaves_under(answer, "deviation", "stddev", "std")
        self.assertTrue(
            holds_number(found, 2.0, 1e-6) or holds_number(found, math.sqrt(32 / 7), 1e-6),
            f"deviation is not among {found}",
        )

    def test_counts_of_nan_and_infinities(self):
        data = [[NAN, 1.0, INF, 2.0, NAN], [INF, -INF, 0.0, 4.0, INF]]
        self.picture("in.exr", Picture(data, VALUE))
        answer = self.stats("in.exr")
        self.assert_number_under(answer, 2, "nan")
        infinite = [leaf for leaf in leaves_under(answer, "inf") if is_number(leaf)]
        self.assertTrue(4 in infinite or sum(infinite) == 4 or {3, 1} <= set(infinite), infinite)
        self.assert_number_under(answer, 0, "measured")
        self.assert_number_under(answer, 4, "measured")

    def test_clean_image_counts_none(self):
        self.picture("in.exr", sample_picture(VALUE, seed=2))
        answer = self.stats("in.exr")
        self.assert_number_under(answer, 0, "nan")
        self.assert_number_under(answer, 0, "inf")

    def test_histogram_holds_every_finite_sample(self):
        data = np.linspace(0.0, 1.0, 15, dtype=F).reshape(3, 5)
        for low, high in ((0, 1), (-1, 2)):
            with self.subTest(low=low, high=high):
                self.picture("in.exr", Picture(data, VALUE, low=low, high=high))
                answer = self.stats("in.exr")
                found = [
                    value
                    for item in dictionaries(answer)
                    for key, value in item.items()
                    if "histogram" in key.lower()
                ]
                sums = {total for value in found for total in bin_sums(value)}
                self.assertIn(15, sums, f"no histogram of 15 samples in {answer}")

    def test_declared_range_without_notes(self):
        write_file(self.dir / "in.exr", np.array([[5.0, 6.0]], dtype=F))
        answer = self.stats("in.exr")
        self.assert_number_under(answer, 0, "declared")
        self.assert_number_under(answer, 1, "declared")
        self.assert_number_under(answer, 5, "measured")
        self.assert_number_under(answer, 6, "measured")

    def test_modes(self):
        for mode, word in ((COLOR, "color"), (SIGNED, "signed")):
            with self.subTest(mode=word):
                self.picture("in.exr", sample_picture(mode, seed=3))
                self.assert_mode(self.stats("in.exr"), mode, word)

    def test_whole_number_files_run_from_0_to_1(self):
        write_file(self.dir / "in.png", np.array([[0, 51, 255]], dtype=np.uint8), "uint8")
        answer = self.stats("in.png")
        self.assert_number_under(answer, 0, "measured")
        self.assert_number_under(answer, 1, "measured")
        self.assert_number_under(answer, 0.4, "mean")

    def test_text(self):
        self.picture("in.exr", sample_picture(VALUE, 5, 3, seed=4))
        out = self.value("stats", "in.exr").out
        for word in ("5", "3", "mean", "deviation", "NaN", "istogram"):
            self.assertIn(word.lower(), out.lower())

    def test_flat_and_empty_of_numbers(self):
        for data in ([[2.0, 2.0]], [[NAN, NAN]], [[INF]]):
            with self.subTest(data=data):
                self.picture("in.exr", Picture(data, VALUE))
                self.stats("in.exr")

    def test_nothing_is_measured_where_no_sample_is_a_number(self):
        for data, told in (([[NAN, NAN]], "no sample is a number"), ([[NAN, INF]], "no sample is finite")):
            with self.subTest(told=told):
                self.picture("in.exr", Picture(data, VALUE))
                answer = self.stats("in.exr")
                self.assertEqual(answer["measured"], [None, None])
                self.assertIsNone(answer["mean"])
                self.assertIsNone(answer["deviation"])
                out = self.value("stats", "in.exr").out
                self.assertIn(f"measured    {told}\n", out)
                self.assertNotIn("mean", out)
                line = self.value("stats", "in.exr", "--summary").out.splitlines()[1]
                self.assertEqual(line.split()[4:7], ["-", "-", "-"])

    def test_files_that_cannot_be_read(self):
        self.save("empty.exr", b"")
        for name in ("missing.exr", "empty.exr"):
            with self.subTest(name=name):
                result = self.value("stats", name, code=FILE_ERROR)
                self.assert_one_error(result, name)
                result = self.value("stats", name, "--json", code=FILE_ERROR)
                self.assert_json_error(result, name)

    def test_larger_than_the_maximum(self):
        self.picture("in.exr", sample_picture(VALUE, 9, 2))
        result = self.value("stats", "in.exr", "--max-size", "8", code=FILE_ERROR)
        self.assert_one_error(result, "in.exr")

    def test_what_there_is_of_a_file_that_needs_a_choice(self):
        write_file(self.dir / "two.exr", np.zeros((2, 3, 2), F), names=["a.Y", "b.Y"])
        text = self.value("stats", "two.exr", code=FILE_ERROR)
        self.assertIn("layers      a, b", text.out)
        result = self.value("stats", "two.exr", "--json", code=FILE_ERROR)
        self.assert_json_error(result, "two.exr", "a", "b")
        (answer,) = result.json_values()
        (part,) = answer["parts"]
        self.assertEqual([channel["name"] for channel in part["channels"]], ["a.Y", "b.Y"])

    def test_plain_numbers_are_not_taken_for_an_icon(self):
        """0, 1 and so on as small 16-bit numbers begin like one."""
        self.save("ramp.bil", struct.pack("<48h", *range(48)))
        self.save("ramp.hdr", b"NROWS 6\nNCOLS 8\nNBANDS 1\nNBITS 16\nPIXELTYPE SIGNEDINT\nBYTEORDER I\n")
        answer = self.stats("ramp.bil")
        self.assertEqual((answer["width"], answer["height"]), (8, 6))
        self.assertEqual(answer["measured"], [0, 47])
        self.assertEqual(answer["mean"], 23.5)

    def test_a_database_is_no_raster_whatever_lies_beside_it(self):
        self.save("tiles.gpkg", b"SQLite format 3\0" + bytes(4096))
        self.save("tiles.hdr", b"NROWS 4\nNCOLS 4\nNBANDS 1\nNBITS 32\nPIXELTYPE FLOAT\nBYTEORDER I\n")
        result = self.value("stats", "tiles.gpkg", code=FILE_ERROR)
        self.assert_one_error(result, "tiles.gpkg", "no image format")

    def make_three(self):
        """Two pictures, and a file between them that is none."""
        self.picture("a.exr", Picture([[1, 3]], VALUE))
        self.save("broken.exr", b"nothing")
        self.picture("b.exr", Picture([[NAN, 2.0, INF]], VALUE))

    def test_many_files(self):
        self.make_three()
        alone = self.value("stats", "a.exr").out
        result = self.value("stats", "a.exr", "b.exr")
        self.assertEqual(result.out, alone + "\n" + self.value("stats", "b.exr").out)
        self.assert_quiet(result)
        result = self.value("stats", "a.exr", "broken.exr", "none.exr", "b.exr", code=FILE_ERROR)
        self.assertEqual(result.out, alone + "\n" + self.value("stats", "b.exr").out)
        self.assertEqual(len(result.err_lines), 2, str(result))
        self.assert_names(result, "broken.exr")
        self.assert_names(result, "none.exr")

    def test_many_files_as_lines_of_json(self):
        self.make_three()
        (alone,) = self.value("stats", "a.exr", "--json").json_values()
        result = self.value("stats", "a.exr", "broken.exr", "b.exr", "--json", code=FILE_ERROR)
        lines = [json.loads(line) for line in result.out.splitlines()]
        self.assertEqual(len(lines), 4, str(result))
        self.assertEqual(lines[0], alone)
        self.assertEqual(lines[1]["file"], "broken.exr")
        self.assertIn("broken.exr", lines[1]["error"])
        self.assertEqual((lines[2]["file"], lines[2]["nan"], lines[2]["infinite"]), ("b.exr", 1, 1))
        self.assertEqual([lines[3][key] for key in ("files", "measured", "failed")], [3, 2, 1])
        self.assertIn("broken.exr", lines[3]["error"])

    def test_names_in_lines_of_json(self):
        for name in ("ä\u202eb.exr", "c.exr"):
            self.picture(name, Picture([[1]], VALUE))
        result = self.value("stats", "ä\u202eb.exr", "c.exr", "--json")
        first = json.loads(result.out.splitlines()[0])
        self.assertEqual(first["file"], "ä\u202eb.exr")

    def test_summary(self):
        self.make_three()
        self.picture("c.exr", Picture(np.full((3, 5), 0.25, F), VALUE))
        result = self.value("stats", "--summary", "a.exr", "broken.exr", "b.exr", "c.exr", code=FILE_ERROR)
        head, *rows = result.out.splitlines()
        self.assertEqual(head.split(), ["size", "mode", "lowest", "highest", "mean", "NaN", "inf", "file"])
        self.assertEqual([row.split() for row in rows], [
            ["2", "x", "1", "value", "1", "3", "2", "0", "0", "a.exr"],
            ["3", "x", "1", "value", "2", "2", "2", "1", "1", "b.exr"],
            ["5", "x", "3", "value", "0.25", "0.25", "0.25", "0", "0", "c.exr"],
        ])
        self.assert_one_error(result, "broken.exr")
        # Numbers stand below each other, and under their heads.
        self.assertEqual({row.index("value") for row in rows}, {head.index("mode")})
        self.assertEqual({row.index(name) for row, name in zip(rows, ("a.exr", "b.exr", "c.exr"))},
                         {head.index("file")})
        alone = self.value("stats", "--summary", "a.exr").out
        self.assertEqual(alone.splitlines(), [head, rows[0]])

    def test_notes_of_many_files_name_them(self):
        write_file(self.dir / "many.exr", np.zeros((2, 3, 2), F), names=["Y", "other.Y"])
        self.picture("a.exr", Picture([[1]], VALUE))
        self.assert_one_error(self.value("stats", "many.exr", "a.exr"), "note:", "many.exr", "left out")
        lines = self.value("stats", "many.exr", "a.exr", "--json").out.splitlines()
        self.assertIn("left out", json.loads(lines[0])["notes"][0])
        self.assertNotIn("notes", json.loads(lines[1]))

    def test_wrong_usage(self):
        self.assertTrue(self.value("stats", code=USAGE).err_lines)
        self.picture("in.exr", sample_picture(VALUE))
        result = self.value("stats", "in.exr", "--zebra", code=USAGE)
        self.assert_one_error(result, "--zebra")
