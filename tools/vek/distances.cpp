#include "distances.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "library_call.h"
#include "work_buffer.h"

namespace {

/** Exact for these norms, which are counts of steps. */
Picture countedSteps(const Picture& mask, int32_t norm) {
    std::array<int32_t, 2> costs{};
    callLibrary("vekiGetDistanceTransformMask_32s", vekiGetDistanceTransformMask_32s, 3, norm, costs.data());
    for (int32_t& cost : costs)
        cost *= kDistanceUnit;
    Picture result(mask.width, mask.height, 1, 16);
    callLibrary("vekiDistanceTransform_3x3_8u16u_C1R", vekiDistanceTransform_3x3_8u16u_C1R, mask.pixels<uint8_t>(),
                mask.step(), result.pixels<uint16_t>(), result.step(), mask.size(), costs.data());
    return result;
}

/** Calls a function of the library whose result are floats; `last` is its last argument. */
Picture rounded(const char* name, auto function, const Picture& mask, auto last) {
    Picture result(mask.width, mask.height, 1, 16);
    std::vector<float> distances(mask.bytes.size());
    callLibrary(name, function, mask.pixels<uint8_t>(), mask.step(), distances.data(),
                mask.width * static_cast<int32_t>(sizeof(float)), mask.size(), last);
    std::ranges::transform(distances, result.pixels<uint16_t>(), [](float distance) {
        constexpr float kUnit = kDistanceUnit, kLargest = UINT16_MAX;
        // First the minimum: the product may be infinite.
        return static_cast<uint16_t>(std::lrint(std::min(distance * kUnit, kLargest)));
    });
    return result;
}

}  // namespace

Picture distancesIn(const Picture& mask, Measure measure) {
    std::array<float, 3> costs{};
    switch (measure) {
        case Measure::kInf:
            return countedSteps(mask, NormInf);
        case Measure::kL1:
            return countedSteps(mask, NormL1);
        case Measure::kL2:
            callLibrary("vekiGetDistanceTransformMask_32f", vekiGetDistanceTransformMask_32f, 5, int32_t{NormL2},
                        costs.data());
            return rounded("vekiDistanceTransform_5x5_8u32f_C1R", vekiDistanceTransform_5x5_8u32f_C1R, mask,
                           static_cast<const float*>(costs.data()));
        case Measure::kExact:
            break;
    }
    return rounded("vekiTrueDistanceTransform_8u32f_C1R", vekiTrueDistanceTransform_8u32f_C1R, mask,
                   workBuffer(vekiTrueDistanceTransformGetBufferSize_8u32f_C1R, mask.size()).get());
}
