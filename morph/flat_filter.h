#pragma once

#include "run_rows.h"

namespace VEKCV_VARIANT {

/** A structuring element mirrored at its anchor, or as it is. */
enum class Side { kGiven, kMirrored };

inline Window windowOf(const Window& window, Side side) {
    const auto [size, anchor] = window;
    return side == Side::kGiven ? window : Window{size, {size.width - 1 - anchor.x, size.height - 1 - anchor.y}};
}

/**
 * The ranks of all pixels in windows of any shape. Slopes give intermediate results for kResults rows at a time,
 * bars for one; these are joined with the single runs of each row.
 */
template <typename Rank, typename T>
class FlatFilter {
    static constexpr int32_t kResults = kMostRowsAtOnce;  // of a slope
    static constexpr int32_t kMargin = kResults - 1;
    static constexpr int32_t kFewResults = 2;  // of bars and single runs, for which there are fewer rows in the cache

  public:
    /** Bytes of scratch memory, which may begin anywhere, for rows of at most so many pixels. */
    static constexpr int64_t bytes(int32_t width, int32_t channels, RoiSize window, const MaskSummary& mask) {
        return RunRows<Rank, T>::bytes(width, channels, window, mask.lengths.count) +
               (kResults * (resultElements(width, channels) + lineElements(width, channels, window)) + kVector) *
                   int64_t{sizeof(T)} +
               mostPointers(window, mask.runs) * int64_t{sizeof(T*)} + 4 * Scratch::kAlignment;
    }

    FlatFilter(Scratch memory, RoiSize roi, int32_t channels, const Window& window, const RunElement& element,
               Side side)
        : length_(ptrdiff_t{roi.width} * channels),
          channels_(channels),
          size_(window.size),
          element_(element),
          side_(side),
          hasSlopes_(findSlopes()),
          source_(memory, roi, channels, windowOf(window, side), needs()),
          resultElements_(static_cast<ptrdiff_t>(resultElements(roi.width, channels))),
          lineElements_(static_cast<ptrdiff_t>(lineElements(roi.width, channels, window.size))) {
        T* const rows = alignUp(memory.take<T>(kResults * (resultElements_ + lineElements_) + kVector));
        results_ = rows + static_cast<ptrdiff_t>(margin(channels));
        lines_ = rows + kResults * resultElements_;
        pointers_ = memory.take<const T*>(mostPointers(window.size, element.runCount));
    }
    FlatFilter(const FlatFilter&) = delete;
    FlatFilter& operator=(const FlatFilter&) = delete;

    /** Writes `count` rows of results from row `first` on. Calls go down the image. */
    void filter(const Rows<const T>& source, int32_t first, int32_t count, const Rows<T>& out) {
        for (int32_t y = first, end = first + count; y < end;) {
            const int32_t results = HWY_MIN(end - y, resultsAtOnce());
            source_.moveTo(source, y, results);
            if (source_.isCareful())
                filterBlock<CarefulRank<Rank, T>>(y, results, out);
            else
                filterBlock<Rank>(y, results, out);
            y += results;
        }
    }

  private:
    static constexpr ptrdiff_t kVector = 64 / sizeof(T);  // elements

    // Rows of results and lines begin at whole vectors.
    static constexpr int64_t margin(int32_t channels) { return alignUp<int64_t>(int64_t{kMargin} * channels, kVector); }
    static constexpr int64_t resultElements(int32_t width, int32_t channels) {
        return alignUp<int64_t>(int64_t{width} * channels, kVector) + 2 * margin(channels);
    }
    static constexpr int64_t lineElements(int32_t width, int32_t channels, RoiSize window) {
        return alignUp<int64_t>((int64_t{width} + window.width) * channels + kVector, kVector);
    }
    static constexpr int64_t mostPointers(RoiSize window, int32_t runs) {
        return HWY_MAX(int64_t{runs}, int64_t{window.height} + kResults) + kMostJoined + 1;
    }

    bool findSlopes() const {
        for (int32_t i = 0; i < element_.strandCount; ++i)
            if (element_.strands[i].kind != Strand::kBar)
                return true;
        return false;
    }

    int32_t resultsAtOnce() const { return hasSlopes_ ? kResults : kFewResults; }

    RunNeeds needs() const {
        RunNeeds needs{element_.lengths, {}, resultsAtOnce()};
        for (int32_t& row : needs.leastRows)
            row = size_.height;
        const auto add = [&](MaskRun run) {
            needs.leastRows[run.length] = HWY_MIN(needs.leastRows[run.length], run.row);
        };
        for (int32_t i = 0; i < element_.runCount; ++i)
            add(sideOf(element_.runs[i]));
        for (int32_t i = 0; i < element_.strandCount; ++i)
            add(sideOf(element_.strands[i]).first);
        return needs;
    }

    template <typename R>
    void filterBlock(int32_t y, int32_t results, const Rows<T>& out) {
        hasResults_ = false;
        for (int32_t i = 0; i < element_.strandCount; ++i)
            if (const Strand strand = sideOf(element_.strands[i]); strand.kind != Strand::kBar) {
                joinSlope<R>(strand);
                hasResults_ = true;
            }
        bar_.count = 0;
        for (int32_t i = 0; i < element_.strandCount; ++i)
            if (const Strand strand = sideOf(element_.strands[i]); strand.kind == Strand::kBar) {
                if (bar_.count > 0) {
                    for (int32_t k = 0; k < results; ++k)
                        joinRows<R>(pointers_, findOthers(findBar(k), k), length_, resultRow(k));
                    hasResults_ = true;
                }
                prepareBar<R>(strand, results);
            }
        for (int32_t k = 0; k < results; ++k) {
            int32_t count = findBar(k);
            for (int32_t i = 0; i < element_.runCount; ++i)
                pointers_[count++] = source_(sideOf(element_.runs[i]), k);
            joinRows<R>(pointers_, findOthers(count, k), length_, out[y + k]);
        }
    }

    T* resultRow(int32_t k) const { return results_ + k * resultElements_; }

    /** Adds a pointer to intermediate result k to `count` pointers, if there is one; how many these are. */
    int32_t findOthers(int32_t count, int32_t k) {
        if (hasResults_)
            pointers_[count++] = resultRow(k);
        return count;
    }

    /** Sets pointers to ranks that make up the bar for result k; how many these are. */
    int32_t findBar(int32_t k) {
        return bar_.count == 0 ? 0 : partsAlong(bar_.lines[k], channels_, bar_.joined, bar_.count, pointers_);
    }

    /** Joins along the rows of a bar, all but the last step. */
    template <typename R>
    void prepareBar(const Strand& strand, int32_t results) {
        const auto [lengths, steps] = LineSteps(strand.runs);
        bar_.count = strand.runs;
        bar_.joined = 1;
        for (int32_t k = 0; k < results; ++k)
            bar_.lines[k] = source_(strand.first, k);
        for (int32_t step = steps - 1; step > 0; --step) {
            const ptrdiff_t elements = length_ + ptrdiff_t{bar_.count - lengths[step]} * channels_;
            const bool isFirst = step == steps - 1;
            for (int32_t k = 0; k < results; ++k) {
                T* const line = lines_ + k * lineElements_;
                joinAlong<R>(bar_.lines[k], channels_, bar_.joined, lengths[step],
                             isFirst ? elements : alignUp(elements, kVector), line);
                bar_.lines[k] = line;
            }
            bar_.joined = lengths[step];
        }
    }

    template <typename R>
    void joinSlope(const Strand& strand) {
        if constexpr (std::is_same_v<R, Rank>) {
            // Seen from a place that moves with the slope, it is a column. It begins so far to the left, and is so much
            // longer, that all results are complete.
            const ptrdiff_t shift = ptrdiff_t{strand.shift()} * channels_, beyond = (kResults - 1) * std::abs(shift);
            const ptrdiff_t begin = shift > 0 ? -beyond : 0;
            for (int32_t k = 0; k < strand.runs + kResults - 1; ++k)
                pointers_[k] = source_(strand[k], 0) + begin;
            slideDown<Rank, kResults>(pointers_, strand.runs, length_ + beyond, hasResults_,
                                      {results_ + begin, resultElements_ + shift});
        } else {
            for (int32_t k = 0; k < kResults; ++k) {
                for (int32_t i = 0; i < strand.runs; ++i)
                    pointers_[i] = source_(strand[i], k);
                joinRows<R>(pointers_, findOthers(strand.runs, k), length_, resultRow(k));
            }
        }
    }

    MaskRun sideOf(MaskRun run) const {
        if (side_ == Side::kGiven)
            return run;
        const int32_t length = element_.lengths.values[run.length];
        return {size_.height - run.row - length, size_.width - 1 - run.column, run.length};
    }

    Strand sideOf(const Strand& strand) const {
        return side_ == Side::kGiven ? strand : Strand{sideOf(strand[strand.runs - 1]), strand.runs, strand.kind};
    }

    ptrdiff_t length_;  // of a row of results, in elements
    int32_t channels_;
    RoiSize size_;
    RunElement element_;
    Side side_;
    bool hasSlopes_;
    RunRows<Rank, T> source_;
    ptrdiff_t resultElements_;
    T* results_;  // intermediate ones
    T* lines_;    // of a bar
    ptrdiff_t lineElements_;
    struct {
        int32_t count, joined;  // pixels of the bar, 0 where there is none, and those that are joined
        const T* lines[kResults];
    } bar_;
    const T** pointers_;
    bool hasResults_ = false;  // intermediate ones have been written
};

}  // namespace VEKCV_VARIANT
