"""Haar classifiers, the stages of a cascade."""
import numpy

from vekcv._arguments import check_size, numbers
from vekcv._documented import documented
from vekcv._forms import function
from vekcv._state import State, address_of
from vekcv._types import Array, Size

__all__ = ["HaarClassifier"]


def _upright(x, y, w, h):
    """The columns and rows of the four corners that an upright rectangle is read at."""
    return (x + w, x, x + w, x), (y + h, y + h, y, y)


def _tilted(x, y, w, h):
    return (x + w - h, x - h, x + w, x), (y + w + h, y + h, y + w, y)


# Corners of tilted features, by the type of the classifier and by whether tiltOrientation is not 0.
_CORNERS = {
    ("32f", True): _tilted,
    ("32f", False): lambda x, y, w, h: ((x, x - h, x + w, x + w - h), (y + h, y, y + h - w, y - w)),
    ("32s", True): lambda x, y, w, h: ((x, x - w, x + w, x), (y + 2 * w, y + w, y + w, y)),
    ("32s", False): lambda x, y, w, h: ((x, x - w, x + w, x), (y + h, y + h - w, y + h - w, y + h - 2 * w)),
}
_RESULTS = {("32f", "f"): "32f_C1R", ("32f", "i"): "32s32f_C1R", ("32s", "i"): "32s_C1RSfs"}


@documented("vekiHaarClassifierInitAlloc_32f")
class HaarClassifier(State):
    """A stage: features, each of one or more rectangles (x, y, width, height). Rectangles and weights are those of all
    features one after the other; thresholds, values and counts have one number for each feature. The classifier is one
    of floats, or of integers with weights of int32."""

    def __init__(self, rectangles: Array, weights: Array, thresholds: Array, values_below: Array, values_above: Array,
                 rectangle_counts: Array, tilted: bool = False):
        self._code = "32s" if numpy.asarray(weights).dtype == numpy.int32 else "32f"
        dtype = numpy.int32 if self._code == "32s" else numpy.float32
        counts = numbers("rectangle_counts", rectangle_counts, numpy.int32)
        rectangles = numbers("rectangles", rectangles, numpy.int32)
        values = [numbers(name, each, dtype) for name, each in (
            ("weights", weights), ("thresholds", thresholds), ("values_below", values_below),
            ("values_above", values_above))]
        total = int(numpy.maximum(counts, 0).sum(dtype=numpy.int64))
        if counts.ndim != 1 or rectangles.shape != (total, 4) or total == 0 or values[0].shape != (total,) or any(
                each.shape != counts.shape for each in values[1:]):
            raise ValueError("there must be a rectangle at least, and as many rectangles, weights, thresholds and "
                             "values as the counts say")
        self._rectangles, self._features = rectangles, numpy.repeat(numpy.arange(len(counts)), numpy.maximum(counts, 0))
        self._upright = _reach(_tilted if tilted else _upright, rectangles)
        self._tilted = None
        stem = "vekiTiltedHaarClassifier" if tilted else "vekiHaarClassifier"
        super().__init__("HaarClassifier", f"{stem}InitAlloc_{self._code}", f"vekiHaarClassifierFree_{self._code}",
                         rectangles, *values, counts, len(counts))

    @property
    def size(self) -> Size:
        """The size (width, height) of the window."""
        with self._lock:
            return function(f"vekiGetHaarClassifierSize_{self._code}")(address_of(self.pointer))

    def tilt(self, features: Array, orientation: bool = True):
        """Makes the features tilted ones where the array, one number for each, is not 0; once. After that the
        classifier needs a tilted integral image."""
        chosen = numpy.ascontiguousarray(numpy.asarray(features) != 0, numpy.uint8)
        if chosen.shape != (self._features[-1] + 1,):
            raise ValueError(f"features has the shape {chosen.shape}; there are {self._features[-1] + 1} of them")
        self.call(function(f"vekiTiltHaarFeatures_{self._code}"), chosen, bool(orientation))
        tilts = chosen[self._features] != 0
        self._tilted = _reach(_CORNERS[self._code, bool(orientation)], self._rectangles[tilts])
        self._upright = _reach(_upright, self._rectangles[~tilts])

    def apply(self, integral: Array, norm: Array, mask: Array, threshold: float, tilted_integral: Array | None = None,
              positive_count: int = 1, scale_factor: int = 0) -> int:
        """Clears the mask, in place, at all window positions that do not pass; the number of those that do.
        `positive_count` is what the stage before returned."""
        code = _RESULTS.get((self._code, integral.dtype.char))
        if code is None:
            raise TypeError(f"a classifier of {self._code} takes no integral image of {integral.dtype.name}")
        height, width = norm.shape
        _check_reach("integral", integral, self._upright, width, height, 0)
        behind = (scale_factor,) if "Sfs" in code else ()
        count = numpy.array([positive_count], numpy.int32)
        where = norm, mask, count, threshold
        if self._tilted is None:
            self.call(function(f"vekiApplyHaarClassifier_{code}"), integral, *where, behind=behind)
            return int(count[0])
        if tilted_integral is None:
            raise ValueError("the classifier has tilted features, and needs the tilted integral image")
        _check_reach("tilted_integral", tilted_integral, self._tilted, width, height, 1)
        self.call(function(f"vekiApplyMixedHaarClassifier_{code}"), integral, tilted_integral, *where, behind=behind)
        return int(count[0])


def _reach(corners, rectangles):
    """The least and the greatest columns and rows of the corners of rectangles, from the window's first pixel."""
    if not len(rectangles):
        return 0, 0, 0, 0
    columns, rows = (numpy.stack(each) for each in corners(*rectangles.astype(numpy.int64).T))
    return columns.min(), columns.max(), rows.min(), rows.max()


def _check_reach(name, integral, reach, width, height, shift):
    """Whether all that the windows of so many positions read lies in an integral image."""
    left, right, top, bottom = reach
    if left + shift < 0 or top + shift < 0:
        raise ValueError("features reach to the left of their window or above it, which arrays do not have")
    check_size(name, integral, width + right + shift, height + bottom + shift)
