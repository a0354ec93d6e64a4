# SPDX-License-Identifier: Apache-2.0
"""Samples at any address of a float give the results that aligned ones give, bit for bit."""

import cases
import numpy as np
import pytest
import valuenodes as vn
from conftest import misaligned

SMALL = [(5, 9), (23, 31)]


def fields(shape, channels=None):
    generator = np.random.default_rng(11)
    whole = shape if channels is None else (*shape, channels)
    return [generator.random(whole, dtype=np.float32) for _ in range(3)]


def results(case, samples, offset, mode=None):
    arrays = [misaligned(one, offset + 4 * place if offset else 0) for place, one in enumerate(samples)]
    assert all((array.ctypes.data % 64 == 0) == (offset == 0) for array in arrays)
    return [np.asarray(one).tobytes() for one in cases.call(case, [vn.Image(array, mode) for array in arrays])]


@pytest.mark.parametrize("case", cases.CASES, ids=cases.NAMES)
def test_every_node_takes_any_address(case):
    for shape in SMALL:
        samples = fields(shape)
        expected = results(case, samples, 0)
        for offset in (4, 16, 32, 52):
            assert results(case, samples, offset) == expected


@pytest.mark.parametrize("mode", ["color", "signed", "pair"])
@pytest.mark.parametrize("case", cases.CASES, ids=cases.NAMES)
def test_every_node_takes_any_address_of_pixels(case, mode):
    samples = fields((9, 13), 2 if mode == "pair" else 4)
    assert results(case, samples, 4, mode) == results(case, samples, 0, mode)


@pytest.mark.parametrize("name", ["add", "to_value", "compare", "gradient", "condition", "component_edges"])
def test_large_images_take_any_address(name):
    # Large enough that results are written past the processor's caches, and rows of an odd number of samples.
    case = next(case for case in cases.CASES if case[0] == name)
    samples = fields((1501, 1499))
    assert results(case, samples, 4) == results(case, samples, 0)
