#pragma once

#include "strided_groups.h"

namespace VEKCV_VARIANT {

/**
 * Which bytes of a 128-bit group a vector of every third element takes: those of its elements from kFirst on, where
 * the group begins with element kFrom. 128 stands for none. The same for each 128-bit group.
 */
template <ptrdiff_t kElementBytes, ptrdiff_t kFrom, ptrdiff_t kFirst>
struct ThirdBytes {
    alignas(64) uint8_t bytes[64];

    constexpr ThirdBytes() : bytes() {
        for (ptrdiff_t i = 0; i < 64; ++i) {
            const ptrdiff_t element = i % 16 / kElementBytes * 3;
            const bool isTaken = element >= kFirst && element < kFrom + 16 / kElementBytes;
            bytes[i] = isTaken ? static_cast<uint8_t>((element - kFrom) * kElementBytes + i % kElementBytes) : 128;
        }
    }
};

/** elements[3 * i] in each lane i. Reads nothing behind the last of them, unlike loads of whole groups of three. */
template <typename D>
HWY_INLINE hn::Vec<D> loadEveryThird(D d, const hn::TFromD<D>* elements) {
    constexpr auto kBytes = static_cast<ptrdiff_t>(sizeof(hn::TFromD<D>));
    constexpr ptrdiff_t kGroup = kGroupElements<hn::TFromD<D>>, kLast = 2 * kGroup - 2;
    const hn::Repartition<uint8_t, D> bytes;
    const auto take = [&]<ptrdiff_t kFrom, ptrdiff_t kFirst>() __attribute__((always_inline)) {
        static constexpr ThirdBytes<kBytes, kFrom, kFirst> kTaken;
        return hn::TableLookupBytesOr0(hn::BitCast(bytes, loadGroups(d, elements + kFrom, 3 * kGroup)),
                                       hn::Load(bytes, kTaken.bytes));
    };
    auto taken = take.template operator()<0, 0>();
    if constexpr (kBytes < 4)
        taken = hn::Or(taken, take.template operator()<kGroup, kGroup>());
    // Ends with the last element that is needed. Where elements have 4 bytes it holds the two last ones.
    constexpr ptrdiff_t kRest = kBytes < 4 ? 2 * kGroup : kGroup;
    return hn::BitCast(d, hn::Or(taken, take.template operator()<kLast, kRest>()));
}

}  // namespace VEKCV_VARIANT
