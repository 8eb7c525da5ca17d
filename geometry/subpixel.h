// Pixels between pixels: weighted sums of the four pixels around a place that is the same in each square of pixels.
// Each way to compute them is made from the fractions of the place; between(upper, lower) gives the rule of a row of
// results that lies between two rows of the source (see pixelwise.h). A rule reads one pixel more than it writes.
#pragma once

#include "byte_pairs.h"
#include "pair_products.h"
#include "pixelwise.h"
#include "rounding.h"

namespace VEKCV_VARIANT {

/** How far a place lies right of one column and below one row, from 0 to 1. */
struct Fractions {
    double x, y;

    /** Of offsets of either sign. From 2^30 on offsets are whole numbers; infinities and NaN count as such. */
    static Fractions of(float dx, float dy) { return {of(dx), of(dy)}; }

  private:
    static double of(double offset) {
        constexpr double kMost = 1 << 30;
        if (!(offset > -kMost && offset < kMost))
            return 0;
        const double fraction = offset - static_cast<int32_t>(offset);
        return fraction < 0 ? fraction + 1 : fraction;
    }
};

/** How much the pixels of the upper and of the lower row count, the left and the right ones. */
template <typename T>
struct Weights {
    T upperLeft, upperRight, lowerLeft, lowerRight;
};

/** Products in 14 bits, cut and 1 more; the largest one loses what is then above 16384 in all. */
inline Weights<int32_t> integerWeights(Fractions fractions) {
    const auto x = static_cast<int32_t>(fractions.x * 16384 + 0.5), y = static_cast<int32_t>(fractions.y * 16384 + 0.5);
    const auto product = [](int32_t a, int32_t b) { return (a * b + 16384) >> 14; };
    Weights<int32_t> w{product(16384 - x, 16384 - y), product(x, 16384 - y), product(16384 - x, y), product(x, y)};
    int32_t* largest = &w.upperLeft;
    for (int32_t* const other : {&w.lowerLeft, &w.lowerRight, &w.upperRight})
        if (*other > *largest)
            largest = other;
    *largest -= w.upperLeft + w.upperRight + w.lowerLeft + w.lowerRight - 16384;
    return w;
}

/** One result of integer weights. */
template <typename T>
HWY_INLINE T weighed(const Weights<int32_t>& w, const T* upper, const T* lower) {
    return static_cast<T>(
        (w.upperLeft * upper[0] + w.upperRight * upper[1] + w.lowerLeft * lower[0] + w.lowerRight * lower[1] + 8192) >>
        14);
}

/** Integer weights as 128 * high + low, each of 8 bits. */
struct WeightDigits {
    Weights<int8_t> high, low;

    /**
     * With low digits whose positive ones are at most 128 together, and whose negative ones at least -128, no sum of
     * products with bytes leaves 16 bits. The least digits mostly are such; where they are not, the largest one becomes
     * 128 less, or the smallest one 128 more.
     */
    static WeightDigits of(const Weights<int32_t>& w) {
        const int32_t weights[] = {w.upperLeft, w.upperRight, w.lowerLeft, w.lowerRight};
        int32_t low[4], positive = 0, negative = 0;
        for (int i = 0; i < 4; ++i) {
            low[i] = weights[i] - 128 * HWY_MIN((weights[i] + 64) >> 7, 127);
            (low[i] > 0 ? positive : negative) += low[i];
        }
        while (positive > 128 || negative < -128) {
            int32_t* farthest = low;
            const int32_t sign = positive > 128 ? 1 : -1;
            for (int32_t& digit : low)
                if (sign * digit > sign * *farthest)
                    farthest = &digit;
            (sign > 0 ? positive : negative) -= *farthest;
            *farthest -= 128 * sign;
            (sign > 0 ? negative : positive) += *farthest;
        }
        const auto high = [&](int i) { return static_cast<int8_t>((weights[i] - low[i]) / 128); };
        const auto lowest = [&](int i) { return static_cast<int8_t>(low[i]); };
        return {{high(0), high(1), high(2), high(3)}, {lowest(0), lowest(1), lowest(2), lowest(3)}};
    }
};

/** Bytes with integer weights, in lanes of 16 bits. */
class ByteInterpolation {
  public:
    explicit ByteInterpolation(Fractions fractions)
        : weights_(integerWeights(fractions)), digits_(WeightDigits::of(weights_)) {}

    auto between(const uint8_t* upper, const uint8_t* lower) const {
        return [ w = weights_, high = digits_.high, low = digits_.low, upper, lower ](auto d, ptrdiff_t x)
            __attribute__((always_inline)) {
            if constexpr (hn::MaxLanes(d) == 1) {
                return hn::Set(d, weighed(w, upper + x, lower + x));
            } else {
                const hn::Repartition<int16_t, decltype(d)> sums;
                const auto everyOther = [&](ptrdiff_t i) __attribute__((always_inline)) {
                    const auto above = hn::LoadU(d, upper + i), below = hn::LoadU(d, lower + i);
                    const auto fine = hn::Add(sumBytePairs(sums, above, low.upperLeft, low.upperRight),
                                              sumBytePairs(sums, below, low.lowerLeft, low.lowerRight));
                    const auto coarse = hn::Add(sumBytePairs(sums, above, high.upperLeft, high.upperRight),
                                                sumBytePairs(sums, below, high.lowerLeft, high.lowerRight));
                    // The product with 256, rounded to its upper bits, is a shift to the right by 7 that rounds.
                    return hn::MulFixedPoint15(hn::Add(coarse, hn::ShiftRight<7>(fine)), hn::Set(sums, 256));
                };
                return hn::BitCast(d, hn::Or(everyOther(x), hn::ShiftLeft<8>(everyOther(x + 1))));
            }
        };
    }

  private:
    Weights<int32_t> weights_;
    WeightDigits digits_;
};

/** Pixels of 16 bits with integer weights; as signed numbers, which are 32768 less, their sums fit 32 bits. */
class WordInterpolation {
  public:
    explicit WordInterpolation(Fractions fractions) : weights_(integerWeights(fractions)) {}

    auto between(const uint16_t* upper, const uint16_t* lower) const {
        return [ w = weights_, upper, lower ](auto d, ptrdiff_t x) __attribute__((always_inline)) {
            if constexpr (hn::MaxLanes(d) == 1) {
                return hn::Set(d, weighed(w, upper + x, lower + x));
            } else {
                const hn::RebindToSigned<decltype(d)> words;
                const hn::RepartitionToWide<decltype(words)> sums;
                const auto bias = hn::Set(d, 0x8000);
                const auto pairOf = [=](int32_t left, int32_t right) __attribute__((always_inline)) {
                    return hn::BitCast(words, hn::Set(sums, left | right << 16));
                };
                const auto everyOther = [&](ptrdiff_t i) __attribute__((always_inline)) {
                    const auto pairs = [=](const uint16_t* row) __attribute__((always_inline)) {
                        return hn::BitCast(words, hn::Xor(hn::LoadU(d, row + i), bias));
                    };
                    const auto above =
                        addPairProducts(sums, pairs(upper), pairOf(w.upperLeft, w.upperRight), hn::Set(sums, 8192));
                    return addPairProducts(sums, pairs(lower), pairOf(w.lowerLeft, w.lowerRight), above);
                };
                const auto even = hn::ShiftRight<14>(everyOther(x)), odd = hn::ShiftLeft<2>(everyOther(x + 1));
                return hn::Xor(hn::OddEven(hn::BitCast(d, odd), hn::BitCast(d, even)), bias);
            }
        };
    }

  private:
    Weights<int32_t> weights_;
};

/** Sums of bytes with integer weights, divided by 2^(14 + scaleFactor). Floats hold all that counts exactly. */
class ScaledInterpolation {
  public:
    ScaledInterpolation(Fractions fractions, int32_t scaleFactor) {
        // With the largest factor all results are 0, with the smallest one all but 0 are 65535.
        const int32_t exponent = -14 - HWY_MAX(-30, HWY_MIN(scaleFactor, 10));
        const float scale =
            exponent < 0 ? 1.0f / static_cast<float>(1 << -exponent) : static_cast<float>(1 << exponent);
        const auto w = integerWeights(fractions);
        const auto scaled = [=](int32_t weight) { return static_cast<float>(weight) * scale; };
        weights_ = {scaled(w.upperLeft), scaled(w.upperRight), scaled(w.lowerLeft), scaled(w.lowerRight)};
    }

    auto between(const uint8_t* upper, const uint8_t* lower) const {
        return [ w = weights_, upper, lower ](auto words, ptrdiff_t begin) __attribute__((always_inline)) {
            return truncatedWords(
                words, begin, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                    const auto product = [=](float weight, const uint8_t* pixels) __attribute__((always_inline)) {
                        return hn::Mul(hn::Set(d, weight), loadFloats(d, pixels + x));
                    };
                    const auto above = hn::Add(product(w.upperLeft, upper), product(w.upperRight, upper + 1));
                    const auto below = hn::Add(product(w.lowerLeft, lower), product(w.lowerRight, lower + 1));
                    return hn::Add(hn::Add(above, below), hn::Set(d, 0.5f));
                });
        };
    }

  private:
    template <typename D, typename Floats>
    HWY_INLINE static hn::Vec<D> truncatedWords(D d, ptrdiff_t x, const Floats& floats) {
        if constexpr (hn::MaxLanes(D()) > hn::MaxLanes(hn::ScalableTag<float>())) {
            return byHalves(
                d, x, [&](auto half, ptrdiff_t i) __attribute__((always_inline)) {
                    return truncatedWords(half, i, floats);
                });
        } else {
            const hn::Rebind<float, D> wide;
            return hn::DemoteTo(
                d, truncatedIntegers(hn::Rebind<int32_t, D>(), hn::Min(floats(wide, x), hn::Set(wide, 65535.0f))));
        }
    }

    Weights<float> weights_;
};

/** Floats, from left to right in both rows, then from the upper to the lower one. */
template <typename T>
class FloatInterpolation {
  public:
    explicit FloatInterpolation(Fractions fractions)
        : x_(static_cast<float>(fractions.x)), y_(static_cast<float>(fractions.y)) {}

    auto between(const T* upper, const T* lower) const {
        return [ fractionX = x_, fractionY = y_, upper, lower ](auto d, ptrdiff_t x) __attribute__((always_inline)) {
            using V = hn::Vec<decltype(d)>;
            const auto part = [=](V from, V to, float fraction) __attribute__((always_inline)) {
                return hn::Add(from, hn::Mul(hn::Set(d, fraction), hn::Sub(to, from)));
            };
            const auto along = [=](const T* row) __attribute__((always_inline)) {
                return part(loadFloats(d, row + x), loadFloats(d, row + x + 1), fractionX);
            };
            return part(along(upper), along(lower), fractionY);
        };
    }

  private:
    float x_, y_;
};

template <typename T, typename Result>
struct InterpolationOf {
    using Type = FloatInterpolation<T>;
};
template <>
struct InterpolationOf<uint8_t, uint8_t> {
    using Type = ByteInterpolation;
};
template <>
struct InterpolationOf<uint16_t, uint16_t> {
    using Type = WordInterpolation;
};
template <>
struct InterpolationOf<uint8_t, uint16_t> {
    using Type = ScaledInterpolation;
};

/** The way to compute pixels of one type from those of another. */
template <typename T, typename Result>
using Interpolation = typename InterpolationOf<T, Result>::Type;

}  // namespace VEKCV_VARIANT
