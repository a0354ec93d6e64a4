#!/usr/bin/python3
"""The nodes as functions of Python beside what Debian's NumPy, SciPy, scikit-image, OpenCV and libvips offer.

usage: Bench/python_peers.py BUILD [--side 2048] [--rounds 7] [--only NODE ...] [--write Docs/Python.md] [--json FILE]

For each node: processor time of one thread, all libraries in turns in one process; the most memory above the inputs,
each in a process of its own; and the largest difference to the definition in double precision. Time of the processor
and not of the clock, so that other work on the machine counts for less. ./install-packages --with-peers installs the
libraries. --write puts the table between its marks in a document.
"""

import argparse
import json
import os
import re
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import numpy as np
from peers_calls import CASES, make_inputs

LIBRARIES = {"valuenodes": "valuenodes", "numpy": "NumPy", "scipy": "SciPy", "skimage": "scikit-image",
             "opencv": "OpenCV", "libvips": "libvips"}
MARKS = "<!-- Peers: written by Bench/python_peers.py -->\n", "<!-- End of peers -->\n"
# A call that takes longer than this is repeated less often.
LONG = 4.0


def find_case(name):
    return next(case for case in CASES if case.name == name)


def calls_of(case):
    return {"valuenodes": case.ours, **case.peers}


def set_threads(threads):
    """For the libraries that do not read a variable of the environment."""
    import cv2
    import valuenodes as vn

    cv2.setNumThreads(threads)
    vn.set_threads(threads)


def load_inputs(folder, side):
    """The inputs of the whole size are made once for all processes; others are small."""
    path = Path(folder, f"{side}.npz")
    if not path.exists():
        return make_inputs(side)
    with np.load(path) as file:
        return {name: file[name] for name in file}


def listed(result):
    return list(result) if isinstance(result, (list, tuple)) else [result]


# ---- What runs in a process of its own ----


def time_case(case, folder, side, rounds):
    """Seconds of each library, in turns."""
    set_threads(1)
    inputs = load_inputs(folder, side)
    calls = calls_of(case)
    times = {name: [] for name in calls}
    first = {}
    small = make_inputs(64)
    for name, call in calls.items():
        # Imports, and what a device compiles.
        call(small)
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


def measure_memory(case, library, folder, side):
    """Bytes above the inputs at the peak of one call."""
    set_threads(2)
    call = calls_of(case)[library]
    call(make_inputs(64))
    inputs = load_inputs(folder, side)
    before = read_status("VmRSS")
    with open("/proc/self/clear_refs", "w", encoding="ascii") as file:
        file.write("5")
    result = call(inputs)
    peak = read_status("VmHWM")
    del result
    return max(0, peak - before)


def renumber(labels, where):
    """The numbers of regions in the order in which they are met."""
    _, first, inverse = np.unique(labels[where], return_index=True, return_inverse=True)
    return np.argsort(np.argsort(first))[inverse]


def measure_difference(case, library, folder, side):
    """The largest difference to the definition, and on which part of the image."""
    inputs = load_inputs(folder, case.exact_side or side)
    results = [np.asarray(one, np.float64) for one in listed(calls_of(case)[library](inputs))]
    expected = listed(case.exact(inputs))
    if case.are_labels:
        labels, wanted = results[0], np.asarray(expected[0])
        if library == "valuenodes":
            return float(np.abs(labels - wanted).max())
        # Those that leave the background alone give it one number.
        shape = inputs["mask"] > 0.5
        splits = len(np.unique(labels[~shape])) > 1
        where = np.ones_like(shape) if splits else shape
        return float((renumber(labels, where) != renumber(wanted, where)).any())
    border = case.border if library != "valuenodes" else 0
    largest = 0.0
    for one, other in zip(results, expected, strict=True):
        # Masks of 8 bits.
        if one.max() == 255 and np.asarray(other).max() == 1:
            one = one / 255
        inner = np.abs(one - other)[border : one.shape[0] - border, border : one.shape[1] - border]
        largest = max(largest, float(inner.max()))
    return largest


def run_child(options):
    kind, name, *rest = options.child
    case = find_case(name)
    if kind == "time":
        answer = time_case(case, options.inputs, options.side, options.rounds)
    elif kind == "memory":
        answer = measure_memory(case, rest[0], options.inputs, options.side)
    else:
        set_threads(2)
        answer = {name: measure_difference(case, name, options.inputs, options.side) for name in calls_of(case)}
    print(json.dumps(answer))


# ---- The whole ----


def ask_child(options, threads, *words):
    number = str(threads)
    environment = {
        **os.environ, "VIPS_CONCURRENCY": number, "POCL_MAX_PTHREAD_COUNT": number, "OMP_NUM_THREADS": number,
        "OPENBLAS_NUM_THREADS": number,
    }
    command = [sys.executable, __file__, str(options.build), "--side", str(options.side), "--rounds",
               str(options.rounds), "--inputs", options.inputs, "--child", *words]
    answer = subprocess.run(command, env=environment, stdout=subprocess.PIPE, text=True, check=True)
    return json.loads(answer.stdout)


def measure(case, options):
    times = ask_child(options, 1, "time", case.name)
    differences = ask_child(options, 2, "exact", case.name)
    found = {}
    for library in calls_of(case):
        found[library] = {
            "times": times[library],
            "memory": ask_child(options, 2, "memory", case.name, library),
            "difference": differences[library],
        }
    return found


def time_text(seconds):
    number = seconds * 1e3
    return f"{number / 1e3:.1f} s" if number >= 1e4 else f"{number:.0f} ms" if number >= 10 else f"{number:.1f} ms"


def field_text(case, library, found, image_bytes, is_fastest):
    seconds = time_text(statistics.median(found["times"]))
    if is_fastest:
        seconds = f"**{seconds}**"
    difference = found["difference"]
    if case.are_labels:
        exact = "same" if difference == 0 else "differs"
    else:
        exact = "0" if difference == 0 else f"{difference:.1g}"
    return f"{seconds}; {found['memory'] / image_bytes:.1f}; {exact}"


def row_text(case, results, side):
    image_bytes = side * side * 4
    first = {library: statistics.median(found["times"]) for library, found in results.items()}
    fastest = min(first, key=first.get)
    fields = [
        field_text(case, library, results[library], image_bytes, library == fastest) if library in results else "–"
        for library in LIBRARIES
    ]
    return f"| {case.text} | " + " | ".join(fields) + f" | {case.remark} |"


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
    parser.add_argument("--only", nargs="+", choices=[case.name for case in CASES])
    parser.add_argument("--write", type=Path)
    parser.add_argument("--json", type=Path)
    parser.add_argument("--inputs", help=argparse.SUPPRESS)
    parser.add_argument("--child", nargs="+", help=argparse.SUPPRESS)
    options = parser.parse_args()
    sys.path.insert(0, str(options.build.resolve() / "python"))
    if options.child:
        run_child(options)
        return
    with tempfile.TemporaryDirectory() as folder:
        options.inputs = folder
        np.savez(Path(folder, f"{options.side}.npz"), **make_inputs(options.side))
        measure_all(options)


def measure_all(options):
    rows, results, loads = [], {}, [os.getloadavg()[0]]
    for case in CASES:
        if options.only and case.name not in options.only:
            continue
        results[case.name] = measure(case, options)
        rows.append(row_text(case, results[case.name], options.side))
        loads.append(os.getloadavg()[0])
        print(rows[-1], flush=True)
    if options.write:
        write_table(options.write, table_text(rows, options, loads))
    if options.json:
        options.json.write_text(json.dumps({"loads": loads, "results": results}, indent=1), encoding="utf-8")


if __name__ == "__main__":
    main()
