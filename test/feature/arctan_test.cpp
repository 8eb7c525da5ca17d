// The arctangent against its definition.
#include <gtest/gtest.h>

#include "test/exports/faults.h"
#include "test_image.h"

namespace {

float reference(float y, float x) {
    const float ax = std::abs(x), ay = std::abs(y);
    if (std::isnan(x) || std::isnan(y))
        return NAN;
    const float t = std::min(ax, ay) / std::max(std::max(ax, ay), 1e-8f);
    float angle = (-15.8131895f * t + 61.0941963f) * t - 0.14050041f;
    if (ax < ay)
        angle = 90 - angle;
    if (x < 0)
        angle = 180 - angle;
    if (y < 0)
        angle = 360 - angle;
    return angle;
}

float arctan(float y, float x) {
    float angle = 1000;
    EXPECT_EQ(StatusOk, vekibFastArctan_32f(&y, &x, &angle, 1));
    return angle;
}

void check(const TestImage<float>& y, const TestImage<float>& x, const TestImage<float>& angle) {
    const auto expected =
        TestImage<float>::filled(y.roi(), {}, [&](int i, int) { return reference(y.at(i, 0), x.at(i, 0)); });
    ASSERT_EQ(StatusOk, vekibFastArctan_32f(y.data(), x.data(), angle.data(), y.roi().width));
    ASSERT_TRUE(samePixels(expected, angle));
}

TEST(FastArctan, MatchesItsDefinition) {
    for (int32_t length = 1; length <= 200; ++length)
        for (const Layout& layout : kLayouts) {
            SCOPED_TRACE(::testing::Message() << length << ", " << layout);
            const RoiSize roi{length, 1};
            const auto seed = uint32_t(2 * length);
            const auto y = TestImage<float>::random(roi, layout, seed);
            const auto x = TestImage<float>::random(roi, layout, seed + 1);
            check(y, x, TestImage<float>(roi, layout));
            check(y, x, TestImage<float>(roi, {}));  // at another distance from a multiple of a vector
        }
}

TEST(FastArctan, MayWriteToASource) {
    const RoiSize roi{333, 1};
    const auto y = TestImage<float>::random(roi, {}, 1), x = TestImage<float>::random(roi, {}, 2);
    const TestImage<float> separate(roi), inY = y.copy({}), inX = x.copy({});
    ASSERT_EQ(StatusOk, vekibFastArctan_32f(y.data(), x.data(), separate.data(), roi.width));
    ASSERT_EQ(StatusOk, vekibFastArctan_32f(inY.data(), x.data(), inY.data(), roi.width));
    ASSERT_EQ(StatusOk, vekibFastArctan_32f(y.data(), inX.data(), inX.data(), roi.width));
    EXPECT_TRUE(samePixels(separate, inY));
    EXPECT_TRUE(samePixels(separate, inX));
}

TEST(FastArctan, GivesAnglesOfAllDirections) {
    EXPECT_EQ(-0.14050041f, arctan(0, 1));
    EXPECT_EQ(90.14050041f, arctan(1, 0));
    EXPECT_EQ(180.14050041f, arctan(0, -1));
    EXPECT_EQ(269.85949959f, arctan(-1, 0));
    EXPECT_EQ(-0.14050041f, arctan(0, 0));
    EXPECT_EQ(-0.14050041f, arctan(-0.0f, 1));
    EXPECT_EQ(-0.14050041f, arctan(-0.0f, -0.0f));
    EXPECT_EQ(360.14050041f, arctan(-1e-40f, 1));
    EXPECT_EQ(180.14050041f, arctan(0, -1e-40f));
    for (int degrees = 1; degrees < 360; ++degrees) {
        const double turned = degrees * M_PI / 180;
        EXPECT_NEAR(degrees, arctan(float(std::sin(turned)), float(std::cos(turned))), 0.15);
        EXPECT_NEAR(degrees, arctan(float(1e-7 * std::sin(turned)), float(1e-7 * std::cos(turned))), 0.15);
    }
}

TEST(FastArctan, GivesNaNForNaN) {
    const float infinity = INFINITY;
    for (const float other : {0.0f, 1.0f, -1e-40f, infinity, NAN}) {
        EXPECT_TRUE(std::isnan(arctan(NAN, other))) << other;
        EXPECT_TRUE(std::isnan(arctan(other, NAN))) << other;
    }
    EXPECT_TRUE(std::isnan(arctan(infinity, -infinity)));
    EXPECT_EQ(90.14050041f, arctan(infinity, 1e30f));
    EXPECT_EQ(180.14050041f, arctan(1, -infinity));
}

const exports::FamilyFaults kFaults("vekibFastArctan", {{"length", StatusSizeError, {0, -1, INT32_MIN}}});

}  // namespace
