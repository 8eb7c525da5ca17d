// Motion history against its definition.
#include <gtest/gtest.h>

#include <cfloat>
#include <limits>

#include "arguments.h"
#include "caller_modes.h"
#include "regions.h"
#include "test/exports/faults.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNaN = std::numeric_limits<float>::quiet_NaN(),
                kLeast = std::numeric_limits<float>::denorm_min();

template <auto Export>
struct Member;

template <typename T, Status (*Export)(const T*, int32_t, float*, int32_t, RoiSize, float, float)>
struct Member<Export> {
    using Pixel = T;

    /** Updates the history of one pixel. */
    static float pixel(T silhouette, float history, float timestamp, float duration) {
        EXPECT_EQ(StatusOk,
                  Export(&silhouette, sizeof silhouette, &history, sizeof history, {1, 1}, timestamp, duration));
        return history;
    }
    template <typename... Parts>
    static Status call(const Parts&... parts) {
        return callWith(Export, parts...);
    }
};

/** The definition. */
float updated(bool isMoving, float history, float timestamp, float duration) {
    const float threshold = timestamp - duration;
    if (isMoving)
        return timestamp;
    return history < threshold ? 0.0f : history;
}

template <typename Form>
struct MotionHistory : ::testing::Test {};

using Members =
    ::testing::Types<Member<&vekiUpdateMotionHistory_8u32f_C1IR>, Member<&vekiUpdateMotionHistory_16u32f_C1IR>,
                     Member<&vekiUpdateMotionHistory_32f_C1IR>>;
TYPED_TEST_SUITE(MotionHistory, Members);

template <typename T>
TestImage<T> silhouetteOf(RoiSize roi, Layout layout) {
    return TestImage<T>::filled(roi, layout, [random = Random(1)](int, int) mutable {
        return random.below(2) == 0 ? T(0) : random.value<T>();
    });
}

/** Any numbers, and those around the threshold. */
TestImage<float> historyOf(RoiSize roi, Layout layout, float threshold) {
    return TestImage<float>::filled(roi, layout, [=, random = Random(2)](int, int) mutable {
        const float close[] = {threshold, std::nextafter(threshold, -kInfinity), std::nextafter(threshold, kInfinity)};
        return random.below(2) == 0 ? close[random.below(3)] : random.value<float>();
    });
}

TYPED_TEST(MotionHistory, MatchesItsDefinition) {
    using T = typename TypeParam::Pixel;
    static constexpr float kTimestamp = 100.7f, kDuration = 30.3f;
    forSmallImages([](RoiSize roi, const Layouts& layouts) {
        const auto silhouette = silhouetteOf<T>(roi, layouts[0]), before = silhouette.copy({});
        const auto history = historyOf(roi, layouts[1], kTimestamp - kDuration);
        const auto expected = TestImage<float>::filled(roi, {}, [&](int x, int y) {
            return updated(silhouette.at(x, y) != T(0), history.at(x, y), kTimestamp, kDuration);
        });
        ASSERT_EQ(StatusOk, TypeParam::call(silhouette, history, roi, kTimestamp, kDuration));
        ASSERT_TRUE(samePixels(expected, history));
        ASSERT_TRUE(samePixels(before, silhouette));
    });
}

TYPED_TEST(MotionHistory, KeepsWhatIsAsOldAsTheDuration) {
    for (const float duration : {0.0f, -0.0f}) {
        EXPECT_EQ(50.0f, TypeParam::pixel(0, 50, 50, duration));
        EXPECT_EQ(0.0f, TypeParam::pixel(0, std::nextafter(50.0f, 0.0f), 50, duration));
        EXPECT_EQ(51.0f, TypeParam::pixel(0, 51, 50, duration));
        EXPECT_EQ(50.0f, TypeParam::pixel(1, 3, 50, duration));
    }
    EXPECT_EQ(-5.0f, TypeParam::pixel(0, -5, -2, 3));
    EXPECT_EQ(0.0f, TypeParam::pixel(0, -6, -2, 3));
}

TYPED_TEST(MotionHistory, ForgetsNothingByComparisonsWithNaN) {
    EXPECT_TRUE(std::isnan(TypeParam::pixel(0, kNaN, 50, 10)));
    EXPECT_EQ(3.0f, TypeParam::pixel(0, 3, kNaN, 10));
    EXPECT_EQ(3.0f, TypeParam::pixel(0, 3, 50, kNaN));
    EXPECT_EQ(3.0f, TypeParam::pixel(0, 3, kInfinity, kInfinity));
    EXPECT_EQ(3.0f, TypeParam::pixel(0, 3, 50, kInfinity));
    EXPECT_TRUE(std::isnan(TypeParam::pixel(1, 3, kNaN, 10)));
    EXPECT_EQ(50.0f, TypeParam::pixel(1, kNaN, 50, kNaN));
}

// The difference of 16777216 and 1.5 is rounded to 16777214; and numbers that are not normal count as they are.
TYPED_TEST(MotionHistory, IsTheSameInAllModesOfTheCaller) {
    forCallerModes([] {
        EXPECT_EQ(16777214.0f, TypeParam::pixel(0, 16777214, 16777216, 1.5f));
        EXPECT_EQ(0.0f, TypeParam::pixel(0, 16777213, 16777216, 1.5f));
        EXPECT_TRUE(sameElement(0.0f, TypeParam::pixel(0, kLeast, 3 * kLeast, kLeast)));
        EXPECT_TRUE(sameElement(2 * kLeast, TypeParam::pixel(0, 2 * kLeast, 3 * kLeast, kLeast)));
        const TestImage<typename TypeParam::Pixel> silhouette({1, 1});
        const TestImage<float> history({1, 1});
        EXPECT_EQ(StatusOutOfRange, TypeParam::call(silhouette, history, RoiSize{1, 1}, 3.0f, -kLeast));
    });
}

TEST(MotionHistoryOfFloats, TakesEveryNumberButZeroForMotion) {
    using Floats = Member<&vekiUpdateMotionHistory_32f_C1IR>;
    forCallerModes([] {
        for (const float moving : {1.0f, -1.0f, kNaN, -kNaN, kInfinity, -kInfinity, kLeast, -kLeast, FLT_MAX})
            EXPECT_EQ(50.0f, Floats::pixel(moving, 45, 50, 10)) << moving;
        for (const float still : {0.0f, -0.0f})
            EXPECT_EQ(45.0f, Floats::pixel(still, 45, 50, 10)) << still;
    });
}

TEST(MotionHistoryOfFloats, MayBeItsOwnSilhouette) {
    const RoiSize roi{77, 3};
    const auto image = historyOf(roi, {}, 70), before = image.copy({});
    ASSERT_EQ(StatusOk, callWith(vekiUpdateMotionHistory_32f_C1IR, image, image, roi, 100.0f, 30.0f));
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x)
            ASSERT_TRUE(sameElement(updated(before.at(x, y) != 0, before.at(x, y), 100, 30), image.at(x, y))) << x;
}

const exports::FamilyFaults kFaults("vekiUpdateMotionHistory",
                                    {{"duration", StatusOutOfRange, {-1.0f, -FLT_MIN, -kInfinity, -FLT_MAX}}});

}  // namespace
