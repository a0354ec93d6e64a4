"""The page of a run: one file that needs nothing else, out/bench.html."""

from pathlib import Path

from report import figures, growth_plots, rows_table, spread, svg
from report.case import NAMES, PEERS
from report.markup import card, cell, escape, facts, key, legend, line, noise, number, sheet, tag

METHOD = """
All contenders of a row compute the same samples in one process, in turns: a copy, a streaming copy, valuenodes and the
peers, in another order in each round. The first call of each is not counted, and what takes less than 20 ms is called
before it is timed, up to four times within 4 ms, so that each finds its own memory in the caches as far as it fits.
Times are those of the clock from call to result. ± is half of the middle half of the times, as a share of their median.
Two contenders are called different where their medians are further apart than both middle halves together and than 3 %,
and nine of ten pairs of their times are in the same order.

The ceiling of a row is the time in which its bytes could be moved: the faster of a plain copy and one that is written
past the caches, by the same number of threads and in the same rounds, for the images that the row must read or write at
least. 1× is as fast as moving the bytes.

Every library makes its result in memory that was used before: the allocator of the process keeps what is given back, as
the host does by itself. Images are ready before the clock starts, in GEGL's buffers too, whose results stay in buffers.
NumPy, SciPy and scikit-image have one thread whatever is asked for; so have some functions of the others.

Differences are the largest ones to the definition of the node or operation in double precision, on an image of 32 to 256
pixels a side. Samples are off where they differ by more than a thousandth.
"""


def style(run):
    rules = [(Path(__file__).parent / "page.css").read_text(encoding="utf-8")]
    for name in ("valuenodes", *PEERS):
        rules.append(f"svg .c-{name} {{ fill: var(--{color_of(name)}); }}")
        rules.append(f"svg line.c-{name} {{ stroke: var(--{color_of(name)}); }}")
    for place, color in enumerate(growth_plots.COLORS):
        rules.append(f"svg .s-{place} {{ fill: var(--{color}); }}")
        rules.append(f"svg polyline.s-{place} {{ stroke: var(--{color}); fill: none; }}")
    # One number of threads is shown at a time; what is chosen is written on ink.
    for threads in run["threads"]:
        chosen = f"#threads-{threads}:checked ~ main"
        rules.append(f"{chosen} label[for=threads-{threads}] {{ background: var(--ink); color: var(--sheet); }}")
        rules += [f"{chosen} .threads-{other} {{ display: none; }}" for other in run["threads"] if other != threads]
    return "\n".join(rules)


def color_of(name):
    return "accent" if name == figures.OURS else name


def threads_text(threads):
    return f"{threads} thread" + "s" * (threads > 1)


def per_threads(run, make):
    """The same part for each number of threads, of which one is shown."""
    return "".join(tag("div", make(threads), f"threads-{threads}") for threads in run["threads"])


def tabs(run):
    labels = (tag("label", threads_text(threads), for_=f"threads-{threads}") for threads in run["threads"])
    return tag("div", "".join(labels), "tabs")


def switches(run):
    """What is chosen lives beside the page's parts, so that their style can follow it without a script."""
    return "".join(
        f'<input class="switch" type="radio" name="threads" id="threads-{threads}"{" checked" * (place == 0)}>'
        for place, threads in enumerate(run["threads"]))


# ---- The first screen ----


def summary_cards(run, threads):
    count = figures.counts(run, threads)
    multiples = [figures.multiple(row, threads, figures.OURS) for row in run["rows"]]
    multiples = [one for one in multiples if one is not None]
    cards = (
        (sum(one <= 1.5 for one in multiples), "", f"of {len(multiples)} rows within 1.5 times of moving their bytes"),
        (count["faster"], "faster", "rows faster than every peer"),
        (count["even"], "", "no further from the fastest peer than their spread"),
        (count["slower"], "slower", "slower than the fastest peer"),
        (count["alone"], "soft", "without a peer"),
    )
    return tag("div", "".join(card(tag("b", one, kind) + text) for one, kind, text in cards), "cards")


def peer_swarm(run, threads):
    points = []
    for row in run["rows"]:
        peer, ratio, verdict = figures.against_peer(row, threads)
        if peer:
            faster, slower = (figures.OURS, NAMES[peer]) if ratio >= 1 else (NAMES[peer], figures.OURS)
            times = svg.number_text(max(ratio, 1 / ratio))
            points.append((ratio, f"k-{verdict}", f"{row['text']}: {faster} {times} times as fast as {slower}"))
    if not points:
        return card("No peer was measured.")
    low = min(0.1, *(one for one, _, _ in points)) * 0.9
    high = max(10, *(one for one, _, _ in points)) * 1.1
    note = ("Each dot is a row, at our speed beside that of its fastest peer; grey ones are no further from it than "
            "their spread. A dot says its name when it is pointed at.")
    return card(svg.swarm(points, low, high) + tag("p", note, "soft"))


def slower_list(run, threads):
    """Where others are faster, plainly."""
    found = []
    for row in run["rows"]:
        peer, ratio, verdict = figures.against_peer(row, threads)
        if verdict == "slower":
            found.append((ratio, row, peer))
    if not found:
        return tag("p", "No row is slower than the fastest peer by more than the spread.")
    lines = []
    for ratio, row, peer in sorted(found, key=lambda one: one[0]):
        ours, theirs = (figures.difference_text(row["differences"].get(name))[0] for name in (figures.OURS, peer))
        link = tag("a", escape(f"{row['group']}: {row['name']}"), href="#" + rows_table.anchor(row, threads))
        lines.append(line(cell(link), number(svg.number_text(1 / ratio) + "×", "slower"), cell(NAMES[peer]),
                          cell(escape(ours), "exact"), cell(escape(theirs), "exact"),
                          cell(escape(row["remark"]).replace("`", ""), "remark")))
    titles = ("Row", ">slower by", "than", "our largest difference", "theirs", "what differs")
    return sheet(titles, lines)


def ceilings(run):
    lines = []
    for threads in run["threads"]:
        for name in figures.COPIES:
            times = figures.pooled_copies(run, threads, name)
            if times:
                low, first, middle, third, high = map(figures.time_text, spread.describe(times))
                rate = 2 * run["side"] ** 2 * 4 / spread.median(times) / 1e9
                lines.append(line(cell(NAMES[name]), number(threads), number(middle), number(f"{rate:.1f} GB/s"),
                                  noise(f"{first} to {third}"), noise(f"{low} to {high}")))
    titles = ("Copy of one image", ">threads", ">median", ">read and written", ">middle half", ">lowest to highest")
    return sheet(titles, lines)


def run_card(run):
    described, load = run["machine"], run["load"]
    processor = f"{described['processor']}, {described['processors']} processors, {described['instructions']}"
    size = run["side"] ** 2 * 4 / 2**20
    return card(tag("h3", "Machine and run") + facts((
        ("Measured", f"{run['date']}, {run['seconds'] / 60:.0f} min, {run['plan']} plan"),
        ("Processor", processor + ", a virtual machine" * described["virtual"]),
        ("Caches", ", ".join(f"{level} {size}" for level, size in described["caches"].items())),
        ("Memory", f"{described['memory'] / 2**30:.0f} GiB, huge pages: {described['huge pages']}"),
        ("Images", f"{run['side']} x {run['side']} samples of 32 bits, {size:g} MiB each"),
        ("Load", f"{load['before']:.1f} before, {load['lowest']:.1f} to {load['highest']:.1f} meanwhile; "
                 f"{run['stolen'] * 100:.1f} % of the time was taken away from the machine"),
    )))


def rows_legend(run):
    used = [name for name in ("valuenodes", *PEERS) if any(
        figures.times_of(row, threads, name) for row in run["rows"] for threads in run["threads"])]
    return legend(key(color_of(name), NAMES[name]) for name in used)


# ---- The comparison ----


def comparison(found, before):
    if found is None:
        return ""
    changed = [one for one in found if one["verdict"] in ("slower", "faster")]
    same = sum(one["verdict"] == "same" for one in found)
    busy = sum(one.get("busy", False) for one in found)
    lines = [
        line(cell(escape(one["key"])), number(one["threads"]), number(figures.time_text(one["before"][2])),
             number(figures.time_text(one["now"][2])), number(f"{one['ratio']:.2f}×", one["verdict"]),
             number(f"{one['ratio in copies']:.2f}×"))
        for one in sorted(changed, key=lambda one: -one["ratio"])]
    titles = ("Row", ">threads", ">before", ">now", ">times as long", ">in copies")
    note = f" For {busy} of all, times of processors were compared: the machine had other work." * bool(busy)
    return (tag("h2", f"Against {escape(before['versions']['valuenodes'])}, {escape(before['date'])}")
            + tag("p", f"{len(changed)} measurements differ by more than the spread of both runs, in time and in "
                       f"copies of the same rounds; {same} do not.{note}")
            + (sheet(titles, lines) if lines else ""))


# ---- The whole ----


def make(run, found=None, before=None):
    method = "".join(tag("p", escape(part)) for part in METHOD.strip().split("\n\n"))
    versions = card(tag("h3", "Versions") + facts(run["versions"].items()))
    introduction = (
        f"{len(run['rows'])} rows of nodes and operations, each against the memory of this machine and against what "
        f"other libraries do with the same samples. {run['date']}, {run['versions']['valuenodes']}, load "
        f"{run['load']['lowest']:.1f} to {run['load']['highest']:.1f}.")
    body = [
        tag("h1", "Value beside the ceiling and beside others"), tag("p", escape(introduction), "soft"),
        tag("p", escape(figures.busy_text(run)), "off"),
        tabs(run), per_threads(run, lambda threads: summary_cards(run, threads) + peer_swarm(run, threads)),
        comparison(found, before),
        tag("h2", "Where another is faster"), per_threads(run, lambda threads: slower_list(run, threads)),
        tag("h2", "The ceiling"), ceilings(run), tag("p", figures.cached_text(run), "soft"),
        tag("h2", "Every row"), tabs(run), rows_legend(run),
        per_threads(run, lambda threads: rows_table.make(run, threads)),
        growth_plots.make(run),
        tag("h2", "How this was measured"),
        tag("div", tag("div", method) + tag("div", run_card(run) + "<br>" + versions), "two"),
    ]
    head = ('<meta charset="utf-8"><meta name="viewport" content="width=device-width">'
            "<title>Value: benchmark</title>" + tag("style", style(run)))
    return (f'<!DOCTYPE html>\n<html lang="en"><head>{head}</head><body>{switches(run)}<main>'
            + "\n".join(body) + "</main></body></html>\n")
