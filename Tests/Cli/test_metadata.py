"""What files say of themselves, before and after graphs, read with tools of others."""

import json
import os
import struct
import subprocess
import zlib

import numpy as np

from cli_support import (
    COLOR, FILE_ERROR, INVALID, SIGNED, USAGE, VALUE, F, ValueTestCase, document, link, node, output, read_file,
    sample_picture, write_file,
)


def ask(*command):
    return subprocess.run([str(word) for word in command], check=True, capture_output=True, text=True).stdout


def exiftool(path):
    """All tags of a file by group and name."""
    (tags,) = json.loads(ask("exiftool", "-json", "-G1", "-n", path))
    return tags


def gdalinfo(path):
    return json.loads(ask("gdalinfo", "-json", path))


class MetadataTestCase(ValueTestCase):
    def run_document(self, content, *options, code=0):
        self.save("graph.json", content)
        return self.value("run", "graph.json", *options, code=code)

    def chain(self, source, target, **words):
        """A graph of three nodes between two files; the second image of the list is from elsewhere."""
        nodes = [
            node("in", "ImageReaderNode", path=source),
            node("add", "ImageValueAddNode", constant=0.0),
            node("black", "ImageRectangleNode", frame=[0, 0, 4, 4], color=[0, 0, 0, 0]),
            node("sum", "ImageValueAddNode"),
            node("last", "ImageValueMaximumNode", constant=0.0),
        ]
        links = [
            link("in.image", "add.image", 0), link("add.image", "sum.image", 0), link("black.image", "sum.image", 1),
            link("sum.image", "last.image", 0),
        ]
        return document(nodes, links, [dict(output("last.image", target), **words)])


class BlocksTest(MetadataTestCase):
    def photo(self, name):
        write_file(self.dir / name, (np.arange(48, dtype=np.uint8).reshape(4, 4, 3) * 5), "uint8")
        profile = self.dir / "p.icc"
        # A profile of a header and one tag, a copyright.
        header = bytearray(128)
        text = b"text" + bytes(4) + b"none\0\0\0\0"
        table = (1).to_bytes(4, "big") + b"cprt" + (144).to_bytes(4, "big") + len(text).to_bytes(4, "big")
        header[0:4] = (144 + len(text)).to_bytes(4, "big")
        header[8:12] = bytes([2, 16, 0, 0])
        header[12:16], header[16:20], header[20:24], header[36:40] = b"mntr", b"RGB ", b"XYZ ", b"acsp"
        # The white of the connection space.
        header[68:80] = bytes.fromhex("0000f6d6000100000000d32d")
        profile.write_bytes(header + table + text)
        ask(
            "exiftool", "-q", "-overwrite_original", "-Artist=Ada Lovelace", "-Copyright=(c) Ada", "-FNumber=2.8",
            "-ISO=400", "-DateTimeOriginal=2021:02:03 04:05:06", "-GPSLatitude=47.5", "-GPSLatitudeRef=N",
            "-GPSLongitude=8.25", "-GPSLongitudeRef=W", "-XMP-dc:Subject=height", "-XMP-xmp:Rating=4",
            "-IPTC:Keywords=terrain", "-XResolution=300", "-YResolution=300", "-ResolutionUnit=inches",
            f"-ICC_Profile<={profile}", self.dir / name,
        )
        return exiftool(self.dir / name)

    WANTED = {
        "IFD0:Artist": "Ada Lovelace", "IFD0:Copyright": "(c) Ada", "ExifIFD:FNumber": 2.8, "ExifIFD:ISO": 400,
        "ExifIFD:DateTimeOriginal": "2021:02:03 04:05:06", "GPS:GPSLatitude": 47.5, "GPS:GPSLongitude": 8.25,
        "GPS:GPSLongitudeRef": "W", "XMP-dc:Subject": "height", "XMP-xmp:Rating": 4, "IPTC:Keywords": "terrain",
    }

    def test_travel_through_a_graph_into_other_formats(self):
        before = self.photo("in.jpg")
        for name, value in self.WANTED.items():
            self.assertEqual(before.get(name), value, name)
        for target in ("out.jpg", "out.tif", "out.png"):
            with self.subTest(target=target):
                self.run_document(self.chain("in.jpg", target))
                after = exiftool(self.dir / target)
                for name, value in self.WANTED.items():
                    self.assertEqual(after.get(name), value, (target, name))
                self.assertEqual(after.get("ICC-header:ColorSpaceData"), "RGB ", target)

    def test_strip_leaves_everything_out(self):
        self.photo("in.jpg")
        self.run_document(self.chain("in.jpg", "out.jpg", metadata="strip"))
        after = exiftool(self.dir / "out.jpg")
        for name in self.WANTED:
            self.assertNotIn(name, after)
        self.assertNotIn("ICC-header:ColorSpaceData", after)
        self.value("apply", "Value Add", "-i", "in.jpg", "--set", "constant=0", "--strip", "-o", "flag.jpg")
        self.assertNotIn("IFD0:Artist", exiftool(self.dir / "flag.jpg"))

    def test_a_photo_stays_opaque(self):
        self.photo("in.jpg")
        self.value("apply", "Value Multiply", "-i", "in.jpg", "--set", "constant=0.5", "-o", "out.png")
        self.assertEqual(read_file(self.dir / "out.png").data.shape[2], 3)

    def test_orientation_is_applied_and_told_as_normal(self):
        data = np.arange(6, dtype=np.uint8).reshape(2, 3) * 40
        write_file(self.dir / "in.tif", data, "uint8")
        # Of a file with orientation 6, the first row is the right column of the picture.
        turned = np.rot90(data, -1)
        ask("exiftool", "-q", "-overwrite_original", "-n", "-Orientation=6", self.dir / "in.tif")
        self.value("apply", "Value Add", "-i", "in.tif", "--set", "constant=0", "-o", "out.tif", "--type", "uint8")
        self.assert_samples(read_file(self.dir / "out.tif").data.reshape(3, 2), turned)
        self.assertIn(exiftool(self.dir / "out.tif").get("IFD0:Orientation", 1), (1,))

    def test_two_runs_give_the_same_bytes(self):
        self.picture("in.exr", sample_picture(COLOR))
        for name in ("out.exr", "out.tif", "out.png", "out.jpg"):
            written = []
            for _ in range(2):
                self.value("apply", "Value Add", "-i", "in.exr", "--set", "constant=0", "-o", name)
                written.append((self.dir / name).read_bytes())
            self.assertEqual(written[0], written[1], name)


class XmpTest(MetadataTestCase):
    KEPT = {"XMP-tiff:Make": "Acme", "XMP-xmp:Rating": 4, "XMP-photoshop:City": "Bern"}
    STALE = ("tiff:Orientation", "tiff:ImageWidth", "tiff:ImageHeight", "exif:ExifImageWidth", "exif:ExifImageHeight")

    def test_of_a_turned_picture_loses_turn_and_sizes_alone(self):
        shape = np.arange(24, dtype=np.uint8).reshape(2, 4, 3) * 10
        for source in ("in.jpg", "in.png", "in.tif", "in.webp"):
            write_file(self.dir / source, shape, "uint8")
            ask(
                "exiftool", "-q", "-overwrite_original", "-n", "-IFD0:Orientation=6",
                *(f"-XMP-{name}=6" for name in self.STALE), "-XMP-xmp:ThumbnailImage=abc",
                *(f"-{name}={value}" for name, value in self.KEPT.items()), self.dir / source,
            )
            before = exiftool(self.dir / source)
            self.assertIn("XMP-xmp:ThumbnailImage", before)
            for name in self.STALE:
                self.assertEqual(before.get("XMP-" + name), 6, (source, name))
            for target in ("out.jpg", "out.png", "out.tif", "out.webp", "out.jp2", "out.exr"):
                with self.subTest(source=source, target=target):
                    self.run_document(self.chain(source, target))
                    after = exiftool(self.dir / target)
                    for name in self.STALE:
                        self.assertNotIn("XMP-" + name, after)
                    self.assertNotIn("XMP-xmp:ThumbnailImage", after)
                    self.assertIn(after.get("IFD0:Orientation", 1), (1,))
                    if target == "out.exr":
                        text = (self.dir / target).read_bytes()
                        self.assertIn(b"Bern", text)
                        self.assertNotIn(b"tiff:Orientation", text)
                        continue
                    for name, value in self.KEPT.items():
                        self.assertEqual(after.get(name), value, name)


class ExifTest(MetadataTestCase):
    def test_of_png_loses_sizes_and_thumbnail_alone(self):
        for order in ("II", "MM"):
            write_file(self.dir / "in.png", np.zeros((8, 8, 3), dtype=np.uint8), "uint8")
            write_file(self.dir / "small.jpg", np.zeros((8, 8, 3), dtype=np.uint8), "uint8")
            ask(
                "exiftool", "-q", "-overwrite_original", "-n", f"-ExifByteOrder={order}", "-ExifIFD:ExifImageWidth=6",
                "-ExifIFD:ExifImageHeight=7", "-ExifIFD:ISO=400", "-IFD0:ImageWidth=6", "-IFD0:YCbCrPositioning=1",
                "-IFD0:Artist=Ada Lovelace", "-IFD0:Orientation=6", "-ExifIFD:LensModel=L 50 of the long kind",
                f"-ThumbnailImage<={self.dir / 'small.jpg'}", self.dir / "in.png",
            )
            before = exiftool(self.dir / "in.png")
            stale = ("ExifIFD:ExifImageWidth", "ExifIFD:ExifImageHeight", "IFD0:ImageWidth", "IFD0:YCbCrPositioning",
                     "IFD1:ThumbnailLength")
            for name in stale:
                self.assertIn(name, before)
            self.value("apply", "Value Add", "-i", "in.png", "--set", "constant=0", "-o", "out.png")
            after = exiftool(self.dir / "out.png")
            for name in stale:
                self.assertNotIn(name, after)
            self.assertEqual(after.get("ExifTool:Warning"), None)
            self.assertEqual(after.get("IFD0:Artist"), "Ada Lovelace")
            self.assertEqual(after.get("IFD0:Orientation"), 1)
            self.assertEqual(after.get("ExifIFD:ISO"), 400)
            self.assertEqual(after.get("ExifIFD:LensModel"), "L 50 of the long kind")


class TextsTest(MetadataTestCase):
    def png(self, name, *chunks):
        """A gray picture with chunks before its samples."""
        def chunk(kind, data):
            return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
        header = struct.pack(">IIBBBBB", 4, 2, 8, 0, 0, 0, 0)
        rows = zlib.compress(bytes([0, 1, 2, 3, 4, 0, 5, 6, 7, 8]))
        parts = [(b"IHDR", header), *chunks, (b"IDAT", rows), (b"IEND", b"")]
        (self.dir / name).write_bytes(b"\x89PNG\r\n\x1a\n" + b"".join(chunk(*part) for part in parts))

    def copy(self, source, target):
        return self.value("apply", "Value Add", "-i", source, "--set", "constant=0", "-o", target)

    def values(self, name):
        """All that a file says, of tags that it has several times too."""
        return ask("exiftool", "-a", "-G1", "-s", self.dir / name)

    def test_of_png_are_in_every_format_that_holds_texts(self):
        self.png(
            "in.png", (b"tEXt", b"Title\0caf\xe9"), (b"tEXt", b"Comment\0hello"), (b"tEXt", b"Comment\0second"),
            (b"zTXt", b"Long\0\0" + zlib.compress(b"z" * 100)), (b"iTXt", "Uni\0\0\0de\0Titel\0日本".encode()),
        )
        for target in ("out.tif", "out.jpg", "out.webp", "out.jp2", "out.png"):
            with self.subTest(target=target):
                self.assertEqual(self.copy("in.png", target).err, "")
                told = self.values(target)
                for text in ("café", "hello", "second", "z" * 100, "日本"):
                    self.assertIn(text, told)
        result = self.copy("in.png", "out.bmp")
        self.assert_names(result, "note", "out.bmp", "not stored by this format", "texts")

    def test_comment_of_jpeg_is_in_every_format_that_holds_texts(self):
        write_file(self.dir / "in.jpg", np.zeros((8, 8, 3), dtype=np.uint8), "uint8")
        ask("exiftool", "-q", "-overwrite_original", "-Comment=from the gate", self.dir / "in.jpg")
        for target in ("out.jpg", "out.tif", "out.webp", "out.jp2", "out.png"):
            with self.subTest(target=target):
                self.assertEqual(self.copy("in.jpg", target).err, "")
                self.assertIn("from the gate", self.values(target))

    def test_resolution_of_exif_alone_and_titles_reach_tiff(self):
        for source in ("in.png", "in.jpg"):
            write_file(self.dir / source, np.zeros((8, 8, 3), dtype=np.uint8), "uint8")
            ask(
                "exiftool", "-q", "-overwrite_original", "-n", "-IFD0:XResolution=240", "-IFD0:YResolution=120.5",
                "-IFD0:ResolutionUnit=3", "-IFD0:XPTitle=Gate é", self.dir / source,
            )
            for target in ("out.tif", "out.jpg", "out.webp"):
                with self.subTest(source=source, target=target):
                    self.copy(source, target)
                    after = exiftool(self.dir / target)
                    self.assertEqual(after.get("IFD0:XResolution"), 240)
                    self.assertEqual(after.get("IFD0:YResolution"), 120.5)
                    self.assertEqual(after.get("IFD0:ResolutionUnit"), 3)
                    self.assertEqual(after.get("IFD0:XPTitle"), "Gate é")


class GroundTest(MetadataTestCase):
    CORNER = (500000.0, 5200000.0)

    def raster(self, name, columns=8, rows=6, nodata=None, kind="Int16"):
        """An elevation model in metres, with pixels of 10 metres."""
        heights = (np.arange(columns * rows).reshape(rows, columns) * 25 + 300).astype(F)
        lines = [
            f"ncols {columns}", f"nrows {rows}", f"xllcorner {self.CORNER[0]}",
            f"yllcorner {self.CORNER[1] - 10 * rows}", "cellsize 10",
        ]
        if nodata is not None:
            heights[1, 2] = nodata
            lines.append(f"NODATA_value {nodata}")
        lines += [" ".join(str(int(height)) for height in row) for row in heights]
        self.save("source.asc", "\n".join(lines) + "\n")
        ask("gdal_translate", "-q", "-of", "GTiff", "-a_srs", "EPSG:32632", "-ot", kind, self.dir / "source.asc",
            self.dir / name)
        return heights

    def assert_ground(self, name, column, row):
        """Pixel (column, row) of a raster is the first of the source."""
        info = gdalinfo(self.dir / name)
        x, width, _, y, _, height = info["geoTransform"]
        self.assertEqual((width, height), (10.0, -10.0))
        self.assertEqual((x + 10 * column, y - 10 * row), self.CORNER)
        self.assertIn("UTM zone 32N", info["coordinateSystem"]["wkt"])
        return info

    def test_metres_stay_metres_and_coordinates_stay(self):
        heights = self.raster("dem.tif")
        self.value("apply", "Value Add", "-i", "dem.tif", "--set", "constant=1.5", "-o", "out.tif")
        info = self.assert_ground("out.tif", 0, 0)
        self.assertEqual(info["bands"][0]["type"], "Float32")
        self.assertEqual(info["size"], [8, 6])
        self.assert_samples(read_file(self.dir / "out.tif").data.reshape(6, 8), heights + 1.5)

    def test_int16_holds_the_values(self):
        heights = self.raster("dem.tif")
        self.value("apply", "Value Multiply", "-i", "dem.tif", "--set", "constant=-1", "--type", "int16", "-o", "out.tif")
        info = self.assert_ground("out.tif", 0, 0)
        self.assertEqual(info["bands"][0]["type"], "Int16")
        numbers = ask("gdal_translate", "-q", "-of", "AAIGrid", self.dir / "out.tif", "/vsistdout/").splitlines()
        rows = [[float(number) for number in line.split()] for line in numbers if not line[0].isalpha()]
        self.assert_samples(np.array(rows[-6:]), -heights)

    def test_no_value_is_nan_and_written_as_its_number(self):
        heights = self.raster("dem.tif", nodata=-9999)
        stats = self.value("stats", "dem.tif", "--json").json_values()[0]
        self.assertEqual(stats["nan"], 1)
        self.assertEqual(stats["measured"], [300, float(heights.max())])
        for kind in ("float", "int16"):
            self.value("apply", "Value Add", "-i", "dem.tif", "--set", "constant=0", "--type", kind, "-o", "out.tif")
            info = self.assert_ground("out.tif", 0, 0)
            self.assertEqual(info["bands"][0]["noDataValue"], -9999)
            self.assertEqual(self.value("stats", "out.tif", "--json").json_values()[0]["nan"], 1)

    def test_numbers_that_fall_on_the_nodata_value_are_told(self):
        heights = self.raster("dem.tif", nodata=0)
        result = self.value(
            "apply", "Value Add", "-i", "dem.tif", "--set", f"constant={-heights[0, 1]}", "--type", "int16", "-o", "o.tif"
        )
        told = [line for line in result.err_lines if "has the nodata value and will be read as no value" in line]
        self.assertEqual(len(told), 1, str(result))
        self.assertIn("1 sample has", told[0])
        self.assertEqual(self.value("stats", "o.tif", "--json").json_values()[0]["nan"], 2)

    def test_grown_cut_and_moved_images_stay_where_they_are(self):
        self.raster("dem.tif")
        grown = document(
            [
                node("in", "ImageReaderNode", path="dem.tif"),
                node("frame", "ImageWavesNode", frame=[-3, -2, 20, 15], height=0.0),
                node("sum", "ImageValueAddNode"),
            ],
            [link("in.image", "sum.image", 0), link("frame.image", "sum.image", 1)],
            [output("sum.image", "grown.tif")],
        )
        self.run_document(grown)
        self.assertEqual(self.assert_ground("grown.tif", 3, 2)["size"], [20, 15])
        moved = document(
            [node("in", "ImageReaderNode", path="dem.tif", placement="custom", pin=[40, -7], pivot=[0.5, 0.5])],
            [], [output("in.image", "moved.tif")],
        )
        self.run_document(moved)
        self.assert_ground("moved.tif", 0, 0)

    def test_what_a_format_does_not_hold_is_told(self):
        self.raster("dem.tif")
        result = self.value("apply", "Value Add", "-i", "dem.tif", "--set", "constant=0", "-o", "out.exr")
        self.assert_names(result, "note", "out.exr", "coordinate")


class ExrTest(MetadataTestCase):
    def render(self):
        """A beauty with opacity, a layer of vectors and a depth."""
        rng = np.random.default_rng(5)
        names = ("A", "B", "G", "R", "Z", "normal.X", "normal.Y", "normal.Z")
        data = rng.random((4, 6, len(names))).astype(F)
        write_file(self.dir / "render.exr", data, names=names)
        return dict(zip(names, np.moveaxis(data, 2, 0)))

    def test_layers_are_picked_and_written_back_as_one_file(self):
        channels = self.render()
        content = document(
            [
                node("beauty", "ImageReaderNode", path="render.exr", channels="R,G,B"),
                node("normal", "ImageReaderNode", path="render.exr", layer="normal"),
                node("depth", "ImageReaderNode", path="render.exr", channels="Z"),
            ],
            [],
            [
                output("beauty.image", "out.exr"), dict(output("normal.image", "out.exr"), layer="n"),
                dict(output("depth.image", "out.exr"), layer="depth"),
            ],
        )
        self.run_document(content)
        self.assert_files("graph.json", "render.exr", "out.exr")
        header = ask("exrheader", self.dir / "out.exr")
        for name in ("R", "G", "B", "n.R", "n.G", "n.B", "depth.Y"):
            self.assertIn(f"    {name}, 32-bit floating-point", header)
        stats = self.value("stats", "out.exr", "--json").json_values()[0]
        (part,) = stats["parts"]
        self.assertEqual(sorted(part["layers"]), ["depth", "n"])
        self.value(
            "run", self.save_reader("out.exr", layer="n"), code=0,
        )
        stored = read_file(self.dir / "back.exr")
        self.assertEqual(stored.mode, SIGNED)
        self.assert_samples(stored.data[:, :, 0], channels["normal.X"])

    def save_reader(self, path, **attributes):
        self.save("back.json", document([node("in", "ImageReaderNode", path=path, **attributes)], [],
                                        [output("in.image", "back.exr")]))
        return "back.json"

    def test_a_layer_that_is_not_there_is_told_with_those_that_are(self):
        self.render()
        result = self.value("run", self.save_reader("render.exr", layer="normals"), code=FILE_ERROR)
        self.assert_one_error(result, "render.exr", '"normals"', '"normal"')

    def test_a_layer_that_fails_leaves_the_file_as_it_was(self):
        self.picture("out.exr", sample_picture(VALUE))
        before = (self.dir / "out.exr").read_bytes()
        content = document(
            [node("waves", "ImageWavesNode", frame=[0, 0, 4, 4]), node("in", "ImageReaderNode", path="missing.exr")],
            [], [output("waves.image", "out.exr"), dict(output("in.image", "out.exr"), layer="x")],
        )
        result = self.run_document(content, code=FILE_ERROR)
        self.assertIn("1 of its 2 layers", result.err)
        self.assertEqual((self.dir / "out.exr").read_bytes(), before)

    def test_one_layer_twice_is_an_error(self):
        content = document(
            [node("waves", "ImageWavesNode", frame=[0, 0, 4, 4])], [],
            [dict(output("waves.image", "out.exr"), layer="x")] * 2,
        )
        self.save("graph.json", content)
        result = self.value("check", "graph.json", code=INVALID)
        self.assertIn("two outputs", result.err)

    def test_the_data_window_places_the_image(self):
        self.save("graph.json", document(
            [node("waves", "ImageWavesNode", frame=[-5, 7, 4, 3])], [], [output("waves.image", "out.exr")]))
        self.value("run", "graph.json")
        self.assertIn("dataWindow (type box2i): (-5 7) - (-2 9)", ask("exrheader", self.dir / "out.exr"))
        stats = self.value("stats", "out.exr", "--json").json_values()[0]
        self.assertEqual(stats["parts"][0]["data_window"], [-5, 7, 4, 3])
        self.assertEqual(stats["pin"], [-5, 7])

    def test_compression_is_kept_or_chosen(self):
        self.picture("in.exr", sample_picture(VALUE))
        self.value("apply", "Value Add", "-i", "in.exr", "--set", "constant=0", "--compression", "piz", "-o", "piz.exr")
        self.assertIn("piz", ask("exrheader", self.dir / "piz.exr"))
        self.value("apply", "Value Add", "-i", "piz.exr", "--set", "constant=0", "-o", "kept.exr")
        self.assertIn("piz", ask("exrheader", self.dir / "kept.exr"))
        for name, source in (("none.exr", "piz.exr"), ("still.exr", "none.exr")):
            chosen = ("--compression", "none") if name == "none.exr" else ()
            self.value("apply", "Value Add", "-i", source, "--set", "constant=0", *chosen, "-o", name)
            self.assertIn("compression (type compression): none", ask("exrheader", self.dir / name))
        result = self.value(
            "apply", "Value Add", "-i", "in.exr", "--set", "constant=0", "--compression", "nice", "-o", "no.exr",
            code=USAGE,
        )
        self.assert_one_error(result, "no.exr", "nice", "piz")
        self.assertFalse((self.dir / "no.exr").exists())


class OrderTest(MetadataTestCase):
    def test_a_file_is_written_after_all_that_is_read(self):
        picture = sample_picture(VALUE)
        for order in (0, 1):
            self.picture("a.exr", picture)
            outputs = [output("add.image", "a.exr"), output("again.image", "b.exr")]
            content = document(
                [
                    node("one", "ImageReaderNode", path="a.exr"), node("add", "ImageValueAddNode", constant=5.0),
                    node("two", "ImageReaderNode", path="./a.exr"), node("again", "ImageValueAddNode", constant=1.0),
                ],
                [link("one.image", "add.image", 0), link("two.image", "again.image", 0)],
                outputs[::-1] if order else outputs,
            )
            self.run_document(content)
            self.assert_samples(read_file(self.dir / "a.exr").data, picture.data + F(5))
            self.assert_samples(read_file(self.dir / "b.exr").data, picture.data + F(1))

    def test_another_name_of_a_file_is_that_file(self):
        picture = sample_picture(VALUE)
        self.picture("a.exr", picture)
        os.link(self.dir / "a.exr", self.dir / "alias.exr")
        content = document(
            [
                node("one", "ImageReaderNode", path="a.exr"), node("add", "ImageValueAddNode", constant=5.0),
                node("two", "ImageReaderNode", path="a.exr"),
            ],
            [link("one.image", "add.image", 0)],
            [output("add.image", "alias.exr"), output("two.image", "b.exr")],
        )
        self.run_document(content)
        self.assert_samples(read_file(self.dir / "b.exr").data, picture.data)
        for name in ("a.exr", "alias.exr"):
            self.assert_samples(read_file(self.dir / name).data, picture.data + F(5))

    def test_writers_wait_as_well(self):
        picture = sample_picture(VALUE)
        self.picture("a.exr", picture)
        content = document(
            [
                node("one", "ImageReaderNode", path="a.exr"), node("add", "ImageValueAddNode", constant=5.0),
                node("w", "ImageWriterNode", path="a.exr"), node("two", "ImageReaderNode", path="a.exr"),
            ],
            [link("one.image", "add.image", 0), link("add.image", "w.image", 0)],
            [output("two.image", "b.exr")],
        )
        self.run_document(content)
        self.assert_samples(read_file(self.dir / "a.exr").data, picture.data + F(5))
        self.assert_samples(read_file(self.dir / "b.exr").data, picture.data)


class HelperTest(MetadataTestCase):
    def test_in_process_reads_the_same(self):
        self.picture("in.exr", sample_picture(COLOR))
        write_file(self.dir / "in.png", np.arange(12, dtype=np.uint16).reshape(3, 4) * 5000, "uint16")
        for name in ("in.exr", "in.png"):
            answers = [self.value("stats", name, *words).out for words in ((), ("--in-process",))]
            self.assertEqual(answers[0], answers[1])

    def test_only_regular_files_are_read(self):
        os.mkfifo(self.dir / "pipe.exr")
        for name in ("pipe.exr", "/dev/zero", "."):
            result = self.value("stats", name, code=FILE_ERROR)
            self.assertEqual(len(result.err_lines), 1, str(result))
