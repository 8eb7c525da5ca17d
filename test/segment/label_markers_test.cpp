// Labels of connected regions against their definition.
#include <gtest/gtest.h>

#include <climits>
#include <queue>

#include "regions.h"
#include "test/exports/faults.h"

namespace {

template <auto kLabel, auto kSize>
struct Form;
template <typename T, auto kSizeOf,
          Status (*kLabelIn)(T*, int32_t, RoiSize, int32_t, int32_t, int32_t, int32_t*, uint8_t*)>
struct Form<kLabelIn, kSizeOf> {
    using Pixel = T;
    static constexpr auto kLabel = kLabelIn;
    static constexpr auto kSize = kSizeOf;
};

template <typename Form>
class LabelMarkers : public ::testing::Test {
  protected:
    using Pixel = typename Form::Pixel;

    static int32_t label(const TestImage<Pixel>& image, int32_t least, int32_t most, int32_t norm) {
        int32_t bytes = 0, count = -1;
        EXPECT_EQ(StatusOk, Form::kSize(image.roi(), &bytes));
        const auto buffer = workBuffer(bytes);
        EXPECT_EQ(StatusOk,
                  Form::kLabel(image.data(), image.step(), image.roi(), least, most, norm, &count, buffer.data()));
        EXPECT_TRUE(buffer.guardsIntact());
        return count;
    }

    /** The labels that an image must get, and their number. */
    static std::pair<TestImage<Pixel>, int32_t> labelled(const TestImage<Pixel>& image, int32_t least, int32_t most,
                                                         int32_t norm) {
        auto result = TestImage<Pixel>::constant(image.roi(), 0);
        const int width = image.roi().width, height = image.roi().height;
        int32_t count = 0;
        for (int top = 0; top < height; ++top)
            for (int left = 0; left < width; ++left) {
                if (image.at(left, top) == 0 || result.at(left, top) != 0)
                    continue;
                const auto value = Pixel(least + count++ % (most - least + 1));
                std::queue<ImagePoint> waiting;
                result.at(left, top) = value;
                for (waiting.push({left, top}); !waiting.empty(); waiting.pop())
                    for (int dy = -1; dy <= 1; ++dy)
                        for (int dx = -1; dx <= 1; ++dx) {
                            const int x = waiting.front().x + dx, y = waiting.front().y + dy;
                            if ((norm == NormL1 && dx != 0 && dy != 0) || x < 0 || y < 0 || x >= width || y >= height)
                                continue;
                            if (image.at(x, y) != 0 && result.at(x, y) == 0) {
                                result.at(x, y) = value;
                                waiting.push({x, y});
                            }
                        }
            }
        return {result, count};
    }

    static void check(const TestImage<Pixel>& image, int32_t least, int32_t most) {
        for (const int32_t norm : {NormInf, NormL1}) {
            const auto [expected, count] = labelled(image, least, most, norm);
            const auto actual = image.copy({Layout::kBeforeGuard, 0, image.roi().width % 3});
            ASSERT_EQ(count, label(actual, least, most, norm));
            ASSERT_TRUE(samePixels(expected, actual)) << "norm " << norm;
        }
    }
};
using Forms = ::testing::Types<Form<vekiLabelMarkers_8u_C1IR, vekiLabelMarkersGetBufferSize_8u_C1R>,
                               Form<vekiLabelMarkers_16u_C1IR, vekiLabelMarkersGetBufferSize_16u_C1R>>;
TYPED_TEST_SUITE(LabelMarkers, Forms);

// Any values, so that some pixels look as if they had a label already; in blobs of some pixels.
TYPED_TEST(LabelMarkers, MatchTheirDefinition) {
    using T = typename TypeParam::Pixel;
    Random random(3);
    for (const RoiSize& small : smallRegions())
        for (const Layout& layout : kLayouts) {
            const unsigned share = 1 + random.below(4);
            T value = 0;
            const auto image = TestImage<T>::filled({small.width, small.height * 3}, layout, [&](int, int) {
                if (random.below(3) == 0)
                    value = random.below(share) == 0 ? T(0) : random.value<T>();
                return value;
            });
            this->check(image, 1, std::numeric_limits<T>::max() - 1);
            this->check(image, 7, 9);
            if (this->HasFatalFailure())
                return;
        }
}

TYPED_TEST(LabelMarkers, BeginAgain) {
    using T = typename TypeParam::Pixel;
    const auto points =
        TestImage<T>::filled({701, 300}, {}, [](int x, int y) { return T(x % 2 == 0 && y % 2 == 0 ? 255 : 0); });
    for (const int32_t most : {1, 2, 200, 254})
        this->check(points, 1, most);
    EXPECT_EQ(0, this->label(TestImage<T>::constant({20, 20}, 0), 1, 1, NormL1));
}

TEST(LabelMarkers16u, AreMoreThanEightBitsHold) {
    const auto points = TestImage<uint16_t>::filled(
        {600, 600}, {}, [](int x, int y) { return uint16_t(x % 2 == 0 && y % 2 == 0 ? 1 : 0); });
    int32_t count = 0;
    const auto buffer = workBuffer(24 * 600 * 600 / 4 + 32);
    ASSERT_EQ(StatusOk, vekiLabelMarkers_16u_C1IR(points.data(), points.step(), points.roi(), 1, 65534, NormInf, &count,
                                                  buffer.data()));
    EXPECT_EQ(90000, count);
    EXPECT_EQ(65534, points.at(65533 % 300 * 2, 65533 / 300 * 2));
    EXPECT_EQ(1, points.at(65534 % 300 * 2, 65534 / 300 * 2));
}

const exports::FamilyFaults kFaults8u("vekiLabelMarkers_8u", {{"minLabel", StatusBadArgument, {0, -1, 255, INT_MAX}},
                                                              {"maxLabel", StatusBadArgument, {255, 0, INT_MAX}},
                                                              {"norm", StatusBadArgument, {-1, 2, 3}}});
const exports::FamilyFaults kFaults16u("vekiLabelMarkers_16u",
                                       {{"minLabel", StatusBadArgument, {0, -1, 65535, INT_MAX}},
                                        {"maxLabel", StatusBadArgument, {65535, 0, INT_MAX}},
                                        {"norm", StatusBadArgument, {-1, 2, 3}}});

}  // namespace
