#pragma once

#include <climits>

#include "vekcore.h"

namespace VEKCV_VARIANT {

/** What the core library aligns blocks to. */
constexpr int64_t kBlockAlignment = 64;

template <typename T>
constexpr T alignUp(T value, T alignment) {
    return (value + alignment - 1) / alignment * alignment;
}

/** A block of the core library; null for bytes < 1 or above 2147483647, and when there is no memory. */
inline void* allocateBytes(int64_t bytes) {
    return bytes < 1 || bytes > INT_MAX ? nullptr : vekMalloc(static_cast<int>(bytes));
}

inline void release(void* block) {
    vekFree(block);
}

}  // namespace VEKCV_VARIANT
