// How the states of optical flow are made.
#include "optical_flow_state.h"

#include "bind.h"
#include "check.h"
#include "configured_threads.h"
#include "flow_window.h"
#include "state.h"

namespace VEKCV_VARIANT {
namespace {

constexpr int32_t kLeastWindow = 3, kMostWindow = 63;

template <typename T>
Status initAlloc(OpticalFlowState** result, RoiSize roi, int32_t windowSize) {
    if (Status status = Check().pointers(result).roi(roi).require(
            windowSize >= kLeastWindow && windowSize <= kMostWindow && windowSize % 2 == 1, StatusSizeError))
        return status;
    const int32_t threads = configuredThreads(), floats = FlowWindow::scratchFloats(windowSize);
    const int64_t allFloats = int64_t{threads} * floats;
    if (allFloats > INT32_MAX)
        return StatusMemoryAllocation;
    Owned<FlowRecord> state;
    // Zeros: vectors reach beyond the windows, and what they find there must not be slow to compute with.
    if (Status status =
            newState(state, StateArray{&FlowRecord::scratch, static_cast<int32_t>(allFloats), kBlockAlignment, 0.0F}))
        return status;
    state->elementBytes = sizeof(T);
    state->roi = roi;
    state->windowSize = windowSize;
    state->threads = threads;
    state->floats = floats;
    *result = reinterpret_cast<OpticalFlowState*>(state.keep());
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiOpticalFlowPyrLKInitAlloc_8u_C1R, initAlloc<uint8_t>);
VEKCV_BIND(vekiOpticalFlowPyrLKInitAlloc_16u_C1R, initAlloc<uint16_t>);
VEKCV_BIND(vekiOpticalFlowPyrLKInitAlloc_32f_C1R, initAlloc<float>);
VEKCV_BIND(vekiOpticalFlowPyrLKFree_8u_C1R, freeState);
VEKCV_BIND(vekiOpticalFlowPyrLKFree_16u_C1R, freeState);
VEKCV_BIND(vekiOpticalFlowPyrLKFree_32f_C1R, freeState);
}  // namespace VEKCV_VARIANT
