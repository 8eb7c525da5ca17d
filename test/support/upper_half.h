// The upper half of one vector register, on a processor with AVX2, in programs that compute in 16-byte vectors only.
#pragma once

#include <cstdint>

inline void setUpperHalf() {
    __asm__ volatile("vpcmpeqd %%ymm7, %%ymm7, %%ymm7" : : : "xmm7");
}

inline bool upperHalfIsSet() {
    uint64_t half[2];
    __asm__ volatile("vextracti128 $1, %%ymm7, %0" : "=m"(half));
    return half[0] != 0;
}
