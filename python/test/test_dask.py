"""vekcv.dask against one call of vekcv on the whole image, which must give the same bits."""
import itertools
import math

import dask
import dask.array
import numpy
import pytest
from support import BORDERS, assert_same, image, mask_of, refuses

import vekcv
import vekcv.dask
from vekcv.dask import integrals, operations

SHAPE = HEIGHT, WIDTH = 29, 41
# Blocks in both directions; smaller than windows; a single row and a single column of them; very different ones; one.
CHUNKINGS = [(10, 13), (3, 11), (29, 12), (8, 41), ((1, 9, 19), (20, 1, 20)), (29, 41)]
HEIGHTS = numpy.where(numpy.random.default_rng(4).random((3, 5)) < 0.6, 3.0, -numpy.inf)
MASK = numpy.random.default_rng(3).random((5, 3)) < 0.5
MASK[4, 0] = True


@pytest.fixture(autouse=True, scope="module")
def synchronous():
    with dask.config.set(scheduler="synchronous"):
        yield


def blocks(a, chunks=(10, 13)):
    return dask.array.from_array(a, chunks=(*chunks, *a.shape[2:]))


# Operations with dtypes and channels of images, how many of them, and the arguments that each is called with.
BORDERED = [{"border": border, "border_value": 77, "aperture": aperture} for border in BORDERS for aperture in (3, 5)]
ONE, COLOURS = [("u1", ()), ("f4", ())], [(dtype, channels) for dtype in ("u1", "f4") for channels in ((), (3,), (4,))]
CASES = [
    *((name, ONE, 1, BORDERED) for name, reach in operations.REACHES.items()
      if reach is operations._aperture and "scharr" not in name),
    *((name, ONE, 1, [{"border": border} for border in BORDERS])
      for name in ("filter_scharr_horiz", "filter_scharr_vert")),
    ("filter_sobel_vert", ONE[:1], 1, [{"dtype": "i1"}]),
    ("filter_gauss", ONE[1:], 1, [{"kernel_size": size, "sigma": 2.5, "border": border, "border_value": 50}
                                  for size in (3, 31) for border in BORDERS]),
    *((name, COLOURS, 1, [{"size": size, "anchor": anchor} for size, anchor in [
        ((3, 3), None), ((4, 2), None), ((1, 6), (0, 5)), ((7, 9), (6, 1)), ((60, 35), (50, 3))]])
      for name in ("filter_min", "filter_max")),
    *((name, ONE, 1, [{"aperture": 3, "window": 5}, {"aperture": 5, "window": 3}, {"window": 5, "kernel": "scharr"}])
      for name in ("min_eigen_val", "eigen_vals_vecs")),
    *((name, COLOURS, 1, [{"element": MASK, "anchor": (0, 3)}, {"element": (3, 2), "anchor": (2, 0)}]) for name in (
        "dilate", "erode", "morph_open", "morph_close", "morph_top_hat", "morph_black_hat", "morph_gradient")),
    *((name, ONE, 1, [{"element": HEIGHTS}]) for name in ("gray_dilate", "gray_erode")),
    ("abs_diff", [*ONE, ("u1", (3,)), ("u2", ())], 2, [{}]), ("abs_diff_c", [*ONE, ("u2", ())], 1, [{"value": 100}]),
    ("gradient_color_to_gray", [("u1", (3,)), ("f4", (3,))], 1, [{"norm": norm} for norm in ("inf", "l1", "l2")]),
    ("blend", ONE[1:], 2, [{"alpha": 0.3}]),
]


@pytest.mark.parametrize("name, forms, count, calls", CASES, ids=[case[0] for case in CASES])
def test_operations(name, forms, count, calls):
    """Dtype and shape must be right before they are computed. Every call meets two chunkings, in turn."""
    chunkings = itertools.cycle(CHUNKINGS)
    for (dtype, channels), arguments in itertools.product(forms, calls):
        images = [image(dtype, (*SHAPE, *channels), seed) for seed in range(count)]
        if dtype == "f4" and "morph" not in name:
            images[0][7, 9], images[0][20, 13] = numpy.nan, -0.0
        expected = getattr(vekcv, name)(*images, **arguments)
        for chunks in (next(chunkings), next(chunkings)) if len(calls) > 1 else CHUNKINGS:
            found = getattr(vekcv.dask, name)(*(blocks(each, chunks) for each in images), **arguments)
            assert (found.dtype, found.shape) == (expected.dtype, expected.shape)
            assert_same(found.compute(), expected)


def test_every_operation_has_its_case():
    assert {case[0] for case in CASES} == set(operations.__all__)
    for name in operations.__all__:
        wrapped = getattr(vekcv.dask, name)
        assert wrapped.__name__ == name and getattr(vekcv, name).__doc__ in wrapped.__doc__


@pytest.mark.parametrize("border", BORDERS)
def test_every_rule_with_every_chunking(border):
    a = image("u1", SHAPE)
    for aperture, chunks in itertools.product((3, 5), CHUNKINGS):
        options = {"border": border, "border_value": 200, "aperture": aperture}
        assert_same(vekcv.dask.filter_sobel_cross(blocks(a, chunks), **options).compute(),
                    vekcv.filter_sobel_cross(a, **options))


@pytest.mark.parametrize("view, whole", [
    (blocks(image("u1", SHAPE)).T, image("u1", SHAPE).T), (blocks(image("u1", SHAPE))[::-1], image("u1", SHAPE)[::-1]),
    (blocks(image("u1", (*SHAPE, 3)))[..., 1], image("u1", (*SHAPE, 3))[..., 1]),
    (dask.array.from_array(image("u1", SHAPE), chunks=((0, 10, 0, 19), (41, 0))), image("u1", SHAPE))])
def test_blocks_that_are_not_packed_and_empty_chunks(view, whole):
    whole = whole.copy(order="C")
    colours = image("u1", (*SHAPE, 3))
    assert_same(vekcv.dask.filter_min(dask.array.from_array(colours, chunks=(10, 41, (1, 2))), (3, 5)).compute(),
                vekcv.filter_min(colours, (3, 5)))
    assert_same(vekcv.dask.filter_max(view, (3, 3)).compute(), vekcv.filter_max(whole, (3, 3)))
    assert_same(vekcv.dask.abs_diff(view, whole).compute(), vekcv.abs_diff(whole, whole))
    assert vekcv.dask.mean_std_dev(view).compute() == vekcv.mean_std_dev(whole)
    assert vekcv.dask.min_max_indx(view).compute() == vekcv.min_max_indx(whole)
    assert vekcv.dask.norm(view, "l1", mask=view).compute() == vekcv.norm(whole, "l1", mask=whole)
    assert_same(vekcv.dask.integral(view).compute(), vekcv.integral(whole))


def test_steps_follow_each_other_and_nothing_is_computed_before():
    a, computed = image("u1", SHAPE), []

    def read(block_info=None):
        rows, columns = block_info[None]["array-location"]
        computed.append((rows, columns))
        return a[slice(*rows), slice(*columns)]

    array = dask.array.map_blocks(read, chunks=((10, 10, 9), (20, 21)), dtype=a.dtype, meta=a[:0, :0])
    smooth, whole = vekcv.dask.filter_lowpass(array), vekcv.filter_lowpass(a)
    results = [vekcv.dask.filter_min(smooth, (5, 5)), vekcv.dask.mean_std_dev(smooth), vekcv.dask.integral(smooth)]
    assert not computed
    filtered, sums, table = dask.compute(*results)
    assert len(computed) == 6  # each block once
    assert_same(filtered, vekcv.filter_min(whole, (5, 5)))
    assert sums == vekcv.mean_std_dev(whole)
    assert_same(table, vekcv.integral(whole))


def test_refused_arguments():
    d, a = vekcv.dask, blocks(image("u1", SHAPE))
    for error, function, *arguments in [
            (TypeError, d.filter_gauss, a, 3, 1.0), (TypeError, d.norm, a.astype("i4")),
            (TypeError, d.integral, a, 0, "f8"), (TypeError, d.integral, a.astype("f4")),
            (TypeError, d.integral, a, 0.5),
            (OverflowError, d.integral, a, 2 ** 31), (ValueError, d.filter_lowpass, a, "in_memory"),
            (ValueError, d.filter_lowpass, a, "replicate+top"), (ValueError, d.filter_lowpass, a, "replicate", 4),
            (ValueError, d.filter_min, a, (3, 3), (3, 0)), (ValueError, d.filter_lowpass, a[0]),
            (ValueError, d.filter_lowpass, a[:0]), (ValueError, d.filter_lowpass, a[:, 0][a[:, 0] > 3][:, None]),
            (ValueError, d.abs_diff, a, a[1:]), (ValueError, d.norm_diff, a, a[:, 1:]),
            (ValueError, d.norm, a, "l2", a[1:]), (ValueError, d.norm, a, "l3"),
            (TypeError, d.gray_dilate, a, vekcv.GrayElement(HEIGHTS, (9, 9)))]:
        refuses((error, ""), function, *arguments)
    refuses((TypeError, "out"), d.filter_lowpass, a, out=image("u1", SHAPE))


every_dtype = pytest.mark.parametrize("dtype", ["u1", "i1", "u2", "f4"])


def forms(dtype):
    """Pairs of images with and without channels, and masks, one of which leaves out whole blocks."""
    mask = mask_of(SHAPE)
    mask[:12, :14] = 0
    for channel, mask in itertools.product((None, 0, 2), (None, mask)):
        shape = SHAPE if channel is None else (*SHAPE, 3)
        yield image(dtype, shape), image(dtype, shape, 2), {"mask": mask, "channel": channel}


@every_dtype
def test_numbers(dtype):
    for (a, b, options), chunks in zip(forms(dtype), itertools.cycle(CHUNKINGS)):
        x, y, names = blocks(a, chunks), blocks(b, chunks), ["mean", "mean_std_dev", "min_max_indx"]
        calls = {(name,): (getattr(vekcv.dask, name)(x, **options), getattr(vekcv, name)(a, **options))
                 for name in names}
        for norm in ("inf", "l1", "l2"):
            calls["norm", norm] = vekcv.dask.norm(x, norm, **options), vekcv.norm(a, norm, **options)
            for name in ("norm_diff", "norm_rel"):
                calls[name, norm] = (getattr(vekcv.dask, name)(x, y, norm, **options),
                                     getattr(vekcv, name)(a, b, norm, **options))
        for (name, *norm), (found, expected) in calls.items():
            found = found.compute()
            # Sums of floats depend on their order; extrema do not.
            exact = dtype != "f4" or name == "min_max_indx" or norm == ["inf"]
            assert type(found) is type(expected)
            assert found == (expected if exact else pytest.approx(expected, rel=1e-5)), (name, norm, chunks)
        if dtype != "f4":
            pixels = (a if options["channel"] is None else a[..., options["channel"]]).astype(object)
            pixels = pixels[slice(None) if options["mask"] is None else options["mask"] > 0].ravel()
            moments = vekcv.dask.moments(x, **options).compute()
            assert moments == (pixels.size, pixels.sum(), (pixels * pixels).sum()) and set(map(type, moments)) == {int}


@pytest.mark.parametrize("shape", [(1900, 1900), (2, 2000001)])
def test_sums_of_squares_beyond_53_bits(shape):
    a = numpy.random.default_rng(0).integers(40000, 65535, shape, numpy.uint16, endpoint=True)
    other = numpy.zeros_like(a)
    for step in range(8):  # a sum that is rounded may be right by chance
        a[0, step] = other[0, step] = 40001 + 2 * step
        wide = a.astype(numpy.uint64)
        total, squares = int(wide.sum()), int((wide * wide).sum())
        assert squares > 2**53
        array = dask.array.from_array(a, chunks=-1)
        assert vekcv.dask.moments(array).compute() == (a.size, total, squares)
        assert vekcv.dask.norm(array).compute() == vekcv.norm(a) == math.sqrt(squares)
        assert vekcv.dask.norm_diff(array, other).compute() == vekcv.norm_diff(a, other)


def test_without_pixels_that_take_part():
    a, mask = image("u1", SHAPE), numpy.zeros(SHAPE, "u1")
    array = blocks(a)
    assert vekcv.dask.moments(array, mask).compute() == (0, 0, 0)
    assert vekcv.dask.mean_std_dev(array, mask).compute() == (0, 0) and vekcv.dask.mean(array, mask).compute() == 0
    assert vekcv.dask.min_max_indx(array, mask).compute() == (0, 0, (-1, -1), (-1, -1))
    for b, options, result in [(array, {"mask": mask}, math.nan), (mask, {}, math.inf)]:
        with pytest.warns(vekcv.Warning):
            assert str(vekcv.dask.norm_rel(array, b, **options).compute()) == str(result)


def test_first_of_equal_extrema():
    # Blocks in their order meet (27, 2) before (5, 9), and (3, 12) before (30, 2).
    a = numpy.full(SHAPE, 9, "f4")
    for value, places in {200: [(27, 2), (5, 9), (40, 2)], 1: [(3, 12), (30, 2), (39, 2)]}.items():
        for x, y in places:
            a[y, x] = value
    for dtype, chunks in itertools.product(("u1", "f4"), CHUNKINGS):
        assert vekcv.dask.min_max_indx(blocks(a.astype(dtype), chunks)).compute() == (1, 200, (30, 2), (27, 2))
        nothing = numpy.full(SHAPE, numpy.nan, "f4")
        assert vekcv.dask.min_max_indx(blocks(nothing, chunks)).compute() == (0, 0, (-1, -1), (-1, -1))


@pytest.mark.parametrize("chunks", CHUNKINGS, ids=str)
def test_integrals(chunks):
    a = image("u1", SHAPE)
    for value, dtype in [(0, "i4"), (2**31 - 1000, "i4"), (-2**31, "i4"), (-7.5, "f4")]:
        assert_same(vekcv.dask.integral(blocks(a, chunks), value, dtype).compute(), vekcv.integral(a, value, dtype))
    for dtypes in [("i4", "f8"), ("i4", "i4"), ("f4", "f8")]:
        tables = dask.compute(*vekcv.dask.sqr_integral(blocks(a, chunks), 5, 2**31 - 50, *dtypes))
        for found, expected in zip(tables, vekcv.sqr_integral(a, 5, 2**31 - 50, *dtypes)):
            assert_same(found, expected)


def test_integrals_of_large_images(monkeypatch):
    a = numpy.full((4200, 4100), 255, numpy.uint8)  # the sum wraps
    assert_same(vekcv.dask.integral(blocks(a, (4200, 3000))).compute(), vekcv.integral(a))
    a = image("u1", (500, 600))
    exact = numpy.pad(a.cumsum(0, dtype="f8").cumsum(1), ((1, 0), (1, 0))).astype("f4")  # floats are rounded once
    monkeypatch.setattr(integrals, "_MOST_PIXELS_FOR_FLOATS", 10000)
    table = vekcv.dask.integral(blocks(a, (500, 600)), 0, "f4")
    assert exact[-1, -1] > 2**24 and math.prod(table.chunksize) < 11000
    assert_same(table.compute(), exact)
