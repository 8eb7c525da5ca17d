#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/**
 * bytes[2k] * first + bytes[2k + 1] * second in each 16-bit lane k, for weights of at most 127 whose sum times 255 is
 * less than 32768.
 */
template <typename D>
HWY_INLINE hn::Vec<D> sumBytePairs(D d, hn::Vec<hn::Repartition<uint8_t, D>> bytes, uint8_t first, uint8_t second) {
#if HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    const auto weights = hn::Set(d, static_cast<uint16_t>(first | second << 8));
    if constexpr (sizeof(weights.raw) == 16)
        return hn::Vec<D>{_mm_maddubs_epi16(bytes.raw, weights.raw)};
#if HWY_TARGET != HWY_SSSE3
    else if constexpr (sizeof(weights.raw) == 32)
        return hn::Vec<D>{_mm256_maddubs_epi16(bytes.raw, weights.raw)};
#endif
#if HWY_TARGET == HWY_AVX3
    else
        return hn::Vec<D>{_mm512_maddubs_epi16(bytes.raw, weights.raw)};
#endif
#else
    const auto pairs = hn::BitCast(d, bytes);
    return hn::Add(hn::Mul(hn::And(pairs, hn::Set(d, 0xFF)), hn::Set(d, first)),
                   hn::Mul(hn::ShiftRight<8>(pairs), hn::Set(d, second)));
#endif
}

}  // namespace VEKCV_VARIANT
