#pragma once

#include <array>
#include <cstdint>

#include "simd.h"

namespace VEKCV_VARIANT {

/** A size that the compiler knows, in the place of an int32_t. */
template <int32_t kSize>
struct KnownSize {
    constexpr explicit KnownSize(int32_t /*size*/ = kSize) {}
    constexpr operator int32_t() const { return kSize; }
};

/** Calls body(size), with a KnownSize for kernels of 3 and 5 taps, so that the compiler unrolls their loops. */
template <typename Body>
auto withKernelSize(int32_t size, Body body) {
    return size == 3 ? body(KnownSize<3>()) : size == 5 ? body(KnownSize<5>()) : body(size);
}

/** The taps of a kernel. A known number of them is copied, so that they stay in registers: no store can change them. */
template <typename Tap>
HWY_INLINE const Tap* tapsOf(const Tap* kernel, int32_t /*size*/) {
    return kernel;
}
template <typename Tap, int32_t kSize>
HWY_INLINE std::array<Tap, size_t{kSize}> tapsOf(const Tap* kernel, KnownSize<kSize> /*size*/) {
    std::array<Tap, size_t{kSize}> taps;
    for (size_t k = 0; k < taps.size(); ++k)
        taps[k] = kernel[k];
    return taps;
}

}  // namespace VEKCV_VARIANT
