# SPDX-License-Identifier: Apache-2.0
"""Image files."""

import os
import pathlib

import numpy as np
import pytest
import valuenodes as vn
from conftest import same


def test_what_is_written_is_read_back(tmp_path):
    samples = np.array([[1.5, np.nan, -np.inf], [0, -0.0, 3e38]], np.float32)
    image = vn.Image(samples, pin=(3, -4), pivot=(0.5, 0), range=(-1, 2))
    vn.write(tmp_path / "image.exr", image)
    assert vn.read(tmp_path / "image.exr").replace(metadata={"unit": ""}) == image


def test_arrays_are_written_as_they_are(tmp_path):
    path = str(tmp_path / "image.tif")
    vn.write(path, np.arange(12, dtype=np.uint16).reshape(3, 4))
    assert same(vn.read(path), np.arange(12).reshape(3, 4))


def test_reader_takes_its_attributes(tmp_path):
    path = tmp_path / "image.png"
    vn.write(path, np.linspace(0, 1, 12, dtype=np.float32).reshape(3, 4), type="uint8")
    assert vn.read(path).mode == "value"
    assert vn.read(path, color_mode="color").mode == "color"
    assert vn.read(path, range="custom", low=-1, high=4, placement="custom", pin=(5, 6)).range == (-1, 4)
    assert vn.read(path, samples="stored").mode == "value"
    assert np.asarray(vn.read(path, samples="stored")).max() == 255
    with pytest.raises(ValueError, match='read: color_mode has no word "colour"'):
        vn.read(path, color_mode="colour")
    with pytest.raises(TypeError, match='no attribute "mode"'):
        vn.read(path, mode="color")


@pytest.mark.parametrize("kind, step", [("uint8", 1 / 255), ("uint16", 1 / 65535), ("half", 1e-3), ("float", 0)])
def test_types_of_samples(tmp_path, kind, step):
    samples = np.random.default_rng(1).random((5, 6), dtype=np.float32)
    vn.write(tmp_path / "image.tif", samples, kind)
    np.testing.assert_allclose(vn.read(tmp_path / "image.tif"), samples, rtol=0, atol=step / 2 + 1e-7)


@pytest.mark.parametrize(
    "arguments, message",
    [
        ({"type": "float32"}, '"float", "half", "uint16", "uint8", "int16", not \'float32\''),
        ({"samples": "all"}, '"unit", "stored"'),
        ({"opacity": "yes"}, '"auto", "keep", "drop"'),
        ({"metadata": None}, '"keep", "strip"'),
    ],
)
def test_wrong_words_are_refused(tmp_path, arguments, message):
    with pytest.raises(ValueError, match=message):
        vn.write(tmp_path / "image.exr", np.zeros((2, 2)), **arguments)
    assert not any(tmp_path.iterdir())


def test_file_errors_are_os_errors_that_name_the_file(tmp_path):
    with pytest.raises(OSError, match="none.exr.*no such file") as caught:
        vn.read(tmp_path / "none.exr")
    assert type(caught.value) is vn.MissingFileError and isinstance(caught.value, vn.FileError)
    with pytest.raises(vn.FileError, match="missing"):
        vn.write(tmp_path / "missing" / "image.exr", np.zeros((2, 2)))
    (tmp_path / "broken.png").write_bytes(b"\x89PNG\r\n\x1a\nnothing")
    with pytest.raises(vn.FileError, match="broken.png"):
        vn.read(tmp_path / "broken.png")
    with pytest.raises(vn.FileError, match="unknown"):
        vn.write(tmp_path / "image.unknown", np.zeros((2, 2)))


def test_paths_may_hold_any_bytes(tmp_path):
    for name in ("größe.exr", os.fsdecode(b"bad-\xff.exr")):
        path = os.path.join(tmp_path, name)
        vn.write(path, np.ones((2, 2)))
        assert same(vn.read(pathlib.Path(path)), np.ones((2, 2)))


def test_layers(tmp_path):
    vn.write(tmp_path / "layers.exr", np.ones((2, 2)), layer="height")
    assert same(vn.read(tmp_path / "layers.exr", layer="height"), np.ones((2, 2)))
    with pytest.raises(vn.FileError, match="height"):
        vn.read(tmp_path / "layers.exr", layer="depth")


def test_metadata_travels_through_nodes_and_files(tmp_path):
    image = vn.Image(np.ones((4, 5), np.float32)).replace(
        metadata={"nodata": -9999.0, "entries": {"Artist": "somebody"}}
    )
    vn.write(tmp_path / "image.tif", vn.add(image, 1))
    metadata = vn.read(tmp_path / "image.tif").metadata
    assert metadata["nodata"] == -9999.0 and metadata["entries"]["Artist"] == "somebody"
    vn.write(tmp_path / "bare.tif", image, metadata="strip")
    assert "nodata" not in vn.read(tmp_path / "bare.tif").metadata


def test_what_a_format_does_not_hold_is_a_warning(tmp_path):
    image = vn.Image(np.ones((4, 5), np.float32)).replace(metadata={"nodata": -9999.0})
    with pytest.warns(vn.ValueNodesWarning, match="OpenEXR holds no nodata value"):
        vn.write(tmp_path / "image.exr", image)
