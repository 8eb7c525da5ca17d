// The driver of the filters with a mask of 3 x 3 or 5 x 5.
#pragma once

#include <hwy/cache_control.h>

#include "extended_row.h"
#include "parallel.h"
#include "pipeline_buffer.h"
#include "pixelwise.h"
#include "row_ring.h"
#include "small_float_filter.h"
#include "stores.h"
#include "streaming.h"

namespace VEKCV_VARIANT {

inline bool isMaskSize(int32_t maskSize) {
    return maskSize == MaskSize3x3 || maskSize == MaskSize5x5;
}

/** The type of the elements of filtered rows; weighted sums of bytes are at most 16320. */
template <typename T>
using Intermediate = std::conditional_t<std::is_same_v<T, float>, float, int16_t>;

/** Bytes that a filter with 3 or 5 taps needs for each thread, without those that align a slice. */
template <typename T>
HWY_NOINLINE int64_t fixedFilterBytes(RoiSize roi, int32_t taps, int32_t fixedBytes) {
    const int64_t groupBytes = 16 * int64_t{sizeof(Intermediate<T>)} * (taps == 3 ? 21 : 25);
    return (int64_t{roi.width} + 15) / 16 * groupBytes + (taps == 3 ? 36 : 60) + fixedBytes +
           rowPipelineBytes<T, 1>(roi, taps) + columnPipelineBytes<Intermediate<T>, 1>(roi, taps);
}

/** Rows of one part. */
template <typename Row>
struct PlainRows {
    static constexpr int32_t kTaps = Row::kTaps, kParts = 1;

    template <typename V, typename At>
    HWY_INLINE static void row(V (&parts)[1], At at) {
        parts[0] = Row()(at);
    }
};

/** A filter of one kind of row and one kind of column. */
template <typename Row, typename Column>
struct Separable {
    using Rows = PlainRows<Row>;
    static constexpr bool kNeedsMiddle = false;

    template <typename At>
    HWY_INLINE static auto column(At at) {
        return Column()([=](int32_t k) { return at(0, k); });
    }
};

// Rules of rows: rule(tag, pixels, x) gives the vector of results from x on; `pixels` begin under its middle tap.

/** A row of the ring. The rule gives the first part of the filtered pixels, and stores the others itself. */
template <typename Rows, typename T>
struct RowRule {
    using Pixel = T;
    static constexpr int32_t kReach = Rows::kTaps / 2;

    Intermediate<T>* filtered[Rows::kParts];

    template <typename D>
    HWY_INLINE hn::Vec<D> operator()(D d, const T* pixels, ptrdiff_t x) const {
        hn::Vec<D> parts[Rows::kParts];
        Rows::row(
            parts, [=](int32_t k) __attribute__((always_inline)) { return loadWidened(d, pixels + (k - kReach)); });
        for (int32_t part = 1; part < Rows::kParts; ++part)
            hn::StoreU(parts[part], d, filtered[part] + x);
        return parts[0];
    }
};

/**
 * A row of the result. The rule filters the bottom row of the window, stores it into the ring, and takes the rows above
 * it from there.
 */
template <typename Filter, typename T, typename Result>
struct WindowRule {
    using Pixel = T;
    using Rows = typename Filter::Rows;
    using Element = Intermediate<T>;
    static constexpr int32_t kReach = Rows::kTaps / 2;

    RowRule<Rows, T> bottom;
    const Element* above[Rows::kParts][Rows::kTaps - 1];
    const T* middle;  // the row of the image in the middle

    template <typename D>
    HWY_INLINE hn::Vec<D> operator()(D d, const T* pixels, ptrdiff_t x) const {
        if constexpr (sizeof(Result) == sizeof(Element)) {
            return result(d, pixels, x);
        } else if constexpr (hn::MaxLanes(D()) > hn::MaxLanes(hn::ScalableTag<Element>())) {
            return byHalves(
                d, 0, [ =, this ](auto half, ptrdiff_t i) __attribute__((always_inline)) {
                    return (*this)(half, pixels + i, x + i);
                });
        } else {
            return hn::DemoteTo(d, result(hn::Rebind<Element, D>(), pixels, x));
        }
    }

  private:
    template <typename D>
    HWY_INLINE hn::Vec<D> result(D d, const T* pixels, ptrdiff_t x) const {
        hn::Vec<D> parts[Rows::kParts];
        parts[0] = bottom(d, pixels, x);
        hn::StoreU(parts[0], d, bottom.filtered[0] + x);
        if constexpr (Rows::kParts == 2)
            parts[1] = hn::LoadU(d, bottom.filtered[1] + x);
        const auto filtered = [&](int32_t part, int32_t k) __attribute__((always_inline)) {
            return k == Rows::kTaps - 1 ? parts[part] : hn::LoadU(d, above[part][k] + x);
        };
        if constexpr (Filter::kNeedsMiddle)
            return Filter::column(filtered, loadWidened(d, middle + x));
        else
            return Filter::column(filtered);
    }
};

/** Writes results from begin to end, fewer than the lanes of a vector. `pixels` are those at begin. */
template <typename Result, typename Rule>
HWY_NOINLINE void writeFew(const typename Rule::Pixel* pixels, int32_t begin, int32_t end, const Rule& rule,
                           Result* out) {
    forOverlapping(
        hn::Half<hn::ScalableTag<Result>>(), 0, 0, end - begin,
        [&, begin ](auto d, ptrdiff_t i)
            __attribute__((always_inline)) { hn::StoreU(rule(d, pixels + i, begin + i), d, out + begin + i); });
}

/** Writes results from begin to end, at least as many as the lanes of a vector. */
template <typename Result, typename Rule>
HWY_INLINE void writeMany(const typename Rule::Pixel* row, int32_t begin, int32_t end, bool streams, const Rule& rule,
                          Result* out) {
    const hn::ScalableTag<Result> d;
    constexpr auto kLanes = static_cast<int32_t>(hn::MaxLanes(hn::ScalableTag<Result>()));
    const Rule local = rule;  // a copy stays in registers: no store can change it
    int32_t x = begin;
    if (streams || end - begin >= 4 * kLanes) {
        hn::StoreU(local(d, row + x, x), d, out + x);
        x += kLanes - static_cast<int32_t>(elementsBeyondAligned(d, out + x));
    }
    for (; streams && x + kLanes <= end; x += kLanes)
        hn::Stream(local(d, row + x, x), d, out + x);
    for (; x < end; x += kLanes) {
        x = HWY_MIN(x, end - kLanes);
        hn::StoreU(local(d, row + x, x), d, out + x);
    }
}

/** Writes a row of results from a row of the image; those at its ends are computed from copies of the pixels there. */
template <typename Result, typename Rule>
HWY_INLINE void writeFilteredRow(const ExtendedRow<typename Rule::Pixel>& extended, const typename Rule::Pixel* row,
                                 int32_t width, bool streams, const Rule& rule, Result* out) {
    using T = typename Rule::Pixel;
    constexpr int32_t kReach = Rule::kReach;
    T pixels[4 * kReach];
    if (width < 2 * kReach) {
        extended.copy(row, -kReach, width + kReach, pixels);
        writeFew(pixels + kReach, 0, width, rule, out);
        return;
    }
    extended.copyLeft(row, pixels);
    __builtin_memcpy(pixels + kReach, row, 2 * kReach * sizeof(T));
    writeFew(pixels + kReach, 0, kReach, rule, out);

    const int32_t right = width - kReach;
    if (right - kReach >= static_cast<int32_t>(hn::MaxLanes(hn::ScalableTag<Result>())))
        writeMany(row, kReach, right, streams, rule, out);
    else if (kReach < right)
        writeFew(row + kReach, kReach, right, rule, out);

    __builtin_memcpy(pixels, row + right - kReach, 2 * kReach * sizeof(T));
    extended.copyRight(row, pixels + 2 * kReach);
    writeFew(pixels + kReach, right, width, rule, out);
}

/** A row of the ring alone. Once for all filters with such rows. */
template <typename Rows, typename T>
HWY_NOINLINE void writeRingRow(const ExtendedRow<T>& extended, const T* row, int32_t width,
                               const RowRule<Rows, T>& rule) {
    writeFilteredRow(extended, row, width, false, rule, rule.filtered[0]);
}

/** Filters a stripe of rows, each of which is filtered by itself and kept as long as windows need it. */
template <typename Filter, typename T, typename Result>
void filterWithRing(Image<const T> source, Image<Result> out, RoiSize roi, const Border<T>& border, int32_t first,
                    int32_t rows, Scratch scratch) {
    using Rows = typename Filter::Rows;
    constexpr int32_t kTaps = Rows::kTaps, kParts = Rows::kParts, kReach = kTaps / 2;
    const ExtendedImage<T> image(scratch, source, roi, border, kReach);
    RowRing<Intermediate<T>> ring(scratch, kTaps, kParts * ptrdiff_t{roi.width});
    const bool canBeAligned = reinterpret_cast<uintptr_t>(out.pixels) % sizeof(Result) == 0;
    const bool streams = canBeAligned && fillsCache(roi.width, rows, sizeof(T) + sizeof(Result));

    for (int32_t y = first - kReach; y < first + rows + kReach; ++y, ring.advance()) {
        const T* const row = image.row(y);
        WindowRule<Filter, T, Result> rule{};
        for (int32_t part = 0; part < kParts; ++part) {
            rule.bottom.filtered[part] = ring.bottom() + part * ptrdiff_t{roi.width};
            for (int32_t k = 0; k < kTaps - 1; ++k)
                rule.above[part][k] = ring[k] + part * ptrdiff_t{roi.width};
        }
        if (y < first + kReach) {
            writeRingRow(image.ends(), row, roi.width, rule.bottom);
        } else {
            rule.middle = source.row(y - kReach);
            writeFilteredRow(image.ends(), row, roi.width, streams, rule, out.row(y - kReach));
        }
    }
    if (streams)
        hwy::FlushStream();
}

/** Filters a stripe of rows, with the scratch memory of a thread. */
template <typename Filter, typename T, typename Result>
void filterFixed(Image<const T> source, Image<Result> out, RoiSize roi, const Border<T>& border, int32_t first,
                 int32_t rows, Scratch scratch) {
    if constexpr (std::is_same_v<T, float> && Filter::Rows::kTaps == 3)
        filterSmallFloats<Filter>(source, out, roi, border, first, rows, scratch);
    else
        filterWithRing<Filter>(source, out, roi, border, first, rows, scratch);
}

/** Whether the filters share their work among threads. */
inline bool isForFilterTeam(RoiSize roi) {
    const int32_t threads = configuredThreads();
    return threads > 1 && roi.width >= 256 && roi.height >= 256 && roi.height / 5 >= threads &&
           vekGetNumCoresOnDie() > 1;
}

/** filterFixed of a filter. */
template <typename T, typename Result>
using FilterStripe = void (*)(Image<const T> source, Image<Result> out, RoiSize roi, const Border<T>& border,
                              int32_t first, int32_t rows, Scratch scratch);

/** What all filters from T to Result share: checks, and threads. */
template <typename T, typename Result>
HWY_NOINLINE Status filterImage(Image<const T> source, Image<Result> out, RoiSize roi, int32_t maskSize,
                                int32_t borderType, T borderValue, uint8_t* buffer, int32_t fixedBytes,
                                FilterStripe<T, Result> small, FilterStripe<T, Result> large) {
    if (Status status = Check()
                            .pointers(source, out, buffer)
                            .roi(roi)
                            .steps(roi.width, source, out)
                            .require(Border<T>::isValid(borderType), StatusBadArgument)
                            .require(isMaskSize(maskSize), StatusMaskSizeError))
        return status;
    const bool isSmall = maskSize == MaskSize3x3;
    const WorkBuffer work(buffer, fixedFilterBytes<T>(roi, isSmall ? 3 : 5, fixedBytes));
    const auto border = Border<T>::of(borderType, borderValue);
    const auto filter = isSmall ? small : large;
    forThreadStripes(isForFilterTeam(roi), roi.height, [&](int32_t thread, int32_t first, int32_t rows) {
        filter(source, out, roi, border, first, rows, work.slice(thread));
    });
    return StatusOk;
}

/**
 * A filter with a mask of 3 x 3, Filter::Small, or of 5 x 5, Filter::Large. Filter::kFixedBytes is a part of what
 * each thread has of the work buffer, whatever the size of the image; Filter::kMoreBytes are asked for, but not used.
 */
template <typename Filter, typename T, typename Result>
Status maskFilter(const T* source, int32_t sourceStep, Result* destination, int32_t destinationStep, RoiSize roi,
                  int32_t maskSize, int32_t borderType, T borderValue, uint8_t* buffer) {
    return filterImage<T, Result>({source, sourceStep}, {destination, destinationStep}, roi, maskSize, borderType,
                                  borderValue, buffer, Filter::template kFixedBytes<Result>,
                                  filterFixed<typename Filter::Small, T, Result>,
                                  filterFixed<typename Filter::Large, T, Result>);
}

template <typename Filter, typename T, typename Result>
Status maskFilterBufferSize(RoiSize roi, int32_t maskSize, int32_t* bufferSize) {
    if (Status status = Check().pointers(bufferSize).roi(roi).require(isMaskSize(maskSize), StatusMaskSizeError))
        return status;
    const int64_t bytes =
        fixedFilterBytes<T>(roi, maskSize == MaskSize3x3 ? 3 : 5, Filter::template kFixedBytes<Result>);
    return writeBufferSize(WorkBuffer::bytes(bytes + Filter::template kMoreBytes<Result>), bufferSize);
}

/** A filter that has a mask of 3 x 3 only, and the query of its work buffer. */
template <typename Filter, typename T, typename Result>
Status smallFilter(const T* source, int32_t sourceStep, Result* destination, int32_t destinationStep, RoiSize roi,
                   int32_t borderType, T borderValue, uint8_t* buffer) {
    return filterImage<T, Result>({source, sourceStep}, {destination, destinationStep}, roi, MaskSize3x3, borderType,
                                  borderValue, buffer, Filter::template kFixedBytes<Result>,
                                  filterFixed<typename Filter::Small, T, Result>, nullptr);
}
template <typename Filter, typename T, typename Result>
Status smallFilterBufferSize(RoiSize roi, int32_t* bufferSize) {
    return maskFilterBufferSize<Filter, T, Result>(roi, MaskSize3x3, bufferSize);
}

}  // namespace VEKCV_VARIANT
