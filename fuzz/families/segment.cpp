#include "preconditions.h"

namespace fuzz {
namespace {

const NumberRule kNorm{"norm", {NormL1, NormInf, NormL2}};

Precondition watershed(std::string_view family, std::string_view query) {
    return {.family = family, .query = query, .numbers = {kNorm, {"flag", {0, 1, 2, 3, 4}}}};
}

const Precondition kFamilies[] = {
    {.family = "vekiBoundSegments", .numbers = {kNorm}},
    {.family = "vekiSegmentWatershed"},
    watershed("vekiSegmentWatershed_8u_", "vekiSegmentWatershedGetBufferSize_8u_C1R"),
    watershed("vekiSegmentWatershed_8u16u_", "vekiSegmentWatershedGetBufferSize_8u16u_C1R"),
    // One size serves both numbers of channels.
    {.family = "vekiSegmentGradient",
     .query = "vekiSegmentGradientGetBufferSize_8u_C1R",
     .numbers = {kNorm, {"flag", {0, 64, 128, 192, 1}}}},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
