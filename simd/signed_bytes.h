#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** Signed bytes, -128 to 127, moved to 0 to 255, which keeps their order and their distances. */
template <typename V>
HWY_INLINE auto movedToUnsigned(V bytes) {
    const hn::RebindToUnsigned<hn::DFromV<V>> d;
    return hn::Xor(hn::BitCast(d, bytes), hn::Set(d, 128));
}

}  // namespace VEKCV_VARIANT
