#include "preconditions.h"

namespace fuzz {
namespace {

const NumberRule kRadius{"radius", {3, 1, 5, 1.5, 2.999, 20, 0.5, std::numeric_limits<double>::infinity()}};

const Precondition kFamilies[] = {
    {.family = "vekiFastMarching", .query = "vekiFastMarchingGetBufferSize_8u32f_C1R", .numbers = {kRadius}},
    {.family = "vekiInpaint", .sharesMemory = true},
    {.family = "vekiInpaintInitAlloc", .numbers = {kRadius, {"method", {0, 1, 2}}}},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
