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

/** The pixels of a group. The pixels behind the last whole group of a row are rounded in another way. */
constexpr int32_t kGroupPixels = 16;

/** A kernel of `size` taps, each for the elements of one row. */
template <typename Tap>
struct ColumnKernel {
    const Tap* taps;
    int32_t size;
    float factor;                         // of the sums of integers
    const float* coefficients = nullptr;  // the taps times the factor, divided by 65536
};

/** Computes the elements of a row from begin to end. */
template <typename Source, typename Result, typename Tap>
using WriteElements = void (*)(const Source* const* rows, const ColumnKernel<Tap>& kernel, Result* out, ptrdiff_t begin,
                               ptrdiff_t end);

template <typename Finish, typename Size, typename Result>
void writeIntegers(const int16_t* const* rows, const ColumnKernel<int16_t>& kernel, Result* out, ptrdiff_t begin,
                   ptrdiff_t end) {
    writeSums(InterleavedPairs<RowTaps<int16_t>>{{rows}}, kernel.taps, Size(kernel.size), Finish{kernel.factor}, out,
              begin, end);
}

template <typename Size>
void writeFloats(const float* const* rows, const ColumnKernel<float>& kernel, float* out, ptrdiff_t /*begin*/,
                 ptrdiff_t end) {
    writeFloatSums(RowTaps<float>{rows}, kernel.taps, Size(kernel.size), out, end);
}

/**
 * The elements of whole groups, as sums of products with the coefficients. To widen an element to 32 bits an interleave
 * with zero puts it into the upper half: that makes it 65536 times too large, and the coefficients are as much too
 * small. Powers of two do not change how products and sums are rounded.
 */
template <typename Size, typename Result>
void writeScaled(const int16_t* const* rows, const ColumnKernel<int16_t>& kernel, Result* out, ptrdiff_t /*begin*/,
                 ptrdiff_t end) {
    const Size size(kernel.size);
    const auto factors = tapsOf(kernel.coefficients, size);
    const auto vectors = [=](auto d, auto batch, ptrdiff_t x) __attribute__((always_inline)) {
        constexpr int32_t kVectors = batch;
        constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d));
        const hn::Repartition<float, decltype(d)> floats;
        const hn::Repartition<int32_t, decltype(d)> integers;
        hn::Vec<decltype(floats)> first[kVectors], second[kVectors];
#pragma GCC unroll 8
        for (int32_t i = 0; i < kVectors; ++i)
            first[i] = second[i] = hn::Zero(floats);
        for (int32_t k = 0; k < size; ++k) {
            const auto coefficient = hn::Set(floats, factors[static_cast<size_t>(k)]);
            const auto product = [=](auto words) {
                return hn::Mul(hn::ConvertTo(floats, hn::BitCast(integers, words)), coefficient);
            };
#pragma GCC unroll 8
            for (int32_t i = 0; i < kVectors; ++i) {
                const auto v = hn::LoadU(d, rows[k] + x + i * kLanes);
                first[i] = hn::Add(first[i], product(hn::InterleaveLower(d, hn::Zero(d), v)));
                second[i] = hn::Add(second[i], product(hn::InterleaveUpper(d, hn::Zero(d), v)));
            }
        }
        const auto nearest = [=](auto v) { return nearestIntegers(integers, hn::Min(v, hn::Set(floats, 32767.0F))); };
#pragma GCC unroll 8
        for (int32_t i = 0; i < kVectors; ++i)
            storeSaturated(d, hn::ReorderDemote2To(d, nearest(first[i]), nearest(second[i])), out + x + i * kLanes);
    };
    forBatches(hn::ScalableTag<int16_t>(), 0, end, vectors, [] {});
}

/**
 * Whether sums of products with float coefficients are exact, so that multiply-adds of integers give the same results:
 * the divisor is a power of two, and no sum of products of integers is larger than 2^24.
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
    using Write = WriteElements<Source, Result, Tap>;

    const Source* const* sourceRows;
    Image<Result, kChannels> destination;
    RoiSize roi;
    ColumnKernel<Tap> kernel;
    uint8_t* buffer;

    Check check() const {
        return Check()
            .pointers(sourceRows, destination, kernel.taps)
            .roi(roi)
            .require(kernel.size >= 1, StatusSizeError)
            .steps(roi.width, destination)
            .pointers(buffer);
    }

    bool hasAllRows() const {
        const int64_t count = int64_t{roi.height} + kernel.size - 1;
        for (ptrdiff_t i = 0; i < count; ++i)
            if (sourceRows[i] == nullptr)
                return false;
        return true;
    }

    /** Computes every row: its first `pixels` pixels with write, and those behind them with writeRest. */
    void run(ParallelFrom threshold, ptrdiff_t pixels, Write write, Write writeRest) const {
        forRowStripes(roi, threshold, [=, *this](int32_t first, int32_t rows) {
            const ptrdiff_t begin = pixels * kChannels, end = ptrdiff_t{roi.width} * kChannels;
            for (int32_t y = first; y < first + rows; ++y) {
                write(sourceRows + y, kernel, destination.row(y), 0, begin);
                if (begin < end)
                    writeRest(sourceRows + y, kernel, destination.row(y), begin, end);
            }
        });
    }
};

/** With a kernel of 3 or 5 taps a team pays only where the process has several cores. */
ParallelFrom columnThreshold(int32_t kernelSize) {
    const bool isSmall = kernelSize == 3 || kernelSize == 5;
    return isSmall && vekGetNumCoresOnDie() <= 1 ? ParallelFrom::never() : ParallelFrom::perThread(32768);
}

template <int32_t kChannels, Precision kPrecision, typename Result>
Status columnFilter(const int16_t* const* sourceRows, Result* destination, int32_t destinationStep, RoiSize roi,
                    const int16_t* taps, int32_t kernelSize, int32_t divisor, uint8_t* buffer) {
    ColumnFilter<int16_t, kChannels, Result, int16_t> filter{
        sourceRows, {destination, destinationStep}, roi, {taps, kernelSize, reciprocal(divisor)}, buffer};
    if (Status status = filter.check().require(divisor != 0, StatusBadArgument))
        return status;
    if (!filter.hasAllRows())
        return StatusNullPointer;

    using Write = WriteElements<int16_t, Result, int16_t>;
    const bool isExact = kPrecision == Precision::kLow || isExactInFloat(taps, kernelSize, divisor);
    if (!isExact) {  // All threads read the coefficients, from the first slice.
        const WorkBuffer work(buffer, columnPipelineThreadBytes<kChannels, kPrecision>(roi, kernelSize));
        auto* const coefficients = work.slice(0).template take<float>(kernelSize);
        for (int32_t k = 0; k < kernelSize; ++k)
            coefficients[k] = static_cast<float>(taps[k]) * filter.kernel.factor / 65536;
        filter.kernel.coefficients = coefficients;
    }
    const Write write = withKernelSize(kernelSize, [=]<typename Size>(Size) -> Write {
        if (!isExact)
            return writeScaled<Size>;
        if (divisor == 1)
            return writeIntegers<Unscaled, Size>;
        return writeIntegers<ScaledToNearest, Size>;
    });
    const int32_t rest = kPrecision == Precision::kLow ? 0 : roi.width % kGroupPixels;
    filter.run(columnThreshold(kernelSize), roi.width - rest, write, writeIntegers<ScaledTowardsZero<Result>, int32_t>);
    return StatusOk;
}

template <int32_t kChannels>
Status floatColumnFilter(const float* const* sourceRows, float* destination, int32_t destinationStep, RoiSize roi,
                         const float* taps, int32_t kernelSize, uint8_t* buffer) {
    const ColumnFilter<float, kChannels, float, float> filter{
        sourceRows, {destination, destinationStep}, roi, {taps, kernelSize, 1}, buffer};
    if (Status status = filter.check())
        return status;
    if (!filter.hasAllRows())
        return StatusNullPointer;
    const auto write = withKernelSize(
        kernelSize, []<typename Size>(Size) -> WriteElements<float, float, float> { return writeFloats<Size>; });
    filter.run(ParallelFrom::never(), roi.width, write, write);
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
