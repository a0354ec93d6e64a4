#!/usr/bin/python3
"""What decoding in a process of its own costs a batch of small files.

usage: Bench/small_files.py PROGRAM [--files 1000] [--sizes 16 64] [--jobs 1 2] [--repeat 15]

Makes PNG files of noise and runs a graph of one node on each, read, computed and written, with and without
--in-process in turns. Prints the medians of the times, the median of the ratios of neighbouring runs, and the ratio of
the processor time that both take in all.
"""

import argparse
import json
import resource
import shutil
import statistics
import subprocess
import tempfile
import time
from pathlib import Path

import numpy as np
import OpenImageIO as oiio

GRAPH = {
    "format": "value-graph", "version": 2,
    "nodes": [
        {"id": "r", "type": "ImageReaderNode"},
        {"id": "a", "type": "ImageValueAddNode", "attributes": {"constant": 0.25}},
    ],
    "connections": [{"from": "r.image", "to": "a.image"}],
    "outputs": [{"from": "a.image", "path": "o.png"}],
}


def make_files(folder, count, size):
    folder.mkdir()
    noise = np.random.RandomState(1).randint(0, 256, (count, size, size, 1)).astype(np.uint8)
    for index in range(count):
        path = str(folder / f"{index:04}.png")
        output = oiio.ImageOutput.create(path)
        if not (output.open(path, oiio.ImageSpec(size, size, 1, "uint8")) and output.write_image(noise[index])):
            raise SystemExit(f"{path} cannot be made: {oiio.geterror()}")
        output.close()


def run(program, folder, size, jobs, options):
    """Seconds, and seconds of processors."""
    shutil.rmtree(folder / "out", ignore_errors=True)
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    start = time.monotonic()
    command = [program, "run", "graph.json", "--each", f"r={size}/*.png", "--output-dir", "out", "--quiet"]
    subprocess.run([*command, "--jobs", str(jobs), *options], cwd=folder, check=True)
    wall = time.monotonic() - start
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return wall, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=Path)
    parser.add_argument("--files", type=int, default=1000)
    parser.add_argument("--sizes", type=int, nargs="+", default=[16, 64])
    parser.add_argument("--jobs", type=int, nargs="+", default=[1, 2])
    parser.add_argument("--repeat", type=int, default=15)
    arguments = parser.parse_args()
    program = arguments.program.resolve()
    with tempfile.TemporaryDirectory(dir=Path.cwd()) as name:
        folder = Path(name)
        (folder / "graph.json").write_text(json.dumps(GRAPH), encoding="utf-8")
        for size in arguments.sizes:
            make_files(folder / str(size), arguments.files, size)
            for jobs in arguments.jobs:
                pairs = [
                    (run(program, folder, size, jobs, []), run(program, folder, size, jobs, ["--in-process"]))
                    for _ in range(arguments.repeat)
                ]
                walls = [statistics.median(pair[side][0] for pair in pairs) for side in (0, 1)]
                ratio = statistics.median(apart[0] / inside[0] for apart, inside in pairs)
                work = sum(apart[1] for apart, _ in pairs) / sum(inside[1] for _, inside in pairs)
                print(
                    f"{arguments.files} files of {size} x {size}, {jobs} jobs: {walls[0]:.3f} s, in process "
                    f"{walls[1]:.3f} s, ratio {ratio:.3f}, of processor time {work:.3f}", flush=True,
                )


if __name__ == "__main__":
    main()
