#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** One lane from all: join(lower half, upper half), and so on with the halves of that. The order of the two is free. */
template <typename D, typename Join>
HWY_INLINE hn::TFromD<D> foldHalves(D d, hn::Vec<D> v, Join join) {
    using T = hn::TFromD<D>;
    if constexpr (hn::MaxLanes(D()) * sizeof(T) > 16) {
        const hn::Half<D> half;
        return foldHalves(half, join(hn::LowerHalf(half, v), hn::UpperHalf(half, v)), join);
    } else {
        // Halves of 128 bits are swapped: smaller vectors take instructions that the variants do without.
        const hn::Repartition<uint32_t, D> words;
        v = join(v, hn::BitCast(d, hn::Shuffle1032(hn::BitCast(words, v))));
        if constexpr (sizeof(T) < 8)
            v = join(v, hn::BitCast(d, hn::Shuffle2301(hn::BitCast(words, v))));
        if constexpr (sizeof(T) >= 4) {
            return hn::GetLane(v);
        } else {
            T lanes[hn::MaxLanes(D())];
            hn::StoreU(v, d, lanes);
            const hn::CappedTag<T, 1> one;
            auto folded = hn::Set(one, lanes[0]);
            for (size_t i = 1; i < 4 / sizeof(T); ++i)
                folded = join(folded, hn::Set(one, lanes[i]));
            return hn::GetLane(folded);
        }
    }
}

}  // namespace VEKCV_VARIANT
