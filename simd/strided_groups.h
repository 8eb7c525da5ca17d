// Vectors of 128-bit groups that lie at any distance from each other in memory. Of three channels a group may hold
// whole pixels, and a few elements more.
#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** Elements of a 128-bit group. */
template <typename T>
constexpr ptrdiff_t kGroupElements = 16 / sizeof(T);

/** 128-bit groups of a vector. */
template <typename D>
constexpr ptrdiff_t kGroups = hn::MaxLanes(D()) / kGroupElements<hn::TFromD<D>>;

/** Each group begins `stride` elements behind the one before. */
template <typename D>
HWY_INLINE hn::Vec<D> loadGroups(D d, const hn::TFromD<D>* from, ptrdiff_t stride) {
    if constexpr (kGroups<D> == 1) {
        return hn::LoadU(d, from);
    } else {
        const hn::Half<D> half;
        return hn::Combine(d, loadGroups(half, from + kGroups<D> / 2 * stride, stride), loadGroups(half, from, stride));
    }
}

/** Where groups overlap, the elements are those of the later one. */
template <typename D>
HWY_INLINE void storeGroups(D d, hn::Vec<D> v, hn::TFromD<D>* out, ptrdiff_t stride) {
    if constexpr (kGroups<D> == 1) {
        hn::StoreU(v, d, out);
    } else {
        const hn::Half<D> half;
        storeGroups(half, hn::LowerHalf(half, v), out, stride);
        storeGroups(half, hn::UpperHalf(half, v), out + kGroups<D> / 2 * stride, stride);
    }
}

}  // namespace VEKCV_VARIANT
