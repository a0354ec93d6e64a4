# SPDX-License-Identifier: Apache-2.0
"""Every node function that computes sample by sample against plain numpy, bit for bit."""

import numpy as np
import pytest
import reference
import samples
import valuenodes as vn
from conftest import identical
from hypothesis import given
from hypothesis import strategies as st
from samples import ANY, MODES, QUARTERS, between, given_arrays

F = np.float32
NUMBERS = st.one_of(QUARTERS, st.floats(-5, 5), st.sampled_from([0.1, 1e-3, 1e9, -1e9, 0.0]))
BOUNDS = st.tuples(NUMBERS, NUMBERS).map(lambda pair: tuple(np.clip(pair, -10000, 10000)))
RANGES = st.sampled_from([(0, 1), (0, 2), (-1, 1), (0.25, 0.375), (1, 0), (0, 0), (-3.5, 1e6)])

pytestmark = pytest.mark.filterwarnings("ignore::RuntimeWarning")


def images(mode, handed_over):
    return [vn.Image(array, mode=mode) for array in handed_over]


def measured(expected):
    """What a result declares that is measured: its lowest and highest finite sample."""
    return tuple(map(float, reference.lowest_and_highest(expected, infinities=False)))


def of_one_zero(array, when):
    """Where a bound is measured: the rules do not say which of -0.0 and 0.0 is the lowest or highest sample."""
    return np.asarray(array) + F(0) if when else array


@pytest.mark.parametrize("name", reference.OPERATIONS)
@given(drawn=given_arrays(count=3), number=NUMBERS, count=st.integers(1, 3))
def test_arithmetic(name, drawn, number, count):
    mode, handed_over, plain = drawn
    constant = {"constant": number} if count == 1 else {}
    got = getattr(vn, name)(*images(mode, handed_over[:count]), **constant)
    expected = reference.arithmetic(name, number, *plain[:count])
    assert identical(got, expected)
    assert (got.mode, got.range) == (mode, measured(expected))


@given(shape=samples.SHAPES, first=MODES, second=MODES, data=st.data())
def test_modes_that_differ_are_read_as_values(shape, first, second, data):
    shapes = st.just(shape)
    _, one, plain_one = data.draw(given_arrays(modes=st.just(first), shapes=shapes))
    _, other, plain_other = data.draw(given_arrays(modes=st.just(second), shapes=shapes))
    got = vn.subtract(*images(first, one), *images(second, other))
    if first != second:
        plain_one = [reference.value_of(plain_one[0], first)]
        plain_other = [reference.value_of(plain_other[0], second)]
    assert identical(got, plain_one[0] - plain_other[0])


@given(drawn=given_arrays(), declared=RANGES, bounds=BOUNDS, auto_level=st.booleans())
def test_to_value(drawn, declared, bounds, auto_level):
    mode, handed_over, plain = drawn
    low, high = bounds
    image = vn.Image(*handed_over, mode=mode, range=declared)
    got = vn.to_value(image, low=low, high=high, auto_level=auto_level)
    expected = reference.to_value(plain[0], mode, declared, low, high, auto_level)
    assert identical(of_one_zero(got, auto_level), of_one_zero(expected, auto_level))
    assert (got.mode, got.range) == ("value", (float(F(low)), float(F(high))))


@pytest.mark.parametrize("shift", [0, 1e-5, 9.9e-5, 1.1e-4])
def test_to_value_levels_what_is_nearly_flat_from_its_nominal_low(shift):
    flat = np.array([[0.7, 0.7 + shift]], F)
    got = vn.to_value(vn.Image(flat, range=(0.5, 2)), auto_level=True)
    start = flat.min() if shift > 1e-4 else F(0.5)
    assert identical(got, (flat - start) * (F(1) / (flat.max() - start)) * F(1) + F(0))


@pytest.mark.parametrize("side", ["both", "low", "high"])
@pytest.mark.parametrize("profile", ["linear", "smooth", "perlin", "arc_out", "arc_in"])
@given(drawn=given_arrays(), bounds=BOUNDS)
def test_clamp(side, profile, drawn, bounds):
    mode, handed_over, plain = drawn
    low, high = bounds
    got = vn.clamp(vn.Image(*handed_over, mode=mode), clamp=side, low=low, high=high, profile=profile)
    expected, declared = reference.clamp(plain[0], side, low, high, profile)
    assert identical(of_one_zero(got, side != "both"), of_one_zero(expected, side != "both"))
    assert (got.mode, got.range) == ("value", tuple(map(float, declared)))


@given(drawn=given_arrays(), declared=RANGES, count=st.one_of(st.integers(2, 12), st.integers(2, 100000)))
def test_steps(drawn, declared, count):
    mode, handed_over, plain = drawn
    got = vn.steps(vn.Image(*handed_over, mode=mode, range=declared), steps=count)
    assert identical(got, reference.steps(plain[0], declared, count))
    assert (got.mode, got.range) == ("value", tuple(float(F(bound)) for bound in declared))


@pytest.mark.parametrize("word", reference.FUNCTIONS)
@given(drawn=given_arrays(makers=(*ANY, between(-10, 10))))
def test_function(word, drawn):
    mode, handed_over, plain = drawn
    got = vn.function(vn.Image(*handed_over, mode=mode), function=word)
    expected = reference.function(plain[0], word)
    assert identical(got, expected)
    assert (got.mode, got.range) == (mode, measured(expected))


@pytest.mark.parametrize("word", reference.FUNCTIONS)
def test_function_of_many_samples(word):
    generator = np.random.default_rng(8)
    many = generator.integers(0, 2**32, (40, 50), np.uint32).view(F)
    near = generator.normal(0, 3, (40, 50)).astype(F)
    for values in (many, near):
        assert identical(vn.function(values, function=word), reference.function(values, word))


CONDITIONS = vn.describe("Value Condition")["attributes"][0]["words"]


@pytest.mark.parametrize("word", CONDITIONS)
@given(drawn=given_arrays(), bounds=BOUNDS)
def test_condition(word, drawn, bounds):
    mode, handed_over, plain = drawn
    got = vn.condition(vn.Image(*handed_over, mode=mode), condition=word, a=bounds[0], b=bounds[1])
    expected = reference.condition(plain[0], word, *bounds)
    assert identical(got, expected)
    assert (got.mode, got.range) == (mode, measured(expected))


WIDTHS = st.one_of(st.integers(0, 8).map(lambda number: number / 4), st.floats(0, 4))


@pytest.mark.parametrize("profile", ["linear", "smooth", "arc_out", "arc_in"])
@given(drawn=given_arrays(), center=QUARTERS, size=WIDTHS, falloff=WIDTHS)
def test_value_range(profile, drawn, center, size, falloff):
    mode, handed_over, plain = drawn
    image = vn.Image(*handed_over, mode=mode)
    got = vn.value_range(image, center=center, size=size, falloff=falloff, profile=profile)
    assert identical(got, reference.value_range(plain[0], center, size, falloff, profile))


@given(drawn=given_arrays(count=2), precision=st.sampled_from(reference.PRECISIONS))
def test_compare(drawn, precision):
    mode, handed_over, plain = drawn
    results = vn.compare(*images(mode, handed_over), precision=precision)
    for got, expected in zip(results, reference.compare(*plain, mode, precision), strict=True):
        assert identical(got, expected)


@given(drawn=given_arrays(), data=st.data())
def test_compare_of_modes_that_differ_and_of_one_image_is_zero(drawn, data):
    mode, handed_over, plain = drawn
    image = vn.Image(*handed_over, mode=mode)
    zero = np.zeros(plain[0].shape[:2], F)
    other = data.draw(MODES.filter(lambda one: one != mode))
    plain_other = np.zeros((*zero.shape, *samples.CHANNELS[other]), F)
    for results in (vn.compare(image, None), vn.compare(image, vn.Image(plain_other, mode=other))):
        assert all(identical(got, zero) for got in results)
