// The driver of the filters with a mask of 3 x 3 or 5 x 5.
#pragma once

#include "image_border.h"
#include "pipeline_buffer.h"
#include "pixelwise.h"

namespace VEKCV_VARIANT {

inline bool isMaskSize(int32_t maskSize) {
    return maskSize == MaskSize3x3 || maskSize == MaskSize5x5;
}

/** The type of filtered rows; weighted sums of bytes are at most 16320. */
template <typename T>
using Intermediate = std::conditional_t<std::is_same_v<T, float>, float, int16_t>;

/** Bytes for each thread, without spare ones, of a filter of images of T with 3 or 5 taps. */
template <typename T>
int64_t fixedFilterBytes(RoiSize roi, int32_t taps, int32_t fixedBytes) {
    const int64_t groupBytes = 16 * int64_t{sizeof(Intermediate<T>)} * (taps == 3 ? 21 : 25);
    return (int64_t{roi.width} + 15) / 16 * groupBytes + (taps == 3 ? 36 : 60) + fixedBytes +
           rowPipelineBytes<T, 1>(roi, taps) + columnPipelineBytes<Intermediate<T>, 1>(roi, taps);
}

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

/** A row of the ring: all parts of the filtered pixels, of which the first one is the result of the rule. */
template <typename Filter, typename T>
struct RowRule {
    const T* pixels;  // under the first tap
    Intermediate<T>* filtered[Filter::kParts];

    template <typename D>
    HWY_INLINE hn::Vec<D> operator()(D d, ptrdiff_t x) const {
        hn::Vec<D> parts[Filter::kParts];
        Filter::row(parts, [=, this](int32_t k) { return loadWidened(d, pixels + x + k); });
        for (int32_t part = 1; part < Filter::kParts; ++part)
            hn::StoreU(parts[part], d, filtered[part] + x);
        return parts[0];
    }

    RowRule from(ptrdiff_t x, const T* pixelsThere) const {
        RowRule rule = *this;
        rule.pixels = pixelsThere;
        for (auto& row : rule.filtered)
            row += x;
        return rule;
    }
};

/**
 * A row of the result: filters the bottom row of the window, keeps it in the ring, and takes the rows above from there.
 */
template <typename Filter, typename T, typename Result>
struct WindowRule {
    using Element = Intermediate<T>;

    RowRule<Filter, T> bottom;
    const Element* above[Filter::kParts][Filter::kTaps - 1];
    const T* middle;  // the pixels themselves

    template <typename D>
    HWY_INLINE hn::Vec<D> operator()(D d, ptrdiff_t x) const {
        if constexpr (sizeof(Result) == sizeof(Element)) {
            return result(d, x);
        } else if constexpr (hn::MaxLanes(D()) > hn::MaxLanes(hn::ScalableTag<Element>())) {
            return byHalves(d, x, *this);
        } else {
            return hn::DemoteTo(d, result(hn::Rebind<Element, D>(), x));
        }
    }

    WindowRule from(ptrdiff_t x, const T* pixelsThere) const {
        WindowRule rule{bottom.from(x, pixelsThere), {}, middle + x};
        for (int32_t part = 0; part < Filter::kParts; ++part)
            for (int32_t k = 0; k < Filter::kTaps - 1; ++k)
                rule.above[part][k] = above[part][k] + x;
        return rule;
    }

  private:
    template <typename D>
    HWY_INLINE hn::Vec<D> result(D d, ptrdiff_t x) const {
        hn::Vec<D> parts[Filter::kParts];
        parts[0] = bottom(d, x);
        hn::StoreU(parts[0], d, bottom.filtered[0] + x);
        if constexpr (Filter::kParts == 2)
            parts[1] = hn::LoadU(d, bottom.filtered[1] + x);
        const auto filtered = [&](int32_t part, int32_t k) {
            return k == Filter::kTaps - 1 ? parts[part] : hn::LoadU(d, above[part][k] + x);
        };
        if constexpr (requires { Filter::column(filtered, parts[0]); })
            return Filter::column(filtered, loadWidened(d, middle + x));
        else
            return Filter::column(filtered);
    }
};

/** Writes a row of the result of a rule over the pixels of a row of rowFor. Those at its ends meet copies. */
template <Stores kStores, int32_t kReach, typename T, typename Result, typename Rule>
void writeExtended(Result* out, const T* row, int32_t width, const Border<T>& border, const T* constant,
                   const Rule& rule) {
    const auto writeEnd = [&](int32_t begin, int32_t end) {
        T pixels[3 * kReach];
        for (int32_t i = 0; i < end - begin + 2 * kReach; ++i) {
            const int32_t x = begin - kReach + i;
            pixels[i] = row != nullptr && x >= 0 && x < width ? row[x] : pixelBeside(row, width, border, x);
        }
        writeRest(hn::CappedTag<Result, 1>(), out + begin, 0, end - begin, rule.from(begin, pixels));
    };
    const int32_t left = HWY_MIN(kReach, width), right = HWY_MAX(left, width - kReach);
    writeEnd(0, left);
    if (left < right)
        writeRow<kStores>(out + left, right - left, rule.from(left, row == nullptr ? constant : row));
    if (right < width)
        writeEnd(right, width);
}

/** Filters a stripe of rows, with a work buffer of a thread. */
template <typename Filter, Stores kStores, typename T, typename Result>
void filterFixed(Image<const T> source, Image<Result> out, RoiSize roi, const Border<T>& border, int32_t first,
                 int32_t rows, uint8_t* memory) {
    constexpr int32_t kTaps = Filter::kTaps, kParts = Filter::kParts, kReach = kTaps / 2;
    Scratch scratch(memory);
    T* const constant = scratch.take<T>(roi.width);
    for (ptrdiff_t x = 0; x < roi.width; ++x)
        constant[x] = border.value;
    Intermediate<T>* ring[kParts][kTaps];
    for (auto& part : ring)
        for (Intermediate<T>*& row : part)
            row = scratch.take<Intermediate<T>>(roi.width);

    for (int32_t i = 0; i < rows + 2 * kReach; ++i) {
        const int32_t y = first - kReach + i;
        const T* const row = rowFor(source, roi, border, y);
        WindowRule<Filter, T, Result> rule{};
        for (int32_t part = 0; part < kParts; ++part) {
            rule.bottom.filtered[part] = ring[part][i % kTaps];
            for (int32_t k = 0; k < kTaps - 1; ++k)
                rule.above[part][k] = ring[part][(i + 1 + k) % kTaps];
        }
        if (i < 2 * kReach) {
            writeExtended<Stores::kCached, kReach>(rule.bottom.filtered[0], row, roi.width, border, constant,
                                                   rule.bottom);
        } else {
            rule.middle = source.row(y - kReach);
            writeExtended<kStores, kReach>(out.row(y - kReach), row, roi.width, border, constant, rule);
        }
    }
    if (kStores == Stores::kStreaming)
        hwy::FlushStream();
}

/** Whether the filters share their work among threads. */
inline bool isForFilterTeam(RoiSize roi) {
    const int32_t threads = configuredThreads();
    return threads > 1 && roi.width >= 256 && roi.height >= 256 && roi.height / 5 >= threads &&
           vekGetNumCoresOnDie() > 1;
}

/** Filters an image with the work buffer of the caller, of which each thread has so many bytes. */
template <typename Filter, typename T, typename Result>
void filterImage(Image<const T> source, Image<Result> out, RoiSize roi, const Border<T>& border, void* buffer,
                 int64_t bytesPerThread) {
    const WorkBuffer work(buffer, bytesPerThread);
    forThreadStripes(isForFilterTeam(roi), roi.height, [=](int32_t thread, int32_t first, int32_t rows) {
        const bool canBeAligned = reinterpret_cast<uintptr_t>(out.pixels) % sizeof(Result) == 0;
        auto* const memory = work.slice<uint8_t>(thread);
        if (canBeAligned && fillsCache(roi.width, rows, sizeof(T) + sizeof(Result)))
            filterFixed<Filter, Stores::kStreaming>(source, out, roi, border, first, rows, memory);
        else
            filterFixed<Filter, Stores::kCached>(source, out, roi, border, first, rows, memory);
    });
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
        const int64_t bytes = fixedFilterBytes<T>(roi, Mask::kTaps, Filter::template kFixedBytes<Result>);
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
        fixedFilterBytes<T>(roi, maskSize == MaskSize3x3 ? 3 : 5, Filter::template kFixedBytes<Result>);
    return writeBufferSize(WorkBuffer::bytes(bytes + Filter::template kMoreBytes<Result>), bufferSize);
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
