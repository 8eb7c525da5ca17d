// How states of structuring elements are made.
#pragma once

#include "configured_threads.h"
#include "morphology_state.h"

namespace VEKCV_VARIANT {

/** What a state is made from, and where its parts lie, in bytes behind the record. */
struct StatePlan {
    StateKind kind;
    RoiSize roi;
    Window window;
    Status status;  // of the arguments
    int32_t threads = 1;
    int64_t scratch = 0, scratchBytes = 0, bytes = 0;

    /** Checks the arguments that do not depend on members. `result` is the state, or where it or its size is put. */
    StatePlan(const StateKind& stateKind, const void* result, RoiSize greatestRoi, const void* mask,
              const Window& element)
        : kind(stateKind), roi(greatestRoi), window(element) {
        status = Check()
                     .pointers(result, mask)
                     .roi(roi)
                     .require(window.hasPixels(), StatusMaskSizeError)
                     .require(window.hasAnchor(), StatusAnchorError)
                     .require(isModest(), StatusSizeError);
    }

    /** Places the scratch memory behind the other parts, and checks what is known then. */
    void finish(int64_t partBytes, int64_t bytesPerThread, bool hasMembers) {
        threads = configuredThreads();
        scratch = alignUp(partBytes, kBlockAlignment);
        scratchBytes = alignUp(bytesPerThread, kBlockAlignment);
        bytes = scratch + threads * scratchBytes + kBlockAlignment - 1;
        status = Check().require(bytes <= INT32_MAX, StatusSizeError).require(hasMembers, StatusBadArgument);
    }

    /** A new record in the memory of a state. */
    template <typename Record>
    Record* newRecord(void* memory) const {
        auto* const record = new (recordOf<Record>(memory)) Record{};
        record->self = record;
        record->kind = kind;
        record->threads = threads;
        record->roi = roi;
        record->window = window;
        record->scratchBytes = scratchBytes;
        record->scratch = reinterpret_cast<uint8_t*>(record) + scratch;
        return record;
    }

  private:
    /** Whether the products that make up the size of a state are small enough to compute with. */
    bool isModest() const {
        const int64_t rowBytes = int64_t{roi.width} * kind.channels * kind.elementBytes;
        return window.hasPixels() && rowBytes <= INT32_MAX / window.size.height &&
               window.size.width <= INT32_MAX / window.size.height;
    }
};

// What the functions that make states do with a plan.

inline Status tellSize(const StatePlan& plan, int32_t* stateSize) {
    if (plan.status == StatusOk)
        *stateSize = static_cast<int32_t>(plan.bytes);
    return plan.status;
}

template <typename Plan>
Status init(const Plan& plan, void* state) {
    if (plan.status == StatusOk)
        plan.make(state);
    return plan.status;
}

template <typename Plan, typename State>
Status initAlloc(const Plan& plan, State** state) {
    if (plan.status != StatusOk)
        return plan.status;
    void* const memory = allocateBytes(plan.bytes);
    if (memory == nullptr)
        return StatusMemoryAllocation;
    plan.make(memory);
    *state = static_cast<State*>(memory);
    return StatusOk;
}

}  // namespace VEKCV_VARIANT
