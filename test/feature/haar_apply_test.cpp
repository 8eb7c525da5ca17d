// Haar classifiers applied to images, against their definition.
#include <climits>

#include "arguments.h"
#include "haar_reference.h"
#include "standin.h"
#include "test/exports/faults.h"
#include "test_image.h"
#include "thread_count.h"

namespace {

using haar::Features;
using haar::Numbers;
using haar::Shape;
using haar::Stage;

/** What an export is called with. */
template <typename S, typename V>
struct Call {
    const S *integral, *tilted;
    int32_t integralStep, tiltedStep;
    const V* norm;
    int32_t normStep;
    uint8_t* mask;
    int32_t maskStep;
    RoiSize roi;
    int32_t* positiveCount;
    V stageThreshold;
    const HaarClassifier* state;
    int32_t scaleFactor;
};

template <auto Export, typename S, typename V, bool kHasTilted, bool kHasScale>
struct Form {
    using Sum = S;
    using Value = V;
    static constexpr bool kIsMixed = kHasTilted, kIsScaled = kHasScale;

    static Status call(const Call<S, V>& c) {
        return callWith(Export, c.integral, c.integralStep, only<kIsMixed>(c.tilted, c.tiltedStep), c.norm, c.normStep,
                        c.mask, c.maskStep, c.roi, c.positiveCount, c.stageThreshold, c.state,
                        only<kIsScaled>(c.scaleFactor));
    }
};

template <auto Export>
struct Member;

template <typename S, typename V, typename... Scale,
          Status (*Export)(const S*, int32_t, const V*, int32_t, uint8_t*, int32_t, RoiSize, int32_t*, V,
                           const HaarClassifier*, Scale...)>
struct Member<Export> : Form<Export, S, V, false, sizeof...(Scale) != 0> {};

template <typename S, typename V, typename... Scale,
          Status (*Export)(const S*, int32_t, const S*, int32_t, const V*, int32_t, uint8_t*, int32_t, RoiSize,
                           int32_t*, V, const HaarClassifier*, Scale...)>
struct Member<Export> : Form<Export, S, V, true, sizeof...(Scale) != 0> {};

enum class Set { kAll, kHalf, kFew, kNone };

TestImage<uint8_t> anyMask(Random& random, RoiSize roi, Layout layout, Set set) {
    return TestImage<uint8_t>::filled(roi, layout, [&](int, int) {
        constexpr uint8_t kBytes[] = {1, 2, 127, 128, 255};
        const uint8_t byte = kBytes[random.below(5)];
        const bool isSet = set == Set::kAll    ? true
                           : set == Set::kHalf ? random.below(2) == 0
                           : set == Set::kFew  ? random.below(40) == 0
                                               : false;
        return isSet ? byte : uint8_t{0};
    });
}

int counted[2];  // positions that were evaluated and failed, or passed

/** Calls an export with anything that its arguments may be, and compares what it gives with the definition. */
template <typename MemberType>
void check(Random& random, const Stage<typename MemberType::Value>& stage, RoiSize roi, int layout, Set set,
           Numbers numbers, int32_t scaleFactor = 0) {
    using S = typename MemberType::Sum;
    using V = typename MemberType::Value;
    const auto layoutOf = [&](int i) { return kLayouts[size_t(layout + i) % std::size(kLayouts)]; };
    SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layoutOf(0));
    const haar::Table<S> integral(haar::cornersOf(stage.features, MemberType::kIsMixed, false), roi, layoutOf(0),
                                  random, numbers);
    const haar::Table<S> tilted(haar::cornersOf(stage.features, MemberType::kIsMixed, true), roi, layoutOf(1), random,
                                numbers);
    const auto norms =
        TestImage<V>::filled(roi, layoutOf(2), [&](int, int) { return haar::number<V>(random, numbers); });
    const auto before = anyMask(random, roi, layoutOf(3), set);
    const auto mask = before.copy(layoutOf(3));

    int32_t passed = 0;
    const auto expected = TestImage<uint8_t>::filled(roi, {}, [&](int x, int y) {
        if (before.at(x, y) == 0)
            return uint8_t{0};
        const bool isPassed =
            haar::passes<MemberType::kIsMixed>(stage, integral, tilted, {x, y}, norms.at(x, y), scaleFactor);
        ++counted[isPassed ? 1 : 0];
        passed += isPassed ? 1 : 0;
        return isPassed ? before.at(x, y) : uint8_t{0};
    });

    int32_t count = 1 + int32_t(random.below(1000));
    ASSERT_EQ(StatusOk, MemberType::call({integral.origin(), tilted.origin(), integral.step(), tilted.step(),
                                          norms.data(), norms.step(), mask.data(), mask.step(), roi, &count,
                                          stage.threshold, stage.state.get(), scaleFactor}));
    ASSERT_TRUE(samePixels(expected, mask));
    ASSERT_EQ(passed, count);
}

template <typename MemberType>
class HaarApply : public ::testing::Test {};
using Members =
    ::testing::Types<Member<&vekiApplyHaarClassifier_32f_C1R>, Member<&vekiApplyHaarClassifier_32s32f_C1R>,
                     Member<&vekiApplyHaarClassifier_32s_C1RSfs>, Member<&vekiApplyMixedHaarClassifier_32f_C1R>,
                     Member<&vekiApplyMixedHaarClassifier_32s32f_C1R>,
                     Member<&vekiApplyMixedHaarClassifier_32s_C1RSfs>>;
TYPED_TEST_SUITE(HaarApply, Members);

TYPED_TEST(HaarApply, MatchesItsDefinition) {
    Random random(1);
    counted[0] = counted[1] = 0;
    for (int32_t width = 1; width <= 70; ++width)
        for (int layout = 0; layout < 6; ++layout)
            for (const Numbers numbers : {Numbers::kClose, Numbers::kAny}) {
                const int kind = int(random.below(4));
                const auto stage = Stage<typename TypeParam::Value>::any(random, int(random.below(9)), kind, numbers);
                const auto set = Set(random.below(8) % 4);
                const int32_t scaleFactor = TypeParam::kIsMixed ? -int32_t(random.below(4)) : int32_t(random.bits());
                ASSERT_NO_FATAL_FAILURE(
                    check<TypeParam>(random, stage, {width, 1 + layout % 4}, layout, set, numbers, scaleFactor));
            }
    EXPECT_GT(counted[0], 5000);
    EXPECT_GT(counted[1], 5000);
}

TYPED_TEST(HaarApply, TakesImagesOfAnyDensity) {
    Random random(2);
    for (const Set set : {Set::kAll, Set::kHalf, Set::kFew, Set::kNone})
        for (const RoiSize roi : {RoiSize{131, 37}, RoiSize{6, 91}, RoiSize{1, 40}, RoiSize{500, 3}}) {
            const auto stage = Stage<typename TypeParam::Value>::any(random, 5, int(random.below(4)), Numbers::kClose);
            ASSERT_NO_FATAL_FAILURE(check<TypeParam>(random, stage, roi, 2, set, Numbers::kClose));
        }
}

TYPED_TEST(HaarApply, IsTheSameForAnyNumberOfThreads) {
    forThreadCounts([](int) {
        Random random(5);
        for (const RoiSize roi : {RoiSize{256, 256}, RoiSize{65536, 1}, RoiSize{3, 21846}}) {
            const auto stage = Stage<typename TypeParam::Value>::any(random, 2, 0, Numbers::kClose);
            counted[1] = 0;
            ASSERT_NO_FATAL_FAILURE(check<TypeParam>(random, stage, roi, 1, Set::kHalf, Numbers::kClose));
            EXPECT_GT(counted[1], 1000);
        }
    });
}

// A single position at each place of a row: nothing else changes.
TYPED_TEST(HaarApply, FindsEveryPosition) {
    using V = typename TypeParam::Value;
    Features<V> features;
    features.add({{0, 0, 1, 1}}, {1}, 0, 5, 5);
    const auto state = haar::build(features, Shape::kUpright);
    for (int32_t width : {1, 3, 15, 16, 17, 40, 70, 131})
        for (int x = 0; x < width; ++x) {
            const RoiSize roi{width, 1};
            const TestImage<typename TypeParam::Sum> table({width + 2, 3});
            const TestImage<V> norms(roi);
            const auto mask = TestImage<uint8_t>::filled(roi, {}, [=](int i, int) { return uint8_t(i == x ? 77 : 0); });
            const auto expected = mask.copy({});
            for (const V threshold : {V(5), V(6)}) {
                int32_t count = 1;
                ASSERT_EQ(StatusOk, TypeParam::call({table.data(), table.data(), table.step(), table.step(),
                                                     norms.data(), norms.step(), mask.data(), mask.step(), roi, &count,
                                                     threshold, state.get(), 0}));
                expected.at(x, 0) = threshold > 5 ? 0 : 77;
                ASSERT_TRUE(samePixels(expected, mask));
                ASSERT_EQ(threshold > 5 ? 0 : 1, count);
            }
        }
}

TYPED_TEST(HaarApply, WithoutFeaturesTheSumIsZero) {
    using V = typename TypeParam::Value;
    Random random(3);
    for (const V threshold : {V(-1), V(0), V(1)})
        for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{37, 5}}) {
            const Stage<V> stage{haar::build(Features<V>(), Shape::kUpright), Shape::kUpright, {}, threshold};
            check<TypeParam>(random, stage, roi, 0, Set::kHalf, Numbers::kAny);
        }
}

TYPED_TEST(HaarApply, ShiftsResponses) {
    using V = typename TypeParam::Value;
    if constexpr (TypeParam::kIsScaled) {
        Random random(4);
        for (const int32_t factor :
             {0, -1, -2, -5, -30, -31, -32, -33, -40, -62, -63, -64, -65, -128, INT_MIN + 1, INT_MIN})
            for (const RoiSize roi : {RoiSize{1, 3}, RoiSize{3, 2}, RoiSize{29, 3}})
                for (const Numbers numbers : {Numbers::kClose, Numbers::kAny}) {
                    const auto stage = Stage<V>::any(random, 3, 2, numbers);
                    ASSERT_NO_FATAL_FAILURE(check<TypeParam>(random, stage, roi, 1, Set::kAll, numbers, factor));
                }
    }
}

// Only the plain form of floats reads the count, and only whether it is 0.
TYPED_TEST(HaarApply, ReadsTheCount) {
    using V = typename TypeParam::Value;
    using S = typename TypeParam::Sum;
    constexpr bool kReads = std::is_same_v<S, float> && !TypeParam::kIsMixed;
    Features<V> features;
    features.add({{0, 0, 1, 1}, {0, 0, 1, 1}}, {1, 1}, 0, 5, 5);
    const auto state = haar::build(features, Shape::kUpright);
    const S table[16] = {};
    const V norms[4] = {};
    for (const int32_t before : {0, 1, 2, 4, 1000, -1, INT_MIN, INT_MAX}) {
        uint8_t mask[4] = {9, 0, 255, 1};
        int32_t count = before;
        ASSERT_EQ(StatusOk,
                  TypeParam::call({table, table, 20, 20, norms, 16, mask, 4, {4, 1}, &count, 6, state.get(), 0}));
        const bool isLeft = kReads && before == 0;
        EXPECT_EQ(0, count);
        EXPECT_EQ(isLeft ? 9 : 0, mask[0]);
        EXPECT_EQ(isLeft ? 255 : 0, mask[2]);
        count = before;
        uint8_t again[4] = {9, 0, 255, 1};
        ASSERT_EQ(StatusOk,
                  TypeParam::call({table, table, 20, 20, norms, 16, again, 4, {4, 1}, &count, 5, state.get(), 0}));
        EXPECT_EQ(isLeft ? 0 : 3, count);
        EXPECT_EQ(255, again[2]);
    }
}

// -1.5 is -1 for the plain form of floats, in features of two and three rectangles, if all first weights are like it.
TYPED_TEST(HaarApply, TakesMinusOneForFirstWeights) {
    using V = typename TypeParam::Value;
    using S = typename TypeParam::Sum;
    if constexpr (std::is_same_v<V, float>) {
        constexpr bool kReplaces = std::is_same_v<S, float> && !TypeParam::kIsMixed;
        for (const int rectangles : {1, 2, 3, 4})
            for (const float other : {-1.f, -1.99f, -2.f, 1.f, -0.99f}) {
                // The response is the first weight times 4, and the threshold lies between -4 and -6.
                Features<float> features;
                std::vector<ImageRect> rects(size_t(rectangles), ImageRect{0, 0, 1, 1});
                std::vector<float> weights(size_t(rectangles), 0.f);
                weights[0] = -1.5f;
                features.add(rects, weights, -5, 0, 1);
                features.add({{0, 0, 1, 1}}, {other}, -100, 0, 0);
                const auto state = haar::build(features, Shape::kUpright);
                const S table[4] = {0, 0, 0, 4};
                const float norm = 1;
                uint8_t mask = 3;
                int32_t count = 1;
                ASSERT_EQ(StatusOk,
                          TypeParam::call({table, table, 8, 8, &norm, 4, &mask, 1, {1, 1}, &count, 1, state.get(), 0}));
                const bool replaced = kReplaces && (rectangles == 2 || rectangles == 3) && other > -2 && other <= -1;
                EXPECT_EQ(replaced ? 3 : 0, mask) << rectangles << " rectangles, " << other;
            }
    }
}

const exports::FamilyFaults kFaults("vekiApplyMixedHaarClassifier",
                                    {{"scaleFactor", StatusBadArgument, {1, INT32_MAX}}});

// Where a test may choose how much memory there is.
TYPED_TEST(HaarApply, ReportsMissingMemory) {
    using V = typename TypeParam::Value;
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    Random random(6);
    const RoiSize roi{9, 4};
    const TestImage<typename TypeParam::Sum> table({30, 30});
    const TestImage<V> norms(roi);
    const auto mask = anyMask(random, roi, {}, Set::kAll);
    const auto before = mask.copy({});
    for (const int features : {0, 4}) {
        const auto stage = Stage<V>::any(random, features, 0, Numbers::kClose);
        const int held = standIn()->blocks();
        int32_t count = 77;
        standIn()->failAfter(0);
        const Status status =
            TypeParam::call({table.data(), table.data(), table.step(), table.step(), norms.data(), norms.step(),
                             mask.data(), mask.step(), roi, &count, 0, stage.state.get(), 0});
        standIn()->failAfter(INT_MAX);
        const bool needsMemory = !TypeParam::kIsMixed && features > 0;
        EXPECT_EQ(needsMemory ? StatusMemoryAllocation : StatusOk, status);
        if (needsMemory) {
            EXPECT_EQ(77, count);
            EXPECT_TRUE(samePixels(before, mask));
        }
        EXPECT_EQ(held, standIn()->blocks());
        EXPECT_EQ(StatusOk,
                  TypeParam::call({table.data(), table.data(), table.step(), table.step(), norms.data(), norms.step(),
                                   mask.data(), mask.step(), roi, &count, 0, stage.state.get(), 0}));
        EXPECT_EQ(held, standIn()->blocks());
    }
}

}  // namespace
