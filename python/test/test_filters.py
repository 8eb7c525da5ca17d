"""Filters on windows against scipy.ndimage, and borders that are read from the array that an image is a view of."""
import numpy as np
import pytest
from scipy import ndimage
from support import BORDERS, FILTERS, assert_rounded, assert_same, image, inset, mask_2d, refuses

import vekcv

CASES = [(name, aperture) for name, (row, column) in FILTERS.items() for aperture in row if aperture in column]
every_border = pytest.mark.parametrize("border", BORDERS)
every_shape = pytest.mark.parametrize("shape", [(7, 150), (1, 1), (6, 1), (2, 3)], ids=str)


@pytest.mark.parametrize("name, aperture", CASES)
@every_border
@every_shape
def test_fixed_filters(name, aperture, border, shape):
    options = {"border": border} if "scharr" in name else {"border": border, "aperture": aperture}
    results = {"u1": ["u1"] if name == "lowpass" else ["i2", "i1"], "f4": ["f4"]}
    for dtype, made in results.items():
        a, value = image(dtype, shape), {"u1": 200, "f4": -70.3}[dtype]
        exact = ndimage.correlate(a.astype("f8"), mask_2d(name, aperture), mode=BORDERS[border][0], cval=value)
        for result in made:
            if len(made) > 1:
                options["dtype"] = result
            filtered = getattr(vekcv, f"filter_{name}")(inset(a), border_value=value, **options)
            assert_rounded(filtered, exact, result, np.abs(mask_2d(name, aperture)).sum() * np.abs(a).max())
        options.pop("dtype", None)


def gauss_taps(size, sigma):
    taps = np.exp(-(np.arange(size) - size // 2) ** 2 / (2 * sigma * sigma))
    return taps / taps.sum()


@pytest.mark.parametrize("size, sigma", [(3, 0.8), (11, 3), (31, 4.5)])
@every_border
@every_shape
def test_filter_gauss(size, sigma, border, shape):
    a = image("f4", shape)
    exact = a.astype("f8")
    for axis in (1, 0):
        exact = ndimage.correlate1d(exact, gauss_taps(size, sigma), axis, mode=BORDERS[border][0], cval=55.5)
    result = vekcv.filter_gauss(a, kernel_size=size, sigma=sigma, border=border, border_value=55.5)
    assert_rounded(result, exact, "f4", np.abs(a).max())


@pytest.mark.parametrize("name", ["minimum", "maximum"])
@pytest.mark.parametrize("dtype", ["u1", "f4"])
@pytest.mark.parametrize("channels", [1, 3, 4])
@pytest.mark.parametrize("size, anchor", [((1, 1), (0, 0)), ((3, 3), None), ((4, 3), None), ((5, 2), (4, 0)),
                                          ((2, 6), (0, 5)), ((200, 9), (150, 8))], ids=str)
def test_rank_filters(name, dtype, channels, size, anchor):
    a = image(dtype, (7, 50) if channels == 1 else (7, 50, channels))
    x, y = ((size[0] - 1) // 2, (size[1] - 1) // 2) if anchor is None else anchor
    window, origin = (size[1], size[0], 1)[:a.ndim], (y - size[1] // 2, x - size[0] // 2, 0)[:a.ndim]
    expected = getattr(ndimage, f"{name}_filter")(a, window, origin=origin, mode="nearest")
    assert_same(getattr(vekcv, f"filter_{name[:3]}")(inset(a), size, anchor), expected)


BASE = image("u1", (16, 40))
SIDES = ["top", "bottom", "left", "right", "top+left", "bottom+right", "top+bottom+left+right"]
VIEWS = {"in the middle": np.s_[4:10, 6:31], "a single row": np.s_[5:6, 6:31], "a single column": np.s_[3:12, 9:10],
         "a single pixel": np.s_[7:8, 20:21], "as far as is read": np.s_[2:14, 2:38]}


def expected_of(view, aperture, sides="top+bottom+left+right", **options):
    """The filter of the image and of what is read beside it."""
    reach = aperture // 2
    before, after = [[reach * (side in sides) for side in names] for names in (("top", "left"), ("bottom", "right"))]
    around = BASE[tuple(slice(each.start - one, each.stop + other) for each, one, other in zip(view, before, after))]
    filtered = ndimage.correlate(around.astype("i8"), mask_2d("sobel_cross", aperture), **options)
    rows, columns = (slice(one, one + each.stop - each.start) for each, one in zip(view, before))
    return filtered[rows, columns].astype("i2")


@pytest.mark.parametrize("rule", ["constant", "replicate"])
@pytest.mark.parametrize("sides", SIDES)
@pytest.mark.parametrize("view", VIEWS)
@pytest.mark.parametrize("aperture", [3, 5])
def test_single_sides(rule, sides, view, aperture):
    result = vekcv.filter_sobel_cross(BASE[VIEWS[view]], f"{rule}+{sides}", aperture, border_value=99)
    assert_same(result, expected_of(VIEWS[view], aperture, sides, mode=BORDERS[rule][0], cval=99))


@pytest.mark.parametrize("view", VIEWS)
@pytest.mark.parametrize("aperture", [3, 5])
def test_all_sides(view, aperture):
    assert_same(vekcv.filter_sobel_cross(BASE[VIEWS[view]], "in_memory", aperture), expected_of(VIEWS[view], aperture))


@pytest.mark.parametrize("a", [
    BASE[1:][:, 2:][:-1, :-2][3:9, 4:29], BASE[..., None].copy()[4:10, 6:31], BASE[..., None].copy()[4:10, 6:31, 0],
    BASE.view(np.recarray)[4:10, 6:31], np.broadcast_to(BASE, BASE.shape)[4:10, 6:31]],
    ids=["view of views", "an axis of one channel", "without that axis", "subclass", "read-only"])
def test_bases_that_are_taken(a):
    assert_same(vekcv.filter_sobel_cross(a, "in_memory", 5), expected_of(VIEWS["in the middle"], 5))


@pytest.mark.parametrize("aperture, view, side, there", [
    (3, np.s_[0:5, 5:9], "top", 0), (5, np.s_[1:5, 5:9], "top", 1), (3, np.s_[3:16, 5:9], "bottom", 0),
    (5, np.s_[3:15, 5:9], "bottom", 1), (3, np.s_[3:9, 0:9], "left", 0), (5, np.s_[3:9, 1:9], "left", 1),
    (3, np.s_[3:9, 5:40], "right", 0), (5, np.s_[3:9, 5:39], "right", 1), (5, np.s_[15:16, 5:39], "bottom", 0),
    (5, np.s_[0:1, 5:38], "top", 0)], ids=str)
def test_bases_with_too_few_pixels(aperture, view, side, there):
    words = f"has {there} pixels beyond the {side} of it, and {aperture // 2} are read there"
    for border in ("in_memory", f"replicate+{side}"):
        refuses((ValueError, words), vekcv.filter_sobel_cross, BASE[view], border, aperture)


REFUSED = {
    "rows of one dimension": np.arange(200, dtype="u1").reshape(10, 20)[2:8, 3:9],
    "memory that is no array": np.frombuffer(bytearray(BASE.tobytes()), np.uint8).reshape(BASE.shape)[4:10, 6:31],
    "Fortran order": np.asfortranarray(BASE)[4:10, 6:31], "transposed": BASE.T[4:10, 6:13],
    "every other row": BASE[::2][1:5, 6:31], "rows upwards": BASE[::-1][1:5, 6:31],
    "plane of planes": np.zeros((5, 9, 9), "u1")[2, 2:7, 2:7], "column as a row": np.zeros((24, 1), "u1")[2:7].T,
    "other dtype": np.zeros((9, 9), "f4").view("u1")[2:6, 4:12],
}


@pytest.mark.parametrize("what", REFUSED)
@pytest.mark.parametrize("border", ["in_memory", "replicate+top"])
def test_bases_that_are_refused(what, border):
    refuses((ValueError, "contiguous array with two axes, or three"), vekcv.filter_sobel_cross, REFUSED[what], border)
