"""The rows of the nodes that look at neighbours, with their modes."""

import numpy as np

from report import definitions
from report.case import Case, cv, gegl, ndimage, node, skimage, vips
from report.definitions import exact

F = np.float32
UNIT = np.float64(0), np.float64(1)


def cone(radius):
    y, x = np.mgrid[-radius : radius + 1, -radius : radius + 1]
    lengths = np.hypot(y, x)
    return lengths <= radius, -lengths / radius


def scipy_relief(module, x):
    footprint, heights = cone(10)
    return module.grey_dilation(x["a"], footprint=footprint, structure=heights, mode="wrap")


def relief_case(style, profile, given, peers=None, remark=""):
    settings = {"radius": 10, "style": style, "profile": profile}
    return Case(f"relief, {style}, {profile}", "Relief",
                f'relief({given}, radius=10, style="{style}", profile="{profile}")',
                node("relief", given, **settings),
                exact("relief", given, declared=UNIT, seamless=True, **settings), peers or {},
                remark or "None of the others has it.", exact_side=32,
                is_plain=(style, profile) == ("levels", "linear"))


def blurred_relief(x):
    """A mask that is softened first."""
    module = definitions.load("reference_regions")
    soft = module.blurred(x["a"].astype(np.float64), 4, True)
    return [module.relief(soft, UNIT, 10, "levels", "linear", True)]


def distance_case(name, text, given, seamless, normalize, peers, remark):
    return Case(name, "Distance", text, node("distance", given, seamless=seamless, normalize=normalize),
                definitions.distance(given, seamless, normalize), peers, remark, is_plain=name == "distance, islands")


def distance_peers(given):
    return {
        "scipy": ndimage(lambda m, x: m.distance_transform_edt(x[given] <= 0.5)),
        "opencv": cv(lambda m, x: m.distanceTransform(
            (x[given] <= 0.5).astype(np.uint8), m.DIST_L2, m.DIST_MASK_PRECISE)),
        "libvips": vips(lambda v, take: v.nearest_distance(take(given))),
        "gegl": gegl_distance(given),
    }


def gegl_distance(given):
    """GEGL measures from the pixels above a threshold, which are the others here."""

    def call(x):
        from report import peers_gegl

        inverted = x.ready(take_inverted, given)
        return peers_gegl.run("gegl:distance-transform", [inverted], {
            "threshold_lo": 0.5, "threshold_hi": 1.0, "normalize": False, "edge_handling": 0})

    return call


def take_inverted(array):
    from report import peers_gegl

    return peers_gegl.take(F(1) - array)


DISTANCE = ("SciPy gives double precision; OpenCV by `DIST_MASK_PRECISE`, in single precision; libvips by "
            "`fill_nearest`, which approximates; GEGL takes the inverted mask. None of them tiles.")


def cv_slope(module, x):
    return [
        module.Sobel(x["a"], module.CV_32F, dx, 1 - dx, ksize=1, scale=0.5, borderType=module.BORDER_REPLICATE)
        for dx in (1, 0)
    ]


def scipy_slope(mode):
    return ndimage(lambda m, x: [m.correlate1d(x["a"], [-0.5, 0, 0.5], axis, mode=mode) for axis in (1, 0)])


def vips_slope(v, take):
    a = take("a")
    return [v.call("conv", a, v.matrix([-0.5, 0.0, 0.5])), v.call("conv", a, v.matrix([-0.5], [0.0], [0.5]))]


def rolled_slope(x):
    a = x["a"]
    return [(np.roll(a, -1, axis) - np.roll(a, 1, axis)) * F(0.5) for axis in (1, 0)]


def components_case(name, given, text, keywords, peers, remark):
    declared = exact("connected_components", given, declared=UNIT, threshold=keywords["threshold"],
                     word=keywords.get("neighbors", "all"), seamless=keywords.get("seamless", True))
    return Case(name, "Connected Components", text, node("connected_components", given, **keywords), declared, peers,
                remark, exact_side=128, are_labels=True, is_plain=name == "components, mask")


def cv_edges(module, x):
    kernel = np.ones((3, 3), np.uint8)
    heights = module.morphologyEx(x["levels"], module.MORPH_GRADIENT, kernel, borderType=module.BORDER_REPLICATE)
    return module.threshold(heights, 0.05, 1, module.THRESH_BINARY)[1]


def vips_edges(v, take):
    image = take("levels")
    heights = v.call("subtract", v.call("rank", image, 3, 3, 8), v.call("rank", image, 3, 3, 0))
    return v.relation(heights, 0.05, v.MORE)


def edges_case(name, text, peers, remark, **keywords):
    settings = {"threshold": 0.05, "seamless": False, "invert": False, **keywords}
    definition = {name: value for name, value in settings.items() if name != "neighbors"}
    return Case(name, "Component Edges", text, node("component_edges", "levels", **settings),
                exact("component_edges", "levels", declared=UNIT, word=settings.get("neighbors", "all"), **definition),
                peers, remark, exact_side=96, border=1, are_masks=True, is_plain=name == "edges")


CASES = [
    relief_case("levels", "linear", "a", {"scipy": ndimage(scipy_relief)},
                "SciPy: `grey_dilation` with a cone. The others dilate by flat shapes alone."),
    *(relief_case("levels", profile, "a") for profile in ("smooth", "arc_out", "arc_in")),
    *(relief_case(style, "linear", "mask") for style in ("inner_bevel", "outer_bevel", "emboss", "pillow_emboss")),
    Case("relief, soften", "Relief", "relief(a, radius=10, soften=4)", node("relief", "a", radius=10, soften=4),
         blurred_relief, {}, "None of the others has it.", exact_side=32),
    distance_case("distance, islands", "distance(mask, seamless=False)", "mask", False, False, distance_peers("mask"),
                  DISTANCE),
    distance_case("distance, few pixels", "distance(few, seamless=False)", "few", False, False, distance_peers("few"),
                  DISTANCE),
    distance_case("distance, tiling", "distance(mask)", "mask", True, False, {}, "None of the others tiles."),
    distance_case("distance, normalised", "distance(mask, seamless=False, normalize=True)", "mask", False, True,
                  {"opencv": cv(lambda m, x: m.normalize(m.distanceTransform((x["mask"] <= 0.5).astype(
                      np.uint8), m.DIST_L2, m.DIST_MASK_PRECISE), None, 0, 1, m.NORM_MINMAX))},
                  "OpenCV: two calls."),
    Case("gradient", "Gradient", "gradient(a, seamless=False), two results", node("gradient", "a", seamless=False),
         exact("gradient", "a", seamless=False),
         {
             "numpy": lambda x: np.gradient(x["a"])[::-1],
             "scipy": scipy_slope("nearest"),
             "opencv": cv(cv_slope),
             "libvips": vips(vips_slope),
         },
         "SciPy, OpenCV and libvips repeat the border, where they give half the slope; it is left out of the "
         "difference. GEGL has the length of the slope and its direction alone.", moved=3, border=1, is_plain=True),
    Case("gradient, tiling", "Gradient", "gradient(a), two results", node("gradient", "a"),
         exact("gradient", "a", seamless=True), {"numpy": rolled_slope, "scipy": scipy_slope("wrap")},
         "NumPy: a composition of rolled copies.", moved=3),
    *(Case(f"occlusion, radius {radius}", "Ambient Occlusion", f"ambient_occlusion(a, radius={radius})",
           node("ambient_occlusion", "a", radius=radius),
           exact("ambient_occlusion", "a", declared=(0, 1), radius=radius, seamless=True), {},
           "Through OpenCL, here on the processor. None of the others has it.", exact_side=128,
           is_plain=radius == 10) for radius in (3, 10, 30)),
    components_case("components, mask", "mask", "connected_components(mask, threshold=0.5, seamless=False)",
                    {"threshold": 0.5, "seamless": False},
                    {
                        "scipy": ndimage(lambda m, x: m.label(x["mask"], np.ones((3, 3)))[0]),
                        "skimage": skimage("measure", lambda m, x: m.label(x["mask"].astype(np.uint8), background=-1)),
                        "opencv": cv(lambda m, x: m.connectedComponents(x["mask"].astype(np.uint8), connectivity=8)[1]),
                        "libvips": vips(lambda v, take: v.labels(take("mask"))),
                    },
                    "SciPy and OpenCV number the shape alone and leave the background in one piece, so only the shape "
                    "is held against the definition; libvips knows the four neighbours alone. Only valuenodes has a "
                    "threshold for grey images."),
    components_case("components, cross", "mask",
                    'connected_components(mask, threshold=0.5, neighbors="cross", seamless=False)',
                    {"threshold": 0.5, "neighbors": "cross", "seamless": False},
                    {"scipy": ndimage(lambda m, x: m.label(x["mask"])[0]),
                     "skimage": skimage("measure", lambda m, x: m.label(
                         x["mask"].astype(np.uint8), background=-1, connectivity=1)),
                     "opencv": cv(lambda m, x: m.connectedComponents(x["mask"].astype(np.uint8), connectivity=4)[1]),
                     "libvips": vips(lambda v, take: v.labels(take("mask")))},
                    "SciPy and OpenCV number the shape alone, so only the shape is held against the definition."),
    components_case("components, levels", "levels", "connected_components(levels, threshold=0.05, seamless=False)",
                    {"threshold": 0.05, "seamless": False},
                    {"skimage": skimage("measure", lambda m, x: m.label((x["levels"] * 8).astype(np.uint8),
                                                                        background=-1))},
                    "scikit-image compares whole numbers alone."),
    components_case("components, tiling", "mask", "connected_components(mask, threshold=0.5)",
                    {"threshold": 0.5, "seamless": True}, {}, "None of the others tiles."),
    edges_case("edges", "component_edges(levels, threshold=0.05, seamless=False, invert=False)",
               {
                   "scipy": ndimage(lambda m, x: m.morphological_gradient(x["levels"], size=(3, 3)) > 0.05),
                   "skimage": skimage("segmentation", lambda m, x: m.find_boundaries(
                       (x["levels"] * 8).astype(np.uint8), connectivity=2, mode="thick")),
                   "opencv": cv(cv_edges),
                   "libvips": vips(vips_edges),
               },
               "On a terrain in eighths. scikit-image takes whole numbers; the others: the largest less the smallest "
               "of nine pixels, which is the same on levels alone. Truth values or 8 bits but for OpenCV. The border is "
               "left out of the difference."),
    edges_case("edges, cross",
               'component_edges(levels, threshold=0.05, neighbors="cross", seamless=False, invert=False)',
               {"skimage": skimage("segmentation", lambda m, x: m.find_boundaries(
                   (x["levels"] * 8).astype(np.uint8), connectivity=1, mode="thick"))},
               "scikit-image takes whole numbers.", neighbors="cross"),
    edges_case("edges, inverted, tiling", "component_edges(levels, threshold=0.05)", {}, "None of the others tiles.",
               seamless=True, invert=True),
]
