# SPDX-License-Identifier: Apache-2.0
"""The notebooks run from top to bottom, and show what they have stored."""

import base64
import copy
import re

import nbformat
import numpy as np
import pytest
import run_notebooks
import valuenodes as vn
from nbclient.exceptions import CellExecutionError

FILES = sorted(run_notebooks.FOLDER.glob("*.ipynb"))
NAMES = ["SciPyAndScikitImage", "SlopeClasses", "SplatMasks"]


def test_notebooks_are_those_that_the_guide_names():
    assert [file.stem for file in FILES] == NAMES
    guide = (run_notebooks.ROOT / "Docs" / "Python.md").read_text("utf-8")
    assert all(f"(Python/Notebooks/{name}.ipynb)" in guide for name in NAMES)


@pytest.mark.parametrize("file", FILES, ids=NAMES)
def test_notebook_runs_and_shows_what_is_stored(file):
    stored = nbformat.read(file, as_version=4)
    nbformat.validate(stored)
    assert stored.nbformat == 4
    assert run_notebooks.compare(stored, run_notebooks.execute(file)) == []


@pytest.mark.parametrize("file", FILES, ids=NAMES)
def test_notebook_shows_pictures_and_asserts_what_it_says(file):
    cells = nbformat.read(file, as_version=4).cells
    outputs = [output for cell in cells if cell.cell_type == "code" for output in cell.outputs]
    pictures = [output for output in outputs if "image/png" in output.get("data", {})]
    code = "\n".join(cell.source for cell in cells if cell.cell_type == "code")
    assert len(pictures) >= 3 and code.count("assert") >= 6
    # Every cell of code has words before it.
    assert cells[0].cell_type == "markdown" and sum(cell.cell_type == "markdown" for cell in cells) >= 8
    for picture in pictures:
        assert np.ptp(run_notebooks.read_png(picture.data["image/png"])[..., :3]) > 0.3


@pytest.mark.parametrize("file", FILES, ids=NAMES)
def test_links_of_the_notebook_lead_somewhere(file):
    words = "\n".join(cell.source for cell in nbformat.read(file, as_version=4).cells if cell.cell_type == "markdown")
    for link in re.findall(r"\]\(([^)\s]+)\)", words):
        name, _, place = link.partition("#")
        page = (file.parent / name).read_text("utf-8")
        titles = [line.strip("# ").lower() for line in page.splitlines() if line.startswith("#")]
        assert place == "" or place in [re.sub(r"[^\w -]", "", title).replace(" ", "-") for title in titles]


def notebook(*sources):
    cells = [nbformat.v4.new_code_cell(source, id=f"cell-{place}") for place, source in enumerate(sources)]
    return nbformat.v4.new_notebook(cells=cells, metadata=run_notebooks.METADATA)


def test_cell_that_raises_is_an_error(tmp_path):
    file = tmp_path / "raises.ipynb"
    nbformat.write(notebook("1 + 1", "assert 1 + 1 == 3"), file)
    with pytest.raises(CellExecutionError, match="AssertionError"):
        run_notebooks.execute(file)


def picture(image):
    return base64.b64encode(image.to_png()).decode()


def test_other_outputs_are_noticed(tmp_path):
    file = tmp_path / "small.ipynb"
    code = "import numpy as np\nimport valuenodes as vn\nprint('seen')\nvn.Image(np.eye(64))"
    nbformat.write(notebook(code), file)
    made = run_notebooks.execute(file)
    nbformat.write(made, file)
    assert run_notebooks.main(["--check", str(file)]) == 0

    def found(change):
        stored = copy.deepcopy(made)
        change(stored.cells[0])
        return run_notebooks.compare(stored, made)

    assert found(lambda cell: None) == []
    assert "seen" in found(lambda cell: cell.outputs[0].update(text="unseen\n"))[0]
    almost = np.eye(64) + 2 / 255
    other = np.eye(64)
    other[:4, 8:12] = 1
    assert found(lambda cell: cell.outputs[1].data.update({"image/png": picture(vn.Image(almost))})) == []
    assert found(lambda cell: cell.outputs[1].data.update({"image/png": picture(vn.Image(other))})) == [
        "cell 0: another picture"
    ]
    assert "64 x 63" in found(lambda cell: cell.outputs[1].data.update({"text/plain": "64 x 63"}))[0]
    assert found(lambda cell: cell.outputs.pop()) == ["cell 0: other outputs than those that are stored"]

    nbformat.write(notebook(code.replace("seen", "unseen")), file)
    assert run_notebooks.main(["--check", str(file)]) == 1


def test_warnings_are_noticed(tmp_path):
    file = tmp_path / "warns.ipynb"
    nbformat.write(notebook("import warnings\nwarnings.warn('careful')"), file)
    made = run_notebooks.execute(file)
    assert any("standard error" in line and "careful" in line for line in run_notebooks.compare(made, made))
