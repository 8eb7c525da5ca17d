"""What arguments become before they are passed to an export."""
import threading

import numpy

from vekcv.raw import lib

_BORDERS = {"constant": lib.BorderConstant, "replicate": lib.BorderReplicate, "periodic": lib.BorderPeriodic,
            "reflect": lib.BorderReflect, "reflect_edge": lib.BorderReflectEdge, "in_memory": lib.BorderInMemory}
# Those that read nothing beside the image.
_OUTSIDE = {rule: value for rule, value in _BORDERS.items() if rule != "in_memory"}
_SIDES = {"top": lib.BorderInMemoryTop, "bottom": lib.BorderInMemoryBottom, "left": lib.BorderInMemoryLeft,
          "right": lib.BorderInMemoryRight}
_NORMS = {"inf": lib.NormInf, "l1": lib.NormL1, "l2": lib.NormL2}
_CONNECTIVITIES = {4: lib.NormL1, 8: lib.NormInf}
_MASK_SIZES = {3: lib.MaskSize3x3, 5: lib.MaskSize5x5}


def choice(name, choices, value):
    """What a value stands for."""
    try:
        return choices[value]
    except (KeyError, TypeError):
        raise ValueError(f"{name} must be {' or '.join(map(repr, choices))}, not {value!r}") from None


def given(mask):
    """An optional argument as a sequence of none or one."""
    return () if mask is None else (mask,)


def channel_of_interest(channel):
    """The channel, counted from 0, as a sequence of none or of the number from 1."""
    return () if channel is None else (choice("channel", {0: 1, 1: 2, 2: 3}, channel),)


def size_of(image):
    """Width and height of an image."""
    return image.shape[1], image.shape[0]


def check_image(name, image):
    """Whether an argument is an array with the axes of an image."""
    if not isinstance(image, numpy.ndarray):
        raise TypeError(f"{name} must be a numpy array, not {type(image).__name__}")
    if image.ndim not in (2, 3):
        raise ValueError(f"{name} has {image.ndim} axes; an image has two, rows and columns, or three, the last of "
                         "which are channels")


def check_size(name, image, width, height):
    """Whether an image has at least so many columns and rows."""
    if image.ndim < 2 or image.shape[0] < height or image.shape[1] < width:
        raise ValueError(f"{name} has the shape {image.shape}, and {height} rows of {width} are read")


def middle(size):
    """The pixel in the middle of a window of (width, height), or to the left of it and above."""
    return tuple((side - 1) // 2 for side in size)


def taps_of(kernel, dtype):
    """The taps of a kernel for images of a dtype: float32 for floats, else int16."""
    taps = numpy.asarray(kernel)
    wanted = numpy.dtype(numpy.float32 if numpy.dtype(dtype).kind == "f" else numpy.int16)
    if taps.ndim != 1 or not numpy.can_cast(taps.dtype, wanted, "same_kind") or (
            wanted.kind == "i" and not ((-32768 <= taps) & (taps <= 32767)).all()):
        raise ValueError(f"the kernel must be a sequence of numbers that are {wanted.name}")
    return numpy.ascontiguousarray(taps, wanted)


def numbers(name, values, dtype):
    """Numbers as an array of a dtype without gaps. Floats do not become integers."""
    values = numpy.asarray(values)
    if values.size and not numpy.can_cast(values.dtype, dtype, "same_kind"):
        raise TypeError(f"{name} has the dtype {values.dtype}, and {numpy.dtype(dtype)} is needed")
    return numpy.ascontiguousarray(values, dtype)


class _WorkMemory(threading.local):
    """The work buffer that a thread keeps from call to call, so that its pages are there and in the caches."""

    def __init__(self):
        self.kept = numpy.empty(1 << 16, numpy.uint8)


_work_memory = _WorkMemory()
_MOST_KEPT = 1 << 22


def work_buffer(size):
    """Memory of at least so many bytes for the next call of this thread."""
    kept = _work_memory.kept
    if size <= kept.size:
        return kept
    made = numpy.empty(size, numpy.uint8)
    if size <= _MOST_KEPT:
        _work_memory.kept = made
    return made


def zeros_like(image):
    """A result of zeros."""
    return numpy.zeros_like(image, subok=False)


def result_code(dtype, out):
    """The dtype of a result as a letter: as asked for, that of out, or None."""
    if dtype is None:
        return out.dtype.char if isinstance(out, numpy.ndarray) else None
    return numpy.dtype(dtype).char


def mask_size(aperture):
    return choice("aperture", _MASK_SIZES, aperture)


def norm_type(norm):
    return choice("norm", _NORMS, norm)


def connectivity_type(connectivity):
    return choice("connectivity", _CONNECTIVITIES, connectivity)


def kernel_type(kernel):
    return choice("kernel", {"sobel": 0, "scharr": 1}, kernel)


def boundary_flag(boundaries):
    return choice("boundaries", {0: 0, 4: 64, 8: 128}, boundaries)


def greatest_label(markers):
    """The greatest label that markers of this dtype may have."""
    return int(numpy.iinfo(markers.dtype).max) - 1


def border_type(border, image, reach):
    """The number of a border rule such as "replicate" or "reflect+top+left". Where pixels beside the image are read, as
    far as the reach goes, they must belong to the array that the image is a view of."""
    value = _OUTSIDE.get(border)
    if value is not None:
        return value
    rule, *sides = str(border).split("+")
    value = choice("border", _BORDERS, rule)
    flags = 0
    for side in sides:
        flags |= choice("the side of a border", _SIDES, side)
    read = _SIDES if rule == "in_memory" else sides
    if read:
        check_memory(image, {side: reach for side in read})
    return value | flags


def check_memory(image, reach):
    """Whether the array that the image is a view of goes on so many pixels beyond the image on the given sides."""
    if image.size == 0:  # the library refuses it
        return
    base = image
    while isinstance(base.base, numpy.ndarray):
        base = base.base
    step, pixel = image.strides[0], image.strides[1]
    room = {}
    if base.ndim >= 2 and base.strides[:2] == image.strides[:2] and base.flags.c_contiguous:
        offset = image.__array_interface__["data"][0] - base.__array_interface__["data"][0]
        top, left = divmod(offset, step)
        left //= pixel
        room = {"top": top, "bottom": base.shape[0] - top - image.shape[0], "left": left,
                "right": base.shape[1] - left - image.shape[1]}
    # Other axes of the array may have the same strides, so that the image does not lie within its rows.
    if not room or min(room.values()) < 0:
        raise ValueError("a border in memory needs an image that is a view of part of the rows and columns of a "
                         "contiguous array with two axes, or three")
    for side, needed in reach.items():
        if room[side] < needed:
            raise ValueError(f"the array that the image is a view of has {room[side]} pixels beyond the {side} of it, "
                             f"and {needed} are read there")
