# SPDX-License-Identifier: Apache-2.0
"""Every call in the tables of Docs/Python/HowDoI.md, run and compared as the page says."""

import doctest
import pathlib
import re

import cv2
import numpy as np
import pytest
import valuenodes as vn

PAGE = pathlib.Path(__file__).parents[3] / "Docs" / "Python" / "HowDoI.md"
ROW = re.compile(r"^\| (.+?) \| (?:`(.+?)`|–) \| `(.+?)` \| (.+?) \|$", re.MULTILINE)
TEXT = PAGE.read_text("utf-8")
ROWS = [match.groups() for match in ROW.finditer(TEXT)]
INSIDE = (slice(1, -1), slice(1, -1))


@pytest.fixture(scope="module")
def names():
    """What the code blocks of the page have made, after each has shown what the page shows."""
    test = doctest.DocTestParser().get_doctest(TEXT, {}, "HowDoI", str(PAGE), 0)
    runner = doctest.DocTestRunner()
    runner.run(test, clear_globs=False)
    assert runner.tries > 15 and runner.failures == 0
    return test.globs


def as_float(result):
    return np.asarray(result).astype(np.float32)


def same_regions(ours, theirs):
    """Whether the regions that are not background there are the regions of ones here."""
    pairs = set(zip(ours[theirs > 0].tolist(), theirs[theirs > 0].tolist()))
    return len(pairs) == len({one for one, _ in pairs}) == len({other for _, other in pairs}) == theirs.max() > 1


@pytest.mark.parametrize("there, here, word", [row[1:] for row in ROWS], ids=[row[0] for row in ROWS])
def test_calls_give_what_the_page_says(names, there, here, word):
    word = word.split(";")[0]
    if word == "same file":
        stored = []
        for call in (there, here):
            pathlib.Path(names["file"]).unlink()
            eval(call, names)
            stored.append(cv2.imread(names["file"], cv2.IMREAD_UNCHANGED))
        vn.write(names["file"], names["a"], "uint16")
        assert stored[0].dtype == np.uint16 and np.array_equal(*stored)
        return
    ours = eval(here, names)
    if word == "only here":
        assert there is None and 0 < np.asarray(ours).min() < np.asarray(ours).max() <= 1
        return
    theirs = eval(there, names)
    if word == "same picture":
        pictures = [
            cv2.imdecode(np.frombuffer(png, np.uint8), cv2.IMREAD_GRAYSCALE).astype(int) for png in (ours, theirs)
        ]
        assert np.abs(pictures[0] - pictures[1]).max() <= 1 < np.ptp(pictures[0])
        return
    ours, theirs = as_float(ours), as_float(theirs)
    assert ours.shape == theirs.shape and len(np.unique(theirs)) > 1
    if word == "equal":
        assert np.array_equal(ours, theirs)
    elif word == "inside":
        assert np.array_equal(ours[INSIDE], theirs[INSIDE]) and not np.array_equal(ours, theirs)
    elif word == "other numbers":
        assert same_regions(ours, theirs) and not np.array_equal(ours, theirs)
    else:
        np.testing.assert_allclose(ours, theirs, rtol=0, atol=float(word.removeprefix("to ")))


def test_every_row_and_every_node_is_there():
    lines = [line for line in TEXT.splitlines() if line.startswith("| ") and not line.startswith("| To … ")]
    assert len(lines) == len(ROWS) >= 25
    calls = " ".join(here for _, _, here, _ in ROWS)
    functions = {name for name in vn.__all__ if f"vn.{name}(" in calls}
    nodes = {name for name in vn.nodes() if vn.describe(name)["library"] == "Value"}
    names = {vn.describe(name)["name"].lower().replace(" ", "_") for name in nodes}
    assert len(names) == 20
    assert {name for name in names if {name, name.removeprefix("value_")} & functions} == names
    assert {"read", "write"} <= functions and "graph.evaluate" in calls
