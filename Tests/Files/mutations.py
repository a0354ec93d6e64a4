#!/usr/bin/python3
# SPDX-License-Identifier: Apache-2.0
"""Damages good image files in many ways and has the program read them.

    mutations.py [--count N] [--seed N] PROGRAM [FILE...]

Good files of eight formats are made, and of each, N (125) damaged copies: bytes that are flipped,
replaced, taken out or put in, lengths and counts set to extremes, ends cut off. With FILEs, these are
read as they are instead. Every file is read twice, with fresh memory filled differently, which the
process that decodes sees as well.

The program must end by itself within 70 s, with 0, or with 4 and one line of at most 300 characters;
the answer must not depend on what fresh memory holds; and neither it nor a process that decodes for it
may take over 1 GB more than the samples need. Ends with 1 where a file breaks that.
"""

import argparse
import json
import os
import random
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import numpy as np
import OpenImageIO as oiio

FORMATS = {
    "a.png": "uint16", "a.exr": "half", "a.tif": "uint8", "ground.tif": "float", "a.jpg": "uint8",
    "a.webp": "uint8", "a.jp2": "uint8", "a.hdr": "float",
}
FILLS = ("0", "90", "165")
MOST_SECONDS = 70
MOST_EXTRA_BYTES = 10**9


def make_good_files(folder):
    rng = np.random.default_rng(7)
    for name, kind in FORMATS.items():
        path = folder / name
        pixels = rng.random((24, 32, 3), dtype=np.float32)
        if name.startswith("ground"):
            rows = "\n".join(" ".join(f"{h:.3f}" for h in row) for row in pixels[:, :, 0] * 900)
            grid = folder / "ground.asc"
            grid.write_text(f"ncols 32\nnrows 24\nxllcorner 0\nyllcorner 0\ncellsize 10\nNODATA_value -1\n{rows}\n")
            command = ["gdal_translate", "-q", "-co", "COMPRESS=DEFLATE", "-a_srs", "EPSG:32632", grid, path]
            subprocess.run(command, check=True)
            grid.unlink()
            continue
        layout = oiio.ImageSpec(32, 24, 3, kind)
        layout.attribute("ImageDescription", "a good file")
        if name.endswith(".tif"):
            layout.attribute("compression", "lzw")
        output = oiio.ImageOutput.create(str(path))
        if not (output.open(str(path), layout) and output.write_image(pixels) and output.close()):
            raise SystemExit(f"{name} cannot be made: {oiio.geterror()}")
    return [folder / name for name in FORMATS]


def mutate(good, rng):
    """A damaged copy: mostly little damage, and most of it where headers are."""
    data = bytearray(good)
    for _ in range(rng.choice((1, 1, 1, 2, 4, 16))):
        at = rng.randrange(len(data)) if rng.random() < 0.5 else rng.randrange(min(len(data), 200))
        way = rng.randrange(7)
        if way == 0:
            data[at] ^= 1 << rng.randrange(8)
        elif way == 1:
            data[at] = rng.randrange(256)
        elif way == 2:
            size = rng.choice((2, 4, 8))
            number = rng.choice((0, 1, 0x7F, 0x7FFF, 0xFFFF, 0x7FFFFFFF, 0xFFFFFFFF, 2**63 - 1)) & (2 ** (8 * size) - 1)
            data[at:at + size] = number.to_bytes(size, rng.choice(("big", "little")))
        elif way == 3:
            del data[at:at + rng.randrange(1, 40)]
        elif way == 4:
            data[at:at] = rng.randbytes(rng.randrange(1, 40))
        elif way == 5 and at > 16:
            del data[at:]
        else:
            other = rng.randrange(len(data))
            data[at:at + 16] = data[other:other + 16]
        if not data:
            data = bytearray(good[:1])
    return bytes(data)


class Outcome:
    """How the program read a file with fresh memory filled in one way."""

    def __init__(self, program, path, fill):
        environment = dict(os.environ, MALLOC_PERTURB_=fill)
        begin = time.monotonic()
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            process = subprocess.Popen([program, "stats", "--json", path], stdout=out, stderr=err, env=environment)
            signal.alarm(MOST_SECONDS)
            try:
                # The largest of the process and of those that it has waited for.
                _, status, usage = os.wait4(process.pid, 0)
            except TimeoutError:
                process.kill()
                _, status, usage = os.wait4(process.pid, 0)
            finally:
                signal.alarm(0)
            process.returncode = os.waitstatus_to_exitcode(status)
            self.seconds = time.monotonic() - begin
            self.code = process.returncode
            self.most_bytes = usage.ru_maxrss * 1024
            out.seek(0)
            err.seek(0)
            self.out = out.read()
            self.lines = err.read().decode("utf-8", "replace").splitlines()

    def faults(self):
        if self.code not in (0, 4):
            yield f"ends with {self.code}: {self.lines[-1:]}"
        if self.seconds >= MOST_SECONDS:
            yield "does not end"
        if self.code == 4 and (len(self.lines) != 1 or len(self.lines[0]) > 300 or not self.lines[0].isprintable()):
            yield f"prints {self.lines}"
        samples = 0
        if self.code == 0:
            answer = json.loads(self.out)
            samples = 4 * answer["width"] * answer["height"] * answer["channels"]
        if self.most_bytes > MOST_EXTRA_BYTES + samples:
            yield f"takes {self.most_bytes >> 20} MiB for {samples >> 20} MiB of samples"


def stop_waiting(*_):
    raise TimeoutError


def faults_of(program, path):
    """What is wrong with how a file is read, a line each, and the exit code."""
    outcomes = [Outcome(program, path, fill) for fill in FILLS]
    faults = {fault for outcome in outcomes for fault in outcome.faults()}
    if len({(outcome.code, outcome.out) for outcome in outcomes}) > 1:
        faults.add("depends on what fresh memory holds")
    return sorted(faults), outcomes[0].code


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("files", nargs="*", type=Path)
    parser.add_argument("--count", type=int, default=125)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    signal.signal(signal.SIGALRM, stop_waiting)
    codes = {}
    broken = 0
    with tempfile.TemporaryDirectory() as folder:
        folder = Path(folder)

        def read(path, name):
            nonlocal broken
            faults, code = faults_of(options.program, path)
            codes[code] = codes.get(code, 0) + 1
            for fault in faults:
                print(f"{name}: {fault}", flush=True)
            broken += bool(faults)

        if options.files:
            for path in options.files:
                read(path, path)
        else:
            rng = random.Random(options.seed)
            for good in make_good_files(folder):
                content = good.read_bytes()
                for i in range(options.count):
                    # Other files of the folder are none of a damaged one's business.
                    path = folder / f"damaged{good.suffix}"
                    path.write_bytes(mutate(content, rng))
                    before = broken
                    read(path, f"{good.name} {i}")
                    if broken > before:
                        Path(f"damaged-{options.seed}-{i}-{good.name}").write_bytes(path.read_bytes())
    total = sum(codes.values())
    print(f"{total} files: {codes.get(0, 0)} read, {codes.get(4, 0)} refused, {broken} not as they should be")
    return 1 if broken else 0


sys.exit(main())
