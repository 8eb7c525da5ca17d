// Euclidean distances against their definition.
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>

#include "arguments.h"
#include "caller_modes.h"
#include "distance_images.h"
#include "standin.h"
#include "test/exports/faults.h"

namespace {

using distance::withOneZero;
using distance::withoutZero;
using distance::zerosAmong;
using Source = TestImage<uint8_t>;
using Distances = TestImage<float>;

int32_t bufferSize(RoiSize roi) {
    int32_t size = -1;
    EXPECT_EQ(StatusOk, vekiTrueDistanceTransformGetBufferSize_8u32f_C1R(roi, &size));
    return size;
}

Distances call(const Source& source, Layout layout = {}) {
    const Source before = source.copy({});
    const Distances out(source.roi(), layout);
    const auto buffer = workBuffer(bufferSize(source.roi()), layout);
    EXPECT_EQ(StatusOk, callWith(vekiTrueDistanceTransform_8u32f_C1R, source, out, source.roi(), buffer.data()));
    EXPECT_TRUE(buffer.guardsIntact());
    EXPECT_TRUE(samePixels(before, source));
    return out;
}

/** The definition, with every zero pixel. Squared distances are exact in 64 bits. */
Distances expected(const Source& source) {
    const RoiSize roi = source.roi();
    std::vector<ImagePoint> zeros;
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            if (source.at(x, y) == 0)
                zeros.push_back({x, y});
    return Distances::filled(roi, {}, [&](int x, int y) {
        int64_t least = INT64_MAX;
        for (const ImagePoint& zero : zeros)
            least = std::min(least, int64_t{x - zero.x} * (x - zero.x) + int64_t{y - zero.y} * (y - zero.y));
        return std::sqrt(zeros.empty() ? FLT_MAX : float(least));
    });
}

TEST(TrueDistance, MatchesItsDefinition) {
    Random random(1);
    distance::forRegions([&](RoiSize roi, const Layouts& layouts) {
        for (const uint32_t period : {2u, 40u, 1000u}) {
            const Source source = zerosAmong(roi, layouts[0], period, random.bits());
            ASSERT_TRUE(samePixels(expected(source), call(source, layouts[1])));
        }
    });
}

// Rings around a few pixels that are far from each other, where many pixels have several nearest ones.
TEST(TrueDistance, IsExactFarFromZeroPixels) {
    Random random(2);
    for (int turn = 0; turn < 200; ++turn) {
        const RoiSize roi{int32_t(1 + random.below(300)), int32_t(1 + random.below(120))};
        Source source = withoutZero(roi);
        for (uint32_t count = random.below(7); count > 0; --count)
            source.at(int(random.below(uint32_t(roi.width))), int(random.below(uint32_t(roi.height)))) = 0;
        ASSERT_TRUE(samePixels(expected(source), call(source))) << roi.width << " x " << roi.height;
    }
}

// Oblique lines: the nearest pixel of each column lies in another column.
TEST(TrueDistance, FollowsSlopes) {
    for (const int slope : {1, 2, 5, 16, 40})
        for (const bool isMirrored : {false, true}) {
            const RoiSize roi{207, 90};
            const auto source = Source::filled(roi, {}, [=](int x, int y) {
                const int along = isMirrored ? roi.width - 1 - x : x, on = slope * (y - 40) + 100;
                return uint8_t(along >= on && along < on + slope ? 0 : 255);
            });
            ASSERT_TRUE(samePixels(expected(source), call(source))) << slope;
        }
}

// From 4096 columns or rows on, squares do not fit floats any more, nor do most of those of longer distances.
TEST(TrueDistance, IsRoundedOnceWhereItIsLong) {
    for (const RoiSize& roi : {RoiSize{4095, 3}, {4096, 2}, {4097, 5}, {9001, 2}, {3, 4097}, {2, 9001}, {9001, 60}})
        for (const int zeros : {1, 2}) {
            Source source = withOneZero(roi, 0, 0);
            if (zeros == 2)
                source.at(roi.width - 1, roi.height - 1) = 0;
            ASSERT_TRUE(samePixels(expected(source), call(source))) << roi.width << " x " << roi.height;
        }
    const auto distances = call(withOneZero({16385, 2}, 0, 0));
    EXPECT_EQ(16384, distances.at(16384, 0));
    EXPECT_EQ(std::sqrt(float(16383.0 * 16383 + 1)), distances.at(16383, 1));
}

TEST(TrueDistance, MayHaveNoZeroPixelOrNothingElse) {
    for (const RoiSize& roi : {RoiSize{1, 1}, RoiSize{1, 9}, RoiSize{33, 2}, RoiSize{100, 40}, RoiSize{5000, 1}}) {
        ASSERT_TRUE(samePixels(Distances::constant(roi, std::sqrt(FLT_MAX)), call(withoutZero(roi))));
        ASSERT_TRUE(samePixels(Distances::constant(roi, 0), call(Source::constant(roi, uint8_t{0}))));
    }
}

TEST(TrueDistance, DoesNotDependOnTheModesOfTheCaller) {
    for (const RoiSize& roi : {RoiSize{90, 40}, RoiSize{6001, 7}}) {
        const Source source = zerosAmong(roi, {}, 3000, 5);
        const auto usual = call(source);
        forCallerModes([&] { ASSERT_TRUE(samePixels(usual, call(source))); });
    }
}

TEST(TrueDistance, ParallelMatchesItsDefinition) {
    forLargeImages([](int) { return 65536; },
                   [](RoiSize roi, const Layouts& layouts) {
                       const Source source = zerosAmong(roi, layouts[0], 4000, 9);
                       const Distances out(roi, layouts[1]);
                       const auto buffer = workBuffer(bufferSize(roi));
                       ASSERT_EQ(StatusOk,
                                 callWith(vekiTrueDistanceTransform_8u32f_C1R, source, out, roi, buffer.data()));
                       ASSERT_TRUE(samePixels(expected(source), out));
                       ASSERT_TRUE(usesSlices(buffer, ownGetNumThreads()));
                   });
}

// Threads may have columns but no rows, and rows but no columns.
TEST(TrueDistance, ParallelTakesThinImages) {
    forThreadCounts([](int) {
        for (const RoiSize& roi : {RoiSize{65600, 1}, RoiSize{32768, 2}, RoiSize{1, 65600}, RoiSize{65, 1100}}) {
            Source source = withoutZero(roi);
            for (int i = 0; i < 5; ++i)
                source.at(i * (roi.width - 1) / 4, i * (roi.height - 1) / 4) = 0;
            ASSERT_TRUE(samePixels(expected(source), call(source))) << roi.width << " x " << roi.height;
        }
    });
}

TEST(TrueDistance, TellsTheSizeOfItsBuffer) {
    forThreadCounts([](int threads) {
        EXPECT_EQ((4 * 24 + 56) * threads, bufferSize({1, 1}));
        EXPECT_EQ((640 * 24 + 56) * threads, bufferSize({640, 480}));
        EXPECT_EQ((1084 * 24 + 56) * threads, bufferSize({33, 1081}));
    });
    const ThreadCount one(1);
    EXPECT_EQ(89478480 * 24 + 56, bufferSize({89478480, 1}));
    int32_t size = 77;
    EXPECT_EQ(StatusSizeError, vekiTrueDistanceTransformGetBufferSize_8u32f_C1R({1, 89478481}, &size));
    EXPECT_EQ(StatusSizeError, vekiTrueDistanceTransformGetBufferSize_8u32f_C1R({INT_MAX, INT_MAX}, &size));
    EXPECT_EQ(77, size);
}

TEST(TrueDistance, PassesOnTheStatusOfTheSquareRoot) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    constexpr Status kWarning = 3;
    const Source source = zerosAmong({300, 300}, {}, 100, 1);
    const Distances out(source.roi());
    forThreadCounts([&](int) {
        const auto buffer = workBuffer(bufferSize(source.roi()));
        for (const Status status : {kWarning, Status{StatusOk}}) {
            standIn()->giveForSqrt(status);
            EXPECT_EQ(status, callWith(vekiTrueDistanceTransform_8u32f_C1R, source, out, source.roi(), buffer.data()));
        }
    });
}

}  // namespace
