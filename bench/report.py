#!/usr/bin/env python3
"""Writes the page on performance from the results of vekcv_bench: report.py PAGE RESULTS [RESULTS]

The results lie in the folders of the builds, whose sizes the page has too. They are those of a 64-bit build, of a 32-bit build, or of both. A 32-bit build, which has no peer, is compared
with the peer of the 64-bit results.
"""
import itertools
import json
import math
import os
import statistics
import sys

from size import size_section

INTRODUCTION = """# Performance

What one call takes, against {peer} and against `memcpy` or reading. This page is written by `bench/run.sh`.

Machine: {processor}, {processors} processors, {cache} MiB of last-level cache; a virtual machine that others share, so
single numbers vary by the spread that the tables give. Compiler: {compiler}.

Code variants: {variants}.

- Both libraries work on the same images, whose rows have no padding; their results are compared before they are timed.
  Masks select stretches of 1 to 128 pixels, half of all. Filters have masks of 3 x 3 pixels and replicate the border;
  pipeline filters have 5 taps, the Gaussian filter 9. Windows of local deviations have 24 x 24 pixels; stages of Haar
  classifiers have 20 features of two rectangles.
- The contestants take turns, several rounds each. A time is the median of the rounds; the spread is the range of the
  middle half of the rounds as a share of the median, at the worst size.
- **Peer** is the time of the peer divided by ours, the mean of {inside}: above 1, ours is faster.
{width_note}  The peer extracts a channel of interest into an image of its own, as its functions look at all channels or at one.
  It has no reconstruction: that of the benchmark is the algorithm as it stands in Vincent's paper, with 8 neighbours, for
  domes of 40 of 256 greys in dilations and for holes in erosions.
- **Copy or read** is the share of the bandwidth of memory at {outside}, which exceeds the cache. For operations that
  write an image it is the time of a `memcpy` that moves as many bytes as the operation has to (sources and destination
  once, an image that is changed in place twice), divided by ours. For operations that only read it is the time of a
  plain sum over the bytes of the same images, read in eight places at once, divided by ours. Pixels that a mask leaves
  out count too, though whole vectors of them are skipped, and so do the channels beside that of interest.
- **2 threads** is the time with one thread divided by that with two, at {outside}: 1 for what always runs on the
  calling thread, as the header tells, and less than 2 where memory is the limit.
"""


def size_of(result):
    return (result["width"], result["height"])


def size_name(size):
    return f"{size[0]} x {size[1]}"


def geometric_mean(values):
    return math.exp(statistics.fmean(map(math.log, values)))


def number(value, digits=2):
    return "" if value is None else f"{value:.{digits}f}"


def duration(nanoseconds):
    """Three significant digits in the unit that suits."""
    for unit, scale in (("ns", 1), ("us", 1e3), ("ms", 1e6)):
        if nanoseconds < 1000 * scale or unit == "ms":
            value = nanoseconds / scale
            return f"{value:.{max(0, 2 - int(math.log10(max(value, 1))))}f} {unit}"


class Build:
    """The results of one build; `first` is the build that has the peer, where this one has none."""

    def __init__(self, data, first):
        self.name = f"{data['bits']} bits"
        self.results = {(r["name"], size_of(r), r["threads"]): r for r in data["results"]}
        self.peers = first.results if first else self.results
        self.sizes = sorted({size_of(r) for r in data["results"]})
        self.families = list(dict.fromkeys(r["family"] for r in data["results"]))
        self.inside = [size for size in self.sizes if size in ((640, 480), (1920, 1080))]

    def exports(self, family=None):
        return list(dict.fromkeys(r["name"] for r in self.results.values() if family in (None, r["family"])))

    def sizes_of(self, export):
        """Not all sizes: models of large images take more memory than a block may have."""
        return [size for size in self.sizes if (export, size, 1) in self.results]

    def time(self, export, size, threads=1):
        return self.results[export, size, threads]["vekcv"]["ns"]

    def cell(self, export, size):
        return duration(self.time(export, size)) if size in self.sizes_of(export) else ""

    def peer(self, export):
        """Ratio to the peer at the two sizes that most caches hold, or None."""
        pairs = [(self.peers.get((export, size, 1), {}).get("peer"), self.time(export, size))
                 for size in self.inside if size in self.sizes_of(export)]
        ratios = [peer["ns"] / time for peer, time in pairs if peer]
        return geometric_mean(ratios) if ratios else None

    def bandwidth(self, export):
        """Share of the bandwidth of a copy or, where nothing is written, of reading."""
        result = self.results[export, self.sizes_of(export)[-1], 1]
        return (result.get("memcpy") or result["read"])["ns"] / result["vekcv"]["ns"]

    def threads(self, export):
        largest = self.sizes_of(export)[-1]
        if (export, largest, 2) not in self.results:
            return None
        return self.time(export, largest) / self.time(export, largest, 2)

    def spread(self, export):
        return max(self.results[export, size, 1]["vekcv"]["spread"] for size in self.sizes_of(export))


def table(header, rows):
    lines = ["| " + " | ".join(header) + " |", "|---" + "|--:" * (len(header) - 1) + "|"]
    return "\n".join(lines + ["| " + " | ".join(row) + " |" for row in rows]) + "\n"


def mean_and_least(values):
    values = [value for value in values if value is not None]
    return f"{geometric_mean(values):.2f} ({min(values):.2f})" if values else ""


def summary(builds):
    rows = []
    for build, family in itertools.product(builds, [None, *builds[0].families]):
        exports = build.exports(family)
        calls = [build.time(export, build.sizes[0]) for export in exports]
        rows.append([f"{build.name}, {family or 'all'}", str(len(exports)), mean_and_least(map(build.peer, exports)),
                     mean_and_least(map(build.bandwidth, exports)),
                     f"{statistics.median(calls):.0f} ({max(calls):.0f})",
                     mean_and_least(map(build.threads, exports))])
    header = ["Build and family", "Exports", "Peer: mean (least)", "Copy or read: mean (least)",
              f"ns a call at {size_name(builds[0].sizes[0])}: median (most)", "2 threads: mean (least)"]
    return "## Summary\n\n" + table(header, rows)


def family_section(family, builds):
    text = f"## {family}\n"
    for build in builds:
        header = ["Export"] + [size_name(size) for size in build.sizes]
        header += ["Peer", "Copy or read", "2 threads", "Spread"]
        rows = [[f"`{export}`"] + [build.cell(export, size) for size in build.sizes] +
                [number(build.peer(export)), number(build.bandwidth(export)), number(build.threads(export)),
                 f"{100 * build.spread(export):.0f} %"] for export in build.exports(family)]
        text += f"\n{build.name}:\n\n" + table(header, rows)
    return text


def main(page, *paths):
    data = []
    for path in paths:
        with open(path, encoding="utf-8") as file:
            data.append(json.load(file))
    data.sort(key=lambda d: -d["bits"])
    first = Build(data[0], None)
    builds = [first] + [Build(d, first) for d in data[1:]]
    introduction = INTRODUCTION.format(
        peer=next((d["peer"] for d in data if d["peer"]), "no other library"),
        processor=data[0]["processor"], processors=data[0]["processors"], cache=data[0]["cacheBytes"] >> 20,
        compiler=data[0]["compiler"], variants="; ".join(f"{d['bits']} bits {d['library']}" for d in data),
        inside=" and ".join(map(size_name, first.inside)), outside=" or ".join(dict.fromkeys(size_name(build.sizes[-1]) for build in builds)),
        width_note="  The 32-bit build is compared with the peer in 64 bits.\n" if len(builds) > 1 else "")
    sections = [introduction, summary(builds), size_section([os.path.dirname(path) for path in paths], table)]
    sections += [family_section(family, builds) for family in first.families]
    with open(page, "w", encoding="utf-8") as file:
        file.write("\n".join(sections))


if __name__ == "__main__":
    main(*sys.argv[1:])
