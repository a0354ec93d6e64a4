# SPDX-License-Identifier: Apache-2.0
"""Graphs of nodes: documents that are built, changed, evaluated and saved."""

import json
import numbers
import os
from collections import namedtuple

from ._errors import DocumentError, ValueNodesError
from ._valuenodes import Document, Image

_WORDS = {
    "type": ("auto", "float", "half", "uint16", "uint8", "int16"),
    "samples": ("unit", "stored"),
    "opacity": ("auto", "keep", "drop"),
    "metadata": ("keep", "strip"),
}


class Connection(namedtuple("Connection", "source target index")):
    """A connection between two plugs, each "id.plug"; `index` is its place at an input that takes many."""

    __slots__ = ()


class Output(namedtuple("Output", "source path type samples opacity metadata layer")):
    """A file that the image of a plug is written to. What is empty is left to the format."""

    __slots__ = ()


class WrittenFile(namedtuple("WrittenFile", "path size type")):
    """A file that a run has written: its path, its size (columns, rows), and what its samples are stored as."""

    __slots__ = ()


class Findings(namedtuple("Findings", "problems notes")):
    """What checking a graph has found, one line each.

    `problems` stand in the way of a run; `notes` do not.
    """

    __slots__ = ()

    @property
    def is_valid(self):
        """Whether there are no problems."""
        return not self.problems


def _text(value, function, name, example):
    if not isinstance(value, str):
        raise TypeError(f"{function}: {name} is a string like {example}, not {type(value).__name__}")
    return value


def type_name(node_type, function):
    """What names a node type: a name as it is, three numbers as text, a registered class by its name."""
    if isinstance(node_type, str):
        return node_type
    if isinstance(node_type, type):
        return node_type.__name__
    if isinstance(node_type, (tuple, list)) and len(node_type) == 3:
        if all(isinstance(number, numbers.Integral) and number >= 0 for number in node_type):
            return ", ".join(str(int(number)) for number in node_type)
    raise TypeError(
        f"{function}: a node type is its class name, its display name, three numbers like (10, 320, 5), "
        f"or a registered class, not {node_type!r}"
    )


def _index(value, function):
    if isinstance(value, bool) or not isinstance(value, numbers.Integral):
        raise TypeError(f"{function}: index is a whole number from 0, not {value!r}")
    if not 0 <= value < 2**32:
        raise ValueError(f"{function}: index is a whole number from 0, not {value}")
    return int(value)


def _as_image(value, name):
    if isinstance(value, Image):
        return value
    if not any(hasattr(value, name) for name in ("__array__", "__array_interface__", "__dlpack__")):
        try:
            memoryview(value)
        except TypeError:
            raise TypeError(
                f"evaluate: inputs[{name!r}] takes an image or array, not {type(value).__name__}"
            ) from None
    try:
        return Image(value)
    except (TypeError, ValueError) as error:
        raise type(error)(f"evaluate: inputs[{name!r}]: {error}") from None


def _check_progress(progress, function):
    if progress is not None and not callable(progress):
        raise TypeError(f"{function}: progress is a function of (id, done, total), not {type(progress).__name__}")


class Graph:
    """A graph of nodes, as a document holds it.

    Nodes are named by their ids; plugs and attributes are written "id.name". One call at a time uses a graph: a second
    one, from another thread or from within the first, is a RuntimeError. Copies are independent.

    Examples
    --------
    >>> import numpy as np
    >>> import valuenodes as vn
    >>> graph = vn.Graph()
    >>> graph.add("Reroute", "height")
    'height'
    >>> graph.add("Value Add", "raised", constant=0.25)
    'raised'
    >>> graph.connect("height.image", "raised.image")
    >>> image = graph.evaluate("raised.image", inputs={"height": np.zeros((2, 3), np.float32)})
    >>> np.asarray(image)
    array([[0.25, 0.25, 0.25],
           [0.25, 0.25, 0.25]], dtype=float32)
    """

    __slots__ = ("_document", "__weakref__")
    __hash__ = None

    def __init__(self):
        self._document = Document()

    @classmethod
    def _of(cls, document):
        graph = cls.__new__(cls)
        graph._document = document
        return graph

    # ---- Documents ----

    @classmethod
    def load(cls, path, *, keep_unknown=False):
        """Reads a document.

        Parameters
        ----------
        path : str or os.PathLike
            The file. Relative paths in it start from its folder.
        keep_unknown : bool, default False
            Whether nodes of a type that is not known here are kept: they are saved again as they were and cannot be
            evaluated. Otherwise they are an error.

        Raises
        ------
        FileError
            The file could not be read.
        DocumentError
            The document is invalid; `problems` has all that is wrong with it.

        Examples
        --------
        >>> import os, tempfile
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> with tempfile.TemporaryDirectory() as folder:
        ...     graph.save(os.path.join(folder, "empty.json"))
        ...     vn.Graph.load(os.path.join(folder, "empty.json")) == graph
        True
        """
        return cls._of(Document.load(os.fsencode(path), bool(keep_unknown)))

    def save(self, path):
        """Writes the document to a file, whole or not at all.

        Paths in it stay as they are written; relative ones start from the folder of this file from now on.

        Parameters
        ----------
        path : str or os.PathLike
            The file.

        Raises
        ------
        FileError
            The file could not be written.

        Examples
        --------
        >>> import os, tempfile
        >>> import valuenodes as vn
        >>> with tempfile.TemporaryDirectory() as folder:
        ...     vn.Graph().save(os.path.join(folder, "empty.json"))
        ...     os.listdir(folder)
        ['empty.json']
        """
        self._document.save(os.fsencode(path))

    def to_dict(self):
        """The document as dictionaries, lists, strings and numbers, as its file has them.

        Returns
        -------
        dict

        Examples
        --------
        >>> import valuenodes as vn
        >>> vn.Graph().to_dict()
        {'format': 'value-graph', 'version': 2, 'nodes': []}
        """
        return json.loads(self._document.write())

    @classmethod
    def from_dict(cls, document, *, folder="", keep_unknown=False):
        """The way back from `to_dict`.

        Parameters
        ----------
        document : dict
            The document.
        folder : str or os.PathLike, optional
            Where relative paths in it start; the working directory when there is none.
        keep_unknown : bool, default False
            As for `load`.

        Raises
        ------
        DocumentError
            The document is invalid.

        Examples
        --------
        >>> import valuenodes as vn
        >>> nodes = [{"id": "sum", "type": "Value Add"}]
        >>> vn.Graph.from_dict({"format": "value-graph", "version": 2, "nodes": nodes})
        Traceback (most recent call last):
        valuenodes.DocumentError: graph: node "sum": there is no node type "Value Add"; the closest is "ImageValueAddNode"
        """
        if not isinstance(document, dict):
            raise TypeError(f"from_dict takes a dict as to_dict gives it, not {type(document).__name__}")
        try:
            text = json.dumps(document, ensure_ascii=False, allow_nan=False)
            content = text.encode()
        except (TypeError, ValueError) as error:
            raise DocumentError(f"graph: {error}") from None
        return cls._of(Document.from_text(content, os.fsencode(folder), "graph", bool(keep_unknown)))

    # ---- Nodes ----

    def add(self, type, id=None, **attributes):
        """Adds a node.

        Parameters
        ----------
        type : str, tuple of int, or class
            The node type: its display name ("Value Add"), its class name ("ImageValueAddNode"), its three numbers, or a
            class that was registered.
        id : str, optional
            What names the node in the graph; made of the display name when none is given.
        **attributes
            Its attributes by name.

        Returns
        -------
        str
            The id.

        Raises
        ------
        ValueError
            There is no such type, the id is taken or none, or a value is out of bounds.
        TypeError
            There is no such attribute, or a value is of another kind.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.add("Value Clamp", low=0.1), graph.add("Value Clamp")
        ('value_clamp', 'value_clamp2')
        """
        if id is not None:
            _text(id, "add", "id", '"height"')
        return self._document.add(type_name(type, "add"), id, attributes)

    def remove(self, id):
        """Removes a node with its connections and outputs.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.remove(graph.add("Value Add"))
        >>> graph.nodes
        {}
        """
        self._document.remove(_text(id, "remove", "id", '"height"'))

    def rename(self, id, now):
        """Gives a node another id; connections and outputs follow.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.rename(graph.add("Value Add"), "sum")
        >>> graph.nodes
        {'sum': 'ImageValueAddNode'}
        """
        self._document.rename(_text(id, "rename", "id", '"height"'), _text(now, "rename", "now", '"height"'))

    def set_enabled(self, id, enabled):
        """Enables a node, or disables it: most then hand on their first image.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.set_enabled(graph.add("Value Add", "sum"), False)
        >>> graph.is_enabled("sum")
        False
        """
        if not isinstance(enabled, bool):
            raise TypeError(f"set_enabled: enabled is True or False, not {enabled!r}")
        self._document.set_enabled(_text(id, "set_enabled", "id", '"height"'), enabled)

    def is_enabled(self, id):
        """Whether a node is enabled.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.is_enabled(graph.add("Value Add"))
        True
        """
        return self._document.is_enabled(_text(id, "is_enabled", "id", '"height"'))

    @property
    def nodes(self):
        """dict of str: The class name of each node's type by the node's id, in the order of the document.

        None is the type of a node that is unknown here.
        """
        return dict(self._document.nodes())

    # ---- Connections ----

    def connect(self, source, target, index=0):
        """Connects an output to an input, or to an attribute.

        Parameters
        ----------
        source, target : str
            The plugs, "id.plug".
        index : int, default 0
            The place among the connections of an input that takes many.

        Raises
        ------
        ValueError
            There is no such plug, they are of different kinds, the input is taken, or it would close a cycle.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.connect(graph.add("Value Add", "a") + ".image", graph.add("Value Add", "b") + ".image")
        >>> graph.connections
        [Connection(source='a.image', target='b.image', index=0)]
        """
        self._document.connect(
            _text(source, "connect", "source", '"height.image"'),
            _text(target, "connect", "target", '"height.image"'),
            _index(index, "connect"),
        )

    def disconnect(self, source, target, index=0):
        """Removes exactly this connection.

        Raises
        ------
        ValueError
            There is none.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.connect(graph.add("Value Add", "a") + ".image", graph.add("Value Add", "b") + ".image")
        >>> graph.disconnect("a.image", "b.image")
        >>> graph.connections
        []
        """
        self._document.disconnect(
            _text(source, "disconnect", "source", '"height.image"'),
            _text(target, "disconnect", "target", '"height.image"'),
            _index(index, "disconnect"),
        )

    @property
    def connections(self):
        """list of Connection: All connections, in the order in which they were made."""
        return [Connection(*connection) for connection in self._document.connections()]

    # ---- Attributes ----

    def set(self, attribute, value):
        """Sets an attribute.

        Parameters
        ----------
        attribute : str
            "id.attribute".
        value
            Of the attribute's kind. Numbers beyond its bounds are refused.

        Raises
        ------
        ValueError
            There is no such attribute, a number is out of bounds, or a word is not among those of a choice.
        TypeError
            The value is of another kind.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.set(graph.add("Value Add", "sum") + ".constant", 0.5)
        >>> graph.get("sum.constant")
        0.5
        """
        self._document.set(_text(attribute, "set", "attribute", '"sum.constant"'), value)

    def get(self, attribute):
        """The value of an attribute, or all values of a node.

        Parameters
        ----------
        attribute : str
            "id.attribute"; an id alone for a dict of all.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.get(graph.add("Value Add"))
        {'constant': 0.0}
        """
        return self._document.get(_text(attribute, "get", "attribute", '"sum.constant"'))

    # ---- Outputs ----

    def add_output(self, source, path, type="", *, samples="", opacity="", metadata="", layer=""):
        """Asks for the image of a plug as a file, which `run` writes.

        Parameters
        ----------
        source : str
            The plug, "id.plug".
        path : str or os.PathLike
            The file. A relative one starts from the folder of the document; from the working directory while the graph
            has been neither loaded nor saved.
        type : {"", "auto", "float", "half", "uint16", "uint8", "int16"}
            What the samples are stored as; empty for the format's choice.
        samples, opacity, metadata, layer : str
            As for `valuenodes.write`; empty for the format's choice.

        Raises
        ------
        ValueError
            There is no such plug, or a word is not among those listed.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.add_output(graph.add("Image Waves", "waves") + ".image", "waves.exr", "half")
        >>> [(output.source, output.path, output.type) for output in graph.outputs]
        [('waves.image', 'waves.exr', 'half')]
        """
        given = {"type": type, "samples": samples, "opacity": opacity, "metadata": metadata}
        for name, word in given.items():
            if word != "" and word not in _WORDS[name]:
                words = ", ".join(f'"{known}"' for known in _WORDS[name])
                raise ValueError(f"add_output: {name} takes {words}, not {word!r}")
        _text(layer, "add_output", "layer", '"diffuse"')
        written = os.fsencode(path)
        source = _text(source, "add_output", "source", '"height.image"')
        self._document.add_output(source, written, type, samples, opacity, metadata, layer)

    def remove_output(self, source):
        """Removes the requests for the files of a plug.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.add_output(graph.add("Image Waves", "waves") + ".image", "waves.exr")
        >>> graph.remove_output("waves.image")
        >>> graph.outputs
        []
        """
        self._document.remove_outputs(_text(source, "remove_output", "source", '"height.image"'))

    @property
    def outputs(self):
        """list of Output: The files that `run` writes for outputs of nodes. Nodes that write files come in addition."""
        return [Output(*output) for output in self._document.outputs()]

    # ---- Evaluation ----

    def check(self):
        """Finds what would be in the way of a run, without evaluating anything.

        Returns
        -------
        Findings
            A named tuple of `problems` and `notes`, each a tuple of lines.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.add_output(graph.add("Value Add", "sum") + ".image", "sum.exr")
        >>> graph.check().problems
        ('output "sum.image" cannot have an image: no input of "sum" is connected',)
        """
        problems, notes = self._document.check()
        return Findings(tuple(problems), tuple(notes))

    def evaluate(self, plug, inputs=None, progress=None, *, keep=False):
        """The image of an output.

        Evaluates what it needs and writes no file. The interpreter's lock is released; Ctrl-C stops it.

        Parameters
        ----------
        plug : str
            The output, "id.plug"; an id alone where the node has one image output.
        inputs : dict, optional
            Images or arrays that stand in for image outputs, by "id.plug" or, where there is one such output, by id.
            Neither these nodes nor what only they need is evaluated.
        progress : callable, optional
            Called with (id, done, total) after each node. An exception stops the evaluation and comes out.
        keep : bool, default False
            Whether the graph keeps the results of all nodes, so that the next call computes only what has changed.
            Not together with `inputs`.

        Returns
        -------
        Image

        Raises
        ------
        NodeError, FileError
            A node failed, or there is no image; `problems` has a line for each node that failed.
        ValueError
            There is no such output.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.evaluate(graph.add("Image Waves", frame=(0, 0, 4, 2)) + ".image").size
        (4, 2)
        """
        _text(plug, "evaluate", "plug", '"sum.image"')
        _check_progress(progress, "evaluate")
        if inputs is None:
            inputs = {}
        if not hasattr(inputs, "items"):
            raise TypeError(f"evaluate: inputs is a dict of images by node, not {type(inputs).__name__}")
        given = []
        for name, image in inputs.items():
            given.append((_text(name, "evaluate", "each key of inputs", '"height"'), _as_image(image, name)))
        if keep and given:
            raise ValueError("evaluate: keep and inputs do not go together, as results of inputs are never kept")
        return self._document.evaluate(plug, given, progress, bool(keep))

    def run(self, progress=None):
        """Writes all outputs, and what nodes that write files write.

        Parameters
        ----------
        progress : callable, optional
            As for `evaluate`.

        Returns
        -------
        list of WrittenFile
            What was written.

        Raises
        ------
        DocumentError
            The graph cannot be run; `problems` says why.
        NodeError, FileError
            A node or a file failed. The other outputs are written all the same, and are in `written` of the error.

        Examples
        --------
        >>> import os, tempfile
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.add("Image Waves", "waves", frame=(0, 0, 4, 2))
        'waves'
        >>> with tempfile.TemporaryDirectory() as folder:
        ...     graph.add_output("waves.image", os.path.join(folder, "waves.exr"))
        ...     [(os.path.basename(file.path), file.size, file.type) for file in graph.run()]
        [('waves.exr', (4, 2), 'float')]
        """
        _check_progress(progress, "run")
        try:
            return [WrittenFile(*file) for file in self._document.run(progress)]
        except OSError as error:
            _name_written(error)
            raise
        except Exception as error:
            _name_written(error)
            raise

    # ---- Pictures ----

    def to_svg(self):
        """A picture of the graph, laid out by Graphviz' program ``dot`` (Debian's package ``graphviz``).

        Nodes show their type, their id and the attributes that are not default; disabled nodes and those with problems
        are marked. The kinds of wires differ in style and color, and the page behind it may be light or dark. Notebooks
        show it where a cell ends with a graph.

        Returns
        -------
        str
            The picture as SVG.

        Raises
        ------
        ValueNodesError
            The program is not there, or it failed.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.add("Image Waves", "waves")
        'waves'
        >>> "waves" in graph.to_svg()
        True
        """
        return self._document.to_svg()

    def _repr_svg_(self):
        try:
            return self.to_svg()
        except ValueNodesError:
            return None

    # ---- Python ----

    def __repr__(self):
        return self._document.describe()

    def __eq__(self, other):
        if not isinstance(other, Graph):
            return NotImplemented
        if other is self:
            return True
        return self._state() == other._state()

    def _state(self):
        return self._document.write(), self._document.folder()

    def __copy__(self):
        return _restore(type(self), *self._state())

    def __deepcopy__(self, memo):
        return self.__copy__()

    def __reduce__(self):
        return _restore, (type(self), *self._state())


def _name_written(error):
    if hasattr(error, "written"):
        error.written = tuple(WrittenFile(*file) for file in error.written)


def _restore(graph_class, content, folder):
    return graph_class._of(Document.from_text(content, folder, "graph", True))


for _class in (Graph, Connection, Output, WrittenFile, Findings):
    _class.__module__ = "valuenodes"
del _class
