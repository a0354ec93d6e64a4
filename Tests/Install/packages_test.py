#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Packs a build folder into Debian packages twice and looks into them.

    packages_test.py CMAKE CPACK BUILD_FOLDER WORK_FOLDER [--with-python]

With the option the build has the Python package, and there is a package of it.
"""

import collections
import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

CMAKE, CPACK, BUILD, WORK = sys.argv[1], sys.argv[2], sys.argv[3], pathlib.Path(sys.argv[4])
WITH_PYTHON = "--with-python" in sys.argv[5:]
PACKAGES = ["libvaluehost", "libvaluehost-dev", *(["python3-valuenodes"] if WITH_PYTHON else []), "value", "value-doc"]
# 2026-03-04 05:06:07 UTC
EPOCH, EPOCH_TEXT = "1772600767", "2026-03-04 05:06"

# That of the module, which is this one.
PYTHON = f"{sys.version_info[0]}.{sys.version_info[1]}"

Entry = collections.namedtuple("Entry", "mode owner time")


def run(*command, **options):
    answer = subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)
    if answer.returncode != 0:
        raise AssertionError(f"{command} ended with {answer.returncode}:\n{answer.stdout}{answer.stderr}")
    return answer.stdout


def pack(folder, zone):
    environment = {**os.environ, "SOURCE_DATE_EPOCH": EPOCH, "TZ": zone}
    run(CPACK, "--config", f"{BUILD}/CPackConfig.cmake", "-B", folder, cwd=BUILD, env=environment, umask=0o022)
    return {path.name.split("_")[0]: path for path in sorted(folder.glob("*.deb"))}


def list_contents(package):
    """The entries of a package by their names from the root: "usr/bin/value", folders with a slash at the end."""
    entries = {}
    for line in run("dpkg-deb", "--contents", package, env={**os.environ, "TZ": "UTC", "LC_ALL": "C"}).splitlines():
        mode, owner, _, day, minute, name = line.split(None, 5)
        entries[name.split(" -> ")[0].removeprefix("./")] = Entry(mode, owner, f"{day} {minute}")
    return entries


def files_of(entries):
    return {name for name in entries if name and not name.endswith("/")}


class Packages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(WORK, ignore_errors=True)
        cls.first = pack(WORK / "first", "UTC")
        cls.second = pack(WORK / "second", "Asia/Tokyo")
        cls.contents = {name: list_contents(path) for name, path in cls.first.items()}
        cls.fields = {name: run("dpkg-deb", "--field", path) for name, path in cls.first.items()}

    def field(self, package, name):
        found = re.search(rf"^{name}: (.*)$", self.fields[package], re.MULTILINE)
        return found.group(1) if found else ""

    def version(self):
        return self.field("libvaluehost", "Version")

    def series(self):
        """The 0.2 of 0.2.0-1."""
        return ".".join(self.version().split(".")[:2])

    def test_there_is_one_package_per_part(self):
        self.assertEqual(sorted(self.first), PACKAGES)

    def test_two_packings_are_the_same_byte_by_byte(self):
        for name in PACKAGES:
            self.assertEqual(self.first[name].name, self.second[name].name)
            self.assertEqual(self.first[name].read_bytes(), self.second[name].read_bytes(), name)

    def test_entries_have_the_modes_owner_and_time_of_policy(self):
        modes = {"drwxr-xr-x", "-rw-r--r--", "-rwxr-xr-x", "lrwxrwxrwx"}
        for contents in self.contents.values():
            for name, entry in contents.items():
                self.assertIn(entry.mode, modes, name)
                self.assertEqual(entry.owner, "root/root", name)
                self.assertEqual(entry.time, EPOCH_TEXT, name)
                if name.startswith(("usr/bin/", "usr/libexec/")) and not name.endswith("/"):
                    self.assertEqual(entry.mode, "-rwxr-xr-x", name)

    def test_every_installed_file_is_in_one_package(self):
        prefix = WORK / "installed"
        run(CMAKE, "--install", BUILD, "--prefix", prefix)
        installed = {
            f"usr/{path.relative_to(prefix)}" for path in prefix.rglob("*") if path.is_symlink() or not path.is_dir()
        }
        # Packages have a copyright file in its place.
        installed = {name for name in installed if not name.endswith("/LICENSE")}
        # Manual pages are packed.
        installed = {f"{name}.gz" if "/share/man/" in name and not name.endswith(".gz") else name for name in installed}
        times = collections.Counter(name for contents in self.contents.values() for name in files_of(contents))
        self.assertGreater(len(installed), 200)
        self.assertEqual({name for name in installed if times[name] != 1}, set())
        # What is added is Debian's own.
        added = {name for name in times if name not in installed}
        for name in added:
            self.assertRegex(name, r"^usr/share/(doc/[^/]*/(copyright|changelog(\.Debian)?\.gz)|lintian/overrides/.*)$")

    def test_parts_lie_in_their_packages(self):
        series = re.escape(self.series())
        expected = {
            "value": [
                r"usr/bin/value", r".*/value/Value\.so", r".*/value/libValuePanel\.so",
                r"usr/share/value/graph\.schema\.json", r"usr/share/applications/value-editor\.desktop",
                r"usr/share/mime/packages/value-graph\.xml",
                r"usr/share/metainfo/invalid\.value\.editor\.metainfo\.xml",
                r"usr/share/icons/hicolor/scalable/apps/value-editor\.svg",
            ],
            "libvaluehost": [
                rf".*/libHostFiles\.so\.{series}", rf".*/libHostWidgets\.so\.{series}\.\d+",
                r".*/value/libHostCodecExr\.so", r".*/value/libHostCodecRasters\.so",
                r".*/value/libHostResources\.so", r"usr/libexec/value/value-decoder",
                r"usr/libexec/value/value-examiner",
            ],
            "libvaluehost-dev": [
                r".*/libHostFiles\.so", r".*/ValueHostConfig\.cmake", r".*/pkgconfig/valuehost\.pc",
                r"usr/include/ValueHost/Host/Image/Image\.h",
            ],
            "value-doc": [r".*/value-doc/Docs/Files\.md", r".*/value-doc/Examples/Images/terrain\.exr"],
        }
        if WITH_PYTHON:
            module = rf"_valuenodes\.cpython-{PYTHON.replace('.', '')}-\w+-linux-gnu\.so"
            expected["python3-valuenodes"] = [
                rf".*/dist-packages/{part}" for part in [
                    rf"valuenodes/{module}", r"valuenodes/_functions\.py", r"valuenodes/rows\.pyi",
                    r"valuenodes/py\.typed", r"valuenodes-[0-9.]+\.dist-info/METADATA",
                ]
            ]
        for package, patterns in expected.items():
            for pattern in patterns:
                found = [name for name in files_of(self.contents[package]) if re.fullmatch(pattern, name)]
                self.assertEqual(len(found), 1, f"{pattern} in {package}")

    def test_packages_depend_on_each_other_in_the_same_version(self):
        for package in ["value", "libvaluehost-dev"]:
            self.assertIn(f"libvaluehost (= {self.version()})", self.field(package, "Depends"))
        self.assertRegex(self.field("libvaluehost", "Depends"), r"libopenexr-.*libpng16-16.*libqt6widgets6")
        self.assertEqual(self.field("value-doc", "Architecture"), "all")

    def test_other_packages_learn_what_the_libraries_belong_to(self):
        major, minor = self.series().split(".")
        upstream = self.version().rsplit("-", 1)[0]
        self.assertIn(
            f"libHostImage {major}.{minor} libvaluehost (>= {upstream}), libvaluehost (<< {major}.{int(minor) + 1}~)\n",
            run("dpkg-deb", "--info", self.first["libvaluehost"], "shlibs"),
        )
        self.assertEqual(run("dpkg-deb", "--info", self.first["libvaluehost"], "triggers"), "activate-noawait ldconfig\n")

    @unittest.skipUnless(WITH_PYTHON, "the build has no Python package")
    def test_python_is_the_one_that_the_module_is_for(self):
        major, minor = PYTHON.split(".")
        needed = self.field("python3-valuenodes", "Depends").split(", ")
        for other in [f"python3 (>= {PYTHON})", f"python3 (<< {major}.{int(minor) + 1})",
                      f"libvaluehost (= {self.version()})", f"value (= {self.version()})"]:
            self.assertIn(other, needed)
        self.assertEqual(self.field("python3-valuenodes", "Recommends"), "python3-numpy")

    @unittest.skipUnless(WITH_PYTHON, "the build has no Python package")
    def test_bytecode_is_made_by_the_installation_and_removed(self):
        folder = WORK / "control"
        run("dpkg-deb", "--control", self.first["python3-valuenodes"], folder)
        scripts = {path.name for path in folder.iterdir()} - {"control", "md5sums"}
        self.assertEqual(scripts, {"postinst", "prerm"})
        for script, program in [("postinst", "py3compile"), ("prerm", "py3clean")]:
            self.assertEqual((folder / script).stat().st_mode & 0o777, 0o755)
            self.assertIn(f"{program} -p python3-valuenodes\n", (folder / script).read_text())
        self.assertEqual([name for name in self.contents["python3-valuenodes"] if name.endswith(".pyc")], [])
        # Those of libraries have no scripts but what dpkg's triggers do.
        for name in ["value", "libvaluehost"]:
            shutil.rmtree(folder)
            run("dpkg-deb", "--control", self.first[name], folder)
            self.assertEqual({path.name for path in folder.iterdir()} & {"postinst", "prerm", "postrm"}, set())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=1)
