// The driver of the filters with a mask of 3 x 3 or 5 x 5.
#pragma once

#include "check.h"
#include "fixed_buffer.h"
#include "pixelwise.h"
#include "separable.h"
#include "taps.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {

/** A filter of one kind of row and one kind of column. */
template <typename Row, typename Column>
struct Separable {
    static constexpr int32_t kTaps = Row::kTaps, kParts = 1;

    template <typename V, typename At>
    HWY_INLINE static void row(V (&parts)[1], At at) {
        parts[0] = Row()(at);
    }
    template <typename At>
    HWY_INLINE static auto column(At at) {
        return Column()([=](int32_t k) { return at(0, k); });
    }
};

/** The rows of the ring, from the topmost one on, and how a row of the result follows from them. */
template <typename Filter, typename Element, typename Result>
struct ColumnRule {
    const Element* rows[Filter::kParts][Filter::kTaps];

    template <typename D>
    HWY_INLINE hn::Vec<D> operator()(D d, ptrdiff_t x) const {
        if constexpr (sizeof(Result) == sizeof(Element)) {
            return Filter::column([=, this](int32_t part, int32_t k) { return hn::LoadU(d, rows[part][k] + x); });
        } else if constexpr (hn::MaxLanes(D()) > hn::MaxLanes(hn::ScalableTag<Element>())) {
            const hn::Half<D> half;
            return hn::Combine(d, (*this)(half, x + ptrdiff_t{hn::MaxLanes(half)}), (*this)(half, x));
        } else {
            const hn::Rebind<Element, D> wide;
            return hn::DemoteTo(
                d, Filter::column([=, this](int32_t part, int32_t k) { return hn::LoadU(wide, rows[part][k] + x); }));
        }
    }
};

/** Filters a stripe of rows, with a work buffer of a thread. */
template <typename Filter, typename T, typename Result>
void filterFixed(Image<const T> source, Image<Result> out, RoiSize roi, const Border<T>& border, int32_t first,
                 int32_t rows, uint8_t* memory) {
    constexpr int32_t kTaps = Filter::kTaps, kParts = Filter::kParts, kReach = kTaps / 2;
    const hn::ScalableTag<Intermediate<T>> d;
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<Intermediate<T>>()));
    // Whole vectors, beyond the end of the row too: what is there is filtered, but never used.
    const ptrdiff_t padded = alignUp(ptrdiff_t{roi.width}, kLanes);
    Scratch scratch(memory);
    T* const extended = scratch.take<T>(padded + 2 * kReach);
    for (ptrdiff_t x = roi.width + 2 * kReach; x < padded + 2 * kReach; ++x)
        extended[x] = 0;
    Intermediate<T>* ring[kParts][kTaps];
    for (auto& part : ring)
        for (Intermediate<T>*& row : part)
            row = scratch.take<Intermediate<T>>(padded);

    const auto rowPass = [&](int32_t slot) {
        for (ptrdiff_t x = 0; x < padded; x += kLanes) {
            hn::Vec<decltype(d)> parts[kParts];
            Filter::row(parts, [=](int32_t k) { return loadWidened(d, extended + x + k); });
            for (int32_t part = 0; part < kParts; ++part)
                hn::StoreU(parts[part], d, ring[part][slot] + x);
        }
    };
    const bool streams = reinterpret_cast<uintptr_t>(out.pixels) % sizeof(Result) == 0 &&
                         fillsCache(roi.width, rows, sizeof(T) + sizeof(Result));
    const auto columnPass = [&](int32_t y, int32_t topmost) {
        ColumnRule<Filter, Intermediate<T>, Result> rule;
        for (int32_t part = 0; part < kParts; ++part)
            for (int32_t k = 0; k < kTaps; ++k)
                rule.rows[part][k] = ring[part][topmost + k < kTaps ? topmost + k : topmost + k - kTaps];
        if (streams)
            writeRow<Stores::kStreaming>(out.row(y), roi.width, rule);
        else
            writeRow<Stores::kCached>(out.row(y), roi.width, rule);
    };
    filterStripe(source, roi, border, kReach, first, rows, extended, rowPass, columnPass);
    if (streams)
        hwy::FlushStream();
}

/** Whether the filters share their work among threads. */
inline bool isForFilterTeam(RoiSize roi) {
    const int32_t threads = ownGetNumThreads();
    return threads > 1 && roi.width >= 256 && roi.height >= 256 && roi.height / 5 >= threads &&
           vekGetNumCoresOnDie() > 1;
}

/** Filters an image with the work buffer of the caller, of which each thread has so many bytes. */
template <typename Filter, typename T, typename Result>
void filterImage(Image<const T> source, Image<Result> out, RoiSize roi, const Border<T>& border, void* buffer,
                 int64_t bytesPerThread) {
    const WorkBuffer work(buffer, bytesPerThread);
    const auto filterRows = [=](int32_t thread, int32_t first, int32_t rows) {
        filterFixed<Filter>(source, out, roi, border, first, rows, work.slice<uint8_t>(thread));
    };
    if (isForFilterTeam(roi))
        runTeam(
            roi.height, [](int32_t) {}, filterRows);
    else
        filterRows(0, 0, roi.height);
}

/**
 * A filter with a mask of 3 x 3, Filter::Small, or of 5 x 5, Filter::Large. Filter::kFixedBytes is a part of
 * its work buffer, and Filter::kMoreBytes are spare.
 */
template <typename Filter, typename T, typename Result>
Status maskFilter(const T* source, int32_t sourceStep, Result* destination, int32_t destinationStep, RoiSize roi,
                  int32_t maskSize, int32_t borderType, T borderValue, uint8_t* buffer) {
    const Image<const T> in{source, sourceStep};
    const Image<Result> out{destination, destinationStep};
    if (Status status = Check()
                            .pointers(in, out, buffer)
                            .roi(roi)
                            .steps(roi.width, in, out)
                            .require(Border<T>::isValid(borderType), StatusBadArgument)
                            .require(isMaskSize(maskSize), StatusMaskSizeError))
        return status;
    const auto filter = [&]<typename Mask>(Mask) {
        const int64_t bytes = fixedFilterBytes<T>(roi, Mask::kTaps, Filter::template kFixedBytes<T, Result>);
        filterImage<Mask>(in, out, roi, Border<T>::of(borderType, borderValue), buffer, bytes);
    };
    if constexpr (requires { typename Filter::Large; }) {
        if (maskSize == MaskSize5x5) {
            filter(typename Filter::Large());
            return StatusOk;
        }
    }
    filter(typename Filter::Small());
    return StatusOk;
}

template <typename Filter, typename T, typename Result>
Status maskFilterBufferSize(RoiSize roi, int32_t maskSize, int32_t* bufferSize) {
    if (Status status = Check().pointers(bufferSize).roi(roi).require(isMaskSize(maskSize), StatusMaskSizeError))
        return status;
    const int64_t bytes =
        fixedFilterBytes<T>(roi, maskSize == MaskSize3x3 ? 3 : 5, Filter::template kFixedBytes<T, Result>);
    return writeBufferSize(bytesOfAllThreads(bytes + Filter::template kMoreBytes<Result>), bufferSize);
}

/** The same for filters that have a mask of 3 x 3 only. */
template <typename Filter, typename T, typename Result>
Status smallFilter(const T* source, int32_t sourceStep, Result* destination, int32_t destinationStep, RoiSize roi,
                   int32_t borderType, T borderValue, uint8_t* buffer) {
    return maskFilter<Filter>(source, sourceStep, destination, destinationStep, roi, MaskSize3x3, borderType,
                              borderValue, buffer);
}
template <typename Filter, typename T, typename Result>
Status smallFilterBufferSize(RoiSize roi, int32_t* bufferSize) {
    return maskFilterBufferSize<Filter, T, Result>(roi, MaskSize3x3, bufferSize);
}

}  // namespace VEKCV_VARIANT
