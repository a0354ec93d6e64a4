# SPDX-License-Identifier: Apache-2.0
"""Node libraries of others."""

import os
import pathlib
import subprocess
import sys

import pytest
import valuenodes as vn

LIBRARIES = pathlib.Path(
    os.environ.get("VALUE_TEST_LIBRARIES") or pathlib.Path(vn.__file__).parents[2] / "TestLibraries"
)


def run(code, **environment):
    return subprocess.run(
        [sys.executable, "-c", "import sys\nimport numpy as np\nimport valuenodes as vn\n" + code],
        capture_output=True,
        text=True,
        env={**os.environ, **environment},
    )


def load(name):
    return f"known = set(vn.nodes())\nvn.load_library({str(LIBRARIES / name)!r})\nname = (set(vn.nodes()) - known).pop()\n"


def test_nodes_of_a_loaded_library_are_applied():
    # This one keeps a reference to every input for ever, so nobody may take the samples away from it.
    answer = run(
        "before = vn.add(np.ones((2, 2), np.float32), 1)\n"
        + load("KeepsInput.so")
        + "for _ in range(100):\n"
        "    assert np.asarray(vn.apply(name, np.full((64, 64), 3, np.float32))).shape == (64, 64)\n"
        "assert vn.add(np.ones((2, 2), np.float32), 1) == before\n"
        "assert len(vn.doctor()['libraries']) == 2\n"
        "print('fine')"
    )
    assert (answer.returncode, answer.stdout, answer.stderr) == (0, "fine\n", "")


def test_node_that_keeps_its_result_does_not_share_it():
    # This one does not let go of its output when it is told to.
    answer = run(
        load("IgnoresEvents.so")
        + "first = vn.apply(name, np.ones((4, 4), np.float32))\n"
        "seen = np.array(first)\n"
        "second = vn.apply(name, np.full((4, 4), 5, np.float32))\n"
        "assert (np.asarray(first) == seen).all() and not (np.asarray(second) == seen).all()\n"
        "print('fine')"
    )
    assert (answer.returncode, answer.stdout) == (0, "fine\n"), answer.stderr


@pytest.mark.parametrize("name", ["ExportsNothing.so", "none.so"])
def test_library_that_cannot_be_loaded_is_an_error(name):
    with pytest.raises(vn.ValueNodesError, match=name):
        vn.load_library(LIBRARIES / name)


def test_bad_libraries_in_shared_folders_are_left_out(tmp_path):
    (tmp_path / "Bad.so").write_text("no library")
    (tmp_path / "Good.so").symlink_to(LIBRARIES / "KeepsInput.so")
    answer = run("print(len(vn.nodes()))", VALUE_PLUGIN_PATH=f"{tmp_path}:/nowhere")
    # This process may have node classes of its own.
    assert int(answer.stdout) == int(run("print(len(vn.nodes()))").stdout) + 1
    assert "Bad.so" in answer.stderr and "left out" in answer.stderr and "ValueNodesWarning" in answer.stderr


def test_type_that_there_is_already_is_refused(tmp_path):
    copy = tmp_path / "Copy.so"
    copy.write_bytes(pathlib.Path(vn.doctor()["libraries"][0]["file"]).read_bytes())
    with pytest.raises(vn.ValueNodesError, match="Copy.so"):
        vn.load_library(copy)
