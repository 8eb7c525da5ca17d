// Ways to store vectors.
#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** Through the caches, or past them to aligned addresses. */
enum class Stores { kCached, kStreaming };

template <Stores kStores, typename D>
HWY_INLINE void store(D d, hn::Vec<D> v, hn::TFromD<D>* out) {
    if constexpr (kStores == Stores::kStreaming)
        hn::Stream(v, d, out);
    else
        hn::StoreU(v, d, out);
}

/** How many elements `out` lies behind the last aligned address. */
template <typename D>
HWY_INLINE ptrdiff_t elementsBeyondAligned(D /*d*/, const hn::TFromD<D>* out) {
    return static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(out) / sizeof(hn::TFromD<D>) % hn::MaxLanes(D()));
}

/** How many elements the first aligned address lies behind `out`; 0 where `out` is aligned. */
template <typename D>
HWY_INLINE ptrdiff_t elementsToAlign(D d, const hn::TFromD<D>* out) {
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    return (kLanes - elementsBeyondAligned(d, out)) % kLanes;
}

/** Stores 16-bit lanes as results of 16 bits, or saturated to 8 bits. */
template <typename D, typename Result>
HWY_INLINE void storeSaturated(D d, hn::Vec<D> v, Result* out) {
    if constexpr (sizeof(Result) == 1) {
        const hn::Rebind<Result, D> narrow;
        hn::StoreU(hn::DemoteTo(narrow, v), narrow, out);
    } else {
        hn::StoreU(v, d, out);
    }
}

}  // namespace VEKCV_VARIANT
