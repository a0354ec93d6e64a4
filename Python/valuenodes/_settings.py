# SPDX-License-Identifier: Apache-2.0
"""What holds for the whole process."""

import os
import sys

from . import _arguments, _valuenodes
from ._graph_arguments import path_of


def set_threads(threads):
    """Sets the most threads that an operation uses.

    Parameters
    ----------
    threads : int
        From 1 on; 0 for one per core, which is how it begins. The number changes no result.

    Examples
    --------
    >>> import valuenodes as vn
    >>> vn.set_threads(2)
    >>> vn.doctor()["threads"]
    2
    >>> vn.set_threads(0)
    """
    _valuenodes.set_threads(_arguments.read_whole("set_threads", threads))


def set_max_size(columns, rows=None):
    """Sets the largest size of images; 32768 in each direction at the start.

    Parameters
    ----------
    columns, rows : int
        As many rows as columns where only these are given.

    Examples
    --------
    >>> import valuenodes as vn
    >>> vn.set_max_size(40000, 20000)
    >>> vn.set_max_size(32768)
    """
    width = _arguments.read_whole("set_max_size: columns", columns)
    _valuenodes.set_max_size(width, width if rows is None else _arguments.read_whole("set_max_size: rows", rows))


def load_library(path, *, trust=False):
    """Loads a node library; `apply` then takes its node types.

    A process of its own examines it first, unless a file with the same content has passed before: a library that
    crashes, hangs, ends the process or prints is refused.

    Parameters
    ----------
    path : str or os.PathLike
        The file. Its code runs in this process: load only what you trust.
    trust : bool, default False
        Leaves out the examination.

    Raises
    ------
    ValueNodesError
        It cannot be loaded, or has not passed.

    Examples
    --------
    >>> import valuenodes as vn
    >>> vn.load_library("/opt/nodes/HelloNode.so")  # doctest: +SKIP
    """
    _valuenodes.load_library(os.fsdecode(path_of(path, "load_library", "path")), bool(trust))


def colormaps():
    """The names of the color ramps that `Image.to_png` and `Image.show` take.

    Returns
    -------
    list of str

    Examples
    --------
    >>> import valuenodes as vn
    >>> vn.colormaps()
    ['viridis', 'cividis', 'magma', 'terrain', 'heat', 'gray', 'blue_red']
    """
    return _valuenodes.list_colormaps()


def doctor():
    """What there is and whether it works: versions, node libraries, file formats and devices.

    Loads all that is otherwise loaded when it is first needed.

    Returns
    -------
    dict
        "version", "python", "numpy", "module", "threads", "libraries", "codecs" and "devices". Where something is in the
        way of a codec or a device, its "problem" is not empty. Without numpy, "numpy" is None.

    Examples
    --------
    >>> import valuenodes as vn
    >>> vn.doctor()["libraries"][0]["nodes"]
    20
    """
    import platform

    try:
        import numpy
    except ModuleNotFoundError:
        numpy = None

    return {
        "version": _valuenodes.version,
        "python": platform.python_version(),
        "numpy": numpy and numpy.__version__,
        "executable": sys.executable,
        "module": _valuenodes.__file__,
        "threads": _valuenodes.get_threads(),
        "libraries": _valuenodes.describe_libraries(),
        "codecs": _valuenodes.describe_codecs(),
        "devices": _valuenodes.describe_devices(),
    }


for _function in (set_threads, set_max_size, load_library, colormaps, doctor):
    _function.__module__ = "valuenodes"
del _function
