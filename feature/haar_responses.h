// Responses of features, which are weighted sums of rectangles, and their comparison with thresholds.
#pragma once

#include "haar_classifier.h"
#include "simd.h"

namespace VEKCV_VARIANT {

/** A rectangle whose corners are given as distances, in elements, from the position of the window. */
template <typename Value>
struct PlacedRectangle {
    ptrdiff_t a, b, c, d;
    Value weight;
};

template <typename Value>
HWY_INLINE PlacedRectangle<Value> place(const HaarRectangle<Value>& rectangle, ptrdiff_t rowElements) {
    // The distances wrap around for rectangles that are larger than any image. Nothing is read there, as such a window
    // fits nowhere and callers set no position.
    const auto distance = [=](HaarCorner corner) {
        return static_cast<ptrdiff_t>(static_cast<size_t>(corner.y) * static_cast<size_t>(rowElements) +
                                      static_cast<size_t>(corner.x));
    };
    return {distance(rectangle.a), distance(rectangle.b), distance(rectangle.c), distance(rectangle.d),
            rectangle.weight};
}

/** The sums of a rectangle for the window at `position` and at those behind it, in the type of the values. */
template <typename D, typename Sum>
HWY_INLINE hn::Vec<D> rectangleSums(D d, const Sum* position, const PlacedRectangle<hn::TFromD<D>>& rectangle) {
    const auto at = [=](ptrdiff_t distance) { return hn::LoadU(hn::Rebind<Sum, D>(), position + distance); };
    const auto sums = hn::Add(hn::Sub(hn::Sub(at(rectangle.a), at(rectangle.b)), at(rectangle.c)), at(rectangle.d));
    if constexpr (std::is_same_v<Sum, hn::TFromD<D>>)
        return sums;
    else
        return hn::ConvertTo(d, sums);
}

/** The 64-bit products of the even lanes, which are signed. */
template <typename D>
HWY_INLINE auto evenProducts([[maybe_unused]] D d, hn::Vec<D> a, hn::Vec<D> b) {
#if HWY_TARGET == HWY_SSSE3
    // SSSE3 multiplies unsigned lanes only: with A = a + 2^31 and B = b + 2^31, a b = A B - 2^31 (A + B) + 2^62.
    const hn::Repartition<uint32_t, D> unsignedLanes;
    const hn::Repartition<uint64_t, D> unsignedWide;
    const auto shifted = [=](hn::Vec<D> v) { return hn::BitCast(unsignedLanes, hn::Xor(v, hn::Set(d, INT32_MIN))); };
    const auto even = [=](hn::Vec<decltype(unsignedLanes)> v) {
        return hn::And(hn::BitCast(unsignedWide, v), hn::Set(unsignedWide, UINT32_MAX));
    };
    const auto product = hn::MulEven(shifted(a), shifted(b));
    const auto excess = hn::ShiftLeft<31>(hn::Add(even(shifted(a)), even(shifted(b))));
    return hn::BitCast(hn::Repartition<int64_t, D>(),
                       hn::Add(hn::Sub(product, excess), hn::Set(unsignedWide, uint64_t{1} << 62)));
#else
    return hn::MulEven(a, b);
#endif
}

/** Responses in the type of the values; integers wrap. */
struct PlainResponses {
    /** The most vectors that share the loads of corners and weights; in 64 bits they fit the registers. */
    static constexpr size_t kMostAtOnce = 4;

    template <typename D>
    using Responses = hn::Vec<D>;

    template <typename D>
    HWY_INLINE hn::Vec<D> products(D /*d*/, hn::Vec<D> sums, hn::Vec<D> weights) const {
        return hn::Mul(sums, weights);
    }
    template <typename D>
    HWY_INLINE hn::Vec<D> add(D /*d*/, hn::Vec<D> a, hn::Vec<D> b) const {
        return hn::Add(a, b);
    }
    template <typename D, typename Value>
    HWY_INLINE hn::Mask<D> areBelow(D d, hn::Vec<D> responses, const HaarFeature<Value>& feature,
                                    hn::Vec<D> norms) const {
        return hn::Gt(hn::Mul(hn::Set(d, feature.threshold), norms), responses);
    }
};

/** Responses of 64 bits to features of integers, times 2^shift. */
struct WideResponses {
    static constexpr size_t kMostAtOnce = 2;  // not 4, as responses take two vectors each

    int32_t shift;

    template <typename D>
    using Pairs = std::conditional_t<(hn::MaxLanes(D()) > 1), D, hn::Twice<D>>;
    template <typename D>
    using Wide = hn::Repartition<int64_t, Pairs<D>>;

    template <typename D>
    struct Responses {
        hn::Vec<Wide<D>> even, odd;
    };

    template <typename D>
    HWY_INLINE Responses<D> products(D d, hn::Vec<D> sums, hn::Vec<D> weights) const {
        // The low 32 bits of a product are signed, and some processors have no shift that would extend their sign in
        // lanes of 64 bits. So 2^31 is added to each, which makes it positive, and areBelow takes that off again.
        const hn::Repartition<uint32_t, Pairs<D>> narrow;
        const hn::Repartition<uint64_t, Pairs<D>> wide;
        const auto even = hn::BitCast(narrow, paired(d, sums)), factor = hn::BitCast(narrow, paired(d, weights));
        const auto odd = hn::BitCast(narrow, hn::ShiftRight<32>(hn::BitCast(wide, even)));
        const auto positive = [=](auto product) {
            const auto low = hn::And(product, hn::Set(wide, UINT32_MAX));
            return hn::BitCast(Wide<D>(), hn::Xor(low, hn::Set(wide, uint64_t{1} << 31)));
        };
        return {positive(hn::MulEven(even, factor)), positive(hn::MulEven(odd, factor))};
    }
    template <typename D>
    HWY_INLINE Responses<D> add(D /*d*/, const Responses<D>& a, const Responses<D>& b) const {
        return {hn::Add(a.even, b.even), hn::Add(a.odd, b.odd)};
    }
    template <typename D>
    HWY_INLINE hn::Mask<D> areBelow(D d, const Responses<D>& responses, const HaarFeature<int32_t>& feature,
                                    hn::Vec<D> norms) const {
        const Pairs<D> pairs;
        const Wide<D> wide;
        const auto excess = hn::Set(wide, -int64_t{INT32_MIN} * feature.rectangleCount);
        const auto kept = hn::Set(wide, shift < 64 ? -1 : 0);
        const auto threshold = hn::Set(pairs, feature.threshold);
        const auto isBelow = [&](hn::Vec<Wide<D>> total, hn::Vec<Pairs<D>> norm) {
            const auto response = hn::ShiftLeftSame(hn::And(hn::Sub(total, excess), kept), shift & 63);
            return hn::BitCast(pairs, hn::VecFromMask(wide, hn::Lt(response, evenProducts(pairs, norm, threshold))));
        };
        const auto even = paired(d, norms);
        const auto odd = hn::BitCast(pairs, hn::ShiftRight<32>(hn::BitCast(wide, even)));
        const auto below = hn::OddEven(isBelow(responses.odd, odd), isBelow(responses.even, even));
        if constexpr (hn::MaxLanes(D()) > 1)
            return hn::MaskFromVec(below);
        else
            return hn::MaskFromVec(hn::LowerHalf(d, below));
    }

  private:
    /** A vector of at least two lanes: a single lane is repeated. */
    template <typename D>
    static HWY_INLINE hn::Vec<Pairs<D>> paired(D /*d*/, hn::Vec<D> v) {
        if constexpr (hn::MaxLanes(D()) > 1)
            return v;
        else
            return hn::Combine(Pairs<D>(), v, v);
    }
};

}  // namespace VEKCV_VARIANT
