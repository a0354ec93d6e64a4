#!/usr/bin/python3
"""How close a batch comes to the time of its files alone, or of its nodes alone.

usage: Bench/batch.py PROGRAM [--images 1000] [--size 1024] [--ending png] [--repeat 3]

Makes images of terrain, and runs a graph of ten nodes on each: read, computed and written. Beside it, in turns, the
same files read and written by a graph without nodes, with the same codecs, and the ten nodes computed without files:
long chains of them on one image, of which the time of a short chain is taken away. Prints the medians, and the ratio of
the whole to the larger of its two parts.
"""

import argparse
import json
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

# Nothing here makes the results easier or harder to pack than the terrain is, as steps or noise would.
TEN = [
    ("ImageValueAddNode", {"constant": 0.1}),
    ("ImageValueMultiplyNode", {"constant": 0.8}),
    ("ImageValueClampNode", {"low": 0.05, "high": 0.95}),
    ("ImageValueSubtractNode", {"constant": 0.05}),
    ("ImageValueMaximumNode", {"constant": 0.02}),
    ("ImageValueMinimumNode", {"constant": 0.9}),
    ("ImageValueFunctionNode", {"function": "absolute"}),
    ("ImageValueDivideNode", {"constant": 1.1}),
    ("ImageValueAddNode", {"constant": 0.01}),
    ("ImageValueClampNode", {"low": 0.0, "high": 1.0}),
]


def chain(rounds, reader, output):
    """A document that puts the ten nodes on an image so many times in a row."""
    nodes = [{"id": "r", "type": "ImageReaderNode", "attributes": {"path": reader}}]
    connections = []
    last = "r.image"
    for index in range(10 * rounds):
        kind, attributes = TEN[index % 10]
        nodes.append({"id": f"n{index}", "type": kind, "attributes": attributes})
        connections.append({"from": last, "to": f"n{index}.image"})
        last = f"n{index}.image"
    return {
        "format": "value-graph", "version": 2, "nodes": nodes, "connections": connections,
        "outputs": [{"from": last, "path": output}],
    }


def timed(*arguments, cwd):
    start = time.monotonic()
    subprocess.run([str(argument) for argument in arguments], cwd=cwd, check=True)
    return time.monotonic() - start


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=Path)
    parser.add_argument("--images", type=int, default=1000)
    parser.add_argument("--size", type=int, default=1024)
    parser.add_argument("--ending", default="png")
    parser.add_argument("--repeat", type=int, default=3)
    options = parser.parse_args()
    program = options.program.resolve()
    with tempfile.TemporaryDirectory(prefix="value-batch-") as folder:
        folder = Path(folder)
        measure(program, folder, options)
    return 0


def measure(program, folder, options):
    ending = options.ending
    (folder / "in").mkdir()
    first = folder / f"in/0.{ending}"
    subprocess.run(
        [program, "apply", "ImageTerrainNode", "--set", f"frame=0,0,{options.size},{options.size}",
         "-o", first], check=True,
    )
    for index in range(1, options.images):
        shutil.copyfile(first, folder / f"in/{index}.{ending}")
    for name, rounds in (("files", 0), ("whole", 1), ("short", 1), ("long", 11)):
        document = chain(rounds, f"in/0.{ending}", f"{name}.{ending}")
        (folder / f"{name}.json").write_text(json.dumps(document))
    times = {"files": [], "whole": [], "nodes": []}
    for _ in range(options.repeat):
        for name in ("files", "whole"):
            out = folder / f"out-{name}"
            times[name].append(timed(
                program, "run", f"{name}.json", "--each", f"r=in/*.{ending}", "--output-dir", out,
                cwd=folder,
            ))
            shutil.rmtree(out)
        # Twenty runs of each, so that a start of the program counts for little.
        spans = {}
        for name in ("short", "long"):
            spans[name] = min(timed(program, "run", f"{name}.json", cwd=folder) for _ in range(20))
        times["nodes"].append((spans["long"] - spans["short"]) / 10 * options.images)
    median = {name: statistics.median(values) for name, values in times.items()}
    print(f"{options.images} images of {options.size} x {options.size}, .{ending}, {options.repeat} times in turns")
    for name, text in (("files", "read and written"), ("nodes", "ten nodes computed"), ("whole", "both")):
        print(f"  {text:20} {median[name]:8.2f} s   ({', '.join(f'{value:.2f}' for value in times[name])})")
    print(f"  ratio to the larger  {median['whole'] / max(median['files'], median['nodes']):8.2f}")


if __name__ == "__main__":
    sys.exit(main())
