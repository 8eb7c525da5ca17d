// Local extrema of an image.
#include "bind.h"
#include "check.h"
#include "mask_bits.h"
#include "rest.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {
namespace {

/** Peaks in the order in which they are found, as many as there is memory for. */
class Peaks {
  public:
    Peaks(ImagePoint* peaks, int32_t most) : peaks_(peaks), most_(most) {}

    int32_t count() const { return count_; }
    bool isFull() const { return count_ == most_; }

    /** Adds the pixels of a row whose bits are set. */
    void add(uint64_t bits, int32_t x, int32_t y) {
        for (; bits != 0 && !isFull(); bits &= bits - 1)
            peaks_[count_++] = {x + __builtin_ctzll(bits), y};
    }

  private:
    ImagePoint* peaks_;
    int32_t most_, count_ = 0;
};

/** Whether |v| is above a threshold, which no integer is for one of INT32_MAX, and every one for a negative one. */
template <typename D, typename V = hn::Vec<D>>
HWY_INLINE hn::Mask<D> exceeds(D d, V v, hn::TFromD<D> threshold) {
    const auto limit = hn::Set(d, threshold);
    if constexpr (hwy::IsFloat<hn::TFromD<D>>())
        return hn::Gt(hn::Abs(v), limit);
    else  // -INT32_MIN is no number, so both sides are negated; above a negative threshold everything is
        return hn::Or(hn::Or(hn::Gt(v, limit), hn::Lt(v, hn::Sub(hn::Zero(d), limit))), hn::Lt(limit, hn::Zero(d)));
}

/** Whether a pixel is as far out as the extremum of its neighbours; floats may differ by the smallest normal number. */
template <typename D, typename V = hn::Vec<D>>
HWY_INLINE hn::Mask<D> isAt(D d, V v, V extremum) {
    if constexpr (hwy::IsFloat<hn::TFromD<D>>())
        return hn::Or(hn::Eq(v, extremum), hn::Le(hn::Abs(hn::Sub(v, extremum)), hn::Set(d, 1.1754943508222875e-38F)));
    else
        return hn::Eq(v, extremum);
}

struct Larger {
    /** `a` unless it is a NaN or smaller. */
    template <typename V>
    HWY_INLINE static V of(V a, V b) {
        return hn::Max(a, b);
    }
};
struct Smaller {
    template <typename V>
    HWY_INLINE static V of(V a, V b) {
        return hn::Min(a, b);
    }
};

/** The extremum of pixels and their neighbours, four or eight. */
template <typename Rank, bool kAll, typename D>
HWY_INLINE hn::Vec<D> extremumAround(D d, const hn::TFromD<D>* const (&rows)[3], ptrdiff_t x) {
    auto extremum = hn::LoadU(d, rows[1] + x);
    const auto join = [&](const hn::TFromD<D>* row, ptrdiff_t i) __attribute__((always_inline)) {
        extremum = Rank::of(hn::LoadU(d, row + x + i), extremum);
    };
    join(rows[0], 0);
    join(rows[2], 0);
    join(rows[1], -1);
    join(rows[1], 1);
    if constexpr (kAll)
        for (const ptrdiff_t i : {-1, 1}) {
            join(rows[0], i);
            join(rows[2], i);
        }
    return extremum;
}

/** Pixels of a vector that are peaks. Most often none is above the threshold, and if so, then on one side of zero. */
template <bool kAll, typename D>
HWY_INLINE uint64_t findPeaks(D d, const hn::TFromD<D>* const (&rows)[3], ptrdiff_t x, hn::TFromD<D> threshold) {
    const auto v = hn::LoadU(d, rows[1] + x);
    const auto isHigh = exceeds(d, v, threshold), isPositive = hn::Gt(v, hn::Zero(d));
    if (hn::AllFalse(d, isHigh))
        return 0;
    auto isPeak = hn::And(isHigh, isPositive);
    if (!hn::AllFalse(d, isPeak))
        isPeak = hn::And(isPeak, isAt(d, v, extremumAround<Larger, kAll>(d, rows, x)));
    const auto isLow = hn::AndNot(isPositive, isHigh);
    if (!hn::AllFalse(d, isLow))
        isPeak = hn::Or(isPeak, hn::And(isLow, isAt(d, v, extremumAround<Smaller, kAll>(d, rows, x))));
    return maskBits(d, isPeak);
}

template <bool kAll, typename T>
HWY_NOINLINE void scan(Image<const T> source, RoiSize roi, int32_t border, T threshold, Peaks& peaks) {
    for (int32_t y = border; y < roi.height - border; ++y) {
        const T* const rows[3] = {source.row(y - 1), source.row(y), source.row(ptrdiff_t{y} + 1)};
        forHalves(
            hn::ScalableTag<T>(), border, roi.width - border, [&](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                if (const uint64_t bits = findPeaks<kAll>(d, rows, x, threshold); bits != 0)
                    peaks.add(bits, static_cast<int32_t>(x), y);
            });
        if (peaks.isFull())
            return;
    }
}

template <typename T>
Status findPeaks3x3(const T* source, int32_t sourceStep, RoiSize roi, T threshold, ImagePoint* peaks,
                    int32_t maxPeakCount, int32_t* peakCount, int32_t norm, int32_t border, uint8_t* buffer) {
    const Image<const T> image{source, sourceStep};
    const auto fits = [=](int32_t size) { return static_cast<float>(border) <= 0.5F * static_cast<float>(size); };
    if (Status status = Check()
                            .pointers(image, peaks, peakCount, buffer)
                            .roi(roi)
                            .require(maxPeakCount >= 1 && border >= 1, StatusSizeError)
                            .require(fits(roi.width) && fits(roi.height), StatusSizeError)
                            .steps(roi.width, image)
                            .require(norm == 0 || norm == 1, StatusBadArgument))
        return status;
    Peaks found(peaks, maxPeakCount);
    if (norm == 1)
        scan<true>(image, roi, border, threshold, found);
    else
        scan<false>(image, roi, border, threshold, found);
    *peakCount = found.count();
    return StatusOk;
}

Status bufferSize(int32_t width, int32_t* size) {
    if (Status status = Check().pointers(size).require(width >= 1, StatusSizeError))
        return status;
    return writeBufferSize((int64_t{width} + 5) / 4 * 128 + 32, size);
}

}  // namespace

VEKCV_BIND(vekiFindPeaks3x3_32f_C1R, findPeaks3x3);
VEKCV_BIND(vekiFindPeaks3x3_32s_C1R, findPeaks3x3);
VEKCV_BIND(vekiFindPeaks3x3GetBufferSize_32f_C1R, bufferSize);
VEKCV_BIND(vekiFindPeaks3x3GetBufferSize_32s_C1R, bufferSize);
}  // namespace VEKCV_VARIANT
