#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes Docs/Python/Gallery.md and its pictures by running the code that gallery.py has for each node function.

    PYTHONPATH=build/release/python python3 Python/Tools/make_gallery.py [--check]

Pictures that differ from the stored ones by no more than 3 of 255 in any sample stay as they are. With --check nothing
is written, and what would be is an error.
"""

import os
import pathlib
import sys
import tempfile
import textwrap

import numpy as np
import OpenImageIO as oiio
import valuenodes as vn
from gallery import GROUPS, INPUTS

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDER = ROOT / "Docs" / "Python"
PICTURES = "Gallery"

# Of 255, for any sample. Rounding may differ by a step of a ramp between machines, and devices compute occlusion to
# 0.0002, a tenth of a step.
MOST_DIFFERENCE = 3

BEGIN = """\
<!-- Written by Python/Tools/make_gallery.py from Python/Tools/gallery.py; it renews this page. -->

# Gallery

The twenty node functions of [valuenodes](../Python.md), each with a few lines of code and the pictures of what they
make. The code of this page runs as it stands, from top to bottom; the pictures are drawn by
`image.to_png(range=…, colormap=…)` with the range and the colormap that stand below them. The name of each function
leads to the page of its node, with all attributes.

"""

END = """\
## How this page is made

[make_gallery.py](../../Python/Tools/make_gallery.py) runs the code, writes the page and draws the pictures:

```sh
PYTHONPATH=build/release/python python3 Python/Tools/make_gallery.py
```

The test `PythonPapers` does the same and fails where the page or a picture would change.
"""


def read_pixels(file):
    source = oiio.ImageInput.open(str(file))
    if source is None:
        raise OSError(f"{file}: {oiio.geterror()}")
    spec = source.spec()
    pixels = np.asarray(source.read_image("uint8")).reshape(spec.height, spec.width, spec.nchannels)
    source.close()
    return pixels


def write_pixels(file, pixels):
    """The same pixels in fewer bytes than to_png, which is made to be fast."""
    spec = oiio.ImageSpec(pixels.shape[1], pixels.shape[0], pixels.shape[2], "uint8")
    spec.attribute("png:compressionLevel", 9)
    output = oiio.ImageOutput.create(str(file))
    if not output.open(str(file), spec) or not output.write_image(np.ascontiguousarray(pixels)):
        raise OSError(f"{file}: {output.geterror()}")
    output.close()


def draw(image, picture):
    """The pixels of the picture, with as few channels as show it."""
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "picture.png"
        file.write_bytes(image.to_png(range=picture.range, colormap=picture.colormap, size=picture.size))
        pixels = read_pixels(file)
    if (pixels[..., 3:] == 255).all():
        pixels = pixels[..., :3]
        if (pixels == pixels[..., :1]).all():
            pixels = pixels[..., :1]
    return pixels


def is_same(file, pixels):
    if not file.exists():
        return False
    stored = read_pixels(file).astype(int)
    return stored.shape == pixels.shape and np.abs(stored - pixels).max() <= MOST_DIFFERENCE


def number(value):
    return f"{value:g}"


def describe(picture):
    """How the picture is to be read."""
    if picture.range is None:
        return "its own colors"
    low, high = (number(value) for value in picture.range)
    if picture.colormap is None:
        return f"black is {low}, white is {high}"
    return f'"{picture.colormap}" from {low} to {high}'


class Gallery:
    def __init__(self):
        self.names = {}
        self.pictures = {}
        self.drawn = {}

    def add_picture(self, function, picture):
        """Draws the picture unless the page has it already, and gives its file."""
        key = (picture.image, picture.range, picture.colormap, picture.size)
        if key not in self.drawn:
            plain = picture.image.removeprefix("vn.Image(").removesuffix(")")
            word = "".join(one if one.isalnum() else "_" for one in plain)
            file = f"{function or 'input'}-{word}.png"
            assert file not in self.pictures, file
            image = eval(picture.image, self.names)
            self.pictures[file] = draw(image, picture)
            self.drawn[key] = file
        return self.drawn[key]

    def show(self, entry, sentence=""):
        """The code that is run is the code that is shown."""
        exec(compile(entry.code, f"gallery: {entry.function}", "exec"), self.names)
        count = len(entry.pictures)
        wide = 2 if count == 4 else 3
        tables = [self.make_table(entry.function, entry.pictures[i : i + wide]) for i in range(0, count, wide)]
        text = textwrap.fill(f"{sentence} {entry.text}".strip(), 120, break_on_hyphens=False)
        return f"{text}\n\n```python\n{entry.code}```\n\n" + "".join(table + "\n" for table in tables)

    def make_table(self, function, pictures):
        rows = [
            [picture.title for picture in pictures],
            [":---:" for _ in pictures],
            [f"![{one.title.strip('`')}]({PICTURES}/{self.add_picture(function, one)})" for one in pictures],
            [describe(picture) for picture in pictures],
        ]
        return "".join("| " + " | ".join(row) + " |\n" for row in rows)

    def write(self):
        """The text of the page."""
        nodes = {vn.describe(name)["name"]: name for name in vn.nodes() if vn.describe(name)["library"]}
        nodes = {name.lower().replace(" ", "_"): node for name, node in nodes.items()}
        parts = [BEGIN, "## What goes in\n\n", self.show(INPUTS)]
        for title, entries in GROUPS.items():
            parts.append(f"## {title}\n\n")
            for entry in entries:
                node = nodes.get(entry.function) or nodes["value_" + entry.function]
                parts.append(f"### [`{entry.function}`](../Nodes/{node}.md)\n\n")
                parts.append(self.show(entry, vn.describe(node)["sentence"]))
        return "".join(parts) + END


def make(writes):
    """What is stale, as a list of lines; with writes it is renewed."""
    before = os.getcwd()
    os.chdir(ROOT)
    try:
        gallery = Gallery()
        text = gallery.write()
    finally:
        os.chdir(before)
    stale = []
    folder = FOLDER / PICTURES
    page = FOLDER / "Gallery.md"
    if not page.exists() or page.read_text("utf-8") != text:
        stale.append(f"{page.relative_to(ROOT)} is stale")
        if writes:
            folder.mkdir(parents=True, exist_ok=True)
            page.write_text(text, "utf-8")
    for file, pixels in gallery.pictures.items():
        if not is_same(folder / file, pixels):
            stale.append(f"{(folder / file).relative_to(ROOT)} is stale")
            if writes:
                write_pixels(folder / file, pixels)
    for file in sorted(folder.glob("*")):
        if file.name not in gallery.pictures:
            stale.append(f"{file.relative_to(ROOT)} is on no page")
            if writes:
                file.unlink()
    return stale


def main(words):
    checks = words == ["--check"]
    if words and not checks:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    stale = make(writes=not checks)
    if not checks:
        stale = [line.replace("is stale", "is renewed").replace("is on no page", "is removed") for line in stale]
    print("\n".join(stale) or "everything is up to date")
    return 1 if checks and stale else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
