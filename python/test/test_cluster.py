"""vekcv.dask on a cluster, and the demonstration of it."""
import pathlib
import re
import subprocess
import sys

import dask.array
import distributed
import numpy
import pytest

import vekcv
import vekcv.dask

PYTHON = pathlib.Path(__file__).resolve().parents[1]


@pytest.fixture(scope="module")
def client():
    with distributed.Client(processes=False, n_workers=2, threads_per_worker=1, dashboard_address=None) as client:
        yield client


def test_operations(client):
    a = numpy.random.default_rng(0).integers(0, 256, (300, 400), numpy.uint8)
    array = dask.array.from_array(a, chunks=(90, 110))
    for border in ("reflect", "periodic"):
        found = vekcv.dask.filter_sobel_vert(array, border=border, aperture=5).compute()
        numpy.testing.assert_array_equal(found, vekcv.filter_sobel_vert(a, border=border, aperture=5))
    found = vekcv.dask.abs_diff(array, array[::-1]).compute()
    numpy.testing.assert_array_equal(found, vekcv.abs_diff(a, a[::-1].copy()))
    assert vekcv.dask.mean_std_dev(array, mask=array).compute() == vekcv.mean_std_dev(a, mask=a)
    numpy.testing.assert_array_equal(vekcv.dask.integral(array).compute(), vekcv.integral(a))


def test_one_thread_per_worker(client):
    with vekcv.threads(2):
        vekcv.dask.one_thread_per_worker(client)
        assert vekcv.get_num_threads() == 1


def test_demonstration():
    done = subprocess.run([sys.executable, PYTHON / "demo" / "cluster.py", "--size", "2048", "--tile", "512"],
                          capture_output=True, text=True, timeout=120)
    assert done.returncode == 0, done.stderr
    assert "64 regions, 64 discs" in done.stdout
    assert re.search(r"worker (\d+) killed (.|\n)*worker \1: at most", done.stdout)


def test_example(tmp_path):
    picture = tmp_path / "gradients.png"
    done = subprocess.run([sys.executable, PYTHON / "examples" / "gigapixel_statistics.py", "--size", "1024", "--out",
                           picture], capture_output=True, text=True, timeout=120)
    assert done.returncode == 0, done.stderr
    assert "minimum 0, first at x = 204, y = 341\nmaximum 255, first at x = 256, y = 512\n" in done.stdout
    assert picture.stat().st_size > 0
