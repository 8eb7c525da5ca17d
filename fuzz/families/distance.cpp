#include "preconditions.h"

namespace fuzz {
namespace {

int64_t mostMetrics(const Call& /*call*/, size_t /*array*/) {
    return 3;
}

const Precondition kFamilies[] = {
    {.family = "vekiGetDistanceTransformMask",
     .arrayLength = mostMetrics,
     .numbers = {{"maskSize", {3, 5, 3, 5, 4}},
                 {"norm", {0, 1, 2, 3}},
                 {"maskCode", {30, 31, 32, 50, 51, 52, 33, 40}}}},
    {.family = "vekiDistanceTransform", .arrayLength = mostMetrics, .sharesMemory = true},
    {.family = "vekiTrueDistanceTransform", .query = "TransformGetBufferSize_", .replacedByQuery = "Transform_"},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
