"""Operations on single pixels, and what sums up an image, against numpy."""
import math

import numpy as np
import pytest
from support import SHAPE, assert_rounded, assert_same, image, inset, mask_of

import vekcv

every_dtype = pytest.mark.parametrize("dtype", ["u1", "i1", "u2", "f4"])
with_and_without_mask = pytest.mark.parametrize("masked", [False, True], ids=["all", "masked"])

# Number of sources, further arguments, and what the accumulator becomes.
ACCUMULATIONS = {
    "add": (1, (), lambda total, a: total + np.float32(a)),
    "add_square": (1, (), lambda total, a: total + np.float32(a * a)),
    "add_product": (2, (), lambda total, a, b: total + np.float32(a * b)),
    "add_weighted": (1, (0.3,), lambda total, a, alpha: (np.float32(a) - total) * np.float32(alpha) + total),
}


@pytest.mark.parametrize("name", ACCUMULATIONS)
@every_dtype
@with_and_without_mask
def test_accumulation(name, dtype, masked):
    count, numbers, rule = ACCUMULATIONS[name]
    sources = [image(dtype, seed=seed) for seed in range(count)]
    accumulator, mask = image("f4", seed=7), mask_of() if masked else None
    wide = "i4" if dtype in ("u1", "i1") else "f4"  # in which products are formed
    expected = rule(accumulator, *(source.astype(wide) for source in sources), *numbers)
    if masked:
        expected = np.where(mask != 0, expected, accumulator)
    assert getattr(vekcv, name)(*sources, accumulator, *numbers, mask=mask) is None
    assert_same(accumulator, expected)


def test_source_may_be_the_accumulator():
    a = image("f4")
    expected = a + a
    vekcv.add(a, a)
    assert_same(a, expected)


def test_blend():
    a, b = image("f4", seed=1), image("f4", seed=2)
    assert_same(vekcv.blend(a, b, 0.7), (a - b) * np.float32(0.7) + b)


@pytest.mark.parametrize("dtype, channels", [("u1", ()), ("u1", (3,)), ("u2", ()), ("f4", ())])
def test_abs_diff(dtype, channels):
    a, b = (image(dtype, SHAPE + channels, seed) for seed in (1, 2))
    wide = "f4" if dtype == "f4" else "i8"
    assert_same(vekcv.abs_diff(a, b), np.abs(a.astype(wide) - b.astype(wide)).astype(dtype))


@pytest.mark.parametrize("dtype, value", [("u1", 100), ("u1", 300), ("u1", -5), ("u2", 300), ("u2", 70000), ("f4", 0.1),
                                          ("f4", -1e30), ("f4", math.inf)])
def test_abs_diff_c(dtype, value):
    a = image(dtype)
    if dtype == "f4":
        expected = np.abs(a - np.float32(value))
    else:
        expected = np.abs(a.astype("i8") - np.clip(value, 0, np.iinfo(dtype).max)).astype(dtype)
    assert_same(vekcv.abs_diff_c(a, value), expected)


NORMS = {"inf": lambda values: np.abs(values).max(), "l1": lambda values: np.abs(values).sum(),
         "l2": lambda values: np.sqrt((values * values).sum())}


@every_dtype
@pytest.mark.parametrize("channel", [None, 0, 1, 2])
@with_and_without_mask
def test_numbers(dtype, channel, masked):
    shape = SHAPE if channel is None else (*SHAPE, 3)
    a, b = (inset(image(dtype, shape, seed)) for seed in (1, 2))
    mask = mask_of() if masked else None
    options = {"mask": mask, "channel": channel}
    taking_part = np.ones(SHAPE, bool) if mask is None else mask != 0
    p, q = ((each if channel is None else each[..., channel])[taking_part].astype("f8") for each in (a, b))
    near = {"rtol": 1e-5, "atol": 1e-3} if dtype == "f4" else {"rtol": 1e-12}
    for norm, rule in NORMS.items():
        results = [vekcv.norm(a, norm, **options), vekcv.norm_diff(a, b, norm, **options),
                   vekcv.norm_rel(a, b, norm, **options)]
        np.testing.assert_allclose(results, [rule(p), rule(p - q), rule(p - q) / rule(q)], **near)
        assert all(isinstance(result, float) for result in results)
    np.testing.assert_allclose(vekcv.mean_std_dev(a, **options), (p.mean(), p.std()), **near)
    np.testing.assert_allclose(vekcv.mean(a, **options), p.mean(), **near)
    places = [np.flatnonzero(taking_part)[function(p)] for function in (np.argmin, np.argmax)]
    assert vekcv.min_max_indx(a, **options) == (
        p.min(), p.max(), *((place % SHAPE[1], place // SHAPE[1]) for place in places))


def test_numbers_of_no_pixels():
    a, nothing = image("u1"), np.zeros(SHAPE, "u1")
    assert vekcv.norm(a, mask=nothing) == vekcv.norm_diff(a, ~a, mask=nothing) == vekcv.mean(a, nothing) == 0
    assert vekcv.mean_std_dev(a, mask=nothing) == (0, 0)
    for pixels, mask in [(np.full(SHAPE, np.nan, "f4"), None), (a, nothing)]:
        assert vekcv.min_max_indx(pixels, mask=mask) == (0, 0, (-1, -1), (-1, -1))


@pytest.mark.parametrize("dtype", ["u1", "u2", "f4"])
def test_update_motion_history(dtype):
    silhouette, history = image(dtype) * (mask_of(seed=4) != 0).astype(dtype), image("f4", seed=2)
    kept = np.where(history < np.float32(500.5 - 600.25), np.float32(0), history)
    expected = np.where(silhouette != 0, np.float32(500.5), kept)
    assert vekcv.update_motion_history(silhouette, history, timestamp=500.5, duration=600.25) is None
    assert_same(history, expected)


@pytest.mark.parametrize("norm", NORMS)
@pytest.mark.parametrize("dtype", ["u1", "u2", "f4"])
def test_gradient_color_to_gray(norm, dtype):
    a = image(dtype, (*SHAPE, 3))
    wide = a.astype("f8")
    expected = {"inf": wide.max(2), "l1": wide.sum(2) / 3, "l2": np.sqrt((wide * wide).mean(2))}[norm]
    assert_rounded(vekcv.gradient_color_to_gray(a, norm), expected, dtype)


@pytest.mark.parametrize("shape", [(1,), (7, 151), (3, 4, 5)])
def test_fast_arctan(shape):
    y, x = (image("f4", shape, seed) for seed in (1, 2))
    expected = np.degrees(np.arctan2(y, x)) % 360
    result = vekcv.fast_arctan(y, x)
    assert result.dtype == "f4" and np.abs(result - expected).max() < 0.15
    assert vekcv.fast_arctan(y, x, y) is y
    assert_same(y, result)
