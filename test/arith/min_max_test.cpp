// Extrema against their definition: a walk in row-major order.
#include <gtest/gtest.h>

#include "channel_form.h"

namespace {

struct Extrema {
    float least = 0, greatest = 0;
    ImagePoint leastAt{-1, -1}, greatestAt{-1, -1};
};

template <auto Export>
struct Member : ChannelForm<Export, 1> {
    using Form = ChannelForm<Export, 1>;
    using T = typename Form::Pixel;
    using Operands = typename Form::Operands;
    static constexpr bool kIsFloat = std::is_floating_point_v<T>;

    static Extrema expected(const Operands& operands) {
        Extrema extrema;
        operands.forEach([&](int x, int y) {
            const auto value = float(operands.at(0, x, y));
            if (std::isnan(value))
                return;
            if (extrema.leastAt.x < 0 || value < extrema.least) {
                extrema.least = value;
                extrema.leastAt = {x, y};
            }
            if (extrema.greatestAt.x < 0 || value > extrema.greatest) {
                extrema.greatest = value;
                extrema.greatestAt = {x, y};
            }
        });
        return extrema;
    }

    static void check(const Operands& operands) {
        Extrema result{77, 77, {77, 77}, {77, 77}};
        ASSERT_EQ(StatusOk, Form::call(operands, &result.least, &result.greatest, &result.leastAt, &result.greatestAt));
        const Extrema right = expected(operands);
        ASSERT_PRED2(sameElement<float>, right.least, result.least);
        ASSERT_PRED2(sameElement<float>, right.greatest, result.greatest);
        ASSERT_EQ(std::pair(right.leastAt.x, right.leastAt.y), std::pair(result.leastAt.x, result.leastAt.y));
        ASSERT_EQ(std::pair(right.greatestAt.x, right.greatestAt.y),
                  std::pair(result.greatestAt.x, result.greatestAt.y));
    }
};

/** Many equal values, so that it matters which comes first. */
template <typename T>
T ties(Random& random) {
    return random.below(4) == 0 ? random.value<T>() : T(random.below(3));
}

template <typename MemberType>
class MinMaxIndx : public ::testing::Test {};
using Members =
    ::testing::Types<Member<&vekiMinMaxIndx_8u_C1R>, Member<&vekiMinMaxIndx_8s_C1R>, Member<&vekiMinMaxIndx_16u_C1R>,
                     Member<&vekiMinMaxIndx_32f_C1R>, Member<&vekiMinMaxIndx_8u_C1MR>, Member<&vekiMinMaxIndx_8s_C1MR>,
                     Member<&vekiMinMaxIndx_16u_C1MR>, Member<&vekiMinMaxIndx_32f_C1MR>,
                     Member<&vekiMinMaxIndx_8u_C3CR>, Member<&vekiMinMaxIndx_8s_C3CR>, Member<&vekiMinMaxIndx_16u_C3CR>,
                     Member<&vekiMinMaxIndx_32f_C3CR>, Member<&vekiMinMaxIndx_8u_C3CMR>,
                     Member<&vekiMinMaxIndx_8s_C3CMR>, Member<&vekiMinMaxIndx_16u_C3CMR>,
                     Member<&vekiMinMaxIndx_32f_C3CMR>>;
TYPED_TEST_SUITE(MinMaxIndx, Members);

TYPED_TEST(MinMaxIndx, MatchesItsDefinition) {
    using T = typename TypeParam::T;
    TypeParam::Operands::forSmallRegions(ties<T>, [](const auto& operands) { TypeParam::check(operands); });
    TypeParam::Operands::forSmallRegions([](Random& random) { return T(50 + random.below(20)); },
                                         [](const auto& operands) { TypeParam::check(operands); });
}

// The first of equal extremes is in another stripe than the last; rows are longer than a section, too.
TYPED_TEST(MinMaxIndx, FindsTheFirstOfEqualOnesInParallel) {
    using T = typename TypeParam::T;
    forThreadCounts([](int) {
        for (const RoiSize roi : {RoiSize{512, 35}, RoiSize{5003, 7}, RoiSize{7, 2503}})
            for (const Layout& layout : kLargeLayouts) {
                TypeParam::check({roi, layout, ties<T>});
                typename TypeParam::Operands operands({roi, T(50)});
                Random random(uint32_t(roi.width));
                for (int k = 0; k < 20; ++k) {
                    const auto x = int(random.below(uint32_t(roi.width))), y = int(random.below(uint32_t(roi.height)));
                    operands.at(0, x, y) = T(50 + 7 * (k % 3 - 1));
                    operands.mask.at(x, y) = uint8_t(k % 4);
                    TypeParam::check(operands);
                }
            }
    });
}

// Stripes without any pixel that takes part, and a first one that is far down its row; more threads than rows.
TYPED_TEST(MinMaxIndx, FindsPixelsThatFewStripesHaveInParallel) {
    using T = typename TypeParam::T;
    if constexpr (TypeParam::kHasMask)
        for (const int threads : {1, 3, 40}) {
            const ThreadCount count(threads);
            for (const RoiSize roi : {RoiSize{512, 83}, RoiSize{5003, 7}})
                for (const int row : {0, roi.height / 2, roi.height - 1}) {
                    typename TypeParam::Operands operands({roi, T(50)});
                    operands.mask = TestImage<uint8_t>::filled(
                        roi, {}, [=](int x, int y) { return uint8_t(y == row && x > roi.width - 9 ? 2 : 0); });
                    TypeParam::check(operands);
                }
        }
}

// Every pixel in turn is the only extreme, or the only one that takes part.
TYPED_TEST(MinMaxIndx, FindsEveryPlace) {
    using T = typename TypeParam::T;
    const RoiSize roi{67, 2};
    typename TypeParam::Operands operands(roi, T(50));
    auto none = operands;
    none.mask = TestImage<uint8_t>::constant(roi, 0);
    TypeParam::check(none);
    for (int y = 0; y < roi.height; ++y)
        for (int x = 0; x < roi.width; ++x) {
            T& pixel = operands.at(0, x, y);
            for (const T value : {T(49), T(51), std::numeric_limits<T>::max(), std::numeric_limits<T>::lowest()}) {
                pixel = value;
                TypeParam::check(operands);
                none.mask.at(x, y) = 2;
                TypeParam::check(none);
                none.mask.at(x, y) = 0;
            }
            pixel = 50;
        }
}

// NaN takes no part; zeros of either sign are equal.
TYPED_TEST(MinMaxIndx, TakesAnyFloat) {
    using T = typename TypeParam::T;
    if constexpr (TypeParam::kIsFloat) {
        constexpr float kNaN = std::numeric_limits<T>::quiet_NaN(), kInfinity = std::numeric_limits<T>::infinity();
        const RoiSize roi{40, 3};
        TypeParam::check({roi, kNaN});
        TypeParam::check({{37, 1}, kNaN});
        TypeParam::check({roi, kInfinity});
        TypeParam::check({roi, {}, [](Random& random) { return random.below(9) != 0 ? kNaN : random.value<T>(); }});
        TypeParam::check({roi, {}, [](Random& random) { return random.below(2) == 0 ? -0.f : 0.f; }});
        TypeParam::check({roi, {}, [](Random& random) { return random.below(2) == 0 ? -kInfinity : kNaN; }});
    }
}

}  // namespace
