# SPDX-License-Identifier: Apache-2.0
"""Samples that images and arrays share."""

import array as arrays
import copy
import gc
import pickle
import sys
import weakref

import numpy as np
import pytest
import valuenodes as vn
from conftest import address, misaligned, same


class Exporter:
    """Samples that only DLPack hands out, with an object that goes with the last of their users."""

    def __init__(self, array):
        self.array = array

    def __dlpack__(self, **arguments):
        return self.array.__dlpack__(**arguments)

    def __dlpack_device__(self):
        return (1, 0)


@pytest.mark.parametrize("shape", [(5, 7), (5, 7, 1), (5, 7, 2), (5, 7, 4), (1, 1), (0, 3), (3, 0)])
def test_array_lends_its_samples(shape):
    array = np.arange(np.prod(shape), dtype=np.float32).reshape(shape)
    image = vn.Image(array)
    assert address(image) == address(array)
    assert image.size == (shape[1], shape[0])
    assert same(np.asarray(image).reshape(shape), array)


@pytest.mark.parametrize("offset", [0, 4, 12, 32, 60])
def test_array_lends_its_samples_wherever_they_lie(offset):
    array = misaligned(np.ones((3, 5)), offset)
    assert array.ctypes.data % 64 == offset
    assert address(vn.Image(array)) == array.ctypes.data


def test_array_at_an_address_of_no_float_is_copied():
    memory = np.zeros(4 * 15 + 1, np.uint8)
    array = memory[1:].view(np.float32).reshape(3, 5)
    array[...] = np.arange(15).reshape(3, 5)
    image = vn.Image(array)
    assert address(image) != array.ctypes.data
    assert same(image, array)


def test_read_only_array_is_shared():
    array = np.ones((3, 5), np.float32)
    array.flags.writeable = False
    assert address(vn.Image(array)) == address(array)


def test_image_shows_what_becomes_of_the_array():
    array = np.zeros((3, 5), np.float32)
    image = vn.Image(array)
    array[1, 2] = 7
    assert np.asarray(image)[1, 2] == 7
    assert np.asarray(vn.add(image, 1))[1, 2] == 8


@pytest.mark.parametrize(
    "array",
    [
        np.arange(40, dtype=np.float32).reshape(5, 8)[:, ::2],
        np.arange(40, dtype=np.float32).reshape(5, 8)[::-1],
        np.asfortranarray(np.arange(40, dtype=np.float32).reshape(5, 8)),
        np.arange(40, dtype=np.float32).reshape(5, 8).astype(">f4"),
        np.arange(40, dtype=np.float64).reshape(5, 8),
        np.arange(30, dtype=np.float32).reshape(5, 2, 3),
    ],
    ids=["columns", "upside_down", "by_columns", "byte_order", "double", "three_channels"],
)
def test_other_arrays_are_copied(array):
    image = vn.Image(array)
    assert address(image) != address(array)
    shown = np.asarray(image)
    assert same(shown[..., :3] if array.ndim == 3 else shown, array.astype(np.float32))


def test_views_of_an_image_share_its_samples_and_cannot_be_written():
    result = vn.add(np.zeros((3, 5), np.float32), 1)
    views = [np.asarray(result), np.array(result, copy=False), result.__array__(), np.asarray(memoryview(result))]
    assert len({address(view) for view in views}) == 1
    for view in views:
        assert not view.flags.writeable
        with pytest.raises(ValueError):
            view[0, 0] = 5
    assert np.array(result).flags.writeable
    assert address(np.array(result)) != address(result)


def test_buffer_of_an_image_is_read_only():
    view = memoryview(vn.Image(np.ones((3, 5, 4), np.float32)))
    assert view.readonly and view.format == "f" and view.shape == (3, 5, 4) and view.c_contiguous


def test_dlpack_goes_both_ways_without_a_copy():
    array = np.arange(15, dtype=np.float32).reshape(3, 5)
    image = vn.Image(array)
    assert image.__dlpack_device__() == (1, 0)
    assert address(np.from_dlpack(image)) == address(array)
    assert address(vn.Image(Exporter(array))) == address(array)
    assert address(vn.Image.from_dlpack(Exporter(array))) == address(array)
    assert same(vn.add(Exporter(array), 1), array + 1)


def test_dlpack_of_the_new_form_says_read_only():
    capsule = vn.Image(np.ones((3, 5), np.float32)).__dlpack__(max_version=(1, 0))
    assert "dltensor_versioned" in repr(capsule)
    with pytest.raises(BufferError):
        vn.Image(np.ones((3, 5), np.float32)).__dlpack__(dl_device=(2, 0))


def test_buffers_that_are_no_arrays_are_shared():
    numbers = arrays.array("f", range(15))
    image = vn.Image(memoryview(numbers).cast("B").cast("f", (3, 5)))
    assert address(image) == numbers.buffer_info()[0]


def test_image_keeps_the_array_and_lets_go_of_it():
    class Array(np.ndarray):
        pass

    array = np.arange(15, dtype=np.float32).reshape(3, 5).view(Array)
    known = weakref.ref(array)
    image = vn.Image(array)
    view = np.asarray(image)
    del array, image
    gc.collect()
    assert known() is not None and view[2, 4] == 14
    del view
    gc.collect()
    assert known() is None


def test_capsule_keeps_the_samples():
    array = np.arange(15, dtype=np.float32).reshape(3, 5)
    known = weakref.ref(array)
    image = vn.Image(array)
    unused = image.__dlpack__()
    taken = np.from_dlpack(image)
    del array, image
    gc.collect()
    assert known() is not None
    del unused
    gc.collect()
    assert known() is not None and taken[0, 1] == 1
    del taken
    gc.collect()
    assert known() is None


def test_same_array_may_be_given_several_times():
    array = np.arange(15, dtype=np.float32).reshape(3, 5)
    before = sys.getrefcount(array)
    images = [vn.Image(array) for _ in range(5)]
    assert same(vn.add(array, array, *images), array * 7)
    del images[1::2]
    assert same(vn.add(*images), array * 3)
    del images
    assert sys.getrefcount(array) == before


def test_references_stay_level_over_many_calls():
    array = np.ones((4, 4), np.float32)
    word = "v_gt_a"

    def calls(count):
        for _ in range(count):
            vn.add(array, 0.5)
            np.asarray(vn.Image(array))
            np.from_dlpack(vn.Image(array))
            vn.condition(array, condition=word)
            try:
                vn.add(array, "word")
            except TypeError:
                pass

    calls(100)
    gc.collect()
    before = sys.getrefcount(array), sys.getrefcount(word), sys.getrefcount(None), len(gc.get_objects())
    calls(25000)
    gc.collect()
    after = sys.getrefcount(array), sys.getrefcount(word), sys.getrefcount(None), len(gc.get_objects())
    assert after[:2] == before[:2]
    assert abs(after[2] - before[2]) < 50 and abs(after[3] - before[3]) < 50


def test_memory_stays_level_over_many_calls():
    def resident():
        with open("/proc/self/statm") as file:
            return int(file.read().split()[1]) * 4096

    array = np.ones((256, 256), np.float32)
    for _ in range(200):
        vn.add(array, 0.5)
    before = resident()
    for _ in range(2000):
        vn.add(array, 0.5)
    # One result more in each call would be 500 MB.
    assert resident() - before < 50_000_000


def test_reroute_hands_on_the_samples_themselves():
    array = np.ones((3, 5), np.float32)
    assert address(vn.apply("Reroute", vn.Image(array, range=(0, 9)))) == address(array)


def test_copies():
    array = np.arange(15, dtype=np.float32).reshape(3, 5)
    image = vn.Image(array, pin=(3, -4), pivot=(0.5, 1), range=(0, 14), outside=2)
    shallow = copy.copy(image)
    deep = copy.deepcopy(image)
    assert shallow == image == deep
    assert address(shallow) == address(image) != address(deep)
    array[0, 0] = 99
    assert shallow == image != deep


@pytest.mark.parametrize("protocol", range(pickle.HIGHEST_PROTOCOL + 1))
def test_pickled_images_come_back_equal(protocol):
    samples = np.array([[1, np.nan], [np.inf, -0.0]], np.float32)
    image = vn.Image(samples, pin=(3, -4), pivot=(0.5, 1), range=(0, 14), outside=2)
    image = image.replace(metadata={"nodata": -9999.0, "entries": {"Artist": "somebody", "Weights": (1.5, 2.0)}})
    restored = pickle.loads(pickle.dumps(image, protocol))
    assert restored == image
    assert restored.metadata == image.metadata


def test_pickled_images_can_leave_their_samples_outside():
    image = vn.Image(np.arange(15, dtype=np.float32).reshape(3, 5))
    buffers = []
    data = pickle.dumps(image, 5, buffer_callback=buffers.append)
    assert len(buffers) == 1
    assert address(pickle.loads(data, buffers=buffers)) == address(image)


def test_functions_are_pickled_by_name():
    assert pickle.loads(pickle.dumps(vn.add)) is vn.add
