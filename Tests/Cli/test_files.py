"""Reading image files: formats, channels, opacity, damage."""

import numpy as np

from cli_support import (
    COLOR, FILE_ERROR, PAIR, SIGNED, VALUE, F, Picture, ValueTestCase, arithmetic, document,
    header_notes, link, node, output, read_file, sample_picture, write_file,
)


class FilesTestCase(ValueTestCase):
    def read_back(self, name):
        """What a reader makes of the file, as stored in an EXR file."""
        self.save("graph.json", document(
            [node("r", "ImageReaderNode", path=name)], [], [output("r.image", "out.exr")]
        ))
        self.assert_quiet(self.value("run", "graph.json"))
        return read_file(self.dir / "out.exr")

    def assert_read_as(self, name, straight):
        """The file is read as exactly this straight colour. Adding 1 to every sample gives each
        pixel an opacity, so that none of its colour is lost in the stored answer."""
        self.value("apply", "Value Add", "-i", name, "--set", "constant=1", "-o", "out.exr")
        wanted = arithmetic("Add", [Picture(straight, COLOR)], 1.0)
        self.assert_picture(self.dir / "out.exr", wanted)

    def made_opaque(self, name):
        """Adds 1 to every sample, so that no pixel is without opacity in the stored answer, and
        returns the straight samples of the file."""
        self.value("apply", "Value Add", "-i", name, "--set", "constant=1", "-o", "opaque.exr")
        stored = read_file(self.dir / "opaque.exr").data.astype(np.float64)
        return np.concatenate([stored[:, :, :3] / stored[:, :, 3:], stored[:, :, 3:]], axis=2) - 1


class WholeNumbersTest(FilesTestCase):
    def test_grey_png(self):
        for kind, numbers, largest in (
            ("uint8", [0, 1, 51, 127, 254, 255], 255),
            ("uint16", [0, 1, 257, 32768, 65534, 65535], 65535),
        ):
            with self.subTest(kind=kind):
                data = np.array([numbers], dtype=kind)
                write_file(self.dir / "in.png", data, kind)
                stored = self.read_back("in.png")
                self.assertEqual((stored.mode, stored.low, stored.high), (VALUE, 0, 1))
                self.assert_close(stored.data, data / largest, 1e-7)
                self.assertEqual((stored.data[0, 0, 0], stored.data[0, -1, 0]), (0, 1))

    def test_grey_tiff(self):
        data = np.array([[0, 1, 1000, 65535]], dtype=np.uint16)
        write_file(self.dir / "in.tif", data, "uint16")
        stored = self.read_back("in.tif")
        self.assertEqual(stored.mode, VALUE)
        self.assert_close(stored.data, data / 65535, 1e-7)

    def test_colours_are_not_managed(self):
        data = np.array([[[10, 20, 30], [128, 64, 255]]], dtype=np.uint8)
        write_file(self.dir / "in.png", data, "uint8")
        stored = self.read_back("in.png")
        self.assertEqual(stored.mode, COLOR)
        self.assert_close(stored.data, data / 255, 1e-6)

    def test_straight_opacity_of_png_is_left_alone(self):
        for kind, largest in (("uint8", 255), ("uint16", 65535)):
            with self.subTest(kind=kind):
                pixels = [[200, 100, 50, 128], [255, 0, 3, 1], [90, 80, 70, 0], [9, 8, 7, 255]]
                data = np.array([pixels], dtype=kind)
                if kind == "uint16":
                    data = data * np.uint16(257)
                write_file(self.dir / "in.png", data, kind, straight=True)
                self.assert_close(self.made_opaque("in.png"), data / largest, 2e-6)

    def test_grey_with_opacity(self):
        data = np.array([[[200, 128], [90, 0], [40, 255]]], dtype=np.uint8)
        write_file(self.dir / "in.png", data, "uint8", straight=True)
        self.assertEqual(self.read_back("in.png").mode, COLOR)
        wanted = data[:, :, [0, 0, 0, 1]] / 255
        self.assert_close(self.made_opaque("in.png"), wanted, 2e-6)


class FloatsTest(FilesTestCase):
    def test_float_and_half_of_one_channel(self):
        data = np.array([[0.5, -2.0, 1024.0, 0.0, np.inf, np.nan, -0.0]], dtype=F)
        for name, kind in (("in.exr", "float"), ("in.exr", "half"), ("in.tif", "float")):
            with self.subTest(name=name, kind=kind):
                write_file(self.dir / name, data, kind)
                stored = self.read_back(name)
                self.assertEqual((stored.mode, stored.low, stored.high), (VALUE, 0, 1))
                self.assert_samples(stored.data, data)

    def test_small_floats_are_kept(self):
        data = np.array([[1e-45, -1e-40, 3.4e38]], dtype=F)
        write_file(self.dir / "in.exr", data)
        self.assert_samples(self.read_back("in.exr").data, data)

    def test_three_channels_are_opaque(self):
        data = sample_picture(COLOR, seed=1).data[:, :, :3]
        for name in ("in.exr", "in.tif"):
            with self.subTest(name=name):
                write_file(self.dir / name, data)
                stored = self.read_back(name)
                self.assertEqual(stored.mode, COLOR)
                self.assert_samples(stored.data, data)
                # The value of a pixel multiplies by an opacity of 1.
                self.value("apply", "Value Add", "-i", name, "--set", "constant=0", "--opacity", "keep", "-o", "keep.exr")
                wanted = np.concatenate([data, np.ones_like(data[:, :, :1])], axis=2)
                self.assert_samples(read_file(self.dir / "keep.exr").data, wanted)

    def test_multiplied_colour_of_exr_is_divided_out(self):
        stored = [[0.25, 0.5, 1.0, 0.5], [3.0, 0.125, -1.0, 0.25], [0.5, 1.0, 2.0, 1.0]]
        straight = [[0.5, 1.0, 2.0, 0.5], [12.0, 0.5, -4.0, 0.25], [0.5, 1.0, 2.0, 1.0]]
        for kind in ("float", "half"):
            with self.subTest(kind=kind):
                write_file(self.dir / "in.exr", np.array([stored], dtype=F), kind)
                self.assert_read_as("in.exr", [straight])

    def test_colour_without_opacity_is_left_as_stored(self):
        stored = np.array([[[0.25, 0.5, -1.0, 0.0], [0.0, 0.0, 0.0, 0.0]]], dtype=F)
        write_file(self.dir / "in.exr", stored)
        self.assert_read_as("in.exr", stored)

    def test_grey_with_opacity_is_divided_out_too(self):
        write_file(self.dir / "in.exr", np.array([[[0.25, 0.5], [3.0, 0.25]]], dtype=F))
        self.assert_read_as("in.exr", [[[0.5, 0.5, 0.5, 0.5], [12.0, 12.0, 12.0, 0.25]]])

    def test_tiff_says_itself_whether_colour_is_multiplied(self):
        data = np.array([[[0.25, 0.5, 1.0, 0.5], [0.75, 0.125, 0.0, 0.25]]], dtype=F)
        divided = np.concatenate([data[:, :, :3] / data[:, :, 3:], data[:, :, 3:]], axis=2)
        for straight, wanted in ((True, data), (False, divided)):
            with self.subTest(straight=straight):
                write_file(self.dir / "in.tif", data, straight=straight)
                self.assertEqual(read_file(self.dir / "in.tif").straight, straight)
                self.assert_read_as("in.tif", wanted)

    def test_straight_tiff_keeps_colour_without_opacity(self):
        data = np.array([[[0.25, 0.5, 1.0, 0.0]]], dtype=F)
        write_file(self.dir / "in.tif", data, straight=True)
        self.assert_read_as("in.tif", data)

    def test_signed_images_are_not_divided(self):
        data = sample_picture(SIGNED, seed=2).data
        write_file(self.dir / "in.exr", data, notes=header_notes(SIGNED, -1, 1, (0, 0), (0, 0)))
        self.read_back("in.exr")
        self.assert_picture(self.dir / "out.exr", Picture(data, SIGNED))

    def test_pairs(self):
        data = sample_picture(PAIR, seed=3).data
        write_file(
            self.dir / "in.exr", data, names=("R", "G"),
            notes=header_notes(PAIR, -4, 4, (2, -3), (0.5, 0.5)),
        )
        self.read_back("in.exr")
        self.assert_picture(
            self.dir / "out.exr", Picture(data, PAIR, pin=(2, -3), pivot=(0.5, 0.5), low=-4, high=4)
        )


class DamageTest(FilesTestCase):
    def refuse(self, name):
        for arguments in (
            ("apply", "Value Add", "-i", name, "-o", "result.exr"),
            ("stats", name),
        ):
            with self.subTest(command=arguments[0], name=name):
                result = self.value(*arguments, code=FILE_ERROR)
                self.assert_one_error(result, name)
                self.assertFalse((self.dir / "result.exr").exists())

    def test_more_than_four_channels(self):
        write_file(
            self.dir / "five.exr", np.ones((2, 3, 5), dtype=F), names=("R", "G", "B", "A", "Z")
        )
        result = self.value("stats", "five.exr")
        self.assert_names(result, "note", "1 other channel")
        write_file(self.dir / "six.tif", np.ones((2, 3, 6), dtype=F))
        self.refuse("six.tif")

    def test_files_that_are_no_images(self):
        for name in ("empty.exr", "empty.png", "empty.tif"):
            self.save(name, b"")
            self.refuse(name)
        for name in ("noise.exr", "noise.png", "noise.tif"):
            self.save(name, bytes(range(256)) * 4)
            self.refuse(name)
        self.refuse("missing.exr")
        (self.dir / "folder.exr").mkdir()
        self.refuse("folder.exr")

    def test_shortened_files(self):
        source = np.random.RandomState(5)
        floats = source.uniform(0, 1, (40, 40, 4)).astype(F)
        floats[:, :, 3] = 1
        bytes_ = source.randint(0, 256, (40, 40, 3)).astype(np.uint8)
        write_file(self.dir / "whole.exr", floats)
        write_file(self.dir / "whole.png", bytes_, "uint8")
        write_file(self.dir / "whole.tif", bytes_, "uint8")
        for suffix in ("exr", "png", "tif"):
            content = (self.dir / f"whole.{suffix}").read_bytes()
            for part in (0.1, 0.5, 0.9):
                name = f"part{int(part * 100)}.{suffix}"
                self.save(name, content[: int(len(content) * part)])
                self.refuse(name)

    def test_damaged_samples(self):
        source = np.random.RandomState(6)
        data = source.randint(0, 256, (40, 40, 3)).astype(np.uint8)
        write_file(self.dir / "damaged.png", data, "uint8")
        content = bytearray((self.dir / "damaged.png").read_bytes())
        middle = len(content) // 2
        content[middle : middle + 64] = b"\xff" * 64
        (self.dir / "damaged.png").write_bytes(content)
        self.refuse("damaged.png")

    def test_wrong_name_of_the_right_content(self):
        # A PNG under another known name is still read, or refused as a file; nothing else.
        data = np.array([[0, 255]], dtype=np.uint8)
        write_file(self.dir / "in.png", data, "uint8")
        (self.dir / "in.png").rename(self.dir / "in.tif")
        result = self.value("stats", "in.tif", code=None)
        self.assertIn(result.code, (0, FILE_ERROR), str(result))

    def test_one_damaged_input_of_two(self):
        self.picture("good.exr", sample_picture(VALUE))
        self.save("bad.exr", b"\x76\x2f\x31\x01 and nothing that follows")
        result = self.value(
            "apply", "Value Add", "-i", "good.exr", "-i", "bad.exr", "-o", "out.exr",
            code=FILE_ERROR,
        )
        self.assert_one_error(result, "bad.exr")
        self.assert_files("good.exr", "bad.exr")

    def test_damaged_file_in_a_document(self):
        self.picture("good.exr", sample_picture(VALUE))
        self.save("bad.exr", b"")
        self.save("graph.json", document(
            [
                node("g", "ImageReaderNode", path="good.exr"),
                node("b", "ImageReaderNode", path="bad.exr"),
                node("n", "ImageValueAddNode"),
            ],
            [link("g.image", "n.image", 0), link("b.image", "n.image", 1)],
            [output("n.image", "out.exr")],
        ))
        result = self.value("run", "graph.json", code=FILE_ERROR)
        self.assert_names(result, "bad.exr")
