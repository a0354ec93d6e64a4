# SPDX-License-Identifier: Apache-2.0
"""Node types that are classes of Python.

What only `register` needs is imported there: it would be a third of the time that importing the package takes.
"""

import numbers
import re
import types

from . import _valuenodes

# The first of the three numbers of classes that do not give theirs. The others are made of the name.
FIRST_NUMBER = 20000


def _line(value, what):
    if not isinstance(value, str):
        raise TypeError(f"register: {what} is a string, not {type(value).__name__}")
    line = " ".join(value.split())
    if any(ord(character) < 32 or 0x7F <= ord(character) < 0xA0 for character in line):
        raise ValueError(f"register: {what} has a control character")
    return line


def _display_name(node_class):
    given = node_class.__dict__.get("name")
    if given is None:
        return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", " ", node_class.__name__).replace("_", " ")
    line = _line(given, "name")
    if not line or len(line) > 80:
        raise ValueError(f"register: name is 1 to 80 characters, not {given!r}")
    return line


def _sentence(node_class):
    """The first paragraph of what the class says of itself."""
    text = node_class.__dict__.get("__doc__") or ""
    return _line(text.strip().split("\n\n")[0], "the text of the class") or f"{node_class.__name__}, in Python."


def _type_numbers(node_class):
    given = node_class.__dict__.get("type")
    if given is None:
        import hashlib

        digest = hashlib.sha256(node_class.__name__.encode()).digest()
        return FIRST_NUMBER, int.from_bytes(digest[:2], "big"), int.from_bytes(digest[2:4], "big")
    fits = isinstance(given, (tuple, list)) and len(given) == 3
    whole = fits and all(isinstance(n, numbers.Integral) and not isinstance(n, bool) for n in given)
    if not whole or not all(0 <= n < 2**32 for n in given):
        raise ValueError(f"register: type is three whole numbers like ({FIRST_NUMBER}, 1, 1), not {given!r}")
    return tuple(int(n) for n in given)


def _entries(node_class, name):
    given = getattr(node_class, name, ("image",) if name != "attributes" else ())
    if isinstance(given, str) or not isinstance(given, (tuple, list)):
        raise TypeError(f"register: {name} is a tuple, not {type(given).__name__}")
    return given


def _inputs(node_class):
    from . import rows

    inputs = []
    for entry in _entries(node_class, "inputs"):
        made = entry if isinstance(entry, rows.Input) else rows.input(entry)
        inputs.append((made.name, made.many, made.optional))
    return inputs


def _outputs(node_class):
    from . import rows

    outputs = [rows.input(entry).name for entry in _entries(node_class, "outputs")]
    if not outputs:
        raise ValueError("register: a node has at least one output")
    return outputs


def _attributes(node_class):
    from . import rows

    attributes = []
    for row in _entries(node_class, "attributes"):
        if not isinstance(row, rows.Row):
            raise TypeError(f"register: attributes are rows, made by valuenodes.rows, not {row!r}")
        fields = {name: getattr(row, name) for name in row.__dataclass_fields__}
        if row.kind == "choice":
            fields |= {"words": ",".join(row.words), "index": row.words.index(row.default)}
        attributes.append(fields)
    return attributes


# What a class says of itself, and of which kinds that is; but for the numbers of its type, which any others could be.
_SAID = {
    "attributes": (tuple, list),
    "evaluate": (types.FunctionType,),
    "group": (str,),
    "inputs": (tuple, list),
    "keywords": (str,),
    "name": (str,),
    "outputs": (tuple, list),
    "takes_images": (bool,),
}


def _check_spelling(node_class):
    """Refuses what can only be meant for one of the names that are read here."""
    said = {name for base in node_class.__mro__ if base not in (Node, object) for name in vars(base)}
    for name, value in vars(node_class).items():
        if name in _SAID or name.startswith("_"):
            continue
        free = [one for one, kinds in _SAID.items() if one not in said and type(value) in kinds]
        import difflib

        closest = difflib.get_close_matches(name.lower(), free, 1, 0.8)
        if closest:
            raise TypeError(
                f'register: {node_class.__name__} has an attribute "{name}", which means nothing; the closest is '
                f'"{closest[0]}"'
            )


def _check_names(inputs, outputs, attributes):
    names = [name for name, _, _ in inputs] + [row["name"] for row in attributes]
    for group in (names, outputs):
        for name in group:
            if group.count(name) > 1:
                raise ValueError(f'register: the name "{name}" stands for two of the inputs and attributes or outputs')


def _check_evaluate(node_class, inputs, attributes):
    import inspect

    evaluate = getattr(node_class, "evaluate", None)
    if not callable(evaluate) or evaluate is Node.evaluate:
        raise TypeError(f"register: {node_class.__name__} has no evaluate(self, *images, **attributes)")
    try:
        signature = inspect.signature(evaluate)
    except (TypeError, ValueError):
        return
    try:
        signature.bind(None, *inputs, **{row["name"]: None for row in attributes})
    except TypeError as error:
        wanted = ["self", *(name for name, _, _ in inputs)]
        if attributes:
            wanted += ["*", *(row["name"] for row in attributes)]
        raise TypeError(f"register: evaluate is to take ({', '.join(wanted)}): {error}") from None


def register(node_class=None, /, *, replace=False):
    """Makes a class a node type, which `apply` and graphs then take and documents name.

    Works as a decorator as well. The class says in its attributes what it is:

    ``inputs``, ``outputs``
        Names of image plugs, each ("image",) by default. An input may be a `valuenodes.rows.input`.
    ``attributes``
        A tuple of rows, made by the functions of `valuenodes.rows`.
    ``evaluate(self, *images, **attributes)``
        Gets an array for each input, which it only reads, and each attribute by name; returns an array or an Image, a
        tuple of them where there are several outputs. An exception becomes the node's error.
    ``name``
        The display name; made of the class name by default.
    ``type``
        The three numbers; (20000, m, n) by default, with m and n made of the class name.
    ``takes_images``
        True where `evaluate` is to get objects of `Image`, with their place and range.
    ``group``, ``keywords``
        Where lists show it, and further words to find it by.

    Each node has an object of the class of its own, made without arguments when it is first evaluated.

    Parameters
    ----------
    node_class : type
        The class.
    replace : bool, default False
        Whether an earlier class of the same name makes room, as when a cell of a notebook runs again. Graphs follow at
        their next call.

    Returns
    -------
    type
        The class.

    Raises
    ------
    ValueError
        A name or the numbers are taken or not valid.
    TypeError
        Something is of another kind, `evaluate` does not take what is declared, or a name in the class is misspelt.

    Examples
    --------
    >>> import numpy as np
    >>> import valuenodes as vn
    >>> from valuenodes import rows
    >>> @vn.register(replace=True)
    ... class SoftKnee(vn.Node):
    ...     "Bends values above a knee."
    ...     attributes = (rows.number("knee", 0.5, 0, 1, text="Where it bends."),)
    ...
    ...     def evaluate(self, image, *, knee):
    ...         return np.where(image > knee, knee + (image - knee) / 2, image)
    >>> np.asarray(vn.apply("Soft Knee", np.ones((1, 2), np.float32)))
    array([[0.75, 0.75]], dtype=float32)
    """
    if node_class is None:
        return lambda given: register(given, replace=replace)
    if not isinstance(node_class, type):
        raise TypeError(f"register takes a class, not {node_class!r}")
    _check_spelling(node_class)
    inputs, outputs, attributes = _inputs(node_class), _outputs(node_class), _attributes(node_class)
    _check_names(inputs, outputs, attributes)
    _check_evaluate(node_class, inputs, attributes)
    description = {
        "class": node_class.__name__,
        "name": _display_name(node_class),
        "type": _type_numbers(node_class),
        "sentence": _sentence(node_class),
        "group": _line(getattr(node_class, "group", "Python"), "group"),
        "keywords": _line(getattr(node_class, "keywords", ""), "keywords"),
        "inputs": inputs,
        "outputs": outputs,
        "attributes": attributes,
        "takes_images": bool(getattr(node_class, "takes_images", False)),
    }
    _valuenodes.register_class(node_class, description, bool(replace))
    return node_class


class Node:
    """A base for node classes, with the defaults that `register` documents. Classes need not derive from it.

    Examples
    --------
    >>> import valuenodes as vn
    >>> vn.Node.inputs, vn.Node.outputs
    (('image',), ('image',))
    """

    inputs = ("image",)
    outputs = ("image",)
    attributes = ()
    takes_images = False
    group = "Python"
    keywords = ""

    def evaluate(self, *images, **attributes):
        """What the node makes of its images; each class has its own."""
        raise NotImplementedError(f"{type(self).__name__} has no evaluate(self, *images, **attributes)")


register.__module__ = Node.__module__ = "valuenodes"
