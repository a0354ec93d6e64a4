# SPDX-License-Identifier: Apache-2.0
"""Nodes as functions: what they take, what they answer and what they say."""

import doctest
import inspect
import logging
import pathlib
import subprocess
import sys
import warnings

import numpy as np
import pytest
import valuenodes as vn
from conftest import same

NAMES = """add subtract multiply divide power minimum maximum to_value clamp steps condition compare value_range function
    relief distance gradient ambient_occlusion connected_components component_edges""".split()


def test_every_node_of_the_library_is_a_function():
    described = [vn.describe(name) for name in vn.nodes()]
    assert len([one for one in described if one["library"] not in ("", "Python")]) == len(NAMES)
    for name in [*NAMES, "read", "write", "apply"]:
        assert callable(getattr(vn, name)) and name in vn.__all__


@pytest.mark.parametrize("name", NAMES)
def test_signature_is_that_of_the_node(name):
    function = getattr(vn, name)
    title = name.replace("_", " ").title().replace("To Value", "To Value")
    class_name = next(
        one for one in vn.nodes() if vn.describe(one)["name"] in (title, "Value " + title) and vn.describe(one)["library"]
    )
    attributes = {one["name"]: one["default"] for one in vn.describe(class_name)["attributes"]}
    parameters = inspect.signature(function).parameters.values()
    keywords = {one.name: one.default for one in parameters if one.kind is one.KEYWORD_ONLY}
    assert keywords == attributes
    assert function.__module__ == "valuenodes" and function.__name__ == name
    for attribute in vn.describe(class_name)["attributes"]:
        assert attribute["text"].split()[0] in function.__doc__


def test_examples_in_the_documentation_run():
    finder = doctest.DocTestFinder()
    runner = doctest.DocTestRunner()
    for name in ["", *vn.__all__]:
        one = getattr(vn, name) if name else vn
        for part in inspect.getmro(one) if inspect.isclass(one) else [one]:
            for test in finder.find(part, name or "valuenodes", globs={"__name__": "example"}):
                runner.run(test)
    assert runner.tries > 80 and runner.failures == 0


def test_number_in_place_of_a_second_image_is_the_constant(field):
    for name in ("add", "subtract", "multiply", "divide", "minimum", "maximum"):
        function = getattr(vn, name)
        assert function(field, 0.25) == function(field, constant=0.25)
    for number in (2, np.float32(2), np.int8(2), np.array(2.0)):
        assert same(vn.multiply(field, number), field * np.float32(2))


@pytest.mark.parametrize(
    "call, message",
    [
        (lambda a: vn.add(0.5, a), "image or array first"),
        (lambda a: vn.add(a, a, 0.5), 'several images its attribute "constant" has no effect'),
        (lambda a: vn.add(a, 0.5, a), 'several images its attribute "constant" has no effect'),
        (lambda a: vn.add(a, 0.5, 0.5), "takes one number"),
        (lambda a: vn.add(a, 0.5, constant=1), '"constant" twice'),
        (lambda a: vn.power(a, 2), "takes images .*not the number 2"),
        (lambda a: vn.clamp(a, 0.5), "takes one image"),
        (lambda a: vn.clamp(a, a), "takes one image"),
        (lambda a: vn.add(), 'needs an image or array as "image"'),
        (lambda a: vn.compare(a), 'needs an image or array as "image_b", or None'),
        (lambda a: vn.compare(a, a, a), "takes 2 images"),
        (lambda a: vn.add(a, "b"), "^add: image 2 takes an image or array, not str$"),
        (lambda a: vn.add(None), "^add: image 1 takes an image or array, not NoneType$"),
        (lambda a: vn.add(a, constnt=1), 'no attribute "constnt"; the closest is "constant"'),
        (lambda a: vn.add(a, constant="1"), "add: constant takes a number, not str"),
        (lambda a: vn.add(a, constant=a), "add: constant takes a number"),
        (lambda a: vn.relief(a, grow=1), "relief: grow takes True or False, not int"),
        (lambda a: vn.clamp(a, profile=None), 'clamp: profile takes one of the words "linear"'),
        (lambda a: vn.compare(a, image_a=a), '"image_a" twice'),
        (lambda a: vn.apply("Image Checker", frame=3), "frame takes 4 numbers"),
        (lambda a: vn.read(7), "read: path takes a path, not int"),
    ],
)
def test_wrong_kinds_are_type_errors(field, call, message):
    with pytest.raises(TypeError, match=message):
        call(field)


@pytest.mark.parametrize(
    "call, message",
    [
        (lambda a: vn.add(a, constant=1e10), "from -1000000000.0 to 1000000000.0, not 10000000000.0"),
        (lambda a: vn.add(a, 10**400), "not inf"),
        (lambda a: vn.add(a, constant=-(10**400)), "not -inf"),
        (lambda a: vn.add(a, np.nan), "not nan"),
        (lambda a: vn.add(a, np.inf), "not inf"),
        (lambda a: vn.steps(a, steps=1), "steps: steps takes numbers from 2.0 to 100000.0, not 1.0"),
        (lambda a: vn.clamp(a, profile="lnear"), 'no word "lnear"; it takes "linear".*closest is "linear"'),
        (lambda a: vn.compare(a, a, precision=0.2), 'no word "0.2"'),
        (lambda a: vn.apply("Value Ad", a), 'no node type "Value Ad"; the closest is "Value Add"'),
        (lambda a: vn.apply("Image Checker", frame=(1, 2, 3)), "takes 4 numbers .* not 3"),
        (lambda a: vn.apply("Image Checker", frame=(1, 2, 3, np.nan)), "NaN is none"),
        (lambda a: vn.set_threads(-1), "threads are 1 to"),
    ],
)
def test_wrong_values_are_value_errors(field, call, message):
    with pytest.raises(ValueError, match=message):
        call(field)


def test_refused_call_leaves_nothing_for_the_next_one(field):
    expected = vn.clamp(field, high=1)
    with pytest.raises(ValueError):
        vn.clamp(field, low=0.5, high=1e9)
    assert vn.clamp(field, high=1) == expected


def test_entries_that_a_sequence_makes_when_it_is_asked():
    class Entry:
        def __init__(self, number):
            self.number = number

        def __float__(self):
            return self.number

    class Entries:
        def __len__(self):
            return 4

        def __getitem__(self, index):
            if index >= 4:
                raise IndexError(index)
            return Entry((0.0, 0.0, 4.0, 2.0)[index])

    assert vn.apply("Image Checker", frame=Entries()).size == (4, 2)
    assert vn.apply("Image Checker", frame=np.array([0, 0, 4, 2])).size == (4, 2)


def test_flags_of_numpy_are_flags(field):
    assert vn.relief(field, radius=2, seamless=np.bool_(False)) == vn.relief(field, radius=2, seamless=False)


def test_inputs_may_be_given_by_name(field):
    assert vn.compare(image_b=field, image_a=field + 1) == vn.compare(field + 1, field)
    assert vn.clamp(image=field, high=0.5) == vn.clamp(field, high=0.5)


def test_several_outputs_are_a_named_tuple(field):
    result = vn.gradient(field)
    assert result._fields == ("output_x", "output_y")
    assert isinstance(result, tuple) and result[0] is result.output_x


def test_choice_of_numbers_takes_numbers(field):
    assert vn.compare(field, field + 0.25, precision=1) == vn.compare(field, field + 0.25, precision="1.0")
    assert vn.compare(field, field, precision=1e-6) == vn.compare(field, field)


def test_apply_takes_every_way_of_writing_a_type(field):
    expected = vn.add(field, constant=0.5)
    for name in ("ImageValueAddNode", "Value Add", "value add", "10, 320, 5"):
        assert vn.apply(name, field, constant=0.5) == expected


def test_apply_takes_the_types_of_the_host():
    checker = vn.apply("Image Checker", frame=(0, 0, 4, 2), rect_x_size=(1, 0), rect_y_size=(0, 1))
    assert checker.size == (4, 2) and checker.mode == "color"
    assert vn.apply("Number", value=2.5) == 2.5
    assert vn.apply("Text", value="words") == "words"
    assert vn.apply("Flag", value=True) is True


def test_header_travels(field):
    image = vn.Image(field, pin=(5, -6), pivot=(0.5, 0), range=(0, 3)).replace(metadata={"unit": "metre"})
    result = vn.multiply(image, 2)
    assert result.pin == (5, -6) and result.pivot == (0.5, 0) and result.metadata == {"unit": "metre"}
    assert result.range == (float((field * 2).min()), float((field * 2).max()))


def test_node_errors_are_named(field):
    with pytest.raises(vn.NodeError, match="relief: .*larger than maximum image size"):
        big = np.zeros((1, 32768), np.float32)
        vn.relief(big, radius=250, grow=True)
    assert issubclass(vn.NodeError, vn.ValueNodesError)
    assert issubclass(vn.FileError, OSError) and issubclass(vn.FileError, vn.ValueNodesError)
    assert vn.DocumentError("two", ["one", "two"]).problems == ("one", "two")


def test_log_goes_to_python(field, caplog):
    with caplog.at_level(logging.INFO, "valuenodes"):
        vn.to_value(field, auto_level=True)
    assert any("Input range" in record.getMessage() for record in caplog.records)
    caplog.clear()
    with caplog.at_level(logging.WARNING, "valuenodes"):
        vn.to_value(field, auto_level=True)
    assert not caplog.records


def run(code):
    return subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True).stdout


def test_import_loads_little():
    loaded = run(
        "import sys, valuenodes\n"
        "maps = open('/proc/self/maps').read()\n"
        "print([name for name in ('numpy', 'logging', 'typing') if name in sys.modules],\n"
        "      [name for name in ('Qt6', 'OpenImageIO', 'OpenEXR', 'libgdal', 'OpenCL', 'Value.so') if name in maps])"
    )
    assert loaded.strip() == "[] []"


def test_small_images_use_no_codecs_and_no_devices():
    loaded = run(
        "import numpy, valuenodes\n"
        "valuenodes.add(numpy.zeros((2, 2), numpy.float32), 1)\n"
        "maps = open('/proc/self/maps').read()\n"
        "print([name for name in ('OpenImageIO', 'OpenEXR', 'libgdal', 'libOpenCL', 'Qt6Widgets') if name in maps])"
    )
    assert loaded.strip() == "[]"


def test_doctor_finds_everything_in_order():
    found = vn.doctor()
    assert found["libraries"][0]["name"] == "Value" and found["libraries"][0]["nodes"] == 20
    assert {"png", "exr"} <= {codec["name"] for codec in found["codecs"]}
    assert [codec["problem"] for codec in found["codecs"] if codec["problem"]] == []
    assert found["threads"] >= 1


def test_threads_change_no_result(field):
    large = np.tile(field, (20, 20))
    try:
        results = []
        for threads in (1, 2, 7):
            vn.set_threads(threads)
            assert vn.doctor()["threads"] == threads
            results.append(vn.relief(large, radius=5))
        assert results[0] == results[1] == results[2]
    finally:
        vn.set_threads(0)


def test_warnings_name_the_caller(tmp_path, field):
    with warnings.catch_warnings(record=True) as caught:
        warnings.simplefilter("always")
        vn.write(tmp_path / "cut.png", field * 3, type="uint8")
    assert len(caught) == 1 and caught[0].category is vn.ValueNodesWarning
    assert caught[0].filename == __file__ and "cut" in str(caught[0].message)


def test_examples_of_the_guide_run():
    guide = pathlib.Path(__file__).parents[2] / "Docs" / "Python.md"
    failures, tries = doctest.testfile(str(guide), module_relative=False)
    assert tries > 15 and failures == 0
