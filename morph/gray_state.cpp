// The states of grey structuring elements.
#include "gray_state.h"

#include <cfloat>

#include "bind.h"
#include "state.h"
#include "state_plan.h"

namespace VEKCV_VARIANT {
namespace {

/** The type of the heights of an element for pixels of type T. */
template <typename T>
using Height = std::conditional_t<std::is_same_v<T, float>, float, int32_t>;

constexpr bool isMember(int32_t height) {
    return height != INT32_MIN;
}
constexpr bool isMember(float height) {
    return !(height <= -FLT_MAX);
}

/** How far a member raises pixels in a dilation; or lowers them, if it is one of the latter members of an element. */
constexpr uint8_t magnitudeOf(int32_t height) {
    return static_cast<uint8_t>(height > 255 || height < -255 ? 255 : height < 0 ? -height : height);
}
constexpr float magnitudeOf(float height) {
    return height;
}

/** Integers are raised by the first members, and lowered by the latter, with the height as its magnitude. */
template <typename T>
constexpr bool isRaising(Height<T> height) {
    return std::is_same_v<T, float> || height >= 0;
}

template <typename T>
struct GrayPlan : StatePlan {
    const Height<T>* mask;
    ptrdiff_t memberCount = 0, raisingCount = 0;
    bool hasInfinite = false;
    int64_t heights = 0;

    GrayPlan(const void* result, RoiSize maxRoi, const Height<T>* numbers, const Window& element)
        : StatePlan(kGrayKind<T>, result, maxRoi, numbers, element), mask(numbers) {
        if (status != StatusOk)
            return;
        const RoiSize size = window.size;
        for (ptrdiff_t i = 0; i < ptrdiff_t{size.width} * size.height; ++i) {
            if (!isMember(mask[i]))
                continue;
            ++memberCount;
            raisingCount += isRaising<T>(mask[i]) ? 1 : 0;
            if constexpr (std::is_floating_point_v<T>)
                hasInfinite |= mask[i] > FLT_MAX;
        }
        heights = int64_t{sizeof(GrayRecord<T>)} + memberCount * int64_t{sizeof(MaskRun)};
        const int64_t pointers = memberCount * int64_t{sizeof(T*)} + Scratch::kAlignment;
        finish(heights + memberCount * int64_t{sizeof(T)}, RunRows<Maximum, T>::bytes(roi.width, 1, size, 1) + pointers,
               memberCount > 0);
    }

    void make(void* memory) const {
        auto* const state = newRecord<GrayRecord<T>>(memory);
        auto* const parts = reinterpret_cast<uint8_t*>(state);
        auto* const members = reinterpret_cast<MaskRun*>(parts + sizeof(GrayRecord<T>));
        auto* const magnitudes = reinterpret_cast<T*>(parts + heights);
        state->members = members;
        state->heights = magnitudes;
        state->memberCount = static_cast<int32_t>(memberCount);
        state->raisingCount = static_cast<int32_t>(raisingCount);
        state->hasInfinite = hasInfinite;
        ptrdiff_t raising = 0, lowering = raisingCount;
        const Height<T>* height = mask;
        for (int32_t row = 0; row < window.size.height; ++row)
            for (int32_t column = 0; column < window.size.width; ++column, ++height) {
                if (!isMember(*height))
                    continue;
                const ptrdiff_t place = isRaising<T>(*height) ? raising++ : lowering++;
                members[place] = {row, column, 0};
                magnitudes[place] = magnitudeOf(*height);
            }
    }
};

template <typename T>
Status graySize(RoiSize maxRoi, const Height<T>* mask, RoiSize maskSize, int32_t* stateSize) {
    return tellSize(GrayPlan<T>(stateSize, maxRoi, mask, {maskSize, {0, 0}}), stateSize);
}

template <typename T>
Status initGray(GrayMorphologyState* state, RoiSize maxRoi, const Height<T>* mask, RoiSize maskSize,
                ImagePoint anchor) {
    return init(GrayPlan<T>(state, maxRoi, mask, {maskSize, anchor}), state);
}

template <typename T>
Status initAllocGray(GrayMorphologyState** state, RoiSize maxRoi, const Height<T>* mask, RoiSize maskSize,
                     ImagePoint anchor) {
    return initAlloc(GrayPlan<T>(state, maxRoi, mask, {maskSize, anchor}), state);
}

}  // namespace

VEKCV_BIND(vekiGrayMorphologyInitAlloc_8u_C1R, initAllocGray<uint8_t>);
VEKCV_BIND(vekiGrayMorphologyGetSize_8u_C1R, graySize<uint8_t>);
VEKCV_BIND(vekiGrayMorphologyInit_8u_C1R, initGray<uint8_t>);
VEKCV_BIND(vekiGrayMorphologyFree_8u_C1R, freeState);
VEKCV_BIND(vekiGrayMorphologyInitAlloc_32f_C1R, initAllocGray<float>);
VEKCV_BIND(vekiGrayMorphologyGetSize_32f_C1R, graySize<float>);
VEKCV_BIND(vekiGrayMorphologyInit_32f_C1R, initGray<float>);
VEKCV_BIND(vekiGrayMorphologyFree_32f_C1R, freeState);
}  // namespace VEKCV_VARIANT
