"""The plot of the page on performance: how many times as fast as the peer each export is."""
import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt
from matplotlib.ticker import FuncFormatter, LogLocator, NullFormatter

from results import geometric_mean

STYLES = ((-0.17, "#0057a8", "o"), (0.17, "#d95f02", "D"))  # of the builds: place in the row, colour, marker
WIDTH, ROW_HEIGHT, FRAME = 8.33, 0.24, 1.3  # in inches; the width is 800 pixels


def plot(path, builds):
    """Tells whether there is anything to show."""
    families = [family for family in builds[0].families if any(build.peer_ratios(family) for build in builds)]
    if not families:
        return False
    plt.rcParams.update({"svg.hashsalt": "vekcv", "font.size": 9})  # the same bytes for the same results
    figure, axes = plt.subplots(figsize=(WIDTH, FRAME + ROW_HEIGHT * len(families)), layout="constrained")
    for row in range(0, len(families), 2):
        axes.axhspan(row - 0.5, row + 0.5, color="#f2f2f2", linewidth=0)
    axes.axvline(1, color="black", linewidth=1)
    for build, (offset, color, marker) in zip((build for build in builds if build.peer_ratios()), STYLES):
        dots = [(ratio, row + offset) for row, family in enumerate(families) for ratio in build.peer_ratios(family)]
        axes.plot(*zip(*dots), marker, color=color, markersize=3.5, markeredgewidth=0, alpha=0.55, label=build.name)
        means = [(geometric_mean(ratios), row + offset) for row, family in enumerate(families)
                 if (ratios := build.peer_ratios(family))]
        axes.plot(*zip(*means), "|", color=color, markersize=9, markeredgewidth=2)
    axes.set_xscale("log", base=2)
    axes.xaxis.set_major_locator(LogLocator(base=2, numticks=20))
    axes.xaxis.set_major_formatter(FuncFormatter(lambda ratio, _: f"{ratio:g}"))
    axes.xaxis.set_minor_formatter(NullFormatter())
    axes.grid(axis="x", color="#d0d0d0", linewidth=0.5)
    axes.set_axisbelow(True)
    axes.set_yticks(range(len(families)), families)
    axes.set_ylim(len(families) - 0.5, -0.5)
    axes.tick_params(axis="y", length=0)
    axes.set_xlabel(f"times as fast as {builds[0].machine['peer'] or 'the peer'}")
    axes.legend(loc="lower right", bbox_to_anchor=(1, 1), ncols=2, markerscale=2, frameon=False)
    figure.savefig(path, metadata={"Date": None, "Creator": None})
    plt.close(figure)
    return True
