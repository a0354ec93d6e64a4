# SPDX-License-Identifier: Apache-2.0
"""Arrays for tests against references: of all modes, of small and of no size, with awkward samples, laid out oddly."""

import numpy as np
from hypothesis import strategies as st
from hypothesis.extra import numpy as arrays

F = np.float32
CHANNELS = {"value": (), "pair": (2,), "color": (4,), "signed": (4,)}
MODES = st.sampled_from(sorted(CHANNELS))
# Close together, so that equal, neighbouring and limiting samples are frequent.
QUARTERS = st.integers(-12, 12).map(lambda number: number / 4)
AWKWARD = [np.nan, np.inf, -np.inf, 0.0, -0.0, 1e-45, -1e-45, 1.1754944e-38, 3.4028235e38, -3.4028235e38, 2.0**24, 1e-8]


def quarters(generator, shape):
    return generator.integers(-12, 13, shape) / F(4)


def awkward(generator, shape):
    return generator.choice(np.array(AWKWARD, F), shape)


def bits(generator, shape):
    """Floats of every size, NaN and infinities among them."""
    return generator.integers(0, 2**32, shape, np.uint32).view(F)


def between(low, high):
    return lambda generator, shape: generator.uniform(low, high, shape)


def one_of(*numbers):
    return lambda generator, shape: generator.choice(np.array(numbers, F), shape)


# What samples are made of. A test's arrays are made by some of these, each pixel by one: far quicker than having
# Hypothesis draw sample by sample.
FINITE = (quarters, between(-4, 4))
ANY = (*FINITE, awkward, bits, between(-2, 2))
LINES = st.sampled_from([(1, 1), (1, 7), (7, 1), (2, 2), (1, 33), (33, 1)])
SHAPES = st.one_of(arrays.array_shapes(min_dims=2, max_dims=2, min_side=1, max_side=8), LINES)
EMPTY = [(0, 0), (0, 5), (5, 0)]


def laid_out(array, layout):
    """The same samples elsewhere in memory, or as another type that holds them all."""
    if layout == "columns":
        return np.asfortranarray(array)
    if layout == "gaps":
        wide = np.zeros((array.shape[0], array.shape[1] * 2, *array.shape[2:]), F)
        wide[:, ::2] = array
        return wide[:, ::2]
    if layout == "backwards":
        return array[::-1, ::-1].copy()[::-1, ::-1]
    if layout == "swapped":
        return array.astype(array.dtype.newbyteorder())
    if layout == "double":
        return array.astype(np.float64)
    return array


LAYOUTS = st.sampled_from(["dense", "dense", "columns", "gaps", "backwards", "swapped", "double"])


@st.composite
def made_arrays(draw, shape, makers):
    generator = np.random.default_rng(draw(st.integers(0, 2**32 - 1)))
    chosen = draw(st.lists(st.sampled_from(makers), min_size=1, max_size=3))
    choices = np.stack([maker(generator, shape).astype(F) for maker in chosen])
    return np.take_along_axis(choices, generator.integers(0, len(chosen), (1, *shape)), 0)[0]


@st.composite
def given_arrays(draw, count=1, modes=MODES, makers=ANY, shapes=SHAPES):
    """A mode and arrays of it: as they are handed over, and as they are."""
    mode = draw(modes)
    shape = (*draw(shapes), *CHANNELS[mode])
    plain = [draw(made_arrays(shape, makers)) for _ in range(count)]
    return mode, [laid_out(array, draw(LAYOUTS)) for array in plain], plain
