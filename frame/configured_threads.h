#pragma once

#include <cstdint>

#include "vekcore.h"

namespace VEKCV_VARIANT {

/** The number of threads to decide with; a team asks for its own once it is opened. */
inline int32_t configuredThreads() {
    int threads = 1;
    vekGetNumThreads(&threads);
    return threads;
}

}  // namespace VEKCV_VARIANT
