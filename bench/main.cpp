// vekcv_bench: times every export, the peer and memcpy or reading at several sizes, and writes the results as JSON.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>

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
        else if (argument == "--quick")
            options.quick = true;
        else if (argument == "--check")
            options.checkOnly = true;
        else
            fail(
                "usage: vekcv_bench [--out FILE] [--filter REGEX] [--quick] [--check]\n"
                "  --out     where to write the results (bench.json)\n"
                "  --filter  only the exports whose names match\n"
                "  --quick   fewer sizes and rounds, one thread\n"
                "  --check   only call every export, and compare the results with those of the peer");
    }
    return options;
}

/** The side of a square whose 8-bit image alone is twice the largest cache, as far as the address space allows it. */
int32_t sideBeyondCache() {
    int cacheBytes = 0;
    vekGetMaxCacheSizeB(&cacheBytes);
    // The bytes of the largest images, floats in four channels, have to fit an int, and a few of them the address
    // space.
    constexpr int32_t kMostSide = sizeof(void*) == 4 ? 7168 : 11520;
    int32_t side = 1024;
    while (side < kMostSide && int64_t{side} * side < int64_t{2} * cacheBytes)
        side *= 2;
    return std::min(side, kMostSide);
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

void setThreads(int threads) {
    vekSetNumThreads(threads);
    if (peer::setThreads)
        peer::setThreads(threads);
}

void measureRow(const TableEntry& entry, RoiSize size, int mostThreads, Effort effort, std::vector<Result>& results) {
    const Work work = entry.row.prepare(size);
    work.data.fill();
    std::vector<Contestant> contestants{{"vekcv", work.vekcv}, reference(work.data)};
    if (work.peer)
        contestants.push_back({"peer", work.peer});
    for (int threads = 1; threads <= mostThreads; ++threads) {
        setThreads(threads);
        Result result{entry.family, entry.row.name, size, threads, work.data.bytesTouched(), {}};
        const auto times = measure(contestants, effort);
        for (size_t i = 0; i < contestants.size(); ++i)
            result.times[contestants[i].name] = Time::of(times[i]);
        results.push_back(result);
    }
}

void run(const Options& options) {
    std::vector<TableEntry> entries = table();
    std::erase_if(entries, [&](const TableEntry& entry) { return !std::regex_search(entry.row.name, options.filter); });
    for (const TableEntry& entry : entries)
        check(entry.row);
    if (options.checkOnly)
        return;

    const int32_t large = sideBeyondCache();
    std::vector<RoiSize> sizes{{16, 16}, {640, 480}, {1920, 1080}, {3840, 2160}, {large, large}};
    if (options.quick)
        sizes = {{16, 16}, {640, 480}, {large, large}};
    int cacheBytes = 0;
    vekGetMaxCacheSizeB(&cacheBytes);
    std::vector<Result> results;
    for (const TableEntry& entry : entries) {
        std::fprintf(stderr, "%s\n", entry.row.name.c_str());
        for (const RoiSize size : sizes) {
            if (int64_t{size.width} * size.height > entry.row.mostPixels)
                continue;
            const bool small = size.width * size.height < 16384;  // never shared among threads
            const bool inCache = int64_t{size.width} * size.height < cacheBytes / 2;
            const int mostThreads = small || options.quick ? 1 : kMostThreads;
            measureRow(entry, size, mostThreads, {options.quick || !inCache ? 5 : 11, 0.003, inCache}, results);
        }
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
