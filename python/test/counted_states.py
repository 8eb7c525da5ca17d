"""States of each kind, and scenarios that test_states.py runs in processes of their own, whose blocks of memory are
counted."""
import ctypes
import functools
import gc
import sys

import numpy as np
import pytest

import vekcv

core = ctypes.CDLL(None)
SIZE = 40, 30
ELEMENT = np.ones((3, 3))


def frame(dtype="u1", channels=1):
    """A black image of the size."""
    return np.zeros((*SIZE[::-1], channels) if channels > 1 else SIZE[::-1], dtype)


KINDS = [
    *((vekcv.HaarClassifier, [(2, 0, 2, 2)], *np.ones((4, 1), dtype), [1], tilted)
      for dtype in ("f4", "i4") for tilted in (False, True)),
    *((kind, SIZE, 2, (1, 4, 6, 4, 1), dtype, channels) for kind in (vekcv.PyramidLayerDown, vekcv.PyramidLayerUp)
      for dtype in ("u1", "u2", "f4") for channels in (1, 3)),
    (vekcv.Pyramid, 3, SIZE), (vekcv.Pyramid.of, frame(), 3),
    *((kind, ELEMENT, reach, dtype, channels) for kind, reach in ((vekcv.MorphologyElement, 40),
      (vekcv.CompoundElement, SIZE)) for dtype in ("u1", "f4") for channels in (1, 3, 4)),
    *((vekcv.GrayElement, ELEMENT, SIZE, dtype) for dtype in ("u1", "f4")),
    *((vekcv.Inpainter, frame(), 3, "telea", channels) for channels in (1, 3)),
    *((kind, frame(channels=channels)) for kind in (vekcv.ForegroundGaussian, vekcv.ForegroundHistogram)
      for channels in (1, 3)),
    *((vekcv.OpticalFlow, SIZE, 9, dtype) for dtype in ("u1", "u2", "f4")),
    *((vekcv.SuperResolution, np.ones((2, side, side))) for side in (2, 3)),
]
MAKERS = {f"{kind.__qualname__} {number}": functools.partial(kind, *arguments)
          for number, (kind, *arguments) in enumerate(KINDS)}


def leaves_nothing(scenario, *arguments):
    """Whether a scenario returns all that it takes, and takes something."""
    held, taken = core.countHeld(), core.countTaken()
    scenario(*arguments)
    assert (core.countHeld(), core.countStrangers()) == (held, 0)
    assert core.countTaken() > taken


def close(make):
    held, state = core.countHeld(), make()
    assert core.countHeld() > held
    for _ in range(2):
        state.close()
        assert core.countHeld() == held


def leave_a_with_statement(make):
    held = core.countHeld()
    with pytest.raises(ZeroDivisionError), make() as state:
        assert core.countHeld() > held and state.pointer
        raise ZeroDivisionError
    assert core.countHeld() == held


def forget(make):
    make()


def forget_a_cycle():
    state = vekcv.Pyramid(3, SIZE)
    state.itself = state
    del state
    gc.collect()


def fail_in_a_call(make):
    """A call that raises neither releases the state nor keeps it locked."""
    def refuse(*_):
        raise ZeroDivisionError
    held, state = core.countHeld(), make()
    for _ in range(2):
        with pytest.raises(ZeroDivisionError):
            state.call(refuse)
    assert core.countHeld() > held
    state.close()


def run_out_of_memory(make):
    """Whichever block there is no memory for, what was taken before is returned."""
    for allowed in range(10):
        core.allow(allowed)
        try:
            state = make()
        except MemoryError as error:
            assert isinstance(error, vekcv.OutOfMemory) and error.name == "StatusMemoryAllocation"
        else:
            break
        finally:
            core.allow(-1)
    assert allowed > 0
    state.close()


def refuse_arguments():
    """What is refused late, when states were made before."""
    one, a = np.ones(1), frame()
    for refused in [
            lambda: vekcv.HaarClassifier([(0, 0, 0, 1)], one, one, one, one, [1]),
            lambda: vekcv.Pyramid(0, SIZE), lambda: vekcv.PyramidLayerDown(SIZE, 11),
            lambda: vekcv.Pyramid.of(frame("i1"), 3), lambda: vekcv.Pyramid.of(a, 3, 2, (1, 1)),
            lambda: vekcv.MorphologyElement(ELEMENT, SIZE[0], anchor=(9, 9)),
            lambda: vekcv.dilate(a, ELEMENT, out=frame("f4")), lambda: vekcv.morph_open(a, ELEMENT, out=a[1:]),
            lambda: vekcv.gray_erode(a, ELEMENT, (3, 3)), lambda: vekcv.Inpainter(a, 0.5),
            lambda: vekcv.inpaint(a, a, out=frame("u2")), lambda: vekcv.OpticalFlow(SIZE, 4),
            lambda: vekcv.optical_flow_pyr_lk(a, a[1:], [(5, 5)]),
            lambda: vekcv.optical_flow_pyr_lk(a, frame("u2"), [(5, 5)])]:
        held = core.countHeld()
        with pytest.raises((ValueError, TypeError)):
            refused()
        assert core.countHeld() == held


def use_for_one_call():
    vekcv.dilate(frame(), (3, 3))
    vekcv.morph_gradient(frame("f4", 4), ELEMENT)
    vekcv.gray_dilate(frame(), ELEMENT)
    vekcv.inpaint(frame(channels=3), frame() + np.uint8(1))
    vekcv.optical_flow_pyr_lk(frame("f4"), frame("f4"), [(5, 5)])


def elements_of_the_caller():
    taken = core.countTaken()
    for kind, reach in [(vekcv.MorphologyElement, 40), (vekcv.CompoundElement, SIZE), (vekcv.GrayElement, SIZE)]:
        with kind(ELEMENT, reach, memory=np.zeros(kind.bytes_needed(ELEMENT, reach), "u1")):
            pass
    assert (core.countTaken(), core.countStrangers()) == (taken, 0)


def live_at_exit():
    """Returns states, and a cycle of one, that are alive when the interpreter ends."""
    states = [make() for make in MAKERS.values()]
    states[0].itself = states[0]
    return states


def every_way():
    for name, make in MAKERS.items():
        for scenario in (close, leave_a_with_statement, forget, fail_in_a_call, run_out_of_memory):
            print(name, scenario.__name__)
            leaves_nothing(scenario, make)
    for scenario in (forget_a_cycle, refuse_arguments, use_for_one_call):
        print(scenario.__name__)
        leaves_nothing(scenario)


if __name__ == "__main__":
    kept = globals()[sys.argv[1]]()
