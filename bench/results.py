"""The results of vekcv_bench, read from BUILD/bench/results."""
import glob
import json
import math
import os
import statistics

SIZES = ((16, 16), (640, 480), (1920, 1080), (3840, 2160))
PEER_SIZES = SIZES[1:3]  # what most caches hold
LARGE = "beyond the cache"  # a square of another size for each export


def geometric_mean(values):
    return math.exp(statistics.fmean(map(math.log, values)))


class Build:
    """The results of one build; `first` is the build that has the peer, where this one has none."""

    def __init__(self, folder, first=None):
        parts = []
        for path in sorted(glob.glob(os.path.join(folder, "bench/results/*.json"))):
            with open(path, encoding="utf-8") as file:
                parts.append(json.load(file))
        self.folder = folder
        self.machine = parts[0]
        self.name = f"{self.machine['bits']} bits"
        self.results = {}  # by export and size
        self.family_of = {}
        for result in (result for part in parts for result in part["results"]):
            size = (result["width"], result["height"])
            self.results[result["name"], size if size in SIZES else LARGE] = result
            self.family_of[result["name"]] = result["family"]
        self.peers = first.results if first else self.results
        measured = {size for _, size in self.results}
        self.sizes = [size for size in (*SIZES, LARGE) if size in measured]
        self.families = list(dict.fromkeys(self.family_of.values()))

    def exports(self, family=None):
        return [export for export, its_family in self.family_of.items() if family in (None, its_family)]

    def sizes_of(self, export):
        """Not all sizes: models of large images take more memory than a block may have."""
        return [size for size in self.sizes if (export, size) in self.results]

    def largest(self, export):
        return self.results[export, self.sizes_of(export)[-1]]

    def time(self, export, size):
        return self.results[export, size]["vekcv"]["ns"]

    def peer(self, export):
        """Ratio to the peer at the two sizes that most caches hold, or None."""
        ratios = [self.peers[export, size]["peer"]["ns"] / self.time(export, size) for size in PEER_SIZES
                  if (export, size) in self.results and "peer" in self.peers.get((export, size), {})]
        return geometric_mean(ratios) if ratios else None

    def peer_ratios(self, family=None):
        return [ratio for ratio in map(self.peer, self.exports(family)) if ratio is not None]

    def bandwidth(self, export):
        """Share of the bandwidth of a copy or, where nothing is written, of reading."""
        result = self.largest(export)
        return (result.get("memcpy") or result["read"])["ns"] / result["vekcv"]["ns"]

    def threads(self, export):
        result = self.largest(export)
        return result["vekcv"]["ns"] / result["threads"]["ns"] if "threads" in result else None

    def spread(self, export):
        return max(self.results[export, size]["vekcv"]["spread"] for size in self.sizes_of(export))


def load(folders):
    """The builds, that with the most bits first."""
    builds = sorted(map(Build, folders), key=lambda build: -build.machine["bits"])
    return builds[:1] + [Build(build.folder, builds[0]) for build in builds[1:]]
