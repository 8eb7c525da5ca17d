#pragma once

#include "pipeline_buffer.h"

namespace VEKCV_VARIANT {

inline bool isMaskSize(int32_t maskSize) {
    return maskSize == MaskSize3x3 || maskSize == MaskSize5x5;
}

/** The type of filtered rows, in which no sum of 25 pixels overflows. */
template <typename T>
using Intermediate = std::conditional_t<std::is_same_v<T, float>, float, int16_t>;

/** Bytes for each thread, without spare ones, of a filter of images of T with 3 or 5 taps. */
template <typename T>
int64_t fixedFilterBytes(RoiSize roi, int32_t taps, int32_t fixedBytes) {
    const int64_t groupBytes = 16 * int64_t{sizeof(Intermediate<T>)} * (taps == 3 ? 21 : 25);
    return (int64_t{roi.width} + 15) / 16 * groupBytes + (taps == 3 ? 36 : 60) + fixedBytes +
           rowPipelineBytes<T, 1>(roi, taps) + columnPipelineBytes<Intermediate<T>, 1>(roi, taps);
}

}  // namespace VEKCV_VARIANT
