// What the public header says of the threads that exports use.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "vekcv.h"

namespace exports {

/** From which regions on an export shares its rows among threads, or from how large windows together its points. */
struct ThreadRule {
    int64_t pixels = 0;  // 0 where the calling thread does all the work
    bool isPerThread = false;
    int32_t side = 0;  // least width and height, where the header tells a size

    bool isForOneThread() const { return pixels == 0; }
    int64_t pixelsFor(int threads) const { return isPerThread ? pixels * threads : pixels; }
};

/**
 * The rules of all exports, by name. The comment of a family has one for all of its exports,
 *
 *     Regions of 16384 pixels and more are shared among the threads.
 *     Regions of 16384 pixels for each configured thread and more are shared among the threads.
 *     Regions of 256 x 256 pixels and more are shared among the threads.
 *     Windows of 16384 pixels together and more are shared among the threads.
 *     The calling thread does all the work.
 *
 * and a list of others for some of them, each such as
 *
 *     - 16384 pixels: vekiName, vekiOther;
 *     - 16384 pixels for each configured thread: vekiName;
 *     - the calling thread alone: vekiName.
 */
std::map<std::string, ThreadRule> threadRules(const std::string& headerFile);

}  // namespace exports
