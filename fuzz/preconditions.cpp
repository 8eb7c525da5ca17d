#include "preconditions.h"

#include <algorithm>

namespace fuzz {
namespace {

std::vector<const Precondition*>& preconditions() {
    static std::vector<const Precondition*> all;
    return all;
}

/** What means the same in all families. */
const NumberRule kNumbers[] = {
    {"borderType",
     {1, 0, 2, 3, 4, 6, 0xF1, 0x11, 0x21, 0x41, 0x81, 0x10, 0x23, 0x42, 0x84, 0x30, 0xC3, 0x54, 0xA2, 0x10001}},
    {"borderValue", {0, 1, 255, 100}},
    {"channelOfInterest", {1, 2, 3, 0, 4}},
    {"kernelSize", {3, 5, 7, 9, 1, 2, 4, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31, 33, 64}, NumberRule::kBelowOne},
    {"maskSize", {MaskSize3x3, MaskSize5x5}},
    {"roiWidth", {1, 2, 15, 31, 64, 333, 5000}},
    {"scaleFactor", {0, -1, -2, -5, -31, -64, 1, 3}},
};

const NumberRule* find(std::span<const NumberRule> rules, std::string_view parameter) {
    const auto found = std::ranges::find(rules, parameter, &NumberRule::parameter);
    return found == rules.end() ? nullptr : &*found;
}

}  // namespace

Families::Families(std::span<const Precondition> entries) {
    for (const Precondition& entry : entries)
        preconditions().push_back(&entry);
}

const Precondition* findPrecondition(const Export& target) {
    const Precondition* best = nullptr;
    for (const Precondition* const entry : preconditions())
        if (target.name.starts_with(entry->family) && (best == nullptr || entry->family.size() > best->family.size()))
            best = entry;
    return best;
}

const NumberRule* findNumberRule(const Export& target, std::string_view parameter) {
    const NumberRule* const ofFamily = find(findPrecondition(target)->numbers, parameter);
    return ofFamily != nullptr ? ofFamily : find(kNumbers, parameter);
}

const Export* queryOf(const Export& target) {
    const Precondition& rules = *findPrecondition(target);
    if (rules.replacedByQuery.empty())
        return findExport(rules.query);
    std::string name(target.name);
    const size_t at = name.find(rules.replacedByQuery);
    return at == std::string::npos ? nullptr : findExport(name.replace(at, rules.replacedByQuery.size(), rules.query));
}

Extent extentOf(const Call& call, size_t image) {
    for (const auto& state : call.states)
        if (state != nullptr)
            if (const auto extent = state->extentOf(call, image))
                return *extent;
    return call.rules->extent == nullptr ? regionExtent(call, image) : call.rules->extent(call, image);
}

int64_t checkedRowBytes(const Call& call, size_t image) {
    const int64_t columns = call.rules->checkedColumns == nullptr ? extentOf(call, image).columns()
                                                                  : call.rules->checkedColumns(call, image);
    return columns * bytesOf(call.target->parameters[image].element);
}

Extent regionExtent(const Call& call, size_t image) {
    const auto size = call.value("roiSize").as<RoiSize>();
    return {0, 0, int64_t{size.width} * call.channelsOf(image), size.height};
}

int64_t regionColumns(const Call& call, size_t image) {
    return regionExtent(call, image).right;
}

Extent enlarged(Extent extent, int64_t columns, int64_t rows) {
    return {extent.left, extent.top, extent.right + columns, extent.bottom + rows};
}

}  // namespace fuzz
