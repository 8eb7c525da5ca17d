#pragma once

#include <cstddef>

namespace VEKCV_VARIANT {

/** Where the four or eight neighbours of a pixel lie, in raster order, in an image with `stride` pixels from row to
 * row. */
template <bool kAllNeighbours>
struct Neighbours {
    ptrdiff_t offsets[kAllNeighbours ? 8 : 4];

    static Neighbours of(ptrdiff_t stride) {
        if constexpr (kAllNeighbours)
            return {{-stride - 1, -stride, -stride + 1, -1, 1, stride - 1, stride, stride + 1}};
        else
            return {{-stride, -1, 1, stride}};
    }
};

}  // namespace VEKCV_VARIANT
