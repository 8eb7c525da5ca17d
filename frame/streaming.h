#pragma once

#include "vekcore.h"

namespace VEKCV_VARIANT {

/**
 * Whether the pixels of these rows fill the largest cache, each counted as bytesPerPixel. The results are then better
 * written past the caches.
 */
inline bool fillsCache(int32_t width, int32_t rows, int32_t bytesPerPixel) {
    int cacheBytes = 0;
    return vekGetMaxCacheSizeB(&cacheBytes) == StatusOk && int64_t{width} * rows * bytesPerPixel >= cacheBytes;
}

}  // namespace VEKCV_VARIANT
