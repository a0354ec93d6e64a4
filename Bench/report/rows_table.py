"""The table of all rows: a strip of dots, the numbers, and what differs."""

import re

from report import figures, spread, svg
from report.case import NAMES
from report.markup import cell, escape, line, noise, number, sheet, table, tag

TITLES = ("Call", "in ceilings, {axis}", ">ours", ">ceilings", "beside the fastest peer",
          "largest difference<br>to the definition")


def anchor(row, threads):
    return re.sub(r"[^a-z0-9]+", "-", row["key"].lower()).strip("-") + f"-{threads}"


def bounds(run):
    """The axis that all strips share, in ceilings."""
    found = [figures.multiple(row, threads, name) for row in run["rows"] for threads in run["threads"]
             for name in figures.contenders(row, threads)]
    found = [one for one in found if one]
    return min([0.5, *found]), max([20, *found])


def strip(row, threads, low, high):
    least = figures.ceiling(row, threads)
    contenders = []
    for name in reversed(figures.contenders(row, threads)):
        _, first, middle, third, _ = spread.describe(figures.times_of(row, threads, name))
        title = f"{NAMES[name]}: {figures.time_text(middle)}, {svg.number_text(middle / least)} ceilings"
        contenders.append((name, title, first / least, middle / least, third / least))
    return svg.strip(contenders, low, high, row["text"])


def details(row, threads):
    lines = []
    for name in figures.contenders(row, threads):
        times = figures.times_of(row, threads, name)
        words, is_off = figures.difference_text(row["differences"].get(name))
        low, _, middle, _, high = spread.describe(times)
        lines.append(line(
            cell(NAMES[name]), number(figures.time_text(middle)), noise(figures.noise_text(times)),
            noise(f"{figures.time_text(low)} to {figures.time_text(high)}"),
            noise(figures.time_text(spread.median(figures.processor_of(row, threads, name)))),
            number(svg.number_text(figures.multiple(row, threads, name)) + "×"),
            cell(escape(words), "exact" + " off" * is_off)))
    for name, problem in row["problems"].items():
        lines.append(line(cell(escape(NAMES.get(name, name))), cell(escape(problem), "off", colspan=6)))
    titles = ("", ">median", "", ">lowest to highest", ">of processors", ">ceilings", "largest difference")
    return tag("details", tag("summary", "all contenders") + table(titles, lines))


def beside(row, threads):
    """What our speed is beside the fastest peer's."""
    peer, ratio, verdict = figures.against_peer(row, threads)
    if peer is None:
        return cell("no peer", "soft")
    words = {"even": "not told apart from", "faster": f"{svg.number_text(ratio)}× faster than",
             "slower": f"{svg.number_text(1 / ratio)}× slower than"}[verdict]
    theirs = figures.spread_text(figures.times_of(row, threads, peer))
    if verdict == "even":
        theirs += f"; {svg.number_text(ratio)}×"
    return cell(tag("span", words, verdict) + f" {NAMES[peer]}<br>" + tag("span", theirs, "noise"))


def difference(row, threads):
    words, is_off = figures.difference_text(row["differences"].get(figures.OURS))
    text = tag("span", escape(words), "off" * is_off)
    peer = figures.best_peer(row, threads)
    if peer:
        words, is_off = figures.difference_text(row["differences"].get(peer))
        text += "<br>" + tag("span", f"{NAMES[peer]}: " + tag("span", escape(words), "off" * is_off), "noise")
    return cell(text, "exact")


def row_line(row, threads, low, high):
    what = f"<b>{escape(row['name'])}</b><br>" + tag("code", escape(row["text"]))
    if row["remark"]:
        what += tag("div", escape(row["remark"]).replace("`", ""), "remark")
    ours = figures.times_of(row, threads, figures.OURS)
    if not ours:
        problem = "; ".join(row["problems"].values()) or "not measured"
        return line(cell(what, "what", id=anchor(row, threads)), cell(escape(problem), "off", colspan=5))
    return line(
        cell(what + details(row, threads), "what", id=anchor(row, threads)),
        cell(strip(row, threads, low, high), "strip"),
        number(figures.time_text(spread.median(ours)) + "<br>" + tag("span", figures.noise_text(ours), "noise")),
        number(svg.number_text(figures.multiple(row, threads, figures.OURS)) + "×"),
        beside(row, threads), difference(row, threads))


def make(run, threads):
    low, high = bounds(run)
    lines, group = [], None
    for row in run["rows"]:
        if row["group"] != group:
            group = row["group"]
            lines.append(line(cell(escape(group), colspan=6), kind="group"))
        lines.append(row_line(row, threads, low, high))
    return sheet([title.format(axis=svg.strip_axis(low, high)) for title in TITLES], lines)
