// Standard deviation of windows, from integral images.
#include <bit>

#include "bind.h"
#include "check.h"
#include "pixelwise.h"
#include "rectangle_corners.h"

namespace VEKCV_VARIANT {
namespace {

/** Lanes of float from as many doubles. */
template <typename D>
HWY_INLINE hn::Vec<D> loadDoubles(D d, const double* values) {
    if constexpr (hn::MaxLanes(D()) > hn::MaxLanes(hn::ScalableTag<double>()))
        return byHalves(d, 0, [=](auto half, ptrdiff_t x) { return loadDoubles(half, values + x); });
    else
        return hn::DemoteTo(d, hn::LoadU(hn::Rebind<double, D>(), values));
}

/** The entries that give the sum over a window, and the number of its pixels. */
struct Window {
    RectangleCorners<ptrdiff_t> corners;
    float area;
};

struct Upright {
    static constexpr bool isInTable(ImageRect /*rect*/) { return true; }
    static Window window(ImageRect rect) {
        return {uprightCorners<ptrdiff_t>(rect.x, rect.y, rect.width, rect.height),
                static_cast<float>(int64_t{rect.width} * rect.height)};
    }
};

/** In tilted tables, whose entries lie one column to the right and one row down from the corners. */
struct Tilted {
    static constexpr bool isInTable(ImageRect rect) { return int64_t{rect.x} + 1 >= rect.height; }
    static Window window(ImageRect rect) {
        return {tiltedCorners<ptrdiff_t>(ptrdiff_t{rect.x} + 1, ptrdiff_t{rect.y} + 1, rect.width, rect.height),
                static_cast<float>(2 * int64_t{rect.width} * rect.height)};
    }
};

/** The four entries of the windows at the positions of a row: those of position x lie at index x. */
template <typename Entry>
struct RowOfWindows {
    const Entry *a, *b, *c, *d;

    static RowOfWindows of(Image<const Entry> table, const Window& window, ptrdiff_t y) {
        const auto at = [=](Corner<ptrdiff_t> corner) { return table.row(corner.y + y) + corner.x; };
        const auto& corners = window.corners;
        return {at(corners.a), at(corners.b), at(corners.c), at(corners.d)};
    }

    /** The sums over the windows, as floats. */
    template <typename D>
    HWY_INLINE hn::Vec<D> sums(D tag, ptrdiff_t x) const {
        const auto combine = [=, this](auto load) {
            return hn::Add(hn::Sub(hn::Sub(load(a + x), load(b + x)), load(c + x)), load(d + x));
        };
        if constexpr (std::is_same_v<Entry, int32_t>) {
            const hn::Rebind<int32_t, D> integers;
            return hn::ConvertTo(tag, combine([=](const Entry* p) { return hn::LoadU(integers, p); }));
        } else if constexpr (std::is_same_v<Entry, double>) {
            return combine([=](const Entry* p) { return loadDoubles(tag, p); });
        } else {
            return combine([=](const Entry* p) { return hn::LoadU(tag, p); });
        }
    }
};

template <typename D, typename Entry, typename SquareEntry>
HWY_INLINE hn::Vec<D> deviations(D d, const RowOfWindows<Entry>& sums, const RowOfWindows<SquareEntry>& squares,
                                 float area, ptrdiff_t x) {
    const auto pixels = hn::Set(d, area);
    const auto mean = hn::Div(sums.sums(d, x), pixels);
    const auto meanSquare = hn::Div(squares.sums(d, x), pixels);
    const auto variance = hn::Sub(meanSquare, hn::Mul(mean, mean));
    return hn::Sqrt(hn::IfThenZeroElse(hn::Lt(variance, hn::Zero(d)), variance));
}

/** 2 to the power of -scaleFactor, as far as it matters: no deviation but 0 is below 2^-60 or above 2^17. */
float scaleOf(int32_t scaleFactor) {
    const int32_t power = HWY_MAX(-126, HWY_MIN(scaleFactor, 126));
    return std::bit_cast<float>((127 - power) << 23);
}

/** Checks, and all deviations; toResult(tag, deviations) converts a vector of them to the type of the result. */
template <typename Shape, typename Entry, typename SquareEntry, typename Result, typename ToResult>
Status windowDeviation(Image<const Entry> sums, Image<const SquareEntry> squares, Image<Result> out, RoiSize roi,
                       ImageRect rect, ToResult toResult) {
    if (Status status =
            Check()
                .pointers(sums, squares, out)
                .roi(roi)
                .stepLengths(int64_t{rect.x} + roi.width + rect.width, sums, squares)
                .stepLengths(roi.width, out)
                .stepMultiples(sums, squares, out)
                .require(rect.x >= 0 && rect.y >= 0 && rect.width >= 1 && rect.height >= 1 && Shape::isInTable(rect),
                         StatusSizeError))
        return status;
    const Window window = Shape::window(rect);
    const auto rules = [=](int32_t y) {
        return [=, a = RowOfWindows<Entry>::of(sums, window, y), b = RowOfWindows<SquareEntry>::of(squares, window, y)](
                   auto d, ptrdiff_t x) {
            return toResult(d, deviations(hn::Rebind<float, decltype(d)>(), a, b, window.area, x));
        };
    };
    // A threshold, not the bytes that a pixel touches, which are 20 and more.
    writePixels<16>(roi, kParallelFrom, rules, out, sums, squares);
    return StatusOk;
}

template <typename Shape, typename Entry>
Status rectStdDev(const Entry* integral, int32_t integralStep, const double* squareIntegral, int32_t squareIntegralStep,
                  float* destination, int32_t destinationStep, RoiSize roi, ImageRect rect) {
    return windowDeviation<Shape>(
        Image<const Entry>{integral, integralStep}, Image<const double>{squareIntegral, squareIntegralStep},
        Image<float>{destination, destinationStep}, roi, rect, [](auto /*d*/, auto deviation) { return deviation; });
}

template <typename Shape>
Status rectStdDevScaled(const int32_t* integral, int32_t integralStep, const int32_t* squareIntegral,
                        int32_t squareIntegralStep, int32_t* destination, int32_t destinationStep, RoiSize roi,
                        ImageRect rect, int32_t scaleFactor) {
    return windowDeviation<Shape>(
        Image<const int32_t>{integral, integralStep}, Image<const int32_t>{squareIntegral, squareIntegralStep},
        Image<int32_t>{destination, destinationStep}, roi, rect,
        [scale = scaleOf(scaleFactor)](auto /*d*/, auto deviation) {
            return hn::NearestInt(hn::Mul(deviation, hn::Set(hn::DFromV<decltype(deviation)>(), scale)));
        });
}

}  // namespace

VEKCV_BIND(vekiRectStdDev_32s32f_C1R, rectStdDev<Upright>);
VEKCV_BIND(vekiRectStdDev_32f_C1R, rectStdDev<Upright>);
VEKCV_BIND(vekiRectStdDev_32s_C1RSfs, rectStdDevScaled<Upright>);
VEKCV_BIND(vekiTiltedRectStdDev_32s32f_C1R, rectStdDev<Tilted>);
VEKCV_BIND(vekiTiltedRectStdDev_32f_C1R, rectStdDev<Tilted>);
VEKCV_BIND(vekiTiltedRectStdDev_32s_C1RSfs, rectStdDevScaled<Tilted>);
}  // namespace VEKCV_VARIANT
