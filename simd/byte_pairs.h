#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** bytes[2k] * weights[2k] + bytes[2k + 1] * weights[2k + 1] in each 16-bit lane k, where no sum leaves 16 bits. */
template <typename D>
HWY_INLINE hn::Vec<D> sumBytePairs([[maybe_unused]] D d, hn::Vec<hn::Repartition<uint8_t, D>> bytes,
                                   hn::Vec<hn::Repartition<int8_t, D>> weights) {
#if HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
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
    const hn::RebindToUnsigned<D> lanes;
    const auto pairs = hn::BitCast(lanes, bytes);
    const auto both = hn::BitCast(d, weights);
    const auto firsts = hn::BitCast(d, hn::And(pairs, hn::Set(lanes, 0xFF)));
    const auto seconds = hn::BitCast(d, hn::ShiftRight<8>(pairs));
    return hn::Add(hn::Mul(firsts, hn::ShiftRight<8>(hn::ShiftLeft<8>(both))),
                   hn::Mul(seconds, hn::ShiftRight<8>(both)));
#endif
}

/** The same with two weights for all pairs. */
template <typename D>
HWY_INLINE hn::Vec<D> sumBytePairs(D d, hn::Vec<hn::Repartition<uint8_t, D>> bytes, int8_t first, int8_t second) {
    const auto weights = hn::Set(d, static_cast<hn::TFromD<D>>((first & 0xFF) | second << 8));
    return sumBytePairs(d, bytes, hn::BitCast(hn::Repartition<int8_t, D>(), weights));
}

}  // namespace VEKCV_VARIANT
