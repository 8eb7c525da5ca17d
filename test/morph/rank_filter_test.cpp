// Minimum and maximum filters against their definition.
#include <array>
#include <map>

#include "morph_exports.h"

namespace {

using morph::Mask;
using morph::Rank;

template <typename Exports>
class RankFilters : public ::testing::Test {
  protected:
    using Pixel = typename Exports::Pixel;

    static int32_t bufferSize(int32_t width, RoiSize window) {
        int32_t least = -1, most = -2;
        EXPECT_EQ(StatusOk, Exports::kFilterMinSize(width, window, &least));
        EXPECT_EQ(StatusOk, Exports::kFilterMaxSize(width, window, &most));
        EXPECT_EQ(least, most);
        return least;
    }

    /** Filters with a buffer of the size for a region of the given width, or by default of the size that is needed. */
    static void expectRanks(const TestImage<Pixel>& source, const Mask& window, Layout layout,
                            int32_t bufferWidth = 0) {
        const RoiSize roi = source.roi();
        const int32_t bytes = bufferSize(bufferWidth == 0 ? roi.width : bufferWidth, window.size);
        for (const Rank rank : morph::kRanks) {
            const TestImage<Pixel> out(roi, layout, Exports::kChannels);
            const auto buffer = workBuffer(bytes, layout);
            const auto filter = rank == Rank::kMinimum ? Exports::kFilterMin : Exports::kFilterMax;
            ASSERT_EQ(StatusOk, callWith(filter, source, out, roi, window.size, window.anchor, buffer.data()));
            ASSERT_TRUE(morph::sameRanks(morph::rankOf(source, window, rank), out));
            ASSERT_TRUE(buffer.guardsIntact());
        }
    }
    static void expectRanks(const Mask& window, RoiSize roi, int turn, int32_t bufferWidth = 0) {
        SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", turn " << turn);
        expectRanks(morph::imageFor<Exports>(window, roi, turn), window, morph::layout(turn / 2), bufferWidth);
    }
};
TYPED_TEST_SUITE(RankFilters, morph::AllForms);

TYPED_TEST(RankFilters, MatchTheirDefinition) {
    int turn = 0;
    forSmallImages([&](RoiSize roi, const Layouts& layouts) {
        const RoiSize size{1 + turn % 5, 1 + turn % 3};
        const auto anchors = morph::anchorsOf(size);
        const Mask window = morph::fullMask(size, anchors[size_t(turn) % anchors.size()]);
        this->expectRanks(morph::imageFor<TypeParam>(window, roi, turn++), window, layouts[1]);
    });
}

TYPED_TEST(RankFilters, TakeAnyWindow) {
    morph::forFullWindows([&](const Mask& window, int turn) {
        const RoiSize asWide{std::max(1, window.size.width + turn % 5 - 2), 3};
        this->expectRanks(window, turn % 3 == 0 ? asWide : morph::imageSize(turn), turn);
    });
}

// What of a window lies beyond the image everywhere does not count.
TYPED_TEST(RankFilters, TakeWindowsBeyondTheImage) {
    int turn = 0;
    for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{2, 5}, RoiSize{5, 2}, RoiSize{6, 1}})
        for (const int32_t width : {1, 2, 6, 7, 13})
            for (const int32_t height : {1, 3, 6, 11})
                for (int32_t x = 0; x < width; ++x)
                    for (int32_t y = 0; y < height; ++y)
                        this->expectRanks(morph::fullMask({width, height}, {x, y}), roi, turn++);
    // The buffer does not depend on the width of the window.
    const auto source = morph::imageFor<TypeParam>(morph::fullMask({3, 1}, {1, 0}), {21, 4}, 0);
    const auto buffer = workBuffer(this->bufferSize(21, {INT32_MAX, 1}));
    for (const int32_t anchor : {0, 10, INT32_MAX / 2, INT32_MAX - 11, INT32_MAX - 1}) {
        const TestImage<typename TypeParam::Pixel> out({21, 4}, {}, TypeParam::kChannels);
        ASSERT_EQ(StatusOk, callWith(TypeParam::kFilterMax, source, out, source.roi(), RoiSize{INT32_MAX, 1},
                                     ImagePoint{anchor, 0}, buffer.data()));
        const int before = std::min(anchor, 21), after = std::min(INT32_MAX - 1 - anchor, 21);
        const Mask reached = morph::fullMask({before + 1 + after, 1}, {before, 0});
        ASSERT_TRUE(morph::sameRanks(morph::rankOf(source, reached, Rank::kMaximum), out)) << anchor;
    }
}

// Where the buffer has the fewest bytes for what is to be kept in it: a row of the image with the pixels beside it.
TYPED_TEST(RankFilters, NeedNoMoreThanTheirBuffer) {
    int turn = 0;
    for (int32_t width = 1; width <= 70; ++width)
        for (const int32_t height : {1, 2, width % 8 == 1 ? 33 : 3})
            for (const int32_t anchor : {0, width - 1})
                this->expectRanks(morph::fullMask({width, height}, {anchor, 0}), {width, 2}, turn++);
    for (const int32_t bufferWidth : {9, 31, 300})
        this->expectRanks(morph::fullMask({5, 9}, {2, 3}), {9, 20}, turn++, bufferWidth);
}

TYPED_TEST(RankFilters, TellTheSizeOfTheBuffer) {
    using Sizes = std::array<int32_t, 3>;  // for 1 column and a window of 1 row, 640 and 5, 33 and 64
    const std::map<size_t, Sizes> sizesByPixelBytes{{1, {114, 6832, 9376}},
                                                    {3, {118, 19632, 17824}},
                                                    {4, {120, 26032, 22048}},
                                                    {12, {136, 77232, 55840}},
                                                    {16, {144, 102832, 72736}}};
    const size_t pixelBytes = sizeof(typename TypeParam::Pixel) * TypeParam::kChannels;
    const Sizes& expected = sizesByPixelBytes.at(pixelBytes);
    EXPECT_EQ(expected[0], this->bufferSize(1, {9, 1}));
    EXPECT_EQ(expected[1], this->bufferSize(640, {1, 5}));
    EXPECT_EQ(expected[2], this->bufferSize(33, {INT32_MAX, 64}));

    const int32_t mostColumns = 1073741767 / int32_t(pixelBytes);
    EXPECT_LT(2147483600, this->bufferSize(mostColumns, {1, 1}));
    int32_t size = 77;
    EXPECT_EQ(StatusSizeError, TypeParam::kFilterMinSize(mostColumns + 1, {1, 1}, &size));
    // Some of these sizes are beyond 2^63 or 2^64.
    for (const int32_t width : {1, INT32_MAX / 16, INT32_MAX})
        for (const int32_t height : {INT32_MAX / 64, 1 << 27, 1 << 28, 1 << 29, INT32_MAX})
            EXPECT_EQ(StatusSizeError, TypeParam::kFilterMinSize(width, {1, height}, &size)) << width << ", " << height;
    EXPECT_EQ(77, size);
}

const exports::FamilyFaults kMinimumFaults("vekiFilterMin",
                                           {morph::kBadWidths, morph::kBadMaskSizes, morph::kBadAnchors});
const exports::FamilyFaults kMaximumFaults("vekiFilterMax",
                                           {morph::kBadWidths, morph::kBadMaskSizes, morph::kBadAnchors});

}  // namespace
