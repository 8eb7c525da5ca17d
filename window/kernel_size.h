#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

#include "simd.h"

namespace VEKCV_VARIANT {

/** Calls body(size) with a size that the compiler knows for the kernels of 3 and 5 taps, so that it unrolls them. */
template <typename Body>
void withKernelSize(int32_t size, Body body) {
    if (size == 3)
        body(std::integral_constant<int32_t, 3>());
    else if (size == 5)
        body(std::integral_constant<int32_t, 5>());
    else
        body(size);
}

/** The taps of a kernel; copied where their number is known, for then no result can change them under the loop. */
template <typename Size, typename Tap>
HWY_INLINE auto tapsOf(const Tap* kernel) {
    if constexpr (std::is_same_v<Size, int32_t>) {
        return kernel;
    } else {
        std::array<Tap, size_t{Size::value}> taps;
        for (size_t k = 0; k < taps.size(); ++k)
            taps[k] = kernel[k];
        return taps;
    }
}

}  // namespace VEKCV_VARIANT
