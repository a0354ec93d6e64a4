# SPDX-License-Identifier: Apache-2.0
"""Functions that evaluate one node."""

import functools

from ._graph_arguments import type_name
from ._valuenodes import NodeFunction, describe_node, list_nodes

_applied = {}


def node_function(type, result=None, first=None):
    """Makes a function of a definition that says what it takes and what it does.

    The definition's signature and text are what people and editors see; its body is never run. What is called is the
    node type, which checks what it is given itself. `first` is an attribute that is given first and without its name,
    in the place of images.
    """

    def decorate(definition):
        call = NodeFunction(type, definition.__name__, result)
        if first is None:

            def function(*images, **attributes):
                return call(*images, **attributes)

        else:

            def function(value, **attributes):
                return call(**{first: value}, **attributes)

        functools.update_wrapper(function, definition)
        function.__module__ = "valuenodes"
        return function

    return decorate


def apply(name, /, *images, **attributes):
    """Applies a node of any type to images.

    Parameters
    ----------
    name : str, tuple of int, or class
        The node type: its class name ("ImageValueAddNode"), its display name ("Value Add"), its three numbers
        (10, 320, 5), or a class that was registered. It may be of any library that is loaded.
    *images : Image or array
        What its inputs are given, in their order.
    **attributes
        Its attributes by name; an input may be given by name as well.

    Returns
    -------
    Image
        A named tuple where the node has several outputs, with fields named after them; None where it has none.

    Raises
    ------
    ValueError
        There is no such type, a number is out of bounds, or a word is not among those of a choice.
    TypeError
        An image, an attribute or its kind is wrong.
    NodeError, FileError
        The node could not be evaluated.

    Examples
    --------
    >>> import numpy as np
    >>> import valuenodes as vn
    >>> vn.apply("Value Add", np.zeros((2, 3), np.float32), constant=0.25).size
    (3, 2)
    """
    name = type_name(name, "apply")
    function = _applied.get(name)
    if function is None:
        function = _applied[name] = NodeFunction(name, name)
    return function(*images, **attributes)


def nodes():
    """The class names of all node types there are, the host's own first.

    Returns
    -------
    list of str

    Examples
    --------
    >>> import valuenodes as vn
    >>> "ImageValueAddNode" in vn.nodes()
    True
    """
    return list_nodes()


def describe(name):
    """All that is known of a node type: its sentence, inputs, outputs and attributes.

    Parameters
    ----------
    name : str, tuple of int, or class
        The node type, as for `apply`.

    Returns
    -------
    dict

    Examples
    --------
    >>> import valuenodes as vn
    >>> steps = vn.describe("Value Steps")["attributes"][0]
    >>> steps["name"], steps["lowest"], steps["highest"]
    ('steps', 2.0, 100000.0)
    """
    return describe_node(type_name(name, "describe"))


apply.__module__ = nodes.__module__ = describe.__module__ = "valuenodes"
