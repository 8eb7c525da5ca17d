// Chamfer distances against their definition, and where they are shortest ways, against these.
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstring>

#include "caller_modes.h"
#include "chamfer_reference.h"
#include "test/exports/faults.h"

namespace {

using distance::Form;
using distance::Source;
using distance::withOneZero;
using distance::withoutZero;
using distance::zerosAmong;

template <typename FormType>
class DistanceTransform : public ::testing::Test {};
using Forms =
    ::testing::Types<Form<&vekiDistanceTransform_3x3_8u_C1R, 3>, Form<&vekiDistanceTransform_3x3_8u_C1IR, 3>,
                     Form<&vekiDistanceTransform_3x3_8u16u_C1R, 3>, Form<&vekiDistanceTransform_3x3_8u32f_C1R, 3>,
                     Form<&vekiDistanceTransform_5x5_8u_C1R, 5>, Form<&vekiDistanceTransform_5x5_8u_C1IR, 5>,
                     Form<&vekiDistanceTransform_5x5_8u16u_C1R, 5>, Form<&vekiDistanceTransform_5x5_8u32f_C1R, 5>>;
TYPED_TEST_SUITE(DistanceTransform, Forms);

/** The weights that the library gives for a mask and a norm. */
template <typename FormType>
typename FormType::Metrics standard(int32_t norm) {
    typename FormType::Metrics metrics{};
    if constexpr (FormType::kIsFloat)
        EXPECT_EQ(StatusOk, vekiGetDistanceTransformMask_32f(FormType::kSize, norm, metrics.data()));
    else
        EXPECT_EQ(StatusOk, vekiGetDistanceTransformMask_32s(FormType::kSize, norm, metrics.data()));
    return metrics;
}

/** Any weights: small and large ones, in every order. Of floats few sums are exact. */
template <typename FormType>
typename FormType::Metrics anyMetrics(Random& random) {
    typename FormType::Metrics metrics{};
    const uint32_t range = 2u << (3 * random.below(6));
    for (auto& metric : metrics) {
        using Metric = typename FormType::Member::Metric;
        metric = Metric(1 + random.below(range));
        if constexpr (FormType::kIsFloat)
            metric /= 7;
    }
    return metrics;
}

TYPED_TEST(DistanceTransform, MatchesItsDefinition) {
    Random random(1);
    int turn = 0;
    distance::forRegions([&](RoiSize roi, const Layouts& layouts) {
        for (const uint32_t period : {2u, 40u, 1000u}) {
            const Source source = zerosAmong(roi, layouts[0], period, random.bits());
            const bool isStandard = ++turn % 2 == 0;
            TypeParam::check(source, isStandard ? standard<TypeParam>(turn / 2 % 3) : anyMetrics<TypeParam>(random),
                             layouts[1]);
        }
    });
}

TYPED_TEST(DistanceTransform, TakesWeightsInEveryOrder) {
    Random random(2);
    for (int turn = 0; turn < 300 && !this->HasFatalFailure(); ++turn) {
        const RoiSize roi{int32_t(1 + random.below(100)), int32_t(1 + random.below(60))};
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height);
        TypeParam::check(zerosAmong(roi, {}, 1 + random.below(300), random.bits()), anyMetrics<TypeParam>(random));
    }
}

// Where no other steps lead to the end of a step, or past it, at less: a <= b, 2 a <= c, 3 b <= 2 c, c <= a + b. Of the
// floats these are sums that are exact.
TYPED_TEST(DistanceTransform, GivesTheLengthOfShortestWays) {
    using Metrics = typename TypeParam::Metrics;
    std::vector<Metrics> all{{1, 1, 2}, {1, 2, 3}, {5, 7, 11}, {2, 3, 5}, {3, 4, 6}, {8, 11, 18}};
    if constexpr (TypeParam::kIsFloat)
        all.push_back({1, 1.5f, 2.25f});
    for (const Metrics& metrics : all)
        for (const RoiSize& roi : {RoiSize{70, 40}, RoiSize{1, 30}, RoiSize{90, 2}, RoiSize{3, 3}})
            for (const uint32_t period : {3u, 200u, 2000u}) {
                const Source source = zerosAmong(roi, {}, period, period);
                ASSERT_TRUE(samePixels(TypeParam::shortest(source, metrics), TypeParam::call(source, metrics)))
                    << metrics[0] << ", " << metrics[1] << ", " << metrics[2] << "; one zero in " << period;
            }
}

// Zigzags of diagonals would have to leave the last row, which is passed only once before the backward pass is over.
TYPED_TEST(DistanceTransform, KeepsToTwoPasses) {
    using Metrics = typename TypeParam::Metrics;
    if constexpr (TypeParam::kSize == 3) {
        const Metrics metrics{10, 1, 100};
        const Source source = withOneZero({9, 2}, 0, 1);
        const auto result = TypeParam::call(source, metrics);
        EXPECT_EQ(2, TypeParam::shortest(source, metrics).at(2, 1));
        EXPECT_EQ(20, result.at(2, 1));
        TypeParam::check(source, metrics);
    }
}

// Where other steps lead to a neighbour at less than its weight. In narrow images a way out of the region and back
// would be shorter than all that stay inside.
TYPED_TEST(DistanceTransform, TakesWeightsThatAreNotClosed) {
    using Metrics = typename TypeParam::Metrics;
    for (const Metrics& metrics : {Metrics{100, 1, 5}, {10, 1, 8}, {1, 9, 3}, {7, 1, 2}, {50, 40, 3}, {9, 9, 1}})
        for (const RoiSize& roi : {RoiSize{1, 30}, {2, 30}, {3, 30}, {5, 30}, {40, 1}, {40, 2}, {40, 3}, {83, 37}})
            for (const uint32_t period : {4u, 30u, 300u}) {
                TypeParam::check(zerosAmong(roi, {}, period, period + uint32_t(roi.width)), metrics);
                if (this->HasFatalFailure())
                    return;
            }
}

TYPED_TEST(DistanceTransform, MayHaveNoZeroPixelOrNothingElse) {
    for (const RoiSize& roi : {RoiSize{1, 1}, RoiSize{1, 9}, RoiSize{33, 2}, RoiSize{100, 40}})
        for (int32_t norm = 0; norm <= 2; ++norm) {
            const auto far = TestImage<typename TypeParam::T>::constant(roi, TypeParam::kLargest);
            ASSERT_TRUE(samePixels(far, TypeParam::call(withoutZero(roi), standard<TypeParam>(norm))));
            const auto zeros = Source::constant(roi, uint8_t{0});
            const auto near = TestImage<typename TypeParam::T>::constant(roi, 0);
            ASSERT_TRUE(samePixels(near, TypeParam::call(zeros, standard<TypeParam>(norm))));
        }
}

TYPED_TEST(DistanceTransform, SeesEveryZeroPixel) {
    const RoiSize roi{83, 37};
    for (const int y : {0, 1, 14, 15, 16, 17, 30, 35, 36})
        for (const int x : {0, 1, 2, 15, 16, 17, 40, 79, 80, 81, 82})
            for (int32_t norm = 0; norm <= 2; ++norm) {
                SCOPED_TRACE(::testing::Message() << x << ", " << y);
                TypeParam::check(withOneZero(roi, x, y), standard<TypeParam>(norm));
                if (this->HasFatalFailure())
                    return;
            }
}

// Weights that reach the largest distance at once, or in a few steps, or that overflow when they are doubled.
TYPED_TEST(DistanceTransform, Saturates) {
    using Metric = typename TypeParam::Member::Metric;
    using Limits = std::numeric_limits<Metric>;
    std::vector<Metric> some{1, 100, 254, 255, 256, 20000, 65534, 65535, 65536, Metric(1 << 30), Limits::max()};
    if constexpr (TypeParam::kIsFloat)
        some = {1, 1e30f, 1e37f, FLT_MAX / 2, FLT_MAX, Limits::infinity()};
    for (const RoiSize& roi : {RoiSize{40, 20}, RoiSize{21, 3}})
        for (const Metric a : some)
            for (const Metric b : some)
                for (const Metric c : some) {
                    TypeParam::check(withOneZero(roi, 20, 2), {a, b, c});
                    if (this->HasFatalFailure() || (TypeParam::kSize == 3 && c != some[0]))
                        break;
                }
}

// Where neither diagonals nor knights help, and where they just do.
TYPED_TEST(DistanceTransform, LeavesOutStepsThatDoNotHelp) {
    using Metrics = typename TypeParam::Metrics;
    const Source source = zerosAmong({60, 33}, {}, 500, 3);
    for (const Metrics& metrics : {Metrics{2, 3, 5}, {2, 3, 4}, {2, 4, 6}, {2, 5, 5}, {2, 5, 6}, {2, 5, 7}, {3, 7, 9}})
        TypeParam::check(source, metrics);
    if constexpr (TypeParam::kIsFloat)
        for (int ulps = -4; ulps <= 2; ++ulps) {
            Metrics metrics{0.7f, 1.1f, 1.8f};
            for (int i = 0; i < std::abs(ulps); ++i)
                metrics[2] = std::nextafter(metrics[2], ulps < 0 ? 0.f : 9.f);
            TypeParam::check(source, metrics);
            TypeParam::check(source, {0.7f, std::nextafter(1.4f, ulps < 0 ? 0.f : 9.f), metrics[2]});
        }
}

TYPED_TEST(DistanceTransform, TakesFloatsOfAnySizeInAnyMode) {
    if constexpr (TypeParam::kIsFloat) {
        const Source source = zerosAmong({90, 40}, {}, 300, 5);
        for (const float scale : {FLT_TRUE_MIN, FLT_MIN / 8, 1e-20f, 0.3f, 1e20f, 1e36f}) {
            const typename TypeParam::Metrics metrics{3 * scale, 4 * scale, 5 * scale};
            TypeParam::check(source, metrics);
            const auto expected = TypeParam::call(source, metrics);
            forCallerModes([&] { ASSERT_TRUE(samePixels(expected, TypeParam::call(source, metrics))); });
        }
    }
}

TEST(DistanceTransformMask, GivesTheUsualWeights) {
    const float floats[2][3][3] = {{{1, 1, -7}, {1, 2, -7}, {0.955f, 1.3693f, -7}},
                                   {{1, 1, 2}, {1, 2, 3}, {1, 1.4f, 2.1969f}}};
    const int32_t integers[2][3][3] = {{{1, 1, -7}, {1, 2, -7}, {2, 3, -7}}, {{1, 1, 2}, {1, 2, 3}, {5, 7, 11}}};
    for (const int32_t size : {3, 5})
        for (const int32_t norm : {NormInf, NormL1, NormL2}) {
            float f[3] = {-7, -7, -7}, ofCode[3] = {-7, -7, -7};
            int32_t s[3] = {-7, -7, -7};
            EXPECT_EQ(StatusOk, vekiGetDistanceTransformMask_32f(size, norm, f));
            EXPECT_EQ(StatusOk, vekiGetDistanceTransformMask(10 * size + norm, ofCode));
            EXPECT_EQ(StatusOk, vekiGetDistanceTransformMask_32s(size, norm, s));
            for (int i = 0; i < 3; ++i) {
                EXPECT_EQ(floats[size / 4][norm][i], f[i]);
                EXPECT_EQ(f[i], ofCode[i]);
                EXPECT_EQ(integers[size / 4][norm][i], s[i]);
            }
        }
    uint32_t bits[3] = {};
    float l2[3];
    EXPECT_EQ(StatusOk, vekiGetDistanceTransformMask(52, l2));
    std::memcpy(bits, l2, sizeof bits);
    EXPECT_EQ(0x3FB33333u, bits[1]);
    EXPECT_EQ(0x400C9A02u, bits[2]);
    EXPECT_EQ(StatusOk, vekiGetDistanceTransformMask(32, l2));
    std::memcpy(bits, l2, sizeof bits);
    EXPECT_EQ(0x3F747AE1u, bits[0]);
    EXPECT_EQ(0x3FAF4539u, bits[1]);
}

const exports::FamilyFaults kMaskFaults("vekiGetDistanceTransformMask",
                                        {{"maskCode", StatusBadArgument, {33, 39, 59, -1, -31, 3, INT_MAX, INT_MIN}},
                                         {"metrics", StatusNullPointer, {exports::kNull}},
                                         {"maskSize", StatusSizeError, {0, 1, 2, 4, 6, 33, 55, -3, INT_MAX, INT_MIN}},
                                         {"norm", StatusBadArgument, {-1, 3, 4, INT_MAX, INT_MIN}},
                                         {"maskCode", StatusSizeError, {40, 0, 1, 20, 61, 330, 502, -30}}});

constexpr int32_t kZeroSide[] = {0, 1, 1}, kZeroDiagonal[] = {1, 0, 1}, kNegative[] = {1, INT_MIN, 1},
                  kZeroKnight[] = {1, 1, 0}, kNegativeKnight[] = {1, 1, -1};
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kZeroSideFloat[] = {0, 1, 1}, kNegativeFloat[] = {1, -FLT_TRUE_MIN, 1}, kNaNFloat[] = {kNaN, 1, 1},
                kNaNDiagonalFloat[] = {1, kNaN, 1}, kZeroKnightFloat[] = {1, 1, -0.0f},
                kNaNKnightFloat[] = {1, 1, kNaN};
const exports::FamilyFaults kSmallFaults("vekiDistanceTransform_3x3",
                                         {{"metrics", StatusMetricError, {kZeroSide, kZeroDiagonal, kNegative}}});
const exports::FamilyFaults kLargeFaults(
    "vekiDistanceTransform_5x5",
    {{"metrics", StatusMetricError, {kZeroSide, kZeroDiagonal, kNegative, kZeroKnight, kNegativeKnight}}});
const exports::FamilyFaults kSmallFloatFaults(
    "vekiDistanceTransform_3x3_8u32f",
    {{"metrics", StatusMetricError, {kZeroSideFloat, kNegativeFloat, kNaNFloat, kNaNDiagonalFloat}}});
const exports::FamilyFaults kLargeFloatFaults("vekiDistanceTransform_5x5_8u32f",
                                              {{"metrics",
                                                StatusMetricError,
                                                {kZeroSideFloat, kNegativeFloat, kNaNFloat, kNaNDiagonalFloat,
                                                 kZeroKnightFloat, kNaNKnightFloat}}});

}  // namespace
