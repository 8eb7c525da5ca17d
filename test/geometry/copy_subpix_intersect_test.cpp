// Patches around points against their definition.
#include <cstring>
#include <limits>

#include "arguments.h"
#include "caller_modes.h"
#include "regions.h"
#include "subpixel_reference.h"
#include "test/exports/faults.h"

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity(), kNaN = std::numeric_limits<float>::quiet_NaN();

template <auto Export>
struct Member;

template <typename T, typename R, typename... Rest,
          Status (*Export)(const T*, int32_t, RoiSize, R*, int32_t, RoiSize, ImagePoint32f, Rest...)>
struct Member<Export> {
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
        const subpixel::Definition<Out, In> result(columns.fraction, rows.fraction, scaleFactor);
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

using Members =
    ::testing::Types<Member<&vekiCopySubpixIntersect_8u_C1R>, Member<&vekiCopySubpixIntersect_8u16u_C1R_Sfs>,
                     Member<&vekiCopySubpixIntersect_8u32f_C1R>, Member<&vekiCopySubpixIntersect_16u_C1R>,
                     Member<&vekiCopySubpixIntersect_16u32f_C1R>, Member<&vekiCopySubpixIntersect_32f_C1R>>;
TYPED_TEST_SUITE(CopySubpixIntersect, Members);

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

const exports::FamilyFaults kFaults("vekiCopySubpixIntersect",
                                    {exports::badSize("sourceRoi"), exports::badSize("destinationRoi"),
                                     exports::tooWide("sourceRoi"), exports::tooWide("destinationRoi")});

}  // namespace
