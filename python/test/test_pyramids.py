"""Levels of pyramids, of rate 2 and of any rate, against scipy; and records of the levels."""
import gc
import weakref

import numpy as np
import pytest
from scipy import ndimage
from support import assert_rounded, assert_same, by_channel, image, inset, refuses

import vekcv

every_channels = pytest.mark.parametrize("channels", [(), (3,)], ids=["C1", "C3"])
every_shape = pytest.mark.parametrize("shape", [(1, 1), (1, 9), (8, 2), (21, 70)], ids=str)
BINOMIAL = np.array([1, 4, 6, 4, 1]) / 16


def smooth(plane, axis, taps=BINOMIAL):
    return ndimage.correlate1d(plane.astype("f8"), np.array(taps) / np.sum(taps), axis, mode="mirror")


def halved(plane):
    return smooth(smooth(plane, 0), 1)[::2, ::2]


def doubled(plane):
    """Zeros between the pixels, smoothed; before the first pixel lies the second one, behind the last one itself."""
    for axis in (0, 1):
        rows = np.swapaxes(plane, 0, axis).astype("f8")
        rows = np.concatenate([rows[1:2] if len(rows) > 1 else rows, rows, rows[-1:]])
        spread = np.zeros((2 * len(rows), rows.shape[1]))
        spread[::2] = rows
        plane = np.swapaxes(2 * ndimage.correlate1d(spread, BINOMIAL, 0)[2:-2], 0, axis)
    return plane


@pytest.mark.parametrize("function, rule", [(vekcv.pyr_down, halved), (vekcv.pyr_up, doubled)], ids=["down", "up"])
@pytest.mark.parametrize("dtype", ["u1", "i1", "f4"])
@every_channels
@every_shape
def test_rate_of_2(function, rule, dtype, channels, shape):
    a = image(dtype, (*shape, *channels))
    made = function(inset(a))
    assert_rounded(made, by_channel(rule, a), dtype)
    out = np.empty_like(made)
    assert function(a, out) is out
    assert_same(out, made)


RATES = 1.05, 2, 3.7, 10
KERNELS = (1, 4, 6, 4, 1), (3, -1, 5), tuple(range(1, 14))


def limits_of_up(n, rate):
    rate = np.float32(rate)
    return 1 if n == 1 else max(n + 1, int(np.float32(n - 1) * rate) + 1), max(n + 1, int(np.float32(n) * rate))


@pytest.mark.parametrize("rate", RATES)
@pytest.mark.parametrize("size", [(1, 1), (2, 7), (33, 70), (1000, 1001)], ids=str)
def test_sizes_of_levels(rate, size):
    assert vekcv.get_pyramid_up_roi(size, rate) == tuple(zip(*(limits_of_up(side, rate) for side in size)))
    for side, smaller in zip(size, vekcv.get_pyramid_down_roi(size, rate)):
        low, high = limits_of_up(smaller, rate)
        assert low <= side <= high


def sampled(plane, axis, places):
    return np.apply_along_axis(lambda row: np.interp(places, np.arange(len(row)), row), axis, plane.astype("f8"))


def level(plane, kernel, rate, size, up):
    for axis, length in ((1, size[0]), (0, size[1])):
        places = np.arange(length) / rate if up else np.arange(length) * rate
        if up:
            plane = smooth(sampled(plane, axis, places), axis, kernel)
        else:
            plane = sampled(smooth(plane, axis, kernel), axis, places)
    return plane


@pytest.mark.parametrize("dtype", ["u1", "u2", "f4"])
@every_channels
@pytest.mark.parametrize("rate", RATES)
@pytest.mark.parametrize("kernel", KERNELS, ids=len)
def test_layers(dtype, channels, rate, kernel):
    arguments = (70, 21), rate, kernel, dtype, len(channels) and 3 or 1
    with vekcv.PyramidLayerDown(*arguments) as down, vekcv.PyramidLayerUp(*arguments) as up:
        for shape in [(1, 1), (8, 2), (21, 70)]:
            a = image(dtype, (*shape, *channels))
            least, most = vekcv.get_pyramid_up_roi(shape[::-1], rate)
            for layer, size, given in [(down, vekcv.get_pyramid_down_roi(shape[::-1], rate), ()), (up, most, ()),
                                       (up, least, (least,)), (up, (least[0], most[1]), ((least[0], most[1]),))]:
                made = layer(inset(a), *given)
                exact = by_channel(lambda plane: level(plane, kernel, rate, size, layer is up), a)
                assert_rounded(made, exact, dtype, 20 * np.abs(a).max(), 1 if dtype == "u2" else 0.6)
                assert_same(layer(a, out=np.empty_like(made)), made)


@pytest.mark.parametrize("rate", [1.05, 1.5, 2, 10])
def test_pyramid_record(rate):
    pyramid = vekcv.Pyramid(4, (70, 21), rate)
    sizes = [(70, 21)]
    while len(sizes) <= 4 and sizes[-1] != (1, 1):
        sizes.append(vekcv.get_pyramid_down_roi(sizes[-1], rate))
    assert pyramid.sizes == sizes and len(pyramid) == len(sizes)
    np.testing.assert_allclose(pyramid.scales, [rate ** -float(level) for level in range(len(sizes))], 1e-6)


@pytest.mark.parametrize("dtype", ["u1", "u2", "f4"])
@every_channels
def test_pyramid_of_an_image(dtype, channels):
    a = image(dtype, (21, 70, *channels))
    with vekcv.Pyramid.of(a, 3, 1.5, (1, 2, 1)) as pyramid:
        down = vekcv.PyramidLayerDown((70, 21), 1.5, (1, 2, 1), dtype, len(channels) and 3 or 1)
        levels = list(pyramid)
        assert len(levels) == len(pyramid) == 4 and levels[0] is a
        for before, after in zip(levels, levels[1:]):
            assert_same(after, down(before))
    assert [each.shape[:2] for each in vekcv.Pyramid.of(image("u1", (2, 3)), 9)] == [(2, 3), (1, 2), (1, 1)]


def test_entered_images():
    pyramid, a = vekcv.Pyramid(2, (70, 21)), inset(image("u1", (21, 70)))
    refuses((IndexError, "level 0 has no image"), pyramid.__getitem__, 0)
    pyramid[0] = a
    record = pyramid.pointer
    assert int(vekcv.raw.ffi.cast("intptr_t", record.levelImages[0])) == a.ctypes.data
    assert (record.levelSteps[0], record.levelImages[1]) == (75, vekcv.raw.ffi.NULL)
    assert pyramid[0] is a


def test_images_live_as_long_as_their_record():
    a = image("u1", (21, 70))
    alive, pyramid = weakref.ref(a), vekcv.Pyramid(2, (70, 21))
    pyramid[0] = a
    del a
    gc.collect()
    assert_same(alive(), image("u1", (21, 70)))
    del pyramid
    gc.collect()
    assert alive() is None
