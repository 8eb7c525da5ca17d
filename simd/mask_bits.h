#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** The bits of a mask, that of the first element lowest; bits behind those of the vector are 0. */
template <typename D>
HWY_INLINE uint64_t maskBits(D d, hn::Mask<D> mask) {
    uint64_t bits = 0;
    if constexpr (HWY_STATIC_TARGET == HWY_AVX2 && sizeof(hn::TFromD<D>) == 2 && hn::MaxLanes(D()) == 16) {
        // Highway's own way takes an instruction that processors with AVX2 need not have.
        const hn::Rebind<int8_t, D> bytes;
        const auto narrow = hn::DemoteTo(bytes, hn::BitCast(hn::RebindToSigned<D>(), hn::VecFromMask(d, mask)));
        hn::StoreMaskBits(bytes, hn::MaskFromVec(narrow), reinterpret_cast<uint8_t*>(&bits));
    } else {
        hn::StoreMaskBits(d, mask, reinterpret_cast<uint8_t*>(&bits));
    }
    return bits;
}

}  // namespace VEKCV_VARIANT
