// Times calls against each other.
#pragma once

#include <string>
#include <vector>

#include "row.h"

namespace bench {

struct Contestant {
    std::string name;
    Call call;
};

/** How long to measure. */
struct Effort {
    int rounds;
    double secondsPerRound;  // at least; for each contestant
    bool warmUp;             // one call before each round that is not timed
};

/** Before the first measurement. */
void initializeMeasurement(const char* program);

/**
 * Nanoseconds for one call, of each contestant in each round. The contestants take turns, so that a slow minute of the
 * machine affects all of them. A build has one of two implementations: measure_google.cpp uses Google Benchmark,
 * measure_clock.cpp is for builds without it (Debian has it in 64 bits only).
 */
std::vector<std::vector<double>> measure(const std::vector<Contestant>& contestants, Effort effort);

}  // namespace bench
