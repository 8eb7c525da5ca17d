#pragma once

#include "vekcv.h"

/** Which pixel of a row of `width` stands for that at x, found step by step; -1 for the constant. */
inline int borderPixel(int rule, int x, int width) {
    if (rule == BorderConstant)
        return x >= 0 && x < width ? x : -1;
    if (width == 1)
        return 0;
    while (x < 0 || x >= width) {
        const bool before = x < 0;
        if (rule == BorderReplicate)
            x = before ? 0 : width - 1;
        else if (rule == BorderPeriodic)
            x += before ? width : -width;
        else if (rule == BorderReflect)
            x = before ? -x : 2 * (width - 1) - x;
        else  // BorderReflectEdge
            x = before ? -1 - x : 2 * width - 1 - x;
    }
    return x;
}
