"""Undistortion, sub-pixel copies and the kernels of super-resolution."""
import numpy

from vekcv._arguments import check_image, check_size, size_of
from vekcv._documented import documented
from vekcv._forms import function
from vekcv._state import State
from vekcv._types import Array, DType, Point, Size

__all__ = ["SuperResolution", "copy_subpix", "copy_subpix_intersect", "create_map_camera_undistort"]


@documented("vekiCreateMapCameraUndistort_32f_C1R")
def create_map_camera_undistort(size: Size, fx: float, fy: float, cx: float, cy: float, k1: float = 0, k2: float = 0,
                                p1: float = 0, p2: float = 0) -> tuple[Array, Array]:
    """Where the pixels of an undistorted image (width, height) lie in the distorted one: their columns and rows."""
    maps = [numpy.empty(tuple(size)[::-1], numpy.float32) for _ in range(2)]
    function("vekiCreateMapCameraUndistort_32f_C1R")(*maps, fx, fy, cx, cy, k1, k2, p1, p2, None)
    return tuple(maps)


_RESULTS = {("B", "B"): "8u_C1R", ("B", "H"): "8u16u_C1R_Sfs", ("B", "f"): "8u32f_C1R", ("H", "H"): "16u_C1R",
            ("H", "f"): "16u32f_C1R", ("f", "f"): "32f_C1R"}


def _copy(name, a, dtype):
    """An export by the dtypes of an image and of the result, and whether it has a scale factor."""
    code = _RESULTS.get((a.dtype.char, dtype.char))
    if code is None:
        there = ", ".join(f"{numpy.dtype(source).name} to {numpy.dtype(result).name}" for source, result in _RESULTS)
        raise TypeError(f"there are copies from {there}; not from {a.dtype.name} to {dtype.name}")
    return function(f"veki{name}_{code}"), "Sfs" in code


@documented("vekiCopySubpix_8u_C1R")
def copy_subpix(a: Array, dx: float, dy: float, scale_factor: int = 0, dtype: DType | None = None,
                out: Array | None = None) -> Array:
    """The image shifted by the fractions of dx and dy: one row and one column less. Results have the dtype of the
    image, or float32; of uint8 also uint16, divided by 2 to the power of the scale factor."""
    check_image("a", a)
    if out is None:
        out = numpy.empty((a.shape[0] - 1, a.shape[1] - 1), dtype or a.dtype)
    check_size("a", a, out.shape[1] + 1, out.shape[0] + 1)
    export, scaled = _copy("CopySubpix", a, out.dtype)
    export(a, out, dx, dy, *(scale_factor,) * scaled)
    return out


@documented("vekiCopySubpixIntersect_8u_C1R")
def copy_subpix_intersect(a: Array, size: Size, point: Point, scale_factor: int = 0,
                          dtype: DType | None = None) -> tuple[Array, Point, Point]:
    """A patch (width, height) around a point of the image, and the first and the last column and row of it that lie in
    the image."""
    check_image("a", a)
    out = numpy.empty(tuple(size)[::-1], dtype or a.dtype)
    export, scaled = _copy("CopySubpixIntersect", a, out.dtype)
    least, most = export(a, size_of(a), out, size, point, *(scale_factor,) * scaled)
    return out, least, most


@documented("vekiSRHNCalcResidual_PSF2x2_8u32f_C1R")
class SuperResolution(State):
    """A table of point-spread functions, an array of 2 x 2 or 3 x 3 coefficients each, for an image of float32 from
    many smaller ones. Samples are sequences of equal length: their values, the offsets of their blocks in elements from
    the first pixel (y * elements from row to row + x), and their entries in the table."""

    def __init__(self, psf_table: Array):
        table = numpy.ascontiguousarray(psf_table, numpy.float32)
        if table.ndim != 3 or table.shape[1:] not in ((2, 2), (3, 3)):
            raise ValueError(f"psf_table has the shape {table.shape}; entries are 2 x 2 or 3 x 3")
        self._count, self._side = len(table), table.shape[1]
        self._psf = f"PSF{self._side}x{self._side}"
        super().__init__("SrhnState", f"vekiSRHNInitAlloc_{self._psf}", f"vekiSRHNFree_{self._psf}", table, len(table))

    def residual(self, high_res: Array, samples: Array, offsets: Array, psf_index: Array) -> Array:
        """What an estimate of the image gives for samples of uint8 or uint16, less their values."""
        samples = numpy.ascontiguousarray(samples)
        code = {"B": "8u", "H": "16u"}.get(samples.dtype.char)
        if code is None:
            raise TypeError(f"samples are uint8 or uint16, not {samples.dtype.name}")
        offsets, psf_index = self._blocks(high_res, len(samples), offsets, psf_index)
        residual = numpy.empty(len(samples), numpy.float32)
        self.call(function(f"vekiSRHNCalcResidual_{self._psf}_{code}32f_C1R"), high_res, samples, offsets, psf_index,
                  residual, len(samples))
        return residual

    def update_gradient(self, gradient: Array, offsets: Array, psf_index: Array, residual: Array, weight_index: Array,
                        weights: Array):
        """Adds what the residuals of samples, times weights[weight_index], say of the pixels to an image, in place."""
        residual = numpy.ascontiguousarray(residual, numpy.float32)
        weights = numpy.ascontiguousarray(weights, numpy.float32)
        offsets, psf_index = self._blocks(gradient, len(residual), offsets, psf_index)
        weight_index = _indices("weight_index", weight_index, numpy.uint8, len(residual), len(weights))
        self.call(function(f"vekiSRHNUpdateGradient_{self._psf}_32f_C1R"), gradient, offsets, psf_index, residual,
                  weight_index, len(residual), weights)

    def _blocks(self, image, count, offsets, psf_index):
        """Offsets and entries of samples whose blocks lie in an image."""
        check_size("the image", image, self._side, self._side)
        step = image.strides[0] // 4
        room = (image.shape[0] - self._side) * step + image.shape[1] - self._side + 1
        offsets = _indices("offsets", offsets, numpy.uint32, count, room)
        if (offsets % step > image.shape[1] - self._side).any():
            raise ValueError("offsets has blocks that leave the image on the right")
        return offsets, _indices("psf_index", psf_index, numpy.uint16, count, self._count)


def _indices(name, values, dtype, count, limit):
    """So many whole numbers of a dtype from 0 to below a limit."""
    values, limit = numpy.asarray(values), min(limit, numpy.iinfo(dtype).max + 1)
    if values.shape != (count,) or values.dtype.kind not in "iu":
        raise ValueError(f"{name} must be {count} whole numbers, one for each sample")
    if count and (values.min() < 0 or values.max() >= limit):
        raise ValueError(f"{name} has numbers outside of 0 to {limit - 1}")
    return numpy.ascontiguousarray(values, dtype)
