#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** bytes[2k] * first + bytes[2k + 1] * second in each 16-bit lane k, for weights with which no sum leaves 16 bits. */
template <typename D>
HWY_INLINE hn::Vec<D> sumBytePairs(D d, hn::Vec<hn::Repartition<uint8_t, D>> bytes, int8_t first, int8_t second) {
#if HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    const auto weights = hn::Set(d, static_cast<hn::TFromD<D>>((first & 0xFF) | second << 8));
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
    const auto product = [=](auto halves, int8_t weight) {
        return hn::Mul(halves, hn::Set(lanes, static_cast<uint16_t>(weight)));
    };
    return hn::BitCast(
        d, hn::Add(product(hn::And(pairs, hn::Set(lanes, 0xFF)), first), product(hn::ShiftRight<8>(pairs), second)));
#endif
}

}  // namespace VEKCV_VARIANT
