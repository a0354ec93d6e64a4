# SPDX-License-Identifier: Apache-2.0
"""Graphs: built, changed, saved, evaluated and run."""

import copy
import gc
import json
import os
import pickle
import signal
import subprocess
import sys
import textwrap
import threading
import time

import numpy as np
import pytest
import valuenodes as vn

ADD = "ImageValueAddNode"


@pytest.fixture
def field():
    return np.random.default_rng(7).random((23, 31), dtype=np.float32)


@pytest.fixture
def chain():
    """A reroute "a" before two additions, of 0.25 and 0.5."""
    graph = vn.Graph()
    graph.add("Reroute", "a")
    graph.add("Value Add", "b", constant=0.25)
    graph.add("Value Add", "c", constant=0.5)
    graph.connect("a.image", "b.image")
    graph.connect("b.image", "c.image")
    return graph


def evaluate(graph, plug, **inputs):
    return np.asarray(graph.evaluate(plug, inputs=inputs))


# ---- Building ----


@pytest.mark.parametrize("written", ["Value Add", "value add", ADD, "10, 320, 5", (10, 320, 5), [10, 320, 5]])
def test_a_type_is_written_in_every_way(written):
    graph = vn.Graph()
    assert graph.add(written) == "value_add"
    assert graph.nodes == {"value_add": ADD}


def test_ids_are_made_of_display_names():
    graph = vn.Graph()
    assert [graph.add("Value Clamp") for _ in range(3)] == ["value_clamp", "value_clamp2", "value_clamp3"]
    graph.remove("value_clamp2")
    assert graph.add("Value Clamp") == "value_clamp2"


def test_a_node_with_a_wrong_attribute_is_not_added():
    graph = vn.Graph()
    with pytest.raises(TypeError, match='Value Add has no attribute "constnt"; the closest is "constant"'):
        graph.add("Value Add", constnt=1)
    with pytest.raises(TypeError, match="value_add: constant takes a number, not str"):
        graph.add("Value Add", constant="much")
    with pytest.raises(ValueError, match='"declared", "measured", "custom"'):
        graph.add("Image Reader", range="nothing of the kind")
    assert graph.nodes == {}


@pytest.mark.parametrize(
    ("call", "error", "message"),
    [
        (lambda g: g.add("Value Ad"), ValueError, 'no node type "Value Ad"; the closest is'),
        (lambda g: g.add(12), TypeError, "a node type is its class name"),
        (lambda g: g.add((10, 320)), TypeError, "three numbers like"),
        (lambda g: g.add("Value Add", "b"), ValueError, '"b"'),
        (lambda g: g.add("Value Add", 7), TypeError, "id is a string"),
        (lambda g: g.add("Value Add", "a=b"), ValueError, "a=b"),
        (lambda g: g.add("Value Add", ""), ValueError, "1 to 200"),
        (lambda g: g.connect("a.image", "x.image"), ValueError, '"x"'),
        (lambda g: g.connect("a.picture", "b.image"), ValueError, "picture"),
        (lambda g: g.connect("c.image", "a.image"), ValueError, "cycle"),
        (lambda g: g.connect("a.image", "b.constant"), ValueError, "image"),
        (lambda g: g.connect("a.image", "b.image"), ValueError, "connected already"),
        (lambda g: g.connect("a.image", "b.image", index=-1), ValueError, "from 0"),
        (lambda g: g.connect("a.image", "b.image", index="0"), TypeError, "whole number"),
        (lambda g: g.connect(1, "b.image"), TypeError, "source is a string"),
        (lambda g: g.disconnect("a.image", "c.image"), ValueError, "no connection"),
        (lambda g: g.remove("z"), ValueError, '"z"'),
        (lambda g: g.set("b.constant", 1e300), ValueError, "numbers from"),
        (lambda g: g.set("b.constant", "1"), TypeError, "a number, not str"),
        (lambda g: g.set("b.constant", float("nan")), ValueError, "numbers from"),
        (lambda g: g.set("b.constan", 1), ValueError, 'no attribute "constan"; the closest is "constant"'),
        (lambda g: g.set("b", 1), ValueError, 'written "id.attribute"'),
        (lambda g: g.set("z.constant", 1), ValueError, '"z"'),
        (lambda g: g.get("z"), ValueError, "z"),
        (lambda g: g.rename("b", "c"), ValueError, "there already"),
        (lambda g: g.set_enabled("b", 1), TypeError, "True or False"),
        (lambda g: g.is_enabled("z"), ValueError, '"z"'),
        (lambda g: g.add_output("b.image", "x.exr", "float64"), ValueError, '"float"'),
        (lambda g: g.add_output("b.nothing", "x.exr"), ValueError, "nothing"),
        (lambda g: g.remove_output("b.image"), ValueError, "no output"),
        (lambda g: g.evaluate("b.constant"), ValueError, "constant"),
        (lambda g: g.evaluate("z.image"), ValueError, '"z"'),
        (lambda g: g.evaluate(3), TypeError, "plug is a string"),
        (lambda g: g.evaluate("b.image", inputs=[1]), TypeError, "inputs is a dict"),
        (lambda g: g.evaluate("b.image", inputs={"a": "x"}), TypeError, "inputs"),
        (lambda g: g.evaluate("b.image", inputs={"z": np.zeros((2, 2))}), ValueError, "z"),
        (lambda g: g.evaluate("b.image", progress=3), TypeError, "progress is a function"),
        (lambda g: g.evaluate("b.image", inputs={"a": np.zeros((2, 2))}, keep=True), ValueError, "keep"),
    ],
)
def test_wrong_arguments_say_what_would_be_right(chain, call, error, message):
    before = chain.to_dict()
    with pytest.raises(error, match=message) as raised:
        call(chain)
    assert len(str(raised.value).splitlines()) == 1
    assert chain.to_dict() == before


def test_connections_are_made_removed_and_listed(chain):
    assert chain.connections == [("a.image", "b.image", 0), ("b.image", "c.image", 0)]
    chain.connect("a.image", "c.image", index=1)
    assert chain.connections[-1] == vn.Connection("a.image", "c.image", 1)
    chain.disconnect("b.image", "c.image")
    assert chain.connections == [("a.image", "b.image", 0), ("a.image", "c.image", 1)]


def test_renaming_takes_connections_and_outputs_along(chain):
    chain.add_output("b.image", "x.exr")
    chain.rename("b", "sum")
    assert chain.connections == [("a.image", "sum.image", 0), ("sum.image", "c.image", 0)]
    assert [output.source for output in chain.outputs] == ["sum.image"]


def test_every_kind_of_attribute_is_set_and_read():
    graph = vn.Graph()
    graph.add("Image Checker", "c", frame=(1, 2, 3, 4), rect_x_size=(2, 3), color_00=(0.1, 0.2, 0.3, 1))
    graph.add("Value Clamp", "v")
    graph.add("Image Reader", "r", path="in.exr", range="measured")
    assert graph.get("c.frame") == (1.0, 2.0, 3.0, 4.0)
    assert graph.get("c.rect_x_size") == (2.0, 3.0)
    assert graph.get("c.color_00") == (0.1, 0.2, 0.3, 1.0)
    assert graph.get("r")["path"] == "in.exr"
    assert graph.get("r.range") == "measured"
    graph.set("c.frame", np.array([0, 0, 8, 8]))
    assert graph.get("c.frame") == (0.0, 0.0, 8.0, 8.0)


# ---- Documents ----


def test_what_is_saved_is_loaded_again(chain, tmp_path):
    chain.add_output("c.image", "c.exr", "half", opacity="keep")
    chain.set_enabled("b", False)
    chain.save(tmp_path / "g.json")
    loaded = vn.Graph.load(tmp_path / "g.json")
    assert loaded == chain
    assert loaded.outputs == [vn.Output("c.image", "c.exr", "half", "", "keep", "", "")]
    assert not loaded.is_enabled("b")
    written = json.loads((tmp_path / "g.json").read_text())
    assert written == chain.to_dict()
    assert written["nodes"][1] == {"id": "b", "type": ADD, "enabled": False, "attributes": {"constant": 0.25}}
    loaded.save(str(tmp_path / "h.json"))
    assert (tmp_path / "h.json").read_bytes() == (tmp_path / "g.json").read_bytes()


def test_a_dict_is_a_document(chain):
    assert vn.Graph.from_dict(chain.to_dict()) == chain
    with pytest.raises(TypeError, match="takes a dict"):
        vn.Graph.from_dict("{}")
    with pytest.raises(vn.DocumentError, match="JSON"):
        vn.Graph.from_dict({"format": "value-graph", "version": 2, "nodes": [{"id": "a", "x": float("nan")}]})


def test_a_missing_file_is_a_file_error(tmp_path):
    with pytest.raises(vn.FileError, match="missing.json"):
        vn.Graph.load(tmp_path / "missing.json")
    with pytest.raises(vn.FileError, match="nowhere"):
        vn.Graph().save(tmp_path / "nowhere" / "g.json")


def test_all_problems_of_a_document_are_told(tmp_path):
    nodes = [{"id": "a", "type": "Nothing"}, {"id": "a", "type": ADD}, {"id": "b", "type": ADD, "attributes": {"c": 1}}]
    (tmp_path / "g.json").write_text(json.dumps({"format": "value-graph", "version": 2, "nodes": nodes}))
    with pytest.raises(vn.DocumentError) as raised:
        vn.Graph.load(tmp_path / "g.json")
    problems = raised.value.problems
    assert len(problems) == 3
    assert "Nothing" in problems[0] and '"a"' in problems[1] and '"c"' in problems[2]
    assert str(raised.value) == problems[0] + " (and 2 more problems)"
    again = pickle.loads(pickle.dumps(raised.value))
    assert again.problems == problems


def test_clamped_numbers_are_warned_of_at_the_caller():
    nodes = [{"id": "a", "type": ADD, "attributes": {"constant": 1e300}}]
    with pytest.warns(vn.ValueNodesWarning, match="clamped") as warned:
        vn.Graph.from_dict({"format": "value-graph", "version": 2, "nodes": nodes})
    assert warned[0].filename == __file__


def test_unknown_types_are_kept_when_asked_for():
    nodes = [{"id": "u", "type": "FarAwayNode", "attributes": {"x": [1, 2]}}, {"id": "b", "type": ADD}]
    document = {"format": "value-graph", "version": 2, "nodes": nodes}
    document["connections"] = [{"from": "u.image", "to": "b.image"}]
    with pytest.raises(vn.DocumentError, match="FarAwayNode"):
        vn.Graph.from_dict(document)
    graph = vn.Graph.from_dict(document, keep_unknown=True)
    assert graph.nodes == {"u": None, "b": ADD}
    assert graph.to_dict() == document
    assert copy.copy(graph) == graph
    assert "FarAwayNode" in graph.check().problems[0]
    with pytest.raises(vn.NodeError, match="FarAwayNode"):
        graph.evaluate("b.image")
    with pytest.raises(vn.DocumentError, match="FarAwayNode"):
        graph.run()
    with pytest.raises(ValueError, match="unknown here"):
        graph.set("u.x", 1)


def test_copies_and_pickles_are_independent_and_equal(chain):
    for other in (copy.copy(chain), copy.deepcopy(chain), pickle.loads(pickle.dumps(chain))):
        assert other == chain and other is not chain
        other.set("b.constant", 0.75)
        assert other != chain
        assert chain.get("b.constant") == 0.25
    assert chain != 3
    with pytest.raises(TypeError, match="unhashable"):
        hash(chain)


def test_a_copy_keeps_the_folder(tmp_path):
    np.save(tmp_path / "x.npy", np.zeros(1))
    vn.write(tmp_path / "in.exr", np.ones((2, 3), np.float32))
    graph = vn.Graph()
    graph.add("Image Reader", "r", path="in.exr")
    graph.save(tmp_path / "g.json")
    again = pickle.loads(pickle.dumps(vn.Graph.load(tmp_path / "g.json")))
    assert again.evaluate("r.image").size == (3, 2)


def test_repr_counts(chain):
    assert repr(chain) == "<valuenodes.Graph, 3 nodes, 2 connections, 0 outputs>"


# ---- Evaluation ----


def test_inputs_stand_in_for_nodes(chain, field):
    result = chain.evaluate("c.image", inputs={"a": field})
    assert isinstance(result, vn.Image)
    # Exact: both constants are powers of two, and each sum is rounded by itself.
    assert np.array_equal(np.asarray(result), (field + np.float32(0.25)) + np.float32(0.5))
    assert np.array_equal(evaluate(chain, "c", **{"b.image": field}), field + np.float32(0.5))
    with pytest.raises(vn.NodeError):
        chain.evaluate("c.image")


def test_an_input_may_be_what_is_asked_for(chain, field):
    image = vn.Image(field, range=(0, 2), pin=(3, 4))
    result = chain.evaluate("a.image", inputs={"a": image})
    assert result == image


def test_results_follow_changes(chain, field):
    assert np.array_equal(evaluate(chain, "b.image", a=field), field + np.float32(0.25))
    chain.set("b.constant", 1)
    assert np.array_equal(evaluate(chain, "b.image", a=field), field + np.float32(1))
    field[...] = 0
    assert np.array_equal(evaluate(chain, "b.image", a=field), np.ones_like(field))


def test_kept_results_are_not_computed_again():
    graph = vn.Graph()
    graph.add("Image Waves", "w", frame=(0, 0, 16, 8))
    graph.add("Value Add", "b")
    graph.connect("w.image", "b.image")
    for keep, wanted in ((True, ["w", "b"]), (True, []), (False, []), (False, ["w", "b"])):
        seen = []
        graph.evaluate("b.image", progress=lambda id, done, total: seen.append(id), keep=keep)
        if not keep and wanted == []:
            # What was kept is still there, and a change of one node makes one node.
            graph.set("b.constant", 0.5)
            seen = []
            graph.evaluate("b.image", progress=lambda id, done, total: seen.append(id), keep=keep)
            wanted = ["b"]
        assert seen == wanted


def test_a_kept_result_outlives_its_graph():
    graph = vn.Graph()
    graph.add("Image Waves", "w", frame=(0, 0, 300, 200))
    image = graph.evaluate("w.image", keep=True)
    again = graph.evaluate("w.image", keep=True)
    array = np.asarray(image)
    before = array.copy()
    assert np.array_equal(array, np.asarray(again))
    del graph, image, again
    gc.collect()
    assert np.array_equal(array, before)


def test_results_are_those_of_the_functions(field):
    graph = vn.Graph()
    graph.add("Reroute", "a")
    graph.add("Relief", "r", radius=3)
    graph.connect("a.image", "r.image")
    assert graph.evaluate("r.image", inputs={"a": field}) == vn.relief(field, radius=3)


def test_several_image_outputs_are_named():
    graph = vn.Graph()
    node = graph.add("Value Gradient")
    with pytest.raises(ValueError, match="several image outputs; name one of"):
        graph.evaluate(node)


def test_progress_is_told_in_order(chain, field):
    told = []
    chain.evaluate("c.image", inputs={"a": field}, progress=lambda *args: told.append(args))
    assert told == [("b", 1, 2), ("c", 2, 2)]


def test_an_exception_of_progress_stops_and_comes_out(chain, field):
    class Enough(Exception):
        pass

    told = []

    def progress(id, done, total):
        told.append(id)
        raise Enough(id)

    with pytest.raises(Enough, match="b"):
        chain.evaluate("c.image", inputs={"a": field}, progress=progress)
    assert told == ["b"]
    assert chain.evaluate("c.image", inputs={"a": field}).size == (31, 23)


def test_a_failing_node_is_named(tmp_path):
    graph = vn.Graph()
    graph.add("Image Reader", "r", path=str(tmp_path / "gone.exr"))
    graph.add("Value Add", "b")
    graph.connect("r.image", "b.image")
    with pytest.raises(vn.FileError, match='node "r": .*gone.exr') as raised:
        graph.evaluate("b.image")
    assert isinstance(raised.value, OSError)
    assert any("gone.exr" in problem for problem in raised.value.problems)


def test_an_error_elsewhere_does_not_concern_a_good_output(tmp_path):
    graph = vn.Graph()
    graph.add("Image Reader", "r", path=str(tmp_path / "gone.exr"))
    graph.add("Image Waves", "w", frame=(0, 0, 4, 2))
    with pytest.raises(vn.FileError):
        graph.evaluate("r.image")
    assert graph.evaluate("w.image").size == (4, 2)


def test_check_tells_problems_and_notes(chain, tmp_path):
    assert chain.check().notes and chain.check().is_valid
    chain.add_output("c.image", str(tmp_path / "nowhere" / "c.exr"))
    problems, notes = chain.check()
    assert any("nowhere" in problem for problem in problems)
    assert any("c.image" in problem for problem in problems)
    assert not chain.check().is_valid


# ---- Runs ----


def test_a_run_writes_outputs_and_says_what(tmp_path):
    graph = vn.Graph()
    graph.add("Image Waves", "w", frame=(0, 0, 6, 4))
    graph.add_output("w.image", tmp_path / "w.exr", "half")
    graph.add_output("w.image", str(tmp_path / "w.png"), "uint16")
    told = []
    written = graph.run(progress=lambda *args: told.append(args))
    assert sorted(written) == [(str(tmp_path / "w.exr"), (6, 4), "half"), (str(tmp_path / "w.png"), (6, 4), "uint16")]
    assert told == [("w", 1, 1)]
    assert vn.read(tmp_path / "w.exr").size == (6, 4)


def test_a_run_writes_all_outputs_after_results_were_kept(tmp_path):
    graph = vn.Graph()
    graph.add("Image Waves", "w", frame=(0, 0, 6, 4))
    graph.add("Value Add", "sum", constant=0.5)
    graph.connect("w", "sum")
    for name in ("w", "sum"):
        graph.add_output(name, tmp_path / f"{name}.exr")
    kept = graph.evaluate("sum", keep=True)
    assert sorted(os.path.basename(file.path) for file in graph.run()) == ["sum.exr", "w.exr"]
    assert np.array_equal(np.asarray(vn.read(tmp_path / "sum.exr")), np.asarray(kept))
    # Nor is a node that has failed before passed over.
    graph.add("Image Reader", "r", path=str(tmp_path / "gone.exr"))
    graph.add_output("r", tmp_path / "r.exr")
    with pytest.raises(vn.FileError):
        graph.evaluate("r", keep=True)
    with pytest.raises(vn.FileError, match="gone.exr") as raised:
        graph.run()
    assert len(raised.value.written) == 2


def test_relative_outputs_start_at_the_saved_document(tmp_path):
    graph = vn.Graph()
    graph.add("Image Waves", "w", frame=(0, 0, 6, 4))
    graph.add_output("w.image", "w.exr")
    graph.save(tmp_path / "g.json")
    assert [file.path for file in graph.run()] == [str(tmp_path / "w.exr")]


def test_a_failed_run_tells_what_was_written(tmp_path):
    graph = vn.Graph()
    graph.add("Image Waves", "w", frame=(0, 0, 6, 4))
    graph.add_output("w.image", str(tmp_path / "w.exr"))
    graph.add_output("w.image", str(tmp_path / "nowhere" / "w.exr"))
    with pytest.raises(vn.FileError, match="nowhere") as raised:
        graph.run()
    assert [file.path for file in raised.value.written] == [str(tmp_path / "w.exr")]
    assert (tmp_path / "w.exr").exists()


def test_an_incomplete_graph_does_not_run(tmp_path):
    graph = vn.Graph()
    graph.add("Image Reader", "r")
    graph.add_output("r.image", str(tmp_path / "w.exr"))
    with pytest.raises(vn.DocumentError, match="path"):
        graph.run()
    assert not (tmp_path / "w.exr").exists()


# ---- Threads and signals ----


def test_a_graph_is_used_by_one_call_at_a_time(chain, field):
    """The call that a progress function makes on the same graph, and one on another thread, are refused."""
    refused = []

    def use():
        for call in (lambda: chain.set("b.constant", 1), lambda: chain.evaluate("a.image"), lambda: chain.nodes):
            try:
                call()
            except RuntimeError as error:
                refused.append(str(error))

    def progress(id, done, total):
        use()
        thread = threading.Thread(target=use)
        thread.start()
        thread.join()
        assert repr(chain) == "<valuenodes.Graph, in use>"

    chain.evaluate("c.image", inputs={"a": field}, progress=progress)
    assert len(refused) == 12
    assert "copy" in refused[0]
    assert chain.get("b.constant") == 0.25


def test_threads_use_graphs_of_their_own(chain, field):
    wanted = (field + np.float32(0.25)) + np.float32(0.5)
    results = []

    def work(own):
        for _ in range(40):
            results.append(np.array_equal(np.asarray(own.evaluate("c.image", inputs={"a": field})), wanted))

    # The copies are made here: making one uses the graph.
    threads = [threading.Thread(target=work, args=(copy.copy(chain),)) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert results == [True] * 160


def test_threads_that_share_a_graph_are_refused_or_right(chain, field):
    wanted = (field + np.float32(0.25)) + np.float32(0.5)
    outcomes = []

    def work():
        for _ in range(60):
            try:
                result = np.asarray(chain.evaluate("c.image", inputs={"a": field}))
                outcomes.append("right" if np.array_equal(result, wanted) else "wrong")
            except RuntimeError:
                outcomes.append("refused")

    threads = [threading.Thread(target=work) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(outcomes) == 240
    assert set(outcomes) <= {"right", "refused"} and "right" in outcomes


def test_other_threads_run_while_a_graph_is_evaluated():
    """A thread of Python counts on while the graph computes without the interpreter's lock."""
    graph = vn.Graph()
    graph.add("Image Terrain", "t", frame=(0, 0, 1500, 1500))
    counted = []
    started = threading.Event()

    def count():
        started.wait()
        while not counted or counted[-1] is not None:
            counted.append(time.monotonic())
            time.sleep(0.001)

    thread = threading.Thread(target=count)
    thread.start()
    started.set()
    begin = time.monotonic()
    graph.evaluate("t.image")
    end = time.monotonic()
    counted.append(None)
    thread.join()
    during = [at for at in counted if at is not None and begin < at < end]
    assert len(during) >= 3


def test_ctrl_c_stops_an_evaluation():
    code = textwrap.dedent(
        """
        import os, signal, sys, threading, time
        import valuenodes as vn
        graph = vn.Graph()
        before = graph.add("Image Terrain", "t", frame=(0, 0, 3000, 3000))
        for i in range(12):
            node = graph.add("Relief", radius=100)
            graph.connect(before + ".image", node + ".image")
            before = node
        at = []
        def kill(id, done, total):
            if not at:
                at.append(time.monotonic())
                threading.Timer(0.05, lambda: (at.append(time.monotonic()), os.kill(os.getpid(), signal.SIGINT))).start()
        try:
            graph.evaluate(before + ".image", progress=kill)
        except KeyboardInterrupt:
            print("stopped", time.monotonic() - at[-1])
        print(graph.nodes["t"])
        """
    )
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, timeout=300)
    assert done.returncode == 0, done.stderr
    lines = done.stdout.splitlines()
    assert lines[0].startswith("stopped") and lines[1] == "ImageTerrainNode"


def test_nothing_is_left_over(chain, field):
    """Neither arrays nor results nor callbacks are kept by a graph that has been evaluated."""
    image = vn.Image(field)

    def progress(id, done, total):
        pass

    def work():
        chain.evaluate("c.image", inputs={"a": image, "b.image": field}, progress=progress)
        copy.copy(chain)
        with pytest.raises(vn.NodeError):
            chain.evaluate("c.image")

    work()
    gc.collect()
    before = [sys.getrefcount(object) for object in (field, image, progress)]
    for _ in range(50):
        work()
    gc.collect()
    assert [sys.getrefcount(object) for object in (field, image, progress)] == before


def test_messages_of_python_name_the_graph():
    with pytest.raises(TypeError, match=r"^Graph\.add\(\) missing"):
        vn.Graph().add()


def test_the_names_of_the_package_are_those_that_it_is_used_by():
    names = [name for name in dir(vn) if not name.startswith("__")]
    assert names == sorted(vn.__all__)
    assert {"Graph", "Image", "relief", "rows"} <= set(names)
