"""Numbers of an image, as delayed values: sums, norms and extrema. Each block gives a partial result; those of integers
are exact, and so is what they are joined to."""
import functools
import math
import warnings

import dask
import numpy
from dask.base import tokenize
from dask.delayed import Delayed
from dask.highlevelgraph import HighLevelGraph

import vekcv
from vekcv.dask._images import block_key, image, like, packed, sample

_JOINED_AT_A_TIME = 16


def moments(a, mask=None, channel=None) -> Delayed:
    """A tuple: the number of the pixels that take part, their sum and the sum of their squares; integers where the
    pixels are. Arguments are those of vekcv.mean_std_dev."""
    return _moments(tuple, a, mask, channel)


def mean(a, mask=None, channel=None) -> Delayed:
    """The mean of the pixels that take part; 0 without any. Arguments are those of vekcv.mean_std_dev."""
    return _moments(_mean, a, mask, channel)


def mean_std_dev(a, mask=None, channel=None) -> Delayed:
    """vekcv.mean_std_dev of dask arrays."""
    return _moments(_mean_std_dev, a, mask, channel)


def norm(a, norm="l2", mask=None, channel=None) -> Delayed:
    """vekcv.norm of dask arrays."""
    return _norm(functools.partial(_root, norm), (vekcv.norm,), norm, mask, channel, a)


def norm_diff(a, b, norm="l2", mask=None, channel=None) -> Delayed:
    """vekcv.norm_diff of dask arrays."""
    return _norm(functools.partial(_root, norm), (vekcv.norm_diff,), norm, mask, channel, a, b)


def norm_rel(a, b, norm="l2", mask=None, channel=None) -> Delayed:
    """vekcv.norm_rel of dask arrays."""
    return _norm(functools.partial(_quotient, norm), (vekcv.norm_diff, _norm_of_second), norm, mask, channel, a, b)


def min_max_indx(a, mask=None, channel=None) -> Delayed:
    """vekcv.min_max_indx of dask arrays."""
    a, mask = images = _images([a], mask)
    vekcv.min_max_indx(*_samples(images), channel=channel)
    tops, lefts = (numpy.cumsum((0, *chunks)).tolist() for chunks in a.chunks[:2])
    return _reduction(
        "min_max_indx", lambda row, column: functools.partial(_extrema_of_block, channel, lefts[column], tops[row]),
        _first_extrema, tuple, images)


# ---- graphs ---------------------------------------------------------------------------------------------------------

def _images(arrays, mask):
    """The images of a call and its mask, with the same chunks."""
    first = image(arrays[0])
    return [first, *(like(b, first, "b") for b in arrays[1:]), None if mask is None else like(mask, first, "mask")]


def _samples(images):
    """Pixels on which an operation is tried, so that it refuses wrong arguments at once."""
    return [each if each is None else sample(each) for each in images]


def _reduction(name, of_block, joined, finished, images):
    """What is finished from all that is joined from the blocks; of_block makes the function of a block from its row and
    column among them."""
    name = f"{name}-{tokenize(name, finished, of_block(0, 0), *images)}"
    arrays = [each for each in images if each is not None]
    layer, keys = {}, []
    for place in numpy.ndindex(arrays[0].numblocks[:2]):
        keys.append(("block-" + name, *place))
        layer[keys[-1]] = (of_block(*place), *(each if each is None else block_key(each, *place) for each in images))
    while len(keys) > 1:
        groups = [keys[first:first + _JOINED_AT_A_TIME] for first in range(0, len(keys), _JOINED_AT_A_TIME)]
        keys = [("joined-" + name, len(keys), index) for index in range(len(groups))]
        layer.update({key: (joined, group) for key, group in zip(keys, groups)})
    layer[name] = (finished, keys[0])
    return Delayed(name, HighLevelGraph.from_collections(name, layer, dask.optimize(*arrays)))


def _moments(finished, a, mask, channel):
    images = _images([a], mask)
    vekcv.mean_std_dev(*_samples(images), channel=channel)
    return _reduction("moments", lambda *_: functools.partial(_moments_of_block, channel), _sums, finished, images)


def _norm(finished, operations, norm, mask, channel, *arrays):
    images = _images(arrays, mask)
    for operation in operations:
        operation(*_samples(images[:-1]), norm=norm, mask=_samples(images)[-1], channel=channel)
    return _reduction("norm", lambda *_: functools.partial(_norms_of_block, operations, norm, channel),
                      _greatest if norm == "inf" else _sums, finished, images)


# ---- blocks ---------------------------------------------------------------------------------------------------------

def _parts(*images):
    """The images in parts whose sums of squares are so small that they follow from a mean and a deviation, or a norm.

    A sum Q of squares of integers below 2^48 is the integer next to n (deviation^2 + mean^2), and to norm^2: on the way
    there at most nine numbers of Q or less are rounded, by 2^-53 of it each, which is less than 0.3 in all. Floats have
    no exact sums, and need no parts."""
    images = [each if each is None else packed(each) for each in images]
    height, width = images[0].shape[:2]
    rows, columns = height, width
    if images[0].dtype.kind in "iu":
        limits = numpy.iinfo(images[0].dtype)
        pixels = 2**48 // (int(limits.max) - int(limits.min)) ** 2
        columns = min(width, pixels)
        rows = pixels // columns
    for y in range(0, height, rows):
        for x in range(0, width, columns):
            yield [each if each is None else each[y:y + rows, x:x + columns] for each in images]


def _number(dtype):
    """What makes a number of a computed sum."""
    return round if dtype.kind in "iu" else float


def _moments_of_block(channel, a, mask):
    number, result = _number(a.dtype), (0, 0, 0)
    for part, part_of_mask in _parts(a, mask):
        count = part.shape[0] * part.shape[1] if mask is None else int(numpy.count_nonzero(part_of_mask))
        average, deviation = vekcv.mean_std_dev(part, mask=part_of_mask, channel=channel)
        squares = count * (deviation * deviation + average * average)
        result = _sums([result, (count, number(count * average), number(squares))])
    return result


def _norms_of_block(operations, norm, channel, *images):
    """The norms of a block by several operations; of L2 norms the squares."""
    number, join = _number(images[0].dtype), _greatest if norm == "inf" else _sums
    result = (0,) * len(operations)
    for *parts, mask in _parts(*images):
        norms = [operation(*parts, norm=norm, mask=mask, channel=channel) for operation in operations]
        result = join([result, [number(each * each if norm == "l2" else each) for each in norms]])
    return result


def _norm_of_second(_, b, **arguments):
    return vekcv.norm(b, **arguments)


def _extrema_of_block(channel, left, top, a, mask):
    mask = mask if mask is None else packed(mask)
    least, greatest, *places = vekcv.min_max_indx(packed(a), mask=mask, channel=channel)
    return least, greatest, *((x, y) if (x, y) == (-1, -1) else (x + left, y + top) for x, y in places)


# ---- what partial results are joined to -----------------------------------------------------------------------------

def _sums(parts):
    return tuple(map(sum, zip(*parts)))


def _greatest(parts):
    return tuple(map(max, zip(*parts)))


def _first_extrema(parts):
    """Of equal values those in the topmost row, and there the leftmost one. A block without pixels that take part has
    none."""
    found = [part for part in parts if part[2] != (-1, -1)] or parts[:1]
    least = min(found, key=lambda part: (part[0], part[2][::-1]))
    greatest = min(found, key=lambda part: (-part[1], part[3][::-1]))
    return least[0], greatest[1], least[2], greatest[3]


# ---- results, in double as the library computes them ----------------------------------------------------------------

def _mean(sums):
    count, total, _ = sums
    return float(total) / count if count else 0.0


def _mean_std_dev(sums):
    count, _, squares = sums
    average = _mean(sums)
    return average, math.sqrt(abs(float(squares) / count - average * average)) if count else 0.0


def _root(norm, totals):
    return math.sqrt(totals[0]) if norm == "l2" else float(totals[0])


def _quotient(norm, totals):
    difference, second = (_root(norm, [total]) for total in totals)
    if second == 0:
        warnings.warn("norm_rel: the norm of b is 0", vekcv.Warning)
        return math.inf if difference > 0 else math.nan
    return difference / second
