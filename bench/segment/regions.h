// Pictures of the segmentation benchmarks.
#pragma once

#include <random>
#include <vector>

#include "row.h"

namespace bench {

/** Clouds of all grey levels from 0 to 255, with some noise: random values every 24 pixels, and slopes in between. */
inline std::vector<uint8_t> clouds(RoiSize size) {
    constexpr int32_t kDistance = 24, kNoise = 6;
    std::mt19937 random(1);
    const int32_t columns = size.width / kDistance + 2, rows = size.height / kDistance + 2;
    std::vector<int32_t> knots(static_cast<size_t>(columns) * static_cast<size_t>(rows));
    for (int32_t& knot : knots)
        knot = static_cast<int32_t>(random() % (256 - kNoise));
    std::vector<uint8_t> picture;
    for (int32_t y = 0; y < size.height; ++y)
        for (int32_t x = 0; x < size.width; ++x) {
            const int32_t* const knot = knots.data() + ptrdiff_t{y / kDistance} * columns + x / kDistance;
            const int32_t right = x % kDistance, below = y % kDistance;
            const int32_t upper = knot[0] * (kDistance - right) + knot[1] * right;
            const int32_t lower = knot[columns] * (kDistance - right) + knot[columns + 1] * right;
            const int32_t value = (upper * (kDistance - below) + lower * below) / (kDistance * kDistance);
            picture.push_back(static_cast<uint8_t>(value + static_cast<int32_t>(random() % kNoise)));
        }
    return picture;
}

}  // namespace bench
