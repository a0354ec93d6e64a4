"""The recipes of the page on files, with the files that they are about."""

import json
import subprocess
from pathlib import Path

import numpy as np

from cli_support import F, ValueTestCase, read_file, write_file

EXAMPLES = Path(__file__).resolve().parents[2] / "Examples"


def ask(*command):
    return subprocess.run([str(word) for word in command], check=True, capture_output=True).stdout


class SlopeTest(ValueTestCase):
    def read_raster(self, name):
        """The samples of a raster of one band, by a tool of others."""
        ask("gdal_translate", "-q", "-of", "EHdr", "-ot", "Float32", self.dir / name, self.dir / "raw.bil")
        info = json.loads(ask("gdalinfo", "-json", self.dir / name))
        return np.fromfile(self.dir / "raw.bil", dtype=F).reshape(info["size"][1], info["size"][0]), info

    def test_slope_in_degrees_agrees_and_keeps_its_coordinates(self):
        elevation = EXAMPLES / "Images" / "elevation.tif"
        self.value("run", EXAMPLES / "slope_degrees.json", "--output", "degrees.image=slope.tif")
        ask("gdaldem", "slope", "-q", "-alg", "ZevenbergenThorne", elevation, self.dir / "wanted.tif")
        slope, info = self.read_raster("slope.tif")
        wanted, wanted_info = self.read_raster("wanted.tif")
        # The other tool leaves the border without a value.
        inside = (slice(1, -1), slice(1, -1))
        self.assertLess(np.abs(slope[inside] - wanted[inside]).max(), 1e-4)
        self.assertGreater(wanted[inside].max(), 45)
        self.assertEqual(info["geoTransform"], wanted_info["geoTransform"])
        self.assertEqual(info["cornerCoordinates"], wanted_info["cornerCoordinates"])


class PathTest(ValueTestCase):
    def test_rasters_are_read_through_a_path_that_goes_up(self):
        (self.dir / "data").mkdir()
        (self.dir / "work" / "inner").mkdir(parents=True)
        (self.dir / "elsewhere").symlink_to(self.dir / "work" / "inner")
        (self.dir / "data" / "model.tif").write_bytes((EXAMPLES / "Images" / "elevation.tif").read_bytes())
        (self.dir / "work" / "near.tif").write_bytes((EXAMPLES / "Images" / "elevation.tif").read_bytes())
        # Up from behind a link is where the link leads.
        for folder, name in (
            (".", "work/../data/model.tif"), ("work", "../data/model.tif"), (".", "elsewhere/../near.tif"),
        ):
            with self.subTest(name=name):
                (answer,) = self.value("stats", name, "--json", cwd=self.dir / folder).json_values()
                self.assertEqual((answer["width"], answer["measured"]), (256, [410, 2080]))


class HeightMapTest(ValueTestCase):
    def test_a_height_map_of_16_bits_is_normalized_and_keeps_them(self):
        heights = (np.arange(5 * 7).reshape(5, 7) * 1000 + 9001).astype(np.uint16)
        write_file(self.dir / "heights.png", heights, "uint16")
        self.value("apply", "To Value", "-i", "heights.png", "--set", "auto_level=true", "-o", "normal.png")
        stored = read_file(self.dir / "normal.png")
        self.assertEqual(str(stored.data.dtype), "uint16")
        low, high = int(heights.min()), int(heights.max())
        # Heights and range are floats, and 65535 steps are finer than their rounding.
        wanted = (heights.astype(np.float64) - low) / (high - low) * 65535
        self.assertLessEqual(np.abs(stored.data.reshape(5, 7) - wanted).max(), 1.0)
        self.assertEqual((stored.data.min(), stored.data.max()), (0, 65535))
