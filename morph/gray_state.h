// The record of a grey structuring element.
#pragma once

#include "morphology_state.h"

namespace VEKCV_VARIANT {

/**
 * The record behind a GrayMorphologyState. A dilation raises pixels by the heights of the first members, and lowers
 * them by those of the others, which are the negative ones of integers; an erosion does the opposite.
 */
template <typename T>
struct GrayRecord : StateHead {
    const MaskRun* members;  // of length 1
    const T* heights;        // magnitudes of integers
    int32_t memberCount, raisingCount;
    bool hasInfinite;  // whether there are infinite heights, which may give NaN
};

template <typename T>
constexpr StateKind kGrayKind{Purpose::kGray, sizeof(T), 1};

}  // namespace VEKCV_VARIANT
