#!/usr/bin/python3
"""What calls of the Python package cost beside the nodes themselves, what importing it costs, and how soon they stop.

usage: Bench/python_calls.py BUILD [--only small large memory import interrupt] [--rounds 41] [--attempts 12]
         [--case PART OF A NAME] [--json FILE]

BUILD is the folder of a build with the targets ValuePythonPackage and ValueNodeTimes. Nodes are timed in a process of
their own, value-node-times, on the same samples, in turns with the calls. Figures are medians, and differences and
ratios those of neighbouring runs. Prints tables in Markdown; --json has every single time as well.
"""

import argparse
import json
import operator
import os
import platform
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import python_interrupts

PARTS = ("small", "large", "memory", "import", "interrupt")


class HostNode:
    """A node in the host, in a process that waits to be told when to evaluate it."""

    def __init__(self, build, samples, side, images, threads):
        program = [build / "bin/value-node-times", build / "bin/Value.so", "ImageValueAddNode", samples]
        self.process = subprocess.Popen(
            [*map(str, program), str(side), str(images), str(threads)],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
        )

    def time(self, way, count):
        """Seconds of one evaluation, of so many: on the clock, and of the processors."""
        self.process.stdin.write(f"{way} {count}\n")
        self.process.stdin.flush()
        return tuple(map(float, self.process.stdout.readline().split()))

    def end(self):
        self.process.stdin.close()
        self.process.wait()


def timed(call, count):
    used = time.process_time()
    begun = time.perf_counter()
    for _ in range(count):
        call()
    taken = time.perf_counter() - begun
    return taken / count, (time.process_time() - used) / count


def median(values, which):
    """The median of what one of the two clocks says."""
    return statistics.median(value[which] for value in values)


def median_of_neighbors(combine, calls, nodes, which):
    return statistics.median(combine(call[which], node[which]) for call, node in zip(calls, nodes, strict=True))


def compare(build, side, images, threads, count, rounds):
    """Times of adding two images, or a number to one, in turns: by way, a list of pairs of seconds."""
    import numpy as np
    import valuenodes as vn

    arrays = np.random.default_rng(1).random((2, side, side), dtype=np.float32)
    ready = [vn.Image(array) for array in arrays]
    calls = {
        1: {"arrays": lambda: vn.add(arrays[0], 0.0), "images": lambda: vn.add(ready[0], 0.0)},
        2: {"arrays": lambda: vn.add(arrays[0], arrays[1]), "images": lambda: vn.add(ready[0], ready[1])},
    }[images]
    vn.set_threads(threads)
    with tempfile.NamedTemporaryFile() as file:
        arrays.tofile(file.name)
        node = HostNode(build, file.name, side, images, threads)
        ways = {
            "node": lambda: node.time("node", count),
            "engine": lambda: node.time("engine", count),
            **{way: (lambda call=call: timed(call, count)) for way, call in calls.items()},
        }
        times = {way: [] for way in ways}
        for way in ways.values():
            way()
        for _ in range(rounds):
            for name, way in ways.items():
                times[name].append(way())
        node.end()
    vn.set_threads(0)
    return times


def measure_small(build, rounds):
    """16 x 16: microseconds of one call beyond those of the node."""
    print("| `vn.add` on 16 x 16 | The node | In an engine | Of images | Beyond it | Of arrays | Beyond it |")
    print("|---|---|---|---|---|---|---|")
    results = {}
    for images, text in ((2, "two images"), (1, "an image and a number")):
        # So few at once that other work on the machine rarely comes between.
        times = compare(build, 16, images, os.cpu_count(), 50, 10 * rounds)
        results[text] = times
        fields = [median(times[way], 0) for way in ("node", "engine")]
        for way in ("images", "arrays"):
            fields += [median(times[way], 0), median_of_neighbors(operator.sub, times[way], times["node"], 0)]
        print(f"| {text} | " + " | ".join(f"{seconds * 1e6:.1f} µs" for seconds in fields) + " |", flush=True)
    return results


def measure_large(build, rounds):
    """4096 x 4096: a call as a multiple of the node, on the clock and of the processors."""
    print("| `vn.add` on 4096 x 4096 | Threads | The node | Of images | Ratio | Processor time | Of arrays | Ratio "
          "| Processor time |")
    print("|---|---|---|---|---|---|---|---|---|")
    results = {}
    for images, text in ((2, "two images"), (1, "an image and a number")):
        for threads in (1, 2):
            # Several at once, so that what a process finds when its turn comes counts for less.
            times = compare(build, 4096, images, threads, 5, rounds)
            results[f"{text}, threads {threads}"] = times
            fields = [f"{median(times['node'], 0) * 1e3:.1f} ms"]
            for way in ("images", "arrays"):
                fields.append(f"{median(times[way], 0) * 1e3:.1f} ms")
                for which in (0, 1):
                    ratio = median_of_neighbors(operator.truediv, times[way], times["node"], which)
                    fields.append(f"{ratio:.3f}")
            print(f"| {text} | {threads} | " + " | ".join(fields) + " |", flush=True)
    return results


MEMORY = """
import numpy as np
import valuenodes as vn

def read(name):
    with open("/proc/self/status") as file:
        return next(int(line.split()[1]) for line in file if line.startswith(name)) * 1024

a, b = np.random.default_rng(1).random((2, 4096, 4096), dtype=np.float32)
small = np.ones((16, 16), np.float32)
vn.add(small, small)
before = read("VmRSS")
with open("/proc/self/clear_refs", "w") as file:
    file.write("5")
result = {call}
print(read("VmHWM") - before, np.asarray(result).nbytes)
"""


def measure_memory():
    """The most memory above the inputs that a call needs, in a process of its own, in sizes of the result."""
    print("| Call on 4096 x 4096 | Peak beyond the inputs | The result | Ratio |")
    print("|---|---|---|---|")
    results = {}
    for call in ("vn.add(a, b)", "vn.add(a, 0.25)", "vn.add(vn.Image(a), vn.Image(b))"):
        answers = [run(MEMORY.format(call=call)).split() for _ in range(5)]
        peak = statistics.median(int(answer[0]) for answer in answers)
        size = int(answers[0][1])
        results[call] = {"peak": peak, "result": size}
        print(f"| `{call}` | {peak / 1e6:.2f} MB | {size / 1e6:.2f} MB | {peak / size:.3f} |", flush=True)
    return results


def run(code):
    return subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True).stdout


IMPORTS = {
    "pass": "pass",
    "valuenodes": "import valuenodes",
    "numpy": "import numpy",
    "numpy and valuenodes": "import numpy, valuenodes",
}
LOADED = """
import sys
before = set(sys.modules)
import valuenodes
print(*sorted(set(sys.modules) - before))
with open("/proc/self/maps") as file:
    print(*sorted({line.split()[5].rpartition("/")[2] for line in file if ".so" in line}))
"""


def measure_import(rounds):
    """Milliseconds of importing the package, and what is loaded then."""
    times = {name: [] for name in IMPORTS}
    for _ in range(rounds + 1):
        for name, code in IMPORTS.items():
            times[name].append(timed(lambda code=code: run(code), 1))
    # The first round reads files that were not in memory.
    times = {name: values[1:] for name, values in times.items()}
    print("| `import valuenodes` | Without it | With it | Difference |")
    print("|---|---|---|---|")
    for text, without, together in (("alone", "pass", "valuenodes"), ("after numpy", "numpy", "numpy and valuenodes")):
        fields = [median(times[name], 0) for name in (without, together)]
        fields.append(median_of_neighbors(operator.sub, times[together], times[without], 0))
        print(f"| {text} | " + " | ".join(f"{seconds * 1e3:.1f} ms" for seconds in fields) + " |")
    modules, libraries = run(LOADED).splitlines()
    print(f"\nModules: {modules}\n\nLibraries: {libraries}\n", flush=True)
    return {"seconds": times, "modules": modules.split(), "libraries": libraries.split()}


def describe_machine():
    with open("/proc/cpuinfo") as file:
        names = [line.partition(":")[2].strip() for line in file if line.startswith("model name")]
    return {"processors": os.cpu_count(), "name": names[0] if names else platform.machine(), "python": sys.version}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", type=Path)
    parser.add_argument("--only", nargs="+", choices=PARTS, default=PARTS)
    parser.add_argument("--rounds", type=int, default=41)
    parser.add_argument("--attempts", type=int, default=12)
    parser.add_argument("--case", default="")
    parser.add_argument("--json", type=Path)
    options = parser.parse_args()
    build = options.build.resolve()
    os.environ["PYTHONPATH"] = str(build / "python")
    sys.path.insert(0, str(build / "python"))
    parts = {
        "small": lambda: measure_small(build, options.rounds),
        "large": lambda: measure_large(build, options.rounds),
        "memory": measure_memory,
        "import": lambda: measure_import(options.rounds),
        "interrupt": lambda: python_interrupts.measure(options.attempts, options.case),
    }
    results = {"machine": describe_machine()}
    for part in options.only:
        print(f"\nLoad of the last minute: {os.getloadavg()[0]:.1f}\n")
        results[part] = {"load": os.getloadavg()[0], "results": parts[part]()}
    print(f"\nLoad of the last minute: {os.getloadavg()[0]:.1f}")
    if options.json:
        options.json.write_text(json.dumps(results, indent=1), encoding="utf-8")


if __name__ == "__main__":
    main()
