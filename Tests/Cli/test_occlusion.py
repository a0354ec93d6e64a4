"""Ambient occlusion by `value apply`, the choice of a device, and `value doctor`."""

import math
import shutil
from pathlib import Path

import numpy as np

from cli_support import (
    COLOR, DONE, F, NAN, NODE_ERROR, PLUGIN_ERROR, SANITIZED, USAGE, VALUE, Picture, ValueTestCase,
    find_program, read_file, sample_picture, sanitizer_libraries, write_picture,
)

ACCURACY = 2e-4


def occlusion(picture, radius, seamless):
    """The rule of ambient occlusion in plain double precision."""
    values = picture.as_value()
    low, high = float(values.low), float(values.high)
    radius = float(F(radius))
    data = values.data[:, :, 0].astype(np.float64)
    z = np.zeros_like(data) if high == low else (data - low) * (radius / (high - low))
    z = np.where(np.isnan(z), 0.0, z)
    height, width = z.shape
    rows, columns = np.mgrid[0:height, 0:width]

    def fetch(x, y):
        if seamless:
            return z[y % height, x % width]
        return z[np.clip(y, 0, height - 1), np.clip(x, 0, width - 1)]

    total = np.zeros_like(z)
    for k in range(16):
        steepest = np.zeros_like(z)
        for s in range(1, int(math.floor(radius)) + 1):
            dx, dy = s * math.cos(2 * math.pi * k / 16), s * math.sin(2 * math.pi * k / 16)
            if k % 4 == 0:
                dx, dy = round(dx), round(dy)
            x, y = math.floor(dx), math.floor(dy)
            fx, fy = dx - x, dy - y
            upper = (1 - fx) * fetch(columns + x, rows + y) + fx * fetch(columns + x + 1, rows + y)
            lower = (1 - fx) * fetch(columns + x, rows + y + 1) + fx * fetch(
                columns + x + 1, rows + y + 1
            )
            steepest = np.maximum(steepest, ((1 - fy) * upper + fy * lower - z) / s)
        total += 1 / (1 + steepest * steepest)
    return total / 16


class EnvironmentTestCase(ValueTestCase):
    """Tests that start the program in a changed environment."""

    def value_with(self, environment, *arguments, code=DONE):
        return self.value(*arguments, environment=environment, code=code)

    def without_devices(self):
        """An environment in which OpenCL finds no driver."""
        empty = self.dir / "no-drivers"
        empty.mkdir(exist_ok=True)
        return {"OCL_ICD_VENDORS": str(empty)}


class OcclusionTest(EnvironmentTestCase):
    def check(self, picture, *options, radius=3.0, seamless=True):
        write_picture(self.dir / "in.exr", picture)
        result = self.value(
            "apply", "Ambient Occlusion", "-i", "in.exr", *options, "-o", "out.exr"
        )
        self.assertEqual(result.err, "")
        stored = read_file(self.dir / "out.exr")
        self.assertEqual(stored.mode, VALUE)
        self.assertEqual((stored.low, stored.high), (0.0, 1.0))
        self.assertEqual(tuple(stored.pin), picture.pin)
        wanted = occlusion(picture, radius, seamless)
        self.assertEqual(stored.data.shape[:2], wanted.shape)
        worst = float(np.max(np.abs(stored.data[:, :, 0] - wanted)))
        self.assertLessEqual(worst, ACCURACY)

    def test_defaults(self):
        self.check(sample_picture(VALUE, 37, 23, span=(0, 1), pin=(3, -4), pivot=(0.5, 0.25)))

    def test_radius_and_borders(self):
        picture = sample_picture(VALUE, 41, 19, span=(0, 1))
        for radius in (3, 12.5, 100):
            for seamless in (True, False):
                with self.subTest(radius=radius, seamless=seamless):
                    self.check(
                        picture,
                        "--set", f"radius={radius}",
                        "--set", f"seamless={str(seamless).lower()}",
                        radius=radius,
                        seamless=seamless,
                    )

    def test_smooth_ground(self):
        y, x = np.mgrid[0:64, 0:96]
        hills = 0.5 + 0.3 * np.sin(x * 0.1) * np.cos(y * 0.07) + 0.1 * np.sin(x * 0.5 + y * 0.4)
        self.check(Picture(hills, VALUE), "--set", "radius=40", radius=40)

    def test_color_is_read_as_value(self):
        self.check(sample_picture(COLOR, 15, 9, span=(0, 1)))

    def test_declared_range(self):
        picture = sample_picture(VALUE, 15, 9, span=(-4, 4), low=-4, high=4)
        self.check(picture)
        picture.low, picture.high = F(-1), F(1)
        self.check(picture, "--range", "-1,1")

    def test_nan_is_the_height_zero(self):
        picture = sample_picture(VALUE, 15, 9, span=(0, 1))
        picture.data[3:5, 4:9] = NAN
        self.check(picture)

    def test_no_device_is_an_error_of_the_node(self):
        write_picture(self.dir / "in.exr", sample_picture(VALUE))
        self.save("out.exr", b"old")
        result = self.value_with(
            self.without_devices(),
            "apply", "Ambient Occlusion", "-i", "in.exr", "-o", "out.exr",
            code=NODE_ERROR,
        )
        self.assertEqual((self.dir / "out.exr").read_bytes(), b"old")
        self.assertIn("Ambient Occlusion", result.err)
        self.assertIn("no OpenCL device", result.err)
        self.assertIn("pocl-opencl-icd", result.err)

    def test_other_nodes_need_no_device(self):
        write_picture(self.dir / "in.exr", sample_picture(VALUE))
        self.value_with(
            {**self.without_devices(), "VALUE_DEVICE": "zebra"},
            "apply", "Value Add", "-i", "in.exr", "-o", "out.exr",
        )


class DeviceTest(EnvironmentTestCase):
    def apply(self, *options, environment=None, code=DONE):
        write_picture(self.dir / "in.exr", sample_picture(VALUE, span=(0, 1)))
        return self.value_with(
            environment or {},
            "apply", "Ambient Occlusion", "-i", "in.exr", "-o", "out.exr", *options,
            code=code,
        )

    def test_option_takes_place_type_and_name(self):
        devices = self.value("doctor", "--json").json_values()[0]["devices"]
        for word in ("0", "cpu", devices[0]["name"], devices[0]["name"].upper()):
            with self.subTest(word=word):
                self.apply("--device", word)

    def test_unknown_device_is_wrong_usage(self):
        name = self.value("doctor", "--json").json_values()[0]["devices"][0]["name"]
        result = self.apply("--device", "zebra", code=USAGE)
        self.assert_one_error(result, "zebra")
        self.assertIn(name, result.err)
        self.assertFalse((self.dir / "out.exr").exists())

    def test_variable(self):
        self.apply(environment={"VALUE_DEVICE": "cpu"})
        result = self.apply(environment={"VALUE_DEVICE": "zebra"}, code=NODE_ERROR)
        self.assertIn("VALUE_DEVICE", result.err)
        self.assertIn("zebra", result.err)
        # The option goes before it.
        self.apply("--device", "cpu", environment={"VALUE_DEVICE": "zebra"})


class DoctorTest(EnvironmentTestCase):
    def test_all_is_well(self):
        result = self.value("doctor")
        self.assertEqual(result.err, "")
        self.assertIn("All is well", result.out)

    def test_json(self):
        answer = self.value("doctor", "--json").json_values()[0]
        self.assertEqual(answer["problems"], [])
        for name in ("value", "Qt", "OpenImageIO", "Highway", "oneTBB"):
            self.assertRegex(answer["versions"][name], r"\d+\.\d+")
        self.assertIn(answer["processor"]["instruction_set"], answer["processor"]["available"])
        self.assertGreaterEqual(answer["processor"]["threads"], 1)
        self.assertEqual(sum(device["chosen"] for device in answer["devices"]), 1)
        for device in answer["devices"]:
            self.assertIn(device["type"], ("cpu", "gpu", "accelerator"))
            for key in ("name", "platform", "driver", "version"):
                self.assertTrue(device[key], key)
        (library,) = answer["libraries"]
        self.assertEqual(Path(library["file"]), find_program().parent / "Value.so")
        self.assertGreaterEqual(library["node_types"], 20)
        self.assertEqual(library["icons"], 2 * library["node_types"])
        self.assertEqual(library["missing_icons"], [])
        for codec in answer["image_formats"]:
            self.assertTrue(codec["found"], codec)
            self.assertTrue(Path(codec["module"]).is_file(), codec)
            # What a sanitizer does of its own is not among the rights of the process.
            self.assertIn(codec["decoder"], ("confined", "not confined") if SANITIZED else ("confined",), codec)
        formats = [name for codec in answer["image_formats"] for name in codec["formats"]]
        self.assertIn("OpenEXR", formats)
        self.assertEqual(len(formats), len(set(formats)))

    def test_options_show(self):
        answer = self.value("doctor", "--json", "--threads", "3", "--device", "cpu").json_values()[0]
        self.assertEqual(answer["processor"]["threads"], 3)
        (chosen,) = [device for device in answer["devices"] if device["chosen"]]
        self.assertEqual(chosen["type"], "cpu")

    def test_no_device(self):
        result = self.value_with(self.without_devices(), "doctor", code=NODE_ERROR)
        self.assertEqual(len(result.err_lines), 1)
        self.assertIn("pocl-opencl-icd", result.err)
        self.assertNotIn("All is well", result.out)
        answer = self.value_with(self.without_devices(), "doctor", "--json", code=NODE_ERROR)
        self.assertEqual(answer.json_values()[0]["devices"], [])
        self.assertEqual(len(answer.json_values()[0]["problems"]), 1)

    def test_empty_cache_folder_counts_as_none(self):
        result = self.value_with({"POCL_CACHE_DIR": "", "HOME": str(self.dir)}, "doctor")
        self.assertIn("All is well", result.out)

    def test_cache_folder_that_cannot_be_written_is_named(self):
        result = self.value_with({"POCL_CACHE_DIR": "/dev/null/cache"}, "doctor", code=NODE_ERROR)
        self.assertEqual(len(result.err_lines), 1)
        self.assertIn('"/dev/null/cache"', result.err)
        self.assertIn("POCL_CACHE_DIR", result.err)
        self.assertNotIn("pocl-opencl-icd", result.err)

    def test_wrong_variable(self):
        name = self.value("doctor", "--json").json_values()[0]["devices"][0]["name"]
        result = self.value_with({"VALUE_DEVICE": "zebra"}, "doctor", code=NODE_ERROR)
        self.assert_one_error(
            result, "VALUE_DEVICE", "zebra", name, "set it to one that can be used, or unset it"
        )

    def test_in_process_is_shown(self):
        result = self.value("doctor", "--in-process")
        self.assertIn("decoded in this program", result.out)
        self.assertNotIn("decoded in a process of its own", result.out)
        formats = self.value("doctor", "--in-process", "--json").json_values()[0]["image_formats"]
        self.assertEqual({codec["decoder"] for codec in formats}, {"in process"})

    def test_an_empty_cache_folder_counts_as_not_set(self):
        changes = {"POCL_CACHE_DIR": "", "XDG_CACHE_HOME": str(self.dir / "cache")}
        result = self.value_with(changes, "doctor")
        self.assert_quiet(result)
        self.assertIn("All is well.", result.out)

    def test_a_cache_folder_that_cannot_be_written(self):
        self.save("file", "a file where the folder should be")
        folder = str(self.dir / "file" / "cache")
        result = self.value_with({"POCL_CACHE_DIR": folder}, "doctor", code=NODE_ERROR)
        self.assert_one_error(result, folder)
        # The driver is there.
        self.assertNotIn("pocl-opencl-icd", result.err)
        self.assertNotIn("All is well", result.out)
        write_picture(self.dir / "in.exr", sample_picture(VALUE))
        result = self.value_with(
            {"POCL_CACHE_DIR": folder}, "apply", "Ambient Occlusion", "-i", "in.exr", "-o", "out.exr",
            code=NODE_ERROR,
        )
        self.assert_one_error(result, "Ambient Occlusion", folder)

    def test_missing_plugin(self):
        result = self.value("doctor", "--plugin", "nothing.so", code=PLUGIN_ERROR)
        self.assertEqual(len(result.err_lines), 1)
        self.assertIn("nothing.so", result.err)
        self.assertIn("--plugin", result.err)
        # The rest is shown all the same.
        self.assertIn("Highway", result.out)

    def test_missing_image_formats(self):
        """In a copy of the program without one of the modules of image formats."""
        program = find_program()
        copy = self.dir / "copy"
        shutil.copytree(program.parent.parent / "lib", copy / "lib", symlinks=True)
        (copy / "lib" / "libHostCodecPng.so").unlink()
        (copy / "bin").mkdir()
        for name in (program.name, "Value.so"):
            shutil.copy2(program.parent / name, copy / "bin" / name)
        # A search path in the program goes before the variable, so the libraries are named outright;
        # what a sanitizer brings must come first of all.
        libraries = sorted(str(path) for path in (copy / "lib").glob("libHost*.so"))
        environment = {
            "LD_LIBRARY_PATH": str(copy / "lib"),
            "LD_PRELOAD": ":".join(sanitizer_libraries() + libraries),
        }
        result = self.value(
            "doctor", program=copy / "bin" / program.name, environment=environment, code=NODE_ERROR
        )
        self.assertIn("PNG can neither be read nor written", result.err)
