#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** |a - b| of unsigned integers or floats. */
template <typename V>
HWY_INLINE V absoluteDifference(V a, V b) {
    if constexpr (hwy::IsFloat<hn::TFromV<V>>())
        return hn::Abs(hn::Sub(a, b));
    else  // one of the two is zero
        return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));
}

}  // namespace VEKCV_VARIANT
