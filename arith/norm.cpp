// Norms of an image, of a difference, and of a difference relative to an image.
#include <cmath>

#include "absolute_difference.h"
#include "bind.h"
#include "channel_forms.h"
#include "check.h"
#include "sums.h"

namespace VEKCV_VARIANT {
namespace {

/** The type of |a| and |a - b|: unsigned for integers. */
template <typename T>
using Magnitude = std::conditional_t<hwy::IsFloat<T>(), T, hwy::MakeUnsigned<T>>;

template <typename T>
HWY_INLINE hn::Vec<hn::ScalableTag<Magnitude<T>>> magnitude(hn::Vec<hn::ScalableTag<T>> a) {
    if constexpr (std::is_same_v<T, uint8_t> || std::is_same_v<T, uint16_t>)
        return a;
    else
        return hn::BitCast(hn::ScalableTag<Magnitude<T>>(), hn::Abs(a));
}

/** Sums of floats: within a row in single precision, over the rows in double. */
template <bool kSquares>
class RowSums {
  public:
    HWY_INLINE void add(ptrdiff_t vector, hn::Vec<hn::ScalableTag<float>> v) {
        row_.add(vector, kSquares ? hn::Mul(v, v) : v);
    }
    HWY_INLINE void endSection() {
        total_ += static_cast<double>(row_.total());
        row_ = {};
    }
    double total() const { return total_; }

  private:
    SixteenSums<float> row_;
    double total_ = 0;
};

template <typename M>
class Maximum {
    using D = hn::ScalableTag<M>;

  public:
    // The maximum of NaN and another value is the second operand on x86, so that a NaN is passed over.
    HWY_INLINE void add(ptrdiff_t /*vector*/, hn::Vec<D> v) { most_ = hn::Max(v, most_); }
    HWY_INLINE void endSection() {}
    M total() const {
        return foldHalves(D(), most_, [](auto lower, auto upper) { return hn::Max(lower, upper); });
    }

  private:
    hn::Vec<D> most_ = hn::Zero(D());
};

// A norm: what magnitudes are added to, how the totals of two stripes are joined, and what the norm is of a total.
struct Inf {
    template <typename M>
    using Accumulator = Maximum<M>;
    template <typename Total>
    static Total join(Total a, Total b) {
        return a < b ? b : a;
    }
    static double norm(double total) { return total; }
};

struct L1 {
    template <typename M>
    using Accumulator = std::conditional_t<hwy::IsFloat<M>(), RowSums<false>, Sum<M>>;
    template <typename Total>
    static Total join(Total a, Total b) {
        return a + b;
    }
    static double norm(double total) { return total; }
};

struct L2 : L1 {
    template <typename M>
    using Accumulator = std::conditional_t<hwy::IsFloat<M>(), RowSums<true>, SumOfSquares<M>>;
    static double norm(double total) { return std::sqrt(total); }
};

/** Reduces the magnitudes of one image, or of a difference and, for relative norms, those of the second image. */
template <typename Norm, typename T, bool kRelative>
class NormReduction {
    using M = Magnitude<T>;
    using Accumulator = typename Norm::template Accumulator<M>;
    using Total = decltype(Accumulator().total());
    using D = hn::ScalableTag<T>;
    static constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));

  public:
    using Pixel = T;
    // A row of floats is one section.
    static constexpr ptrdiff_t kSectionPixels = hwy::IsFloat<T>() ? PTRDIFF_MAX : kSumSectionPixels<M>;

    struct Totals {
        Total difference{}, second{};

        static void join(Totals& a, const Totals& b) {
            a = {Norm::join(a.difference, b.difference), Norm::join(a.second, b.second)};
        }
    };

    static T neutral() { return 0; }

    template <ptrdiff_t kPixels, int32_t kStride>
    HWY_INLINE void add(Pixels<T, kStride> a, MaskBytes mask) {
#pragma GCC unroll 4  // accumulators are registers then
        for (ptrdiff_t i = 0; i < kPixels / kLanes; ++i, a = a + kLanes, mask = mask + kLanes)
            difference_.add(i, mask.selectOrZero(hn::ScalableTag<M>(), magnitude<T>(a.load(D()))));
    }
    template <ptrdiff_t kPixels, int32_t kStride>
    HWY_INLINE void add(Pixels<T, kStride> a, Pixels<T, kStride> b, MaskBytes mask) {
        const hn::ScalableTag<M> d;
#pragma GCC unroll 4  // accumulators are registers then
        for (ptrdiff_t i = 0; i < kPixels / kLanes; ++i, a = a + kLanes, b = b + kLanes, mask = mask + kLanes) {
            const auto second = b.load(D());
            difference_.add(i, mask.selectOrZero(d, absoluteDifference(a.load(D()), second)));
            if constexpr (kRelative)
                second_.add(i, mask.selectOrZero(d, magnitude<T>(second)));
        }
    }
    HWY_INLINE void endSection() {
        difference_.endSection();
        if constexpr (kRelative)
            second_.endSection();
    }

    Totals totals() const {
        return {difference_.total(), second_.total()};
    }

  private:
    Accumulator difference_;
    Accumulator second_;
};

enum Kind { kDiff, kRel };

/** In the place of a threshold: the calling thread does all the work. */
constexpr int64_t kAlone = 0;

/** Checks, and computes the norm of one channel of the sources. */
template <typename Norm, bool kRelative, int64_t kPixels, typename... Sources>
Status reduce(Image<const uint8_t> mask, RoiSize roi, int32_t channel, double* result, Sources... sources) {
    if (Status status = Check().pointers(sources..., mask, result).channelImages(roi, channel, sources..., mask))
        return status;

    using T = std::common_type_t<typename Sources::Element...>;
    const ParallelFrom threshold = kPixels == kAlone ? ParallelFrom::never() : ParallelFrom::perThread(kPixels);
    const auto totals = reducePixels<NormReduction<Norm, T, kRelative>>(roi, threshold, channel, mask, sources...);

    const double norm = Norm::norm(static_cast<double>(totals.difference));
    if constexpr (!kRelative) {
        *result = norm;
        return StatusOk;
    }
    const double divisor = Norm::norm(static_cast<double>(totals.second));
    *result = norm / divisor;
    return divisor == 0 ? StatusDivideByZeroWarning : StatusOk;
}

template <typename Norm, int64_t kPixels = kPixelsPerThread>
struct NormOfOne {
    template <typename Source>
    static Status run(Source source, Image<const uint8_t> mask, RoiSize roi, int32_t channel, double* result) {
        return reduce<Norm, false, kPixels>(mask, roi, channel, result, source);
    }
};

template <typename Norm, Kind kKind, int64_t kPixels = kPixelsPerThread, typename T>
Status normOfTwo(const T* source1, int32_t source1Step, const T* source2, int32_t source2Step, const uint8_t* mask,
                 int32_t maskStep, RoiSize roi, double* result) {
    return reduce<Norm, kKind == kRel, kPixels>({mask, maskStep}, roi, 1, result, Image<const T>{source1, source1Step},
                                                Image<const T>{source2, source2Step});
}

template <typename Norm, Kind kKind, int64_t kPixels = kPixelsPerThread, typename T>
Status normOfTwo(const T* source1, int32_t source1Step, const T* source2, int32_t source2Step, const uint8_t* mask,
                 int32_t maskStep, RoiSize roi, int32_t channel, double* result) {
    return reduce<Norm, kKind == kRel, kPixels>({mask, maskStep}, roi, channel, result,
                                                Image<const T, 3>{source1, source1Step},
                                                Image<const T, 3>{source2, source2Step});
}

}  // namespace

VEKCV_BIND(vekiNorm_Inf_8u_C1MR, onChannel<NormOfOne<Inf, 524288>>);
VEKCV_BIND(vekiNorm_Inf_8s_C1MR, onChannel<NormOfOne<Inf, 524288>>);
VEKCV_BIND(vekiNorm_Inf_16u_C1MR, onChannel<NormOfOne<Inf, 524288>>);
VEKCV_BIND(vekiNorm_Inf_32f_C1MR, onChannel<NormOfOne<Inf>>);
VEKCV_BIND(vekiNorm_Inf_8u_C3CMR, onChannel<NormOfOne<Inf>>);
VEKCV_BIND(vekiNorm_Inf_8s_C3CMR, onChannel<NormOfOne<Inf>>);
VEKCV_BIND(vekiNorm_Inf_16u_C3CMR, onChannel<NormOfOne<Inf>>);
VEKCV_BIND(vekiNorm_Inf_32f_C3CMR, onChannel<NormOfOne<Inf, 32768>>);

VEKCV_BIND(vekiNorm_L1_8u_C1MR, onChannel<NormOfOne<L1>>);
VEKCV_BIND(vekiNorm_L1_8s_C1MR, onChannel<NormOfOne<L1>>);
VEKCV_BIND(vekiNorm_L1_16u_C1MR, onChannel<NormOfOne<L1>>);
VEKCV_BIND(vekiNorm_L1_32f_C1MR, onChannel<NormOfOne<L1>>);
VEKCV_BIND(vekiNorm_L1_8u_C3CMR, onChannel<NormOfOne<L1>>);
VEKCV_BIND(vekiNorm_L1_8s_C3CMR, onChannel<NormOfOne<L1>>);
VEKCV_BIND(vekiNorm_L1_16u_C3CMR, onChannel<NormOfOne<L1>>);
VEKCV_BIND(vekiNorm_L1_32f_C3CMR, onChannel<NormOfOne<L1>>);

VEKCV_BIND(vekiNorm_L2_8u_C1MR, onChannel<NormOfOne<L2>>);
VEKCV_BIND(vekiNorm_L2_8s_C1MR, onChannel<NormOfOne<L2>>);
VEKCV_BIND(vekiNorm_L2_16u_C1MR, onChannel<NormOfOne<L2>>);
VEKCV_BIND(vekiNorm_L2_32f_C1MR, onChannel<NormOfOne<L2>>);
VEKCV_BIND(vekiNorm_L2_8u_C3CMR, onChannel<NormOfOne<L2>>);
VEKCV_BIND(vekiNorm_L2_8s_C3CMR, onChannel<NormOfOne<L2>>);
VEKCV_BIND(vekiNorm_L2_16u_C3CMR, onChannel<NormOfOne<L2>>);
VEKCV_BIND(vekiNorm_L2_32f_C3CMR, onChannel<NormOfOne<L2>>);

VEKCV_BIND(vekiNormDiff_Inf_8u_C1MR, normOfTwo<Inf, kDiff>);
VEKCV_BIND(vekiNormDiff_Inf_8s_C1MR, normOfTwo<Inf, kDiff>);
VEKCV_BIND(vekiNormDiff_Inf_16u_C1MR, normOfTwo<Inf, kDiff, kAlone>);
VEKCV_BIND(vekiNormDiff_Inf_32f_C1MR, normOfTwo<Inf, kDiff>);
VEKCV_BIND(vekiNormDiff_Inf_8u_C3CMR, normOfTwo<Inf, kDiff>);
VEKCV_BIND(vekiNormDiff_Inf_8s_C3CMR, normOfTwo<Inf, kDiff>);
VEKCV_BIND(vekiNormDiff_Inf_16u_C3CMR, normOfTwo<Inf, kDiff, kAlone>);
VEKCV_BIND(vekiNormDiff_Inf_32f_C3CMR, normOfTwo<Inf, kDiff>);

VEKCV_BIND(vekiNormDiff_L1_8u_C1MR, normOfTwo<L1, kDiff>);
VEKCV_BIND(vekiNormDiff_L1_8s_C1MR, normOfTwo<L1, kDiff>);
VEKCV_BIND(vekiNormDiff_L1_16u_C1MR, normOfTwo<L1, kDiff>);
VEKCV_BIND(vekiNormDiff_L1_32f_C1MR, normOfTwo<L1, kDiff>);
VEKCV_BIND(vekiNormDiff_L1_8u_C3CMR, normOfTwo<L1, kDiff>);
VEKCV_BIND(vekiNormDiff_L1_8s_C3CMR, normOfTwo<L1, kDiff, 32768>);
VEKCV_BIND(vekiNormDiff_L1_16u_C3CMR, normOfTwo<L1, kDiff, 32768>);
VEKCV_BIND(vekiNormDiff_L1_32f_C3CMR, normOfTwo<L1, kDiff>);

VEKCV_BIND(vekiNormDiff_L2_8u_C1MR, normOfTwo<L2, kDiff>);
VEKCV_BIND(vekiNormDiff_L2_8s_C1MR, normOfTwo<L2, kDiff>);
VEKCV_BIND(vekiNormDiff_L2_16u_C1MR, normOfTwo<L2, kDiff>);
VEKCV_BIND(vekiNormDiff_L2_32f_C1MR, normOfTwo<L2, kDiff>);
VEKCV_BIND(vekiNormDiff_L2_8u_C3CMR, normOfTwo<L2, kDiff>);
VEKCV_BIND(vekiNormDiff_L2_8s_C3CMR, normOfTwo<L2, kDiff>);
VEKCV_BIND(vekiNormDiff_L2_16u_C3CMR, normOfTwo<L2, kDiff>);
VEKCV_BIND(vekiNormDiff_L2_32f_C3CMR, normOfTwo<L2, kDiff>);

VEKCV_BIND(vekiNormRel_Inf_8u_C1MR, normOfTwo<Inf, kRel>);
VEKCV_BIND(vekiNormRel_Inf_8s_C1MR, normOfTwo<Inf, kRel>);
VEKCV_BIND(vekiNormRel_Inf_16u_C1MR, normOfTwo<Inf, kRel>);
VEKCV_BIND(vekiNormRel_Inf_32f_C1MR, normOfTwo<Inf, kRel, 32768>);
VEKCV_BIND(vekiNormRel_Inf_8u_C3CMR, normOfTwo<Inf, kRel>);
VEKCV_BIND(vekiNormRel_Inf_8s_C3CMR, normOfTwo<Inf, kRel>);
VEKCV_BIND(vekiNormRel_Inf_16u_C3CMR, normOfTwo<Inf, kRel, 32768>);
VEKCV_BIND(vekiNormRel_Inf_32f_C3CMR, normOfTwo<Inf, kRel, 32768>);

VEKCV_BIND(vekiNormRel_L1_8u_C1MR, normOfTwo<L1, kRel>);
VEKCV_BIND(vekiNormRel_L1_8s_C1MR, normOfTwo<L1, kRel>);
VEKCV_BIND(vekiNormRel_L1_16u_C1MR, normOfTwo<L1, kRel>);
VEKCV_BIND(vekiNormRel_L1_32f_C1MR, normOfTwo<L1, kRel>);
VEKCV_BIND(vekiNormRel_L1_8u_C3CMR, normOfTwo<L1, kRel>);
VEKCV_BIND(vekiNormRel_L1_8s_C3CMR, normOfTwo<L1, kRel>);
VEKCV_BIND(vekiNormRel_L1_16u_C3CMR, normOfTwo<L1, kRel, 32768>);
VEKCV_BIND(vekiNormRel_L1_32f_C3CMR, normOfTwo<L1, kRel>);

VEKCV_BIND(vekiNormRel_L2_8u_C1MR, normOfTwo<L2, kRel>);
VEKCV_BIND(vekiNormRel_L2_8s_C1MR, normOfTwo<L2, kRel>);
VEKCV_BIND(vekiNormRel_L2_16u_C1MR, normOfTwo<L2, kRel>);
VEKCV_BIND(vekiNormRel_L2_32f_C1MR, normOfTwo<L2, kRel>);
VEKCV_BIND(vekiNormRel_L2_8u_C3CMR, normOfTwo<L2, kRel>);
VEKCV_BIND(vekiNormRel_L2_8s_C3CMR, normOfTwo<L2, kRel>);
VEKCV_BIND(vekiNormRel_L2_16u_C3CMR, normOfTwo<L2, kRel, 32768>);
VEKCV_BIND(vekiNormRel_L2_32f_C3CMR, normOfTwo<L2, kRel>);
}  // namespace VEKCV_VARIANT
