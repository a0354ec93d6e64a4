#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the wheel of a build folder, installs it into a fresh environment far from that folder, and uses it there.

    wheel_test.py MAKE_WHEEL CMAKE BUILD_FOLDER
"""

import base64
import csv
import filecmp
import hashlib
import io
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import venv
import zipfile

MAKE_WHEEL, CMAKE, BUILD = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3]).resolve()
SOURCES = pathlib.Path(__file__).resolve().parents[2]
# 2026-03-04 05:06:06 UTC; times in archives are even.
EPOCH, MOMENT = "1772600766", (2026, 3, 4, 5, 6, 6)
EVERYWHERE = re.compile(
    r"linux-vdso\.so\.1|/.*/(ld-linux-x86-64|libc|libdl|libgcc_s|libm|libmvec|libpthread|libresolv|librt|libstdc\+\+"
    r"|libutil)\.so\.[0-9]+"
)

# The user's program. Values worked out by hand: 0.5 + 0.25, twice that; unit integers hold 0.75 as 191.25 / 255 and
# 49151.25 / 65535, of which the nearest integers are 191 and 49151.
USE = """
import pathlib, sys
import numpy as np
import valuenodes as vn

place = pathlib.Path(sys.prefix).resolve()
assert pathlib.Path(vn.__file__).resolve().is_relative_to(place), vn.__file__
half = np.full((3, 4), 0.5, np.float32)
raised = vn.add(half, 0.25)
assert np.asarray(raised).tolist() == [[0.75] * 4] * 3
assert np.asarray(vn.gradient(half).output_x).tolist() == [[0] * 4] * 3
stored = {"image.exr": 0.75, "image.tiff": 0.75, "image.png": 49151 / 65535, "image.bmp": 191 / 255, "image.asc": 0.75}
for name, value in stored.items():
    vn.write(name, raised)
    read = np.asarray(vn.read(name, color_mode="value"))
    assert read.shape == (3, 4) and np.abs(read - value).max() < 1e-7, (name, read)
graph = vn.Graph()
graph.add("Image Reader", "height", path="image.exr")
graph.add("Value Multiply", "doubled", constant=2)
graph.connect("height.image", "doubled.image")
assert np.asarray(graph.evaluate("doubled.image")).tolist() == [[1.5] * 4] * 3
graph.add_output("doubled.image", "doubled.exr")
assert [file.size for file in graph.run()] == [(4, 3)]
found = vn.doctor()
assert found["version"] == "@VERSION@" and found["libraries"][0]["nodes"] == 20, found
assert len(found["codecs"]) == 4 and not [codec for codec in found["codecs"] if codec["problem"]], found["codecs"]
# Nothing that this process has open comes from elsewhere, but for the Python and numpy that were there before.
files = {line.split(None, 5)[5].strip() for line in open("/proc/self/maps") if len(line.split(None, 5)) > 5}
print(*sorted(file for file in files if file.startswith("/")), sep="\\n")
"""


def run(*command, **options):
    answer = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)
    if answer.returncode != 0:
        raise AssertionError(f"{command} ended with {answer.returncode}:\n{answer.stdout}{answer.stderr}")
    return answer.stdout


def make_wheel(folder, umask=-1, **environment):
    # The test wants the archive soon rather than small.
    run(sys.executable, "-B", MAKE_WHEEL, "--cmake", CMAKE, "--level", "1", BUILD, folder, umask=umask,
        env={**os.environ, "SOURCE_DATE_EPOCH": EPOCH, **environment})
    wheels = list(folder.iterdir())
    assert len(wheels) == 1, wheels
    return wheels[0]


def list_files(folder):
    files = {file.relative_to(folder) for file in folder.rglob("*")}
    # Running pip leaves bytecode of pip.
    return {str(file) for file in files if "__pycache__" not in file.parts or "valuenodes" in file.parts}


class Environment:
    """A virtual environment with the wheel installed, in a folder of its own."""

    def __init__(self):
        self.temporary = tempfile.TemporaryDirectory(prefix="value-wheel-test-")
        self.work = pathlib.Path(self.temporary.name).resolve()
        if self.work.is_relative_to(BUILD):
            raise AssertionError(f"{self.work} lies in the build folder; set TMPDIR to another place")
        self.wheel = make_wheel(self.work / "wheels")
        self.archive = zipfile.ZipFile(self.wheel)
        self.info = next(name for name in self.archive.namelist() if name.endswith("/WHEEL")).split("/")[0]
        venv.create(self.work / "venv", with_pip=True)
        self.python = self.work / "venv/bin/python"
        ask = "import sysconfig; print(sysconfig.get_path('platlib'))"
        self.site = pathlib.Path(run(self.python, "-c", ask).strip())
        self.before = list_files(self.work / "venv")
        self.pip("install", "--no-index", self.wheel)

    def pip(self, *words):
        environment = {"PATH": "/usr/bin:/bin", "HOME": str(self.work), "PIP_DISABLE_PIP_VERSION_CHECK": "1"}
        return run(self.python, "-m", "pip", *words, env=environment, cwd=self.work)

    def close(self):
        self.archive.close()
        self.temporary.cleanup()

    def use(self, code, *, with_numpy=True, **environment):
        """Runs a program in the environment, in a folder of its own. Nothing is taken from an index of packages, so
        numpy is the system's, by a folder that has nothing else in it: that of all packages of the system may have
        valuenodes, too."""
        link = self.site / "numpy.pth"
        link.unlink(missing_ok=True)
        if with_numpy:
            import numpy

            alone = self.work / "numpy"
            alone.mkdir(exist_ok=True)
            if not (alone / "numpy").exists():
                (alone / "numpy").symlink_to(pathlib.Path(numpy.__file__).parent)
            link.write_text(f"{alone}\n")
        folder = pathlib.Path(tempfile.mkdtemp(dir=self.work))
        try:
            return subprocess.run([self.python, "-B", "-I", "-c", code], capture_output=True, text=True, cwd=folder,
                                  check=False, env={"PATH": "/usr/bin:/bin", "HOME": str(folder), **environment})
        finally:
            link.unlink(missing_ok=True)


def setUpModule():
    global user
    user = Environment()
    unittest.addModuleCleanup(user.close)


# Classes are run in the order of their names, and the removal comes last.
class Archive(unittest.TestCase):
    def test_name_and_description_follow_the_standards(self):
        version = re.search(r"project\(Value VERSION ([0-9.]+)", (SOURCES / "CMakeLists.txt").read_text()).group(1)
        tag = f"cp{sys.version_info[0]}{sys.version_info[1]}"
        self.assertEqual(user.wheel.name, f"valuenodes-{version}-{tag}-{tag}-linux_x86_64.whl")
        description = user.archive.read(f"{user.info}/WHEEL").decode().splitlines()
        self.assertEqual(description[0], "Wheel-Version: 1.0")
        self.assertEqual(description[2:], ["Root-Is-Purelib: false", f"Tag: {tag}-{tag}-linux_x86_64"])
        metadata = user.archive.read(f"{user.info}/METADATA").decode()
        minor = sys.version_info[1]
        for line in ["Metadata-Version: 2.4", "Name: valuenodes", f"Version: {version}",
                     f"Requires-Python: >=3.{minor},<3.{minor + 1}", 'Requires-Dist: numpy>=1.24; extra == "numpy"']:
            self.assertIn(f"\n{line}\n", f"\n{metadata}")
        for name in re.findall(r"^License-File: (.*)$", metadata, re.MULTILINE):
            self.assertIn(f"{user.info}/licenses/{name}", user.archive.namelist())

    def test_records_have_every_file_with_its_hash(self):
        rows = list(csv.reader(io.StringIO(user.archive.read(f"{user.info}/RECORD").decode())))
        self.assertEqual(sorted(row[0] for row in rows), sorted(user.archive.namelist()))
        for name, digest, size in rows:
            if name == f"{user.info}/RECORD":
                self.assertEqual((digest, size), ("", ""))
                continue
            content = user.archive.read(name)
            expected = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
            self.assertEqual((digest, size), (f"sha256={expected}", str(len(content))), name)

    def test_entries_have_one_time_and_the_modes_of_files(self):
        names = user.archive.namelist()
        order = sorted(names, key=lambda name: (name.startswith(user.info), name.endswith("RECORD"), name))
        self.assertEqual(names, order)
        for entry in user.archive.infolist():
            self.assertEqual(entry.date_time, MOMENT, entry.filename)
            mode = 0o100755 if entry.filename.endswith(("/value-decoder", "/value-examiner")) else 0o100644
            self.assertEqual(entry.external_attr >> 16, mode, entry.filename)

    def test_the_same_build_gives_the_same_bytes(self):
        # The first is made with the zone and the umask of whoever runs the test.
        again = make_wheel(user.work / "again", umask=0o077, TZ="Asia/Tokyo")
        self.assertEqual(again.name, user.wheel.name)
        self.assertTrue(filecmp.cmp(again, user.wheel, shallow=False))
        again.unlink()

    def test_licenses_of_all_libraries_come_along(self):
        names = user.archive.namelist()
        bundled = [name.rsplit("/", 1)[1] for name in names if "/bundled/" in name]
        self.assertGreater(len(bundled), 100)
        listed = user.archive.read(f"{user.info}/licenses/BUNDLED.txt").decode()
        for name in bundled:
            start, ending = re.fullmatch(r"(.*)-[0-9a-f]{8}(\.so.*)", name).groups()
            line = re.search(rf"^{re.escape(start + ending)}  (\S+)  \S+ \S+$", listed, re.MULTILINE)
            self.assertIsNotNone(line, name)
            self.assertIn(f"{user.info}/licenses/{line.group(1)}.txt", names)
        self.assertIn(f"{user.info}/licenses/common-LGPL-2.1.txt", names)

class Installed(unittest.TestCase):
    def test_a_user_gets_along_with_the_wheel_alone(self):
        version = user.info.removesuffix(".dist-info").removeprefix("valuenodes-")
        answer = user.use(USE.replace("@VERSION@", version))
        self.assertEqual(answer.returncode, 0, answer.stderr)
        self.assertEqual(answer.stderr, "")
        opened = answer.stdout.splitlines()
        for part in ["_host/libHostFiles.so.", "_host/value/Value.so", "_host/value/libHostCodecRasters.so"]:
            self.assertTrue([name for name in opened if f"{user.site}/valuenodes/{part}" in name], part)
        self.assertEqual([name for name in opened if name.startswith((str(BUILD), str(SOURCES)))], [])
        # Once the Python and numpy have their own, what the host links comes from the wheel: none from the system.
        hosts = "libgdal libOpenImageIO libtiff libpng16 libQt6Core libtbb libspdlog libhwy libOpenEXR libproj".split()
        for start in hosts:
            places = [name for name in opened if f"/{start}" in name]
            self.assertTrue(places, start)
            self.assertEqual([name for name in places if f"{user.site}/" not in name], [], start)

    def test_what_is_linked_is_in_the_wheel_or_on_every_system(self):
        host = user.site / "valuenodes/_host"
        files = [*host.glob("*.so.*"), *host.glob("value/*.so"), host / "value-decoder",
                 host / "value-examiner", *(user.site / "valuenodes").glob("*.so")]
        self.assertGreater(len(files), 15)
        for file in files:
            for line in run("ldd", file, env={"PATH": "/usr/bin:/bin"}).splitlines():
                place = re.sub(r" \(0x[0-9a-f]+\)$", "", line.strip()).split(" => ")[-1]
                if place != "statically linked" and not EVERYWHERE.fullmatch(place):
                    self.assertTrue(os.path.realpath(place).startswith(f"{host}/"), f"{file.name}: {line}")

    def test_without_numpy_files_nodes_and_graphs_work(self):
        code = (
            "import valuenodes as vn\n"
            "made = vn.apply('Image Rectangle', frame=(0, 0, 3, 2), color=(1, 1, 1, 1))\n"
            "vn.write('white.png', made)\n"
            "white = vn.to_value(vn.read('white.png'))\n"
            "print(vn.add(white, 0.25).range, vn.doctor()['numpy'])\n"
        )
        answer = user.use(code, with_numpy=False)
        self.assertEqual((answer.stdout.strip(), answer.stderr), ("(1.25, 1.25) None", ""))
        answer = user.use("import valuenodes as vn\nvn.Image([[1.0]])", with_numpy=False)
        self.assertEqual(
            answer.stderr.splitlines()[-1],
            "ModuleNotFoundError: arrays become images by numpy, which this Python does not have: install python3-numpy"
            " with apt, or numpy with pip",
        )

    def test_a_missing_part_is_one_line(self):
        cases = [
            ("_host/value/libHostCodecExr.so", "vn.read('a.exr')", "FileError", "there is no"),
            ("_host/value/Value.so", "vn.nodes()", "ValueNodesError", "Value.so"),
            ("_host/value-decoder", "vn.read('a.exr')", "FileError", "there is no"),
        ]
        for part, code, error, text in cases:
            file = user.site / "valuenodes" / part
            hidden = file.with_name("hidden")
            file.rename(hidden)
            try:
                lines = user.use(f"open('a.exr', 'wb').write(b'v/1\\x01')\nimport valuenodes as vn\n{code}").stderr
            finally:
                hidden.rename(file)
            last = lines.splitlines()[-1]
            self.assertRegex(last, rf"^valuenodes\.{error}: ", part)
            self.assertIn(text, last)
            self.assertIn(file.name, last)

    def test_libraries_of_others_can_be_examined(self):
        # The program answers, so it finds all that it links; a file that is no library does not pass.
        answer = subprocess.run([user.site / "valuenodes/_host/value-examiner"], capture_output=True, text=True, env={})
        self.assertEqual(answer.returncode, 2)
        self.assertIn("value-examiner", answer.stderr)
        lines = user.use("open('none.so', 'w').write('none')\nimport valuenodes as vn\nvn.load_library('none.so')").stderr
        last = lines.splitlines()[-1]
        self.assertRegex(last, "^valuenodes.ValueNodesError: ")
        self.assertIn("none.so", last)

    def test_pip_is_content(self):
        self.assertEqual(user.pip("check").strip(), "No broken requirements found.")
        self.assertRegex(user.pip("list"), r"(?m)^valuenodes ")


class Removed(unittest.TestCase):
    def test_nothing_is_left(self):
        self.assertGreater(len(list_files(user.work / "venv") - user.before), 300)
        user.pip("uninstall", "--yes", "valuenodes")
        self.assertEqual(list_files(user.work / "venv"), user.before)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=1)
