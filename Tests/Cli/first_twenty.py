"""The node types that the library started with, told once for all tests of the command line.

Their order, names and numbers stay; types that are added follow them. Tests/Support/FirstTwenty.h
has the same list for C++. The forms of attributes are ("number", default, lowest, highest),
("choice", place of the default, words) and ("flag", default).
"""

from typing import NamedTuple

CONDITIONS = (
    "v_eq_min,v_df_min,v_eq_max,v_df_max,v_lt_a,v_lte_a,v_eq_a,v_gte_a,v_gt_a,"
    "a_lt_v_lt_b,a_lte_v_lt_b,a_lt_v_lte_b,a_lte_v_lte_b"
)
FUNCTIONS = (
    "absolute,sine,cosine,tangent,arcsine,arccosine,arctangent,floor,ceil,inverse,log,log2,"
    "log10,exponential,square_root,cubic_root,deg_to_rad,rad_to_deg"
)
PRECISIONS = (
    "0.0000000001,0.000000001,0.00000001,0.0000001,0.000001,0.0001,0.001,0.01,0.1,1.0,10.0,"
    "100.0,1000.0,10000.0,100000.0,1000000.0,10000000.0,100000000.0,1000000000.0"
)


class NodeType(NamedTuple):
    class_name: str
    name: str
    numbers: tuple
    attributes: dict
    inputs: tuple = ("image",)
    outputs: tuple = ("image",)


def number(default, low, high):
    return ("number", default, low, high)


def choice(words, default=0):
    return ("choice", default, words.split(","))


def flag(default):
    return ("flag", default)


def constant(default):
    return {"constant": number(default, -1e9, 1e9)}


FIRST_TWENTY = [
    NodeType(
        "ImageToValueNode", "To Value", (10, 320, 0),
        {
            "low": number(0, -999999999, 999999999),
            "high": number(1, -999999999, 999999999),
            "auto_level": flag(False),
        },
    ),
    NodeType("ImageValueAddNode", "Value Add", (10, 320, 5), constant(0)),
    NodeType("ImageValueSubtractNode", "Value Subtract", (10, 320, 90), constant(0)),
    NodeType("ImageValueMultiplyNode", "Value Multiply", (10, 320, 10), constant(1)),
    NodeType("ImageValueDivideNode", "Value Divide", (10, 320, 96), constant(1)),
    NodeType("ImageValuePowerNode", "Value Power", (10, 320, 69), constant(0)),
    NodeType("ImageValueMinimumNode", "Value Minimum", (10, 320, 16), constant(1000)),
    NodeType("ImageValueMaximumNode", "Value Maximum", (10, 320, 21), constant(-1000)),
    NodeType(
        "ImageValueClampNode", "Value Clamp", (10, 320, 42),
        {
            "clamp": choice("both,low,high"),
            "low": number(0, -10000, 10000),
            "high": number(0, -10000, 10000),
            "profile": choice("linear,smooth,perlin,arc_out,arc_in"),
        },
    ),
    NodeType("ImageValueStepsNode", "Value Steps", (10, 320, 80), {"steps": number(2, 2, 100000)}),
    NodeType(
        "ImageValueConditionNode", "Value Condition", (10, 320, 32),
        {
            "condition": choice(CONDITIONS),
            "a": number(0, -10000, 10000),
            "b": number(0, -10000, 10000),
        },
    ),
    NodeType(
        "ImageValueCompareNode", "Value Compare", (10, 320, 37),
        {"precision": choice(PRECISIONS, 4)},
        inputs=("image_a", "image_b"),
        outputs=(
            "image_a_l_b", "image_a_le_b", "image_a_eq_b",
            "image_a_df_b", "image_a_ge_b", "image_a_g_b",
        ),
    ),
    NodeType(
        "ImageValueRangeNode", "Value Range", (10, 320, 58),
        {
            "center": number(0, -10000, 10000),
            "size": number(0, 0, 10000),
            "falloff": number(0, 0, 10000),
            "profile": choice("linear,smooth,arc_out,arc_in"),
        },
    ),
    NodeType(
        "ImageValueFunctionNode", "Value Function", (10, 320, 64),
        {"function": choice(FUNCTIONS)},
    ),
    NodeType(
        "ImageReliefNode", "Relief", (10, 288, 26),
        {
            "radius": number(1, 0, 250),
            "multiplier": number(1, -1000, 1000),
            "style": choice("levels,inner_bevel,outer_bevel,emboss,pillow_emboss"),
            "profile": choice("linear,smooth,arc_out,arc_in"),
            "soften": number(0, 0, 16),
            "grow": flag(False),
            "seamless": flag(True),
        },
    ),
    NodeType(
        "ImageEuclideanDistanceNode", "Distance", (10, 288, 74),
        {"seamless": flag(True), "normalize": flag(False)},
    ),
    NodeType(
        "ImageComputeGradientNode", "Value Gradient", (10, 320, 48),
        {"seamless": flag(True)},
        outputs=("output_x", "output_y"),
    ),
    NodeType(
        "ImageAmbientOcclusionNode", "Ambient Occlusion", (10, 320, 85),
        {"radius": number(3, 3, 100), "seamless": flag(True)},
    ),
    NodeType(
        "ImageConnectedComponentsNode", "Connected Components", (10, 320, 101),
        {"threshold": number(0.1, 0, 1), "neighbors": choice("all,cross"), "seamless": flag(True)},
    ),
    NodeType(
        "ImageComponentEdgesNode", "Component Edges", (10, 320, 106),
        {
            "threshold": number(0.1, 0, 1),
            "neighbors": choice("all,cross"),
            "seamless": flag(True),
            "invert": flag(True),
        },
    ),
]
