"""The page of a run: one file that needs nothing else, out/bench.html."""

from pathlib import Path

from report import figures, rows_table, spread, svg
from report.case import PEERS
from report.growth import PLOTS
from report.svg import escape

NAMES = {"valuenodes": "valuenodes", **PEERS, "copy": "plain copy", "stream": "streaming copy"}
#: Colours of growth's series, by their place; peers have their own.
SERIES_COLORS = ("accent", "scipy", "opencv", "skimage", "good", "libvips", "numpy", "gegl")


def style(run):
    text = (Path(__file__).parent / "page.css").read_text(encoding="utf-8")
    for name in ("valuenodes", *PEERS):
        color = "accent" if name == "valuenodes" else name
        text += f"svg .c-{name} {{ fill: var(--{color}); }} svg line.c-{name} {{ stroke: var(--{color}); }}\n"
    for place, color in enumerate(SERIES_COLORS):
        text += (f"svg .s-{place} {{ fill: var(--{color}); }} svg polyline.s-{place} {{ stroke: var(--{color}); fill: none; }}"
                 f"\n")
    # One number of threads is shown at a time; what is chosen is written in ink.
    for threads in run["threads"]:
        text += (f"#threads-{threads}:checked ~ main label[for=threads-{threads}] {{ background: var(--ink); "
                 "color: var(--sheet); }\n")
        for other in run["threads"]:
            if other != threads:
                text += f"#threads-{threads}:checked ~ main .threads-{other} {{ display: none; }}\n"
    return text


def per_threads(run, make):
    """The same part for each number of threads, of which one is shown."""
    return "".join(f'<div class="threads-{threads}">{make(threads)}</div>' for threads in run["threads"])


def tabs(run):
    labels = [f'<label for="threads-{threads}">{threads} thread{"s" * (threads > 1)}</label>' for threads in run["threads"]]
    return f'<div class="tabs">{"".join(labels)}</div>'


def facts(pairs):
    return '<dl class="facts">' + "".join(f"<dt>{escape(name)}</dt><dd>{escape(text)}</dd>" for name, text in pairs) + "</dl>"


# ---- The first screen ----


def summary_cards(run, threads):
    count = figures.counts(run, threads)
    near = [figures.multiple(row, threads, figures.OURS) for row in run["rows"]]
    near = [one for one in near if one is not None]
    cards = [
        (sum(one <= 1.5 for one in near), f"of {len(near)} rows take at most 1.5 times as long as moving their bytes"),
        (count["faster"], "rows are faster than every peer"),
        (count["even"], "are even with the fastest peer: closer than their spread"),
        (count["slower"], "rows are slower than the fastest peer"),
        (count["alone"], "have no peer"),
    ]
    return '<div class="cards">' + "".join(f'<div class="card"><b>{number}</b>{text}</div>' for number, text in cards) + "</div>"


def peer_swarm(run, threads):
    points = []
    for row in run["rows"]:
        peer, ratio, verdict = figures.against_peer(row, threads)
        if peer:
            words = f"{row['text']}: {svg.number_text(max(ratio, 1 / ratio))} times as fast as"
            title = f"{words} {NAMES[peer]}" if ratio >= 1 else (
                f"{row['text']}: {NAMES[peer]} is {svg.number_text(1 / ratio)} times as fast")
            points.append((ratio, f"k-{verdict}", title))
    if not points:
        return "<p>No peer was measured.</p>"
    low = min(0.1, *(one for one, _, _ in points)) * 0.9
    high = max(10, *(one for one, _, _ in points)) * 1.1
    return '<div class="card">' + svg.swarm(points, low, high) + "</div>"


def slower_list(run, threads):
    """Where others are faster, plainly."""
    found = []
    for row in run["rows"]:
        peer, ratio, verdict = figures.against_peer(row, threads)
        if verdict == "slower":
            found.append((ratio, row, peer))
    if not found:
        return "<p>No row is slower than the fastest peer by more than the spread.</p>"
    lines = []
    for ratio, row, peer in sorted(found, key=lambda one: one[0]):
        ours, theirs = (figures.difference_text(row["differences"].get(name))[0] for name in ("valuenodes", peer))
        lines.append(f'<tr><td><a href="#{rows_table.anchor(row)}">{escape(row["group"])}: {escape(row["name"])}</a></td>'
                     f'<td class="number slower">{svg.number_text(1 / ratio)}×</td><td>{NAMES[peer]}</td>'
                     f'<td>{escape(ours)}</td><td>{escape(theirs)}</td><td class="remark">{escape(row["remark"])}</td></tr>')
    return ('<div class="card scroll"><table><tr><th>Row</th><th class="number">slower by</th><th>than</th>'
            "<th>our largest difference</th><th>theirs</th><th>what differs</th></tr>" + "".join(lines) + "</table></div>")


def ceilings(run):
    lines = []
    for threads in run["threads"]:
        for name in figures.COPIES:
            times = figures.pooled_copies(run, threads, name)
            if times:
                low, first, middle, third, high = spread.describe(times)
                rate = 2 * run["side"] ** 2 * 4 / middle / 1e9
                lines.append(f'<tr><td>{NAMES[name]}</td><td class="number">{threads}</td><td class="number">'
                             f'{figures.time_text(middle)}</td><td class="number">{rate:.1f} GB/s</td><td class="number '
                             f'noise">{figures.time_text(first)} to {figures.time_text(third)}</td><td class="number noise">'
                             f"{figures.time_text(low)} to {figures.time_text(high)}</td></tr>")
    return ('<div class="card scroll"><table><tr><th>Copy of one image</th><th class="number">threads</th><th class="number">'
            'median</th><th class="number">read and written</th><th class="number">middle half</th><th class="number">'
            "lowest to highest</th></tr>" + "".join(lines) + "</table></div>")


def machine_card(run):
    described, load = run["machine"], run["load"]
    minutes = run["seconds"] / 60
    pairs = [
        ("Measured", f"{run['date']}, {minutes:.0f} min, {run['plan']} plan"),
        ("Processor", f"{described['processor']}, {described['processors']} processors, {described['instructions']}"
         + (", a virtual machine" if described["virtual"] else "")),
        ("Caches", ", ".join(f"{level} {size}" for level, size in described["caches"].items())),
        ("Memory", f"{described['memory'] / 2**30:.0f} GiB, huge pages: {described['huge pages']}"),
        ("Images", f"{run['side']} x {run['side']} samples of 32 bits, {run['side'] ** 2 * 4 / 2**20:g} MiB each"),
        ("Load", f"{load['before']:.1f} before, {load['lowest']:.1f} to {load['highest']:.1f} meanwhile; "
         f"{run['stolen'] * 100:.1f} % of the time was taken away from the machine"),
    ]
    return f'<div class="card"><h3>Machine and run</h3>{facts(pairs)}</div>'


def versions_card(run):
    return f'<div class="card"><h3>Versions</h3>{facts(run["versions"].items())}</div>'


def legend(run):
    used = [name for name in ("valuenodes", *PEERS) if any(
        figures.times_of(row, threads, name) for row in run["rows"] for threads in run["threads"])]
    items = [f'<span><i style="background:var(--{"accent" if name == "valuenodes" else name})"></i>{NAMES[name]}</span>'
             for name in used]
    return f'<div class="legend">{"".join(items)}</div>'


# ---- Growth and what is small ----


def growth_plot(run, plot):
    """Peers are dashed, in the colour of the series that they stand beside."""
    points = [one for one in run["growth"] if one["plot"] == plot and "times" in one]
    names = list(dict.fromkeys(one["series"] for one in points))
    alone = [name for name in names if " – " not in name]
    scale = 1e-6 if plot == "nodes" else 1e-9
    series, labels = [], []
    for name in names:
        first = name.partition(" – ")[0]
        place = alone.index(first) if first in alone else 0
        kind = f"s-{place}" + " dashed" * (" – " in name)
        line = []
        for one in points:
            if one["series"] == name:
                _, low, middle, high, _ = spread.describe(one["times"])
                line.append((one["at"], *(value / one["unit"] * (1e-6 if plot == "nodes" else 1e-9) / scale
                                          for value in (low, middle, high))))
        series.append((name, kind, line))
        labels.append(f'<span><i style="background:var(--{SERIES_COLORS[place]}){";opacity:.45" * (" – " in name)}"></i>'
                      f"{escape(name.replace('numpy', 'NumPy').replace('opencv', 'OpenCV'))}</span>")
    title, x_label, y_label = PLOTS[plot]
    problems = [one for one in run["growth"] if one["plot"] == plot and "problem" in one]
    notes = "".join(f'<p class="soft">{escape(one.get("series", "Left out"))}: {escape(one["problem"])}.</p>' for one in problems)
    return (f'<div class="card"><h3>{title}</h3>' + svg.lines_plot(series, x_label, y_label, title)
            + f'<div class="legend">{"".join(labels)}</div>{notes}</div>')


def small_rows(run):
    """What is small, as (text, times) and what follows from two of them."""
    times, program = run["small"].get("times", {}), run["small"]["program"]
    found = [(name, values) for name, values in times.items() if values and not name.startswith("1001")]
    found += [(name, values) for name, values in program.items() if values]
    return found


def per_node(run):
    """Seconds that one more node of 16 x 16 costs in a chain."""
    times = run["small"].get("times", {})
    one, many = (times.get(name) for name in ("one node, 16 x 16", "1001 nodes, 16 x 16"))
    return (spread.median(many) - spread.median(one)) / 1000 if one and many else None


SMALL_TEXTS = {
    "ten nodes": "a chain of ten nodes in an engine, on 256 x 256", "ten nodes – numpy": "the same ten steps in NumPy",
    "one node, 16 x 16": "one node in an engine, on 16 x 16", "add of images, 16 x 16": "vn.add of two images, 16 x 16",
    "add of arrays, 16 x 16": "vn.add of two arrays, 16 x 16", "add of arrays, 16 x 16 – numpy": "np.add of the same",
    "value apply": "value apply on a PNG file of 16 x 16, the whole process", "value --version": "value --version",
    "python3 with cv2": "the same in Python with OpenCV, the whole process", "true": "a process that does nothing",
}


def small_table(run):
    lines = [f'<tr><td>{escape(SMALL_TEXTS.get(name, name))}</td><td class="number">{figures.time_text(spread.median(values))}'
             f'</td><td class="number noise">±{spread.noise(values) * 100:.0f} %</td></tr>' for name, values in small_rows(run)]
    node = per_node(run)
    if node is not None:
        lines.insert(0, '<tr><td>one more node in a chain, on 16 x 16: what a node costs beyond its pixels</td>'
                     f'<td class="number">{figures.time_text(node)}</td><td></td></tr>')
    return f'<div class="card scroll"><table>{"".join(lines)}</table></div>'


def comparison(found, before):
    if found is None:
        return ""
    changed = [one for one in found if one["verdict"] in ("slower", "faster")]
    same = sum(one["verdict"] == "same" for one in found)
    lines = [f'<tr><td>{escape(one["key"])}</td><td class="number">{one["threads"]}</td><td class="number">'
             f'{figures.time_text(one["before"][2])}</td><td class="number">{figures.time_text(one["now"][2])}</td>'
             f'<td class="number {one["verdict"]}">{one["ratio"]:.2f}×</td><td class="number">{one["ratio in copies"]:.2f}×</td></tr>'
             for one in sorted(changed, key=lambda one: -one["ratio"])]
    table = ('<div class="card scroll"><table><tr><th>Row</th><th class="number">threads</th><th class="number">before</th>'
             '<th class="number">now</th><th class="number">times as long</th><th class="number">in copies</th></tr>'
             + "".join(lines) + "</table></div>" if lines else "")
    return (f"<h2>Against {escape(before['versions']['valuenodes'])}, {escape(before['date'])}</h2><p>{len(changed)} measurements "
            f"differ by more than the spread of both runs, in time and in copies of the same rounds; {same} do not.</p>{table}")


METHOD = """
All contenders of a row compute the same samples in one process, in turns: a copy, a streaming copy, valuenodes, one peer
after the other, and again, each round beginning with another one. The first call of each is not counted. Times are those
of the clock from call to result. ± is half of the middle half of the times, as a share of their median. Two contenders
are called different where their medians are further apart than both middle halves together, and by more than 3 %.

The ceiling of a row is the time in which its bytes could be moved: the faster of a plain copy and one that is written past
the caches, by the same number of threads and in the same rounds, for the images that the row must read or write at least.
1× is as fast as moving the bytes.

Every library makes its result in memory that was used before: the allocator of the process keeps what is given back, as
the host does by itself. Images are ready before the clock starts, in GEGL's buffers too, whose results stay in buffers.
NumPy, SciPy and scikit-image have one thread whatever is asked for; so have some functions of the others.

Differences are the largest ones to the definition of the node or operation in double precision, on an image of 32 to 256
pixels a side. Samples are off where they differ by more than a thousandth.
"""


def make(run, found=None, before=None):
    switches = "".join(f'<input class="switch" type="radio" name="threads" id="threads-{threads}"{" checked" * (place == 0)}>'
                       for place, threads in enumerate(run["threads"]))
    method = "".join(f"<p>{escape(part)}</p>" for part in METHOD.strip().split("\n\n"))
    body = [
        "<h1>Value beside the ceiling and beside others</h1>",
        f'<p class="soft">{len(run["rows"])} rows of nodes and operations, each against the memory of this machine and against '
        f"what other libraries do with the same samples. {escape(run['date'])}, {escape(run['versions']['valuenodes'])}.</p>",
        tabs(run), per_threads(run, lambda threads: summary_cards(run, threads) + peer_swarm(run, threads)),
        comparison(found, before),
        '<h2>Where another is faster</h2>', per_threads(run, lambda threads: slower_list(run, threads)),
        "<h2>The ceiling</h2>", ceilings(run),
        "<h2>Every row</h2>", tabs(run), legend(run),
        per_threads(run, lambda threads: rows_table.make(run, threads, NAMES)),
        "<h2>How it grows</h2>", '<div class="plots">', *(growth_plot(run, plot) for plot in PLOTS), "</div>",
        "<h2>What is small</h2>", small_table(run),
        "<h2>How this was measured</h2>", f'<div class="two"><div>{method}</div><div>{machine_card(run)}<br>{versions_card(run)}</div></div>',
    ]
    return ('<!DOCTYPE html>\n<html lang="en"><head><meta charset="utf-8"><meta name="viewport" content="width=device-width">'
            f"<title>Value: benchmark</title><style>{style(run)}</style></head><body>{switches}<main>"
            + "\n".join(body) + "</main></body></html>\n")
