// Where the pixels of an image without distortion lie in the image that a lens has distorted.
#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** A camera: focal lengths and principal point in pixels, radial and tangential coefficients. */
struct Camera {
    float fx, fy, cx, cy, k1, k2, p1 = 0, p2 = 0;
};

/** Also in the modes of callers that take subnormal numbers for zeros. */
inline bool isZero(float value) {
    return __builtin_bit_cast(uint32_t, value) << 1 == 0;
}

/** Vectors of source positions. */
template <typename V>
struct Positions {
    V x, y;
};

/** What is the same for all pixels of a row. All operations are rounded to float, in the order that is written here. */
class LensRow {
  public:
    LensRow(const Camera& camera, int32_t row)
        : camera_(camera),
          y_(static_cast<float>(row)),
          dy_(y_ - camera.cy),
          scaleX2_(1 / (camera.fx * camera.fx)),
          y2_(dy_ * dy_ * (1 / (camera.fy * camera.fy))),
          ofRow_(camera.k1 * y2_ + camera.k2 * (y2_ * y2_)),
          ofBoth_(2 * camera.k2 * y2_) {}

    /** By the radial coefficients, for the pixels from x on. */
    template <typename D, typename V = hn::Vec<D>>
    HWY_INLINE Positions<V> radial(D d, ptrdiff_t x) const {
        const V columns = columnsOf(d, x), dx = hn::Sub(columns, hn::Set(d, camera_.cx)), x2 = squareOf(d, dx);
        const V ofPixel = hn::Mul(hn::Add(hn::Mul(hn::Set(d, camera_.k2), x2), hn::Set(d, camera_.k1)), x2);
        const V factor = hn::Add(hn::Set(d, ofRow_), hn::Add(ofPixel, hn::Mul(hn::Set(d, ofBoth_), x2)));
        return {hn::Add(columns, hn::Mul(dx, factor)), hn::Add(hn::Set(d, y_), hn::Mul(hn::Set(d, dy_), factor))};
    }

    /** By all coefficients. */
    template <typename D, typename V = hn::Vec<D>>
    HWY_INLINE Positions<V> tangential(D d, ptrdiff_t x) const {
        const Positions<V> straight = radial(d, x);
        const V dx = hn::Sub(columnsOf(d, x), hn::Set(d, camera_.cx)), x2 = squareOf(d, dx), y2 = hn::Set(d, y2_);
        const V r2 = hn::Add(x2, y2), u = hn::Mul(dx, hn::Set(d, 1 / camera_.fx)),
                v = hn::Set(d, dy_ * (1 / camera_.fy));
        const auto bend = [=](float focal, float product, float sum, V square) __attribute__((always_inline)) {
            const V ofProduct = hn::Mul(hn::Mul(hn::Set(d, 2 * product), u), v);
            const V ofSum = hn::Mul(hn::Set(d, sum), hn::Add(r2, hn::Add(square, square)));
            return hn::Mul(hn::Set(d, focal), hn::Add(ofProduct, ofSum));
        };
        return {hn::Add(straight.x, bend(camera_.fx, camera_.p1, camera_.p2, x2)),
                hn::Add(straight.y, bend(camera_.fy, camera_.p2, camera_.p1, y2))};
    }

  private:
    template <typename D>
    HWY_INLINE static hn::Vec<D> columnsOf(D d, ptrdiff_t x) {
        const hn::RebindToSigned<D> integers;
        return hn::ConvertTo(d, hn::Add(hn::Set(integers, static_cast<int32_t>(x)), hn::Iota(integers, 0)));
    }

    template <typename D, typename V>
    HWY_INLINE V squareOf(D d, V dx) const {
        return hn::Mul(hn::Mul(dx, dx), hn::Set(d, scaleX2_));
    }

    Camera camera_;
    float y_, dy_, scaleX2_, y2_, ofRow_, ofBoth_;
};

}  // namespace VEKCV_VARIANT
