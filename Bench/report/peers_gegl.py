"""GEGL for the report: buffers of numpy's samples, and one operation from buffers into a new buffer."""

import os

import gi
import numpy as np

gi.require_version("Gegl", "0.4")
from gi.repository import Gegl  # noqa: E402

# The number of threads is read at the start alone.
os.environ.setdefault("GEGL_THREADS", "1")
Gegl.init(None)
_config = Gegl.config()
_config.set_property("use-opencl", False)
# Nothing goes to disk.
_config.set_property("swap", "RAM")
_config.set_property("tile-cache-size", 16 << 30)

FORMAT = "Y float"


class Result:
    """A buffer that was computed."""

    def __init__(self, buffer):
        self.buffer = buffer

    def to_array(self):
        extent = self.buffer.get_extent()
        samples = self.buffer.get(extent, 1.0, FORMAT, Gegl.AbyssPolicy.NONE)
        return np.frombuffer(samples, np.float32).reshape(extent.height, extent.width)


def take(array):
    rows, columns = array.shape
    buffer = Gegl.Buffer.new(FORMAT, 0, 0, columns, rows)
    # In strips: one call takes no more bytes than 31 bits count.
    step = max(1, (1 << 28) // (columns * 4))
    for top in range(0, rows, step):
        strip = np.ascontiguousarray(array[top : top + step])
        buffer.set(Gegl.Rectangle.new(0, top, columns, len(strip)), FORMAT, strip.tobytes())
    return buffer


def run(operation, buffers, properties):
    graph = Gegl.Node()
    node = graph.create_child(operation)
    for name, value in properties.items():
        node.set_property(name.replace("_", "-"), value)
    for pad, buffer in zip(("input", "aux"), buffers):
        source = graph.create_child("gegl:buffer-source")
        source.set_property("buffer", buffer)
        source.connect_to("output", node, pad)
    extent = buffers[0].get_extent()
    result = Gegl.Buffer.new(FORMAT, 0, 0, extent.width, extent.height)
    sink = graph.create_child("gegl:write-buffer")
    sink.set_property("buffer", result)
    node.connect_to("output", sink, "input")
    sink.process()
    return Result(result)


def get_version():
    return "{}.{}.{}".format(*Gegl.get_version())
