"""Faces found by a trained cascade: python3 face.py [PICTURE [RESULT [CASCADE]]]

The cascade is one of Debian's package opencv-data."""
import pathlib
import sys

import imageio
import vekcv

PICTURES = pathlib.Path(__file__).resolve().parents[2] / "examples/pictures"
CASCADE = "/usr/share/opencv4/haarcascades/haarcascade_frontalface_alt.xml"


def main(picture=PICTURES / "astronaut.png", result="face.png", cascade=CASCADE):
    colors = imageio.imread(picture, pilmode="RGB")
    gray = imageio.imread(picture, pilmode="L")
    with vekcv.Cascade(cascade) as faces:
        for x, y, width, height in faces.detect(gray):
            print(x, y, width, height)
            box = colors[y:y + height, x:x + width]  # a view: the frame is drawn into the picture
            inside = box[3:-3, 3:-3].copy()
            box[:] = 0, 255, 0
            box[3:-3, 3:-3] = inside
    imageio.imwrite(result, colors)


if __name__ == "__main__":
    main(*sys.argv[1:])
