"""What becomes of statuses, and of everything that a call holds while it fails."""
import copy
import gc
import pickle
import sys
import tracemalloc
import warnings

import numpy as np
import pytest
from support import image

import vekcv
from vekcv import _forms, _status
from vekcv.raw import lib

U1, I2, F4, EMPTY = image("u1"), image("i2"), image("f4"), np.zeros((0, 5), "u1")
ZEROS = np.zeros_like(U1)
HALVES = np.zeros((3, 22), "u1")[:, :20].view("f4")  # rows that are five floats and a half apart
ERRORS = {
    "abs_diff": (lambda: vekcv.abs_diff(EMPTY, EMPTY), "vekiAbsDiff_8u_C1R", "StatusSizeError",
                 "width or height is below 1"),
    "filter_min": (lambda: vekcv.filter_min(U1, (3, 3), (0, 3)), "vekiFilterMinBorderReplicate_8u_C1R",
                   "StatusAnchorError", "the anchor lies outside of the window"),
    "filter_gauss": (lambda: vekcv.filter_gauss(F4, 4, 1), "vekiFilterGaussGetBufferSize_32f_C1R", "StatusBadArgument",
                     "kernelSize is even or below 3; or borderType is none of these rules"),
    "update_motion_history": (lambda: vekcv.update_motion_history(U1, F4, 1, -1), "vekiUpdateMotionHistory_8u32f_C1IR",
                              "StatusOutOfRange", "duration is below 0"),
    "steps": (lambda: vekcv.blend(HALVES, HALVES, 0), "vekiAddWeighted_32f_C1R", "StatusStepNotMultiple",
              "the step of a 16u or 32f image is not a multiple of 2 or 4"),
}


@pytest.mark.parametrize("what", ERRORS)
def test_errors(what):
    function, export, name, words = ERRORS[what]
    kept = F4.copy()
    with pytest.raises(ValueError) as raised:
        function()
    np.testing.assert_array_equal(F4, kept)  # nothing is written
    error = raised.value
    assert type(error) is vekcv.Error and (error.export, error.name, error.status) == (export, name, getattr(lib, name))
    assert str(error) == f"{export}: {name}: {words}"
    for other in (pickle.loads(pickle.dumps(error)), copy.copy(error)):
        assert (type(other), str(other), other.status) == (type(error), str(error), error.status)


def test_out_of_memory():
    with pytest.raises(MemoryError, match="vekiPyramidInitAlloc: StatusMemoryAllocation: ") as raised:
        _status.check("vekiPyramidInitAlloc", lib.StatusMemoryAllocation)
    for error in (raised.value, pickle.loads(pickle.dumps(raised.value))):
        assert type(error) is vekcv.OutOfMemory and isinstance(error, vekcv.Error)


@pytest.mark.parametrize("norm", ["inf", "l1", "l2"])
@pytest.mark.parametrize("options", [{}, {"mask": U1}, {"channel": 1}], ids=["all", "masked", "channel"])
def test_warnings(norm, options):
    a, b = (np.dstack([pixels] * 3) if "channel" in options else pixels for pixels in (U1, ZEROS))
    words = f"vekiNormRel_{norm.capitalize()}_.*: StatusDivideByZeroWarning: the norm of source2 is 0"
    with pytest.warns(vekcv.Warning, match=words) as caught:
        assert vekcv.norm_rel(a, b, norm, **options) == np.inf
        assert np.isnan(vekcv.norm_rel(b, b, norm, **options))
    assert [each.filename for each in caught] == [__file__] * 2


OUT, SIZE, ANCHOR, BAD, MASK = np.zeros_like(U1), (3, 4), (1, 2), (7, 7), U1 & 1
HELD = [U1, I2, F4, ZEROS, OUT, SIZE, ANCHOR, BAD, MASK]
CALLS = {
    "result made": lambda: vekcv.filter_min(U1, SIZE, ANCHOR),
    "several results": lambda: vekcv.min_max_indx(U1, mask=MASK),
    "no result": lambda: vekcv.add(U1, F4, mask=MASK),
    "mask of ones": lambda: vekcv.norm_diff(U1, OUT),
    "refused by the library": lambda: vekcv.filter_min(U1, SIZE, BAD, out=OUT),
    "result of another dtype": lambda: vekcv.abs_diff(U1, U1, I2),
    "bad point": lambda: vekcv.filter_min(U1, SIZE, (1, None), out=OUT),
    "bad number": lambda: vekcv.abs_diff_c(U1, "7", OUT),
    "gaps": lambda: vekcv.abs_diff(U1, U1[:, ::2], OUT),
    "too few arguments": lambda: _forms.function("vekiAbsDiff_8u_C1R")(U1, U1),
    "warning": lambda: vekcv.norm_rel(U1, ZEROS),
    "warning as an error": lambda: warn_with_an_error(U1, ZEROS),
    "no image": lambda: vekcv.abs_diff([U1], U1),
}


def warn_with_an_error(a, b):
    with warnings.catch_warnings():
        warnings.simplefilter("error", vekcv.Warning)
        vekcv.norm_rel(a, b)


def repeat(function, times):
    for _ in range(times):
        try:
            function()
        except (TypeError, ValueError, OverflowError, vekcv.Warning):
            pass


@pytest.mark.filterwarnings("ignore::vekcv.Warning")
@pytest.mark.parametrize("what", CALLS)
def test_references_and_memory(what):
    repeat(CALLS[what], 100)  # what is made once stays
    gc.collect()
    constants = None, True, False, (), 0, 1
    before, constants_before = [sys.getrefcount(each) for each in HELD], [sys.getrefcount(each) for each in constants]
    tracemalloc.start()
    try:
        repeat(CALLS[what], 10)
        start, _ = tracemalloc.get_traced_memory()
        repeat(CALLS[what], 1000)
        gc.collect()
        end, _ = tracemalloc.get_traced_memory()
    finally:
        tracemalloc.stop()
    assert [sys.getrefcount(each) for each in HELD] == before
    # Others hold these, too, but not a thousand times.
    assert np.abs(np.subtract([sys.getrefcount(each) for each in constants], constants_before)).max() < 500
    assert end - start < 5000
