# SPDX-License-Identifier: Apache-2.0
"""What holds for the whole process."""

import os
import sys

from . import _valuenodes


def set_threads(threads):
    """Sets the most threads that an operation uses.

    Parameters
    ----------
    threads : int
        From 1 on; 0 for one per core, which is how it begins. The number changes no result.
    """
    _valuenodes.set_threads(threads)


def set_max_size(columns, rows=None):
    """Sets the largest size of images; 32768 in each direction at the start.

    Parameters
    ----------
    columns, rows : int
        As many rows as columns where only these are given.
    """
    _valuenodes.set_max_size(columns, columns if rows is None else rows)


def load_library(path):
    """Loads a node library; `apply` then takes its node types.

    Parameters
    ----------
    path : str or os.PathLike
        The file. Its code runs in this process: load only what you trust.
    """
    _valuenodes.load_library(os.fspath(path))


def colormaps():
    """The names of the color ramps that `Image.to_png` and `Image.show` take.

    Returns
    -------
    list of str
    """
    return _valuenodes.list_colormaps()


def doctor():
    """What there is and whether it works: versions, node libraries, file formats and devices.

    Loads all that is otherwise loaded when it is first needed.

    Returns
    -------
    dict
        "version", "python", "numpy", "module", "threads", "libraries", "codecs" and "devices". Where something is in the
        way of a codec or a device, its "problem" is not empty.
    """
    import platform

    import numpy

    return {
        "version": _valuenodes.version,
        "python": platform.python_version(),
        "numpy": numpy.__version__,
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
