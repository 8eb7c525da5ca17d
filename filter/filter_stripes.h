// Filters of stripes of rows, for operations that filter an image by bands.
#pragma once

#include "fixed_filter.h"

namespace VEKCV_VARIANT {

/** First derivatives of pixels of type T: along the rows, positive to the right, and along the columns, downwards. */
template <typename T>
struct GradientStripes {
    FilterStripe<T, Intermediate<T>> alongRows, alongColumns;
};

template <typename T>
GradientStripes<T> sobelStripes(int32_t taps);
template <>
GradientStripes<uint8_t> sobelStripes(int32_t taps);
template <>
GradientStripes<float> sobelStripes(int32_t taps);

template <typename T>
GradientStripes<T> scharrStripes();
template <>
GradientStripes<uint8_t> scharrStripes();
template <>
GradientStripes<float> scharrStripes();

/** The mean of taps x taps pixels. */
FilterStripe<float, float> meanStripe(int32_t taps);

/** Bytes of scratch memory for a stripe, at any address. */
template <typename T>
int64_t stripeBytes(RoiSize roi, int32_t taps) {
    constexpr int32_t kMostFixedBytes = 248;
    return fixedFilterBytes<T>(roi, taps, kMostFixedBytes) + Scratch::kAlignment;
}

}  // namespace VEKCV_VARIANT
