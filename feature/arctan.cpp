// Angles of vectors.
#include "bind.h"
#include "check.h"
#include "pixelwise.h"

namespace VEKCV_VARIANT {
namespace {

/** The angles of a vector of vectors (x, y), in degrees. */
struct ArctanRule {
    const float *y, *x;

    template <typename D>
    HWY_INLINE hn::Vec<D> operator()(D d, ptrdiff_t i) const {
        const auto vx = hn::LoadU(d, x + i), vy = hn::LoadU(d, y + i);
        const auto ax = hn::Abs(vx), ay = hn::Abs(vy);
        // Max and Min give their second operand where either is NaN: a NaN in y stays in the larger one, a NaN in x in
        // the smaller one.
        const auto larger = hn::Max(hn::Set(d, 1e-8F), hn::Max(ax, ay));
        const auto t = hn::Div(hn::Min(ay, ax), larger);
        const auto slope = hn::Add(hn::Mul(hn::Set(d, -15.8131895F), t), hn::Set(d, 61.0941963F));
        auto angle = hn::Sub(hn::Mul(slope, t), hn::Set(d, 0.14050041F));
        angle = hn::IfThenElse(hn::Lt(ax, ay), hn::Sub(hn::Set(d, 90.0F), angle), angle);
        angle = hn::IfThenElse(hn::Lt(vx, hn::Zero(d)), hn::Sub(hn::Set(d, 180.0F), angle), angle);
        return hn::IfThenElse(hn::Lt(vy, hn::Zero(d)), hn::Sub(hn::Set(d, 360.0F), angle), angle);
    }
};

Status fastArctan(const float* y, const float* x, float* angle, int32_t length) {
    if (Status status = Check().pointers(y, x, angle).require(length >= 1, StatusSizeError))
        return status;
    constexpr int32_t kStreamBytes = 3 * sizeof(float);
    writePixels<kStreamBytes>(
        RoiSize{length, 1}, ParallelFrom::never(),
        [=](int32_t) {
            return ArctanRule{y, x};
        },
        Image<float>{angle, 0});
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekibFastArctan_32f, fastArctan);
}  // namespace VEKCV_VARIANT
