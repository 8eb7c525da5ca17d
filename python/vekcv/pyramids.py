"""Image pyramids."""
import numpy

from vekcv._arguments import check_image, size_of, taps_of, work_buffer
from vekcv._call import form
from vekcv._documented import documented
from vekcv._forms import Forms, exports, function, suffix
from vekcv._state import State
from vekcv._types import Array, DType, Kernel, Size
from vekcv.raw import ffi

__all__ = ["Pyramid", "PyramidLayerDown", "PyramidLayerUp", "get_pyramid_down_roi", "get_pyramid_up_roi", "pyr_down",
           "pyr_up"]

_pyr_down = Forms("pyr_down", exports("vekiPyrDown_Gauss5x5"))
_pyr_up = Forms("pyr_up", exports("vekiPyrUp_Gauss5x5"))
_DATA_TYPES = {"B": 1, "b": 3, "f": 13}


def _resized(forms, query, a, size, out):
    """The result of an export whose result has another size than the image."""
    export = forms[form(a)]
    channels = a.shape[2] if a.ndim == 3 else 1
    out = sized(out, a, size)
    buffer = work_buffer(function(query)(a.shape[1], _DATA_TYPES[a.dtype.char], channels))
    export(a, out, buffer)
    return out


def sized(out, a, size):
    """An image like another one with a size (width, height): the given one, which must have it, or a new one."""
    shape = size[1], size[0], *a.shape[2:]
    if out is None:
        return numpy.empty(shape, a.dtype)
    if out.shape != shape:
        raise ValueError(f"out has the shape {out.shape}, and {shape} is needed")
    return out


@documented("vekiPyrDown_Gauss5x5_8u_C1R")
def pyr_down(a: Array, out: Array | None = None) -> Array:
    """The image in half its size, (n + 1) / 2 pixels for n, smoothed."""
    check_image("a", a)
    return _resized(_pyr_down, "vekiPyrDownGetBufSize_Gauss5x5", a, ((a.shape[1] + 1) // 2, (a.shape[0] + 1) // 2), out)


@documented("vekiPyrUp_Gauss5x5_8u_C1R")
def pyr_up(a: Array, out: Array | None = None) -> Array:
    """The image in double its size, smoothed."""
    check_image("a", a)
    return _resized(_pyr_up, "vekiPyrUpGetBufSize_Gauss5x5", a, (2 * a.shape[1], 2 * a.shape[0]), out)


@documented("vekiGetPyramidDownROI")
def get_pyramid_down_roi(size: Size, rate: float) -> Size:
    """The size of the next smaller level."""
    return function("vekiGetPyramidDownROI")(size, rate)


@documented("vekiGetPyramidUpROI")
def get_pyramid_up_roi(size: Size, rate: float) -> tuple[Size, Size]:
    """The least and the greatest size of the next larger level."""
    return function("vekiGetPyramidUpROI")(size, rate)


class _Layer(State):
    """A level made from its neighbour."""

    def __init__(self, size, rate, kernel=(1, 4, 6, 4, 1), dtype=numpy.uint8, channels=1):
        stem = f"veki{type(self).__name__}"
        types = suffix(stem, dtype, channels)
        self.rate, self._export = rate, function(stem + types)
        taps = taps_of(kernel, dtype)
        super().__init__("PyramidLayerState", f"{stem}InitAlloc{types}", f"{stem}Free{types}", size, rate, taps,
                         len(taps), 2)

    def _made(self, a, size, out):
        out = sized(out, a, size)
        self.call(self._export, a, size_of(a), out, size)
        return out


@documented("vekiPyramidLayerDown_8u_C1R")
class PyramidLayerDown(_Layer):
    """Makes the next smaller level of images of a dtype and a number of channels, up to a size."""

    def __init__(self, size: Size, rate: float = 2, kernel: Kernel = (1, 4, 6, 4, 1), dtype: DType = numpy.uint8,
                 channels: int = 1):
        super().__init__(size, rate, kernel, dtype, channels)

    def __call__(self, a: Array, out: Array | None = None) -> Array:
        """The next smaller level of an image."""
        return self._made(a, get_pyramid_down_roi(size_of(a), self.rate), out)


@documented("vekiPyramidLayerUp_8u_C1R")
class PyramidLayerUp(_Layer):
    """Makes the next larger level of images of a dtype and a number of channels, up to a size."""

    def __init__(self, size: Size, rate: float = 2, kernel: Kernel = (1, 4, 6, 4, 1), dtype: DType = numpy.uint8,
                 channels: int = 1):
        super().__init__(size, rate, kernel, dtype, channels)

    def __call__(self, a: Array, size: Size | None = None, out: Array | None = None) -> Array:
        """The next larger level of an image: of the given size, that of `out`, or the greatest that there is."""
        if size is None:
            size = get_pyramid_up_roi(size_of(a), self.rate)[1] if out is None else size_of(out)
        return self._made(a, size, out)


@documented("vekiPyramidInitAlloc")
class Pyramid(State):
    """The record of a pyramid: sizes and scales of its levels, and the images that are entered."""

    def __init__(self, levels: int, size: Size, rate: float = 2):
        super().__init__("Pyramid", "vekiPyramidInitAlloc", "vekiPyramidFree", levels, size, rate)
        self._images = {}

    @classmethod
    def of(cls, image: Array, levels: int, rate: float = 2, kernel: Kernel = (1, 4, 6, 4, 1)) -> "Pyramid":
        """The pyramid of an image, whose levels are made by PyramidLayerDown."""
        pyramid = cls(levels, size_of(image), rate)
        channels = image.shape[2] if image.ndim == 3 else 1
        with PyramidLayerDown(size_of(image), rate, kernel, image.dtype, channels) as down:
            pyramid[0] = image
            for level in range(1, len(pyramid)):
                pyramid[level] = down(pyramid[level - 1])
        return pyramid

    def __len__(self):
        """The number of levels, the base included."""
        return self.pointer.levelCount + 1

    @property
    def sizes(self):
        """The sizes (width, height) of the levels."""
        return [(size.width, size.height) for size in self.pointer.levelSizes[0:len(self)]]

    @property
    def scales(self):
        """The scales of the levels: 1 for the base, and smaller ones above it."""
        return list(self.pointer.levelScales[0:len(self)])

    def __getitem__(self, level: int) -> Array:
        """The image of a level."""
        if level not in self._images:
            raise IndexError(f"level {level} has no image")
        return self._images[level]

    def __setitem__(self, level: int, image: Array):
        """Enters the image of a level, which stays where it is."""
        if not 0 <= level < len(self) or size_of(image) != self.sizes[level]:
            raise ValueError(f"no level {level} of {image.shape[1]} x {image.shape[0]} pixels: the sizes are "
                             f"{self.sizes}")
        if self._images and image.dtype != next(iter(self._images.values())).dtype:
            raise TypeError("the levels of a pyramid have one dtype")
        if not image[:1].flags.c_contiguous or image.strides[0] < image[:1].nbytes:
            raise ValueError("the pixels of a level must lie side by side; pass numpy.ascontiguousarray(image)")
        self._images[level] = image
        self.pointer.levelImages[level] = ffi.cast("void*", image.__array_interface__["data"][0])
        self.pointer.levelSteps[level] = image.strides[0]
