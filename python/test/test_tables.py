"""Integral images, and the deviations of windows that follow from them, against sums and deviations of pixels."""
import numpy as np
import pytest
from numpy.lib.stride_tricks import sliding_window_view
from support import assert_same, image, inset, refuses

import vekcv

every_kind = pytest.mark.parametrize("kind", ["", "tilted_"], ids=["upright", "tilted"])
CONSTANTS = {"i4": 2 ** 31 - 1000, "f4": 7.5, "f8": 0.25}  # with the first one sums wrap, with the others all are exact


def table_of(kind, s, value, dtype):
    """The sums above pixels and to the left of them, or the recursion of the manual for tilted ones."""
    if not kind:
        return (np.pad(s.cumsum(0).cumsum(1), ((1, 0), (1, 0))) + value).astype(dtype)
    table = np.full((s.shape[0] + 2, s.shape[1] + 2), value, "f8")
    for j, row in enumerate(np.pad(s, ((0, 0), (0, 1)))):
        table[j + 2, 1:-1] = table[j + 1, :-2] - table[j, 1:-1] + table[j + 1, 2:] + row[:-1] + row[1:]
        table[j + 2, [0, -1]] = table[j + 1, [1, -2]]
    return (table if dtype[0] == "f" else table.astype("i8")).astype(dtype)


@every_kind
@pytest.mark.parametrize("shape", [(7, 70), (1, 1), (1, 70), (9, 1)], ids=str)
@pytest.mark.parametrize("constant", [False, True], ids=["from 0", "from a constant"])
def test_integrals(kind, shape, constant):
    a = image("u1", shape)
    s = a.astype("i8")
    for dtype in ("i4", "f4"):
        value = CONSTANTS[dtype] * constant
        result = getattr(vekcv, f"{kind}integral")(inset(a), value, dtype)
        assert_same(result, table_of(kind, s, value, dtype))
    for dtypes in (("i4", "f8"), ("f4", "f8"), ("i4", "i4")):
        values = [CONSTANTS[dtype] * constant for dtype in dtypes]
        made = getattr(vekcv, f"{kind}sqr_integral")(a, *values, *dtypes)
        for result, pixels, value, dtype in zip(made, (s, s * s), values, dtypes):
            assert_same(result, table_of(kind, pixels, value, dtype))


@every_kind
def test_integrals_by_default(kind):
    a = image("u1")
    tables = getattr(vekcv, f"{kind}integral")(a), *getattr(vekcv, f"{kind}sqr_integral")(a)
    assert [table.dtype for table in tables] == ["i4", "i4", "f8"]
    assert_same(tables[0], tables[1])


IMAGE = image("u1", (40, 90))
FUNCTIONS = {"": vekcv.rect_std_dev, "tilted_": vekcv.tilted_rect_std_dev}


def tables_of(kind, *dtypes):
    return getattr(vekcv, f"{kind}sqr_integral")(IMAGE, 0, 0, *dtypes)


def deviations(kind, rect):
    """Deviations of the pixels of the window at all positions where it lies inside of the image."""
    x, y, w, h = rect
    if not kind:
        return sliding_window_view(IMAGE, (h, w))[y:, x:].std((2, 3))
    columns, rows = np.array([(x + i - k + beside, y + 1 + i + k) for i in range(w) for k in range(h)
                              for beside in (0, 1)]).T
    shape = IMAGE.shape[0] - rows.max(), IMAGE.shape[1] - (x + w)
    return np.stack([IMAGE[row:row + shape[0], column:column + shape[1]] for row, column in zip(rows, columns)]).std(0)


@every_kind
@pytest.mark.parametrize("dtypes", [("i4", "f8"), ("f4", "f8"), ("i4", "i4")], ids=str)
@pytest.mark.parametrize("rect", [(0, 0, 5, 3), (4, 2, 3, 5), (10, 0, 20, 11)], ids=str)
def test_deviations(kind, dtypes, rect):
    if kind:
        rect = rect[0] + rect[3], *rect[1:]  # the left corner lies in the table
    tables, expected, scale = tables_of(kind, *dtypes), deviations(kind, rect), -6 if dtypes[1] == "i4" else 0
    result = FUNCTIONS[kind](*map(inset, tables), rect, scale)
    assert result.dtype == ("i4" if scale else "f4") and result.shape[0] == expected.shape[0]
    # Tilted windows need a margin of tables, which leaves out positions on the right.
    expected = expected[:, :result.shape[1]]
    assert result.shape == expected.shape and result.shape[1] >= IMAGE.shape[1] - rect[0] - rect[2] - 1
    np.testing.assert_allclose(result * 2.0 ** scale, expected, rtol=2e-3, atol=0.05)
    out = np.empty((len(result) - 3, result.shape[1] - 5), result.dtype)
    assert FUNCTIONS[kind](*tables, rect, scale, out) is out
    assert_same(out, result[:-3, :-5])


@every_kind
def test_windows_that_do_not_fit(kind):
    function, tables, rect = FUNCTIONS[kind], tables_of(kind), (6, 2, 4, 3)
    rows, columns = function(*tables, rect).shape
    assert function(*tables, (6 + columns - 1, 2 + rows - 1, 4, 3)).shape == (1, 1)
    for right, below in [(columns, 0), (0, rows)]:
        refuses((ValueError, "the window does not fit"), function, *tables, (6 + right, 2 + below, 4, 3))
    # Tilted tables have a column more than windows in the image need.
    for shape in [(rows + 1, columns), (rows, columns + (2 if kind else 1))]:
        refuses((ValueError, "^integral has the shape"), function, *tables, rect, out=np.empty(shape, "f4"))
    for smaller in (tables[1][:-1], tables[1][:, :-2 if kind else -1]):
        refuses((ValueError, "square_integral has the shape"), function, tables[0], smaller, rect)
    for wrong in [(-1, 0, 4, 3), (6, -1, 4, 3), (6, 0, 0, 3), (6, 0, 4, 0), (6, 0, 4, -3), (6, 0, -4, 3)]:
        refuses("SizeError", function, *tables, wrong)
