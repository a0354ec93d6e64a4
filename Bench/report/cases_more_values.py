"""The rows of Value Compare, Value Range and Value Function."""

import numpy as np

from report.case import Case, cv, node, numexpr, vips
from report.definitions import exact

F = np.float32
ALL_SIX = "On values of whole steps. "


def compare_all(a, b):
    return [one.astype(F) for one in (a < b, a <= b, a == b, a != b, a >= b, a > b)]


def np_compare(x):
    a, b = (np.rint(x[name] * F(100)).astype(np.int32) for name in ("whole_a", "whole_b"))
    return compare_all(a, b)


def cv_compare(module, x):
    ways = module.CMP_LT, module.CMP_LE, module.CMP_EQ, module.CMP_NE, module.CMP_GE, module.CMP_GT
    return [module.compare(x["whole_a"], x["whole_b"], way) for way in ways]


def vips_compare(v, take):
    ways = v.LESS, v.LESSEQ, v.EQUAL, v.NOTEQ, v.MOREEQ, v.MORE
    return [v.relation(take("whole_a"), take("whole_b"), way) for way in ways]


def compare_case(precision, peers, remark):
    return Case(f"compare, {precision}", "Value Compare", f'compare(a, b, precision="{precision}"), six results',
                node("compare", "whole_a", "whole_b", precision=precision),
                exact("compare", "whole_a", "whole_b", mode="value", precision=precision), peers, remark, moved=8,
                is_plain=precision == "0.01", are_masks=True)


def numpy_range(curve):
    def call(x):
        t = F(1) - np.clip((np.abs(x["a"] - F(0.5)) - F(0.1)) / F(0.2), F(0), F(1))
        return curve(t)

    return call


RANGE_CURVES = {
    "linear": (lambda t: t, "t"),
    "smooth": (lambda t: t * t * t * (t * (t * F(6) - F(15)) + F(10)), None),
    "arc_out": (lambda t: np.sqrt(F(1) - (t - F(1)) * (t - F(1))), None),
    "arc_in": (lambda t: F(1) - np.sqrt(F(1) - t * t), None),
}


def range_case(profile):
    curve, plain = RANGE_CURVES[profile]
    settings = {"center": 0.5, "size": 0.1, "falloff": 0.2, "profile": profile}
    peers = {"numpy": numpy_range(curve)}
    if plain:
        inner = "one - (abs(a - c) - s) / f"
        peers["numexpr"] = numexpr(f"where({inner} > one, one, where({inner} < none, none, {inner}))",
                                   c=0.5, s=0.1, f=0.2, one=1, none=0)
    return Case(f"range, {profile}", "Value Range",
                f'value_range(a, center=0.5, size=0.1, falloff=0.2, profile="{profile}")',
                node("value_range", "a", **settings), exact("value_range", "a", **settings), peers,
                "NumPy and numexpr: a composition." if plain else "NumPy: a composition.", is_plain=profile == "smooth")


def vips_math(number):
    return vips(lambda v, take: v.call("math", take("a"), number))


def cv_call(name):
    return cv(lambda m, x: getattr(m, name)(x["a"]))


#: What each function is in NumPy, as an expression of numexpr, and in others.
FUNCTIONS = {
    "absolute": (np.abs, "abs(a)", {"opencv": cv(lambda m, x: m.absdiff(x["a"], 0.0)),
                                    "libvips": vips(lambda v, take: v.call("abs", take("a")))}),
    "sine": (np.sin, "sin(a)", {}),
    "cosine": (np.cos, "cos(a)", {}),
    "tangent": (np.tan, "tan(a)", {}),
    "arcsine": (np.arcsin, "arcsin(a)", {}),
    "arccosine": (np.arccos, "arccos(a)", {}),
    "arctangent": (np.arctan, "arctan(a)", {}),
    "floor": (np.floor, "floor(a)", {"libvips": vips(lambda v, take: v.call("round", take("a"), v.FLOOR))}),
    "ceil": (np.ceil, "ceil(a)", {"libvips": vips(lambda v, take: v.call("round", take("a"), v.CEIL))}),
    "inverse": (np.reciprocal, "one / a", {"opencv": cv(lambda m, x: m.divide(1.0, x["a"]))}),
    "log": (np.log, "log(a)", {"opencv": cv_call("log"), "libvips": vips_math(6)}),
    "log2": (np.log2, None, {}),
    "log10": (np.log10, "log10(a)", {"libvips": vips_math(7)}),
    "exponential": (np.exp, "exp(a)", {"opencv": cv_call("exp"), "libvips": vips_math(8)}),
    "square_root": (np.sqrt, "sqrt(a)", {"opencv": cv_call("sqrt")}),
    "cubic_root": (np.cbrt, None, {}),
    "deg_to_rad": (np.deg2rad, "a * k", {"libvips": vips(lambda v, take: v.linear(take("a"), np.pi / 180, 0.0))}),
    "rad_to_deg": (np.rad2deg, "a * k", {"libvips": vips(lambda v, take: v.linear(take("a"), 180 / np.pi, 0.0))}),
}
#: Those that are computed as they are; the others go through functions that give the nearest float.
PLAIN = {"absolute", "floor", "ceil", "inverse", "square_root", "deg_to_rad", "rad_to_deg"}


def function_case(word):
    function, expression, others = FUNCTIONS[word]
    peers = {"numpy": lambda x: function(x["a"]), **others}
    if expression:
        factor = np.pi / 180 if word == "deg_to_rad" else 180 / np.pi
        numbers = {"k": factor} if "k" in expression else {"one": 1} if "one" in expression else {}
        peers["numexpr"] = numexpr(expression, **numbers)
    remark = ""
    if word not in PLAIN:
        libvips = "libvips computes in double precision, " if "libvips" in others else ""
        nearest = "the nearest float of ln, times a constant" if word in ("log2", "log10") else "the nearest float"
        remark = f"valuenodes gives {nearest}; {libvips}the others {'' if libvips else 'compute '}in single."
    return Case(f"function, {word}", "Value Function", f'function(a, function="{word}")',
                node("function", "a", function=word), exact("function", "a", word=word), peers, remark,
                is_plain=word == "log")


CASES = [
    compare_case("0.01", {"numpy": np_compare, "opencv": cv(cv_compare), "libvips": vips(vips_compare)},
                 ALL_SIX + "NumPy: a composition that rounds; OpenCV and libvips compare without a precision, and give "
                 "8 bits, 255 for 1."),
    compare_case("0.000001", {"numpy": lambda x: compare_all(x["whole_a"], x["whole_b"])},
                 ALL_SIX + "NumPy compares without a precision."),
    compare_case("1.0", {"numpy": lambda x: compare_all(np.rint(x["whole_a"]), np.rint(x["whole_b"]))},
                 ALL_SIX + "NumPy rounds halves to even numbers, the node upwards."),
    *map(range_case, RANGE_CURVES),
    *map(function_case, FUNCTIONS),
]
