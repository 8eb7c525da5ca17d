"""Which arrays are images, however they lie in memory, and what is said of those that are not."""
import numpy as np
import pytest
from support import GUARD, guards_intact, image, inset, refuses

import vekcv

# Of several operations all arguments: images of every number of channels, sources, masks, results and images in place.
CASES = {
    "add": {"a": image("u1"), "accumulator": image("f4"), "mask": image("u1", seed=2) & 1},
    "abs_diff": {"a": image("u1", (9, 31, 3)), "b": image("u1", (9, 31, 3), 2), "out": image("u1", (9, 31, 3), 3)},
    "blend": {"a": image("f4"), "b": image("f4", seed=2), "alpha": 0.25, "out": image("f4", seed=3)},
    "norm_diff": {"a": image("u2", (9, 31, 3)), "b": image("u2", (9, 31, 3), 2), "mask": image("u1", (9, 31)),
                  "channel": 1},
    "filter_sobel_horiz": {"a": image("u1"), "out": image("i2")},
    "filter_min": {"a": image("f4", (9, 31, 4)), "size": (3, 2), "out": image("f4", (9, 31, 4), 2)},
    "canny": {"dx": image("i2"), "dy": image("i2", seed=2), "low": 9000, "high": 30000, "out": image("u1")},
    "eigen_vals_vecs": {"a": image("u1", (9, 31)), "out": image("f4", (9, 31, 6))},
    "label_markers": {"markers": image("u2") // 40000},
    "segment_watershed": {"a": image("u1"), "markers": image("u2") // 65000},
    "undistort_radial": {"a": image("u2", (9, 31, 3)), "fx": 40, "fy": 40, "cx": 15, "cy": 4, "k1": 0.1,
                         "out": image("u2", (9, 31, 3), 2)},
}
ARRAYS = [(name, argument) for name, arguments in CASES.items() for argument, value in arguments.items()
          if isinstance(value, np.ndarray)]
every_array = pytest.mark.parametrize("name, argument", ARRAYS)


def at_any_byte(pixels):
    """The same pixels at an odd address."""
    memory = np.full(pixels.nbytes + 1, GUARD, np.uint8)
    moved = memory[1:].view(pixels.dtype).reshape(pixels.shape)
    moved[...] = pixels
    return moved


def every_other_row(pixels):
    memory = np.full((2 * len(pixels), *pixels.shape[1:]), 77, pixels.dtype)
    memory[::2] = pixels
    return memory[::2]


def with_strides(pixels, axis, step):
    """The same pixels in an array that goes through its memory with a step."""
    shape = list(pixels.shape)
    shape[axis] *= abs(step)
    memory = np.zeros(shape, pixels.dtype)
    view = memory[(slice(None),) * axis + (slice(None, None, step),)]
    view[...] = pixels
    return view


ACCEPTED = {
    "inset": inset, "columns cut away": lambda pixels: inset(pixels, 0, 0, 0, 5),
    "odd offset": lambda pixels: inset(pixels, 1, 0, 1, 0), "at any byte": at_any_byte,
    "every other row": every_other_row,
    "with an axis of one channel": lambda pixels: pixels[..., None] if pixels.ndim == 2 else pixels,
    "view of a view": lambda pixels: inset(inset(pixels, 1, 1, 1, 1).base)[1:-1, 1:-1],
}
PACK = r"; pass numpy.ascontiguousarray\({0}\)$"
BACKWARDS = "^{0} has gaps between its pixels or runs backwards" + PACK
UPWARDS = "^{0} has rows that overlap or run upwards" + PACK


def overlapping(pixels):
    return np.lib.stride_tricks.as_strided(pixels.copy(), pixels.shape, (pixels.itemsize, *pixels.strides[1:]))


# What is made of an array, and the words it is refused with; None where that is no other array.
REFUSED = {
    "Fortran order": (np.asfortranarray, ValueError, BACKWARDS),
    "columns backwards": (lambda a: with_strides(a, 1, -1), ValueError, BACKWARDS),
    "every other column": (lambda a: with_strides(a, 1, 2), ValueError, BACKWARDS),
    "channels apart": (lambda a: with_strides(a[..., None] if a.ndim == 2 else a, 2, 2), ValueError, BACKWARDS),
    "channels backwards": (lambda a: a[..., ::-1] if a.ndim == 3 else None, ValueError, BACKWARDS),
    "rows upwards": (lambda a: with_strides(a, 0, -1), ValueError, UPWARDS),
    "rows that overlap": (overlapping, ValueError, UPWARDS),
    "other byte order": (lambda a: a.astype(a.dtype.newbyteorder(">")) if a.itemsize > 1 else None, TypeError,
                         "^{0} has the dtype >.*, and .* is needed"),
}


def call(name, replaced):
    """The result of an operation, and what it left in its arrays; with some arguments replaced."""
    arguments = {key: value.copy() if isinstance(value, np.ndarray) else value for key, value in CASES[name].items()}
    arguments.update(replaced)
    return getattr(vekcv, name)(**arguments), arguments


@pytest.mark.parametrize("layout", ACCEPTED)
@every_array
def test_layouts_that_are_taken(name, argument, layout):
    expected, left = call(name, {})
    placed = ACCEPTED[layout](CASES[name][argument])
    result, left_by_placed = call(name, {argument: placed})
    assert argument != "out" or result is placed
    np.testing.assert_array_equal(np.reshape(result, np.shape(expected)), expected)
    for key in left:
        np.testing.assert_array_equal(np.reshape(left_by_placed[key], np.shape(left[key])), left[key])
    assert layout != "inset" or guards_intact(placed)


@pytest.mark.parametrize("layout", REFUSED)
@every_array
def test_layouts_that_are_refused(name, argument, layout):
    make, error, words = REFUSED[layout]
    placed = make(CASES[name][argument])
    if placed is not None:
        refuses((error, words.format(argument)), call, name, {argument: placed})
        call(name, {argument: np.ascontiguousarray(placed, placed.dtype.newbyteorder("="))})


@every_array
@pytest.mark.parametrize("value", [
    None, 3, "text", [[1, 2], [3, 4]], np.float32(2), np.zeros(5, "u1"), np.zeros((2, 2, 2, 2), "u1"),
    np.array([["a"]]), np.zeros((2, 2), object), np.zeros((3, 3, 0), "u1"), np.zeros((3, 3, 5), "u1"),
    np.zeros((3, 3), "c8")], ids=str)
def test_what_is_no_image(name, argument, value):
    if value is None and argument in ("out", "mask"):
        assert call(name, {argument: None})[0] is not CASES[name][argument]
    else:
        refuses(((TypeError, ValueError), ""), call, name, {argument: value})


@pytest.mark.parametrize("name, argument", [pair for pair in ARRAYS if pair[1] != next(iter(CASES[pair[0]]))])
def test_other_numbers_of_channels(name, argument):
    pixels = CASES[name][argument]
    wanted = pixels.shape[2] if pixels.ndim == 3 else 1
    refuses((ValueError, f"^{argument} has {wanted + 1} channels, and {wanted} are needed$"), call, name,
            {argument: np.zeros((*pixels.shape[:2], wanted + 1), pixels.dtype)})


@pytest.mark.parametrize("name, argument", [pair for pair in ARRAYS if pair[0] != "label_markers"])
@pytest.mark.parametrize("cut", [np.s_[1:], np.s_[:, 1:]], ids=["rows", "columns"])
def test_sizes_must_be_equal(name, argument, cut):
    pixels = CASES[name][argument]
    small, full = (f"{each.shape[1]} x {each.shape[0]}" for each in (pixels[cut], pixels))
    # The first image sets the size.
    sizes = f"{small} pixels, but \\w+ has {full}|{full} pixels, but {argument} has {small}"
    refuses((ValueError, rf"^\w+ has ({sizes}) \(width x height\)$"), call, name, {argument: pixels[cut]})


@pytest.mark.parametrize("name", CASES)
@pytest.mark.parametrize("index", [np.s_[:0], np.s_[:, :0], np.s_[:0, :0]], ids=["no rows", "no columns", "nothing"])
def test_empty_images(name, index):
    arrays = {key: value[index] for key, value in CASES[name].items() if isinstance(value, np.ndarray)}
    refuses("SizeError", call, name, arrays)


@every_array
def test_read_only_arrays(name, argument):
    pixels = CASES[name][argument].copy()
    pixels.flags.writeable = False
    if argument in ("out", "accumulator", "markers"):
        refuses((ValueError, f"^{argument} is read-only"), call, name, {argument: pixels})
    else:
        np.testing.assert_array_equal(call(name, {argument: pixels})[0], call(name, {})[0])


@pytest.mark.parametrize("name", [name for name in CASES if "out" in CASES[name] and name != "undistort_radial"])
def test_results_are_made(name):
    expected, _ = call(name, {})
    made, _ = call(name, {"out": None})
    np.testing.assert_array_equal(made, expected)
    assert made.dtype == expected.dtype and made.flags.c_contiguous and made.flags.owndata


@pytest.mark.parametrize("dtype, channels", [
    ("i8", 1), ("f8", 1), ("?", 1), ("i1", 1), ("u2", 3), ("f4", 3), ("u1", 2), ("u1", 9)])
def test_forms_that_there_are_not(dtype, channels):
    a = np.zeros((4, 5, channels), dtype)
    taken = "uint8 with 1 or 3 channels, uint16 with 1 channel, float32 with 1 channel"
    refuses((TypeError, f"^abs_diff takes {taken}; not {np.dtype(dtype)} with {channels} channel"), vekcv.abs_diff,
            a, a)


def test_dtypes_of_results():
    a, sobel = image("u1"), vekcv.filter_sobel_vert
    assert (sobel(a).dtype, sobel(a, out=np.empty(a.shape, "i1")).dtype, sobel(image("f4")).dtype) == ("i2", "i1", "f4")
    for dtype in ("i1", np.int8, np.dtype("int8")):
        assert sobel(a, dtype=dtype).dtype == np.int8
    for words, options in [("results are int16, int8, float32; not float64", {"dtype": float}),
                           ("takes float32 with 1 channel; not uint8 with 1 channel", {"dtype": "f4"}),
                           ("int8, and int16 is needed", {"dtype": "i2", "out": np.empty(a.shape, "i1")})]:
        refuses((TypeError, words), sobel, a, **options)
    refuses((TypeError, "uint8 with 3 channels.*; not uint8 with 1 channel"), vekcv.norm, a, channel=0)


@pytest.mark.filterwarnings("ignore:the matrix subclass:PendingDeprecationWarning")
def test_subclasses_are_taken_for_the_arrays_that_they_hold():
    a, b = image("u1"), image("u1", seed=2)
    expected = vekcv.abs_diff(a, b)
    hidden = np.ma.array(a, mask=True)  # the mask of numpy.ma does not count
    for subclass in (np.matrix(a), hidden, a.view(np.recarray)):
        result = vekcv.abs_diff(subclass, b)
        assert type(result) is np.ndarray
        np.testing.assert_array_equal(result, expected)
    out = np.matrix(np.zeros_like(a))
    assert vekcv.abs_diff(a, b, out) is out and (out == expected).all()
