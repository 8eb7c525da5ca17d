#include <algorithm>

#include "preconditions.h"

namespace fuzz {
namespace {

// The column filter reads the rows of all its taps.
Extent columnFilterExtent(const Call& call, size_t image) {
    const bool isSource = call.target->parameters[image].isConst;
    const int64_t taps = std::max(call.value("kernelSize").as<int32_t>(), 1);
    return enlarged(regionExtent(call, image), 0, isSource ? taps - 1 : 0);
}

// The sides of the source on which pixels lie in memory.
Extent fixedFilterExtent(const Call& call, size_t image) {
    Extent extent = regionExtent(call, image);
    if (!call.target->parameters[image].isConst)
        return extent;
    const auto border = call.value("borderType").as<int32_t>();
    const bool isFive = call.target->has("maskSize") && call.value("maskSize").as<int32_t>() == MaskSize5x5;
    const auto margin = [&](int32_t flag) {
        const bool isInMemory = (border & 0xF) == BorderInMemory || (border & flag) != 0;
        return isInMemory ? (isFive ? 2 : 1) : 0;
    };
    return {extent.left - margin(BorderInMemoryLeft), extent.top - margin(BorderInMemoryTop),
            extent.right + margin(BorderInMemoryRight), extent.bottom + margin(BorderInMemoryBottom)};
}

/** The result of a pyramid has half or double the size of the source. */
Extent halfExtent(const Call& call, size_t image) {
    const Extent extent = regionExtent(call, image);
    const int64_t channels = call.channelsOf(image);
    if (call.target->parameters[image].isConst)
        return extent;
    return {0, 0, (extent.right / channels + 1) / 2 * channels, (extent.bottom + 1) / 2};
}
Extent doubleExtent(const Call& call, size_t image) {
    const Extent extent = regionExtent(call, image);
    return call.target->parameters[image].isConst ? extent : enlarged(extent, extent.right, extent.bottom);
}

const NumberRule kDataType{"dataType", {1, 3, 13, 5, 0}}, kChannels{"channels", {1, 3, 4, 0}};

// Sources and results have sizes of their own.
Extent pyramidLayerExtent(const Call& call, size_t image) {
    const bool isSource = call.target->parameters[image].isConst;
    const auto size = call.value(isSource ? "sourceRoi" : "destinationRoi").as<RoiSize>();
    return {0, 0, int64_t{size.width} * call.channelsOf(image), size.height};
}

const NumberRule kRate{"rate", {2, 1.5, 1.1, 3, 10, 1.0000001, 4.7, 1, 11}};
const NumberRule kDivisor{"divisor", {1, 2, 4, 9, 16, 25, -3, 1000, 0}};

const Precondition kFamilies[] = {
    {.family = "vekiFilterRowBorderPipeline",
     .query = "PipelineGetBufferSize_",
     .replacedByQuery = "Pipeline_",
     .numbers = {kDivisor, {"anchorX", {0, 1, 2, 3, 4, 7}, NumberRule::kAny, "kernelSize"}}},
    {.family = "vekiFilterColumnPipeline",
     .extent = columnFilterExtent,
     .query = "PipelineGetBufferSize_",
     .replacedByQuery = "Pipeline_",
     .numbers = {kDivisor}},
    {.family = "vekiFilter",
     .extent = fixedFilterExtent,
     .checkedColumns = regionColumns,
     .query = "GetBufferSize_",
     .replacedByQuery = "Border_"},
    {.family = "vekiFilterGauss",
     .query = "GetBufferSize_",
     .replacedByQuery = "Border_",
     .numbers = {{"sigma", {1, 0.5, 2, 10, 0, -1, 1e-20, std::numeric_limits<double>::quiet_NaN()}}}},
    {.family = "vekiPyrDown",
     .extent = halfExtent,
     .query = "vekiPyrDownGetBufSize_Gauss5x5",
     .numbers = {kDataType, kChannels}},
    {.family = "vekiPyrUp",
     .extent = doubleExtent,
     .query = "vekiPyrUpGetBufSize_Gauss5x5",
     .numbers = {kDataType, kChannels}},
    {.family = "vekiGetPyramid", .numbers = {kRate}},
    {.family = "vekiPyramid", .numbers = {kRate, {"levels", {3, 1, 10, 100, 0}}}},
    {.family = "vekiPyramidLayer",
     .extent = pyramidLayerExtent,
     .numbers = {kRate, {"interpolationMode", {2, 2, 2, 2, 1, 3}}}},
    {.family = "vekiGenSobelKernel", .numbers = {{"derivativeOrder", {0, 1, 2, 3}}, {"sign", {1, -1}}}},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
