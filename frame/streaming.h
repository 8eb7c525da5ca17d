#pragma once

#include "vekcore.h"

namespace VEKCV_VARIANT {

/**
 * Whether so many rows of pixels, at the bytes per pixel that the operation counts, fill the largest cache. The results
 * are then better written past the caches.
 */
inline bool fillsCache(int32_t width, int32_t rows, int32_t bytesPerPixel) {
    int cacheBytes = 0;
    return vekGetMaxCacheSizeB(&cacheBytes) == StatusOk && int64_t{width} * rows * bytesPerPixel >= cacheBytes;
}

}  // namespace VEKCV_VARIANT
