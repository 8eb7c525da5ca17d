"""Haar classifiers against a plain evaluation of their features, and how far they may read."""
import numpy as np
import pytest
from support import assert_same, inset, refuses

import vekcv

POSITIONS = 20, 33  # rows and columns of windows


def upright(x, y, w, h):
    """The corners A, B, C and D of a rectangle."""
    return (x + w, y + h), (x, y + h), (x + w, y), (x, y)


def tilted(x, y, w, h):
    return (x + w - h, y + w + h), (x - h, y + h), (x + w, y + w), (x, y)


# Those of features that are tilted later, by type and orientation.
CORNERS = {
    ("f4", True): tilted,
    ("f4", False): lambda x, y, w, h: ((x, y + h), (x - h, y), (x + w, y + h - w), (x + w - h, y - w)),
    ("i4", True): lambda x, y, w, h: ((x, y + 2 * w), (x - w, y + w), (x + w, y + w), (x, y)),
    ("i4", False): lambda x, y, w, h: ((x, y + h), (x - w, y + h - w), (x + w, y + h - w), (x, y + h - 2 * w)),
}
# The type of the classifier, that of the integral images, and the factor of mixed integer responses.
every_form = pytest.mark.parametrize("dtype, table, scale", [("f4", "f4", 0), ("f4", "i4", 0), ("i4", "i4", 0),
                                                             ("i4", "i4", -3)], ids=str)
orientations = pytest.mark.parametrize("orientation", [True, False])
COUNTS = np.array((2, 3, 1, 2, 4, 2, 3))
# Corners, tilted or not, lie to the right of the first column and below the first row.
RECTANGLES = np.random.default_rng(1).integers((5, 9, 1, 1), (9, 13, 5, 5), (COUNTS.sum(), 4))
# Small whole numbers, whose sums are exact in every type; weights, thresholds and values.
WEIGHTS, *EACH = (np.random.default_rng(seed).integers(-9, 10, count)
                  for seed, count in enumerate((len(RECTANGLES), 7, 7, 7)))
TABLE, TILTED_TABLE = (np.random.default_rng(seed).integers(-99, 100, (60, 73)) for seed in (5, 6))
NORM = np.random.default_rng(7).integers(1, 200, POSITIONS)


def classifier_of(dtype, **options):
    return vekcv.HaarClassifier(RECTANGLES, *(numbers.astype(dtype) for numbers in (WEIGHTS, *EACH)), COUNTS, **options)


def sums(corners, is_tilted=COUNTS < 0, scale=0):
    """The sums of the values of all features at all positions: tilted features read the other table, a pixel on."""
    total, ends = np.zeros(POSITIONS, int), COUNTS.cumsum()
    for rectangles, weights, turned, threshold, below, above in zip(
            np.split(RECTANGLES, ends), np.split(WEIGHTS, ends), is_tilted, *EACH):
        response = np.zeros(POSITIONS, int)
        for rectangle, weight in zip(rectangles, weights):
            a, b, c, d = ((TILTED_TABLE if turned else TABLE)[y + turned:, x + turned:][:POSITIONS[0], :POSITIONS[1]]
                          for x, y in (CORNERS[corners] if turned else upright if corners else tilted)(*rectangle))
            response += weight * (a - b - c + d)
        total += np.where(threshold * NORM > response * 2 ** (-scale if any(is_tilted) else 0), below, above)
    return total


def check(classifier, dtype, table, expected, *tilted_table, **options):
    """Applies a classifier with thresholds that some, all and none of the positions pass."""
    mask = np.random.default_rng(8).choice(np.array([0, 1, 255], "u1"), POSITIONS)
    for threshold in (int(np.median(expected)), expected.min(), expected.max() + 1):
        marked = inset(mask)
        passed = classifier.apply(inset(TABLE.astype(table)), NORM.astype(dtype), marked, int(threshold), *tilted_table,
                                  **options)
        wanted = np.where(expected >= threshold, mask, 0).astype("u1")
        assert_same(marked.copy(), wanted)
        assert passed == np.count_nonzero(wanted)


@pytest.mark.parametrize("dtype, table", [("f4", "f4"), ("f4", "i4"), ("i4", "i4")])
@pytest.mark.parametrize("is_tilted", [False, True], ids=["upright", "tilted"])
def test_stages(dtype, table, is_tilted):
    with classifier_of(dtype, tilted=is_tilted) as classifier:
        places = np.array([(tilted if is_tilted else upright)(*rectangle) for rectangle in RECTANGLES])
        assert classifier.size == (places[:, 2, 0].max(), places[:, 0, 1].max())
        check(classifier, dtype, table, sums(None if is_tilted else "upright"))


@every_form
@orientations
def test_mixed_stages(dtype, table, scale, orientation):
    is_tilted = np.array([1, 0, 1, 1, 0, 0, 1], bool)
    options = {"scale_factor": scale} if dtype == "i4" else {}
    with classifier_of(dtype) as classifier:
        classifier.tilt(is_tilted * 3, orientation)
        check(classifier, dtype, table, sums((dtype, orientation), is_tilted, scale),
              inset(TILTED_TABLE.astype(table)), **options)
        refuses(".*the classifier has tilted features already", classifier.tilt, is_tilted)


def test_cascade():
    """Stages on real sums: positions that fail one are left out by the next; a window of light above dark passes."""
    a = np.zeros((40, 60), "u1")
    a[10:14, 20:28] = 250
    table, deviation = vekcv.integral(a), np.full((33, 53), 1, "f4")
    mask, values = np.ones(deviation.shape, "u1"), [np.array([value], "f4") for value in (30, 0, 1)]
    both = vekcv.HaarClassifier([[0, 0, 8, 4], [0, 4, 8, 4]], [0.005, -0.005], *values, [2])
    passed = both.apply(table, deviation, mask, 0.5)
    light = np.lib.stride_tricks.sliding_window_view(a.astype(int), (8, 8))
    expected = 0.005 * (light[:, :, :4].sum((2, 3)) - light[:, :, 4:].sum((2, 3))) >= 30
    np.testing.assert_array_equal(mask, expected)
    assert mask[10, 20] == 1 and 0 < passed == expected.sum()
    assert both.apply(table, deviation, mask, 2, positive_count=passed) == 0 and not mask.any()
    mask[:] = 1
    single = vekcv.HaarClassifier([[0, 0, 1, 1]], [1], *values, [1])
    assert single.apply(table.astype("f4"), deviation, mask, 9, positive_count=0) == 0 and mask.all()


def table_for(places, rectangles, table, shift=0):
    """The smallest table that all positions of features can be read in."""
    columns, rows = np.array([places(*rectangle) for rectangle in rectangles]).reshape(-1, 2).T
    return np.zeros((POSITIONS[0] + rows.max() + shift, POSITIONS[1] + columns.max() + shift), table)


@every_form
@orientations
def test_sizes_of_tables(dtype, table, scale, orientation):
    norm, mask, classifier = NORM.astype(dtype), np.zeros(POSITIONS, "u1"), classifier_of(dtype)
    integral = table_for(upright, RECTANGLES, table)
    classifier.apply(integral, norm, mask, 0)
    for smaller in (integral[1:], integral[:, 1:]):
        refuses((ValueError, "^integral has the shape"), classifier.apply, smaller, norm, mask, 0)
    refuses((ValueError, r"features has the shape \(6,\); there are 7 of them"), classifier.tilt, np.ones(6))
    classifier.tilt(np.arange(7) > 0, orientation)
    integral = table_for(upright, RECTANGLES[:2], table)
    other = table_for(CORNERS[dtype, orientation], RECTANGLES[2:], table, 1)
    classifier.apply(integral, norm, mask, 0, other, scale_factor=scale)
    for smaller in (other[1:], other[:, 1:]):
        refuses((ValueError, "^tilted_integral has the shape"), classifier.apply, integral, norm, mask, 0, smaller)
    refuses((ValueError, "^integral has the shape"), classifier.apply, integral[:, 1:], norm, mask, 0, other)
    refuses((ValueError, "needs the tilted integral image"), classifier.apply, integral, norm, mask, 0)


ONE = np.ones(1, "f4")


@pytest.mark.parametrize("dtype", ["f4", "i4"])
@orientations
def test_corners_beside_the_image(dtype, orientation):
    """Tilted corners begin a column to the left of the window and a row above it, as tilted integral images do."""
    one, refused = np.ones(1, dtype), 0
    arguments = np.zeros((40, 40), dtype), np.ones((5, 5), dtype), np.ones((5, 5), "u1"), 0, np.zeros((40, 40), dtype)
    for rectangle in np.random.default_rng(1).integers((0, 0, 1, 1), (7, 12, 7, 7), (300, 4)):
        classifier = vekcv.HaarClassifier([rectangle], one, one, one, one, [1])
        classifier.tilt([1], orientation)
        if np.min(CORNERS[dtype, orientation](*rectangle)) >= -1:
            classifier.apply(*arguments)
        else:
            refused += 1
            refuses((ValueError, "features reach to the left of their window"), classifier.apply, *arguments)
    assert 0 < refused < 300


def test_left_corners_of_tilted_classifiers():
    def build(rectangle):
        return vekcv.HaarClassifier([rectangle], ONE, ONE, ONE, ONE, [1], tilted=True)

    arguments = np.zeros((40, 40), "f4"), np.ones((5, 5), "f4"), np.ones((5, 5), "u1"), 0
    assert build((3, 0, 1, 3)).apply(*arguments) == 25
    refuses((ValueError, "features reach to the left"), build((2, 0, 1, 3)).apply, *arguments)
    refuses("BadArgument", build, (1, 0, 1, 3))
