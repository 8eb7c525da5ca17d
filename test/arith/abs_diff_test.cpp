// Every absolute difference against its definition.
#include <gtest/gtest.h>

#include <algorithm>

#include "arguments.h"
#include "regions.h"
#include "test_image.h"

namespace {

template <typename T>
T absoluteDifference(T a, T b) {
    if constexpr (std::is_floating_point_v<T>)
        return std::fabs(a - b);
    else
        return a > b ? T(a - b) : T(b - a);
}

template <auto Export, int kChannelCount = 1>
struct Member;

template <typename T, typename... Rest, Status (*Export)(const T*, int32_t, Rest...), int kChannelCount>
struct Member<Export, kChannelCount> {
    using Pixel = T;
    static constexpr int kChannels = kChannelCount;
    static constexpr auto kFunction = Export;
};

template <typename MemberType>
class AbsDiff : public ::testing::Test {};
using AbsDiffMembers = ::testing::Types<Member<&vekiAbsDiff_8u_C1R>, Member<&vekiAbsDiff_8u_C3R, 3>,
                                        Member<&vekiAbsDiff_16u_C1R>, Member<&vekiAbsDiff_32f_C1R>>;
TYPED_TEST_SUITE(AbsDiff, AbsDiffMembers);

template <typename MemberType>
void checkAbsDiff(RoiSize roi, const Layouts& layouts) {
    using Image = TestImage<typename MemberType::Pixel>;
    constexpr int kChannels = MemberType::kChannels;
    const auto a = Image::random(roi, layouts[0], 1, kChannels), b = Image::random(roi, layouts[1], 2, kChannels);
    const auto expected = Image::filled(
        roi, {}, [&](int x, int y) { return absoluteDifference(a.at(x, y), b.at(x, y)); }, kChannels);
    const auto call = [&](const Image& in1, const Image& in2, const Image& out) {
        ASSERT_EQ(StatusOk, callWith(MemberType::kFunction, in1, in2, out, roi));
        ASSERT_TRUE(samePixels(expected, out));
    };
    call(a, b, Image(roi, layouts[2], kChannels));
    const Image sameAsA = a.copy(layouts[0]), sameAsB = b.copy(layouts[1]);
    call(sameAsA, b, sameAsA);
    call(a, sameAsB, sameAsB);
}

TYPED_TEST(AbsDiff, MatchesItsDefinition) {
    forSmallImages(checkAbsDiff<TypeParam>);
}

TYPED_TEST(AbsDiff, MatchesItsDefinitionInParallel) {
    forLargeImages(kPixels, checkAbsDiff<TypeParam>);
}

template <typename MemberType>
class AbsDiffC : public ::testing::Test {};
using AbsDiffCMembers =
    ::testing::Types<Member<&vekiAbsDiffC_8u_C1R>, Member<&vekiAbsDiffC_16u_C1R>, Member<&vekiAbsDiffC_32f_C1R>>;
TYPED_TEST_SUITE(AbsDiffC, AbsDiffCMembers);

template <typename MemberType, typename Constant>
void checkAbsDiffC(RoiSize roi, const Layouts& layouts, Constant value, typename MemberType::Pixel clamped) {
    using Image = TestImage<typename MemberType::Pixel>;
    const auto in = Image::random(roi, layouts[0], 1);
    const auto expected =
        Image::filled(roi, {}, [&](int x, int y) { return absoluteDifference(in.at(x, y), clamped); });
    const Image out(roi, layouts[1]), same = in.copy(layouts[0]);
    for (const auto& [from, to] : {std::pair(in, out), std::pair(same, same)}) {
        ASSERT_EQ(StatusOk, callWith(MemberType::kFunction, from, to, roi, value));
        ASSERT_TRUE(samePixels(expected, to)) << "constant " << value;
    }
}

TYPED_TEST(AbsDiffC, MatchesItsDefinition) {
    using Pixel = typename TypeParam::Pixel;
    constexpr Pixel kSome = 77;
    forSmallImages([](RoiSize roi, const Layouts& layouts) { checkAbsDiffC<TypeParam>(roi, layouts, kSome, kSome); });
    const RoiSize roi{67, 2};
    if constexpr (std::is_floating_point_v<Pixel>) {
        for (float value :
             {-0.f, 1e38f, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()})
            checkAbsDiffC<TypeParam>(roi, {}, value, value);
    } else {
        constexpr int32_t kMost = std::numeric_limits<Pixel>::max();
        for (int32_t value : {INT32_MIN, -5, -1, 0, 1, kMost - 1, kMost, kMost + 1, kMost + 45, INT32_MAX})
            checkAbsDiffC<TypeParam>(roi, {}, value, Pixel(std::clamp(value, 0, kMost)));
    }
}

TYPED_TEST(AbsDiffC, MatchesItsDefinitionInParallel) {
    constexpr typename TypeParam::Pixel kOne = 1;
    forLargeImages(kPixels,
                   [](RoiSize roi, const Layouts& layouts) { checkAbsDiffC<TypeParam>(roi, layouts, kOne, kOne); });
}

}  // namespace
