"""The twenty nodes and what does the same elsewhere, for Bench/python_peers.py.

Each case has the call of valuenodes, those of others by the name of their library, and the definition of the node in
double precision. Others return what they return: another type of number, or another number of channels, is said in the
remark, and no time is spent on making them alike.
"""

import pathlib
import sys
from dataclasses import dataclass, field
from typing import Callable

import numpy as np

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "Python/tests"))

F = np.float32
D = np.float64


def octave(side, cells, generator):
    """A grid of random numbers, between which values run evenly."""
    grid = generator.random((cells + 1, cells + 1))
    at = np.arange(side) * (cells / side)
    index = at.astype(int)
    part = at - index
    rows = grid[index] * (1 - part)[:, None] + grid[index + 1] * part[:, None]
    return rows[:, index] * (1 - part) + rows[:, index + 1] * part


def make_terrain(side, lowest, generator):
    """Heights from `lowest` to 1."""
    heights = sum(octave(side, cells, generator) * 2 / cells for cells in (2, 4, 8, 16, 32, 64))
    low, high = heights.min(), heights.max()
    return ((heights - low) / (high - low) * (1 - lowest) + lowest).astype(F, order="C")


def make_inputs(side):
    """Terrains of 0.001 and 0.25 to 1, both in whole steps of 0.01 too, one in eighths, and a mask."""
    generator = np.random.default_rng(3)
    # Not quite 0, of which there is no logarithm; b is a divisor.
    a, b = make_terrain(side, 0.001, generator), make_terrain(side, 0.25, generator)
    levels = np.floor(a * 8).astype(F) / F(8)
    return {
        "a": a, "b": b, "levels": levels, "mask": (a > 0.6).astype(F),
        "whole_a": np.rint(a.astype(D) * 100).astype(F) / F(100),
        "whole_b": np.rint(b.astype(D) * 100).astype(F) / F(100),
    }


@dataclass
class Case:
    name: str
    #: What the row says of the call.
    text: str
    ours: Callable
    exact: Callable
    peers: dict = field(default_factory=dict)
    remark: str = ""
    #: The side of the image on which results are held against the definition; 0 for the whole size.
    exact_side: int = 0
    #: How wide the border is that differs by what the remark says, for others.
    border: int = 0
    #: Results are numbers of regions, which others may count otherwise.
    are_labels: bool = False


def ours(name, *inputs, **attributes):
    """A node of images that declare the range from 0 to 1."""

    def call(x):
        import valuenodes as vn

        images = [vn.Image(x[one], range=(0, 1)) for one in inputs]
        result = getattr(vn, name)(*images, **attributes)
        return [np.asarray(one) for one in (result if isinstance(result, tuple) else (result,))]

    return call


def vips(build):
    """An operation of libvips: `build` makes images of images."""

    def call(x):
        import peers_vips

        made = build(peers_vips, lambda name: peers_vips.take(x[name]))
        return [peers_vips.give(one) for one in (made if isinstance(made, list) else [made])]

    return call


def cv(call):
    def run(x):
        import cv2

        return call(cv2, x)

    return run


def ndimage(call):
    def run(x):
        from scipy import ndimage

        return call(ndimage, x)

    return run


def skimage(module, call):
    def run(x):
        import importlib

        return call(importlib.import_module("skimage." + module), x)

    return run


def exact_distance(x):
    """Rows first, then columns: the squares of distances are whole numbers."""
    shape = x["mask"] > 0.5
    side = len(shape)
    at = np.arange(side)
    squares = (at[:, None] - at[None, :]) ** 2
    far = 4 * side * side
    along = np.array([np.where(shape[:, c][None, :], squares, far).min(1) for c in range(side)]).T
    return [np.sqrt(np.array([(along[r][None, :] + squares).min(1) for r in range(side)]).astype(D))]


def exact(name, *inputs, **keywords):
    """A slow reference of the tests, which has sample by sample in one file and neighbours in another."""

    def call(x):
        import reference
        import reference_regions

        module = reference if hasattr(reference, name) else reference_regions
        result = getattr(module, name)(*[x[one] for one in inputs], **keywords)
        return list(result) if isinstance(result, (list, tuple)) else [result]

    return call


def arithmetic(name, function, cv_name, vips_name):
    peers = {"numpy": lambda x: function(x["a"], x["b"])}
    peers["opencv"] = cv(lambda cv2, x: getattr(cv2, cv_name)(x["a"], x["b"]))
    remark = ""
    if vips_name:
        peers["libvips"] = vips(lambda v, take: v.call(vips_name, take("a"), take("b")))
    else:
        which = MORE_OR_LESS[name]
        remark = "libvips: a comparison and a choice by it."

        def choose(v, take):
            a, b = take("a"), take("b")
            return v.call("ifthenelse", v.relation(a, b, getattr(v, which)), a, b)

        peers["libvips"] = vips(choose)
    return Case(
        name, f"`{name}(a, b)`", ours(name, "a", "b"), lambda x: [function(x["a"].astype(D), x["b"])], peers, remark
    )


MORE_OR_LESS = {"minimum": "LESS", "maximum": "MORE"}


def compare_all(a, b):
    return [one.astype(F) for one in (a < b, a <= b, a == b, a != b, a >= b, a > b)]


def steps_of(x):
    return [np.rint(x[name].astype(D) * 100) for name in ("whole_a", "whole_b")]


def numpy_range(x):
    t = np.clip((np.abs(x["a"] - F(0.5)) - F(0.1)) / F(0.2), F(0), F(1))
    return F(1) - t * t * t * (t * (t * F(6) - F(15)) + F(10))


def numpy_to_value(x):
    a = x["a"]
    low = a.min()
    return (a - low) * (F(3) / (a.max() - low)) + F(2)


def vips_to_value(v, take):
    a = take("a")
    low = v.number("min", a)
    factor = 3.0 / (v.number("max", a) - low)
    return v.linear(a, factor, 2.0 - low * factor)


def cone(radius):
    y, x = np.mgrid[-radius : radius + 1, -radius : radius + 1]
    lengths = np.hypot(y, x)
    return lengths <= radius, -lengths / radius


def scipy_relief(ndimage_module, x):
    footprint, heights = cone(10)
    return ndimage_module.grey_dilation(x["a"], footprint=footprint, structure=heights, mode="wrap")


def cv_slope(cv2, x):
    return [
        cv2.Sobel(x["a"], cv2.CV_32F, dx, 1 - dx, ksize=1, scale=0.5, borderType=cv2.BORDER_REPLICATE)
        for dx in (1, 0)
    ]


def scipy_slope(module, x):
    return [module.correlate1d(x["a"], [-0.5, 0, 0.5], axis, mode="nearest") for axis in (1, 0)]


def vips_slope(v, take):
    a = take("a")
    return [v.call("conv", a, v.matrix([-0.5, 0.0, 0.5])), v.call("conv", a, v.matrix([-0.5], [0.0], [0.5]))]


def cv_edges(cv2, x):
    kernel = np.ones((3, 3), np.uint8)
    heights = cv2.morphologyEx(x["levels"], cv2.MORPH_GRADIENT, kernel, borderType=cv2.BORDER_REPLICATE)
    return cv2.threshold(heights, 0.05, 1, cv2.THRESH_BINARY)[1]


def vips_edges(v, take):
    image = take("levels")
    heights = v.call("subtract", v.call("rank", image, 3, 3, 8), v.call("rank", image, 3, 3, 0))
    return v.relation(heights, 0.05, v.MORE)


def np_compare(x):
    a, b = (np.rint(x[name] * F(100)).astype(np.int32) for name in ("whole_a", "whole_b"))
    return compare_all(a, b)


CASES = [
    arithmetic("add", np.add, "add", "add"),
    arithmetic("subtract", np.subtract, "subtract", "subtract"),
    arithmetic("multiply", np.multiply, "multiply", "multiply"),
    arithmetic("divide", np.divide, "divide", "divide"),
    Case(
        "power", "`power(a, b)`", ours("power", "a", "b"), lambda x: [np.power(x["a"].astype(D), x["b"])],
        {
            "numpy": lambda x: np.power(x["a"], x["b"]),
            "libvips": vips(lambda v, take: v.call("math2", take("a"), take("b"), v.POW)),
        },
        "valuenodes computes in double precision. OpenCV takes one number as exponent.",
    ),
    arithmetic("minimum", np.minimum, "min", None),
    arithmetic("maximum", np.maximum, "max", None),
    Case(
        "to_value", "`to_value(a, low=2, high=5, auto_level=True)`",
        ours("to_value", "a", low=2, high=5, auto_level=True),
        lambda x: [(x["a"].astype(D) - x["a"].min()) / (D(x["a"].max()) - x["a"].min()) * 3 + 2],
        {
            "numpy": numpy_to_value,
            "skimage": skimage("exposure", lambda m, x: m.rescale_intensity(x["a"], "image", (2.0, 5.0))),
            "opencv": cv(lambda cv2, x: cv2.normalize(x["a"], None, 2, 5, cv2.NORM_MINMAX)),
            "libvips": vips(vips_to_value),
        },
        "NumPy and libvips: a composition of theirs.",
    ),
    Case(
        "clamp", "`clamp(a, low=0.25, high=0.75)`", ours("clamp", "a", low=0.25, high=0.75),
        lambda x: [np.clip(x["a"].astype(D), 0.25, 0.75)],
        {
            "numpy": lambda x: np.clip(x["a"], F(0.25), F(0.75)),
            "skimage": skimage("exposure", lambda m, x: m.rescale_intensity(x["a"], (0.25, 0.75), (0.25, 0.75))),
            "opencv": cv(lambda cv2, x: cv2.min(cv2.max(x["a"], 0.25), 0.75)),
        },
        "scikit-image stretches between the limits, which are the same here.",
    ),
    Case(
        "steps", "`steps(a, steps=7)`", ours("steps", "a", steps=7),
        lambda x: [np.floor(x["a"].astype(D) * 7) / 6],
        {
            "numpy": lambda x: np.floor(x["a"] * F(7)) / F(6),
            "libvips": vips(
                lambda v, take: v.linear(v.call("round", v.linear(take("a"), 7.0, 0.0), v.FLOOR), 1 / 6, 0.0)
            ),
        },
        "NumPy and libvips: a composition of theirs.",
    ),
    Case(
        "condition", '`condition(a, condition="v_gt_a", a=0.5)`', ours("condition", "a", condition="v_gt_a", a=0.5),
        lambda x: [(x["a"] > 0.5).astype(D)],
        {
            "numpy": lambda x: (x["a"] > F(0.5)).astype(F),
            "opencv": cv(lambda cv2, x: cv2.threshold(x["a"], 0.5, 1, cv2.THRESH_BINARY)[1]),
            "libvips": vips(lambda v, take: v.relation(take("a"), 0.5, v.MORE)),
        },
        "libvips: 8 bits, 255 for 1.",
    ),
    Case(
        "compare", '`compare(a, b, precision="0.01")`, six results',
        ours("compare", "whole_a", "whole_b", precision="0.01"), lambda x: compare_all(*steps_of(x)),
        {
            "numpy": np_compare,
            "opencv": cv(lambda cv2, x: [cv2.compare(x["whole_a"], x["whole_b"], way) for way in (
                cv2.CMP_LT, cv2.CMP_LE, cv2.CMP_EQ, cv2.CMP_NE, cv2.CMP_GE, cv2.CMP_GT)]),
            "libvips": vips(lambda v, take: [v.relation(take("whole_a"), take("whole_b"), way) for way in (
                v.LESS, v.LESSEQ, v.EQUAL, v.NOTEQ, v.MOREEQ, v.MORE)]),
        },
        "On values of whole steps. NumPy: a composition that rounds; OpenCV and libvips compare without a precision, "
        "and give 8 bits, 255 for 1.",
    ),
    Case(
        "value_range", '`value_range(a, center=0.5, size=0.1, falloff=0.2, profile="smooth")`',
        ours("value_range", "a", center=0.5, size=0.1, falloff=0.2, profile="smooth"),
        exact("value_range", "a", center=0.5, size=0.1, falloff=0.2, profile="smooth"),
        {"numpy": numpy_range},
        "NumPy: a composition.",
    ),
    Case(
        "function", '`function(a, function="log")`', ours("function", "a", function="log"),
        lambda x: [np.log(x["a"].astype(D))],
        {
            "numpy": lambda x: np.log(x["a"]),
            "opencv": cv(lambda cv2, x: cv2.log(x["a"])),
            "libvips": vips(lambda v, take: v.call("math", take("a"), v.LOG)),
        },
        "valuenodes computes in double precision, one sample at a time.",
    ),
    Case(
        "relief", "`relief(a, radius=10)`", ours("relief", "a", radius=10),
        exact("relief", "a", declared=(F(0), F(1)), radius=10, style="levels", profile="linear", seamless=True),
        {"scipy": ndimage(scipy_relief)},
        "SciPy: `grey_dilation` with a cone. The others dilate by flat shapes alone.",
        exact_side=48,
    ),
    Case(
        "distance", "`distance(mask, seamless=False)`", ours("distance", "mask", seamless=False), exact_distance,
        {
            "scipy": ndimage(lambda m, x: m.distance_transform_edt(x["mask"] <= 0.5)),
            "opencv": cv(lambda cv2, x: cv2.distanceTransform(
                (x["mask"] <= 0.5).astype(np.uint8), cv2.DIST_L2, cv2.DIST_MASK_PRECISE)),
            "libvips": vips(lambda v, take: v.nearest_distance(take("mask"))),
        },
        "SciPy gives double precision; OpenCV by `DIST_MASK_PRECISE`; libvips by `fill_nearest`. None of them tiles.",
        exact_side=256,
    ),
    Case(
        "gradient", "`gradient(a, seamless=False)`, two results", ours("gradient", "a", seamless=False),
        lambda x: np.gradient(x["a"].astype(D))[::-1],
        {
            "numpy": lambda x: np.gradient(x["a"])[::-1],
            "scipy": ndimage(scipy_slope),
            "opencv": cv(cv_slope),
            "libvips": vips(vips_slope),
        },
        "SciPy, OpenCV and libvips repeat the border, where they give half the slope; it is left out of the "
        "difference.",
        border=1,
    ),
    Case(
        "ambient_occlusion", "`ambient_occlusion(a, radius=10)`", ours("ambient_occlusion", "a", radius=10),
        exact("ambient_occlusion", "a", declared=(0, 1), radius=10, seamless=True), {},
        "Through OpenCL, here on the processor.", exact_side=128,
    ),
    Case(
        "connected_components", "`connected_components(mask, threshold=0.5, seamless=False)`",
        ours("connected_components", "mask", threshold=0.5, seamless=False),
        exact("connected_components", "mask", declared=(0, 1), threshold=0.5, word="all", seamless=False),
        {
            "scipy": ndimage(lambda m, x: m.label(x["mask"], np.ones((3, 3)))[0]),
            "skimage": skimage("measure", lambda m, x: m.label(x["mask"].astype(np.uint8), background=-1)),
            "opencv": cv(lambda cv2, x: cv2.connectedComponents(x["mask"].astype(np.uint8), connectivity=8)[1]),
            "libvips": vips(lambda v, take: v.labels(take("mask"))),
        },
        "SciPy and OpenCV number the shape alone and leave the background in one piece, so only the shape is held "
        "against the definition; libvips knows the four neighbours alone. Only valuenodes has a threshold for grey "
        "images.",
        exact_side=192, are_labels=True,
    ),
    Case(
        "component_edges", "`component_edges(levels, threshold=0.05, seamless=False, invert=False)`",
        ours("component_edges", "levels", threshold=0.05, seamless=False, invert=False),
        exact("component_edges", "levels", declared=(0, 1), threshold=0.05, word="all", seamless=False, invert=False),
        {
            "scipy": ndimage(lambda m, x: m.morphological_gradient(x["levels"], size=(3, 3)) > 0.05),
            "skimage": skimage("segmentation", lambda m, x: m.find_boundaries(
                (x["levels"] * 8).astype(np.uint8), connectivity=2, mode="thick")),
            "opencv": cv(cv_edges),
            "libvips": vips(vips_edges),
        },
        "On a terrain in eighths. scikit-image takes whole numbers; the others: the largest less the smallest of nine "
        "pixels, which is the same on levels alone. Truth values or 8 bits but for OpenCV. The border is left out of "
        "the difference.",
        exact_side=128, border=1,
    ),
]
