// Gradient segmentation against its definition.
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

using Image = TestImage<uint8_t>;

constexpr uint8_t kReserved = 255;
constexpr int32_t kBoundaries4 = 64, kBoundaries8 = 128;

template <auto Export, auto Query, int kChannelCount>
struct Member {
    static constexpr int kChannels = kChannelCount;
    static constexpr auto kQuery = Query;

    static Image colours(RoiSize roi, Layout layout, uint32_t seed, uint32_t levels) {
        return segments::greys(roi, layout, seed, levels, kChannels);
    }

    static Image segment(const Image& source, const Image& markers, int32_t norm, int32_t flag, Layout layout = {}) {
        return segments::segment<Export, Query>(source, markers, norm, flag, layout);
    }
};

/** The definition: a queue for each level, and a note for each pixel that waits in one. */
class Definition {
  public:
    Definition(const Image& source, const Image& markers, int channels, int32_t norm)
        : source_(source),
          markers_(markers.copy({})),
          isWaiting_(Image::constant(markers.roi(), 0)),
          channels_(channels),
          norm_(norm) {}

    Image run() {
        segments::forPixels(markers_.roi(), [&](int x, int y) { queue({x, y}); });
        for (size_t level = 0; level < std::size(queues_);) {
            if (queues_[level].empty()) {
                ++level;
                continue;
            }
            const ImagePoint p = queues_[level].front();
            queues_[level].pop_front();
            int least = INT_MAX;
            uint8_t label = 0;
            forLabelledNeighbours(p, [&](uint8_t neighbour, int difference) {
                if (difference < least)
                    label = neighbour;
                least = std::min(least, difference);
            });
            isWaiting_.at(p.x, p.y) = 0;
            markers_.at(p.x, p.y) = label;
            segments::forNeighbours(markers_.roi(), p.x, p.y, norm_, [&](int x, int y) { queue({x, y}); });
            level = 0;
        }
        return markers_;
    }

  private:
    void queue(ImagePoint p) {
        if (markers_.at(p.x, p.y) != 0 || isWaiting_.at(p.x, p.y) != 0)
            return;
        long level = 256;
        forLabelledNeighbours(p,
                              [&](uint8_t, int difference) { level -= std::lround(std::exp2(8 - difference / 32.0)); });
        if (level >= 256)
            return;
        queues_[std::max(level, 0L)].push_back(p);
        isWaiting_.at(p.x, p.y) = 1;
    }

    /** visit(label, difference) */
    template <typename Visit>
    void forLabelledNeighbours(ImagePoint p, Visit visit) {
        segments::forNeighbours(markers_.roi(), p.x, p.y, norm_, [&](int x, int y) {
            const uint8_t marker = markers_.at(x, y);
            if (marker == 0 || marker == kReserved)
                return;
            int difference = 0;
            for (int channel = 0; channel < channels_; ++channel)
                difference = std::max(difference, std::abs(source_.at(channels_ * p.x + channel, p.y) -
                                                           source_.at(channels_ * x + channel, y)));
            visit(marker, difference);
        });
    }

    const Image& source_;
    Image markers_, isWaiting_;
    int channels_;
    int32_t norm_;
    std::deque<ImagePoint> queues_[256];
};

template <typename MemberType>
class GradientSegmentation : public ::testing::Test {
  protected:
    static void check(const Image& source, const Image& markers, Layout layout = {}) {
        for (const int32_t norm : {NormL1, NormInf}) {
            SCOPED_TRACE(::testing::Message() << markers.roi().width << " x " << markers.roi().height << ", " << layout
                                              << (norm == NormL1 ? ", 4" : ", 8") << " neighbours");
            ASSERT_TRUE(samePixels(Definition(source, markers, MemberType::kChannels, norm).run(),
                                   MemberType::segment(source, markers, norm, 0, layout)));
        }
    }
};
using Members = ::testing::Types<Member<&vekiSegmentGradient_8u_C1IR, &vekiSegmentGradientGetBufferSize_8u_C1R, 1>,
                                 Member<&vekiSegmentGradient_8u_C3IR, &vekiSegmentGradientGetBufferSize_8u_C3R, 3>>;
TYPED_TEST_SUITE(GradientSegmentation, Members);

TYPED_TEST(GradientSegmentation, MatchesItsDefinition) {
    std::vector<RoiSize> regions = smallRegions();
    for (const RoiSize& roi : {RoiSize{1, 40}, RoiSize{1, 400}, RoiSize{400, 1}, RoiSize{2, 33}, RoiSize{2, 300},
                               RoiSize{300, 2}, RoiSize{3, 120}, RoiSize{67, 61}, RoiSize{131, 40}})
        regions.push_back(roi);
    uint32_t seed = 0;
    for (const RoiSize& roi : regions)
        for (const Layout& layout : kLayouts) {
            ++seed;
            const uint32_t levels = std::array{1u, 3u, 20u, 256u}[seed % 4], every = seed % 8 < 4 ? 4 : 40;
            this->check(TypeParam::colours(roi, layout, seed, levels),
                        segments::seeds<uint8_t>(roi, layout, ~seed, every), layout);
            this->check(TypeParam::colours(roi, layout, seed, 256), Image::random(roi, layout, ~seed), layout);
            ASSERT_FALSE(this->HasFailure());
        }
    const Layout &padded = kLayouts[2], &other = kLayouts[4];
    this->check(TypeParam::colours({77, 9}, padded, 1, 256), segments::seeds<uint8_t>({77, 9}, {}, 2, 30), other);
}

/** A field of tiles of one colour each, with noise, for each of which there is a marker. */
template <typename MemberType>
struct Tiles {
    static constexpr int kSide = 17;
    RoiSize roi;
    Image source, markers;

    explicit Tiles(RoiSize size)
        : roi(size),
          source(Image::filled(
              size, {},
              [noise = Random(1)](int element, int y) mutable {
                  const int x = element / MemberType::kChannels, channel = element % MemberType::kChannels;
                  const int colour = (tileAt(x, y) * (37 + 40 * channel)) % 200;
                  return uint8_t(colour + int(noise.below(9)));
              },
              MemberType::kChannels)),
          markers(Image::filled(
              size, {}, [](int x, int y) { return uint8_t(x % kSide == 9 && y % kSide == 9 ? labelAt(x, y) : 0); })) {}

    static int tileAt(int x, int y) { return 1 + x / kSide + 2 * (y / kSide); }
    static int labelAt(int x, int y) { return 1 + (x / kSide * 7 + y / kSide * 31) % 254; }
};

TYPED_TEST(GradientSegmentation, MatchesItsDefinitionOnTiles) {
    const Tiles<TypeParam> tiles({311, 187});
    EXPECT_TRUE(samePixels(Definition(tiles.source, tiles.markers, TypeParam::kChannels, NormInf).run(),
                           TypeParam::segment(tiles.source, tiles.markers, NormInf, 0, kLayouts[2])));
}

// Where tiles differ more than their noise, each becomes a segment. Only a pixel at its edge may be reached from
// another tile first, and have no neighbour of its own with a label when its turn comes.
TYPED_TEST(GradientSegmentation, FindsTiles) {
    constexpr int kSide = Tiles<TypeParam>::kSide;
    const Tiles<TypeParam> tiles({4 * kSide, 3 * kSide});
    const auto isInside = [](int place) { return place % kSide > 0 && place % kSide < kSide - 1; };
    for (const int32_t norm : {NormL1, NormInf}) {
        const auto result = TypeParam::segment(tiles.source, tiles.markers, norm, 0);
        segments::forPixels(tiles.roi, [&](int x, int y) {
            if (isInside(x) && isInside(y)) {
                ASSERT_EQ(Tiles<TypeParam>::labelAt(x, y), result.at(x, y)) << x << ", " << y;
            }
        });
    }
}

TYPED_TEST(GradientSegmentation, MarksBoundaries) {
    const RoiSize roi{93, 41};
    const auto source = TypeParam::colours(roi, {}, 1, 256);
    const auto markers = segments::seeds<uint8_t>(roi, {}, 2, 60);
    for (const int32_t norm : {NormL1, NormInf}) {
        const auto segmented = TypeParam::segment(source, markers, norm, 0);
        for (const int32_t flag :
             {kBoundaries4, kBoundaries8, kBoundaries4 | kBoundaries8, 1, 63, 256, 256 + 64, INT_MIN, -1, INT_MAX}) {
            const auto expected = segmented.copy({});
            if ((flag & kBoundaries4) != 0)
                segments::markBoundaries(expected, kReserved, NormL1);
            if ((flag & kBoundaries8) != 0)
                segments::markBoundaries(expected, kReserved, NormInf);
            EXPECT_TRUE(samePixels(expected, TypeParam::segment(source, markers, norm, flag))) << flag;
        }
    }
}

std::vector<int> segmentRow(const std::vector<int>& source, const std::vector<int>& markers) {
    using Grey = Member<&vekiSegmentGradient_8u_C1IR, &vekiSegmentGradientGetBufferSize_8u_C1R, 1>;
    const RoiSize roi{int32_t(source.size()), 1};
    const auto result =
        Grey::segment(Image::filled(roi, {}, [&](int x, int) { return uint8_t(source[size_t(x)]); }),
                      Image::filled(roi, {}, [&](int x, int) { return uint8_t(markers[size_t(x)]); }), NormInf, 0);
    return std::vector<int>(result.data(), result.data() + roi.width);
}

TEST(GradientSegmentation, MeetsAtEdges) {
    using Values = std::vector<int>;
    EXPECT_EQ((Values{1, 1, 1, 2, 2, 2}), segmentRow({10, 12, 14, 50, 52, 54}, {1, 0, 0, 0, 0, 2}));
    // The pixel between two labels that differ as much from it gets the first one.
    EXPECT_EQ((Values{1, 1, 2}), segmentRow({10, 20, 30}, {1, 0, 2}));
    EXPECT_EQ((Values{1, 2, 2}), segmentRow({10, 21, 30}, {1, 0, 2}));
    // The largest difference still joins pixels; reserved ones keep them apart.
    EXPECT_EQ((Values{1, 1, 1}), segmentRow({0, 255, 0}, {1, 0, 0}));
    EXPECT_EQ((Values{1, 1, 255, 0}), segmentRow({5, 5, 5, 5}, {1, 0, 255, 0}));
    EXPECT_EQ((Values{0, 0, 255, 0}), segmentRow({5, 5, 5, 5}, {0, 0, 255, 0}));
    EXPECT_EQ((Values{254, 254}), segmentRow({9, 5}, {0, 254}));
    EXPECT_EQ((Values{7}), segmentRow({9}, {7}));
}

TYPED_TEST(GradientSegmentation, HasABufferOfTheDocumentedSize) {
    EXPECT_EQ(13 + 103, segments::bufferSize<TypeParam::kQuery>({1, 1}));
    EXPECT_EQ(13 * 640 * 480 + 103, segments::bufferSize<TypeParam::kQuery>({640, 480}));
    EXPECT_EQ(13 * 165191041 + 103, segments::bufferSize<TypeParam::kQuery>({165191041, 1}));

    int32_t size = -1;
    for (const RoiSize& roi :
         {RoiSize{165191042, 1}, RoiSize{1, 165191042}, RoiSize{12853, 12853}, RoiSize{INT_MAX, 1200000000}})
        EXPECT_EQ(StatusSizeError, TypeParam::kQuery(roi, &size));
    EXPECT_EQ(-1, size);
}

const exports::FamilyFaults kFaults("vekiSegmentGradient",
                                    {{"norm", StatusBadArgument, {int32_t{NormL2}, 3, -1, INT_MAX, INT_MIN}}});

}  // namespace
