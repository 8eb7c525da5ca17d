#pragma once

#include <chrono>
#include <map>
#include <string>

#include "picture.h"
#include "vekcore.h"

/** Milliseconds spent in each function of the library. */
inline std::map<std::string, double>& libraryTimes() {
    static std::map<std::string, double> times;
    return times;
}

/** Calls a function of the library, adds its time to libraryTimes, and throws Failure for an error. */
template <typename... Parameters, typename... Arguments>
void callLibrary(const std::string& name, Status (*function)(Parameters...), Arguments... arguments) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    const Status status = function(arguments...);
    libraryTimes()[name] += std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    if (status < 0)
        throw Failure(name, vekGetStatusString(status));
}
