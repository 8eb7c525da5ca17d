// Means of 3 x 3 and 5 x 5 pixels.
#include "bind.h"
#include "filter_stripes.h"
#include "taps.h"

namespace VEKCV_VARIANT {
namespace {

/** The mean from the sum of 9 or 25 pixels. No sum lies in the middle between two means. */
template <int32_t kPixels, typename V>
HWY_INLINE V meanOf(V sum) {
    const hn::DFromV<V> d;
    if constexpr (hwy::IsFloat<hn::TFromV<V>>())
        return hn::Mul(sum, hn::Set(d, 1.0f / kPixels));
    else if constexpr (kPixels == 9)  // (sum + 4) / 9: times 7282 / 65536, exact up to 32767
        return hn::MulHigh(hn::Add(sum, hn::Set(d, 4)), hn::Set(d, 7282));
    else  // (sum + 12) / 25: times 5243 / 131072
        return hn::ShiftRight<1>(hn::MulHigh(hn::Add(sum, hn::Set(d, 12)), hn::Set(d, 5243)));
}

template <typename Sum>
struct Mean : Separable<Sum, Sum> {
    template <typename At>
    HWY_INLINE static auto column(At at) {
        return meanOf<Sum::kTaps * Sum::kTaps>(Separable<Sum, Sum>::column(at));
    }
};

struct Lowpass {
    using Small = Mean<Sum3>;
    using Large = Mean<Sum5>;
    template <typename Result>
    static constexpr int32_t kFixedBytes = 248;
    template <typename Result>
    static constexpr int32_t kMoreBytes = 0;
};

}  // namespace

FilterStripe<float, float> meanStripe(int32_t taps) {
    return taps == 3 ? filterFixed<Lowpass::Small, float, float> : filterFixed<Lowpass::Large, float, float>;
}

VEKCV_BIND(vekiFilterLowpassBorder_8u_C1R, maskFilter<Lowpass>);
VEKCV_BIND(vekiFilterLowpassBorder_32f_C1R, maskFilter<Lowpass>);
VEKCV_BIND(vekiFilterLowpassGetBufferSize_8u_C1R, maskFilterBufferSize<Lowpass, uint8_t, uint8_t>);
VEKCV_BIND(vekiFilterLowpassGetBufferSize_32f_C1R, maskFilterBufferSize<Lowpass, float, float>);
}  // namespace VEKCV_VARIANT
