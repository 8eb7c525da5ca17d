// The sizes of the levels of pyramids, by their definition.
#pragma once

#include <algorithm>
#include <cstdint>

#include "vekcv.h"

namespace pyramid {

struct Range {
    int64_t least, most;
};

/** The lengths that a length may be expanded to. */
inline Range expanded(int64_t length, float rate) {
    const float least = float(length - 1) * rate, most = float(length) * rate;
    return {length == 1 ? 1 : std::max(length + 1, int64_t(least) + 1), std::max(length + 1, int64_t(most))};
}

/** The size that a size may be expanded from, found one step after the other. */
inline RoiSize reduced(RoiSize size, float rate) {
    int64_t across = std::max<int64_t>(1, int64_t(float(size.width) / rate + 0.5f));
    int64_t down = std::max<int64_t>(1, int64_t(float(size.height) / rate + 0.5f));
    for (bool isSettled = false; !isSettled;) {
        const Range width = expanded(across, rate), height = expanded(down, rate);
        const int stepAcross = size.width < width.least ? -1 : size.width > width.most ? 1 : 0;
        const int stepDown = size.height < height.least ? -1 : size.height > height.most ? 1 : 0;
        across += stepAcross;
        down += stepDown;
        isSettled = stepAcross == 0 && stepDown == 0;
    }
    return {int32_t(across), int32_t(down)};
}

}  // namespace pyramid
