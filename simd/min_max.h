// Minimum and maximum. Where an argument is NaN, the second one is the result.
#pragma once

#include <type_traits>

#include "simd.h"

namespace VEKCV_VARIANT {

/** SSSE3 has no minimum and maximum of unsigned 16-bit lanes, but differences that saturate at 0. */
template <typename T>
constexpr bool kLacksMinMax = HWY_TARGET == HWY_SSSE3&& std::is_same_v<T, uint16_t>;

template <typename V>
HWY_INLINE V larger(V a, V b) {
    if constexpr (kLacksMinMax<hn::TFromV<V>>)
        return hn::Add(b, hn::SaturatedSub(a, b));
    else
        return hn::Max(a, b);
}

template <typename V>
HWY_INLINE V smaller(V a, V b) {
    if constexpr (kLacksMinMax<hn::TFromV<V>>)
        return hn::Sub(a, hn::SaturatedSub(a, b));
    else
        return hn::Min(a, b);
}

}  // namespace VEKCV_VARIANT
