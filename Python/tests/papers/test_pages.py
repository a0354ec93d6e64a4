# SPDX-License-Identifier: Apache-2.0
"""No page about the package has code that no test runs."""

import doctest
import pathlib
import re

import pytest

DOCS = pathlib.Path(__file__).parents[3] / "Docs"
PAGES = [DOCS / "Python.md", *sorted((DOCS / "Python").glob("*.md"))]
# Run by the tests of the gallery, block by block.
GALLERY = DOCS / "Python" / "Gallery.md"


@pytest.mark.parametrize("page", PAGES, ids=[page.stem for page in PAGES])
def test_sessions_of_the_page_run(page):
    text = page.read_text("utf-8")
    kinds = set(re.findall(r"^```(\w+)$", text, re.MULTILINE))
    assert kinds <= {"pycon", "python", "sh"}
    assert ("python" in kinds) == (page == GALLERY)
    failures, tries = doctest.testfile(str(page), module_relative=False)
    assert failures == 0 and (tries > 15 or page == GALLERY)
    # A prompt outside of a block would not be shown as code.
    outside = re.sub(r"^```pycon\n.*?^```$", "", text, flags=re.MULTILINE | re.DOTALL)
    assert ">>>" not in outside
