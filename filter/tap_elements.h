// Where the elements lie that the taps of a filter meet.
#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** The elements of tap k lie kStride elements behind those of tap k - 1. */
template <typename T, ptrdiff_t kStride>
struct StridedTaps {
    const T* elements;

    HWY_INLINE const T* operator()(int32_t k) const { return elements + k * kStride; }
};

/** The same for a stride that the compiler does not know, so that what uses it is compiled once. */
template <typename T>
struct AnyStrideTaps {
    const T* elements;
    ptrdiff_t stride;

    HWY_INLINE const T* operator()(int32_t k) const { return elements + k * stride; }
};

/** The elements of tap k lie in row k. */
template <typename T>
struct RowTaps {
    const T* const* rows;

    HWY_INLINE const T* operator()(int32_t k) const { return rows[k]; }
};

}  // namespace VEKCV_VARIANT
