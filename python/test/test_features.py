"""Edges, corners, peaks and lines, against scipy, numpy or the formulas of the manual."""
import math

import numpy as np
import pytest
from scipy import ndimage
from support import assert_same, image, inset, mask_2d

import vekcv

SQUARE, CROSS = np.ones((3, 3)), ndimage.generate_binary_structure(2, 1)


def photograph(seed=3, shape=(60, 90)):
    """A smooth image of bytes."""
    blurred = ndimage.gaussian_filter(np.random.default_rng(seed).standard_normal(shape), 2.5)
    return np.uint8(255 * (blurred - blurred.min()) / np.ptp(blurred))


def edges_of(dx, dy, low, high):
    """The manual's edges: pixels that are larger than their neighbours across the edge, connected to one above the high
    threshold."""
    dx, dy = dx.astype("f4"), dy.astype("f4")
    m = np.abs(dx) + np.abs(dy)
    m[m < low] = 0
    around = np.pad(m, 1)

    def neighbour(right, below):
        return around[1 + below:1 + below + m.shape[0], 1 + right:1 + right + m.shape[1]]

    horizontal, vertical = abs(dy) < abs(dx) * np.float32(0.41421357), abs(dx) * np.float32(2.4142137) < abs(dy)
    candidates = (m != 0) & np.select(
        [horizontal, vertical, np.signbit(dx) == np.signbit(dy)],
        [(neighbour(-1, 0) < m) & (neighbour(1, 0) <= m), (neighbour(0, -1) < m) & (neighbour(0, 1) <= m),
         (neighbour(-1, -1) < m) & (neighbour(1, 1) < m)],
        (neighbour(1, -1) < m) & (neighbour(-1, 1) < m))
    labels, _ = ndimage.label(candidates, SQUARE)
    return np.where(candidates & np.isin(labels, labels[candidates & (m > high)]), 255, 0).astype("u1")


@pytest.mark.parametrize("dtype", ["u1", "f4"])
@pytest.mark.parametrize("low, high", [(0, 0), (10, 60), (80, 80), (50, 1000)])
def test_canny(dtype, low, high):
    a = photograph().astype(dtype)
    dx, dy = vekcv.filter_sobel_neg_vert(a), vekcv.filter_sobel_horiz(a)
    edges = vekcv.canny(dx, dy, low, high)
    assert_same(edges, edges_of(dx, dy, low, high))
    assert (high == 1000) == (not edges.any())


@pytest.mark.parametrize("kernel, aperture, window", [("sobel", 3, 3), ("sobel", 3, 5), ("sobel", 5, 3),
                                                      ("scharr", 3, 5)])
@pytest.mark.parametrize("dtype", ["u1", "f4"])
def test_corners(dtype, kernel, aperture, window):
    a = photograph().astype(dtype)
    names = ("sobel_neg_vert", "sobel_horiz") if kernel == "sobel" else ("scharr_vert", "scharr_horiz")
    dx, dy = (ndimage.correlate(a.astype("f8"), mask_2d(name, aperture), mode="nearest") for name in names)
    scale = (1 if kernel == "sobel" else 0.6125) / (255 * 4 ** (aperture - 1))
    xx, xy, yy = (scale * ndimage.uniform_filter(product, window, mode="nearest")
                  for product in (dx * dx, dx * dy, dy * dy))
    exact = np.linalg.eigvalsh(np.moveaxis([[xx, xy], [xy, yy]], (0, 1), (2, 3)))
    near = {"rtol": 0, "atol": 2e-6 * (xx + yy).max()}
    options = {"kernel": kernel, "aperture": aperture, "window": window}
    np.testing.assert_allclose(vekcv.min_eigen_val(a, **options), exact[..., 0], **near)
    larger, smaller, x, y, *second = np.moveaxis(vekcv.eigen_vals_vecs(a, **options), 2, 0)
    np.testing.assert_allclose(np.stack([smaller, larger], -1), exact, **near)
    # The matrix stretches the first vector by the larger eigenvalue.
    np.testing.assert_allclose([xx * x + xy * y, xy * x + yy * y], [larger * x, larger * y], **near)
    np.testing.assert_allclose(x * x + y * y, 1, rtol=0, atol=1e-6)
    np.testing.assert_array_equal(second, [-y, x])


@pytest.mark.parametrize("dtype", ["i4", "f4"])
@pytest.mark.parametrize("connectivity", [4, 8])
@pytest.mark.parametrize("border", [1, 2, 7])
def test_find_peaks3x3(dtype, connectivity, border):
    a, footprint = image(dtype, (14, 40)), {4: CROSS, 8: SQUARE}[connectivity]
    a[3:6, 5:20] = 900  # a plateau
    top, bottom = (a == function(a, footprint=footprint)
                   for function in (ndimage.maximum_filter, ndimage.minimum_filter))
    inner = np.pad(np.ones((14 - 2 * border, 40 - 2 * border), bool), border)
    for threshold in (0, 899):
        expected = np.argwhere(inner & (top & (a > threshold) | bottom & (a < -threshold)))[:, ::-1].astype("i4")
        options = {"connectivity": connectivity, "border": border}
        assert_same(vekcv.find_peaks3x3(inset(a), threshold, **options), expected)
        for most in (1, 4, 10 ** 9):
            assert_same(vekcv.find_peaks3x3(a, threshold, most, **options), expected[:most])
    if (connectivity, border) == (8, 1):
        assert_same(vekcv.find_peaks3x3(a, 899), expected)


def votes_of(a, rho, theta):
    """How many pixels x cos + y sin puts into each cell, for the angles of the rows of the result."""
    y, x = np.nonzero(a)
    return lambda line: np.count_nonzero(
        np.abs(x * math.cos(line[1]) + y * math.sin(line[1]) - line[0]) < rho / 2 + 1e-3)


def drawing():
    """Row 20, column 33, and few other pixels."""
    a = (np.random.default_rng(3).random((50, 70)) < 0.02).astype("u1")
    a[20], a[:, 33] = 255, 3
    return a


@pytest.mark.parametrize("rho, theta", [(1, math.pi / 180), (2, math.pi / 60)])
def test_hough_line(rho, theta):
    a, threshold = drawing(), 12
    lines, votes = vekcv.hough_line(inset(a), rho, theta, threshold), votes_of(a, rho, theta)
    assert lines.dtype == "f4" and len(lines) > 3
    np.testing.assert_allclose(lines[:2], [(20, math.pi / 2), (33, 0)], atol=rho / 2 + 0.01)
    counts = [votes(line) for line in lines]
    assert min(counts) >= threshold and counts[:2] == sorted(counts, reverse=True)[:2]
    assert_same(vekcv.hough_line(a, rho, theta, threshold, 2), lines[:2])
    for low, high, column in [(-10, 25, 0), (0.3, 2, 1)]:
        options = {("rho_range", "theta_range")[column]: (low, high)}
        found = vekcv.hough_line(a, rho, theta, threshold, **options)
        assert len(found) and ((found[:, column] >= low) & (found[:, column] <= high)).all()
        assert_same(found[0], lines[0])  # the longest line lies in both ranges
    assert not len(vekcv.hough_line(a, rho, theta, threshold, rho_range=(1e9, 2e9)))


@pytest.mark.parametrize("dtype", ["u1", "u2", "f4"])
@pytest.mark.parametrize("channels", [(), (3,), (1,)], ids=["C1", "C3", "C1 of three axes"])
def test_sample_line(dtype, channels):
    """The pixels next to the line; no line of these has one that is in the middle of two."""
    a = image(dtype, (30, 41, *channels))
    ends = np.random.default_rng(2).integers(0, (41, 30), (80, 2, 2))
    odd = np.abs(ends[:, 0] - ends[:, 1]).max(1) % 2 == 1
    for start, end in [((0, 0), (29, 29)), ((7, 29), (7, 0)), ((5, 5), (5, 5)), ((40, 3), (0, 3)), *ends[odd].tolist()]:
        count = max(abs(end[0] - start[0]), abs(end[1] - start[1])) + 1
        x, y = np.rint(np.linspace(start, end, count)).astype(int).T
        assert_same(vekcv.sample_line(inset(a), start, end), a[y, x])
