"""Objects in images, by trained cascades of Haar classifiers."""
import os

import numpy

from vekcv import _cascade_file
from vekcv._arguments import size_of
from vekcv._types import Array
from vekcv.haar import HaarClassifier
from vekcv.statistics import rect_std_dev, sqr_integral, tilted_integral

__all__ = ["Cascade"]

# Tables of so many positions stay in the caches.
_PART = 512, 64
# Deviations are integers, 2 to the power of 12 times as large: from integer tables they are exact.
_DEVIATION_SCALE = 12
_LEAST_SCALE = 1.01
# So many are no objects, and grouping them would take long.
_MOST_WINDOWS = 200000


class Cascade:
    """A trained cascade of boosted stumps on upright and tilted Haar-like features, from a file in one of the common XML
    formats. Its memory is released at the end of a with statement, by close, or with the object."""

    def __init__(self, path: str | os.PathLike):
        self.size, stages = _cascade_file.read(path)
        # Tilted rectangles of cascades hold pairs of pixels one above the other, those of the library side by side.
        self._turned = any(feature.tilted for stage in stages for feature in stage.features)
        self._window = self.size[::-1] if self._turned else self.size
        # Where the second half of a table begins whose columns and rows of odd numbers are behind those of even ones.
        self._halves = [(most + side + 1) // 2 for most, side in zip(_PART, self._window)]
        self._stages = [self._stage(stage, apart=False) for stage in stages]
        self._stages_apart = [] if self._turned else [self._stage(stage, apart=True) for stage in stages]

    def detect(self, gray: Array, scale: float = 1.2, neighbours: int = 3, minimum: int | None = None) -> Array:
        """Rectangles (x, y, width, height) of the objects in an image of uint8 with one channel, from top to bottom, as
        rows of int32.

        Windows of the size of the cascade are tried, and of sizes that grow by the scale, but none with a side below
        the minimum. Where as many as `neighbours` windows pass that nearly agree is an object; with 0, each is one."""
        if not isinstance(gray, numpy.ndarray) or gray.dtype != numpy.uint8 or gray.ndim != 2:
            raise TypeError("gray must be an array of uint8 with two axes")
        if not scale >= _LEAST_SCALE or neighbours < 0:
            raise ValueError(f"scale must be at least {_LEAST_SCALE}, and neighbours at least 0")
        found, count = [numpy.empty((0, 4), numpy.int32)], 0
        for factor, image in _levels(gray.T if self._turned else gray, self._window, scale, minimum or 0):
            # Windows that are moved by a pixel of an image of full size are nearly the same.
            places = self._windows(image, 2 if factor < 2 else 1)
            windows = numpy.concatenate([places, numpy.broadcast_to(self._window, places.shape)], axis=1)
            found.append(numpy.rint(windows * factor).astype(numpy.int32))
            count += len(places)
            if count > _MOST_WINDOWS:
                raise ValueError(f"more than {_MOST_WINDOWS} windows pass the cascade")
        windows = numpy.concatenate(found)
        if self._turned:
            windows = windows[:, [1, 0, 3, 2]]
        windows = _in_order(windows)
        return _grouped(windows, neighbours) if neighbours else windows

    def close(self):
        """Releases the memory; the cascade cannot be used any more."""
        for classifier, _ in self._stages + self._stages_apart:
            classifier.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def _stage(self, stage, apart):
        """A classifier with the threshold of its sum: for integral images, or for such whose phases are apart."""
        counts = [len(feature.rectangles) for feature in stage.features]
        tilted = numpy.array([feature.tilted for feature in stage.features])
        rectangles = numpy.concatenate([feature.rectangles for feature in stage.features])
        rectangles, weights = rectangles[:, :4].astype(numpy.int32), rectangles[:, 4]
        if self._turned:
            x, y, width, height = rectangles.T
            rectangles = numpy.where(numpy.repeat(tilted, counts), [y + height - 1, x - height, width, height],
                                     [y, x, height, width]).T
        if apart:
            # A corner that overtakes its opposite turns the sign of the sum.
            corners = numpy.stack([rectangles[:, :2], rectangles[:, :2] + rectangles[:, 2:]])
            first, last = corners // 2 + corners % 2 * self._halves
            weights = weights * numpy.sign(last - first).prod(axis=1)
            rectangles = numpy.concatenate([numpy.minimum(first, last), abs(last - first)], axis=1)
        # Thresholds are for sums of pixels, of a window with one pixel inside.
        factor = numpy.float32((self._window[0] - 2) * (self._window[1] - 2) / 2**_DEVIATION_SCALE)
        classifier = HaarClassifier(rectangles, weights, stage.thresholds * factor, stage.below, stage.above, counts)
        if tilted.any():
            classifier.tilt(tilted)
        return classifier, stage.threshold

    def _windows(self, image, spacing):
        """Positions (x, y) of the windows that pass: of all in an image, or of every second column and row."""
        width, height = self._window
        across, down = _PART
        found = [numpy.empty((0, 2), int)]
        for y in range(0, image.shape[0] - height + 1, down):
            for x in range(0, image.shape[1] - width + 1, across):
                part = image[y:y + down + height - 1, x:x + across + width - 1]
                found.append(self._scan(part, spacing) + (x, y))
        return numpy.concatenate(found)

    def _scan(self, part, spacing):
        """The positions that pass in a part of an image, which is a window larger than them, less a pixel."""
        width, height = self._window
        sums, squares = sqr_integral(part, square_dtype=numpy.int32)
        # The thresholds of cascades are trained for the deviation of the window without its border.
        norms = rect_std_dev(sums, squares, (1, 1, width - 2, height - 2), -_DEVIATION_SCALE)[:-1, :-1]
        stages, tilted = self._stages, None
        step = spacing
        if self._turned:
            # Below a row that is not used, for tilted rectangles are a row too low.
            tilted = tilted_integral(part)
            tilted = numpy.concatenate([tilted[:1], tilted])
            step = 1
        elif spacing == 2:
            stages, sums = self._stages_apart, self._apart(sums)
        norms = norms[::step, ::step].astype(numpy.float32)
        norms[norms == 0] = 2**_DEVIATION_SCALE
        mask = numpy.zeros(norms.shape, numpy.uint8)
        mask[::spacing // step, ::spacing // step] = 1
        for classifier, threshold in stages:
            if not classifier.apply(sums, norms, mask, threshold, tilted):
                break
        return numpy.argwhere(mask)[:, ::-1] * step

    def _apart(self, table):
        """A table with the columns and rows of odd numbers behind those of even ones."""
        across, down = self._halves
        apart = numpy.zeros((2 * down, 2 * across), table.dtype)
        for y in (0, 1):
            for x in (0, 1):
                phase = table[y::2, x::2]
                apart[y * down:, x * across:][:phase.shape[0], :phase.shape[1]] = phase
        return apart


def _levels(image, window, scale, least):
    """The factors and images of the sizes at which windows are looked for."""
    largest, halvings, factor = numpy.ascontiguousarray(image), 1, 1.0
    while True:
        size = [round(side / factor) for side in size_of(image)]
        if size[0] < window[0] or size[1] < window[1]:
            return
        if round(factor * min(window)) >= least:
            # Halves of halves, so that every pixel has its part in what is shrunk to less than a half.
            while factor / halvings >= 2:
                largest = _shrunk(largest, [(side + 1) // 2 for side in size_of(largest)])
                halvings *= 2
            yield factor, largest if factor == 1 else _shrunk(largest, size)
        factor *= scale


def _shrunk(image, size):
    """An image at a smaller size: between the four nearest pixels, in proportion to the distances."""
    (left, right, across), (top, bottom, down) = map(_places, size, size_of(image))
    down = down.astype(numpy.uint16)[:, None]
    sums = image[top] * (256 - down) + image[bottom] * down
    across = across.astype(numpy.uint32)
    sums = sums.take(left, axis=1) * (256 - across) + sums.take(right, axis=1) * across
    sums += 1 << 15
    return (sums >> 16).astype(numpy.uint8)


def _places(count, source_count):
    """The pixels before and behind those of a row that is shrunk, and the weights of the latter, of 8 bits."""
    middles = ((numpy.arange(count) + 0.5) * (source_count / count) - 0.5).clip(0, source_count - 1)
    first = middles.astype(int)
    return first, numpy.minimum(first + 1, source_count - 1), numpy.rint((middles - first) * 256)


def _in_order(windows):
    """From top to bottom, and from left to right."""
    x, y, width, height = windows.T
    return windows[numpy.lexsort((height, width, x, y))]


def _edges(windows):
    """Left, top, right and bottom edges, and how far edges of the same object may be from them."""
    places, sizes = windows[:, :2], windows[:, 2:]
    return numpy.concatenate([places, places + sizes], axis=1), 0.2 * sizes.mean(axis=1)


def _groups(windows):
    """The number of the group that each window belongs to. Windows whose edges all differ by at most a fifth of their
    sides belong together, also by way of others."""
    edges, tolerances = _edges(windows)
    tops = edges[:, 1]
    firsts, lasts = numpy.searchsorted(tops, [tops - tolerances, tops + tolerances + 1]).tolist()
    groups = numpy.full(len(windows), -1)
    for seed in range(len(windows)):
        if groups[seed] >= 0:
            continue
        groups[seed], waiting = seed, [seed]
        while waiting:
            window = waiting.pop()
            near = firsts[window] + numpy.flatnonzero(groups[firsts[window]:lasts[window]] < 0)
            if len(near):
                most = numpy.minimum(tolerances[near], tolerances[window])
                near = near[abs(edges[near] - edges[window]).max(axis=1) <= most]
                groups[near] = seed
                waiting.extend(near.tolist())
    return numpy.unique(groups, return_inverse=True)[1]


def _grouped(windows, least):
    """The means of groups of so many windows at least, but for those that lie within one of more."""
    groups = _groups(windows)
    counts = numpy.bincount(groups)
    sums = numpy.stack([numpy.bincount(groups, column) for column in windows.T], axis=1)
    objects = numpy.rint(sums / counts[:, None]).astype(numpy.int32)[counts >= least]
    counts = counts[counts >= least]
    edges, tolerances = _edges(objects)
    outer = edges + [-1, -1, 1, 1] * tolerances[:, None]
    within = [((edge[:2] >= outer[counts > count, :2]) & (edge[2:] <= outer[counts > count, 2:])).all(axis=1).any()
              for edge, count in zip(edges, counts)]
    return _in_order(objects[~numpy.array(within, bool)])
