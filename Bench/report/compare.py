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


#: On a machine that was busy, processor times that are closer than this are never called different: whoever shares
#: caches and cores changes them by as much.
LEAST_BUSY = 0.1


def was_busy(row, threads, processors):
    """Whether the machine had more to do than this, so that calls waited for a processor."""
    return row["threads"][str(threads)]["load"] > processors + 1


def in_copies(clock, row, threads):
    """Our times in plain copies of the same rounds: what slows the whole machine slows both."""
    ours, copies = clock(row, threads, OURS), clock(row, threads, "copy")
    return [one / other for one, other in zip(ours, copies)]


def verdict(now, before, threads, processors):
    """Our times must differ, and those in copies, in the same direction.

    These are times of the clock. Where one of the machines was busy, a long call waits for its turn more often than a
    copy does, so that only times of processors are compared.
    """
    busy = was_busy(now, threads, processors) or was_busy(before, threads, processors)
    clock = processor_of if busy else times_of
    pairs = [(clock(now, threads, OURS), clock(before, threads, OURS)),
             (in_copies(clock, now, threads), in_copies(clock, before, threads))]
    if not all(one and other for one, other in pairs):
        return None
    ratios = [spread.median(one) / spread.median(other) for one, other in pairs]
    least = LEAST_BUSY if busy else spread.LEAST
    differ = all(spread.differ(one, other, least) for one, other in pairs) and (ratios[0] > 1) == (ratios[1] > 1)
    kind = "same" if not differ else "slower" if ratios[0] > 1 else "faster"
    return {"ratio": ratios[0], "ratio in copies": ratios[1], "verdict": kind, "busy": busy,
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
    busy = sum(one.get("busy", False) for one in found)
    others = [one["key"] for one in found if one["verdict"] in ("new", "gone")]
    yield f"  {same} measurements differ by no more than their spread."
    if busy:
        yield f"  For {busy} of all, times of processors were compared: the machine had other work."
    if others:
        yield f"  Only in one of the two: {', '.join(others)}."
