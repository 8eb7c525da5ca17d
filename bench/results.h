// What was measured, and how it is written down.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "vekcv.h"

namespace bench {

/** Nanoseconds of a call. */
struct Time {
    double median;
    double spread;  // the middle half of the rounds, as a share of the median

    static Time of(std::vector<double> rounds);
};

struct Result {
    std::string family, name;
    RoiSize size;
    std::map<std::string, Time> times;  // "vekcv", and perhaps "peer", "memcpy" or "read", and "threads"
};

/** The results with the machine and the builds that they belong to. */
void writeJson(std::ostream& out, const std::vector<Result>& results);

}  // namespace bench
