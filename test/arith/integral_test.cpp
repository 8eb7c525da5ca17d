// Integral images against their recursions, as the header has them.
#include <gtest/gtest.h>

#include "arguments.h"
#include "regions.h"
#include "test_image.h"

namespace {

enum Shape { kUpright, kTilted };

template <auto Export, Shape kShapeName>
struct Member;

template <typename E, typename... Rest, Status (*Export)(const uint8_t*, int32_t, E*, int32_t, Rest...),
          Shape kShapeName>
struct Member<Export, kShapeName> {
    using Entry = E;
    static constexpr Shape kShape = kShapeName;
    static constexpr bool kHasSquares = sizeof...(Rest) > 2;
    // Of the rest: squares, step, size, value, square value; or size and value.
    using First = std::tuple_element_t<0, std::tuple<Rest...>>;
    using SquareEntry = std::conditional_t<kHasSquares, std::remove_pointer_t<First>, Entry>;

    /** Columns and rows that a table has more than the image. */
    static constexpr int kMore = kShape == kUpright ? 1 : 2;
    static RoiSize tableSize(RoiSize roi) { return {roi.width + kMore, roi.height + kMore}; }

    template <typename Table>
    static Table plus(Table a, Table b) {
        if constexpr (std::is_integral_v<Table>)
            return Table(uint32_t(a) + uint32_t(b));
        else
            return a + b;
    }

    template <typename Table, typename Pixel>
    static TestImage<Table> upright(RoiSize roi, Table value, Pixel pixel) {
        TestImage<Table> table(tableSize(roi));
        for (int x = 0; x <= roi.width; ++x)
            table.at(x, 0) = value;
        for (int y = 0; y < roi.height; ++y) {
            table.at(0, y + 1) = value;
            Table sum = 0;
            for (int x = 0; x < roi.width; ++x) {
                sum = plus(sum, Table(pixel(x, y)));
                table.at(x + 1, y + 1) = plus(table.at(x + 1, y), sum);
            }
        }
        return table;
    }

    template <typename Table, typename Pixel>
    static TestImage<Table> tilted(RoiSize roi, Table value, Pixel pixel) {
        using Wide = std::conditional_t<std::is_integral_v<Table>, uint32_t, double>;
        TestImage<Table> table(tableSize(roi));
        const int w = roi.width;
        for (int x = 0; x < w + 2; ++x)
            table.at(x, 0) = table.at(x, 1) = value;
        for (int y = 0; y < roi.height; ++y) {
            table.at(0, y + 2) = table.at(1, y + 1);
            table.at(w + 1, y + 2) = table.at(w, y + 1);
            for (int x = 1; x <= w; ++x)
                table.at(x, y + 2) =
                    Table(Wide(table.at(x - 1, y + 1)) - Wide(table.at(x, y)) + Wide(table.at(x + 1, y + 1)) +
                          Wide(pixel(x - 1, y)) + Wide(x < w ? pixel(x, y) : 0));
        }
        return table;
    }

    template <typename Table, typename Pixel>
    static TestImage<Table> expected(RoiSize roi, Table value, Pixel pixel) {
        if constexpr (kShape == kUpright)
            return upright(roi, value, pixel);
        else
            return tilted(roi, value, pixel);
    }

    static TestImage<Entry> expectedSums(const TestImage<uint8_t>& image, double value) {
        return expected(image.roi(), Entry(value), [&](int x, int y) { return int(image.at(x, y)); });
    }
    static TestImage<SquareEntry> expectedSquares(const TestImage<uint8_t>& image, double value) {
        return expected(image.roi(), SquareEntry(value), [&](int x, int y) { return image.at(x, y) * image.at(x, y); });
    }

    /** The tables have the layouts 1 and 2. */
    static void check(const TestImage<uint8_t>& image, const Layouts& layouts, double value = 0,
                      double squareValue = 0) {
        const TestImage<Entry> sums(tableSize(image.roi()), layouts[1]);
        const TestImage<SquareEntry> squares(tableSize(image.roi()), layouts[2]);
        ASSERT_EQ(StatusOk, callWith(Export, image, sums, only<kHasSquares>(squares), image.roi(), Entry(value),
                                     only<kHasSquares>(SquareEntry(squareValue))));
        ASSERT_TRUE(samePixels(expectedSums(image, value), sums));
        if constexpr (kHasSquares) {
            ASSERT_TRUE(samePixels(expectedSquares(image, squareValue), squares));
        }
    }
};

template <typename MemberType>
class Integral : public ::testing::Test {};
using Members = ::testing::Types<
    Member<&vekiIntegral_8u32s_C1R, kUpright>, Member<&vekiIntegral_8u32f_C1R, kUpright>,
    Member<&vekiSqrIntegral_8u32s64f_C1R, kUpright>, Member<&vekiSqrIntegral_8u32f64f_C1R, kUpright>,
    Member<&vekiSqrIntegral_8u32s_C1R, kUpright>, Member<&vekiTiltedIntegral_8u32s_C1R, kTilted>,
    Member<&vekiTiltedIntegral_8u32f_C1R, kTilted>, Member<&vekiTiltedSqrIntegral_8u32s64f_C1R, kTilted>,
    Member<&vekiTiltedSqrIntegral_8u32f64f_C1R, kTilted>, Member<&vekiTiltedSqrIntegral_8u32s_C1R, kTilted>>;
TYPED_TEST_SUITE(Integral, Members);

TYPED_TEST(Integral, MatchesItsDefinition) {
    forSmallImages([](RoiSize roi, const Layouts& layouts) {
        TypeParam::check(TestImage<uint8_t>::random(roi, layouts[0], 1), layouts);
        TypeParam::check(TestImage<uint8_t>::random(roi, layouts[0], 2), layouts, 100, -3);
    });
    // Rows of many vectors; and many rows so long that their parts are made one after the other.
    TypeParam::check(TestImage<uint8_t>::random({301, 203}, {}, 3), {});
    TypeParam::check(TestImage<uint8_t>::random({5003, 35}, {}, 4), {});
}

// Constants that are no whole numbers, or so large that sums are rounded.
TYPED_TEST(Integral, BeginsWithAnyConstant) {
    const auto image = TestImage<uint8_t>::random({77, 40}, {}, 4);
    TypeParam::check(image, {}, INT32_MIN, 2e9);
    if constexpr (std::is_floating_point_v<typename TypeParam::Entry>)
        for (const double value : {0.1, -1e-20, 1e9, 3e38, std::numeric_limits<double>::infinity()})
            TypeParam::check(image, {}, value, 0.1);
}

// Rows of 65536 white pixels and more, whose sums are no longer exact in float; images whose sums wrap in 32 bits.
TYPED_TEST(Integral, GoesOnWhereSumsAreNotExact) {
    for (const RoiSize roi : {RoiSize{66100, 3}, RoiSize{131, 600}, RoiSize{9001, 20}}) {
        const auto image =
            TestImage<uint8_t>::filled(roi, {}, [](int x, int y) { return uint8_t(x + y == 9 ? 0 : 255); });
        TypeParam::check(image, {}, INT32_MAX, INT32_MAX);
    }
}

// The table leaves out pixels at its edges; that cancels in every rectangle, also those whose corners lie at the edges.
TEST(TiltedIntegral, HoldsSumsOfRectangles) {
    for (const RoiSize roi : {RoiSize{1, 5}, RoiSize{2, 6}, RoiSize{9, 11}, RoiSize{12, 8}}) {
        const auto image = TestImage<uint8_t>::random(roi, {}, 6);
        const TestImage<int32_t> table({roi.width + 2, roi.height + 2});
        ASSERT_EQ(StatusOk,
                  vekiTiltedIntegral_8u32s_C1R(image.data(), image.step(), table.data(), table.step(), roi, 9));
        // The rectangle with its topmost corner in entry (x, y), w and h steps along the diagonals.
        const auto check = [&](int x, int y, int w, int h) {
            int sum = 0;
            for (int i = 0; i < w; ++i)
                for (int k = 0; k < h; ++k)
                    for (const int column : {x - 1 + i - k, x + i - k})
                        if (column >= 0 && column < roi.width)
                            sum += image.at(column, y + i + k);
            ASSERT_EQ(sum,
                      table.at(x + w - h, y + w + h) - table.at(x - h, y + h) - table.at(x + w, y + w) + table.at(x, y))
                << x << ", " << y << ", " << w << ", " << h;
        };
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x <= roi.width + 1; ++x)
                for (int w = 1; x + w <= roi.width + 1 && y + w <= roi.height; ++w)
                    for (int h = 1; x - h >= 0 && y + w + h <= roi.height + 1; ++h)
                        check(x, y, w, h);
    }
}

}  // namespace
