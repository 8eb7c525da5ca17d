// The Gaussian filter against its definition, in the documented order of operations.
#include <gtest/gtest.h>

#include <algorithm>

#include "arguments.h"
#include "border.h"
#include "regions.h"
#include "test/exports/faults.h"
#include "test_image.h"
#include "thread_count.h"

namespace {

std::vector<float> tapsOf(int kernelSize, float sigma) {
    std::vector<float> taps;
    float sum = 0;
    for (int i = 0; i < kernelSize; ++i) {
        const auto t = float(i - kernelSize / 2);
        taps.push_back(float(std::exp(double(-(t * t) / ((sigma + sigma) * sigma)))));
        sum += taps.back();
    }
    for (float& tap : taps)
        tap /= sum;
    return taps;
}

/** at(k) gives the pixel at a distance from the middle. */
template <typename At>
float correlate(const std::vector<float>& taps, At at) {
    const int reach = int(taps.size()) / 2;
    float sum = at(0) * taps[size_t(reach)];
    for (int k = 1; k <= reach; ++k)
        sum += (at(-k) + at(k)) * taps[size_t(reach + k)];
    return sum;
}

int32_t bufferSize(RoiSize roi, int kernelSize) {
    int32_t size = -1;
    EXPECT_EQ(StatusOk, vekiFilterGaussGetBufferSize_32f_C1R(roi, kernelSize, &size));
    return size;
}

TestImage<float> randomSource(RoiSize roi, Layout layout) {
    return TestImage<float>::filled(roi, layout,
                                    [random = Random(1)](int, int) mutable { return random.summand<float>(); });
}

constexpr float kBorderValue = 77.5f;

TestImage<float> expectedFrom(const TestImage<float>& source, int kernelSize, float sigma, int borderType) {
    const RoiSize roi = source.roi();
    const int reach = kernelSize / 2;
    const std::vector<float> taps = tapsOf(kernelSize, sigma);
    // The filtered rows, from `reach` rows above to as many below.
    const auto rows = TestImage<float>::filled({roi.width, roi.height + 2 * reach}, {}, [&](int x, int y) {
        const int row = borderPixel(borderType & 15, y - reach, roi.height);
        return correlate(taps, [&](int k) {
            const int column = borderPixel(borderType & 15, x + k, roi.width);
            return row < 0 || column < 0 ? kBorderValue : source.at(column, row);
        });
    });
    return TestImage<float>::filled(
        roi, {}, [&](int x, int y) { return correlate(taps, [&](int k) { return rows.at(x, y + reach + k); }); });
}

void check(RoiSize roi, Layout layout, int kernelSize, float sigma, int borderType) {
    SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layout << ", taps " << kernelSize
                                      << ", border " << borderType);
    const TestImage<float> source = randomSource(roi, layout), out(roi, layout);
    const auto buffer = workBuffer(bufferSize(roi, kernelSize), layout);
    ASSERT_EQ(StatusOk, callWith(vekiFilterGaussBorder_32f_C1R, source, out, roi, kernelSize, sigma, borderType,
                                 kBorderValue, buffer.data()));
    ASSERT_TRUE(samePixels(expectedFrom(source, kernelSize, sigma, borderType), out));
    ASSERT_TRUE(buffer.guardsIntact());
}

TEST(Gauss, MatchesItsDefinition) {
    int border = 0;
    for (const int kernelSize : {3, 5, 9})
        for (const RoiSize& roi : smallRegions())
            for (const Layout& layout : kLayouts)
                check(roi, layout, kernelSize, 0.4f * float(kernelSize / 2), border++ % 5);
}

// Kernels larger than the image, whose borders are reflected again and again.
TEST(Gauss, TakesAnyOddKernel) {
    for (int rule = 0; rule <= 4; ++rule)
        for (const int kernelSize : {3, 7, 31, 63, 101})
            for (const RoiSize roi : {RoiSize{1, 1}, RoiSize{2, 5}, RoiSize{67, 3}, RoiSize{70, 41}})
                check(roi, {}, kernelSize, 0.2f * float(kernelSize), rule);
    check({70, 41}, {}, 9, 1.5f, BorderReplicate | BorderInMemoryTop | BorderInMemoryBottom);
    check({300, 300}, {}, 9, 1.5f, BorderReflect);
}

// Threads share groups of columns, of which the last one may be narrower, and the buffer whatever its size is.
TEST(Gauss, SharesColumnsAmongThreads) {
    forThreadCounts([](int) {
        int rule = 0;
        for (const RoiSize roi :
             {RoiSize{256, 256}, RoiSize{323, 203}, RoiSize{65536, 1}, RoiSize{65, 1009}, RoiSize{1, 65536}}) {
            check(roi, kLayouts[size_t(rule) % std::size(kLayouts)], 3 + 2 * (rule % 4), 2, rule % 5);
            ++rule;
        }
        check({1025, 64}, {}, 41, 2, BorderReflect);
    });
}

// A tiny sigma leaves the image as it is; a huge one gives the mean.
TEST(Gauss, TakesAnySigma) {
    for (const float sigma : {1e-3f, 1e-18f, 1e9f, -1.f})
        check({37, 5}, {}, 5, sigma, BorderReplicate);
    const float pixels[3] = {1, 5, 3};
    float out[3];
    std::vector<uint8_t> buffer(size_t(bufferSize({3, 1}, 3)));
    ASSERT_EQ(StatusOk,
              vekiFilterGaussBorder_32f_C1R(pixels, 12, out, 12, {3, 1}, 3, 1e-3f, BorderReplicate, 0, buffer.data()));
    EXPECT_TRUE(std::equal(pixels, pixels + 3, out));
}

const exports::FamilyFaults kFaults("vekiFilterGauss",
                                    {{"kernelSize", StatusBadArgument, {-3, 0, 1, 2, 4}},
                                     {"borderType", StatusBadArgument, {5, 6, -1, 0x41, 0x81, 0x100}}},
                                    exports::Steps::kAny);

TEST(Gauss, RefusesBuffersThatAreTooLarge) {
    int32_t size = 77;
    const auto query = [&](int32_t width, int32_t kernelSize) {
        return vekiFilterGaussGetBufferSize_32f_C1R({width, 4}, kernelSize, &size);
    };
    EXPECT_EQ(StatusSizeError, query(INT32_MAX, 5));
    EXPECT_EQ(StatusSizeError, query(9, 1000000001));
    EXPECT_EQ(StatusSizeError, query(9, INT32_MAX));
    EXPECT_EQ(StatusBadArgument, query(INT32_MAX, 4));
    EXPECT_EQ(77, size);
}

}  // namespace
