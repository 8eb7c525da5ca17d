// Column filters: rows anywhere in memory to an image.
#include <cstdlib>

#include "bind.h"
#include "check.h"
#include "float_sums.h"
#include "kernel_size.h"
#include "pair_sums.h"
#include "parallel.h"
#include "pipeline_buffer.h"

namespace VEKCV_VARIANT {
namespace {

/** Elements from which on the last ones of a row are no block. */
constexpr ptrdiff_t kBlockElements = 16;

/**
 * The sums of products of float coefficients, each 65536 times too small for elements that are as much too large:
 * an interleave with zero widens them, and all is exact.
 */
template <typename Size, typename Result>
HWY_NOINLINE void writeBlocks(const int16_t* const* rows, const float* coefficients, Size size, Result* out,
                              ptrdiff_t end) {
    const auto factors = tapsOf<Size>(coefficients);
    forRun(
        hn::ScalableTag<int16_t>(), 0, end,
        [&](auto d, auto count, ptrdiff_t x) __attribute__((always_inline)) {
            constexpr int32_t kCount = count;
            constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d));
            const hn::Repartition<float, decltype(d)> floats;
            const hn::Repartition<int32_t, decltype(d)> integers;
            hn::Vec<decltype(floats)> first[kCount], second[kCount];
#pragma GCC unroll 8
            for (int32_t i = 0; i < kCount; ++i)
                first[i] = second[i] = hn::Zero(floats);
            for (int32_t k = 0; k < size; ++k) {
                const auto coefficient = hn::Set(floats, factors[static_cast<size_t>(k)]);
                const auto product = [&](auto words) {
                    return hn::Mul(hn::ConvertTo(floats, hn::BitCast(integers, words)), coefficient);
                };
#pragma GCC unroll 8
                for (int32_t i = 0; i < kCount; ++i) {
                    const auto v = hn::LoadU(d, rows[k] + x + i * kLanes);
                    first[i] = hn::Add(first[i], product(hn::InterleaveLower(d, hn::Zero(d), v)));
                    second[i] = hn::Add(second[i], product(hn::InterleaveUpper(d, hn::Zero(d), v)));
                }
            }
            const auto nearest = [&](auto v) {
                return nearestIntegers(integers, hn::Min(v, hn::Set(floats, 32767.0F)));
            };
#pragma GCC unroll 8
            for (int32_t i = 0; i < kCount; ++i)
                storeWords(d, hn::ReorderDemote2To(d, nearest(first[i]), nearest(second[i])), out + x + i * kLanes);
        },
        [](ptrdiff_t) {});
}

/**
 * Whether float arithmetic gives every sum exactly: coefficients that are integers divided by a power of two, and sums
 * of products that are no larger than 2^24, divided by it. The multiply-adds of integers then give the same results.
 */
bool isExactInFloat(const int16_t* kernel, int32_t kernelSize, int32_t divisor) {
    const int64_t magnitude = std::llabs(int64_t{divisor});
    if ((magnitude & (magnitude - 1)) != 0)
        return false;
    int64_t sum = 0;
    for (int32_t k = 0; k < kernelSize; ++k)
        sum += std::abs(kernel[k]);
    return sum * 32768 <= 1 << 24;
}

/** How rows become an image, whatever the arithmetic. */
template <typename Source, int32_t kChannels, typename Result, typename Tap>
struct ColumnFilter {
    const Source* const* sourceRows;
    Image<Result, kChannels> destination;
    RoiSize roi;
    const Tap* kernel;
    int32_t kernelSize;
    uint8_t* buffer;

    Check check() const {
        return Check()
            .pointers(sourceRows, destination, kernel)
            .roi(roi)
            .require(kernelSize >= 1, StatusSizeError)
            .steps(roi.width, destination)
            .pointers(buffer);
    }

    bool hasAllRows() const {
        const int64_t count = int64_t{roi.height} + kernelSize - 1;
        for (ptrdiff_t i = 0; i < count; ++i)
            if (sourceRows[i] == nullptr)
                return false;
        return true;
    }

    /** Runs write(rows, out, elements) for every row of the image. */
    template <typename Write>
    void run(ParallelFrom threshold, Write write) const {
        forRowStripes(roi, threshold, [=, *this](int32_t first, int32_t rows) {
            for (int32_t y = first; y < first + rows; ++y)
                write(sourceRows + y, destination.row(y), ptrdiff_t{roi.width} * kChannels);
        });
    }
};

/** A kernel of 3 or 5 taps is for a team only where there are more cores for it. */
ParallelFrom columnThreshold(int32_t kernelSize) {
    const bool isSmall = kernelSize == 3 || kernelSize == 5;
    return isSmall && vekGetNumCoresOnDie() <= 1 ? ParallelFrom::never() : ParallelFrom::perThread(32768);
}

using Pairs = InterleavedPairs<RowTaps<int16_t>>;

template <typename Result>
void writeRest(const int16_t* const* rows, const int16_t* kernel, int32_t kernelSize, float factor, Result* out,
               ptrdiff_t begin, ptrdiff_t end) {
    writeSums(Pairs{{rows}}, kernel, kernelSize, ScaledTowardsZero<Result>{factor}, out, begin, end);
}

template <int32_t kChannels, Precision kPrecision, typename Result>
Status columnFilter(const int16_t* const* sourceRows, Result* destination, int32_t destinationStep, RoiSize roi,
                    const int16_t* kernel, int32_t kernelSize, int32_t divisor, uint8_t* buffer) {
    const ColumnFilter<int16_t, kChannels, Result, int16_t> filter{
        sourceRows, {destination, destinationStep}, roi, kernel, kernelSize, buffer};
    if (Status status = filter.check().require(divisor != 0, StatusBadArgument))
        return status;
    if (!filter.hasAllRows())
        return StatusNullPointer;

    const float factor = reciprocal(divisor);
    withKernelSize(kernelSize, [&](auto size) {
        const auto run = [&](auto writeBlocks) {
            filter.run(columnThreshold(kernelSize), [=](const int16_t* const* rows, Result* out, ptrdiff_t elements) {
                const ptrdiff_t end =
                    kPrecision == Precision::kLow ? elements : elements / kBlockElements * kBlockElements;
                writeBlocks(rows, out, end);
                if (end < elements)
                    writeRest(rows, kernel, kernelSize, factor, out, end, elements);
            });
        };
        if (kPrecision == Precision::kLow || isExactInFloat(kernel, kernelSize, divisor)) {
            withNearest(divisor, [&](auto nearest) {
                run([=](const int16_t* const* rows, Result* out, ptrdiff_t end) {
                    writeSums(Pairs{{rows}}, kernel, size, nearest, out, 0, end);
                });
            });
        } else {
            // All threads read them, from the first slice.
            auto* const coefficients =
                WorkBuffer(buffer, columnPipelineThreadBytes<kChannels, kPrecision>(roi, kernelSize)).slice<float>(0);
            for (int32_t k = 0; k < kernelSize; ++k)
                coefficients[k] = static_cast<float>(kernel[k]) * factor / 65536;
            run([=](const int16_t* const* rows, Result* out, ptrdiff_t end) {
                writeBlocks(rows, coefficients, size, out, end);
            });
        }
    });
    return StatusOk;
}

template <int32_t kChannels>
Status floatColumnFilter(const float* const* sourceRows, float* destination, int32_t destinationStep, RoiSize roi,
                         const float* kernel, int32_t kernelSize, uint8_t* buffer) {
    const ColumnFilter<float, kChannels, float, float> filter{
        sourceRows, {destination, destinationStep}, roi, kernel, kernelSize, buffer};
    if (Status status = filter.check())
        return status;
    if (!filter.hasAllRows())
        return StatusNullPointer;

    withKernelSize(kernelSize, [&](auto size) {
        filter.run(ParallelFrom::never(), [=](const float* const* rows, float* out, ptrdiff_t elements) {
            writeFloatSums(RowTaps<float>{rows}, kernel, size, out, 0, elements);
        });
    });
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiFilterColumnPipelineGetBufferSize_16s_C1R, pipelineBufferSize<columnPipelineBytes<int16_t, 1>>);
VEKCV_BIND(vekiFilterColumnPipelineGetBufferSize_16s_C3R, pipelineBufferSize<columnPipelineBytes<int16_t, 3>>);
VEKCV_BIND(vekiFilterColumnPipelineGetBufferSize_16s8u_C1R, pipelineBufferSize<columnPipelineBytes<int16_t, 1>>);
VEKCV_BIND(vekiFilterColumnPipelineGetBufferSize_16s8u_C3R, pipelineBufferSize<columnPipelineBytes<int16_t, 3>>);
VEKCV_BIND(vekiFilterColumnPipelineGetBufferSize_16s8s_C1R, pipelineBufferSize<columnPipelineBytes<int16_t, 1>>);
VEKCV_BIND(vekiFilterColumnPipelineGetBufferSize_16s8s_C3R, pipelineBufferSize<columnPipelineBytes<int16_t, 3>>);
VEKCV_BIND(vekiFilterColumnPipelineGetBufferSize_Low_16s_C1R,
           pipelineBufferSize<columnPipelineBytes<int16_t, 1, Precision::kLow>>);
VEKCV_BIND(vekiFilterColumnPipelineGetBufferSize_Low_16s_C3R,
           pipelineBufferSize<columnPipelineBytes<int16_t, 3, Precision::kLow>>);
VEKCV_BIND(vekiFilterColumnPipelineGetBufferSize_32f_C1R, pipelineBufferSize<columnPipelineBytes<float, 1>>);
VEKCV_BIND(vekiFilterColumnPipelineGetBufferSize_32f_C3R, pipelineBufferSize<columnPipelineBytes<float, 3>>);

VEKCV_BIND(vekiFilterColumnPipeline_16s_C1R, columnFilter<1, Precision::kFull>);
VEKCV_BIND(vekiFilterColumnPipeline_16s_C3R, columnFilter<3, Precision::kFull>);
VEKCV_BIND(vekiFilterColumnPipeline_16s8u_C1R, columnFilter<1, Precision::kFull>);
VEKCV_BIND(vekiFilterColumnPipeline_16s8u_C3R, columnFilter<3, Precision::kFull>);
VEKCV_BIND(vekiFilterColumnPipeline_16s8s_C1R, columnFilter<1, Precision::kFull>);
VEKCV_BIND(vekiFilterColumnPipeline_16s8s_C3R, columnFilter<3, Precision::kFull>);
VEKCV_BIND(vekiFilterColumnPipeline_Low_16s_C1R, columnFilter<1, Precision::kLow>);
VEKCV_BIND(vekiFilterColumnPipeline_Low_16s_C3R, columnFilter<3, Precision::kLow>);
VEKCV_BIND(vekiFilterColumnPipeline_32f_C1R, floatColumnFilter<1>);
VEKCV_BIND(vekiFilterColumnPipeline_32f_C3R, floatColumnFilter<3>);
}  // namespace VEKCV_VARIANT
