# SPDX-License-Identifier: Apache-2.0
"""What type checkers and editors are told, against what there is."""

import pathlib
import subprocess
import sys

import valuenodes as vn

PACKAGE = pathlib.Path(vn.__file__).parent

RIGHT = """
import numpy as np
import valuenodes as vn

a = np.zeros((2, 3), np.float32)
image: vn.Image = vn.add(a, 0.5)
masks = vn.compare(image, a, precision="0.01")
mask: vn.Image = masks.image_a_l_b
size: tuple[int, int] = vn.clamp(mask, high=1, profile="smooth").size
rows: int = np.asarray(image).shape[0]
vn.write("image.exr", vn.read("image.png", color_mode="signed"), "half")
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
]


def run(*words, folder):
    # Stubs beside the package count as the package itself.
    environment = {"MYPYPATH": str(PACKAGE.parent), "PYTHONPATH": str(PACKAGE.parent), "PATH": "/usr/bin:/bin"}
    return subprocess.run([sys.executable, "-m", *words], capture_output=True, text=True, cwd=folder, env=environment)


# Classes of compiled code have a metaclass of their own, which concerns nobody; their members are compared.
COMPILED = ["Image", "_image.Image", "_pickling.Image", "_valuenodes.Document", "_valuenodes.Image", "_valuenodes.NodeFunction"]


def test_stubs_say_what_there_is(tmp_path):
    allowed = tmp_path / "allowed"
    allowed.write_text("".join(f"valuenodes.{name}\n" for name in COMPILED))
    checked = run("mypy.stubtest", "--allowlist", str(allowed), "valuenodes", folder=tmp_path)
    assert checked.returncode == 0, checked.stdout + checked.stderr


def test_type_checker_sees_right_and_wrong(tmp_path):
    source = tmp_path / "program.py"
    source.write_text(RIGHT + "\n".join(WRONG) + "\n")
    checked = run("mypy", "--strict", "--cache-dir", str(tmp_path / "cache"), str(source), folder=tmp_path)
    first = len(RIGHT.splitlines()) + 1
    lines = {int(line.split(":")[1]) for line in checked.stdout.splitlines() if ": error:" in line}
    assert lines == set(range(first, first + len(WRONG))), checked.stdout
