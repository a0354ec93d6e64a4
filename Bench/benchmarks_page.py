#!/usr/bin/python3
"""The tables of Docs/Benchmarks.md that ./bench measures, from its out/bench.json.

usage: Bench/benchmarks_page.py [--from out/bench.json] [--write [Docs/Benchmarks.md]]

Without --write the tables are printed. With it they replace what is between the marks of the document.
"""

import argparse
import json
import sys
from pathlib import Path

from report import figures, growth_plots, spread, svg
from report.case import NAMES
from report.growth import PLOTS

MARKS = "<!-- Tables: written by Bench/benchmarks_page.py -->\n", "<!-- End of tables -->\n"


def line(*fields):
    return "| " + " | ".join(fields) + " |\n"


def table(titles, lines):
    return line(*titles) + "|" + "---|" * len(titles) + "\n" + "".join(line(*fields) for fields in lines)


def threads_text(threads):
    return f"{threads} thread" + "s" * (threads > 1)


def introduction(run):
    machine, load = run["machine"], run["load"]
    versions = ", ".join(f"{name} {version}" for name, version in run["versions"].items()
                         if name not in ("valuenodes", "system"))
    kind = {"full": "A full run", "quick": "A quick run"}.get(run["plan"], "A run for tests")
    busy = figures.busy_text(run)
    minutes = max(round(run["seconds"] / 60), 1)
    return (
        f"{kind} of {run['date']}, version {run['versions']['valuenodes']}, on {run['side']} x {run['side']} samples: "
        f"{minutes} minute{'s' * (minutes != 1)}, {machine['processors']} processors ({machine['processor']}, "
        f"{machine['instructions']}{', a virtual machine' * machine['virtual']}), load {load['before']:.1f} before and "
        f"{load['lowest']:.1f} to {load['highest']:.1f} meanwhile. {versions}, {run['versions']['system']}.\n\n") + (
            f"**{busy}**\n\n" if busy else "")


def counts_text(run):
    lines = []
    for threads in run["threads"]:
        count = figures.counts(run, threads)
        multiples = [figures.multiple(row, threads, figures.OURS) for row in run["rows"]]
        near = sum(one is not None and one <= 1.5 for one in multiples)
        lines.append((threads_text(threads), str(near), *(str(count[kind]) for kind in figures.KINDS)))
    titles = (f"Of {len(run['rows'])} rows", "within 1.5 times of moving their bytes", "faster than every peer",
              "no further from the fastest peer than their spread", "slower than the fastest peer", "without a peer")
    return table(titles, lines) + "\n"


def ceilings_text(run):
    lines, notes = [], []
    for threads in run["threads"]:
        for name in figures.COPIES:
            times = figures.pooled_copies(run, threads, name)
            if times:
                rate = 2 * run["side"] ** 2 * 4 / spread.median(times) / 1e9
                of_rows = [figures.times_of(row, threads, name) for row in run["rows"]]
                medians = [spread.median(one) for one in of_rows if one]
                if min(medians) < 0.7 * spread.median(times):
                    notes = ["Beside some rows all copies take far less time; why is not known. A row is held against "
                             "its own copies, so that its multiples say more than its time does.\n"]
                lines.append((NAMES[name], str(threads), figures.spread_text(times), f"{rate:.1f} GB/s",
                              f"{figures.time_text(min(medians))} to {figures.time_text(max(medians))}"))
    if figures.cached_text(run):
        notes.append(figures.cached_text(run) + "\n")
    titles = ("Copy of one image", "Threads", "Median", "Read and written", "Medians beside each row")
    return "\n".join([table(titles, lines), *notes, ""])


def beside_text(row, threads):
    peer, ratio, verdict = figures.against_peer(row, threads)
    if peer is None:
        return "–"
    times = svg.number_text(max(ratio, 1 / ratio))
    way = "faster" if ratio >= 1 else "slower"
    return f"{times}× {way} than {NAMES[peer]}" + ", not told apart" * (verdict == "even")


def difference_text(row):
    peer = figures.best_peer(row, 1)
    ours, theirs = (figures.difference_text(row["differences"].get(name))[0] for name in (figures.OURS, peer))
    return f"{ours}; {NAMES[peer]} {theirs}" if peer else ours


def row_fields(run, row):
    fields = [f"`{row['text']}`"]
    for threads in run["threads"]:
        ours = figures.times_of(row, threads, figures.OURS)
        multiple = figures.multiple(row, threads, figures.OURS)
        fields += [f"{figures.spread_text(ours)}; {svg.number_text(multiple)}×" if ours else "not measured",
                   beside_text(row, threads)]
    return *fields, difference_text(row), row["remark"]


def rows_text(run):
    parts = []
    for group in dict.fromkeys(row["group"] for row in run["rows"]):
        titles = ["Call"]
        for threads in run["threads"]:
            titles += [f"{threads_text(threads)}: time; ceilings", "beside the fastest peer"]
        lines = [row_fields(run, row) for row in run["rows"] if row["group"] == group]
        parts.append(f"#### {group}\n\n" + table((*titles, "Largest difference", "What differs"), lines) + "\n")
    return "".join(parts)


def growth_text(run):
    parts = []
    for plot, (title, x_label, y_label) in PLOTS.items():
        points = [one for one in run["growth"] if one["plot"] == plot and "times" in one]
        places = sorted({one["at"] for one in points})
        lines = []
        for name in dict.fromkeys(one["series"] for one in points):
            medians = {one["at"]: spread.median(one["times"]) / one["unit"] for one in points if one["series"] == name}
            fields = (svg.number_text(medians[place]) if place in medians else "–" for place in places)
            lines.append((growth_plots.series_text(name), *fields))
        if lines:
            titles = (f"{y_label}; {x_label}:", *(f"{place:g}" for place in places))
            parts.append(f"#### {title}\n\n" + table(titles, lines) + "\n")
        parts += [f"{one.get('series', 'Left out')}: {one['problem']}.\n\n" for one in run["growth"]
                  if one["plot"] == plot and "problem" in one]
    return "".join(parts)


def small_text(run):
    node = growth_plots.per_node(run)
    lines = [("one more node in a chain, on 16 x 16", figures.time_text(node))] if node is not None else []
    lines += [(growth_plots.SMALL_TEXTS.get(name, name), figures.spread_text(times))
              for name, times in growth_plots.small_times(run)]
    return "#### What is small\n\n" + table(("What", "Time"), lines) + "\n" if lines else ""


def make(run):
    return introduction(run) + counts_text(run) + ceilings_text(run) + rows_text(run) + growth_text(run) + small_text(run)


def write(path, text):
    document = path.read_text(encoding="utf-8")
    before, found, rest = document.partition(MARKS[0])
    _, end, after = rest.partition(MARKS[1])
    if not found or not end:
        raise SystemExit(f"{path} has no marks for the tables")
    path.write_text(before + MARKS[0] + text.rstrip("\n") + "\n" + MARKS[1] + after, encoding="utf-8")


def main():
    root = Path(__file__).resolve().parents[1]
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--from", dest="given", type=Path, default=root / "out/bench.json")
    parser.add_argument("--write", nargs="?", type=Path, const=root / "Docs/Benchmarks.md")
    options = parser.parse_args()
    try:
        text = make(json.loads(options.given.read_text(encoding="utf-8")))
    except OSError as error:
        print(f"benchmarks_page.py: {options.given} cannot be read: {error.strerror}", file=sys.stderr)
        return 2
    if options.write:
        write(options.write, text)
    else:
        print(text, end="")
    return 0


if __name__ == "__main__":
    sys.exit(main())
