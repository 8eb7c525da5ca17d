// Sums of products in floats, added in the order of the taps.
#pragma once

#include "batches.h"
#include "kernel_size.h"

namespace VEKCV_VARIANT {

/** out[x] = sum of all k of kernel[k] * taps(k)[x], for x from 0 to count. */
template <typename Taps, typename Size>
HWY_NOINLINE void writeFloatSums(Taps taps, const float* kernel, Size size, float* out, ptrdiff_t count) {
    const auto factors = tapsOf(kernel, size);
    forBatches(
        hn::ScalableTag<float>(), 0, count,
        [=](auto d, auto batch, ptrdiff_t x) __attribute__((always_inline)) {
            constexpr int32_t kVectors = batch;
            constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d));
            hn::Vec<decltype(d)> sums[kVectors];
            const auto product = [=](int32_t k, int32_t i) __attribute__((always_inline)) {
                return hn::Mul(hn::Set(d, factors[static_cast<size_t>(k)]), hn::LoadU(d, taps(k) + x + i * kLanes));
            };
#pragma GCC unroll 8
            for (int32_t i = 0; i < kVectors; ++i)
                sums[i] = product(0, i);
            for (int32_t k = 1; k < size; ++k)
#pragma GCC unroll 8
                for (int32_t i = 0; i < kVectors; ++i)
                    sums[i] = hn::Add(sums[i], product(k, i));
#pragma GCC unroll 8
            for (int32_t i = 0; i < kVectors; ++i)
                hn::StoreU(sums[i], d, out + x + i * kLanes);
        },
        [=] {
            for (ptrdiff_t x = 0; x < count; ++x) {
                float sum = kernel[0] * taps(0)[x];
                for (int32_t k = 1; k < size; ++k)
                    sum += kernel[k] * taps(k)[x];
                out[x] = sum;
            }
        });
}

}  // namespace VEKCV_VARIANT
