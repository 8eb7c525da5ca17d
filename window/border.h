// Which pixels stand for those beside a row.
#pragma once

#include "vekcv.h"

namespace VEKCV_VARIANT {

constexpr bool isBorderRule(int32_t rule) {
    return rule >= BorderConstant && rule <= BorderReflectEdge;
}

/**
 * The pixel of a row of `width` pixels that stands for the one at x, which may lie beside the row at any distance; -1
 * for the constant. Where the border is wider than the row, the reflecting rules go back and forth, and the periodic
 * one repeats the row. `rule` is one of the five of isBorderRule.
 */
constexpr int32_t borderIndex(BorderType rule, int64_t x, int32_t width) {
    if (x >= 0 && x < width)
        return static_cast<int32_t>(x);
    // The position of x in a pattern of `period` pixels that repeats itself.
    const auto phase = [x](int64_t period) { return (x % period + period) % period; };
    const int64_t end = width;
    switch (rule) {
        case BorderReplicate:
            return x < 0 ? 0 : width - 1;
        case BorderPeriodic:
            return static_cast<int32_t>(phase(end));
        case BorderReflect: {
            const int64_t back = 2 * (end - 1), position = back == 0 ? 0 : phase(back);
            return static_cast<int32_t>(position < end ? position : back - position);
        }
        case BorderReflectEdge: {
            const int64_t position = phase(2 * end);
            return static_cast<int32_t>(position < end ? position : 2 * end - 1 - position);
        }
        default:
            return -1;
    }
}

}  // namespace VEKCV_VARIANT
