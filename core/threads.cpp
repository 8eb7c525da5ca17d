#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <string_view>
#include <thread>

#if !defined(_WIN32)
#include <pthread.h>
#endif
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

struct Threads {
    std::atomic<int> count{initialThreads()}, most{kMostThreads};
};

Threads& threads() {
    static Threads threads;
    return threads;
}

/**
 * Children of the process stay on one thread from now on: fork leaves the threads of a team behind, and the runtime
 * would wait for them forever.
 */
void limitChildren() {
#if !defined(_WIN32)
    static const int handled = pthread_atfork(nullptr, nullptr, [] { threads().count = threads().most = 1; });
    static_cast<void>(handled);
#endif
}

}  // namespace

int vekGetNumCoresOnDie() {
    static const int processors = detectProcessors();
    return processors;
}

int ownGetNumThreads() {
    const int count = threads().count.load(std::memory_order_relaxed);
    if (count > 1)
        limitChildren();
    return count;
}

Status vekGetNumThreads(int* count) {
    if (count == nullptr)
        return StatusNullPointer;
    *count = threads().count.load(std::memory_order_relaxed);
    return StatusOk;
}

Status vekSetNumThreads(int count) {
    if (count < 1 || count > threads().most.load(std::memory_order_relaxed))
        return StatusBadArgument;
    threads().count.store(count, std::memory_order_relaxed);
    return StatusOk;
}
