#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks what makes the editor a program of the desktop, with the tools of freedesktop.org and by what it says.

    desktop_test.py ROOT METAINFO WORK_FOLDER
"""

import configparser
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import unittest
import xml.etree.ElementTree as ET

ROOT, METAINFO, WORK = (pathlib.Path(word) for word in sys.argv[1:4])
LAUNCHER = ROOT / "Apps" / "Editor" / "Launcher"
ENTRY = LAUNCHER / "value-editor.desktop"
TYPE = "application/vnd.value-graph+json"
SIZES = (16, 24, 32, 48, 128, 256)


def run(*command, **options):
    return subprocess.run([str(word) for word in command], capture_output=True, text=True, check=False, **options)


class EntryTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        parser = configparser.ConfigParser(interpolation=None, delimiters="=")
        parser.optionxform = str
        parser.read(ENTRY, "utf-8")
        cls.entry = parser["Desktop Entry"]

    def test_the_validator_finds_nothing(self):
        answer = run("desktop-file-validate", ENTRY)
        self.assertEqual((answer.returncode, answer.stdout + answer.stderr), (0, ""))

    def test_it_opens_documents_in_the_editor(self):
        self.assertEqual(self.entry["Exec"], "value edit %f")
        self.assertEqual(self.entry["MimeType"], TYPE + ";")
        self.assertEqual(self.entry["Icon"], "value-editor")
        self.assertEqual(self.entry["StartupWMClass"], "value-editor")

    def test_every_text_is_there_in_german(self):
        for key in ("Name", "GenericName", "Comment", "Keywords"):
            self.assertTrue(self.entry[key], key)
            self.assertTrue(self.entry[f"{key}[de]"], key)


class DocumentTypeTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        shutil.rmtree(WORK, ignore_errors=True)
        packages = WORK / "mime" / "packages"
        packages.mkdir(parents=True)
        shutil.copy(LAUNCHER / "value-graph.xml", packages)
        cls.answer = run("update-mime-database", WORK / "mime", env={**os.environ, "XDG_DATA_HOME": str(WORK)})
        (cls.type,) = ET.parse(LAUNCHER / "value-graph.xml").getroot()
        cls.name = "{http://www.freedesktop.org/standards/shared-mime-info}"

    def test_the_database_takes_it(self):
        self.assertEqual((self.answer.returncode, self.answer.stderr), (0, ""))
        self.assertEqual((WORK / "mime" / "subclasses").read_text("utf-8"), f"{TYPE} application/json\n")

    def test_the_ending_of_other_files_is_not_claimed(self):
        lines = (WORK / "mime" / "globs2").read_text("utf-8").splitlines()
        self.assertEqual([line for line in lines if not line.startswith("#")], [f"80:{TYPE}:*.vgraph.json"])

    def is_known_by_content(self, content):
        """Whether a file that begins so is a document, by the rules of the type."""
        for match in self.type.iter(f"{self.name}match"):
            self.assertEqual((match.get("type"), match.get("offset")), ("string", "0:512"))
            value = match.get("value").encode()
            if 0 <= content.find(value) <= 512:
                return True
        return False

    def test_documents_are_known_by_their_content(self):
        files = sorted((ROOT / "Examples").rglob("*.json"))
        self.assertGreater(len(files), 20)
        for file in files:
            self.assertTrue(self.is_known_by_content(file.read_bytes()), file.name)
        self.assertTrue(self.is_known_by_content(b'{"format":"value-graph","version":2,"nodes":[]}'))

    def test_other_json_is_not(self):
        for content in (b"{}", b'{"format": "graph"}', b" " * 600 + b'{"format": "value-graph"}'):
            self.assertFalse(self.is_known_by_content(content))


class IconsTest(unittest.TestCase):
    def test_pictures_have_their_sizes_and_are_transparent_round_the_mark(self):
        for size in SIZES:
            data = (LAUNCHER / "Icons" / f"value-editor-{size}.png").read_bytes()
            self.assertEqual(data[:8], b"\x89PNG\r\n\x1a\n")
            width, height, depth, color_type = struct.unpack(">IIBB", data[16:26])
            # Color type 6 is red, green, blue and opacity.
            self.assertEqual((width, height, depth, color_type), (size, size, 8, 6))

    def test_drawings_are_square_and_use_nothing_from_elsewhere(self):
        for name, size in (("value-editor.svg", "128"), ("value-editor-small.svg", "16")):
            root = ET.parse(LAUNCHER / "Icons" / name).getroot()
            self.assertEqual((root.get("width"), root.get("height")), (size, size))
            self.assertEqual(root.get("viewBox"), f"0 0 {size} {size}")
            allowed = {"svg", "clipPath", "rect", "g", "path", "circle"}
            self.assertLessEqual({element.tag.split("}")[1] for element in root.iter()}, allowed)


class DescriptionTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.root = ET.parse(METAINFO).getroot()

    def test_the_validator_finds_nothing(self):
        answer = run("appstreamcli", "validate", "--no-net", "--no-color", METAINFO)
        self.assertEqual(answer.returncode, 0, answer.stdout + answer.stderr)
        self.assertEqual(re.findall(r"^[EW]: .*", answer.stdout, re.MULTILINE), [])

    def test_the_file_has_the_name_of_what_it_describes(self):
        name = self.root.findtext("id")
        self.assertRegex(name, r"^[a-z]+\.[a-z]+\.[a-z]+$")
        self.assertEqual(METAINFO.name, name + ".metainfo.xml")

    def test_it_names_the_entry_and_the_type(self):
        self.assertEqual(self.root.findtext("launchable"), ENTRY.name)
        self.assertEqual(self.root.findtext("provides/mediatype"), TYPE)

    def test_the_newest_release_is_that_of_the_changelog(self):
        release = self.root.find("releases/release")
        version, date = re.search(
            r"^## \[([0-9.]+)\] - ([0-9-]+)$", (ROOT / "CHANGELOG.md").read_text("utf-8"), re.MULTILINE
        ).groups()
        self.assertEqual((release.get("version"), release.get("date")), (version, date))

    def test_every_text_is_there_in_german(self):
        language = "{http://www.w3.org/XML/1998/namespace}lang"
        for path in ("name", "summary", "description/p", "description/ul/li"):
            texts = self.root.findall(path)
            german = [text for text in texts if text.get(language) == "de"]
            self.assertEqual(len(texts), 2 * len(german), path)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=1)
