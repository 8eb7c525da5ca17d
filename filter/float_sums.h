// Sums of products in floats, added in the order of the taps.
#pragma once

#include "kernel_size.h"
#include "runs.h"

namespace VEKCV_VARIANT {

/** out[x] = sum of all k of kernel[k] * taps(k)[x], for x from begin to end. */
template <typename Taps, typename Size>
HWY_NOINLINE void writeFloatSums(const Taps& taps, const float* kernel, Size size, float* out, ptrdiff_t begin,
                                 ptrdiff_t end) {
    const auto factors = tapsOf<Size>(kernel);
    forRun(
        hn::ScalableTag<float>(), begin, end,
        [&](auto d, auto count, ptrdiff_t x) __attribute__((always_inline)) {
            constexpr int32_t kCount = count;
            constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d));
            hn::Vec<decltype(d)> sums[kCount];
            const auto product = [&](int32_t k, int32_t i) {
                return hn::Mul(hn::Set(d, factors[static_cast<size_t>(k)]), hn::LoadU(d, taps(k) + x + i * kLanes));
            };
#pragma GCC unroll 8
            for (int32_t i = 0; i < kCount; ++i)
                sums[i] = product(0, i);
            for (int32_t k = 1; k < size; ++k)
#pragma GCC unroll 8
                for (int32_t i = 0; i < kCount; ++i)
                    sums[i] = hn::Add(sums[i], product(k, i));
#pragma GCC unroll 8
            for (int32_t i = 0; i < kCount; ++i)
                hn::StoreU(sums[i], d, out + x + i * kLanes);
        },
        [&](ptrdiff_t x) {
            float sum = kernel[0] * taps(0)[x];
            for (int32_t k = 1; k < size; ++k)
                sum += kernel[k] * taps(k)[x];
            out[x] = sum;
        });
}

}  // namespace VEKCV_VARIANT
