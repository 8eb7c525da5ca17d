#include "preconditions.h"

namespace fuzz {
namespace {

// Values of pixels and differences come as arrays where there are three channels.
int64_t valuesLength(const Call& call, size_t array) {
    return call.target->parameters[array].name == "component" ? 1 : call.channelsOf(array);
}

Precondition fills(std::string_view family, std::string_view query) {
    return {.family = family,
            .arrayLength = valuesLength,
            .query = query,
            .numbers = {{"newValue", {0, 1, 2, 3, 4, 100, 255}},
                        {"minDelta", {0, 1, 2, 100, 0.5}},
                        {"maxDelta", {0, 1, 2, 100, 0.5}}}};
}

const Precondition kFamilies[] = {
    fills("vekiFloodFill", "vekiFloodFillGetSize"),
    fills("vekiFloodFill_Grad", "vekiFloodFillGetSize_Grad"),
    {.family = "vekiLabelMarkers",
     .query = "vekiLabelMarkersGetBufferSize_8u_C1R",
     .numbers = {{"minLabel", {1, 2, 100, 254}}, {"maxLabel", {254, 1, 2, 101, 65534}}, {"norm", {NormInf, NormL1}}}},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
