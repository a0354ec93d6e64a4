# SPDX-License-Identifier: Apache-2.0
"""Every node function against plain numpy: bit for bit where the pages of the nodes leave no rounding open."""

import numpy as np
import pytest
import reference
import valuenodes as vn
from conftest import same
from hypothesis import given
from hypothesis import strategies as st
from hypothesis.extra import numpy as arrays

F = np.float32
QUARTERS = st.integers(-12, 12).map(lambda number: number / 4)
SHAPES = arrays.array_shapes(min_dims=2, max_dims=2, min_side=1, max_side=9)


def images_of(values=QUARTERS, count=1, shapes=SHAPES):
    def of_shape(shape):
        return st.tuples(*[arrays.arrays(F, shape, elements=values) for _ in range(count)])

    return shapes.flatmap(of_shape)


@pytest.fixture
def heights():
    return np.random.default_rng(5).random((14, 17), dtype=F)


@pytest.fixture
def colors():
    return np.random.default_rng(6).random((6, 7, 4), dtype=F)


ARITHMETIC = {
    "add": np.add,
    "subtract": np.subtract,
    "multiply": np.multiply,
    "divide": np.divide,
    "minimum": np.minimum,
    "maximum": np.maximum,
}


@pytest.mark.parametrize("name", ARITHMETIC)
@given(images=images_of(count=3), number=QUARTERS, count=st.integers(1, 3))
def test_arithmetic(name, images, number, count):
    with np.errstate(all="ignore"):
        expected = reference.fold(ARITHMETIC[name], number, *images[:count])
    given_number = {"constant": number} if count == 1 else {}
    assert same(getattr(vn, name)(*images[:count], **given_number), expected)


@pytest.mark.parametrize("name", ARITHMETIC)
def test_arithmetic_of_every_channel(name, colors):
    other = colors[::-1].copy()
    assert same(getattr(vn, name)(colors, other), ARITHMETIC[name](colors, other))


@given(images=images_of(count=3), count=st.integers(1, 3))
def test_power(images, count):
    with np.errstate(all="ignore"):
        expected = reference.power(*images[:count])
    assert same(vn.power(*images[:count]), expected)


@pytest.mark.parametrize("mode", ["color", "signed"])
def test_modes_that_differ_are_read_as_values(mode, colors, heights):
    image = vn.Image(colors, mode=mode)
    value = heights[:6, :7]
    assert same(vn.add(image, value), reference.value_of(colors, mode) + value)


@pytest.mark.parametrize("auto_level", [False, True])
def test_to_value(auto_level, heights, colors):
    for samples, mode in ((heights, "value"), (colors, "color"), (colors, "signed")):
        image = vn.Image(samples, mode=mode, range=(0, 2))
        got = vn.to_value(image, low=2, high=5, auto_level=auto_level)
        expected = reference.to_value(samples, mode, (0, 2), 2, 5, auto_level)
        assert got.mode == "value" and got.range == (2, 5)
        np.testing.assert_allclose(got, expected, rtol=0, atol=2e-6)


@pytest.mark.parametrize("side", ["both", "low", "high"])
@pytest.mark.parametrize("profile", ["linear", "smooth", "perlin", "arc_out", "arc_in"])
def test_clamp(side, profile, heights):
    got = vn.clamp(heights, clamp=side, low=0.25, high=0.75, profile=profile)
    expected = reference.clamp(heights, side, 0.25, 0.75, profile)
    if profile == "linear":
        assert same(got, expected)
    np.testing.assert_allclose(got, expected, rtol=0, atol=4e-6)


@given(images=images_of(), bounds=st.tuples(QUARTERS, QUARTERS).map(sorted))
def test_clamp_keeps_to_its_limits(images, bounds):
    assert same(vn.clamp(*images, low=bounds[0], high=bounds[1]), reference.clamp(images[0], "both", *bounds))


@pytest.mark.parametrize("count", [2, 3, 5, 9, 100])
def test_steps(count, heights):
    got = vn.steps(vn.Image(heights, range=(0, 2)), steps=count)
    np.testing.assert_allclose(got, reference.steps(heights, (0, 2), count), rtol=0, atol=1e-6)


@pytest.mark.parametrize("word", reference.FUNCTIONS)
def test_function(word):
    values = np.random.default_rng(8).normal(0, 3, (50, 60)).astype(F)
    values[0, :6] = [0, -1, 1, np.inf, -np.inf, np.nan]
    got = np.asarray(vn.function(values, function=word))
    expected = reference.function(values, word)
    if word in ("arcsine", "arccosine"):
        # What they make of NaN is what they make of -1.
        expected[0, 5] = expected[0, 1]
    if word in ("log2", "log10", "cubic_root", "deg_to_rad", "rad_to_deg"):
        # Computed in another precision, or rounded once more than here.
        np.testing.assert_array_max_ulp(got[np.isfinite(expected)], expected[np.isfinite(expected)], 2)
        assert same(got[~np.isfinite(expected)], expected[~np.isfinite(expected)])
    else:
        assert same(got, expected)


CONDITIONS = vn.describe("Value Condition")["attributes"][0]["words"]


@pytest.mark.parametrize("word", CONDITIONS)
@given(images=images_of(), a=QUARTERS, b=QUARTERS)
def test_condition(word, images, a, b):
    assert same(vn.condition(*images, condition=word, a=a, b=b), reference.condition(images[0], word, a, b))


@given(images=images_of(count=2))
def test_compare(images):
    for got, expected in zip(vn.compare(*images, precision="0.01"), reference.compare(*images, 0.01), strict=True):
        assert same(got, expected)


@pytest.mark.parametrize("profile", ["linear", "smooth", "arc_out", "arc_in"])
def test_value_range(profile, heights):
    got = vn.value_range(heights, center=0.5, size=0.125, falloff=0.25, profile=profile)
    np.testing.assert_allclose(got, reference.value_range(heights, 0.5, 0.125, 0.25, profile), rtol=0, atol=2e-6)


@given(images=images_of(), center=QUARTERS, size=st.integers(0, 8).map(lambda number: number / 4))
def test_value_range_without_falloff(images, center, size):
    got = vn.value_range(*images, center=center, size=size)
    assert same(got, reference.value_range(images[0], center, size))


@pytest.mark.parametrize("seamless", [False, True])
@pytest.mark.parametrize("radius", [1, 3, 4])
def test_relief_of_levels(seamless, radius, heights):
    got = vn.relief(vn.Image(heights, range=(0, 2)), radius=radius, seamless=seamless)
    expected = reference.relief_levels(heights, (0, 2), radius, seamless)
    np.testing.assert_allclose(got, expected, rtol=0, atol=1e-6)


@pytest.mark.parametrize("style", ["inner_bevel", "outer_bevel", "emboss", "pillow_emboss"])
@pytest.mark.parametrize("radius", [2, 4])
def test_relief_of_masks(style, radius, heights):
    mask = np.zeros((24, 24), F)
    mask[5:19, 6:20] = 1
    mask[10:14, 10:14] = 0
    got = vn.relief(mask, radius=radius, style=style)
    np.testing.assert_allclose(got, reference.relief_bevel(mask, radius, style), rtol=0, atol=1e-6)


@given(
    images=images_of(st.sampled_from([0.0, 0.5, 0.75])), seamless=st.booleans(), normalize=st.booleans()
)
def test_distance(images, seamless, normalize):
    got = vn.distance(*images, seamless=seamless, normalize=normalize)
    assert same(got, reference.distance(images[0], seamless, normalize))


@given(images=images_of(), seamless=st.booleans())
def test_gradient(images, seamless):
    for got, expected in zip(
        vn.gradient(*images, seamless=seamless), reference.gradient(images[0], seamless), strict=True
    ):
        assert same(got, expected)


@pytest.mark.parametrize("seamless", [False, True])
@pytest.mark.parametrize("radius", [3, 7.5])
def test_ambient_occlusion(seamless, radius, heights):
    got = vn.ambient_occlusion(vn.Image(heights, range=(-1, 2)), radius=radius, seamless=seamless)
    expected = reference.ambient_occlusion(heights, (-1, 2), radius, seamless)
    # What the page of the node promises.
    np.testing.assert_allclose(got, expected, rtol=0, atol=2e-4)


COMPONENTS = {
    "threshold": st.sampled_from([0.0, 0.25, 0.5, 1.0]),
    "word": st.sampled_from(["all", "cross"]),
    "seamless": st.booleans(),
}


@given(images=images_of(), **COMPONENTS)
def test_connected_components(images, threshold, word, seamless):
    image = vn.Image(*images, range=(-2, 2))
    got = vn.connected_components(image, threshold=threshold, neighbors=word, seamless=seamless)
    assert same(got, reference.connected_components(images[0], (-2, 2), threshold, word, seamless))


@given(images=images_of(), invert=st.booleans(), **COMPONENTS)
def test_component_edges(images, threshold, word, seamless, invert):
    image = vn.Image(*images, range=(-2, 2))
    got = vn.component_edges(image, threshold=threshold, neighbors=word, seamless=seamless, invert=invert)
    assert same(got, reference.component_edges(images[0], (-2, 2), threshold, word, seamless, invert))
