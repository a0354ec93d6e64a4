"""Two runs beside each other: a difference is called one only where it exceeds the spread of both."""

from report import spread
from report.figures import OURS, processor_of, times_of


class NotComparable(ValueError):
    """The runs do not measure the same; the text says why."""


def check(now, before):
    for name, text in (("format", "is not a file of ./bench"), ("version", "is of another version of ./bench")):
        if before.get(name) != now[name]:
            raise NotComparable(text)
    if before.get("side") != now["side"]:
        raise NotComparable(f"was measured on {before['side']} x {before['side']}, this run on {now['side']} x "
                            f"{now['side']}; compare quick runs with quick ones")


def in_copies(row, threads):
    """Our times in plain copies of the same rounds: what slows the whole machine slows both."""
    ours, copies = times_of(row, threads, OURS), times_of(row, threads, "copy")
    return [one / other for one, other in zip(ours, copies)]


def was_busy(row, threads, processors):
    """Whether the machine had more to do than this, so that calls waited for a processor."""
    return row["threads"][str(threads)]["load"] > processors + 1


def verdict(now, before, threads, processors):
    """The times on the clock must differ, and those in copies, in the same direction. Where one of the machines was
    busy, a long call waits for its turn more often than a copy does: its processor time must differ too."""
    pairs = [(times_of(now, threads, OURS), times_of(before, threads, OURS)),
             (in_copies(now, threads), in_copies(before, threads))]
    if not all(one and other for one, other in pairs):
        return None
    if was_busy(now, threads, processors) or was_busy(before, threads, processors):
        pairs.append((processor_of(now, threads, OURS), processor_of(before, threads, OURS)))
    ratios = [spread.median(one) / spread.median(other) for one, other in pairs]
    differ = all(spread.differ(one, other) for one, other in pairs) and len({ratio > 1 for ratio in ratios}) == 1
    kind = "same" if not differ else "slower" if ratios[0] > 1 else "faster"
    return {"ratio": ratios[0], "ratio in copies": ratios[1], "verdict": kind,
            "now": spread.describe(pairs[0][0]), "before": spread.describe(pairs[0][1])}


def compare(now, before):
    """A list of what became of each row, and rows that only one run has."""
    check(now, before)
    earlier = {row["key"]: row for row in before["rows"]}
    found = []
    for row in now["rows"]:
        if row["key"] not in earlier:
            found.append({"key": row["key"], "verdict": "new"})
            continue
        for threads in now["threads"]:
            one = verdict(row, earlier[row["key"]], threads, now["machine"]["processors"])
            if one:
                found.append({"key": row["key"], "threads": threads, **one})
    keys = {row["key"] for row in now["rows"]}
    found += [{"key": key, "verdict": "gone"} for key in earlier if key not in keys]
    return found


def lines(found, before):
    """The comparison for the terminal."""
    changed = [one for one in found if one["verdict"] in ("slower", "faster")]
    yield f"Against the run of {before['date']}, {before['versions']['valuenodes']}:"
    for one in sorted(changed, key=lambda one: -one["ratio"]):
        halves = [(one[when][3] - one[when][1]) / 2 / one[when][2] * 100 for when in ("before", "now")]
        yield (f"  {one['verdict']:6}  {one['ratio']:.2f} times as long: {one['key']}, {one['threads']} thread"
               f"{'s' * (one['threads'] > 1)} (±{halves[0]:.0f} % before, ±{halves[1]:.0f} % now)")
    same = sum(one["verdict"] == "same" for one in found)
    others = [one["key"] for one in found if one["verdict"] in ("new", "gone")]
    yield f"  {same} measurements differ by no more than their spread."
    if others:
        yield f"  Only in one of the two: {', '.join(others)}."
