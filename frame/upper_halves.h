#pragma once

#include "table.h"

namespace VEKCV_VARIANT {

/**
 * Tells the processor that the upper halves of its vector registers hold nothing, as each thread does before it
 * computes in 16-byte vectors. Instructions that leave upper halves as they are take up to five times as long where the
 * processor believes them in use: after other code left something there, but also after a change of threads. No caller
 * keeps anything there; compilers do the same for longer vectors.
 */
inline void clearUpperHalves() {
#if !defined(__AVX__)
    if (vekcv::RegistersHaveUpperHalves)
        __asm__ volatile("vzeroupper");
#endif
}

}  // namespace VEKCV_VARIANT
