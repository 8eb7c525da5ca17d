"""Images as dask arrays, and their blocks as the library takes them."""
import math

import dask.array
import numpy


def image(a, name="a"):
    """An array of rows and columns, perhaps with channels. Its chunks have all channels, and none is empty."""
    a = dask.array.asarray(a)
    if a.ndim not in (2, 3):
        raise ValueError(f"{name} has {a.ndim} axes; an image has two, rows and columns, or three, the last of which "
                         "are channels")
    if any(map(math.isnan, a.shape)):
        raise ValueError(f"{name} has chunks of unknown sizes; call its compute_chunk_sizes()")
    if 0 in a.shape:
        raise ValueError(f"{name} has no pixels")
    return a.rechunk((merged(a.chunks[0], 1), merged(a.chunks[1], 1), *a.shape[2:]))


def like(a, other, name):
    """An image with the chunks of another one, whose size it must have."""
    a = image(a, name)
    if a.shape[:2] != other.shape[:2]:
        raise ValueError(f"{name} has {a.shape[1]} x {a.shape[0]} pixels, but a has {other.shape[1]} x "
                         f"{other.shape[0]} (width x height)")
    return a.rechunk((*other.chunks[:2], *a.shape[2:]))


def merged(chunks, least):
    """Sizes of chunks, those below the least one joined to the next ones."""
    result = []
    for size in chunks:
        if result and result[-1] < least:
            result[-1] += size
        else:
            result.append(size)
    if len(result) > 1 and result[-1] < least:
        result[-2:] = [sum(result[-2:])]
    return tuple(result)


def block_key(a, row, column):
    """The key of a block in the graph of an image."""
    return (a.name, row, column, *[0] * (a.ndim - 2))


def sample(a):
    """A single pixel, to see what an operation says to images like this one."""
    return numpy.ones((1, 1, *a.shape[2:]), a.dtype)


def packed(block):
    """The block, or a copy of it where its pixels do not lie side by side or its rows overlap."""
    first = block[:1]
    if first.flags.c_contiguous and (len(block) == 1 or block.strides[0] >= first.nbytes):
        return block
    return numpy.ascontiguousarray(block)
