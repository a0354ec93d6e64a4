"""Plots as inline SVG, coloured by the page's own variables so that they follow its theme."""

import math

from report.markup import escape


def number_text(value):
    """Three digits, as one would write them."""
    if value == 0:
        return "0"
    if value >= 9.995:
        return f"{value:,.0f}" if value >= 99.5 else f"{value:.3g}"
    return f"{value:.2f}" if value >= 0.995 else f"{value:.2g}"


class LogAxis:
    """From a lowest to a highest value, in steps of ten, on so many pixels."""

    def __init__(self, low, high, start, end):
        self.low, self.high = math.log10(low), math.log10(high)
        if self.high - self.low < 1e-9:
            self.high = self.low + 1
        self.start, self.end = start, end

    def __call__(self, value):
        share = (math.log10(max(value, 1e-300)) - self.low) / (self.high - self.low)
        return self.start + (self.end - self.start) * min(1.0, max(0.0, share))

    def ticks(self, steps=(1,)):
        """Values with these first digits that lie on the axis."""
        values = [digit * 10.0**power for power in range(math.floor(self.low), math.ceil(self.high) + 1)
                  for digit in steps]
        return [one for one in values if self.low - 1e-9 <= math.log10(one) <= self.high + 1e-9]


def text(x, y, words, kind="", anchor="middle"):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" class="{kind}">{escape(words)}</text>'


def line(x1, y1, x2, y2, kind):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" class="{kind}"/>'


def dot(x, y, radius, kind, title=""):
    inner = f"<title>{escape(title)}</title>" if title else ""
    return f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{radius}" class="{kind}">{inner}</circle>'


def wrap(width, height, parts, label, kind=""):
    return (f'<svg class="{kind}" viewBox="0 0 {width} {height}" width="{width}" height="{height}" role="img" '
            f'aria-label="{escape(label)}">' + "".join(parts) + "</svg>")


def strip(contenders, low, high, label):
    """One row: each contender a dot with the middle half of its times, on one axis of multiples of the ceiling.

    `contenders` are (kind, title, quarter, median, three quarters), ours last, so that it lies on top.
    """
    width, height = 300, 26
    axis = LogAxis(low, high, 8, width - 8)
    parts = [line(axis(tick), 3, axis(tick), height - 3, "ceiling" if tick == 1 else "grid") for tick in axis.ticks()]
    for kind, title, first, middle, third in contenders:
        y = height / 2
        parts.append(line(axis(first), y, axis(third), y, f"whisker c-{kind}"))
        parts.append(dot(axis(middle), y, 5.5 if kind == "valuenodes" else 4, f"c-{kind}", title))
    return wrap(width, height, parts, label, "strip")


def tick_text(tick):
    """Short enough for the ends of an axis."""
    return f"{tick:g}×" if tick < 1000 else f"{tick / 1000:g}k×"


def strip_axis(low, high):
    width, height = 300, 18
    axis = LogAxis(low, high, 8, width - 8)
    return wrap(width, height, [text(axis(tick), 13, tick_text(tick), "tick") for tick in axis.ticks()],
                "multiples of the ceiling", "strip")


def swarm(points, low, high, width=900):
    """Dots on one axis, beside each other where they would lie on one another. Points are (value, kind, title)."""
    radius, middle, bottom = 5, 84, 34
    axis = LogAxis(low, high, 30, width - 30)
    placed, parts = [], []
    for value, kind, title in sorted(points):
        x = axis(value)
        level = 0
        offsets = [0] + [sign * step for step in range(1, 40) for sign in (1, -1)]
        for level in offsets:
            y = middle + level * 4
            if all((x - px) ** 2 + (y - py) ** 2 >= (2 * radius + 1) ** 2 for px, py in placed):
                break
        placed.append((x, middle + level * 4))
        parts.append(dot(x, middle + level * 4, radius, kind, title))
    # As high as the tallest heap.
    top = min([y for _, y in placed] + [middle]) - 2 * radius
    floor = max([y for _, y in placed] + [middle]) + 2 * radius
    frame = []
    above = [one for one in axis.ticks((1, 3)) if one >= 1]
    for tick in [*above, *(1 / one for one in above if one > 1 and 1 / one >= low)]:
        frame.append(line(axis(tick), top, axis(tick), floor, "ceiling" if tick == 1 else "grid"))
        frame.append(text(axis(tick), floor + 16, ratio_name(tick), "tick"))
    return (f'<svg viewBox="0 {top:.0f} {width} {floor - top + bottom:.0f}" class="wide" role="img" '
            'aria-label="ours beside the best peer">' + "".join(frame + parts)
            + text(30, floor + 31, "← others are faster", "tick", "start")
            + text(width - 30, floor + 31, "valuenodes is faster →", "tick", "end") + "</svg>")


def ratio_name(tick):
    return "equal" if tick == 1 else f"{tick:g}×" if tick > 1 else f"{round(1 / tick)}×"


def lines_plot(series, x_label, y_label, title):
    """Lines on two axes in powers of ten. A series is (name, kind, [(x, low, middle, high)])."""
    width, height, left, right, top, bottom = 560, 340, 58, 24, 12, 44
    xs = [x for _, _, points in series for x, *_ in points]
    ys = [y for _, _, points in series for _, *several in points for y in several]
    if not xs:
        return "<p>Nothing was measured.</p>"
    across = LogAxis(min(xs), max(xs), left, width - right)
    up = LogAxis(10 ** math.floor(math.log10(min(ys))), 10 ** math.ceil(math.log10(max(ys))), height - bottom, top)
    parts = [line(left, up(tick), width - right, up(tick), "grid") for tick in up.ticks()]
    parts += [text(left - 6, up(tick) + 4, number_text(tick), "tick", "end") for tick in up.ticks()]
    places = sorted(set(xs))
    places = places if len(places) <= 9 else places[::2]
    parts += [line(across(tick), top, across(tick), height - bottom, "grid") for tick in places]
    parts += [text(across(tick), height - bottom + 16, f"{tick:g}", "tick") for tick in places]
    for name, kind, points in series:
        area = [f"{across(x):.1f},{up(low):.1f}" for x, low, _, _ in points]
        area += [f"{across(x):.1f},{up(high):.1f}" for x, _, _, high in reversed(points)]
        parts.append(f'<polygon points="{" ".join(area)}" class="band {kind}"/>')
        path = " ".join(f"{across(x):.1f},{up(middle):.1f}" for x, _, middle, _ in points)
        parts.append(f'<polyline points="{path}" class="curve {kind}"/>')
        for x, _, middle, _ in points:
            parts.append(dot(across(x), up(middle), 3, kind, f"{name}, {x:g}: {number_text(middle)} {y_label}"))
    parts.append(text((left + width - right) / 2, height - 8, x_label, "label"))
    parts.append(f'<text x="14" y="{(top + height - bottom) / 2}" class="label" text-anchor="middle" '
                 f'transform="rotate(-90 14 {(top + height - bottom) / 2})">{escape(y_label)}</text>')
    return wrap(width, height, parts, title, "plot")
