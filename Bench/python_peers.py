#!/usr/bin/python3
"""The nodes as functions of Python beside what Debian's NumPy, SciPy, scikit-image, OpenCV and libvips offer.

usage: Bench/python_peers.py BUILD [--side 2048] [--rounds 7] [--only NODE ...] [--write Docs/Python.md] [--json FILE]

For each node: processor time of one thread, all libraries in turns in one process; the most memory above the inputs,
each in a process of its own; and the largest difference to the definition in double precision. Time of the processor
and not of the clock, so that other work on the machine counts for less. ./install-packages --with-peers installs the
libraries. --write puts the table between its marks in a document.
"""

import argparse
import ctypes
import json
import os
import re
import statistics
import subprocess
import sys
import time
from pathlib import Path

import numpy as np
from report.case import PEERS
from report.cases import CASES as ALL_CASES
from report.figures import difference_text
from report.inputs import Inputs
from report.worker import difference_of

# One row for each node; the calls are those of ./bench.
CASES = [case for case in ALL_CASES if case.is_plain]
LIBRARIES = {"valuenodes": "valuenodes"}
LIBRARIES.update((name, PEERS[name]) for name in ("numpy", "scipy", "skimage", "opencv", "libvips"))
MARKS = "<!-- Peers: written by Bench/python_peers.py -->\n", "<!-- End of peers -->\n"
# A call that takes longer than this is repeated less often.
LONG = 4.0


def name_of(case):
    """The function of the package."""
    return case.text.partition("(")[0]


def find_case(name):
    return next(case for case in CASES if name_of(case) == name)


def calls_of(case):
    return {name: call for name, call in case.calls.items() if name in LIBRARIES}


def set_threads(threads):
    """For the libraries that do not read a variable of the environment."""
    import cv2
    import valuenodes as vn

    cv2.setNumThreads(threads)
    vn.set_threads(threads)


# ---- What runs in a process of its own ----


def time_case(case, side, rounds):
    """Seconds of each library, in turns."""
    set_threads(1)
    inputs = Inputs(side)
    calls = calls_of(case)
    times = {name: [] for name in calls}
    first = {}
    small = Inputs(64)
    for name, call in calls.items():
        # Imports, and what a device compiles.
        call(small)
        call(inputs)
        begun = time.process_time()
        call(inputs)
        first[name] = time.process_time() - begun
    for turn in range(rounds):
        for name, call in calls.items():
            if turn >= 3 and first[name] > LONG:
                continue
            begun = time.process_time()
            result = call(inputs)
            times[name].append(time.process_time() - begun)
            del result
    return times


def read_status(name):
    with open("/proc/self/status", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith(name)) * 1024


def measure_memory(case, library, side):
    """Bytes above the inputs at the peak of one call."""
    set_threads(2)
    call = calls_of(case)[library]
    small = Inputs(64)
    call(small)
    inputs = Inputs(side)
    for name in small.names():
        inputs[name]
    # What making them has left free would be taken before anything new.
    ctypes.CDLL(None).malloc_trim(0)
    before = read_status("VmRSS")
    with open("/proc/self/clear_refs", "w", encoding="ascii") as file:
        file.write("5")
    result = call(inputs)
    peak = read_status("VmHWM")
    del result
    return max(0, peak - before)


def measure_differences(case):
    """The largest difference of each library to the definition."""
    small = Inputs(case.exact_side)
    expected = [np.asarray(one, np.float64) for one in case.exact(small)]
    return {name: difference_of(case, name, small, expected) for name in calls_of(case)}


def run_child(options):
    kind, name, *rest = options.child
    case = find_case(name)
    if kind == "time":
        answer = time_case(case, options.side, options.rounds)
    elif kind == "memory":
        answer = measure_memory(case, rest[0], options.side)
    else:
        set_threads(2)
        answer = measure_differences(case)
    print(json.dumps(answer))


# ---- The whole ----


def ask_child(options, threads, *words):
    number = str(threads)
    environment = {
        **os.environ, "VIPS_CONCURRENCY": number, "POCL_MAX_PTHREAD_COUNT": number, "OMP_NUM_THREADS": number,
        "OPENBLAS_NUM_THREADS": number,
    }
    command = [sys.executable, __file__, str(options.build), "--side", str(options.side), "--rounds",
               str(options.rounds), "--child", *words]
    answer = subprocess.run(command, env=environment, stdout=subprocess.PIPE, text=True, check=True)
    return json.loads(answer.stdout)


def measure(case, options):
    name = name_of(case)
    times = ask_child(options, 1, "time", name)
    differences = ask_child(options, 2, "exact", name)
    found = {}
    for library in calls_of(case):
        found[library] = {
            "times": times[library],
            "memory": ask_child(options, 2, "memory", name, library),
            "difference": differences[library],
        }
    return found


def time_text(seconds):
    number = seconds * 1e3
    return f"{number / 1e3:.1f} s" if number >= 1e4 else f"{number:.0f} ms" if number >= 10 else f"{number:.1f} ms"


def field_text(found, image_bytes, is_fastest):
    seconds = time_text(statistics.median(found["times"]))
    if is_fastest:
        seconds = f"**{seconds}**"
    return f"{seconds}; {found['memory'] / image_bytes:.1f}; {difference_text(found['difference'])[0]}"


def row_text(case, results, side):
    image_bytes = side * side * 4
    first = {library: statistics.median(found["times"]) for library, found in results.items()}
    fastest = min(first, key=first.get)
    fields = [
        field_text(results[library], image_bytes, library == fastest) if library in results else "–"
        for library in LIBRARIES
    ]
    return f"| `{case.text}` | " + " | ".join(fields) + f" | {case.remark} |"


def package_version(name):
    answer = subprocess.run(["dpkg-query", "-W", "-f=${Version}", name], capture_output=True, text=True)
    return re.sub(r"^\d+:|[-+~].*", "", answer.stdout) if answer.returncode == 0 else "?"


def table_text(rows, options, loads):
    versions = ", ".join(
        f"{text} {package_version(package)}"
        for text, package in (
            ("NumPy", "python3-numpy"), ("SciPy", "python3-scipy"), ("scikit-image", "python3-skimage"),
            ("OpenCV", "python3-opencv"), ("libvips", "libvips42"),
        )
    )
    introduction = (
        f"Images of {options.side} x {options.side} float32; load of the machine {min(loads):.1f} to {max(loads):.1f} "
        f"on {os.cpu_count()} processors meanwhile. {versions}. Each field: processor time of one thread; peak memory "
        "above the inputs, in images of that size; largest difference to the definition in double precision. Bold: the "
        "shortest time. –: no equivalent.\n\n"
    )
    heading = "| Call | " + " | ".join(LIBRARIES.values()) + " | What differs |\n"
    heading += "|" + "---|" * (len(LIBRARIES) + 2) + "\n"
    return introduction + heading + "\n".join(rows) + "\n"


def write_table(path, text):
    document = path.read_text(encoding="utf-8")
    before, found, rest = document.partition(MARKS[0])
    _, end, after = rest.partition(MARKS[1])
    if not found or not end:
        raise SystemExit(f"{path} has no marks for the table")
    path.write_text(before + MARKS[0] + text + MARKS[1] + after, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("--side", type=int, default=2048)
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--only", nargs="+", choices=[name_of(case) for case in CASES])
    parser.add_argument("--write", type=Path)
    parser.add_argument("--json", type=Path)
    parser.add_argument("--child", nargs="+", help=argparse.SUPPRESS)
    options = parser.parse_args()
    sys.path.insert(0, str(options.build.resolve() / "python"))
    if options.child:
        run_child(options)
        return
    measure_all(options)


def measure_all(options):
    rows, results, loads = [], {}, [os.getloadavg()[0]]
    for case in CASES:
        if options.only and name_of(case) not in options.only:
            continue
        results[name_of(case)] = measure(case, options)
        rows.append(row_text(case, results[name_of(case)], options.side))
        loads.append(os.getloadavg()[0])
        print(rows[-1], flush=True)
    if options.write:
        write_table(options.write, table_text(rows, options, loads))
    if options.json:
        options.json.write_text(json.dumps({"loads": loads, "results": results}, indent=1), encoding="utf-8")


if __name__ == "__main__":
    main()
