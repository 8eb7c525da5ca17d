// Shifted copies against their definition.
#include <climits>
#include <limits>

#include "arguments.h"
#include "caller_modes.h"
#include "regions.h"
#include "subpixel_reference.h"

namespace {

using subpixel::Definition;

constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNaN = std::numeric_limits<float>::quiet_NaN();

/** How far a pixel is shifted behind the next whole one; offsets that are no numbers shift nothing. */
double fractionOf(float offset) {
    if (!std::isfinite(offset))
        return 0;
    const double fraction = double(offset) - std::trunc(double(offset));
    return fraction < 0 ? fraction + 1 : fraction;
}

template <auto Export>
struct Member;

template <typename T, typename R, typename... Rest, Status (*Export)(const T*, int32_t, R*, int32_t, Rest...)>
struct Member<Export> {
    using Pixel = T;
    using Result = R;
    static constexpr bool kIsScaled = !std::is_same_v<R, float> && !std::is_same_v<R, T>;

    static Status call(const T* source, int32_t step, const TestImage<R>& out, RoiSize roi, float dx, float dy,
                       int32_t scaleFactor = 0) {
        return callWith(Export, source, step, out, roi, dx, dy, only<kIsScaled>(scaleFactor));
    }
};

template <typename MemberType>
class CopySubpix : public ::testing::Test {
  protected:
    using In = typename MemberType::Pixel;
    using Out = typename MemberType::Result;

    static TestImage<Out> expected(const TestImage<In>& source, RoiSize roi, float dx, float dy,
                                   int32_t scaleFactor = 0) {
        const Definition<Out, In> result(fractionOf(dx), fractionOf(dy), scaleFactor);
        return TestImage<Out>::filled(roi, {}, [&](int x, int y) {
            return result(source.at(x, y), source.at(x + 1, y), source.at(x, y + 1), source.at(x + 1, y + 1));
        });
    }

    static void check(RoiSize roi, const Layouts& layouts, float dx, float dy, int32_t scaleFactor = 0) {
        SCOPED_TRACE(::testing::Message() << "offset " << dx << ", " << dy << ", factor " << scaleFactor);
        const auto source = TestImage<In>::random({roi.width + 1, roi.height + 1}, layouts[0], 1);
        const TestImage<Out> out(roi, layouts[1]);
        ASSERT_EQ(StatusOk, MemberType::call(source.data(), source.step(), out, roi, dx, dy, scaleFactor));
        ASSERT_TRUE(samePixels(expected(source, roi, dx, dy, scaleFactor), out));
    }
};

using Members = ::testing::Types<Member<&vekiCopySubpix_8u_C1R>, Member<&vekiCopySubpix_8u16u_C1R_Sfs>,
                                 Member<&vekiCopySubpix_8u32f_C1R>, Member<&vekiCopySubpix_16u_C1R>,
                                 Member<&vekiCopySubpix_16u32f_C1R>, Member<&vekiCopySubpix_32f_C1R>>;
TYPED_TEST_SUITE(CopySubpix, Members);

TYPED_TEST(CopySubpix, MatchesItsDefinition) {
    forSmallImages([&](RoiSize roi, const Layouts& layouts) {
        Random random(uint32_t(roi.width * 7 + roi.height));
        const auto offset = [&] { return float(random.below(1 << 20)) / (1 << 18) - 2; };
        this->check(roi, layouts, offset(), offset(), -6);
    });
}

TYPED_TEST(CopySubpix, MatchesItsDefinitionInParallel) {
    forLargeImages(kPixels, [&](RoiSize roi, const Layouts& layouts) { this->check(roi, layouts, 0.3f, -7.9f, -4); });
}

TYPED_TEST(CopySubpix, IgnoresWholeOffsets) {
    for (const float offset :
         {0.0f,          -0.0f,          1.0f,        -1.0f,        3.75f,      -3.75f,      1e-30f, -1e-30f,
          1e-45f,        -1e-45f,        0.99999994f, -0.99999994f, 8388607.5f, -8388607.5f, 1e9f,   -1.5e9f,
          2147483648.0f, -2147483648.0f, 1e20f,       -1e38f,       kInfinity,  -kInfinity,  kNaN}) {
        this->check({37, 2}, {}, offset, 0.25f);
        this->check({37, 2}, {}, -5.5f, offset);
    }
}

// All weights along rows with some along columns, and the other way round.
TYPED_TEST(CopySubpix, MatchesItsDefinitionForAllFractions) {
    using T = typename TypeParam::Pixel;
    using Result = typename TypeParam::Result;
    const RoiSize roi{19, 1};
    const auto source = TestImage<T>::filled({20, 2}, {}, [random = Random(3)](int, int) mutable {
        return std::is_floating_point_v<T> ? random.summand<T>() : random.value<T>();
    });
    constexpr int32_t kFactor = -6;
    const auto check = [&](float dx, float dy) {
        SCOPED_TRACE(::testing::Message() << dx << ", " << dy);
        const TestImage<Result> out(roi);
        ASSERT_EQ(StatusOk, TypeParam::call(source.data(), source.step(), out, roi, dx, dy, kFactor));
        ASSERT_TRUE(samePixels(this->expected(source, roi, dx, dy, kFactor), out));
    };
    constexpr int32_t kStep = std::is_same_v<Result, float> ? 61 : 1;
    for (int32_t fraction = 0; fraction < 16384; fraction += kStep)
        for (const float other : {0.0f, 0.00003f, 0.70711f, 0.99997f})
            ASSERT_NO_FATAL_FAILURE(check(float(fraction) / 16384, other));
    for (int32_t fraction = 0; fraction < 16384; fraction += 61)
        for (const float other : {0.0f, 0.00003f, 0.25f, 0.5f, 0.99997f})
            ASSERT_NO_FATAL_FAILURE(check(other, float(fraction) / 16384));
}

TYPED_TEST(CopySubpix, KeepsConstants) {
    using T = typename TypeParam::Pixel;
    using Result = typename TypeParam::Result;
    const RoiSize roi{19, 1};
    for (const T value : {T(1), T(77), std::numeric_limits<T>::max()}) {
        const auto source = TestImage<T>::constant({20, 2}, value);
        const auto expected =
            TestImage<Result>::constant(roi, TypeParam::kIsScaled ? Result(value * 64) : Result(value));
        const TestImage<Result> out(roi);
        for (int32_t x = 0; x < 16384; x += 97)
            for (int32_t y = 0; y < 16384; y += 201) {
                ASSERT_EQ(StatusOk, TypeParam::call(source.data(), source.step(), out, roi, float(x) / 16384,
                                                    float(y) / 16384, -6));
                ASSERT_TRUE(samePixels(expected, out)) << x << ", " << y;
            }
    }
}

TYPED_TEST(CopySubpix, CopiesWithoutOffset) {
    using T = typename TypeParam::Pixel;
    const auto source = TestImage<T>::filled({130, 4}, {}, [random = Random(5)](int, int) mutable {
        return std::is_floating_point_v<T> ? T(random.below(1 << 24)) : random.value<T>();
    });
    const TestImage<typename TypeParam::Result> out({129, 3});
    ASSERT_EQ(StatusOk, TypeParam::call(source.data(), source.step(), out, {129, 3}, 0, 5));
    // The neighbours have the least weights, 1 of 16384 each, which show in 16 bits.
    const double most = std::is_same_v<typename TypeParam::Result, T> && sizeof(T) == 2 ? 12 : 0;
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 129; ++x)
            ASSERT_NEAR(double(source.at(x, y)), double(out.at(x, y)), most);
}

// A row may begin where the one before ends: its first pixel is then that at the right of the other's last one.
TYPED_TEST(CopySubpix, TakesPackedRows) {
    using T = typename TypeParam::Pixel;
    using Result = typename TypeParam::Result;
    for (const RoiSize roi : {RoiSize{37, 3}, RoiSize{521, 517}}) {
        const auto memory = TestImage<T>::random({roi.width * (roi.height + 1) + 1, 1}, {Layout::kBeforeGuard}, 4);
        const Definition<Result, T> result(0.375, 0.8125, 0);
        const auto expected = TestImage<Result>::filled(roi, {}, [&](int x, int y) {
            const T *const upper = memory.data() + roi.width * y + x, *const lower = upper + roi.width;
            return result(upper[0], upper[1], lower[0], lower[1]);
        });
        const TestImage<Result> out(roi);
        ASSERT_EQ(StatusOk, TypeParam::call(memory.data(), roi.width * int32_t{sizeof(T)}, out, roi, 0.375f, 0.8125f));
        EXPECT_TRUE(samePixels(expected, out));
    }
}

TYPED_TEST(CopySubpix, IgnoresTheModesOfTheCaller) {
    using T = typename TypeParam::Pixel;
    using Result = typename TypeParam::Result;
    const RoiSize roi{67, 3};
    const auto source = TestImage<T>::random({68, 4}, {}, 1);
    for (const float offset : {0.3f, 1e-45f, -1e-45f, -1e-10f, 0.00001525f}) {
        const auto expected = this->expected(source, roi, offset, 0.7f);
        forCallerModes([&] {
            const TestImage<Result> out(roi);
            EXPECT_EQ(StatusOk, TypeParam::call(source.data(), source.step(), out, roi, offset, 0.7f));
            EXPECT_TRUE(samePixels(expected, out));
        });
    }
}

TEST(CopySubpixScaled, TakesAllFactors) {
    const RoiSize roi{35, 2};
    const auto source = TestImage<uint8_t>::random({36, 3}, {}, 1);
    const auto check = [&](int32_t factor) {
        SCOPED_TRACE(factor);
        const Definition<uint16_t, uint8_t> result(0.3, 0.6, factor);
        const auto expected = TestImage<uint16_t>::filled(roi, {}, [&](int x, int y) {
            return result(source.at(x, y), source.at(x + 1, y), source.at(x, y + 1), source.at(x + 1, y + 1));
        });
        const TestImage<uint16_t> out(roi);
        ASSERT_EQ(StatusOk, vekiCopySubpix_8u16u_C1R_Sfs(source.data(), source.step(), out.data(), out.step(), roi,
                                                         0.3f, 0.6f, factor));
        EXPECT_TRUE(samePixels(expected, out));
    };
    for (int32_t factor = -70; factor <= 70; ++factor)
        check(factor);
    for (const int32_t factor : {INT_MIN, INT_MIN + 14, INT_MIN + 15, INT_MAX - 14, INT_MAX - 13, INT_MAX})
        check(factor);
}

}  // namespace
