#pragma once

#include "mask_bits.h"
#include "rest.h"

namespace VEKCV_VARIANT {

/** Calls visit(x) for the pixels of a row that are not 0, in their order. */
template <typename Visit>
HWY_INLINE void forSetPixels(const uint8_t* row, ptrdiff_t width, const Visit& visit) {
    forHalves(
        hn::ScalableTag<uint8_t>(), 0, width, [&](auto d, ptrdiff_t x) __attribute__((always_inline)) {
            const auto isSet = hn::Ne(hn::LoadU(d, row + x), hn::Zero(d));
            for (uint64_t bits = maskBits(d, isSet); bits != 0; bits &= bits - 1)
                visit(static_cast<int32_t>(x) + __builtin_ctzll(bits));
        });
}

}  // namespace VEKCV_VARIANT
