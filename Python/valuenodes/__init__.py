# SPDX-License-Identifier: Apache-2.0
"""Image nodes that read float samples as values.

Every node type is a function of images or arrays:

>>> import numpy as np
>>> import valuenodes as vn
>>> raised = vn.add(np.zeros((2, 3), np.float32), 0.25)
>>> np.asarray(raised)
array([[0.25, 0.25, 0.25],
       [0.25, 0.25, 0.25]], dtype=float32)
"""

from . import _interpreter

try:
    from ._valuenodes import version as __version__
except ImportError as _error:
    from ._missing import explain as _explain

    raise _explain(_error) from None
from ._classes import Node, register
from ._errors import (
    DocumentError,
    FileError,
    FilePermissionError,
    MissingFileError,
    NodeError,
    ValueNodesError,
    ValueNodesWarning,
)
from ._image import Image
from . import _functions
from ._functions import *
from ._files import write
from ._graph import Graph
from ._graph_records import Connection, Findings, Output, WrittenFile
from ._nodes import apply, describe, nodes
from ._settings import colormaps, doctor, load_library, set_max_size, set_threads

__all__ = [
    "Connection",
    "DocumentError",
    "FileError",
    "FilePermissionError",
    "Findings",
    "Graph",
    "Image",
    "MissingFileError",
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
    *_functions.__all__,
]


def __getattr__(name):
    # Loaded when it is first used, with what it needs of Python.
    if name != "rows":
        raise AttributeError(f"module {__name__!r} has no attribute {name!r}")
    import importlib

    return importlib.import_module(".rows", __name__)


def __dir__():
    # What is there for others, and none of the modules that it lies in.
    return sorted({*__all__, *(name for name in globals() if name.startswith("__"))})
