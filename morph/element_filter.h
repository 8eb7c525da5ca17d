// Dilation and erosion by a flat structuring element, full or not.
#pragma once

#include <new>

#include "flat_filter.h"

namespace VEKCV_VARIANT {

/** A flat structuring element. */
struct FlatElement {
    Window window;
    bool isFull;
    RunElement runs;  // unless it is full
};

/** The filter for an element: RectangleFilter where it is full, else FlatFilter. */
template <typename Rank, typename T>
class ElementFilter {
  public:
    /** Bytes of scratch memory, which may begin anywhere, for rows of at most so many pixels. */
    static int64_t bytes(int32_t width, int32_t channels, RoiSize window, const MaskSummary& mask) {
        // Low windows have memory for more lines than they need, which is quicker.
        constexpr int32_t kQuickHeight = 8;
        return mask.isFull ? rectangleFilterBytes(int64_t{width} * channels * int64_t{sizeof(T)},
                                                  HWY_MAX(window.height, kQuickHeight))
                           : FlatFilter<Rank, T>::bytes(width, channels, window, mask);
    }

    ElementFilter(Scratch memory, RoiSize roi, int32_t channels, const FlatElement& element, Side side)
        : isFull_(element.isFull) {
        if (isFull_)
            new (&rectangle_) RectangleFilter<Rank, T>(memory, roi, channels, windowOf(element.window, side));
        else
            new (&flat_) FlatFilter<Rank, T>(memory, roi, channels, element.window, element.runs, side);
    }
    ElementFilter(const ElementFilter&) = delete;
    ElementFilter& operator=(const ElementFilter&) = delete;

    /** Writes `count` rows of results from row `first` on. Calls go down the image. */
    void filter(const Rows<const T>& source, int32_t first, int32_t count, const Rows<T>& out) {
        if (isFull_)
            rectangle_.filter(source, first, count, out);
        else
            flat_.filter(source, first, count, out);
    }

  private:
    bool isFull_;
    union {
        RectangleFilter<Rank, T> rectangle_;
        FlatFilter<Rank, T> flat_;
    };
};

}  // namespace VEKCV_VARIANT
