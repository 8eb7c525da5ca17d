// Windows of pixels, and the pixel of a window that it is placed by.
#pragma once

#include <algorithm>

#include "input.h"
#include "vekcv.h"

namespace fuzz {

/** Mostly small; sometimes long in one direction, so that it reaches beyond images on both sides. */
inline RoiSize drawWindow(Input& input) {
    const auto length = [&](uint32_t most) { return 1 + static_cast<int32_t>(input.below(most)); };
    RoiSize window{length(12), length(12)};
    if (!input.oneIn(8))
        return window;
    if (input.oneIn(2))
        window.height = length(70);
    else
        window.width = length(input.oneIn(3) ? 256 : 70);
    return window;
}

/** In the window, often at its ends. */
inline ImagePoint drawAnchor(Input& input, RoiSize window) {
    const auto place = [&](int32_t length) {
        const int32_t last = std::max(length, 1) - 1;
        const uint32_t kind = input.below(4);
        return kind == 0 ? 0 : kind == 1 ? last : static_cast<int32_t>(input.below(static_cast<uint32_t>(last) + 1));
    };
    return {place(window.width), place(window.height)};
}

}  // namespace fuzz
