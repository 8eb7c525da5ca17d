// vekcv_bench: times every export, the peer and memcpy or reading at several sizes, and writes the results as JSON.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <set>

#include "measure.h"
#include "peer.h"
#include "reference.h"
#include "results.h"
#include "vekcore.h"

namespace bench {
namespace {

struct Options {
    std::string output = "bench.json";
    std::regex filter{""};
    std::string family;  // empty for all
    bool listFamilies = false;
    bool quick = false;
    bool checkOnly = false;
};

Options parse(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const auto value = [&] { return i + 1 < argc ? argv[++i] : (fail(argument + " needs a value"), ""); };
        if (argument == "--out")
            options.output = value();
        else if (argument == "--filter")
            options.filter = value();
        else if (argument == "--family")
            options.family = value();
        else if (argument == "--list-families")
            options.listFamilies = true;
        else if (argument == "--quick")
            options.quick = true;
        else if (argument == "--check")
            options.checkOnly = true;
        else
            fail(
                "usage: vekcv_bench [--out FILE] [--filter REGEX] [--family NAME] [--list-families] [--quick] "
                "[--check]\n"
                "  --out            where to write the results (bench.json)\n"
                "  --filter         only the exports whose names match\n"
                "  --family         only the exports of a family\n"
                "  --list-families  only print the families of these exports\n"
                "  --quick          fewer sizes and rounds, one thread\n"
                "  --check          only call every export, and compare the results with those of the peer");
    }
    return options;
}

/**
 * A square at which the images of a call take twice the largest cache together, at least 4096 x 4096. The side has
 * bounds above, too: the bytes of the largest images, floats in four channels, fit an int, and all of them an address
 * space of 32 bits.
 */
RoiSize sizeBeyondCache(const Row& row) {
    constexpr int32_t kLeastSide = 4096, kMostSide = 11520, kSideUnit = 512;
    constexpr int64_t kMostBytes = int64_t{512} << 20;
    constexpr RoiSize kSample{640, 480};
    int cacheBytes = 0;
    vekGetMaxCacheSizeB(&cacheBytes);
    const double bytesOfPixel =
        static_cast<double>(row.prepare(kSample).data.bytes()) / (kSample.width * kSample.height);
    const double pixels = static_cast<double>(std::min(int64_t{2} * cacheBytes, kMostBytes)) / bytesOfPixel;
    const double units = std::ceil(std::sqrt(pixels) / kSideUnit);
    const auto side = static_cast<int32_t>(std::clamp<double>(units * kSideUnit, kLeastSide, kMostSide));
    return {side, side};
}

/**
 * Ends the program where the call fails or the peer computes something else, for then the comparison would be of
 * different work.
 */
void check(const Row& row) {
    const Work work = row.prepare({67, 31});
    work.data.fill();
    work.vekcv();
    if (!work.peer)
        return;
    std::vector<std::vector<double>> results;
    for (const Operand& operand : work.data.operands)
        results.push_back(operand.values());
    work.data.fill();
    work.peer();
    for (size_t i = 0; i < results.size(); ++i) {
        if (work.data.operands[i].role == Role::kBuffer)
            continue;
        const std::vector<double> expected = work.data.operands[i].values();
        // Differences of large values keep the rounding of these.
        double largest = 1;
        for (const double value : expected)
            largest = std::max(largest, std::abs(value));
        for (size_t k = 0; k < expected.size(); ++k)
            if (!(std::abs(results[i][k] - expected[k]) <= work.data.tolerance * largest))
                fail(row.name + ": " + std::to_string(results[i][k]) + ", but the peer gives " +
                     std::to_string(expected[k]));
    }
}

/** What is measured at a size: what the page on performance has of it, and ours. */
struct Comparison {
    RoiSize size;
    bool withPeer = false;
    bool withReference = false;
    bool withThreads = false;
};

/**
 * 11 rounds, or as many as fit half a second where calls take long, but at least 5, and 3 where a round takes more than
 * a second. Short calls find their images in the cache, as far as these fit there.
 */
Effort effortFor(const std::vector<Contestant>& contestants, bool quick) {
    constexpr double kSeconds = 0.5, kSecondsPerRound = 0.003;
    using Clock = std::chrono::steady_clock;
    double round = 0;
    bool warmUp = false;
    for (const Contestant& contestant : contestants) {
        const Clock::time_point begin = Clock::now();
        contestant.call();
        const double call = std::chrono::duration<double>(Clock::now() - begin).count();
        round += std::max(call, kSecondsPerRound);
        warmUp = warmUp || call < kSecondsPerRound;
    }
    const int fitting = static_cast<int>(std::min(kSeconds / round, 11.0));
    const int least = round > 1 ? 3 : 5;
    return {quick ? least : std::max(fitting, least), kSecondsPerRound, warmUp};
}

Result measureRow(const TableEntry& entry, const Comparison& comparison, bool quick) {
    const Work work = entry.row.prepare(comparison.size);
    work.data.fill();
    // The first call may make a model that has to learn. Copies of the call share it.
    work.vekcv();
    std::vector<Contestant> contestants{{"vekcv", work.vekcv}};
    if (comparison.withPeer && work.peer) {
        work.peer();
        contestants.push_back({"peer", work.peer});
    }
    if (comparison.withReference)
        contestants.push_back(reference(work.data));
    if (comparison.withThreads)
        contestants.push_back({"threads", [&] {
                                   vekSetNumThreads(kMostThreads);
                                   work.vekcv();
                                   vekSetNumThreads(1);
                               }});
    Result result{entry.family, entry.row.name, comparison.size, {}};
    const auto times = measure(contestants, effortFor(contestants, quick));
    for (size_t i = 0; i < contestants.size(); ++i)
        result.times[contestants[i].name] = Time::of(times[i]);
    return result;
}

/** The sizes of a row. The largest of them is compared with the bandwidth of memory. */
std::vector<Comparison> comparisons(const Row& row, bool quick) {
    std::vector<Comparison> chosen;
    for (const Comparison& comparison :
         {Comparison{{16, 16}}, {{640, 480}, true}, {{1920, 1080}, true}, {{3840, 2160}}, {sizeBeyondCache(row)}}) {
        const auto [width, height] = comparison.size;
        const bool skipped = quick && (width == 1920 || width == 3840);
        if (!skipped && int64_t{width} * height <= row.mostPixels)
            chosen.push_back(comparison);
    }
    chosen.back().withReference = true;
    chosen.back().withThreads = !quick;
    return chosen;
}

void run(const Options& options) {
    std::vector<TableEntry> entries = table();
    std::erase_if(entries, [&](const TableEntry& entry) {
        return !std::regex_search(entry.row.name, options.filter) ||
               (!options.family.empty() && options.family != entry.family);
    });
    if (options.listFamilies) {
        std::set<std::string> listed;
        for (const TableEntry& entry : entries)
            if (listed.insert(entry.family).second)
                std::puts(entry.family.c_str());
        return;
    }
    for (const TableEntry& entry : entries)
        check(entry.row);
    if (options.checkOnly)
        return;

    vekSetNumThreads(1);
    if (peer::setThreads)
        peer::setThreads(1);
    std::vector<Result> results;
    for (const TableEntry& entry : entries) {
        std::fprintf(stderr, "%s\n", entry.row.name.c_str());
        for (const Comparison& comparison : comparisons(entry.row, options.quick))
            results.push_back(measureRow(entry, comparison, options.quick));
    }
    std::ofstream file(options.output);
    writeJson(file, results);
    if (!file.flush())
        fail("cannot write " + options.output);
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    bench::initializeMeasurement(argv[0]);
    bench::run(bench::parse(argc, argv));
}
