// Minima and maxima in rectangular windows.
#pragma once

#include "join_rows.h"
#include "rows.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {

/** A window of pixels: its size, and the pixel in it whose result is that of the window. */
struct Window {
    RoiSize size;
    ImagePoint anchor;

    constexpr bool hasPixels() const { return size.width >= 1 && size.height >= 1; }
    constexpr bool hasAnchor() const {
        return anchor.x >= 0 && anchor.x < size.width && anchor.y >= 0 && anchor.y < size.height;
    }

    /** The window without what lies beyond the borders of the region wherever it stands. The results are the same. */
    Window trimmed(RoiSize roi) const {
        Window window = *this;
        trim(window.size.width, window.anchor.x, roi.width);
        trim(window.size.height, window.anchor.y, roi.height);
        return window;
    }

  private:
    static void trim(int32_t& size, int32_t& anchor, int32_t roiSize) {
        if (anchor >= roiSize) {
            size -= anchor - (roiSize - 1);
            anchor = roiSize - 1;
        }
        if (size - anchor > roiSize)
            size = roiSize + anchor;
    }
};

/** Bytes of scratch memory for rows of so many bytes; it may begin at any address. */
constexpr int64_t rectangleFilterBytes(int64_t rowBytes, int32_t windowHeight) {
    return (2 * (rowBytes + 32) + 16) * windowHeight + 32;
}

/**
 * The ranks of all pixels in a rectangular window, with the nearest pixel of the image in the place of one outside.
 * First down the columns, from rows of the image to lines, that is rows with memory for the pixels beside them; then
 * along each line.
 */
template <typename Rank, typename T>
class RectangleFilter {
  public:
    /** The memory is that for rows of this size or longer ones, and for this window before it was trimmed. */
    RectangleFilter(Scratch memory, RoiSize roi, int32_t channels, const Window& window)
        : window_(window.trimmed(roi)),
          roi_(roi),
          channels_(channels),
          isWide_(window_.size.width > roi.width),
          steps_(window_.size.width) {
        results_ = isHigh() ? HWY_MIN(window_.size.height, kMostResults) : kFewResults;
        ptrdiff_t alignment = kLineAlignment;
        while (!placeLines(memory, alignment)) {
            if (results_ > 2)
                results_ /= 2;
            else if (alignment > 1)
                alignment = 1;
            else
                results_ = 1;
        }
        const int32_t rows = window_.size.height + results_ - 1;
        rows_ = rows <= kFewRows ? fewRows_ : memory.take<const T*>(rows);
    }
    RectangleFilter(const RectangleFilter&) = delete;
    RectangleFilter& operator=(const RectangleFilter&) = delete;

    /** Writes `count` rows of results from row `first` on. Calls go down the image. */
    void filter(const Rows<const T>& source, int32_t first, int32_t count, const Rows<T>& out) {
        for (int32_t y = first, end = first + count; y < end;) {
            const int32_t results = HWY_MIN(end - y, results_);
            if (moveTo(source, y, results))
                filterBlock<CarefulRank<Rank, T>>(y, results, out);
            else
                filterBlock<Rank>(y, results, out);
            y += results;
        }
    }

  private:
    static constexpr int32_t kMostResults = 64, kFewResults = 8;
    static constexpr int32_t kFewRows = 32;
    static constexpr ptrdiff_t kLineAlignment = 64 / sizeof(T);

    /** Whether slideFarDown is faster. */
    bool isHigh() const { return window_.size.height > 24; }

    /**
     * Places a line for each of results_; false where the memory is too small. There is always enough for a single one
     * without alignment. An aligned line is quicker, and so are many, as what was stored is loaded a while later.
     */
    bool placeLines(Scratch& memory, ptrdiff_t alignment) {
        constexpr ptrdiff_t kBeyond = kLineAlignment - 1;  // the last vector of a line may reach beyond it
        const ptrdiff_t before = isWide_ ? 0 : window_.anchor.x * ptrdiff_t{channels_};
        const ptrdiff_t after = isWide_ ? 0 : (window_.size.width - 1) * ptrdiff_t{channels_} - before;
        beside_ = alignUp(before, alignment);
        stride_ = alignUp(beside_ + roi_.width * ptrdiff_t{channels_} + after + kBeyond, alignment);
        const int64_t elements = results_ * int64_t{stride_} + alignment - 1;
        const int64_t rows = int64_t{window_.size.height} + results_ - 1;
        const int64_t rowBytes = rows <= kFewRows ? 0 : rows * int64_t{sizeof(T*)} + Scratch::kAlignment;
        if (elements * int64_t{sizeof(T)} + rowBytes > memory.bytes())
            return false;
        T* const lines = memory.take<T>(elements);
        lines_ = alignment > 1 ? alignUp(lines) : lines;
        return true;
    }

    /** Finds the rows of the image in the windows of a block of results; whether there may be NaNs in them. */
    bool moveTo(const Rows<const T>& source, int32_t y, int32_t results) {
        const int64_t top = int64_t{y} - window_.anchor.y;
        const int32_t count = window_.size.height + results - 1;
        findRows(source, top, roi_.height, count, rows_);
        if constexpr (std::is_floating_point_v<T>) {
            const int32_t first = rowInside(top, roi_.height), last = rowInside(top + count - 1, roi_.height);
            for (int32_t row = HWY_MAX(first, scanned_); row <= last; ++row) {
                if (hasNaN(source[row], length()))
                    lastNaN_ = row;
                scanned_ = row + 1;
            }
            return lastNaN_ >= first;
        }
        return false;
    }

    /** Filters the columns for a line or more, at most `most`, from the given one on; how many these are. */
    template <typename R>
    int32_t slide(int32_t line, int32_t most) {
        const int32_t results = HWY_MIN(most, window_.size.height);
        slideFarDown<R>(rows_ + line, window_.size.height, length(), results, lines(line));
        return results;
    }
    int32_t slideQuickly(int32_t line, int32_t most) {
        const int32_t height = window_.size.height, results = HWY_MIN(most, height);
        const T* const* const rows = rows_ + line;
        if (results >= kMostRowsAtOnce) {
            slideDown<Rank, kMostRowsAtOnce>(rows, height, length(), false, lines(line));
            return kMostRowsAtOnce;
        }
        if (kMostRowsAtOnce > 4 && results >= 4) {
            slideDown<Rank, 4>(rows, height, length(), false, lines(line));
            return 4;
        }
        if (results >= 2) {
            slideDown<Rank, 2>(rows, height, length(), false, lines(line));
            return 2;
        }
        joinRows<Rank>(rows, height, length(), lines(line)[0]);
        return 1;
    }

    template <typename R>
    void filterBlock(int32_t y, int32_t results, const Rows<T>& out) {
        constexpr bool kIsCareful = !std::is_same_v<R, Rank>;
        for (int32_t k = 0; k < results;)
            k += kIsCareful || isHigh() ? slide<R>(k, results - k) : slideQuickly(k, results - k);
        for (int32_t k = 0; k < results; ++k)
            isWide_ ? joinAlongShortLine<R>(lines(k)[0], out[y + k]) : joinAlongLine<R>(lines(k)[0], out[y + k]);
    }

    ptrdiff_t length() const { return ptrdiff_t{roi_.width} * channels_; }

    /** The pixels of lines from the given one on. */
    ResultRows<T> lines(int32_t line) const { return {lines_ + beside_ + line * stride_, stride_}; }

    /** Joins along a line, in place until the last step: the ranks of `length` pixels from those of fewer pixels. */
    template <typename R>
    HWY_NOINLINE void joinAlongLine(T* pixels, T* out) const {
        const int32_t before = window_.anchor.x, after = window_.size.width - 1 - before, width = roi_.width;
        T* const line = pixels - ptrdiff_t{before} * channels_;
        fillBeside(pixels, width, channels_, before, after);
        int32_t joined = 1;
        for (int32_t step = steps_.count - 1; step >= 0; --step) {
            const int32_t length = steps_.lengths[step];
            const ptrdiff_t elements = ptrdiff_t{width + window_.size.width - length} * channels_;
            constexpr ptrdiff_t kLanes = hn::MaxLanes(hn::ScalableTag<T>());
            if (step > 0)
                joinAlong<R>(line, channels_, joined, length, alignUp(elements, kLanes), line);
            else
                joinAlong<R>(line, channels_, joined, length, elements, out);
            joined = length;
        }
    }

    /** For a window that is wider than the line, and so reaches its left end, its right end or both everywhere. */
    template <typename R>
    HWY_NOINLINE void joinAlongShortLine(const T* pixels, T* out) const {
        const int32_t before = window_.anchor.x, after = window_.size.width - 1 - before, width = roi_.width;
        const hn::CappedTag<T, 1> d;
        for (int32_t c = 0; c < channels_; ++c) {
            const auto at = [=, this](int32_t x) {
                return R::clean(hn::LoadU(d, pixels + ptrdiff_t{x} * channels_ + c));
            };
            const auto put = [=, this](auto v, int32_t x) { hn::StoreU(v, d, out + ptrdiff_t{x} * channels_ + c); };
            auto joined = at(0);
            for (int32_t x = 0; x < width; ++x) {
                joined = R::join(at(x), joined);
                if (x >= after)
                    put(joined, x - after);
            }
            for (int32_t x = width - after; x < before; ++x)
                put(joined, x);
            joined = at(width - 1);
            for (int32_t x = width - 1; x >= 0; --x) {
                joined = R::join(at(x), joined);
                if (x < width - before)
                    put(joined, x + before);
            }
        }
    }

    Window window_;
    RoiSize roi_;
    int32_t channels_;
    bool isWide_;  // the window is wider than the image
    LineSteps steps_;
    int32_t results_;  // of a block
    T* lines_;
    ptrdiff_t beside_, stride_;  // elements of a line ahead of its pixels, and from line to line
    const T** rows_;             // of the windows of a block
    const T* fewRows_[kFewRows];
    int32_t scanned_ = 0, lastNaN_ = -1;  // rows of the image
};

}  // namespace VEKCV_VARIANT
