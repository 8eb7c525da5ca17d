// The scan-line fill: runs of pixels, and for each the runs above and below that are reached from there.
// After Smith, "Tint Fill" (1979).
#pragma once

#include "fill_stack.h"
#include "simd.h"

namespace VEKCV_VARIANT {

/** What was filled: how many pixels, and the outermost of them. */
struct FilledRegion {
    int64_t area;
    int32_t left, top, right, bottom;
};

/**
 * Fills what is reached from a pixel. `reach` is 1 where pixels that touch at a corner are neighbours, else 0. The fill
 * tells which runs there are:
 *
 * - firstRun(seed) gives that of a pixel
 * - forRunsBeside(run, y, first, last, take) calls take(left, right) for those in a row above or below a run
 * - push(stack, run) and refill(stack) when the stack has become empty
 * - leave(run) when all runs beside one have been found
 */
template <typename Fill>
FilledRegion walk(Fill fill, RoiSize roi, ImagePoint seed, int32_t reach, RunStack stack) {
    const int32_t lastColumn = roi.width - 1;
    Run run = fill.firstRun(seed);
    // Numbers of their own stay in registers; what is written to the image might change a record.
    int64_t area = int64_t{run.right} - run.left + 1;
    int32_t left = run.left, right = run.right, top = run.y, bottom = run.y;
    if (roi.height == 1)
        fill.leave(run);
    else
        fill.push(stack, run);
    do
        while (!stack.isEmpty()) {
            run = stack.pop();
            left = HWY_MIN(left, run.left);
            right = HWY_MAX(right, run.right);
            top = HWY_MIN(top, run.y);
            bottom = HWY_MAX(bottom, run.y);
            const int32_t first = HWY_MAX(run.left - reach, 0), last = HWY_MIN(run.right + reach, lastColumn);
            // Away from the parent first.
            for (int32_t direction = -run.direction;; direction = run.direction) {
                const int32_t y = run.y + direction;
                if (static_cast<uint32_t>(y) < static_cast<uint32_t>(roi.height))
                    fill.forRunsBeside(
                        run, y, first, last, [&](int32_t x0, int32_t x1) __attribute__((always_inline)) {
                            area += int64_t{x1} - x0 + 1;
                            const bool isCovered =
                                HWY_MAX(x0 - reach, 0) >= run.left && HWY_MIN(x1 + reach, lastColumn) <= run.right;
                            fill.push(stack, {y, x0, x1, -direction, isCovered});
                        });
                if (direction == run.direction || run.isCovered)
                    break;
            }
            fill.leave(run);
        }
    while (fill.refill(stack));
    return {area, left, top, right, bottom};
}

}  // namespace VEKCV_VARIANT
