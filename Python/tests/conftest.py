# SPDX-License-Identifier: Apache-2.0
"""What the tests of the package share."""

import numpy as np
import pytest
from hypothesis import settings

# The same examples in every run, and no limit of time: the machine may be busy.
settings.register_profile("value", derandomize=True, deadline=None, max_examples=40, database=None)
# Other examples in every run, and many: pytest --hypothesis-profile=thorough
settings.register_profile("thorough", deadline=None, max_examples=2000, database=None)
settings.load_profile("value")


@pytest.fixture
def field():
    """A small height field with values from 0 to 1."""
    return np.random.default_rng(7).random((23, 31), dtype=np.float32)


def address(array):
    return np.asarray(array).__array_interface__["data"][0]


def misaligned(array, offset=4):
    """The same float32 samples at an address that is `offset` bytes beyond a multiple of 64."""
    array = np.ascontiguousarray(array, np.float32)
    memory = np.empty(array.nbytes + 128, np.uint8)
    start = -memory.ctypes.data % 64 + offset
    placed = memory[start : start + array.nbytes].view(np.float32).reshape(array.shape)
    placed[...] = array
    return placed


def same(one, other):
    """Equal sample for sample, NaN being equal to NaN and -0.0 to 0.0."""
    return np.array_equal(np.asarray(one), np.asarray(other), equal_nan=True)


def identical(one, other):
    """The same single-precision samples to the bit, -0.0 and 0.0 being two; any NaN is any other."""
    one, other = np.asarray(one), np.asarray(other)
    if one.dtype != np.float32 or other.dtype != np.float32 or one.shape != other.shape:
        return False
    bits = one.ravel().view(np.uint32) == other.ravel().view(np.uint32)
    return bool(np.all(bits | (np.isnan(one) & np.isnan(other)).ravel()))
