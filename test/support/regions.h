#pragma once

#include <vector>

#include "test_image.h"

/** Widths on both sides of every vector width from a few lanes to 64, each in one row and in three. */
inline std::vector<RoiSize> smallRegions() {
    std::vector<RoiSize> regions;
    for (int32_t width : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 47, 63, 64, 65, 127, 128, 129, 200})
        for (int32_t height : {1, 3})
            regions.push_back({width, height});
    return regions;
}

/** check(roi, layouts) for small images of all layouts, and for packed ones beside one whose rows are padded. */
template <typename Check>
void forSmallImages(Check check) {
    const auto isOver = [&](RoiSize roi, const Layouts& layouts) {
        check(roi, layouts);
        return ::testing::Test::HasFatalFailure();
    };
    for (const RoiSize& roi : smallRegions())
        for (const Layout& layout : kLayouts)
            if (isOver(roi, layout))
                return;
    for (const int32_t width : {7, 33, 129})
        for (size_t image = 0; image < 4; ++image)
            if (isOver({width, 3}, {{}, image, {Layout::kBeforeGuard, 0, 3}}))
                return;
}

/** Regions on both sides of a number of pixels from which on threads are used, and one that no team divides evenly. */
inline std::vector<RoiSize> regionsAround(int32_t pixels) {
    const int32_t width = 512, height = pixels / width;
    return {{width, height - 1}, {width, height}, {width + 9, height + 1}};
}
