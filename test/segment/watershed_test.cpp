// Watershed segmentation against its definition.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <deque>

#include "arguments.h"
#include "regions.h"
#include "segments.h"
#include "test/exports/faults.h"

namespace {

constexpr int32_t kBoundaries = 1, kLightIsLow = 2;

template <auto Export, auto Query>
struct Member;

template <typename T, Status (*Export)(const uint8_t*, int32_t, T*, int32_t, RoiSize, int32_t, int32_t, uint8_t*),
          auto Query>
struct Member<Export, Query> {
    using Pixel = T;
    using Image = TestImage<T>;
    using Greys = TestImage<uint8_t>;
    static constexpr auto kExport = Export;
    static constexpr auto kQuery = Query;
    static constexpr T kWall = std::numeric_limits<T>::max();

    static bool isLabel(T marker) { return marker != 0 && marker != kWall; }

    /** The definition, with a queue for each level. */
    static Image expected(const Greys& source, const Image& markers, int32_t norm, int32_t flag) {
        const RoiSize roi = source.roi();
        const Image result = markers.copy({});
        const auto greyAt = [&](int x, int y) {
            return (flag & kLightIsLow) != 0 ? 255 - source.at(x, y) : source.at(x, y);
        };
        std::deque<ImagePoint> queues[256];
        segments::forPixels(roi, [&](int x, int y) {
            if (isLabel(result.at(x, y)))
                queues[greyAt(x, y)].push_back({x, y});
        });
        for (int level = 0; level < 256; ++level)
            while (!queues[level].empty()) {
                const ImagePoint p = queues[level].front();
                queues[level].pop_front();
                segments::forNeighbours(roi, p.x, p.y, norm, [&](int x, int y) {
                    if (result.at(x, y) != 0)
                        return;
                    result.at(x, y) = result.at(p.x, p.y);
                    queues[std::max(level, int(greyAt(x, y)))].push_back({x, y});
                });
            }
        if ((flag & kBoundaries) != 0)
            segments::markBoundaries(result, kWall, norm);
        return result;
    }

    static Image segment(const Greys& source, const Image& markers, int32_t norm, int32_t flag, Layout layout = {}) {
        return segments::segment<Export, Query>(source, markers, norm, flag, layout);
    }

    static void check(const Greys& source, const Image& markers, Layout layout = {}) {
        for (const int32_t norm : {NormL1, NormInf})
            for (const int32_t flag : {0, 1, 2, 3}) {
                SCOPED_TRACE(::testing::Message()
                             << source.roi().width << " x " << source.roi().height << ", " << layout
                             << (norm == NormL1 ? ", 4" : ", 8") << " neighbours, flag " << flag);
                ASSERT_TRUE(
                    samePixels(expected(source, markers, norm, flag), segment(source, markers, norm, flag, layout)));
            }
    }
};

using With8u = Member<&vekiSegmentWatershed_8u_C1IR, &vekiSegmentWatershedGetBufferSize_8u_C1R>;
using With16u = Member<&vekiSegmentWatershed_8u16u_C1IR, &vekiSegmentWatershedGetBufferSize_8u16u_C1R>;

template <typename MemberType>
class Watershed : public ::testing::Test {};
using Members = ::testing::Types<With8u, With16u>;
TYPED_TEST_SUITE(Watershed, Members);

// Greys of few levels have large plateaus.
TYPED_TEST(Watershed, MatchesItsDefinition) {
    using T = typename TypeParam::Pixel;
    std::vector<RoiSize> regions = smallRegions();
    for (const RoiSize& roi : {RoiSize{1, 40}, RoiSize{2, 33}, RoiSize{3, 120}, RoiSize{67, 61}, RoiSize{131, 40}})
        regions.push_back(roi);
    uint32_t seed = 0;
    for (const RoiSize& roi : regions)
        for (const Layout& layout : kLayouts) {
            ++seed;
            const uint32_t levels = std::array{1u, 3u, 256u}[seed % 3];
            TypeParam::check(segments::greys(roi, layout, seed, levels), segments::seeds<T>(roi, layout, ~seed, 40),
                             layout);
            TypeParam::check(segments::greys(roi, layout, seed, 256), TestImage<T>::random(roi, layout, ~seed), layout);
            ASSERT_FALSE(this->HasFailure());
        }
    const Layout &padded = kLayouts[2], &other = kLayouts[4];
    TypeParam::check(segments::greys({77, 9}, padded, 1, 256), segments::seeds<T>({77, 9}, {}, 2, 30), other);
}

/** Waves of several lengths, and noise. */
TestImage<uint8_t> waves(RoiSize roi) {
    return TestImage<uint8_t>::filled(roi, {}, [random = Random(1)](int x, int y) mutable {
        const double wave = std::sin(x / 23.0) * std::cos(y / 31.0) + std::sin(x / 5.0 + y / 7.0) / 2;
        return uint8_t(int(100 + 30 * wave) + int(random.below(12)));
    });
}

TYPED_TEST(Watershed, MatchesItsDefinitionOnWaves) {
    const RoiSize roi{311, 187};
    TypeParam::check(waves(roi), segments::seeds<typename TypeParam::Pixel>(roi, {}, 1, 900, 254), kLayouts[2]);
}

// No path from a label to a pixel has a lower top than one within the segment: the level at which water from each
// label reaches a pixel of its segment is the level at which any water reaches it.
TYPED_TEST(Watershed, FloodsEachPixelAtItsLowestLevel) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{83, 71};
    const auto source = waves(roi);
    const auto markers = segments::seeds<T>(roi, {}, 3, 300, 50);
    for (const int32_t norm : {NormL1, NormInf}) {
        const auto result = TypeParam::segment(source, markers, norm, 0);
        const auto levels = [&](auto mayFlow) {
            auto tops = TestImage<uint16_t>::filled(roi, {}, [&](int x, int y) {
                return uint16_t(TypeParam::isLabel(markers.at(x, y)) ? source.at(x, y) : 1000);
            });
            for (bool isStable = false; !isStable;) {
                isStable = true;
                segments::forPixels(roi, [&](int x, int y) {
                    segments::forNeighbours(roi, x, y, norm, [&](int nx, int ny) {
                        const auto top = std::max<uint16_t>(tops.at(nx, ny), source.at(x, y));
                        if (markers.at(x, y) == TypeParam::kWall || top >= tops.at(x, y) || !mayFlow(x, y, nx, ny))
                            return;
                        tops.at(x, y) = top;
                        isStable = false;
                    });
                });
            }
            return tops;
        };
        const auto anywhere = levels([](int, int, int, int) { return true; });
        const auto within = levels([&](int x, int y, int nx, int ny) { return result.at(x, y) == result.at(nx, ny); });
        EXPECT_TRUE(samePixels(anywhere, within));
        segments::forPixels(roi, [&](int x, int y) {
            ASSERT_NE(0, result.at(x, y));
            if (markers.at(x, y) != 0) {
                ASSERT_EQ(markers.at(x, y), result.at(x, y));
            }
        });
    }
}

// Where all is level, a pixel gets the label of a nearest marker.
TYPED_TEST(Watershed, SharesPlateausByDistance) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{61, 47};
    const std::vector<ImagePoint> seeds{{3, 5}, {50, 8}, {30, 30}, {10, 44}, {60, 46}};
    const auto markers = TestImage<T>::constant(roi, 0);
    for (size_t i = 0; i < seeds.size(); ++i)
        markers.at(seeds[i].x, seeds[i].y) = T(i + 1);
    for (const int grey : {0, 7, 255})
        for (const int32_t norm : {NormL1, NormInf}) {
            const auto result = TypeParam::segment(TestImage<uint8_t>::constant(roi, uint8_t(grey)), markers, norm, 0);
            segments::forPixels(roi, [&](int x, int y) {
                const auto distance = [&](ImagePoint seed) {
                    const int dx = std::abs(seed.x - x), dy = std::abs(seed.y - y);
                    return norm == NormL1 ? dx + dy : std::max(dx, dy);
                };
                int least = INT_MAX;
                for (const ImagePoint& seed : seeds)
                    least = std::min(least, distance(seed));
                ASSERT_EQ(least, distance(seeds[size_t(result.at(x, y)) - 1])) << x << ", " << y;
            });
        }
}

template <typename T>
std::vector<int> row(const TestImage<T>& image) {
    return std::vector<int>(image.data(), image.data() + image.roi().width);
}

template <typename MemberType>
std::vector<int> segmentRow(const std::vector<int>& source, const std::vector<int>& markers, int32_t flag = 0) {
    const RoiSize roi{int32_t(source.size()), 1};
    return row(MemberType::segment(
        TestImage<uint8_t>::filled(roi, {}, [&](int x, int) { return uint8_t(source[size_t(x)]); }),
        MemberType::Image::filled(roi, {}, [&](int x, int) { return typename MemberType::Pixel(markers[size_t(x)]); }),
        NormL1, flag));
}

TYPED_TEST(Watershed, MeetsAtTops) {
    using Values = std::vector<int>;
    constexpr int kWall = TypeParam::kWall;
    const Values valley{5, 1, 1, 9, 2, 2, 4};
    // The top belongs to the side whose lower level comes first.
    EXPECT_EQ((Values{1, 1, 1, 1, 2, 2, 2}), segmentRow<TypeParam>(valley, {0, 1, 0, 0, 0, 2, 0}));
    EXPECT_EQ((Values{1, 1, 1, 1, kWall, 2, 2}), segmentRow<TypeParam>(valley, {0, 1, 0, 0, 0, 2, 0}, kBoundaries));
    // Upside down, the second marker is the lowest pixel, and takes its neighbours first.
    EXPECT_EQ((Values{1, 1, 2, 2, 2, 2, 2}), segmentRow<TypeParam>(valley, {1, 0, 0, 2, 0, 0, 0}, kLightIsLow));
    // A marker at a top waits until the water is there.
    EXPECT_EQ((Values{2, 2, 2, 1, 2, 2, 2}), segmentRow<TypeParam>({3, 0, 0, 9, 0, 0, 3}, {2, 0, 0, 1, 0, 0, 2}));
    // In the middle of a plateau the marker that came first wins.
    EXPECT_EQ((Values{1, 1, 1, 2, 2}), segmentRow<TypeParam>({4, 4, 4, 4, 4}, {1, 0, 0, 0, 2}));
    EXPECT_EQ((Values{2, 2, 2, 1, 1}), segmentRow<TypeParam>({4, 4, 4, 4, 4}, {2, 0, 0, 0, 1}));
    // Walls stay, and nothing passes them.
    EXPECT_EQ((Values{1, 1, kWall, 0, 0}), segmentRow<TypeParam>({4, 4, 0, 4, 4}, {1, 0, kWall, 0, 0}));
    EXPECT_EQ((Values{0, 0, kWall, 0}), segmentRow<TypeParam>({1, 2, 3, 4}, {0, 0, kWall, 0}, kBoundaries));
    EXPECT_EQ((Values{kWall - 1, kWall - 1}), segmentRow<TypeParam>({1, 2}, {0, kWall - 1}));
}

TYPED_TEST(Watershed, ReadsAReliefUpsideDown) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{90, 40};
    const auto source = waves(roi);
    const auto upsideDown =
        TestImage<uint8_t>::filled(roi, {}, [&](int x, int y) { return uint8_t(255 - source.at(x, y)); });
    const auto markers = segments::seeds<T>(roi, {}, 5, 100);
    for (const int32_t norm : {NormL1, NormInf})
        for (const int32_t flag : {0, kBoundaries})
            EXPECT_TRUE(samePixels(TypeParam::segment(upsideDown, markers, norm, flag),
                                   TypeParam::segment(source, markers, norm, flag | kLightIsLow)));
}

TEST(Watershed, MayHaveRowsAtOddAddresses) {
    const RoiSize roi{37, 5};
    const auto source = segments::greys(roi, {}, 1, 256);
    const auto markers = segments::seeds<uint16_t>(roi, {}, 2, 20);
    const segments::OddRows rows(markers);
    const auto buffer = workBuffer(segments::bufferSize<With16u::kQuery>(roi));
    ASSERT_EQ(StatusOk, callWith(With16u::kExport, source, rows, roi, int32_t{NormInf}, kBoundaries, buffer.data()));
    rows.expect(With16u::expected(source, markers, NormInf, kBoundaries));
}

TEST(Watershed, HasABufferOfTheDocumentedSize) {
    const auto bufferSize8u = segments::bufferSize<With8u::kQuery>,
               bufferSize16u = segments::bufferSize<With16u::kQuery>;
    EXPECT_EQ(1 + 66 + 8 * 32, bufferSize8u({1, 1}));
    EXPECT_EQ(1 + 66 + 8 * 32, bufferSize16u({1, 1}));
    EXPECT_EQ(1 + 66 + 8 * 64, bufferSize16u({17, 1}));
    EXPECT_EQ(12 * 640 * 480 + 642 * 482 + 36, bufferSize8u({640, 480}));
    EXPECT_EQ(12 * 640 * 480 + 2 * 642 * 482 + 36, bufferSize16u({640, 480}));
    EXPECT_EQ(480 + 66 + (6 * 480 + 2) * 32, bufferSize8u({3, 480}));
    EXPECT_EQ(2147483531, bufferSize8u({1, 11126857}));
    EXPECT_EQ(2147483531, bufferSize16u({1, 11126857}));
    EXPECT_EQ(2147483637, bufferSize8u({143165573, 1}));
    EXPECT_EQ(2147483640, bufferSize16u({119304644, 1}));

    int32_t size = -1;
    for (const RoiSize& roi : {RoiSize{1, 11126858}, RoiSize{143165574, 1}, RoiSize{INT_MAX, 1}, RoiSize{1, INT_MAX},
                               RoiSize{46341, 46341}, RoiSize{INT_MAX, 1200000000}}) {
        EXPECT_EQ(StatusSizeError, With8u::kQuery(roi, &size));
        EXPECT_EQ(StatusSizeError, With16u::kQuery(roi, &size));
    }
    EXPECT_EQ(StatusSizeError, With16u::kQuery({119304645, 1}, &size));
    EXPECT_EQ(-1, size);
}

const exports::FamilyFaults kFaults("vekiSegmentWatershed",
                                    {{"norm", StatusBadArgument, {int32_t{NormL2}, 3, -1, INT_MAX, INT_MIN}},
                                     {"flag", StatusBadArgument, {4, 8, -1, 5, INT_MAX, INT_MIN}}},
                                    exports::Steps::kAny);

}  // namespace
