#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** The vector of up to four 32-bit lanes that lane(i) gives. In registers, as loads of what was just stored wait. */
template <typename D, typename Lane>
HWY_INLINE hn::Vec<D> fromLanes(D d, const Lane& lane) {
    constexpr size_t kLanes = hn::MaxLanes(D());
    static_assert(kLanes <= 4 && sizeof(hn::TFromD<D>) == 4);
#if HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3
    const auto laneOrZero = [&](size_t i) __attribute__((always_inline)) {
        return i < kLanes ? static_cast<int32_t>(lane(i)) : 0;
    };
    return hn::BitCast(
        d, hn::Vec<hn::RebindToSigned<D>>{_mm_set_epi32(laneOrZero(3), laneOrZero(2), laneOrZero(1), laneOrZero(0))});
#else
    HWY_ALIGN hn::TFromD<D> lanes[kLanes];
    for (size_t i = 0; i < kLanes; ++i)
        lanes[i] = lane(i);
    return hn::Load(d, lanes);
#endif
}

}  // namespace VEKCV_VARIANT
