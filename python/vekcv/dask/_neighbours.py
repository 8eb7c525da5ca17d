"""Operations on windows of pixels, block by block."""
import dask.array
import numpy
from dask.base import tokenize
from dask.highlevelgraph import HighLevelGraph

from vekcv.dask._images import block_key, merged, packed

# Where the blocks around a block lie: in rows and in columns.
AROUND = [(y, x) for y in (-1, 0, 1) for x in (-1, 0, 1) if y or x]


def by_blocks(operation, a, reach, periodic, result):
    """An operation that reads pixels as far away as the reach, ((above, below), (left, right)), and makes images like
    the result. Its border rule applies at the edge of the whole image; a periodic one makes blocks at opposite edges
    neighbours."""
    a = a.rechunk({axis: merged(a.chunks[axis], max(1, sum(reach[axis]))) for axis in (0, 1)})
    name = f"{operation.func.__name__}-{tokenize(operation, a, reach)}"
    layer = {}
    for row, column in numpy.ndindex(a.numblocks[:2]):
        around = [_neighbour((row, column), direction, a.numblocks, reach, periodic) for direction in AROUND]
        block = block_key(a, row, column)
        layer["sides-" + name, row, column] = (sides, block, reach)
        layer[name, row, column, *[0] * (result.ndim - 2)] = (
            with_neighbours, operation, reach, block, [place and ("sides-" + name, *place) for place in around])
    graph = HighLevelGraph.from_collections(name, layer, [a])
    return dask.array.Array(graph, name, (*a.chunks[:2], *((count,) for count in result.shape[2:])), meta=result)


def _neighbour(place, direction, counts, reach, periodic):
    """Row and column of the block in a direction; None where there is none, or nothing of it is read."""
    found = []
    for index, step, count, (before, after) in zip(place, direction, counts, reach):
        index += step
        if step and (count == 1 or not (before if step < 0 else after)):
            return None  # the rule itself serves an axis without neighbours, a periodic one too
        if not periodic and not 0 <= index < count:
            return None
        found.append(index % count)
    return tuple(found)


def sides(block, reach):
    """What the blocks around read of a block, by the direction in which they see it; copies, which outlive it."""
    rows, columns = ({-1: slice(size - before, None), 0: slice(None), 1: slice(after)}
                     for size, (before, after) in zip(block.shape, reach))
    return {(y, x): block[rows[y], columns[x]].copy() for y, x in AROUND}


def with_neighbours(operation, reach, block, around):
    """The result for a block, from it and the sides of those around.

    First the operation sees the block alone, and its rule applies on all four sides. Where there is a neighbour, the
    pixels that depend on it are then computed again, from a strip that holds what they read: as far as the reach on the
    outer side of the edge, and as far as the reaches to both sides together on the inner one. This touches less memory
    than a copy of the block with its surroundings. Columns come first, for their strips have no corners: those pixels
    belong to rows, too, whose strips have."""
    block = packed(block)
    pieces = {direction: found[direction] for direction, found in zip(AROUND, around) if found}
    result = operation(block)
    height, width = block.shape[:2]
    (above, below), (left, right) = reach

    if (0, -1) in pieces:
        strip = numpy.concatenate([pieces[0, -1], block[:, :left + right]], 1)
        result[:, :left] = operation(strip)[:, left:2 * left]
    if (0, 1) in pieces:
        strip = numpy.concatenate([block[:, width - left - right:], pieces[0, 1]], 1)
        result[:, width - right:] = operation(strip)[:, left:left + right]

    pieces[0, 0] = block
    columns = [x for x in (-1, 0, 1) if (0, x) in pieces]
    first = pieces[0, -1].shape[1] if -1 in columns else 0
    if (-1, 0) in pieces:
        strip = numpy.concatenate([numpy.concatenate([pieces[-1, x], pieces[0, x][:above + below]])
                                   for x in columns], 1)
        result[:above] = operation(strip)[above:2 * above, first:first + width]
    if (1, 0) in pieces:
        strip = numpy.concatenate([numpy.concatenate([pieces[0, x][height - above - below:], pieces[1, x]])
                                   for x in columns], 1)
        result[height - below:] = operation(strip)[above:above + below, first:first + width]
    return result
