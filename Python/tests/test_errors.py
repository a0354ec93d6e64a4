# SPDX-License-Identifier: Apache-2.0
"""What exceptions carry: problems, causes, files and the numbers of the system's errors."""

import errno
import json
import os
import pathlib
import pickle
import tempfile
import traceback

import numpy as np
import pytest
import valuenodes as vn

H = np.zeros((2, 3), np.float32)


@pytest.fixture
def broken():
    """A class whose nodes fail with what their attribute says."""

    @vn.register(replace=True)
    class Broken(vn.Node):
        attributes = (vn.rows.string("text", "no reason"),)

        def evaluate(self, image, *, text):
            raise LookupError(text)

    return Broken


# ---- Nodes ----


def test_the_exception_of_a_node_in_python_is_the_cause(broken):
    with pytest.raises(vn.NodeError) as raised:
        vn.apply(broken, H, text="the shelf is bare\nand dusty")
    error = raised.value
    first, second = str(error).splitlines()[:2]
    assert first == "Broken: LookupError: the shelf is bare"
    assert second == "Traceback (most recent call last):"
    assert error.problems == (first,)
    assert type(error.__cause__) is LookupError and str(error.__cause__) == "the shelf is bare\nand dusty"
    assert traceback.extract_tb(error.__cause__.__traceback__)[-1].name == "evaluate"
    assert str(error).count("in evaluate") == 1 and str(error).endswith("\nand dusty")


def test_the_cause_in_a_graph_is_that_of_the_node_that_is_told_of(broken):
    graph = vn.Graph()
    graph.add("Image Waves", "waves", frame=(0, 0, 4, 2))
    for name in ("first", "second", "third"):
        graph.add(broken, name, text=name)
        graph.connect("waves.image", name + ".image")
    graph.add("Value Maximum", "most")
    for index, name in enumerate(("first", "second", "third")):
        graph.connect(name + ".image", "most.image", index)
    with pytest.raises(vn.NodeError) as raised:
        graph.evaluate("most.image")
    assert str(raised.value).splitlines()[0] == 'node "first": LookupError: first (and 2 more problems)'
    assert raised.value.problems == tuple(f'node "{n}": LookupError: {n}' for n in ("first", "second", "third"))
    assert str(raised.value.__cause__) == "first"
    # Only what an output needs concerns it.
    with pytest.raises(vn.NodeError) as raised:
        graph.evaluate("second.image")
    assert raised.value.problems == ('node "second": LookupError: second',)
    assert str(raised.value).startswith(raised.value.problems[0] + "\nTraceback")
    assert str(raised.value.__cause__) == "second"


def test_the_cause_of_a_failed_run(broken, tmp_path):
    graph = vn.Graph()
    graph.add("Image Waves", "waves", frame=(0, 0, 4, 2))
    graph.add(broken, "bad")
    graph.connect("waves.image", "bad.image")
    graph.add_output("bad.image", tmp_path / "bad.exr")
    with pytest.raises(vn.NodeError, match='^node "bad": LookupError: no reason\nTraceback') as raised:
        graph.run()
    assert type(raised.value.__cause__) is LookupError
    # A file that fails is what the class of the error stands for, wherever it comes.
    graph.add_output("waves.image", tmp_path / "nowhere" / "waves.exr")
    with pytest.raises(vn.MissingFileError) as raised:
        graph.run()
    assert str(raised.value).startswith('output "waves.image": ') and "nowhere" in str(raised.value)
    assert str(raised.value).endswith(" (and 1 more problem)")
    assert len(raised.value.problems) == 2 and raised.value.__cause__ is None
    assert raised.value.filename == str(tmp_path / "nowhere" / "waves.exr")


def test_what_a_node_returns_wrongly_has_a_cause_too():
    @vn.register(replace=True)
    class Flat(vn.Node):
        def evaluate(self, image):
            return np.zeros(3)

    with pytest.raises(vn.NodeError, match="Flat: ") as raised:
        vn.apply(Flat, H)
    assert isinstance(raised.value.__cause__, ValueError)


def test_errors_of_nodes_of_libraries_have_problems_and_no_cause():
    with pytest.raises(vn.NodeError) as raised:
        vn.add(np.zeros((0, 3), np.float32))
    assert raised.value.problems == (str(raised.value),)
    assert raised.value.__cause__ is None


# ---- Files ----


def missing(tmp_path):
    graph = vn.Graph()
    graph.add("Image Reader", "r", path=str(tmp_path / "gone.exr"))
    graph.add("Value Add", "sum")
    graph.connect("r.image", "sum.image")
    return graph


@pytest.mark.parametrize(
    "call, name",
    [
        (lambda folder: vn.read(folder / "gone.exr"), "gone.exr"),
        (lambda folder: vn.Graph.load(folder / "gone.json"), "gone.json"),
        (lambda folder: vn.write(folder / "nowhere" / "a.exr", H), "nowhere/a.exr"),
        (lambda folder: vn.Graph().save(folder / "nowhere" / "a.json"), "nowhere/a.json"),
        (lambda folder: missing(folder).evaluate("sum.image"), "gone.exr"),
        (lambda folder: vn.apply("Image Reader", path=str(folder / "gone.exr")), "gone.exr"),
    ],
    ids=["read", "load", "write", "save", "evaluate", "apply"],
)
def test_what_is_not_there_is_a_file_not_found_error(call, name, tmp_path):
    with pytest.raises(FileNotFoundError) as raised:
        call(tmp_path)
    error = raised.value
    assert isinstance(error, vn.MissingFileError) and isinstance(error, vn.FileError)
    assert isinstance(error, OSError) and isinstance(error, vn.ValueNodesError)
    assert error.errno == errno.ENOENT and error.strerror == os.strerror(errno.ENOENT)
    assert error.filename == str(tmp_path / name)
    assert error.problems == (str(error),) and os.path.basename(name) in str(error)


def test_a_path_is_told_as_it_was_given(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    with pytest.raises(FileNotFoundError) as raised:
        vn.read("gone.exr")
    assert raised.value.filename == "gone.exr"


def test_what_may_not_be_touched_is_a_permission_error():
    before = os.geteuid()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "mine.exr").write_bytes(b"x")
        (folder / "mine.exr").chmod(0)
        folder.chmod(0o555)
        # To the system's administrator nothing is forbidden.
        if before == 0:
            os.seteuid(65534)
        try:
            for call in (lambda: vn.read(folder / "mine.exr"), lambda: vn.write(folder / "a.exr", H)):
                with pytest.raises(PermissionError) as raised:
                    call()
                assert isinstance(raised.value, vn.FilePermissionError) and isinstance(raised.value, vn.FileError)
                assert raised.value.errno == errno.EACCES
        finally:
            os.seteuid(before)
            folder.chmod(0o755)


def test_other_errors_of_files_are_plain(tmp_path):
    (tmp_path / "text.exr").write_text("no image")
    with pytest.raises(vn.FileError) as raised:
        vn.read(tmp_path / "text.exr")
    assert type(raised.value) is vn.FileError
    assert raised.value.errno is None and raised.value.filename == str(tmp_path / "text.exr")
    with pytest.raises(vn.FileError) as raised:
        vn.read(tmp_path)
    assert raised.value.errno == errno.EISDIR
    with pytest.raises(vn.FileError) as raised:
        vn.write(tmp_path, H)
    assert type(raised.value) is vn.FileError


# ---- All of them ----


def test_errors_are_pickled_with_what_they_carry(tmp_path):
    with pytest.raises(vn.FileError) as raised:
        missing(tmp_path).evaluate("sum.image")
    again = pickle.loads(pickle.dumps(raised.value))
    assert type(again) is vn.MissingFileError and str(again) == str(raised.value)
    for name in ("problems", "errno", "strerror", "filename"):
        assert getattr(again, name) == getattr(raised.value, name)
    for made in (vn.NodeError("a\nb"), vn.DocumentError("a", ["a", "b"]), vn.ValueNodesError("a")):
        again = pickle.loads(pickle.dumps(made))
        assert (type(again), str(again), again.problems) == (type(made), str(made), made.problems)
    assert vn.NodeError("a\nb").problems == ("a",)


def test_what_a_run_has_written_survives_pickling(tmp_path):
    graph = vn.Graph()
    graph.add("Image Waves", "w", frame=(0, 0, 6, 4))
    graph.add_output("w.image", tmp_path / "w.exr")
    graph.add_output("w.image", tmp_path / "nowhere" / "w.exr")
    with pytest.raises(vn.FileError) as raised:
        graph.run()
    assert pickle.loads(pickle.dumps(raised.value)).written == raised.value.written
    assert len(raised.value.written) == 1


# ---- Missing images ----


def test_an_output_without_an_image_names_the_input_that_is_free():
    graph = vn.Graph()
    for name in ("Value Clamp", "Relief", "Value Add"):
        graph.add(name, name.split()[-1].lower())
    graph.connect("clamp.image", "relief.image")
    graph.connect("relief.image", "add.image")
    with pytest.raises(vn.NodeError) as raised:
        graph.evaluate("add.image")
    assert str(raised.value) == 'output "add.image" has no image: nothing is connected to "image" of node "clamp"'
    graph.add_output("add.image", "out.exr")
    problems = graph.check().problems
    assert problems == ('output "add.image" cannot get an image: nothing is connected to "image" of node "clamp"',)
    assert json.loads(json.dumps(problems)) == list(problems)


def test_the_number_is_that_of_the_file_that_is_told_of(tmp_path):
    @vn.register(replace=True)
    class Cannot(vn.Node):
        def evaluate(self, image):
            raise OSError("cannot fetch: No such file or directory")

    graph = vn.Graph()
    graph.add("Image Waves", "waves", frame=(0, 0, 4, 2))
    graph.add(Cannot, "bad")
    graph.connect("waves.image", "bad.image")
    graph.add_output("bad.image", tmp_path / "bad.exr")
    graph.add_output("waves.image", tmp_path / ("long" * 75 + ".exr"))
    with pytest.raises(vn.FileError) as raised:
        graph.run()
    assert len(raised.value.problems) == 2
    assert raised.value.errno == errno.ENAMETOOLONG


def test_errors_are_pickled_with_all_that_they_say(tmp_path):
    with pytest.raises(vn.FileError) as raised:
        vn.read(tmp_path / "gone.exr")
    for error in (raised.value, vn.NodeError("a\nb"), vn.DocumentError("a (and 1 more problem)", ["a", "b"])):
        copy = pickle.loads(pickle.dumps(error))
        assert (type(copy), str(copy), copy.problems) == (type(error), str(error), error.problems)
        assert getattr(copy, "errno", None) == getattr(error, "errno", None)
        assert getattr(copy, "filename", None) == getattr(error, "filename", None)
    assert vn.ValueNodesError(5).problems == ("5",)
