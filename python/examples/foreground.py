"""What moves before a background that is learned: python3 foreground.py [VIDEO [RESULTS]]

Without a video, or with -, a disc flies over a photograph. RESULTS are names such as mask-{:02}.png."""
import pathlib
import subprocess
import sys

import imageio
import numpy
import vekcv

PICTURE = pathlib.Path(__file__).resolve().parents[2] / "examples/pictures/camera.png"


def flying_disc():
    background, noise = imageio.imread(PICTURE), numpy.random.default_rng(1)
    y, x = numpy.ogrid[:512, :512]
    for number in range(25):
        scene = background.astype(float)
        if number > 0:  # the first frame is what the model takes for the background
            scene[(x - 60 - 16 * number) ** 2 + (y - 200) ** 2 <= 40 ** 2] = 255
        yield (scene + noise.normal(0, 2, scene.shape)).clip(0, 255).astype(numpy.uint8)


def frames_of(video):
    command = ["ffmpeg", "-loglevel", "error", "-i", video, "-f", "image2pipe", "-c:v", "pgm", "-pix_fmt", "gray", "-"]
    with subprocess.Popen(command, stdout=subprocess.PIPE) as process:
        while process.stdout.readline() == b"P5\n":
            width, height = map(int, process.stdout.readline().split())
            process.stdout.readline()  # the largest value, 255
            yield numpy.frombuffer(process.stdout.read(width * height), numpy.uint8).reshape(height, width)
    if process.returncode != 0:
        sys.exit("ffmpeg cannot read the video")


def main(video="-", results="foreground-{:02}.png"):
    frames = flying_disc() if video == "-" else frames_of(video)
    with vekcv.ForegroundHistogram(next(frames)) as model:
        for number, frame in enumerate(frames, 1):
            foreground, _ = model.apply(frame)  # 255 where the frame is not what the model has learned
            imageio.imwrite(results.format(number), foreground)


if __name__ == "__main__":
    main(*sys.argv[1:])
