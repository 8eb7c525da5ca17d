"""Separable filters of any kernel, by rows and by columns."""
import re

import numpy

from vekcv._arguments import border_type, check_image, size_of, taps_of, work_buffer
from vekcv._documented import documented
from vekcv._exports import EXPORTS
from vekcv._forms import function
from vekcv._types import Array, DType, Kernel

__all__ = ["filter_column_pipeline", "filter_row_border_pipeline", "gen_sobel_kernel"]

_CODES = {"8u": "B", "8s": "b", "16s": "h", "32f": "f"}


def _forms(stem):
    """The exports of a pipeline and their queries, by whether they round as Low ones, dtypes, and channels."""
    found = {}
    for name in EXPORTS:
        match = re.fullmatch(rf"{stem}(_Low)?_(\d+[usf])(\d+[usf])?_C(\d)R", name)
        if match:
            low, source, result, channels = match.groups()
            key = bool(low), _CODES[source], _CODES[result or source], int(channels)
            found[key] = name, name.replace(stem, f"{stem}GetBufferSize")
    return found


_ROWS, _COLUMNS = _forms("vekiFilterRowBorderPipeline"), _forms("vekiFilterColumnPipeline")


def _export(forms, a, dtype, low):
    """The export and its query for an image, a dtype of the result and the kind of rounding; and that dtype."""
    check_image("a", a)
    channels = a.shape[2] if a.ndim == 3 else 1
    results = [key[2] for key in forms if key[0] == low and numpy.dtype(key[1]) == a.dtype and key[3] == channels]
    result = numpy.dtype(dtype).char if dtype else results[0] if results else None
    if result not in results:
        there = dict.fromkeys(f"{numpy.dtype(key[1]).name} to {numpy.dtype(key[2]).name}"
                              for key in forms if key[0] == low)
        raise TypeError(f"with low={low} there are filters of 1 or 3 channels from {', '.join(there)}; not from "
                        f"{a.dtype} with {channels}" + (f" to {numpy.dtype(dtype).name}" if dtype else ""))
    return *map(function, forms[low, a.dtype.char, result, channels]), numpy.dtype(result)


def _addresses(rows):
    """The addresses of the rows of an array whose pixels lie side by side."""
    if rows.ndim not in (2, 3) or not rows[:1].flags.c_contiguous:
        raise ValueError("the pixels of a row must lie side by side; pass numpy.ascontiguousarray(a)")
    return rows.__array_interface__["data"][0] + numpy.arange(rows.shape[0], dtype=numpy.intp) * rows.strides[0]


@documented("vekiFilterRowBorderPipeline_8u16s_C1R")
def filter_row_border_pipeline(a: Array, kernel: Kernel, anchor: int | None = None, border: str = "replicate",
                               border_value: float = 0, divisor: int = 1, low: bool = False) -> Array:
    """Filters the rows of an image: of uint8 or int16 to int16, of float32 to float32. The anchor is the middle of the
    kernel by default; low takes the other rounding of int16."""
    export, query, result = _export(_ROWS, a, None, low)
    taps = taps_of(kernel, a.dtype)
    out = numpy.empty(a.shape, result)
    scale = (divisor,) if a.dtype.char != "f" else ()
    anchor = (len(taps) - 1) // 2 if anchor is None else anchor
    buffer = work_buffer(query(size_of(a), len(taps)))
    export(a, _addresses(out), taps, len(taps), anchor, border_type(border, a, 0), border_value, *scale, buffer)
    return out


@documented("vekiFilterColumnPipeline_16s_C1R")
def filter_column_pipeline(a: Array, kernel: Kernel, divisor: int = 1, dtype: DType | None = None, low: bool = False,
                           out: Array | None = None) -> Array:
    """Filters the columns of an image, whose result has fewer rows, as many as the kernel has taps, less one: of int16
    to int16, uint8 or int8, of float32 to float32."""
    export, query, result = _export(_COLUMNS, a, dtype if out is None else out.dtype, low)
    taps = taps_of(kernel, a.dtype)
    shape = a.shape[0] - len(taps) + 1, *a.shape[1:]
    if shape[0] < 1:
        raise ValueError(f"a has {a.shape[0]} rows, fewer than the kernel has taps")
    if out is None:
        out = numpy.empty(shape, result)
    elif out.shape != shape:
        raise ValueError(f"out has the shape {out.shape}, and {shape} is needed")
    scale = (divisor,) if a.dtype.char != "f" else ()
    export(_addresses(a), out, taps, len(taps), *scale, work_buffer(query(size_of(out), len(taps))))
    return out


@documented("vekiGenSobelKernel_16s")
def gen_sobel_kernel(kernel_size: int, derivative_order: int, sign: int = 1, dtype: DType = numpy.int16) -> Array:
    """The coefficients of a Sobel kernel, as int16 or float32."""
    code = {"h": "16s", "f": "32f"}.get(numpy.dtype(dtype).char)
    if code is None:
        raise TypeError(f"kernels are int16 or float32, not {numpy.dtype(dtype).name}")
    kernel = numpy.empty(max(kernel_size, 0), dtype)
    function(f"vekiGenSobelKernel_{code}")(kernel, kernel_size, derivative_order, sign)
    return kernel
