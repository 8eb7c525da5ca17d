// Sources of the tests of distance transforms.
#pragma once

#include <vector>

#include "regions.h"

namespace distance {

/** An image in which one pixel of `period` is 0 on average, and every other one any value but 0. */
inline TestImage<uint8_t> zerosAmong(RoiSize roi, Layout layout, uint32_t period, uint32_t seed) {
    Random random(seed);
    return TestImage<uint8_t>::filled(roi, layout, [&](int, int) {
        const bool isZero = random.below(period) == 0;
        return isZero ? uint8_t{0} : uint8_t(1 + random.below(255));
    });
}

inline TestImage<uint8_t> withoutZero(RoiSize roi) {
    return TestImage<uint8_t>::constant(roi, uint8_t{128});
}

inline TestImage<uint8_t> withOneZero(RoiSize roi, int x, int y) {
    auto image = withoutZero(roi);
    image.at(x, y) = 0;
    return image;
}

/** Beside small regions, those that are high, and those with several vectors and blocks of rows in both directions. */
inline std::vector<RoiSize> regions() {
    std::vector<RoiSize> all = smallRegions();
    for (const RoiSize& roi : {RoiSize{1, 40},
                               {2, 33},
                               {3, 2},
                               {4, 4},
                               {5, 5},
                               {3, 70},
                               {15, 21},
                               {16, 16},
                               {17, 17},
                               {67, 61},
                               {131, 31},
                               {150, 47}})
        all.push_back(roi);
    return all;
}

/** check(roi, layout) for all of them. */
template <typename Check>
void forRegions(Check check) {
    for (const RoiSize& roi : regions())
        for (const Layout& layout : kLayouts)
            if (failsFor(roi, layout, check))
                return;
}

}  // namespace distance
