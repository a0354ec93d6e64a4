"""What is small: a graph of ten nodes, what each node costs beyond its pixels, and the program on an icon."""

import subprocess
import sys
import tempfile
import time
from pathlib import Path

from report.growth import chain_lines, numpy_chain
from report.inputs import Inputs
from report.worker import Turns

OTHER_PROGRAM = """
import cv2
image = cv2.imread("in.png", cv2.IMREAD_UNCHANGED).astype("f4") / 255 * 0.5
cv2.imwrite("other.png", (image.clip(0, 1) * 255 + 0.5).astype("u1"))
"""


def measure_calls(request, answer):
    """In the process of rows: microseconds count here, so nothing is between the calls and the clock."""
    import numpy as np
    import valuenodes as vn

    from report import host_calls

    x = Inputs(256)
    tiny = Inputs(16)
    a, b = tiny["a"], tiny["b"]
    image, other = vn.Image(a), vn.Image(b)
    chains = {count: host_calls.Chain(chain_lines(count), tiny["a"]) for count in (1, 1001)}
    chain = host_calls.Chain(chain_lines(10), x["a"])
    turns = Turns(request["rounds"], request["seconds"], request["long"])
    for name, call in {
        "ten nodes": chain.evaluate, "ten nodes – numpy": numpy_chain(x["a"], 10),
        "one node, 16 x 16": chains[1].evaluate, "1001 nodes, 16 x 16": chains[1001].evaluate,
        "add of images, 16 x 16": lambda: vn.add(image, other), "add of arrays, 16 x 16": lambda: vn.add(a, b),
        "add of arrays, 16 x 16 – numpy": lambda: np.add(a, b),
    }.items():
        turns.add(name, call)
    times, _ = turns.run()
    answer(small=times, problems=turns.problems)


def measure_program(build, rounds):
    """Seconds of whole processes, in turns: the program, a program of OpenCV that does the same, and one that does
    nothing."""
    with tempfile.TemporaryDirectory() as folder:
        program = [str(build / "bin/value"), "apply"]
        subprocess.run([*program, "ImageTerrainNode", "--set", "frame=0,0,16,16", "-o", "in.png", "--type", "uint8"],
                       cwd=folder, check=True, stdout=subprocess.DEVNULL)
        Path(folder, "other.py").write_text(OTHER_PROGRAM, encoding="utf-8")
        commands = {
            "value apply": [*program, "Value Multiply", "-i", "in.png", "--set", "constant=0.5", "-o", "out.png",
                            "--type", "uint8"],
            "value --version": [program[0], "--version"],
            "python3 with cv2": [sys.executable, "other.py"],
            "true": ["true"],
        }
        times = {name: [] for name in commands}
        for turn in range(rounds + 1):
            for name, command in commands.items():
                begun = time.perf_counter()
                subprocess.run(command, cwd=folder, check=True, stdout=subprocess.DEVNULL)
                # The first round reads files that were not in memory.
                if turn:
                    times[name].append(time.perf_counter() - begun)
    return times
