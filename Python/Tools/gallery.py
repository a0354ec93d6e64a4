# SPDX-License-Identifier: Apache-2.0
"""What the gallery shows: for each node function a few lines of code, and the images of it that become pictures."""

from dataclasses import dataclass


@dataclass
class Picture:
    """An image of the code, drawn from black to white by a range, or by a ramp of colors."""

    image: str
    title: str
    range: tuple[float, float] | None = None
    colormap: str | None = None
    size: int = 256


@dataclass
class Entry:
    function: str
    text: str
    code: str
    pictures: list[Picture]


HEIGHT = {"range": (0, 1), "colormap": "terrain"}
MASK = {"range": (0, 1)}

INPUTS = Entry(
    "",
    "Six images that the project draws itself ([Examples/Images](../../Examples/Images/README.md)). The working "
    "folder is the root of the repository.",
    """\
import numpy as np
import valuenodes as vn

terrain = vn.read("Examples/Images/terrain.exr")
edited = vn.read("Examples/Images/terrain_edited.exr")
mask = vn.read("Examples/Images/mask.png")
roads = vn.read("Examples/Images/roads.png")
letters = vn.read("Examples/Images/lettering.png")
coast = vn.read("Examples/Images/coast.png")
""",
    [
        Picture("terrain", "`terrain`", **HEIGHT),
        Picture("edited", "`edited`", **HEIGHT),
        Picture("mask", "`mask`", **MASK),
        Picture("roads", "`roads`", **MASK),
        Picture("letters", "`letters`", **MASK),
        Picture("coast", "`coast`"),
    ],
)

GROUPS = {
    "Values from images": [
        Entry(
            "to_value",
            "A photo becomes one value per pixel. Ranges can be turned round, and with `auto_level` faint heights "
            "fill the whole range.",
            """\
values = vn.to_value(coast)
negative = vn.to_value(coast, low=1, high=0)
faint = vn.add(vn.multiply(terrain, 0.2), 0.4)
leveled = vn.to_value(faint, auto_level=True)
""",
            [
                Picture("values", "`values`", **MASK),
                Picture("negative", "`negative`", **MASK),
                Picture("faint", "`faint`", **MASK),
                Picture("leveled", "`leveled`", **MASK),
            ],
        ),
    ],
    "Arithmetic": [
        Entry(
            "add",
            "A number raises the whole terrain; an image raises it where the image is bright.",
            """\
raised = vn.add(terrain, 0.3)
painted = vn.add(terrain, vn.multiply(mask, 0.5))
""",
            [
                Picture("terrain", "`terrain`", (0, 1.3), "terrain"),
                Picture("raised", "`raised`", (0, 1.3), "terrain"),
                Picture("painted", "`painted`", (0, 1.3), "terrain"),
            ],
        ),
        Entry(
            "subtract",
            "After minus before: a site is leveled, a road built, a pit dug.",
            """\
change = vn.subtract(edited, terrain)
""",
            [
                Picture("terrain", "`terrain`", **HEIGHT),
                Picture("edited", "`edited`", **HEIGHT),
                Picture("change", "`change`", (-0.12, 0.12), "blue_red"),
            ],
        ),
        Entry(
            "multiply",
            "A mask lets the terrain through where it is 1.",
            """\
masked = vn.multiply(terrain, mask)
""",
            [
                Picture("terrain", "`terrain`", **HEIGHT),
                Picture("mask", "`mask`", **MASK),
                Picture("masked", "`masked`", **HEIGHT),
            ],
        ),
        Entry(
            "divide",
            "A photo that is lit from one side, divided by its light, is even again.",
            """\
light = np.broadcast_to(np.linspace(0.2, 1, 960, dtype=np.float32), (640, 960))
uneven = vn.multiply(vn.to_value(coast), light)
even = vn.divide(uneven, light)
""",
            [
                Picture("uneven", "`uneven`", **MASK),
                Picture("vn.Image(light)", "`light`", **MASK),
                Picture("even", "`even`", **MASK),
            ],
        ),
        Entry(
            "power",
            "Exponents above 1 leave only the peaks standing; below 1 they lift the lowlands. 0 and 1 stay where "
            "they are. Exponents are an image, so they may differ from pixel to pixel.",
            """\
sharp = vn.power(terrain, np.full((512, 512), 3.0))
lifted = vn.power(terrain, np.full((512, 512), 0.4))
""",
            [
                Picture("terrain", "`terrain`", **HEIGHT),
                Picture("sharp", "`sharp`", **HEIGHT),
                Picture("lifted", "`lifted`", **HEIGHT),
            ],
        ),
        Entry(
            "minimum",
            "The lower of two: mountains cut to a plateau, and what two masks have in common.",
            """\
plateau = vn.minimum(terrain, 0.4)
both = vn.minimum(mask, roads)
""",
            [
                Picture("terrain", "`terrain`", **HEIGHT),
                Picture("plateau", "`plateau`", **HEIGHT),
                Picture("both", "`both`", **MASK),
            ],
        ),
        Entry(
            "maximum",
            "The higher of two: a terrain flooded to a level, and two masks united.",
            """\
flooded = vn.maximum(terrain, 0.3)
either = vn.maximum(mask, roads)
""",
            [
                Picture("terrain", "`terrain`", **HEIGHT),
                Picture("flooded", "`flooded`", **HEIGHT),
                Picture("either", "`either`", **MASK),
            ],
        ),
    ],
    "Remapping": [
        Entry(
            "clamp",
            "Values below 0.2 and above 0.5 become flat. A profile also bends what lies between.",
            """\
limited = vn.clamp(terrain, low=0.2, high=0.5)
domed = vn.clamp(terrain, low=0.2, high=0.5, profile="arc_out")
""",
            [
                Picture("terrain", "`terrain`", (0, 0.7), "viridis"),
                Picture("limited", "`limited`", (0, 0.7), "viridis"),
                Picture("domed", "`domed`", (0, 0.7), "viridis"),
            ],
        ),
        Entry(
            "steps",
            "Heights in 8 levels of the range that the image declares.",
            """\
terraces = vn.steps(terrain, steps=8)
""",
            [
                Picture("terrain", "`terrain`", **HEIGHT),
                Picture("terraces", "`terraces`", **HEIGHT),
            ],
        ),
        Entry(
            "function",
            "The square root opens up the lowlands; a sine makes rings of one height.",
            """\
root = vn.function(terrain, function="square_root")
rings = vn.function(vn.multiply(terrain, 15), function="sine")
""",
            [
                Picture("terrain", "`terrain`", **HEIGHT),
                Picture("root", "`root`", **HEIGHT),
                Picture("rings", "`rings`", (-1, 1), "blue_red"),
            ],
        ),
    ],
    "Masks": [
        Entry(
            "condition",
            "1 where the test holds, 0 elsewhere.",
            """\
high = vn.condition(terrain, condition="v_gt_a", a=0.4)
band = vn.condition(terrain, condition="a_lte_v_lt_b", a=0.2, b=0.3)
""",
            [
                Picture("terrain", "`terrain`", **HEIGHT),
                Picture("high", "`high`", **MASK),
                Picture("band", "`band`", **MASK),
            ],
        ),
        Entry(
            "compare",
            "Six masks at once; three of them show what the work on the terrain changed, filled up and dug away. "
            "Values are rounded to steps of 0.01 first. The speckle is wear by rain: less than a step, but across "
            "the border of two.",
            """\
compared = vn.compare(terrain, edited, precision="0.01")
changed, filled, dug = compared.image_a_df_b, compared.image_a_l_b, compared.image_a_g_b
""",
            [
                Picture("changed", "`changed`", **MASK),
                Picture("filled", "`filled`", **MASK),
                Picture("dug", "`dug`", **MASK),
            ],
        ),
        Entry(
            "value_range",
            "A band of heights around 0.35, hard and with soft edges.",
            """\
hard = vn.value_range(terrain, center=0.35, size=0.05)
soft = vn.value_range(terrain, center=0.35, size=0.05, falloff=0.2, profile="smooth")
""",
            [
                Picture("terrain", "`terrain`", **HEIGHT),
                Picture("hard", "`hard`", **MASK),
                Picture("soft", "`soft`", **MASK),
            ],
        ),
    ],
    "Shape": [
        Entry(
            "relief",
            "Lettering with beveled edges, which light from the upper left makes visible; a groove along the edges; every "
            "place of a soft mask as a dome.",
            """\
bevel = vn.relief(letters, radius=24, style="inner_bevel", soften=1)
lit = vn.add(vn.multiply(vn.add(*vn.gradient(bevel)), 8), 0.5)
groove = vn.relief(letters, radius=24, style="pillow_emboss", profile="smooth")
domes = vn.relief(mask, radius=20, profile="arc_out", soften=1)
""",
            [
                Picture("bevel", "`bevel`", (0, 1), size=400),
                Picture("lit", "`lit`", (0, 1), size=400),
                Picture("groove", "`groove`", (0, 1), size=400),
                Picture("domes", "`domes`", **MASK),
            ],
        ),
        Entry(
            "distance",
            "How far every pixel is from the roads: exact, in pixels, and across the borders of a tile. A cosine "
            "of it makes lines of one distance.",
            """\
far = vn.distance(roads)
lines = vn.function(vn.multiply(far, 0.5), function="cosine")
""",
            [
                Picture("roads", "`roads`", **MASK),
                Picture("far", "`far`", (0, 130), "magma"),
                Picture("lines", "`lines`", (-1, 1)),
            ],
        ),
        Entry(
            "gradient",
            "How the height changes to the right and downward, per pixel. The length of both together is the "
            "steepness.",
            """\
slope = vn.gradient(terrain)
steep = vn.function(
    vn.add(*(vn.multiply(part, part) for part in slope)), function="square_root"
)
""",
            [
                Picture("slope.output_x", "`slope.output_x`", (-0.03, 0.03), "blue_red"),
                Picture("slope.output_y", "`slope.output_y`", (-0.03, 0.03), "blue_red"),
                Picture("steep", "`steep`", (0, 0.04), "magma"),
            ],
        ),
        Entry(
            "ambient_occlusion",
            "Valleys see less of the sky than crests. The radius is how far is looked, and how high the terrain "
            "stands.",
            """\
sky = vn.ambient_occlusion(terrain, radius=60)
""",
            [
                Picture("terrain", "`terrain`", **HEIGHT),
                Picture("sky", "`sky`", (0.4, 1)),
            ],
        ),
        Entry(
            "connected_components",
            "Letters are told apart: every region has a number, and here a color. The hole of the A is a region "
            "too, and so is the background. Soft edges would connect everything, so the mask is made hard first.",
            """\
hard_letters = vn.condition(letters, condition="v_gt_a", a=0.5)
numbers = np.asarray(vn.connected_components(hard_letters)).astype(int)
colors = np.random.default_rng(3).uniform(0.35, 1, (numbers.max() + 1, 3))
colors[0] = 0.15
regions = vn.Image(colors[numbers])
""",
            [
                Picture("hard_letters", "`hard_letters`", (0, 1), size=400),
                Picture("regions", "`regions`", size=400),
            ],
        ),
        Entry(
            "component_edges",
            "Where levels meet: the contour lines of the terraces above.",
            """\
contours = vn.component_edges(terraces, threshold=0.05)
""",
            [
                Picture("terraces", "`terraces`", **HEIGHT),
                Picture("contours", "`contours`", **MASK),
            ],
        ),
    ],
}
