// The states of optical flow.
#pragma once

#include "vekcv.h"

namespace VEKCV_VARIANT {

/** The record behind an OpticalFlowState. */
struct FlowRecord {
    int32_t elementBytes;  // of the functions that take it
    RoiSize roi;           // no level 0 is larger
    int32_t windowSize;
    int32_t threads;
    int32_t floats;  // of the scratch memory of each thread
    float* scratch;
};

}  // namespace VEKCV_VARIANT
