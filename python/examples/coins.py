"""Coins counted and outlined, also where they touch: python3 coins.py [PICTURE [RESULT]]"""
import pathlib
import sys

import imageio
import numpy
import vekcv

PICTURES = pathlib.Path(__file__).resolve().parents[2] / "examples/pictures"


def main(picture=PICTURES / "coins.png", result="coins-outlined.png"):
    gray = imageio.imread(picture, pilmode="L")
    # The top-hat takes away what is wider than a coin: light that is not even. Closing fills what is dark in coins.
    y, x = numpy.ogrid[-40:41, -40:41]
    flat = vekcv.morph_top_hat(gray, x * x + y * y <= 40 * 40)
    coins = vekcv.morph_close((flat > 70).astype(numpy.uint8), (7, 7))
    # Middles are the peaks of the distance from the background that rise 2 pixels above the way to any higher one.
    # Lowered by these, lesser peaks are slopes of others, and the rest have flat tops, which a second reconstruction
    # takes off.
    distance = vekcv.true_distance_transform(coins)
    lowered = distance - 2
    vekcv.morph_reconstruct_dilate(distance, lowered)
    below = lowered - numpy.float32(0.1)
    vekcv.morph_reconstruct_dilate(lowered, below)
    labels = (lowered > below).astype(numpy.uint8)
    print(vekcv.label_markers(labels))
    # Water rises from the middles, where the relief is lowest, and all over the background, which is none of the coins.
    vekcv.segment_watershed((255 - distance * (255 / distance.max())).astype(numpy.uint8), labels)
    labels[coins == 0] = 0
    vekcv.bound_segments(labels, 255)
    imageio.imwrite(result, numpy.where(labels[..., None] == 255, numpy.uint8([0, 255, 0]), gray[..., None]))


if __name__ == "__main__":
    main(*sys.argv[1:])
