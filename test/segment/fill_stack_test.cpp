// Gradient fills with a stack that is too small for their runs. With work buffers of the documented size no image is
// known for which it is.
#include <gtest/gtest.h>

#include "fill_gradient.h"
#include "fill_reference.h"

namespace {

using namespace vekcv_test;

TEST(FillStack, MayBeTooSmall) {
    const RoiSize roi{61, 47};
    for (const int32_t reach : {0, 1})
        for (uint32_t seed = 0; seed < 20; ++seed) {
            Random random(seed);
            const auto image = TestImage<uint8_t>::filled({roi.width, roi.height}, {Layout::kAfterGuard, 1, 3},
                                                          [&](int, int) { return uint8_t(10 * random.below(5)); });
            const ImagePoint start{int32_t(random.below(61)), int32_t(random.below(47))};
            const auto expected =
                fill_reference::Filler<uint8_t>(
                    image, 1, {fill_reference::Rule::kGradient, reach, start, {200}, {uint8_t(10)}, {uint8_t(10)}})
                    .run();
            std::vector<uint8_t> map(size_t(roi.width) * size_t(roi.height));
            for (const int64_t runs : {1, 2, 7}) {
                const auto copy = image.copy({});
                const auto memory = workBuffer(int32_t(12 * runs));
                FillByGradient<uint8_t, 1> fill({copy.data(), copy.step()}, roi, {{{10}}, {{10}}}, {{200}}, reach,
                                                map.data());
                const auto region = walk(fill, roi, start, reach, RunStack(memory.data(), 12 * runs));
                ASSERT_TRUE(samePixels(expected.image, copy)) << "reach " << reach << ", room for " << runs;
                EXPECT_TRUE(memory.guardsIntact());
                EXPECT_EQ(expected.component.area, double(region.area));
                EXPECT_EQ(expected.component.rect.width, region.right - region.left + 1);
                EXPECT_EQ(expected.component.rect.height, region.bottom - region.top + 1);
            }
        }
}

}  // namespace
