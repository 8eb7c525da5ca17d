"""Morphology: scipy has the same operations, whose dilations take the mirrored element."""
import gc
import weakref

import numpy as np
import pytest
from scipy import ndimage
from support import assert_rounded, assert_same, by_channel, guards_intact, image, inset, refuses

import vekcv

SHAPE = 15, 70
RANDOM = np.random.default_rng(5)


def scipy_options(element, anchor, mirrored=False):
    """An element, in which what is minus infinity or 0 is no member, as arguments of scipy."""
    shape = np.array(element.shape)
    anchor = np.array(anchor[::-1])
    if mirrored:
        element, anchor = element[::-1, ::-1], shape - 1 - anchor
    options = {"mode": "nearest", "origin": list(anchor - shape // 2)}
    if element.dtype.kind == "f":
        return options | {"footprint": element > -np.inf, "structure": np.where(element > -np.inf, element, 0)}
    return options | {"footprint": element != 0}


def dilation(a, *element):
    return ndimage.grey_dilation(a, **scipy_options(*element, mirrored=True))


def erosion(a, *element):
    return ndimage.grey_erosion(a, **scipy_options(*element))


def opening(a, *element):
    return ndimage.grey_opening(a, **scipy_options(*element))


def closing(a, *element):
    return ndimage.grey_closing(a, **scipy_options(*element, mirrored=True))


# By the elements that they take.
RULES = {
    vekcv.MorphologyElement: {vekcv.dilate: dilation, vekcv.erode: erosion},
    vekcv.CompoundElement: {
        vekcv.morph_open: opening, vekcv.morph_close: closing,
        vekcv.morph_top_hat: lambda a, *element: a - opening(a, *element),
        vekcv.morph_black_hat: lambda a, *element: closing(a, *element) - a,
        vekcv.morph_gradient: lambda a, *element: dilation(a, *element) - erosion(a, *element)},
    vekcv.GrayElement: {vekcv.gray_dilate: dilation, vekcv.gray_erode: erosion},
}
CASES = [(kind, operation, rule) for kind, rules in RULES.items() for operation, rule in rules.items()]
MASKS = {
    "random": RANDOM.random((6, 7)) < 0.4, "even": np.ones((2, 4), bool), "one": np.array([[7]]),
    "beside": np.array([[0, 0, 1]]), "large": RANDOM.random((21, 90)) < 0.02,
}
HEIGHTS = {
    "all": np.array([[1., -3, 0], [20, 5, -7]]), "some": np.where(RANDOM.random((5, 6)) < 0.5, -np.inf, 30),
    "one": np.array([[-np.inf, 9]]), "far": np.array([[2.0 ** 31 - 128, -2.0 ** 31, 0]]),
}
every_operation = pytest.mark.parametrize("kind, operation, rule", CASES, ids=[case[1].__name__ for case in CASES])


def reach_of(kind, a):
    """What an element is made for: a width or a size."""
    return a.shape[1] if kind is vekcv.MorphologyElement else (a.shape[1], a.shape[0])


@every_operation
@pytest.mark.parametrize("dtype", ["u1", "f4"])
@pytest.mark.parametrize("channels", [(), (3,), (4,)], ids=["C1", "C3", "C4"])
def test_operations(kind, operation, rule, dtype, channels):
    elements = HEIGHTS if kind is vekcv.GrayElement else MASKS
    if channels and kind is vekcv.GrayElement:
        refuses((TypeError, "not .* with . channels"), operation, image(dtype, (4, 5, *channels)), np.zeros((3, 3)))
        return
    for shape in [SHAPE, (1, 1), (20, 1), (2, 3)]:
        a = image(dtype, (*shape, *channels))
        for element in elements.values():
            height, width = element.shape
            middle = (width - 1) // 2, (height - 1) // 2
            for anchor in {middle, (0, 0), (width - 1, 0)} if shape == SHAPE else {middle}:
                made = operation(inset(a), element, None if anchor == middle else anchor)
                exact = by_channel(lambda plane: rule(plane.astype("f8"), element, anchor), a)
                assert_rounded(made, exact, dtype)


@every_operation
def test_other_ways_to_give_elements(kind, operation, rule):
    a = image("f4", SHAPE)
    if kind is vekcv.GrayElement:
        numbers, hidden = np.array([[10, 1000, 3]]), np.array([[False, True, False]])
        assert_same(operation(a, np.ma.array(numbers, mask=hidden)), operation(a, np.where(hidden, -np.inf, numbers)))
        refuses("BadArgument", operation, a, np.ma.array(numbers, mask=True))
        fractions = RANDOM.standard_normal((3, 4))
        assert_rounded(operation(a, fractions), rule(a.astype("f8"), fractions, (1, 1)), "f4")
    else:
        assert_same(operation(a, (5, 3)), operation(a, np.ones((3, 5))))
        out = np.empty_like(a)
        assert operation(a, (4, 2), (3, 0), out=out) is out
        assert_same(out, operation(a, np.ones((2, 4)), (3, 0)))


@every_operation
@pytest.mark.parametrize("in_memory", [False, True], ids=["of the library", "of the caller"])
@pytest.mark.parametrize("dtype", ["u1", "f4"])
def test_prepared_elements(kind, operation, rule, in_memory, dtype):
    a, mask, anchor = image(dtype, SHAPE), MASKS["random"].astype("f8"), (4, 1)
    options, reach = {"dtype": dtype, "anchor": anchor}, reach_of(kind, a)
    if in_memory:
        needed = kind.bytes_needed(mask, reach, dtype)
        options["memory"] = memory = inset(np.zeros((1, needed), "u1"), left=5)  # at any address
        refuses((ValueError, f"memory must be {needed} bytes"), kind, mask, reach,
                **options | {"memory": memory[:, 1:]})
    with kind(mask, reach, **options) as element:
        assert_same(operation(inset(a), element), operation(a, mask, anchor))
        assert_same(operation(a[3:7, 20:], element), operation(a[3:7, 20:], mask, anchor))
        refuses("SizeError", operation, np.zeros((SHAPE[0], SHAPE[1] + 1), dtype), element)
        if kind is not vekcv.MorphologyElement:
            refuses("SizeError", operation, np.zeros((SHAPE[0] + 1, SHAPE[1]), dtype), element)
        refuses((ValueError, "a prepared element has its anchor"), operation, a, element, anchor)
        refuses("BadArgument", operation, image({"u1": "f4", "f4": "u1"}[dtype], SHAPE), element)
        if kind is not vekcv.GrayElement:
            refuses("BadArgument", operation, image(dtype, (*SHAPE, 3)), element)
    refuses((ValueError, "is closed"), operation, a, element)
    assert not in_memory or guards_intact(memory)


def test_memory_lives_as_long_as_its_element():
    needed = vekcv.MorphologyElement.bytes_needed((3, 3), 70)
    memory = np.zeros(needed, "u1")
    alive, element = weakref.ref(memory), vekcv.MorphologyElement((3, 3), 70, memory=memory)
    del memory
    gc.collect()
    assert alive() is not None
    assert_same(vekcv.dilate(image("u1", SHAPE), element), vekcv.dilate(image("u1", SHAPE), (3, 3)))
    element.close()
    gc.collect()
    assert alive() is None
