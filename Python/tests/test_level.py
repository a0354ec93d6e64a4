# SPDX-License-Identifier: Apache-2.0
"""References and memory stay level over 100,000 calls of each kind."""

import gc
import os
import subprocess
import sys

import numpy as np
import pytest
import valuenodes as vn

CALLS = 100_000
ARRAY = np.arange(16, dtype=np.float32).reshape(4, 4)
IMAGE = vn.Image(ARRAY, range=(0, 16))
WORD = "".join(["v_gt", "_a"])
NUMBER = float("0.625")
ATTRIBUTES = {"condition": WORD, "a": NUMBER}


def make_graph():
    graph = vn.Graph()
    graph.add("Image Reader", "a", path="none.exr")
    graph.add("Value Add", "b", constant=0.25)
    graph.connect("a.image", "b.image")
    return graph


GRAPH = make_graph()
INPUTS = {"a": ARRAY}
# One more pixel than an image may be wide, once it has grown.
WIDE = vn.Image(np.zeros((1, 32768), np.float32))


def raises(error, call, *arguments, **attributes):
    try:
        call(*arguments, **attributes)
    except error:
        return
    raise AssertionError(f"no {error}")


# By kind: functions that are called in turn, each of them one call of the package or more.
KINDS = {
    "functions": [
        lambda: vn.add(ARRAY, NUMBER),
        lambda: vn.add(IMAGE, ARRAY, ARRAY),
        lambda: vn.condition(IMAGE, **ATTRIBUTES),
        lambda: vn.gradient(ARRAY, seamless=False),
        lambda: vn.apply("Value Multiply", IMAGE, constant=NUMBER),
    ],
    "images": [
        lambda: np.asarray(vn.Image(ARRAY)),
        lambda: np.from_dlpack(vn.Image(ARRAY)),
        lambda: memoryview(IMAGE),
        lambda: IMAGE.replace(range=(0, 1)) == IMAGE,
        lambda: vn.Image([[1, 2], [3, 4]]).size,
        lambda: (IMAGE.metadata, IMAGE.range, IMAGE.pin, repr(IMAGE)),
    ],
    "graphs": [
        lambda: GRAPH.evaluate("b.image", inputs=INPUTS),
        lambda: GRAPH.set("b.constant", NUMBER),
        lambda: GRAPH.get("b.constant"),
        lambda: (GRAPH.nodes, GRAPH.connections, GRAPH.outputs),
        lambda: GRAPH.disconnect("a.image", "b.image"),
        lambda: GRAPH.connect("a.image", "b.image"),
        lambda: GRAPH.add("Value Power", "c"),
        lambda: GRAPH.remove("c"),
    ],
    "errors": [
        lambda: raises(TypeError, vn.add, ARRAY, WORD),
        lambda: raises(TypeError, vn.add, ARRAY, constnt=NUMBER),
        lambda: raises(ValueError, vn.condition, IMAGE, condition="v_gtt_a"),
        lambda: raises(ValueError, vn.Image, INPUTS["a"].reshape(16)),
        lambda: raises(OverflowError, vn.Image, np.array([[1e300]])),
        lambda: raises(ValueError, GRAPH.set, "b.constant", 1e30),
        lambda: raises(vn.NodeError, vn.relief, WIDE, radius=250, grow=True),
        lambda: raises(vn.DocumentError, vn.Graph.from_dict, {"format": "none"}),
    ],
}


def resident():
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def references():
    objects = (ARRAY, IMAGE, WORD, NUMBER, ATTRIBUTES, INPUTS, GRAPH, WIDE, vn.Image, vn.Graph, vn.add, ARRAY.dtype)
    return [sys.getrefcount(one) for one in objects]


def check(calls):
    def work(count):
        for _ in range(count // len(calls)):
            for call in calls:
                call()

    # Until what grows once, tables and caches, has grown.
    work(5_000)
    gc.collect()
    before = references(), sys.getrefcount(None), len(gc.get_objects()), sys.getallocatedblocks(), resident()
    work(CALLS)
    gc.collect()
    after = references(), sys.getrefcount(None), len(gc.get_objects()), sys.getallocatedblocks(), resident()
    assert after[0] == before[0], (before[0], after[0])
    # One more for each call would be 10,000 at the least.
    for one, other in zip(before[1:4], after[1:4], strict=True):
        assert abs(other - one) < 500, (before[1:4], after[1:4])
    # 20 bytes for each call. The address sanitizer keeps what is freed for a while.
    if "VALUE_SANITIZED" not in os.environ:
        assert after[4] - before[4] < 2_000_000, (before[4], after[4])


@pytest.mark.parametrize("kind", KINDS)
def test_references_and_memory_stay_level(kind):
    # In a process of its own, where nothing else gives memory back or takes some.
    ended = subprocess.run([sys.executable, __file__, kind], capture_output=True, text=True)
    assert (ended.returncode, ended.stderr) == (0, "")


if __name__ == "__main__":
    check(KINDS[sys.argv[1]])
