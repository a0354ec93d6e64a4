"""The rows of the nodes that compute sample by sample, with their modes."""

import numpy as np

from report.case import Case, color_node, cv, gegl, node, numexpr, skimage, vips
from report.definitions import exact, of

F = np.float32
RANGE = "The node also measures the range of its result."
COMPOSED = "NumPy, numexpr and libvips: a composition of theirs."
MORE_OR_LESS = {"minimum": "LESS", "maximum": "MORE"}
SIGNS = {"add": "+", "subtract": "-", "multiply": "*", "divide": "/"}


def vips_choice(name):
    def choose(v, take):
        a, b = take("a"), take("b")
        return v.call("ifthenelse", v.relation(a, b, getattr(v, MORE_OR_LESS[name])), a, b)

    return vips(choose)


def arithmetic(name, function, cv_name):
    peers = {"numpy": lambda x: function(x["a"], x["b"]),
             "opencv": cv(lambda m, x: getattr(m, cv_name)(x["a"], x["b"]))}
    remark = RANGE
    if name in MORE_OR_LESS:
        comparison = "<" if name == "minimum" else ">"
        peers["numexpr"] = numexpr(f"where(a {comparison} b, a, b)")
        peers["libvips"] = vips_choice(name)
        remark += " numexpr and libvips: a comparison and a choice by it."
    else:
        peers["numexpr"] = numexpr(f"a {SIGNS[name]} b")
        peers["libvips"] = vips(lambda v, take: v.call(name, take("a"), take("b")))
        peers["gegl"] = gegl(f"gegl:{name}", "a", "b")
    if name == "divide":
        remark += " OpenCV gives 0 for a division by 0; the others an infinity."
    return Case(name, "Arithmetic", f"{name}(a, b)", node(name, "a", "b"), None, peers,
                remark, moved=3, is_plain=True)


def with_constant(name, function, cv_name):
    number = F(1.7)
    peers = {"numpy": lambda x: function(x["a"], number),
             "opencv": cv(lambda m, x: getattr(m, cv_name)(x["a"], float(number)))}
    if name in SIGNS:
        peers["numexpr"] = numexpr(f"a {SIGNS[name]} c", c=number)
        factor, offset = {"add": (1.0, 1.7), "subtract": (1.0, -1.7), "multiply": (1.7, 0.0),
                          "divide": (1 / 1.7, 0.0)}[name]
        peers["libvips"] = vips(lambda v, take: v.linear(take("a"), factor, offset))
        peers["gegl"] = gegl(f"gegl:{name}", "a", value=1.7)
    else:
        peers["numexpr"] = numexpr(f"where(a {'<' if name == 'minimum' else '>'} c, a, c)", c=number)
    return Case(name + ", constant", "Arithmetic", f"{name}(a, 1.7)", node(name, "a", 1.7),
                of(lambda x: function(x["a"], 1.7)), peers, RANGE)


def add_eight(x):
    result = x["a"] + x["b"]
    for name in ("a", "b") * 3:
        result += x[name]
    return result


def numpy_to_value(x):
    a = x["a"]
    low = a.min()
    return (a - low) * (F(3) / (a.max() - low)) + F(2)


def vips_to_value(v, take):
    a = take("a")
    low = v.number("min", a)
    factor = 3.0 / (v.number("max", a) - low)
    return v.linear(a, factor, 2.0 - low * factor)


ARITHMETIC_OPERATIONS = {
    "add": (np.add, "add"), "subtract": (np.subtract, "subtract"), "multiply": (np.multiply, "multiply"),
    "divide": (np.divide, "divide"), "minimum": (np.minimum, "min"), "maximum": (np.maximum, "max"),
}
TWO = [arithmetic(name, *ways) for name, ways in ARITHMETIC_OPERATIONS.items()]
for case, (function, _) in zip(TWO, ARITHMETIC_OPERATIONS.values(), strict=True):
    case.exact = of(lambda x, function=function: function(x["a"], x["b"]))

CASES = [
    *TWO,
    Case("power", "Arithmetic", "power(a, b)", node("power", "a", "b"), of(lambda x: np.power(x["a"], x["b"])),
         {
             "numpy": lambda x: np.power(x["a"], x["b"]),
             "numexpr": numexpr("a ** b"),
             "libvips": vips(lambda v, take: v.call("math2", take("a"), take("b"), v.POW)),
             "gegl": gegl("gegl:gamma", "a", "b"),
         },
         "valuenodes gives the nearest float. OpenCV takes one number as exponent.", moved=3, is_plain=True),
    *(with_constant(name, *ways) for name, ways in ARITHMETIC_OPERATIONS.items()),
    Case("add, eight images", "Arithmetic", "add(a, b, a, b, a, b, a, b)", node("add", *("a", "b") * 4),
         of(add_eight), {"numpy": add_eight, "numexpr": numexpr("a + b + a + b + a + b + a + b")},
         "Two images, each taken four times. NumPy adds into one result.", moved=9),
    Case("auto_level", "To Value", "to_value(a, low=2, high=5, auto_level=True)",
         node("to_value", "a", low=2, high=5, auto_level=True),
         exact("to_value", "a", mode="value", declared=(0, 1), low=2, high=5, auto_level=True),
         {
             "numpy": numpy_to_value,
             "skimage": skimage("exposure", lambda m, x: m.rescale_intensity(x["a"], "image", (2.0, 5.0))),
             "opencv": cv(lambda m, x: m.normalize(x["a"], None, 2, 5, m.NORM_MINMAX)),
             "libvips": vips(vips_to_value),
             "gegl": gegl("gegl:stretch-contrast", "a"),
         },
         "The input is read twice. NumPy and libvips: a composition of theirs; GEGL stretches to 0 and 1, which the "
         "difference shows.", moved=3, is_plain=True),
    Case("declared range", "To Value", "to_value(a, low=2, high=5)", node("to_value", "a", low=2, high=5),
         exact("to_value", "a", mode="value", declared=(0, 1), low=2, high=5),
         {
             "numpy": lambda x: x["a"] * F(3) + F(2),
             "numexpr": numexpr("a * c + d", c=3, d=2),
             "opencv": cv(lambda m, x: m.addWeighted(x["a"], 3, x["a"], 0, 2)),
             "libvips": vips(lambda v, take: v.linear(take("a"), 3.0, 2.0)),
             "gegl": gegl("gegl:levels", "a", in_low=0.0, in_high=1.0, out_low=2.0, out_high=5.0),
         }, "NumPy writes an image in between; OpenCV reads the image twice."),
    Case("colour", "To Value", "to_value(colour)", color_node("to_value", "color"),
         exact("to_value", "color", mode="color", declared=(0, 1)),
         {"numpy": lambda x: x["color"][..., :3].mean(-1) * x["color"][..., 3],
          "opencv": cv(lambda m, x: m.transform(x["color"], np.array([[1 / 3, 1 / 3, 1 / 3, 0]], F)))},
         "The mean of three channels times the opacity, which is 1 here and which OpenCV leaves out. Others weigh the "
         "channels by how bright they look.", moved=5),
]


# ---- Ranges and levels ----


def clamp_case(profile, peers, remark=""):
    return Case(f"clamp, {profile}", "Value Clamp", f'clamp(a, low=0.25, high=0.75, profile="{profile}")',
                node("clamp", "a", low=0.25, high=0.75, profile=profile),
                lambda x: exact("clamp", "a", low=0.25, high=0.75, profile=profile)(x)[:1], peers, remark,
                is_plain=profile == "linear")


def numpy_clamp(curve):
    def call(x):
        t = (np.clip(x["a"], F(0.25), F(0.75)) - F(0.25)) * F(2)
        return curve(t) * F(0.5) + F(0.25)

    return call


CLAMP_CURVES = {
    "smooth": lambda t: (F(3) - F(2) * t) * (t * t),
    "perlin": lambda t: t * t * t * (t * (t * F(6) - F(15)) + F(10)),
    "arc_out": lambda t: np.sqrt(F(1) - (t - F(1)) * (t - F(1))),
    "arc_in": lambda t: F(1) - np.sqrt(F(1) - t * t),
}
CASES += [
    clamp_case("linear", {
        "numpy": lambda x: np.clip(x["a"], F(0.25), F(0.75)),
        "numexpr": numexpr("where(a < c, c, where(a > d, d, a))", c=0.25, d=0.75),
        "skimage": skimage("exposure", lambda m, x: m.rescale_intensity(x["a"], (0.25, 0.75), (0.25, 0.75))),
        "opencv": cv(lambda m, x: m.min(m.max(x["a"], 0.25), 0.75)),
        "gegl": gegl("gegl:rgb-clip", "a", low_limit=0.25, high_limit=0.75),
    }, "scikit-image stretches between the limits, which are the same here."),
    *(clamp_case(name, {"numpy": numpy_clamp(curve)}, "NumPy: a composition.") for name, curve in CLAMP_CURVES.items()),
    *(Case(f"clamp, {side} only", "Value Clamp", f'clamp(a, clamp="{side}", {side}={number})',
           node("clamp", "a", clamp=side, **{side: number}),
           lambda x, side=side, number=number: exact("clamp", "a", clamp=side, **{side: number})(x)[:1],
           {"numpy": lambda x, f=f, number=number: f(x["a"], F(number))},
           "The node measures the range of its input first.", moved=3)
      for side, number, f in (("low", 0.25, np.maximum), ("high", 0.75, np.minimum))),
    Case("steps", "Value Steps", "steps(a, steps=7)", node("steps", "a", steps=7),
         exact("steps", "a", declared=(0, 1), steps=7),
         {
             "numpy": lambda x: np.floor(x["a"] * F(7)) / F(6),
             "numexpr": numexpr("floor(a * c) / d", c=7, d=6),
             "libvips": vips(
                 lambda v, take: v.linear(v.call("round", v.linear(take("a"), 7.0, 0.0), v.FLOOR), 1 / 6, 0.0)),
             "gegl": gegl("gegl:posterize", "a", levels=7),
         }, COMPOSED + " GEGL rounds to the nearest level, of samples as they are seen.", is_plain=True),
]


# ---- Tests and comparisons ----

CONDITIONS = {
    "v_gt_a": np.greater, "v_gte_a": np.greater_equal, "v_lt_a": np.less, "v_lte_a": np.less_equal, "v_eq_a": np.equal,
}
CV_THRESHOLDS = {"v_gt_a": "THRESH_BINARY", "v_lte_a": "THRESH_BINARY_INV"}
VIPS_RELATIONS = {"v_gt_a": "MORE", "v_gte_a": "MOREEQ", "v_lt_a": "LESS", "v_lte_a": "LESSEQ", "v_eq_a": "EQUAL"}
NUMEXPR_SIGNS = {"v_gt_a": ">", "v_gte_a": ">=", "v_lt_a": "<", "v_lte_a": "<=", "v_eq_a": "=="}


def condition_case(word):
    test, sign = CONDITIONS[word], NUMEXPR_SIGNS[word]
    peers = {
        "numpy": lambda x: test(x["a"], F(0.5)).astype(F),
        "numexpr": numexpr(f"where(a {sign} c, one, none)", c=0.5, one=1, none=0),
        "libvips": vips(lambda v, take: v.relation(take("a"), 0.5, getattr(v, VIPS_RELATIONS[word]))),
    }
    if word in CV_THRESHOLDS:
        peers["opencv"] = cv(lambda m, x: m.threshold(x["a"], 0.5, 1, getattr(m, CV_THRESHOLDS[word]))[1])
    if word == "v_gt_a":
        peers["gegl"] = gegl("gegl:threshold", "a", value=1.055 * 0.5 ** (1 / 2.4) - 0.055)
    remark = "libvips gives 8 bits, 255 for 1."
    if "gegl" in peers:
        remark += " GEGL compares samples as they are seen, with 0.735 for 0.5."
    return Case(f"condition, {word}", "Value Condition", f'condition(a, condition="{word}", a=0.5)',
                node("condition", "a", condition=word, a=0.5), exact("condition", "a", word=word, a=0.5), peers,
                remark, is_plain=word == "v_gt_a", are_masks=True)


def between_case(word):
    lower = np.less_equal if word.startswith("a_lte") else np.less
    upper = np.less_equal if word.endswith("lte_b") else np.less
    low, high = ("<=" if one is np.less_equal else "<" for one in (lower, upper))
    return Case(f"condition, {word}", "Value Condition", f'condition(a, condition="{word}", a=0.25, b=0.75)',
                node("condition", "a", condition=word, a=0.25, b=0.75),
                exact("condition", "a", word=word, a=0.25, b=0.75),
                {"numpy": lambda x: (lower(F(0.25), x["a"]) & upper(x["a"], F(0.75))).astype(F),
                 "numexpr": numexpr(f"where((c {low} a) & (a {high} d), one, none)", c=0.25, d=0.75, one=1, none=0),
                 **({"opencv": cv(lambda m, x: m.inRange(x["a"], 0.25, 0.75))} if word == "a_lte_v_lte_b" else {})},
                "OpenCV gives 8 bits, 255 for 1." if word == "a_lte_v_lte_b" else "", are_masks=True)


def extreme_case(word):
    test = np.equal if "eq" in word else np.not_equal
    find = np.min if word.endswith("min") else np.max
    return Case(f"condition, {word}", "Value Condition", f'condition(a, condition="{word}")',
                node("condition", "a", condition=word), exact("condition", "a", word=word),
                {"numpy": lambda x: test(x["a"], find(x["a"])).astype(F)}, "The input is read twice.", moved=3,
                are_masks=True)


CASES += [
    *map(condition_case, CONDITIONS),
    *map(between_case, ("a_lt_v_lt_b", "a_lte_v_lt_b", "a_lt_v_lte_b", "a_lte_v_lte_b")),
    *map(extreme_case, ("v_eq_min", "v_df_min", "v_eq_max", "v_df_max")),
]
