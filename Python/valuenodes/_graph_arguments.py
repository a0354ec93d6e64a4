# SPDX-License-Identifier: Apache-2.0
"""What functions of graphs are given, checked."""

import numbers
import os

from ._valuenodes import Image, list_nodes


def text_of(value, function, name, example):
    if not isinstance(value, str):
        raise TypeError(f"{function}: {name} is a string like {example}, not {type(value).__name__}")
    return value


def path_of(value, function, name):
    """The bytes of a path."""
    try:
        return os.fsencode(value)
    except TypeError:
        raise TypeError(f"{function}: {name} is a string or os.PathLike, not {type(value).__name__}") from None


def type_name(node_type, function):
    """What names a node type: a name as it is, three numbers as text, a registered class by its name."""
    if isinstance(node_type, str):
        return node_type
    if isinstance(node_type, type):
        name = node_type.__name__
        if name not in list_nodes():
            raise ValueError(f"{function}: {name} is no node type yet; valuenodes.register({name}) makes it one")
        return name
    if isinstance(node_type, (tuple, list)) and len(node_type) == 3:
        if all(isinstance(number, numbers.Integral) and number >= 0 for number in node_type):
            return ", ".join(str(int(number)) for number in node_type)
    raise TypeError(
        f"{function}: a node type is its class name, its display name, three numbers like (10, 320, 5), "
        f"or a registered class, not {node_type!r}"
    )


def index_of(value, function):
    if isinstance(value, bool) or not isinstance(value, numbers.Integral):
        raise TypeError(f"{function}: index is a whole number from 0, not {value!r}")
    if not 0 <= value < 2**32:
        raise ValueError(f"{function}: index is a whole number from 0, not {value}")
    return int(value)


def image_of(value, lead, *, lists=False):
    """An image, or one made of an array; messages begin with `lead`, "write: image" for example."""
    if isinstance(value, Image):
        return value
    is_array = any(hasattr(value, name) for name in ("__array__", "__array_interface__", "__dlpack__"))
    if not is_array and not (lists and isinstance(value, (list, tuple))):
        try:
            memoryview(value)
        except TypeError:
            raise TypeError(f"{lead} takes an image or array, not {type(value).__name__}") from None
    try:
        return Image(value)
    except (TypeError, ValueError, OverflowError) as error:
        # What comes out of the code of an array's own class stays as it is.
        if error.__traceback__.tb_next is not None or type(error) not in (TypeError, ValueError, OverflowError):
            raise
        raise type(error)(f"{lead}: {str(error).removeprefix('Image: array: ')}") from None


def check_progress(progress, function):
    if progress is not None and not callable(progress):
        raise TypeError(f"{function}: progress is a function of (id, done, total), not {type(progress).__name__}")
