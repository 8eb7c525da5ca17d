"""What states have in common: they are released once, refused when they are closed, and serve one call at a time."""
import copy
import os
import pathlib
import pickle
import re
import subprocess
import sys
import threading

import numpy as np
import pytest
from counted_states import MAKERS

import vekcv

HERE = pathlib.Path(__file__).resolve().parent
every_state = pytest.mark.parametrize("make", MAKERS.values(), ids=MAKERS)


@pytest.fixture(scope="module")
def counting_core(tmp_path_factory):
    library = tmp_path_factory.mktemp("core") / "libcounting.so"
    subprocess.run(["cc", "-shared", "-fPIC", "-o", library, HERE / "counting_core.c"], check=True)
    return library


@pytest.mark.parametrize("scenario", ["every_way", "elements_of_the_caller", "live_at_exit"])
def test_memory(counting_core, scenario):
    environment = os.environ | {"LD_PRELOAD": str(counting_core)}
    done = subprocess.run([sys.executable, HERE / "counted_states.py", scenario], env=environment, text=True,
                          capture_output=True, check=False)
    assert done.returncode == 0, done.stdout[-200:] + done.stderr
    taken, held, strangers = map(int, re.findall(r"taken (\d+), held (\d+), strangers (\d+)\n$", done.stdout)[0])
    assert (held, strangers) == (0, 0)
    assert (taken > 0) == (scenario != "elements_of_the_caller")


@every_state
def test_closed_states(make):
    state = make()
    twin = copy.copy(state)
    with state as same:
        assert same is state
    state.close()
    for closed in (state, twin):
        with pytest.raises(ValueError, match=f"this {type(state).__name__} is closed"):
            closed.pointer
        with pytest.raises(ValueError, match="is closed"):
            closed.call(print)


@every_state
def test_states_stay_in_their_process(make):
    for refuse in (pickle.dumps, copy.deepcopy):
        with pytest.raises(TypeError, match="cannot pickle"):
            refuse(make())


def in_thread(function, *arguments):
    thread = threading.Thread(target=function, args=arguments, daemon=True)
    thread.start()
    return thread


@every_state
def test_others_wait(make):
    """A second call, and close, begin when the first call ends."""
    state, entered, leave, log = make(), threading.Event(), threading.Event(), []

    def slow(address):
        entered.set()
        assert leave.wait(60)
        log.append(address)

    first = in_thread(state.call, slow)
    assert entered.wait(60)
    address = int(vekcv.raw.ffi.cast("intptr_t", state.pointer))
    second = in_thread(state.call, lambda *_: log.append("second"))
    second.join(0.02)
    assert second.is_alive() and not log
    closing = in_thread(lambda: (second.join(60), state.close(), log.append("closed")))
    leave.set()
    for thread in (first, second, closing):
        thread.join(60)
    assert log == [address, "second", "closed"]


def test_threads_share_a_model():
    """Frames that are learned from two threads at once are all learned."""
    frames = np.random.default_rng(1).integers(0, 255, (2, 60, 90), "u1")
    model = vekcv.ForegroundGaussian(frames[0])

    def learn(own):
        for _ in range(100):
            model.apply(own)

    threads = [in_thread(learn, own) for own in frames]
    for thread in threads:
        thread.join(60)
    assert model.fields.frameCounter == 200
