// The edge detector against its definition.
#include <gtest/gtest.h>

#include <algorithm>

#include "arguments.h"
#include "regions.h"
#include "test/exports/faults.h"
#include "test_image.h"
#include "thread_count.h"

namespace {

template <typename T>
auto cannyOf() {
    if constexpr (std::is_same_v<T, float>)
        return &vekiCanny_32f8u_C1R;
    else
        return &vekiCanny_16s8u_C1R;
}

int32_t bufferSize(RoiSize roi) {
    int32_t size = -1;
    EXPECT_EQ(StatusOk, vekiCannyGetSize(roi, &size));
    return size;
}

/** The definition, one pixel at a time. */
template <typename T>
class Reference {
  public:
    Reference(const TestImage<T>& dx, const TestImage<T>& dy, float low, float high)
        : dx_(dx), dy_(dy), low_(low), high_(high), roi_(dx.roi()) {
        if (std::is_integral_v<T>) {
            low_ = std::trunc(low);
            high_ = std::trunc(high);
        }
    }

    TestImage<uint8_t> edges() const {
        const TestImage<uint8_t> candidates =
            TestImage<uint8_t>::filled(roi_, {}, [&](int x, int y) { return uint8_t(isCandidate(x, y)); });
        TestImage<uint8_t> edges = TestImage<uint8_t>::filled(roi_, {}, [&](int x, int y) {
            return uint8_t(candidates.at(x, y) != 0 && magnitude(x, y) > high_ ? 255 : 0);
        });
        std::vector<ImagePoint> found;
        for (int y = 0; y < roi_.height; ++y)
            for (int x = 0; x < roi_.width; ++x)
                if (edges.at(x, y) != 0)
                    found.push_back({x, y});
        while (!found.empty()) {
            const ImagePoint from = found.back();
            found.pop_back();
            for (int y = std::max(from.y - 1, 0); y <= std::min(from.y + 1, roi_.height - 1); ++y)
                for (int x = std::max(from.x - 1, 0); x <= std::min(from.x + 1, roi_.width - 1); ++x)
                    if (candidates.at(x, y) != 0 && edges.at(x, y) == 0) {
                        edges.at(x, y) = 255;
                        found.push_back({x, y});
                    }
        }
        return edges;
    }

  private:
    float magnitude(int x, int y) const {
        if (x < 0 || y < 0 || x >= roi_.width || y >= roi_.height)
            return 0;
        float m = std::abs(float(dx_.at(x, y))) + std::abs(float(dy_.at(x, y)));
        if (std::is_integral_v<T>)
            m = std::min(m, 65535.0f);
        return m < low_ ? 0 : m;
    }

    bool isCandidate(int x, int y) const {
        const float m = magnitude(x, y), dx = float(dx_.at(x, y)), dy = float(dy_.at(x, y));
        if (m == 0)
            return false;
        if (std::abs(dy) < std::abs(dx) * 0.41421357f)
            return magnitude(x - 1, y) < m && magnitude(x + 1, y) <= m;
        if (std::abs(dx) * 2.4142137f < std::abs(dy))
            return magnitude(x, y - 1) < m && magnitude(x, y + 1) <= m;
        if (std::signbit(dx) == std::signbit(dy))
            return magnitude(x - 1, y - 1) < m && magnitude(x + 1, y + 1) < m;
        return magnitude(x + 1, y - 1) < m && magnitude(x - 1, y + 1) < m;
    }

    const TestImage<T>&dx_, &dy_;
    float low_, high_;
    RoiSize roi_;
};

template <typename T>
int check(const TestImage<T>& dx, const TestImage<T>& dy, Layout layout, float low, float high) {
    const RoiSize roi = dx.roi();
    SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layout << ", thresholds " << low
                                      << ", " << high);
    const TestImage<uint8_t> expected = Reference<T>(dx, dy, low, high).edges();
    const TestImage<uint8_t> out(roi, layout), buffer = workBuffer(bufferSize(roi), layout);
    EXPECT_EQ(StatusOk, callWith(cannyOf<T>(), dx, dy, out, roi, low, high, buffer.data()));
    EXPECT_TRUE(samePixels(expected, out));
    EXPECT_TRUE(buffer.guardsIntact());
    int edges = 0;
    for (int y = 0; y < roi.height; ++y)
        edges += int(std::count(&out.at(0, y), &out.at(0, y) + roi.width, 255));
    return edges;
}

template <typename T>
class CannyFamily : public ::testing::Test {};
using Types = ::testing::Types<int16_t, float>;
TYPED_TEST_SUITE(CannyFamily, Types);

/** Derivatives from -range to range, of which whole areas are 0. */
template <typename T>
TestImage<T> derivative(RoiSize roi, Layout layout, int range, uint32_t seed) {
    return TestImage<T>::filled(roi, layout, [=, random = Random(seed)](int x, int y) mutable {
        const int value = int(random.below(uint32_t(2 * range + 1))) - range;
        return T((x / 40 + y / 8) % 3 == 1 ? 0 : value);
    });
}

// Small derivatives have ties in all directions, and directions of all kinds.
TYPED_TEST(CannyFamily, MatchesItsDefinition) {
    std::vector<RoiSize> regions = smallRegions();
    for (const RoiSize& roi : {RoiSize{1, 40}, RoiSize{2, 2}, RoiSize{17, 9}, RoiSize{67, 61}, RoiSize{131, 40}})
        regions.push_back(roi);
    uint32_t seed = 0;
    int edges = 0;
    for (const RoiSize& roi : regions)
        for (const Layout& layout : kLayouts)
            for (const int range : {1, 3, 12, 1500}) {
                const auto dx = derivative<TypeParam>(roi, layout, range, ++seed);
                const auto dy = derivative<TypeParam>(roi, layout, range, ++seed);
                edges += check(dx, dy, layout, 0, float(range) / 2);
                edges += check(dx, dy, layout, float(range) * 0.6f, float(range) * 1.6f);
            }
    EXPECT_GT(edges, 10000);
}

TYPED_TEST(CannyFamily, TakesEveryValue) {
    const RoiSize roi{133, 51};
    for (const float high : {0.0f, 100.0f, 40000.0f, 65534.0f, 65535.0f, 1e30f})
        for (const float low : {0.0f, 99.5f, 32768.0f, 65535.0f, 70000.0f})
            if (low <= high)
                check(TestImage<TypeParam>::random(roi, {}, 1), TestImage<TypeParam>::random(roi, {}, 2), {}, low,
                      high);
}

// Directions are told apart by products in float. The magnitudes grow along the row: so in a single row a pixel is a
// candidate unless its gradient is horizontal, and in the upper one of two like rows only if it is vertical.
TYPED_TEST(CannyFamily, TellsDirectionsApartInFloat) {
    for (const float slope : {0.41421357f, 2.4142137f})
        for (const int offset : {0, 1}) {
            const RoiSize roi = slope < 1 ? RoiSize{32766, 1} : RoiSize{13570, 2};
            const auto dx = TestImage<TypeParam>::filled(roi, {}, [](int x, int) { return TypeParam(x + 1); });
            const auto dy = TestImage<TypeParam>::filled(
                roi, {}, [=](int x, int) { return TypeParam(std::floor(float(x + 1) * slope) + float(offset)); });
            check(dx, dy, {}, 0, 0);
        }
}

/** A comb, whose teeth are connected at alternate ends: all of its pixels hang on one above the high threshold. */
template <typename T>
void checkComb(RoiSize roi, ImagePoint seed) {
    const auto isTooth = [](int x) { return x % 2 == 0; };
    const auto isBridge = [&](int x, int y) { return !isTooth(x) && y == (x % 4 == 1 ? 0 : roi.height - 1); };
    const auto dx = TestImage<T>::filled(roi, {}, [&](int x, int y) {
        return T(!isTooth(x) ? 0 : x == seed.x && y == seed.y ? 20 : 10);
    });
    const auto dy = TestImage<T>::filled(roi, {}, [&](int x, int y) { return T(isBridge(x, y) ? -5 : 0); });
    EXPECT_EQ((roi.width + 1) / 2 * roi.height + roi.width / 2, check(dx, dy, {}, 1, 15));
}

TYPED_TEST(CannyFamily, FollowsEdgesAnywhere) {
    for (const ImagePoint seed : {ImagePoint{0, 0}, ImagePoint{150, 60}, ImagePoint{300, 119}})
        checkComb<TypeParam>({301, 120}, seed);
}

// Edges go on from the rows of one thread to those of another, and flat images have few rows for each.
TYPED_TEST(CannyFamily, IsTheSameForAnyNumberOfThreads) {
    forThreadCounts([](int) {
        checkComb<TypeParam>({301, 240}, {300, 121});
        uint32_t seed = 100;
        for (const RoiSize& roi : {RoiSize{256, 256}, RoiSize{331, 200}, RoiSize{65536, 1}, RoiSize{32768, 2},
                                   RoiSize{21846, 3}, RoiSize{13108, 5}, RoiSize{1, 65536}}) {
            const auto dx = derivative<TypeParam>(roi, {}, 12, ++seed), dy = derivative<TypeParam>(roi, {}, 12, ++seed);
            EXPECT_GT(check(dx, dy, {}, 5, 15), 100);
        }
    });
}

// From 65533 pixels on in a row or a column, places in the work buffer are of 64 bits.
TYPED_TEST(CannyFamily, TakesLongRowsAndColumns) {
    for (const RoiSize& roi : {RoiSize{65532, 3}, RoiSize{65533, 3}, RoiSize{70001, 2}, RoiSize{3, 65532},
                               RoiSize{2, 65533}, RoiSize{1, 70000}}) {
        const auto dx = derivative<TypeParam>(roi, {}, 3, 1), dy = derivative<TypeParam>(roi, {}, 3, 2);
        EXPECT_GT(check(dx, dy, {}, 2, 4), 100);
    }
}

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
const exports::FamilyFaults kFaults("vekiCanny", {{"lowThreshold", StatusBadArgument, {-0.5f, 1.5f, kNaN}},
                                                  {"highThreshold", StatusBadArgument, {kNaN}}});

TEST(CannySize, FollowsItsFormula) {
    EXPECT_EQ(15 * 3 + 16 + 160, bufferSize({1, 1}));
    EXPECT_EQ((5 * 480 + 10) * 642 + 16 * 640 + 160, bufferSize({640, 480}));
    EXPECT_EQ((5 * 3 + 10) * 65534 + 16 * 65532 + 160, bufferSize({65532, 3}));
    EXPECT_EQ((9 * 3 + 18) * 65535 + 16 * 65533 + 160, bufferSize({65533, 3}));
    EXPECT_EQ((9 * 65533 + 18) * 5 + 16 * 3 + 160, bufferSize({3, 65533}));

    int32_t size = -1;
    EXPECT_EQ(StatusSizeError, vekiCannyGetSize({20730, 20730}, &size));
    EXPECT_EQ(StatusSizeError, vekiCannyGetSize({INT32_MAX, INT32_MAX}, &size));
    // 9 bytes for each of 1.5e18 pixels do not fit 63 bits.
    EXPECT_EQ(StatusSizeError, vekiCannyGetSize({1224744871, 1224744871}, &size));
    EXPECT_EQ(-1, size);
    EXPECT_EQ(StatusOk, vekiCannyGetSize({20700, 20700}, &size));
}

}  // namespace
