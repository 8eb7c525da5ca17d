#include "preconditions.h"

#include <algorithm>

namespace fuzz {
namespace {

/** The elements of the region. */
Extent regionExtent(const Call& call, size_t image) {
    const auto size = call.value("roiSize").as<RoiSize>();
    return {0, 0, int64_t{size.width} * call.channelsOf(image), size.height};
}

Extent enlarged(Extent extent, int64_t columns, int64_t rows) {
    return {extent.left, extent.top, extent.right + columns, extent.bottom + rows};
}

// Integral images have a column and a row more than the image, tilted ones two.
template <int64_t kMore>
Extent tableExtent(const Call& call, size_t image) {
    const int64_t more = call.target->parameters[image].isConst ? 0 : kMore;
    return enlarged(regionExtent(call, image), more, more);
}

bool isTable(const Call& call, size_t image) {
    return call.target->parameters[image].name.ends_with("ntegral");
}

Extent windowExtent(const Call& call, size_t image) {
    const Extent region = regionExtent(call, image);
    if (!isTable(call, image))
        return region;
    const ImageRect r = call.value("rect").as<ImageRect>();
    return {r.x, r.y, r.x + r.width + region.right, r.y + r.height + region.bottom};
}

// Moved one column to the right and one row down.
Extent tiltedWindowExtent(const Call& call, size_t image) {
    const Extent region = regionExtent(call, image);
    if (!isTable(call, image))
        return region;
    const ImageRect r = call.value("rect").as<ImageRect>();
    return {r.x - r.height + 1, r.y + 1, r.x + r.width + 1 + region.right,
            r.y + r.width + r.height + 1 + region.bottom};
}

int64_t windowColumns(const Call& call, size_t image) {
    const ImageRect r = call.value("rect").as<ImageRect>();
    return regionExtent(call, image).right + (isTable(call, image) ? int64_t{r.x} + r.width : 0);
}

int64_t regionColumns(const Call& call, size_t image) {
    return regionExtent(call, image).right;
}

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

Extent classifierExtent(const Call& call, size_t image) {
    const std::string_view name = call.target->parameters[image].name;
    if (!isTable(call, image))
        return regionExtent(call, image);
    const auto table = !call.target->has("tiltedIntegral") ? Features::Table::kOnly
                       : name == "tiltedIntegral"          ? Features::Table::kTilted
                                                           : Features::Table::kUpright;
    return call.features->extentIn(table, call.value("roiSize").as<RoiSize>());
}

const Precondition kPreconditions[] = {
    {.family = "vekcvGetLibVersion", .skipped = "gives a record of its own in every variant"},
    {.family = "vekiAdd", .sharesMemory = true},
    {.family = "vekiAbsDiff", .sharesMemory = true},
    {.family = "vekiNorm", .dependsOnTeam = true},
    {.family = "vekiNorm_Inf"},
    {.family = "vekiNormDiff_Inf"},
    {.family = "vekiNormRel_Inf"},
    {.family = "vekiMean", .dependsOnTeam = true},
    {.family = "vekiMean_StdDev", .dependsOnTeam = true, .optional = "mean standardDeviation"},
    {.family = "vekiMinMaxIndx"},
    {.family = "vekiIntegral", .extent = tableExtent<1>},
    {.family = "vekiSqrIntegral", .extent = tableExtent<1>},
    {.family = "vekiTiltedIntegral", .extent = tableExtent<2>},
    {.family = "vekiTiltedSqrIntegral", .extent = tableExtent<2>},
    {.family = "vekiRectStdDev", .extent = windowExtent, .checkedColumns = windowColumns},
    {.family = "vekiTiltedRectStdDev", .extent = tiltedWindowExtent, .checkedColumns = windowColumns},
    {.family = "vekiFilterRowBorderPipeline", .query = "PipelineGetBufferSize_", .replacedByQuery = "Pipeline_"},
    {.family = "vekiFilterColumnPipeline",
     .extent = columnFilterExtent,
     .query = "PipelineGetBufferSize_",
     .replacedByQuery = "Pipeline_"},
    {.family = "vekiFilter",
     .extent = fixedFilterExtent,
     .checkedColumns = regionColumns,
     .query = "GetBufferSize_",
     .replacedByQuery = "Border_"},
    {.family = "vekiFilterGauss", .query = "GetBufferSize_", .replacedByQuery = "Border_"},
    {.family = "vekiGenSobelKernel"},
    {.family = "vekiCanny", .query = "vekiCannyGetSize"},
    {.family = "vekiHaarClassifier"},
    {.family = "vekiTiltedHaarClassifier"},
    {.family = "vekiTiltHaarFeatures"},
    {.family = "vekiGetHaarClassifierSize"},
    {.family = "vekiApplyHaarClassifier", .extent = classifierExtent, .checkedColumns = regionColumns},
    {.family = "vekiApplyMixedHaarClassifier", .extent = classifierExtent, .checkedColumns = regionColumns},
};

const std::vector<NumberRule>& numberRules() {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    static const std::vector<NumberRule> rules = {
        {"alpha", {0.25, 0, 1, 0.5, -2, kNan}, NumberRule::kAny},
        {"anchorX", {0, 1, 2, 3, 4, 7}, NumberRule::kAny},
        {"borderType",
         {1, 0, 2, 3, 4, 6, 0xF1, 0x11, 0x21, 0x41, 0x81, 0x10, 0x23, 0x42, 0x84, 0x30, 0xC3, 0x54, 0xA2, 0x10001},
         NumberRule::kAny},
        {"borderValue", {0, 1, 255, 100}, NumberRule::kAny},
        {"channelOfInterest", {1, 2, 3, 0, 4}, NumberRule::kAny},
        {"derivativeOrder", {0, 1, 2, 3}, NumberRule::kAny},
        {"divisor", {1, 2, 4, 9, 16, 25, -3, 1000, 0}, NumberRule::kAny},
        {"featureCount", {}, NumberRule::kNone},
        {"highThreshold", {100, 1000, 1e9, 3.5}, NumberRule::kAny},
        {"kernelSize",
         {3, 5, 7, 9, 1, 2, 4, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31, 33, 64},
         NumberRule::kBelowOne},
        {"lowThreshold", {0, 1, 20, 50.5, 100}, NumberRule::kAny},
        {"maskSize", {33, 55}, NumberRule::kAny},
        {"scaleFactor", {0, -1, -2, -5, -31, -64, 1, 3}, NumberRule::kAny},
        {"sigma", {1, 0.5, 2, 10, 0, -1, 1e-20, kNan}, NumberRule::kAny},
        {"sign", {1, -1}, NumberRule::kAny},
        {"squareValue", {0, 1, -1, 1e9, 0.5}, NumberRule::kAny},
        {"stageThreshold", {0, 1, -1, 2, 5}, NumberRule::kAny},
        {"tiltOrientation", {0, 1, -1}, NumberRule::kAny},
        {"value", {0, 1, -1, 255, 1e9, 0.5}, NumberRule::kAny},
    };
    return rules;
}

}  // namespace

const Precondition* findPrecondition(const Export& target) {
    const Precondition* best = nullptr;
    for (const Precondition& entry : kPreconditions)
        if (target.name.starts_with(entry.family) && (best == nullptr || entry.family.size() > best->family.size()))
            best = &entry;
    return best;
}

const NumberRule* findNumberRule(std::string_view parameter) {
    for (const NumberRule& rule : numberRules())
        if (rule.parameter == parameter)
            return &rule;
    return nullptr;
}

const Export* queryOf(const Export& target) {
    const Precondition& rules = *findPrecondition(target);
    if (rules.replacedByQuery.empty())
        return findExport(rules.query);
    std::string name(target.name);
    const size_t at = name.find(rules.replacedByQuery);
    return at == std::string::npos ? nullptr : findExport(name.replace(at, rules.replacedByQuery.size(), rules.query));
}

Extent extentOf(const Call& call, size_t image) {
    return call.rules->extent == nullptr ? regionExtent(call, image) : call.rules->extent(call, image);
}

int64_t checkedRowBytes(const Call& call, size_t image) {
    const int64_t columns = call.rules->checkedColumns == nullptr ? extentOf(call, image).columns()
                                                                  : call.rules->checkedColumns(call, image);
    return columns * bytesOf(call.target->parameters[image].element);
}

}  // namespace fuzz
