#!/usr/bin/env python3
"""Writes the page on performance and its plot: report.py PAGE BUILD [BUILD]

The builds are a 64-bit build, a 32-bit build, or both, with the results of vekcv_bench in BUILD/bench/results. A 32-bit
build, which has no peer, is compared with the peer of the 64-bit results. The last line that is printed sums up the
comparison with the peer.
"""
import itertools
import math
import os
import statistics
import sys

from plot import plot
from results import LARGE, PEER_SIZES, SIZES, geometric_mean, load
from size import size_section

INTRODUCTION = """# Performance

What one call takes, against {peer} and against `memcpy` or reading. This page is written by `bench/run.sh`.
{picture}
Machine: {processor}, {processors} processors, {cache} MiB of last-level cache; a virtual machine that others share, so
single numbers vary by the spread that the tables give. Compiler: {compiler}.

Code variants: {variants}.

- Both libraries work on the same images, whose rows have no padding; their results are compared before they are timed.
  Masks select stretches of 1 to 128 pixels, half of all. Filters have masks of 3 x 3 pixels and replicate the border;
  pipeline filters have 5 taps, the Gaussian filter 9. Windows of local deviations have 24 x 24 pixels; stages of Haar
  classifiers have 20 features of two rectangles.
- The builds of both widths take turns, family by family; within a family the contestants of an export do, 11 rounds
  at each size, of 3 ms or one call each. Where these would take more than half a second there are fewer rounds, 5 at
  least, or 3 of more than a second. A time is the median of the rounds; the spread is the range of the middle half of
  the rounds as a share of the median, at the worst size.
- **Peer** is the time of the peer divided by ours, the mean of {inside}: above 1, ours is faster.
{width_note}  The peer extracts a channel of interest into an image of its own, as its functions look at all channels or
  at one. It has no reconstruction: that of the benchmark is the algorithm as it stands in Vincent's paper, with 8
  neighbours, for domes of 40 of 256 greys in dilations and for holes in erosions.
- **Beyond the cache** is a square at which the images of the call take twice the last-level cache together; the tables
  give its side. A few exports, whose models take much memory for each pixel, end at 1920 x 1080.
- **Copy or read** is the share of the bandwidth of memory at the largest size. For operations that write an image it
  is the time of a `memcpy` that moves as many bytes as the operation has to (sources and destination once, an image
  that is changed in place twice), divided by ours. For operations that only read it is the time of a plain sum over
  the bytes of the same images, read in eight places at once, divided by ours. Pixels that a mask leaves out count too,
  though whole vectors of them are skipped, and so do the channels beside that of interest.
- **2 threads** is the time with one thread divided by that with two, at the largest size: 1 for what always runs on the
  calling thread, as the header tells, and less than 2 where memory is the limit.
"""

PICTURE = """
![Speed of every export as a multiple of the peer's, by family and width]({name})

A dot is a row of the tables below, a bar the geometric mean of a family; families that the peer lacks are left out.
"""


def size_name(size):
    return LARGE.capitalize() if size == LARGE else f"{size[0]} x {size[1]}"


def number(value, digits=2):
    return "" if value is None else f"{value:.{digits}f}"


def duration(nanoseconds):
    """Three significant digits in the unit that suits."""
    for unit, scale in (("ns", 1), ("us", 1e3), ("ms", 1e6)):
        if nanoseconds < 1000 * scale or unit == "ms":
            value = nanoseconds / scale
            return f"{value:.{max(0, 2 - int(math.log10(max(value, 1))))}f} {unit}"


def cell(build, export, size):
    if size not in build.sizes_of(export):
        return ""
    side = f"{build.results[export, size]['width']}: " if size == LARGE else ""
    return side + duration(build.time(export, size))


def table(header, rows):
    lines = ["| " + " | ".join(header) + " |", "|---" + "|--:" * (len(header) - 1) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows]) + "\n"


def mean_and_least(values):
    values = [value for value in values if value is not None]
    return f"{geometric_mean(values):.2f} ({min(values):.2f})" if values else ""


def summary(builds):
    rows = []
    for build, family in itertools.product(builds, [None, *builds[0].families]):
        rows_of = build.exports(family)
        if not rows_of:  # a run that was interrupted between the widths
            continue
        calls = [build.time(row, SIZES[0]) for row in rows_of]
        exports = {row.split()[0] for row in rows_of}
        rows.append([f"{build.name}, {family or 'all'}", str(len(exports)), mean_and_least(map(build.peer, rows_of)),
                     mean_and_least(map(build.bandwidth, rows_of)),
                     f"{statistics.median(calls):.0f} ({max(calls):.0f})",
                     mean_and_least(map(build.threads, rows_of))])
    header = ["Build and family", "Exports", "Peer: mean (least)", "Copy or read: mean (least)",
              f"ns a call at {size_name(SIZES[0])}: median (most)", "2 threads: mean (least)"]
    return "## Summary\n\n" + table(header, rows)


def summary_line(builds):
    """What README quotes."""
    parts = []
    for build in builds:
        ratios = build.peer_ratios()
        if ratios:
            parts.append(f"{build.name}: geometric mean {geometric_mean(ratios):.2f}, least {min(ratios):.2f}, "
                         f"most {max(ratios):.2f}, of {len(ratios)} rows")
    return "Speed as a multiple of the peer's. " + "; ".join(parts or ["nothing was compared"])


def family_section(family, builds):
    text = f"## {family}\n"
    for build in builds:
        header = ["Export"] + [size_name(size) for size in build.sizes]
        header += ["Peer", "Copy or read", "2 threads", "Spread"]
        rows = [[f"`{export}`"] + [cell(build, export, size) for size in build.sizes] +
                [number(build.peer(export)), number(build.bandwidth(export)), number(build.threads(export)),
                 f"{100 * build.spread(export):.0f} %"] for export in build.exports(family)]
        text += f"\n{build.name}:\n\n" + table(header, rows)
    return text


def main(page, *folders):
    builds = load(folders)
    first = builds[0].machine
    picture = os.path.splitext(page)[0] + ".svg"
    has_picture = plot(picture, builds)
    introduction = INTRODUCTION.format(
        peer=next((build.machine["peer"] for build in builds if build.machine["peer"]), "no other library"),
        picture=PICTURE.format(name=os.path.basename(picture)) if has_picture else "",
        processor=first["processor"], processors=first["processors"], cache=first["cacheBytes"] >> 20,
        compiler=first["compiler"],
        variants="; ".join(f"{build.name} {build.machine['library']}" for build in builds),
        inside=" and ".join(map(size_name, PEER_SIZES)),
        width_note="  The 32-bit build is compared with the peer in 64 bits.\n" if len(builds) > 1 else "")
    sections = [introduction, summary(builds), size_section(folders, table)]
    sections += [family_section(family, builds) for family in builds[0].families]
    with open(page, "w", encoding="utf-8") as file:
        file.write("\n".join(sections))
    print(summary_line(builds))


if __name__ == "__main__":
    main(*sys.argv[1:])
