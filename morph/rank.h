// Minimum and maximum: what distinguishes erosion from dilation.
#pragma once

#include <type_traits>

#include "simd.h"

namespace VEKCV_VARIANT {

/** Joins vectors of pixels none of which is NaN; clean() makes pixels ready to be joined. */
struct Minimum {
    template <typename V>
    HWY_INLINE static V join(V a, V b) {
        return hn::Min(a, b);
    }
    template <typename V>
    HWY_INLINE static V clean(V v) {
        return v;
    }
};
struct Maximum {
    template <typename V>
    HWY_INLINE static V join(V a, V b) {
        return hn::Max(a, b);
    }
    template <typename V>
    HWY_INLINE static V clean(V v) {
        return v;
    }
};

/** The same for floats among which there are NaNs: a NaN gives way to the other one. */
template <typename Rank>
struct PassingNaN {
    /** Of both orders one gives the number, and the other the NaN, whose bits are all set. */
    template <typename V>
    HWY_INLINE static V join(V a, V b) {
        return hn::And(Rank::join(a, b), Rank::join(b, a));
    }
    /** Sets all bits of NaNs. */
    template <typename V>
    HWY_INLINE static V clean(V v) {
        return hn::Or(v, hn::VecFromMask(hn::DFromV<V>(), hn::IsNaN(v)));
    }
};

/** The rank to use for pixels of type T where NaNs may be among them. */
template <typename Rank, typename T>
using CarefulRank = std::conditional_t<std::is_floating_point_v<T>, PassingNaN<Rank>, Rank>;

/** Whether there is a NaN in a row of `length` elements. */
inline bool hasNaN(const uint8_t* /*row*/, ptrdiff_t /*length*/) {
    return false;
}
HWY_NOINLINE inline bool hasNaN(const float* row, ptrdiff_t length) {
    const hn::ScalableTag<float> d;
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<float>()));
    auto any = hn::IsNaN(hn::Zero(d));
    ptrdiff_t x = 0;
    for (; x + kLanes <= length; x += kLanes)
        any = hn::Or(any, hn::IsNaN(hn::LoadU(d, row + x)));
    bool found = !hn::AllFalse(d, any);
    for (; x < length; ++x)
        found |= row[x] != row[x];
    return found;
}

}  // namespace VEKCV_VARIANT
