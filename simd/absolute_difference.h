#pragma once

#include <type_traits>

#include "signed_bytes.h"

namespace VEKCV_VARIANT {

/** |a - b| of floats, unsigned integers or signed bytes; that of signed bytes is unsigned. */
template <typename V>
HWY_INLINE auto absoluteDifference(V a, V b) {
    if constexpr (hwy::IsFloat<hn::TFromV<V>>())
        return hn::Abs(hn::Sub(a, b));
    else if constexpr (std::is_same_v<hn::TFromV<V>, int8_t>)
        return absoluteDifference(movedToUnsigned(a), movedToUnsigned(b));
    else  // one of the two is zero
        return hn::Or(hn::SaturatedSub(a, b), hn::SaturatedSub(b, a));
}

}  // namespace VEKCV_VARIANT
