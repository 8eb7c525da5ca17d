"""What several tests share: images, where they lie in memory, rules of the manual, and how results are compared."""
import numpy as np
import pytest

import vekcv

SHAPE = 7, 150  # more than two vectors of 64 bytes, and a rest
GUARD = 0xA5
# Names of the border rules in scipy and in numpy.
BORDERS = {"constant": ("constant", "constant"), "replicate": ("nearest", "edge"), "periodic": ("wrap", "wrap"),
           "reflect": ("mirror", "reflect"), "reflect_edge": ("reflect", "symmetric")}
# Row and column of the kernels of the fixed filters, of 3 x 3 and of 5 x 5.
SMOOTH = {3: [1, 2, 1], 5: [1, 4, 6, 4, 1]}
RISE = {3: [-1, 0, 1], 5: [-1, -2, 0, 2, 1]}
FALL = {3: [1, 0, -1], 5: [1, 2, 0, -2, -1]}
SECOND = {3: [1, -2, 1], 5: [1, 0, -2, 0, 1]}
MEAN = {3: [1] * 3, 5: [1] * 5}
FILTERS = {
    "sobel_horiz": (SMOOTH, RISE), "sobel_vert": (FALL, SMOOTH), "sobel_neg_vert": (RISE, SMOOTH),
    "sobel_horiz_second": (SMOOTH, SECOND), "sobel_vert_second": (SECOND, SMOOTH), "sobel_cross": (FALL, RISE),
    "scharr_horiz": ({3: [3, 10, 3]}, RISE), "scharr_vert": (RISE, {3: [3, 10, 3]}), "lowpass": (MEAN, MEAN),
    "laplacian": (SMOOTH, SECOND)}


def mask_2d(name, aperture):
    """The whole kernel of a fixed filter."""
    row, column = (taps[aperture] for taps in FILTERS[name])
    mask = np.outer(column, row)
    return mask + mask.T if name == "laplacian" else mask / aperture ** 2 if name == "lowpass" else mask


def image(dtype, shape=SHAPE, seed=1):
    """Random pixels over the whole range of integers, floats around 0."""
    generator, dtype = np.random.default_rng(seed), np.dtype(dtype)
    if dtype.kind == "f":
        return (1000 * generator.standard_normal(shape)).astype(dtype)
    return generator.integers(np.iinfo(dtype).min, np.iinfo(dtype).max, shape, dtype, endpoint=True)


def mask_of(shape=SHAPE, seed=9):
    """A mask with half of the pixels, of all kinds of bytes that are not 0."""
    return np.random.default_rng(seed).choice(np.array([0, 0, 0, 0, 1, 2, 128, 255], np.uint8), shape)


def inset(pixels, top=2, bottom=1, left=3, right=2):
    """A copy as a view of a larger array, whose other bytes are guards."""
    rows, columns, *channels = pixels.shape
    base = np.empty((top + rows + bottom, left + columns + right, *channels), pixels.dtype)
    base.view(np.uint8)[...] = GUARD
    view = base[top:top + rows, left:left + columns]
    view[...] = pixels
    return view


def guards_intact(view):
    """Whether the array that inset made holds guards still, but for the view."""
    kept = view.copy()
    view.view(np.uint8)[...] = GUARD
    intact = (view.base.view(np.uint8) == GUARD).all()
    view[...] = kept
    return intact


def planes(a):
    """The channels of an image, each an image of its own."""
    return [a] if a.ndim == 2 else [a[..., channel] for channel in range(a.shape[2])]


def by_channel(operation, a):
    """What an operation on images of one channel makes of each channel."""
    made = [operation(plane) for plane in planes(a)]
    return made[0] if a.ndim == 2 else np.stack(made, 2)


def assert_same(result, expected):
    """Equal in dtype, shape and bits; but one NaN is as good as another."""
    assert result.dtype == expected.dtype
    np.testing.assert_array_equal(result, expected)
    if result.dtype.kind == "f":
        number = ~np.isnan(result)
        np.testing.assert_array_equal(np.signbit(result[number]), np.signbit(expected[number]))


def assert_rounded(result, exact, dtype, scale=None, steps=0.5):
    """Results that follow from values in doubles: integers are rounded, halves either way, and kept in range; floats
    are right to a millionth of a scale, by default of the largest value."""
    dtype = np.dtype(dtype)
    assert (result.dtype, result.shape) == (dtype, exact.shape)
    if dtype.kind == "f":
        np.testing.assert_allclose(result, exact, rtol=0, atol=2e-6 * (scale or np.abs(exact).max()))
    else:
        limits = np.iinfo(dtype)
        assert np.abs(result - np.clip(exact, limits.min, limits.max)).max() < steps + 0.01


def refuses(what, function, *arguments, **options):
    """Whether a call raises: an exception and words of it, or a status of the library."""
    error, words = (vekcv.Error, f"Status{what}") if isinstance(what, str) else what
    with pytest.raises(error, match=words):
        function(*arguments, **options)
