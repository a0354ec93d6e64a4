# SPDX-License-Identifier: Apache-2.0
"""Wrong arguments: what is said of them, in one line; and the signatures that editors show."""

import ast
import inspect
import pathlib

import numpy as np
import pytest
import valuenodes as vn

H = np.zeros((2, 3), np.float32)
IMAGE = vn.Image(H)
STUB = pathlib.Path(vn.__file__).parent / "_valuenodes.pyi"
FLAT = "an image is an array of shape (rows, columns) or (rows, columns, channels), not (3,)"


def replace(**facts):
    return lambda: IMAGE.replace(metadata=facts)


@pytest.mark.parametrize(
    "call, error, text",
    [
        (lambda: vn.Image(), TypeError, 'Image needs an array or an image as "array"'),
        (lambda: vn.Image(H, mod="value"), TypeError, 'Image has no argument "mod"; the closest is "mode"'),
        (lambda: vn.Image(H, array=H), TypeError, 'Image was given its argument "array" twice'),
        (
            lambda: vn.Image(H, "value", (0, 0), (0, 0), None, 0.0, 5),
            TypeError,
            "Image takes at most 6 arguments without their names, and 7 were given; it takes array, mode, pin, pivot, "
            "range, outside",
        ),
        (lambda: vn.Image(H, mode=3), TypeError, "Image: mode takes a word, not int"),
        (lambda: vn.Image(5), TypeError, "Image: array: an image is made of an array, not of int"),
        (lambda: vn.Image(np.zeros(3)), ValueError, "Image: array: " + FLAT),
        (lambda: vn.Image(H, pin=(0.5, 0)), ValueError, "Image: pin takes whole numbers of pixels, not 0.5"),
        (lambda: vn.Image(H, range=5), TypeError, "Image: range takes two numbers (low, high), not int"),
        (
            lambda: IMAGE.replace("value"),
            TypeError,
            "replace takes its arguments by name, which are mode, pin, pivot, range, outside, metadata",
        ),
        (lambda: IMAGE.replace(rang=(0, 1)), TypeError, 'replace has no argument "rang"; the closest is "range"'),
        (lambda: IMAGE.replace(outside="x"), TypeError, "replace: outside takes a number, not str"),
        (lambda: IMAGE.replace(metadata=3), TypeError, "replace: metadata takes a dict, not int"),
        (replace(exif=3), TypeError, "replace: metadata: exif takes bytes, not 3"),
        (replace(xmp=b"x"), TypeError, "replace: metadata: xmp takes a string, not b'x'"),
        (
            replace(resolution=(1, 2, 3)),
            TypeError,
            "replace: metadata: resolution takes two numbers (x, y), not (1, 2, 3)",
        ),
        (replace(resolution_unit=3), TypeError, "replace: metadata: resolution_unit takes a string, not 3"),
        (replace(nodata="x"), TypeError, "replace: metadata: nodata takes a number, not 'x'"),
        (replace(had_opacity=1), TypeError, "replace: metadata: had_opacity takes True or False, not 1"),
        (
            replace(display_window=(1, 2, 3, 4.5)),
            TypeError,
            "replace: metadata: display_window takes four whole numbers (left, top, right, bottom), not (1, 2, 3, 4.5)",
        ),
        (
            replace(geotransfrm=(1,) * 6),
            ValueError,
            'replace: metadata has no field "geotransfrm"; the closest is "geotransform"; fields of one\'s own belong '
            'into "entries"',
        ),
        (lambda: IMAGE.replace(metadata={3: 4}), TypeError, "replace: metadata: names of fields are strings, not int"),
        (
            replace(entries=3),
            TypeError,
            "replace: metadata: entries takes a dict of strings, numbers and blocks of bytes by name, not 3",
        ),
        (replace(entries={3: "x"}), TypeError, "replace: metadata: names of entries are strings, not int"),
        *(
            (
                replace(entries={"a": value}),
                TypeError,
                'replace: metadata: entry "a" takes a string, a sequence of numbers, or a dict of "type" and "bytes", '
                f"not {value!r}",
            )
            for value in (None, {"x": 1}, {"type": 1, "bytes": b""}, [2**80], ["x"])
        ),
        (
            lambda: vn.describe(3),
            TypeError,
            "describe: a node type is its class name, its display name, three numbers like (10, 320, 5), or a "
            "registered class, not 3",
        ),
        (
            lambda: vn.Image.from_dlpack(5),
            TypeError,
            "from_dlpack: object is what has __dlpack__, such as a tensor in the processor's memory, not int",
        ),
        (lambda: vn.Image.from_dlpack(H, 3), TypeError, None),
        (lambda: IMAGE.__dlpack__(stream="x"), ValueError, None),
        (
            lambda: IMAGE.__dlpack__(dl_device="cpu"),
            TypeError,
            "__dlpack__: dl_device takes two whole numbers, not str",
        ),
        (
            lambda: IMAGE.__dlpack__(max_version=1),
            TypeError,
            "__dlpack__: max_version takes two whole numbers, not int",
        ),
        (lambda: vn.add(H, H, np.zeros(3)), ValueError, "add: image 3: " + FLAT),
        (lambda: vn.add(H, [1]), TypeError, "add: image 2 takes an image or array, not list"),
        (lambda: vn.relief(np.zeros(3)), ValueError, "relief: image: " + FLAT),
        (lambda: vn.compare(H, image_b=np.zeros(3)), ValueError, "compare: image_b: " + FLAT),
        (
            lambda: vn.clamp(np.array([[1e300]])),
            OverflowError,
            "clamp: image: the number in row 0, column 0 is beyond the largest float, 3.4028235e+38",
        ),
        (
            lambda: vn.write(H, "x.png"),
            TypeError,
            "write takes the path first and the image second: write(path, image)",
        ),
        (lambda: vn.write(5, H), TypeError, "write: path is a string or os.PathLike, not int"),
        *(
            (call, TypeError, f"{name} is a string or os.PathLike, not int")
            for name, call in {
                "load: path": lambda: vn.Graph.load(5),
                "save: path": lambda: vn.Graph().save(5),
                "from_dict: folder": lambda: vn.Graph.from_dict({}, folder=5),
                "add_output: path": lambda: vn.Graph().add_output("a.image", 5),
                "load_library: path": lambda: vn.load_library(5),
            }.items()
        ),
        (lambda: vn.write("x.png", 5), TypeError, "write: image takes an image or array, not int"),
        (lambda: vn.write("x.png", np.zeros(3)), ValueError, "write: image: " + FLAT),
        (lambda: vn.write("x.png", H, layer=3), TypeError, "write: layer is a string, not int"),
        (
            lambda: vn.power(H, 2),
            TypeError,
            "power takes images or arrays, not the number 2; an array of it does: numpy.full(shape, 2)",
        ),
        (
            lambda: vn.Graph("x.json"),
            TypeError,
            "Graph takes no arguments and makes an empty graph; Graph.load(path) makes one of a document",
        ),
        (
            lambda: bool(IMAGE),
            ValueError,
            "an image is neither true nor false; compare it with None, or ask numpy.asarray(image).any() or .all()",
        ),
    ],
)
def test_wrong_arguments_are_told_in_one_line(call, error, text):
    with pytest.raises(error) as raised:
        call()
    assert "\n" not in str(raised.value)
    assert text is None or str(raised.value) == text


def test_a_number_that_power_does_not_take_works_as_an_array():
    assert np.asarray(vn.power(np.full((2, 3), 3, np.float32), np.full((2, 3), 2))).tolist() == [[9] * 3] * 2


def test_errors_of_an_array_class_come_out_as_they_are():
    class Odd:
        def __array__(self, dtype=None, copy=None):
            raise ValueError("the drawer is stuck")

    for call in (vn.Image, vn.relief, lambda image: vn.write("x.exr", image)):
        with pytest.raises(ValueError, match="^the drawer is stuck$"):
            call(Odd())


def test_describe_takes_what_apply_takes():
    names = "ImageValueAddNode", "Value Add", (10, 320, 5)
    assert [vn.describe(name)["class"] for name in names] == ["ImageValueAddNode"] * 3


# ---- Signatures ----


def stub_signature(name):
    """Names, kinds and defaults of a method of Image, from the stub."""
    image = next(node for node in ast.parse(STUB.read_text()).body if getattr(node, "name", "") == "Image")
    method = next(node for node in image.body if getattr(node, "name", "") == name)
    method.returns, method.decorator_list = None, []
    for argument in (*method.args.args, *method.args.kwonlyargs):
        argument.annotation = None
    space = {}
    exec(compile(ast.Module([method], []), STUB, "exec"), space)
    return inspect.signature(space[name])


def test_signatures_are_those_of_the_stub():
    whole = stub_signature("__init__")
    assert inspect.signature(vn.Image) == whole.replace(parameters=list(whole.parameters.values())[1:])
    for name in ("replace", "from_dlpack", "to_png", "show"):
        assert inspect.signature(getattr(vn.Image, name)) == stub_signature(name), name
    bound = stub_signature("replace")
    assert inspect.signature(IMAGE.replace) == bound.replace(parameters=list(bound.parameters.values())[1:])
    assert str(inspect.signature(vn.Graph)) == "()"


def test_texts_begin_with_their_sentences():
    assert vn.Image.replace.__doc__.startswith("Another image with the same samples")
    assert vn.Image.from_dlpack.__doc__.startswith("An image of what has __dlpack__")


# ---- Classes of one's own ----


@pytest.mark.parametrize(
    "members, closest",
    [
        ({"atributes": ()}, "attributes"),
        ({"attribute": ()}, "attributes"),
        ({"input": ("image",)}, "inputs"),
        ({"output": ("image",)}, "outputs"),
        ({"takes_image": True}, "takes_images"),
        ({"keyword": "soft"}, "keywords"),
        ({"Name": "Soft"}, "name"),
    ],
)
def test_a_misspelt_name_in_a_class_is_refused(members, closest):
    made = type("Spelt", (vn.Node,), {"evaluate": lambda self, image: image, **members})
    with pytest.raises(TypeError) as raised:
        vn.register(made)
    (name,) = members
    assert str(raised.value) == (
        f'register: Spelt has an attribute "{name}", which means nothing; the closest is "{closest}"'
    )


def test_names_of_ones_own_are_no_misspelt_ones():
    base = type("Spelling", (), {"evaluate": lambda self, image: image})
    made = type("Spelt", (base, vn.Node), {"evaluated": lambda self: 1, "types": (1, 2), "outputs": ("image",)})
    vn.register(made, replace=True)


def test_a_misspelt_evaluate_is_refused():
    made = type("Spelt", (vn.Node,), {"evalute": lambda self, image: image})
    with pytest.raises(TypeError, match='"evalute", which means nothing; the closest is "evaluate"'):
        vn.register(made)


def test_names_of_a_class_for_its_own_use_are_not_looked_at():
    @vn.register(replace=True)
    class Private(vn.Node):
        names = ["a", "b"]
        inputs_seen = 0
        level = 0.5
        _attributes = ()

        def evaluate_half(self, image):
            return image / 2

        def evaluate(self, image):
            return self.evaluate_half(image)

    assert np.asarray(vn.apply(Private, H + 1)).tolist() == [[0.5] * 3] * 2


def test_a_class_that_is_not_registered_says_how():
    class Stranger(vn.Node):
        def evaluate(self, image):
            return image

    wanted = "Stranger is no node type yet; valuenodes.register(Stranger) makes it one"
    for function, call in {
        "apply": lambda: vn.apply(Stranger, H),
        "add": lambda: vn.Graph().add(Stranger),
        "describe": lambda: vn.describe(Stranger),
    }.items():
        with pytest.raises(ValueError) as raised:
            call()
        assert str(raised.value) == f"{function}: {wanted}"


def test_a_document_with_a_class_that_is_not_registered_says_how():
    document = {"format": "value-graph", "version": 2, "nodes": [{"id": "n", "type": "StrangerStill"}]}
    with pytest.raises(vn.DocumentError, match='node "n": there is no node type "StrangerStill".*valuenodes.register'):
        vn.Graph.from_dict(document)
    graph = vn.Graph.from_dict(document, keep_unknown=True)
    for call in (graph.run, lambda: graph.evaluate("n.image")):
        with pytest.raises(vn.ValueNodesError, match='"StrangerStill".*valuenodes.register'):
            call()


# ---- What surprises ----


def test_texts_of_functions_say_what_surprises():
    texts = {name: getattr(vn, name).__doc__.partition("Notes\n")[2] for name in ("clamp", "condition")}
    notes = {name: " ".join(text.split()) for name, text in texts.items()}
    assert "with `low` at 0.2 and `high` still 0 everything stays 0" in notes["clamp"]
    assert "setting `a` alone changes nothing" in notes["condition"]
    assert "`value_range`" in notes["clamp"] and "{" not in notes["clamp"] + notes["condition"]
    assert "Disabled" not in notes["clamp"]


def test_what_the_texts_say_is_so():
    heights = np.array([[0.1, 0.5, 0.9]], np.float32)
    assert not np.asarray(vn.clamp(heights, low=0.2)).any()
    # The nearest floats of 0.2, 0.5 and 0.9.
    assert np.asarray(vn.clamp(heights, clamp="low", low=0.2)).tolist() == np.float32([[0.2, 0.5, 0.9]]).tolist()
    assert vn.condition(heights, a=0.7) == vn.condition(heights)
    assert np.asarray(vn.condition(heights)).tolist() == [[1, 0, 0]]


def test_bytes_are_not_shares(tmp_path):
    numbers = np.array([[0, 51, 255]], np.uint8)
    assert np.asarray(vn.Image(numbers)).tolist() == [[0, 51, 255]]
    vn.write(tmp_path / "bytes.png", vn.Image(numbers / 255), "uint8")
    assert np.asarray(vn.read(tmp_path / "bytes.png")).tolist() == np.float32([[0, 0.2, 1]]).tolist()


def test_halves_that_become_infinite_are_warned_of(tmp_path):
    numbers = np.array([[65504, 65520, -1e6, np.inf]], np.float32)
    with pytest.warns(vn.ValueNodesWarning, match="2 samples beyond the largest half, 65504, were written"):
        vn.write(tmp_path / "half.exr", numbers, "half")
    assert np.asarray(vn.read(tmp_path / "half.exr")).tolist() == [[65504, np.inf, -np.inf, np.inf]]
