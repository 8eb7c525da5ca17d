// Window deviations against their definition, and against the pixels of the windows.
#include <gtest/gtest.h>

#include <algorithm>

#include "arguments.h"
#include "regions.h"
#include "test/exports/faults.h"
#include "test_image.h"

namespace {

enum Shape { kUpright, kTilted };

struct Corner {
    int x, y;
};

/** The four entries A, B, C, D of a window at (0, 0), and its number of pixels. */
struct Window {
    Corner a, b, c, d;
    float area;

    static Window of(Shape shape, ImageRect r) {
        const auto area = float(int64_t(r.width) * r.height);
        if (shape == kUpright)
            return {{r.x + r.width, r.y + r.height}, {r.x, r.y + r.height}, {r.x + r.width, r.y}, {r.x, r.y}, area};
        return {{r.x + r.width - r.height + 1, r.y + r.width + r.height + 1},
                {r.x - r.height + 1, r.y + r.height + 1},
                {r.x + r.width + 1, r.y + r.width + 1},
                {r.x + 1, r.y + 1},
                2 * area};
    }

    /** Columns and rows that a table needs for so many positions. */
    RoiSize tableSize(RoiSize roi) const {
        return {std::max({a.x, b.x, c.x, d.x}) + roi.width, std::max({a.y, b.y, c.y, d.y}) + roi.height};
    }
};

template <auto Export, Shape kShapeName>
struct Member;

template <typename E, typename Q, typename R, typename... Rest,
          Status (*Export)(const E*, int32_t, const Q*, int32_t, R*, int32_t, RoiSize, ImageRect, Rest...),
          Shape kShapeName>
struct Member<Export, kShapeName> {
    using Entry = E;
    using SquareEntry = Q;
    using Result = R;
    static constexpr bool kIsScaled = sizeof...(Rest) == 1;
    static constexpr Shape kShape = kShapeName;

    static Status call(const TestImage<E>& sums, const TestImage<Q>& squares, const TestImage<R>& out, ImageRect rect,
                       int32_t scaleFactor) {
        return callWith(Export, sums, squares, out, out.roi(), rect, only<kIsScaled>(scaleFactor));
    }

    template <typename Table>
    static float sum(const TestImage<Table>& table, const Window& window, int x, int y) {
        const auto at = [&](Corner corner) { return table.at(corner.x + x, corner.y + y); };
        if constexpr (std::is_integral_v<Table>)
            return float(int32_t(uint32_t(at(window.a)) - uint32_t(at(window.b)) - uint32_t(at(window.c)) +
                                 uint32_t(at(window.d))));
        else
            return float(at(window.a)) - float(at(window.b)) - float(at(window.c)) + float(at(window.d));
    }

    static void check(const TestImage<E>& sums, const TestImage<Q>& squares, RoiSize roi, Layout layout, ImageRect rect,
                      int32_t scaleFactor) {
        const Window window = Window::of(kShape, rect);
        const TestImage<R> out(roi, layout);
        const auto expected = TestImage<R>::filled(roi, {}, [&](int x, int y) {
            const float mean = sum(sums, window, x, y) / window.area;
            const float meanSquare = sum(squares, window, x, y) / window.area;
            const float variance = meanSquare - mean * mean;
            const float deviation = std::sqrt(variance < 0 ? 0 : variance);
            if constexpr (!kIsScaled)
                return deviation;
            else  // rounded to even, as is the default, in double
                return int32_t(std::min(std::nearbyint(std::ldexp(double(deviation), -scaleFactor)), 2147483647.0));
        });
        ASSERT_EQ(StatusOk, call(sums, squares, out, rect, scaleFactor));
        ASSERT_TRUE(samePixels(expected, out));
    }

    /** Tables of an image. */
    struct Tables {
        TestImage<E> sums;
        TestImage<Q> squares;

        Tables(const TestImage<uint8_t>& image, Layout layout = {})
            : sums(make<E>(image, layout, 1)), squares(make<Q>(image, layout, 2)) {}

        template <typename Table>
        static TestImage<Table> make(const TestImage<uint8_t>& image, Layout layout, int power) {
            const RoiSize roi = image.roi();
            const auto term = [&](int x, int y) {
                const int64_t pixel = x < roi.width && x >= 0 ? int64_t{image.at(x, y)} : 0;
                return power == 1 ? pixel : pixel * pixel;
            };
            if (kShape == kUpright) {
                TestImage<int64_t> exact({roi.width + 1, roi.height + 1});
                return TestImage<Table>::filled(exact.roi(), layout, [&](int x, int y) {
                    exact.at(x, y) = x == 0 || y == 0 ? 0
                                                      : exact.at(x - 1, y) + exact.at(x, y - 1) -
                                                            exact.at(x - 1, y - 1) + term(x - 1, y - 1);
                    return Table(exact.at(x, y));
                });
            }
            // Of a tilted table, the pixels of the triangle that ends at an entry.
            return TestImage<Table>::filled({roi.width + 2, roi.height + 2}, layout, [&](int x, int y) {
                int64_t sum = 0;
                for (int row = y - 2, half = 0; row >= 0; --row, ++half)
                    for (int column = x - 1 - half; column <= x + half; ++column)
                        sum += term(column, row);
                return Table(sum);
            });
        }
    };
};

template <typename MemberType>
class RectStdDev : public ::testing::Test {};
using Members =
    ::testing::Types<Member<&vekiRectStdDev_32s32f_C1R, kUpright>, Member<&vekiRectStdDev_32f_C1R, kUpright>,
                     Member<&vekiRectStdDev_32s_C1RSfs, kUpright>, Member<&vekiTiltedRectStdDev_32s32f_C1R, kTilted>,
                     Member<&vekiTiltedRectStdDev_32f_C1R, kTilted>, Member<&vekiTiltedRectStdDev_32s_C1RSfs, kTilted>>;
TYPED_TEST_SUITE(RectStdDev, Members);

// The arithmetic, on any tables: sums that wrap, negative variances.
template <typename MemberType>
void checkAnyTables(RoiSize roi, const Layouts& layouts, ImageRect rect) {
    using Entry = typename MemberType::Entry;
    using SquareEntry = typename MemberType::SquareEntry;
    const RoiSize table = Window::of(MemberType::kShape, rect).tableSize(roi);
    Random random(1);
    // Squares of pixels are of 31 bits: with sums like these, squares of means are of the same order.
    const auto range = uint32_t(32768 * std::sqrt(double(rect.width * rect.height)));
    const auto entry = [&](int, int) {
        if constexpr (std::is_integral_v<Entry>)
            return Entry(uint32_t(INT32_MAX) - range / 2 + random.below(range));
        else
            return Entry(double(range) * random.below(1 << 30) / (1 << 30));
    };
    const auto square = [&](int, int) { return SquareEntry(int32_t(random.bits())); };
    const auto sums = TestImage<Entry>::filled(table, layouts[0], entry);
    const auto squares = TestImage<SquareEntry>::filled(table, layouts[1], square);
    MemberType::check(sums, squares, roi, layouts[2], rect, roi.width % 5 - 2);
}

TYPED_TEST(RectStdDev, MatchesItsDefinition) {
    forSmallImages([](RoiSize roi, const Layouts& layouts) {
        for (const ImageRect rect : {ImageRect{0, 0, 1, 1}, ImageRect{4, 2, 3, 5}})
            checkAnyTables<TypeParam>(roi, layouts, rect);
    });
}

TYPED_TEST(RectStdDev, MatchesItsDefinitionInParallel) {
    forLargeImages(kPixels, [](RoiSize roi, const Layouts& layouts) {
        checkAnyTables<TypeParam>(roi, layouts, {6, 1, 7, 7});
    });
}

// The window is the one that the header describes: the deviation of exactly these pixels.
TYPED_TEST(RectStdDev, IsThatOfThePixelsOfTheWindow) {
    const auto image = TestImage<uint8_t>::random({40, 40}, {}, 3);
    const typename TypeParam::Tables tables(image);
    for (const ImageRect rect : {ImageRect{3, 0, 4, 3}, ImageRect{5, 2, 1, 6}, ImageRect{6, 3, 7, 1}}) {
        const RoiSize roi{7, 5};
        const TestImage<typename TypeParam::Result> out(roi);
        ASSERT_EQ(StatusOk, TypeParam::call(tables.sums, tables.squares, out, rect, -8));
        for (int y = 0; y < roi.height; ++y)
            for (int x = 0; x < roi.width; ++x) {
                double sum = 0, squares = 0, count = 0;
                const auto add = [&](int column, int row) {
                    const double pixel = image.at(x + column, y + row);
                    sum += pixel;
                    squares += pixel * pixel;
                    ++count;
                };
                if (TypeParam::kShape == kUpright)
                    for (int row = rect.y; row < rect.y + rect.height; ++row)
                        for (int column = rect.x; column < rect.x + rect.width; ++column)
                            add(column, row);
                else  // pairs of pixels in a row, along both diagonals
                    for (int i = 0; i < rect.width; ++i)
                        for (int k = 0; k < rect.height; ++k) {
                            add(rect.x + i - k, rect.y + 1 + i + k);
                            add(rect.x + i - k + 1, rect.y + 1 + i + k);
                        }
                const double variance = squares / count - sum / count * (sum / count);
                const double scale = TypeParam::kIsScaled ? 256 : 1;
                ASSERT_NEAR(std::sqrt(variance), double(out.at(x, y)) / scale, 0.02)
                    << x << ", " << y << " of " << rect.x << ", " << rect.y << ", " << rect.width << ", "
                    << rect.height;
            }
    }
}

TYPED_TEST(RectStdDev, OfAConstantImageIsZero) {
    for (const int value : {0, 1, 77, 100}) {  // squares up to 2^24 are exact in float
        const auto image = TestImage<uint8_t>::constant({40, 40}, uint8_t(value));
        const typename TypeParam::Tables tables(image);
        const RoiSize roi{7, 5};
        const TestImage<typename TypeParam::Result> out(roi);
        ASSERT_EQ(StatusOk, TypeParam::call(tables.sums, tables.squares, out, {6, 3, 7, 7}, -8));
        ASSERT_TRUE(samePixels(TestImage<typename TypeParam::Result>::constant(roi, 0), out));
    }
}

TYPED_TEST(RectStdDev, TakesAnyScaleFactor) {
    if constexpr (TypeParam::kIsScaled) {
        const auto image = TestImage<uint8_t>::random({40, 40}, {}, 3);
        const typename TypeParam::Tables tables(image);
        for (const int32_t factor : {0, 1, 6, 7, 8, 31, 32, 126, 127, 500, -1, -20, -24, -25, -126, -127, -500})
            TypeParam::check(tables.sums, tables.squares, {21, 5}, {}, {6, 3, 7, 2}, factor);
        const typename TypeParam::Result zeroes[4] = {};
        typename TypeParam::Result out = 7;
        if constexpr (TypeParam::kShape == kUpright) {
            ASSERT_EQ(StatusOk,
                      vekiRectStdDev_32s_C1RSfs(zeroes, 8, zeroes, 8, &out, 4, {1, 1}, {0, 0, 1, 1}, INT32_MIN));
            ASSERT_EQ(0, out);
            const int32_t squares[4] = {0, 0, 0, 81};
            for (const int32_t factor : {INT32_MIN, INT32_MAX}) {
                ASSERT_EQ(StatusOk,
                          vekiRectStdDev_32s_C1RSfs(zeroes, 8, squares, 8, &out, 4, {1, 1}, {0, 0, 1, 1}, factor));
                ASSERT_EQ(factor < 0 ? INT32_MAX : 0, out);
            }
            // 9 / 2 = 4.5 and 11 / 2 = 5.5 lie between integers: the even one.
            ASSERT_EQ(StatusOk, vekiRectStdDev_32s_C1RSfs(zeroes, 8, squares, 8, &out, 4, {1, 1}, {0, 0, 1, 1}, 1));
            ASSERT_EQ(4, out);
            const int32_t more[4] = {0, 0, 0, 121};
            ASSERT_EQ(StatusOk, vekiRectStdDev_32s_C1RSfs(zeroes, 8, more, 8, &out, 4, {1, 1}, {0, 0, 1, 1}, 1));
            ASSERT_EQ(6, out);
        }
    }
}

// Of calls with the rectangle {1, 0, 1, 2} that are otherwise valid.
using Rectangles = std::initializer_list<ImageRect>;
const exports::FaultRule kBeyondAll("rect", StatusStepError, Rectangles{{INT32_MAX, 0, INT32_MAX, 1}},
                                    exports::Behind::kStepLengths);
const exports::FaultRule kNoWindow("rect", StatusSizeError,
                                   Rectangles{{-1, 0, 3, 2}, {1, -1, 1, 2}, {2, 0, 0, 2}, {1, 0, 1, 0}});
const exports::FaultRule kLeftOfTable("rect", StatusSizeError, Rectangles{{1, 0, 1, 3}, {1, 0, 1, INT32_MAX}});
const exports::FamilyFaults kUprightFaults("vekiRectStdDev", {kBeyondAll, kNoWindow});
const exports::FamilyFaults kTiltedFaults("vekiTiltedRectStdDev", {kBeyondAll, kNoWindow, kLeftOfTable});

}  // namespace
