// Euclidean distances to the nearest zero pixel: along the columns first, then along the rows.
#include "bind.h"
#include "check.h"
#include "parallel.h"
#include "promote.h"
#include "row_distances.h"

namespace VEKCV_VARIANT {
namespace {

constexpr ParallelFrom kDistancesParallelFrom{65536};

/** Columns that are passed through at a time, so that they stay in a cache on the way down and up. */
constexpr int32_t kStripColumns = 64;

constexpr int64_t threadBytes(RoiSize roi) {
    const auto roundedUp = [](int64_t length) { return (length + 3) / 4 * 4; };
    return HWY_MAX(roundedUp(roi.width), roundedUp(roi.height)) * 24 + 24;
}

/** The rows from each pixel to the nearest zero pixel of its column, for some columns. */
HWY_NOINLINE void measureColumns(Image<const uint8_t> source, Image<float> out, ptrdiff_t first, ptrdiff_t end,
                                 ptrdiff_t height) {
    const hn::ScalableTag<int32_t> whole;
    for (ptrdiff_t y = 0; y < height; ++y)
        forHalves(
            whole, first, end, [ =, pixels = source.row(y), above = out.row(y - 1),
                                 to = out.row(y) ](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                const auto rows = y == 0 ? hn::Set(d, kNoZero) : loadRows(d, above + x);
                storeRows(hn::IfThenZeroElse(isZero(d, pixels + x), hn::Add(rows, hn::Set(d, 1))), d, to + x);
            });
    for (ptrdiff_t y = height - 2; y >= 0; --y)
        forHalves(
            whole, first, end,
            [ below = out.row(y + 1), to = out.row(y) ](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                const auto rows = hn::Add(loadRows(d, below + x), hn::Set(d, 1));
                storeRows(hn::Min(loadRows(d, to + x), rows), d, to + x);
            });
}

/** Replaces the results of measureColumns by distances, in some rows. */
template <typename Number>
Status measureRows(Image<float> out, int32_t width, int32_t firstRow, int32_t rowCount, Scratch memory) {
    RowDistances<Number> distances(memory, width);
    for (ptrdiff_t y = firstRow; y < ptrdiff_t{firstRow} + rowCount; ++y) {
        distances.compute(out.row(y));
        if (const Status status = vekSqrt_32f_I(out.row(y), width))
            return status;
    }
    return StatusOk;
}

Status measure(Image<const uint8_t> source, Image<float> out, RoiSize roi, uint8_t* buffer) {
    const WorkBuffer work(buffer, threadBytes(roi));
    const bool fitsFloats = int64_t{roi.width} * roi.width + int64_t{roi.height} * roi.height <= 1 << 24;
    Status result = StatusOk;
    const auto onColumns = [=](int32_t /*thread*/, int32_t first, int32_t count) {
        for (ptrdiff_t strip = first; strip < ptrdiff_t{first} + count; ++strip) {
            const ptrdiff_t x = strip * kStripColumns;
            measureColumns(source, out, x, HWY_MIN(x + kStripColumns, roi.width), roi.height);
        }
    };
    const auto onRows = [=, &work, &result](int32_t thread, int32_t first, int32_t count) {
        const auto measureThem = fitsFloats ? measureRows<float> : measureRows<double>;
        if (const Status status = measureThem(out, roi.width, first, count, work.slice(thread)))
            __atomic_store_n(&result, status, __ATOMIC_RELAXED);
    };
    forThreadStripes(isForTeam(roi, kDistancesParallelFrom), (roi.width - 1) / kStripColumns + 1, onColumns, roi.height,
                     onRows);
    return result;
}

Status trueDistanceTransform(const uint8_t* source, int32_t sourceStep, float* destination, int32_t destinationStep,
                             RoiSize roi, uint8_t* buffer) {
    const Image<const uint8_t> in{source, sourceStep};
    const Image<float> out{destination, destinationStep};
    if (Status status = Check().pointers(in, out, buffer).roi(roi).steps(roi.width, in, out))
        return status;
    return inUsualModes([&] { return measure(in, out, roi, buffer); });
}

int64_t bufferBytes(RoiSize roi) {
    return WorkBuffer::bytes(threadBytes(roi));
}

}  // namespace

VEKCV_BIND(vekiTrueDistanceTransformGetBufferSize_8u32f_C1R, roiBufferSize<bufferBytes>);
VEKCV_BIND(vekiTrueDistanceTransform_8u32f_C1R, trueDistanceTransform);
}  // namespace VEKCV_VARIANT
