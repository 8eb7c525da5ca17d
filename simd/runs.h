// Runs of elements, taken in vectors.
#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** Vectors of a block: as many as leave registers for what they are computed from. */
constexpr int32_t kRunVectors = sizeof(void*) == 8 ? 4 : 2;

/** The elements from x to end of a run that are no block. */
template <typename D, typename Vectors, typename Element>
HWY_INLINE void forRest(D d, ptrdiff_t begin, ptrdiff_t x, ptrdiff_t end, const Vectors& vectors,
                        const Element& element) {
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    constexpr std::integral_constant<int32_t, 1> kOne;
    if (end - begin >= kLanes)
        for (; x < end; x += kLanes)
            vectors(d, kOne, HWY_MIN(x, end - kLanes));
    else if constexpr (kLanes * sizeof(hn::TFromD<D>) > 16)
        forRest(hn::Half<D>(), begin, x, end, vectors, element);
    else
        for (; x < end; ++x)
            element(x);
}

/**
 * Computes every element of a run from begin to end at least once, and none outside of it: vectors(tag, count, x) so
 * many vectors from x on, element(x) a single one of a run that is too short for a vector of 16 bytes. The last vector
 * computes some elements for the second time, so the run must not be read to compute it.
 */
template <typename D, typename Vectors, typename Element>
HWY_INLINE void forRun(D d, ptrdiff_t begin, ptrdiff_t end, const Vectors& vectors, const Element& element) {
    constexpr auto kBlock = kRunVectors * static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    constexpr std::integral_constant<int32_t, kRunVectors> kVectors;
    ptrdiff_t x = begin;
    for (; x + kBlock <= end; x += kBlock)
        vectors(d, kVectors, x);
    forRest(d, begin, x, end, vectors, element);
}

}  // namespace VEKCV_VARIANT
