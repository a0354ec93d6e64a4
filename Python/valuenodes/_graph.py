# SPDX-License-Identifier: Apache-2.0
"""Graphs of nodes: documents that are built, changed, evaluated and saved."""

import functools
import json

from ._errors import DocumentError, ValueNodesError
from ._graph_arguments import check_progress, image_of, path_of, text_of
from ._graph_editing import GraphEditing
from ._graph_records import Findings, WrittenFile
from ._valuenodes import Document


def _takes_nothing(make):
    """Lets a constructor say what takes a document, where it is given one."""

    @functools.wraps(make)
    def checked(self, *given, **by_name):
        if given or by_name:
            first = given[0] if given else None
            way = "Graph.from_dict(document)" if isinstance(first, dict) else "Graph.load(path)"
            raise TypeError(f"Graph takes no arguments and makes an empty graph; {way} makes one of a document")
        make(self)

    return checked


class Graph(GraphEditing):
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

    __slots__ = ("__weakref__",)
    __hash__ = None

    @_takes_nothing
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
        return cls._of(Document.load(path_of(path, "load", "path"), bool(keep_unknown)))

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
        self._document.save(path_of(path, "save", "path"))

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
            content = json.dumps(document, ensure_ascii=False, allow_nan=False).encode()
        except (TypeError, ValueError) as error:
            raise DocumentError(f"graph: {error}") from None
        return cls._of(Document.from_text(content, path_of(folder, "from_dict", "folder"), "graph", bool(keep_unknown)))

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
            Neither these nodes nor what only they need is evaluated. Arrays are values as they are: uint8 is 0 to 255,
            not 0 to 1 as readers make of files.
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
            A node failed, or there is no image; `problems` has a line for each node that failed. Of a node that is a
            class of Python, `__cause__` is its exception.
        ValueError
            There is no such output.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.evaluate(graph.add("Image Waves", frame=(0, 0, 4, 2)) + ".image").size
        (4, 2)
        """
        text_of(plug, "evaluate", "plug", '"sum.image"')
        check_progress(progress, "evaluate")
        if inputs is None:
            inputs = {}
        if not hasattr(inputs, "items"):
            raise TypeError(f"evaluate: inputs is a dict of images by node, not {type(inputs).__name__}")
        given = []
        for name, image in inputs.items():
            text_of(name, "evaluate", "each key of inputs", '"height"')
            given.append((name, image_of(image, f"evaluate: inputs[{name!r}]")))
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
        check_progress(progress, "run")
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


Graph.__module__ = "valuenodes"
# Messages of Python name methods by the class that users know.
for _method in vars(GraphEditing).values():
    if isinstance(_method, type(_restore)):
        _method.__qualname__ = f"Graph.{_method.__name__}"
del _method
