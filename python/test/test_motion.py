"""Moving objects before a background, and points that are followed through images moved by parts of a pixel."""
import numpy as np
import pytest
from support import assert_same, inset

import vekcv


SHAPE = 16, 23
OBJECT = np.s_[4:9, 5:10]
MODELS = vekcv.ForegroundGaussian, vekcv.ForegroundHistogram
every_channels = pytest.mark.parametrize("channels", [(), (3,)], ids=["C1", "C3"])
every_model = pytest.mark.parametrize("model", MODELS)
MASK = np.zeros(SHAPE, "u1")
MASK[OBJECT] = 255


def scene(channels=(), light=None, value=100):
    """A frame of one value with something lighter in it."""
    frame = np.full((*SHAPE, *channels), value, "u1")
    if light is not None:
        frame[light] = 180
    return frame


@every_model
@every_channels
def test_objects_are_foreground(model, channels):
    frame, made = scene(channels, OBJECT), model(inset(scene(channels)))
    foreground, background = made.apply(inset(frame))
    assert_same(foreground, MASK)
    assert_same(background, scene(channels))
    given = np.empty(SHAPE, "u1"), np.empty_like(frame)
    results = model(scene(channels)).apply(frame, *given)
    assert results[0] is given[0] and results[1] is given[1]
    assert_same(given[0], MASK)
    assert_same(given[1], background)
    if channels:
        frame = scene(channels)
        frame[OBJECT][..., 1] = 180
        assert_same(model(scene(channels)).apply(frame)[0], MASK)  # one channel is enough
    for _ in range(250):  # objects that stop become background
        foreground, background = made.apply(scene(channels, OBJECT))
    assert not foreground.any()
    assert_same(background, scene(channels, OBJECT))


@every_channels
def test_fields_of_gaussians(channels):
    model = vekcv.ForegroundGaussian(scene(channels))
    frames = [scene(channels, value=value) for value in (100, 104, 100)]
    assert not any(model.apply(frame)[0].any() for frame in frames)
    assert (model.fields.frameCounter, model.fields.windowLength) == (3, 200)
    model.fields.matchDeviations = 1e-3  # now nothing matches
    assert model.apply(frames[1])[0].all()


@every_channels
def test_histograms_learn_what_they_are_told(channels):
    model, frame = vekcv.ForegroundHistogram(scene(channels)), scene(channels, OBJECT)
    for _ in range(3):  # to classify changes nothing
        foreground = model.classify(inset(frame))
        assert_same(foreground, MASK)
    out = np.empty_like(foreground)
    assert model.classify(frame, out) is out
    assert model.fields.updateCount == 0
    assert_same(model.update(frame, foreground), scene(channels))
    assert model.fields.updateCount == 1
    for _ in range(2):  # what a mask calls background twice is background
        background = model.update(frame, np.zeros(SHAPE, "u1"))
    assert_same(background, frame)
    assert not model.classify(frame).any()
    model, frame = vekcv.ForegroundHistogram(scene(channels)), scene(channels, value=104)  # 4 away is near
    assert not model.classify(frame).any()
    model.fields.parameters.tolerance = 0
    assert model.classify(frame).all()


SIZE = 140, 110
RANGES = {"u1": 255, "u2": 65535, "f4": 1}
every_dtype = pytest.mark.parametrize("dtype", RANGES)
POINTS = np.array([(x, y) for x in (30, 61.5, 100) for y in (30.25, 50, 80)], "f4")


def moved(dtype, dx=0.0, dy=0.0):
    """A smooth image, in which all that is at (x, y) has gone to (x + dx, y + dy)."""
    y, x = np.indices(SIZE[::-1])
    x, y = x - dx, y - dy
    waves = np.sin(x / 5.1) * np.cos(y / 6.3) + np.sin((x + 2 * y) / 9) + np.cos((3 * x - y) / 17)
    values = RANGES[dtype] * (waves + 3) / 6
    return values.astype(dtype) if dtype == "f4" else np.rint(values).astype(dtype)


@every_dtype
@pytest.mark.parametrize("motion", [(0.3, -0.4), (-5.25, 6.5)])
def test_motions(dtype, motion):
    previous, following, kept = moved(dtype), moved(dtype, *motion), POINTS.copy()
    flow = vekcv.optical_flow_pyr_lk(previous, following, POINTS, window=15)
    np.testing.assert_allclose(flow.points - POINTS, np.broadcast_to(motion, POINTS.shape), atol=0.05)
    assert flow.found.all() and flow.found.dtype == bool
    assert flow.error.dtype == "f4" and (flow.error < 0.02 * RANGES[dtype]).all()
    assert_same(POINTS, kept)
    pyramids = [vekcv.Pyramid.of(frame, 3) for frame in (previous, following)]
    with vekcv.OpticalFlow(SIZE, 15, dtype) as by_pyramids:
        for _ in range(2):  # pyramids serve twice
            for one, other in zip(by_pyramids(*pyramids, POINTS), flow):
                assert_same(one, other)


def test_guesses():
    """On level 0 alone, a window finds its way over a few pixels only."""
    images = [moved("f4", *motion) for motion in ((0, 0), (14.5, 3))]
    pyramids, flow = [vekcv.Pyramid.of(each, 3) for each in images], vekcv.OpticalFlow(SIZE, 11, "f4")
    with_levels, alone = flow(*pyramids, POINTS), flow(*pyramids, POINTS, max_level=0)
    guessed, goal = flow(*pyramids, POINTS, POINTS + (15, 2), max_level=0), POINTS + (14.5, 3)
    assert abs(guessed.points - goal).max() < 0.05 < abs(alone.points - goal).max()
    assert abs(with_levels.points - goal).max() < abs(alone.points - goal).max()
    # A step of no more than one iteration ends elsewhere than twenty of them; with a large threshold so does the first.
    once = flow(*pyramids, POINTS, max_iterations=1)
    assert abs(once.points - with_levels.points).max() > 0.01
    assert_same(flow(*pyramids, POINTS, threshold=1e9).points, once.points)
    assert_same(flow(*pyramids, POINTS, max_level=99).points, with_levels.points)
    near = {"guesses": POINTS + (15, 2)}
    for of_images, of_pyramids in [(near | {"levels": 1}, near | {"max_level": 1}), ({"max_iterations": 1},) * 2,
                                   ({"threshold": 1e9},) * 2]:
        whole = vekcv.optical_flow_pyr_lk(*images, POINTS, window=11, **of_images)
        assert_same(whole.points, flow(*pyramids, POINTS, **of_pyramids).points)


def test_lost_points():
    previous = moved("u1")
    previous[:, 70:] = 90
    points = np.array([(30, 30), (110, 50), (-1, 20), (200, 20), (np.nan, 20), (139, 109)], "f4")
    flow = vekcv.optical_flow_pyr_lk(previous, previous, points, levels=1)
    assert flow.found.tolist() == [True, False, False, False, False, False] and not flow.error[1:].any()
    assert_same(flow.points, points)  # none of them moved, nor into the image


def pyramid_of(size=SIZE, levels=3, dtype="u1"):
    return vekcv.Pyramid.of(np.zeros(size[::-1], dtype), levels)
