// Means and standard deviations against their definition: integers exactly, floats in the documented order.
#include <gtest/gtest.h>

#include "channel_form.h"
#include "sixteen_sums.h"

namespace {

struct Statistics {
    double mean = 0, deviation = 0;
};

template <auto Export>
struct Member : ChannelForm<Export, 1> {
    using Form = ChannelForm<Export, 1>;
    using T = typename Form::Pixel;
    using Operands = typename Form::Operands;
    static constexpr bool kIsFloat = std::is_floating_point_v<T>;
    static constexpr bool kHasDeviation = Form::kResultCount == 2;

    static Statistics expected(const Operands& operands) {
        std::conditional_t<kIsFloat, SixteenSums<double>, int64_t> sum{}, squares{};
        int64_t count = 0;
        operands.forEach([&](int x, int y) {
            ++count;
            if constexpr (kIsFloat) {
                const double value = operands.at(0, x, y);
                sum.add(x, value);
                squares.add(x, value * value);
            } else {
                const int64_t value = operands.at(0, x, y);
                sum += value;
                squares += value * value;
            }
        });
        if (count == 0)
            return {};
        const auto total = [](auto& of) {
            if constexpr (kIsFloat)
                return of.total();
            else
                return double(of);
        };
        const double mean = total(sum) / double(count);
        return {mean, std::sqrt(std::fabs(total(squares) / double(count) - mean * mean))};
    }

    static Status call(const Operands& operands, double* mean, double* deviation) {
        if constexpr (kHasDeviation)
            return Form::call(operands, mean, deviation);
        else
            return Form::call(operands, mean);
    }

    static void check(const Operands& operands, double bound = 0) {
        Statistics result{-1, -1};
        ASSERT_EQ(StatusOk, call(operands, &result.mean, &result.deviation));
        const Statistics right = expected(operands);
        const auto near = [=](double a, double b) {
            return sameElement(a, b) || std::fabs(a - b) <= bound * right.deviation;
        };
        ASSERT_TRUE(near(right.mean, result.mean)) << "expected mean " << right.mean << ", got " << result.mean;
        ASSERT_TRUE(!kHasDeviation || near(right.deviation, result.deviation))
            << "expected deviation " << right.deviation << ", got " << result.deviation;
    }
};

template <typename MemberType>
class MeanStdDev : public ::testing::Test {};
using Members = ::testing::Types<
    Member<&vekiMean_8u_C1MR>, Member<&vekiMean_8s_C1MR>, Member<&vekiMean_16u_C1MR>, Member<&vekiMean_32f_C1MR>,
    Member<&vekiMean_8u_C3CMR>, Member<&vekiMean_8s_C3CMR>, Member<&vekiMean_16u_C3CMR>, Member<&vekiMean_32f_C3CMR>,
    Member<&vekiMean_StdDev_8u_C1R>, Member<&vekiMean_StdDev_8s_C1R>, Member<&vekiMean_StdDev_16u_C1R>,
    Member<&vekiMean_StdDev_32f_C1R>, Member<&vekiMean_StdDev_8u_C1MR>, Member<&vekiMean_StdDev_8s_C1MR>,
    Member<&vekiMean_StdDev_16u_C1MR>, Member<&vekiMean_StdDev_32f_C1MR>, Member<&vekiMean_StdDev_8u_C3CR>,
    Member<&vekiMean_StdDev_8s_C3CR>, Member<&vekiMean_StdDev_16u_C3CR>, Member<&vekiMean_StdDev_32f_C3CR>,
    Member<&vekiMean_StdDev_8u_C3CMR>, Member<&vekiMean_StdDev_8s_C3CMR>, Member<&vekiMean_StdDev_16u_C3CMR>,
    Member<&vekiMean_StdDev_32f_C3CMR>>;
TYPED_TEST_SUITE(MeanStdDev, Members);

TYPED_TEST(MeanStdDev, MatchesItsDefinition) {
    TypeParam::Operands::forSmallRegions(ordinary<typename TypeParam::T>,
                                         [](const auto& operands) { TypeParam::check(operands); });
}

// Threads add sums of their own, which changes no sum of integers.
TYPED_TEST(MeanStdDev, MatchesItsDefinitionInParallel) {
    forLargeImages(kPixelsPerThread<131072>, [](RoiSize roi, const Layouts& layouts) {
        TypeParam::check({roi, layouts, ordinary<typename TypeParam::T>}, TypeParam::kIsFloat ? 1e-10 : 0);
    });
}

TYPED_TEST(MeanStdDev, OfNothingIsZero) {
    if constexpr (TypeParam::kHasMask) {
        typename TypeParam::Operands operands({37, 3}, {}, ordinary<typename TypeParam::T>);
        operands.mask = TestImage<uint8_t>::constant({37, 3}, 0);
        double mean = 77, deviation = 77;
        ASSERT_EQ(StatusOk, TypeParam::call(operands, &mean, &deviation));
        ASSERT_EQ(0, mean);
        ASSERT_TRUE(!TypeParam::kHasDeviation || deviation == 0);
    }
}

TYPED_TEST(MeanStdDev, GivesOnlyWhatIsAskedFor) {
    if constexpr (TypeParam::kHasDeviation) {
        const typename TypeParam::Operands operands({37, 3}, {}, ordinary<typename TypeParam::T>);
        const Statistics right = TypeParam::expected(operands);
        Statistics result;
        ASSERT_EQ(StatusOk, TypeParam::call(operands, &result.mean, nullptr));
        ASSERT_EQ(StatusOk, TypeParam::call(operands, nullptr, &result.deviation));
        ASSERT_EQ(StatusOk, TypeParam::call(operands, nullptr, nullptr));
        ASSERT_EQ(right.mean, result.mean);
        ASSERT_EQ(right.deviation, result.deviation);
    }
}

// Constant images, in rows so long that sums of 32 bits overflow: the mean is the constant, the deviation exactly 0.
TYPED_TEST(MeanStdDev, OfAConstantImageIsExact) {
    using T = typename TypeParam::T;
    using Limits = std::numeric_limits<T>;
    std::vector<T> values{T(1), T(77), Limits::max(), Limits::min()};
    if (TypeParam::kIsFloat)
        values = {T(-1.5), T(4096)};
    for (const T value : values) {
        double mean = 77, deviation = 77;
        ASSERT_EQ(StatusOk, TypeParam::call({{70003, 2}, value}, &mean, &deviation));
        ASSERT_EQ(double(value), mean);
        ASSERT_EQ(TypeParam::kHasDeviation ? 0 : 77, deviation);
    }
}

// Where rounding makes the variance negative, its absolute value counts.
TEST(MeanStdDev32f, TakesTheAbsoluteVariance) {
    using Plain = Member<&vekiMean_StdDev_32f_C1R>;
    const Plain::Operands operands({37, 1}, 0.015f);
    Statistics result;
    ASSERT_EQ(StatusOk, Plain::call(operands, &result.mean, &result.deviation));
    ASSERT_LT(0, result.deviation);
    ASSERT_GT(1e-9, result.deviation);
    Plain::check(operands);
}

TYPED_TEST(MeanStdDev, TakesAnyFloat) {
    using T = typename TypeParam::T;
    if constexpr (TypeParam::kIsFloat) {
        TypeParam::check({{301, 3}, {}, inexact});
        TypeParam::check({{301, 3}, {}, [](Random& random) { return random.value<T>(); }});
        for (const float special : {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity()})
            for (const int byte : {0, 1, 2, 128, 255}) {
                typename TypeParam::Operands operands({37, 2}, {}, ordinary<T>);
                operands.at(0, 17, 1) = special;
                operands.mask.at(17, 1) = uint8_t(byte);
                TypeParam::check(operands);
                double mean = 0, deviation = 0;
                ASSERT_EQ(StatusOk, TypeParam::call(operands, &mean, &deviation));
                ASSERT_EQ(operands.takesPart(17, 1), !std::isfinite(mean));
                ASSERT_EQ(operands.takesPart(17, 1) && TypeParam::kHasDeviation, std::isnan(deviation));
            }
    }
}

}  // namespace
