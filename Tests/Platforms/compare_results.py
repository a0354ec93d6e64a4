#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares the results of the example graphs of two systems, sample by sample and bit by bit.

    compare_results.py FOLDER OTHER_FOLDER

Both folders are those that Examples/demo.sh writes. The files themselves may differ, since each
system packs images with its own version of the image formats; size, channels, sample type and
every bit of every sample may not. Contact sheets are left out: their captions are drawn with the
fonts of the system.
"""

import sys
from pathlib import Path

import OpenImageIO as oiio


def results_of(folder):
    names = {path.name for path in Path(folder).iterdir() if path.suffix in (".exr", ".png", ".tif")}
    return {name for name in names if not name.startswith(("contact_sheet", "example_", "job_"))}


def read(path):
    source = oiio.ImageInput.open(str(path))
    if source is None:
        sys.exit(f"{path} cannot be read: {oiio.geterror()}")
    spec = source.spec()
    form = (spec.width, spec.height, spec.x, spec.y, tuple(spec.channelnames), str(spec.format))
    samples = source.read_image(spec.format)
    source.close()
    if samples is None:
        sys.exit(f"{path} has no samples that can be read")
    return form, samples


def difference(path, other):
    """One line that says how two images differ, or None."""
    form, samples = read(path)
    other_form, other_samples = read(other)
    if form != other_form:
        return f"{form} here, {other_form} there"
    if samples.tobytes() == other_samples.tobytes():
        return None
    bits = f"u{samples.dtype.itemsize}"
    count = int((samples.view(bits) != other_samples.view(bits)).sum())
    return f"{count} of {samples.size} samples differ"


def main():
    folder, other = (Path(argument) for argument in sys.argv[1:3])
    here, there = results_of(folder), results_of(other)
    if not here:
        sys.exit(f"{folder} holds no results; Examples/demo.sh writes them")
    faults = [f"{name} is only in {folder}" for name in sorted(here - there)]
    faults += [f"{name} is only in {other}" for name in sorted(there - here)]
    for name in sorted(here & there):
        text = difference(folder / name, other / name)
        if text:
            faults.append(f"{name}: {text}")
    for fault in faults:
        print(fault)
    if faults:
        return 1
    print(f"{len(here)} results, equal to the bit")
    return 0


if __name__ == "__main__":
    sys.exit(main())
