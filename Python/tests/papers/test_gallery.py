# SPDX-License-Identifier: Apache-2.0
"""The gallery is what its code makes now."""

import re

import make_gallery
import numpy as np
import pytest
import valuenodes as vn
from gallery import GROUPS, INPUTS

ENTRIES = [entry for entries in GROUPS.values() for entry in entries]


@pytest.fixture(scope="module")
def page():
    return (make_gallery.FOLDER / "Gallery.md").read_text("utf-8")


def test_page_and_pictures_are_up_to_date():
    assert make_gallery.make(writes=False) == []


def test_code_of_the_page_is_the_code_that_is_run(page):
    blocks = re.findall(r"^```python\n(.*?)^```$", page, re.MULTILINE | re.DOTALL)
    assert blocks == [INPUTS.code, *(entry.code for entry in ENTRIES)]


def test_every_node_has_an_entry_that_calls_it(page):
    nodes = [vn.describe(name)["name"] for name in vn.nodes() if vn.describe(name)["library"] == "Value"]
    names = {name.lower().replace(" ", "_") for name in nodes}
    names = {name if hasattr(vn, name) else name.removeprefix("value_") for name in names}
    assert {entry.function for entry in ENTRIES} == names and len(ENTRIES) == 20
    for entry in ENTRIES:
        assert f"vn.{entry.function}(" in entry.code
        assert f"\n### [`{entry.function}`](../Nodes/Image" in page


def test_pictures_show_something():
    for file in (make_gallery.FOLDER / make_gallery.PICTURES).glob("*.png"):
        pixels = make_gallery.read_pixels(file).astype(int)
        # More than the faint terrain that is there to be leveled.
        assert np.ptp(pixels) > 40, file
        assert file.stat().st_size < 160 * 1024, file


def test_another_picture_is_noticed(tmp_path):
    pixels = np.full((4, 5, 1), 100, np.uint8)
    make_gallery.write_pixels(tmp_path / "one.png", pixels)
    assert make_gallery.is_same(tmp_path / "one.png", pixels)
    assert make_gallery.is_same(tmp_path / "one.png", pixels + np.uint8(3))
    pixels[2, 3] += 4
    assert not make_gallery.is_same(tmp_path / "one.png", pixels)
    assert not make_gallery.is_same(tmp_path / "one.png", pixels[:3])
    assert not make_gallery.is_same(tmp_path / "none.png", pixels)
