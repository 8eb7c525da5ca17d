// Pictures of the feature benchmarks.
#pragma once

#include <algorithm>
#include <random>
#include <vector>

#include "row.h"

namespace bench {

/** A scene of overlapping bright and dark rectangles of all sizes, on a slope with some noise; repeated as tiles. */
template <typename T>
void paintScene(const Operand& picture) {
    constexpr int32_t kTile = 512, kRectangles = 300;
    std::mt19937 random(1);
    std::vector<T> tile(kTile * kTile, T{0});
    for (int32_t i = 0; i < kRectangles; ++i) {
        const auto below = [&](int32_t end) { return static_cast<int32_t>(random() % static_cast<unsigned>(end)); };
        const int32_t side = 4 + 100 * below(100) / (1 + below(100)) % 200, left = below(kTile), top = below(kTile);
        const int32_t grey = below(200), slope = below(5) - 2;
        for (int32_t y = top; y < std::min(top + side, kTile); ++y)
            for (int32_t x = left; x < std::min(left + side, kTile); ++x)
                tile[static_cast<size_t>(y * kTile + x)] =
                    static_cast<T>(std::clamp(grey + slope * (x - left + y - top) / 4 + below(9), 0, 255));
    }
    T* const pixels = static_cast<T*>(picture.memory.get());
    for (ptrdiff_t y = 0; y < picture.size.height; ++y)
        for (ptrdiff_t x = 0; x < picture.size.width; x += kTile)
            std::copy_n(tile.data() + y % kTile * kTile, std::min<ptrdiff_t>(kTile, picture.size.width - x),
                        pixels + y * picture.size.width + x);
}

}  // namespace bench
