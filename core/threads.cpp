#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <string_view>
#include <thread>

#if defined(__linux__)
#include <sched.h>
#endif

#include "cpu_quota.h"
#include "vekcore.h"

namespace {

// The OpenMP runtime ends the process when it cannot create a thread, so a slip of the pen must not ask for millions.
constexpr int kMostThreads = 1024;

int detectProcessors() {
#if defined(__linux__)
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) == 0)
        return std::max(1, CPU_COUNT(&allowed));
#endif
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

int initialThreads() {
    if (const char* value = std::getenv("VEKCORE_NUM_THREADS")) {
        const std::string_view text(value);
        int count = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
        if (error == std::errc() && end == text.data() + text.size() && count >= 1 && count <= kMostThreads)
            return count;
    }
    return std::min({kMostThreads, vekGetNumCoresOnDie(), vekcore::processorsOfQuota("")});
}

std::atomic<int>& threads() {
    static std::atomic<int> count{initialThreads()};
    return count;
}

}  // namespace

int vekGetNumCoresOnDie() {
    static const int processors = detectProcessors();
    return processors;
}

int ownGetNumThreads() {
    return threads().load(std::memory_order_relaxed);
}

Status vekGetNumThreads(int* count) {
    if (count == nullptr)
        return StatusNullPointer;
    *count = ownGetNumThreads();
    return StatusOk;
}

Status vekSetNumThreads(int count) {
    if (count < 1 || count > kMostThreads)
        return StatusBadArgument;
    threads().store(count, std::memory_order_relaxed);
    return StatusOk;
}
