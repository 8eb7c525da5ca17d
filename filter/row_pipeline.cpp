// Row filters: rows of an image, extended by a border rule, to rows anywhere in memory.
#include "bind.h"
#include "check.h"
#include "extended_row.h"
#include "float_sums.h"
#include "kernel_size.h"
#include "pair_sums.h"
#include "parallel.h"
#include "pipeline_buffer.h"

namespace VEKCV_VARIANT {
namespace {

template <typename Tap>
struct RowKernel {
    const Tap* taps;
    int32_t size;
    float factor;  // of the sums of integers
};

/** Computes `count` elements of a row; the first tap meets `elements[0]` for the first of them. */
template <typename Source, typename Result, typename Tap>
using WriteElements = void (*)(const Source* elements, RowKernel<Tap> kernel, Result* out, ptrdiff_t count);

/** How an image becomes rows, whatever the arithmetic. */
template <typename Source, int32_t kChannels, typename Result, typename Tap>
struct RowFilter {
    using Write = WriteElements<Source, Result, Tap>;

    Image<const Source, kChannels> source;
    Result* const* destinationRows;
    RoiSize roi;
    RowKernel<Tap> kernel;
    int32_t anchor, borderType;
    Source borderValue;
    uint8_t* buffer;

    Check check() const {
        return Check()
            .pointers(source, destinationRows, kernel.taps, buffer)
            .roi(roi)
            .require(kernel.size >= 1, StatusSizeError)
            .require(anchor >= 0 && anchor < kernel.size, StatusAnchorError)
            .steps(roi.width, source)
            .require(isBorderRule(borderType), StatusBadArgument);
    }

    /** Filters the rows before the first that has no destination. That row is looked for before the threads start. */
    Status run(int64_t threadBytes, Write writeInterior, Write writeEdge) const {
        int32_t height = 0;
        while (height < roi.height && destinationRows[height] != nullptr)
            ++height;
        const WorkBuffer work(buffer, threadBytes);
        forThreadStripes(isForTeam(roi, ParallelFrom::perThread(32768)), height,
                         [=, *this](int32_t thread, int32_t first, int32_t rows) {
                             filterRows(work.slice(thread), first, rows, writeInterior, writeEdge);
                         });
        return height < roi.height ? StatusNullPointer : StatusOk;
    }

  private:
    /** Outputs of the interior need no pixels beside the row. A row shorter than the kernel has no interior. */
    HWY_NOINLINE void filterRows(Scratch scratch, int32_t first, int32_t rows, Write writeInterior,
                                 Write writeEdge) const {
        const int32_t width = roi.width, after = kernel.size - 1 - anchor;
        const int32_t left = width < kernel.size ? width : anchor, right = width < kernel.size ? width : width - after;
        const ExtendedRow<Source, kChannels> extended(scratch, Border<Source>::of(borderType, borderValue), width,
                                                      anchor, after);
        Source* const pixels =
            scratch.take<Source>((HWY_MAX(left, width - right) + int64_t{kernel.size} - 1) * kChannels);
        for (int32_t y = first; y < first + rows; ++y) {
            const Source* const row = source.row(y);
            Result* const out = destinationRows[y];
            const auto writeFrom = [&](int32_t begin, int32_t end) {
                if (begin == end)
                    return;
                extended.copy(row, int64_t{begin} - anchor, int64_t{end} + after, pixels);
                writeEdge(pixels, kernel, out + ptrdiff_t{begin} * kChannels, ptrdiff_t{end - begin} * kChannels);
            };
            writeFrom(0, left);
            if (left < right)
                writeInterior(row, kernel, out + ptrdiff_t{left} * kChannels, ptrdiff_t{right - left} * kChannels);
            writeFrom(right, width);
        }
    }
};

/** Calls body(pairs). With one channel and two taps or more, neighbouring elements are the pairs. */
template <typename T, int32_t kSize, typename Body>
HWY_INLINE void withPairs(StridedTaps<T, 1> taps, KnownSize<kSize> /*size*/, Body body) {
    body(NeighbourPairs<T>{taps});
}
template <typename T, typename Body>
HWY_INLINE void withPairs(StridedTaps<T, 1> taps, int32_t size, Body body) {
    if (size > 1)
        body(NeighbourPairs<T>{taps});
    else
        body(InterleavedPairs<StridedTaps<T, 1>>{taps});
}
template <typename T, typename Size, typename Body>
HWY_INLINE void withPairs(StridedTaps<T, 3> taps, Size /*size*/, Body body) {
    body(InterleavedPairs<StridedTaps<T, 3>>{taps});
}

template <int32_t kChannels, typename Finish, typename Size, typename Source>
void writeRow(const Source* elements, RowKernel<int16_t> kernel, int16_t* out, ptrdiff_t count) {
    const Size size(kernel.size);
    withPairs(
        StridedTaps<Source, kChannels>{elements}, size, [=](auto pairs) __attribute__((always_inline)) {
            writeSums(pairs, kernel.taps, size, Finish{kernel.factor}, out, 0, count);
        });
}

template <int32_t kChannels, Precision kPrecision, typename Source>
Status rowFilter(const Source* source, int32_t sourceStep, int16_t* const* destinationRows, RoiSize roi,
                 const int16_t* kernel, int32_t kernelSize, int32_t anchor, int32_t borderType, Source borderValue,
                 int32_t divisor, uint8_t* buffer) {
    const RowFilter<Source, kChannels, int16_t, int16_t> filter{
        {source, sourceStep}, destinationRows, roi,   {kernel, kernelSize, reciprocal(divisor)}, anchor,
        borderType,           borderValue,     buffer};
    if (Status status = filter.check().require(divisor != 0, StatusBadArgument))
        return status;
    using Write = WriteElements<Source, int16_t, int16_t>;
    const Write writeInterior = withKernelSize(kernelSize, [=]<typename Size>(Size) -> Write {
        if (divisor == 1)
            return writeRow<kChannels, Unscaled, Size>;
        return writeRow<kChannels, ScaledToNearest, Size>;
    });
    // The edges are short: one copy of the code does for all sizes of kernels.
    using EdgeRounding = std::conditional_t<kPrecision == Precision::kLow, ScaledToNearest, ScaledTowardsZero<int16_t>>;
    return filter.run(rowPipelineThreadBytes<Source, kChannels, kPrecision>(roi, kernelSize), writeInterior,
                      writeRow<kChannels, EdgeRounding, int32_t>);
}

template <int32_t kChannels, typename Size>
void writeFloatRow(const float* elements, RowKernel<float> kernel, float* out, ptrdiff_t count) {
    writeFloatSums(StridedTaps<float, kChannels>{elements}, kernel.taps, Size(kernel.size), out, count);
}

template <int32_t kChannels>
Status floatRowFilter(const float* source, int32_t sourceStep, float* const* destinationRows, RoiSize roi,
                      const float* kernel, int32_t kernelSize, int32_t anchor, int32_t borderType, float borderValue,
                      uint8_t* buffer) {
    const RowFilter<float, kChannels, float, float> filter{
        {source, sourceStep}, destinationRows, roi, {kernel, kernelSize, 1}, anchor, borderType, borderValue, buffer};
    if (Status status = filter.check())
        return status;
    const auto write = withKernelSize(kernelSize, []<typename Size>(Size) -> WriteElements<float, float, float> {
        return writeFloatRow<kChannels, Size>;
    });
    return filter.run(rowPipelineThreadBytes<float, kChannels>(roi, kernelSize), write, write);
}

}  // namespace

VEKCV_BIND(vekiFilterRowBorderPipelineGetBufferSize_8u16s_C1R, pipelineBufferSize<rowPipelineBytes<uint8_t, 1>>);
VEKCV_BIND(vekiFilterRowBorderPipelineGetBufferSize_8u16s_C3R, pipelineBufferSize<rowPipelineBytes<uint8_t, 3>>);
VEKCV_BIND(vekiFilterRowBorderPipelineGetBufferSize_16s_C1R, pipelineBufferSize<rowPipelineBytes<int16_t, 1>>);
VEKCV_BIND(vekiFilterRowBorderPipelineGetBufferSize_16s_C3R, pipelineBufferSize<rowPipelineBytes<int16_t, 3>>);
VEKCV_BIND(vekiFilterRowBorderPipelineGetBufferSize_Low_16s_C1R,
           pipelineBufferSize<rowPipelineBytes<int16_t, 1, Precision::kLow>>);
VEKCV_BIND(vekiFilterRowBorderPipelineGetBufferSize_Low_16s_C3R,
           pipelineBufferSize<rowPipelineBytes<int16_t, 3, Precision::kLow>>);
VEKCV_BIND(vekiFilterRowBorderPipelineGetBufferSize_32f_C1R, pipelineBufferSize<rowPipelineBytes<float, 1>>);
VEKCV_BIND(vekiFilterRowBorderPipelineGetBufferSize_32f_C3R, pipelineBufferSize<rowPipelineBytes<float, 3>>);

VEKCV_BIND(vekiFilterRowBorderPipeline_8u16s_C1R, rowFilter<1, Precision::kFull>);
VEKCV_BIND(vekiFilterRowBorderPipeline_8u16s_C3R, rowFilter<3, Precision::kFull>);
VEKCV_BIND(vekiFilterRowBorderPipeline_16s_C1R, rowFilter<1, Precision::kFull>);
VEKCV_BIND(vekiFilterRowBorderPipeline_16s_C3R, rowFilter<3, Precision::kFull>);
VEKCV_BIND(vekiFilterRowBorderPipeline_Low_16s_C1R, rowFilter<1, Precision::kLow>);
VEKCV_BIND(vekiFilterRowBorderPipeline_Low_16s_C3R, rowFilter<3, Precision::kLow>);
VEKCV_BIND(vekiFilterRowBorderPipeline_32f_C1R, floatRowFilter<1>);
VEKCV_BIND(vekiFilterRowBorderPipeline_32f_C3R, floatRowFilter<3>);
}  // namespace VEKCV_VARIANT
