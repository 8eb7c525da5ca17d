// Boundaries of segments against their definition.
#include <gtest/gtest.h>

#include <climits>

#include "arguments.h"
#include "regions.h"
#include "segments.h"
#include "test/exports/faults.h"

namespace {

template <auto Export>
struct Member;
template <typename T, typename... Rest, Status (*Export)(T*, Rest...)>
struct Member<Export> {
    using Pixel = T;
    using Image = TestImage<T>;
    static constexpr auto kExport = Export;

    static void check(const Image& markers, T borderValue, Layout layout = {}) {
        for (const int32_t norm : {NormL1, NormInf}) {
            SCOPED_TRACE(::testing::Message()
                         << markers.roi().width << " x " << markers.roi().height << ", " << layout << ", border "
                         << +borderValue << (norm == NormL1 ? ", 4" : ", 8") << " neighbours");
            const Image expected = markers.copy({}), result = markers.copy(layout);
            segments::markBoundaries(expected, borderValue, norm);
            ASSERT_EQ(StatusOk, callWith(Export, result, result.roi(), borderValue, norm));
            ASSERT_TRUE(samePixels(expected, result));
        }
    }
};

template <typename MemberType>
class Boundaries : public ::testing::Test {};
using Members = ::testing::Types<Member<&vekiBoundSegments_8u_C1IR>, Member<&vekiBoundSegments_16u_C1IR>>;
TYPED_TEST_SUITE(Boundaries, Members);

/** Runs of pixels of `values` values, of a length that is `run` on average. */
template <typename T>
TestImage<T> runs(RoiSize roi, uint32_t seed, uint32_t values, uint32_t run) {
    return TestImage<T>::filled(roi, {}, [=, random = Random(seed), value = T(0)](int, int) mutable {
        if (random.below(run) == 0)
            value = T(random.below(values) * (std::numeric_limits<T>::max() / values + 1));
        return value;
    });
}

// Two values in turn make the longest chains of pixels that depend on each other; long runs skip whole vectors.
TYPED_TEST(Boundaries, MatchTheirDefinition) {
    using T = typename TypeParam::Pixel;
    std::vector<RoiSize> regions = smallRegions();
    for (const RoiSize& roi : {RoiSize{1, 40}, RoiSize{2, 33}, RoiSize{67, 61}, RoiSize{66, 20}, RoiSize{131, 40}})
        regions.push_back(roi);
    uint32_t seed = 0;
    for (const RoiSize& roi : regions)
        for (const Layout& layout : kLayouts)
            for (const uint32_t values : {2u, 3u, 200u})
                for (const uint32_t run : {1u, 2u, 30u}) {
                    const auto markers = runs<T>(roi, ++seed, values, run);
                    TypeParam::check(markers, std::numeric_limits<T>::max(), layout);
                    TypeParam::check(markers, markers.at(roi.width / 2, roi.height / 2), layout);
                    if (this->HasFatalFailure())
                        return;
                }
}

TYPED_TEST(Boundaries, AlternateAlongStripes) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{517, 5};
    for (const int constant : {0, 1, 16, 17, 64, 65, 129})
        for (const int width : {1, 2}) {
            const auto markers = TestImage<T>::filled(
                roi, {}, [=](int x, int y) { return T(x < constant || y == 3 ? 1 : 1 + x / width % 2); });
            TypeParam::check(markers, T(9));
            TypeParam::check(markers, T(2));
        }
    auto stripes = TestImage<T>::filled({9, 1}, {}, [](int x, int) { return T(1 + x % 2); });
    ASSERT_EQ(StatusOk, callWith(TypeParam::kExport, stripes, stripes.roi(), T(7), int32_t{NormL1}));
    for (int x = 0; x < 9; ++x)
        EXPECT_EQ(x % 2 == 0 ? 1 : 7, stripes.at(x, 0));
}

TYPED_TEST(Boundaries, LieOnTheRightAndBelow) {
    using T = typename TypeParam::Pixel;
    for (const int32_t norm : {NormL1, NormInf}) {
        auto flat = TestImage<T>::constant({70, 4}, T(3));
        ASSERT_EQ(StatusOk, callWith(TypeParam::kExport, flat, flat.roi(), T(9), norm));
        EXPECT_TRUE(samePixels(TestImage<T>::constant({70, 4}, T(3)), flat));

        auto sides = TestImage<T>::filled({70, 4}, {}, [](int x, int) { return T(x < 35 ? 1 : 2); });
        ASSERT_EQ(StatusOk, callWith(TypeParam::kExport, sides, sides.roi(), T(9), norm));
        EXPECT_TRUE(samePixels(
            TestImage<T>::filled({70, 4}, {}, [](int x, int) { return T(x < 35    ? 1
                                                                        : x == 35 ? 9
                                                                                  : 2); }), sides));

        auto halves = TestImage<T>::filled({70, 4}, {}, [](int, int y) { return T(y < 2 ? 1 : 2); });
        ASSERT_EQ(StatusOk, callWith(TypeParam::kExport, halves, halves.roi(), T(9), norm));
        EXPECT_TRUE(samePixels(
            TestImage<T>::filled({70, 4}, {}, [](int, int y) { return T(y < 2    ? 1
                                                                        : y == 2 ? 9
                                                                                 : 2); }), halves));
    }
    // Diagonal neighbours meet only where there are eight of them.
    auto corner = TestImage<T>::filled({2, 2}, {}, [](int x, int y) { return T(x == y ? 1 : 0); });
    corner.at(1, 1) = 2;
    ASSERT_EQ(StatusOk, callWith(TypeParam::kExport, corner, corner.roi(), T(0), int32_t{NormL1}));
    EXPECT_EQ(2, corner.at(1, 1));
    ASSERT_EQ(StatusOk, callWith(TypeParam::kExport, corner, corner.roi(), T(0), int32_t{NormInf}));
    EXPECT_EQ(0, corner.at(1, 1));
}

TYPED_TEST(Boundaries, SeparateSegments) {
    using T = typename TypeParam::Pixel;
    for (const int32_t norm : {NormL1, NormInf}) {
        auto image = runs<T>({200, 150}, 1, 4, 5);
        ASSERT_EQ(StatusOk, callWith(TypeParam::kExport, image, image.roi(), T(255), norm));
        segments::forPixels(image.roi(), [&](int x, int y) {
            segments::forNeighbours(image.roi(), x, y, norm, [&](int nx, int ny) {
                const T a = image.at(x, y), b = image.at(nx, ny);
                ASSERT_TRUE(a == b || a == 255 || b == 255) << x << ", " << y;
            });
        });
        const auto again = image.copy({});
        ASSERT_EQ(StatusOk, callWith(TypeParam::kExport, again, again.roi(), T(255), norm));
        EXPECT_TRUE(samePixels(image, again));
    }
}

// Pixels depend on those before them, whatever the number of threads; so one thread does all the work.
TYPED_TEST(Boundaries, AreTheSameForAllNumbersOfThreads) {
    using T = typename TypeParam::Pixel;
    forLargeImages(kPixels, [](RoiSize roi, const Layouts& layouts) {
        TypeParam::check(runs<T>(roi, 1, 2, 1), T(255), layouts[0]);
        TypeParam::check(runs<T>(roi, 1, 9, 20), T(255), layouts[0]);
    });
}

TEST(Boundaries, MayHaveRowsAtOddAddresses) {
    const auto markers = runs<uint16_t>({37, 5}, 1, 3, 2);
    for (const int32_t norm : {NormL1, NormInf}) {
        const auto expected = markers.copy({});
        segments::markBoundaries(expected, uint16_t{9}, norm);
        const segments::OddRows rows(markers);
        ASSERT_EQ(StatusOk, callWith(&vekiBoundSegments_16u_C1IR, rows, markers.roi(), uint16_t{9}, norm));
        rows.expect(expected);
    }
}

const exports::FamilyFaults kFaults("vekiBoundSegments",
                                    {{"norm", StatusBadArgument, {int32_t{NormL2}, 3, -1, INT_MAX, INT_MIN}}},
                                    exports::Steps::kAny);

}  // namespace
