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
