#pragma once

#include "image.h"

namespace VEKCV_VARIANT {

// The forms C1R, C1MR, C3CR and C3CMR of an operation that looks at one channel of an image and gives results:
// Operation::run(source, mask, roi, channel, results...). Without a mask it is a NoImage; in C1 forms the channel is 1.

template <typename Operation, typename T, typename... Results>
Status onChannel(const T* source, int32_t sourceStep, RoiSize roi, Results*... results) {
    return Operation::run(Image<const T>{source, sourceStep}, NoImage(), roi, 1, results...);
}

template <typename Operation, typename T, typename... Results>
Status onChannel(const T* source, int32_t sourceStep, const uint8_t* mask, int32_t maskStep, RoiSize roi,
                 Results*... results) {
    return Operation::run(Image<const T>{source, sourceStep}, Image<const uint8_t>{mask, maskStep}, roi, 1, results...);
}

template <typename Operation, typename T, typename... Results>
Status onChannel(const T* source, int32_t sourceStep, RoiSize roi, int32_t channel, Results*... results) {
    return Operation::run(Image<const T, 3>{source, sourceStep}, NoImage(), roi, channel, results...);
}

template <typename Operation, typename T, typename... Results>
Status onChannel(const T* source, int32_t sourceStep, const uint8_t* mask, int32_t maskStep, RoiSize roi,
                 int32_t channel, Results*... results) {
    return Operation::run(Image<const T, 3>{source, sourceStep}, Image<const uint8_t>{mask, maskStep}, roi, channel,
                          results...);
}

}  // namespace VEKCV_VARIANT
