#pragma once

#include <gtest/gtest.h>

#include "vekcore.h"

/** Sets the number of threads until it goes. */
class ThreadCount {
  public:
    explicit ThreadCount(int count) : before_(ownGetNumThreads()) { vekSetNumThreads(count); }
    ~ThreadCount() { vekSetNumThreads(before_); }
    ThreadCount(const ThreadCount&) = delete;
    ThreadCount& operator=(const ThreadCount&) = delete;

  private:
    int before_;
};

/** check(threads) with every number of threads that large images are tested with, whatever the environment gives. */
template <typename Check>
void forThreadCounts(Check check) {
    for (const int threads : {1, 2, 3}) {
        SCOPED_TRACE(::testing::Message() << threads << " threads");
        const ThreadCount count(threads);
        check(threads);
    }
}
