# SPDX-License-Identifier: Apache-2.0
"""How plugs of a graph are named, and why two of them are not connected."""

import numpy as np
import pytest
import valuenodes as vn

H = np.zeros((2, 3), np.float32)


@pytest.fixture
def graph():
    """Reroutes "height" and "mask", additions "a" and "b" behind the first, a clamp, a comparison and a number."""
    made = vn.Graph()
    made.add("Reroute", "height")
    made.add("Reroute", "mask")
    made.add("Value Add", "a")
    made.add("Value Add", "b")
    made.add("Value Clamp", "clamp")
    made.add("Value Gradient", "slope")
    made.add("Number", "n")
    made.connect("height.image", "a.image")
    made.connect("a.image", "b.image")
    made.connect("height.image", "clamp.image")
    return made


@pytest.mark.parametrize(
    "call, text",
    [
        (
            lambda g: g.connect("b.image", "a.image", 1),
            '"b.image" cannot feed "a.image": it would close a cycle, as "a" feeds "b"; disconnect one of these first',
        ),
        (
            lambda g: g.connect("b.image", "height.image"),
            '"b.image" cannot feed "height.image": it would close a cycle, as "height" feeds "a", which feeds "b"; '
            "disconnect one of these first",
        ),
        (lambda g: g.connect("b.image", "b.image", 1), '"b.image" cannot feed "b.image": a node cannot feed itself'),
        (
            lambda g: g.connect("mask.image", "clamp.image"),
            '"mask.image" cannot feed "clamp.image": it is connected already, to "height.image"; '
            'disconnect("height.image", "clamp.image") first',
        ),
        (
            lambda g: g.connect("height.image", "clamp.image"),
            '"height.image" cannot feed "clamp.image": these two are connected already',
        ),
        (
            lambda g: g.connect("mask.image", "b.image"),
            '"mask.image" cannot feed "b.image": at index 0 it is connected already, to "a.image"; index=1 is free',
        ),
        (
            lambda g: g.connect("mask.image", "clamp.image", 1),
            '"mask.image" cannot feed "clamp.image": input "image" takes one connection, so its index is 0, not 1',
        ),
        (
            lambda g: g.connect("n.number", "slope.image"),
            '"n.number" cannot feed "slope.image": the one delivers a number, the other takes an image',
        ),
        (
            lambda g: g.connect("n.number", "clamp.image"),
            '"n.number" cannot feed "clamp.image": the one delivers a number, the other takes an image; what takes a '
            'number there is "clamp.low", "clamp.high"',
        ),
        (
            lambda g: g.connect("mask.image", "clamp.low"),
            '"mask.image" cannot feed "clamp.low": the one delivers an image, the other takes a number; what takes an '
            'image there is "clamp.image"',
        ),
        (
            lambda g: g.connect("mask.imag", "b.image"),
            '"mask.imag": Reroute has no output "imag"; the closest is "image"; it has image',
        ),
        (
            lambda g: g.disconnect("mask.image", "clamp.image"),
            'there is no connection from "mask.image" to "clamp.image" at index 0; what feeds "clamp.image" is '
            '"height.image"',
        ),
        (lambda g: g.connect("hight", "b"), 'there is no node "hight"; the closest is "height"'),
        (lambda g: g.evaluate("hight"), 'there is no node "hight"; the closest is "height"'),
        (lambda g: g.evaluate("hight.image"), 'there is no node "hight"; the closest is "height"'),
        (
            lambda g: g.evaluate("b", inputs={"hight": H}),
            'inputs["hight"]: there is no node "hight"; the closest is "height"',
        ),
        (
            lambda g: g.evaluate("b", inputs={"n": H}),
            'inputs["n"]: node "n" has no image output',
        ),
        (
            lambda g: g.get("clmp"),
            'there is no node "clmp"; the closest is "clamp"; an attribute is written "id.attribute"',
        ),
        (
            lambda g: g.set("clamp", 3),
            '"clamp" is a node, and an attribute is written "id.attribute": "clamp.clamp", "clamp.low", "clamp.high", '
            '"clamp.profile"',
        ),
        (
            lambda g: g.evaluate("slope"),
            'node "slope" has several image outputs; name one of "slope.output_x", "slope.output_y"',
        ),
        (
            lambda g: g.connect("slope", "b"),
            'node "slope" has several outputs; name one of "slope.output_x", "slope.output_y"',
        ),
        (
            lambda g: g.evaluate("output_y"),
            'there is no node "output_y"; plugs of this name are "slope.output_y"',
        ),
        (lambda g: g.connect("mask", "n"), 'node "n" has no image input; its attributes are "n.value"'),
        (lambda g: g.add_output("hight", "x.exr"), 'there is no node "hight"; the closest is "height"'),
        (lambda g: g.evaluate("n"), 'node "n" has no image output'),
    ],
)
def test_what_is_wrong_names_both_and_a_remedy(graph, call, text):
    before = graph.to_dict()
    with pytest.raises(ValueError) as raised:
        call(graph)
    assert str(raised.value) == text
    assert graph.to_dict() == before


def test_a_long_cycle_is_told_in_short():
    graph = vn.Graph()
    for i in range(12):
        graph.add("Reroute", f"n{i}")
        if i > 0:
            graph.connect(f"n{i - 1}", f"n{i}")
    with pytest.raises(ValueError, match='as "n11" depends on "n0" over 10 other nodes; disconnect one of them first$'):
        graph.connect("n11", "n0")


def test_an_id_alone_is_its_one_plug(graph):
    graph.connect("mask", "b", 1)
    assert vn.Connection("mask.image", "b.image", 1) in graph.connections
    graph.connect("n", "clamp.low")
    graph.disconnect("mask", "b", 1)
    assert [(c.source, c.target) for c in graph.connections][3:] == [("n.number", "clamp.low")]
    graph.add_output("clamp", "clamp.exr")
    assert [output.source for output in graph.outputs] == ["clamp.image"]
    graph.remove_output("clamp")
    assert graph.outputs == []
    assert graph.evaluate("b", inputs={"height": H}) == graph.evaluate("b.image", inputs={"height.image": H})


def test_an_id_with_a_dot_is_an_id():
    graph = vn.Graph()
    graph.add("Reroute", "a.image")
    graph.add("Reroute", "b")
    graph.connect("a.image", "b")
    assert graph.connections == [("a.image.image", "b.image", 0)]
    # "a" is there now, and "a.image" is its plug.
    graph.add("Reroute", "a")
    graph.add("Reroute", "c")
    graph.connect("a.image", "c")
    assert graph.connections[1] == ("a.image", "c.image", 0)
