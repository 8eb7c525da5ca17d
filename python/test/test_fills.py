"""Flood fill against the regions that scipy labels, and against a region that grows by steps."""
import numpy as np
import pytest
from scipy import ndimage
from support import assert_same, guards_intact, inset

import vekcv

SHAPE = 30, 44
SEEDS = (0, 0), (43, 29), (20, 11), (7, 22)
NEW = {"u1": 200, "u2": 60000, "f4": -7.5}
every_connectivity = pytest.mark.parametrize("connectivity", [4, 8])


def patches(dtype, channels):
    """Regions of nearly equal pixels."""
    random = np.random.default_rng(3)
    coarse = np.kron(random.integers(1, 4, (10, 11, channels or 1)) * 10, np.ones((3, 4, 1), int))
    noisy = coarse + random.integers(0, 3, (*SHAPE, channels or 1))
    made = (noisy / 2 if dtype == "f4" else noisy).astype(dtype)
    return made if channels else made[..., 0]


def region_of(joins, seed, connectivity):
    """The connected region of the pixels that join, with the seed."""
    labels, _ = ndimage.label(joins, ndimage.generate_binary_structure(2, connectivity // 4))
    return labels == labels[seed[::-1]]


def region_by_steps(a, seed, connectivity, below, above):
    """The pixels that are reached by steps between which the values differ little enough."""
    around = np.pad(a.reshape(*SHAPE, -1).astype("f8"), ((1, 1), (1, 1), (0, 0)), constant_values=np.inf)
    reached = np.zeros((SHAPE[0] + 2, SHAPE[1] + 2), bool)
    reached[seed[1] + 1, seed[0] + 1] = True
    steps, count = [(y, x) for y in (-1, 0, 1) for x in (-1, 0, 1) if 0 < abs(x) + abs(y) <= connectivity // 4], 0
    while count < reached.sum():
        count = reached.sum()
        for y, x in steps:
            with np.errstate(invalid="ignore"):
                difference = around - np.roll(around, (y, x), (0, 1))
            reached |= np.roll(reached, (y, x), (0, 1)) & ((-below <= difference) & (difference <= above)).all(2)
    return reached[1:-1, 1:-1]


def check(a, seed, connectivity, region, rule="plain", **options):
    """A fill of a region, and what it tells of it."""
    new = NEW[a.dtype.str[1:]]
    new, filled, expected = [new, new - 1, new - 2] if a.shape[2:] == (3,) else new, inset(a), a.copy()
    component = vekcv.flood_fill(filled, seed, new, rule, connectivity, **options)
    expected[region] = new
    assert_same(filled.copy(), expected)
    assert guards_intact(filled)
    rows, columns = np.nonzero(region)
    box = columns.min(), rows.min(), np.ptp(columns) + 1, np.ptp(rows) + 1
    assert component == (region.sum(), tuple(np.atleast_1d(new)), box)


@pytest.mark.parametrize("dtype", NEW)
@pytest.mark.parametrize("channels", [0, 1, 3], ids=["C1", "C1 of three axes", "C3"])
@every_connectivity
@pytest.mark.parametrize("seed", SEEDS)
def test_fills(dtype, channels, connectivity, seed):
    a = patches(dtype, channels)
    coarse = a // 4  # regions of some size
    joins = (coarse == coarse[seed[::-1]]).reshape(*SHAPE, -1).all(2)
    check(coarse, seed, connectivity, region_of(joins, seed, connectivity))
    value = a[seed[::-1]].astype("f8")
    for below, above in [(2, 1), (0, 2), (0, 0), (12, 0)]:
        deltas = {"min_delta": below, "max_delta": above}
        joins = ((a >= value - below) & (a <= value + above)).reshape(*SHAPE, -1).all(2)
        check(a, seed, connectivity, region_of(joins, seed, connectivity), "range", **deltas)
        check(a, seed, connectivity, region_by_steps(a, seed, connectivity, below, above), "gradient", **deltas)


def test_deltas_of_each_channel():
    a = np.zeros((6, 40, 3), "u1")
    a[...] = np.arange(40)[:, None] * [1, 2, 3]
    for rule, deltas, width in [("range", (9, 9, 9), 4), ("range", (9, 9, 27), 5), ("range", (3, 99, 99), 4),
                                ("gradient", (1, 2, 3), 40), ("gradient", (1, 2, 2), 1)]:
        assert vekcv.flood_fill(a.copy(), (0, 0), (1, 1, 2), rule, max_delta=deltas).rect == (0, 0, width, 6)


def test_defaults():
    a = np.eye(5, dtype="u1")
    assert vekcv.flood_fill(a, (0, 0), 3) == vekcv.Component(5, (3.0,), (0, 0, 5, 5))  # plain, over corners
    assert_same(a, np.eye(5, dtype="u1") * np.uint8(3))
    component = vekcv.flood_fill(a, (1, 0), 9, connectivity=4)
    assert (component.area, component.value, component.rect) == (10, (9.0,), (1, 0, 4, 4))
    for rule, area in [("plain", 0), ("range", 0), ("gradient", 72)]:  # seeds that have the new value
        assert vekcv.flood_fill(np.full((8, 9), 4, "u1"), (3, 3), 4, rule).area == area
