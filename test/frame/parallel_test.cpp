#include "parallel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cfenv>
#include <mutex>
#include <utility>
#include <vector>

#include "modes_guard.h"
#include "standin_core.h"
#include "upper_half.h"

bool vekcv::RegistersHaveUpperHalves = __builtin_cpu_supports("avx2") != 0;

namespace {

using namespace VEKCV_VARIANT;
using Stripes = std::vector<std::pair<int, int>>;  // first row and number of rows

constexpr ParallelFrom kAlways{0};

Stripes stripesOf(int height, int threads) {
    vekSetNumThreads(threads);
    std::mutex mutex;
    Stripes stripes;
    forRowStripes(RoiSize{1, height}, kAlways, [&](int32_t first, int32_t rows) {
        const std::lock_guard lock(mutex);
        stripes.emplace_back(first, rows);
    });
    std::sort(stripes.begin(), stripes.end());
    return stripes;
}

TEST(RowStripes, GiveTheRemainderToTheLastThread) {
    EXPECT_EQ((Stripes{{0, 2}, {2, 2}, {4, 2}, {6, 4}}), stripesOf(10, 4));
    EXPECT_EQ((Stripes{{0, 3}, {3, 3}, {6, 3}}), stripesOf(9, 3));
    EXPECT_EQ((Stripes{{0, 10}}), stripesOf(10, 1));
}

TEST(RowStripes, LeaveThreadsWithoutRowsAlone) {
    EXPECT_EQ((Stripes{{0, 3}}), stripesOf(3, 4));
    EXPECT_EQ((Stripes{{0, 1}}), stripesOf(1, 2));
}

TEST(RowStripes, AreMadeFromTheThresholdOn) {
    vekSetNumThreads(2);
    const auto stripes = [](RoiSize roi, ParallelFrom threshold) {
        std::atomic<int> count = 0;
        forRowStripes(roi, threshold, [&](int32_t, int32_t) { ++count; });
        return count.load();
    };
    EXPECT_EQ(1, stripes({511, 512}, ParallelFrom{262144}));
    EXPECT_EQ(2, stripes({512, 512}, ParallelFrom{262144}));
    EXPECT_EQ(1, stripes({1023, 256}, ParallelFrom::perThread(131072)));
    EXPECT_EQ(2, stripes({1024, 256}, ParallelFrom::perThread(131072)));
    EXPECT_EQ(1, stripes({INT32_MAX, 2}, ParallelFrom::never()));
    EXPECT_EQ(2, stripes({65536, 65536}, ParallelFrom{262144}));  // 2^32 pixels
}

/** The floating-point control of a thread, without the exceptions so far, and its rounding in x87. */
std::pair<unsigned, int> floatModes() {
    return {_mm_getcsr() & ~0x3fu, std::fegetround()};
}

std::vector<std::pair<unsigned, int>> floatModesOfTeam(int threads) {
    std::vector<std::pair<unsigned, int>> modes(static_cast<size_t>(threads));
#pragma omp parallel num_threads(threads)
    modes[static_cast<size_t>(omp_get_thread_num())] = floatModes();
    return modes;
}

TEST(RowStripes, AreComputedInTheFloatingPointModesOfTheCaller) {
    constexpr int kThreads = 3;
    vekSetNumThreads(kThreads);
    const auto before = floatModes();
    const std::vector ofTeam(kThreads, before);
    ASSERT_EQ(ofTeam, floatModesOfTeam(kThreads));

    std::vector<std::pair<unsigned, int>> ofRows(kThreads);
    auto expected = before, after = before;
    {
        const ModesGuard guard(FE_UPWARD, true);
        expected = floatModes();
        forRowStripes(RoiSize{1, kThreads}, kAlways,
                      [&](int32_t first, int32_t) { ofRows[static_cast<size_t>(first)] = floatModes(); });
        after = floatModes();
    }

    EXPECT_NE(before, expected);
    EXPECT_EQ(std::vector(kThreads, expected), ofRows);
    EXPECT_EQ(expected, after);
    EXPECT_EQ(ofTeam, floatModesOfTeam(kThreads));  // the threads have their own again
}

TEST(RowStripes, BeginWithClearUpperHalvesOnAllThreads) {
    if (!vekcv::RegistersHaveUpperHalves)
        GTEST_SKIP() << "the processor has no upper halves";
    constexpr int kThreads = 3;
    vekSetNumThreads(kThreads);
    std::vector<int> wasSet(kThreads), isSet(kThreads);
    forThreadStripes(
        true, kThreads,
        [&](int32_t thread, int32_t, int32_t) {
            setUpperHalf();
            wasSet[static_cast<size_t>(thread)] = upperHalfIsSet();
        },
        kThreads, [&](int32_t thread, int32_t, int32_t) { isSet[static_cast<size_t>(thread)] = upperHalfIsSet(); });
    EXPECT_EQ(std::vector(kThreads, 1), wasSet);
    EXPECT_EQ(std::vector(kThreads, 0), isSet);
}

TEST(FloatModes, AreTheUsualOnesOnRequest) {
    const auto usual = floatModes();
    const ModesGuard guard(FE_UPWARD, true);
    const auto before = floatModes();
    auto inside = before;
    inUsualModes([&] { inside = floatModes(); });
    const auto after = floatModes();
    EXPECT_EQ(usual, inside);
    EXPECT_EQ(before, after);
    EXPECT_NE(usual, before);
}

TEST(RowStripes, LeaveTheCallerTheExceptionsThatItRaised) {
    vekSetNumThreads(2);
    std::feclearexcept(FE_ALL_EXCEPT);
    volatile float value = 0.f;
    forRowStripes(RoiSize{1, 2}, kAlways, [&](int32_t first, int32_t) {
        if (first == 0)
            value = 1.f / value;
    });
    EXPECT_NE(0, std::fetestexcept(FE_DIVBYZERO));
    std::feclearexcept(FE_ALL_EXCEPT);
}

struct Rows {
    int sum = 0, first = -1, calls = 0;
};

Rows reduce(int height, ParallelFrom threshold) {
    return reduceRows(
        RoiSize{1, height}, threshold,
        [](int32_t first, int32_t rows) {
            Rows result{0, first, 1};
            for (int32_t y = first; y < first + rows; ++y)
                result.sum += y;
            return result;
        },
        [](Rows& total, const Rows& stripe) {
            EXPECT_TRUE(stripe.calls == 0 || total.first < stripe.first);  // in the order of the rows
            total = {total.sum + stripe.sum, stripe.first, total.calls + stripe.calls};
        });
}

TEST(ReduceRows, CombinesTheSlotsInOrder) {
    for (int threads : {1, 2, 3, 7, 32, 33, 40})
        for (int height : {1, 3, 40, 1000}) {
            SCOPED_TRACE(::testing::Message() << threads << " threads, " << height << " rows");
            vekSetNumThreads(threads);
            const Rows result = reduce(height, kAlways);
            EXPECT_EQ(height * (height - 1) / 2, result.sum);
            EXPECT_EQ(height < threads ? 1 : threads, result.calls);
            EXPECT_EQ(0, standInBlocks());
        }
}

TEST(ReduceRows, StaysOnTheCallingThreadBelowTheThreshold) {
    vekSetNumThreads(4);
    EXPECT_EQ(1, reduce(99, ParallelFrom{100}).calls);
    EXPECT_EQ(4, reduce(100, ParallelFrom{100}).calls);
}

TEST(ReduceRows, WorksWithoutMemoryForItsSlots) {
    vekSetNumThreads(40);
    standInFailAfter(0);
    const Rows result = reduce(100, kAlways);
    standInFailAfter(INT_MAX);
    EXPECT_EQ(4950, result.sum);
    EXPECT_EQ(1, result.calls);
}

}  // namespace
