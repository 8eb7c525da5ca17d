// The outputs at the ends of a row, which need pixels from beside it.
#pragma once

#include "border.h"

namespace VEKCV_VARIANT {

/** Outputs of a row from begin to end. */
struct RowSpan {
    int32_t begin, end;

    constexpr int32_t size() const { return end - begin; }
};

/** The outputs of a row: those of the interior need pixels of the row only. A row shorter than the kernel has none. */
struct RowSpans {
    RowSpan left, interior, right;

    static constexpr RowSpans of(int32_t width, int32_t kernelSize, int32_t anchor) {
        const int32_t begin = width < kernelSize ? width : anchor;
        const int32_t end = width < kernelSize ? width : width - kernelSize + anchor + 1;
        return {{0, begin}, {begin, end}, {end, width}};
    }
};

/**
 * The pixels that an edge of a row needs, border pixels included, put together from each row in scratch memory: at most
 * 2 * kernelSize - 2 for an edge, and 3 * kernelSize - 3 for both.
 */
template <typename T, int32_t kChannels>
class RowEdges {
  public:
    RowEdges(uint8_t* scratch, RowSpans spans, RoiSize roi, int32_t kernelSize, int32_t anchor, BorderType rule,
             T borderValue)
        : sources_(reinterpret_cast<int32_t*>(scratch)),
          leftPixels_(pixelsFor(spans.left, kernelSize)),
          rightPixels_(pixelsFor(spans.right, kernelSize)),
          pixels_(reinterpret_cast<T*>(sources_ + leftPixels_ + rightPixels_)),
          borderValue_(borderValue) {
        for (int32_t i = 0; i < leftPixels_; ++i)
            sources_[i] = borderIndex(rule, int64_t{spans.left.begin} - anchor + i, roi.width);
        for (int32_t i = 0; i < rightPixels_; ++i)
            sources_[leftPixels_ + i] = borderIndex(rule, int64_t{spans.right.begin} - anchor + i, roi.width);
    }

    /** The pixels from the one that the first tap meets for the first output of an edge; until the next call. */
    const T* left(const T* row) const { return gather(row, sources_, leftPixels_); }
    const T* right(const T* row) const { return gather(row, sources_ + leftPixels_, rightPixels_); }

  private:
    static int32_t pixelsFor(RowSpan span, int32_t kernelSize) {
        return span.size() == 0 ? 0 : span.size() + kernelSize - 1;
    }

    const T* gather(const T* row, const int32_t* sources, int32_t count) const {
        T* out = pixels_;
        for (int32_t i = 0; i < count; ++i, out += kChannels)
            for (int32_t c = 0; c < kChannels; ++c)
                out[c] = sources[i] < 0 ? borderValue_ : row[ptrdiff_t{sources[i]} * kChannels + c];
        return pixels_;
    }

    int32_t* sources_;
    int32_t leftPixels_, rightPixels_;
    T* pixels_;
    T borderValue_;
};

}  // namespace VEKCV_VARIANT
