"""The host's image operations, its copies and its engine, through the library that Bench/BenchCalls.cpp makes."""

import ctypes
import os
import weakref

import numpy as np

VALUE, COLOR = 2, 0
_library = None


def library():
    """Loaded when it is first needed, from the build that the environment names."""
    global _library
    if _library is None:
        _library = ctypes.CDLL(os.path.join(os.environ["VALUE_BENCH_BUILD"], "lib/value-bench-calls.so"))
        image, number = ctypes.c_void_p, ctypes.c_float
        for name, result, arguments in (
            ("error", ctypes.c_char_p, []),
            ("copy", None, [image, image, ctypes.c_size_t]),
            ("stream_copy", None, [image, image, ctypes.c_size_t]),
            ("image", image, [image, ctypes.c_int, ctypes.c_int, ctypes.c_uint]),
            ("release", None, [image]),
            ("samples", image, [image]),
            ("size", ctypes.c_int, [image, ctypes.c_int]),
            ("touch", None, [image]),
            ("blur", ctypes.c_bool, [image, image, number, ctypes.c_char]),
            ("fill", ctypes.c_bool, [image, image, number]),
            ("gradient", ctypes.c_bool, [image, image, image, ctypes.c_bool]),
            ("distance", image, [image, ctypes.c_bool, ctypes.c_bool]),
            ("grow", ctypes.c_bool, [image, image, number, ctypes.c_bool, ctypes.c_bool]),
            ("paste", image, [image, *[ctypes.c_int] * 5]),
            ("compute", image, [ctypes.c_char_p, number, image, image]),
            ("chain", image, [ctypes.c_char_p, ctypes.c_char_p, image]),
            ("chain_evaluate", ctypes.c_bool, [image]),
            ("chain_release", None, [image]),
        ):
            function = getattr(_library, "bench_" + name)
            function.restype, function.argtypes = result, arguments
    return _library


def check(done):
    if not done:
        raise RuntimeError(library().bench_error().decode())
    return done


class Image:
    """An image of the host."""

    def __init__(self, address):
        self.address = check(address)
        weakref.finalize(self, library().bench_release, address)

    def to_array(self):
        columns, rows, channels = (library().bench_size(self.address, which) for which in range(3))
        block = (ctypes.c_float * (rows * columns * channels)).from_address(library().bench_samples(self.address))
        array = np.frombuffer(block, np.float32).copy()
        return array.reshape(rows, columns) if channels == 1 else array.reshape(rows, columns, channels)


def take(array):
    rows, columns = array.shape[:2]
    mode = VALUE if array.ndim == 2 else COLOR
    return Image(library().bench_image(array.ctypes.data, columns, rows, mode))


def spare(side):
    return Image(library().bench_image(None, side, side, VALUE))


def spare_second(side):
    return spare(side)


def copy(to, source):
    library().bench_copy(to.ctypes.data, source.ctypes.data, source.size)


def stream_copy(to, source):
    library().bench_stream_copy(to.ctypes.data, source.ctypes.data, source.size)


def copy_image(image, out):
    """A copy of the samples on the host's threads."""
    size = np.prod([library().bench_size(image.address, which) for which in range(3)])
    library().bench_copy(library().bench_samples(out.address), library().bench_samples(image.address), int(size))


def blur(image, out, sigma, wraps):
    check(library().bench_blur(image.address, out.address, sigma, b"p" if wraps else b"c"))
    return out


def fill(image, mask, value):
    check(library().bench_fill(image.address, mask.address if mask else None, value))
    return image


def gradient(image, x, y, seamless):
    check(library().bench_gradient(image.address, x.address, y.address, seamless))
    return [x, y]


def distance(image, normalize, wraps):
    return Image(library().bench_distance(image.address, normalize, wraps))


def grow(image, out, radius, wraps, shrink=False):
    check(library().bench_grow(image.address, out.address, radius, wraps, shrink))
    return out


def paste(image, box, mode):
    return Image(library().bench_paste(image.address, *box, mode))


def compute(operation, constant, first, second=None):
    # A lone image's range is found anew, as for one that was just made.
    library().bench_touch(first.address)
    return Image(library().bench_compute(operation.encode(), constant, first.address, second and second.address))


class Chain:
    """Nodes one behind the other, in an engine; each is its type and attributes as NAME=VALUE."""

    def __init__(self, nodes, array):
        file = os.path.join(os.environ["VALUE_BENCH_BUILD"], "bin/Value.so")
        self.image = take(array)
        self.address = check(library().bench_chain(file.encode(), "\n".join(nodes).encode(), self.image.address))
        weakref.finalize(self, library().bench_chain_release, self.address)

    def evaluate(self):
        check(library().bench_chain_evaluate(self.address))
