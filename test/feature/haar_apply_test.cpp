// Haar classifiers applied to images, against their definition.
#include <climits>

#include "arguments.h"
#include "haar_features.h"
#include "standin.h"
#include "test/exports/faults.h"
#include "test_image.h"
#include "thread_count.h"

namespace {

using haar::Feature;
using haar::Features;
using haar::Numbers;
using haar::Point;
using haar::Rectangle;
using haar::Shape;

/** An integral image that holds exactly the elements that windows read. */
template <typename S>
struct Table {
    Point first;
    TestImage<S> elements;

    Table(const std::vector<Point>& corners, RoiSize roi, Layout layout, Random& random, Numbers numbers)
        : first(firstOf(corners)), elements(TestImage<S>::filled(sizeOf(corners, roi), layout, [&](int, int) {
              return haar::number<S>(random, numbers);
          })) {}

    S at(int x, int y) const { return elements.at(x - first.x, y - first.y); }

    /** The address of the element of the first window position, which may lie outside. */
    const S* origin() const {
        const ptrdiff_t distance = ptrdiff_t{first.y} * elements.step() + first.x * ptrdiff_t{sizeof(S)};
        return reinterpret_cast<const S*>(reinterpret_cast<uintptr_t>(elements.data()) - uintptr_t(distance));
    }
    int32_t step() const { return elements.step(); }

  private:
    static Point firstOf(const std::vector<Point>& corners) {
        Point first = corners[0];
        for (const Point& corner : corners)
            first = {std::min(first.x, corner.x), std::min(first.y, corner.y)};
        return first;
    }
    static RoiSize sizeOf(const std::vector<Point>& corners, RoiSize roi) {
        Point last = corners[0];
        for (const Point& corner : corners)
            last = {std::max(last.x, corner.x), std::max(last.y, corner.y)};
        return {last.x - firstOf(corners).x + roi.width, last.y - firstOf(corners).y + roi.height};
    }
};

template <typename V>
std::vector<Point> cornersOf(const std::vector<Feature<V>>& features, bool fromBoth, bool tilted) {
    std::vector<Point> corners;
    for (const Feature<V>& feature : features)
        for (const Rectangle<V>& r : feature.rectangles)
            if (!fromBoth || feature.isTilted == tilted)
                for (const Point corner : {r.a, r.b, r.c, r.d})
                    corners.push_back(fromBoth && tilted ? Point{corner.x + 1, corner.y + 1} : corner);
    if (corners.empty())
        corners.push_back({0, 0});
    return corners;
}

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

/** The sum of a rectangle, from its four elements. */
float sumOf(float a, float b, float c, float d) {
    return ((a - b) - c) + d;
}
int32_t sumOf(int32_t a, int32_t b, int32_t c, int32_t d) {
    return int32_t(uint32_t(a) - uint32_t(b) - uint32_t(c) + uint32_t(d));
}
int32_t wrappingProduct(int32_t a, int32_t b) {
    return int32_t(uint32_t(a) * uint32_t(b));
}

/** Whether the response of a feature is below its threshold; sums and weights are those of its rectangles. */
template <typename MemberType, typename S>
bool isBelow(const std::vector<S>& sums, const std::vector<float>& weights, float threshold, float norm, int32_t) {
    float response = 0;
    for (size_t k = 0; k < sums.size(); ++k) {
        const float product = weights[k] * float(sums[k]);
        response = k == 0 ? product : response + product;
    }
    return threshold * norm > response;
}
template <typename MemberType>
bool isBelow(const std::vector<int32_t>& sums, const std::vector<int32_t>& weights, int32_t threshold, int32_t norm,
             int32_t scaleFactor) {
    int64_t response = 0;
    for (size_t k = 0; k < sums.size(); ++k)
        response += wrappingProduct(weights[k], sums[k]);
    if (!MemberType::kIsMixed)
        return int32_t(response) < wrappingProduct(threshold, norm);
    for (int64_t i = 0; i < std::min(-int64_t{scaleFactor}, int64_t{64}); ++i)
        response = int64_t(uint64_t(response) * 2);
    return response < int64_t{threshold} * norm;
}

float plus(float a, float b) {
    return a + b;
}
int32_t plus(int32_t a, int32_t b) {
    return int32_t(uint32_t(a) + uint32_t(b));
}

/** A classifier with its features, as it keeps them. */
template <typename V>
struct Stage {
    haar::ClassifierPointer state;
    Shape shape;  // it was built with
    std::vector<Feature<V>> features;
    V threshold;

    /** As tilted < 2 an upright or tilted one; above, some features of an upright one are tilted in two directions. */
    static Stage any(Random& random, int count, int tilted, Numbers numbers) {
        const auto given = haar::anyFeatures<V>(random, count, numbers);
        const Shape shape = tilted == 1 ? Shape::kTilted : Shape::kUpright;
        Stage stage{haar::build(given, shape), shape, given.stored(shape),
                    haar::number<V>(random, random.below(8) == 0 ? numbers : Numbers::kClose)};
        if (tilted >= 2 && count > 0) {
            std::vector<uint8_t> mask;
            for (int i = 0; i < count; ++i)
                mask.push_back(random.mask());
            EXPECT_EQ(StatusOk, haar::tilt<V>(mask, tilted - 2, stage.state.get()));
            haar::tiltStored(mask, tilted - 2, stage.features);
        }
        return stage;
    }

    bool replacesFirstWeights() const {
        bool minusOne = std::is_same_v<V, float> && shape == Shape::kUpright;
        for (const Feature<V>& feature : features)
            minusOne = minusOne && int64_t(std::trunc(double(feature.rectangles[0].weight))) == -1;
        return minusOne;
    }
};

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

template <typename MemberType>
void check(Random& random, const Stage<typename MemberType::Value>& stage, RoiSize roi, int layout, Set set,
           Numbers numbers, int32_t scaleFactor = 0) {
    using S = typename MemberType::Sum;
    using V = typename MemberType::Value;
    const auto layoutOf = [&](int i) { return kLayouts[size_t(layout + i) % std::size(kLayouts)]; };
    SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layoutOf(0));
    const Table<S> integral(cornersOf(stage.features, MemberType::kIsMixed, false), roi, layoutOf(0), random, numbers);
    const Table<S> tilted(cornersOf(stage.features, MemberType::kIsMixed, true), roi, layoutOf(1), random, numbers);
    const auto norms =
        TestImage<V>::filled(roi, layoutOf(2), [&](int, int) { return haar::number<V>(random, numbers); });
    const auto before = anyMask(random, roi, layoutOf(3), set);
    const auto mask = before.copy(layoutOf(3));

    const bool minusOne = !MemberType::kIsMixed && std::is_same_v<S, float> && stage.replacesFirstWeights();
    int32_t passed = 0;
    std::vector<S> sums;
    std::vector<V> weights;
    const auto expected = TestImage<uint8_t>::filled(roi, {}, [&](int x, int y) {
        if (before.at(x, y) == 0)
            return uint8_t{0};
        V total = 0;
        for (const Feature<V>& feature : stage.features) {
            sums.clear();
            weights.clear();
            const bool fromTilted = MemberType::kIsMixed && feature.isTilted;
            const auto at = [&](Point p) {
                return fromTilted ? tilted.at(x + 1 + p.x, y + 1 + p.y) : integral.at(x + p.x, y + p.y);
            };
            for (const Rectangle<V>& r : feature.rectangles) {
                sums.push_back(sumOf(at(r.a), at(r.b), at(r.c), at(r.d)));
                weights.push_back(r.weight);
            }
            if (minusOne && (weights.size() == 2 || weights.size() == 3))
                weights[0] = -1;
            const bool below = isBelow<MemberType>(sums, weights, feature.threshold, norms.at(x, y), scaleFactor);
            total = plus(total, below ? feature.valueBelow : feature.valueAbove);
        }
        const bool fails = total < stage.threshold;
        ++counted[fails ? 0 : 1];
        passed += fails ? 0 : 1;
        return fails ? uint8_t{0} : before.at(x, y);
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
