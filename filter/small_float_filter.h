// Filters of floats with a mask of 3 x 3, several rows of results at a time.
#pragma once

#include <hwy/cache_control.h>

#include "extended_row.h"
#include "rest.h"
#include "stores.h"
#include "streaming.h"

namespace VEKCV_VARIANT {

/**
 * Rows of results that are written at a time. Each needs two rows of the image more than it shares with the others:
 * with four, one and a half rows are filtered for a row of results, which costs less than storing filtered rows and
 * loading them twice. In 32 bits there are registers for one row.
 */
constexpr int32_t kResultRows = sizeof(void*) == 8 ? 4 : 1;

/** Rows of an image one below the other, and the rows of results that are made of them. */
template <int32_t kRows>
struct FilterRows {
    const float* in[kRows + 2];
    float* out[kRows];
};

/** Writes a vector of each row of results, from x on. Pixels are loaded from x - 1 on. */
template <typename Filter, Stores kStores = Stores::kCached, int32_t kRows, typename D>
HWY_INLINE void filterColumns(D d, const FilterRows<kRows>& rows, ptrdiff_t x) {
    hn::Vec<D> filtered[kRows + 2][1];
#pragma GCC unroll 6
    for (int32_t i = 0; i < kRows + 2; ++i)
        Filter::Rows::row(
            filtered[i], [&](int32_t k)
                             __attribute__((always_inline)) { return hn::LoadU(d, rows.in[i] + x + (k - 1)); });
#pragma GCC unroll 4
    for (int32_t i = 0; i < kRows; ++i) {
        const auto at = [&](int32_t, int32_t k) __attribute__((always_inline)) {
            return filtered[i + k][0];
        };
        if constexpr (Filter::kNeedsMiddle)
            store<kStores>(d, Filter::column(at, hn::LoadU(d, rows.in[i + 1] + x)), rows.out[i] + x);
        else
            store<kStores>(d, Filter::column(at), rows.out[i] + x);
    }
}

/** Writes the results from column begin to end - 1, at least as many as the lanes of a vector. */
template <typename Filter, int32_t kRows>
HWY_INLINE void filterMiddle(const FilterRows<kRows>& rows, ptrdiff_t begin, ptrdiff_t end, bool streams) {
    const hn::ScalableTag<float> d;
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<float>()));
    const FilterRows<kRows> local = rows;  // a copy stays in registers: no store can change it
    // Aligned behind the first vector; the last one ends where the row ends.
    ptrdiff_t x = begin, next = begin + kLanes - elementsBeyondAligned(d, local.out[0] + begin);
    for (; streams && next + kLanes <= end; next += kLanes)
        filterColumns<Filter, Stores::kStreaming>(d, local, next);
    for (; x < end; x = next, next += kLanes)
        filterColumns<Filter>(d, local, HWY_MIN(x, end - kLanes));
}

/** The same for fewer results. */
template <typename Filter>
HWY_NOINLINE void filterFew(const FilterRows<1>& rows, ptrdiff_t begin, ptrdiff_t end) {
    forOverlapping(
        hn::Half<hn::ScalableTag<float>>(), begin, begin,
        end, [&](auto d, ptrdiff_t x) __attribute__((always_inline)) { filterColumns<Filter>(d, rows, x); });
}

/** Writes the results at both ends of the rows, from copies of the pixels there. */
template <typename Filter, int32_t kRows>
HWY_NOINLINE void filterEnds(const ExtendedRow<float>& extended, const FilterRows<kRows>& rows, ptrdiff_t width) {
    float left[kRows + 2][3], right[kRows + 2][3];
    FilterRows<kRows> first, last;
    for (int32_t i = 0; i < kRows + 2; ++i) {
        const float* const row = rows.in[i];
        extended.copyLeft(row, left[i]);
        extended.copyRight(row, right[i] + 2);
        left[i][1] = row[0];
        left[i][2] = width > 1 ? row[1] : right[i][2];
        right[i][0] = width > 1 ? row[width - 2] : left[i][0];
        right[i][1] = row[width - 1];
        first.in[i] = left[i] + 1;
        last.in[i] = right[i] + 1;
    }
    for (int32_t i = 0; i < kRows; ++i) {
        first.out[i] = rows.out[i];
        last.out[i] = rows.out[i] + width - 1;
    }
    filterColumns<Filter>(hn::CappedTag<float, 1>(), first, 0);
    filterColumns<Filter>(hn::CappedTag<float, 1>(), last, 0);
}

/** Writes kRows rows of results at a time while as many are left; gives the first row that was not written. */
template <typename Filter, int32_t kRows>
int32_t filterRows(const ExtendedImage<float>& image, Image<float> out, ptrdiff_t width, int32_t first, int32_t end,
                   bool streams) {
    int32_t y = first;
    for (; y <= end - kRows; y += kRows) {
        FilterRows<kRows> rows;
        for (int32_t i = 0; i < kRows + 2; ++i)
            rows.in[i] = image.row(y - 1 + i);
        for (int32_t i = 0; i < kRows; ++i)
            rows.out[i] = out.row(y + i);
        filterEnds<Filter>(image.ends(), rows, width);
        if (width - 2 >= static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<float>())))
            filterMiddle<Filter>(rows, 1, width - 1, streams);
        else if constexpr (kRows == 1)
            filterFew<Filter>(rows, 1, width - 1);
    }
    return y;
}

/** Filters a stripe of rows, with the scratch memory of a thread. */
template <typename Filter>
void filterSmallFloats(Image<const float> source, Image<float> out, RoiSize roi, const Border<float>& border,
                       int32_t first, int32_t rows, Scratch scratch) {
    constexpr auto kLanes = static_cast<int32_t>(hn::MaxLanes(hn::ScalableTag<float>()));
    const ExtendedImage<float> image(scratch, source, roi, border, 1);
    const bool canBeAligned = reinterpret_cast<uintptr_t>(out.pixels) % sizeof(float) == 0;
    const bool streams = canBeAligned && fillsCache(roi.width, rows, 2 * sizeof(float));
    // Rows that are streamed together have to be aligned together.
    const bool alignedTogether = out.step % (kLanes * int32_t{sizeof(float)}) == 0;
    const int32_t end = first + rows;
    if (roi.width - 2 >= kLanes && (!streams || alignedTogether))
        first = filterRows<Filter, kResultRows>(image, out, roi.width, first, end, streams);
    filterRows<Filter, 1>(image, out, roi.width, first, end, streams);
    if (streams)
        hwy::FlushStream();
}

}  // namespace VEKCV_VARIANT
