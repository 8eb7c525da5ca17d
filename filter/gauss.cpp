// Gaussian filter of any odd size.
#include <cmath>

#include "batches.h"
#include "bind.h"
#include "check.h"
#include "extended_row.h"
#include "parallel.h"
#include "pipeline_buffer.h"
#include "row_ring.h"

namespace VEKCV_VARIANT {
namespace {

/** What the query gives: bytes for two sets of rows and of their addresses, of which filter() uses one. */
int64_t bufferBytes(RoiSize roi, int32_t kernelSize) {
    const int64_t taps = kernelSize, extended = int64_t{roi.width} + taps;
    return (extended + 7) / 8 * 32 * taps + 32 + (taps + 3) / 4 * 16 + 64 + (extended + 3) / 4 * 4 * taps * 8 + 32 +
           rowPipelineBytes<float, 1>(roi, kernelSize) + 32 + columnPipelineBytes<float, 1>(roi, kernelSize) + 32 +
           2 * taps * int64_t{sizeof(void*)};
}

void makeTaps(int32_t kernelSize, float sigma, float* taps) {
    float sum = 0;
    for (int32_t i = 0; i < kernelSize; ++i) {
        const auto t = static_cast<float>(i - kernelSize / 2);
        taps[i] = static_cast<float>(std::exp(static_cast<double>(-(t * t) / ((sigma + sigma) * sigma))));
        sum += taps[i];
    }
    for (int32_t i = 0; i < kernelSize; ++i)
        taps[i] /= sum;
}

/** The taps, which are symmetric, from the centre on. */
struct Taps {
    const float* centre;
    int32_t reach;
};

/**
 * Writes `count` results of a row; at(tag, k, x) gives the pixels from x on that lie under tap k. Each result begins as
 * the centre pixel times its tap; then, pair by pair outwards, the sum of two pixels times their tap is added.
 */
template <typename At>
HWY_INLINE void correlateRow(Taps taps, ptrdiff_t count, float* out, At at) {
    const auto vectors = [=](auto d, auto batch, ptrdiff_t x) __attribute__((always_inline)) {
        constexpr int32_t kVectors = batch;
        constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d));
        hn::Vec<decltype(d)> results[kVectors];
#pragma GCC unroll 4
        for (ptrdiff_t i = 0; i < kVectors; ++i)
            results[i] = hn::Mul(at(d, 0, x + i * kLanes), hn::Set(d, taps.centre[0]));
        for (int32_t k = 1; k <= taps.reach; ++k) {
            const auto tap = hn::Set(d, taps.centre[k]);
#pragma GCC unroll 4
            for (ptrdiff_t i = 0; i < kVectors; ++i) {
                const auto pair = hn::Add(at(d, -k, x + i * kLanes), at(d, k, x + i * kLanes));
                results[i] = hn::Add(results[i], hn::Mul(pair, tap));
            }
        }
#pragma GCC unroll 4
        for (ptrdiff_t i = 0; i < kVectors; ++i)
            hn::StoreU(results[i], d, out + x + i * kLanes);
    };
    const hn::CappedTag<float, 1> one;
    forBatches(hn::ScalableTag<float>(), 0, count, vectors, [=] {
        for (ptrdiff_t x = 0; x < count; ++x)
            vectors(one, std::integral_constant<int32_t, 1>(), x);
    });
}

/** Filters `width` columns of an image from `first` on: along rows, into a ring of them, then down the ring. */
void filterStrip(const ExtendedImage<float>& image, Taps taps, Image<float> out, int32_t height, ptrdiff_t first,
                 ptrdiff_t width, Scratch scratch) {
    const int32_t reach = taps.reach;
    RowRing<float> ring(scratch, 2 * reach + 1, width);
    auto* const extended = scratch.take<float>(width + 2 * reach);
    for (int32_t y = -reach; y < height + reach; ++y, ring.advance()) {
        image.ends().copy(image.row(y), first - reach, first + width + reach, extended);
        correlateRow(taps, width, ring.bottom(),
                     [=](auto d, int32_t k, ptrdiff_t x) { return hn::LoadU(d, extended + reach + x + k); });
        if (y >= reach)
            correlateRow(taps, width, out.row(y - reach) + first,
                         [=, centre = ring.rows() + reach](auto d, int32_t k, ptrdiff_t x) {
                             return hn::LoadU(d, centre[k] + x);
                         });
    }
}

void filter(Image<const float> source, Image<float> out, RoiSize roi, int32_t kernelSize, float sigma,
            const Border<float>& border, uint8_t* buffer) {
    const int32_t reach = kernelSize / 2;
    Scratch scratch(buffer, bufferBytes(roi, kernelSize));
    auto* const taps = scratch.take<float>(kernelSize);
    makeTaps(kernelSize, sigma, taps);
    const Taps symmetric{taps + reach, reach};
    const ExtendedImage<float> image(scratch, source, roi, border, reach);

    // Threads share the columns, for the rows of all strips together take hardly more memory than those of the image.
    constexpr int32_t kColumns = 64;
    const int64_t bytesOfColumn = (kernelSize + 1) * int64_t{sizeof(float)};
    const int64_t bytesOfStrip = alignUp(int64_t{kernelSize} * 48 + 128, Scratch::kAlignment);
    const int64_t mostThreads = (scratch.bytes() - bytesOfColumn * roi.width) / bytesOfStrip;
    if (!isForTeam(roi, ParallelFrom{65536}) || mostThreads < 2)
        return filterStrip(image, symmetric, out, roi.height, 0, roi.width, scratch);

    auto* const memory = scratch.take<uint8_t>(0);
    const auto filterGroups = [&](int32_t thread, int32_t firstGroup, int32_t groups) {
        const int64_t first = int64_t{firstGroup} * kColumns;
        const int64_t width = HWY_MIN(int64_t{groups} * kColumns, roi.width - first);
        const Scratch strip(memory + thread * bytesOfStrip + first * bytesOfColumn,
                            bytesOfStrip + width * bytesOfColumn);
        filterStrip(image, symmetric, out, roi.height, static_cast<ptrdiff_t>(first), static_cast<ptrdiff_t>(width),
                    strip);
    };
    forThreadStripes(true, (roi.width - 1) / kColumns + 1, filterGroups,
                     static_cast<int32_t>(HWY_MIN(mostThreads, int64_t{INT32_MAX})));
}

Status gauss(const float* source, int32_t sourceStep, float* destination, int32_t destinationStep, RoiSize roi,
             int32_t kernelSize, float sigma, int32_t borderType, float borderValue, uint8_t* buffer) {
    const Image<const float> in{source, sourceStep};
    const Image<float> out{destination, destinationStep};
    const int32_t rule = borderType & ~(BorderInMemoryTop | BorderInMemoryBottom);
    if (Status status = Check()
                            .pointers(in, out, buffer)
                            .roi(roi)
                            .stepLengths(roi.width, in, out)
                            .require(kernelSize >= 3 && kernelSize % 2 == 1, StatusBadArgument)
                            .require(isBorderRule(rule), StatusBadArgument))
        return status;
    filter(in, out, roi, kernelSize, sigma, Border<float>::of(rule, borderValue), buffer);
    return StatusOk;
}

Status gaussBufferSize(RoiSize roi, int32_t kernelSize, int32_t* bufferSize) {
    if (Status status =
            Check().pointers(bufferSize).roi(roi).require(kernelSize >= 3 && kernelSize % 2 == 1, StatusBadArgument))
        return status;
    // Beyond this the formula itself would overflow.
    if ((int64_t{roi.width} + kernelSize) * kernelSize > INT32_MAX)
        return StatusSizeError;
    return writeBufferSize(bufferBytes(roi, kernelSize), bufferSize);
}

}  // namespace

VEKCV_BIND(vekiFilterGaussBorder_32f_C1R, gauss);
VEKCV_BIND(vekiFilterGaussGetBufferSize_32f_C1R, gaussBufferSize);
}  // namespace VEKCV_VARIANT
