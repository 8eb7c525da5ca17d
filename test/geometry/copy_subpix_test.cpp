// Shifted copies and patches against their definitions.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cmath>

#include "arguments.h"
#include "caller_modes.h"
#include "regions.h"
#include "test/exports/faults.h"
#include "test_image.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNaN = std::numeric_limits<float>::quiet_NaN();

// --- definitions

/** The weights of the upper left, upper right, lower left and lower right pixel. */
std::array<int64_t, 4> integerWeights(double fractionX, double fractionY) {
    const auto x = int64_t(fractionX * 16384 + 0.5), y = int64_t(fractionY * 16384 + 0.5);
    int64_t w00 = ((16384 - x) * (16384 - y) + 16384) >> 14, w01 = ((16384 - y) * x + 16384) >> 14;
    int64_t w10 = ((16384 - x) * y + 16384) >> 14, w11 = (x * y + 16384) >> 14;
    if (const int64_t excess = w00 + w01 + w10 + w11 - 16384; excess > 0) {
        if (w00 >= w10 && w00 >= w01 && w11 <= w00)
            w00 -= excess;
        else if (w10 >= w00 && w10 >= w01 && w11 <= w10)
            w10 -= excess;
        else if (w01 <= w11)
            w11 -= excess;
        else
            w01 -= excess;
    }
    return {w00, w01, w10, w11};
}

/** A result from the four pixels around a place. */
template <typename Result, typename T>
class Definition {
  public:
    Definition(double fractionX, double fractionY, int32_t scaleFactor)
        : weights_(integerWeights(fractionX, fractionY)),
          x_(float(fractionX)),
          y_(float(fractionY)),
          exponent_(-14 - std::clamp(scaleFactor, -1000, 1000)) {}

    Result operator()(T a, T b, T c, T d) const {
        if constexpr (std::is_same_v<Result, float>) {
            const float upper = float(a) + x_ * (float(b) - float(a)), lower = float(c) + x_ * (float(d) - float(c));
            return upper + y_ * (lower - upper);
        } else {
            const int64_t sum = weights_[0] * a + weights_[1] * b + weights_[2] * c + weights_[3] * d;
            if constexpr (sizeof(Result) == sizeof(T))
                return Result((sum + 8192) >> 14);
            else
                return Result(std::min(std::floor(std::ldexp(double(sum), exponent_) + 0.5), 65535.0));
        }
    }

  private:
    std::array<int64_t, 4> weights_;
    float x_, y_;
    int32_t exponent_;
};

double fractionOf(float offset) {
    if (!std::isfinite(offset))
        return 0;
    const double fraction = double(offset) - std::trunc(double(offset));
    return fraction < 0 ? fraction + 1 : fraction;
}

// --- copies

template <auto Export>
struct Member;

template <typename T, typename R, typename... Rest, Status (*Export)(const T*, int32_t, R*, int32_t, Rest...)>
struct Member<Export> {
    using Pixel = T;
    using Result = R;
    static constexpr bool kIsScaled = !std::is_same_v<R, float> && !std::is_same_v<R, T>;

    static Status call(const T* source, int32_t step, const TestImage<R>& out, RoiSize roi, float dx, float dy,
                       int32_t scaleFactor = 0) {
        if constexpr (kIsScaled)
            return Export(source, step, out.data(), out.step(), roi, dx, dy, scaleFactor);
        else
            return Export(source, step, out.data(), out.step(), roi, dx, dy);
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

// --- patches

template <auto Export>
struct PatchMember;

template <typename T, typename R, typename... Rest,
          Status (*Export)(const T*, int32_t, RoiSize, R*, int32_t, RoiSize, ImagePoint32f, Rest...)>
struct PatchMember<Export> {
    using Pixel = T;
    using Result = R;
    static constexpr bool kIsScaled = sizeof...(Rest) == 3;

    static Status call(const TestImage<T>& source, const TestImage<R>& out, ImagePoint32f point, ImagePoint (&range)[2],
                       int32_t scaleFactor) {
        return callWith(Export, source, source.roi(), out, out.roi(), point, only<kIsScaled>(scaleFactor), &range[0],
                        &range[1]);
    }
};

/** Where the columns or the rows of a patch lie. */
struct Extent {
    int64_t origin;
    double fraction;
    int64_t least, most;

    Extent(float centre, int32_t patch, int32_t source) {
        double begin = centre - (double(patch) - 1) * 0.5;
        if (std::isnan(begin))
            begin = -1e12;
        begin = std::clamp(begin, -1e12, 1e12);
        origin = int64_t(std::trunc(patch + begin)) - patch;
        // In front of the source, where the sum above is negative, all columns are the same.
        fraction = std::max(begin - double(origin), 0.0);
        least = std::min<int64_t>(std::max<int64_t>(-origin, 0), patch);
        const int64_t last = origin + patch - 1;
        most = last <= source - 2 ? patch - 1 : source - last + patch - 3;
        if (std::max<int64_t>(origin, 0) >= source) {
            least = 0;
            most = -1;
        }
    }
};

template <typename MemberType>
class CopySubpixIntersect : public ::testing::Test {
  protected:
    using In = typename MemberType::Pixel;
    using Out = typename MemberType::Result;

    static void check(RoiSize sourceRoi, RoiSize patch, ImagePoint32f point, const Layouts& layouts = {},
                      int32_t scaleFactor = -5) {
        SCOPED_TRACE(::testing::Message()
                     << "patch " << patch.width << " x " << patch.height << " at " << point.x << ", " << point.y);
        const auto source = TestImage<In>::random(sourceRoi, layouts[0], 1);
        const Extent columns(point.x, patch.width, sourceRoi.width), rows(point.y, patch.height, sourceRoi.height);
        const Definition<Out, In> result(columns.fraction, rows.fraction, scaleFactor);
        const auto expected = TestImage<Out>::filled(patch, {}, [&](int x, int y) {
            const auto at = [&](int right, int below) {
                return source.at(int(std::clamp<int64_t>(columns.origin + x + right, 0, sourceRoi.width - 1)),
                                 int(std::clamp<int64_t>(rows.origin + y + below, 0, sourceRoi.height - 1)));
            };
            return result(at(0, 0), at(1, 0), at(0, 1), at(1, 1));
        });
        const TestImage<Out> out(patch, layouts[1]);
        ImagePoint range[2] = {{77, 77}, {77, 77}};
        ASSERT_EQ(StatusOk, MemberType::call(source, out, point, range, scaleFactor));
        ASSERT_TRUE(samePixels(expected, out));
        EXPECT_EQ(columns.least, range[0].x);
        EXPECT_EQ(rows.least, range[0].y);
        EXPECT_EQ(columns.most, range[1].x);
        EXPECT_EQ(rows.most, range[1].y);
    }
};

using PatchMembers =
    ::testing::Types<PatchMember<&vekiCopySubpixIntersect_8u_C1R>, PatchMember<&vekiCopySubpixIntersect_8u16u_C1R_Sfs>,
                     PatchMember<&vekiCopySubpixIntersect_8u32f_C1R>, PatchMember<&vekiCopySubpixIntersect_16u_C1R>,
                     PatchMember<&vekiCopySubpixIntersect_16u32f_C1R>, PatchMember<&vekiCopySubpixIntersect_32f_C1R>>;
TYPED_TEST_SUITE(CopySubpixIntersect, PatchMembers);

// Inside, across each border and corner, outside, and around the source; also of a single row, column or pixel.
TYPED_TEST(CopySubpixIntersect, MatchesItsDefinitionEverywhere) {
    const Layouts layouts({Layout::kRowsByGuards, 0, 0}, 1, {Layout::kBeforeGuard, 0, 3});
    for (const RoiSize source : {RoiSize{7, 5}, RoiSize{1, 4}, RoiSize{6, 1}, RoiSize{1, 1}, RoiSize{2, 2}})
        for (const RoiSize patch : {RoiSize{3, 2}, RoiSize{1, 1}, RoiSize{9, 8}, RoiSize{4, 11}})
            for (float y = -float(patch.height) - 2; y < float(source.height + patch.height + 2); y += 0.75f)
                for (float x = -float(patch.width) - 2; x < float(source.width + patch.width + 2); x += 0.75f)
                    ASSERT_NO_FATAL_FAILURE(this->check(source, patch, {x, y}, layouts));
}

TYPED_TEST(CopySubpixIntersect, MatchesItsDefinition) {
    forSmallImages([&](RoiSize patch, const Layouts& layouts) {
        Random random(uint32_t(patch.width * 5 + patch.height));
        const RoiSize source{int32_t(1 + random.below(150)), int32_t(1 + random.below(5))};
        const auto place = [&](int32_t length) { return float(random.below(uint32_t(64 * (length + 4)))) / 64 - 2; };
        this->check(source, patch, {place(source.width), place(source.height)}, layouts);
    });
}

TYPED_TEST(CopySubpixIntersect, MatchesItsDefinitionInParallel) {
    forLargeImages(kPixels, [&](RoiSize patch, const Layouts& layouts) {
        this->check({400, 470}, patch, {180.3f, 290.6f}, layouts);
    });
}

TYPED_TEST(CopySubpixIntersect, TakesPointsAnywhere) {
    for (const float place : {0.0f, -0.0f, 1e-45f, -1e-45f, 8388607.5f, -8388607.5f, 2147483648.0f, -2147483648.0f,
                              1e12f, -1e12f, 1e20f, -1e20f, 3e38f, -3e38f, kInfinity, -kInfinity, kNaN}) {
        this->check({20, 3}, {9, 4}, {place, 1.3f});
        this->check({20, 3}, {9, 4}, {8.3f, place});
        this->check({20, 3}, {9, 4}, {place, place});
    }
}

TYPED_TEST(CopySubpixIntersect, IgnoresTheModesOfTheCaller) {
    for (const ImagePoint32f point : {ImagePoint32f{8.3f, 2.6f}, {4 - 1e-7f, 1e-45f}, {-1e-45f, -2.3f}}) {
        const auto source = TestImage<typename TypeParam::Pixel>::random({20, 5}, {}, 1);
        const TestImage<typename TypeParam::Result> expected({9, 4});
        ImagePoint expectedRange[2];
        ASSERT_EQ(StatusOk, TypeParam::call(source, expected, point, expectedRange, -3));
        forCallerModes([&] {
            const TestImage<typename TypeParam::Result> out({9, 4});
            ImagePoint range[2];
            EXPECT_EQ(StatusOk, TypeParam::call(source, out, point, range, -3));
            EXPECT_TRUE(samePixels(expected, out));
            EXPECT_EQ(0, std::memcmp(expectedRange, range, sizeof range));
        });
    }
}

exports::FaultRule badSize(std::string_view roi) {
    return {roi, StatusSizeError, std::initializer_list<RoiSize>{{0, 4}, {-1, 4}, {9, 0}, {9, INT_MIN}},
            exports::Behind::kSizes};
}
exports::FaultRule tooWide(std::string_view roi) {
    return {roi, StatusStepError, std::initializer_list<RoiSize>{{INT_MAX, 4}, {1431655766, 4}},
            exports::Behind::kSizes};
}
const exports::FamilyFaults kPatchFaults("vekiCopySubpixIntersect", {badSize("sourceRoi"), badSize("destinationRoi"),
                                                                     tooWide("sourceRoi"), tooWide("destinationRoi")});

}  // namespace
