#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the functions of the package, valuenodes/_functions.py and its stub, from the node types themselves.

    write_functions.py FOLDER TEXTS

FOLDER holds the package with its module; what is written goes into it. TEXTS are the texts of the nodes by hand, from
which what is said of inputs and outputs is taken.
"""

import builtins
import importlib.machinery
import importlib.util
import pathlib
import re
import sys
import textwrap

from node_examples import EXAMPLES

WIDTH = 116
HEADER = "# SPDX-License-Identifier: Apache-2.0\n"
GENERATED = '"""Written by write_functions.py from the node types; changes are lost."""\n'
NUMBERS = {"point": 2, "frame": 4, "color": 4}
KINDS = {"number": "float", "flag": "bool", "string": "str"}


def load_module(package):
    """The compiled module alone, since the package needs what is written here."""
    file = next(package.glob("_valuenodes*.so"))
    loader = importlib.machinery.ExtensionFileLoader("valuenodes._valuenodes", str(file))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


def read_texts(folder, node):
    """What the node's text says of its plugs: by part ("inputs", "outputs") and name."""
    texts = {}
    file = next(folder.rglob(node["class"] + ".md"), None)
    part = name = None
    for line in file.read_text().splitlines() if file else ():
        if line.startswith("## "):
            part, name = line[3:].lower(), None
        elif line.startswith("### "):
            name = line[4:]
        elif name and not line.startswith("|"):
            texts.setdefault((part, name), []).append(line)
    return {key: " ".join(" ".join(lines).split()) for key, lines in texts.items()}


def read_surprises(folder, node, names):
    """What the node's text says of surprises, with functions in the place of nodes; nothing of disabled nodes."""
    file = next(folder.rglob(node["class"] + ".md"), None)
    _, _, rest = (file.read_text() if file else "").partition("\n## What surprises\n")
    entries = rest.partition("\n## ")[0].split("\n- ")[1:]
    named = [re.sub(r"\{(\w+)\}", lambda found: f"`{names.get(found[1], found[1])}`", entry) for entry in entries]
    return [" ".join(entry.split()) for entry in named if not entry.startswith("Disabled")]


def function_name(node):
    """The display name without "Value ", unless that would hide a function of Python."""
    whole = node["name"].lower().replace(" ", "_")
    short = whole.removeprefix("value_")
    return whole if hasattr(builtins, short) else short


def number(value):
    return repr(int(value)) if float(value).is_integer() and abs(value) < 1e15 else repr(value)


def default(attribute):
    value = attribute["default"]
    return repr(tuple(value)) if isinstance(value, tuple) else repr(value)


def annotation(attribute):
    kind = attribute["kind"]
    if kind == "choice":
        return "Literal[" + ", ".join(f'"{word}"' for word in attribute["words"]) + "]"
    if kind in NUMBERS:
        return "tuple[" + ", ".join(["float"] * NUMBERS[kind]) + "]"
    return "str | os.PathLike[str]" if attribute["is_path"] else KINDS[kind]


def has_constant(node):
    """Whether a number may stand in the place of a second image."""
    return sum(attribute.get("is_constant", False) for attribute in node["attributes"]) == 1


def parameters(node, typed):
    """The parameters of the function as they are written, each in its place."""
    written = []
    for place in node["inputs"]:
        kind = ": _ImageLike" if typed else ""
        if place["takes_many"]:
            more = " | float" if has_constant(node) else ""
            written += [place["name"] + kind, "*" + place["name"] + "s" + (kind + more if typed else "")]
        elif place["is_optional"]:
            written.append(place["name"] + (": _ImageLike | None" if typed else ""))
        else:
            written.append(place["name"] + kind)
    if node["attributes"] and not any(name.startswith("*") for name in written):
        written.append("*")
    for attribute in node["attributes"]:
        value = default(attribute)
        written.append(attribute["name"] + (f": {annotation(attribute)} = {value}" if typed else f"={value}"))
    return written


def definition(name, written, result):
    line = f"def {name}({', '.join(written)}){result}:"
    if len(line) <= WIDTH:
        return line
    return f"def {name}(\n" + "".join(f"    {one},\n" for one in written) + f"){result}:"


def paragraph(text, indent):
    return textwrap.fill(text, WIDTH - 4, initial_indent=indent, subsequent_indent=indent)


def describe_attribute(attribute):
    text = attribute.get("text", "")
    if attribute["kind"] == "number":
        unit = f" {attribute['unit']}" if attribute.get("unit") else ""
        text += f" From {number(attribute['lowest'])} to {number(attribute['highest'])}{unit}."
    kinds = {"choice": "{" + ", ".join(f'"{word}"' for word in attribute.get("words", ())) + "}"}
    kinds |= {"point": "(x, y)", "frame": "(x, y, width, height)", "color": "(red, green, blue, opacity)"}
    kind = kinds.get(attribute["kind"]) or ("path" if attribute["is_path"] else KINDS[attribute["kind"]])
    head = f"{attribute['name']} : {kind}, default {default(attribute)}"
    head = textwrap.fill(head, WIDTH - 4, subsequent_indent="    ")
    return head + "\n" + paragraph(text, "    ")


def describe_inputs(node, texts):
    lines = []
    for place in node["inputs"]:
        text = texts.get(("inputs", place["name"]), "An image or array of any mode.")
        names = place["name"]
        kind = "Image or array"
        if place["takes_many"]:
            names += f", *{place['name']}s"
            if has_constant(node):
                constant = next(one["name"] for one in node["attributes"] if one.get("is_constant"))
                text += f" A number after one image is its {constant}."
        if place["is_optional"]:
            kind += " or None"
        lines.append(f"{names} : {kind}\n" + paragraph(text, "    "))
    return lines


def describe_result(node, texts, result):
    if len(node["outputs"]) == 1:
        return ["Image\n" + paragraph(texts.get(("outputs", node["outputs"][0]["name"]), "The result."), "    ")]
    fields = []
    for output in node["outputs"]:
        alias = "" if output["alias"] == output["name"] else f"{output['alias']}: "
        text = alias + texts.get(("outputs", output["name"]), "An output of the node.")
        fields.append(f"{output['name']} : Image\n" + paragraph(text, "    "))
    return [f"{result}\n    A named tuple.\n", *fields]


def docstring(node, name, texts, surprises, result):
    parts = [node["sentence"], ""]
    described = describe_inputs(node, texts) + [describe_attribute(one) for one in node["attributes"]]
    for title, lines in (
        ("Parameters", described),
        ("Returns", describe_result(node, texts, result)),
        (
            "Raises",
            [
                "TypeError\n" + paragraph("An image, a name or the kind of a value is wrong.", "    "),
                "ValueError\n"
                + paragraph("A number is out of bounds, or a word is not among those of its choice.", "    "),
                "NodeError\n" + paragraph("The node could not be evaluated.", "    "),
            ],
        ),
        ("Notes", [textwrap.fill(one, WIDTH - 4, initial_indent="- ", subsequent_indent="  ") for one in surprises]),
        ("Examples", EXAMPLES[name].splitlines()),
    ):
        if not lines:
            continue
        parts += [title, "-" * len(title), *"\n".join(lines).splitlines(), ""]
    return "\n".join(parts[:-1])


def result_name(node, name):
    return "".join(word.capitalize() for word in name.split("_")) + "Result"


def quote(text):
    body = textwrap.indent(text, "    ").strip()
    return f'    """{body}\n    """'


def write_result(node, name):
    fields = "".join(f'    "{output["name"]}",\n' for output in node["outputs"])
    return f'{name} = namedtuple("{name}", (\n{fields}))\n{name}.__doc__ = "The outputs of {node["name"]}."\n'


def stub_result(node, name):
    return f"class {name}(NamedTuple):\n" + "".join(f"    {output['name']}: Image\n" for output in node["outputs"])


def write_read(reader):
    """The function that reads a file, from the node type that does."""
    attributes = [one for one in reader["attributes"] if one["name"] != "path"]
    text = [
        "Reads an image file of any format that is known; the content tells which it is.",
        "",
        "Parameters",
        "----------",
        "path : str or os.PathLike",
        "    The file.",
        *"\n".join(describe_attribute(one) for one in attributes).splitlines(),
        "",
        "Returns",
        "-------",
        "Image",
        "",
        "Raises",
        "------",
        "FileError",
        "    The file could not be read; the message names the cause.",
        "TypeError, ValueError",
        "    An argument is wrong.",
        "",
        "Examples",
        "--------",
        *EXAMPLES["read"].splitlines(),
    ]
    untyped = ["path", "*", *(f"{one['name']}={default(one)}" for one in attributes)]
    typed = [
        "path: str | os.PathLike[str]",
        "*",
        *(f"{one['name']}: {annotation(one)} = {default(one)}" for one in attributes),
    ]
    return untyped, typed, "\n".join(text)


def main(folder, texts):
    package = pathlib.Path(folder) / "valuenodes"
    module = load_module(package)
    nodes = [module.describe_node(name) for name in module.list_nodes()]
    source = [HEADER + GENERATED, "from collections import namedtuple\n", "from ._nodes import node_function\n"]
    stub = [HEADER, "import os\nfrom typing import Literal, NamedTuple\n"]
    stub += ["from ._valuenodes import Image, _ImageLike  # pyright: ignore[reportPrivateUsage]\n"]
    names = []
    functions = {node["class"]: function_name(node) for node in nodes if node["library"]}
    for node in nodes:
        if not node["library"]:
            continue
        name = function_name(node)
        result = "Image"
        if len(node["outputs"]) > 1:
            result = result_name(node, name)
            names.append(result)
            source.append("\n" + write_result(node, result))
            stub.append(stub_result(node, result))
        names.append(name)
        surprises = read_surprises(pathlib.Path(texts), node, functions)
        text = docstring(node, name, read_texts(pathlib.Path(texts), node), surprises, result)
        decorator = f'@node_function("{node["class"]}"' + (f", {result})" if result != "Image" else ")")
        written = definition(name, parameters(node, False), "")
        source.append(f"\n{decorator}\n{written}\n{quote(text)}\n")
        stub.append(definition(name, parameters(node, True), f" -> {result}") + " ...")
    untyped, typed, text = write_read(next(node for node in nodes if node["class"] == "ImageReaderNode"))
    names.append("read")
    decorator = '@node_function("ImageReaderNode", first="path")'
    source.append(f'\n{decorator}\n{definition("read", untyped, "")}\n{quote(text)}\n')
    stub.append(definition("read", typed, " -> Image") + " ...")
    listed = "".join(f'    "{name}",\n' for name in sorted(names))
    source.append(f"\n__all__ = [\n{listed}]")
    stub.append(f"\n__all__ = [\n{listed}]")
    (package / "_functions.py").write_text("\n".join(source) + "\n")
    (package / "_functions.pyi").write_text("\n".join(stub) + "\n")
    # Type checkers know lists of names, but not all of them sums of lists.
    template = pathlib.Path(__file__).parent.parent / "valuenodes" / "__init__.pyi.in"
    (package / "__init__.pyi").write_text(template.read_text().replace("@FUNCTIONS@", listed.strip()))


if __name__ == "__main__":
    main(*sys.argv[1:])
