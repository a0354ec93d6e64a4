"""What the numbers of a run say: ceilings, ratios and verdicts, for the page, the tables and the comparison."""

import re

from report import spread
from report.case import PEERS

OURS = "valuenodes"
COPIES = ("copy", "stream")
#: How a row ends beside the fastest peer.
KINDS = ("faster", "even", "slower", "alone")


def times_of(row, threads, name):
    return row["threads"].get(str(threads), {}).get("times", {}).get(name, [])


def processor_of(row, threads, name):
    """Seconds of all processors together."""
    return row["threads"].get(str(threads), {}).get("processor", {}).get(name, [])


def contenders(row, threads):
    """The names that have times, ours first."""
    times = row["threads"].get(str(threads), {}).get("times", {})
    return [name for name in (OURS, *PEERS) if times.get(name)]


def pooled_copies(run, threads, name):
    """The times of a copy beside all rows: as many samples as there are, over the whole run."""
    return [one for row in run["rows"] for one in times_of(row, threads, name)]


def ceiling(row, threads):
    """Seconds in which the bytes of a row could be moved: by the faster of the two copies, in the same rounds."""
    medians = [spread.median(times) for times in (times_of(row, threads, name) for name in COPIES) if times]
    return min(medians) * row["moved"] / 2 if medians else None


def multiple(row, threads, name):
    """The median of a contender in ceilings."""
    times, least = times_of(row, threads, name), ceiling(row, threads)
    return spread.median(times) / least if times and least else None


def best_peer(row, threads):
    peers = [name for name in contenders(row, threads) if name != OURS]
    return min(peers, key=lambda name: spread.median(times_of(row, threads, name)), default=None)


def against_peer(row, threads):
    """The fastest peer, how many times our speed is of its, and whether that is faster, slower or even."""
    peer, ours = best_peer(row, threads), times_of(row, threads, OURS)
    if peer is None or not ours:
        return None, None, "alone"
    theirs = times_of(row, threads, peer)
    ratio = spread.median(theirs) / spread.median(ours)
    if not spread.differ(ours, theirs) or abs(ratio - 1) < 0.005:
        return peer, ratio, "even"
    return peer, ratio, "faster" if ratio > 1 else "slower"


def difference_text(found):
    """A difference in a few characters, and whether it is one to look at."""
    if found is None:
        return "–", False
    if "same" in found:
        return ("same", False) if found["same"] else ("differs", True)
    largest = found["largest"]
    if largest is None:
        return "not finite", True
    if largest == 0:
        return "0", False
    words = re.sub(r"e-0*", "e-", f"{largest:.1g}")
    if found["off"] > 0:
        share = found["off"] * 100
        words += f", {share:.2g} % off"
    return words, found["off"] > 0


def time_text(seconds):
    for unit, factor in (("s", 1), ("ms", 1e3), ("µs", 1e6)):
        number = seconds * factor
        if number >= 9.995 and unit != "s" or number >= 0.9995 or unit == "µs":
            return f"{number:.0f} {unit}" if number >= 99.95 else f"{number:.3g} {unit}"
    return ""


def noise_text(times):
    share = spread.noise(times) * 100
    return f"±{share:.0f} %" if share >= 0.95 else f"±{share:.1f} %"


def spread_text(times):
    return f"{time_text(spread.median(times))} {noise_text(times)}"


def busy_text(run):
    """What must be said of a run on a machine that had other work; nothing where it had none."""
    load, processors = run["load"], run["machine"]["processors"]
    if load["highest"] <= processors + 1:
        return ""
    return (f"The machine had other work: its load was {load['lowest']:.1f} to {load['highest']:.1f} on {processors} "
            "processors. Long calls waited for their turn, short ones did not; ratios of times of the clock say little.")


def cached_text(run):
    """What must be said of images that stay in the caches from call to call; nothing where they do not."""
    sizes = [int(size.rstrip("K")) * 1024 for size in run["machine"]["caches"].values() if size.endswith("K")]
    if not sizes or 3 * run["side"] ** 2 * 4 > max(sizes):
        return ""
    return ("Two inputs and a result fit into the largest cache of this machine, so that ceilings are those of caches "
            "and not of memory.")


def counts(run, threads):
    """How many rows end how beside the fastest peer."""
    found = dict.fromkeys(KINDS, 0)
    for row in run["rows"]:
        found[against_peer(row, threads)[2]] += 1
    return found
