"""The number of threads of the library, and calls from several threads of Python."""
import concurrent.futures
import multiprocessing
import os
import threading
import time

import numpy as np
import pytest
from support import assert_same, image, refuses

import vekcv


@pytest.fixture(autouse=True)
def number_as_before():
    with vekcv.threads(vekcv.get_num_threads()):
        yield


def test_number_of_threads():
    for count in (3, 1, 1024, 5):
        assert vekcv.set_num_threads(count) is None and vekcv.get_num_threads() == count
    with vekcv.threads(2):
        assert vekcv.get_num_threads() == 2
        with vekcv.threads(3):
            vekcv.set_num_threads(7)
        assert vekcv.get_num_threads() == 2
        with pytest.raises(ZeroDivisionError), vekcv.threads(4):
            raise ZeroDivisionError
        assert vekcv.get_num_threads() == 2
    assert vekcv.get_num_threads() == 5
    for count, error, words in [(0, vekcv.Error, "^vekSetNumThreads: StatusBadArgument: a parameter"),
                                (1025, vekcv.Error, ""), (1.5, TypeError, ""), (2 ** 31, OverflowError, "")]:
        refuses((error, words), vekcv.set_num_threads, count)
        refuses((error, words), vekcv.threads(count).__enter__)
        assert vekcv.get_num_threads() == 5


def test_same_results_with_any_number():
    a, b = image("u1", (600, 700)), image("u1", (600, 700), 2)
    element, opened = vekcv.CompoundElement(np.eye(7), (700, 600)), vekcv.morph_open(a, np.eye(7))
    tables, points = vekcv.sqr_integral(a), np.random.default_rng(1).integers(0, 600, (500, 2))
    for call in [
            lambda: vekcv.dilate(a, (5, 3)), lambda: vekcv.morph_gradient(a, np.eye(5)),
            lambda: vekcv.copy_subpix(a, 0.3, 0.6), lambda: vekcv.rect_std_dev(*tables, (1, 2, 9, 7)),
            lambda: vekcv.filter_row_border_pipeline(a, [1, 2, 1]), lambda: vekcv.PyramidLayerDown((700, 600))(a),
            lambda: vekcv.create_map_camera_undistort((700, 600), 300, 300, 350, 300, 0.1)[0],
            lambda: vekcv.ForegroundGaussian(a).apply(b)[0], lambda: vekcv.optical_flow_pyr_lk(a, b, points).points]:
        with vekcv.threads(1):
            expected = call()
        for count in (2, 3):
            with vekcv.threads(count):
                assert_same(call(), expected)
                assert_same(vekcv.morph_open(a, element), opened)  # states keep the number that they were made for


LINES = (np.random.default_rng(1).random((400, 400)) < 0.5).astype("u1")


def work(_=None):
    """A call of some tens of milliseconds on one thread, which needs little memory."""
    vekcv.hough_line(LINES, 1, 0.01, 10 ** 6)


def test_interpreter_runs_during_a_call():
    """Another thread notes the time again and again, also in the middle of a call: with the lock held it could not."""
    noted, stop = [], threading.Event()

    def note():
        while not stop.wait(0.001):
            noted.append(time.perf_counter())

    other = threading.Thread(target=note)
    other.start()
    try:
        for _ in range(20):
            begin = time.perf_counter()
            work()
            end = time.perf_counter()
            middle = (3 * begin + end) / 4, (begin + 3 * end) / 4
            if any(middle[0] < moment < middle[1] for moment in noted):
                return
    finally:
        stop.set()
        other.join()
    pytest.fail("no other thread ran in the middle of a call")


def timed(*steps):
    begin = time.perf_counter()
    for step in steps:
        step()
    return time.perf_counter() - begin


@pytest.mark.skipif(len(os.sched_getaffinity(0)) < 2, reason="the process may use one processor only")
def test_two_calls_at_once():
    """Calls of two threads take at most 0.65 of the time of one after the other; the best times of several tries count,
    and those of two processes tell whether the machine can do it."""
    times, spawn = [], multiprocessing.get_context("spawn")
    with concurrent.futures.ProcessPoolExecutor(2, spawn) as processes:
        concurrent.futures.wait([processes.submit(time.sleep, 1) for _ in range(2)])  # both have started
        for _ in range(8):
            threads = [threading.Thread(target=work) for _ in range(2)]
            times.append((timed(*(thread.start for thread in threads), *(thread.join for thread in threads)),
                          timed(work, work), timed(lambda: list(processes.map(work, range(2)))),
                          timed(*[lambda: processes.submit(work, 0).result()] * 2)))
            at_once, one_by_one, by_processes, process_by_process = map(min, zip(*times))
            if len(times) >= 4 and at_once <= 0.65 * one_by_one:
                return
    if by_processes > 0.6 * process_by_process:
        pytest.skip(f"two processes take {by_processes / process_by_process:.2f} of the time of one after the other")
    pytest.fail(f"two threads take {at_once / one_by_one:.2f} of the time of one after the other")
