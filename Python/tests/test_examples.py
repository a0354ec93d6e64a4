# SPDX-License-Identifier: Apache-2.0
"""Everything that the package offers has an example in its text, and the examples run."""

import doctest
import inspect

import pytest
import valuenodes as vn

# What holds data or is raised, and has nothing to show.
WITHOUT = {
    "Connection", "Findings", "Output", "WrittenFile",
    "DocumentError", "FileError", "FilePermissionError", "MissingFileError", "NodeError", "ValueNodesError",
    "ValueNodesWarning",
}  # fmt: skip
RESULTS = {name for name in vn.__all__ if name.endswith("Result")}
# Its examples are in the text of the class, since compiled methods have none of their own.
IN_CLASS = {"Image.replace": ".replace(", "Image.from_dlpack": ".from_dlpack("}


def members():
    for name in sorted(set(vn.__all__) - WITHOUT - RESULTS):
        one = getattr(vn, name)
        yield name, one
        if inspect.ismodule(one) or inspect.isclass(one):
            public = one.__all__ if hasattr(one, "__all__") else [key for key in vars(one) if not key.startswith("_")]
            for key in public:
                if inspect.isroutine(getattr(one, key)):
                    yield f"{name}.{key}", getattr(one, key)


MEMBERS = dict(members())


@pytest.mark.parametrize("name", MEMBERS)
def test_text_has_an_example(name):
    if name in IN_CLASS:
        assert IN_CLASS[name] in vn.Image.__doc__
    elif name != "Node.evaluate":
        assert ">>>" in inspect.getdoc(MEMBERS[name])


def test_every_node_function_shows_numbers():
    nodes = [vn.describe(name)["name"] for name in vn.nodes() if vn.describe(name)["library"] == "Value"]
    names = {name.lower().replace(" ", "_") for name in nodes}
    names = {name if hasattr(vn, name) else name.removeprefix("value_") for name in names}
    assert len(names) == 20
    for name in names:
        examples = doctest.DocTestParser().get_examples(getattr(vn, name).__doc__)
        assert any(f"vn.{name}(" in example.source for example in examples)
        assert any(example.want.startswith("array(") for example in examples)


def test_text_of_images_and_of_their_pictures_is_there():
    assert vn.Image.__doc__.startswith("An image: float32 samples in rows")
    for name in ("to_png", "show"):
        method = getattr(vn.Image, name)
        assert method.__qualname__ == f"Image.{name}" and method.__module__ == "valuenodes"
        assert "colormap" in method.__doc__
