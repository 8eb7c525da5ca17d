// Copies of images that are shifted by a fraction of a pixel, and patches around a point.
#include "bind.h"
#include "check.h"
#include "subpixel.h"

namespace VEKCV_VARIANT {
namespace {

template <typename T, typename Result, typename... Scale>
Status copySubpix(const T* source, int32_t sourceStep, Result* destination, int32_t destinationStep, RoiSize roi,
                  float dx, float dy, Scale... scaleFactor) {
    const Image<const T> in{source, sourceStep};
    const Image<Result> out{destination, destinationStep};
    if (Status status = Check().pointers(in, out).roi(roi).steps(roi.width, in, out))
        return status;
    inUsualModes([&] {
        const Interpolation<T, Result> interpolation(Fractions::of(dx, dy), scaleFactor...);
        // Packed images may count as one long row: the pixel right of a row is the first one of the next row.
        writePixels<int32_t{sizeof(T) + sizeof(Result)}>(
            roi, kParallelFrom, [=](ptrdiff_t y) { return interpolation.between(in.row(y), in.row(y + 1)); }, out, in);
    });
    return StatusOk;
}

/** Where the columns of a patch lie in a source, or its rows. */
struct Extent {
    int64_t origin;       // the pixel of the source at or before the first one of the patch
    double fraction;      // how far behind it that one lies
    int32_t first, last;  // of those whose neighbours on both sides are in the source, as the caller is told

    static Extent of(float centre, int32_t patch, int32_t source) {
        // Far beyond all images; NaN is on the side of minus infinity.
        constexpr double kFar = int64_t{1} << 40;
        const double begin = centre - (patch - 1.0) * 0.5;
        const double near = begin > -kFar ? (begin < kFar ? begin : kFar) : -kFar;
        // The sum is positive, and so cut downwards, wherever the patch reaches the source.
        const int64_t origin = static_cast<int64_t>(patch + near) - patch, end = origin + patch - 1;
        const double fraction = near - static_cast<double>(origin);
        const int64_t last = origin >= source ? -1 : end <= source - 2 ? patch - 1 : source - end + patch - 3;
        return {origin, HWY_MAX(fraction, 0.0), clamped(-origin, patch), static_cast<int32_t>(last)};
    }

    static int32_t clamped(int64_t value, int32_t most) {
        return static_cast<int32_t>(HWY_MAX(int64_t{0}, HWY_MIN(value, int64_t{most})));
    }
};

/** Rows of a patch, with the pixels at the edges of the source in all places beyond them. */
template <typename T, typename Result>
struct PatchRows {
    Image<const T> in;
    Image<Result> out;
    RoiSize source, patch;
    Extent columns, rows;
    Interpolation<T, Result> interpolation;

    void write(int32_t y) const {
        const T *const upper = sourceRow(y), *const lower = sourceRow(int64_t{y} + 1);
        Result* const row = out.row(y);
        const int32_t begin = Extent::clamped(-columns.origin, patch.width);
        const int32_t end = Extent::clamped(source.width - 1 - columns.origin, patch.width);
        fill(upper[0], lower[0], row, begin);
        if (begin < end) {
            const auto first = static_cast<ptrdiff_t>(columns.origin + begin);
            writeRow<Stores::kCached>(row + begin, end - begin, interpolation.between(upper + first, lower + first));
        }
        const int32_t behind = HWY_MAX(begin, end);
        fill(upper[source.width - 1], lower[source.width - 1], row + behind, patch.width - behind);
    }

  private:
    const T* sourceRow(int64_t y) const { return in.row(Extent::clamped(rows.origin + y, source.height - 1)); }

    void fill(T upper, T lower, Result* pixels, ptrdiff_t count) const {
        if (count == 0)
            return;
        const T above[] = {upper, upper}, below[] = {lower, lower};
        const auto value = hn::GetLane(interpolation.between(above, below)(hn::CappedTag<Result, 1>(), 0));
        forHalves(
            hn::ScalableTag<Result>(), 0, count, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                hn::StoreU(hn::Set(d, value), d, pixels + x);
            });
    }
};

template <typename T, typename Result, typename... Scale>
Status cutPatch(Image<const T> in, RoiSize sourceRoi, Image<Result> out, RoiSize patch, ImagePoint32f point,
                ImagePoint* minPoint, ImagePoint* maxPoint, Scale... scaleFactor) {
    if (Status status = Check()
                            .pointers(in, out, minPoint, maxPoint)
                            .roi(sourceRoi)
                            .roi(patch)
                            .stepLengths(sourceRoi.width, in)
                            .stepLengths(patch.width, out)
                            .stepMultiples(in, out))
        return status;
    inUsualModes([&] {
        const auto columns = Extent::of(point.x, patch.width, sourceRoi.width);
        const auto rows = Extent::of(point.y, patch.height, sourceRoi.height);
        const Interpolation<T, Result> interpolation({columns.fraction, rows.fraction}, scaleFactor...);
        const PatchRows<T, Result> patchRows{in, out, sourceRoi, patch, columns, rows, interpolation};
        forRowStripes(patch, kParallelFrom, [=](int32_t first, int32_t count) {
            for (int32_t y = first; y < first + count; ++y)
                patchRows.write(y);
        });
        *minPoint = {columns.first, rows.first};
        *maxPoint = {columns.last, rows.last};
    });
    return StatusOk;
}

template <typename T, typename Result>
Status copyPatch(const T* source, int32_t sourceStep, RoiSize sourceRoi, Result* destination, int32_t destinationStep,
                 RoiSize destinationRoi, ImagePoint32f point, ImagePoint* minPoint, ImagePoint* maxPoint) {
    return cutPatch(Image<const T>{source, sourceStep}, sourceRoi, Image<Result>{destination, destinationStep},
                    destinationRoi, point, minPoint, maxPoint);
}

template <typename T, typename Result>
Status copyScaledPatch(const T* source, int32_t sourceStep, RoiSize sourceRoi, Result* destination,
                       int32_t destinationStep, RoiSize destinationRoi, ImagePoint32f point, int32_t scaleFactor,
                       ImagePoint* minPoint, ImagePoint* maxPoint) {
    return cutPatch(Image<const T>{source, sourceStep}, sourceRoi, Image<Result>{destination, destinationStep},
                    destinationRoi, point, minPoint, maxPoint, scaleFactor);
}

}  // namespace

VEKCV_BIND(vekiCopySubpix_8u_C1R, copySubpix);
VEKCV_BIND(vekiCopySubpix_8u16u_C1R_Sfs, copySubpix);
VEKCV_BIND(vekiCopySubpix_8u32f_C1R, copySubpix);
VEKCV_BIND(vekiCopySubpix_16u_C1R, copySubpix);
VEKCV_BIND(vekiCopySubpix_16u32f_C1R, copySubpix);
VEKCV_BIND(vekiCopySubpix_32f_C1R, copySubpix);
VEKCV_BIND(vekiCopySubpixIntersect_8u_C1R, copyPatch);
VEKCV_BIND(vekiCopySubpixIntersect_8u16u_C1R_Sfs, copyScaledPatch);
VEKCV_BIND(vekiCopySubpixIntersect_8u32f_C1R, copyPatch);
VEKCV_BIND(vekiCopySubpixIntersect_16u_C1R, copyPatch);
VEKCV_BIND(vekiCopySubpixIntersect_16u32f_C1R, copyPatch);
VEKCV_BIND(vekiCopySubpixIntersect_32f_C1R, copyPatch);
}  // namespace VEKCV_VARIANT
