"""Filters of any kernel by rows and by columns, and kernels of derivatives, against scipy and numpy."""
import functools
import math

import numpy as np
import pytest
from scipy import ndimage
from support import BORDERS, SHAPE, assert_rounded, assert_same, by_channel, image, inset, refuses

import vekcv

KERNELS = {"u1": ([1, 2, -5], [-3, 4, 6, 4, 7], [1, -2, 3, -4, 5, -6, 7, 8], [-9]),
           "f4": ((0.1, -0.7, 1e-3, 3.3), [2.5])}
every_channels = pytest.mark.parametrize("channels", [(), (3,)], ids=["C1", "C3"])


def correlated(a, kernel, anchor, axis, **options):
    origin = anchor - len(kernel) // 2
    return by_channel(lambda plane: ndimage.correlate1d(plane.astype("f8"), kernel, axis, origin=origin, **options), a)


# Dtypes and whether the rounding is that of Low, to the nearest; the other one also cuts off.
@pytest.mark.parametrize("dtype, low", [("u1", False), ("i2", False), ("i2", True), ("f4", False)])
@every_channels
@pytest.mark.parametrize("border", BORDERS)
@pytest.mark.parametrize("shape", [SHAPE, (3, 4), (2, 1)], ids=str)
def test_row_filter(dtype, low, channels, border, shape):
    a = image(dtype, (*shape, *channels))
    for kernel in KERNELS["f4" if dtype == "f4" else "u1"]:
        for anchor in {0, len(kernel) - 1, None}:
            place = (len(kernel) - 1) // 2 if anchor is None else anchor
            exact = correlated(a, kernel, place, 1, mode=BORDERS[border][0], cval=77)
            options = {} if dtype == "f4" else {"divisor": -7, "low": low}
            result = vekcv.filter_row_border_pipeline(inset(a), kernel, anchor, border, 77, **options)
            assert_rounded(result, exact if dtype == "f4" else exact / -7, "f4" if dtype == "f4" else "i2",
                           5 * np.abs(a).max(), 0.5 if low else 1)


@pytest.mark.parametrize("dtype, result, low", [("i2", "i2", False), ("i2", "u1", False), ("i2", "i1", False),
                                                ("i2", "i2", True), ("f4", "f4", False)])
@every_channels
@pytest.mark.parametrize("width", [1, 16, 53])
def test_column_filter(dtype, result, low, channels, width):
    a = image(dtype, (11, width, *channels))
    for kernel in KERNELS["f4" if dtype == "f4" else "u1"]:
        exact = correlated(a, kernel, 0, 0)[:12 - len(kernel)]
        options = {} if dtype == "f4" else {"divisor": 300, "low": low}
        made = vekcv.filter_column_pipeline(inset(a), kernel, dtype=result, **options)
        assert_rounded(made, exact if dtype == "f4" else exact / 300, result, 5 * np.abs(a).max(), 0.5 if low else 1)
        out = np.empty_like(made)
        assert vekcv.filter_column_pipeline(a, kernel, out=out, **options) is out
        assert_same(out, made)


def test_roundings_differ():
    a = image("i2")
    for function in (vekcv.filter_row_border_pipeline, vekcv.filter_column_pipeline):
        nearest, other = (function(a, [1, 2, 5], divisor=9, low=low) for low in (True, False))
        assert 0 < np.abs(nearest.astype(int) - other).max() <= 1
        assert_same(function(a, [1, 2, 5]), function(a, [1, 2, 5], divisor=1, low=False))


def test_rows_in_any_order():
    a = image("i2")[::-2]
    assert_same(vekcv.filter_column_pipeline(a, [3, 1]), vekcv.filter_column_pipeline(a.copy(), [3, 1]))


def test_halves_of_a_filter_are_a_filter():
    a = image("u1", (40, 50))
    rows = vekcv.filter_row_border_pipeline(a, [-1, 0, 1])
    sobel = vekcv.filter_column_pipeline(np.pad(rows, ((1, 1), (0, 0)), "edge"), [1, 2, 1])
    assert_same(sobel, vekcv.filter_sobel_neg_vert(a))


both_filters = pytest.mark.parametrize("function", [vekcv.filter_row_border_pipeline, vekcv.filter_column_pipeline],
                                       ids=["row", "column"])


@both_filters
def test_kernels(function):
    a, b = image("i2"), image("f4")
    for kernel in [(-32768, 32767), np.array([True, False]), np.array([[1, 2], [3, 4]])[:, 0], range(3)]:
        assert_same(function(a, kernel), function(a, np.array(kernel, "i2")))
    assert_same(function(b, [1, 2]), function(b, np.array([1, 2], "f4")))
    for kernel in ([0.5], [32768], [-32769], [[1, 2]], 3, ["1"], [1j], [2 ** 70], np.array([2 ** 64 - 1], "u8")):
        refuses((ValueError, "the kernel must be a sequence of numbers that are int16"), function, a, kernel)
    refuses((ValueError, "that are float32"), function, b, [1j])
    refuses("SizeError", function, a, np.zeros(0, "i2"))


@pytest.mark.parametrize("order", [0, 1, 2])
@pytest.mark.parametrize("size", [3, 5, 15, 31])
def test_sobel_kernels(size, order):
    factors = [(1, 1)] * (size - 1 - order) + [(-1, 1)] * order
    expected = functools.reduce(np.convolve, factors)
    for sign in (1, -1):
        assert_same(vekcv.gen_sobel_kernel(size, order, sign, "f4"), (sign * expected).astype("f4"))
        if size < 16:
            assert_same(vekcv.gen_sobel_kernel(size, order, sign), (sign * expected).astype("i2"))
        else:
            refuses("SizeError", vekcv.gen_sobel_kernel, size, order, sign)
    assert order or expected.tolist() == [math.comb(size - 1, k) for k in range(size)]
