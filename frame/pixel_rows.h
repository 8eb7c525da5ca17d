#pragma once

#include "image.h"

namespace VEKCV_VARIANT {

/** The rows of a stripe. Where all images are packed, they count as one long row. */
struct PixelRows {
    int32_t first, end;
    ptrdiff_t width;

    template <typename... Images>
    static PixelRows of(RoiSize roi, int32_t first, int32_t rows, const Images&... images) {
        const int64_t pixels = int64_t{roi.width} * rows;
        const bool packed = ((images.step == int64_t{roi.width} * Images::kPixelBytes) && ...) && pixels <= INT32_MAX;
        return packed ? PixelRows{first, first + 1, static_cast<ptrdiff_t>(pixels)}
                      : PixelRows{first, first + rows, roi.width};
    }
};

}  // namespace VEKCV_VARIANT
