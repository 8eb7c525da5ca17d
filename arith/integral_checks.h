#pragma once

#include "check.h"

namespace VEKCV_VARIANT {

/** The checks of operations whose tables have kMore columns more than the source image. */
template <int32_t kMore, typename... Tables>
constexpr Status checkTables(Image<const uint8_t> source, RoiSize roi, const Tables&... tables) {
    return Check()
        .pointers(source, tables...)
        .roi(roi)
        .stepLengths(roi.width, source)
        .stepLengths(int64_t{roi.width} + kMore, tables...)
        .stepMultiples(tables...);
}

}  // namespace VEKCV_VARIANT
