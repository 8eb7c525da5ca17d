// Arrival times of a front against the equations that they solve.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>

#include "caller_modes.h"
#include "masks.h"
#include "regions.h"

namespace {

constexpr float kUnreached = 999999, kInfinity = std::numeric_limits<float>::infinity(),
                kNaN = std::numeric_limits<float>::quiet_NaN();

/** Lowers the times of all pixels, in the order of the rows, again and again. */
class Reference {
  public:
    Reference(const TestImage<uint8_t>& mask, float radius)
        : mask_(mask), times_(TestImage<float>::constant(mask.roi(), kUnreached)), limit_(radius + 1e-5f) {
        forPixels([&](int x, int y) {
            if (isAtEdge(x, y))
                times_.at(x, y) = isUnknown(x, y) ? 1 : 1e-10f;
        });
        for (bool hasChanged = true; hasChanged;) {
            hasChanged = false;
            forPixels([&](int x, int y) { hasChanged |= lower(x, y); });
        }
    }

    TestImage<float> distances(Layout layout) const {
        return TestImage<float>::filled(mask_.roi(), layout, [&](int x, int y) {
            const float time = times_.at(x, y);
            return isUnknown(x, y) ? time : time < kUnreached ? -time : 0;
        });
    }

  private:
    template <typename Visit>
    void forPixels(Visit visit) {
        for (int y = 0; y < mask_.roi().height; ++y)
            for (int x = 0; x < mask_.roi().width; ++x)
                visit(x, y);
    }

    bool isThere(int x, int y) const { return x >= 0 && y >= 0 && x < mask_.roi().width && y < mask_.roi().height; }
    bool isUnknown(int x, int y) const { return mask_.at(x, y) != 0; }
    bool isAtEdge(int x, int y) const {
        const auto isOther = [&](int u, int v) { return isThere(u, v) && isUnknown(u, v) != isUnknown(x, y); };
        return isOther(x - 1, y) || isOther(x + 1, y) || isOther(x, y - 1) || isOther(x, y + 1);
    }
    float timeAt(int x, int y) const { return isThere(x, y) ? times_.at(x, y) : kUnreached; }

    bool lower(int x, int y) {
        if (isAtEdge(x, y))
            return false;
        const double a = std::min(timeAt(x - 1, y), timeAt(x + 1, y));
        const double b = std::min(timeAt(x, y - 1), timeAt(x, y + 1));
        const auto time =
            float(std::abs(a - b) < 1 ? (a + b + std::sqrt(2 - (a - b) * (a - b))) / 2 : std::min(a, b) + 1);
        if (!(time < times_.at(x, y)) || !(isUnknown(x, y) || time <= limit_))
            return false;
        times_.at(x, y) = time;
        return true;
    }

    const TestImage<uint8_t>& mask_;
    TestImage<float> times_;
    float limit_;
};

TestImage<float> march(const TestImage<uint8_t>& mask, float radius, Layout layout = {}) {
    int32_t size = 0;
    EXPECT_EQ(StatusOk, vekiFastMarchingGetBufferSize_8u32f_C1R(mask.roi(), &size));
    const auto buffer = workBuffer(size, layout);
    TestImage<float> distance(mask.roi(), layout);
    EXPECT_EQ(StatusOk, vekiFastMarching_8u32f_C1R(mask.data(), mask.step(), distance.data(), distance.step(),
                                                   mask.roi(), radius, buffer.data()));
    EXPECT_TRUE(buffer.guardsIntact());
    return distance;
}

TEST(FastMarching, MatchesItsDefinition) {
    constexpr float kRadii[] = {1, 3, 5, 2.5f, 0, -3, 0.70710f, 0.71f, 40, kInfinity, kNaN};
    uint32_t seed = 0;
    forSmallImages([&](RoiSize roi, const Layouts& layouts) {
        for (const int32_t more : {0, 9})
            for (const masks::Kind kind : masks::kKinds) {
                const float radius = kRadii[++seed % std::size(kRadii)];
                const auto mask = masks::make(kind, {roi.width, roi.height + more}, layouts[0], seed);
                SCOPED_TRACE(::testing::Message() << "mask " << int(kind) << ", radius " << radius);
                ASSERT_TRUE(samePixels(Reference(mask, radius).distances({}), march(mask, radius, layouts[1])));
            }
    });
}

TEST(FastMarching, GoesFar) {
    for (const masks::Kind kind : masks::kKinds) {
        const auto mask = masks::make(kind, {165, 135}, {Layout::kAfterGuard, 1, 3}, 7);
        for (const float radius : {5.0f, kInfinity}) {
            SCOPED_TRACE(::testing::Message() << "mask " << int(kind) << ", radius " << radius);
            ASSERT_TRUE(samePixels(Reference(mask, radius).distances({}), march(mask, radius)));
        }
    }
}

TEST(FastMarching, GivesASinglePixelDistanceOne) {
    const auto mask =
        TestImage<uint8_t>::filled({9, 9}, {}, [](int x, int y) { return uint8_t(x == 4 && y == 4 ? 7 : 0); });
    const auto distance = march(mask, 3);
    EXPECT_EQ(1, distance.at(4, 4));
    for (const auto& [x, y] : {std::pair{3, 4}, {5, 4}, {4, 3}, {4, 5}})
        EXPECT_EQ(-1e-10f, distance.at(x, y));
    EXPECT_EQ(-1, distance.at(2, 4));
    EXPECT_EQ(-3, distance.at(4, 8));
    EXPECT_EQ(float(-std::sqrt(2.0) / 2), distance.at(3, 3));
    EXPECT_EQ(0, distance.at(0, 0));
}

TEST(FastMarching, NeedsKnownPixels) {
    const RoiSize roi{70, 5};
    EXPECT_TRUE(samePixels(TestImage<float>::constant(roi, kUnreached),
                           march(TestImage<uint8_t>::constant(roi, uint8_t{255}), 3)));
    EXPECT_TRUE(samePixels(TestImage<float>::constant(roi, 0), march(TestImage<uint8_t>::constant(roi, 0), 3)));
}

// A straight edge has exact distances on both sides of it.
TEST(FastMarching, CountsPixelsFromAStraightEdge) {
    for (const bool isUpright : {false, true}) {
        const auto mask = TestImage<uint8_t>::filled(
            {40, 40}, {}, [=](int x, int y) { return uint8_t((isUpright ? x : y) >= 20 ? 1 : 0); });
        const auto expected = TestImage<float>::filled({40, 40}, {}, [=](int x, int y) {
            const int place = isUpright ? x : y;
            return place >= 20 ? float(place - 19) : place == 19 ? -1e-10f : place >= 14 ? float(place - 19) : 0;
        });
        EXPECT_TRUE(samePixels(expected, march(mask, 5)));
    }
}

TEST(FastMarching, IgnoresTheModesOfTheCaller) {
    const auto mask = masks::make(masks::Kind::kShapes, {67, 31}, {}, 3);
    const auto expected = Reference(mask, 5).distances({});
    forCallerModes([&] { EXPECT_TRUE(samePixels(expected, march(mask, 5))); });
}

TEST(FastMarching, TellsTheSizeOfItsBuffer) {
    int32_t size = 77;
    const auto sizeOf = [&](RoiSize roi) { return vekiFastMarchingGetBufferSize_8u32f_C1R(roi, &size); };
    EXPECT_EQ(StatusOk, sizeOf({1, 1}));
    EXPECT_EQ(35 * 37 + 40, size);
    EXPECT_EQ(StatusOk, sizeOf({640, 480}));
    EXPECT_EQ(514 * 645 + 40, size);
    EXPECT_EQ(StatusOk, sizeOf({641, 480}));
    EXPECT_EQ(514 * 677 + 40, size);
    for (const RoiSize huge :
         {RoiSize{65536, 65536}, RoiSize{INT_MAX, 1}, RoiSize{1, INT_MAX}, RoiSize{INT_MAX, INT_MAX}})
        EXPECT_EQ(StatusSizeError, sizeOf(huge));
    EXPECT_EQ(514 * 677 + 40, size);
}

}  // namespace
