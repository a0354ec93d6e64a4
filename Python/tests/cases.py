# SPDX-License-Identifier: Apache-2.0
"""Calls of every node function, for tests of what holds for all of them."""

import valuenodes as vn

# Name, number of images, attributes.
CASES = [
    *((name, 1, {"constant": 1.5}) for name in ("add", "subtract", "multiply", "divide", "minimum", "maximum")),
    *((name, 2, {}) for name in ("add", "subtract", "multiply", "divide", "power", "minimum", "maximum")),
    ("add", 3, {}),
    ("to_value", 1, {"low": 2, "high": 5}),
    ("to_value", 1, {"auto_level": True}),
    ("clamp", 1, {"low": 0.25, "high": 0.75}),
    ("clamp", 1, {"clamp": "low", "low": 0.25, "profile": "arc_out"}),
    ("steps", 1, {"steps": 7}),
    ("condition", 1, {"condition": "v_eq_max"}),
    ("condition", 1, {"condition": "a_lt_v_lte_b", "a": 0.25, "b": 0.5}),
    ("compare", 2, {"precision": "0.01"}),
    ("value_range", 1, {"center": 0.5, "size": 0.125, "falloff": 0.25, "profile": "smooth"}),
    *(("function", 1, {"function": word}) for word in vn.describe("Value Function")["attributes"][0]["words"]),
    ("relief", 1, {"radius": 4}),
    ("relief", 1, {"radius": 3, "profile": "smooth", "seamless": False, "soften": 2}),
    ("relief", 1, {"radius": 4, "style": "emboss", "profile": "arc_in", "grow": True}),
    ("distance", 1, {"seamless": False}),
    ("distance", 1, {"normalize": True}),
    ("gradient", 1, {}),
    ("gradient", 1, {"seamless": False}),
    ("ambient_occlusion", 1, {"radius": 5}),
    ("connected_components", 1, {"threshold": 0.3}),
    ("connected_components", 1, {"threshold": 0.3, "neighbors": "cross", "seamless": False}),
    ("component_edges", 1, {"threshold": 0.3}),
]
NAMES = [f"{name}-{count}-{'-'.join(map(str, attributes.values()))}" for name, count, attributes in CASES]


def call(case, images):
    """The results of a case as a list."""
    name, count, attributes = case
    result = getattr(vn, name)(*images[:count], **attributes)
    return list(result) if isinstance(result, tuple) else [result]
