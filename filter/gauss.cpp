// Gaussian filter of any odd size.
#include <cmath>

#include "bind.h"
#include "check.h"
#include "image_border.h"
#include "pipeline_buffer.h"
#include "pixelwise.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {
namespace {

using D = hn::ScalableTag<float>;
constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));

/** What the query promises: room for two sets of rows and pointers, of which filter() uses one. */
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
 * kVectors vectors of results, in which at(tag, k, i) gives the pixels under tap k for vector i: the centre times its
 * tap; then, pair by pair outwards, the sum of the two pixels times their tap is added.
 */
template <ptrdiff_t kVectors, typename D, typename At>
HWY_INLINE void correlate(D d, Taps taps, At at, hn::Vec<D> (&results)[kVectors]) {
    for (ptrdiff_t i = 0; i < kVectors; ++i)
        results[i] = hn::Mul(at(d, 0, i), hn::Set(d, taps.centre[0]));
    for (int32_t k = 1; k <= taps.reach; ++k) {
        const auto tap = hn::Set(d, taps.centre[k]);
        for (ptrdiff_t i = 0; i < kVectors; ++i)
            results[i] = hn::Add(results[i], hn::Mul(hn::Add(at(d, -k, i), at(d, k, i)), tap));
    }
}

/** Whole vectors of `count` results, several at a time. Returns how many there are. */
template <typename At>
HWY_INLINE ptrdiff_t correlateRow(Taps taps, ptrdiff_t count, float* out, At at) {
    constexpr ptrdiff_t kVectors = 4;
    ptrdiff_t x = 0;
    const auto write = [&]<ptrdiff_t kCount>(std::integral_constant<ptrdiff_t, kCount>) {
        hn::Vec<D> results[kCount];
        correlate(
            D(), taps, [&](auto d, int32_t k, ptrdiff_t i) { return at(d, k, x + i * kLanes); }, results);
        for (ptrdiff_t i = 0; i < kCount; ++i)
            hn::StoreU(results[i], D(), out + x + i * kLanes);
        x += kCount * kLanes;
    };
    while (x + kVectors * kLanes <= count)
        write(std::integral_constant<ptrdiff_t, kVectors>());
    while (x + kLanes <= count)
        write(std::integral_constant<ptrdiff_t, 1>());
    return x;
}

/** Row y of an image, which may lie outside of it, with `reach` pixels before it and behind it. */
void extendRow(Image<const float> image, RoiSize roi, const Border<float>& border, int32_t y, int32_t reach,
               float* extended) {
    const float* const row = rowFor(image, roi, border, y);
    const ptrdiff_t width = roi.width;
    for (int32_t x = -reach; x < 0; ++x)
        extended[reach + x] = pixelBeside(row, roi.width, border, x);
    if (row != nullptr)
        __builtin_memcpy(extended + reach, row, static_cast<size_t>(width) * sizeof(float));
    for (ptrdiff_t x = 0; row == nullptr && x < width; ++x)
        extended[reach + x] = border.value;
    for (int32_t i = 0; i < reach; ++i)
        extended[reach + width + i] = pixelBeside(row, roi.width, border, roi.width + i);
}

/**
 * Filters an image by rows, then by columns. rowPass(slot) filters the row in `extended` into a slot of the
 * ring; columnPass(y, slot) makes row y of the result from all slots, of which that one holds the topmost row.
 */
template <typename RowPass, typename ColumnPass>
void filterStripe(Image<const float> image, RoiSize roi, const Border<float>& border, int32_t reach, float* extended,
                  RowPass rowPass, ColumnPass columnPass) {
    const int32_t taps = 2 * reach + 1;
    int32_t slot = 0;
    for (int32_t i = 0; i < roi.height + 2 * reach; ++i) {
        extendRow(image, roi, border, i - reach, reach, extended);
        rowPass(slot);
        slot = slot + 1 == taps ? 0 : slot + 1;
        if (i >= 2 * reach)
            columnPass(i - 2 * reach, slot);
    }
}

void filter(Image<const float> source, Image<float> out, RoiSize roi, int32_t kernelSize, float sigma,
            const Border<float>& border, uint8_t* buffer) {
    const int32_t reach = kernelSize / 2;
    const ptrdiff_t padded = alignUp(ptrdiff_t{roi.width}, kLanes);
    Scratch scratch(WorkBuffer(buffer, bufferBytes(roi, kernelSize)).slice<uint8_t>(0));
    auto* const taps = scratch.take<float>(kernelSize);
    makeTaps(kernelSize, sigma, taps);
    const Taps symmetric{taps + reach, reach};
    auto** const rows = scratch.take<const float*>(kernelSize);
    auto* const extended = scratch.take<float>(padded + 2 * reach);
    for (ptrdiff_t x = roi.width + 2 * reach; x < padded + 2 * reach; ++x)
        extended[x] = 0;
    auto* const ring = scratch.take<float>(padded * kernelSize);

    const auto rowPass = [=](int32_t slot) {
        correlateRow(symmetric, padded, ring + slot * padded,
                     [=](auto d, int32_t k, ptrdiff_t x) { return hn::LoadU(d, extended + reach + x + k); });
    };
    const auto columnPass = [=](int32_t y, int32_t topmost) {
        for (int32_t k = 0; k < kernelSize; ++k)
            rows[k] = ring + (topmost + k < kernelSize ? topmost + k : topmost + k - kernelSize) * padded;
        const float* const* const centre = rows + reach;
        const auto at = [=](auto d, int32_t k, ptrdiff_t x) { return hn::LoadU(d, centre[k] + x); };
        const ptrdiff_t done = correlateRow(symmetric, roi.width, out.row(y), at);
        writeRest(hn::Half<D>(), out.row(y), done, roi.width, [=](auto d, ptrdiff_t x) {
            hn::Vec<decltype(d)> result[1];
            correlate(
                d, symmetric, [=](auto tag, int32_t k, ptrdiff_t) { return at(tag, k, x); }, result);
            return result[0];
        });
    };
    filterStripe(source, roi, border, reach, extended, rowPass, columnPass);
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
