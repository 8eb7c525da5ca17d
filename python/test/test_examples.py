"""The example scripts and the notebook, by what they print and write."""
import os
import pathlib
import subprocess
import sys

import numpy
import pytest
import vekcv
from scipy import ndimage

imageio = pytest.importorskip("imageio")

EXAMPLES = pathlib.Path(__file__).resolve().parents[1] / "examples"
PICTURES = EXAMPLES.parents[1] / "examples/pictures"
CASCADE = pathlib.Path("/usr/share/opencv4/haarcascades/haarcascade_frontalface_alt.xml")


@pytest.fixture
def run(tmp_path):
    """Runs a script in a folder of its own; what it prints."""
    def run_script(name, *arguments):
        command = [sys.executable, EXAMPLES / name, *arguments]
        done = subprocess.run(command, cwd=tmp_path, capture_output=True, text=True, check=False)
        assert done.returncode == 0, done.stderr
        return done.stdout
    return run_script


def test_edges_are_where_derivatives_are_large(run, tmp_path):
    run("edges.py")
    edges = imageio.imread(tmp_path / "edges.png")
    assert set(numpy.unique(edges)) == {0, 255}
    assert 0.02 < (edges == 255).mean() < 0.12
    gray = imageio.imread(PICTURES / "camera.png").astype(int)
    steep = abs(ndimage.sobel(gray, 0, mode="nearest")) + abs(ndimage.sobel(gray, 1, mode="nearest"))
    assert steep[edges == 255].min() >= 100
    assert steep[edges == 0].max() > steep[edges == 255].min()  # edges are thinner than what is steep


def test_coins_are_24(run, tmp_path):
    assert run("coins.py") == "24\n"
    outlined = imageio.imread(tmp_path / "coins-outlined.png")
    # Flooded by another operation: what the outlines part are the coins and the background.
    free = (outlined != (0, 255, 0)).any(axis=2).astype(numpy.uint8)
    assert vekcv.label_markers(free, connectivity=4) == 25
    areas = sorted(numpy.bincount(free.ravel())[1:])
    assert areas[0] > 1000 and areas[-2] < 4 * areas[0] and areas[-1] > 0.5 * free.size


@pytest.mark.skipif(not CASCADE.exists(), reason="opencv-data is not installed")
def test_one_face_is_found(run, tmp_path):
    boxes = [list(map(int, line.split())) for line in run("face.py").splitlines()]
    assert len(boxes) == 1
    x, y, width, height = boxes[0]
    assert abs(x + width / 2 - 224) < 15 and abs(y + height / 2 - 115) < 15 and 80 < width < 120 and width == height
    before, after = imageio.imread(PICTURES / "astronaut.png")[..., :3], imageio.imread(tmp_path / "face.png")
    frame = numpy.zeros(before.shape[:2], bool)
    frame[y:y + height, x:x + width] = True
    frame[y + 3:y + height - 3, x + 3:x + width - 3] = False
    assert (after[frame] == (0, 255, 0)).all() and (after[~frame] == before[~frame]).all()


def test_foreground_is_the_disc(run, tmp_path):
    run("foreground.py")
    y, x = numpy.ogrid[:512, :512]
    for number in range(1, 25):
        mask = imageio.imread(tmp_path / f"foreground-{number:02}.png")
        assert set(numpy.unique(mask)) == {0, 255}
        disc = (x - 60 - 16 * number) ** 2 + (y - 200) ** 2 <= 40 ** 2
        assert ((mask == 255) & disc).sum() > 0.95 * ((mask == 255) | disc).sum()


def test_notebook_runs(tmp_path, monkeypatch):
    nbformat = pytest.importorskip("nbformat")
    preprocessors = pytest.importorskip("nbconvert.preprocessors")
    kernelspec = pytest.importorskip("jupyter_client.kernelspec")
    for needed in ("matplotlib", "dask.array"):
        pytest.importorskip(needed)
    if not CASCADE.exists():
        pytest.skip("opencv-data is not installed")
    try:
        kernelspec.get_kernel_spec("python3")
    except kernelspec.NoSuchKernel:
        pytest.skip("there is no kernel of Python")
    monkeypatch.setenv("PYTHONPATH", str(pathlib.Path(vekcv.__file__).parents[1]))  # the kernel is another interpreter
    for variable in ("IPYTHONDIR", "JUPYTER_RUNTIME_DIR", "MPLCONFIGDIR"):
        monkeypatch.setenv(variable, str(tmp_path / variable))
    notebook = nbformat.read(EXAMPLES / "tour.ipynb", 4)
    codes = [cell for cell in notebook.cells if cell.cell_type == "code"]
    assert not any(cell.outputs or cell.execution_count for cell in codes)  # the file holds no results
    preprocessors.ExecutePreprocessor(timeout=300, kernel_name="python3").preprocess(
        notebook, {"metadata": {"path": os.fspath(EXAMPLES)}})
    outputs = [output.get("data", {}) for cell in codes for output in cell.outputs]
    assert sum("image/png" in data for data in outputs) == 6
    assert "24" in [data.get("text/plain") for data in outputs]
