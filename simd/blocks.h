// Vectors of blocks of 16 bytes that lie at any distance from each other. Of three channels a block may hold whole
// pixels, and a few elements more.
#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** Elements of a block. */
template <typename T>
constexpr ptrdiff_t kBlockElements = 16 / sizeof(T);

/** Blocks of a vector. */
template <typename D>
constexpr ptrdiff_t kBlocks = hn::MaxLanes(D()) / kBlockElements<hn::TFromD<D>>;

/** Each block begins `stride` elements behind the one before. */
template <typename D>
HWY_INLINE hn::Vec<D> loadBlocks(D d, const hn::TFromD<D>* from, ptrdiff_t stride) {
    if constexpr (kBlocks<D> == 1) {
        return hn::LoadU(d, from);
    } else {
        const hn::Half<D> half;
        return hn::Combine(d, loadBlocks(half, from + kBlocks<D> / 2 * stride, stride), loadBlocks(half, from, stride));
    }
}

/** Where blocks overlap, the elements are those of the later one. */
template <typename D>
HWY_INLINE void storeBlocks(D d, hn::Vec<D> v, hn::TFromD<D>* out, ptrdiff_t stride) {
    if constexpr (kBlocks<D> == 1) {
        hn::StoreU(v, d, out);
    } else {
        const hn::Half<D> half;
        storeBlocks(half, hn::LowerHalf(half, v), out, stride);
        storeBlocks(half, hn::UpperHalf(half, v), out + kBlocks<D> / 2 * stride, stride);
    }
}

}  // namespace VEKCV_VARIANT
