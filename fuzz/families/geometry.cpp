#include "preconditions.h"

namespace fuzz {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

/** A row and a column beyond the region are read. */
Extent copyExtent(const Call& call, size_t image) {
    const int64_t more = call.target->parameters[image].isConst ? 1 : 0;
    return enlarged(regionExtent(call, image), more, more);
}

/** Source and patch have sizes of their own. */
Extent patchExtent(const Call& call, size_t image) {
    const bool isSource = call.target->parameters[image].isConst;
    const auto size = call.value(isSource ? "sourceRoi" : "destinationRoi").as<RoiSize>();
    return {0, 0, size.width, size.height};
}

const std::vector<NumberRule> kCamera = {{"fx", {50, 200, 20, -100, 1e-3, 1e6, 0}},
                                         {"fy", {40, 150, 10, -100, 1e-3, 1e6, 0}},
                                         {"cx", {20, 100, 0, -30.25, 1e6}},
                                         {"cy", {2, 20, 0, -30.25, 1e6}},
                                         {"k1", {-0.2, 0.1, 0, 2, -5, 1e6}},
                                         {"k2", {0.05, -0.02, 0, 1, -3, 1e6}},
                                         {"p1", {0, 0.01, -0.05, 1}},
                                         {"p2", {0, 0.02, -0.03, 1}}};
const std::vector<NumberRule> kOffsets = {{"dx", {0.25, 0.5, 0, -0.3, 7.99997, 0.00001, kNaN}},
                                          {"dy", {0.75, 0.5, 0, -0.7, -2.00003, 0.99999, kNaN}}};

const Precondition kFamilies[] = {
    {.family = "vekiUndistort", .query = "vekiUndistortGetSize", .optional = "buffer", .numbers = kCamera},
    {.family = "vekiCreateMapCameraUndistort",
     .query = "vekiUndistortGetSize",
     .optional = "buffer",
     .numbers = kCamera},
    {.family = "vekiCopySubpix", .extent = copyExtent, .checkedColumns = regionColumns, .numbers = kOffsets},
    {.family = "vekiCopySubpixIntersect", .extent = patchExtent},
};
const Families families(kFamilies);

}  // namespace
}  // namespace fuzz
