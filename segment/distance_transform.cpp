// Distances to the nearest zero pixel, by steps from pixel to pixel (chamfer distances).
#include "bind.h"
#include "chamfer_rows.h"
#include "check.h"
#include "float_modes.h"
#include "front_pass.h"

namespace VEKCV_VARIANT {
namespace {

/** The usual weights of a mask, for each norm. */
template <typename T>
constexpr T kStandardMetrics[2][3][3] = {};
template <>
constexpr int32_t kStandardMetrics<int32_t>[2][3][3] = {{{1, 1}, {1, 2}, {2, 3}}, {{1, 1, 2}, {1, 2, 3}, {5, 7, 11}}};
template <>
constexpr float kStandardMetrics<float>[2][3][3] = {{{1, 1}, {1, 2}, {0.955F, 1.3693F}},
                                                    {{1, 1, 2}, {1, 2, 3}, {1, 1.4F, 2.1969F}}};

template <typename T>
Status standardMetrics(int32_t maskSize, int32_t norm, T* metrics) {
    if (Status status = Check()
                            .pointers(metrics)
                            .require(maskSize == 3 || maskSize == 5, StatusSizeError)
                            .require(norm >= NormInf && norm <= NormL2, StatusBadArgument))
        return status;
    for (int32_t i = 0; i < (maskSize == 3 ? 2 : 3); ++i)
        metrics[i] = kStandardMetrics<T>[maskSize == 3 ? 0 : 1][norm][i];
    return StatusOk;
}

Status standardMetricsOfCode(int32_t maskCode, float* metrics) {
    const int32_t norm = maskCode % 10;
    if (norm < NormInf || norm > NormL2)
        return StatusBadArgument;
    return standardMetrics(maskCode / 10, norm, metrics);
}

constexpr bool isPositive(int32_t metric) {
    return metric > 0;
}
/** By its bits: the modes of the calling thread may take subnormal numbers for 0. */
constexpr bool isPositive(float metric) {
    const auto bits = __builtin_bit_cast(int32_t, metric);
    return bits > 0 && bits <= __builtin_bit_cast(int32_t, __builtin_inff());
}

template <typename T, typename Metric>
Status checkDistances(Image<const uint8_t> source, Image<T> out, RoiSize roi, const Metric* metrics, int32_t count) {
    Check check;
    check.pointers(source, out, metrics).roi(roi).steps(roi.width, source, out);
    for (int32_t i = 0; check == StatusOk && i < count; ++i)
        check.require(isPositive(metrics[i]), StatusMetricError);
    return check;
}

constexpr int64_t outOfReach(const int32_t* /*metrics*/) {
    return INT64_MAX;
}
constexpr float outOfReach(const float* /*metrics*/) {
    return __builtin_inff();
}

template <typename T, typename Metric>
void transformBySmallMask(Image<const uint8_t> source, Image<T> out, RoiSize roi, const Metric* metrics) {
    const auto none = outOfReach(metrics);
    using Cost = std::remove_const_t<decltype(none)>;
    transformDistances<1>(source, out, roi, smallMaskCosts(Cost{metrics[0]}, Cost{metrics[1]}, none));
}

template <int32_t kMaskSize, typename T, typename Metric>
Status transform(const uint8_t* source, int32_t sourceStep, T* destination, int32_t destinationStep, RoiSize roi,
                 const Metric* metrics) {
    const Image<const uint8_t> in{source, sourceStep};
    const Image<T> out{destination, destinationStep};
    if (Status status = checkDistances(in, out, roi, metrics, kMaskSize == 3 ? 2 : 3))
        return status;
    inUsualModes([&] {
        if (kMaskSize == 3 || !helpsKnight(metrics))
            return transformBySmallMask(in, out, roi, metrics);
        using Cost = decltype(outOfReach(metrics));
        transformDistances<2>(in, out, roi, largeMaskCosts(Cost{metrics[0]}, Cost{metrics[1]}, Cost{metrics[2]}));
    });
    return StatusOk;
}

template <int32_t kMaskSize>
Status transformInPlace(uint8_t* pixels, int32_t step, RoiSize roi, const int32_t* metrics) {
    return transform<kMaskSize>(pixels, step, pixels, step, roi, metrics);
}

}  // namespace

VEKCV_BIND(vekiGetDistanceTransformMask_32s, standardMetrics);
VEKCV_BIND(vekiGetDistanceTransformMask_32f, standardMetrics);
VEKCV_BIND(vekiGetDistanceTransformMask, standardMetricsOfCode);
VEKCV_BIND(vekiDistanceTransform_3x3_8u_C1R, transform<3>);
VEKCV_BIND(vekiDistanceTransform_3x3_8u_C1IR, transformInPlace<3>);
VEKCV_BIND(vekiDistanceTransform_3x3_8u16u_C1R, transform<3>);
VEKCV_BIND(vekiDistanceTransform_3x3_8u32f_C1R, transform<3>);
VEKCV_BIND(vekiDistanceTransform_5x5_8u_C1R, transform<5>);
VEKCV_BIND(vekiDistanceTransform_5x5_8u_C1IR, transformInPlace<5>);
VEKCV_BIND(vekiDistanceTransform_5x5_8u16u_C1R, transform<5>);
VEKCV_BIND(vekiDistanceTransform_5x5_8u32f_C1R, transform<5>);
}  // namespace VEKCV_VARIANT
