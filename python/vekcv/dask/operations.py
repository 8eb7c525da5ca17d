"""The operations that make an image of images: wrappers of those of vekcv."""
import functools
import inspect

import dask.array
import numpy

import vekcv
from vekcv._arguments import middle, size_of
from vekcv._state import State
from vekcv.dask._images import image, like, packed, sample
from vekcv.dask._neighbours import by_blocks


def _around(pixels):
    """The same reach on all sides."""
    return ((pixels, pixels),) * 2


def _aperture(aperture=3, **_):
    return _around(aperture // 2)


def _kernel(kernel_size, **_):
    return _around(kernel_size // 2)


def _averages(aperture, window, **_):
    # Averages reach as far as their window, and each derivative in it as far as its kernel.
    return _around(aperture // 2 + window // 2)


def _window(size, anchor, **_):
    x, y = middle(size) if anchor is None else anchor
    return (y, size[1] - 1 - y), (x, size[0] - 1 - x)


def _element(element, anchor, **_):
    if isinstance(element, State):
        raise TypeError("element must be a mask or a size: a prepared one is memory of this process, for one call at "
                        "a time")
    return _window(element if isinstance(element, tuple) else size_of(numpy.asanyarray(element)), anchor)


def _element_twice(element, anchor, **_):
    # The second step takes the element mirrored at its anchor.
    return tuple((before + after,) * 2 for before, after in _element(element, anchor))


# How far operations on windows reach, ((above, below), (left, right)): functions of their arguments.
REACHES = {
    "filter_sobel_horiz": _aperture, "filter_sobel_vert": _aperture, "filter_sobel_neg_vert": _aperture,
    "filter_sobel_horiz_second": _aperture, "filter_sobel_vert_second": _aperture, "filter_sobel_cross": _aperture,
    "filter_scharr_horiz": _aperture, "filter_scharr_vert": _aperture, "filter_laplacian": _aperture,
    "filter_lowpass": _aperture, "filter_gauss": _kernel, "filter_min": _window, "filter_max": _window,
    "min_eigen_val": _averages, "eigen_vals_vecs": _averages,
    "dilate": _element, "erode": _element, "gray_dilate": _element, "gray_erode": _element,
    "morph_open": _element_twice, "morph_close": _element_twice, "morph_top_hat": _element_twice,
    "morph_black_hat": _element_twice, "morph_gradient": _element,
}
POINTWISE = "abs_diff", "abs_diff_c", "blend", "gradient_color_to_gray"
__all__ = [*REACHES, *POINTWISE]


def _wrapper(operation, compute):
    """An operation on dask arrays with the name and the arguments of one on arrays, but for out."""
    original = inspect.signature(operation)
    signature = original.replace(parameters=[each for name, each in original.parameters.items() if name != "out"])

    @functools.wraps(operation, ("__name__", "__qualname__"))
    def wrapped(*positional, **named):
        bound = signature.bind(*positional, **named)
        bound.apply_defaults()
        return compute(**bound.arguments)

    wrapped.__signature__ = signature
    wrapped.__doc__ = f"vekcv.{operation.__name__} on dask arrays, without out.\n\n{operation.__doc__}"
    return wrapped


def _on_windows(operation, reach):
    def compute(a, **arguments):
        border = arguments.get("border", "replicate")
        if "+" in border or border == "in_memory":
            raise ValueError(f"border must be a rule, not {border!r}: within the image the blocks around are read")
        a = image(a)
        partial = functools.partial(operation, **arguments)
        result = partial(sample(a))  # comes first, for it refuses arguments that have no reach
        return by_blocks(partial, a, reach(**arguments), border == "periodic", result)
    return compute


def _on_pixels(operation):
    def compute(a, b=None, **arguments):
        images = [image(a)]
        if b is not None:
            images.append(like(b, images[0], "b"))
        result = operation(*map(sample, images), **arguments)
        return dask.array.map_blocks(functools.partial(_packed_call, operation, **arguments), *images, meta=result,
                                     drop_axis=[*range(result.ndim, images[0].ndim)])
    return compute


def _packed_call(operation, *blocks, **arguments):
    return operation(*map(packed, blocks), **arguments)


for _name, _reach in REACHES.items():
    _operation = getattr(vekcv, _name)
    globals()[_name] = _wrapper(_operation, _on_windows(_operation, _reach))
for _name in POINTWISE:
    _operation = getattr(vekcv, _name)
    globals()[_name] = _wrapper(_operation, _on_pixels(_operation))
