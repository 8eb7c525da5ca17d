#pragma once

#include <vector>

#include "test_image.h"
#include "thread_count.h"

/** Widths on both sides of every vector width from a few lanes to 64, each in one row and in three. */
inline std::vector<RoiSize> smallRegions() {
    std::vector<RoiSize> regions;
    for (int32_t width : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 47, 63, 64, 65, 127, 128, 129, 200})
        for (int32_t height : {1, 3})
            regions.push_back({width, height});
    return regions;
}

/** Calls check(roi, layouts) with both in the trace; gives whether it failed. */
template <typename Check>
bool failsFor(RoiSize roi, const Layouts& layouts, Check& check) {
    SCOPED_TRACE(::testing::Message() << roi.width << " x " << roi.height << ", " << layouts);
    check(roi, layouts);
    return ::testing::Test::HasFatalFailure();
}

/** check(roi, layouts) for small images of all layouts, and for packed ones beside one whose rows are padded. */
template <typename Check>
void forSmallImages(Check check) {
    for (const RoiSize& roi : smallRegions())
        for (const Layout& layout : kLayouts)
            if (failsFor(roi, layout, check))
                return;
    for (const int32_t width : {7, 33, 129})
        for (size_t image = 0; image < 4; ++image)
            if (failsFor({width, 3}, {{}, image, {Layout::kBeforeGuard, 0, 3}}, check))
                return;
}

/** Images of this width and height have at least `pixels` pixels, and rows that 2 or 3 threads cannot share evenly. */
constexpr int32_t kLargeWidth = 521;
constexpr int32_t largeHeight(int32_t pixels) {
    return pixels / 512 + 5;
}

/** check(roi, layouts) with 1, 2 and 3 threads, for images that are large enough to be shared: pixels(threads). */
template <typename Pixels, typename Check>
void forLargeImages(Pixels pixels, Check check) {
    forThreadCounts([&](int threads) {
        failsFor({kLargeWidth, largeHeight(pixels(threads))}, kLargeLayouts[threads % 2], check);
    });
}

/** The least numbers of pixels that threads share in most families. */
inline constexpr auto kPixels = [](int) { return 262144; };
template <int32_t kCount>
inline constexpr auto kPixelsPerThread = [](int threads) { return kCount * threads; };
