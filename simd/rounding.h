// Floats to integers, without the instructions that treat values that do not fit.
#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** The nearest integers, of two equally near ones the even one. Values must be below 2147483648. */
template <typename D, typename V = hn::Vec<hn::Rebind<float, D>>>
HWY_INLINE hn::Vec<D> nearestIntegers(D /*d*/, V v) {
#if HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    if constexpr (sizeof(v.raw) == 16)
        return hn::Vec<D>{_mm_cvtps_epi32(v.raw)};
#if HWY_TARGET != HWY_SSSE3
    else if constexpr (sizeof(v.raw) == 32)
        return hn::Vec<D>{_mm256_cvtps_epi32(v.raw)};
#endif
#if HWY_TARGET == HWY_AVX3
    else
        return hn::Vec<D>{_mm512_cvtps_epi32(v.raw)};
#endif
#else
    return hn::NearestInt(v);
#endif
}

/** What is left of values without their fractions. Values must be below 2147483648. */
template <typename D, typename V = hn::Vec<hn::Rebind<float, D>>>
HWY_INLINE hn::Vec<D> truncatedIntegers(D /*d*/, V v) {
#if HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    if constexpr (sizeof(v.raw) == 16)
        return hn::Vec<D>{_mm_cvttps_epi32(v.raw)};
#if HWY_TARGET != HWY_SSSE3
    else if constexpr (sizeof(v.raw) == 32)
        return hn::Vec<D>{_mm256_cvttps_epi32(v.raw)};
#endif
#if HWY_TARGET == HWY_AVX3
    else
        return hn::Vec<D>{_mm512_cvttps_epi32(v.raw)};
#endif
#else
    return hn::ConvertTo(D(), v);
#endif
}

}  // namespace VEKCV_VARIANT
