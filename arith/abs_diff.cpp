// Absolute difference of two images, or of an image and a constant.
#include <limits>

#include "absolute_difference.h"
#include "bind.h"
#include "check.h"
#include "pixelwise.h"

namespace VEKCV_VARIANT {
namespace {

/** Images with kChannels channels are processed like images with one channel and kChannels times the width. */
template <int32_t kStreamBytes, int32_t kChannels = 1, typename T>
Status absDiff(const T* source1, int32_t source1Step, const T* source2, int32_t source2Step, T* destination,
               int32_t destinationStep, RoiSize roi) {
    const Image<const T> in1{source1, source1Step}, in2{source2, source2Step};
    const Image<T> out{destination, destinationStep};
    if (Status status = Check().pointers(in1, in2, out).roi(roi).steps(int64_t{roi.width} * kChannels, in1, in2, out))
        return status;
    const auto rules = [=](int32_t y) {
        return [=, a = in1.row(y), b = in2.row(y)](auto d, ptrdiff_t x) {
            return absoluteDifference(hn::LoadU(d, a + x), hn::LoadU(d, b + x));
        };
    };
    writePixels<kStreamBytes>({roi.width * kChannels, roi.height}, kParallelFrom, rules, out, in1, in2);
    return StatusOk;
}

template <int32_t kStreamBytes, typename T, typename Constant>
Status absDiffConstant(const T* source, int32_t sourceStep, T* destination, int32_t destinationStep, RoiSize roi,
                       Constant value) {
    const Image<const T> in{source, sourceStep};
    const Image<T> out{destination, destinationStep};
    if (Status status = Check().pointers(in, out).roi(roi).steps(roi.width, in, out))
        return status;
    if constexpr (!hwy::IsFloat<T>()) {
        constexpr Constant kMost = std::numeric_limits<T>::max();
        value = value < 0 ? 0 : value > kMost ? kMost : value;
    }
    const auto rules = [=, constant = static_cast<T>(value)](int32_t y) {
        return [=, a = in.row(y)](auto d, ptrdiff_t x) {
            return absoluteDifference(hn::LoadU(d, a + x), hn::Set(d, constant));
        };
    };
    writePixels<kStreamBytes>(roi, kParallelFrom, rules, out, in);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiAbsDiff_8u_C1R, absDiff<3>);
VEKCV_BIND(vekiAbsDiff_8u_C3R, absDiff<3, 3>);
VEKCV_BIND(vekiAbsDiff_16u_C1R, absDiff<6>);
VEKCV_BIND(vekiAbsDiff_32f_C1R, absDiff<12>);
VEKCV_BIND(vekiAbsDiffC_8u_C1R, absDiffConstant<2>);
VEKCV_BIND(vekiAbsDiffC_16u_C1R, absDiffConstant<6>);  // a threshold: a pixel touches 4 bytes
VEKCV_BIND(vekiAbsDiffC_32f_C1R, absDiffConstant<8>);
}  // namespace VEKCV_VARIANT
