"""What a row of the report is, and the ways in which libraries are called."""

import importlib
import re
from dataclasses import dataclass, field
from typing import Callable

import numpy as np

#: The contenders that are not ours, in the order in which they are shown.
PEERS = {
    "numpy": "NumPy", "numexpr": "numexpr", "scipy": "SciPy", "skimage": "scikit-image", "opencv": "OpenCV",
    "libvips": "libvips", "gegl": "GEGL",
}

NAMES = {"valuenodes": "valuenodes", **PEERS, "copy": "plain copy", "stream": "streaming copy"}


@dataclass
class Case:
    name: str
    group: str
    #: What the row says of the call.
    text: str
    ours: Callable
    exact: Callable
    peers: dict = field(default_factory=dict)
    #: What differs between the contenders, in a sentence or two.
    remark: str = ""
    #: Images that must be read or written at least; a copy moves two.
    moved: float = 2
    #: The side of the image on which results are held against the definition.
    exact_side: int = 256
    #: How wide the border is that differs by what the remark says, for others.
    border: int = 0
    #: Results are numbers of regions, which others may count otherwise.
    are_labels: bool = False
    #: Others' results of 8 bits stand for 0 and 1.
    are_masks: bool = False
    #: The row of a node in the table of Docs/Python.md.
    is_plain: bool = False

    @property
    def key(self):
        return f"{self.group}/{self.name}"

    @property
    def calls(self):
        return {"valuenodes": self.ours, **self.peers}


def node(name, *inputs, **attributes):
    """A node of images that declare the range from 0 to 1; numbers stand for themselves."""

    def call(x):
        import valuenodes as vn

        images = [vn.Image(x[one], range=(0, 1)) if isinstance(one, str) else one for one in inputs]
        result = getattr(vn, name)(*images, **attributes)
        return [np.asarray(one) for one in (result if isinstance(result, tuple) else (result,))]

    return call


def color_node(name, given, **attributes):
    """A node of an image of four channels."""

    def call(x):
        import valuenodes as vn

        return [np.asarray(getattr(vn, name)(vn.Image(x[given]), **attributes))]

    return call


def host(operation):
    """An operation of the host: `operation` makes images of the library's images."""

    def call(x):
        from report import host_calls

        return operation(host_calls, x, lambda name: x.ready(host_calls.take, name))

    return call


def vips(build):
    """An operation of libvips: `build` makes images of images."""

    def call(x):
        from report import peers_vips

        made = build(peers_vips, lambda name: peers_vips.take(x[name]))
        return [peers_vips.give(one) for one in (made if isinstance(made, list) else [made])]

    return call


def gegl(operation, *inputs, **properties):
    """An operation of GEGL on buffers that are filled before, into a new buffer."""

    def call(x):
        from report import peers_gegl

        return peers_gegl.run(operation, [x.ready(peers_gegl.take, one) for one in inputs], properties)

    return call


def numexpr(text, **numbers):
    """An expression; a number written in it would make all of it double precision."""
    constants = {name: np.float32(number) for name, number in numbers.items()}

    def call(x):
        import numexpr as module

        names = [name for name in ("a", "b", "noise") if re.search(rf"\b{name}\b", text)]
        return module.evaluate(text, {**{name: x[name] for name in names}, **constants}, {})

    return call


def of_module(name, call):
    return lambda x: call(importlib.import_module(name), x)


def cv(call):
    return of_module("cv2", call)


def ndimage(call):
    return of_module("scipy.ndimage", call)


def skimage(module, call):
    return of_module("skimage." + module, call)


def arrays_of(result):
    """What a contender has made, as arrays; others keep it in images of their own."""
    several = result if isinstance(result, (list, tuple)) else [result]
    return [one.to_array() if hasattr(one, "to_array") else np.asarray(one) for one in several]
