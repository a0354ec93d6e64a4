# SPDX-License-Identifier: Apache-2.0
"""Images of arrays of every kind, and what is said of them."""

import sys
import time
import types

import cv2
import numpy as np
import pytest
import valuenodes as vn
from conftest import same
from hypothesis import given
from hypothesis import strategies as st
from hypothesis.extra import numpy as arrays


@pytest.mark.parametrize(
    "channels, mode", [(None, "value"), (1, "value"), (2, "pair"), (3, "color"), (4, "color")]
)
def test_channels_tell_the_mode(channels, mode):
    image = vn.Image(np.zeros((2, 3) if channels is None else (2, 3, channels), np.float32))
    assert image.mode == mode
    assert image.range == (0, 1) and image.pin == (0, 0) and image.pivot == (0, 0) and image.outside == 0


def test_three_channels_become_color_with_opacity_one():
    colors = np.arange(18, dtype=np.float32).reshape(2, 3, 3)
    shown = np.asarray(vn.Image(colors))
    assert same(shown[..., :3], colors) and (shown[..., 3] == 1).all()


def test_signed_takes_three_and_four_channels():
    for channels in (3, 4):
        image = vn.Image(np.zeros((2, 3, channels), np.float32), mode="signed")
        assert image.mode == "signed" and image.range == (-1, 1) and image.channels == 4


@pytest.mark.parametrize("mode, channels", [("value", 2), ("pair", 1), ("color", 2), ("signed", 1), ("pair", 4)])
def test_mode_that_does_not_suit_the_channels_is_refused(mode, channels):
    with pytest.raises(ValueError, match=f'mode "{mode}" takes .* has {channels}'):
        vn.Image(np.zeros((2, 3, channels), np.float32), mode=mode)


@pytest.mark.parametrize(
    "array, error, message",
    [
        (np.zeros(3), ValueError, r"\(rows, columns\) or \(rows, columns, channels\), not \(3,\)"),
        (np.zeros((1, 2, 3, 4)), ValueError, "not "),
        (np.zeros((2, 2, 5)), ValueError, "1 to 4 channels"),
        (np.zeros((2, 2, 0)), ValueError, "1 to 4 channels"),
        (np.zeros((2, 2), complex), TypeError, "real numbers, not of complex128"),
        (np.array([["a"]]), TypeError, "real numbers"),
        (np.array([["2020-01-01"]], "datetime64[s]"), TypeError, "real numbers"),
        (np.zeros((2, 2), object), TypeError, "real numbers, not of object"),
        (np.zeros((1, 40000), np.float32), ValueError, "at most 32768 columns"),
    ],
)
def test_what_is_no_image_is_refused(array, error, message):
    with pytest.raises(error, match=message):
        vn.Image(array)


def test_unknown_mode_is_refused_with_the_list():
    with pytest.raises(ValueError, match='"colour".*"color", "signed", "value", "pair".*closest is "color"'):
        vn.Image(np.zeros((2, 3, 4), np.float32), mode="colour")


INTEGERS = [np.int8, np.uint8, np.int16, np.uint16, np.int32, np.uint32, np.int64, np.uint64]


@pytest.mark.parametrize("dtype", INTEGERS)
@given(data=st.data())
def test_integers_are_values_as_they_are(dtype, data):
    shape = data.draw(arrays.array_shapes(min_dims=2, max_dims=2, max_side=6))
    array = data.draw(arrays.arrays(dtype, shape))
    assert same(vn.Image(array), array.astype(np.float32))
    swapped = array.astype(array.dtype.newbyteorder())
    assert same(vn.Image(swapped), array.astype(np.float32))


@given(arrays.arrays(np.float16, arrays.array_shapes(min_dims=2, max_dims=2, max_side=6)))
def test_halves_are_exact(array):
    assert same(vn.Image(array), array.astype(np.float32))


def test_every_half_is_exact():
    halves = np.arange(65536, dtype=np.uint16).view(np.float16).reshape(256, 256)
    converted = np.asarray(vn.Image(halves))
    assert np.array_equal(np.signbit(converted), np.signbit(halves))
    assert same(converted, halves.astype(np.float32))


@given(arrays.arrays(np.float64, arrays.array_shapes(min_dims=2, max_dims=2, max_side=6)))
def test_doubles_round_or_overflow(array):
    with np.errstate(over="ignore"):
        expected = array.astype(np.float32)
    if (np.isinf(expected) & np.isfinite(array)).any():
        with pytest.raises(OverflowError, match="largest float"):
            vn.Image(array)
    else:
        assert same(vn.Image(array), expected)


def test_overflow_names_the_place():
    array = np.zeros((5, 7))
    array[3, 2] = -1e39
    array[4, 1] = 1e39
    with pytest.raises(OverflowError, match="row 3, column 2"):
        vn.Image(array)


def test_infinities_and_nan_of_doubles_are_kept():
    array = np.array([[np.inf, -np.inf, np.nan, 3.4028235e38]])
    assert same(vn.Image(array), array.astype(np.float32))


def test_large_arrays_convert_alike():
    array = np.random.default_rng(3).integers(-1000, 1000, (700, 900, 4), dtype=np.int16)
    assert same(vn.Image(array[:, ::-1]), array[:, ::-1].astype(np.float32))


def test_truth_values_are_one_and_zero():
    assert same(vn.Image(np.array([[True, False]])), [[1, 0]])


def test_masked_samples_are_nan():
    masked = np.ma.masked_array([[1.0, 2.0]], mask=[[False, True]])
    assert same(vn.Image(masked), [[1, np.nan]])


def test_lists_make_images_but_no_inputs():
    assert same(vn.Image([[1, 2], [3, 4]]), [[1, 2], [3, 4]])
    with pytest.raises(TypeError, match="^add: image 1 takes an image or array, not list$"):
        vn.add([[1, 2], [3, 4]])


def test_numbers_of_metadata_come_as_any_sequence():
    # An array makes its entries when it is asked for them.
    for numbers in ((1.5, 2.0), [1.5, 2.0], np.array([1.5, 2.0]), np.array([1.5, 2.0], np.float16)):
        image = vn.Image(np.zeros((1, 1))).replace(metadata={"entries": {"Weights": numbers}})
        assert image.metadata["entries"]["Weights"] == (1.5, 2.0)


def test_header_is_as_it_was_given():
    image = vn.Image(np.zeros((2, 3)), pin=(-5, 7), pivot=(0.5, 0.25), range=(-2, 9), outside=np.inf)
    assert (image.pin, image.pivot, image.range) == ((-5, 7), (0.5, 0.25), (-2, 9))
    assert image.outside == np.inf and image.size == (3, 2) and image.shape == (2, 3)


@pytest.mark.parametrize(
    "arguments, message",
    [
        ({"pin": (0.5, 0)}, "pin takes whole numbers"),
        ({"pin": (1e30, 0)}, "pin takes whole numbers"),
        ({"pivot": (np.nan, 0)}, "pivot takes finite"),
        ({"range": (0, 1e300)}, "range takes finite"),
    ],
)
def test_header_that_no_image_has_is_refused(arguments, message):
    with pytest.raises(ValueError, match=message):
        vn.Image(np.zeros((2, 3)), **arguments)


@pytest.mark.parametrize(
    "arguments, message",
    [
        ({"mode": 2}, "mode takes a word, not int"),
        ({"pin": 3}, r"pin takes two whole numbers \(x, y\), not int"),
        ({"pivot": ("a", 0)}, r"pivot takes two numbers \(x, y\), not str"),
        ({"range": "01"}, r"range takes two numbers \(low, high\), not str"),
        ({"outside": (0, 0)}, "outside takes a number, not tuple"),
    ],
)
def test_header_of_another_kind_is_refused(arguments, message):
    with pytest.raises(TypeError, match=message):
        vn.Image(np.zeros((2, 3)), **arguments)
    with pytest.raises(TypeError, match=message):
        vn.Image(np.zeros((2, 3))).replace(**arguments)


@pytest.mark.parametrize("what", [None, "abc", 5, {}, b"abcd"])
def test_what_is_no_array_is_refused(what):
    with pytest.raises(TypeError, match="made of an array, not of"):
        vn.Image(what)


def test_images_cannot_be_changed_but_replaced():
    image = vn.Image(np.zeros((2, 3)))
    with pytest.raises(AttributeError):
        image.range = (0, 2)
    changed = image.replace(range=(0, 2), pin=(1, 1))
    assert changed.range == (0, 2) and changed.pin == (1, 1) and image.range == (0, 1)
    assert changed.replace(mode="value") == changed
    with pytest.raises(ValueError, match='no field "artist"'):
        image.replace(metadata={"artist": "x"})


def test_image_of_an_image_has_its_samples_and_mode_alone():
    image = vn.Image(np.zeros((2, 3, 4), np.float32), mode="signed", pin=(1, 2), range=(0, 7))
    other = vn.Image(image)
    assert np.shares_memory(other, image)
    assert (other.mode, other.pin, other.range) == ("signed", (0, 0), (-1, 1))
    assert vn.Image(image, mode="color", pin=(3, 3)).mode == "color"


def test_replaced_mode_must_suit_the_channels():
    image = vn.Image(np.zeros((2, 3, 4), np.float32), pin=(1, 2), range=(0, 7))
    changed = image.replace(mode="signed")
    assert np.shares_memory(changed, image)
    assert (changed.mode, changed.pin, changed.range) == ("signed", (1, 2), (0, 7))
    with pytest.raises(ValueError, match='mode "value" takes one channel'):
        image.replace(mode="value")


def test_equality_goes_by_what_is_seen():
    samples = np.array([[1, np.nan]], np.float32)
    assert vn.Image(samples) == vn.Image(samples.copy())
    assert vn.Image(samples) != vn.Image(samples, range=(0, 2))
    assert vn.Image(samples) != vn.Image(samples, pin=(1, 0))
    assert vn.Image(samples) != vn.Image(np.array([[1, 2]], np.float32))
    assert vn.Image(samples) != samples.tolist()
    with pytest.raises(TypeError):
        hash(vn.Image(samples))


def test_repr_names_size_mode_and_range():
    assert repr(vn.Image(np.zeros((2, 3)))) == "<valuenodes.Image 3 x 2 value, range 0 to 1>"
    image = vn.Image(np.zeros((2, 3, 2)), pin=(4, 5), range=(0.5, 9))
    assert repr(image) == "<valuenodes.Image 3 x 2 pair, range 0.5 to 9, pin (4, 5)>"


def read_png(png):
    """The pixels of a PNG of 8 bits with opacity, as another library reads them."""
    pixels = cv2.imdecode(np.frombuffer(png, np.uint8), cv2.IMREAD_UNCHANGED)
    assert pixels.dtype == np.uint8
    return pixels[..., [2, 1, 0, 3]]


def test_png_maps_the_range_to_black_and_white():
    image = vn.Image(np.array([[0, 10], [20, -5]], np.float32), range=(0, 10))
    assert read_png(image.to_png())[..., 0].tolist() == [[0, 255], [255, 0]]
    assert read_png(image.to_png(range=(-5, 20)))[..., 0].tolist() == [[51, 153], [255, 0]]


def test_messages_and_help_have_the_name_of_the_package():
    with pytest.raises(TypeError, match="'valuenodes.Image'"):
        1 - vn.Image(np.zeros((1, 1)))
    names = "replace from_dlpack mode size shape channels pin pivot range outside metadata"
    for name in names.split():
        text = getattr(vn.Image, name).__doc__
        assert text and "_valuenodes" not in text, name


def test_png_can_be_small_and_colored():
    image = vn.Image(np.linspace(0, 1, 200 * 100, dtype=np.float32).reshape(100, 200))
    assert read_png(image.to_png(size=50)).shape == (25, 50, 4)
    colored = read_png(image.to_png(colormap=vn.colormaps()[0]))
    assert len({tuple(pixel) for pixel in colored[:, 0, :3].tolist()}) > 10
    with pytest.raises(ValueError, match='no colormap "virdis".*closest is "viridis"'):
        image.to_png(colormap="virdis")


@pytest.mark.parametrize(
    "arguments, error, text",
    [
        ({"range": 5}, TypeError, r"to_png: range takes two finite numbers \(low, high\), the lower one first, not 5"),
        ({"range": (1, 2, 3)}, TypeError, r"to_png: range .*, not \(1, 2, 3\)"),
        ({"range": (1, 0)}, ValueError, r"to_png: range .*, not \(1, 0\)"),
        ({"range": (0, np.inf)}, ValueError, r"to_png: range .*, not \(0, inf\)"),
        ({"range": (np.nan, 1)}, ValueError, r"to_png: range .*, not \(nan, 1\)"),
        ({"size": 0}, ValueError, "to_png: size is at least 1, not 0"),
        ({"size": "big"}, TypeError, "to_png: size takes a whole number, not str"),
        ({"colormap": 3}, TypeError, "to_png: colormap takes a word, not int"),
    ],
)
def test_wrong_arguments_of_pictures_are_one_line(arguments, error, text):
    with pytest.raises(error, match=f"^{text}$"):
        vn.Image(np.zeros((2, 2))).to_png(**arguments)


@pytest.mark.parametrize("threads", [2.5, "2", None, 10**30])
def test_wrong_numbers_of_threads_are_one_line(threads):
    with pytest.raises((TypeError, ValueError), match="^set_threads takes a whole number[^\n]*$"):
        vn.set_threads(threads)
    with pytest.raises((TypeError, ValueError), match="^set_max_size: columns takes a whole number[^\n]*$"):
        vn.set_max_size(threads)


def test_notebooks_get_a_picture_of_limited_size():
    image = vn.Image(np.zeros((3000, 20), np.float32))
    assert read_png(image._repr_png_()).shape == (1024, 6, 4)
    assert vn.Image(np.zeros((0, 3), np.float32))._repr_png_() is None


def test_show_opens_the_viewer_of_the_system(tmp_path, monkeypatch):
    viewer = tmp_path / "xdg-open"
    viewer.write_text(f'#!/bin/sh\n/bin/cp "$1" {tmp_path}/copied\n/bin/mv {tmp_path}/copied {tmp_path}/shown\n')
    viewer.chmod(0o755)
    monkeypatch.setenv("PATH", str(tmp_path))
    monkeypatch.setattr("tempfile.tempdir", str(tmp_path))
    image = vn.Image(np.eye(3, dtype=np.float32))
    image.show(range=(0, 2))
    deadline = time.monotonic() + 60
    while not (tmp_path / "shown").exists() and time.monotonic() < deadline:
        time.sleep(0.01)
    assert (tmp_path / "shown").read_bytes() == image.to_png(range=(0, 2))


def test_show_without_a_viewer_names_the_picture(tmp_path, monkeypatch):
    monkeypatch.setenv("PATH", str(tmp_path))
    monkeypatch.setattr("tempfile.tempdir", str(tmp_path))
    with pytest.raises(RuntimeError, match=f"no viewer of pictures; the picture is {tmp_path}/valuenodes-.*png"):
        vn.Image(np.eye(3)).show()


def test_show_in_a_notebook_is_a_picture_in_it(monkeypatch):
    shown = []
    display = types.ModuleType("IPython.display")
    display.Image = lambda data: data
    display.display = shown.append
    notebook = types.ModuleType("IPython")
    notebook.get_ipython = lambda: types.SimpleNamespace(kernel=1)
    notebook.display = display
    monkeypatch.setitem(sys.modules, "IPython", notebook)
    monkeypatch.setitem(sys.modules, "IPython.display", display)
    image = vn.Image(np.eye(3, dtype=np.float32))
    image.show(colormap="viridis")
    assert shown == [image.to_png(colormap="viridis")]
