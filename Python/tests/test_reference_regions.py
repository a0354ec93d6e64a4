# SPDX-License-Identifier: Apache-2.0
"""Every node function that looks at neighbours against plain numpy: bit for bit, but for blur and occlusion."""

import numpy as np
import pytest
import reference
import reference_regions
import valuenodes as vn
from conftest import identical
from hypothesis import given
from hypothesis import strategies as st
from samples import ANY, between, given_arrays, one_of, quarters

F = np.float32
RANGES = st.sampled_from([(0, 1), (0, 2), (-2, 2), (0.25, 0.375), (1, 0), (0, 0)])

pytestmark = pytest.mark.filterwarnings("ignore::RuntimeWarning")


SHAPES_OF_PIXELS = one_of(0.0, 0.5, 0.75)


@given(drawn=given_arrays(makers=(*ANY, SHAPES_OF_PIXELS)), flags=st.tuples(*[st.booleans()] * 2))
def test_distance(drawn, flags):
    mode, handed_over, plain = drawn
    got = vn.distance(vn.Image(*handed_over, mode=mode), seamless=flags[0], normalize=flags[1])
    expected = reference_regions.distance(reference.value_of(plain[0], mode), *flags)
    assert identical(got, expected)
    finite = expected[np.isfinite(expected)]
    assert (got.mode, got.range) == ("value", (0.0, 1.0 if flags[1] else float(finite.max()) if finite.size else 0.0))


@given(drawn=given_arrays(), seamless=st.booleans())
def test_gradient(drawn, seamless):
    mode, handed_over, plain = drawn
    results = vn.gradient(vn.Image(*handed_over, mode=mode), seamless=seamless)
    expected = reference_regions.gradient(reference.value_of(plain[0], mode), seamless)
    for got, wanted in zip(results, expected, strict=True):
        assert identical(got, wanted)
        assert got.range == tuple(map(float, reference.lowest_and_highest(wanted, infinities=False)))


@given(
    drawn=given_arrays(makers=(quarters, between(-1, 2), one_of(np.nan, 0.5))),
    declared=RANGES,
    radius=st.one_of(st.integers(3, 9), st.floats(3, 9)),
    seamless=st.booleans(),
)
def test_ambient_occlusion(drawn, declared, radius, seamless):
    mode, handed_over, plain = drawn
    declared = {"color": (0, 1), "signed": (-1, 1)}.get(mode, declared)
    got = vn.ambient_occlusion(vn.Image(*handed_over, mode=mode, range=declared), radius=radius, seamless=seamless)
    value = reference.value_of(plain[0], mode)
    expected = reference_regions.ambient_occlusion(value, declared, radius, seamless)
    # The rule leaves devices this much.
    np.testing.assert_allclose(got, expected, rtol=0, atol=2e-4)
    assert (got.mode, got.range) == ("value", (0, 1))


COMPONENTS = {
    "drawn": given_arrays(),
    "declared": RANGES,
    "threshold": st.one_of(st.sampled_from([0.0, 0.125, 0.25, 0.5, 1.0]), st.floats(0, 1)),
    "word": st.sampled_from(["all", "cross"]),
    "seamless": st.booleans(),
}


@given(**COMPONENTS)
def test_connected_components(drawn, declared, threshold, word, seamless):
    mode, handed_over, plain = drawn
    image = vn.Image(*handed_over, mode=mode, range=declared)
    got = vn.connected_components(image, threshold=threshold, neighbors=word, seamless=seamless)
    expected = reference_regions.connected_components(plain[0], declared, threshold, word, seamless)
    assert identical(got, expected)
    assert (got.mode, got.range) == ("value", (0, float(expected.max())))


@given(invert=st.booleans(), **COMPONENTS)
def test_component_edges(drawn, declared, threshold, word, seamless, invert):
    mode, handed_over, plain = drawn
    image = vn.Image(*handed_over, mode=mode, range=declared)
    got = vn.component_edges(image, threshold=threshold, neighbors=word, seamless=seamless, invert=invert)
    assert identical(got, reference_regions.component_edges(plain[0], declared, threshold, word, seamless, invert))
    assert (got.mode, got.range) == ("value", (0, 1))


STYLES = ["levels", "inner_bevel", "outer_bevel", "emboss", "pillow_emboss"]
PROFILES = ["linear", "smooth", "arc_out", "arc_in"]
MASKS = (one_of(0.0, 1.0), one_of(0.0, 0.5, 1.0), between(0, 1), *ANY)


@pytest.mark.parametrize("style", STYLES)
@pytest.mark.parametrize("profile", PROFILES)
@given(
    drawn=given_arrays(makers=MASKS),
    declared=RANGES,
    radius=st.integers(0, 5),
    flags=st.tuples(*[st.booleans()] * 2),
    multiplier=st.sampled_from([1, 1, 0, -2, 0.75]),
    outside=st.sampled_from([0.0, 0.5, 2.0]),
)
def test_relief(style, profile, drawn, declared, radius, flags, multiplier, outside):
    mode, handed_over, plain = drawn
    seamless, grow = flags
    image = vn.Image(*handed_over, mode=mode, range=declared, outside=outside)
    got = vn.relief(
        image, radius=radius, style=style, profile=profile, seamless=seamless, grow=grow, multiplier=multiplier
    )
    mask, mask_range = reference_regions.relief_mask(plain[0], mode, declared, outside, radius, grow)
    expected = reference_regions.relief(mask, mask_range, radius, style, profile, seamless, multiplier)
    assert identical(got, expected)
    span = mask_range if multiplier == 1 else (min(multiplier, 0), max(multiplier, 0))
    assert (got.mode, got.range) == ("value", tuple(map(float, span)))


@pytest.mark.parametrize("style", STYLES)
@given(
    drawn=given_arrays(makers=(between(0, 1), one_of(0.0, 1.0))),
    radius=st.integers(1, 4),
    soften=st.integers(1, 6),
    flags=st.tuples(*[st.booleans()] * 2),
)
def test_relief_of_a_softened_mask(style, drawn, radius, soften, flags):
    mode, handed_over, plain = drawn
    seamless, grow = flags
    image = vn.Image(*handed_over, mode=mode, range=(0, 1))
    if not grow:
        # Levels without a radius show the softened mask itself. The blur has this much of the mask's range.
        mask = np.asarray(vn.relief(image, radius=0, soften=soften, seamless=seamless))
        value = reference.value_of(plain[0], mode)
        wanted = reference_regions.blurred(value, soften, seamless)
        np.testing.assert_allclose(mask, wanted, rtol=0, atol=1e-5 * float(value.max() - value.min()))
    else:
        # The frame around the image is softened with it.
        padded = reference_regions.relief_mask(plain[0], mode, (0, 1), 0, radius, True)[0]
        mask = np.asarray(vn.relief(padded, radius=0, soften=soften, seamless=seamless))
    got = vn.relief(image, radius=radius, style=style, soften=soften, seamless=seamless, grow=grow)
    assert identical(got, reference_regions.relief(mask, (F(0), F(1)), radius, style, "linear", seamless))
