#include "preconditions.h"

namespace fuzz {
namespace {

const NumberRule kStageThreshold{"stageThreshold", {0, 1, -1, 2, 5}};

const Precondition kFamilies[] = {
    {.family = "vekiCanny",
     .query = "vekiCannyGetSize",
     .numbers = {{"lowThreshold", {0, 1, 20, 50.5, 100}}, {"highThreshold", {100, 1000, 1e9, 3.5}}}},
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
