"""What is refused, and with what words: once for every check of the package. What is said of arrays in general is in
test_arrays.py; how far a call may read is tested with the operation."""
import math

import numpy as np
import pytest
from support import image, mask_of

import vekcv

U1, I1, U2, I2, I4, F4 = (image(dtype) for dtype in ("u1", "i1", "u2", "i2", "i4", "f4"))
F8, COLOUR, COLOUR16, FOUR = F4.astype("f8"), image("u1", (5, 6, 3)), image("u2", (5, 6, 3)), image("u1", (5, 6, 4))
MARKERS, EMPTY, ONE, SQUARE, BUFFER = np.zeros((7, 150), "u1"), U1[:0], np.ones(1), np.ones((3, 3)), np.zeros(9, "u1")
BORDERS = "'constant' or 'replicate' or 'periodic' or 'reflect' or 'reflect_edge' or 'in_memory'"
SIZE, POINT, PYRAMID = r"size must be \(width, height\)", r"anchor must be \(x, y\)", vekcv.Pyramid(2, (150, 7))
PYRAMID[0] = U1
PROJECT = vekcv.SuperResolution(np.zeros((70000, 2, 2)))
FLOW, WIDE, CLOSED = vekcv.OpticalFlow((150, 7)), vekcv.Pyramid.of(U2, 1), vekcv.Pyramid.of(U1, 1)
CLOSED.close()
CLASSIFIER, INPAINTER, GAUSSIANS, HISTOGRAMS, UP, RESOLUTION = STATES = (
    vekcv.HaarClassifier([(0, 0, 1, 1)], ONE, ONE, ONE, ONE, [1]), vekcv.Inpainter(MARKERS),
    vekcv.ForegroundGaussian(U1),
    vekcv.ForegroundHistogram(U1), vekcv.PyramidLayerUp((9, 9)), vekcv.SuperResolution(np.ones((1, 2, 2))))
for state in STATES:
    state.close()
READ_ONLY = np.zeros((5, 5), "f4")
READ_ONLY.flags.writeable = False
TABLES, HAAR = vekcv.sqr_integral(U1), ([(0, 0, 1, 1)], ONE, ONE, ONE, ONE, [1])
FLAT, COMPOUND, GRAY = (vekcv.MorphologyElement(SQUARE, 150), vekcv.CompoundElement(SQUARE, (150, 7)),
                        vekcv.GrayElement(SQUARE, (150, 7)))
NEEDED = vekcv.MorphologyElement.bytes_needed(SQUARE, 50)
# Words, function, arguments by position and by name.
REFUSED = {
    OverflowError: [
        ("value is 2147483648, outside of -2147483648 to 2147483647", vekcv.abs_diff_c, U1, 2**31),
        ("value is 10{30}, outside of", vekcv.abs_diff_c, U1, 10**30),
        ("border_value is 256, outside of 0 to 255", vekcv.filter_sobel_vert, U1, {"border_value": 256}),
        ("border_value is 65536, outside of 0 to 65535", vekcv.bound_segments, MARKERS.astype("u2"), 65536),
        ("too large", vekcv.blend, F4, F4, 10**400),
        ("size is 1099511627776, outside of", vekcv.filter_min, U1, (3, 2**40)),
        ("divisor", vekcv.filter_column_pipeline, I2, [1], 2 ** 31),
        ("new_value", vekcv.flood_fill, MARKERS, (0, 0), 256),
        ("min_delta", vekcv.flood_fill, COLOUR[..., :1].copy(), (0, 0), 1, "range", {"min_delta": -1}),
    ],
    TypeError: [
        ("value must be an integer, not float", vekcv.abs_diff_c, U1, 1.5),
        ("alpha must be a number, not str", vekcv.blend, F4, F4, "0.5"),
        ("min_label must be an integer, not numpy.ndarray", vekcv.label_markers, MARKERS, 8, U1),
        (f"{SIZE}, not tuple", vekcv.filter_min, U1, (3, 3, 3)),
        (f"{SIZE}, not set", vekcv.filter_max, U1, {3, 4}, (0, 0)),
        ("size must be an integer, not str", vekcv.filter_min, U1, "33", (0, 0)),
        (f"{POINT}, not int", vekcv.filter_min, U1, (3, 3), 1),
        ("anchor must be an integer, not float", vekcv.filter_min, U1, (3, 3), (1, math.nan)),
        ("unexpected keyword argument 'aperture'", vekcv.norm, U1, {"aperture": 3}),
        ("missing 1 required positional argument: 'b'", vekcv.abs_diff, U1),
        ("int9", vekcv.filter_sobel_vert, U1, {"dtype": "int9"}),
        ("not uint32 with 1 channel", vekcv.mean, U1.astype("u4"), mask_of()),
        ("not uint8 with 1 channel", vekcv.mean, U1, None, 0),
        ("what was given is no array of two axes", vekcv.filter_lowpass, [[1, 2]], "in_memory"),
        ("x has the dtype >f4", vekcv.fast_arctan, F4, F4.astype(">f4")),
        ("find_peaks3x3 takes float32 with 1 channel, int32 with 1 channel", vekcv.find_peaks3x3, U1, 0),
        ("hough_line takes uint8 with 1 channel", vekcv.hough_line, COLOUR, 1, 1, 1),
        (r"end must be \(x, y\)", vekcv.sample_line, U1, (0, 0), (1, 2, 3)),
        ("not from int8 to int8", vekcv.copy_subpix, I1, 0, 0),
        ("not from float32 to uint8", vekcv.copy_subpix_intersect, F4, (2, 2), (3, 3), {"dtype": "u1"}),
        ("a must be a numpy array, not list", vekcv.copy_subpix, [[1]], 0, 0),
        ("samples are uint8 or uint16, not int64", PROJECT.residual, F4, np.zeros(1, int), [0], [0]),
        ("thresholds has the dtype float64, and int32", vekcv.HaarClassifier, [(0, 0, 1, 1)], np.ones(1, "i4"),
         *HAAR[2:]),
        ("rectangles has the dtype float64", vekcv.HaarClassifier, [(0, 0, 1, 1.5)], *HAAR[1:]),
        ("a classifier of 32f takes no integral image of float64", vekcv.HaarClassifier(*HAAR).apply, F8, F4, U1, 0),
        ("takes a MorphologyElement, not a GrayElement", vekcv.dilate, U1, GRAY),
        ("takes a GrayElement, not a CompoundElement", vekcv.gray_erode, U1, COMPOUND),
        ("takes a CompoundElement, not a Pyramid", vekcv.morph_open, U1, PYRAMID),
        ("not uint8 with 3 channels", vekcv.gray_dilate, COLOUR, SQUARE),
        ("there is no vekiMorphologyInitAlloc", vekcv.MorphologyElement, SQUARE, 50, {"dtype": "i4"}),
        ("there is no vekiForegroundGaussian", vekcv.ForegroundGaussian, FOUR),
        ("there is no vekiForegroundHistogram", vekcv.ForegroundHistogram, U2),
        ("a has the dtype uint16", vekcv.ForegroundGaussian(U1).apply, U2),
        ("foreground has the dtype bool", vekcv.ForegroundHistogram(U1).update, U1, U1 > 0),
        ("level 0 of a pyramid is no image of uint8 with one channel", FLOW, PYRAMID, WIDE, [(5, 5)], {"max_level": 0}),
        ("level 0 of a pyramid is no image", FLOW, WIDE, PYRAMID, [(5, 5)], {"max_level": 0}),
        ("only for 8u_C1, 16u_C1, 32f_C1", vekcv.OpticalFlow, (9, 9), {"dtype": "i2"}),
        ("low=True .* not from float32 with 1", vekcv.filter_column_pipeline, F4, [1], {"low": True}),
        ("not from uint16 with 1", vekcv.filter_row_border_pipeline, U2, [1]),
        ("from int16 with 1 to float32", vekcv.filter_column_pipeline, I2, [1], {"dtype": "f4"}),
        ("kernels are int16 or float32, not float64", vekcv.gen_sobel_kernel, 3, 1, {"dtype": "f8"}),
        ("pyr_down takes .*; not uint16 with 1 channel", vekcv.pyr_down, U2),
        ("out has the dtype int8", vekcv.pyr_down, U1, np.empty((4, 75), "i1")),
        ("there is no vekiPyramidLayerDown for int8", vekcv.PyramidLayerDown, (9, 9), {"dtype": "i1"}),
        ("there is no vekiPyramidLayerUp for uint8 with 4", vekcv.PyramidLayerUp, (9, 9), {"channels": 4}),
        ("the levels of a pyramid have one dtype", PYRAMID.__setitem__, 1, np.empty(PYRAMID.sizes[1][::-1], "f4")),
        ("distances are float32, uint8, uint16; not float64", vekcv.distance_transform, U1, {"dtype": "f8"}),
        ("metrics has the dtype float64", vekcv.distance_transform, U1, {"metrics": (1.5, 2.5), "dtype": "u1"}),
        ("out has the dtype uint16", vekcv.distance_transform, U1, {"dtype": "u1", "out": U2}),
        ("weights are float32 or int32, not uint8", vekcv.get_distance_transform_mask, {"dtype": "u1"}),
        ("inpaint takes uint8 with 1 or 3 channels; not uint16", vekcv.inpaint, U2, MARKERS),
        ("not bool with 1 channel", vekcv.inpaint, U1, U1 > 0),
        ("flood_fill takes uint8 with 1 or 3 channels, uint16", vekcv.flood_fill, I1, (0, 0), 1),
        ("new_value must be an integer", vekcv.flood_fill, MARKERS, (0, 0), (1, 2, 3)),
        ("a must be an image", vekcv.tilted_integral, [[1, 2]]), ("value must be an integer", vekcv.integral, U1, 0.5),
        ("int32 or float32, not float64", vekcv.integral, U1, 0, "f8"),
        ("int32 and float64, float32 and float64, or int32 both", vekcv.sqr_integral, U1, 0, 0, "f4", "f4"),
        ("not float64 and int32", vekcv.rect_std_dev, *TABLES[::-1], (0, 0, 2, 2)),
        ("out has the dtype float64", vekcv.rect_std_dev, *TABLES, (0, 0, 2, 2), {"out": np.empty((5, 5))}),
    ],
    ValueError: [
        (f"border must be {BORDERS}, not 'mirror'", vekcv.filter_sobel_vert, U1, "mirror"),
        ("must be 'top' or 'bottom' or 'left' or 'right', not 'up'", vekcv.filter_lowpass, U1, "reflect+up"),
        ("norm must be 'inf' or 'l1' or 'l2', not 'l3'", vekcv.norm, U1, "l3"),
        ("norm must be 'inf' or 'l1' or 'l2', not 'L1'", vekcv.gradient_color_to_gray, COLOUR, "L1"),
        ("channel must be 0 or 1 or 2, not -1", vekcv.min_max_indx, COLOUR, {"channel": -1}),
        ("aperture must be 3 or 5, not 7", vekcv.filter_sobel_vert, U1, {"aperture": 7}),
        ("connectivity must be 4 or 8, not 6", vekcv.label_markers, MARKERS, 6),
        ("kernel must be 'sobel' or 'scharr', not 'binomial'", vekcv.min_eigen_val, U1, {"kernel": "binomial"}),
        ("boundaries must be 0 or 4 or 8, not 1", vekcv.segment_gradient, U1, MARKERS, {"boundaries": 1}),
        ("connectivity must be 4 or 8, not 6", vekcv.find_peaks3x3, F4, 0, {"connectivity": 6}),
        (r"x has the shape \(150, 7\), and y has \(7, 150\)", vekcv.fast_arctan, F4, F4.reshape(150, 7)),
        (r"out has the shape \(1050,\)", vekcv.fast_arctan, F4, F4, F4.ravel()),
        ("y has gaps", vekcv.fast_arctan, F4[:, ::2], F4[:, ::2]),
        ("a has 1 axes; an image has two", vekcv.copy_subpix_intersect, U1[0], (2, 2), (3, 3)),
        ("a has the shape", vekcv.copy_subpix, U1, 0, 0, {"out": np.empty((7, 149), "u1")}),
        ("psf_index has numbers outside of 0 to 65535", PROJECT.residual, F4, BUFFER[:1], [0], [65536]),
        ("weight_index has numbers outside of 0 to 255", PROJECT.update_gradient, F4, [0], [0], ONE, [256],
         [1.0] * 300),
        ("weight_index has numbers outside of 0 to 2", PROJECT.update_gradient, F4, [0], [0], ONE, [-1], [1.0] * 3),
        ("gradient is read-only", PROJECT.update_gradient, READ_ONLY, [0], [0], ONE, [0], ONE),
        ("entries are 2 x 2 or 3 x 3", vekcv.SuperResolution, np.zeros((1, 2, 3))),
        *(("there must be a rectangle at least", vekcv.HaarClassifier, *HAAR[:place], wrong, *HAAR[place + 1:])
          for place, wrong in enumerate([[(0, 0, 1)], *[np.ones(2)] * 4, [2]])),
        ("mask has 149 x 7 pixels, but norm has 150 x 7", vekcv.HaarClassifier(*HAAR).apply, np.zeros((9, 160), "f4"),
         F4, U1[:, 1:], 0),
        *(("a structuring element has two axes, or is", vekcv.erode, U1, wrong)
          for wrong in (np.ones(3), 3, (3, 3, 3), (3.0, 3))),
        *(("integers of 32 bits", vekcv.gray_dilate, U1, np.array([[height, 1]]))
          for height in (0.5, 2.0 ** 31, -2.0 ** 31 - 1, np.inf, np.nan)),
        ("a structuring element has two axes", vekcv.gray_dilate, U1, (5, 5)),
        ("a prepared element has its anchor", vekcv.dilate, U1, FLAT, (1, 1)),
        *((f"memory must be {NEEDED} bytes that are writable", vekcv.MorphologyElement, SQUARE, 50, {"memory": memory})
          for memory in (np.zeros(NEEDED, "i1"), np.zeros(2 * NEEDED, "u1")[::2], np.zeros(NEEDED - 1, "u1"),
                         np.broadcast_to(np.zeros(NEEDED, "u1"), NEEDED))),
        ("a has 3 channels, and 1 are needed", vekcv.ForegroundHistogram(U1).apply, image("u1", (7, 150, 3))),
        ("foreground has 149 x 7 pixels", vekcv.ForegroundHistogram(U1).update, U1, U1[:, 1:].copy()),
        *(("points are rows", FLOW, PYRAMID, PYRAMID, *wrong, {"max_level": 0})
          for wrong in ([[1, 2]], [[(1, 2, 3)]], [[(5, 5)], [1]])),
        (r"guesses has the shape \(1, 2\), and points has \(2, 2\)", FLOW, PYRAMID, PYRAMID, [(1, 2)] * 2, [(1, 2)], 0),
        *(("is closed", *call) for call in [
            (CLASSIFIER.tilt, [1]), (CLASSIFIER.apply, F4, F4[:5, :9].copy(), U1[:5, :9].copy(), 0), (INPAINTER, U1),
            (GAUSSIANS.apply, U1), (HISTOGRAMS.classify, U1), (HISTOGRAMS.update, U1, U1), (UP, U1[:5, :6]),
            (RESOLUTION.residual, F4, BUFFER[:1], [0], [0]), (CLOSED.__len__,), (CLOSED.__setitem__, 0, U1)]),
        ("this Pyramid is closed", FLOW, PYRAMID, CLOSED, [(5, 5)], {"max_level": 0}),
        ("numpy.ascontiguousarray", vekcv.filter_row_border_pipeline, I2[:, ::2], [1]),
        ("numpy.ascontiguousarray", vekcv.filter_column_pipeline, I2.T, [1]),
        (r"out has the shape \(7, 150\), and \(5, 150\)", vekcv.filter_column_pipeline, I2, [1, 2, 1], {"out": I2}),
        ("a has 7 rows, fewer than the kernel has taps", vekcv.filter_column_pipeline, I2, [1] * 8),
        *(("out has the shape", vekcv.pyr_up, U1, np.empty(shape, "u1")) for shape in [(14, 299), (14, 300, 1)]),
        ("out has the shape", vekcv.PyramidLayerUp((20, 10)), U1[:5, :6], (12, 10), np.empty((10, 11), "u1")),
        ("the kernel must be a sequence of numbers", vekcv.PyramidLayerDown, (20, 10), 2, (0.25, 0.5, 0.25)),
        *((f"no level {level} of {shape[1]} x {shape[0]} pixels", PYRAMID.__setitem__, level, np.empty(shape, "u1"))
          for level, shape in [(0, (6, 150)), (1, (7, 150)), (3, (2, 38)), (-1, (2, 38))]),
        *(("side by side", PYRAMID.__setitem__, 0, gaps)
          for gaps in (image("u1", (7, 300))[:, ::2], U1[::-1], np.broadcast_to(U1[:1], (7, 150)))),
        *(("3 x 3 pixels have two weights and 5 x 5 three", vekcv.distance_transform, U1, "l2", aperture, metrics)
          for aperture, metrics in [(3, (1, 2, 3)), (5, (1, 2)), (3, 1)]),
        ("aperture must be 3 or 5, not 4", vekcv.distance_transform, U1, {"aperture": 4}),
        ("method must be 'telea' or 'contrast', not 'other'", vekcv.inpaint, U1, MARKERS, {"method": "other"}),
        ("channels must be 1 or 3, not 4", vekcv.inpaint, FOUR, MARKERS),
        *(("new_value must be 3 numbers that are uint16", vekcv.flood_fill, COLOUR16, (0, 0), new)
          for new in (1, (1, 2), (1, 2, -1), (1, 2, 65536), (1.0, 2, 3), "abc")),
        *(("max_delta must be 3 numbers that are uint16", vekcv.flood_fill, COLOUR16, (0, 0), (1, 2, 3), "range", 8, 0,
           delta) for delta in ((1, 2, 65536), -1, 0.5)),
        ("rule must be 'plain' or 'gradient' or 'range', not 'other'", vekcv.flood_fill, U1, (0, 0), 1, "other"),
        ("connectivity must be 4 or 8, not 6", vekcv.flood_fill, U1, (0, 0), 1, {"connectivity": 6}),
    ],
    IndexError: [("level 1 has no image", FLOW, PYRAMID, PYRAMID, [(5, 5)], {"max_level": 1})],
    vekcv.Error: [
        ("SizeError", vekcv.filter_lowpass, EMPTY, "in_memory"), ("SizeError", vekcv.integral, EMPTY),
        ("SizeError", vekcv.hough_line, EMPTY, 1, 1, 1), ("SizeError", vekcv.hough_line, U1, 1, 1, 1, -5),
        ("SizeError", vekcv.hough_line, U1, 1, 5.8e-9, 1),  # the buffer would be larger than its size can tell
        ("BufferSizeWarning", vekcv.hough_line, U1, 1, 1e-7, 1, 2 ** 27),
        ("SizeError", vekcv.find_peaks3x3, F4, 0, -1), ("OutOfRange", vekcv.sample_line, U1, (0, 0), (2 ** 31 - 1, 0)),
        ("SizeError", vekcv.gen_sobel_kernel, -1, 0), ("SizeError", vekcv.ForegroundGaussian(U1).apply, U1[1:]),
        ("BadArgument", vekcv.dilate, F4, FLAT), ("SizeError", vekcv.dilate, image("u1", (7, 151)), FLAT),
        ("AnchorError", vekcv.GrayElement, SQUARE, (9, 9), {"anchor": (3, 3)}),
        ("BadArgument", vekcv.Inpainter(MARKERS), image("u1", (7, 150, 3))),
        ("SizeError", vekcv.PyramidLayerDown, (0, 10)),
        ("SizeError", vekcv.PyramidLayerUp((20, 10)), U1[:5, :6], (13, 10)),
    ],
}


@pytest.mark.parametrize("exception, words, function, arguments", [
    pytest.param(exception, words, function, arguments, id=words)
    for exception, cases in REFUSED.items() for words, function, *arguments in cases])
def test_refused(exception, words, function, arguments):
    options = arguments.pop() if arguments and isinstance(arguments[-1], dict) else {}
    with pytest.raises(exception, match=words):
        function(*arguments, **options)


@pytest.mark.parametrize("size", [(3, 2), [3, 2], np.array([3, 2], "u1"), (np.int64(3), 2)], ids=repr)
def test_sequences_that_are_sizes(size):
    np.testing.assert_array_equal(vekcv.filter_min(U1, size, (1, 0)), vekcv.filter_min(U1, (3, 2), (1, 0)))


@pytest.mark.parametrize("value", [7, 7.0, np.uint8(7), np.float32(7), np.array(7)], ids=repr)
def test_numbers(value):
    np.testing.assert_array_equal(vekcv.blend(F4, np.zeros_like(F4), value), F4 * np.float32(7))
    if not isinstance(value, (float, np.floating)):
        np.testing.assert_array_equal(vekcv.abs_diff_c(U1, value), np.abs(U1.astype(int) - 7))
