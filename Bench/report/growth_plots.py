"""How times grow, as plots, and what is small."""

from report import figures, spread, svg
from report.case import NAMES
from report.growth import PLOTS
from report.markup import card, cell, escape, key, legend, line, noise, number, table, tag

#: Colours of the series, by their place.
COLORS = ("accent", "scipy", "opencv", "skimage", "good", "libvips", "numpy", "gegl")
SMALL_TEXTS = {
    "ten nodes": "a chain of ten nodes in an engine, on 256 x 256",
    "ten nodes – numpy": "the same ten steps in NumPy",
    "one node, 16 x 16": "one node in an engine, on 16 x 16", "add of images, 16 x 16": "vn.add of two images, 16 x 16",
    "add of arrays, 16 x 16": "vn.add of two arrays, 16 x 16", "add of arrays, 16 x 16 – numpy": "np.add of the same",
    "value apply": "value apply on a PNG file of 16 x 16, the whole process", "value --version": "value --version",
    "python3 with cv2": "the same in Python with OpenCV, the whole process", "true": "a process that does nothing",
}


def series_text(name):
    """A peer's series stands behind the one that it is beside."""
    ours, _, peer = name.partition(" – ")
    return f"{ours}, {NAMES[peer]}" if peer else ours


def growth_plot(run, plot):
    """Peers are dashed, in the colour of the series that they stand beside."""
    points = [one for one in run["growth"] if one["plot"] == plot and "times" in one]
    names = list(dict.fromkeys(one["series"] for one in points))
    alone = [name for name in names if " – " not in name]
    series, entries = [], []
    for name in names:
        first, _, peer = name.partition(" – ")
        place = alone.index(first) if first in alone else 0
        places = []
        for one in points:
            if one["series"] == name:
                _, low, middle, high, _ = spread.describe(one["times"])
                places.append((one["at"], *(value / one["unit"] for value in (low, middle, high))))
        series.append((series_text(name), f"s-{place}" + " dashed" * bool(peer), places))
        entries.append(key(COLORS[place], series_text(name), faint=bool(peer)))
    title, x_label, y_label = PLOTS[plot]
    notes = [f"{one.get('series', 'Left out')}: {one['problem']}." for one in run["growth"]
             if one["plot"] == plot and "problem" in one]
    return card(tag("h3", title) + svg.lines_plot(series, x_label, y_label, title) + legend(entries)
                + "".join(tag("p", escape(note), "soft") for note in notes))


def small_times(run):
    """What is small, as pairs of a name and times; the long chain is only there for what follows from it."""
    both = {**run["small"].get("times", {}), **run["small"].get("program", {})}
    return [(name, times) for name, times in both.items() if times and not name.startswith("1001")]


def per_node(run):
    """Seconds that one more node of 16 x 16 costs in a chain."""
    times = run["small"].get("times", {})
    one, many = (times.get(name) for name in ("one node, 16 x 16", "1001 nodes, 16 x 16"))
    return (spread.median(many) - spread.median(one)) / 1000 if one and many else None


def small_table(run):
    lines = []
    node = per_node(run)
    if node is not None:
        text = "one more node in a chain, on 16 x 16: what a node costs beyond its pixels"
        lines.append(line(cell(text), number(figures.time_text(node)), cell("")))
    for name, times in small_times(run):
        lines.append(line(cell(escape(SMALL_TEXTS.get(name, name))), number(figures.time_text(spread.median(times))),
                          noise(figures.noise_text(times))))
    lines += [line(cell(escape(name)), cell(escape(problem), "off", colspan=2))
              for name, problem in run["small"].get("problems", {}).items()]
    return table((), lines)


def make(run):
    if not run["growth"]:
        return ""
    threads = max(run["threads"])
    note = (f"With {threads} thread{'s' * (threads > 1)}; bands are the middle half. Radii on {run['radius_side']} x "
            f"{run['radius_side']}; the distance is that to a grid of points whose cells have this radius. In "
            "chains the engine drops what nobody needs any more.")
    plots = [growth_plot(run, plot) for plot in PLOTS] + [card(tag("h3", "What is small") + small_table(run))]
    return tag("h2", "How it grows, and what is small") + tag("p", note, "soft") + tag("div", "".join(plots), "plots")
