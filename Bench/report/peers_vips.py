"""libvips for Bench/report: images of numpy in and out, and operations by name.

Debian 12 has libvips, but not its Python module. What that does for an operation is done here through ctypes: samples
go in without a copy, and come out as one block of memory.
"""

import ctypes
import ctypes.util
import os
import weakref

import numpy as np

FORMATS = {np.dtype(np.float32): 6, np.dtype(np.uint8): 0}
TYPES = {0: np.uint8, 4: np.uint32, 5: np.int32, 6: np.float32, 8: np.float64}
# Numbers of relations, of functions and of ways to round.
EQUAL, NOTEQ, LESS, LESSEQ, MORE, MOREEQ = range(6)
LOG = 6
CEIL, FLOOR = 1, 2
POW = 0

_vips = ctypes.CDLL(ctypes.util.find_library("vips") or "libvips.so.42")
_glib = ctypes.CDLL(ctypes.util.find_library("gobject-2.0") or "libgobject-2.0.so.0")
_vips.vips_image_new_from_memory.restype = ctypes.c_void_p
_vips.vips_image_new_from_memory.argtypes = [ctypes.c_void_p, ctypes.c_size_t, *[ctypes.c_int] * 4]
_vips.vips_image_new_matrixv.restype = ctypes.c_void_p
_vips.vips_image_write_to_memory.restype = ctypes.c_void_p
_vips.vips_image_write_to_memory.argtypes = [ctypes.c_void_p, ctypes.POINTER(ctypes.c_size_t)]
_vips.vips_error_buffer.restype = ctypes.c_char_p
for _name in ("width", "height", "format"):
    getattr(_vips, f"vips_image_get_{_name}").argtypes = [ctypes.c_void_p]
_glib.g_object_unref.argtypes = [ctypes.c_void_p]
_glib.g_free.argtypes = [ctypes.c_void_p]
if _vips.vips_init(b"peers") != 0:
    raise ImportError("libvips cannot be started")
_vips.vips_concurrency_set(int(os.environ.get("VIPS_CONCURRENCY", "0")))
# Each call computes anew.
_vips.vips_cache_set_max(0)


class Image:
    """An image of libvips, with what must outlive it."""

    def __init__(self, address, kept=None):
        if not address:
            raise RuntimeError(_vips.vips_error_buffer().decode())
        self.address = address
        self.kept = kept
        weakref.finalize(self, _glib.g_object_unref, address)


def take(array):
    array = np.ascontiguousarray(array)
    rows, columns = array.shape
    address = _vips.vips_image_new_from_memory(
        array.ctypes.data, array.nbytes, columns, rows, 1, FORMATS[array.dtype]
    )
    return Image(address, array)


def matrix(*rows):
    numbers = [ctypes.c_double(number) for row in rows for number in row]
    return Image(_vips.vips_image_new_matrixv(len(rows[0]), len(rows), *numbers))


def call(name, *arguments):
    """The one image that an operation makes: inputs, then what the operation wants after its output."""
    images = [one for one in arguments if isinstance(one, Image)]
    made = ctypes.c_void_p()
    rest = [
        ctypes.c_double(one) if isinstance(one, float) else one
        for one in arguments if not isinstance(one, Image)
    ]
    addresses = [ctypes.c_void_p(image.address) for image in images]
    # A convolution has its matrix after the output.
    late = [addresses.pop()] if name == "conv" else []
    if getattr(_vips, "vips_" + name)(*addresses, ctypes.byref(made), *late, *rest, None) != 0:
        raise RuntimeError(_vips.vips_error_buffer().decode())
    return Image(made.value, images)


def linear(image, factor, offset):
    made = ctypes.c_void_p()
    numbers = [(ctypes.c_double * 1)(number) for number in (factor, offset)]
    if _vips.vips_linear(ctypes.c_void_p(image.address), ctypes.byref(made), *numbers, 1, None) != 0:
        raise RuntimeError(_vips.vips_error_buffer().decode())
    return Image(made.value, image)


def number(name, image):
    found = ctypes.c_double()
    if getattr(_vips, "vips_" + name)(ctypes.c_void_p(image.address), ctypes.byref(found), None) != 0:
        raise RuntimeError(_vips.vips_error_buffer().decode())
    return found.value


def relation(one, other, which):
    if isinstance(other, Image):
        return call("relational", one, other, which)
    made = ctypes.c_void_p()
    constant = (ctypes.c_double * 1)(other)
    if _vips.vips_relational_const(ctypes.c_void_p(one.address), ctypes.byref(made), which, constant, 1, None) != 0:
        raise RuntimeError(_vips.vips_error_buffer().decode())
    return Image(made.value, one)


def nearest_distance(image):
    """The distance of each pixel to the nearest one that is not 0."""
    made, distance = ctypes.c_void_p(), ctypes.c_void_p()
    done = _vips.vips_fill_nearest(
        ctypes.c_void_p(image.address), ctypes.byref(made), b"distance", ctypes.byref(distance), None
    )
    if done != 0:
        raise RuntimeError(_vips.vips_error_buffer().decode())
    return Image(distance.value, [image, Image(made.value)])


def blur(image, sigma):
    """In floats, and with the longest kernel that it makes: as far as that is above a thousandth, 3.7 sigmas."""
    made = ctypes.c_void_p()
    precise = b"precision", 1, b"min_ampl", ctypes.c_double(0.001)
    arguments = ctypes.c_void_p(image.address), ctypes.byref(made), ctypes.c_double(sigma), *precise, None
    if _vips.vips_gaussblur(*arguments) != 0:
        raise RuntimeError(_vips.vips_error_buffer().decode())
    return Image(made.value, image)


def labels(image):
    made = ctypes.c_void_p()
    if _vips.vips_labelregions(ctypes.c_void_p(image.address), ctypes.byref(made), None) != 0:
        raise RuntimeError(_vips.vips_error_buffer().decode())
    return Image(made.value, image)


def give(image):
    """Computes what an image is, as an array."""
    size = ctypes.c_size_t()
    address = _vips.vips_image_write_to_memory(image.address, ctypes.byref(size))
    if not address:
        raise RuntimeError(_vips.vips_error_buffer().decode())
    kind = TYPES[_vips.vips_image_get_format(image.address)]
    shape = _vips.vips_image_get_height(image.address), _vips.vips_image_get_width(image.address)
    block = (ctypes.c_char * size.value).from_address(address)
    weakref.finalize(block, _glib.g_free, address)
    return np.frombuffer(block, kind).reshape(shape)
