# SPDX-License-Identifier: Apache-2.0
"""The rows of the table in which a node class declares its attributes, and its inputs.

>>> from valuenodes import rows
>>> rows.number("level", 0.5, 0, 1, step=0.01, decimals=3, text="What is above becomes 1.").name
'level'
"""

import dataclasses
import math
import numbers

__all__ = ["Input", "Row", "choice", "color", "flag", "frame", "input", "number", "path", "point", "string"]

# Numbers without bounds of their own have these, like those of other nodes.
_MOST = 1e9


@dataclasses.dataclass(frozen=True)
class Row:
    """One attribute: what it is, and what is said of it. Made by the functions of this module."""

    name: str
    kind: str
    default: object
    text: str = ""
    lowest: float = 0.0
    highest: float = 0.0
    step: float = 0.0
    decimals: int = 0
    unit: str = ""
    words: tuple = ()
    use: str = "text"


@dataclasses.dataclass(frozen=True)
class Input:
    """One image input. Made by `input`."""

    name: str
    many: bool = False
    optional: bool = False


def _name(name):
    if not isinstance(name, str) or not name.isidentifier() or name.startswith("_") or name == "self":
        raise ValueError(f"the name of an attribute or plug is an identifier like \"level\", not {name!r}")
    return name


def _text(text, what):
    if not isinstance(text, str):
        raise TypeError(f"{what} is a string, not {type(text).__name__}")
    if any(ord(character) < 32 for character in text):
        raise ValueError(f"{what} is one line, without control characters")
    return text


def _finite(value, what):
    if isinstance(value, bool) or not isinstance(value, numbers.Real):
        raise TypeError(f"{what} is a number, not {value!r}")
    if not math.isfinite(value):
        raise ValueError(f"{what} is a finite number, not {value}")
    return float(value)


def _numbers(values, count, names, name):
    try:
        values = tuple(values)
    except TypeError:
        values = ()
    if len(values) != count:
        raise ValueError(f"the default of {name} is {count} numbers {names}")
    return tuple(_finite(value, f"the default of {name}") for value in values)


def input(name, *, many=False, optional=False):
    """An image input that takes many images, as a list, or may be left free, and is None then.

    Parameters
    ----------
    name : str
        Its name. One without further properties is declared by its name alone.
    many : bool, default False
        Whether it takes any number of images.
    optional : bool, default False
        Whether the node is evaluated without an image there.

    Examples
    --------
    >>> from valuenodes import rows
    >>> rows.input("mask", optional=True)
    Input(name='mask', many=False, optional=True)
    """
    return Input(_name(name), bool(many), bool(optional))


def number(name, default=0.0, lowest=-_MOST, highest=_MOST, *, step=0.01, decimals=3, unit="", text=""):
    """A number. One with no decimals comes to `evaluate` as an int.

    Parameters
    ----------
    name : str
        Its name, an identifier.
    default, lowest, highest : float
        Its default and its bounds.
    step : float, default 0.01
        By how much an editor changes it.
    decimals : int, default 3
        How many an editor shows.
    unit : str, optional
        Its unit, "px" for example.
    text : str, optional
        One or two sentences on what it does.

    Examples
    --------
    >>> from valuenodes import rows
    >>> rows.number("radius", 1, 0, 250, step=1, decimals=0, unit="px").highest
    250.0
    """
    name = _name(name)
    low, value, high = (_finite(n, f"each number of {name}") for n in (lowest, default, highest))
    if not low <= value <= high:
        raise ValueError(f"the default of {name} is from {lowest} to {highest}, not {default}")
    if isinstance(decimals, bool) or not isinstance(decimals, numbers.Integral) or not 0 <= decimals <= 15:
        raise ValueError(f"the decimals of {name} are a whole number from 0 to 15, not {decimals!r}")
    step = _finite(step, f"the step of {name}")
    if step <= 0:
        raise ValueError(f"the step of {name} is greater than 0, not {step}")
    unit = _text(unit, f"the unit of {name}")
    return Row(name, "number", value, _text(text, f"the text of {name}"), low, high, step, int(decimals), unit)


def flag(name, default=False, *, text=""):
    """True or False.

    Examples
    --------
    >>> from valuenodes import rows
    >>> rows.flag("invert").default
    False
    """
    if not isinstance(default, bool):
        raise TypeError(f"the default of {name} is True or False, not {default!r}")
    return Row(_name(name), "flag", default, _text(text, f"the text of {name}"))


def choice(name, words, default=None, *, text=""):
    """One of several words; the first is the default unless another one is.

    Examples
    --------
    >>> from valuenodes import rows
    >>> rows.choice("edge", ("repeat", "wrap")).default
    'repeat'
    """
    name = _name(name)
    words = tuple(words) if not isinstance(words, str) else ()
    known = all(isinstance(word, str) and word and "," not in word and word == word.strip() for word in words)
    if not words or not known or len(set(words)) != len(words):
        raise ValueError(f"the words of {name} are different strings without commas, not {words!r}")
    for word in words:
        _text(word, f"each word of {name}")
    default = words[0] if default is None else default
    if default not in words:
        raise ValueError(f"the default of {name} is one of its words, {', '.join(words)}, not {default!r}")
    return Row(name, "choice", default, _text(text, f"the text of {name}"), words=words)


def string(name, default="", *, text=""):
    """A text.

    Examples
    --------
    >>> from valuenodes import rows
    >>> rows.string("title", "map").default
    'map'
    """
    return Row(_name(name), "string", _text(default, f"the default of {name}"), _text(text, f"the text of {name}"))


def path(name, use="read", *, text=""):
    """The path of a file that the node reads or writes; `evaluate` gets it with the folder of the document in front.

    Examples
    --------
    >>> from valuenodes import rows
    >>> rows.path("table").use
    'read'
    """
    if use not in ("read", "write"):
        raise ValueError(f'the use of {name} is "read" or "write", not {use!r}')
    return Row(_name(name), "string", "", _text(text, f"the text of {name}"), use=use)


def point(name, default=(0.0, 0.0), *, text=""):
    """A point (x, y).

    Examples
    --------
    >>> from valuenodes import rows
    >>> rows.point("center", (1, 2)).default
    (1.0, 2.0)
    """
    return Row(_name(name), "point", _numbers(default, 2, "(x, y)", name), _text(text, f"the text of {name}"))


def frame(name, default=(0.0, 0.0, 0.0, 0.0), *, text=""):
    """A frame (x, y, width, height).

    Examples
    --------
    >>> from valuenodes import rows
    >>> rows.frame("crop").default
    (0.0, 0.0, 0.0, 0.0)
    """
    values = _numbers(default, 4, "(x, y, width, height)", name)
    return Row(_name(name), "frame", values, _text(text, f"the text of {name}"))


def color(name, default=(0.0, 0.0, 0.0, 1.0), *, text=""):
    """A color (red, green, blue, opacity).

    Examples
    --------
    >>> from valuenodes import rows
    >>> rows.color("ink").default
    (0.0, 0.0, 0.0, 1.0)
    """
    values = _numbers(default, 4, "(red, green, blue, opacity)", name)
    return Row(_name(name), "color", values, _text(text, f"the text of {name}"))
