#include "regions.h"

#include <algorithm>
#include <cstdio>

#include "library_call.h"
#include "neighbors.h"
#include "work_buffer.h"

namespace {

constexpr int32_t kLargestLabel = UINT16_MAX - 1;  // the largest number stands for no label yet

}  // namespace

Labels labelsOf(Picture regions, int32_t neighbors, const std::string& name) {
    Labels result{std::move(regions)};
    Picture& picture = result.picture;
    const WorkBuffer buffer = workBuffer(vekiLabelMarkersGetBufferSize_16u_C1R, picture.size());
    callLibrary("vekiLabelMarkers_16u_C1IR", vekiLabelMarkers_16u_C1IR, picture.pixels<uint16_t>(), picture.step(),
                picture.size(), 1, kLargestLabel, normOf(neighbors), &result.count, buffer.get());
    if (result.count > kLargestLabel)
        throw Failure(name, "has " + std::to_string(result.count) + " regions; there are numbers for " +
                                std::to_string(kLargestLabel));
    return result;
}

std::vector<Region> regionsOf(const Labels& labels) {
    const Picture& picture = labels.picture;
    std::vector<Region> regions(static_cast<size_t>(labels.count));
    const uint16_t* label = picture.pixels<uint16_t>();
    for (int32_t y = 0; y < picture.height; ++y)
        for (int32_t x = 0; x < picture.width; ++x, ++label) {
            if (*label == 0)
                continue;
            auto& [area, box] = regions[*label - 1u];
            if (area++ == 0)
                box = {x, y, 1, 1};
            const int32_t right = std::max(box.x + box.width, x + 1);
            box.x = std::min(box.x, x);
            box.width = right - box.x;
            box.height = y + 1 - box.y;
        }
    return regions;
}

nlohmann::ordered_json asJson(const Region& region) {
    const auto& [area, box] = region;
    return {{"area", area}, {"x", box.x}, {"y", box.y}, {"width", box.width}, {"height", box.height}};
}

void printJson(const std::vector<Region>& regions) {
    auto array = nlohmann::ordered_json::array();
    for (const Region& region : regions) {
        nlohmann::ordered_json item = {{"label", array.size() + 1}};
        item.update(asJson(region));
        array.push_back(item);
    }
    std::puts(array.dump(2).c_str());
}
