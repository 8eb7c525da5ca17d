// Row filters: rows of an image, extended by a border rule, to rows anywhere in memory.
#include "bind.h"
#include "check.h"
#include "float_sums.h"
#include "kernel_size.h"
#include "pair_sums.h"
#include "parallel.h"
#include "pipeline_buffer.h"
#include "row_edges.h"

namespace VEKCV_VARIANT {
namespace {

/** How an image becomes rows, whatever the arithmetic. */
template <typename Source, int32_t kChannels, typename Result, typename Tap>
struct RowFilter {
    Image<const Source, kChannels> source;
    Result* const* destinationRows;
    RoiSize roi;
    const Tap* kernel;
    int32_t kernelSize, anchor, borderType;
    Source borderValue;
    uint8_t* buffer;

    Check check() const {
        return Check()
            .pointers(source, destinationRows, kernel, buffer)
            .roi(roi)
            .require(kernelSize >= 1, StatusSizeError)
            .require(anchor >= 0 && anchor < kernelSize, StatusAnchorError)
            .steps(roi.width, source)
            .require(isBorderRule(borderType), StatusBadArgument);
    }

    /**
     * Runs write(elements, out, count, isInterior) for the edges and the interior of every row up to the first that has
     * no destination, which is found before the threads start. `elements` are those that the first tap meets.
     */
    template <typename Write>
    Status run(int64_t threadBytes, Write write) const {
        int32_t height = 0;
        while (height < roi.height && destinationRows[height] != nullptr)
            ++height;
        const WorkBuffer scratch(buffer, threadBytes);
        forThreadStripes(isForTeam(roi, ParallelFrom::perThread(32768)), height,
                         [&](int32_t thread, int32_t first, int32_t rows) {
                             filterRows(scratch.slice<uint8_t>(thread), first, rows, write);
                         });
        return height < roi.height ? StatusNullPointer : StatusOk;
    }

  private:
    template <typename Write>
    void filterRows(uint8_t* scratch, int32_t first, int32_t rows, const Write& write) const {
        const RowSpans spans = RowSpans::of(roi.width, kernelSize, anchor);
        const RowEdges<Source, kChannels> edges(scratch, spans, roi, kernelSize, anchor,
                                                static_cast<BorderType>(borderType), borderValue);
        const auto writeSpan = [&](RowSpan span, const Source* elements, Result* row, auto isInterior) {
            if (span.size() > 0)
                write(elements, row + ptrdiff_t{span.begin} * kChannels, ptrdiff_t{span.size()} * kChannels,
                      isInterior);
        };
        for (int32_t y = first; y < first + rows; ++y) {
            const Source* const row = source.row(y);
            Result* const out = destinationRows[y];
            writeSpan(spans.left, edges.left(row), out, std::false_type());
            writeSpan(spans.interior, row, out, std::true_type());
            writeSpan(spans.right, edges.right(row), out, std::false_type());
        }
    }
};

/** Neighbouring pixels of one channel are pairs as they are, for two taps and more. */
template <int32_t kChannels, typename T, typename Size, typename Body>
HWY_INLINE void withPairs(const T* elements, Size size, Body body) {
    const StridedTaps<T, kChannels> taps{elements};
    if constexpr (kChannels == 1)
        if (size > 1)
            return body(NeighbourPairs<T>{taps});
    if constexpr (kChannels > 1 || std::is_same_v<Size, int32_t>)
        body(InterleavedPairs<StridedTaps<T, kChannels>>{taps});
}

template <Precision kPrecision>
using EdgeRounding = std::conditional_t<kPrecision == Precision::kLow, ScaledToNearest, ScaledTowardsZero<int16_t>>;

template <int32_t kChannels, typename Source, typename Rounding>
void writeEdge(const Source* elements, const int16_t* kernel, int32_t kernelSize, Rounding rounding, int16_t* out,
               ptrdiff_t count) {
    withPairs<kChannels>(elements, kernelSize,
                         [=](auto pairs) { writeSums(pairs, kernel, kernelSize, rounding, out, 0, count); });
}

template <int32_t kChannels, Precision kPrecision, typename Source>
Status rowFilter(const Source* source, int32_t sourceStep, int16_t* const* destinationRows, RoiSize roi,
                 const int16_t* kernel, int32_t kernelSize, int32_t anchor, int32_t borderType, Source borderValue,
                 int32_t divisor, uint8_t* buffer) {
    const RowFilter<Source, kChannels, int16_t, int16_t> filter{
        {source, sourceStep}, destinationRows, roi, kernel, kernelSize, anchor, borderType, borderValue, buffer};
    if (Status status = filter.check().require(divisor != 0, StatusBadArgument))
        return status;

    Status status = StatusOk;
    withKernelSize(kernelSize, [&](auto size) {
        withNearest(divisor, [&](auto nearest) {
            const EdgeRounding<kPrecision> edgeRounding{reciprocal(divisor)};
            status = filter.run(rowPipelineThreadBytes<Source, kChannels, kPrecision>(roi, kernelSize),
                                [=](const Source* elements, int16_t* out, ptrdiff_t count, auto isInterior) {
                                    // The edges are short: one copy of the code does for all sizes of kernels.
                                    if constexpr (isInterior)
                                        withPairs<kChannels>(elements, size, [=](auto pairs) {
                                            writeSums(pairs, kernel, size, nearest, out, 0, count);
                                        });
                                    else
                                        writeEdge<kChannels>(elements, kernel, kernelSize, edgeRounding, out, count);
                                });
        });
    });
    return status;
}

template <int32_t kChannels>
Status floatRowFilter(const float* source, int32_t sourceStep, float* const* destinationRows, RoiSize roi,
                      const float* kernel, int32_t kernelSize, int32_t anchor, int32_t borderType, float borderValue,
                      uint8_t* buffer) {
    const RowFilter<float, kChannels, float, float> filter{
        {source, sourceStep}, destinationRows, roi, kernel, kernelSize, anchor, borderType, borderValue, buffer};
    if (Status status = filter.check())
        return status;

    Status status = StatusOk;
    withKernelSize(kernelSize, [&](auto size) {
        status = filter.run(rowPipelineThreadBytes<float, kChannels>(roi, kernelSize),
                            [=](const float* elements, float* out, ptrdiff_t count, auto /*isInterior*/) {
                                writeFloatSums(StridedTaps<float, kChannels>{elements}, kernel, size, out, 0, count);
                            });
    });
    return status;
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
