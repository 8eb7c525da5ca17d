"""Cascades of Haar-like features in the common XML formats."""
from typing import NamedTuple
from xml.etree import ElementTree

import numpy

from vekcv._types import Array

# The squares of a window of white pixels fit an integral image; inside of a border of a pixel there is a pixel.
_SIDES = range(3, 182)
# Sums of so many products with pixels remain finite.
_LARGEST_NUMBER = 1e25


class Feature(NamedTuple):
    """Rectangles of the window (x, y, width, height, weight). A tilted one holds the pixels (x - 1 + i - k, y + i + k),
    and those below them, for i from 0 to width - 1 and k from 0 to height - 1."""
    rectangles: list[tuple]
    tilted: bool


class Stage(NamedTuple):
    """Adds a number for each feature: `below` where it is below its threshold times the deviation of the window, else
    `above`. Windows pass where the sum is not below the threshold of the stage."""
    threshold: float
    features: list[Feature]
    thresholds: Array
    below: Array
    above: Array


def read(path):
    """The size (width, height) of the window, and the stages."""
    try:
        root = ElementTree.parse(path).getroot()
        cascade = next((element for element in root if len(element)), None)
        if root.tag != "opencv_storage" or cascade is None:
            raise ValueError("this holds no cascade")
        return (_read_old if cascade.get("type_id") == "opencv-haar-classifier" else _read_new)(cascade)
    except (ElementTree.ParseError, ValueError) as error:
        raise ValueError(f"{path}: {error}") from None


def _read_new(cascade):
    """The format of today, with features in a list of their own."""
    for name, only in ("stageType", "BOOST"), ("featureType", "HAAR"):
        if cascade.findtext(name) != only:
            raise ValueError(f"{name} is {cascade.findtext(name)}, and must be {only}")
    window = _window(_numbers(cascade, "width", 1) + _numbers(cascade, "height", 1))
    features = _each(cascade, "features", lambda item: _feature(item, window))

    def stump(item):
        if len(item.findtext("internalNodes", "").split()) > 4:
            raise ValueError("this is a tree of several nodes or of categories; only stumps can be used")
        below, above, index, threshold = _numbers(item, "internalNodes", 4)
        if (below, above) != (0, -1) or not index.is_integer() or not 0 <= index < len(features):
            raise ValueError("internalNodes must be 0, -1, the number of a feature and a threshold")
        return features[int(index)], threshold, *_numbers(item, "leafValues", 2)

    stages = _each(cascade, "stages", lambda item: _stage(*_numbers(item, "stageThreshold", 1),
                                                          _each(item, "weakClassifiers", stump)))
    if cascade.find("stageNum") is not None and _numbers(cascade, "stageNum", 1) != [len(stages)]:
        raise ValueError(f"stageNum is not {len(stages)}, the number of stages")
    return window, stages


def _read_old(cascade):
    """The format before it, with features in the stages."""
    window = _window(_numbers(cascade, "size", 2))

    def stump(item):
        if len(item) != 1:
            raise ValueError("this is a tree of several nodes; only stumps can be used")
        names = "threshold", "left_val", "right_val"
        return _feature(item.find("_/feature"), window), *(_numbers(item[0], name, 1)[0] for name in names)

    def stage(item):
        if item.find("next") is not None and _numbers(item, "next", 1) != [-1]:
            raise ValueError("the stages are a tree; only cascades can be used")
        return _stage(*_numbers(item, "stage_threshold", 1), _each(item, "trees", stump))

    return window, _each(cascade, "stages", stage)


def _each(element, name, convert):
    """What the items of a list are converted to."""
    found = []
    for number, item in enumerate(element.iterfind(f"{name}/_")):
        try:
            found.append(convert(item))
        except ValueError as error:
            raise ValueError(f"item {number} of {name}: {error}") from None
    if not found:
        raise ValueError(f"there are no {name}")
    return found


def _numbers(element, name, count):
    """So many numbers that are the text of an element in another one."""
    text = element.findtext(name)
    if text is None:
        raise ValueError(f"{name} is missing")
    numbers = [float(word) for word in text.split()]
    if len(numbers) != count:
        raise ValueError(f"{name} holds {len(numbers)} numbers, and must hold {count}")
    if not all(abs(number) <= _LARGEST_NUMBER for number in numbers):
        raise ValueError(f"{name} holds a number that is not finite or too large")
    return numbers


def _window(sides):
    if not all(side in _SIDES for side in sides):
        raise ValueError(f"the sides of the window must be from {_SIDES[0]} to {_SIDES[-1]}")
    return tuple(map(int, sides))


def _feature(element, window):
    """A feature whose rectangles lie in the window."""
    if element is None:
        raise ValueError("feature is missing")
    tilted = element.find("tilted") is not None and _numbers(element, "tilted", 1) != [0]

    def rectangle(item):
        x, y, width, height, weight = _numbers(item, ".", 5)
        left, bottom = (x - height, y + height + width) if tilted else (x, y + height)
        if not all(number.is_integer() for number in (x, y, width, height)):
            raise ValueError("a rectangle must have whole numbers")
        if left < 0 or y < 0 or width < 1 or height < 1 or x + width > window[0] or bottom > window[1]:
            raise ValueError("the rectangle is empty or leaves the window")
        return x, y, width, height, weight

    return Feature(_each(element, "rects", rectangle), tilted)


def _stage(threshold, stumps):
    features, *values = zip(*stumps)
    return Stage(threshold, features, *(numpy.array(each, numpy.float32) for each in values))
