"""The rows of the host's image operations, which nodes and programs are made of."""

import numpy as np

from report import definitions
from report.case import Case, cv, gegl, host, ndimage, numexpr, skimage, vips
from report.definitions import of

F = np.float32


# ---- Blur ----


def blur_definition(sigma, wraps):
    return lambda x: [definitions.load("reference_regions").blurred(x["a"].astype(np.float64), sigma, wraps)]


def blur_case(sigma, wraps):
    reach = int(np.ceil(4 * sigma))
    mode = "wrap" if wraps else "nearest"
    peers = {"scipy": ndimage(lambda m, x: m.gaussian_filter(x["a"], sigma, mode=mode, truncate=4.0))}
    if not wraps:
        peers["skimage"] = skimage("filters", lambda m, x: m.gaussian(x["a"], sigma, mode="nearest", truncate=4.0))
        peers["opencv"] = cv(lambda m, x: m.GaussianBlur(
            x["a"], (2 * reach + 1, 2 * reach + 1), sigma, borderType=m.BORDER_REPLICATE))
        peers["libvips"] = vips(lambda v, take: v.blur(take("a"), float(sigma)))
        peers["gegl"] = gegl("gegl:gaussian-blur", "a", std_dev_x=float(sigma), std_dev_y=float(sigma))
    return Case(f"blur, sigma {sigma}" + ", tiling" * wraps, "Blur",
                f"ApplyGaussianBlur(a, out, {sigma}, {sigma}, {'p' if wraps else 'c'})",
                host(lambda h, x, take: h.blur(take("a"), x.spare(h.spare, "out"), sigma, wraps)),
                blur_definition(sigma, wraps), peers,
                "" if wraps else "To four sigmas, but libvips to 3.7. SciPy, scikit-image, OpenCV and libvips sum over "
                "the whole kernel; GEGL filters recursively, which approximates.")


# ---- Regions ----


def disc(radius):
    y, x = np.mgrid[-radius : radius + 1, -radius : radius + 1]
    return (x * x + y * y <= radius * radius).astype(np.uint8)


def grow_case(given, radius, shrink=False, wraps=False, others=()):
    verb = "shrink" if shrink else "grow"
    shape = disc(radius)
    every = {
        "scipy": ndimage(lambda m, x: (m.grey_erosion if shrink else m.grey_dilation)(
            x[given], footprint=shape, mode="wrap" if wraps else "nearest")),
        "skimage": skimage("morphology", lambda m, x: (m.erosion if shrink else m.dilation)(x[given], shape)),
        "opencv": cv(lambda m, x: (m.erode if shrink else m.dilate)(x[given], shape)),
        "gegl": gegl("gegl:median-blur", given, radius=radius, percentile=0.0 if shrink else 100.0,
                     high_precision=True),
    }
    return Case(f"{verb}, {given}, radius {radius}" + ", tiling" * wraps, "Grow and shrink",
                f"ImageRegion::{verb.title()}({given}, {radius}{', tiling' * wraps})",
                host(lambda h, x, take: h.grow(take(given), x.spare(h.spare, "out"), float(radius), wraps, shrink)),
                definitions.grown(given, radius, wraps, shrink), {name: every[name] for name in others},
                "The host grows in place, so the copy that it grows is in its time."
                + " GEGL: the percentile 0 or 100 of its median, with a disc of its own." * ("gegl" in others),
                exact_side=128)


# ---- Slopes, distances, fills, pastes ----


def host_gradient(h, x, take):
    return h.gradient(take("a"), x.spare(h.spare, "x"), x.spare(h.spare_second, "y"), False)


def masked(x):
    share = np.clip(x["noise"], F(0), F(1))
    return x["a"] + (F(0.5) - x["a"]) * share


def fresh_copy(h, x, take):
    """Fill works in place: on a copy, which is in its time."""
    out = x.spare(h.spare, "out")
    h.copy_image(take("a"), out)
    return h.fill(out, take("noise"), 0.5)


def numpy_fill(x):
    result = x.spare(empty, "out")
    result.fill(F(0.5))
    return result


def empty(side):
    return np.empty((side, side), F)


def quarter_box(side):
    """A box that is as large as the image and covers its lower right quarter."""
    return side // 2, side // 2, side // 2 + side, side // 2 + side


def numpy_paste(x):
    side, half = x.side, x.side // 2
    result = np.zeros((side, side), F)
    result[: side - half, : side - half] = x["a"][half:, half:]
    return result


def cv_paste(m, x):
    half = x.side // 2
    return m.copyMakeBorder(x["a"][half:, half:], 0, half, 0, half, m.BORDER_CONSTANT, value=0)


# ---- The evaluator ----

SIGNS = {"add": "+", "multiply": "*", "divide": "/", "power": "**"}


def compute_case(operation, count):
    known = {"add": np.add, "unknown": np.add, "multiply": np.multiply, "divide": np.divide, "power": np.power}
    function = known[operation]
    sign = SIGNS.get(operation, "+")
    if count == 1:
        ours = host(lambda h, x, take: h.compute(operation, 1.7, take("a")))
        definition = of(lambda x: function(x["a"], float(F(1.7))))
        peers = {"numpy": lambda x: function(x["a"], F(1.7)), "numexpr": numexpr(f"a {sign} c", c=1.7)}
    else:
        ours = host(lambda h, x, take: h.compute(operation, 1.7, take("a"), take("b")))
        definition = of(lambda x: function(x["a"], x["b"]))
        peers = {"numpy": lambda x: function(x["a"], x["b"]), "numexpr": numexpr(f"a {sign} b")}
    remark = {"unknown": "An operation of a class that the host has never seen: one virtual call for each sample.",
              "power": "The host gives the nearest float; the others compute in single precision."}.get(operation, "")
    return Case(f"{operation}, {'one image' if count == 1 else 'two images'}", "ComputeValue",
                f"ComputeValue({'a' if count == 1 else 'a, b'}; {operation})", ours, definition, peers, remark,
                moved=count + 1)


CASES = [
    *(blur_case(sigma, False) for sigma in (2, 8, 32)),
    blur_case(8, True),
    grow_case("noise", 5, others=("scipy", "skimage", "opencv", "gegl")),
    grow_case("noise", 25, others=("opencv",)),
    grow_case("noise", 5, shrink=True, others=("scipy", "opencv")),
    grow_case("mask", 5, others=("scipy", "skimage", "opencv")),
    grow_case("mask", 25, others=("opencv",)),
    grow_case("noise", 5, wraps=True, others=("scipy",)),
    Case("distance, islands", "Distance, host", "EuclideanDistance(mask)",
         host(lambda h, x, take: h.distance(take("mask"), False, False)), definitions.distance("mask"),
         {"scipy": ndimage(lambda m, x: m.distance_transform_edt(x["mask"] <= 0.5)),
          "opencv": cv(lambda m, x: m.distanceTransform(
              (x["mask"] <= 0.5).astype(np.uint8), m.DIST_L2, m.DIST_MASK_PRECISE))},
         "As the node; see there."),
    Case("gradient", "Gradient, host", "ImageValue::Gradient(a, x, y)", host(host_gradient),
         definitions.exact("gradient", "a", seamless=False),
         {"numpy": lambda x: np.gradient(x["a"])[::-1]}, "Into two images that are there already.", moved=3),
    Case("fill", "Fill and paste", "Fill(out, 0.5)",
         host(lambda h, x, take: h.fill(x.spare(h.spare, "out"), None, 0.5)), of(lambda x: np.full_like(x["a"], 0.5)),
         {"numpy": numpy_fill}, "Into memory that is there already.", moved=1),
    Case("fill by a mask", "Fill and paste", "Fill(copy of a, noise, 0.5)", host(fresh_copy),
         of(lambda x: x["a"] + (0.5 - x["a"]) * x["noise"]),
         {"numpy": masked, "numexpr": numexpr("a + (c - a) * noise", c=0.5)},
         "The host fills in place, so the copy that it fills is in its time.", moved=3),
    Case("paste", "Fill and paste", "Paste(a, its lower right quarter)",
         host(lambda h, x, take: h.paste(take("a"), quarter_box(x.side), h.VALUE)), lambda x: [numpy_paste(x)],
         {"numpy": numpy_paste, "opencv": cv(cv_paste)}, "A quarter is copied, the rest is zeros.", moved=1.25),
    Case("paste, colour to value", "Fill and paste", "Paste(colour, the whole, value)",
         host(lambda h, x, take: h.paste(take("color"), (0, 0, x.side, x.side), h.VALUE)),
         definitions.exact("value_of", "color", mode="color"),
         {"numpy": lambda x: x["color"][..., :3].mean(-1) * x["color"][..., 3]},
         "The mean of three channels times the opacity.", moved=5),
    *(compute_case(operation, count) for operation in ("add", "multiply", "divide", "power", "unknown")
      for count in (1, 2)),
]
