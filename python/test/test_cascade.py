"""Cascades: against their definition, against the command-line tool that VEK names, and malformed files."""
import json
import os
import pathlib
import subprocess

import numpy
import pytest
import vekcv
from support import refuses
from vekcv.cascade import _grouped

imageio = pytest.importorskip("imageio")

PICTURES = pathlib.Path(__file__).resolve().parents[2] / "examples/pictures"
TRAINED = pathlib.Path("/usr/share/opencv4/haarcascades")
WINDOW = 12, 10
# Features as (tilted, rectangles); each stage is a threshold and stumps (feature, threshold, below, above).
UPRIGHT = [(0, [(0, 0, 12, 10, -1), (6, 0, 6, 10, 2)]), (0, [(3, 1, 5, 9, 1), (3, 4, 5, 3, -3)]),
           (0, [(1, 1, 3, 3, -3), (5, 5, 7, 5, .5), (2, 0, 4, 7, .25), (11, 9, 1, 1, 2.5)])]
TILTED = [(1, [(5, 1, 4, 4, -1), (5, 1, 2, 4, 2)]), UPRIGHT[1], (1, [(6, 0, 3, 6, 1), (4, 2, 3, 4, -1.5)])]
# Either feature of the first stage lets a window pass; of the second one both must.
STAGES = [(0.5, [(0, 0.1, -0.25, 1), (1, -0.05, 1, -0.25)]), (0, [(2, 0.02, 1, -1), (0, 0.3, 0.5, -1.5)])]


def described(features, stages=STAGES, window=WINDOW, type_id=' type_id="opencv-cascade-classifier"'):
    """A cascade in the format of today."""
    def item(*parts):
        return f"<_>{' '.join(map(str, parts))}</_>"

    stumps = ["".join(f"<_><internalNodes>0 -1 {feature} {threshold}</internalNodes>"
                      f"<leafValues>{below} {above}</leafValues></_>" for feature, threshold, below, above in stage)
              for _, stage in stages]
    items = "".join(f"<_><stageThreshold>{least}</stageThreshold><weakClassifiers>{each}</weakClassifiers></_>"
                     for (least, _), each in zip(stages, stumps))
    features = "".join(f"<_><rects>{''.join(item(*each) for each in rectangles)}</rects><tilted>{tilted}</tilted></_>"
                       for tilted, rectangles in features)
    return f"""<?xml version="1.0"?><opencv_storage><cascade{type_id}><stageType>BOOST</stageType>
        <featureType>HAAR</featureType><height>{window[1]}</height><width>{window[0]}</width>
        <stageNum>{len(stages)}</stageNum><stages>{items}</stages><features>{features}</features>
        </cascade></opencv_storage>"""


def described_as_before(features):
    """A cascade in the old format."""
    stages = ""
    for number, (least, stumps) in enumerate(STAGES):
        stages += "<_><trees>"
        for feature, threshold, below, above in stumps:
            tilted, rectangles = features[feature]
            texts = "".join(f"<_>{' '.join(map(str, each))}</_>" for each in rectangles)
            stages += f"""<_><_><feature><rects>{texts}</rects><tilted>{tilted}</tilted></feature><threshold>{threshold}
                </threshold><left_val>{below}</left_val><right_val>{above}</right_val></_></_>"""
        stages += f"</trees><stage_threshold>{least}</stage_threshold><parent>{number - 1}</parent><next>-1</next></_>"
    return f"""<?xml version="1.0"?><opencv_storage><!-- converted --><my_cascade type_id="opencv-haar-classifier">
        <size> {WINDOW[0]} {WINDOW[1]}</size><stages>{stages}</stages></my_cascade></opencv_storage>"""


@pytest.fixture
def load(tmp_path):
    def load_text(text):
        (tmp_path / "cascade.xml").write_text(text)
        return vekcv.Cascade(tmp_path / "cascade.xml")
    return load_text


def noise(height, width, seed=3):
    """Pixels of noise, below which there are larger dark and light squares."""
    random = numpy.random.default_rng(seed)
    squares = random.integers(0, 200, (height // 5 + 1, width // 5 + 1)).repeat(5, 0).repeat(5, 1)[:height, :width]
    return (squares + random.integers(0, 56, (height, width))).astype(numpy.uint8)


def value_of(feature, window):
    tilted, rectangles = feature
    total = 0
    for x, y, width, height, weight in rectangles:
        if tilted:
            places = [(y + i + k, x - 1 + i - k) for i in range(width) for k in range(height)]
            total += weight * sum(window[row, column] + window[row + 1, column] for row, column in places)
        else:
            total += weight * window[y:y + height, x:x + width].sum()
    return total


def passes(features, window):
    inner = window[1:-1, 1:-1]
    norm = (inner.std() or 1) * inner.size
    return all(sum(below if value_of(features[feature], window) < threshold * norm else above
                   for feature, threshold, below, above in stumps) >= least for least, stumps in STAGES)


def places_by_definition(features, gray, step):
    width, height = WINDOW
    pixels = gray.astype(float)
    return [[x, y, width, height] for y in range(0, gray.shape[0] - height + 1, step)
            for x in range(0, gray.shape[1] - width + 1, step) if passes(features, pixels[y:y + height, x:x + width])]


@pytest.mark.parametrize("describe", [described, described_as_before])
@pytest.mark.parametrize("features, shape", [(UPRIGHT, (120, 540)), (TILTED, (45, 61))], ids=["upright", "tilted"])
def test_windows_are_those_of_the_definition(load, features, shape, describe):
    gray = noise(*shape)
    with load(describe(features)) as cascade:
        assert cascade.size == WINDOW
        found = cascade.detect(gray, scale=40, neighbours=0)  # no window of the next size fits
    assert found.dtype == numpy.int32 and len(found) > 10
    assert found.tolist() == places_by_definition(features, gray, 2)


@pytest.mark.parametrize("features", [UPRIGHT, TILTED], ids=["upright", "tilted"])
def test_enlarged_windows(load, features):
    """Half of a picture that has each pixel four times is one that has it once; there windows are at all places."""
    gray = noise(30, 41)
    found = load(described(features)).detect(gray.repeat(2, 0).repeat(2, 1), scale=2, neighbours=0, minimum=20)
    expected = 2 * numpy.array(places_by_definition(features, gray, 1))
    assert found[found[:, 2] <= 2 * WINDOW[0]].tolist() == expected.tolist() and len(expected) > 20


def test_kinds_of_pictures(load):
    cascade, gray = load(described(UPRIGHT)), noise(60, 70)
    for view in (gray[5:, 7:], gray[::2, ::2], gray.T, gray[::-1]):
        assert (cascade.detect(view, 1.3, 0) == cascade.detect(view.copy(), 1.3, 0)).all()
    for nothing in (numpy.zeros((9, 100), numpy.uint8), numpy.full((100, 100), 77, numpy.uint8)):
        assert cascade.detect(nothing).shape == (0, 4)
    every = cascade.detect(gray, 1.3, 0)
    assert {tuple(size) for size in every[:, 2:].tolist()} <= {(round(12 * 1.3 ** step), round(10 * 1.3 ** step))
                                                               for step in range(8)}
    assert cascade.detect(gray, 1.3, 0, 17).tolist() == every[every[:, 3] >= 17].tolist() != every.tolist()
    # Flat windows have a deviation of 1: the feature of what is flat is 0, below 0.1.
    flat = load(described(UPRIGHT, [(0, [(0, 0.1, 1, -1)])])).detect(numpy.full((30, 32), 77, numpy.uint8), 10, 0)
    assert len(flat) == 11 * 11


@pytest.mark.parametrize("least, expected", [
    (1, [[10, 10, 20, 20], [31, 11, 20, 20], [100, 50, 40, 40]]), (2, [[10, 10, 20, 20], [100, 50, 40, 40]]),
    (3, [[10, 10, 20, 20]]), (4, [])])
def test_windows_are_grouped(least, expected):
    """Windows that nearly agree, also by way of others, become their mean; one within a group of more is none."""
    windows = numpy.array([[8, 8, 20, 20], [10, 10, 20, 20], [31, 11, 20, 20], [12, 12, 14, 14], [12, 12, 20, 20],
                           [97, 50, 40, 40], [103, 50, 40, 40]], numpy.int32)
    assert _grouped(windows, least).tolist() == expected


@pytest.mark.skipif("VEK" not in os.environ, reason="VEK does not name the command-line tool")
@pytest.mark.parametrize("options", [(1.1, 3, 0), (1.05, 1, 50), (1.3, 0, 0)], ids=str)
@pytest.mark.parametrize("name", ["frontalface_alt", "smile", "fullbody"])  # the last two have tilted features
def test_what_the_tool_finds(tmp_path, name, options):
    path, gray = TRAINED / f"haarcascade_{name}.xml", tmp_path / "gray.png"
    if not path.exists():
        pytest.skip("opencv-data is not installed")
    pixels = numpy.asarray(imageio.imread(PICTURES / "astronaut.png", pilmode="L"))
    imageio.imwrite(gray, pixels)
    numbers = zip(("--scale", "--min-neighbors", "--min-size"), map(str, options))
    done = subprocess.run([os.environ["VEK"], "detect", path, gray, "--json", *sum(numbers, ())], capture_output=True,
                          check=True)
    expected = [[item[name] for name in ("x", "y", "width", "height")] for item in json.loads(done.stdout)]
    assert vekcv.Cascade(path).detect(pixels, *options).tolist() == expected


MALFORMED = [
    ("</stages>", "", "not well-formed|mismatched"), ("opencv_storage", "storage", "no cascade"),
    ("<stageType>BOOST</stageType>", "", "stageType is None"), ("HAAR", "LBP", "featureType is LBP"),
    ("<width>12</width>", "<width>2</width>", "sides of the window"),
    ("<width>12</width>", "<width>12 3</width>", "width holds 2 numbers"),
    ("<width>12</width>", "<width>twelve</width>", "twelve"),
    ("<height>10</height>", "<height>182</height>", "sides of the window"),
    ("<height>10</height>", "", "height is missing"),
    ("<stageNum>2</stageNum>", "<stageNum>3</stageNum>", "stageNum"),
    ("0 0 12 10 -1", "1 0 12 10 -1", "item 0 of features: item 0 of rects: .*leaves the window"),
    ("3 4 5 3 -3", "3 8 5 3 -3", "item 1 of features: item 1 of rects: .*leaves the window"),
    ("3 4 5 3 -3", "3 4 0 3 -3", "empty"), ("3 4 5 3 -3", "3.5 4 5 3 -3", "whole numbers"),
    ("3 4 5 3 -3", "3 4 5 3 nan", "not finite"), ("3 4 5 3 -3", "3 4 5 3 1e30", "too large"),
    ("3 4 5 3 -3", "3 4 5 3", "item 1 of rects: .*4 numbers"),
    ("<tilted>0</tilted>", "<tilted>1</tilted>", "leaves the window"),
    ("0 -1 2 0.02", "0 -1 3 0.02", "item 1 of stages: item 0 of weakClassifiers: .*number of a feature"),
    ("0 -1 2 0.02", "1 -1 2 0.02", "internalNodes must be"), ("0 -1 2 0.02", "1 0 2 0.02 -1 -2 1 0.5", "only stumps"),
    ("<leafValues>1 -1</leafValues>", "<leafValues>1</leafValues>", "leafValues holds 1 numbers"),
    ("<stageThreshold>0.5</stageThreshold>", "", "item 0 of stages: stageThreshold is missing"),
    ("weakClassifiers", "classifiers", "no weakClassifiers"), ("stages>", "steps>", "no stages"),
    ("features>", "properties>", "no features"),
]
MALFORMED_AS_BEFORE = [
    ("12 10</size>", "12</size>", "size holds 1 numbers"),
    ("<next>-1</next>", "<next>1</next>", "stages are a tree"),
    ("</_></_><_><_>", "</_><_>", "tree of several nodes"),
    ("left_val", "left_node", "left_val is missing"),
    ("feature>", "measure>", "feature is missing")]


@pytest.mark.parametrize("describe, old, new, message", [
    *((described, *case) for case in MALFORMED), *((described_as_before, *case) for case in MALFORMED_AS_BEFORE)])
def test_malformed_files(load, describe, old, new, message):
    text = describe(UPRIGHT)
    assert old in text
    refuses((ValueError, f"cascade.xml: .*({message})"), load, text.replace(old, new))


def test_arguments_that_are_wrong(load, tmp_path):
    refuses((FileNotFoundError, ""), vekcv.Cascade, tmp_path / "nothing.xml")
    cascade, gray = load(described(UPRIGHT)), noise(30, 30)
    for wrong in (gray.astype(numpy.float32), gray[..., None], gray.tolist(), None):
        refuses((TypeError, "gray"), cascade.detect, wrong)
    for scale, neighbours in ((1, 3), (float("nan"), 3), (1.2, -1)):
        refuses((ValueError, "scale"), cascade.detect, gray, scale, neighbours)
    every = load(described(UPRIGHT, [(0, [(0, 1e9, 1, 1)])]))
    refuses((ValueError, "more than 200000 windows pass the cascade"), every.detect, noise(900, 1000))
    for _ in range(2):
        cascade.close()
    refuses((ValueError, "closed"), cascade.detect, gray)
