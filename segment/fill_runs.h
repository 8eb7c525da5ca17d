// Runs of pixels that join a region, found in a row by the bits of a vector of pixels at a time.
#pragma once

#include "fill_rules.h"
#include "mask_bits.h"

namespace VEKCV_VARIANT {

/** Pixels of a row, as many as a vector has elements, from `base` on. */
struct Block {
    int32_t base;
    uint64_t free;    // bits of pixels that may still join
    uint64_t starts;  // those of them that do so by themselves
};

/**
 * How many pixels there are in a block (most runs are short, and longer vectors do not pay), and where the blocks of a
 * row begin: those of a row that is shorter than a block at its first pixel.
 */
template <typename T>
struct Blocks {
    using D = hn::CappedTag<T, 32 / sizeof(T)>;
    static constexpr auto kLength = static_cast<int32_t>(hn::MaxLanes(D()));

    /** The block that has a pixel, and, if there is room, some to its left. */
    static int32_t around(int32_t x, int32_t width) { return HWY_MAX(0, HWY_MIN(x - kLength / 4, width - kLength)); }
    static int32_t from(int32_t x, int32_t width) { return HWY_MAX(0, HWY_MIN(x, width - kLength)); }
    static int32_t before(int32_t x) { return HWY_MAX(0, x - kLength); }
};

/** The first pixel of the run that the pixel x belongs to; from a block that has that pixel, or begins behind it. */
template <typename T, typename Row>
HWY_INLINE int32_t beginOfRun(const Row& row, Block block, int32_t x) {
    for (;;) {
        if (const int32_t count = x - block.base; count > 0) {
            // The pixel in front of x has the highest bit.
            const uint64_t refused = ~(row.precedes(block) << (64 - count));
            const int32_t joined = refused == 0 ? 64 : __builtin_clzll(refused);
            if (joined < count)
                return x - joined;
            x = block.base;
        }
        if (x == 0)
            return 0;
        block = row.block(Blocks<T>::before(x));
    }
}

/** The end of the run that has all pixels in front of x; from a block that has the pixel x, or ends there. */
template <typename T, typename Row>
HWY_INLINE int32_t endOfRun(const Row& row, Block& block, int32_t x, int32_t width) {
    for (;;) {
        const int32_t behind = block.base + Blocks<T>::kLength;
        if (x < behind) {
            const uint64_t refused = ~row.follows(block) >> (x - block.base);
            const int32_t joined = refused == 0 ? 64 : __builtin_ctzll(refused);
            if (joined < behind - x)
                return x + joined;
            x = behind;
        }
        if (x >= width)
            return width;
        block = row.block(Blocks<T>::from(x, width));
    }
}

/**
 * Calls take(left, right) for runs that begin at pixels from `first` to `last`, or, where such a pixel is reached from
 * there, further to the left. They may end behind `last`. A row gives block(base), and for a block the bits of
 *
 * - follows(block), pixels that join the region by themselves or with the pixel to their left
 * - precedes(block), those that join it with the pixel to their right
 */
template <typename T, typename Row, typename Take>
HWY_INLINE void forRuns(const Row& row, int32_t first, int32_t last, int32_t width, const Take& take) {
    Block block = row.block(Blocks<T>::around(first, width));
    for (int32_t x = first;;) {
        const int32_t behind = block.base + Blocks<T>::kLength;
        const uint64_t starts = x < behind ? block.starts >> (x - block.base) : 0;
        if (starts == 0) {
            x = HWY_MAX(x, behind);
            if (x > last)
                return;
            block = row.block(Blocks<T>::from(x, width));
            continue;
        }
        x += __builtin_ctzll(starts);
        if (x > last)
            return;
        // A pixel to the left that joins on account of its value alone has been met, unless it is the first one's.
        const int32_t left = Row::kIsDirected || x == first ? beginOfRun<T>(row, block, x) : x;
        const int32_t end = endOfRun<T>(row, block, x + 1, width);
        take(left, end - 1);
        block.free = block.free >> (end - block.base) << (end - block.base);
        x = end + 1;
    }
}

/** Writes a value to pixels. */
template <typename T, int32_t kChannels>
class Painter {
  public:
    explicit Painter(const Value<T, kChannels>& value) {
        if constexpr (kChannels == 1) {
            const hn::ScalableTag<T> d;
            hn::StoreU(hn::Set(d, value.channel[0]), d, pattern_);
        } else {
            for (int32_t i = 0; i < kPattern; ++i)
                pattern_[i] = value.channel[i % kChannels];
        }
    }

    HWY_INLINE void paint(T* row, int32_t left, int32_t right) const {
        paint(hn::ScalableTag<T>(), row + ptrdiff_t{left} * kChannels, (ptrdiff_t{right} - left + 1) * kChannels);
    }

  private:
    /** The pattern begins again with each pixel, which vectors do not. */
    static constexpr int32_t kPattern = static_cast<int32_t>(hn::MaxLanes(hn::ScalableTag<T>())) + kChannels - 1;

    /** Vectors, of which the last one overlaps; runs shorter than a vector take smaller ones. */
    template <typename D>
    HWY_INLINE void paint(D d, T* first, ptrdiff_t count) const {
        constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
        if (count < kLanes) {
            if constexpr (kLanes > 1)
                paint(hn::Half<D>(), first, count);
            return;
        }
        ptrdiff_t i = 0;
        if constexpr (kChannels == 1) {
            const auto value = hn::LoadU(d, pattern_);
            for (; i <= count - kLanes; i += kLanes)
                hn::StoreU(value, d, first + i);
            hn::StoreU(value, d, first + count - kLanes);
        } else {
            const auto value0 = hn::LoadU(d, pattern_), value1 = hn::LoadU(d, pattern_ + kLanes % 3),
                       value2 = hn::LoadU(d, pattern_ + 2 * kLanes % 3);
            for (; i <= count - 3 * kLanes; i += 3 * kLanes) {
                hn::StoreU(value0, d, first + i);
                hn::StoreU(value1, d, first + i + kLanes);
                hn::StoreU(value2, d, first + i + 2 * kLanes);
            }
            // Less than three vectors are left, and the last one ends with a pixel.
            if (i + kLanes < count)
                hn::StoreU(value0, d, first + i);
            if (i + 2 * kLanes < count)
                hn::StoreU(value1, d, first + i + kLanes);
            hn::StoreU(hn::LoadU(d, pattern_ + (3 - kLanes % 3) % 3), d, first + count - kLanes);
        }
    }

    T pattern_[kPattern];
};

}  // namespace VEKCV_VARIANT
