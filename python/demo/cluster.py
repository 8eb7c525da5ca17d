"""Counts the discs in an image of a gigapixel, on a cluster of two worker processes, one of which is killed on the way.

The image exists tile by tile only: discs of known number on an uneven background, with noise and white specks. A mean
filter removes the specks; mean and deviation of what it leaves give a threshold; the regions above it are labelled tile
by tile, and labels that touch at the borders of tiles are joined. Fails unless there are as many regions as discs, and
each process stayed below 1 GiB."""
import argparse
import os
import resource
import signal
import sys
import time

import dask
import dask.array
import distributed
import numpy

import vekcv
import vekcv.dask

PITCH = 250  # of the cells that hold a disc each; no divisor of a tile, so that discs lie across the borders of tiles
MOST_LABELS = 65534
MOST_MEMORY = 1 << 30


def disc(row, column):
    """Centre and radius of the disc in a cell: at least 25 pixels from the edge of the cell."""
    number = (row * 65537 + column + 1) * 2654435761 % 2**32
    return (row * PITCH + 85 + number % 81, column * PITCH + 85 + (number >> 8) % 81, 10 + (number >> 16) % 51)


def discs_in(size):
    return (size // PITCH) ** 2


def make_tile(size, block_info=None):
    """A tile of the image."""
    (top, bottom), (left, right) = block_info[None]["array-location"]
    y, x = numpy.arange(top, bottom), numpy.arange(left, right)
    uneven = [numpy.uint8(22 + 8 * numpy.sin(9 * axis / size)) for axis in (y, x)]
    tile = numpy.add.outer(*uneven)
    cells = size // PITCH
    for row in range(top // PITCH, min(cells, (bottom - 1) // PITCH + 1)):
        for column in range(left // PITCH, min(cells, (right - 1) // PITCH + 1)):
            centre_y, centre_x, radius = disc(row, column)
            rows = slice(max(centre_y - radius - top, 0), max(centre_y + radius + 1 - top, 0))
            columns = slice(max(centre_x - radius - left, 0), max(centre_x + radius + 1 - left, 0))
            inside = numpy.add.outer((y[rows] - centre_y) ** 2, (x[columns] - centre_x) ** 2) <= radius**2
            tile[rows, columns][inside] = 200
    noise = numpy.frombuffer(numpy.random.default_rng((top, left)).bytes(tile.size), numpy.uint8).reshape(tile.shape)
    tile += noise & 15
    tile[noise == 255] = 255
    return tile


def label_tile(tile, threshold):
    """The number of regions in a tile, and their labels in its first and last row and its first and last column."""
    markers = (tile > threshold).astype(numpy.uint16)
    count = vekcv.label_markers(markers)
    if count > MOST_LABELS:
        raise ValueError(f"a tile has {count} regions, more than there are labels: take smaller tiles")
    return count, markers[0].copy(), markers[-1].copy(), markers[:, 0].copy(), markers[:, -1].copy()


def regions(tiles):
    """The number of regions of the whole image, from what label_tile found in rows of tiles: regions of two tiles are
    one where pixels of them are neighbours, also over a corner."""
    first = 1  # labels of the whole image count on from tile to tile
    lines = []
    for row in tiles:
        lines.append([])
        for count, *edges in row:
            lines[-1].append([numpy.where(edge > 0, edge.astype(numpy.int64) + (first - 1), 0) for edge in edges])
            first += count
    parents = list(range(first))

    def root(label):
        while parents[label] != label:
            parents[label] = parents[parents[label]]
            label = parents[label]
        return label

    joined = 0
    for one, other in touching(lines):
        one, other = root(one), root(other)
        if one != other:
            parents[one] = other
            joined += 1
    return first - 1 - joined


def touching(lines):
    """Pairs of labels on both sides of a border that goes through the whole image."""
    borders = [([tile[1] for tile in row], [tile[0] for tile in below]) for row, below in zip(lines, lines[1:])]
    columns = list(zip(*lines))
    borders += [([tile[3] for tile in left], [tile[2] for tile in right]) for left, right in zip(columns, columns[1:])]
    for one, other in borders:
        one, other = numpy.concatenate(one), numpy.concatenate(other)
        for shifted, facing in ((one, other), (one[1:], other[:-1]), (one[:-1], other[1:])):
            pairs = numpy.unique(numpy.stack([shifted, facing], 1), axis=0)
            yield from pairs[pairs.all(axis=1)].tolist()


def peak():
    """The process and the greatest memory that it had in bytes."""
    return os.getpid(), resource.getrusage(resource.RUSAGE_SELF).ru_maxrss * 1024


def run(client, size, tile):
    """The number of regions and the peak memory of each process."""
    image = dask.array.map_blocks(make_tile, size, chunks=dask.array.core.normalize_chunks(tile, (size, size)),
                                  dtype=numpy.uint8, meta=numpy.empty((0, 0), numpy.uint8))
    smooth = vekcv.dask.filter_lowpass(image, aperture=5)
    megapixels = size * size / 1e6

    begin = time.perf_counter()
    mean, deviation = vekcv.dask.mean_std_dev(smooth).compute()
    threshold = mean + 2 * deviation
    first = time.perf_counter()
    print(f"first pass: mean {mean:.3f}, deviation {deviation:.3f}; {megapixels / (first - begin):.0f} megapixels/s")

    blocks = smooth.to_delayed()
    futures = client.compute([dask.delayed(label_tile)(block, threshold) for block in blocks.ravel()])
    for done, _ in enumerate(distributed.as_completed(futures), 1):
        if done == len(futures) // 3:
            break
    peaks = dict(client.run(peak).values())
    held = client.has_what()
    address, victim = max(client.run(os.getpid).items(), key=lambda worker: len(held[worker[0]]))
    os.kill(victim, signal.SIGKILL)
    print(f"worker {victim} killed when {done} of {len(futures)} tiles were done; it held {len(held[address])} results")

    tiles = iter(client.gather(futures))
    found = regions([[next(tiles) for _ in row] for row in blocks])
    second = time.perf_counter()
    print(f"second pass, all of its tiles included: {megapixels / (second - first):.0f} megapixels/s")
    print(f"both: {2 * megapixels / (second - begin):.0f} megapixels/s in {second - begin:.1f} s")
    client.wait_for_workers(2, timeout=60)
    peaks.update(client.run(peak).values())
    if len(peaks) < 3:
        sys.exit("no worker was started in place of the one that was killed")
    return found, peaks


def main():
    options = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    options.add_argument("--size", type=int, default=32768, help="width and height of the image")
    options.add_argument("--tile", type=int, default=2048, help="width and height of a tile")
    options = options.parse_args()
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, memory_limit=MOST_MEMORY,
                                  dashboard_address=None, silence_logs="CRITICAL") as cluster, \
            distributed.Client(cluster) as client:
        vekcv.dask.one_thread_per_worker(client)
        found, peaks = run(client, options.size, options.tile)
    print(f"{found} regions, {discs_in(options.size)} discs")
    for process, memory in peaks.items():
        print(f"worker {process}: at most {memory / 2**20:.0f} MiB")
    if found != discs_in(options.size):
        sys.exit("the regions are not the discs")
    if max(peaks.values()) >= MOST_MEMORY:
        sys.exit("a worker took more than 1 GiB")


if __name__ == "__main__":
    main()
