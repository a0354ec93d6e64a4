"""How soon Ctrl-C stops a call of the Python package; for Bench/python_calls.py.

A process calls a function again and again. At a random instant it is sent SIGINT, and tells when KeyboardInterrupt has
come out of the call.
"""

import os
import random
import signal
import statistics
import subprocess
import sys
import tempfile
import time

import numpy as np
from report.inputs import make_terrain

# By name: what is prepared, and what is called.
CASES = {
    "a loop of Python itself": ("", "sum(range(1000))"),
    "relief, levels, radius 250": ("", "vn.relief(image, radius=250)"),
    "relief, levels, smooth, radius 100": ("", "vn.relief(image, radius=100, profile='smooth')"),
    "relief, inner_bevel, radius 100": ("", "vn.relief(image, radius=100, style='inner_bevel')"),
    "relief, emboss, radius 250": ("", "vn.relief(image, radius=250, style='emboss')"),
    "relief, soften 16": ("", "vn.relief(image, radius=0, soften=16)"),
    "distance": ("", "vn.distance(image)"),
    "distance, few pixels": ("few = vn.condition(image, condition='v_gt_a', a=0.999999)", "vn.distance(few)"),
    "ambient_occlusion, radius 3": ("", "vn.ambient_occlusion(image)"),
    "ambient_occlusion, radius 100": ("", "vn.ambient_occlusion(image, radius=100)"),
    "connected_components": ("", "vn.connected_components(image)"),
    "component_edges": ("", "vn.component_edges(image)"),
    "gradient": ("", "vn.gradient(image)"),
    "compare": ("", "vn.compare(image, image)"),
    "power": ("", "vn.power(image, image)"),
    "function, cubic_root": ("", "vn.function(image, function='cubic_root')"),
    "add, eight images": ("", "vn.add(*[image] * 8)"),
    "to_value, auto_level": ("", "vn.to_value(image, auto_level=True)"),
    "clamp, arc_out": ("", "vn.clamp(image, low=0.25, high=0.75, profile='arc_out')"),
    "steps": ("", "vn.steps(image, steps=7)"),
    "condition, v_eq_min": ("", "vn.condition(image, condition='v_eq_min')"),
    "value_range, smooth": ("", "vn.value_range(image, center=0.5, size=0.1, falloff=0.1, profile='smooth')"),
    "Image of float64": ("wide = np.asarray(image).astype(np.float64)", "vn.Image(wide)"),
    "Graph.evaluate of six nodes": (
        "graph = vn.Graph()\n"
        "graph.add('Image Reader', 'a', path='none.exr')\n"
        "last = 'a.image'\n"
        "for name in ('Value Add', 'Distance', 'Relief', 'Value Function', 'Value Gradient'):\n"
        "    id = graph.add(name)\n"
        "    graph.connect(last, id + '.image')\n"
        "    last = id + '.image'\n"
        "    if name == 'Relief': graph.set(id + '.radius', 100)\n"
        "last = id + '.output_x'",
        "graph.evaluate(last, inputs={'a': image})",
    ),
    "read, EXR": ("vn.write('a.exr', image)", "vn.read('a.exr')"),
    "read, PNG": ("vn.write('a.png', image, 'uint16')", "vn.read('a.png')"),
    "read, TIFF": ("vn.write('a.tif', image)", "vn.read('a.tif')"),
    "write, EXR": ("", "vn.write('b.exr', image)"),
    "write, PNG": ("", "vn.write('b.png', image, 'uint16')"),
    "to_png": ("", "image.to_png()"),
}
CALLER = """
import signal, sys, time
import numpy as np
import valuenodes as vn

# What runs in the background may have been told to ignore it.
signal.signal(signal.SIGINT, signal.default_int_handler)
image = vn.Image(np.load({terrain!r}), range=(0, 1))
{prepare}

def call(image):
    return {call}

if "image" in {call!r}:
    # What a device compiles, and what is loaded when it is first needed.
    call(vn.Image(np.asarray(image)[:64, :64], range=(0, 1)))
while True:
    print("ready", flush=True)
    sys.stdin.readline()
    try:
        print("begun", flush=True)
        begun = time.monotonic()
        call(image)
        print("whole", time.monotonic() - begun, flush=True)
        while True:
            call(image)
    except KeyboardInterrupt:
        print("stopped", time.monotonic_ns(), flush=True)
"""
# Longer calls are stopped within their first seconds.
LONGEST = 2.0


def read_until(process, word):
    """The lines up to one that begins with a word, as lists of words."""
    lines = []
    for line in process.stdout:
        lines.append(line.split())
        if lines[-1][0] == word:
            return lines
    raise SystemExit(process.stderr.read())


def processor_seconds(process):
    """What all threads of a process have had of the processors: its own clock."""
    return time.clock_gettime((~process.pid << 3) | 2)


def stop(process, seconds):
    """Interrupts the process so long after it has begun.

    Answers what that took on the clock and of the processors, and the time of a whole call where one came to its end.
    """
    read_until(process, "ready")
    process.stdin.write("\n")
    process.stdin.flush()
    read_until(process, "begun")
    time.sleep(seconds)
    used = processor_seconds(process)
    sent = time.monotonic_ns()
    process.send_signal(signal.SIGINT)
    lines = read_until(process, "stopped")
    whole = float(lines[0][1]) if lines[0][0] == "whole" else LONGEST
    return (int(lines[-1][1]) - sent) * 1e-9, processor_seconds(process) - used, whole


def measure_case(prepare, call, terrain, attempts):
    instants = random.Random(7)
    with tempfile.TemporaryDirectory() as folder:
        process = subprocess.Popen(
            [sys.executable, "-c", CALLER.format(prepare=prepare, call=call, terrain=terrain)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, cwd=folder,
        )
        try:
            whole = stop(process, LONGEST)[2]
            times = [stop(process, instants.uniform(0.0, max(0.05, whole)))[:2] for _ in range(attempts)]
        finally:
            process.kill()
            process.wait()
    return whole, times


def measure(attempts, part):
    """Times from SIGINT to KeyboardInterrupt, in a table and as lists."""
    print("| Call on 4096 x 4096 | Whole | Median | Largest | Largest, processor time |")
    print("|---|---|---|---|---|", flush=True)
    results = {}
    with tempfile.TemporaryDirectory() as folder:
        terrain = os.path.join(folder, "terrain.npy")
        np.save(terrain, make_terrain(4096, 0.0, np.random.default_rng(3)))
        for name, (prepare, call) in CASES.items():
            if part not in name:
                continue
            whole, times = measure_case(prepare, call, terrain, attempts)
            results[name] = {"whole": whole, "times": times, "load": os.getloadavg()[0]}
            walls = [wall for wall, _ in times]
            figures = (statistics.median(walls), max(walls), max(used for _, used in times))
            fields = " | ".join(f"{seconds * 1e3:.1f} ms" for seconds in figures)
            text = f"{whole * 1e3:.0f} ms" if whole < LONGEST else f"over {LONGEST:.0f} s"
            print(f"| {name} | {text} | {fields} |", flush=True)
    return results
