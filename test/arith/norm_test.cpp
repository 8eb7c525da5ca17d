// Every norm against its definition: sums of integers exactly, sums of floats in the documented order.
#include <gtest/gtest.h>

#include "channel_form.h"
#include "sixteen_sums.h"

namespace {

enum class Name { kInf, kL1, kL2 };
enum class Operation { kNorm, kDiff, kRel };

/** The norm of value(x, y) over the pixels that take part. */
template <typename Operands, typename Value>
double normOf(Name name, const Operands& operands, Value value) {
    using T = decltype(value(0, 0));
    if (name == Name::kInf) {
        double most = 0;
        operands.forEach([&](int x, int y) {
            const double magnitude = std::fabs(double(value(x, y)));
            if (magnitude > most)
                most = magnitude;
        });
        return most;
    }
    const bool isSquare = name == Name::kL2;
    double total = 0;
    if constexpr (std::is_floating_point_v<T>) {
        for (int y = 0; y < operands.roi.height; ++y) {
            SixteenSums<float> sum;
            for (int x = 0; x < operands.roi.width; ++x)
                if (operands.takesPart(x, y)) {
                    const float magnitude = std::fabs(value(x, y));
                    sum.add(x, isSquare ? magnitude * magnitude : magnitude);
                }
            total += double(sum.total());
        }
    } else {
        uint64_t sum = 0;
        operands.forEach([&](int x, int y) {
            const auto magnitude = uint64_t(std::abs(int64_t(value(x, y))));
            sum += isSquare ? magnitude * magnitude : magnitude;
        });
        total = double(sum);
    }
    return isSquare ? std::sqrt(total) : total;
}

/** A norm, and a call of its export with operands of its form. */
template <typename Operands>
struct Norm {
    Operation operation;
    Name name;
    Status (*call)(const Operands& operands, double* result);

    bool isRelative() const { return operation == Operation::kRel; }

    static double ofSource(Name name, const Operands& operands, size_t source) {
        return normOf(name, operands, [&](int x, int y) { return +operands.at(source, x, y); });
    }
    double expected(const Operands& operands) const {
        if (operation == Operation::kNorm)
            return ofSource(name, operands, 0);
        const double difference =
            normOf(name, operands, [&](int x, int y) { return operands.at(0, x, y) - operands.at(1, x, y); });
        return isRelative() ? difference / ofSource(name, operands, 1) : difference;
    }
    Status expectedStatus(const Operands& operands) const {
        return isRelative() && ofSource(name, operands, 1) == 0 ? StatusDivideByZeroWarning : StatusOk;
    }

    /** `bound` is how far apart results may be, relatively. */
    void check(const Operands& operands, double bound = 0) const {
        SCOPED_TRACE(::testing::Message() << "operation " << int(operation) << ", norm " << int(name));
        double result = -1;
        ASSERT_EQ(expectedStatus(operands), call(operands, &result));
        const double value = expected(operands);
        ASSERT_TRUE(sameElement(value, result) || std::fabs(result - value) <= bound * value)
            << "expected " << value << ", got " << result;
    }
};

/** The number of images of an export that are only read. */
template <typename... Arguments>
constexpr size_t imagesOf(Status (*)(Arguments...)) {
    return ((std::is_pointer_v<Arguments> && std::is_const_v<std::remove_pointer_t<Arguments>> ? 1u : 0u) + ...);
}

/** All norms of a type of pixels with one or three channels: Inf, L1 and L2 of an image, then of a difference, then
 * relative ones. */
template <typename Pixel, int kChannelCount, auto... kExports>
struct Form {
    using T = Pixel;
    using Operands = ChannelOperands<T, kChannelCount, true, 2>;
    static constexpr int kChannels = kChannelCount;
    static constexpr bool kIsFloat = std::is_floating_point_v<T>;

    template <auto Export>
    using ExportForm = ChannelForm<Export, imagesOf(Export) - 1>;

    static std::vector<Norm<Operands>> norms() {
        std::vector<Norm<Operands>> all;
        for (const auto call : {&ExportForm<kExports>::template call<Operands, double*>...})
            all.push_back({Operation(all.size() / 3), Name(all.size() % 3), call});
        return all;
    }

    static void check(const Operands& operands, double bound = 0) {
        for (const auto& norm : norms())
            norm.check(operands, bound);
    }
};

template <typename FormType>
class Norms : public ::testing::Test {};

using Forms =
    ::testing::Types<Form<uint8_t, 1, &vekiNorm_Inf_8u_C1MR, &vekiNorm_L1_8u_C1MR, &vekiNorm_L2_8u_C1MR,
                          &vekiNormDiff_Inf_8u_C1MR, &vekiNormDiff_L1_8u_C1MR, &vekiNormDiff_L2_8u_C1MR,
                          &vekiNormRel_Inf_8u_C1MR, &vekiNormRel_L1_8u_C1MR, &vekiNormRel_L2_8u_C1MR>,
                     Form<int8_t, 1, &vekiNorm_Inf_8s_C1MR, &vekiNorm_L1_8s_C1MR, &vekiNorm_L2_8s_C1MR,
                          &vekiNormDiff_Inf_8s_C1MR, &vekiNormDiff_L1_8s_C1MR, &vekiNormDiff_L2_8s_C1MR,
                          &vekiNormRel_Inf_8s_C1MR, &vekiNormRel_L1_8s_C1MR, &vekiNormRel_L2_8s_C1MR>,
                     Form<uint16_t, 1, &vekiNorm_Inf_16u_C1MR, &vekiNorm_L1_16u_C1MR, &vekiNorm_L2_16u_C1MR,
                          &vekiNormDiff_Inf_16u_C1MR, &vekiNormDiff_L1_16u_C1MR, &vekiNormDiff_L2_16u_C1MR,
                          &vekiNormRel_Inf_16u_C1MR, &vekiNormRel_L1_16u_C1MR, &vekiNormRel_L2_16u_C1MR>,
                     Form<float, 1, &vekiNorm_Inf_32f_C1MR, &vekiNorm_L1_32f_C1MR, &vekiNorm_L2_32f_C1MR,
                          &vekiNormDiff_Inf_32f_C1MR, &vekiNormDiff_L1_32f_C1MR, &vekiNormDiff_L2_32f_C1MR,
                          &vekiNormRel_Inf_32f_C1MR, &vekiNormRel_L1_32f_C1MR, &vekiNormRel_L2_32f_C1MR>,
                     Form<uint8_t, 3, &vekiNorm_Inf_8u_C3CMR, &vekiNorm_L1_8u_C3CMR, &vekiNorm_L2_8u_C3CMR,
                          &vekiNormDiff_Inf_8u_C3CMR, &vekiNormDiff_L1_8u_C3CMR, &vekiNormDiff_L2_8u_C3CMR,
                          &vekiNormRel_Inf_8u_C3CMR, &vekiNormRel_L1_8u_C3CMR, &vekiNormRel_L2_8u_C3CMR>,
                     Form<int8_t, 3, &vekiNorm_Inf_8s_C3CMR, &vekiNorm_L1_8s_C3CMR, &vekiNorm_L2_8s_C3CMR,
                          &vekiNormDiff_Inf_8s_C3CMR, &vekiNormDiff_L1_8s_C3CMR, &vekiNormDiff_L2_8s_C3CMR,
                          &vekiNormRel_Inf_8s_C3CMR, &vekiNormRel_L1_8s_C3CMR, &vekiNormRel_L2_8s_C3CMR>,
                     Form<uint16_t, 3, &vekiNorm_Inf_16u_C3CMR, &vekiNorm_L1_16u_C3CMR, &vekiNorm_L2_16u_C3CMR,
                          &vekiNormDiff_Inf_16u_C3CMR, &vekiNormDiff_L1_16u_C3CMR, &vekiNormDiff_L2_16u_C3CMR,
                          &vekiNormRel_Inf_16u_C3CMR, &vekiNormRel_L1_16u_C3CMR, &vekiNormRel_L2_16u_C3CMR>,
                     Form<float, 3, &vekiNorm_Inf_32f_C3CMR, &vekiNorm_L1_32f_C3CMR, &vekiNorm_L2_32f_C3CMR,
                          &vekiNormDiff_Inf_32f_C3CMR, &vekiNormDiff_L1_32f_C3CMR, &vekiNormDiff_L2_32f_C3CMR,
                          &vekiNormRel_Inf_32f_C3CMR, &vekiNormRel_L1_32f_C3CMR, &vekiNormRel_L2_32f_C3CMR>>;
TYPED_TEST_SUITE(Norms, Forms);

TYPED_TEST(Norms, MatchTheirDefinition) {
    TypeParam::Operands::forSmallRegions(ordinary<typename TypeParam::T>,
                                         [](const auto& operands) { TypeParam::check(operands); });
}

// Threads add the rows of floats stripe by stripe, in double.
TYPED_TEST(Norms, MatchTheirDefinitionInParallel) {
    forLargeImages(kPixelsPerThread<131072>, [](RoiSize roi, const Layouts& layouts) {
        TypeParam::check({roi, layouts, ordinary<typename TypeParam::T>}, TypeParam::kIsFloat ? 1e-14 : 0);
    });
}

// One pixel is larger than all others, in the first, a middle or the last stripe.
TYPED_TEST(Norms, FindTheMaximumOfEveryStripeInParallel) {
    const ThreadCount count(3);
    const RoiSize roi{kLargeWidth, largeHeight(3 * 524288)};
    const typename TypeParam::Operands operands(roi, 1);
    for (const int y : {0, roi.height / 2, roi.height - 1}) {
        operands.at(0, 500, y) = 2;
        for (const auto& norm : TypeParam::norms())
            if (norm.name == Name::kInf) {
                double result = -1;
                ASSERT_EQ(StatusOk, norm.call(operands, &result));
                ASSERT_EQ(norm.operation == Operation::kNorm ? 2 : 1, result) << "row " << y;
            }
        operands.at(0, 500, y) = 1;
    }
}

// The last image is 0 where the norms are 0, so that the relative ones divide by it.
TYPED_TEST(Norms, OfNothingAreZero) {
    using Operands = typename TypeParam::Operands;
    Operands none({37, 3}, {}, ordinary<typename TypeParam::T>);
    none.mask = TestImage<uint8_t>::constant({37, 3}, 0);
    const Operands zero({37, 3}, 0), last({37, 3}, 0);
    last.at(0, 36, 2) = 1;
    for (const auto& norm : TypeParam::norms()) {
        const Status status = norm.isRelative() ? StatusDivideByZeroWarning : StatusOk;
        for (const Operands& operands : {none, zero}) {
            double result = 77;
            ASSERT_EQ(status, norm.call(operands, &result));
            ASSERT_TRUE(norm.isRelative() ? std::isnan(result) : result == 0);
        }
        double result = 77;
        ASSERT_EQ(status, norm.call(last, &result));
        ASSERT_EQ(norm.isRelative() ? std::numeric_limits<double>::infinity() : 1, result);
    }
}

// Rows so long, of values so large, that sums of 32 bits overflow.
TYPED_TEST(Norms, DoNotOverflow) {
    using Limits = std::numeric_limits<typename TypeParam::T>;
    if constexpr (!TypeParam::kIsFloat)
        for (const auto& [value, other] : {std::pair(Limits::max(), Limits::min()), {Limits::min(), Limits::max()}}) {
            typename TypeParam::Operands operands({70003, 2}, value);
            operands.sources[1] = TestImage<typename TypeParam::T>::constant(operands.roi, other, TypeParam::kChannels);
            TypeParam::check(operands);
        }
}

// Any float: NaN, infinities, and values whose squares overflow.
TYPED_TEST(Norms, TakeAnyFloat) {
    using T = typename TypeParam::T;
    using Operands = typename TypeParam::Operands;
    if constexpr (TypeParam::kIsFloat) {
        for (const float special : {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity(),
                                    -std::numeric_limits<T>::infinity(), std::numeric_limits<T>::max(), T(-0.0)})
            for (const size_t source : {0u, 1u})
                for (const int x : {0, 17, 36}) {
                    SCOPED_TRACE(::testing::Message() << special << " at " << x << " of source " << source);
                    const Operands operands({37, 2}, {}, ordinary<T>);
                    operands.at(source, x, 1) = special;
                    for (const int byte : {0, 1, 2, 128, 255}) {
                        operands.mask.at(x, 1) = uint8_t(byte);
                        TypeParam::check(operands);
                    }
                }
        TypeParam::check({{301, 3}, {}, inexact});
        TypeParam::check({{301, 3}, {}, [](Random& random) { return random.value<T>(); }});
    }
}

}  // namespace
