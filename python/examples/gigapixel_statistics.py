"""Statistics of an image that is larger than memory: workers read and filter it tile by tile.

Writes a sample image as a zarr array to a temporary folder; with --zarr FOLDER, looks at one of yours, which has rows
and columns of bytes. Prints mean, deviation and extrema, and writes a small picture of the gradients."""
import argparse
import tempfile

import dask.array
import distributed
import imageio
import numpy

import vekcv.dask

TILE = 2048


def write_sample(folder, size):
    """Waves, with a dark and a light pixel."""
    y, x = (dask.array.arange(size, chunks=TILE) for _ in range(2))
    waves = 120 + 50 * dask.array.sin(x[None, :] / 70) + 50 * dask.array.cos(y[:, None] / 90 + x[None, :] / 400)
    image = waves.astype(numpy.uint8)
    image[size // 3, size // 5] = 0
    image[size // 2, size // 4] = 255
    image.to_zarr(folder)


def main():
    options = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    options.add_argument("--zarr", help="folder of the image, instead of a sample")
    options.add_argument("--size", type=int, default=8192, help="width and height of the sample; 32768 is a gigapixel")
    options.add_argument("--out", default="gradients.png", help="the picture")
    options = options.parse_args()
    with distributed.LocalCluster(processes=True, dashboard_address=None) as cluster, \
            distributed.Client(cluster) as client, tempfile.TemporaryDirectory() as folder:
        vekcv.dask.one_thread_per_worker(client)
        if options.zarr is None:
            write_sample(folder, options.size)
        image = dask.array.from_zarr(options.zarr or folder)

        horizontal, vertical = vekcv.dask.filter_sobel_horiz(image), vekcv.dask.filter_sobel_neg_vert(image)
        gradients = numpy.hypot(horizontal.astype(numpy.float32), vertical.astype(numpy.float32))
        factor = max(1, max(image.shape) // 512)
        small = dask.array.coarsen(numpy.max, gradients, {0: factor, 1: factor}, trim_excess=True)
        # In one go, so that each tile is read once.
        (mean, deviation), extrema, small = dask.compute(
            vekcv.dask.mean_std_dev(image), vekcv.dask.min_max_indx(image), small)

    print(f"{image.shape[1]} x {image.shape[0]} pixels, mean {mean:.3f}, standard deviation {deviation:.3f}")
    for name, value, (x, y) in zip(("minimum", "maximum"), extrema[:2], extrema[2:]):
        print(f"{name} {value:.0f}, first at x = {x}, y = {y}")
    imageio.imwrite(options.out, (small * (255 / max(small.max(), 1))).astype(numpy.uint8))
    print(f"gradients, reduced by {factor}: {options.out}")


if __name__ == "__main__":
    main()
