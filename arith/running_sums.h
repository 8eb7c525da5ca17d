// Rows of upright integral images.
#pragma once

#include "byte_pairs.h"
#include "image.h"
#include "pair_products.h"

namespace VEKCV_VARIANT {

/** Lanes of a vector of sums. Two such vectors are made in one step. */
using Sums = hn::CappedTag<int32_t, 8>;
constexpr auto kSumLanes = static_cast<ptrdiff_t>(hn::MaxLanes(Sums()));
constexpr ptrdiff_t kVectorPixels = 2 * kSumLanes;

/** a + b; integers wrap. */
template <typename Entry>
Entry plus(Entry a, Entry b) {
    if constexpr (hwy::IsFloat<Entry>())
        return a + b;
    else
        return static_cast<Entry>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

/** For each lane of a vector of sums which bytes of a group of four pixels it adds up: those up to the lane's own. */
template <ptrdiff_t kGroup>
struct GroupWeights {
    alignas(4 * kSumLanes) int8_t bytes[4 * kSumLanes];

    constexpr GroupWeights() : bytes() {
        for (ptrdiff_t i = 0; i < 4 * kSumLanes; ++i)
            bytes[i] = kGroup + i % 4 <= i / 4;
    }
};

/** In the two halves of each lane a part of the sum of the four pixels from kGroup on, as far as the lane adds them. */
template <ptrdiff_t kGroup>
HWY_INLINE auto groupSums(const uint8_t* pixels) {
    static constexpr GroupWeights<kGroup> kWeights;
    const hn::Repartition<uint8_t, Sums> bytes;
    int32_t group;
    __builtin_memcpy(&group, pixels + kGroup, sizeof(group));
    return sumBytePairs(hn::Repartition<int16_t, Sums>(), hn::BitCast(bytes, hn::Set(Sums(), group)),
                        hn::Load(hn::RebindToSigned<decltype(bytes)>(), kWeights.bytes));
}

/**
 * For each lane the sum of the pixels up to it. Every lane picks its pixels out of groups that are loaded into all of
 * them: that takes multiply-adds, for which processors have more ports than for the shuffles that would move lanes.
 */
HWY_INLINE hn::Vec<Sums> prefixSums(const uint8_t* pixels) {
    const hn::Repartition<int16_t, Sums> d;
    auto sums = groupSums<0>(pixels);
    if constexpr (kSumLanes == 8)
        sums = hn::Add(sums, groupSums<4>(pixels));
    return addPairProducts(Sums(), sums, hn::Set(d, 1), hn::Zero(Sums()));
}

/** The sums of the pixels of a row so far. */
template <typename T>
class RunningSum {
  public:
    using Entry = T;
    // Float sums of up to this many pixels are exact, and therefore the same in any order.
    static constexpr ptrdiff_t kExactPixels = hwy::IsFloat<T>() ? 65536 : PTRDIFF_MAX;

    /** Writes the entries for the next pixels of the row from the entries above them. */
    HWY_INLINE void addVector(const uint8_t* pixels, const T* above, T* row) {
        const auto first = prefixSums(pixels), second = hn::Add(prefixSums(pixels + kSumLanes), last(first));
        write(hn::Add(first, before_), above, row);
        const auto sums = hn::Add(second, before_);
        write(sums, above + kSumLanes, row + kSumLanes);
        before_ = last(sums);
    }

    /** To be called after the last vector and before the first single pixel. */
    HWY_INLINE void endVectors() { sum_ = static_cast<T>(hn::GetLane(before_)); }

    HWY_INLINE void addPixel(uint8_t pixel, const T* above, T* row) {
        sum_ = plus(sum_, static_cast<T>(pixel));
        *row = plus(*above, sum_);
    }

  private:
    using V = hn::Vec<Sums>;

    HWY_INLINE static void write(V sums, const T* above, T* row) {
        const hn::Rebind<T, Sums> d;
        if constexpr (hwy::IsFloat<T>())
            hn::StoreU(hn::Add(hn::LoadU(d, above), hn::ConvertTo(d, sums)), d, row);
        else
            hn::StoreU(hn::Add(hn::LoadU(d, above), sums), d, row);
    }

    /** The last lane in all lanes. */
    HWY_INLINE static V last(V v) {
        if constexpr (kSumLanes == 4)
            return hn::Broadcast<3>(v);
        else
            return hn::TableLookupLanes(v, hn::IndicesFromVec(Sums(), hn::Set(Sums(), kSumLanes - 1)));
    }

    V before_ = hn::Zero(Sums());
    T sum_ = 0;
};

/** For each of the four lanes of 128 bits the sum of the lanes up to it. */
template <typename D>
HWY_INLINE hn::Vec<D> prefixSumsIn128Bits(D d, hn::Vec<D> v) {
    v = hn::Add(v, hn::ShiftLeftLanes<1>(d, v));
    return hn::Add(v, hn::ShiftLeftLanes<2>(d, v));
}

/** The sums of the squares of the pixels of a row so far. */
template <typename T>
class RunningSquareSum {
  public:
    using Entry = T;
    static constexpr ptrdiff_t kExactPixels = PTRDIFF_MAX;

    HWY_INLINE void addVector(const uint8_t* bytes, const T* above, T* row) {
        const auto pixels = hn::PromoteTo(Pixels(), hn::LoadU(hn::Rebind<uint8_t, Pixels>(), bytes));
        // The multiply-add gives the sum of the squares of each pair of pixels, so prefix sums of these are those up to
        // each second pixel; without the square of that pixel they are those up to the first.
        const hn::Repartition<int32_t, Pixels> d;
        const hn::Repartition<uint32_t, Pixels> bits;
        const auto values = hn::BitCast(hn::RebindToSigned<Pixels>(), pixels);
        const auto pairs = prefixSumsIn128Bits(d, addPairProducts(d, values, values, hn::Zero(d)));
        const auto seconds = hn::BitCast(d, hn::ShiftRight<16>(hn::BitCast(bits, hn::Mul(pixels, pixels))));
        const auto firsts = hn::Sub(pairs, seconds);
        const auto lower = hn::InterleaveLower(d, firsts, pairs), upper = hn::InterleaveUpper(d, firsts, pairs);
        if constexpr (kVectorPixels == 16) {
            const hn::Half<decltype(d)> half;
            addEight(hn::LowerHalf(lower), hn::LowerHalf(upper), above, row);
            addEight(hn::UpperHalf(half, lower), hn::UpperHalf(half, upper), above + 8, row + 8);
        } else {
            addEight(lower, upper, above, row);
        }
    }

    HWY_INLINE void endVectors() { sum_ = hn::GetLane(before_); }

    HWY_INLINE void addPixel(uint8_t pixel, const T* above, T* row) {
        sum_ = plus(sum_, static_cast<T>(pixel * pixel));
        *row = plus(*above, sum_);
    }

  private:
    using Pixels = hn::Repartition<uint16_t, Sums>;
    using Four = hn::Full128<int32_t>;
    using D = hn::CappedTag<T, 4>;
    static constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));

    HWY_INLINE void addEight(hn::Vec<Four> lower, hn::Vec<Four> upper, const T* above, T* row) {
        write(lower, above, row);
        write(upper, above + 4, row + 4);
        before_ = hn::Add(before_, entries(firstLanes(hn::Broadcast<3>(upper))));
    }

    HWY_INLINE void write(hn::Vec<Four> sums, const T* above, T* row) const {
        writeEntries(firstLanes(sums), above, row);
        if constexpr (kLanes == 2)
            writeEntries(hn::UpperHalf(hn::Half<Four>(), sums), above + 2, row + 2);
    }
    template <typename V>
    HWY_INLINE void writeEntries(V sums, const T* above, T* row) const {
        hn::StoreU(hn::Add(hn::LoadU(D(), above), hn::Add(entries(sums), before_)), D(), row);
    }

    /** The first of four lanes, as many as D has. */
    HWY_INLINE static auto firstLanes(hn::Vec<Four> v) {
        if constexpr (kLanes == 4)
            return v;
        else
            return hn::LowerHalf(v);
    }
    /** Integers as entries of the table, which hold them exactly. */
    template <typename V>
    HWY_INLINE static hn::Vec<D> entries(V sums) {
        if constexpr (hwy::IsFloat<T>())
            return hn::PromoteTo(D(), sums);
        else
            return sums;
    }

    hn::Vec<D> before_ = hn::Zero(D());
    T sum_ = 0;
};

/**
 * A row of a table, or a part of one, from column 1 on: the entries above, the entries that are written, and the sum of
 * the pixels so far.
 */
template <typename Running>
struct TableRow {
    using Entry = typename Running::Entry;
    static constexpr ptrdiff_t kExactPixels = Running::kExactPixels;

    const Entry* above;
    Entry* entries;
    Running running{};

    HWY_INLINE void addVector(ptrdiff_t x, const uint8_t* pixels) { running.addVector(pixels, above + x, entries + x); }
    HWY_INLINE void endVectors() { running.endVectors(); }
    HWY_INLINE void addPixel(ptrdiff_t x, uint8_t pixel) { running.addPixel(pixel, above + x, entries + x); }
};

/** Adds the pixels of columns begin to end - 1 to rows of tables. */
template <typename... Rows>
HWY_INLINE void integrate(const uint8_t* pixels, ptrdiff_t begin, ptrdiff_t end, Rows&... rows) {
    ptrdiff_t vectorsEnd = end;
    ((vectorsEnd = HWY_MIN(vectorsEnd, Rows::kExactPixels)), ...);
    ptrdiff_t x = begin;
    for (; x + kVectorPixels <= vectorsEnd; x += kVectorPixels)
        (rows.addVector(x, pixels + x), ...);
    if (x == end)
        return;
    (rows.endVectors(), ...);
    for (; x < end; ++x)
        (rows.addPixel(x, pixels[x]), ...);
}

}  // namespace VEKCV_VARIANT
