"""Measures rows in a process of its own, with so many threads: python3 -m report.worker REQUEST.

The request is a JSON text; each answer is a line of JSON as soon as it is there, so that nothing is lost with a process
that ends early. One row is measured at a time, all contenders in turns.
"""

import contextlib
import gc
import json
import math
import os
import random
import sys
import time

import numpy as np

from report import host_calls
from report.case import arrays_of
from report.cases import BY_KEY
from report.inputs import Inputs

COPIES = {"copy": host_calls.copy, "stream": host_calls.stream_copy}
#: Calls that are shorter are made several times between two looks at the clock.
SHORTEST = 2e-4
#: Calls that are shorter are made before they are timed, and that for so long or four times: each finds its own memory in
#: the caches as far as it fits, and not what another contender has left there. What fits into the last cache alone moves
#: there in the course of several calls.
WARM = 2e-2
WARM_SECONDS = 4e-3
WARM_CALLS = 4
#: Rounds of what takes long.
FEWEST = 5


def set_threads(threads):
    """For the libraries that do not read a variable of the environment."""
    host_calls.library()
    import valuenodes as vn

    vn.set_threads(threads)
    with contextlib.suppress(ImportError):
        import cv2

        cv2.setNumThreads(threads)
    with contextlib.suppress(ImportError):
        import numexpr

        numexpr.set_num_threads(threads)


def answer(**facts):
    print(json.dumps(facts), flush=True)


def timed(call, count):
    """Seconds of one call, on the clock and of the processors. What it makes is given back after that."""
    kept = None
    used = time.process_time()
    begun = time.perf_counter()
    for _ in range(count):
        kept = None
        kept = call()
    taken = time.perf_counter() - begun
    used = time.process_time() - used
    del kept
    return taken / count, used / count


class Turns:
    """Contenders that are timed in turns, until there are enough rounds or no time is left."""

    def __init__(self, rounds, seconds, long):
        self.rounds, self.seconds, self.long = rounds, seconds, long
        self.calls, self.counts, self.first, self.problems = {}, {}, {}, {}

    def add(self, name, call):
        """The first call imports, compiles and fills caches; the second one says how long the others will take."""
        try:
            call()
            self.first[name] = timed(call, 1)[0]
        except Exception as error:  # Whatever another library throws is its problem, and is shown.
            text = str(error).strip() or type(error).__name__
            self.problems[name] = text.splitlines()[0][:200]
            return
        self.calls[name] = call
        self.counts[name] = max(1, min(1000, math.ceil(SHORTEST / max(self.first[name], 1e-7))))

    def run(self):
        times = {name: [] for name in self.calls}
        processor = {name: [] for name in self.calls}
        begun = time.monotonic()
        for turn in range(self.rounds if self.calls else 0):
            if turn >= FEWEST and time.monotonic() - begun > self.seconds:
                break
            for name in self.order(turn):
                if turn >= FEWEST and self.first[name] > self.long:
                    continue
                self.warm(name)
                taken, used = timed(self.calls[name], self.counts[name])
                times[name].append(taken)
                processor[name].append(used)
        return times, processor

    def warm(self, name):
        if self.first[name] >= WARM:
            return
        begun = time.perf_counter()
        for _ in range(WARM_CALLS):
            self.calls[name]()
            if time.perf_counter() - begun > WARM_SECONDS:
                break

    def order(self, turn):
        """Another one in each round, the same ones in each run: nobody always comes after the same."""
        names = list(self.calls)
        random.Random(turn).shuffle(names)
        return names


# ---- Differences ----


def renumber(labels, where):
    """The numbers of regions in the order in which they are met."""
    _, first, inverse = np.unique(labels[where], return_index=True, return_inverse=True)
    return np.argsort(np.argsort(first))[inverse]


def label_difference(labels, wanted, shape, is_ours):
    if is_ours:
        return {"same": bool(np.array_equal(labels, wanted))}
    # Those that leave the background alone give it one number.
    splits = len(np.unique(labels[~shape])) > 1
    where = np.ones_like(shape) if splits else shape
    return {"same": bool(np.array_equal(renumber(labels, where), renumber(wanted, where)))}


def difference_of(case, name, x, expected):
    """The largest difference to the definition, and the share of samples that are more than a thousandth off."""
    results = [np.asarray(one, np.float64) for one in arrays_of(case.calls[name](x))]
    if case.are_labels:
        given = x["levels"] if "levels" in case.text else x["mask"]
        return label_difference(results[0], expected[0], given > 0.5, name == "valuenodes")
    border = case.border if name != "valuenodes" else 0
    largest, off, count = 0.0, 0, 0
    for one, other in zip(results, expected, strict=True):
        if case.are_masks and one.max() == 255:
            one = one / 255
        with np.errstate(invalid="ignore"):
            apart = np.where(one == other, 0.0, np.abs(one - other))
        apart = np.where(np.isnan(one) & np.isnan(other), 0.0, apart)
        inner = apart[border : apart.shape[0] - border, border : apart.shape[1] - border]
        largest = max(largest, float(np.nan_to_num(inner, nan=np.inf).max()))
        off += int((~(inner <= 1e-3)).sum())
        count += inner.size
    return {"largest": largest if math.isfinite(largest) else None, "off": off / count}


def differences(case, problems, most_side):
    small = Inputs(min(case.exact_side, most_side))
    with np.errstate(all="ignore"):
        expected = [np.asarray(one, np.float64) for one in case.exact(small)]
    found = {}
    for name in case.calls:
        if name in problems:
            continue
        try:
            found[name] = difference_of(case, name, small, expected)
        except Exception as error:
            problems[name] = f"its result cannot be compared: {error}"[:200]
    return found


# ---- Rows ----


def measure_row(case, x, request, copies):
    turns = Turns(request["rounds"], request["seconds"], request["long"])
    for name, call in copies.items():
        turns.add(name, call)
    for name, call in case.calls.items():
        turns.add(name, lambda call=call: call(x))
    times, processor = turns.run()
    facts = {"key": case.key, "times": times, "processor": processor, "problems": turns.problems}
    if request["differences"]:
        facts["differences"] = differences(case, turns.problems, request["exact_side"])
    return facts


def main():
    request = json.loads(sys.argv[1])
    # Only answers go where the parent reads; what libraries print goes elsewhere.
    answers = os.dup(1)
    os.dup2(2, 1)
    sys.stdout = os.fdopen(answers, "w", encoding="utf-8")
    set_threads(request["threads"])
    gc.disable()
    if request["kind"] != "rows":
        from report import growth, small

        (growth.measure if request["kind"] == "growth" else small.measure_calls)(request, answer)
        return
    x = Inputs(request["side"])
    source, target = x["noise"], np.empty((x.side, x.side), np.float32)
    target.fill(0)
    copies = {name: (lambda copy=copy: copy(target, source)) for name, copy in COPIES.items()}
    for key in request["keys"]:
        answer(begins=key)
        answer(**measure_row(BY_KEY[key], x, request, copies))
        x.forget_ready()
        gc.collect()


if __name__ == "__main__":
    main()
