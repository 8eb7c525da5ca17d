// The rows under a window while it moves down an image, prepared for windows of any shape.
#pragma once

#include "flat_element.h"

namespace VEKCV_VARIANT {

/** What of the rows a window of any shape needs. */
struct RunNeeds {
    const RunLengths& lengths;
    int32_t leastRows[RunLengths::kMost];  // of the runs of a length; the height of the window where there are none
    int32_t results;                       // for which rows are there at a time, at most kMostRowsAtOnce

    /** Pixels beside those that windows reach, from which nothing that is written depends. */
    int32_t margin() const { return results - 1; }
};

/**
 * Rows of an image with the pixels beside them, and with those above and below it. For each of some lengths there is
 * the rank of as many pixels from every place down, for as many rows as are needed, so that all of them fit into a
 * cache.
 */
template <typename Rank, typename T>
class RunRows {
    /** The ranks of one length. */
    struct Ring {
        T** rows;           // several times the same, so that any rows that are there are neighbours
        T** latest;         // the row that is complete since the last one was prepared
        T* const* windows;  // the topmost row of windows
        int32_t count;
    };
    static constexpr int32_t kTurns = 3;                  // of a ring
    static constexpr ptrdiff_t kVector = 64 / sizeof(T);  // elements

  public:
    /** Bytes of scratch memory, which may begin anywhere, for rows of at most so many pixels. */
    static constexpr int64_t bytes(int32_t width, int32_t channels, RoiSize window, int32_t lengths) {
        const int64_t rows = int64_t{window.height} + kMostRowsAtOnce - 1;
        const int64_t arrays = rowElements(width, channels, window, kMostRowsAtOnce - 1) * int64_t{sizeof(T)};
        return lengths * (rows * (arrays + kTurns * int64_t{sizeof(T*)}) + int64_t{sizeof(Ring)}) +
               int64_t{window.height} * int64_t{sizeof(T*)} + 2 * kBlockAlignment + 4 * Scratch::kAlignment;
    }

    RunRows(Scratch& memory, RoiSize roi, int32_t channels, const Window& window, const RunNeeds& needs)
        : roi_(roi),
          channels_(channels),
          window_(window),
          lengths_(needs.lengths),
          margin_(needs.margin()),
          rowElements_(static_cast<ptrdiff_t>(rowElements(roi.width, channels, window.size, margin_))) {
        int32_t rows = 0;
        for (int32_t i = 0; i < lengths_.count; ++i)
            rows += rowsOf(i, needs);
        // The pixels of a row are aligned.
        const ptrdiff_t before = (window.anchor.x + margin_) * ptrdiff_t{channels};
        T* row = alignUp(memory.take<T>(rows * rowElements_ + 2 * kVector)) + (kVector - before % kVector);
        T** pointers = memory.take<T*>(kTurns * ptrdiff_t{rows});
        rings_ = memory.take<Ring>(lengths_.count);
        parts_ = memory.take<const T*>(window.size.height);
        for (int32_t i = 0; i < lengths_.count; ++i) {
            const int32_t count = rowsOf(i, needs);
            rings_[i] = {pointers, pointers + count - 1, nullptr, count};
            for (int32_t k = 0; k < kTurns * count; ++k)
                *pointers++ = row + k % count * rowElements_;
            row += count * rowElements_;
        }
    }

    /**
     * Makes the rows in the windows of `results` rows from y on available. Calls go down the image. Where there are
     * fewer than can be, what is in the rows of the others is undefined.
     */
    void moveTo(const Rows<const T>& source, int32_t y, int32_t results) {
        const int64_t top = int64_t{y} - window_.anchor.y;
        if (next_ == kNone)
            first_ = next_ = top;
        for (const int64_t end = top + window_.size.height + results - 1; next_ < end; ++next_)
            prepare(source[rowInside(next_, roi_.height)]);
        for (int32_t i = 0; i < lengths_.count; ++i)
            rings_[i].windows = rings_[i].latest - (next_ - lengths_.values[i] - top);
        isCareful_ = lastCareful_ >= top;
    }

    /** Whether there may be NaNs in these rows. */
    bool isCareful() const { return isCareful_; }

    /**
     * The ranks of a run in the window of result k. The first is for the pixel x = 0; those of the margin beside the
     * region can be read, too.
     */
    const T* operator()(MaskRun run, int32_t k) const {
        return rings_[run.length].windows[run.row + k] + (ptrdiff_t{run.column} + margin_) * channels_;
    }

  private:
    static constexpr int64_t kNone = INT64_MIN;

    static constexpr int64_t rowElements(int32_t width, int32_t channels, RoiSize window, int32_t margin) {
        // The last vector of a row may reach beyond it.
        return alignUp<int64_t>((int64_t{width} + window.width - 1 + 2 * margin) * channels + kVector, kVector);
    }

    /** How many rows of a length are needed at a time: by windows, and to compute the next length. */
    int32_t rowsOf(int32_t i, const RunNeeds& needs) const {
        const int32_t length = lengths_.values[i];
        const int32_t forWindows = window_.size.height - needs.leastRows[i] + needs.results - length;
        const int32_t forNext = i + 1 < lengths_.count ? lengths_.values[i + 1] - length + 1 : 1;
        return HWY_MAX(forWindows, forNext);
    }

    /** Prepares the next row, which may lie above the image or below it, and the ranks that end there. */
    void prepare(const T* pixels) {
        const bool hasNaNs = hasNaN(pixels, ptrdiff_t{roi_.width} * channels_);
        if (hasNaNs)
            lastCareful_ = next_;
        for (int32_t i = 0; i < lengths_.count; ++i) {
            Ring& ring = rings_[i];
            ring.latest = ring.latest + 1 < ring.rows + 2 * ring.count ? ring.latest + 1 : ring.rows + ring.count;
            const int64_t row = next_ - lengths_.values[i] + 1;
            if (i == 0)
                hasNaNs ? copy<CarefulRank<Rank, T>>(pixels) : copy<Rank>(pixels);
            else if (row >= first_)
                row <= lastCareful_ ? joinDown<CarefulRank<Rank, T>>(i) : joinDown<Rank>(i);
        }
    }

    template <typename R>
    void copy(const T* pixels) const {
        const int32_t before = window_.anchor.x + margin_;
        const int32_t after = window_.size.width - 1 - window_.anchor.x + margin_;
        T* const row = *rings_[0].latest + ptrdiff_t{before} * channels_;
        joinRows<R>(&pixels, 1, ptrdiff_t{roi_.width} * channels_, row);
        fillBeside(row, roi_.width, channels_, before, after);
    }

    /** The ranks of a length in its latest row, from those of the length before it. */
    template <typename R>
    HWY_NOINLINE void joinDown(int32_t i) const {
        const int32_t joined = lengths_.values[i - 1], last = lengths_.values[i] - joined;
        T* const* const rows = rings_[i - 1].latest - last;
        int32_t count = 0;
        for (int32_t k = 0; k < last; k += joined)
            parts_[count++] = rows[k];
        parts_[count++] = rows[last];
        joinRows<R>(parts_, count, rowElements_ - kVector, *rings_[i].latest);
    }

    RoiSize roi_;
    int32_t channels_;
    Window window_;
    const RunLengths& lengths_;
    int32_t margin_;
    ptrdiff_t rowElements_;
    Ring* rings_;
    const T** parts_;                   // of runs
    int64_t first_ = 0, next_ = kNone;  // rows to prepare
    int64_t lastCareful_ = kNone;
    bool isCareful_ = false;
};

}  // namespace VEKCV_VARIANT
