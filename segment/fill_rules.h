// Which pixels join a region that is filled.
#pragma once

#include <limits>
#include <type_traits>

#include "simd.h"

namespace VEKCV_VARIANT {

/** As many pixels as a vector has elements, channel by channel. */
template <typename D, int32_t kChannels>
struct PixelVectors {
    hn::Vec<D> channel[kChannels];
};

template <int32_t kChannels, typename D>
HWY_INLINE PixelVectors<D, kChannels> loadPixels(D d, const hn::TFromD<D>* first) {
    PixelVectors<D, kChannels> pixels;
    if constexpr (kChannels == 1)
        pixels.channel[0] = hn::LoadU(d, first);
    else if constexpr (hn::MaxLanes(D()) == 1)
        for (int32_t k = 0; k < kChannels; ++k)
            pixels.channel[k] = hn::LoadU(d, first + k);
    else
        hn::LoadInterleaved3(d, first, pixels.channel[0], pixels.channel[1], pixels.channel[2]);
    return pixels;
}

/** One value for each channel. */
template <typename T, int32_t kChannels>
struct Value {
    T channel[kChannels];

    static Value from(const T* channels) {
        Value value;
        for (int32_t k = 0; k < kChannels; ++k)
            value.channel[k] = channels[k];
        return value;
    }

    bool operator==(const Value& other) const {
        bool isEqual = true;
        for (int32_t k = 0; k < kChannels; ++k)
            isEqual = isEqual && channel[k] == other.channel[k];
        return isEqual;
    }
};

template <int32_t kChannels, typename D>
HWY_INLINE hn::Mask<D> areEqual(D d, const PixelVectors<D, kChannels>& pixels,
                                const Value<hn::TFromD<D>, kChannels>& value) {
    auto areAll = hn::Eq(pixels.channel[0], hn::Set(d, value.channel[0]));
    for (int32_t k = 1; k < kChannels; ++k)
        areAll = hn::And(areAll, hn::Eq(pixels.channel[k], hn::Set(d, value.channel[k])));
    return areAll;
}

/** Pixels that equal a value. */
template <typename T, int32_t kChannels>
struct Equal {
    Value<T, kChannels> value;

    template <typename D>
    HWY_INLINE hn::Mask<D> joins(D d, const PixelVectors<D, kChannels>& pixels) const {
        return areEqual(d, pixels, value);
    }
};

/** Pixels between two values, but for those that look as if they were filled. */
template <typename T, int32_t kChannels>
struct InRange {
    Value<T, kChannels> lower, upper, filled;

    static InRange around(const Value<T, kChannels>& seed, const Value<T, kChannels>& minDelta,
                          const Value<T, kChannels>& maxDelta, const Value<T, kChannels>& filled) {
        InRange range{{}, {}, filled};
        for (int32_t k = 0; k < kChannels; ++k) {
            const T s = seed.channel[k], below = minDelta.channel[k], above = maxDelta.channel[k];
            if constexpr (std::is_floating_point_v<T>) {
                range.lower.channel[k] = s - below;
                range.upper.channel[k] = s + above;
            } else {
                range.lower.channel[k] = static_cast<T>(s < below ? 0 : s - below);
                range.upper.channel[k] = static_cast<T>(HWY_MIN(s + above, int{std::numeric_limits<T>::max()}));
            }
        }
        return range;
    }

    template <typename D>
    HWY_INLINE hn::Mask<D> joins(D d, const PixelVectors<D, kChannels>& pixels) const {
        auto isInside = isBetween(d, pixels.channel[0], 0);
        for (int32_t k = 1; k < kChannels; ++k)
            isInside = hn::And(isInside, isBetween(d, pixels.channel[k], k));
        return hn::AndNot(areEqual(d, pixels, filled), isInside);
    }

  private:
    template <typename D>
    HWY_INLINE hn::Mask<D> isBetween(D d, hn::Vec<D> v, int32_t k) const {
        const auto least = hn::Set(d, lower.channel[k]), most = hn::Set(d, upper.channel[k]);
        if constexpr (std::is_floating_point_v<T>)
            return hn::And(hn::Ge(v, least), hn::Le(v, most));
        else  // how far it is outside
            return hn::Eq(hn::Or(hn::SaturatedSub(least, v), hn::SaturatedSub(v, most)), hn::Zero(d));
    }
};

/** Pixels that are close to others, from which they are reached. */
template <typename T, int32_t kChannels>
struct Close {
    Value<T, kChannels> minDelta, maxDelta;

    template <typename D>
    HWY_INLINE hn::Mask<D> joins(D d, const PixelVectors<D, kChannels>& pixels,
                                 const PixelVectors<D, kChannels>& from) const {
        auto isClose = isCloseTo(d, pixels.channel[0], from.channel[0], 0);
        for (int32_t k = 1; k < kChannels; ++k)
            isClose = hn::And(isClose, isCloseTo(d, pixels.channel[k], from.channel[k], k));
        return isClose;
    }

  private:
    template <typename D>
    HWY_INLINE hn::Mask<D> isCloseTo(D d, hn::Vec<D> v, hn::Vec<D> from, int32_t k) const {
        const auto below = hn::Set(d, minDelta.channel[k]), above = hn::Set(d, maxDelta.channel[k]);
        if constexpr (std::is_floating_point_v<T>) {
            return hn::And(hn::Ge(v, hn::Sub(from, below)), hn::Le(v, hn::Add(from, above)));
        } else {
            const auto tooFar = hn::Or(hn::SaturatedSub(hn::SaturatedSub(from, v), below),
                                       hn::SaturatedSub(hn::SaturatedSub(v, from), above));
            return hn::Eq(tooFar, hn::Zero(d));
        }
    }
};

}  // namespace VEKCV_VARIANT
