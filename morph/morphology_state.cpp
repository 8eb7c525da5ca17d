// The states of flat structuring elements.
#include "bind.h"
#include "state.h"
#include "state_plan.h"

namespace VEKCV_VARIANT {
namespace {

struct FlatPlan : StatePlan {
    const uint8_t* mask;
    MaskSummary summary{};
    int64_t strands = 0, marks = 0;

    FlatPlan(const StateKind& stateKind, const void* result, RoiSize greatestRoi, const uint8_t* members,
             const Window& element)
        : StatePlan(stateKind, result, greatestRoi, members, element), mask(members) {
        if (status != StatusOk)
            return;
        const RoiSize size = window.size;
        summary = MaskSummary::of(mask, size);
        const int64_t runs = summary.isFull ? 0 : summary.runs;
        strands = int64_t{sizeof(FlatRecord)} + runs * int64_t{sizeof(MaskRun)};
        marks = strands + runs / kLeastStrand * int64_t{sizeof(Strand)};
        finish(marks + (summary.isFull ? 0 : int64_t{size.width} * size.height),
               kind.elementBytes == 1 ? threadBytes<uint8_t>() : threadBytes<float>(), !summary.isEmpty);
    }

    void make(void* memory) const {
        auto* const state = newRecord<FlatRecord>(memory);
        auto* const parts = reinterpret_cast<uint8_t*>(state);
        state->element = {window, summary.isFull, {}};
        if (!summary.isFull)
            state->element.runs =
                splitMask(mask, window.size, summary, reinterpret_cast<MaskRun*>(parts + sizeof(FlatRecord)),
                          reinterpret_cast<Strand*>(parts + strands), parts + marks);
    }

  private:
    /** Bytes of scratch memory that a thread needs. */
    template <typename T>
    int64_t threadBytes() const {
        const int64_t step = ElementFilter<Minimum, T>::bytes(roi.width, kind.channels, window.size, summary);
        return kind.purpose == Purpose::kSteps
                   ? step
                   : 2 * step + Band<T>::bytes(roi.width, kind.channels, window.size.height);
    }
};

/** The regions that a state is made for: those of dilation and erosion may have any height. */
constexpr RoiSize greatestRoi(int32_t width) {
    return {width, INT32_MAX};
}
constexpr RoiSize greatestRoi(RoiSize roi) {
    return roi;
}

template <Purpose kPurpose, typename T, int32_t kChannels, typename Extent>
Status stateSize(Extent extent, const uint8_t* mask, RoiSize maskSize, int32_t* bytes) {
    return tellSize(FlatPlan({kPurpose, sizeof(T), kChannels}, bytes, greatestRoi(extent), mask, {maskSize, {0, 0}}),
                    bytes);
}

template <Purpose kPurpose, typename T, int32_t kChannels, typename Extent>
Status initState(MorphologyState* state, Extent extent, const uint8_t* mask, RoiSize maskSize, ImagePoint anchor) {
    return init(FlatPlan({kPurpose, sizeof(T), kChannels}, state, greatestRoi(extent), mask, {maskSize, anchor}),
                state);
}

template <Purpose kPurpose, typename T, int32_t kChannels, typename Extent>
Status initAllocState(MorphologyState** state, Extent extent, const uint8_t* mask, RoiSize maskSize,
                      ImagePoint anchor) {
    return initAlloc(FlatPlan({kPurpose, sizeof(T), kChannels}, state, greatestRoi(extent), mask, {maskSize, anchor}),
                     state);
}

}  // namespace

VEKCV_BIND(vekiMorphologyInitAlloc_8u_C1R, initAllocState<Purpose::kSteps, uint8_t, 1>);
VEKCV_BIND(vekiMorphologyInitAlloc_8u_C3R, initAllocState<Purpose::kSteps, uint8_t, 3>);
VEKCV_BIND(vekiMorphologyInitAlloc_8u_C4R, initAllocState<Purpose::kSteps, uint8_t, 4>);
VEKCV_BIND(vekiMorphologyInitAlloc_32f_C1R, initAllocState<Purpose::kSteps, float, 1>);
VEKCV_BIND(vekiMorphologyInitAlloc_32f_C3R, initAllocState<Purpose::kSteps, float, 3>);
VEKCV_BIND(vekiMorphologyInitAlloc_32f_C4R, initAllocState<Purpose::kSteps, float, 4>);
VEKCV_BIND(vekiMorphologyGetSize_8u_C1R, stateSize<Purpose::kSteps, uint8_t, 1>);
VEKCV_BIND(vekiMorphologyGetSize_8u_C3R, stateSize<Purpose::kSteps, uint8_t, 3>);
VEKCV_BIND(vekiMorphologyGetSize_8u_C4R, stateSize<Purpose::kSteps, uint8_t, 4>);
VEKCV_BIND(vekiMorphologyGetSize_32f_C1R, stateSize<Purpose::kSteps, float, 1>);
VEKCV_BIND(vekiMorphologyGetSize_32f_C3R, stateSize<Purpose::kSteps, float, 3>);
VEKCV_BIND(vekiMorphologyGetSize_32f_C4R, stateSize<Purpose::kSteps, float, 4>);
VEKCV_BIND(vekiMorphologyInit_8u_C1R, initState<Purpose::kSteps, uint8_t, 1>);
VEKCV_BIND(vekiMorphologyInit_8u_C3R, initState<Purpose::kSteps, uint8_t, 3>);
VEKCV_BIND(vekiMorphologyInit_8u_C4R, initState<Purpose::kSteps, uint8_t, 4>);
VEKCV_BIND(vekiMorphologyInit_32f_C1R, initState<Purpose::kSteps, float, 1>);
VEKCV_BIND(vekiMorphologyInit_32f_C3R, initState<Purpose::kSteps, float, 3>);
VEKCV_BIND(vekiMorphologyInit_32f_C4R, initState<Purpose::kSteps, float, 4>);
VEKCV_BIND(vekiMorphologyFree, freeState);

VEKCV_BIND(vekiMorphologyCompoundInitAlloc_8u_C1R, initAllocState<Purpose::kCompounds, uint8_t, 1>);
VEKCV_BIND(vekiMorphologyCompoundInitAlloc_8u_C3R, initAllocState<Purpose::kCompounds, uint8_t, 3>);
VEKCV_BIND(vekiMorphologyCompoundInitAlloc_8u_C4R, initAllocState<Purpose::kCompounds, uint8_t, 4>);
VEKCV_BIND(vekiMorphologyCompoundInitAlloc_32f_C1R, initAllocState<Purpose::kCompounds, float, 1>);
VEKCV_BIND(vekiMorphologyCompoundInitAlloc_32f_C3R, initAllocState<Purpose::kCompounds, float, 3>);
VEKCV_BIND(vekiMorphologyCompoundInitAlloc_32f_C4R, initAllocState<Purpose::kCompounds, float, 4>);
VEKCV_BIND(vekiMorphologyCompoundGetSize_8u_C1R, stateSize<Purpose::kCompounds, uint8_t, 1>);
VEKCV_BIND(vekiMorphologyCompoundGetSize_8u_C3R, stateSize<Purpose::kCompounds, uint8_t, 3>);
VEKCV_BIND(vekiMorphologyCompoundGetSize_8u_C4R, stateSize<Purpose::kCompounds, uint8_t, 4>);
VEKCV_BIND(vekiMorphologyCompoundGetSize_32f_C1R, stateSize<Purpose::kCompounds, float, 1>);
VEKCV_BIND(vekiMorphologyCompoundGetSize_32f_C3R, stateSize<Purpose::kCompounds, float, 3>);
VEKCV_BIND(vekiMorphologyCompoundGetSize_32f_C4R, stateSize<Purpose::kCompounds, float, 4>);
VEKCV_BIND(vekiMorphologyCompoundInit_8u_C1R, initState<Purpose::kCompounds, uint8_t, 1>);
VEKCV_BIND(vekiMorphologyCompoundInit_8u_C3R, initState<Purpose::kCompounds, uint8_t, 3>);
VEKCV_BIND(vekiMorphologyCompoundInit_8u_C4R, initState<Purpose::kCompounds, uint8_t, 4>);
VEKCV_BIND(vekiMorphologyCompoundInit_32f_C1R, initState<Purpose::kCompounds, float, 1>);
VEKCV_BIND(vekiMorphologyCompoundInit_32f_C3R, initState<Purpose::kCompounds, float, 3>);
VEKCV_BIND(vekiMorphologyCompoundInit_32f_C4R, initState<Purpose::kCompounds, float, 4>);
VEKCV_BIND(vekiMorphologyCompoundFree, freeState);
}  // namespace VEKCV_VARIANT
