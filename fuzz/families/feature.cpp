#include <algorithm>
#include <cmath>

#include "preconditions.h"

namespace fuzz {
namespace {

// Six floats for each pixel.
Extent eigenExtent(const Call& call, size_t image) {
    const Extent extent = regionExtent(call, image);
    return call.target->parameters[image].isConst ? extent : enlarged(extent, 5 * extent.right, 0);
}

const NumberRule kKernelType{"kernelType", {0, 0, 1, 2}}, kAperture{"apertureSize", {3, 5, 3, 4}},
    kWindow{"averageWindow", {3, 5, 3, 7}};
// Steps need only be positive: rows may overlap.
int64_t oneColumn(const Call& /*call*/, size_t /*image*/) {
    return 1;
}

int64_t houghLength(const Call& call, size_t array) {
    const bool isLines = call.target->parameters[array].name == "lines";
    return isLines ? 2 * std::max<int64_t>(call.value("maxLineCount").as<int32_t>(), 1) : 1;
}

// Of a line that leaves the region nothing is written.
int64_t samplesLength(const Call& call, size_t array) {
    const auto start = call.value("start").as<ImagePoint>(), end = call.value("end").as<ImagePoint>();
    const int64_t longer = std::max(std::abs(int64_t{start.x} - end.x), std::abs(int64_t{start.y} - end.y));
    const auto size = call.value("roiSize").as<RoiSize>();
    return longer < std::max(size.width, size.height) ? (longer + 1) * call.channelsOf(array) : 1;
}

int64_t anglesLength(const Call& call, size_t /*array*/) {
    return std::max(call.value("length").as<int32_t>(), 1);
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

const NumberRule kStageThreshold{"stageThreshold", {0, 1, -1, 2, 5}};

const Precondition kFamilies[] = {
    {.family = "vekiCanny",
     .query = "vekiCannyGetSize",
     .numbers = {{"lowThreshold", {0, 1, 20, 50.5, 100}}, {"highThreshold", {100, 1000, 1e9, 3.5}}}},
    {.family = "vekiMinEigenVal",
     .query = "EigenValGetBufferSize_",
     .replacedByQuery = "EigenVal_",
     .numbers = {kKernelType, kAperture, kWindow}},
    {.family = "vekiEigenValsVecs",
     .extent = eigenExtent,
     .query = "ValsVecsGetBufferSize_",
     .replacedByQuery = "ValsVecs_",
     .numbers = {kKernelType, kAperture, kWindow}},
    {.family = "vekiFindPeaks3x3",
     .query = "vekiFindPeaks3x3GetBufferSize_32f_C1R",
     .numbers = {{"threshold", {0, 1, 100, -1}},
                 {"maxPeakCount", {1, 0}, NumberRule::kBelowOne},
                 {"norm", {0, 1, 2}},
                 {"border", {1, 2, 3, 0}}}},
    {.family = "vekiHoughLine",
     .checkedColumns = oneColumn,
     .arrayLength = houghLength,
     .query = "vekiHoughLineGetSize_8u_C1R",
     .isSlow = true,
     .numbers = {{"deltaRho", {1, 2, 0.5, 0.01, 3.7, 20}, NumberRule::kBelowOne},
                 {"deltaTheta", {0.017453292, 0.1, 0.7, 1.57, 3.14159, 0.001}, NumberRule::kBelowOne},
                 {"threshold", {1, 2, 5, 10, 100}},
                 {"minRho", {0, -1000, 10, -kInfinity}},
                 {"maxRho", {100, 1000, 20, 0, kInfinity}},
                 {"minTheta", {0, 0.5, -1, 1.5}},
                 {"maxTheta", {3.14159, 2, 1.5, 0, kInfinity}},
                 {"maxLineCount", {1, 2, 10, 300}, NumberRule::kBelowOne}}},
    {.family = "vekiSampleLine", .arrayLength = samplesLength},
    {.family = "vekibFastArctan",
     .arrayLength = anglesLength,
     .numbers = {{"length", {1, 2, 3, 7, 16, 100, 257, 1000}, NumberRule::kBelowOne}}},
    {.family = "vekiGradientColorToGray", .numbers = {{"norm", {NormInf, NormL1, NormL2}}}},
    {.family = "vekiHaarClassifier"},
    {.family = "vekiTiltedHaarClassifier"},
    {.family = "vekiTiltHaarFeatures", .numbers = {{"tiltOrientation", {0, 1, -1}}}},
    {.family = "vekiGetHaarClassifierSize"},
    {.family = "vekiApplyHaarClassifier", .checkedColumns = regionColumns, .numbers = {kStageThreshold}},
    {.family = "vekiApplyMixedHaarClassifier", .checkedColumns = regionColumns, .numbers = {kStageThreshold}},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
