// Sums of products of elements with 16-bit taps, exact modulo 2^32, by multiply-adds that take two taps at a time.
#pragma once

#include "batches.h"
#include "kernel_size.h"
#include "pair_products.h"
#include "promote.h"
#include "rounding.h"
#include "stores.h"
#include "tap_elements.h"

namespace VEKCV_VARIANT {

/** Two vectors with a pair of lanes for each of as many results as D has lanes: the elements that two taps meet. */
template <typename D>
struct PairVectors {
    hn::Vec<D> first, second;
};

/** Pairs of the elements of two taps, wherever these lie. */
template <typename Taps>
struct InterleavedPairs {
    Taps taps;

    template <typename D>
    HWY_INLINE PairVectors<D> load(D d, int32_t k, ptrdiff_t x) const {
        return interleave(d, loadWidened(d, taps(k) + x), loadWidened(d, taps(k + 1) + x));
    }
    /** Pairs for a single last tap, whose elements come first, and the pair of factors for them. */
    template <typename D>
    HWY_INLINE PairVectors<D> loadLast(D d, int32_t k, ptrdiff_t x) const {
        const auto v = loadWidened(d, taps(k) + x);
        return interleave(d, v, v);
    }
    static HWY_INLINE uint32_t lastPair(uint16_t tap) { return tap; }

    /** Sums, saturated, in the order of the results: interleave and demotion both work on 128 bits at a time. */
    template <typename D, typename V>
    HWY_INLINE static hn::Vec<D> narrow(D d, V first, V second) {
        return hn::ReorderDemote2To(d, first, second);
    }

  private:
    template <typename D>
    HWY_INLINE static PairVectors<D> interleave(D d, hn::Vec<D> a, hn::Vec<D> b) {
        return {hn::InterleaveLower(d, a, b), hn::InterleaveUpper(d, a, b)};
    }
};

/**
 * Pairs of neighbours, for taps that meet neighbouring elements: they lie in memory as they are needed, those of even
 * results from x on and those of odd results from x + 1 on. A single last tap comes second in its pair, behind an
 * element whose factor is 0: so nothing beyond the last element is read, but there must be two taps at least.
 */
template <typename T>
struct NeighbourPairs {
    StridedTaps<T, 1> taps;

    template <typename D>
    HWY_INLINE PairVectors<D> load(D d, int32_t k, ptrdiff_t x) const {
        const T* const elements = taps.elements + k + x;
        return {loadWidened(d, elements), loadWidened(d, elements + 1)};
    }
    template <typename D>
    HWY_INLINE PairVectors<D> loadLast(D d, int32_t k, ptrdiff_t x) const {
        return load(d, k - 1, x);
    }
    static HWY_INLINE uint32_t lastPair(uint16_t tap) { return uint32_t{tap} << 16; }

    template <typename D, typename V>
    HWY_INLINE static hn::Vec<D> narrow(D d, V even, V odd) {
        const auto v = hn::ReorderDemote2To(d, even, odd);
        // Each 128 bits hold four even results and then four odd ones.
        alignas(16) static constexpr uint8_t kInTurn[] = {0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15};
        const hn::Repartition<uint8_t, D> bytes;
        return hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(bytes, v), hn::LoadDup128(bytes, kInTurn)));
    }
};

// What becomes of a sum before it is saturated to the type of the result.

struct Unscaled {
    constexpr explicit Unscaled(float /*factor*/ = 1) {}

    template <typename D>
    HWY_INLINE hn::Vec<D> operator()(D /*d*/, hn::Vec<D> sums) const {
        return sums;
    }
};

/** Times a factor of -1 to 1, rounded to the nearest integer, of two equally near ones to the even one. */
struct ScaledToNearest {
    float factor;

    template <typename D>
    HWY_INLINE hn::Vec<D> operator()(D d, hn::Vec<D> sums) const {
        const hn::Rebind<float, D> floats;
        const auto scaled = hn::Mul(hn::ConvertTo(floats, sums), hn::Set(floats, factor));
        return nearestIntegers(d, hn::Min(scaled, hn::Set(floats, 32767.0F)));
    }
};

/** Times a factor, saturated, then rounded towards zero. */
template <typename Result>
struct ScaledTowardsZero {
    float factor;

    template <typename D>
    HWY_INLINE hn::Vec<D> operator()(D d, hn::Vec<D> sums) const {
        const hn::Rebind<float, D> floats;
        const auto least = hn::Set(floats, static_cast<float>(hwy::LimitsMin<Result>()));
        const auto most = hn::Set(floats, static_cast<float>(hwy::LimitsMax<Result>()));
        const auto scaled = hn::Mul(hn::ConvertTo(floats, sums), hn::Set(floats, factor));
        return hn::ConvertTo(d, hn::Min(hn::Max(scaled, least), most));
    }
};

/** The sums of kVectors vectors of results. */
template <typename D, int32_t kVectors, typename Pairs, typename Size>
struct PairSums {
    using D32 = hn::Repartition<int32_t, D>;

    hn::Vec<D32> first[kVectors], second[kVectors];

    template <typename Kernel>
    HWY_INLINE PairSums(const Pairs& pairs, const Kernel& kernel, Size size, ptrdiff_t x) {
        for (int32_t i = 0; i < kVectors; ++i)
            first[i] = second[i] = hn::Zero(D32());
        const auto tap = [&](int32_t k) { return static_cast<uint16_t>(kernel[static_cast<size_t>(k)]); };
        const int32_t end = size;
        int32_t k = 0;
        for (; k + 1 < end; k += 2)
            add(uint32_t{tap(k)} | uint32_t{tap(k + 1)} << 16, x, [&](ptrdiff_t at) { return pairs.load(D(), k, at); });
        if (k < end)
            add(Pairs::lastPair(tap(k)), x, [&](ptrdiff_t at) { return pairs.loadLast(D(), k, at); });
    }

  private:
    template <typename Load>
    HWY_INLINE void add(uint32_t pair, ptrdiff_t x, const Load& load) {
        constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
        const auto taps = hn::BitCast(D(), hn::Set(D32(), static_cast<int32_t>(pair)));
#pragma GCC unroll 8
        for (int32_t i = 0; i < kVectors; ++i) {
            const PairVectors<D> v = load(x + i * kLanes);
            first[i] = addPairProducts(D32(), v.first, taps, first[i]);
            second[i] = addPairProducts(D32(), v.second, taps, second[i]);
        }
    }
};

/** What writeSums writes, one element at a time, for rows shorter than 16 bytes of elements. */
template <typename Taps, typename Finish, typename Result>
HWY_NOINLINE void writeFewSums(Taps taps, const int16_t* kernel, int32_t size, Finish finish, Result* out,
                               ptrdiff_t begin, ptrdiff_t end) {
    for (ptrdiff_t x = begin; x < end; ++x) {
        uint32_t sum = 0;
        for (int32_t k = 0; k < size; ++k)
            sum += static_cast<uint32_t>(kernel[k] * taps(k)[x]);
        const hn::CappedTag<int32_t, 1> one;
        const int32_t value = hn::GetLane(finish(one, hn::Set(one, static_cast<int32_t>(sum))));
        constexpr int32_t kLeast = hwy::LimitsMin<Result>(), kMost = hwy::LimitsMax<Result>();
        out[x] = static_cast<Result>(value < kLeast ? kLeast : value > kMost ? kMost : value);
    }
}

/** out[x] = finish(sum of all k of kernel[k] * taps(k)[x]), saturated, for x from begin to end. */
template <typename Pairs, typename Size, typename Finish, typename Result>
HWY_INLINE void writeSums(Pairs pairs, const int16_t* kernel, Size size, Finish finish, Result* out, ptrdiff_t begin,
                          ptrdiff_t end) {
    const auto factors = tapsOf(kernel, size);
    forBatches(
        hn::ScalableTag<int16_t>(), begin, end,
        [=](auto d, auto batch, ptrdiff_t x) __attribute__((always_inline)) {
            using D = decltype(d);
            constexpr int32_t kVectors = batch;
            constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
            const hn::Repartition<int32_t, D> d32;
            const PairSums<D, kVectors, Pairs, Size> sums(pairs, factors, size, x);
#pragma GCC unroll 8
            for (int32_t i = 0; i < kVectors; ++i)
                storeSaturated(d, Pairs::narrow(d, finish(d32, sums.first[i]), finish(d32, sums.second[i])),
                               out + x + i * kLanes);
        },
        [=] { writeFewSums(pairs.taps, kernel, size, finish, out, begin, end); });
}

/** 1 / divisor, rounded to float. */
inline float reciprocal(int32_t divisor) {
    return 1.0F / static_cast<float>(divisor);
}

}  // namespace VEKCV_VARIANT
