#pragma once

#include <cstddef>

namespace VEKCV_VARIANT {

/** The offsets of the four or eight neighbours of a pixel, in raster order; `stride` leads from row to row. */
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
