# SPDX-License-Identifier: Apache-2.0
"""The nodes that compute sample by sample once more, as plain numpy written from their rules, without regard to speed.

Single precision stays single precision, in the order of the rules: results are the same to the bit. Functions are the C
library's, in double precision, sample by sample, and narrowed then: the nearest float at all but a few of all arguments,
which Docs/Functions.md names.
"""

import ctypes

import numpy as np

F = np.float32
LARGEST = np.finfo(F).max

_library = ctypes.CDLL("libm.so.6")


def c_function(name, count=1):
    """A function of the C library for arrays of singles: in double precision, narrowed."""
    function = getattr(_library, name)
    function.argtypes = [ctypes.c_double] * count
    function.restype = ctypes.c_double

    def apply(*arrays):
        results = [function(*map(float, samples)) for samples in zip(*(array.ravel() for array in arrays), strict=True)]
        with np.errstate(all="ignore"):
            return np.array(results, np.float64).astype(F).reshape(arrays[0].shape)

    return apply


def value_of(samples, mode):
    """The one number that each pixel stands for."""
    if mode == "color":
        o = samples[..., 3]
        return ((o * samples[..., 1] + o * samples[..., 0]) + o * samples[..., 2]) * F(0.33333334)
    if mode == "signed":
        return samples[..., 2]
    return first_channel(samples)


def first_channel(samples):
    return samples if samples.ndim == 2 else samples[..., 0]


def lowest_and_highest(samples, infinities=True, none=(0, 0)):
    """NaN does not count, and infinities only where that is asked for."""
    counted = samples[~np.isnan(samples)] if infinities else samples[np.isfinite(samples)]
    return (F(counted.min()), F(counted.max())) if counted.size else (F(none[0]), F(none[1]))


# ---- Arithmetic ----

OPERATIONS = {
    "add": np.add,
    "subtract": np.subtract,
    "multiply": np.multiply,
    "divide": np.divide,
    "power": c_function("pow", 2),
    # On NaN the first of two images wins, and the image wins against the constant.
    "minimum": lambda first, second: np.where(second < first, second, first),
    "maximum": lambda first, second: np.where(second > first, second, first),
}


def arithmetic(name, constant, *images):
    """With the constant for one image, else image by image."""
    operation = OPERATIONS[name]
    if len(images) == 1:
        number = F(1) if name == "power" else F(constant)
        return operation(images[0], np.full_like(images[0], number))
    result = images[0]
    for image in images[1:]:
        result = operation(result, image)
    return result


# ---- Ranges of values ----


def scanned(value):
    """The lowest and highest sample, the scan for each beginning with the finite float at the far end."""
    lowest, highest = lowest_and_highest(value, none=(LARGEST, -LARGEST))
    return min(lowest, LARGEST), max(highest, -LARGEST)


def to_value(samples, mode, declared, low=0, high=1, auto_level=False):
    low, high = F(low), F(high)
    known = mode != "pair"
    value = value_of(samples, mode) if known else np.full(samples.shape[:2], low)
    lowest, highest = scanned(value) if known else (LARGEST, -LARGEST)
    nominal = {"color": (0, 1), "signed": (-1, 1), "value": declared}.get(mode, (lowest, highest))
    start, end = (F(bound) for bound in nominal)
    if auto_level:
        if not highest - lowest < F(0.0001):
            start = lowest
        end = highest
    scale = F(1) / (end - start)
    return (value - start) * scale * (high - low) + low


def clamp(samples, clamp="both", low=0, high=0, profile="linear"):
    """The samples and the range."""
    value = first_channel(samples)
    low, high = F(low), F(high)
    lowest, highest = scanned(value)
    low = lowest if clamp == "high" else low
    high = highest if clamp == "low" else high
    span = high - low
    inverse = F(1) / span
    c = np.where(low < value, value, low)
    c = np.where(c < high, c, high)
    t = (c - low) * inverse
    six, fifteen, ten = F(6), F(15), F(10)
    curves = {
        "linear": lambda: c,
        "smooth": lambda: low + (F(3) - F(2) * t) * (t * t) * span,
        "perlin": lambda: low + (t * six * t * t * t * t - t * fifteen * t * t * t + t * ten * t * t) * span,
        "arc_out": lambda: low + np.sqrt(F(1) - (t - F(1)) * (t - F(1))) * span,
        "arc_in": lambda: low + (F(1) - np.sqrt(F(1) - t * t)) * span,
    }
    return curves[profile](), (low, high)


def steps(samples, declared, steps):
    """n parts of the range get n levels; the high end itself is one more."""
    start, end = F(declared[0]), F(declared[1])
    level = F(1) / F(steps - 1)
    span = end - start
    inverse = F(1) / span
    t = (first_channel(samples) - start) * inverse
    k = np.floor((t * F(steps)).astype(np.float64)).astype(F)
    return k * (span * level) + start


# ---- One sample at a time ----

PI = F(np.pi)
HALF_PI = F(np.pi / 2)
_log = c_function("log")
_asin = c_function("asin")
_acos = c_function("acos")


def _arcsine(v):
    return np.where(~(v > -1), -HALF_PI, np.where(~(v < 1), HALF_PI, _asin(v)))


def _arccosine(v):
    return np.where(~(v > -1), PI, np.where(~(v < 1), F(0), _acos(v)))


FUNCTIONS = {
    "absolute": np.abs,
    "sine": c_function("sin"),
    "cosine": c_function("cos"),
    "tangent": c_function("tan"),
    "arcsine": _arcsine,
    "arccosine": _arccosine,
    "arctangent": c_function("atan"),
    "floor": c_function("floor"),
    "ceil": c_function("ceil"),
    "inverse": lambda v: F(1) / v,
    "log": _log,
    "log2": lambda v: _log(v) * F(1 / np.log(2)),
    "log10": lambda v: _log(v) * F(1 / np.log(10)),
    "exponential": c_function("exp"),
    "square_root": c_function("sqrt"),
    "cubic_root": c_function("cbrt"),
    "deg_to_rad": lambda v: v * F(np.pi / 180),
    "rad_to_deg": lambda v: v * F(180 / np.pi),
}


def function(samples, word):
    return FUNCTIONS[word](samples)


def condition(samples, word, a=0, b=0):
    a, b = F(a), F(b)
    lowest, highest = lowest_and_highest(samples, none=(0, 1))
    tests = {
        "v_eq_min": lambda v: v == lowest,
        "v_df_min": lambda v: v != lowest,
        "v_eq_max": lambda v: v == highest,
        "v_df_max": lambda v: v != highest,
        "v_lt_a": lambda v: v < a,
        "v_lte_a": lambda v: v <= a,
        "v_eq_a": lambda v: v == a,
        "v_gte_a": lambda v: v >= a,
        "v_gt_a": lambda v: v > a,
        "a_lt_v_lt_b": lambda v: (a < v) & (v < b),
        "a_lte_v_lt_b": lambda v: (a <= v) & (v < b),
        "a_lt_v_lte_b": lambda v: (a < v) & (v <= b),
        "a_lte_v_lte_b": lambda v: (a <= v) & (v <= b),
    }
    return tests[word](samples).astype(F)


def value_range(samples, center=0, size=0, falloff=0, profile="linear"):
    a, b, falloff = F(center), F(size), F(falloff)
    outer = b + falloff
    inverse = F(1) / falloff
    d = np.abs(samples - a)
    t = F(1) - (d - b) * inverse
    curves = {
        "linear": lambda: t,
        "smooth": lambda: t * t * t * (t * (t * F(6) - F(15)) + F(10)),
        "arc_out": lambda: np.sqrt(F(1) - (t - F(1)) * (t - F(1))),
        "arc_in": lambda: F(1) - np.sqrt(F(1) - t * t),
    }
    return np.where(b > d, F(1), np.where(outer > d, curves[profile](), F(0)))


# ---- Comparisons ----

PRECISIONS = [f"0.{'0' * zeros}1" for zeros in (9, 8, 7, 6, 5, 3, 2, 1, 0)]
PRECISIONS += [f"1{'0' * zeros}.0" for zeros in range(10)]


def rounded(samples, precision):
    """In steps of ten to a power, by the truncation of the quotient to a whole number of 32 bits."""
    power = PRECISIONS.index(precision) - 9
    p = F(10 ** abs(power))
    quotient = (samples / p if power > 0 else p * samples if power < 0 else samples) + F(0.5)
    fits = (quotient > -(2.0**31) - 1) & (quotient < 2.0**31)
    whole = np.trunc(np.where(fits, quotient, F(-(2.0**31)))).astype(F)
    return whole * p if power > 0 else whole / p if power < 0 else whole


def compare(a, b, mode, precision):
    """Less, less or equal, equal, different, greater or equal, greater."""
    if mode == "pair":
        return [np.zeros(a.shape[:2], F)] * 6
    a, b = rounded(a, precision), rounded(b, precision)
    relations = [a < b, a <= b, a == b, a != b, a >= b, a > b]
    if a.ndim == 3:
        relations = [one.any(-1) if place == 3 else one.all(-1) for place, one in enumerate(relations)]
    return [one.astype(F) for one in relations]
