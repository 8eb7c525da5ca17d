"""Integral images, in two passes over the pixels. The first gives the last row and the last column of each block's own
table. Added up from block to block they are those of the whole table, and the second pass adds to each own table the
row above it and the column to the left of it."""
import math
import operator

import dask.array
import numpy
from dask.base import tokenize
from dask.highlevelgraph import HighLevelGraph

from vekcv._forms import function
from vekcv.dask._images import block_key, image, packed, sample

# A sum of more white pixels does not fit the 32 bits in which blocks of tables of floats are summed.
_MOST_PIXELS_FOR_FLOATS = 2**24


def integral(a, value=0, dtype=numpy.int32) -> dask.array.Array:
    """vekcv.integral of dask arrays. Tables of floats are exact sums, rounded once: up to 2^24 as in vekcv, and beyond,
    where that rounds every step, closer to the sums."""
    return _tables(a, (value,), (dtype,))[0]


def sqr_integral(a, value=0, square_value=0, dtype=numpy.int32, square_dtype=numpy.float64
                 ) -> tuple[dask.array.Array, dask.array.Array]:
    """vekcv.sqr_integral of dask arrays: the table of the pixels, as integral makes it, and that of their squares."""
    return _tables(a, (value, square_value), (dtype, square_dtype))


_INTEGER, _SINGLE, _DOUBLE = map(numpy.dtype, (numpy.int32, numpy.float32, numpy.float64))
# The exports that make the tables of a block, by the dtypes of the results. Sums in floats come from exact ones.
_EXPORTS = {
    (_INTEGER,): "vekiIntegral_8u32s_C1R", (_SINGLE,): "vekiIntegral_8u32s_C1R",
    (_INTEGER, _DOUBLE): "vekiSqrIntegral_8u32s64f_C1R", (_SINGLE, _DOUBLE): "vekiSqrIntegral_8u32s64f_C1R",
    (_INTEGER, _INTEGER): "vekiSqrIntegral_8u32s_C1R",
}


def _tables(a, values, dtypes):
    a, dtypes = image(a), tuple(map(numpy.dtype, dtypes))
    if dtypes not in _EXPORTS:
        given, choices = (", ".join(" and ".join(each.name for each in key) for key in keys) for keys in (
            [dtypes], [key for key in _EXPORTS if len(key) == len(dtypes)]))
        raise TypeError(f"tables are {choices}; not {given}")
    _own_tables(sample(a), dtypes)
    if _SINGLE in dtypes and math.prod(map(max, a.chunks)) > _MOST_PIXELS_FOR_FLOATS:
        a = a.rechunk("auto", block_size_limit=_MOST_PIXELS_FOR_FLOATS)
    values = tuple(_constant(value, dtype) for value, dtype in zip(values, dtypes))

    name = f"integral-{tokenize(a, values, dtypes)}"
    ends, edges, tables = "ends-" + name, "edges-" + name, "tables-" + name
    layer = {}
    for row, column in numpy.ndindex(a.numblocks):
        block = block_key(a, row, column)
        before = [(edges, row - 1, column) if row else None, (edges, row, column - 1) if column else None]
        layer[ends, row, column] = (_ends, block, dtypes)
        layer[edges, row, column] = (_edges, (ends, row, column), *before, values)
        layer[tables, row, column] = (_whole_tables, block, *before, values, dtypes)
    graph = HighLevelGraph.from_collections(tables, layer, [a])

    chunks = tuple((sizes[0] + 1, *sizes[1:]) for sizes in a.chunks)
    results = []
    for index, dtype in enumerate(dtypes):
        table = f"{name}-{index}"
        layer = {(table, *place): (operator.getitem, (tables, *place), index) for place in numpy.ndindex(a.numblocks)}
        whole = HighLevelGraph({**graph.layers, table: layer}, {**graph.dependencies, table: {tables}})
        results.append(dask.array.Array(whole, table, chunks, dtype=dtype))
    return tuple(results)


def _constant(value, dtype):
    """The constant of a table, as an array of one element of the type in which sums are carried: modulo 2^32 for
    integers, and else in double, where they are exact."""
    if dtype == _INTEGER and not -2**31 <= operator.index(value) < 2**31:
        raise OverflowError(f"the constant {value} is no 32-bit integer")
    return numpy.array([value], dtype).astype(_carried(dtype))


def _carried(dtype):
    return numpy.dtype(numpy.uint32) if dtype == _INTEGER else _DOUBLE


def _own_tables(block, dtypes):
    """The tables of a block alone, which begin with 0, with elements in which they can be added to others."""
    block = packed(block)
    shape = block.shape[0] + 1, block.shape[1] + 1
    made = [numpy.empty(shape, numpy.int32 if dtype == _SINGLE else dtype) for dtype in dtypes]
    function(_EXPORTS[dtypes])(block, *made, *[0] * len(made))
    return [table.view(numpy.uint32) if table.dtype == _INTEGER else table for table in made]


def _ends(block, dtypes):
    """The last row and the last column of each of the block's own tables."""
    return [(table[-1].astype(_carried(dtype)), table[:, -1].astype(_carried(dtype)))
            for table, dtype in zip(_own_tables(block, dtypes), dtypes)]


def _before(above, left, values, index, shape):
    """The row above a block and the column to the left of it in one of the whole tables, which begin with constants."""
    row = above[index][0] if above else numpy.repeat(values[index], shape[1])
    column = left[index][1] if left else numpy.repeat(values[index], shape[0])
    return row, column


def _edges(ends, above, left, values):
    """The last row and the last column of a block in the whole tables."""
    result = []
    for index, (last_row, last_column) in enumerate(ends):
        row, column = _before(above, left, values, index, (len(last_column), len(last_row)))
        result.append((last_row + row + (column[-1:] - column[:1]), last_column + column + (row[-1:] - row[:1])))
    return result


def _whole_tables(block, above, left, values, dtypes):
    """The block's part of the whole tables. The row above and the column to the left belong to the blocks there, and to
    this one where there are none."""
    result = []
    for index, (table, dtype) in enumerate(zip(_own_tables(block, dtypes), dtypes)):
        row, column = _before(above, left, values, index, table.shape)
        table = numpy.add(table, row, out=table if table.dtype == row.dtype else None)
        table += (column - column[:1])[:, None]
        table = table.view(dtype) if dtype == _INTEGER else table.astype(dtype, copy=False)
        result.append(table[1 if above else 0:, 1 if left else 0:])
    return result
