#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the notebooks in Docs/Python/Notebooks, each in a fresh kernel, and stores what the cells show.

    PYTHONPATH=build/release/python python3 Python/Tools/run_notebooks.py [--check] [FILE...]

Cells are edited in Jupyter or by hand; this renews their outputs. With --check nothing is written, and a notebook whose
stored outputs are not what its cells give now is an error. A cell that raises, or writes to standard error, is one too.
"""

import base64
import os
import pathlib
import sys
import tempfile

import nbformat
import numpy as np
from nbclient import NotebookClient
from nbclient.exceptions import CellExecutionError

import valuenodes as vn

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDER = ROOT / "Docs" / "Python" / "Notebooks"

# What a notebook says of where it ran: nothing that differs between machines.
METADATA = {
    "kernelspec": {"display_name": "Python 3", "language": "python", "name": "python3"},
    "language_info": {"file_extension": ".py", "mimetype": "text/x-python", "name": "python"},
}

# For samples of pictures, of 255. The last digit of a Fourier transform may move a pixel across a threshold.
MOST_DIFFERENCE = 3
MOST_BEYOND = 0.001


def join_streams(outputs):
    """What is printed in one piece or in several is one output."""
    joined = []
    for output in outputs:
        if joined and output.output_type == "stream" == joined[-1].output_type and output.name == joined[-1].name:
            joined[-1].text += output.text
        else:
            joined.append(output)
    return joined


def execute(file):
    """The notebook with the outputs of a run of all cells in order; a cell that raises ends it."""
    notebook = nbformat.read(file, as_version=4)
    with tempfile.TemporaryDirectory() as folder:
        # Settings and histories of whoever runs this stay out of it.
        kept = dict(os.environ)
        places = ("IPYTHONDIR", "JUPYTER_RUNTIME_DIR", "JUPYTER_CONFIG_DIR", "JUPYTER_DATA_DIR")
        os.environ.update(dict.fromkeys(places, folder))
        # The debugger of the kernel would say what it cannot do in Python itself; nobody debugs here.
        os.environ["PYDEVD_DISABLE_FILE_VALIDATION"] = "1"
        # The kernel works in another folder, and finds the package of this process there.
        package = str(pathlib.Path(vn.__file__).resolve().parents[1])
        os.environ["PYTHONPATH"] = os.pathsep.join(filter(None, [package, os.environ.get("PYTHONPATH")]))
        try:
            client = NotebookClient(
                notebook, timeout=120, startup_timeout=60, kernel_name="python3", record_timing=False,
                resources={"metadata": {"path": folder}},
            )
            client.execute()
        finally:
            os.environ.clear()
            os.environ.update(kept)
    notebook.metadata = nbformat.from_dict(METADATA)
    for cell in notebook.cells:
        cell.metadata = {}
        if cell.cell_type == "code":
            cell.outputs = join_streams(cell.outputs)
    nbformat.validate(notebook)
    return notebook


def read_png(text):
    """The samples of a picture in an output, by the package's own reader of files."""
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "picture.png"
        file.write_bytes(base64.b64decode(text))
        return np.asarray(vn.read(file))


def is_same_picture(one, other):
    one, other = read_png(one), read_png(other)
    return one.shape == other.shape and np.mean(np.abs(one - other) * 255 > MOST_DIFFERENCE + 0.01) <= MOST_BEYOND


def difference(stored, made):
    """Why an output is not the stored one, or an empty string."""
    if stored.output_type != made.output_type:
        return f"{made.output_type} in place of {stored.output_type}"
    if made.output_type == "stream":
        same = stored.name == made.name and stored.text == made.text
        return "" if same else f"this is printed now:\n{made.text}in place of:\n{stored.text}"
    if stored.data.keys() != made.data.keys():
        return f"{sorted(made.data)} in place of {sorted(stored.data)}"
    for kind, content in made.data.items():
        if kind == "image/png":
            if not is_same_picture(stored.data[kind], content):
                return "another picture"
        elif stored.data[kind] != content:
            return f"this is shown now:\n{content}\nin place of:\n{stored.data[kind]}"
    return ""


def compare(stored, made):
    """What differs between the stored outputs and those of a run, as a list of lines."""
    found = []
    for number, (before, now) in enumerate(zip(stored.cells, made.cells, strict=True)):
        if now.cell_type != "code":
            continue
        for output in now.outputs:
            if output.output_type == "stream" and output.name == "stderr":
                found.append(f"cell {number} writes to standard error: {output.text}")
        if before.get("execution_count") != now.execution_count or len(before.outputs) != len(now.outputs):
            found.append(f"cell {number}: other outputs than those that are stored")
            continue
        whys = (difference(*pair) for pair in zip(before.outputs, now.outputs))
        found += [f"cell {number}: {why}" for why in whys if why]
    return found


def main(words):
    checks = "--check" in words
    files = [pathlib.Path(word) for word in words if word != "--check"] or sorted(FOLDER.glob("*.ipynb"))
    failed = False
    for file in files:
        try:
            made = execute(file)
        except CellExecutionError as error:
            print(f"{file.name}: {error}")
            failed = True
            continue
        found = compare(nbformat.read(file, as_version=4), made)
        if not checks and found:
            nbformat.write(made, file)
        failed = failed or checks and bool(found)
        print(f"{file.name}: " + ("\n  ".join(["", *found]) if found else "up to date"))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
