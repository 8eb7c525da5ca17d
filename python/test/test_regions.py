"""Operations whose results reach across the image, against scipy or the plain algorithm of the manual."""
import numpy as np
import pytest
from scipy import ndimage
from support import assert_rounded, assert_same, image, inset

import vekcv

CROSS, SQUARE = ndimage.generate_binary_structure(2, 1), np.ones((3, 3), bool)
FOOTPRINTS = {4: CROSS, 8: SQUARE}
every_connectivity = pytest.mark.parametrize("connectivity", FOOTPRINTS)
every_shape = pytest.mark.parametrize("shape", [(24, 70), (1, 1), (1, 30), (30, 1)], ids=str)


def blobs(shape, share=0.5, seed=5, size=1.5):
    """A random binary image in which a share of the pixels is set."""
    noise = ndimage.gaussian_filter(np.random.default_rng(seed).standard_normal(shape), size)
    return noise > np.quantile(noise, 1 - share)


@pytest.mark.parametrize("name, grow, bound", [("dilate", ndimage.maximum_filter, np.minimum),
                                               ("erode", ndimage.minimum_filter, np.maximum)], ids=["dilate", "erode"])
@pytest.mark.parametrize("dtype", ["u1", "u2", "f4"])
@every_connectivity
@every_shape
def test_reconstruction(name, grow, bound, dtype, connectivity, shape):
    a = image(dtype, shape)
    for marker in (image(dtype, shape, 2), np.where(blobs(shape, 0.02), a, 0 if name == "dilate" else a.max())):
        grown, expected = bound(marker, a), None
        while expected is None or (grown != expected).any():
            # Beyond the image lies the nearest pixel, which is among the neighbours already.
            expected, grown = grown, bound(grow(grown, footprint=FOOTPRINTS[connectivity], mode="nearest"), a)
        assert getattr(vekcv, f"morph_reconstruct_{name}")(a, marker, connectivity) is None
        np.testing.assert_array_equal(marker, expected)


@every_shape
@pytest.mark.parametrize("share", [0.5, 0.999])
def test_true_distance_transform(shape, share):
    a = image("u1", shape) | 1
    a[~blobs(shape, share)] = a.flat[-1] = 0
    assert_rounded(vekcv.true_distance_transform(a), ndimage.distance_transform_edt(a), "f4", 100)


@pytest.mark.parametrize("radius", [0, 3.5, np.inf])
def test_fast_marching(radius):
    """The front moves with about unit speed to both sides, known pixels have negative times as far as the radius."""
    y, x = np.ogrid[:40, :50]
    unknown = (x - 24) ** 2 + (y - 19) ** 2 < 150
    times = vekcv.fast_marching(inset(unknown * np.uint8(9)), radius)
    inside, outside = ndimage.distance_transform_edt(unknown), ndimage.distance_transform_edt(~unknown) - 1
    assert times.dtype == "f4" and np.abs(times - inside)[unknown].max() < 0.6
    near, far = ~unknown & (outside < radius - 1), ~unknown & (outside > radius + 1)
    assert not near.any() or np.abs(times + outside)[near].max() < 0.9
    assert not times[far].any() and far.any() == (radius < np.inf)
    line = vekcv.fast_marching(np.array([[0, 0, 0, 9, 9, 9, 9]], "u1"), 10)
    np.testing.assert_allclose(line, [[-2, -1, -1e-10, 1, 2, 3, 4]], rtol=1e-6)


WEIGHTS = {
    (3, "inf"): ((1, 1), (1, 1)), (3, "l1"): ((1, 2), (1, 2)), (3, "l2"): ((2, 3), (0.955, 1.3693)),
    (5, "inf"): ((1, 1, 2), (1, 1, 2)), (5, "l1"): ((1, 2, 3), (1, 2, 3)), (5, "l2"): ((5, 7, 11), (1, 1.4, 2.1969)),
}


def chamfer(a, weights):
    """The shortest ways to a pixel that is 0, by steps of all weights from pixel to pixel."""
    distance = np.where(a, np.inf, 0)
    steps = [(y, x, weights[{1: 0, 2: 1, 5: 2}[x * x + y * y]]) for y in range(-2, 3) for x in range(-2, 3)
             if x * x + y * y in (1, 2, 5)[:len(weights)]]
    while True:
        around = np.pad(distance, 2, constant_values=np.inf)
        shorter = np.minimum.reduce([distance, *(weight + around[2 + y:2 + y + len(a), 2 + x:2 + x + a.shape[1]]
                                                 for y, x, weight in steps)])
        if (shorter == distance).all():
            return distance
        distance = shorter


@pytest.mark.parametrize("dtype, largest", [("u1", 255), ("u2", 65535), ("f4", np.finfo("f4").max)])
@pytest.mark.parametrize("aperture, norm", WEIGHTS)
def test_distance_transform(dtype, largest, aperture, norm):
    weights = WEIGHTS[aperture, norm][dtype == "f4"]
    assert_same(vekcv.get_distance_transform_mask(aperture, norm, "f4" if dtype == "f4" else "i4"),
                np.array(weights, "f4" if dtype == "f4" else "i4"))
    a = (np.random.default_rng(4).random((13, 33)) > 0.02) * np.uint8(7)
    exact = chamfer(a, weights)
    result = vekcv.distance_transform(inset(a), norm, aperture, dtype=dtype)
    assert_rounded(result, exact, dtype)
    out = np.empty(a.shape, dtype)
    assert vekcv.distance_transform(a, norm, aperture, out=out) is out
    assert_same(out, result)
    given = np.multiply(WEIGHTS[aperture, "l2"][0], 10)
    assert_rounded(vekcv.distance_transform(a, norm, aperture, given, dtype), chamfer(a, given), dtype)
    assert (vekcv.distance_transform(np.ones((5, 6), "u1"), norm, aperture, dtype=dtype) == largest).all()
    if dtype == "u1":
        assert vekcv.distance_transform(a, norm, aperture, out=a) is a
        assert_same(a, result)


def test_distance_transform_by_default():
    a = image("u1", (9, 30)) // 200
    assert_same(vekcv.distance_transform(a), vekcv.distance_transform(a, "l2", 3, (0.955, 1.3693), "f4"))
    assert_same(vekcv.get_distance_transform_mask(), vekcv.get_distance_transform_mask(3, "l2", "f4"))


@pytest.mark.parametrize("method", ["telea", "contrast"])
@pytest.mark.parametrize("channels", [(), (3,)], ids=["C1", "C3"])
def test_inpainting(method, channels):
    """Smooth images are restored from their surroundings, and what is known stays."""
    mask = np.eye(26, 37, dtype="u1")
    mask[4:8, 3:11], mask[12, 5:30], mask[18:26, 33:37] = 255, 1, 9
    a = np.rint(127 + np.indices((26, 37, *channels)).sum(0) * 2).astype("u1")
    result = vekcv.inpaint(inset(np.where(mask[(...,) + (None,) * len(channels)], 0, a)), inset(mask), 4, method)
    assert_same(result[mask == 0], a[mask == 0])
    assert np.abs(result.astype(int) - a).max() < 20
    with vekcv.Inpainter(mask, 4, method, len(channels) and 3 or 1) as inpainter:
        assert_same(inpainter(255 - a), vekcv.inpaint(255 - a, mask, 4, method))
        assert inpainter(a, a) is a
        assert_same(a, result)


def test_methods_radii_and_distances_of_inpainting():
    """A single pixel: one method gives no weight to the pixels beside the way that the front came, from above on the
    left, the other one looks at distances only."""
    a, mask = np.full((3, 3), 100, "u1"), np.zeros((3, 3), "u1")
    a[0, 2] = a[2, 0] = 200
    mask[1, 1] = 1
    restored = [vekcv.inpaint(a, mask, radius, method)[1, 1]
                for method, radius in [("telea", 1.5), ("contrast", 1.5), ("contrast", 1.2)]]
    assert restored == [100, 108, 100]
    assert_same(vekcv.inpaint(a, mask, 1.5), vekcv.inpaint(a, mask, 1.5, "telea"))
    # Where all distances are equal the front came from nowhere.
    flat = vekcv.Inpainter(mask, 1.5, distance=np.ones((3, 3), "f4"))
    assert flat(a)[1, 1] == 0
    assert_same(vekcv.inpaint(a, np.zeros_like(a)), a)
    assert_same(vekcv.inpaint(a, np.ones_like(a)), np.zeros_like(a))


@pytest.mark.parametrize("dtype", ["u1", "u2"])
@pytest.mark.parametrize("first, last", [(1, None), (7, 7), (3, 9)])
@every_connectivity
@every_shape
def test_label_markers(dtype, first, last, connectivity, shape):
    markers = (blobs(shape, size=1) * (image(dtype, shape) | 1)).astype(dtype)
    regions, count = ndimage.label(markers, FOOTPRINTS[connectivity])
    # In the order of the first pixels.
    values, places = np.unique(regions[regions > 0], return_index=True)
    order = np.zeros(count + 1, int)
    order[values[np.argsort(places)]] = np.arange(count)
    labels = (last or np.iinfo(dtype).max - 1) - first + 1
    expected = np.where(regions > 0, first + order[regions] % labels, 0).astype(dtype)
    assert vekcv.label_markers(markers, connectivity, min_label=first, max_label=last) == count
    assert_same(markers, expected)


@pytest.mark.parametrize("dtype, columns", [("u1", 300), ("u2", 70000)])
def test_labels_begin_again(dtype, columns):
    markers = np.zeros((1, 2 * columns), dtype)
    markers[:, ::2] = 1
    assert vekcv.label_markers(markers) == columns
    np.testing.assert_array_equal(markers[0, ::2], 1 + np.arange(columns) % (np.iinfo(dtype).max - 1))


def bounded(markers, border, connectivity):
    """Marks in raster order where one of the neighbours visited before is of another segment."""
    result = np.pad(markers.astype(int), 1, constant_values=border)
    for y, x in np.argwhere(np.ones(markers.shape)) + 1:
        before = [(-1, 0), (0, -1)] if connectivity == 4 else [(-1, -1), (-1, 0), (-1, 1), (0, -1)]
        if any(result[y + j, x + i] not in (result[y, x], border) for j, i in before):
            result[y, x] = border
    return result[1:-1, 1:-1].astype(markers.dtype)


@pytest.mark.parametrize("dtype, border", [("u1", 0), ("u1", 255), ("u2", 65535), ("u2", 2)])
@every_connectivity
@every_shape
def test_bound_segments(dtype, border, connectivity, shape):
    markers = ndimage.label(blobs(shape))[0].astype(dtype)
    expected = bounded(markers, border, connectivity)
    assert vekcv.bound_segments(markers, border, connectivity) is None
    assert_same(markers, expected)


ROWS, COLUMNS = np.indices((30, 48))
CELLS = 1 + ROWS // 10 * 4 + COLUMNS // 12
SEEDS = np.where((ROWS % 10 == 5) & (COLUMNS % 12 == 6), CELLS, 0)


@pytest.mark.parametrize("dtype", ["u1", "u2"])
@pytest.mark.parametrize("light_is_low", [False, True])
@every_connectivity
def test_segment_watershed(dtype, light_is_low, connectivity):
    ridge = (ROWS % 10 > 7) | (COLUMNS % 12 > 9)
    a = np.where(ridge, 200, image("u1", CELLS.shape) // 8).astype("u1")
    expected = ndimage.watershed_ift(a, SEEDS.astype("i2"), FOOTPRINTS[connectivity])
    markers, light = SEEDS.astype(dtype), 255 - a if light_is_low else a
    assert vekcv.segment_watershed(light, markers, connectivity, light_is_low=light_is_low) is None
    assert (markers[~ridge] == expected[~ridge]).all() and (markers[~ridge] == CELLS[~ridge]).all() and markers.all()
    for boundaries in (True, 2, "yes"):  # any value that is true draws boundaries, and nothing else
        drawn = SEEDS.astype(dtype)
        vekcv.segment_watershed(light, drawn, connectivity, boundaries, light_is_low)
        assert_same(drawn, bounded(markers, np.iinfo(dtype).max, connectivity))


@pytest.mark.parametrize("channels", [(), (3,)], ids=str)
@pytest.mark.parametrize("boundaries", [0, 4, 8])
@every_connectivity
def test_segment_gradient(channels, boundaries, connectivity):
    """Cells of one colour with holes between them that come last, and grow to where they are alike."""
    a = np.broadcast_to((CELLS * 19)[(...,) + (None,) * len(channels)], (*CELLS.shape, *channels)).astype("u1")
    markers, expected = SEEDS.astype("u1"), CELLS.astype("u1")
    if boundaries:
        expected = bounded(expected, 255, boundaries)
    assert vekcv.segment_gradient(a, markers, connectivity, boundaries) is None
    assert_same(markers, expected)
