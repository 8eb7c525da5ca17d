// Boundaries of segments.
#include "bind.h"
#include "boundaries.h"
#include "check.h"

namespace VEKCV_VARIANT {
namespace {

template <typename T>
Status boundSegments(T* markers, int32_t markersStep, RoiSize roi, T borderValue, int32_t norm) {
    const Image<T> image{markers, markersStep};
    if (Status status = Check()
                            .pointers(image)
                            .roi(roi)
                            .stepLengths(roi.width, image)
                            .require(norm == NormL1 || norm == NormInf, StatusBadArgument))
        return status;
    norm == NormL1 ? markBoundaries<false>(image, roi, borderValue) : markBoundaries<true>(image, roi, borderValue);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiBoundSegments_8u_C1IR, boundSegments);
VEKCV_BIND(vekiBoundSegments_16u_C1IR, boundSegments);
}  // namespace VEKCV_VARIANT
