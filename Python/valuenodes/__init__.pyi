from . import _functions, rows as rows
from ._classes import Node as Node, register as register
from ._errors import (
    DocumentError as DocumentError,
    FileError as FileError,
    NodeError as NodeError,
    ValueNodesError as ValueNodesError,
    ValueNodesWarning as ValueNodesWarning,
)
from ._files import write as write
from ._functions import *
from ._graph import Graph as Graph
from ._graph_records import (
    Connection as Connection,
    Findings as Findings,
    Output as Output,
    WrittenFile as WrittenFile,
)
from ._nodes import apply as apply, describe as describe, nodes as nodes
from ._settings import (
    colormaps as colormaps,
    doctor as doctor,
    load_library as load_library,
    set_max_size as set_max_size,
    set_threads as set_threads,
)
from ._valuenodes import Image as Image

__version__: str

__all__ = [
    "Connection",
    "DocumentError",
    "FileError",
    "Findings",
    "Graph",
    "Image",
    "Node",
    "NodeError",
    "Output",
    "ValueNodesError",
    "ValueNodesWarning",
    "WrittenFile",
    "apply",
    "colormaps",
    "describe",
    "doctor",
    "load_library",
    "nodes",
    "register",
    "rows",
    "set_max_size",
    "set_threads",
    "write",
]
__all__ += _functions.__all__
