#include "preconditions.h"

namespace fuzz {
namespace {

const NumberRule kBorder{"borderType", {BorderReplicate}};
const NumberRule kNorm{"norm", {NormL1, NormInf, NormL2}};
const std::string_view kFlat = "MorphologyState", kGray = "GrayMorphologyState";

Precondition rankFilter(std::string_view family) {
    return {.family = family, .query = "GetBufferSize_", .replacedByQuery = "BorderReplicate_", .hasAnyZero = true};
}

Precondition operations(std::string_view family) {
    return {.family = family, .hasAnyZero = true, .numbers = {kBorder}};
}

const Precondition kFamilies[] = {
    rankFilter("vekiFilterMin"),
    rankFilter("vekiFilterMax"),
    {.family = "vekiMorphology"},
    {.family = "vekiMorphologyGetSize", .object = kFlat},
    {.family = "vekiMorphologyCompoundGetSize", .object = kFlat},
    {.family = "vekiGrayMorphology"},
    {.family = "vekiGrayMorphologyGetSize", .object = kGray},
    operations("vekiDilate"),
    operations("vekiErode"),
    operations("vekiGray"),
    operations("vekiMorph"),
    // One size serves all types and both operations.
    {.family = "vekiMorphReconstruct", .query = "vekiMorphReconstructDilateGetBufferSize_8u_C1R", .numbers = {kNorm}},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
