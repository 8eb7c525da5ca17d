"""The edges of a photograph, by Canny: python3 edges.py [PICTURE [RESULT]]"""
import pathlib
import sys

import imageio
import vekcv

PICTURES = pathlib.Path(__file__).resolve().parents[2] / "examples/pictures"


def main(picture=PICTURES / "camera.png", result="edges.png"):
    gray = imageio.imread(picture, pilmode="L")
    # Derivatives from left to right and from top to bottom, of int16: they have a sign, and up to 1020.
    across = vekcv.filter_sobel_neg_vert(gray)
    down = vekcv.filter_sobel_horiz(gray)
    # Lines one pixel wide, where |across| + |down| is largest and above 250, and on from there where it is above 100.
    edges = vekcv.canny(across, down, low=100, high=250)
    imageio.imwrite(result, edges)
    print(f"{100 * vekcv.mean_std_dev(edges)[0] / 255:.1f} % of the pixels are on edges")


if __name__ == "__main__":
    main(*sys.argv[1:])
