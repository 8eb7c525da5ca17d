// Samples along lines against their definition.
#include <gtest/gtest.h>

#include <vector>

#include "test/exports/faults.h"
#include "test_image.h"

namespace {

template <typename T, int kChannels, auto kExport>
struct SampleLine {
    using Pixel = T;
    static constexpr int channels = kChannels;
    static constexpr auto call = kExport;
};

template <typename T>
class SampleLineFamily : public ::testing::Test {};
using Members =
    ::testing::Types<SampleLine<uint8_t, 1, &vekiSampleLine_8u_C1R>, SampleLine<uint8_t, 3, &vekiSampleLine_8u_C3R>,
                     SampleLine<uint16_t, 1, &vekiSampleLine_16u_C1R>, SampleLine<uint16_t, 3, &vekiSampleLine_16u_C3R>,
                     SampleLine<float, 1, &vekiSampleLine_32f_C1R>, SampleLine<float, 3, &vekiSampleLine_32f_C3R>>;
TYPED_TEST_SUITE(SampleLineFamily, Members);

/** The line rounded to pixels, halves towards the longer direction through the start. */
std::vector<ImagePoint> reference(ImagePoint start, ImagePoint end) {
    const int64_t dx = end.x - start.x, dy = end.y - start.y;
    const bool isSteep = std::abs(dx) <= std::abs(dy);
    const int64_t major = isSteep ? dy : dx, minor = isSteep ? dx : dy, length = std::abs(major);
    std::vector<ImagePoint> points;
    for (int64_t k = 0; k <= length; ++k) {
        int64_t across = 0;  // the least number of pixels that leaves no more than half of one
        while (2 * length * across + length < 2 * std::abs(minor) * k)
            ++across;
        const auto along = int32_t(major < 0 ? -k : k), aside = int32_t(minor < 0 ? -across : across);
        points.push_back(isSteep ? ImagePoint{start.x + aside, start.y + along}
                                 : ImagePoint{start.x + along, start.y + aside});
    }
    return points;
}

template <typename Member, typename T = typename Member::Pixel>
void check(const TestImage<T>& image, ImagePoint start, ImagePoint end, Layout layout) {
    const std::vector<ImagePoint> points = reference(start, end);
    const RoiSize samples{int32_t(points.size()), 1};
    const auto expected = TestImage<T>::filled(
        samples, {},
        [&](int i, int) {
            const ImagePoint point = points[size_t(i / Member::channels)];
            return image.at(point.x * Member::channels + i % Member::channels, point.y);
        },
        Member::channels);
    const TestImage<T> out(samples, layout, Member::channels);
    ASSERT_EQ(StatusOk, Member::call(image.data(), image.step(), image.roi(), out.data(), start, end));
    ASSERT_TRUE(samePixels(expected, out))
        << "from (" << start.x << ", " << start.y << ") to (" << end.x << ", " << end.y << "), " << layout;
}

TYPED_TEST(SampleLineFamily, MatchesItsDefinition) {
    const RoiSize roi{9, 7};
    const auto point = [](int i) { return ImagePoint{i % 9, i / 9}; };
    for (const Layout& layout : kLayouts) {
        const auto image = TestImage<typename TypeParam::Pixel>::random(roi, layout, 1, TypeParam::channels);
        for (int start = 0; start < 63; ++start)
            for (int end = 0; end < 63; ++end)
                check<TypeParam>(image, point(start), point(end), layout);
        EXPECT_TRUE(image.guardsIntact());
    }
}

TYPED_TEST(SampleLineFamily, TakesLongLines) {
    const auto sample = [](RoiSize roi, ImagePoint start, ImagePoint end) {
        const auto image = TestImage<typename TypeParam::Pixel>::random(roi, {}, 1, TypeParam::channels);
        check<TypeParam>(image, start, end, {});
        check<TypeParam>(image, end, start, {});
    };
    sample({1500, 400}, {0, 0}, {1499, 399});
    sample({1500, 400}, {0, 399}, {1499, 0});
    sample({300, 1100}, {299, 0}, {3, 1099});
    sample({70000, 3}, {0, 2}, {69999, 0});
    sample({2, 70000}, {1, 0}, {0, 69999});
}

TYPED_TEST(SampleLineFamily, TakesStepsThatAreNoWholeElements) {
    using T = typename TypeParam::Pixel;
    const RoiSize roi{11, 5};
    const auto image = TestImage<T>::random(roi, {}, 1, TypeParam::channels);
    const auto rowBytes = size_t(image.elements()) * sizeof(T), step = rowBytes + 1;
    std::vector<uint8_t> bytes(step * size_t(roi.height) + 16);
    T* const aligned = reinterpret_cast<T*>(bytes.data());
    for (int y = 0; y < roi.height; ++y)
        std::memcpy(bytes.data() + size_t(y) * step, &image.at(0, y), rowBytes);
    const TestImage<T> expected({11, 1}, {}, TypeParam::channels), out({11, 1}, {}, TypeParam::channels);
    for (int end = 0; end < roi.height; ++end) {
        ASSERT_EQ(StatusOk, TypeParam::call(image.data(), image.step(), roi, expected.data(), {0, 4}, {10, end}));
        ASSERT_EQ(StatusOk, TypeParam::call(aligned, int32_t(step), roi, out.data(), {0, 4}, {10, end}));
        EXPECT_TRUE(samePixels(expected, out));
    }
}

TEST(SampleLine, StaysOnTheLongerDirectionInTheMiddle) {
    const uint8_t image[] = {0, 1, 2, 3, 10, 11, 12, 13};
    uint8_t samples[4] = {};
    EXPECT_EQ(StatusOk, vekiSampleLine_8u_C1R(image, 4, {4, 2}, samples, {0, 0}, {3, 1}));
    EXPECT_EQ(0, samples[0]);
    EXPECT_EQ(1, samples[1]);
    EXPECT_EQ(12, samples[2]);
    EXPECT_EQ(13, samples[3]);
    EXPECT_EQ(StatusOk, vekiSampleLine_8u_C1R(image, 4, {4, 2}, samples, {2, 0}, {0, 1}));
    EXPECT_EQ(2, samples[0]);
    EXPECT_EQ(1, samples[1]);  // half a pixel down
    EXPECT_EQ(10, samples[2]);
    EXPECT_EQ(13, samples[3]);
}

// The arguments are for an image of 9 x 4 pixels.
const std::initializer_list<ImagePoint> kOutside = {{9, 0}, {-1, 0}, {0, 4}, {0, -1}, {INT32_MAX, 0}, {0, INT32_MIN}};
const exports::FamilyFaults kFaults("vekiSampleLine",
                                    {{"start", StatusOutOfRange, kOutside}, {"end", StatusOutOfRange, kOutside}},
                                    exports::Steps::kAny);

}  // namespace
