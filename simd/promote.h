// Lanes from narrower elements.
#pragma once

#include <type_traits>

#include "simd.h"

namespace VEKCV_VARIANT {

/** 32-bit lanes from as many bytes. */
template <typename D, typename T>
HWY_INLINE hn::Vec<D> promoteBytes(D d, const T* bytes) {
    const auto narrow = hn::LoadU(hn::Rebind<T, D>(), bytes);
#if HWY_TARGET == HWY_SSSE3
    // SSSE3 lacks the instructions that widen by a factor of four; one shuffle is shorter than two or three others. It
    // moves an unsigned byte to the lowest byte of its lane, and a signed one to the highest, from where a shift takes
    // it down with its sign.
    constexpr uint8_t k0 = 0x80;  // gives 0
    alignas(16) static constexpr uint8_t kLowest[] = {0, k0, k0, k0, 1, k0, k0, k0, 2, k0, k0, k0, 3, k0, k0, k0};
    alignas(16) static constexpr uint8_t kHighest[] = {k0, k0, k0, 0, k0, k0, k0, 1, k0, k0, k0, 2, k0, k0, k0, 3};
    const hn::Repartition<uint8_t, D> spread;
    if constexpr (std::is_signed_v<T>)
        return hn::ShiftRight<24>(hn::BitCast(d, hn::TableLookupBytesOr0(narrow, hn::Load(spread, kHighest))));
    else
        return hn::BitCast(d, hn::TableLookupBytesOr0(narrow, hn::Load(spread, kLowest)));
#else
    return hn::PromoteTo(d, narrow);
#endif
}

/** Float lanes from as many elements of any type that converts exactly. */
template <typename D, typename T>
HWY_INLINE hn::Vec<D> loadFloats(D d, const T* values) {
    const hn::Rebind<int32_t, D> integers;
    if constexpr (std::is_same_v<T, float>)
        return hn::LoadU(d, values);
    else if constexpr (sizeof(T) == 1)
        return hn::ConvertTo(d, promoteBytes(integers, values));
    else
        return hn::ConvertTo(d, hn::PromoteTo(integers, hn::LoadU(hn::Rebind<T, D>(), values)));
}

/** Lanes of 16 bits from bytes, or lanes of any type from elements of that type. */
template <typename D, typename T>
HWY_INLINE hn::Vec<D> loadWidened(D d, const T* elements) {
    if constexpr (sizeof(T) == 1)
        return hn::PromoteTo(d, hn::LoadU(hn::Rebind<T, D>(), elements));
    else
        return hn::LoadU(d, elements);
}

/** For as many pixels as d has lanes, of any type: whether their mask bytes are 0. */
template <typename D>
HWY_INLINE hn::Mask<D> isZero(D d, const uint8_t* mask) {
    const hn::RebindToUnsigned<D> unsignedLanes;
    if constexpr (sizeof(hn::TFromD<D>) == 1)
        return hn::RebindMask(d, hn::Eq(hn::LoadU(unsignedLanes, mask), hn::Zero(unsignedLanes)));
    else if constexpr (sizeof(hn::TFromD<D>) == 2)
        return hn::RebindMask(d, hn::Eq(hn::PromoteTo(unsignedLanes, hn::LoadU(hn::Rebind<uint8_t, D>(), mask)),
                                        hn::Zero(unsignedLanes)));
    else
        return hn::RebindMask(d, hn::Eq(promoteBytes(unsignedLanes, mask), hn::Zero(unsignedLanes)));
}

}  // namespace VEKCV_VARIANT
