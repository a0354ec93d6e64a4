"""Measures everything, in processes of their own, and gives one document of numbers."""

import dataclasses
import datetime
import json
import os
import subprocess
import sys
import time
from dataclasses import dataclass, field
from pathlib import Path

from report import machine, small
from report.cases import CASES

ROOT = Path(__file__).resolve().parents[2]
FORMAT, VERSION = "value-bench", 1


@dataclass
class Plan:
    """How much is measured."""

    side: int
    rounds: int
    #: Seconds for one row and one number of threads, after which no further round begins; there are five at least.
    seconds: float
    #: Calls that take longer have five rounds.
    long: float
    exact_side: int
    sides: list
    nodes: list
    radii: list
    radius_side: int
    program_rounds: int
    growth_seconds: float
    threads: list = field(default_factory=lambda: [1, 2])
    keys: list = field(default_factory=lambda: [case.key for case in CASES])


PLANS = {
    "full": Plan(4096, 15, 6.0, 3.0, 256, [256, 512, 1024, 2048, 4096, 8192, 16384], [1, 2, 5, 10, 30, 100, 300, 1000],
                 [1, 2, 4, 8, 16, 32, 64, 100, 250], 2048, 31, 4.0),
    "quick": Plan(1024, 9, 0.4, 0.2, 128, [256, 512, 1024, 2048], [1, 10, 100, 1000], [1, 4, 16, 64], 512, 7, 0.15),
    # For the test of the report: seconds, and no number that means anything.
    "tiny": Plan(64, 5, 0.1, 0.1, 48, [32, 64], [1, 10], [1, 4], 64, 3, 0.05, keys=[
        "Arithmetic/add", "Value Clamp/clamp, linear", "Value Condition/condition, v_gt_a",
        "Relief/relief, levels, linear", "Connected Components/components, mask", "Blur/blur, sigma 2",
        "Fill and paste/fill"]),
}


def environment(build, threads):
    number = str(threads)
    return {
        **os.environ, "VALUE_BENCH_BUILD": str(build), "PYTHONPATH": f"{ROOT / 'Bench'}:{build / 'python'}",
        "VIPS_CONCURRENCY": number, "POCL_MAX_PTHREAD_COUNT": number, "OMP_NUM_THREADS": number,
        "OPENBLAS_NUM_THREADS": number, "GEGL_THREADS": number, "NUMEXPR_MAX_THREADS": number,
        # Memory that is given back is kept for the next result, for all libraries alike; the host does so by itself.
        "MALLOC_MMAP_THRESHOLD_": str(1 << 32), "MALLOC_TRIM_THRESHOLD_": str(1 << 40),
    }


def answers_of(request, build, log):
    """The answers of a process, and how it ended; a process that ends early has given what it had. What libraries
    print goes to the log."""
    command = [sys.executable, "-m", "report.worker", json.dumps(request)]
    with subprocess.Popen(command, env=environment(build, request["threads"]), stdout=subprocess.PIPE, stderr=log,
                          text=True) as process:
        for line in process.stdout:
            yield json.loads(line)
        if process.wait() != 0:
            yield {"ended": process.returncode}


def rounded(number):
    return float(f"{number:.5g}")


def keep(times):
    return {name: list(map(rounded, values)) for name, values in times.items()}


class Progress:
    def __init__(self, total):
        self.total, self.done, self.begun = total, 0, time.monotonic()

    def step(self, text):
        self.done += 1
        seconds = time.monotonic() - self.begun
        line = f"{self.done} of {self.total}, {int(seconds) // 60}:{int(seconds) % 60:02} min: {text}"
        if sys.stderr.isatty():
            print(f"\r\033[K{line}", end="", file=sys.stderr, flush=True)
        elif self.done % 20 == 1:
            print(line, file=sys.stderr, flush=True)

    def end(self):
        if sys.stderr.isatty():
            print("\r\033[K", end="", file=sys.stderr, flush=True)


def blank_rows(plan):
    by_key = {case.key: case for case in CASES}
    return {
        key: {"key": key, "group": by_key[key].group, "name": by_key[key].name, "text": by_key[key].text,
              "remark": by_key[key].remark, "moved": by_key[key].moved, "exact_side": min(by_key[key].exact_side,
                                                                                       plan.exact_side),
              "threads": {}, "differences": {}, "problems": {}}
        for key in plan.keys
    }


def measure_rows(plan, build, log, progress):
    rows = blank_rows(plan)
    for place, threads in enumerate(plan.threads):
        pending = list(plan.keys)
        while pending:
            request = {"kind": "rows", "threads": threads, "side": plan.side, "rounds": plan.rounds,
                       "seconds": plan.seconds, "long": plan.long, "differences": place == 0,
                       "exact_side": plan.exact_side, "keys": pending}
            begun, pending = pending, take_rows(request, build, log, rows, progress)
            if pending == begun:
                raise SystemExit("bench: the process that measures ends before it begins; its log says why")
    return list(rows.values())


def take_rows(request, build, log, rows, progress):
    """The rows that are still to be measured, after the process has ended."""
    pending = list(request["keys"])
    current = None
    for answer in answers_of(request, build, log):
        if "begins" in answer:
            progress.step(f"{answer['begins']}, {request['threads']} thread{'s' * (request['threads'] > 1)}")
            current = answer["begins"]
        elif "ended" in answer:
            if current is None:
                return pending
            rows[pending.pop(0)]["problems"]["the row"] = f"the process that measured it ended with {answer['ended']}"
            return pending
        else:
            row = rows[pending.pop(0)]
            assert row["key"] == answer["key"] == current
            row["threads"][str(request["threads"])] = {
                "times": keep(answer["times"]), "processor": keep(answer["processor"]), "load": machine.load()}
            row["problems"].update(answer["problems"])
            row["differences"].update(answer.get("differences", {}))
    return pending


def measure_growth(plan, build, log, progress):
    points = []
    # Each part in a process of its own, so that memory is given back.
    for part in ("size", "nodes", "radius"):
        request = {"kind": "growth", "threads": max(plan.threads), "parts": [part], "rounds": plan.rounds,
                   "seconds": plan.growth_seconds, "long": plan.long, "sides": plan.sides, "nodes": plan.nodes,
                   "radii": plan.radii, "radius_side": plan.radius_side}
        for answer in answers_of(request, build, log):
            if "begins" in answer:
                progress.step(answer["begins"])
            elif "ended" in answer:
                points.append({"plot": part, "problem": f"the process ended with {answer['ended']}"})
            else:
                points.append({name: list(map(rounded, one)) if isinstance(one, list) else one
                               for name, one in answer.items()})
    return points


def measure_small(plan, build, log, progress):
    progress.step("what is small")
    request = {"kind": "small", "threads": max(plan.threads), "rounds": 3 * plan.rounds, "seconds": 2.0,
               "long": plan.long}
    found = {"problems": {}}
    for answer in answers_of(request, build, log):
        if "small" in answer:
            found.update(times=keep(answer["small"]), problems=answer["problems"])
        elif "ended" in answer:
            found["problems"]["the process"] = f"ended with {answer['ended']}"
    found["program"] = keep(small.measure_program(build, plan.program_rounds))
    return found


def measure(name, build, log, keys=None):
    plan = PLANS[name]
    # Some of the rows are for somebody who works on them, and wants nothing else.
    whole = keys is None
    if not whole:
        plan = dataclasses.replace(plan, keys=keys)
    progress = Progress(len(plan.keys) * len(plan.threads) + 4 * whole)
    begun, ticks, load = time.time(), machine.processor_ticks(), machine.load()
    found = {
        "format": FORMAT, "version": VERSION, "plan": name,
        "date": datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC"),
        "side": plan.side, "threads": plan.threads, "rounds": plan.rounds, "radius_side": plan.radius_side,
        "machine": machine.describe(), "versions": machine.versions(ROOT),
        "rows": measure_rows(plan, build, log, progress),
        "growth": measure_growth(plan, build, log, progress) if whole else [],
        "small": measure_small(plan, build, log, progress) if whole else {},
    }
    progress.end()
    after = machine.processor_ticks()
    loads = [one["load"] for row in found["rows"] for one in row["threads"].values()]
    found["seconds"] = round(time.time() - begun)
    found["load"] = {"before": load, "lowest": min(loads, default=load), "highest": max(loads, default=load)}
    found["stolen"] = rounded((after["stolen"] - ticks["stolen"]) / max(1, after["all"] - ticks["all"]))
    return found
