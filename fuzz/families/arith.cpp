#include "preconditions.h"

namespace fuzz {
namespace {

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

const NumberRule kAlpha{"alpha", {0.25, 0, 1, 0.5, -2, std::numeric_limits<double>::quiet_NaN()}};
const NumberRule kValue{"value", {0, 1, -1, 255, 1e9, 0.5}};
const NumberRule kSquareValue{"squareValue", {0, 1, -1, 1e9, 0.5}};

const Precondition kFamilies[] = {
    {.family = "vekiAdd", .sharesMemory = true, .numbers = {kAlpha}},
    {.family = "vekiAbsDiff", .sharesMemory = true, .numbers = {kValue}},
    {.family = "vekiNorm", .dependsOnTeam = true},
    {.family = "vekiNorm_Inf"},
    {.family = "vekiNormDiff_Inf"},
    {.family = "vekiNormRel_Inf"},
    {.family = "vekiMean", .dependsOnTeam = true},
    {.family = "vekiMean_StdDev", .dependsOnTeam = true, .optional = "mean standardDeviation"},
    {.family = "vekiMinMaxIndx"},
    {.family = "vekiIntegral", .extent = tableExtent<1>, .numbers = {kValue}},
    {.family = "vekiSqrIntegral", .extent = tableExtent<1>, .numbers = {kValue, kSquareValue}},
    {.family = "vekiTiltedIntegral", .extent = tableExtent<2>, .numbers = {kValue}},
    {.family = "vekiTiltedSqrIntegral", .extent = tableExtent<2>, .numbers = {kValue, kSquareValue}},
    {.family = "vekiRectStdDev", .extent = windowExtent, .checkedColumns = windowColumns},
    {.family = "vekiTiltedRectStdDev",
     .extent = tiltedWindowExtent,
     .checkedColumns = windowColumns,
     .hasTiltedWindow = true},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
