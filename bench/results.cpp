#include "results.h"

#include <algorithm>
#include <fstream>

#include "peer.h"
#include "vekcore.h"

namespace bench {
namespace {

/** Element at a share of the way through a sorted list, between two neighbours in proportion. */
double quantile(const std::vector<double>& sorted, double share) {
    const double place = share * static_cast<double>(sorted.size() - 1);
    const auto below = static_cast<size_t>(place);
    const size_t above = std::min(below + 1, sorted.size() - 1);
    return sorted[below] + (sorted[above] - sorted[below]) * (place - static_cast<double>(below));
}

std::string processorName() {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);)
        if (line.starts_with("model name"))
            return line.substr(line.find(": ") + 2);
    return "unknown processor";
}

}  // namespace

Time Time::of(std::vector<double> rounds) {
    std::sort(rounds.begin(), rounds.end());
    const double median = quantile(rounds, 0.5);
    return {median, (quantile(rounds, 0.75) - quantile(rounds, 0.25)) / median};
}

void writeJson(std::ostream& out, const std::vector<Result>& results) {
    int cacheBytes = 0;
    vekGetMaxCacheSizeB(&cacheBytes);
    out << "{\n  \"bits\": " << 8 * sizeof(void*) << ",\n  \"processor\": \"" << processorName()
        << "\",\n  \"processors\": " << vekGetNumCoresOnDie() << ",\n  \"cacheBytes\": " << cacheBytes
        << ",\n  \"compiler\": \"" << VEKCV_BENCH_COMPILER << "\",\n  \"library\": \"" << vekcvGetLibVersion()->name
        << ", " << vekcvGetLibVersion()->version << "\",\n  \"peer\": \"" << (peer::name ? peer::name() : "")
        << "\",\n  \"results\": [";
    const char* separator = "\n";
    for (const Result& result : results) {
        out << separator << "    {\"family\": \"" << result.family << "\", \"name\": \"" << result.name
            << "\", \"width\": " << result.size.width << ", \"height\": " << result.size.height;
        for (const auto& [contestant, time] : result.times)
            out << ", \"" << contestant << "\": {\"ns\": " << time.median << ", \"spread\": " << time.spread << "}";
        out << "}";
        separator = ",\n";
    }
    out << "\n  ]\n}\n";
}

}  // namespace bench
