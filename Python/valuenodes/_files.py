# SPDX-License-Identifier: Apache-2.0
"""Image files."""

import builtins
import os

from . import _valuenodes
from ._graph_arguments import image_of, path_of

_WORDS = {
    "type": ("float", "half", "uint16", "uint8", "int16"),
    "samples": ("unit", "stored"),
    "opacity": ("auto", "keep", "drop"),
    "metadata": ("keep", "strip"),
}


def _is_path(value):
    return isinstance(value, (str, bytes, os.PathLike))


def _type_name(value):
    return builtins.type(value).__name__


def write(path, image, type=None, *, samples="unit", opacity="auto", metadata="keep", layer="", compression=""):
    """Writes an image to a file, whole or not at all.

    The ending of the name says which format it is. The folder must exist.

    Parameters
    ----------
    path : str or os.PathLike
        The file.
    image : Image or array
        What is written.
    type : {"float", "half", "uint16", "uint8", "int16"}, optional
        What the samples are stored as. Without one, the first of these that the format has, but for int16; one that
        the format lacks becomes the nearest that it has, with a warning.
    samples : {"unit", "stored"}, default "unit"
        Whether integers hold the value times the type's largest number, or the value itself.
    opacity : {"auto", "keep", "drop"}, default "auto"
        Whether opacity is written; "auto" leaves it out where the image comes from files without it.
    metadata : {"keep", "strip"}, default "keep"
        Whether what the image carries of its file is written.
    layer : str, default ""
        The layer of an EXR that the channels belong to.
    compression : str, default ""
        How the samples are packed, in the format's words; empty for the format's choice.

    Raises
    ------
    FileError
        The file could not be written.
    ValueError
        A word is not among those listed.

    Examples
    --------
    >>> import os, tempfile
    >>> import numpy as np
    >>> import valuenodes as vn
    >>> with tempfile.TemporaryDirectory() as folder:
    ...     vn.write(os.path.join(folder, "flat.exr"), np.zeros((2, 3), np.float32))
    ...     vn.read(os.path.join(folder, "flat.exr")).size
    (3, 2)
    """
    if _is_path(image) and not _is_path(path):
        raise TypeError("write takes the path first and the image second: write(path, image)")
    file = path_of(path, "write", "path")
    given = {"type": type, "samples": samples, "opacity": opacity, "metadata": metadata}
    for name, word in given.items():
        if word not in _WORDS[name] and not (name == "type" and word is None):
            words = ", ".join(f'"{known}"' for known in _WORDS[name])
            raise ValueError(f"write: {name} takes {words}, not {word!r}")
    for name, word in {"layer": layer, "compression": compression}.items():
        if not isinstance(word, str):
            raise TypeError(f"write: {name} is a string, not {_type_name(word)}")
    image = image_of(image, "write: image", lists=True)
    _valuenodes.write(image, file, type or "", samples, opacity, metadata, layer, compression)


write.__module__ = "valuenodes"
