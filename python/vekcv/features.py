"""Lists of points and lines in images."""
import numpy

from vekcv._arguments import choice, size_of, work_buffer
from vekcv._call import form
from vekcv._documented import documented
from vekcv._forms import Forms, exports, function
from vekcv._types import Array, Point

__all__ = ["fast_arctan", "find_peaks3x3", "hough_line", "sample_line"]

_peaks = Forms("find_peaks3x3", exports("vekiFindPeaks3x3", "vekiFindPeaks3x3GetBufferSize"))


@documented("vekiFindPeaks3x3_32f_C1R")
def find_peaks3x3(a: Array, threshold: float, max_count: int | None = None, connectivity: int = 8,
                  border: int = 1) -> Array:
    """The positions (x, y) of the pixels that are extrema among 4 or 8 neighbours and farther from 0 than a threshold,
    as rows of an array; at most max_count, and all by default."""
    export, query = _peaks[form(a)]
    norm = choice("connectivity", {4: 0, 8: 1}, connectivity)
    buffer = work_buffer(query(a.shape[1]))
    room = a.size if max_count is None else max_count
    peaks = numpy.empty((max(min(room, a.size), 0), 2), numpy.int32)
    count = export(a, threshold, peaks, len(peaks), norm, border, buffer)
    return peaks[:count].copy()


@documented("vekiHoughLine_8u32f_C1R")
def hough_line(a: Array, rho: float, theta: float, threshold: int, max_count: int = 1000,
               rho_range: tuple[float, float] | None = None, theta_range: tuple[float, float] | None = None) -> Array:
    """Straight lines through the pixels that are not 0, as rows (rho, theta), those with the most votes first. rho and
    theta are the distances between cells; ranges limit the lines that are looked for."""
    if form(a) != form(numpy.empty((1, 1), numpy.uint8)):
        raise TypeError("hough_line takes uint8 with 1 channel")
    # Where the image has no pixel, and where the number of lines is below 1, the library says so.
    buffer = work_buffer(function("vekiHoughLineGetSize_8u_C1R")(size_of(a), rho, theta, max_count))
    lines = numpy.empty((max(max_count, 1), 2), numpy.float32)
    if rho_range is None and theta_range is None:
        count = function("vekiHoughLine_8u32f_C1R")(a, rho, theta, threshold, lines, max_count, buffer)
    else:
        everywhere = -numpy.inf, numpy.inf
        count = function("vekiHoughLine_Region_8u32f_C1R")(
            a, rho, theta, threshold, *(rho_range or everywhere), *(theta_range or everywhere), lines, max_count,
            buffer)
    return lines[:count].copy()


_sample = Forms("sample_line", exports("vekiSampleLine"))


@documented("vekiSampleLine_8u_C1R")
def sample_line(a: Array, start: Point, end: Point) -> Array:
    """The pixels along a line, one row of channels for each; for images of one channel one number."""
    export = _sample[form(a)]
    count = max(abs(end[0] - start[0]), abs(end[1] - start[1])) + 1
    # Lines that leave the image are refused, and longer than it is none in it.
    samples = numpy.empty((min(count, max(a.shape[:2])), *a.shape[2:]), a.dtype)
    export(a, samples, start, end)
    return samples


@documented("vekibFastArctan_32f")
def fast_arctan(y: Array, x: Array, out: Array | None = None) -> Array:
    """Angles of vectors in degrees, at most 0.15 off; float32 arrays of any equal shape."""
    if x.shape != y.shape:
        raise ValueError(f"x has the shape {x.shape}, and y has {y.shape}")
    if out is None:
        out = numpy.empty(y.shape, numpy.float32)
    elif out.shape != y.shape:
        raise ValueError(f"out has the shape {out.shape}, and {y.shape} is needed")
    function("vekibFastArctan_32f")(y, x, out, y.size)
    return out
