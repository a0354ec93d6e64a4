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
        timeout=120,
    )


@pytest.fixture(autouse=True)
def nothing_is_remembered(tmp_path, monkeypatch):
    """Every library is examined."""
    monkeypatch.setenv("XDG_CACHE_HOME", str(tmp_path / "cache"))


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


HARMFUL = {
    "CrashesOnLoad.so": "the process was ended by signal .* while loading it; a library must never end its host",
    "CrashesOnUnload.so": "the process was ended by signal",
    "LoadExits.so": "the process ended with exit code",
    "LoadPrints.so": "it writes to standard output",
    "LoadChangesLocale.so": "after loading it",
    "NodeEnds.so": "the process ended with exit code",
}


@pytest.mark.parametrize("name", HARMFUL)
def test_harmful_library_is_refused(name):
    known = vn.nodes()
    with pytest.raises(vn.ValueNodesError, match=f"{name}.*{HARMFUL[name]}"):
        vn.load_library(LIBRARIES / name)
    assert vn.nodes() == known


def test_trusted_library_is_not_examined():
    library = str(LIBRARIES / "LoadPrints.so")
    answer = run(f"vn.load_library({library!r}, trust=True)\nprint(len(vn.doctor()['libraries']))")
    assert answer.returncode == 0, answer.stderr
    # What the library prints may come before or after.
    assert sorted(answer.stdout.splitlines()) == ["2", "the shelf is bare"]


def test_what_has_passed_is_remembered(tmp_path):
    # Both times as a file of its own: the content counts.
    for name in ("One.so", "Two.so"):
        copy = tmp_path / name
        copy.write_bytes((LIBRARIES / "KeepsInput.so").read_bytes())
        answer = run(f"vn.load_library({str(copy)!r})")
        assert (answer.returncode, answer.stderr) == (0, "")
        assert len(list((tmp_path / "cache" / "value" / "plugins").iterdir())) == 1
    answer = run(f"vn.load_library({str(LIBRARIES / 'CrashesOnLoad.so')!r})")
    assert "CrashesOnLoad.so" in answer.stderr
    assert len(list((tmp_path / "cache" / "value" / "plugins").iterdir())) == 1


def test_ctrl_c_stops_an_examination(tmp_path):
    """The next call begins again, with the same libraries."""
    hanging = tmp_path / "libraries"
    hanging.mkdir()
    (hanging / "Hangs.so").symlink_to(LIBRARIES / "LoadHangs.so")
    answer = run(
        "import os, signal, threading, time\n"
        "threading.Timer(0.5, os.kill, (os.getpid(), signal.SIGINT)).start()\n"
        "begin = time.perf_counter()\n"
        "try:\n"
        "    vn.nodes()\n"
        "except KeyboardInterrupt:\n"
        "    print('stopped', time.perf_counter() - begin < 5)\n"
        "os.environ['VALUE_PLUGIN_PATH'] = ''\n"
        "print(np.asarray(vn.add(np.ones((1, 1), np.float32), 1)))",
        VALUE_PLUGIN_PATH=str(hanging),
    )
    assert answer.stdout == "stopped True\n[[2.]]\n", answer.stderr


def test_threads_wait_for_the_libraries_of_folders(tmp_path):
    (tmp_path / "Good.so").symlink_to(LIBRARIES / "KeepsInput.so")
    (tmp_path / "Harmful.so").symlink_to(LIBRARIES / "CrashesOnLoad.so")
    answer = run(
        "import concurrent.futures, threading\n"
        "start = threading.Barrier(8)\n"
        "def count(_):\n"
        "    start.wait()\n"
        "    return len(vn.nodes())\n"
        "with concurrent.futures.ThreadPoolExecutor(8) as pool:\n"
        "    print(len(set(pool.map(count, range(8)))))",
        VALUE_PLUGIN_PATH=str(tmp_path),
    )
    assert answer.stdout == "1\n", answer.stderr
    assert answer.stderr.count("Harmful.so") == 1 and "it is left out" in answer.stderr


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


def test_folders_that_cannot_be_read_are_warned_of(tmp_path):
    (tmp_path / "file").write_text("")
    answer = run("print(len(vn.nodes()) > 20)", VALUE_PLUGIN_PATH=f"/nowhere::{tmp_path / 'file'}")
    assert answer.stdout == "True\n"
    lines = [line for line in answer.stderr.splitlines() if "ValueNodesWarning" in line]
    assert len(lines) == 2
    assert 'VALUE_PLUGIN_PATH: the folder "/nowhere" cannot be read: No such file or directory' in lines[0]
    assert f'VALUE_PLUGIN_PATH: the folder "{tmp_path}/file" cannot be read: Not a directory' in lines[1]


def test_a_text_is_no_library(tmp_path):
    (tmp_path / "text.so").write_text("print('no library')\n")
    for trust in (False, True):
        with pytest.raises(vn.ValueNodesError) as raised:
            vn.load_library(tmp_path / "text.so", trust=trust)
        assert "text.so" in str(raised.value) and "it is not a shared library" in str(raised.value)
