// Norms of three channels against their definition.
#include <gtest/gtest.h>

#include "arguments.h"
#include "caller_modes.h"
#include "regions.h"
#include "test/exports/faults.h"

namespace {

template <typename T, auto kExport>
struct Member {
    using Pixel = T;
    static constexpr auto call = kExport;
};

template <typename T>
class GradientColorToGray : public ::testing::Test {};
using Members = ::testing::Types<Member<uint8_t, &vekiGradientColorToGray_8u_C3C1R>,
                                 Member<uint16_t, &vekiGradientColorToGray_16u_C3C1R>,
                                 Member<float, &vekiGradientColorToGray_32f_C3C1R>>;
TYPED_TEST_SUITE(GradientColorToGray, Members);

constexpr int32_t kNorms[] = {NormInf, NormL1, NormL2};

uint8_t reference(int32_t norm, uint8_t c0, uint8_t c1, uint8_t c2) {
    const int sum = c0 + c1 + c2, squares = c0 * c0 + c1 * c1 + c2 * c2;
    return uint8_t(norm == NormInf  ? std::max({c0, c1, c2})
                   : norm == NormL1 ? (sum * 1365 + 2048) >> 12
                                    : int(std::sqrt(double(float(squares) / 3.0f)) + 0.5));
}

uint16_t reference(int32_t norm, uint16_t c0, uint16_t c1, uint16_t c2) {
    const uint64_t sum = uint64_t{c0} + c1 + c2;
    const uint64_t squares = uint64_t{c0} * c0 + uint64_t{c1} * c1 + uint64_t{c2} * c2;
    if (norm == NormInf)
        return std::max({c0, c1, c2});
    if (norm == NormL1)
        return uint16_t((2 * sum + 3) / 6);
    uint64_t root = 0;  // the largest one with (root - 1/2)^2 below a third of the squares
    for (uint64_t bit = 32768; bit != 0; bit /= 2)
        if (3 * (2 * (root + bit) - 1) * (2 * (root + bit) - 1) < 4 * squares)
            root += bit;
    return uint16_t(root);
}

float larger(float a, float b) {
    return a > b ? a : b;
}

float reference(int32_t norm, float c0, float c1, float c2) {
    return norm == NormInf  ? larger(larger(c0, c1), c2)
           : norm == NormL1 ? ((c0 + c1) + c2) / 3
                            : std::sqrt(((c0 * c0 + c1 * c1) + c2 * c2) / 3);
}

template <typename T>
TestImage<T> expectedOf(int32_t norm, const TestImage<T>& in) {
    return TestImage<T>::filled(in.roi(), {}, [&](int x, int y) {
        return reference(norm, in.at(3 * x, y), in.at(3 * x + 1, y), in.at(3 * x + 2, y));
    });
}

template <typename Member, typename T = typename Member::Pixel>
void check(const TestImage<T>& in, const TestImage<T>& expected, int32_t norm, Layout layout) {
    SCOPED_TRACE(::testing::Message() << "norm " << norm);
    const TestImage<T> out(in.roi(), layout);
    ASSERT_EQ(StatusOk, callWith(Member::call, in, out, in.roi(), norm));
    ASSERT_TRUE(samePixels(expected, out));
}

TYPED_TEST(GradientColorToGray, MatchesItsDefinition) {
    uint32_t seed = 0;
    forSmallImages([&](RoiSize roi, const Layouts& layouts) {
        const auto in = TestImage<typename TypeParam::Pixel>::random(roi, layouts[0], ++seed, 3);
        for (const int32_t norm : kNorms)
            check<TypeParam>(in, expectedOf(norm, in), norm, layouts[1]);
    });
}

TYPED_TEST(GradientColorToGray, MatchesInParallel) {
    forLargeImages(kPixels, [&](RoiSize roi, const Layouts& layouts) {
        const auto in = TestImage<typename TypeParam::Pixel>::random(roi, layouts[0], 1, 3);
        for (const int32_t norm : kNorms)
            check<TypeParam>(in, expectedOf(norm, in), norm, layouts[1]);
    });
}

/** Of integers all channels that are equal, and of two equal ones and one that is not. */
TYPED_TEST(GradientColorToGray, RoundsIntegersToNearest) {
    using T = typename TypeParam::Pixel;
    if constexpr (std::is_integral_v<T>) {
        constexpr int32_t kValues = std::numeric_limits<T>::max() + 1;
        const auto equal = TestImage<T>::filled(
            {kValues, 1}, {}, [](int x, int) { return T(x / 3); }, 3);
        for (const int32_t norm : kNorms) {
            const auto expected = TestImage<T>::filled({kValues, 1}, {}, [](int x, int) { return T(x); });
            check<TypeParam>(equal, expected, norm, {});
        }
        const auto two = TestImage<T>::filled(
            {256, 256}, {}, [](int x, int y) { return T((x % 3 == 0 ? x / 3 : y) * (kValues / 256) + x % 5); }, 3);
        for (const int32_t norm : kNorms)
            check<TypeParam>(two, expectedOf(norm, two), norm, {});
    }
}

TYPED_TEST(GradientColorToGray, GivesTheSameIntegersInAllFloatModes) {
    using T = typename TypeParam::Pixel;
    if constexpr (std::is_integral_v<T>) {
        const auto in = TestImage<T>::random({199, 50}, {}, 1, 3);
        for (const int32_t norm : kNorms) {
            const auto expected = expectedOf(norm, in);
            forCallerModes([&] { check<TypeParam>(in, expected, norm, {}); });
        }
    }
}

const exports::FamilyFaults kFaults("vekiGradientColorToGray",
                                    {{"norm", StatusBadArgument, {-1, 3, 256, INT32_MIN, INT32_MAX}}});

}  // namespace
