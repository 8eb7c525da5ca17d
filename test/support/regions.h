#pragma once

#include <vector>

#include "vekcv.h"

/** Widths on both sides of every vector width from a few lanes to 64, each in one row and in three. */
inline std::vector<RoiSize> smallRegions() {
    std::vector<RoiSize> regions;
    for (int32_t width : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 47, 63, 64, 65, 127, 128, 129, 200})
        for (int32_t height : {1, 3})
            regions.push_back({width, height});
    return regions;
}

/** Regions on both sides of a number of pixels from which on threads are used, and one that no team divides evenly. */
inline std::vector<RoiSize> regionsAround(int32_t pixels) {
    const int32_t width = 512, height = pixels / width;
    return {{width, height - 1}, {width, height}, {width + 9, height + 1}};
}
