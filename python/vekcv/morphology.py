"""Dilation, erosion and what they are combined to, with structuring elements."""
import numpy

from vekcv._arguments import middle, size_of
from vekcv._call import form
from vekcv._documented import documented
from vekcv._forms import Forms, exports, function, suffix
from vekcv._state import State
from vekcv._types import Array, DType, Point, Size
from vekcv.raw import lib

__all__ = ["CompoundElement", "GrayElement", "MorphologyElement", "dilate", "erode", "gray_dilate", "gray_erode",
           "morph_black_hat", "morph_close", "morph_gradient", "morph_open", "morph_top_hat"]

_KEPT = ("element: a mask, (width, height) of a full one, or a prepared element, for which the time to prepare it is "
         "saved")


def members(mask):
    """A mask as bytes; a size (width, height) as a mask of ones."""
    if isinstance(mask, tuple) and len(mask) == 2 and all(isinstance(side, int) for side in mask):
        mask = numpy.ones(mask[::-1], numpy.uint8)
    mask = numpy.asarray(mask)
    if mask.ndim != 2:
        raise ValueError("a structuring element has two axes, or is (width, height)")
    return numpy.ascontiguousarray(mask != 0, numpy.uint8)


def heights(mask, dtype):
    """The heights of a grey element for images of a dtype; what is minus infinity, or masked, is no member."""
    mask = numpy.ma.filled(numpy.ma.asarray(mask).astype(numpy.float64), -numpy.inf)
    if mask.ndim != 2:
        raise ValueError("a structuring element has two axes")
    if dtype == numpy.float32:
        return numpy.ascontiguousarray(mask, numpy.float32)
    limits = numpy.iinfo(numpy.int32)
    outside = (mask > limits.max) | ((mask < limits.min) & ~numpy.isinf(mask))
    if outside.any() or (mask != numpy.floor(mask)).any():
        raise ValueError("the heights of an element for images of uint8 are integers of 32 bits")
    return numpy.ascontiguousarray(numpy.maximum(mask, limits.min), numpy.int32)


def _channels(a):
    return a.shape[2] if a.ndim == 3 else 1


class _Element(State):
    """A structuring element for images of one dtype and number of channels, up to a size; in memory of the library, or
    in an array of bytes that the caller gives, as large as `bytes_needed` says."""

    stem = kind = ""  # of the exports, and the type in C

    def __init__(self, mask, reach, dtype, channels, anchor, memory):
        stem = f"veki{self.stem}"
        types = suffix(f"{stem}InitAlloc", dtype, channels)
        size = size_of(mask)
        arguments = reach, mask, size, middle(size) if anchor is None else anchor
        if memory is None:
            free = f"{stem}Free" + (types if self.kind == "GrayMorphologyState" else "")
            super().__init__(self.kind, f"{stem}InitAlloc{types}", free, *arguments)
            return
        needed = self._bytes(mask, reach, dtype, channels)
        flags = memory.flags
        if memory.dtype != numpy.uint8 or memory.size < needed or not (flags.c_contiguous and flags.writeable):
            raise ValueError(f"memory must be {needed} bytes that are writable and side by side")
        function(f"{stem}Init{types}")(memory, *arguments)
        self._lend(self.kind, memory)

    @classmethod
    def _bytes(cls, mask, reach, dtype, channels):
        types = suffix(f"veki{cls.stem}GetSize", dtype, channels)
        return function(f"veki{cls.stem}GetSize{types}")(reach, mask, size_of(mask))


@documented("vekiMorphologyInitAlloc_8u_C1R")
class MorphologyElement(_Element):
    """A flat element for dilation and erosion of images up to a width. The anchor is its middle by default."""

    stem, kind = "Morphology", "MorphologyState"

    def __init__(self, mask: Array | Size, width: int, dtype: DType = numpy.uint8, channels: int = 1,
                 anchor: Point | None = None, memory: Array | None = None):
        super().__init__(members(mask), width, dtype, channels, anchor, memory)

    @classmethod
    def _for(cls, mask, a, anchor):
        return cls(mask, a.shape[1], a.dtype, _channels(a), anchor)

    @classmethod
    def bytes_needed(cls, mask: Array | Size, width: int, dtype: DType = numpy.uint8, channels: int = 1) -> int:
        """The bytes of such an element."""
        return cls._bytes(members(mask), width, dtype, channels)


@documented("vekiMorphologyInitAlloc_8u_C1R")
class CompoundElement(_Element):
    """A flat element for opening, closing and so on, of images up to a size."""

    stem, kind = "MorphologyCompound", "MorphologyState"

    def __init__(self, mask: Array | Size, size: Size, dtype: DType = numpy.uint8, channels: int = 1,
                 anchor: Point | None = None, memory: Array | None = None):
        super().__init__(members(mask), size, dtype, channels, anchor, memory)

    @classmethod
    def _for(cls, mask, a, anchor):
        return cls(mask, size_of(a), a.dtype, _channels(a), anchor)

    @classmethod
    def bytes_needed(cls, mask: Array | Size, size: Size, dtype: DType = numpy.uint8, channels: int = 1) -> int:
        """The bytes of such an element."""
        return cls._bytes(members(mask), size, dtype, channels)


@documented("vekiMorphologyInitAlloc_8u_C1R")
class GrayElement(_Element):
    """A grey element for grey dilation and erosion, of images up to a size. What is masked or minus infinity in the
    array of heights is no member."""

    stem, kind = "GrayMorphology", "GrayMorphologyState"

    def __init__(self, mask: Array, size: Size, dtype: DType = numpy.uint8, anchor: Point | None = None,
                 memory: Array | None = None):
        super().__init__(heights(mask, numpy.dtype(dtype)), size, dtype, 1, anchor, memory)

    @classmethod
    def _for(cls, mask, a, anchor):
        return cls(mask, size_of(a), a.dtype, anchor)

    @classmethod
    def bytes_needed(cls, mask: Array, size: Size, dtype: DType = numpy.uint8) -> int:
        """The bytes of such an element."""
        return cls._bytes(heights(mask, numpy.dtype(dtype)), size, dtype, 1)


def _operation(name, stem, kind, description):
    """An operation on an image and an element of a kind, which is prepared where it is none yet."""
    forms = Forms(name, exports(stem))

    def operation(a: Array, element, anchor: Point | None = None, out: Array | None = None) -> Array:
        export = forms[form(a)]
        if isinstance(element, kind):
            if anchor is not None:
                raise ValueError("a prepared element has its anchor, and takes no other")
            return element.call(export, a, out, lib.BorderReplicate)
        if isinstance(element, State):
            raise TypeError(f"{name} takes a {kind.__name__}, not a {type(element).__name__}")
        with kind._for(element, a, anchor) as prepared:
            return prepared.call(export, a, out, lib.BorderReplicate)

    operation.__name__ = operation.__qualname__ = name
    operation.__doc__ = f"{description}\n\n{_KEPT}; the anchor of a mask is its middle by default."
    return documented(f"{stem}_8u_C1R")(operation)


dilate = _operation("dilate", "vekiDilateBorderReplicate", MorphologyElement, "Maximum over the members of an element.")
erode = _operation("erode", "vekiErodeBorderReplicate", MorphologyElement, "Minimum over the members of an element.")
gray_dilate = _operation("gray_dilate", "vekiGrayDilateBorder", GrayElement, "Maximum of pixels plus heights.")
gray_erode = _operation("gray_erode", "vekiGrayErodeBorder", GrayElement, "Minimum of pixels minus heights.")
morph_open = _operation("morph_open", "vekiMorphOpenBorderReplicate", CompoundElement, "Erosion, then dilation.")
morph_close = _operation("morph_close", "vekiMorphCloseBorderReplicate", CompoundElement, "Dilation, then erosion.")
morph_top_hat = _operation("morph_top_hat", "vekiMorphTopHatBorderReplicate", CompoundElement,
                           "The image minus its opening.")
morph_black_hat = _operation("morph_black_hat", "vekiMorphBlackHatBorderReplicate", CompoundElement,
                             "The closing minus the image.")
morph_gradient = _operation("morph_gradient", "vekiMorphGradientBorderReplicate", CompoundElement,
                            "The dilation minus the erosion.")
