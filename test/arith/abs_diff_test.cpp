// Every absolute difference against its definition.
#include <gtest/gtest.h>

#include <algorithm>

#include "regions.h"
#include "status_order.h"
#include "test_image.h"
#include "unaligned_image.h"

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

    static TestImage<T> expected(const TestImage<T>& a, const TestImage<T>& b) {
        return TestImage<T>::filled(
            a.roi(), {}, [&](int x, int y) { return absoluteDifference(a.at(x, y), b.at(x, y)); }, kChannels);
    }
};

template <typename MemberType>
class AbsDiff : public ::testing::Test {};
using AbsDiffMembers = ::testing::Types<Member<&vekiAbsDiff_8u_C1R>, Member<&vekiAbsDiff_8u_C3R, 3>,
                                        Member<&vekiAbsDiff_16u_C1R>, Member<&vekiAbsDiff_32f_C1R>>;
TYPED_TEST_SUITE(AbsDiff, AbsDiffMembers);

TYPED_TEST(AbsDiff, MatchesItsDefinition) {
    using Image = TestImage<typename TypeParam::Pixel>;
    constexpr int kChannels = TypeParam::kChannels;
    const auto check = [](RoiSize roi, const Layouts& layouts) {
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layouts);
        const auto a = Image::random(roi, layouts[0], 1, kChannels), b = Image::random(roi, layouts[1], 2, kChannels);
        const auto expected = TypeParam::expected(a, b);
        const auto call = [&](const Image& in1, const Image& in2, const Image& out) {
            ASSERT_EQ(StatusOk, TypeParam::kFunction(in1.data(), in1.step(), in2.data(), in2.step(), out.data(),
                                                     out.step(), roi));
            ASSERT_TRUE(samePixels(expected, out));
        };
        call(a, b, Image(roi, layouts[2], kChannels));
        const Image sameAsA = a.copy(layouts[0]), sameAsB = b.copy(layouts[1]);
        call(sameAsA, b, sameAsA);
        call(a, sameAsB, sameAsB);
    };
    forSmallImages(check);
    for (const RoiSize& roi : regionsAround(262144))
        for (const Layout& layout : kLargeLayouts)
            check({roi.width / kChannels, roi.height}, layout);
}

// An image may begin at any address, also between the multiples of its element.
TYPED_TEST(AbsDiff, NeedsNoAlignment) {
    using Pixel = typename TypeParam::Pixel;
    const RoiSize roi{77, 3};
    const auto a = TestImage<Pixel>::random(roi, {}, 1, TypeParam::kChannels),
               b = TestImage<Pixel>::random(roi, {}, 2, TypeParam::kChannels);
    const UnalignedImage<Pixel> first(a), second(b), out(a);
    ASSERT_EQ(StatusOk, TypeParam::kFunction(first.data(), first.step(), second.data(), second.step(), out.data(),
                                             out.step(), roi));
    ASSERT_TRUE(out.holds(TypeParam::expected(a, b)));
}

TYPED_TEST(AbsDiff, ReportsTheFirstFault) {
    using Pixel = typename TypeParam::Pixel;
    constexpr int kChannels = TypeParam::kChannels;
    const RoiSize roi{9, 4};
    const TestImage<Pixel> in(roi, {}, kChannels), out = TestImage<Pixel>::random(roi, {}, 1, kChannels);
    const auto before = out.copy({});
    StatusOrder(TypeParam::kFunction, in.data(), in.step(), in.data(), in.step(), out.data(), out.step(), roi)
        .commonFaults({9 * kChannels, 9 * kChannels, 9 * kChannels})
        .check([&] { return bool(samePixels(before, out)); });
}

template <typename MemberType>
class AbsDiffC : public ::testing::Test {};
using AbsDiffCMembers =
    ::testing::Types<Member<&vekiAbsDiffC_8u_C1R>, Member<&vekiAbsDiffC_16u_C1R>, Member<&vekiAbsDiffC_32f_C1R>>;
TYPED_TEST_SUITE(AbsDiffC, AbsDiffCMembers);

TYPED_TEST(AbsDiffC, MatchesItsDefinition) {
    using Pixel = typename TypeParam::Pixel;
    using Image = TestImage<Pixel>;
    using Constant = std::conditional_t<std::is_floating_point_v<Pixel>, float, int32_t>;
    const auto check = [](RoiSize roi, const Layouts& layouts, Constant value, Pixel clamped) {
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layouts << ", " << value);
        const auto in = Image::random(roi, layouts[0], 1);
        const auto expected =
            Image::filled(roi, {}, [&](int x, int y) { return absoluteDifference(in.at(x, y), clamped); });
        const Image out(roi, layouts[1]), same = in.copy(layouts[0]);
        for (const auto& [from, to] : {std::pair(in, out), std::pair(same, same)}) {
            ASSERT_EQ(StatusOk, TypeParam::kFunction(from.data(), from.step(), to.data(), to.step(), roi, value));
            ASSERT_TRUE(samePixels(expected, to));
        }
    };
    forSmallImages([&](RoiSize roi, const Layouts& layouts) { check(roi, layouts, 77, 77); });
    for (const RoiSize& roi : regionsAround(262144))
        for (const Layout& layout : kLargeLayouts)
            check(roi, layout, 1, 1);

    const RoiSize roi{67, 2};
    if constexpr (std::is_floating_point_v<Pixel>) {
        for (float value :
             {-0.f, 1e38f, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()})
            check(roi, {}, value, value);
    } else {
        constexpr int32_t kMost = std::numeric_limits<Pixel>::max();
        for (int32_t value : {INT32_MIN, -5, -1, 0, 1, kMost - 1, kMost, kMost + 1, kMost + 45, INT32_MAX})
            check(roi, {}, value, Pixel(std::clamp(value, 0, kMost)));
    }
}

TYPED_TEST(AbsDiffC, ReportsTheFirstFault) {
    using Pixel = typename TypeParam::Pixel;
    const RoiSize roi{9, 4};
    const TestImage<Pixel> in(roi), out = TestImage<Pixel>::random(roi, {}, 1);
    const auto before = out.copy({});
    StatusOrder(TypeParam::kFunction, in.data(), in.step(), out.data(), out.step(), roi, 7).commonFaults().check([&] {
        return bool(samePixels(before, out));
    });
}

}  // namespace
