# SPDX-License-Identifier: Apache-2.0
"""Images without pixels."""

import cases
import numpy as np
import pytest
import samples
import valuenodes as vn
from conftest import identical

F = np.float32
LARGEST = float(np.finfo(F).max)
SHAPES = [(0, 0), (0, 5), (5, 0)]
ARITHMETIC = ["add", "subtract", "multiply", "divide", "power", "minimum", "maximum"]

# The declared range of results by function: what is measured is 0 to 0, what is scanned is what the scan begins with.
RANGES = {
    "condition": (0, 0),
    "value_range": (0, 0),
    "function": (0, 0),
    "gradient": (0, 0),
    "compare": (0, 1),
    "ambient_occlusion": (0, 1),
    "component_edges": (0, 1),
    "connected_components": (0, -1),
    "steps": (0.25, 3),
}


def expected_range(name, attributes, mode):
    if name == "to_value":
        return attributes.get("low", 0), attributes.get("high", 1)
    if name == "clamp":
        return attributes["low"], attributes.get("high", -LARGEST)
    if name == "distance":
        return 0, 1 if attributes.get("normalize") else 0
    if name == "relief":
        return (0.25, 3) if mode == "value" else (0, 1)
    return RANGES[name]


@pytest.mark.parametrize("mode", sorted(samples.CHANNELS))
@pytest.mark.parametrize("shape", SHAPES)
@pytest.mark.parametrize("case", cases.CASES, ids=cases.NAMES)
def test_every_function(case, shape, mode):
    name, _, attributes = case
    image = vn.Image(np.zeros((*shape, *samples.CHANNELS[mode]), F), mode=mode, range=(0.25, 3), pin=(3, -2))
    if name in ARITHMETIC:
        with pytest.raises(vn.NodeError, match=f"{name}: there is no result, as no image has any pixels"):
            cases.call(case, [image] * 3)
        return
    keeps_mode = name in ("condition", "value_range", "function")
    grows = 2 * attributes["radius"] if attributes.get("grow") else 0
    for result in cases.call(case, [image] * 3):
        assert result.mode == (mode if keeps_mode else "value")
        assert result.size == (shape[1] + grows, shape[0] + grows)
        assert result.range == expected_range(name, attributes, mode)
        assert result.pin == (3, -2)
        # Where an image grows, there is nothing to give it a relief.
        assert not np.asarray(result).any()


@pytest.mark.parametrize("name", ARITHMETIC)
def test_arithmetic_leaves_them_out(name):
    empty = vn.Image(np.zeros((0, 5), F))
    array = np.array([[1, 2, 3], [-4, 0, 8]], F)
    function = getattr(vn, name)
    alone = function(array)
    assert identical(function(empty, array), alone) and identical(function(array, empty, empty), alone)
    assert identical(function(empty, array, empty, array), function(array, array))


def test_comparing_fills_in_what_lies_outside():
    empty = vn.Image(np.zeros((0, 2), F), outside=2)
    less = vn.compare(empty, np.array([[1, 3]], F)).image_a_l_b
    assert identical(less, np.array([[0, 1]], F))


def test_graphs():
    graph = vn.Graph()
    graph.add("Reroute", "height")
    for node_type, id in (("Value Add", "sum"), ("Value Function", "size")):
        graph.add(node_type, id)
        graph.connect("height.image", f"{id}.image")
    empty = vn.Image(np.zeros((0, 5), F))
    assert graph.evaluate("size.image", inputs={"height": empty}).size == (5, 0)
    with pytest.raises(vn.NodeError, match="no image"):
        graph.evaluate("sum.image", inputs={"height": empty})


def test_files_and_pictures(tmp_path):
    empty = vn.Image(np.zeros((5, 0), F))
    for ending in ("exr", "png", "tif"):
        with pytest.raises(vn.FileError, match="no pixels"):
            vn.write(tmp_path / f"empty.{ending}", empty)
    assert list(tmp_path.iterdir()) == []
    with pytest.raises(ValueError, match="no picture"):
        empty.to_png()
    assert empty._repr_png_() is None
