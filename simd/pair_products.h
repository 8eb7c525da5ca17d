#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** sums[k] + a[2k] * b[2k] + a[2k + 1] * b[2k + 1] in each 32-bit lane k, where a and b have lanes of int16_t. */
template <typename D, typename V>
HWY_INLINE hn::Vec<D> addPairProducts(D d, V a, V b, hn::Vec<D> sums) {
#if !defined(__i386__) && !defined(__x86_64__)
#error "which products ReorderWidenMulAccumulate adds, and to which sums, depends on the processor"
#endif
    auto unused = hn::Zero(d);
    return hn::ReorderWidenMulAccumulate(d, a, b, sums, unused);
}

}  // namespace VEKCV_VARIANT
