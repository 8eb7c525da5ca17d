"""Means and integral images."""
import numpy

from vekcv._arguments import channel_of_interest, check_size
from vekcv._call import form
from vekcv._documented import documented
from vekcv._forms import Forms, Table, exports, function
from vekcv._types import Array, DType, Rect
from vekcv.operations import mean_std_dev

__all__ = ["integral", "mean", "rect_std_dev", "sqr_integral", "tilted_integral", "tilted_rect_std_dev",
           "tilted_sqr_integral"]

_mean = Table("mean", ["of_channel"], {
    of_channel: Forms("mean", [name for name in exports("vekiMean") if ("C3C" in name) == of_channel])
    for of_channel in (False, True)})


@documented("vekiMean_8u_C1MR")
def mean(a: Array, mask: Array | None = None, channel: int | None = None) -> float:
    """Mean of the pixels, of those where a mask is not 0, or of one channel, which is counted from 0."""
    if mask is None:
        return mean_std_dev(a, None, channel)[0]
    return _mean[channel is not None][form(a)](a, mask, *channel_of_interest(channel))


def _table(a, dtype, border):
    """Memory for an integral image of an image."""
    if not isinstance(a, numpy.ndarray) or a.ndim < 2:
        raise TypeError("a must be an image: an array of two axes")
    return numpy.empty((a.shape[0] + border, a.shape[1] + border), dtype)


def _single(name, a, value, dtype, border):
    made = _table(a, dtype, border)
    code = {"i": "32s", "f": "32f"}.get(made.dtype.char)
    if code is None:
        raise TypeError(f"integral images are int32 or float32, not {made.dtype.name}")
    function(f"veki{name}_8u{code}_C1R")(a, made, value)
    return made


_SQUARES = {"id": "8u32s64f", "fd": "8u32f64f", "ii": "8u32s"}


def _squares(name, a, value, square_value, dtypes, border):
    made = [_table(a, dtype, border) for dtype in dtypes]
    code = _SQUARES.get("".join(each.dtype.char for each in made))
    if code is None:
        raise TypeError("integral images of pixels and squares are int32 and float64, float32 and float64, or int32 "
                        "both")
    function(f"veki{name}_{code}_C1R")(a, *made, value, square_value)
    return tuple(made)


@documented("vekiIntegral_8u32s_C1R")
def integral(a: Array, value: float = 0, dtype: DType = numpy.int32) -> Array:
    """Integral image of int32 or float32, one row and one column larger than the image."""
    return _single("Integral", a, value, dtype, 1)


@documented("vekiTiltedIntegral_8u32s_C1R")
def tilted_integral(a: Array, value: float = 0, dtype: DType = numpy.int32) -> Array:
    """Tilted integral image of int32 or float32, two rows and two columns larger than the image."""
    return _single("TiltedIntegral", a, value, dtype, 2)


@documented("vekiSqrIntegral_8u32s64f_C1R")
def sqr_integral(a: Array, value: float = 0, square_value: float = 0, dtype: DType = numpy.int32,
                 square_dtype: DType = numpy.float64) -> tuple[Array, Array]:
    """Integral images of the pixels and of their squares: int32 or float32, and float64, or int32 both."""
    return _squares("SqrIntegral", a, value, square_value, (dtype, square_dtype), 1)


@documented("vekiTiltedSqrIntegral_8u32s64f_C1R")
def tilted_sqr_integral(a: Array, value: float = 0, square_value: float = 0, dtype: DType = numpy.int32,
                        square_dtype: DType = numpy.float64) -> tuple[Array, Array]:
    """Tilted integral images of the pixels and of their squares: int32 or float32, and float64, or int32 both."""
    return _squares("TiltedSqrIntegral", a, value, square_value, (dtype, square_dtype), 2)


_DEVIATIONS = {"id": "32s32f_C1R", "fd": "32f_C1R", "ii": "32s_C1RSfs"}


def _deviations(name, integral, square_integral, rect, scale_factor, out, reach, margin=0):
    """Deviations of all windows inside of the image, or of as many as the result has pixels. The tables have a margin
    of columns that windows inside of the image do not need."""
    code = _DEVIATIONS.get(integral.dtype.char + square_integral.dtype.char)
    if code is None:
        raise TypeError(f"tables are int32 and float64, float32 and float64, or int32 both; not {integral.dtype.name} "
                        f"and {square_integral.dtype.name}")
    x, y, width, height = rect
    across, down = reach(x, y, width, height)
    if out is None:
        shape = integral.shape[0] - down, integral.shape[1] - across - margin
        if min(shape) < 1:
            raise ValueError("the window does not fit into the integral image")
        out = numpy.empty(shape, numpy.int32 if code == "32s_C1RSfs" else numpy.float32)
    for table, argument in ((integral, "integral"), (square_integral, "square_integral")):
        check_size(argument, table, out.shape[1] + across, out.shape[0] + down)
    scale = (scale_factor,) if code == "32s_C1RSfs" else ()
    function(f"veki{name}_{code}")(integral, square_integral, out, rect, *scale)
    return out


@documented("vekiRectStdDev_32s32f_C1R")
def rect_std_dev(integral: Array, square_integral: Array, rect: Rect, scale_factor: int = 0,
                 out: Array | None = None) -> Array:
    """Standard deviation in a window (x, y, width, height) at all positions where it lies inside of the image. The
    scale factor counts for tables of int32 both, whose results are integers."""
    return _deviations("RectStdDev", integral, square_integral, rect, scale_factor, out,
                       lambda x, y, width, height: (x + width, y + height))


@documented("vekiTiltedRectStdDev_32s32f_C1R")
def tilted_rect_std_dev(integral: Array, square_integral: Array, rect: Rect, scale_factor: int = 0,
                        out: Array | None = None) -> Array:
    """Standard deviation in a tilted window at all positions where it lies inside of the image."""
    return _deviations("TiltedRectStdDev", integral, square_integral, rect, scale_factor, out,
                       lambda x, y, width, height: (x + width + 1, y + width + height + 1), margin=1)
