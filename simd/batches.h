#pragma once

#include "rest.h"

namespace VEKCV_VARIANT {

/** Vectors of a batch of forBatches: as many results as leave registers for their operands. */
constexpr int32_t kVectorsAtOnce = sizeof(void*) == 8 ? 4 : 2;

/**
 * Computes every element from begin to end at least once, and no others. vectors(tag, count, x) computes `count`
 * vectors from x on, a constant: a batch, or single vectors for what is left of the row, the last of which may repeat
 * elements (see forOverlapping). Rows shorter than 16 bytes are left to few().
 */
template <typename D, typename Vectors, typename Few>
HWY_INLINE void forBatches(D d, ptrdiff_t begin, ptrdiff_t end, const Vectors& vectors, const Few& few) {
    constexpr std::integral_constant<int32_t, kVectorsAtOnce> kBatch;
    constexpr std::integral_constant<int32_t, 1> kOne;
    constexpr auto kBatchElements = kVectorsAtOnce * static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    ptrdiff_t x = begin;
    for (; x + kBatchElements <= end; x += kBatchElements)
        vectors(d, kBatch, x);
    const auto one = [&](auto part, ptrdiff_t i) __attribute__((always_inline)) {
        vectors(part, kOne, i);
    };
    if (!forOverlapping<16 / sizeof(hn::TFromD<D>)>(d, begin, x, end, one))
        few();
}

}  // namespace VEKCV_VARIANT
