#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the recipes of Docs/Cookbook.md and holds the page and its pictures against what they give.

    cookbook.py ROOT PROGRAMS COOKBOOK [--write]

ROOT is the repository, PROGRAMS the folder of the built command line, COOKBOOK that of the programs that the page shows.
Every "sh" block runs in bash, with both folders in the PATH, in a scratch copy of what it reads; blocks run in the order
of the page. A "text" block behind it is what it prints. A block behind "Save this as `FILE`:" is there as that file. A
"cpp" block is a part of a file below Examples. A comment

    <!-- picture NAME: FILE LOW HIGH | FILE LOW HIGH ... -->

says which files make up Docs/Images/Cookbook/NAME.png; LOW is shown black and HIGH white. FILE@LAYER is a layer,
"color" in place of the numbers shows a picture in its own colours and "numbers" gives each number a colour.

With --write the texts and the pictures are renewed, else a difference fails.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap

import numpy as np
import OpenImageIO as oiio

SIDE = 144
GAP = 6
MOST_BYTES = 60 * 1024
# Of 255. Ambient occlusion differs a little between devices, and everything is rounded once.
MOST_DIFFERENCE = 1.0

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
PICTURE = re.compile(r"<!-- picture (\w+): (.*?) -->", re.DOTALL)
SAVED = re.compile(r"[Ss]ave this as `([^`]+)`:\n\n$")


def read_samples(name, layer):
    """Rows, columns and channels as floats; colours are straight and from 0 to 1 in files of integers."""
    source = oiio.ImageInput.open(str(name))
    assert source is not None, f"{name}: {oiio.geterror()}"
    spec = source.spec()
    kind = str(spec.format)
    samples = np.asarray(source.read_image("float"), np.float32).reshape(spec.height, spec.width, spec.nchannels)
    if kind in ("int16", "uint8", "uint16") and pathlib.Path(name).suffix == ".tif":
        samples = samples * np.float32({"int16": 32767, "uint8": 255, "uint16": 65535}[kind])
    names = list(spec.channelnames)
    source.close()
    if layer:
        samples = samples[:, :, [i for i, channel in enumerate(names) if channel.startswith(layer + ".")]]
    return samples


def shrink(samples):
    """Fits the samples into a square: means of blocks, then of what is left the nearest."""
    factor = max(1, max(samples.shape[:2]) // SIDE)
    rows, columns = (size // factor * factor for size in samples.shape[:2])
    blocks = samples[:rows, :columns].reshape(rows // factor, factor, columns // factor, factor, -1)
    small = blocks.mean(axis=(1, 3))
    scale = min(1.0, SIDE / max(small.shape[:2]))
    y, x = (np.floor(np.arange(int(size * scale)) / scale).astype(int) for size in small.shape[:2])
    return small[y][:, x]


def draw(folder, entry):
    name, *words = entry.split()
    name, _, layer = name.partition("@")
    samples = read_samples(folder / name, layer)
    if words == ["color"]:
        shown = shrink(samples[:, :, :3])
    elif words == ["numbers"]:
        step = max(1, max(samples.shape[:2]) // SIDE)
        numbers = samples[::step, ::step, :1][:SIDE, :SIDE]
        shown = np.where(numbers > 0, (numbers * [0.618, 0.382, 0.236]) % 0.8 + 0.2, 0.0)
    else:
        low, high = (float(word) for word in words)
        shown = (shrink(np.nan_to_num(samples[:, :, :1], nan=low)) - low) / (high - low)
    # Few shades keep the files small.
    return np.round(np.clip(shown, 0, 1) * 51) * 5


def draw_row(folder, entries):
    cells = [draw(folder, entry) for entry in entries]
    channels = max(cell.shape[2] for cell in cells)
    rows = max(cell.shape[0] for cell in cells)
    parts = []
    for cell in cells:
        whole = np.full((rows, cell.shape[1] + GAP, channels), 255.0)
        whole[: cell.shape[0], GAP:] = cell
        parts.append(whole)
    return np.concatenate(parts, axis=1)[:, GAP:].astype(np.uint8)


def write_png(name, pixels):
    spec = oiio.ImageSpec(pixels.shape[1], pixels.shape[0], pixels.shape[2], "uint8")
    spec.attribute("compression", "zip")
    spec.attribute("png:compressionLevel", 9)
    output = oiio.ImageOutput.create(str(name))
    assert output.open(str(name), spec) and output.write_image(np.ascontiguousarray(pixels)), output.geterror()
    output.close()


class Page:
    def __init__(self, root, scratch, paths, writes):
        self.root, self.scratch, self.writes = root, scratch, writes
        self.failures = []
        self.runs = 0
        self.sources = [file.read_text("utf-8") for file in (root / "Examples").rglob("*.cpp")]
        self.environment = {**os.environ, "PATH": os.pathsep.join([*map(str, paths), os.environ["PATH"]])}

    def run(self, text):
        """The page, with renewed texts where they are written."""
        made, end, printed = [], 0, None
        for block in sorted([*BLOCK.finditer(text), *PICTURE.finditer(text)], key=lambda match: match.start()):
            between = text[end : block.start()]
            made.append(between)
            end = block.end()
            made.append(block.group(0))
            if block.re is PICTURE:
                self.check_picture(block.group(1), [entry.strip() for entry in block.group(2).split("|")])
                continue
            kind, content = block.groups()
            saved = SAVED.search(between)
            if saved:
                file = self.scratch / saved.group(1)
                file.parent.mkdir(parents=True, exist_ok=True)
                file.write_text(content, "utf-8")
            elif kind == "sh":
                printed = self.run_block(content)
            elif kind == "text" and between.strip() == "" and printed is not None:
                made[-1] = f"```text\n{printed}```"
                if printed != content:
                    self.fail(f"this is printed now:\n{printed}in place of:\n{content}")
            elif kind == "cpp" and not any(self.holds(source, content) for source in self.sources):
                self.failures.append(f"no example has this code:\n{content}")
        return "".join(made) + text[end:]

    @staticmethod
    def holds(source, content):
        # A block may stand at another depth on the page.
        return any(textwrap.indent(content, " " * depth) in source for depth in (0, 2, 4))

    def fail(self, text):
        if not self.writes:
            self.failures.append(text)

    def run_block(self, content):
        self.runs += 1
        ended = subprocess.run(
            ["bash", "-euo", "pipefail", "-c", content], cwd=self.scratch, env=self.environment,
            stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False,
        )
        if ended.returncode != 0:
            self.failures.append(f"exit {ended.returncode}:\n{content}{ended.stdout}{ended.stderr}")
        return ended.stdout

    def check_picture(self, name, entries):
        if self.failures:
            return
        file = self.root / "Docs" / "Images" / "Cookbook" / f"{name}.png"
        pixels = draw_row(self.scratch, entries)
        if self.writes:
            file.parent.mkdir(parents=True, exist_ok=True)
            write_png(file, pixels)
        if not file.exists():
            self.failures.append(f"{file} is missing")
            return
        kept = np.round(read_samples(file, "") * 255)
        if file.stat().st_size > MOST_BYTES:
            self.failures.append(f"{file} has {file.stat().st_size} bytes")
        if kept.shape != pixels.shape or np.abs(kept - pixels.astype(float)).mean() > MOST_DIFFERENCE:
            self.failures.append(f"{file} is not what the recipe gives")


def main():
    root, programs, cookbook = (pathlib.Path(word).resolve() for word in sys.argv[1:4])
    writes = "--write" in sys.argv[4:]
    missing = [tool for tool in ("jq", "make", "gdalinfo") if shutil.which(tool) is None]
    if missing:
        print("missing: " + ", ".join(missing))
        return 1
    with tempfile.TemporaryDirectory() as folder:
        scratch = pathlib.Path(folder)
        shutil.copytree(root / "Examples", scratch / "Examples")
        (scratch / "build" / "release").mkdir(parents=True)
        (scratch / "build" / "release" / "bin").symlink_to(programs)
        (scratch / "out").mkdir()
        page = Page(root, scratch, [programs, cookbook], writes)
        file = root / "Docs" / "Cookbook.md"
        text = file.read_text("utf-8")
        made = page.run(text)
        if writes and not page.failures:
            file.write_text(made, "utf-8")
    print("\n\n".join(page.failures) if page.failures else f"{page.runs} blocks")
    return 1 if page.failures or page.runs == 0 else 0


sys.exit(main())
