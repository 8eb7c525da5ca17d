// The rest of a row: the pixels behind its last whole vector. There are two ways to process them, neither of which
// reads or writes beyond the end of the row:
// - in place, below, for everything that writes to images of the caller: with vectors of half the width, then half of
//   that, down to a single lane (forHalves), or with a last vector that overlaps the one before it (forOverlapping).
//   The code of the halves grows with the width of a vector, so long rules have it in a function of its own.
// - as a copy that is padded to whole vectors (Rest in reduction.h), for reductions, whose accumulators are vectors of
//   one width.
#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** Calls body(tag, i) for vectors that hold each element from x to end once: whole vectors, then ever smaller ones. */
template <typename D, typename Body>
HWY_INLINE void forHalves(D d, ptrdiff_t x, ptrdiff_t end, const Body& body) {
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    for (; x + kLanes <= end; x += kLanes)
        body(d, x);
    if constexpr (kLanes > 1)
        forHalves(hn::Half<D>(), x, end, body);
}

/**
 * Calls body(tag, i) for vectors that hold each element from x to end at least once: the last one ends where the row
 * ends and may repeat elements, but none before begin. So the body must not write what it reads. A row shorter than one
 * vector is processed in smaller ones, the largest that fit into it; false where they would have fewer lanes than
 * kLeastLanes.
 */
template <size_t kLeastLanes = 1, typename D, typename Body>
HWY_INLINE bool forOverlapping(D d, ptrdiff_t begin, ptrdiff_t x, ptrdiff_t end, const Body& body) {
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    if (end - begin < kLanes) {
        if constexpr (hn::MaxLanes(D()) > kLeastLanes)
            return forOverlapping<kLeastLanes>(hn::Half<D>(), begin, x, end, body);
        return false;
    }
    for (; x < end; x += kLanes)
        body(d, HWY_MIN(x, end - kLanes));
    return true;
}

}  // namespace VEKCV_VARIANT
