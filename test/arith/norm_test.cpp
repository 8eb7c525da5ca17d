// Every norm against its definition: sums of integers exactly, sums of floats in the documented order.
#include <gtest/gtest.h>

#include "channel_form.h"
#include "sixteen_sums.h"
#include "vekcore.h"

namespace {

enum NormName { kInf, kL1, kL2 };
enum Operation { kNorm, kNormDiff, kNormRel };

template <auto Export, Operation kOperationName, NormName kName>
struct Member : ChannelForm<Export, kOperationName == kNorm ? 1 : 2> {
    using Form = ChannelForm<Export, kOperationName == kNorm ? 1 : 2>;
    using T = typename Form::Pixel;
    using Operands = typename Form::Operands;
    static constexpr bool kIsFloat = std::is_floating_point_v<T>;
    static constexpr NormName kNormName = kName;
    static constexpr Operation kOperation = kOperationName;

    /** The norm of value(x, y) over the pixels that take part. */
    template <typename Value>
    static double norm(const Operands& operands, Value value) {
        if constexpr (kName == kInf) {
            double most = 0;
            operands.forEach([&](int x, int y) {
                const double magnitude = std::fabs(double(value(x, y)));
                if (magnitude > most)
                    most = magnitude;
            });
            return most;
        } else if constexpr (kIsFloat) {
            double total = 0;
            for (int y = 0; y < operands.roi.height; ++y) {
                SixteenSums<float> sum;
                for (int x = 0; x < operands.roi.width; ++x)
                    if (operands.takesPart(x, y)) {
                        const float magnitude = std::fabs(value(x, y));
                        sum.add(x, kName == kL2 ? magnitude * magnitude : magnitude);
                    }
                total += double(sum.total());
            }
            return kName == kL2 ? std::sqrt(total) : total;
        } else {
            uint64_t total = 0;
            operands.forEach([&](int x, int y) {
                const uint64_t magnitude = uint64_t(std::abs(int64_t(value(x, y))));
                total += kName == kL2 ? magnitude * magnitude : magnitude;
            });
            return kName == kL2 ? std::sqrt(double(total)) : double(total);
        }
    }

    using Wide = std::conditional_t<kIsFloat, float, int32_t>;
    static double normOf(const Operands& operands, size_t source) {
        return norm(operands, [&](int x, int y) { return Wide(operands.pixel(source, x, y)); });
    }
    static double expected(const Operands& operands) {
        if constexpr (kOperation == kNorm)
            return normOf(operands, 0);
        const double difference = norm(operands, [&](int x, int y) {
            return Wide(Wide(operands.pixel(0, x, y)) - Wide(operands.pixel(operands.sources.size() - 1, x, y)));
        });
        return kOperation == kNormDiff ? difference : difference / normOf(operands, operands.sources.size() - 1);
    }
    static Status expectedStatus(const Operands& operands) {
        return kOperation == kNormRel && normOf(operands, 1) == 0 ? StatusDivideByZeroWarning : StatusOk;
    }

    /** `bound` is how far apart results may be, relatively. */
    static void check(const Operands& operands, double bound = 0) {
        double result = -1;
        ASSERT_EQ(expectedStatus(operands), operands.call(&result));
        const double value = expected(operands);
        ASSERT_TRUE(sameElement(value, result) || std::fabs(result - value) <= bound * value)
            << "expected " << value << ", got " << result;
    }
};

template <typename MemberType>
class Norms : public ::testing::Test {};

using Members = ::testing::Types<
    Member<&vekiNorm_Inf_8u_C1MR, kNorm, kInf>, Member<&vekiNorm_Inf_8s_C1MR, kNorm, kInf>,
    Member<&vekiNorm_Inf_16u_C1MR, kNorm, kInf>, Member<&vekiNorm_Inf_32f_C1MR, kNorm, kInf>,
    Member<&vekiNorm_Inf_8u_C3CMR, kNorm, kInf>, Member<&vekiNorm_Inf_8s_C3CMR, kNorm, kInf>,
    Member<&vekiNorm_Inf_16u_C3CMR, kNorm, kInf>, Member<&vekiNorm_Inf_32f_C3CMR, kNorm, kInf>,
    Member<&vekiNorm_L1_8u_C1MR, kNorm, kL1>, Member<&vekiNorm_L1_8s_C1MR, kNorm, kL1>,
    Member<&vekiNorm_L1_16u_C1MR, kNorm, kL1>, Member<&vekiNorm_L1_32f_C1MR, kNorm, kL1>,
    Member<&vekiNorm_L1_8u_C3CMR, kNorm, kL1>, Member<&vekiNorm_L1_8s_C3CMR, kNorm, kL1>,
    Member<&vekiNorm_L1_16u_C3CMR, kNorm, kL1>, Member<&vekiNorm_L1_32f_C3CMR, kNorm, kL1>,
    Member<&vekiNorm_L2_8u_C1MR, kNorm, kL2>, Member<&vekiNorm_L2_8s_C1MR, kNorm, kL2>,
    Member<&vekiNorm_L2_16u_C1MR, kNorm, kL2>, Member<&vekiNorm_L2_32f_C1MR, kNorm, kL2>,
    Member<&vekiNorm_L2_8u_C3CMR, kNorm, kL2>, Member<&vekiNorm_L2_8s_C3CMR, kNorm, kL2>,
    Member<&vekiNorm_L2_16u_C3CMR, kNorm, kL2>, Member<&vekiNorm_L2_32f_C3CMR, kNorm, kL2>,
    Member<&vekiNormDiff_Inf_8u_C1MR, kNormDiff, kInf>, Member<&vekiNormDiff_Inf_8s_C1MR, kNormDiff, kInf>,
    Member<&vekiNormDiff_Inf_16u_C1MR, kNormDiff, kInf>, Member<&vekiNormDiff_Inf_32f_C1MR, kNormDiff, kInf>,
    Member<&vekiNormDiff_Inf_8u_C3CMR, kNormDiff, kInf>, Member<&vekiNormDiff_Inf_8s_C3CMR, kNormDiff, kInf>,
    Member<&vekiNormDiff_Inf_16u_C3CMR, kNormDiff, kInf>, Member<&vekiNormDiff_Inf_32f_C3CMR, kNormDiff, kInf>,
    Member<&vekiNormDiff_L1_8u_C1MR, kNormDiff, kL1>, Member<&vekiNormDiff_L1_8s_C1MR, kNormDiff, kL1>,
    Member<&vekiNormDiff_L1_16u_C1MR, kNormDiff, kL1>, Member<&vekiNormDiff_L1_32f_C1MR, kNormDiff, kL1>,
    Member<&vekiNormDiff_L1_8u_C3CMR, kNormDiff, kL1>, Member<&vekiNormDiff_L1_8s_C3CMR, kNormDiff, kL1>,
    Member<&vekiNormDiff_L1_16u_C3CMR, kNormDiff, kL1>, Member<&vekiNormDiff_L1_32f_C3CMR, kNormDiff, kL1>,
    Member<&vekiNormDiff_L2_8u_C1MR, kNormDiff, kL2>, Member<&vekiNormDiff_L2_8s_C1MR, kNormDiff, kL2>,
    Member<&vekiNormDiff_L2_16u_C1MR, kNormDiff, kL2>, Member<&vekiNormDiff_L2_32f_C1MR, kNormDiff, kL2>,
    Member<&vekiNormDiff_L2_8u_C3CMR, kNormDiff, kL2>, Member<&vekiNormDiff_L2_8s_C3CMR, kNormDiff, kL2>,
    Member<&vekiNormDiff_L2_16u_C3CMR, kNormDiff, kL2>, Member<&vekiNormDiff_L2_32f_C3CMR, kNormDiff, kL2>,
    Member<&vekiNormRel_Inf_8u_C1MR, kNormRel, kInf>, Member<&vekiNormRel_Inf_8s_C1MR, kNormRel, kInf>,
    Member<&vekiNormRel_Inf_16u_C1MR, kNormRel, kInf>, Member<&vekiNormRel_Inf_32f_C1MR, kNormRel, kInf>,
    Member<&vekiNormRel_Inf_8u_C3CMR, kNormRel, kInf>, Member<&vekiNormRel_Inf_8s_C3CMR, kNormRel, kInf>,
    Member<&vekiNormRel_Inf_16u_C3CMR, kNormRel, kInf>, Member<&vekiNormRel_Inf_32f_C3CMR, kNormRel, kInf>,
    Member<&vekiNormRel_L1_8u_C1MR, kNormRel, kL1>, Member<&vekiNormRel_L1_8s_C1MR, kNormRel, kL1>,
    Member<&vekiNormRel_L1_16u_C1MR, kNormRel, kL1>, Member<&vekiNormRel_L1_32f_C1MR, kNormRel, kL1>,
    Member<&vekiNormRel_L1_8u_C3CMR, kNormRel, kL1>, Member<&vekiNormRel_L1_8s_C3CMR, kNormRel, kL1>,
    Member<&vekiNormRel_L1_16u_C3CMR, kNormRel, kL1>, Member<&vekiNormRel_L1_32f_C3CMR, kNormRel, kL1>,
    Member<&vekiNormRel_L2_8u_C1MR, kNormRel, kL2>, Member<&vekiNormRel_L2_8s_C1MR, kNormRel, kL2>,
    Member<&vekiNormRel_L2_16u_C1MR, kNormRel, kL2>, Member<&vekiNormRel_L2_32f_C1MR, kNormRel, kL2>,
    Member<&vekiNormRel_L2_8u_C3CMR, kNormRel, kL2>, Member<&vekiNormRel_L2_8s_C3CMR, kNormRel, kL2>,
    Member<&vekiNormRel_L2_16u_C3CMR, kNormRel, kL2>, Member<&vekiNormRel_L2_32f_C3CMR, kNormRel, kL2>>;
TYPED_TEST_SUITE(Norms, Members);

TYPED_TEST(Norms, MatchTheirDefinition) {
    TypeParam::forSmallRegions(ordinary<typename TypeParam::T>,
                               [](const auto& operands) { TypeParam::check(operands); });
}

// From the thresholds on the rows of floats are added stripe by stripe, in double.
TYPED_TEST(Norms, MatchTheirDefinitionInParallel) {
    const int64_t threads = ownGetNumThreads();
    for (const int64_t pixels : {32768 * threads, 131072 * threads})
        TypeParam::check(
            {{1024, int32_t(pixels / 1024)}, Layout{Layout::kAfterGuard, 1, 3}, ordinary<typename TypeParam::T>},
            TypeParam::kIsFloat ? 1e-14 : 0);
    TypeParam::check({{1031, int32_t(131072 * threads / 1024)}, {}, ordinary<typename TypeParam::T>},
                     TypeParam::kIsFloat ? 1e-14 : 0);
}

// One pixel is larger than all others, in the first, a middle or the last stripe.
TYPED_TEST(Norms, FindTheMaximumOfEveryStripe) {
    if constexpr (TypeParam::kNormName == kInf) {
        constexpr bool kIsPlain = TypeParam::kOperation == kNorm;
        constexpr int kRows = kIsPlain && TypeParam::kChannels == 1 && !TypeParam::kIsFloat ? 512 : 128;
        const RoiSize roi{1024, kRows * ownGetNumThreads()};
        typename TypeParam::Operands operands(roi, 1);
        for (const int y : {0, roi.height / 2, roi.height - 1}) {
            auto& pixel = operands.sources[0].at(500 * TypeParam::kChannels + operands.channel - 1, y);
            pixel = 2;
            double result = -1;
            ASSERT_EQ(StatusOk, operands.call(&result));
            ASSERT_EQ(kIsPlain ? 2 : 1, result) << "row " << y;
            pixel = 1;
        }
    }
}

template <typename NormMember>
void expectNoNeedOfAlignment() {
    const typename NormMember::Operands operands({77, 3}, {}, ordinary<typename NormMember::T>);
    double result = -1;
    ASSERT_EQ(StatusOk, operands.callUnaligned(&result));
    ASSERT_EQ(NormMember::expected(operands), result);
}

// All norms read their images in the same way.
TEST(NormForms, NeedNoAlignment) {
    expectNoNeedOfAlignment<Member<&vekiNorm_L1_16u_C1MR, kNorm, kL1>>();
    expectNoNeedOfAlignment<Member<&vekiNormDiff_L2_32f_C1MR, kNormDiff, kL2>>();
    expectNoNeedOfAlignment<Member<&vekiNormRel_Inf_16u_C3CMR, kNormRel, kInf>>();
    expectNoNeedOfAlignment<Member<&vekiNormRel_L1_32f_C3CMR, kNormRel, kL1>>();
}

TYPED_TEST(Norms, ReportTheFirstFault) {
    double result = 77;
    TypeParam::template checkStatuses<true>([&] { return result == 77; }, &result);
}

// The last image is 0 where the norms are 0, so that the relative ones divide by it.
TYPED_TEST(Norms, OfNothingAreZero) {
    using Operands = typename TypeParam::Operands;
    Operands operands({37, 3}, {}, ordinary<typename TypeParam::T>);
    operands.mask = TestImage<uint8_t>::filled({37, 3}, {}, [](int, int) { return uint8_t(0); });
    double result = 77;
    const bool isRelative = TypeParam::kOperation == kNormRel;
    ASSERT_EQ(isRelative ? StatusDivideByZeroWarning : StatusOk, operands.call(&result));
    ASSERT_EQ(isRelative, std::isnan(result));
    ASSERT_TRUE(isRelative || result == 0);

    Operands zero({37, 3}, 0);
    ASSERT_EQ(isRelative ? StatusDivideByZeroWarning : StatusOk, zero.call(&result));
    ASSERT_EQ(isRelative, std::isnan(result));
    zero.sources[0].at(TypeParam::kChannels * 36 + zero.channel - 1, 2) = 1;
    ASSERT_EQ(isRelative ? StatusDivideByZeroWarning : StatusOk, zero.call(&result));
    ASSERT_EQ(isRelative ? std::numeric_limits<double>::infinity() : 1, result);
}

// Rows so long, of values so large, that sums of 32 bits overflow.
TYPED_TEST(Norms, DoNotOverflow) {
    using Limits = std::numeric_limits<typename TypeParam::T>;
    if constexpr (!TypeParam::kIsFloat)
        for (const auto value : {Limits::max(), Limits::min()}) {
            typename TypeParam::Operands operands({140001, 2}, value);
            if constexpr (TypeParam::kOperation != kNorm) {
                const auto other = value == Limits::max() ? Limits::min() : Limits::max();
                operands.sources[1] = TestImage<typename TypeParam::T>::filled(
                    operands.roi, {}, [=](int, int) { return other; }, TypeParam::kChannels);
            }
            TypeParam::check(operands);
        }
}

// Any float: NaN, infinities, and values whose squares overflow.
TYPED_TEST(Norms, TakeAnyFloat) {
    using T = typename TypeParam::T;
    if constexpr (TypeParam::kIsFloat) {
        for (const float special : {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity(),
                                    -std::numeric_limits<T>::infinity(), std::numeric_limits<T>::max(), T(-0.0)})
            for (const size_t source : {size_t(0), TypeParam::Form::kSourceCount - 1})
                for (const int x : {0, 17, 36}) {
                    SCOPED_TRACE(::testing::Message() << special << " at " << x << " of source " << source);
                    typename TypeParam::Operands operands({37, 2}, {}, ordinary<T>);
                    operands.sources[source].at(x * TypeParam::kChannels + operands.channel - 1, 1) = special;
                    for (const int byte : {0, 1, 2, 128, 255}) {
                        operands.mask.at(x, 1) = uint8_t(byte);
                        TypeParam::check(operands);
                    }
                }
        TypeParam::check({{301, 3}, {}, inexact});
        typename TypeParam::Operands wild({301, 3}, {}, [](Random& random) { return random.value<T>(); });
        TypeParam::check(wild);
    }
}

TEST(NormL2, OfOnePixelIsItsMagnitude) {
    const int8_t pixel = -3;
    const uint8_t mask = 128;
    double result = 0;
    ASSERT_EQ(StatusOk, vekiNorm_L2_8s_C1MR(&pixel, 1, &mask, 1, {1, 1}, &result));
    ASSERT_EQ(3, result);
}

}  // namespace
