#pragma once

#include <cstdint>
#include <type_traits>

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

}  // namespace VEKCV_VARIANT
