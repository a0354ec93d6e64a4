# SPDX-License-Identifier: Apache-2.0
"""Graphs as pictures."""

import re
import shutil
import xml.etree.ElementTree as ElementTree

import pytest
import valuenodes as vn

SVG = "{http://www.w3.org/2000/svg}"

@pytest.fixture(autouse=True)
def dot():
    assert shutil.which("dot"), "the tests need the program dot, of the package graphviz"


def read(graph):
    """The picture, and the texts in it in one list."""
    root = ElementTree.fromstring(graph.to_svg())
    assert root.tag == SVG + "svg"
    return root, ["".join(text.itertext()).replace("\xa0", " ") for text in root.iter(SVG + "text")]


def colors_of(root):
    """The colors of all lines, by the style of their dashes."""
    return {
        (path.get("stroke"), path.get("stroke-dasharray"))
        for path in root.iter(SVG + "path")
        if path.get("fill") == "none"
    }


def small_graph():
    graph = vn.Graph()
    graph.add("Image Waves", "waves", height=2)
    graph.add("Number", "amount", value=0.5)
    graph.add("Flag", "seamless", value=True)
    graph.add("Text", "word", value="smooth")
    graph.add("Value Add", "sum")
    graph.add("Value Clamp", "clamp", high=0.75)
    graph.add("Relief", "relief", radius=7)
    graph.connect("waves.image", "sum.image")
    graph.connect("amount.number", "sum.constant")
    graph.connect("sum.image", "clamp.image")
    graph.connect("word.text", "clamp.profile")
    graph.connect("clamp.image", "relief.image")
    graph.connect("seamless.flag", "relief.grow")
    return graph


def luminance(color):
    parts = [int(color[i : i + 2], 16) / 255 for i in (1, 3, 5)]
    linear = [part / 12.92 if part <= 0.03928 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def contrast(one, other):
    low, high = sorted((luminance(one), luminance(other)))
    return (high + 0.05) / (low + 0.05)


def test_types_ids_and_attributes_are_shown():
    _, texts = read(small_graph())
    for wanted in ("Image Waves", "waves", "Value Add", "sum", "Relief", "height", "2", "radius", "7", "high", "0.75"):
        assert wanted in texts
    # Defaults are left out, and what a connection feeds says so.
    assert "wavelength" not in texts and "low" not in texts
    assert texts.count("connected") == 3


def test_kinds_of_wires_differ_in_color_and_style():
    root, _ = read(small_graph())
    wires = {}
    for group in root.iter(SVG + "g"):
        if group.get("class") == "edge":
            kind = re.search(r"\((\w+)\)", "".join(group.itertext()) + str(ElementTree.tostring(group))).group(1)
            path = next(group.iter(SVG + "path"))
            wires.setdefault(kind, set()).add((path.get("stroke"), path.get("stroke-dasharray")))
    assert set(wires) == {"image", "number", "flag", "text"}
    assert all(len(looks) == 1 for looks in wires.values())
    colors = {next(iter(looks))[0] for looks in wires.values()}
    assert len(colors) == 4
    assert len({next(iter(looks))[1] for looks in wires.values()}) >= 3


def test_the_picture_can_be_read_on_light_and_dark_pages():
    root, _ = read(small_graph())
    strokes = {stroke for stroke, _ in colors_of(root)}
    wires = {
        path.get("stroke")
        for group in root.iter(SVG + "g")
        if group.get("class") == "edge"
        for path in group.iter(SVG + "path")
    }
    assert wires <= strokes
    for color in wires:
        for page in ("#ffffff", "#1b1b1b"):
            assert contrast(color, page) >= 3, (color, page)
    # No page of its own, and every text on a card of a color that it can be read on.
    nodes = [group for group in root.iter(SVG + "g") if group.get("class") == "node"]
    assert len(nodes) == 7
    for node in nodes:
        shapes = [shape for tag in ("polygon", "path") for shape in node.iter(SVG + tag)]
        # Lines between rows have the color of the border.
        cards = {shape.get("fill") for shape in shapes} - {"none", None} - {shape.get("stroke") for shape in shapes}
        inks = {text.get("fill") for text in node.iter(SVG + "text")}
        assert cards and inks
        for card in cards:
            for ink in inks:
                assert contrast(card, ink) >= 4.5, (card, ink)
    page = next(root.iter(SVG + "g")).find(SVG + "polygon")
    assert page is None or page.get("fill") in ("none", "transparent")


def test_disabled_nodes_and_problems_are_marked(tmp_path):
    graph = small_graph()
    plain = graph.to_svg()
    graph.set_enabled("clamp", False)
    graph.add("Value Add", "lonely")
    graph.add_output("lonely.image", str(tmp_path / "out.exr"), "half")
    root, texts = read(graph)
    assert "disabled" in texts
    assert any("lonely.image" in text for text in texts)
    assert any(text.endswith("out.exr") for text in texts) and "half" in texts
    assert "#c22626" in graph.to_svg() and "#c22626" not in plain


def test_several_images_at_one_input_are_told_apart():
    graph = vn.Graph()
    for name in "ab":
        graph.add("Image Waves", name)
    graph.add("Value Subtract", "difference")
    graph.connect("a.image", "difference.image", 1)
    graph.connect("b.image", "difference.image", 0)
    _, texts = read(graph)
    assert "image 0" in texts and "image 1" in texts


@pytest.mark.parametrize(
    "id",
    [
        "<b>bold</b>",
        'quote " and \\" backslash \\N \\',
        "&amp; &lt; &#65; &",
        "]> ]]> --> }; n1 -> n2",
        "n0",
        "graph",
        "a.b.c",
        " ",
        "   two  blanks   ",
        "日本 é ñ \U0001f600",
        "<TABLE><TR><TD>",
        "'single'",
        "%s %n $HOME `id` #",
        "￾",
    ],
)
def test_hostile_ids_stand_as_they_are(id):
    graph = vn.Graph()
    graph.add("Image Waves", id)
    graph.add("Text", "t", value=id)
    graph.add("Value Clamp", "clamp")
    graph.connect(id + ".image", "clamp.image")
    graph.add_output("clamp.image", "out/" + id.replace("/", "_") + ".exr")
    root, texts = read(graph)
    shown = id.replace("\ufffe", "\ufffd").strip()
    assert any(shown in text for text in texts) or not shown
    assert len([group for group in root.iter(SVG + "g") if group.get("class") == "node"]) == 4
    assert len([group for group in root.iter(SVG + "g") if group.get("class") == "edge"]) == 2
    allowed = {SVG + tag for tag in ("svg", "g", "title", "polygon", "path", "text", "a", "polyline", "ellipse")}
    assert {element.tag for element in root.iter()} <= allowed


def test_long_texts_are_cut():
    graph = vn.Graph()
    graph.add("Text", "i" * 200, value="v" * 5000)
    _, texts = read(graph)
    assert max(len(text) for text in texts) <= 40


def test_unknown_types_are_shown():
    nodes = [{"id": "u", "type": "FarAwayNode"}, {"id": "b", "type": "ImageValueAddNode"}]
    document = {"format": "value-graph", "version": 2, "nodes": nodes}
    document["connections"] = [{"from": "u.image", "to": "b.image"}]
    _, texts = read(vn.Graph.from_dict(document, keep_unknown=True))
    assert "unknown type" in texts
    assert any("FarAwayNode" in text for text in texts)


def test_an_empty_graph_has_a_picture():
    root, texts = read(vn.Graph())
    assert texts == []


def test_notebooks_show_the_picture():
    graph = small_graph()
    assert graph._repr_svg_() == graph.to_svg()


def test_without_dot_one_line_names_the_package(monkeypatch, tmp_path):
    monkeypatch.setenv("PATH", str(tmp_path))
    with pytest.raises(vn.ValueNodesError, match='"dot".*not on the PATH; the package "graphviz" has it') as raised:
        small_graph().to_svg()
    assert len(str(raised.value).splitlines()) == 1
    assert small_graph()._repr_svg_() is None


def test_a_failing_dot_is_an_error(monkeypatch, tmp_path):
    program = tmp_path / "dot"
    program.write_text("#!/bin/sh\necho 'no layout today' >&2\nexit 3\n")
    program.chmod(0o755)
    monkeypatch.setenv("PATH", f"{tmp_path}:/usr/bin:/bin")
    with pytest.raises(vn.ValueNodesError, match="made no picture: no layout today"):
        small_graph().to_svg()
