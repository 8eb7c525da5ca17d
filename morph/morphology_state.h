// The records of structuring elements.
#pragma once

#include "check.h"
#include "element_filter.h"

namespace VEKCV_VARIANT {

/** What a state is made for. */
enum class Purpose : int32_t { kSteps = 1, kCompounds, kGray };

/** Which functions take a state. */
struct StateKind {
    Purpose purpose;
    int32_t elementBytes, channels;

    bool operator==(const StateKind&) const = default;
};

/** What the records of all kinds begin with. */
struct StateHead {
    const StateHead* self;  // its address; a copy of a state elsewhere is refused
    StateKind kind;
    int32_t threads;  // for which there is scratch memory
    RoiSize roi;      // the greatest
    Window window;
    int64_t scratchBytes;  // of a thread
    uint8_t* scratch;

    Scratch scratchOf(int32_t thread) const { return {scratch + thread * scratchBytes, scratchBytes}; }
};

/** The record behind a MorphologyState. */
struct FlatRecord : StateHead {
    FlatElement element;
};

/** The record in the memory of a state, which may begin anywhere: it lies at a multiple of kBlockAlignment. */
template <typename Record>
Record* recordOf(void* state) {
    return alignUp(static_cast<Record*>(state));
}

/** Whether a state was made for these functions, and for regions of this size. */
inline Check checkState(const StateHead& head, const StateKind& kind, RoiSize roi) {
    return Check()
        .require(head.self == &head && head.kind == kind, StatusBadArgument)
        .require(roi.width <= head.roi.width && roi.height <= head.roi.height, StatusSizeError);
}

/** Rows of the second step of a compound operation that are computed together; a multiple of 8. */
constexpr int32_t compoundRows(int32_t windowHeight) {
    constexpr int32_t kMost = 64;
    return windowHeight >= kMost ? kMost : alignUp(windowHeight, 8);
}

/** The results of the first step that the second one needs at a time. */
template <typename T>
struct Band {
    static constexpr int64_t stride(int32_t width, int32_t channels) {
        return alignUp(int64_t{width} * channels * int64_t{sizeof(T)}, kBlockAlignment);
    }
    static constexpr int64_t rows(int32_t windowHeight) {
        return int64_t{windowHeight} + compoundRows(windowHeight) - 1;
    }
    static constexpr int64_t bytes(int32_t width, int32_t channels, int32_t windowHeight) {
        return rows(windowHeight) * stride(width, channels) + Scratch::kAlignment;
    }
};

}  // namespace VEKCV_VARIANT
