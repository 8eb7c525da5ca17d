// Runs of pixels whose neighbours are still to be looked at.
#pragma once

#include <cassert>

#include "simd.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {

/** Pixels of a region side by side. The run from which they were reached, in the parent row, is above or below. */
struct Run {
    int32_t y, left, right;
    int32_t direction;  // the parent row is y + direction
    bool isCovered;     // no pixel of the parent row next to this run is beside the parent run
};

/**
 * A stack in the work buffer of a flood fill.
 *
 * A run takes 12 bytes, and the buffer has 6 bytes for each pixel of the image, and a few more. In a fill by the values
 * of pixels alone that is always enough: behind each run there is a pixel that does not belong to it, so that it takes
 * the bytes of two pixels, unless it is a single pixel in the last column. The run from which such a one was reached is
 * no longer on the stack, and has bytes to spare: it has more than one pixel, or is a single one in the last column
 * too, whose other neighbour there cannot be on the stack, as it was reached from there itself, unless it is the first.
 */
class RunStack {
  public:
    static constexpr int64_t kSpareBytes = 32;

    /** Those of a work buffer that are for the stack; of more pixels than an int32_t counts, more than that. */
    static int64_t bytes(RoiSize roi) {
        constexpr int64_t kMost = int64_t{1} << 31;  // sizes that are wrong come here, too
        return 6 * HWY_MAX(-kMost, HWY_MIN(int64_t{roi.width} * roi.height, kMost)) + kSpareBytes;
    }

    RunStack(uint8_t* memory, int64_t bytes) {
        const auto begin = alignUp(reinterpret_cast<uintptr_t>(memory), uintptr_t{alignof(Entry)});
        const auto end = reinterpret_cast<uintptr_t>(memory) + static_cast<uintptr_t>(bytes);
        first_ = next_ = reinterpret_cast<Entry*>(begin);
        end_ = first_ + (end - begin) / sizeof(Entry);
    }

    bool isEmpty() const { return !hasTop_; }
    bool isFull() const { return next_ == end_; }

    /** Whether there are so many runs on the stack. */
    bool has(int64_t count) const { return hasTop_ && next_ + 1 == first_ + count; }

    HWY_INLINE void push(const Run& run) {
        if (hasTop_) {
            assert(!isFull());
            *next_++ = entryOf(top_);
        }
        top_ = run;
        hasTop_ = true;
    }

    HWY_INLINE Run pop() {
        const Run run = top_;
        hasTop_ = next_ != first_;
        if (hasTop_)
            top_ = runOf(*--next_);
        return run;
    }

    void clear() {
        next_ = first_;
        hasTop_ = false;
    }

  private:
    struct Entry {
        uint32_t yAndDirection, left, rightAndCovered;
    };

    static Entry entryOf(const Run& run) {
        return {static_cast<uint32_t>(run.y) << 1 | (run.direction > 0 ? 1U : 0U), static_cast<uint32_t>(run.left),
                static_cast<uint32_t>(run.right) << 1 | (run.isCovered ? 1U : 0U)};
    }
    static Run runOf(const Entry& entry) {
        return {static_cast<int32_t>(entry.yAndDirection >> 1), static_cast<int32_t>(entry.left),
                static_cast<int32_t>(entry.rightAndCovered >> 1), (entry.yAndDirection & 1) != 0 ? 1 : -1,
                (entry.rightAndCovered & 1) != 0};
    }

    Entry *first_, *next_, *end_;
    Run top_{};  // in registers: it is mostly used as soon as it is there
    bool hasTop_ = false;
};

}  // namespace VEKCV_VARIANT
