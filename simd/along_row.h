// What spreads along a row, from one end to the other: lanes of 128-bit groups that are moved away from that end.
#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** The end of a row that pixels spread from. */
enum class From { kLeft, kRight };

/** Lanes moved by so many bytes away from that end, within 128-bit groups; those of `fill` follow them. */
template <From kFrom, int kBytes, typename D>
HWY_INLINE hn::Vec<D> moved(D d, hn::Vec<D> v, hn::Vec<D> fill) {
    if constexpr (kFrom == From::kLeft)
        return hn::CombineShiftRightBytes<16 - kBytes>(d, v, fill);
    else
        return hn::CombineShiftRightBytes<kBytes>(d, fill, v);
}

/** Indices of bytes that repeat a lane of a 128-bit group, which is counted from the end that is reached last. */
template <From kFrom, size_t kFromLast, size_t kLaneBytes>
struct LaneFromLast {
    alignas(16) uint8_t bytes[16];

    constexpr LaneFromLast() : bytes() {
        for (size_t i = 0; i < 16; ++i)
            bytes[i] = static_cast<uint8_t>(
                (kFrom == From::kLeft ? 16 - (kFromLast + 1) * kLaneBytes : kFromLast * kLaneBytes) + i % kLaneBytes);
    }
};

/** The last lane of each 128-bit group, or one of those before it, in all of its lanes. */
template <From kFrom, size_t kFromLast = 0, typename D>
HWY_INLINE hn::Vec<D> repeatLast(D d, hn::Vec<D> v) {
    static constexpr LaneFromLast<kFrom, kFromLast, sizeof(hn::TFromD<D>)> kLane;
    const hn::Repartition<uint8_t, D> bytes;
    return hn::BitCast(d, hn::TableLookupBytes(hn::BitCast(bytes, v), hn::LoadDup128(bytes, kLane.bytes)));
}

}  // namespace VEKCV_VARIANT
