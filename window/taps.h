// Filters of three and five taps. at(k) gives the pixels under tap k; floats are added in the order that is written
// here.
#pragma once

#include <bit>

#include "simd.h"

namespace VEKCV_VARIANT {

template <int32_t kFactor, typename V>
HWY_INLINE V times(V v) {
    if constexpr (kFactor == 1)
        return v;
    else if constexpr (kFactor == 2)
        return hn::Add(v, v);
    else if constexpr (!hwy::IsFloat<hn::TFromV<V>>() && (kFactor & (kFactor - 1)) == 0)
        return hn::ShiftLeft<std::countr_zero(static_cast<uint32_t>(kFactor))>(v);
    else
        return hn::Mul(v, hn::Set(hn::DFromV<V>(), kFactor));
}

/** o i c i o: (outer pair * o + inner pair * i) + centre * c, without the terms that are 0. */
template <int32_t kOuter, int32_t kInner, int32_t kCentre>
struct Symmetric {
    static constexpr int32_t kTaps = 5;

    template <typename At>
    HWY_INLINE auto operator()(At at) const {
        auto sum = times<kOuter>(hn::Add(at(0), at(4)));
        if constexpr (kInner != 0)
            sum = hn::Add(sum, times<kInner>(hn::Add(at(1), at(3))));
        return addCentre<kCentre>(sum, at(2));
    }

    /** sum + centre * kFactor */
    template <int32_t kFactor, typename V>
    HWY_INLINE static V addCentre(V sum, V centre) {
        if constexpr (kFactor < 0)
            return hn::Sub(sum, times<-kFactor>(centre));
        else
            return hn::Add(sum, times<kFactor>(centre));
    }
};

/** i c i */
template <int32_t kInner, int32_t kCentre>
struct Symmetric<0, kInner, kCentre> {
    static constexpr int32_t kTaps = 3;

    template <typename At>
    HWY_INLINE auto operator()(At at) const {
        return Symmetric<1, 1, 1>::addCentre<kCentre>(times<kInner>(hn::Add(at(0), at(2))), at(1));
    }
};

/** -1 0 1 with kSign 1, and 1 0 -1 with kSign -1. */
template <int32_t kSign>
struct Difference3 {
    static constexpr int32_t kTaps = 3;

    template <typename At>
    HWY_INLINE auto operator()(At at) const {
        return kSign > 0 ? hn::Sub(at(2), at(0)) : hn::Sub(at(0), at(2));
    }
};

/** -1 -2 0 2 1, or 1 2 0 -2 -1. */
template <int32_t kSign>
struct Difference5 {
    static constexpr int32_t kTaps = 5;

    template <typename At>
    HWY_INLINE auto operator()(At at) const {
        constexpr int32_t kFirst = kSign > 0 ? 4 : 0, kSecond = kSign > 0 ? 3 : 1;
        const auto outer = hn::Sub(at(kFirst), at(4 - kFirst)), inner = hn::Sub(at(kSecond), at(4 - kSecond));
        return hn::Add(outer, times<2>(inner));
    }
};

using Smooth3 = Symmetric<0, 1, 2>;
using Smooth5 = Symmetric<1, 4, 6>;
using Second3 = Symmetric<0, 1, -2>;
using Second5 = Symmetric<1, 0, -2>;
using Scharr3 = Symmetric<0, 3, 10>;
using Sum3 = Symmetric<0, 1, 1>;
using Sum5 = Symmetric<1, 1, 1>;

}  // namespace VEKCV_VARIANT
