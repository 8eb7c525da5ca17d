// Haar classifiers as they are built and tilted, by a look into their records.
#include <climits>
#include <cstring>

#include "haar_classifier.h"
#include "haar_features.h"
#include "standin.h"
#include "test/exports/faults.h"

namespace {

using haar::Feature;
using haar::Features;
using haar::Numbers;
using haar::Point;
using haar::Shape;

template <typename V>
const VEKCV_VARIANT::Classifier<V>& recordOf(const HaarClassifier* state) {
    return static_cast<const VEKCV_VARIANT::Classifier<V>&>(*state);
}

bool operator==(ImageRect a, ImageRect b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

Point pointOf(VEKCV_VARIANT::HaarCorner corner) {
    return {corner.x, corner.y};
}

/** Features in the order given, in a record; those that were tilted later have lost their index. */
template <typename V>
void expectFeatures(const std::vector<Feature<V>>& expected, const HaarClassifier* state, bool keepTheirIndex) {
    const auto& record = recordOf<V>(state);
    ASSERT_EQ(int(expected.size()), record.featureCount);
    const auto* rectangle = record.rectangles;
    for (size_t i = 0; i < expected.size(); ++i) {
        const Feature<V>& feature = expected[i];
        const auto& stored = record.features[i];
        ASSERT_EQ(int(feature.rectangles.size()), stored.rectangleCount);
        ASSERT_EQ(rectangle, stored.rectangles);
        EXPECT_EQ(feature.threshold, stored.threshold);
        EXPECT_EQ(feature.valueBelow, stored.valueBelow);
        EXPECT_EQ(feature.valueAbove, stored.valueAbove);
        const int tiltedTag = keepTheirIndex ? feature.index * 256 + 1 : 1;
        EXPECT_EQ(feature.isTilted ? tiltedTag : feature.index * 256, stored.featureTag);
        for (const auto& r : feature.rectangles) {
            EXPECT_EQ(r.a, pointOf(rectangle->a));
            EXPECT_EQ(r.b, pointOf(rectangle->b));
            EXPECT_EQ(r.c, pointOf(rectangle->c));
            EXPECT_EQ(r.d, pointOf(rectangle->d));
            EXPECT_EQ(r.weight, rectangle->weight);
            ++rectangle;
        }
    }
    ASSERT_EQ(rectangle - record.rectangles, record.rectangleCount);
}

/** The rectangle that the record keeps around the others, whose right and bottom begin as sizes. */
template <typename V>
ImageRect extentOf(ImageRect first, const std::vector<Feature<V>>& stored, Shape shape) {
    int left = first.x, top = first.y;
    int right = shape == Shape::kUpright ? first.width : first.width - first.height;
    int bottom = shape == Shape::kUpright ? first.height : first.width + first.height;
    for (const Feature<V>& feature : stored)
        for (const auto& r : feature.rectangles) {
            left = std::min(left, r.d.x);
            top = std::min(top, r.d.y);
            if (right + left < r.a.x)
                right = r.a.x;
            if (bottom + top < r.a.y)
                bottom = r.a.y;
        }
    return {left, top, right - left, bottom - top};
}

template <typename V>
RoiSize windowSize(const HaarClassifier* state) {
    RoiSize size{-1, -1};
    const auto query = std::is_same_v<V, float> ? vekiGetHaarClassifierSize_32f : vekiGetHaarClassifierSize_32s;
    EXPECT_EQ(StatusOk, query(state, &size));
    return size;
}

template <typename V>
void expectWindowSize(const std::vector<Feature<V>>& features, const HaarClassifier* state) {
    int width = 0, height = 0;
    for (const Feature<V>& feature : features)
        for (const auto& r : feature.rectangles) {
            width = std::max(width, r.c.x);
            height = std::max(height, r.a.y);
        }
    EXPECT_EQ(width, windowSize<V>(state).width);
    EXPECT_EQ(height, windowSize<V>(state).height);
}

constexpr Shape kShapes[] = {Shape::kUpright, Shape::kTilted};

template <typename V>
class HaarBuild : public ::testing::Test {};
using Values = ::testing::Types<float, int32_t>;
TYPED_TEST_SUITE(HaarBuild, Values);

TYPED_TEST(HaarBuild, KeepsFeaturesAsDefined) {
    Random random(1);
    for (int round = 0; round < 200; ++round)
        for (const Shape shape : kShapes) {
            const auto features = haar::anyFeatures<TypeParam>(random, 1 + round % 12, Numbers::kClose);
            const auto state = haar::build(features, shape);
            const auto stored = features.stored(shape);
            ASSERT_NO_FATAL_FAILURE(expectFeatures(stored, state.get(), true));
            expectWindowSize(stored, state.get());

            const auto& record = recordOf<TypeParam>(state.get());
            int groups[2] = {0, 0};
            bool minusOne = true;
            for (const auto& feature : stored) {
                groups[0] += feature.rectangles.size() == 2;
                groups[1] += feature.rectangles.size() == 3;
                minusOne = minusOne && int(feature.rectangles[0].weight) == -1;
            }
            const bool upright = shape == Shape::kUpright;
            EXPECT_EQ(upright ? 0 : 1, record.flags);
            EXPECT_EQ(upright ? groups[0] : 0, record.twoRectangleFeatures);
            EXPECT_EQ(upright ? groups[0] + groups[1] : 0, record.upToThreeRectangleFeatures);
            EXPECT_EQ((upright && minusOne && std::is_same_v<TypeParam, float>), record.firstWeightIsMinusOne);
            EXPECT_TRUE(extentOf(features.rectangles[0], stored, shape) == record.extent);
        }
}

TYPED_TEST(HaarBuild, ComparesASizeWithACoordinate) {
    Features<TypeParam> features;
    const auto extent = [&](Shape shape) { return recordOf<TypeParam>(haar::build(features, shape).get()).extent; };
    features.add({{5, 4, 3, 2}}, {1}, 0, 0, 0);
    EXPECT_TRUE((ImageRect{5, 4, -2, -2} == extent(Shape::kUpright)));
    EXPECT_TRUE((ImageRect{5, 4, -4, 1} == extent(Shape::kTilted)));
    features.add({{6, 4, 4, 2}}, {1}, 0, 0, 0);  // 3 + 5 < 10
    EXPECT_TRUE((ImageRect{5, 4, 5, -2} == extent(Shape::kUpright)));
    features.add({{0, 4, 9, 2}, {0, 9, 10, 1}}, {1, 1}, 0, 0, 0);  // comes first, while 3 + 0 < 9, then 9 + 0 < 10
    EXPECT_TRUE((ImageRect{0, 4, 10, 6} == extent(Shape::kUpright)));
}

TYPED_TEST(HaarBuild, MayHaveNoFeatures) {
    for (const Shape shape : kShapes) {
        // The arrays of the features lie behind a pointer that must not be followed; there is a first rectangle.
        HaarClassifier* state = nullptr;
        const ImageRect first{5, 4, 3, 2};
        const auto* const nowhere = reinterpret_cast<const TypeParam*>(64);
        const auto* const noCounts = reinterpret_cast<const int32_t*>(64);
        const auto with = [&](auto function) {
            return function(&state, &first, nowhere, nowhere, nowhere, nowhere, noCounts, 0);
        };
        if constexpr (std::is_same_v<TypeParam, float>)
            ASSERT_EQ(StatusOk, with(shape == Shape::kUpright ? vekiHaarClassifierInitAlloc_32f
                                                              : vekiTiltedHaarClassifierInitAlloc_32f));
        else
            ASSERT_EQ(StatusOk, with(shape == Shape::kUpright ? vekiHaarClassifierInitAlloc_32s
                                                              : vekiTiltedHaarClassifierInitAlloc_32s));
        const haar::ClassifierPointer owner(state);
        const auto& record = recordOf<TypeParam>(state);
        EXPECT_EQ(0, record.featureCount);
        EXPECT_EQ(0, record.rectangleCount);
        EXPECT_EQ(shape == Shape::kTilted ? 1 : 0, record.flags);
        EXPECT_EQ((std::is_same_v<TypeParam, float> && shape == Shape::kUpright), record.firstWeightIsMinusOne);
        EXPECT_TRUE((shape == Shape::kUpright ? ImageRect{5, 4, -2, -2} : ImageRect{5, 4, -4, 1}) == record.extent);
        EXPECT_EQ(0, windowSize<TypeParam>(state).width);
        EXPECT_EQ(0, windowSize<TypeParam>(state).height);
        const std::vector<uint8_t> mask{1};
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(shape == Shape::kUpright ? StatusOk : StatusBadArgument, haar::tilt<TypeParam>(mask, 1, state));
    }
}

TYPED_TEST(HaarBuild, RefusesRectanglesThatAreNone) {
    for (const Shape shape : kShapes)
        for (const ImageRect bad : {ImageRect{-1, 0, 1, 1},
                                    {0, -1, 1, 1},
                                    {0, 0, 0, 1},
                                    {3, 0, 1, 0},
                                    {3, 0, 1, -1},
                                    {INT_MIN, INT_MIN, INT_MIN, INT_MIN},
                                    {3, 0, 1, 5},
                                    {0, 0, 1, 2},
                                    {3, 0, 1, INT_MAX}}) {
            const bool isBad = bad.x < 0 || bad.y < 0 || bad.width < 1 || bad.height < 1 || shape == Shape::kTilted;
            Features<TypeParam> features;
            features.add({{0, 0, 1, 1}, {2, 2, 2, 2}}, {1, 1}, 0, 0, 0);
            features.add({{0, 0, 1, 1}, {2, 2, 2, 2}, bad}, {1, 1, 1}, 0, 0, 0);
            HaarClassifier other{};
            HaarClassifier* state = &other;
            EXPECT_EQ(isBad ? StatusBadArgument : StatusOk, features.build(shape, &state));
            if (!isBad)
                EXPECT_EQ(StatusOk, vekiHaarClassifierFree_32s(state));
            else if (shape == Shape::kUpright && std::is_same_v<TypeParam, float>)
                EXPECT_EQ(&other, state);
            else
                EXPECT_EQ(nullptr, state);
        }
    // The leftmost corner may be at -1, and coordinates may be of any size.
    Features<TypeParam> features;
    features.add({{3, 0, 1, 4}, {INT_MAX, INT_MAX, INT_MAX, INT_MAX}}, {1, 1}, 0, 0, 0);
    for (const Shape shape : kShapes)
        haar::build(features, shape);
}

TYPED_TEST(HaarBuild, RefusesMoreRectanglesThanThereIsMemoryFor) {
    for (const std::vector<int32_t>& counts : {std::vector<int32_t>{INT_MAX, INT_MAX, 2}, {INT_MAX, 1}, {60000000}})
        for (const Shape shape : kShapes) {
            Features<TypeParam> features;
            for (size_t i = 0; i < counts.size(); ++i)
                features.add({{-1, 0, 1, 1}}, {1}, 0, 0, 0);
            features.counts = counts;
            HaarClassifier other{};
            HaarClassifier* state = &other;
            // The upright form of floats looks at the rectangles first.
            const bool looks = shape == Shape::kUpright && std::is_same_v<TypeParam, float>;
            EXPECT_EQ(looks ? StatusBadArgument : StatusMemoryAllocation, features.build(shape, &state));
            EXPECT_EQ(&other, state);
        }
}

TYPED_TEST(HaarBuild, ReportsMissingMemory) {
    if (standIn() == nullptr)
        GTEST_SKIP() << "the core library is the real one";
    const int held = standIn()->blocks();
    for (const Shape shape : kShapes)
        for (const ImageRect rect : {ImageRect{0, 0, 1, 1}, ImageRect{0, 0, 0, 0}}) {
            Features<TypeParam> features;
            features.add({rect}, {1}, 0, 0, 0);
            HaarClassifier other{};
            HaarClassifier* state = &other;
            standIn()->failAfter(0);
            const Status status = features.build(shape, &state);
            standIn()->failAfter(INT_MAX);
            const bool looks = shape == Shape::kUpright && std::is_same_v<TypeParam, float> && rect.width == 0;
            EXPECT_EQ(looks ? StatusBadArgument : StatusMemoryAllocation, status);
            EXPECT_EQ(&other, state);
            if (features.build(shape, &state) == StatusOk) {
                EXPECT_EQ(held + 1, standIn()->blocks());
                EXPECT_EQ(StatusOk, vekiHaarClassifierFree_32f(state));
            }
            EXPECT_EQ(held, standIn()->blocks());
        }
}

TYPED_TEST(HaarBuild, TiltsChosenFeaturesOnce) {
    Random random(2);
    for (int round = 0; round < 100; ++round)
        for (const int32_t orientation : {0, 1, -7}) {
            const auto features = haar::anyFeatures<TypeParam>(random, 1 + round % 12, Numbers::kClose);
            const auto state = haar::build(features, Shape::kUpright);
            auto expected = features.stored(Shape::kUpright);
            std::vector<uint8_t> mask(size_t(features.count()), 0);
            EXPECT_EQ(StatusOk, haar::tilt<TypeParam>(mask, orientation, state.get()));
            ASSERT_NO_FATAL_FAILURE(expectFeatures(expected, state.get(), true));
            EXPECT_EQ(0, state->flags);

            for (uint8_t& byte : mask)
                byte = random.mask();
            mask[random.below(uint32_t(mask.size()))] = 128;
            EXPECT_EQ(StatusOk, haar::tilt<TypeParam>(mask, orientation, state.get()));
            haar::tiltStored(mask, orientation, expected);
            for (int i = 0; i < 2; ++i) {
                ASSERT_NO_FATAL_FAILURE(expectFeatures(expected, state.get(), false));
                expectWindowSize(expected, state.get());
                EXPECT_EQ(1, state->flags);
                EXPECT_EQ(StatusBadArgument, haar::tilt<TypeParam>(mask, orientation, state.get()));
            }
        }
    Features<TypeParam> features;
    features.add({{3, 0, 1, 1}}, {1}, 0, 0, 0);
    const auto tilted = haar::build(features, Shape::kTilted);
    EXPECT_EQ(StatusBadArgument, haar::tilt<TypeParam>({0}, 1, tilted.get()));
}

// Corners that wrap around, to -2.
TYPED_TEST(HaarBuild, SizesAreNotNegative) {
    Features<TypeParam> features;
    features.add({{INT_MAX, INT_MAX, INT_MAX, INT_MAX}}, {1}, 0, 0, 0);
    const auto state = haar::build(features, Shape::kUpright);
    EXPECT_EQ(0, windowSize<TypeParam>(state.get()).width);
    EXPECT_EQ(0, windowSize<TypeParam>(state.get()).height);
}

const exports::FaultRule kBadCount{"featureCount", StatusSizeError, {-1, INT_MIN}};
const exports::FamilyFaults kUprightFaults("vekiHaarClassifier", {kBadCount});
const exports::FamilyFaults kTiltedFaults("vekiTiltedHaarClassifier", {kBadCount});

// A count is looked at before any rectangle, of which the first one is bad, too.
TYPED_TEST(HaarBuild, NeedsRectanglesForEveryFeature) {
    HaarClassifier other{};
    for (const int32_t bad : {0, -1})
        for (const size_t feature : {0, 1})
            for (const Shape shape : kShapes) {
                Features<TypeParam> features;
                features.add({{3, 0, 0, 1}, {3, 0, 2, 1}}, {1, 1}, 0, 0, 0);
                features.add({{3, 0, 1, 1}}, {1}, 0, 0, 0);
                features.counts[feature] = bad;
                HaarClassifier* state = &other;
                EXPECT_EQ(StatusSizeError, features.build(shape, &state));
                EXPECT_EQ(&other, state);
            }
}

}  // namespace
