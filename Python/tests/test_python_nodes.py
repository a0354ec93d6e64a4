# SPDX-License-Identifier: Apache-2.0
"""Node types that are classes of Python."""

import copy
import gc
import json
import pickle
import subprocess
import sys
import textwrap
import threading

import numpy as np
import pytest
import valuenodes as vn
from valuenodes import rows


@pytest.fixture
def field():
    return np.random.default_rng(7).random((23, 31), dtype=np.float32)


def fresh(**members):
    """A class of a name of its own, not registered yet."""
    fresh.count += 1
    members.setdefault("evaluate", lambda self, image: image + 1)
    return type(f"FreshNode{fresh.count}", (vn.Node,), members)


fresh.count = 0


def registered(**members):
    return vn.register(fresh(**members))


@vn.register
class Threshold(vn.Node):
    """Sets what is above a level to 1, and the rest to 0.

    More of it.
    """

    keywords = "binary,cut"
    attributes = (
        rows.number("level", 0.5, 0, 1, step=0.01, decimals=3, unit="px", text="What is above becomes 1."),
        rows.flag("invert", text="Turns it round."),
    )

    def evaluate(self, image, *, level, invert):
        result = image > level
        return ~result if invert else result


@vn.register
class Everything:
    """Records what it is given; it derives from nothing."""

    inputs = (rows.input("images", many=True), rows.input("mask", optional=True))
    outputs = ("first", "second")
    attributes = (
        rows.number("amount", 1.5, -10, 10),
        rows.number("radius", 3, 0, 100, decimals=0),
        rows.flag("on", True),
        rows.choice("edge", ("repeat", "wrap"), "wrap"),
        rows.string("title", "map"),
        rows.path("table"),
        rows.color("ink", (0.25, 0.5, 0.75, 1)),
        rows.point("center", (1, 2)),
        rows.frame("crop", (0, 0, 4, 5)),
    )
    seen = []

    def evaluate(self, images, mask, **attributes):
        Everything.seen.append((len(images), mask is None, attributes))
        return images[0] * 2, np.zeros((1, 2))


# ---- Declaring ----


def test_a_class_is_a_node_type_like_any_other(field):
    described = vn.describe("Threshold")
    assert described["class"] == "Threshold" and described["name"] == "Threshold"
    assert described["sentence"] == "Sets what is above a level to 1, and the rest to 0."
    assert described["library"] == "Python" and described["group"] == "Python"
    assert described["keywords"] == ["binary", "cut"]
    assert described["type"][0] == 20000
    level, invert = described["attributes"]
    assert (level["lowest"], level["highest"], level["decimals"], level["unit"]) == (0.0, 1.0, 3, "px")
    assert level["default"] == 0.5 and level["text"] == "What is above becomes 1."
    assert invert["kind"] == "flag" and invert["default"] is False
    assert "Threshold" in vn.nodes()
    result = vn.apply("Threshold", field, level=0.25)
    assert np.array_equal(np.asarray(result), (field > 0.25).astype(np.float32))
    assert np.array_equal(np.asarray(vn.apply("Threshold", field, invert=True)), (field <= 0.5).astype(np.float32))


def test_attributes_are_checked_as_those_of_other_nodes(field):
    with pytest.raises(ValueError, match="Threshold: level takes numbers from 0.0 to 1.0, not 2.0"):
        vn.apply("Threshold", field, level=2)
    with pytest.raises(TypeError, match='no attribute "leve"; the closest is "level"'):
        vn.apply("Threshold", field, leve=2)
    with pytest.raises(TypeError, match='needs an image or array as "image"'):
        vn.apply("Threshold")


def test_every_kind_of_attribute_reaches_evaluate(field, tmp_path):
    Everything.seen.clear()
    result = vn.apply("Everything", field, field, mask=None)
    assert np.array_equal(np.asarray(result.first), field * 2) and result.second.size == (2, 1)
    expected = {"amount": 1.5, "radius": 3, "on": True, "edge": "wrap", "title": "map", "table": ""}
    expected |= {"ink": (0.25, 0.5, 0.75, 1.0), "center": (1.0, 2.0), "crop": (0.0, 0.0, 4.0, 5.0)}
    assert Everything.seen == [(2, True, expected)]
    assert type(Everything.seen[0][2]["radius"]) is int
    graph = vn.Graph()
    graph.add(Everything, "e", table="t.csv", edge="repeat", on=False, title="ünïcode")
    graph.add("Reroute", "a")
    graph.connect("a.image", "e.images", 0)
    graph.connect("a.image", "e.mask")
    graph.save(tmp_path / "g.json")
    graph.evaluate("e.second", inputs={"a": field})
    count, no_mask, attributes = Everything.seen[-1]
    assert (count, no_mask) == (1, False)
    assert attributes["table"] == str(tmp_path / "t.csv")
    assert (attributes["edge"], attributes["on"], attributes["title"]) == ("repeat", False, "ünïcode")


def test_a_connection_feeds_an_attribute(field):
    graph = vn.Graph()
    graph.add("Reroute", "a")
    graph.add("Number", "n", value=0.75)
    graph.add("Threshold", "t")
    graph.connect("a.image", "t.image")
    graph.connect("n.number", "t.level")
    wanted = (field > np.float32(0.75)).astype(np.float32)
    assert np.array_equal(np.asarray(graph.evaluate("t.image", inputs={"a": field})), wanted)


@pytest.mark.parametrize(
    ("members", "error", "message"),
    [
        ({"name": ""}, ValueError, "1 to 80"),
        ({"name": 3}, TypeError, "name is a string"),
        ({"name": "Value Add"}, ValueError, '"Value Add" is taken by the node type ImageValueAddNode of the library'),
        ({"name": "Image Reader"}, ValueError, "of the host"),
        ({"type": (10, 320, 5)}, ValueError, "10, 320, 5"),
        ({"type": (1, 2)}, ValueError, "three whole numbers"),
        ({"type": (1, 2, -3)}, ValueError, "three whole numbers"),
        ({"inputs": "image"}, TypeError, "inputs is a tuple"),
        ({"inputs": ("a b",)}, ValueError, "identifier"),
        ({"inputs": ("a", "a")}, ValueError, 'the name "a"'),
        ({"outputs": ()}, ValueError, "at least one output"),
        ({"attributes": ("level",)}, TypeError, "rows"),
        ({"attributes": (rows.flag("x"), rows.flag("x"))}, ValueError, 'the name "x"'),
        ({"attributes": (rows.flag("x"),)}, TypeError, r"evaluate is to take \(self, image, \*, x\)"),
        ({"evaluate": None}, TypeError, "has no evaluate"),
    ],
)
def test_a_wrong_declaration_is_refused_by_what_would_be_right(members, error, message):
    before = vn.nodes()
    with pytest.raises(error, match=message) as raised:
        registered(**members)
    assert len(str(raised.value).splitlines()) == 1
    assert vn.nodes() == before


@pytest.mark.parametrize(
    ("make", "message"),
    [
        (lambda: rows.number("x", 2, 0, 1), "from 0 to 1, not 2"),
        (lambda: rows.number("x", float("nan")), "finite"),
        (lambda: rows.number("x", step=0), "greater than 0"),
        (lambda: rows.number("x", decimals=-1), "0 to 15"),
        (lambda: rows.number("2x"), "identifier"),
        (lambda: rows.choice("x", ()), "different strings"),
        (lambda: rows.choice("x", ("a", "a")), "different strings"),
        (lambda: rows.choice("x", ("a,b",)), "without commas"),
        (lambda: rows.choice("x", ("a",), "b"), "one of its words"),
        (lambda: rows.path("x", "append"), '"read" or "write"'),
        (lambda: rows.point("x", (1,)), "2 numbers"),
        (lambda: rows.frame("x", (1, 2)), "4 numbers"),
        (lambda: rows.string("x", "a\nb"), "one line"),
    ],
)
def test_a_wrong_row_is_refused(make, message):
    with pytest.raises(ValueError, match=message):
        make()


def test_names_are_taken_once_and_replaced_when_asked_for(field):
    first = registered(evaluate=lambda self, image: image + 1)
    name = first.__name__
    graph = vn.Graph()
    graph.add("Reroute", "a")
    graph.add(first, "n")
    graph.connect("a.image", "n.image")
    assert np.array_equal(np.asarray(graph.evaluate("n.image", inputs={"a": field})), field + 1)
    second = type(name, (vn.Node,), {"evaluate": lambda self, image: image + 2})
    with pytest.raises(ValueError, match="replace=True"):
        vn.register(second)
    assert vn.register(replace=True)(second) is second
    assert np.array_equal(np.asarray(vn.apply(name, field)), field + 2)
    assert np.array_equal(np.asarray(graph.evaluate("n.image", inputs={"a": field})), field + 2)
    assert vn.nodes().count(name) == 1


def test_numbers_may_be_given(field):
    node = registered(type=(20000, 70000, 1))
    assert vn.describe(node.__name__)["type"] == (20000, 70000, 1)
    with pytest.raises(ValueError, match="20000, 70000, 1"):
        registered(type=(20000, 70000, 1))
    assert vn.apply("20000, 70000, 1", field).size == (31, 23)


# ---- Documents ----


def test_documents_name_classes(field, tmp_path):
    graph = vn.Graph()
    graph.add("Reroute", "a")
    graph.add("Threshold", "t", level=0.25)
    graph.connect("a.image", "t.image")
    graph.save(tmp_path / "g.json")
    assert json.loads((tmp_path / "g.json").read_text())["nodes"][1] == {
        "id": "t",
        "type": "Threshold",
        "attributes": {"level": 0.25},
    }
    loaded = vn.Graph.load(tmp_path / "g.json")
    for other in (loaded, copy.copy(graph), pickle.loads(pickle.dumps(graph))):
        result = other.evaluate("t.image", inputs={"a": field})
        assert np.array_equal(np.asarray(result), (field > 0.25).astype(np.float32))


def test_a_document_without_its_class_says_so(tmp_path):
    (tmp_path / "g.json").write_text(
        '{"format": "value-graph", "version": 2, "nodes": [{"id": "t", "type": "ComesLater"}]}'
    )
    with pytest.raises(vn.DocumentError, match='node "t": there is no node type "ComesLater"'):
        vn.Graph.load(tmp_path / "g.json")
    graph = vn.Graph.load(tmp_path / "g.json", keep_unknown=True)
    assert graph.nodes == {"t": None}
    vn.register(type("ComesLater", (vn.Node,), {"inputs": (), "evaluate": lambda self: np.ones((2, 3))}))
    assert graph.nodes == {"t": "ComesLater"}
    assert graph.evaluate("t.image").size == (3, 2)


# ---- Results ----


def test_results_are_what_evaluate_returns():
    for dtype in (np.float32, np.float64, np.uint8, np.int64, bool):
        node = registered(inputs=(), evaluate=lambda self: np.array([[0, 1, 1]], dtype))
        result = vn.apply(node.__name__)
        assert np.array_equal(np.asarray(result), np.array([[0, 1, 1]], np.float32))
        assert result.range == (0, 1)


@pytest.mark.parametrize(
    ("returned", "message"),
    [
        (None, 'evaluate returned NoneType for output "image", which takes an array or an image'),
        ([[1.0]], "evaluate returned list"),
        (np.zeros(3), r'output "image": an image is an array of shape .* not \(3,\)'),
        (np.zeros((1, 2, 5)), "1 to 4 channels"),
        (np.zeros((1, 2), complex), "real numbers, not of complex"),
        (np.array([["a"]]), "real numbers"),
        (np.full((1, 2), 1e300), "beyond the largest float"),
    ],
)
def test_wrong_results_are_errors_of_the_node(returned, message):
    node = registered(inputs=(), evaluate=lambda self: returned)
    with pytest.raises(vn.NodeError, match=message):
        vn.apply(node.__name__)


def test_the_number_of_results_is_checked():
    node = registered(inputs=(), outputs=("a", "b"), evaluate=lambda self: np.zeros((1, 1)))
    with pytest.raises(vn.NodeError, match="a tuple of 2 arrays or images, one for each output, not numpy.ndarray"):
        vn.apply(node.__name__)
    node = registered(inputs=(), outputs=("a", "b"), evaluate=lambda self: (np.zeros((1, 1)),) * 3)
    with pytest.raises(vn.NodeError, match="not 3"):
        vn.apply(node.__name__)


def test_place_goes_along_and_range_is_measured():
    node = registered(evaluate=lambda self, image: image * 2)
    image = vn.Image(np.array([[1, 2], [np.nan, np.inf]], np.float32), pin=(5, 6), outside=9)
    result = vn.apply(node.__name__, image)
    assert result.pin == (5, 6) and result.outside == 9
    assert result.range == (2, 4)
    cropped = registered(evaluate=lambda self, image: image[:1])
    assert vn.apply(cropped.__name__, image).pin == (0, 0)


def test_modes_of_arrays():
    node = registered(evaluate=lambda self, image: image)
    for mode, channels in (("color", 4), ("signed", 4), ("pair", 2), ("value", 1)):
        shape = (2, 3, channels) if channels > 1 else (2, 3)
        image = vn.Image(np.full(shape, 0.5, np.float32), mode)
        assert vn.apply(node.__name__, image).mode == mode
    to_color = registered(evaluate=lambda self, image: np.stack([image] * 3, axis=2))
    result = vn.apply(to_color.__name__, np.zeros((2, 3), np.float32))
    assert result.mode == "color" and np.asarray(result)[0, 0].tolist() == [0, 0, 0, 1]


def test_images_are_given_where_they_are_asked_for(field):
    def evaluate(self, image):
        return vn.add(image, 1).replace(range=(-3, 3), pin=image.pin)

    node = registered(takes_images=True, evaluate=evaluate)
    result = vn.apply(node.__name__, vn.Image(field, pin=(2, 3)))
    assert result.range == (-3, 3) and result.pin == (2, 3)
    assert np.array_equal(np.asarray(result), field + 1)


def test_inputs_are_only_read_and_may_be_kept(field):
    kept = []

    def evaluate(self, image):
        kept.append(image)
        with pytest.raises(ValueError, match="read-only"):
            image[0, 0] = 3
        with pytest.raises(ValueError):
            image.setflags(write=True)
        return image

    node = registered(evaluate=evaluate)
    graph = vn.Graph()
    graph.add("Image Waves", "w", frame=(0, 0, 300, 200))
    graph.add("Value Add", "b", constant=0.5)
    graph.add(node, "n")
    graph.connect("w.image", "b.image")
    graph.connect("b.image", "n.image")
    wanted = np.asarray(graph.evaluate("b.image")).copy()
    result = graph.evaluate("n.image")
    del graph
    gc.collect()
    churn = [np.asarray(vn.add(field, 1)) for _ in range(20)]
    assert np.array_equal(kept[0], wanted) and np.array_equal(np.asarray(result), wanted)
    assert len(churn) == 20


def test_an_array_that_the_class_goes_on_to_write_into_is_copied(field):
    class Reuses(vn.Node):
        inputs = ()

        def __init__(self):
            self.buffer = np.zeros((2, 3), np.float32)

        def evaluate(self):
            self.buffer += 1
            return self.buffer[:, ::1]

    vn.register(Reuses)
    first = vn.apply("Reuses")
    vn.apply("Reuses")
    assert np.asarray(first).tolist() == [[1, 1, 1], [1, 1, 1]]


def test_a_fresh_array_is_not_copied():
    places = []

    def evaluate(self):
        result = np.ones((64, 64), np.float32)
        places.append(result.__array_interface__["data"][0])
        return result

    node = registered(inputs=(), evaluate=evaluate)
    result = np.asarray(vn.apply(node.__name__))
    assert result.__array_interface__["data"][0] == places[0]


def test_a_disabled_node_hands_its_image_on(field):
    graph = vn.Graph()
    graph.add("Reroute", "a")
    graph.add("Threshold", "t")
    graph.connect("a.image", "t.image")
    graph.set_enabled("t", False)
    assert np.array_equal(np.asarray(graph.evaluate("t.image", inputs={"a": field})), field)


def test_without_an_image_there_is_none(field):
    graph = vn.Graph()
    graph.add("Threshold", "t")
    graph.add_output("t.image", "t.exr")
    assert any("t.image" in problem for problem in graph.check().problems)
    with pytest.raises(vn.NodeError, match="no image"):
        graph.evaluate("t.image")


# ---- Errors ----


def test_a_class_without_evaluate_is_refused():
    with pytest.raises(TypeError, match=r"^register: Idle has no evaluate\(self, \*images, \*\*attributes\)$"):
        vn.register(type("Idle", (vn.Node,), {}))


def test_errors_of_nodes_within_nodes_stand_there_once():
    @vn.register(replace=True)
    class Deep(vn.Node):
        attributes = (rows.number("depth", 0, 0, 100, decimals=0),)

        def evaluate(self, image, *, depth):
            if depth == 0:
                raise ValueError("the first line\nthe second line")
            return vn.apply("Deep", image, depth=depth - 1)

    for depth in (0, 10, 20, 40):
        with pytest.raises(vn.NodeError) as raised:
            vn.apply("Deep", np.zeros((2, 2), np.float32), depth=depth)
        shown = str(raised.value).splitlines()
        assert shown[0].endswith("ValueError: the first line")
        assert shown.count("the second line") == 1
        # Each further node adds its own lines, and not those below it again.
        # They are counted, as how long each is depends on the folder that they name.
        assert sum(line.endswith(" in evaluate") for line in shown) == depth + 1
        assert len(shown) < 20 * (depth + 1)


def test_a_node_that_never_ends_is_an_error():
    @vn.register(replace=True)
    class Endless(vn.Node):
        def evaluate(self, image):
            return vn.apply("Endless", image)

    with pytest.raises(vn.NodeError, match="RecursionError") as raised:
        vn.apply("Endless", np.zeros((2, 2), np.float32))
    assert len(str(raised.value)) < 10_000_000


def test_an_exception_is_the_error_of_the_node_with_its_traceback(field):
    def evaluate(self, image):
        raise LookupError("the shelf is bare")

    node = registered(evaluate=evaluate)
    with pytest.raises(vn.NodeError) as raised:
        vn.apply(node.__name__, field)
    lines = str(raised.value).splitlines()
    assert lines[0] == f"{node.__name__}: LookupError: the shelf is bare"
    assert lines[1] == "Traceback (most recent call last):"
    assert any(__file__ in line and "in evaluate" in line for line in lines)
    graph = vn.Graph()
    graph.add("Reroute", "a")
    graph.add(node, "n")
    graph.add("Value Add", "b")
    graph.connect("a.image", "n.image")
    graph.connect("n.image", "b.image")
    with pytest.raises(vn.NodeError, match='node "n": LookupError: the shelf is bare\nTraceback') as raised:
        graph.evaluate("b.image", inputs={"a": field})
    assert type(raised.value.__cause__) is LookupError
    assert len(raised.value.problems) == 1 and "\n" not in raised.value.problems[0]


def test_an_object_that_cannot_be_made_is_an_error_of_the_node(field):
    class Fussy(vn.Node):
        def __init__(self, needed):
            pass

        def evaluate(self, image):
            return image

    vn.register(Fussy)
    with pytest.raises(vn.NodeError, match="needed"):
        vn.apply("Fussy", field)


def test_keyboard_interrupts_and_exits_come_out(field):
    for error in (KeyboardInterrupt, SystemExit):

        def evaluate(self, image, error=error):
            raise error("enough")

        node = registered(evaluate=lambda self, image, e=evaluate: e(self, image))
        with pytest.raises(error):
            vn.apply(node.__name__, field)
        graph = vn.Graph()
        graph.add("Reroute", "a")
        graph.add(node, "n")
        graph.connect("a.image", "n.image")
        with pytest.raises(error):
            graph.evaluate("n.image", inputs={"a": field})
        assert vn.add(field, 1).size == (31, 23)


def test_ctrl_c_reaches_python_code():
    code = textwrap.dedent(
        """
        import os, signal, threading
        import numpy as np
        import valuenodes as vn
        class Endless(vn.Node):
            inputs = ()
            def evaluate(self):
                os.kill(os.getpid(), signal.SIGINT)
                while True:
                    vn.add(np.zeros((8, 8), np.float32), 1)
        vn.register(Endless)
        graph = vn.Graph()
        graph.add(Endless, "n")
        try:
            graph.evaluate("n.image")
        except KeyboardInterrupt:
            print("stopped", graph)
        """
    )
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=300)
    assert done.returncode == 0, done.stderr
    assert done.stdout.startswith("stopped <valuenodes.Graph, 1 node")


# ---- Threads and memory ----


def test_nodes_call_nodes(field):
    inner = registered(evaluate=lambda self, image: image + 1)
    outer = registered(evaluate=lambda self, image: vn.apply(inner.__name__, vn.apply(inner.__name__, image)))
    assert np.array_equal(np.asarray(vn.apply(outer.__name__, field)), (field + 1) + 1)
    recursive = registered(evaluate=lambda self, image: image if image[0, 0] > 3 else vn.apply(name, image + 1))
    name = recursive.__name__
    assert np.asarray(vn.apply(name, np.zeros((2, 2), np.float32))).tolist() == [[4, 4], [4, 4]]


def test_each_node_has_an_object_of_its_own(field):
    class Counts(vn.Node):
        inputs = ()

        def __init__(self):
            self.calls = 0

        def evaluate(self):
            self.calls += 1
            return np.full((1, 1), self.calls)

    vn.register(Counts)
    one, other = vn.Graph(), vn.Graph()
    one.add(Counts, "n")
    other.add(Counts, "n")
    values = [float(np.asarray(graph.evaluate("n.image"))[0, 0]) for graph in (one, one, other, one)]
    assert values == [1, 2, 1, 3]


def test_many_threads_evaluate_classes(field):
    wanted = (field > 0.5).astype(np.float32)
    failures = []

    def work():
        graph = vn.Graph()
        graph.add("Reroute", "a")
        graph.add("Value Add", "b", constant=0)
        graph.add("Threshold", "t")
        graph.connect("a.image", "b.image")
        graph.connect("b.image", "t.image")
        for _ in range(40):
            if not np.array_equal(np.asarray(graph.evaluate("t.image", inputs={"a": field})), wanted):
                failures.append("graph")
            if not np.array_equal(np.asarray(vn.apply("Threshold", field)), wanted):
                failures.append("apply")

    threads = [threading.Thread(target=work) for _ in range(6)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert failures == []


def test_arrays_that_were_kept_go_on_any_thread():
    """Images of an evaluation end on another thread while the graph goes on with theirs."""
    kept = []

    def evaluate(self, image):
        kept.append(image)
        return image.copy()

    node = registered(evaluate=evaluate)
    graph = vn.Graph()
    graph.add("Image Waves", "w", frame=(0, 0, 64, 64))
    graph.add("Value Add", "b")
    graph.add(node, "n")
    graph.connect("w.image", "b.image")
    graph.connect("b.image", "n.image")
    is_done = threading.Event()

    def drop():
        while not is_done.is_set() or kept:
            if kept:
                kept.pop()

    thread = threading.Thread(target=drop)
    thread.start()
    for i in range(200):
        graph.set("b.constant", i)
        graph.evaluate("n.image", keep=i % 2 == 0)
    is_done.set()
    thread.join()
    assert kept == []


def test_reference_counts_stay(field):
    class Leaky(vn.Node):
        attributes = (rows.string("text", "abc"), rows.number("x", 1))

        def evaluate(self, image, *, text, x):
            if text == "fail":
                raise ValueError("failed")
            return image + x

    vn.register(Leaky)
    image = vn.Image(field)

    def fails(call):
        try:
            call()
        except vn.NodeError:
            return True
        return False

    def work():
        vn.apply("Leaky", image)
        assert fails(lambda: vn.apply("Leaky", image, text="fail"))
        graph = vn.Graph()
        graph.add("Reroute", "a")
        graph.add(Leaky, "n")
        graph.connect("a.image", "n.image")
        graph.evaluate("n.image", inputs={"a": image})
        graph.set("n.text", "fail")
        assert fails(lambda: graph.evaluate("n.image", inputs={"a": field}))

    for _ in range(200):
        work()
    gc.collect()
    objects = (Leaky, Leaky.evaluate, field, image)
    before = [sys.getrefcount(object) for object in objects]
    blocks = sys.getallocatedblocks()
    rounds = 300
    for _ in range(rounds):
        work()
    gc.collect()
    assert [sys.getrefcount(object) for object in objects] == before
    # Caches of the interpreter grow a little; what leaks does so in every round.
    assert sys.getallocatedblocks() - blocks < rounds
