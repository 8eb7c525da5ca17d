// Local extrema against their definition.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>

#include "arguments.h"
#include "regions.h"
#include "test/exports/faults.h"

namespace {

template <auto kFind, auto kSize>
struct Form;
template <typename T, auto kSizeOf,
          Status (*kFindIn)(const T*, int32_t, RoiSize, T, ImagePoint*, int32_t, int32_t*, int32_t, int32_t, uint8_t*)>
struct Form<kFindIn, kSizeOf> {
    using Pixel = T;
    static constexpr auto kFind = kFindIn;
    static constexpr auto kSize = kSizeOf;
};
using Floats = Form<vekiFindPeaks3x3_32f_C1R, vekiFindPeaks3x3GetBufferSize_32f_C1R>;
using Integers = Form<vekiFindPeaks3x3_32s_C1R, vekiFindPeaks3x3GetBufferSize_32s_C1R>;

using Points = std::vector<std::pair<int32_t, int32_t>>;

template <typename Form>
class Peaks : public ::testing::Test {
  protected:
    using Pixel = typename Form::Pixel;

    static bool isPeak(const TestImage<Pixel>& image, int x, int y, Pixel threshold, int norm) {
        using Wide = std::conditional_t<std::is_same_v<Pixel, float>, float, int64_t>;
        const auto v = Wide(image.at(x, y));
        if (!(std::abs(v) > Wide(threshold)))
            return false;
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                if (norm == 0 && dx != 0 && dy != 0)
                    continue;
                const auto other = Wide(image.at(x + dx, y + dy));
                const Wide beyond = v > 0 ? other - v : v - other;  // negative where the neighbour is less far out
                if (beyond > Wide(FLT_MIN))                         // which is 0 for integers
                    return false;
            }
        return true;
    }

    static Points peaksOf(const TestImage<Pixel>& image, Pixel threshold, int norm, int border) {
        Points peaks;
        for (int y = border; y < image.roi().height - border; ++y)
            for (int x = border; x < image.roi().width - border; ++x)
                if (isPeak(image, x, y, threshold, norm))
                    peaks.emplace_back(x, y);
        return peaks;
    }

    static Points find(const TestImage<Pixel>& image, Pixel threshold, int norm, int border, int32_t most) {
        int32_t size = 0, count = -1;
        EXPECT_EQ(StatusOk, Form::kSize(image.roi().width, &size));
        const auto buffer = workBuffer(size);
        const auto found = TestImage<ImagePoint>({most, 1}, {Layout::kBeforeGuard, 0, 0});
        EXPECT_EQ(StatusOk, Form::kFind(image.data(), image.step(), image.roi(), threshold, found.data(), most, &count,
                                        norm, border, buffer.data()));
        EXPECT_TRUE(found.guardsIntact());
        Points points;
        for (int32_t i = 0; i < count; ++i)
            points.emplace_back(found.data()[i].x, found.data()[i].y);
        return points;
    }

    static void check(const TestImage<Pixel>& image, Pixel threshold, int border) {
        for (const int norm : {0, 1}) {
            const Points expected = peaksOf(image, threshold, norm, border);
            const auto count = int32_t(expected.size());
            ASSERT_EQ(expected, find(image, threshold, norm, border, count + 1)) << "norm " << norm;
            for (const int32_t most : {1, 1 + count / 2, count + (count == 0 ? 1 : 0)})
                ASSERT_EQ(Points(expected.begin(), expected.begin() + std::min(most, count)),
                          find(image, threshold, norm, border, most));
        }
    }
};
using Forms = ::testing::Types<Floats, Integers>;
TYPED_TEST_SUITE(Peaks, Forms);

// Few values, so that there are plateaus of both signs.
TYPED_TEST(Peaks, MatchTheirDefinition) {
    using T = typename TypeParam::Pixel;
    int turn = 0;
    for (const RoiSize& roi : smallRegions())
        for (const Layout& layout : kLayouts) {
            const RoiSize larger{roi.width + 1, roi.height + 4};
            if (layout.place == Layout::kRowsByGuards && layout.offset != 0)
                continue;
            Random random(static_cast<uint32_t>(turn));
            const int range = turn++ % 2 == 0 ? 3 : 1000;
            const auto image = TestImage<T>::filled(
                larger, layout, [&](int, int) { return T(int(random.bits() % unsigned(2 * range + 1)) - range); });
            for (const int border : {1, 2})
                if (2 * border <= larger.width)
                    this->check(image, T(turn % 4 == 0 ? -1 : range / 2), border);
            if (this->HasFatalFailure())
                return;
        }
}

TYPED_TEST(Peaks, TakeExtremes) {
    using T = typename TypeParam::Pixel;
    using Limits = std::numeric_limits<T>;
    for (const T value : {Limits::max(), Limits::lowest(), Limits::min(), T(1), T(-1), T(0)})
        for (const T around : {T(0), value, Limits::max(), Limits::lowest()}) {
            const auto image =
                TestImage<T>::filled({40, 5}, {}, [&](int x, int y) { return x % 5 == 2 && y == 2 ? value : around; });
            for (const T threshold : {T(0), T(-1), Limits::max(), Limits::lowest(), T(1)})
                this->check(image, threshold, 1);
        }
}

TEST(Peaks, TakeFloatsThatAreNoNumbers) {
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(), kInfinity = std::numeric_limits<float>::infinity();
    auto image = TestImage<float>::constant({9, 5}, 1);
    const auto find = [&](float threshold, int32_t norm = 1) {
        ImagePoint peaks[64];
        int32_t count = -1;
        uint8_t buffer[1024];
        EXPECT_EQ(StatusOk, vekiFindPeaks3x3_32f_C1R(image.data(), image.step(), image.roi(), threshold, peaks, 64,
                                                     &count, norm, 1, buffer));
        return count;
    };
    EXPECT_EQ(21, find(0));
    EXPECT_EQ(0, find(kNaN));
    image.at(4, 2) = kNaN;
    EXPECT_EQ(20, find(0));
    image.at(4, 2) = kInfinity;
    EXPECT_EQ(1, find(2));
    EXPECT_EQ(13, find(0));
    EXPECT_EQ(17, find(0, 0));
    image.at(4, 2) = -kInfinity;
    EXPECT_EQ(21, find(0));
    image.at(4, 2) = 1 + FLT_EPSILON;
    EXPECT_EQ(13, find(0));
    // Denormals are as good as equal.
    image = TestImage<float>::filled({9, 5}, {}, [](int x, int) { return x % 2 == 0 ? FLT_MIN : FLT_MIN / 2; });
    EXPECT_EQ(21, find(0));
}

TYPED_TEST(Peaks, MayHaveNoInside) {
    using T = typename TypeParam::Pixel;
    const auto image = TestImage<T>::constant({6, 6}, T(5));
    EXPECT_EQ(0u, this->find(image, T(0), 1, 3, 9).size());
    ImagePoint peak{};
    int32_t count = 77, size = 77;
    uint8_t buffer[1024];
    EXPECT_EQ(StatusSizeError,
              TypeParam::kFind(image.data(), image.step(), {5, 6}, T(0), &peak, 1, &count, 1, 3, buffer));
    EXPECT_EQ(StatusSizeError,
              TypeParam::kFind(image.data(), image.step(), {6, 5}, T(0), &peak, 1, &count, 1, 3, buffer));
    EXPECT_EQ(77, count);
    EXPECT_EQ(StatusOk, TypeParam::kSize(1, &size));
    EXPECT_EQ(160, size);
    EXPECT_EQ(StatusOk, TypeParam::kSize(640, &size));
    EXPECT_EQ(20640, size);
    EXPECT_EQ(StatusSizeError, TypeParam::kSize(67108860, &size));
    EXPECT_EQ(20640, size);
}

const exports::FamilyFaults kFaults(
    "vekiFindPeaks3x3", {{"roiWidth", StatusSizeError, {0, -1, INT_MIN}, exports::Behind::kSizes},
                         {"maxPeakCount", StatusSizeError, {0, -1, INT_MIN}, exports::Behind::kSizes},
                         {"border", StatusSizeError, {0, -1, INT_MIN, 1000, INT_MAX}, exports::Behind::kSizes},
                         {"norm", StatusBadArgument, {-1, 2, 3}}});

}  // namespace
