"""The table of all rows: a strip of dots, the numbers, and what differs."""

import re

from report import figures, spread, svg
from report.svg import escape


def anchor(row):
    return re.sub(r"[^a-z0-9]+", "-", row["key"].lower()).strip("-")


def bounds(run):
    """The axis that all strips share, in ceilings."""
    found = [figures.multiple(row, threads, name) for row in run["rows"] for threads in run["threads"]
             for name in figures.contenders(row, threads)]
    found = [one for one in found if one]
    return min(0.5, *found) if found else 0.5, max(20, *found) if found else 20


def strip(row, threads, names, low, high):
    least = figures.ceiling(row, threads)
    contenders = []
    for name in reversed(figures.contenders(row, threads)):
        _, first, middle, third, _ = spread.describe(figures.times_of(row, threads, name))
        title = f"{names[name]}: {figures.time_text(middle)}, {svg.number_text(middle / least)} ceilings"
        contenders.append((name, title, first / least, middle / least, third / least))
    return svg.strip(contenders, low, high, row["text"])


def details(row, threads, names):
    lines = []
    for name in figures.contenders(row, threads):
        times = figures.times_of(row, threads, name)
        words, is_off = figures.difference_text(row["differences"].get(name))
        low, _, _, _, high = spread.describe(times)
        lines.append(f'<tr><td>{names[name]}</td><td class="number">{figures.time_text(spread.median(times))}</td>'
                     f'<td class="number noise">±{spread.noise(times) * 100:.1f} %</td><td class="number noise">'
                     f'{figures.time_text(low)} to {figures.time_text(high)}</td><td class="number">'
                     f'{svg.number_text(figures.multiple(row, threads, name))}×</td><td class="{"off" * is_off}">{escape(words)}</td></tr>')
    for name, problem in row["problems"].items():
        lines.append(f'<tr><td>{escape(names.get(name, name))}</td><td colspan="5" class="off">{escape(problem)}</td></tr>')
    return ("<details><summary>all contenders</summary><table><tr><th></th><th class=\"number\">median</th><th></th><th class=\"number\">"
            'lowest to highest</th><th class="number">ceilings</th><th>largest difference</th></tr>' + "".join(lines) + "</table></details>")


def row_line(row, threads, names, low, high):
    what = (f'<td class="what" id="{anchor(row)}{"" if threads == 1 else f"-{threads}"}"><b>{escape(row["name"])}</b><br>'
            f'<code>{escape(row["text"])}</code>')
    if row["remark"]:
        what += f'<div class="remark">{escape(row["remark"])}</div>'
    ours = figures.times_of(row, threads, figures.OURS)
    if not ours:
        return f'<tr>{what}</td><td colspan="5" class="off">{escape("; ".join(row["problems"].values()) or "not measured")}</td></tr>'
    peer, ratio, verdict = figures.against_peer(row, threads)
    beside = '<td class="soft">no peer</td>'
    if peer:
        words = {"even": f"even ({svg.number_text(ratio)}×)", "faster": f"{svg.number_text(ratio)}× faster",
                 "slower": f"{svg.number_text(1 / ratio if ratio else 0)}× slower"}[verdict]
        beside = (f'<td><span class="{verdict}">{words}</span><br><span class="noise">than {names[peer]}, '
                  f"{figures.spread_text(figures.times_of(row, threads, peer))}</span></td>")
        beside = beside.replace("than ", "with ", 1) if verdict == "even" else beside
    words, is_off = figures.difference_text(row["differences"].get(figures.OURS))
    difference = f'<span class="{"off" * is_off}">{escape(words)}</span>'
    if peer:
        words, is_off = figures.difference_text(row["differences"].get(peer))
        difference += f'<br><span class="noise">{names[peer]}: <span class="{"off" * is_off}">{escape(words)}</span></span>'
    return (f'<tr>{what}{details(row, threads, names)}</td><td class="strip">{strip(row, threads, names, low, high)}</td>'
            f'<td class="number">{figures.time_text(spread.median(ours))}<br><span class="noise">±{spread.noise(ours) * 100:.1f} %</span></td>'
            f'<td class="number">{svg.number_text(figures.multiple(row, threads, figures.OURS))}×</td>{beside}<td>{difference}</td></tr>')


def make(run, threads, names):
    low, high = bounds(run)
    parts = ['<div class="card scroll"><table><tr><th>Call</th><th>in ceilings, ' + svg.strip_axis(low, high)
             + '</th><th class="number">ours</th><th class="number">ceilings</th><th>beside the fastest peer</th>'
             "<th>largest difference<br>to the definition</th></tr>"]
    group = None
    for row in run["rows"]:
        if row["group"] != group:
            group = row["group"]
            parts.append(f'<tr class="group"><td colspan="6">{escape(group)}</td></tr>')
        parts.append(row_line(row, threads, names, low, high))
    return "".join(parts) + "</table></div>"
