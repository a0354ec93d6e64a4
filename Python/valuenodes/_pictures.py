# SPDX-License-Identifier: Apache-2.0
"""Images as pictures to look at."""

import importlib
import subprocess
import sys
import tempfile

from . import _arguments, _valuenodes

# Larger pictures than this make a notebook slow, and show no more on a screen.
_MOST = 1024


def to_png(image, *, range=None, colormap=None, size=None):
    """See `Image.to_png`."""
    most = max(*image.size, 1) if size is None else _arguments.read_whole("to_png: size", size)
    if most < 1:
        raise ValueError(f"to_png: size is at least 1, not {most}")
    shown = _arguments.read_shown_range("to_png: range", range)
    return _valuenodes.draw(image, shown, _arguments.read_word("to_png: colormap", colormap), most)


def repr_png(image):
    """What notebooks show; None where there is nothing to show."""
    return to_png(image, size=_MOST) if min(image.size) > 0 else None


def show(image, *, range=None, colormap=None):
    """See `Image.show`."""
    # In a notebook it is loaded; elsewhere nobody waits for it.
    ipython = sys.modules.get("IPython")
    shell = ipython.get_ipython() if ipython is not None else None
    if shell is not None and hasattr(shell, "kernel"):
        display = importlib.import_module("IPython.display")
        display.display(display.Image(data=to_png(image, range=range, colormap=colormap, size=_MOST)))
        return
    _show_file(to_png(image, range=range, colormap=colormap))


def _show_file(png):
    with tempfile.NamedTemporaryFile(prefix="valuenodes-", suffix=".png", delete=False) as file:
        file.write(png)
    try:
        subprocess.Popen(["xdg-open", file.name], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    except OSError as error:
        raise RuntimeError(f"there is no viewer of pictures; the picture is {file.name}") from error
