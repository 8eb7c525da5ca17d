#include <algorithm>
#include <chrono>

#include "measure.h"

namespace bench {
namespace {

double secondsFor(const Call& call, int64_t iterations) {
    using Clock = std::chrono::steady_clock;
    const auto begin = Clock::now();
    for (int64_t i = 0; i < iterations; ++i)
        call();
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

int64_t iterationsFor(const Call& call, double seconds) {
    for (int64_t iterations = 1;;) {
        const double taken = secondsFor(call, iterations);
        if (taken >= seconds)
            return iterations;
        // A little more than needed by this measurement, which may be of a cold start: never more than ten times.
        const double factor = std::clamp(1.2 * seconds / std::max(taken, 1e-9), 1.5, 10.0);
        iterations = static_cast<int64_t>(static_cast<double>(iterations) * factor) + 1;
    }
}

}  // namespace

void initializeMeasurement(const char*) {}

std::vector<std::vector<double>> measure(const std::vector<Contestant>& contestants, Effort effort) {
    std::vector<int64_t> iterations;
    for (const Contestant& contestant : contestants)
        iterations.push_back(iterationsFor(contestant.call, effort.secondsPerRound));
    std::vector<std::vector<double>> times(contestants.size());
    for (int round = 0; round < effort.rounds; ++round)
        for (size_t i = 0; i < contestants.size(); ++i) {
            if (effort.warmUp)
                contestants[i].call();
            times[i].push_back(secondsFor(contestants[i].call, iterations[i]) * 1e9 /
                               static_cast<double>(iterations[i]));
        }
    return times;
}

}  // namespace bench
