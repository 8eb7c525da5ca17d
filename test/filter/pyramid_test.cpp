// Sizes of the levels of pyramids, and their records.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <vector>

#include "caller_modes.h"
#include "pyramid_sizes.h"
#include "standin.h"
#include "test/exports/faults.h"

namespace {

constexpr float kBarelyAbove1 = 1.0f + 0x1p-23f;
constexpr float kRates[] = {2.0f, 1.5f, kBarelyAbove1, 1.1f, 1.25f, 2.5f, 3.0f, 4.7f, 9.999f, 10.0f};

/** All that the functions tell of a size. */
struct Sizes {
    RoiSize down{-1, -1}, least{-1, -1}, most{-1, -1};

    static Sizes expectedOf(RoiSize size, float rate) {
        const auto width = pyramid::expanded(size.width, rate), height = pyramid::expanded(size.height, rate);
        const auto limited = [](int64_t length) { return int32_t(std::min<int64_t>(length, INT_MAX)); };
        return {pyramid::reduced(size, rate),
                {limited(width.least), limited(height.least)},
                {limited(width.most), limited(height.most)}};
    }
    static Sizes of(RoiSize size, float rate) {
        Sizes sizes;
        EXPECT_EQ(StatusOk, vekiGetPyramidDownROI(size, &sizes.down, rate));
        EXPECT_EQ(StatusOk, vekiGetPyramidUpROI(size, &sizes.least, &sizes.most, rate));
        return sizes;
    }
};

void expectSize(RoiSize expected, RoiSize actual) {
    EXPECT_EQ(expected.width, actual.width);
    EXPECT_EQ(expected.height, actual.height);
}

// Products beyond an int are the greatest one, and the divisions of large sizes are far from exact.
std::vector<RoiSize> sizesToTest() {
    std::vector<RoiSize> sizes{{640, 480},
                               {1, 4096},
                               {4099, 3},
                               {16777215, 8388607},
                               {20000001, 19999999},
                               {INT_MAX, 1 << 30},
                               {1, INT_MAX - 1},
                               {INT_MAX - 1000, 214748365},
                               {(1 << 30) + 1, 1431655766}};
    for (int n = 1; n < 200; ++n)
        sizes.push_back({n, 200 - n});
    return sizes;
}

void expectSizes(const Sizes& expected, const Sizes& actual) {
    expectSize(expected.down, actual.down);
    expectSize(expected.least, actual.least);
    expectSize(expected.most, actual.most);
}

TEST(PyramidSizes, MatchTheirDefinition) {
    expectSize({3, 3}, Sizes::of({5, 5}, 2).down);
    expectSize({3, 1}, Sizes::of({6, 1}, 2).down);
    for (const float rate : kRates)
        for (const RoiSize size : sizesToTest()) {
            SCOPED_TRACE(::testing::Message() << size.width << " x " << size.height << ", rate " << rate);
            expectSizes(Sizes::expectedOf(size, rate), Sizes::of(size, rate));
        }
}

TEST(PyramidSizes, DependOnNoMode) {
    std::vector<Sizes> expected;
    for (const RoiSize size : sizesToTest())
        expected.push_back(Sizes::expectedOf(size, 1.1f));
    forCallerModes([&] {
        auto next = expected.begin();
        for (const RoiSize size : sizesToTest())
            expectSizes(*next++, Sizes::of(size, 1.1f));
    });
}

const std::initializer_list<float> kBadRates{1.0f, 0.5f, 0.0f, -2.0f, 10.000001f, INFINITY, NAN};
const exports::FamilyFaults kSizeFaults("vekiGetPyramid",
                                        {exports::badSize("sourceRoi"), {"rate", StatusBadArgument, kBadRates}});
const exports::FamilyFaults kRecordFaults("vekiPyramidInitAlloc", {exports::badSize("baseRoi"),
                                                                   {"rate", StatusBadArgument, kBadRates},
                                                                   {"levels", StatusBadArgument, {0, -1, INT_MIN}}});

/** A record, which is checked and released. */
void expectRecord(int levels, RoiSize base, float rate, int expectedCount) {
    SCOPED_TRACE(::testing::Message() << levels << " levels of " << base.width << " x " << base.height << ", rate "
                                      << rate);
    const int held = standIn() != nullptr ? standIn()->blocks() : 0;
    Pyramid* pyramid = nullptr;
    ASSERT_EQ(StatusOk, vekiPyramidInitAlloc(&pyramid, levels, base, rate));
    if (standIn() != nullptr) {
        EXPECT_EQ(held + 1, standIn()->blocks());
        EXPECT_EQ(44 * expectedCount + 112, standIn()->latestBytes());
    }
    ASSERT_EQ(expectedCount, pyramid->levelCount);
    EXPECT_EQ(nullptr, pyramid->layerState);
    double scale = 1;
    for (int level = 0; level <= expectedCount; ++level) {
        expectSize(base, pyramid->levelSizes[level]);
        EXPECT_EQ(scale, pyramid->levelScales[level]);
        EXPECT_EQ(nullptr, pyramid->levelImages[level]);
        EXPECT_EQ(0, pyramid->levelSteps[level]);
        base = pyramid::reduced(base, rate);
        scale *= 1 / double(rate);
    }
    // All of it is the caller's to write, and nothing overlaps.
    for (int level = 0; level <= expectedCount; ++level) {
        pyramid->levelImages[level] = pyramid;
        pyramid->levelSteps[level] = -1;
    }
    for (int level = 1; level <= expectedCount; ++level) {
        EXPECT_LT(pyramid->levelScales[level], 1);
        EXPECT_GT(pyramid->levelSizes[level].width, 0);
    }
    EXPECT_EQ(StatusOk, vekiPyramidFree(pyramid));
    EXPECT_EQ(held, standIn() != nullptr ? standIn()->blocks() : 0);
}

TEST(PyramidRecord, HoldsAllLevels) {
    expectRecord(3, {640, 480}, 2, 3);
    expectRecord(100, {640, 480}, 2, 10);
    expectRecord(INT_MAX, {16, 16}, 2, 4);
    expectRecord(9, {1, 1}, 2, 0);
    expectRecord(9, {1, 2}, 10, 1);
    expectRecord(1, {1000, 7}, 1.5f, 1);
    expectRecord(INT_MAX, {50, 3}, kBarelyAbove1, 49);
    expectRecord(20, {INT_MAX, 1}, 3.7f, 17);
    EXPECT_EQ(StatusNullPointer, vekiPyramidFree(nullptr));
}

TEST(PyramidRecord, NeedsMemory) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    Pyramid before{}, *pyramid = &before;
    standIn()->failAfter(0);
    const Status status = vekiPyramidInitAlloc(&pyramid, 3, {640, 480}, 2);
    standIn()->failAfter(INT_MAX);
    EXPECT_EQ(StatusMemoryAllocation, status);
    EXPECT_EQ(&before, pyramid);
}

TEST(PyramidRecord, DependsOnNoMode) {
    std::vector<double> scales{1};
    for (int level = 1; level < 20; ++level)
        scales.push_back(scales.back() * (1 / double(1.7f)));
    forCallerModes([&] {
        Pyramid* pyramid = nullptr;
        ASSERT_EQ(StatusOk, vekiPyramidInitAlloc(&pyramid, 9, {1000, 700}, 1.7f));
        for (int level = 0; level <= pyramid->levelCount; ++level)
            EXPECT_EQ(scales[size_t(level)], pyramid->levelScales[level]);
        EXPECT_EQ(StatusOk, vekiPyramidFree(pyramid));
    });
}

}  // namespace
