# SPDX-License-Identifier: Apache-2.0
"""What type checkers and editors are told, against what there is."""

import json
import os
import pathlib
import shutil
import subprocess
import sys

import pytest
import valuenodes as vn

PACKAGE = pathlib.Path(vn.__file__).parent

# Type checkers take minutes with the sanitizers, and use nothing of the module.
pytestmark = pytest.mark.skipif("VALUE_SANITIZED" in os.environ, reason="built with the sanitizers")

RIGHT = """
from pathlib import Path

import numpy as np
import numpy.typing as npt
import valuenodes as vn
from valuenodes import rows

Samples = npt.NDArray[np.float32]
a: Samples = np.zeros((2, 3), np.float32)
image: vn.Image = vn.add(a, 0.5)
masks = vn.compare(image, a, precision="0.01")
mask: vn.Image = masks.image_a_l_b
size: tuple[int, int] = vn.clamp(mask, high=1, profile="smooth").size
low, high = image.range
count: int = np.asarray(image).shape[0]
vn.write("image.exr", vn.read("image.png", color_mode="signed"), "half")
vn.write(Path("image.exr"), a)
steep = np.hypot(vn.gradient(image).output_x, a)
placed: str = image.replace(range=(0, 1), pin=(1, 2), metadata={"nodata": -1.0}).mode
png: bytes = image.to_png(range=(0, 1), colormap="viridis", size=200)

graph = vn.Graph()
node: str = graph.add("Value Add", "sum", constant=0.5)
graph.connect("sum.image", "out.image", index=1)
result: vn.Image = graph.evaluate(
    "sum.image", inputs={"sum": a}, progress=lambda id, done, total: print(id, done / total)
)
files = [(file.path.upper(), file.size[0] + 1, file.type) for file in graph.run()]
problems: tuple[str, ...] = graph.check().problems
sources = [connection.source + str(connection.index + 1) for connection in graph.connections]
same: bool = vn.Graph.load("graph.json", keep_unknown=True) == graph


@vn.register
class Soften(vn.Node):
    attributes = (rows.number("amount", 0.25, 0, 10, step=0.05), rows.choice("profile", ("a", "b")))
    inputs = ("image", rows.input("mask", optional=True))

    def evaluate(self, image: Samples, mask: Samples | None, *, amount: float, profile: str) -> Samples:
        return image * amount


graph.add(Soften, amount=1)
try:
    graph.run()
except vn.DocumentError as error:
    print(error.problems)
except vn.MissingFileError as error:
    print(error.filename, error.problems)
except vn.FileError as error:
    print(error.errno)
except vn.NodeError as error:
    print(error.problems, error.__cause__)
vn.load_library("library.so", trust=True)
"""
WRONG = [
    'vn.clamp(a, profile="smoth")',
    "vn.clamp(a, hihg=1)",
    'vn.add(a, constant="1")',
    "vn.clamp(a, a)",
    "vn.gradient(a).output_z",
    "vn.compare(a)",
    'vn.Image(a, mode="colour")',
    "vn.Image(a).range = (0, 1)",
    "graph.add(5)",
    'graph.evaluate("sum.image", progress=3)',
    "graph.nodes = {}",
]


def run(*words, folder):
    # Stubs beside the package count as the package itself.
    environment = {**os.environ, "MYPYPATH": str(PACKAGE.parent), "PYTHONPATH": str(PACKAGE.parent)}
    return subprocess.run([sys.executable, "-m", *words], capture_output=True, text=True, cwd=folder, env=environment)


# Classes of compiled code have a metaclass of their own, which concerns nobody; their members are compared.
COMPILED = ["Image", "_image.Image", "_pickling.Image", "_valuenodes.Document", "_valuenodes.Image", "_valuenodes.NodeFunction"]


def test_stubs_say_what_there_is(tmp_path):
    allowed = tmp_path / "allowed"
    allowed.write_text("".join(f"valuenodes.{name}\n" for name in COMPILED))
    checked = run("mypy.stubtest", "--allowlist", str(allowed), "valuenodes", folder=tmp_path)
    assert checked.returncode == 0, checked.stdout + checked.stderr


def wrong_lines():
    first = len(RIGHT.splitlines()) + 1
    return set(range(first, first + len(WRONG)))


def test_mypy_sees_right_and_wrong(tmp_path):
    source = tmp_path / "program.py"
    source.write_text(RIGHT + "\n".join(WRONG) + "\n")
    checked = run("mypy", "--strict", "--cache-dir", str(tmp_path / "cache"), str(source), folder=tmp_path)
    lines = {int(line.split(":")[1]) for line in checked.stdout.splitlines() if ": error:" in line}
    assert lines == wrong_lines(), checked.stdout


# Debian has no package of it.
@pytest.mark.skipif(shutil.which("pyright") is None, reason="pyright is not installed")
def test_pyright_sees_right_and_wrong(tmp_path):
    source = tmp_path / "program.py"
    source.write_text(RIGHT + "\n".join(WRONG) + "\n")
    # The stubs themselves are looked at as well.
    shutil.copytree(PACKAGE, tmp_path / "package" / "valuenodes")
    settings = {
        "include": ["program.py", "package/valuenodes/*.pyi"],
        "extraPaths": ["package"],
        "typeCheckingMode": "strict",
    }
    (tmp_path / "pyrightconfig.json").write_text(json.dumps(settings))
    command = ["pyright", "--outputjson", "--pythonpath", sys.executable]
    checked = subprocess.run(command, capture_output=True, text=True, cwd=tmp_path)
    found = [one for one in json.loads(checked.stdout)["generalDiagnostics"] if one["severity"] == "error"]
    elsewhere = [one for one in found if pathlib.Path(one["file"]) != source]
    assert elsewhere == []
    # What follows from a line that is wrong is told in the same line.
    assert {one["range"]["start"]["line"] + 1 for one in found} == wrong_lines(), found
