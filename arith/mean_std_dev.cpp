// Mean and standard deviation.
#include <cmath>

#include "bind.h"
#include "channel_forms.h"
#include "check.h"
#include "signed_bytes.h"
#include "sums.h"

namespace VEKCV_VARIANT {
namespace {

/** Sum of pixels and of their squares. */
template <typename T>
class Moments {
  public:
    using Total = int64_t;

    HWY_INLINE void add(ptrdiff_t vector, hn::Vec<hn::ScalableTag<T>> v) { sum_.add(vector, v); }
    HWY_INLINE void addSquares(ptrdiff_t vector, hn::Vec<hn::ScalableTag<T>> v) { squares_.add(vector, v); }
    HWY_INLINE void endSection() { squares_.endSection(); }
    int64_t sum() const { return static_cast<int64_t>(sum_.total()); }
    uint64_t squares() const { return squares_.total(); }

  private:
    Sum<T> sum_;
    SumOfSquares<T> squares_;
};

/** Signed bytes are added as their distance from -128. */
template <>
class Moments<int8_t> {
    using D = hn::ScalableTag<int8_t>;

  public:
    using Total = int64_t;

    HWY_INLINE void add(ptrdiff_t vector, hn::Vec<D> v) {
        moved_.add(vector, movedToUnsigned(v));
        ++vectors_;
    }
    HWY_INLINE void addSquares(ptrdiff_t vector, hn::Vec<D> v) {
        squares_.add(vector, hn::BitCast(hn::ScalableTag<uint8_t>(), hn::Abs(v)));
    }
    HWY_INLINE void endSection() { squares_.endSection(); }
    int64_t sum() const { return static_cast<int64_t>(moved_.total()) - 128 * vectors_ * int64_t{hn::MaxLanes(D())}; }
    uint64_t squares() const { return squares_.total(); }

  private:
    Sum<uint8_t> moved_;
    SumOfSquares<uint8_t> squares_;
    int64_t vectors_ = 0;
};

template <>
class Moments<float> {
    using D = hn::ScalableTag<float>;
    using Wide = hn::ScalableTag<double>;

  public:
    using Total = double;

    HWY_INLINE void add(ptrdiff_t vector, hn::Vec<D> v) {
        sum_.add(2 * vector, lower(v));
        sum_.add(2 * vector + 1, upper(v));
    }
    HWY_INLINE void addSquares(ptrdiff_t vector, hn::Vec<D> v) {
        squares_.add(2 * vector, hn::Mul(lower(v), lower(v)));
        squares_.add(2 * vector + 1, hn::Mul(upper(v), upper(v)));
    }
    HWY_INLINE void endSection() {}
    double sum() const { return sum_.total(); }
    double squares() const { return squares_.total(); }

  private:
    HWY_INLINE static hn::Vec<Wide> lower(hn::Vec<D> v) { return hn::PromoteTo(Wide(), hn::LowerHalf(v)); }
    HWY_INLINE static hn::Vec<Wide> upper(hn::Vec<D> v) {
        return hn::PromoteTo(Wide(), hn::UpperHalf(hn::Half<D>(), v));
    }

    SixteenSums<double> sum_, squares_;
};

/** Counts the pixels that a mask selects. Without a mask nothing is counted. */
template <ptrdiff_t kPixels>
class Count {
    using D = hn::CappedTag<uint8_t, kPixels>;
    static constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    using Wide = hn::Repartition<uint64_t, D>;

  public:
    HWY_INLINE void add(NoMask /*mask*/) {}
    HWY_INLINE void add(MaskBytes mask) {
        for (ptrdiff_t i = 0; i < kPixels; i += kLanes)
            count_ = hn::Add(count_, hn::SumsOf8((mask + i).selectOrZero(D(), hn::Set(D(), 1))));
    }
    int64_t total() const { return static_cast<int64_t>(hn::GetLane(hn::SumOfLanes(Wide(), count_))); }

  private:
    hn::Vec<Wide> count_ = hn::Zero(Wide());
};

enum class Results { kMean, kMeanAndDeviation };

template <typename T, Results kResults>
class StatisticsReduction {
    using D = hn::ScalableTag<T>;
    static constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));

  public:
    using Pixel = T;
    static constexpr ptrdiff_t kSectionPixels = hwy::IsFloat<T>() ? PTRDIFF_MAX : kSumSectionPixels<T>;

    struct Totals {
        typename Moments<T>::Total sum{};
        decltype(Moments<T>().squares()) squares{};
        int64_t count = 0;

        static void join(Totals& a, const Totals& b) { a = {a.sum + b.sum, a.squares + b.squares, a.count + b.count}; }
    };

    static T neutral() { return 0; }

    template <ptrdiff_t kPixels, int32_t kStride, typename Mask>
    HWY_INLINE void add(Pixels<T, kStride> pixels, Mask mask) {
        if constexpr (kPixels == kChunkPixels<T>)
            chunkCount_.add(mask);
        else
            restCount_.add(mask);
        const auto addVector = [&](ptrdiff_t i) __attribute__((always_inline)) {
            const auto v = (mask + i * kLanes).selectOrZero(D(), (pixels + i * kLanes).load(D()));
            moments_.add(i, v);
            if constexpr (kResults == Results::kMeanAndDeviation)
                moments_.addSquares(i, v);
        };
        // Unrolled, each vector of a chunk has accumulators of its own, where they are floats, and 16-bit pixels
        // overlap; bytes have all that they need in 8 registers as long as there is one vector at a time.
        if constexpr (sizeof(void*) == 4 && sizeof(T) == 1) {
#pragma GCC unroll 1
            for (ptrdiff_t i = 0; i < kPixels / kLanes; ++i)
                addVector(i);
        } else {
#pragma GCC unroll 4
            for (ptrdiff_t i = 0; i < kPixels / kLanes; ++i)
                addVector(i);
        }
    }
    HWY_INLINE void endSection() {
        moments_.endSection();
    }

    Totals totals() const {
        return {moments_.sum(), moments_.squares(), chunkCount_.total() + restCount_.total()};
    }

  private:
    Moments<T> moments_;
    Count<kChunkPixels<T>> chunkCount_;
    Count<kRestPixels<T>> restCount_;
};

/** The sums of the pixels that take part. */
template <Results kResults, int64_t kPixels, typename Source, typename Mask>
auto totalsOf(Source source, Mask mask, RoiSize roi, int32_t channel) {
    using Reduction = StatisticsReduction<typename Source::Element, kResults>;
    auto totals = reducePixels<Reduction>(roi, ParallelFrom::perThread(kPixels), channel, mask, source);
    if constexpr (std::is_same_v<Mask, NoImage>)
        totals.count = int64_t{roi.width} * roi.height;
    return totals;
}

template <typename Sum>
double mean(Sum sum, int64_t count) {
    return count == 0 ? 0 : static_cast<double>(sum) / static_cast<double>(count);
}

struct Mean {
    template <typename Source, typename Mask>
    static Status run(Source source, Mask mask, RoiSize roi, int32_t channel, double* result) {
        if (Status status = Check().pointers(source, mask, result).channelImages(roi, channel, source, mask))
            return status;
        const auto totals = totalsOf<Results::kMean, kPixelsPerThread>(source, mask, roi, channel);
        *result = mean(totals.sum, totals.count);
        return StatusOk;
    }
};

template <int64_t kPixels>
struct MeanStdDev {
    template <typename Source, typename Mask>
    static Status run(Source source, Mask mask, RoiSize roi, int32_t channel, double* meanResult, double* deviation) {
        if (Status status = Check().pointers(source, mask).channelImages(roi, channel, source, mask))
            return status;
        const auto totals = totalsOf<Results::kMeanAndDeviation, kPixels>(source, mask, roi, channel);
        const double average = mean(totals.sum, totals.count);
        if (meanResult != nullptr)
            *meanResult = average;
        if (deviation != nullptr)
            *deviation = std::sqrt(std::abs(mean(totals.squares, totals.count) - average * average));
        return StatusOk;
    }
};

}  // namespace

VEKCV_BIND(vekiMean_8u_C1MR, onChannel<Mean>);
VEKCV_BIND(vekiMean_8s_C1MR, onChannel<Mean>);
VEKCV_BIND(vekiMean_16u_C1MR, onChannel<Mean>);
VEKCV_BIND(vekiMean_32f_C1MR, onChannel<Mean>);
VEKCV_BIND(vekiMean_8u_C3CMR, onChannel<Mean>);
VEKCV_BIND(vekiMean_8s_C3CMR, onChannel<Mean>);
VEKCV_BIND(vekiMean_16u_C3CMR, onChannel<Mean>);
VEKCV_BIND(vekiMean_32f_C3CMR, onChannel<Mean>);

VEKCV_BIND(vekiMean_StdDev_8u_C1R, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_8s_C1R, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_16u_C1R, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_32f_C1R, onChannel<MeanStdDev<65536>>);
VEKCV_BIND(vekiMean_StdDev_8u_C1MR, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_8s_C1MR, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_16u_C1MR, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_32f_C1MR, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_8u_C3CR, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_8s_C3CR, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_16u_C3CR, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_32f_C3CR, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_8u_C3CMR, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_8s_C3CMR, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_16u_C3CMR, onChannel<MeanStdDev<kPixelsPerThread>>);
VEKCV_BIND(vekiMean_StdDev_32f_C3CMR, onChannel<MeanStdDev<kPixelsPerThread>>);
}  // namespace VEKCV_VARIANT
