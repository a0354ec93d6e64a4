"""What the node types' self-tests render, case for case, slow and plain.

Written from the rules that the program promises to its users; nothing here calls the program.
Samples are numpy float32 and every step is a single-precision step in the order of the rule.

CASES maps the folder of each test, below that of all value tests, to its cases in order, and
render(directory, case, input_folder) gives the Picture of a case: samples in straight colour,
colour mode, size, pin, pivot, value range and outside value. The test "absolute" is not among
them, because it creates no node and so renders nothing.

The rules fix every bit, but for the cases whose name ends in "-soften": their mask is blurred
here in double precision, and the program promises to come within 1e-5 of that mask.

Run as a program, the module compares itself with numbers that were worked out by hand.
"""

import math
import tempfile
from collections import OrderedDict
from pathlib import Path

import numpy as np
import OpenImageIO as oiio

from analysis_model import relief
from cli_support import COLOR, VALUE, F, Picture, arithmetic, finite_range, write_file

ONE = F(1)

BLACK = (0, 0, 0, 1)
WHITE = (1, 1, 1, 1)
BRIGHT_GREY = (0.75, 0.75, 0.75, 1)
MIDDLE_GREY = (0.5, 0.5, 0.5, 1)
DARK_GREY = (0.25, 0.25, 0.25, 1)


# ---------------------------------------------------------------------------------------------
# Inputs


def rectangle(frame, color):
    """A colour image of the frame's size and place, the same colour everywhere."""
    x, y, width, height = frame
    data = np.empty((height, width, 4), dtype=F)
    data[:, :] = color
    return Picture(data, COLOR, (x, y))


def checker(frame, cell, color_00, color_10, color_01, color_11):
    """Cells of the given width and height, counted from the frame's corner; the first digit of a
    colour is the parity of the cell's column, the second that of its row."""
    x, y, width, height = frame
    colors = {(0, 0): color_00, (1, 0): color_10, (0, 1): color_01, (1, 1): color_11}
    data = np.empty((height, width, 4), dtype=F)
    for row in range(height):
        for column in range(width):
            data[row, column] = colors[column // cell[0] % 2, row // cell[1] % 2]
    return Picture(data, COLOR, (x, y))


def to_value(picture, low=0.0, high=1.0):
    """The picture as one number per pixel, its nominal range taken to low and high. The result is
    a fresh image, so nothing lies outside it but 0."""
    low, high = F(low), F(high)
    value = picture.as_value()
    scale = ONE / (value.high - value.low)
    data = (value.data - value.low) * scale * (high - low) + low
    return Picture(data, VALUE, picture.pin, picture.pivot, low, high)


def read_gray(folder, path):
    """An 8-bit file of one channel: 0 to 255 become the floats nearest to 0/255 to 255/255. Both
    kinds of slash separate folders in the path."""
    file = Path(folder, *path.split("\\"))
    source = oiio.ImageInput.open(str(file))
    if source is None:
        raise FileNotFoundError(oiio.geterror())
    layout = source.spec()
    if layout.nchannels != 1 or str(layout.format) != "uint8":
        raise ValueError(f"{file}: not an 8-bit file of one channel")
    data = np.asarray(source.read_image("uint8")).astype(F) / F(255)
    source.close()
    return Picture(data.reshape(layout.height, layout.width), VALUE)


def constant_a():
    return rectangle((0, 16, 64, 32), WHITE)


def constant_b():
    return rectangle((16, 0, 32, 64), WHITE)


def checker_a():
    return to_value(checker((0, 0, 64, 64), (16, 32), BLACK, WHITE, MIDDLE_GREY, DARK_GREY))


def checker_b():
    return to_value(checker((16, 16, 32, 32), (8, 8), WHITE, MIDDLE_GREY, BLACK, BRIGHT_GREY))


INPUTS = {
    "constant-a": constant_a,
    "constant-b": constant_b,
    "checker-a": checker_a,
    "checker-b": checker_b,
}


def condition_checker():
    return checker((0, 0, 64, 64), (16, 16), BLACK, WHITE, WHITE, BLACK)


# ---------------------------------------------------------------------------------------------
# Condition

# Per word, in the order of the node's list: the test of the samples v against their lowest and
# highest sample and the bounds a and b.
CONDITIONS = OrderedDict(
    [
        ("v_eq_min", lambda v, low, high, a, b: v == low),
        ("v_df_min", lambda v, low, high, a, b: v != low),
        ("v_eq_max", lambda v, low, high, a, b: v == high),
        ("v_df_max", lambda v, low, high, a, b: v != high),
        ("v_lt_a", lambda v, low, high, a, b: v < a),
        ("v_lte_a", lambda v, low, high, a, b: v <= a),
        ("v_eq_a", lambda v, low, high, a, b: v == a),
        ("v_gte_a", lambda v, low, high, a, b: v >= a),
        ("v_gt_a", lambda v, low, high, a, b: v > a),
        ("a_lt_v_lt_b", lambda v, low, high, a, b: (a < v) & (v < b)),
        ("a_lte_v_lt_b", lambda v, low, high, a, b: (a <= v) & (v < b)),
        ("a_lt_v_lte_b", lambda v, low, high, a, b: (a < v) & (v <= b)),
        ("a_lte_v_lte_b", lambda v, low, high, a, b: (a <= v) & (v <= b)),
    ]
)


def condition(picture, word, a, b):
    """1 where the test holds and 0 elsewhere, for every sample of every channel."""
    data = picture.data
    held = CONDITIONS[word](data, data.min(), data.max(), F(a), F(b))
    made = np.where(held, ONE, F(0))
    return Picture(made, picture.mode, picture.pin, picture.pivot, *finite_range(made))


# ---------------------------------------------------------------------------------------------
# The cases of each test: name and a function that takes the folder of the input files


def arithmetic_cases(operation, prefix):
    """The inputs by themselves, the node on two of them in both orders, and the node on one of
    them with its constant at 5 and at 10."""
    cases = OrderedDict()

    def alone(name):
        cases[name] = lambda folder: INPUTS[name]()

    def together(first, second):
        cases[f"{prefix}-{first}-{second}"] = lambda folder: arithmetic(
            operation, [INPUTS[first](), INPUTS[second]()]
        )

    def with_number(name, number):
        cases[f"{prefix}-{name}-{number}"] = lambda folder: arithmetic(
            operation, [INPUTS[name]()], number
        )

    for first, second in (("constant-a", "constant-b"), ("checker-a", "checker-b")):
        alone(first)
        alone(second)
        together(first, second)
        together(second, first)
    for name in INPUTS:
        for number in (5, 10):
            with_number(name, number)
    return cases


def condition_cases():
    """Both bounds are 0 until the test sets them: a before the first word that reads it, b before
    the first word that reads both."""
    cases = OrderedDict(checker=lambda folder: condition_checker())
    words = list(CONDITIONS)

    def add(word, a, b):
        cases[f"checker-condition-{word}"] = lambda folder: condition(
            condition_checker(), word, a, b
        )

    for place, word in enumerate(words):
        a = 0.33 if place >= words.index("v_lt_a") else 0.0
        b = 0.66 if place >= words.index("a_lt_v_lt_b") else 0.0
        add(word, a, b)
    return cases


def relief_cases(path, style, profile, settings):
    """One case per radius and softening; all other attributes keep their defaults."""
    cases = OrderedDict()
    stem = path.split("\\")[-1].split(".")[0]

    def add(radius, soften):
        ending = "-soften" if soften else ""
        cases[f"{stem}-{style}-{radius:02}-{profile}{ending}"] = lambda folder: relief(
            read_gray(folder, path), radius=radius, style=style, profile=profile, soften=soften
        )

    for radius, soften in settings:
        add(radius, soften)
    return cases


def levels_cases():
    settings = ((0, 0), (5, 0), (5, 2), (15, 2))
    cases = OrderedDict()
    for path, profile in (
        ("input\\ae.png", "linear"),
        ("input\\ae.png", "arc_in"),
        ("input\\rect_across.png", "linear"),
    ):
        cases.update(relief_cases(path, "levels", profile, settings))
    return cases


RENDERERS = OrderedDict(
    [
        ("add", arithmetic_cases("Add", "add")),
        ("multiply", arithmetic_cases("Multiply", "multiply")),
        ("min", arithmetic_cases("Minimum", "min")),
        ("max", arithmetic_cases("Maximum", "max")),
        ("condition", condition_cases()),
        (
            "relief/inner_bevel",
            relief_cases("input\\ae.png", "inner_bevel", "linear", ((0, 0), (10, 0), (10, 2))),
        ),
        ("relief/levels", levels_cases()),
    ]
)

CASES = OrderedDict((directory, list(cases)) for directory, cases in RENDERERS.items())


def render(directory, case, input_folder):
    """The picture of one case. The input folder is the one in which the tests are run, which holds
    input/ae.png and input/rect_across.png; only the relief tests read it."""
    return RENDERERS[directory][case](input_folder)


# ---------------------------------------------------------------------------------------------
# Numbers worked out by hand


def check_header(picture, mode, size, pin, pivot, span):
    assert picture.mode == mode, picture.mode
    assert (picture.width, picture.height) == size, (picture.width, picture.height)
    assert picture.pin == pin, picture.pin
    assert picture.pivot == pivot, picture.pivot
    assert (picture.low, picture.high) == span, (picture.low, picture.high)
    assert picture.outside == 0, picture.outside
    assert picture.data.dtype == F, picture.data.dtype


def check_pixels(picture, pixels):
    """Each (x, y, wanted) counts from the upper left corner; wanted holds for every channel, or
    is one number per channel."""
    for x, y, wanted in pixels:
        got = picture.data[y, x]
        assert (got == np.broadcast_to(np.array(wanted, dtype=F), got.shape)).all(), (x, y, got)


def check_names():
    assert sum(len(names) for names in CASES.values()) == 93
    assert [len(names) for names in CASES.values()] == [16, 16, 16, 16, 14, 3, 12]
    assert CASES["min"] == [
        "constant-a",
        "constant-b",
        "min-constant-a-constant-b",
        "min-constant-b-constant-a",
        "checker-a",
        "checker-b",
        "min-checker-a-checker-b",
        "min-checker-b-checker-a",
        "min-constant-a-5",
        "min-constant-a-10",
        "min-constant-b-5",
        "min-constant-b-10",
        "min-checker-a-5",
        "min-checker-a-10",
        "min-checker-b-5",
        "min-checker-b-10",
    ]
    assert CASES["multiply"][-1] == "multiply-checker-b-10"
    assert CASES["condition"][-1] == "checker-condition-a_lte_v_lte_b"
    assert CASES["relief/inner_bevel"][-1] == "ae-inner_bevel-10-linear-soften"
    assert CASES["relief/levels"][5] == "ae-levels-05-arc_in"
    assert CASES["relief/levels"][-1] == "rect_across-levels-15-linear-soften"


def check_constants():
    """A lying bar (0, 16) to (64, 48) and a standing one (16, 0) to (48, 64): they cross in a
    square, leave four arms and four empty corners."""
    check_header(render("add", "constant-a", None), COLOR, (64, 32), (0, 16), (0, 0), (0, 1))
    check_header(render("max", "constant-b", None), COLOR, (32, 64), (16, 0), (0, 0), (0, 1))
    for directory, cross, arm, span in (
        ("add", 2, 1, (0, 2)),
        ("multiply", 1, 0, (0, 1)),
        ("min", 1, 0, (0, 1)),
        ("max", 1, 1, (0, 1)),
    ):
        both = render(directory, f"{directory}-constant-a-constant-b", None)
        swapped = render(directory, f"{directory}-constant-b-constant-a", None)
        check_header(both, COLOR, (64, 64), (0, 16), (0, 0.25), span)
        check_header(swapped, COLOR, (64, 64), (16, 0), (0.25, 0), span)
        for picture in (both, swapped):
            check_pixels(picture, [(0, 0, 0), (15, 15, 0), (48, 15, 0), (63, 63, 0)])
            check_pixels(picture, [(16, 16, cross), (47, 47, cross), (32, 20, cross)])
            check_pixels(picture, [(0, 16, arm), (63, 47, arm), (16, 0, arm), (47, 63, arm)])
            assert picture.data.sum() == 4 * (32 * 32 * cross + 4 * 32 * 16 * arm)
    numbers = (("add", 6, 11), ("multiply", 5, 10), ("min", 1, 1), ("max", 5, 10))
    for directory, five, ten in numbers:
        for number, wanted in ((5, five), (10, ten)):
            picture = render(directory, f"{directory}-constant-a-{number}", None)
            check_header(picture, COLOR, (64, 32), (0, 16), (0, 0), (wanted, wanted))
            assert (picture.data == wanted).all()


def check_checkers():
    """In document coordinates (20, 20) is the second column and first row of the large cells, and
    (20, 36) is in their second row; of the small cells, counted from (16, 16), it is the first of
    both, and (20, 36) the first column and third row, which has the colours of the first."""
    large = render("add", "checker-a", None)
    check_header(large, VALUE, (64, 64), (0, 0), (0, 0), (0, 1))
    check_pixels(large, [(0, 0, 0), (16, 0, 1), (32, 31, 0), (0, 32, 0.5), (63, 63, 0.25)])
    small = render("add", "checker-b", None)
    check_header(small, VALUE, (32, 32), (16, 16), (0, 0), (0, 1))
    check_pixels(small, [(0, 0, 1), (8, 0, 0.5), (0, 8, 0), (8, 8, 0.75), (16, 16, 1)])

    for directory, corner, upper, lower, span in (
        ("add", 0.25, 2, 1.25, (0, 2)),
        ("multiply", 0, 1, 0.25, (0, 1)),
        ("min", 0, 1, 0.25, (0, 1)),
        ("max", 0.25, 1, 1, (0, 1)),
    ):
        both = render(directory, f"{directory}-checker-a-checker-b", None)
        swapped = render(directory, f"{directory}-checker-b-checker-a", None)
        check_header(both, VALUE, (64, 64), (0, 0), (0, 0), span)
        check_header(swapped, VALUE, (64, 64), (16, 16), (0.25, 0.25), span)
        for picture in (both, swapped):
            check_pixels(picture, [(63, 63, corner), (20, 20, upper), (20, 36, lower)])

    check_pixels(render("add", "add-checker-b-10", None), [(8, 8, 10.75), (0, 8, 10)])
    check_pixels(render("multiply", "multiply-checker-a-5", None), [(0, 32, 2.5), (63, 63, 1.25)])
    tenfold = render("multiply", "multiply-checker-b-10", None)
    check_header(tenfold, VALUE, (32, 32), (16, 16), (0, 0), (0, 10))
    assert (render("min", "min-checker-a-5", None).data == large.data).all()
    assert (render("max", "max-checker-a-5", None).data == 5).all()


def check_conditions():
    """The samples are 0 and 1 only: lowest 0, highest 1, and neither lies between 0.33 and 0.66.
    The opacity is 1 everywhere."""
    plain = render("condition", "checker", None)
    check_header(plain, COLOR, (64, 64), (0, 0), (0, 0), (0, 1))
    check_pixels(plain, [(0, 0, BLACK), (16, 0, WHITE), (0, 16, WHITE), (16, 16, BLACK)])
    answers = {
        "v_eq_min": (1, 0),
        "v_df_min": (0, 1),
        "v_eq_max": (0, 1),
        "v_df_max": (1, 0),
        "v_lt_a": (1, 0),
        "v_lte_a": (1, 0),
        "v_eq_a": (0, 0),
        "v_gte_a": (0, 1),
        "v_gt_a": (0, 1),
        "a_lt_v_lt_b": (0, 0),
        "a_lte_v_lt_b": (0, 0),
        "a_lt_v_lte_b": (0, 0),
        "a_lte_v_lte_b": (0, 0),
    }
    for word, (of_zero, of_one) in answers.items():
        picture = render("condition", f"checker-condition-{word}", None)
        span = (0, max(of_zero, of_one))
        check_header(picture, COLOR, (64, 64), (0, 0), (0, 0), span)
        wanted = np.where(plain.data == 0, of_zero, of_one)
        assert (picture.data == wanted).all(), word

    # The checker's samples leave most of the comparisons at their bounds open.
    row = Picture([[0, 0.25, 0.5, 0.75, 1]], VALUE)
    for word, wanted in (
        ("v_lt_a", (1, 0, 0, 0, 0)),
        ("v_lte_a", (1, 1, 0, 0, 0)),
        ("v_eq_a", (0, 1, 0, 0, 0)),
        ("v_gte_a", (0, 1, 1, 1, 1)),
        ("v_gt_a", (0, 0, 1, 1, 1)),
        ("a_lt_v_lt_b", (0, 0, 1, 0, 0)),
        ("a_lte_v_lt_b", (0, 1, 1, 0, 0)),
        ("a_lt_v_lte_b", (0, 0, 1, 1, 0)),
        ("a_lte_v_lte_b", (0, 1, 1, 1, 0)),
    ):
        assert condition(row, word, 0.25, 0.75).data.ravel().tolist() == list(wanted), word


def share_of(first, end, y):
    """The share of row y in the rows from first up to end, blurred by two pixels."""
    weights = {k: math.exp(-k * k / 8) for k in range(-8, 9)}
    return sum(w for k, w in weights.items() if first <= y + k < end) / sum(weights.values())


def check_levels(folder):
    """Two lone pixels, one of full height and one of height h = 102 / 255 = 0.4. With the linear
    profile and radius 5 the first raises 1 - d / 5 and the second h - d / 5 around it."""
    data = np.zeros((40, 50), dtype=np.uint8)
    data[10, 0], data[30, 30] = 255, 102
    write_file(folder / "input" / "ae.png", data, "uint8")
    plain = render("relief/levels", "ae-levels-00-linear", folder)
    check_header(plain, VALUE, (50, 40), (0, 0), (0, 0), (0, 1))
    assert abs(plain.data[30, 30, 0] - 0.4) < 1e-7 and plain.data[10, 0, 0] == 1
    assert np.count_nonzero(plain.data) == 2

    linear = render("relief/levels", "ae-levels-05-linear", folder)
    check_header(linear, VALUE, (50, 40), (0, 0), (0, 0), (0, 1))
    arc_in = render("relief/levels", "ae-levels-05-arc_in", folder)
    offsets = ((0, 0), (3, 0), (-1, 0), (-2, 0), (0, -4), (1, 1), (2, 4), (3, 4), (5, 0))
    for dx, dy in offsets:
        distance = math.sqrt(dx * dx + dy * dy)
        # Across the left border lies the right end of the row.
        for x, y, height in ((dx % 50, 10 + dy, 1.0), (30 + dx, 30 + dy, 0.4)):
            u = max(0.0, 1 - distance / (5 * height))
            assert abs(linear.data[y, x, 0] - height * u) < 1e-6, (x, y)
            dome = height * (1 - math.sqrt(1 - u * u))
            assert abs(arc_in.data[y, x, 0] - dome) < 1e-6, (x, y)

    # Softened, the slopes are flatter than a cone's, so a radius of 5 gives the soft image: the
    # weights of a Gaussian of 2 pixels cut off beyond 8, their sum being 5.0132 within 1e-4.
    soft = render("relief/levels", "ae-levels-05-linear-soften", folder)
    peak = 1 / 5.0132**2
    for x, y, share in ((0, 10, 1), (2, 10, math.exp(-0.5)), (49, 11, math.exp(-0.25)), (9, 10, 0)):
        assert abs(soft.data[y, x, 0] - peak * share) < 2e-5, (x, y)
    assert abs(soft.data[30, 30, 0] - 0.4 * peak) < 2e-5

    # A bar from side to side raises the same slope along its whole length.
    data = np.zeros((60, 24), dtype=np.uint8)
    data[20:30] = 255
    write_file(folder / "input" / "rect_across.png", data, "uint8")
    across = render("relief/levels", "rect_across-levels-05-linear", folder)
    for y, wanted in ((14, 0), (15, 0), (16, 0.2), (18, 0.6), (20, 1), (29, 1), (32, 0.4)):
        assert np.abs(across.data[y] - wanted).max() < 1e-6, y
    # Softened, a row has the share of the Gaussian's weights that falls on the bar, and of the rows
    # d away the highest share less d / 15 is kept. Rows 53 to 56 lie beyond the reach of both.
    soft = render("relief/levels", "rect_across-levels-15-linear-soften", folder)
    for y in range(60):
        wanted = max(share_of(20, 30, (y + d) % 60) - abs(d) / 15 for d in range(-14, 15))
        assert np.abs(soft.data[y] - max(0.0, wanted)).max() < 1e-6, y
    assert (soft.data[53:57] == 0).all()


def check_bevel(folder):
    """A bar of 40 rows from side to side: shrinking by c takes c rows off each edge, so at depth p
    (0 for the outermost row) the last level written is that of step min(p, 9)."""
    data = np.zeros((64, 12), dtype=np.uint8)
    data[12:52] = 255
    write_file(folder / "input" / "ae.png", data, "uint8")
    none = render("relief/inner_bevel", "ae-inner_bevel-00-linear", folder)
    check_header(none, VALUE, (12, 64), (0, 0), (0, 0), (0, 1))
    assert (none.data == 0).all()

    bevel = render("relief/inner_bevel", "ae-inner_bevel-10-linear", folder)
    check_header(bevel, VALUE, (12, 64), (0, 0), (0, 0), (0, 1))
    for y in range(64):
        depth = min(y - 12, 51 - y)
        wanted = F(min(depth, 9) + 1) * F(0.1) if depth >= 0 else 0
        assert (bevel.data[y] == wanted).all(), y

    # Softened, shrinking by c takes the share of the row c steps further out.
    soft = render("relief/inner_bevel", "ae-inner_bevel-10-linear-soften", folder)
    for y in range(64):
        outward = -1 if y < 32 else 1
        wanted = 0.0
        for i in range(10):
            wanted += ((i + 1) / 10 - wanted) * share_of(12, 52, y + outward * i)
        assert np.abs(soft.data[y] - wanted).max() < 1e-6, y
    assert (soft.data[31:33] == 1).all() and (soft.data[:3] == 0).all()


def self_check():
    check_names()
    check_constants()
    check_checkers()
    check_conditions()
    with tempfile.TemporaryDirectory(prefix="value-model-") as folder:
        (Path(folder) / "input").mkdir()
        check_levels(Path(folder))
        check_bevel(Path(folder))


if __name__ == "__main__":
    self_check()
    print("The model agrees with the numbers worked out by hand.")
