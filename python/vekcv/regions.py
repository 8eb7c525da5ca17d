"""Distances, inpainting and flood fill."""
from typing import NamedTuple, Sequence

import numpy

from vekcv._arguments import choice, norm_type, numbers, size_of, work_buffer
from vekcv._call import form
from vekcv._documented import documented
from vekcv._forms import Forms, exports, function
from vekcv._state import State
from vekcv._types import Array, DType, Point, Rect
from vekcv.operations import fast_marching

__all__ = ["Component", "Inpainter", "distance_transform", "flood_fill", "get_distance_transform_mask", "inpaint"]


@documented("vekiGetDistanceTransformMask_32f")
def get_distance_transform_mask(aperture: int = 3, norm: str = "l2", dtype: DType = numpy.float32) -> Array:
    """The usual weights of chamfer distances, two for 3 x 3 and three for 5 x 5 pixels, as float32 or int32."""
    code = {"f": "32f", "i": "32s"}.get(numpy.dtype(dtype).char)
    if code is None:
        raise TypeError(f"weights are float32 or int32, not {numpy.dtype(dtype).name}")
    metrics = numpy.zeros(3, dtype)
    function(f"vekiGetDistanceTransformMask_{code}")(aperture, norm_type(norm), metrics)
    return metrics[:2 if aperture == 3 else 3]


_DISTANCES = {numpy.dtype(numpy.float32): "8u32f_C1R", numpy.dtype(numpy.uint8): "8u_C1R",
              numpy.dtype(numpy.uint16): "8u16u_C1R"}


@documented("vekiDistanceTransform_3x3_8u32f_C1R")
def distance_transform(a: Array, norm: str = "l2", aperture: int = 3, metrics: Sequence[float] | None = None,
                       dtype: DType | None = None, out: Array | None = None) -> Array:
    """Chamfer distances to the nearest pixel of uint8 that is 0, as float32 (by default), uint8 or uint16. The weights
    are those of get_distance_transform_mask, or as many as the aperture has: two for 3, three for 5. With the image as
    `out` the distances take its place."""
    dtype = numpy.dtype(dtype or (numpy.float32 if out is None else out.dtype))
    if dtype not in _DISTANCES:
        raise TypeError(f"distances are {', '.join(each.name for each in _DISTANCES)}; not {dtype.name}")
    weight = numpy.float32 if dtype == numpy.float32 else numpy.int32
    size = choice("aperture", {3: "3x3", 5: "5x5"}, aperture)
    if metrics is None:
        metrics = get_distance_transform_mask(aperture, norm, weight)
    weights = numbers("metrics", metrics, weight)
    if weights.shape != ({3: 2, 5: 3}[aperture],):
        raise ValueError(f"metrics has the shape {weights.shape}; 3 x 3 pixels have two weights and 5 x 5 three")
    if out is a and a is not None:
        function(f"vekiDistanceTransform_{size}_8u_C1IR")(a, weights)
        return out
    return function(f"vekiDistanceTransform_{size}_{_DISTANCES[dtype]}")(a, out, weights)


_inpaint = Forms("inpaint", exports("vekiInpaint"))
_METHODS = {"telea": 0, "contrast": 1}


@documented("vekiInpaint_8u_C1R")
class Inpainter(State):
    """What follows from a mask of the pixels that are unknown; restores them in any number of images of uint8 with 1 or
    3 channels. Methods are "telea" and "contrast" (methods 0 and 1)."""

    def __init__(self, mask: Array, radius: float = 3, method: str = "telea", channels: int = 1,
                 distance: Array | None = None):
        if distance is None:
            distance = fast_marching(mask, radius)
        suffix = choice("channels", {1: "8u_C1R", 3: "8u_C3R"}, channels)
        super().__init__("InpaintState", f"vekiInpaintInitAlloc_{suffix}", f"vekiInpaintFree_{suffix}", distance, mask,
                         radius, choice("method", _METHODS, method))

    def __call__(self, a: Array, out: Array | None = None) -> Array:
        """The image with its unknown pixels restored; `out` may be the image."""
        return self.call(_inpaint[form(a)], a, out)


@documented("vekiInpaint_8u_C1R")
def inpaint(a: Array, mask: Array, radius: float = 3, method: str = "telea", out: Array | None = None) -> Array:
    """The image with the pixels restored whose mask is not 0. For many images with one mask take an Inpainter."""
    with Inpainter(mask, radius, method, a.shape[2] if a.ndim == 3 else 1) as inpainter:
        return inpainter(a, out)


class Component(NamedTuple):
    """What was filled: number of pixels, value of each channel, smallest rectangle. Without pixels nothing was."""
    area: int
    value: tuple
    rect: Rect


_RULES = {"plain": "", "gradient": "Grad", "range": "Range"}
_fill = {(rule, connectivity): Forms("flood_fill", exports(f"vekiFloodFill_{name}{connectivity}Con"))
         for rule, name in _RULES.items() for connectivity in (4, 8)}


def _values(name, value, a):
    """A value for an image: a number, or an array of one for each channel."""
    if a.ndim == 2 or a.shape[2] == 1:
        return value
    values = numpy.asarray(value)
    if values.shape != (a.shape[2],) or (a.dtype.kind == "u" and (
            values.dtype.kind not in "iu" or values.min() < 0 or values.max() > numpy.iinfo(a.dtype).max)):
        raise ValueError(f"{name} must be {a.shape[2]} numbers that are {a.dtype.name}")
    return numpy.ascontiguousarray(values, a.dtype)


@documented("vekiFloodFill_4Con_8u_C1IR")
def flood_fill(a: Array, seed: Point, new_value, rule: str = "plain", connectivity: int = 8, min_delta=0,
               max_delta=0) -> Component:
    """Repaints the connected region of an image that contains the seed, in place. Rules are "plain", "gradient" and
    "range"; the deltas count for the last two. Values of images with three channels are three numbers."""
    choice("rule", _RULES, rule)
    choice("connectivity", {4: 4, 8: 8}, connectivity)
    export = _fill[rule, connectivity][form(a)]
    query = function("vekiFloodFillGetSize_Grad" if rule == "gradient" else "vekiFloodFillGetSize")
    deltas = ()
    if rule != "plain":
        least, most = (numpy.broadcast_to(delta, a.shape[2]) if a.ndim == 3 and a.shape[2] > 1 else delta
                       for delta in (min_delta, max_delta))
        deltas = _values("min_delta", least, a), _values("max_delta", most, a)
    buffer = work_buffer(query(size_of(a)))
    area, value, rect = export(a, seed, _values("new_value", new_value, a), *deltas, buffer)
    return Component(int(area), value[:a.shape[2] if a.ndim == 3 else 1], rect)
