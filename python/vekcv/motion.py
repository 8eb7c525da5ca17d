"""Foreground and optical flow."""
import contextlib
from typing import NamedTuple

import numpy

from vekcv._arguments import check_image, size_of
from vekcv._documented import documented
from vekcv._forms import function, suffix
from vekcv._state import State, address_of
from vekcv._types import Array, DType, Size
from vekcv.pyramids import Pyramid
from vekcv.raw import ffi

__all__ = ["Flow", "ForegroundGaussian", "ForegroundHistogram", "OpticalFlow", "optical_flow_pyr_lk"]


class _Model(State):
    """A model of the background that is learned from frames of uint8 with 1 or 3 channels."""

    stem = ""

    def __init__(self, frame):
        check_image("frame", frame)
        stem = f"veki{self.stem}"
        self._types = suffix(stem, frame.dtype, frame.shape[2] if frame.ndim == 3 else 1)
        # Reserved: neither of the functions reads it, and it must not be null.
        parameters = ffi.new(f"{self.stem}Parameters*")
        super().__init__(f"{self.stem}State", f"{stem}InitAlloc{self._types}", f"{stem}Free{self._types}",
                         before=(frame, address_of(parameters)))

    @property
    def fields(self):
        """The fields of the model, as a cffi pointer to its structure: those that the manual names may be changed."""
        return self.pointer

    def _export(self, operation=""):
        return function(f"veki{self.stem}{operation}{self._types}")


@documented("vekiForegroundGaussian_8u_C1R")
class ForegroundGaussian(_Model):
    """Moving objects before a background that is learned from a first frame on, by Gaussian mixtures."""

    stem = "ForegroundGaussian"

    def __init__(self, frame: Array):
        super().__init__(frame)

    def apply(self, frame: Array, foreground: Array | None = None,
              background: Array | None = None) -> tuple[Array, Array]:
        """Learns a frame; its foreground, 255 or 0, and the background."""
        background, foreground = self.call(self._export(), frame, background, foreground)
        return foreground, background


@documented("vekiForegroundHistogram_8u_C1R")
class ForegroundHistogram(_Model):
    """Moving objects before a background that is learned from a first frame on, by histograms of each pixel."""

    stem = "ForegroundHistogram"

    def __init__(self, frame: Array):
        super().__init__(frame)

    def classify(self, frame: Array, out: Array | None = None) -> Array:
        """The foreground of a frame, 255 or 0, which the model does not learn."""
        return self.call(self._export(), frame, out)

    def update(self, frame: Array, foreground: Array, background: Array | None = None) -> Array:
        """Learns a frame with the mask of its foreground; the background."""
        if background is None:
            background = numpy.empty(frame.shape, frame.dtype)
        self.call(self._export("Update"), frame, foreground, background)
        return background

    def apply(self, frame: Array, foreground: Array | None = None,
              background: Array | None = None) -> tuple[Array, Array]:
        """Learns a frame; its foreground, 255 or 0, and the background."""
        foreground = self.classify(frame, foreground)
        return foreground, self.update(frame, foreground, background)


class Flow(NamedTuple):
    """Where points went: their places (x, y), whether they were found, and mean differences of their windows."""
    points: Array
    found: Array
    error: Array


@documented("vekiOpticalFlowPyrLK_8u_C1R")
class OpticalFlow(State):
    """Follows points from image to image, in windows of one size; images are of one dtype and up to a size."""

    def __init__(self, size: Size, window: int = 21, dtype: DType = numpy.uint8):
        self.window, self.dtype = window, numpy.dtype(dtype)
        stem = "vekiOpticalFlowPyrLK"
        types = suffix(stem, dtype, 1)
        self._export = function(stem + types)
        super().__init__("OpticalFlowState", f"{stem}InitAlloc{types}", f"{stem}Free{types}", size, window)

    def __call__(self, previous: Pyramid, following: Pyramid, points: Array, guesses: Array | None = None,
                 max_level: int | None = None, max_iterations: int = 20, threshold: float = 0.03) -> Flow:
        """Where points (x, y) of the base of one pyramid are in another one; guesses are their own places by
        default."""
        levels = min(len(previous), len(following))
        used = levels if max_level is None else min(levels, max_level + 1)
        for pyramid in (previous, following):
            for level in range(used):
                if pyramid[level].ndim != 2 or pyramid[level].dtype != self.dtype:
                    raise TypeError(f"level {level} of a pyramid is no image of {self.dtype.name} with one channel")
        points = _points("points", points)
        places = points.copy() if guesses is None else _points("guesses", guesses).copy()
        if places.shape != points.shape:
            raise ValueError(f"guesses has the shape {places.shape}, and points has {points.shape}")
        found, error = numpy.empty(len(points), numpy.int8), numpy.empty(len(points), numpy.float32)
        # No record may be released meanwhile. All threads take them in one order, so that none waits for another.
        with contextlib.ExitStack() as records:
            for record in sorted((previous, following), key=id):
                records.enter_context(record.held())
            self.call(self._export, address_of(previous.pointer), address_of(following.pointer), points, places, found,
                      error, len(points), self.window, levels - 1 if max_level is None else max_level, max_iterations,
                      threshold)
        return Flow(places, found.astype(bool), error)


def _points(name, points):
    points = numpy.ascontiguousarray(points, numpy.float32)
    if points.ndim != 2 or points.shape[1] != 2:
        raise ValueError(f"{name} has the shape {points.shape}; points are rows (x, y)")
    return points


@documented("vekiOpticalFlowPyrLK_8u_C1R")
def optical_flow_pyr_lk(previous: Array, following: Array, points: Array, guesses: Array | None = None,
                        window: int = 21, levels: int = 3, max_iterations: int = 20, threshold: float = 0.03) -> Flow:
    """Where points (x, y) of an image are in another one, with so many levels above the images. For sequences take an
    OpticalFlow, whose pyramids serve twice."""
    with (Pyramid.of(previous, levels) as first, Pyramid.of(following, levels) as second,
          OpticalFlow(size_of(previous), window, previous.dtype) as flow):
        return flow(first, second, points, guesses, None, max_iterations, threshold)
