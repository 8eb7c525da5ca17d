// Boundaries of segments, in place and in raster order. A pixel stays when all of its neighbours before it have its
// value or the border value. The row above is finished; in the row itself a pixel depends on what becomes of the one to
// its left, that one on the next, and so on, which is resolved for all pixels of a vector at once.
#pragma once

#include <type_traits>

#include "image.h"
#include "mask_bits.h"
#include "rest.h"

namespace VEKCV_VARIANT {

/** As many bits for each lane as it has bytes: masks of 16-bit lanes take instructions that the variants do without. */
template <typename D>
class LaneBits {
    static constexpr size_t kLaneBytes = sizeof(hn::TFromD<D>), kBytes = hn::MaxLanes(D()) * kLaneBytes;
    using Bytes = hn::Repartition<uint8_t, D>;

  public:
    using Bits = std::conditional_t<(kBytes > 32), uint64_t, uint32_t>;

    HWY_INLINE static Bits of(D d, hn::Mask<D> mask) {
        const auto bytes = hn::MaskFromVec(hn::BitCast(Bytes(), hn::VecFromMask(d, mask)));
        return static_cast<Bits>(maskBits(Bytes(), bytes));
    }

    /** Lanes of `yes` where the bits are set, of `no` elsewhere. */
    HWY_INLINE static hn::Vec<D> select(D d, Bits bits, hn::Vec<D> yes, hn::Vec<D> no) {
        const auto mask = hn::LoadMaskBits(Bytes(), reinterpret_cast<const uint8_t*>(&bits));
        return hn::BitCast(d, hn::IfThenElse(mask, hn::BitCast(Bytes(), yes), hn::BitCast(Bytes(), no)));
    }

    /**
     * The lanes that stay: those of `stay`, and those of `alternate` of which the lane before does not stay; before the
     * first lane is the pixel of which `isBeforeKept` tells. In a run of alternating lanes, and for the one before it,
     * (stays XOR has an odd place) is the same; an addition carries it through the run.
     */
    HWY_INLINE static Bits resolve(Bits stay, Bits alternate, bool isBeforeKept) {
        constexpr Bits kAll = static_cast<Bits>(~Bits{0});
        constexpr Bits kLane = (Bits{1} << kLaneBytes) - 1, kFirst = kAll / kLane, kEven = kAll / (kLane + 2);
        const Bits carried = (stay & kEven) | (~stay & ~alternate & ~kEven);
        const Bits begins = ((carried << kLaneBytes) | (isBeforeKept ? 0 : 1)) & alternate & kFirst;
        const Bits runs = (alternate + begins) ^ alternate;
        return stay | ((runs ^ ~kEven) & alternate);
    }

    HWY_INLINE static bool hasLast(Bits bits) { return (bits >> (kBytes - 1) & 1) != 0; }
};

/**
 * Marks the pixels of a vector, none of which is the first or the last of its row. `left` are the pixels beside them,
 * before any of the row was marked, but for the first of them: isBeforeKept tells whether that one was not marked.
 * Gives the same for the last one of the vector.
 */
template <bool kAllNeighbours, typename D, typename T>
HWY_INLINE bool markVector(D d, const T* above, T* row, ptrdiff_t x, hn::Vec<D> left, bool isBeforeKept,
                           T borderValue) {
    const auto pixels = hn::LoadU(d, row + x), up = hn::LoadU(d, above + x);
    // Inside of a segment nothing changes. Diagonal neighbours are harmless there, too: in the finished row above, two
    // pixels side by side are equal, or one has the border value.
    if (hn::AllTrue(d, hn::And(hn::Eq(left, pixels), hn::Eq(up, pixels))))
        return true;
    const auto border = hn::Set(d, borderValue);
    const auto isHarmless = [=](auto q) { return hn::Or(hn::Eq(q, pixels), hn::Eq(q, border)); };
    auto mayStay = isHarmless(up);
    if constexpr (kAllNeighbours)
        mayStay =
            hn::And(mayStay, hn::And(isHarmless(hn::LoadU(d, above + x - 1)), isHarmless(hn::LoadU(d, above + x + 1))));
    // What is harmless on the left is so even if it becomes the border value; else the pixel stays if that does.
    using Lanes = LaneBits<D>;
    const auto stay = Lanes::of(d, hn::And(mayStay, isHarmless(left))), all = Lanes::of(d, mayStay);
    const auto kept = Lanes::resolve(stay, all & ~stay, isBeforeKept);
    hn::StoreU(Lanes::select(d, kept, pixels, border), d, row + x);
    return Lanes::hasLast(kept);
}

/** Marks a pixel at an end of its row. */
template <bool kAllNeighbours, typename T>
void markEnd(const T* above, T* row, ptrdiff_t x, ptrdiff_t width, T borderValue) {
    const auto isHarmless = [=](T q) { return q == borderValue || q == row[x]; };
    const bool hasLeft = x > 0, hasRight = x + 1 < width;
    bool stays = isHarmless(above[x]) && (!hasLeft || isHarmless(row[x - 1]));
    if constexpr (kAllNeighbours)
        stays = stays && (!hasLeft || isHarmless(above[x - 1])) && (!hasRight || isHarmless(above[x + 1]));
    if (!stays)
        row[x] = borderValue;
}

template <bool kAllNeighbours, typename T>
HWY_NOINLINE void markRow(const T* above, T* row, ptrdiff_t width, T borderValue) {
    markEnd<kAllNeighbours>(above, row, 0, width, borderValue);
    const hn::ScalableTag<T> d;
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d));
    ptrdiff_t x = 1;
    if (x + kLanes < width) {
        auto left = hn::LoadU(d, row);
        bool isBeforeKept = true;
        for (; x + kLanes < width; x += kLanes) {
            // Before what they overlap is written: the processor would wait for that.
            const auto next = x + 2 * kLanes < width ? hn::LoadU(d, row + x + kLanes - 1) : left;
            isBeforeKept = markVector<kAllNeighbours>(d, above, row, x, left, isBeforeKept, borderValue);
            left = next;
        }
    }
    forHalves(
        d, x, width - 1, [=](auto half, ptrdiff_t i) __attribute__((always_inline)) {
            markVector<kAllNeighbours>(half, above, row, i, hn::LoadU(half, row + i - 1), true, borderValue);
        });
    if (width > 1)
        markEnd<kAllNeighbours>(above, row, width - 1, width, borderValue);
}

/** Writes the border value where segments meet, seen over four or eight neighbours. */
template <bool kAllNeighbours, typename T>
void markBoundaries(Image<T> markers, RoiSize roi, T borderValue) {
    // The first row has no row above it; with itself in the place of that, only left neighbours differ.
    markRow<false>(markers.row(0), markers.row(0), roi.width, borderValue);
    for (ptrdiff_t y = 1; y < roi.height; ++y)
        markRow<kAllNeighbours>(markers.row(y - 1), markers.row(y), roi.width, borderValue);
}

}  // namespace VEKCV_VARIANT
