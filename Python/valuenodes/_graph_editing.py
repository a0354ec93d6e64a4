# SPDX-License-Identifier: Apache-2.0
"""What a graph consists of: its nodes, connections, attributes and outputs."""

from ._graph_arguments import index_of, path_of, text_of, type_name
from ._graph_records import Connection, Output

_WORDS = {
    "type": ("auto", "float", "half", "uint16", "uint8", "int16"),
    "samples": ("unit", "stored"),
    "opacity": ("auto", "keep", "drop"),
    "metadata": ("keep", "strip"),
}


class GraphEditing:
    """The part of a graph that changes and shows what it consists of."""

    __slots__ = ("_document",)

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
            text_of(id, "add", "id", '"height"')
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
        self._document.remove(text_of(id, "remove", "id", '"height"'))

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
        self._document.rename(text_of(id, "rename", "id", '"height"'), text_of(now, "rename", "now", '"height"'))

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
        self._document.set_enabled(text_of(id, "set_enabled", "id", '"height"'), enabled)

    def is_enabled(self, id):
        """Whether a node is enabled.

        Examples
        --------
        >>> import valuenodes as vn
        >>> graph = vn.Graph()
        >>> graph.is_enabled(graph.add("Value Add"))
        True
        """
        return self._document.is_enabled(text_of(id, "is_enabled", "id", '"height"'))

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
            The plugs, "id.plug"; an id alone where the node has one output, or one image input.
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
            text_of(source, "connect", "source", '"height.image"'),
            text_of(target, "connect", "target", '"height.image"'),
            index_of(index, "connect"),
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
            text_of(source, "disconnect", "source", '"height.image"'),
            text_of(target, "disconnect", "target", '"height.image"'),
            index_of(index, "disconnect"),
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
        self._document.set(text_of(attribute, "set", "attribute", '"sum.constant"'), value)

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
        return self._document.get(text_of(attribute, "get", "attribute", '"sum.constant"'))

    # ---- Outputs ----

    def add_output(self, source, path, type="", *, samples="", opacity="", metadata="", layer=""):
        """Asks for the image of a plug as a file, which `run` writes.

        Parameters
        ----------
        source : str
            The plug, "id.plug"; an id alone where the node has one image output.
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
        text_of(layer, "add_output", "layer", '"diffuse"')
        written = path_of(path, "add_output", "path")
        source = text_of(source, "add_output", "source", '"height.image"')
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
        self._document.remove_outputs(text_of(source, "remove_output", "source", '"height.image"'))

    @property
    def outputs(self):
        """list of Output: The files that `run` writes for outputs of nodes. Nodes that write files come in addition."""
        return [Output(*output) for output in self._document.outputs()]
