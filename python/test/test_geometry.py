"""Lenses, copies between pixels and super-resolution, against the formulas of the manual in doubles and scipy."""
import numpy as np
import pytest
from scipy import ndimage
from support import assert_rounded, assert_same, by_channel, guards_intact, image, inset, refuses

import vekcv


def places_of(size, fx, fy, cx, cy, k1=0, k2=0, p1=0, p2=0):
    """The column and the row that each pixel of the result comes from."""
    y, x = np.indices(size[::-1])
    u, v = (x - cx) / fx, (y - cy) / fy
    r2 = u * u + v * v
    radial = 1 + k1 * r2 + k2 * r2 * r2
    return (cx + fx * (u * radial + 2 * p1 * u * v + p2 * (r2 + 2 * u * u)),
            cy + fy * (v * radial + 2 * p2 * u * v + p1 * (r2 + 2 * v * v)))


@pytest.mark.parametrize("lens", [(0, 0, 0, 0), (-0.25, 0.05, 0, 0), (1e-3, 0, 0.01, -0.002), (0, 0, 0, 0.3)], ids=str)
@pytest.mark.parametrize("size", [(1, 1), (61, 17), [7, 4]], ids=str)
def test_maps_of_lenses(lens, size):
    parameters = 401.5, -390, 30.25, 9, *lens
    for result, exact in zip(vekcv.create_map_camera_undistort(size, *parameters), places_of(size, *parameters)):
        assert_rounded(result, exact, "f4", 100)


@pytest.mark.parametrize("dtype", ["u1", "u2", "f4"])
@pytest.mark.parametrize("channels", [(), (3,)], ids=str)
@pytest.mark.parametrize("lens", [(60, 55, 31.5, 20.25, -0.2, 0.03), (60, 60, 40, 20, 0.3), (60, 60, 40, 20)], ids=str)
def test_undistort_radial(dtype, channels, lens):
    a = image(dtype, (41, 77, *channels))
    x, y = places_of((77, 41), *lens)
    written = (x >= 0) & (x < 76) & (y >= 0) & (y < 40)
    assert written.mean() > 0.5
    exact = by_channel(lambda plane: ndimage.map_coordinates(plane.astype("f8"), (y, x), order=1, mode="nearest"), a)
    out = np.full_like(a, 3)
    assert vekcv.undistort_radial(a, *lens, out=out) is out
    assert_rounded(out[written], exact[written], dtype, 50 * np.abs(exact).max(), 1 if dtype == "u1" else 20)
    assert (out[~written] == 3).all()
    np.full_like(a, 7)  # what was in memory before shall not show in a result that is made
    assert_same(vekcv.undistort_radial(a, *lens), np.where(out == 3, out.dtype.type(0), out) if dtype == "f4" else
                np.where(written if a.ndim == 2 else written[..., None], out, 0).astype(dtype))


PAIRS = [("u1", "u1"), ("u1", "u2"), ("u1", "f4"), ("u2", "u2"), ("u2", "f4"), ("f4", "f4")]
every_pair = pytest.mark.parametrize("dtype, result", PAIRS)


def assert_between(made, a, columns, rows, dtype, scale=0):
    """Between the pixels by columns and rows; each of four weights of 14 bits may be off by one."""
    exact = ndimage.map_coordinates(a.astype("f8"), np.meshgrid(rows, columns, indexing="ij"), order=1, mode="nearest")
    assert_rounded(made, exact * 2.0 ** -scale, dtype, None, 0.5 + np.abs(exact).max() * 2.0 ** (-12 - scale))


@every_pair
@pytest.mark.parametrize("dx, dy", [(0, 0), (0.25, 0.5), (0.1, 0.9), (-0.3, 7.7)])
def test_copies_between_pixels(dtype, result, dx, dy):
    for shape in [(2, 2), (9, 70)]:
        a = image(dtype, shape)
        made = vekcv.copy_subpix(inset(a), dx, dy, dtype=result)
        assert_between(made, a, np.arange(shape[1] - 1) + dx % 1, np.arange(shape[0] - 1) + dy % 1, result)
        out = np.empty_like(made)
        assert vekcv.copy_subpix(a, dx, dy, out=out) is out
        assert_same(out, made)
    assert_same(vekcv.copy_subpix(a, dx, dy), vekcv.copy_subpix(a, dx, dy, dtype=dtype))
    assert_same(vekcv.copy_subpix(a, dx, dy, out=out[:1].copy()), out[:1])


@pytest.mark.parametrize("scale", [-8, -3, 1, 3])
def test_scaled_copies(scale):
    a = image("u1", (9, 70))
    assert_between(vekcv.copy_subpix(a, 0.3, 0.6, scale, "u2"), a, np.arange(69) + 0.3, np.arange(8) + 0.6, "u2", scale)
    patch, _, _ = vekcv.copy_subpix_intersect(a, (5, 4), (20.25, 4.5), scale, "u2")
    assert_between(patch, a, np.arange(5) + 18.25, np.arange(4) + 3, "u2", scale)


@every_pair
@pytest.mark.parametrize("size", [(5, 3), (4, 6), (1, 1)], ids=str)
@pytest.mark.parametrize("point", [(9, 5), (7.25, 4.5), (0, 0.25), (19, 11), (40, -30)], ids=str)
def test_patches(dtype, result, size, point):
    a = image(dtype, (12, 20))
    patch, least, most = vekcv.copy_subpix_intersect(inset(a), size, point, dtype=result)
    columns, rows = (place - (count - 1) / 2 + np.arange(count) for place, count in zip(point, size))
    assert_between(patch, a, columns, rows, result)
    for low, high, places, length in zip(least, most, (columns, rows), (20, 12)):
        if -1 < places[0] and places[-1] < length:  # those with own pixels on both sides
            inside = np.flatnonzero((places >= 0) & (np.floor(places) <= length - 2))
            assert (low, high) == ((inside[0], inside[-1]) if len(inside) else (0, -1))
    assert_same(vekcv.copy_subpix_intersect(a, size, point)[0],
                vekcv.copy_subpix_intersect(a, size, point, dtype=dtype)[0])


COUNT = 500


class Samples:
    """Random samples of blocks anywhere in an image that is part of a larger array."""

    def __init__(self, side):
        random = np.random.default_rng(side)
        self.side, self.table = side, random.standard_normal((7, side, side)).astype("f4")
        self.image = inset(random.standard_normal((20, 30)).astype("f4"))
        self.step = self.image.strides[0] // 4
        places = random.integers(0, (20 - side + 1, 30 - side + 1), (COUNT, 2))
        places[0], places[-1] = (20 - side, 30 - side), (0, 0)
        self.offsets, self.psf_index = places @ (self.step, 1), random.integers(0, 7, COUNT)
        rows, columns = np.indices((side, side))
        self.rows, self.columns = places[:, :1, None] + rows, places[:, 1:, None] + columns


@pytest.mark.parametrize("side", [2, 3])
def test_super_resolution(side):
    samples, random = Samples(side), np.random.default_rng(1)
    resolution, kernels = vekcv.SuperResolution(samples.table), samples.table[samples.psf_index].astype("f8")
    for dtype in ("u1", "u2"):
        values = image(dtype, (COUNT,))
        exact = (samples.image[samples.rows, samples.columns] * kernels).sum((1, 2)) - values
        assert_rounded(resolution.residual(samples.image, values, samples.offsets, samples.psf_index), exact, "f4")
    residual, weight_index = random.standard_normal(COUNT).astype("f4"), random.integers(0, 5, COUNT)
    weights, expected = random.standard_normal(5).astype("f4"), samples.image.astype("f8")
    np.add.at(expected, (samples.rows, samples.columns), kernels * (weights[weight_index] * residual)[:, None, None])
    arguments = samples.offsets, samples.psf_index, residual, weight_index, weights
    assert resolution.update_gradient(samples.image, *arguments) is None
    assert_rounded(samples.image, expected, "f4")
    assert guards_intact(samples.image)


@pytest.mark.parametrize("side", [2, 3])
def test_samples_outside(side):
    samples = Samples(side)
    resolution, step, inside = vekcv.SuperResolution(samples.table), samples.step, samples.image
    one, last = np.zeros(1, "u1"), (20 - side) * step + 30 - side
    for call in (lambda image_, *where: resolution.residual(image_, one, *where),
                 lambda image_, *where: resolution.update_gradient(image_, *where, [1.0], [0], [1.0])):
        call(inside, [last], [6])
        for offset in (-1, last + 1, 2 ** 32):
            refuses((ValueError, f"offsets has numbers outside of 0 to {last}"), call, inside, [offset], [0])
        for offset in (31 - side, 30, step - 1):
            refuses((ValueError, "offsets has blocks that leave the image on the right"), call, inside, [offset], [0])
        for entry in (-1, 7):
            refuses((ValueError, "psf_index has numbers outside of 0 to 6"), call, inside, [0], [entry])
        for wrong in ([0, 0], [0.0], 0):
            refuses((ValueError, "offsets must be 1 whole numbers"), call, inside, wrong, [0])
            refuses((ValueError, "psf_index must be 1 whole numbers"), call, inside, [0], wrong)
        for small in (inside[:side - 1], inside[:1][::-1], inside[:, :side - 1]):
            refuses((ValueError, "the image has the shape"), call, small, [0], [0])
        for wrong in (inside[::-1], inside[:, ::2], inside.T):
            refuses((ValueError, ""), call, wrong, [0], [0])
        refuses((TypeError, "has the dtype float64, and float32 is needed"), call, inside.astype("f8"), [0], [0])
