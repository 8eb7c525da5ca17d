#include "morphology_functions.h"

namespace fuzz {

MorphologyFunctions MorphologyFunctions::of(const Export& target, std::string_view anyLayout) {
    const auto has = [&](std::string_view part) { return target.name.find(part) != std::string_view::npos; };
    const bool isCompound = has("Compound") || (has("Morph") && !has("Morphology"));
    const size_t end = target.name.find('_');
    return {has("Gray")  ? kGray
            : isCompound ? kCompound
                         : kFlat,
            std::string(end == std::string_view::npos ? anyLayout : target.name.substr(end + 1))};
}

const Export& MorphologyFunctions::find(const std::string& what) const {
    constexpr const char* kPrefixes[] = {"vekiMorphology", "vekiMorphologyCompound", "vekiGrayMorphology"};
    const std::string name = kPrefixes[family] + what;
    const Export* const forAllLayouts = findExport(name);
    return forAllLayouts != nullptr ? *forAllLayouts : *findExport(name + "_" + layout);
}

const Export& MorphologyFunctions::operation() const {
    constexpr const char* kPrefixes[] = {"vekiErodeBorderReplicate_", "vekiMorphCloseBorderReplicate_",
                                         "vekiGrayDilateBorder_"};
    return *findExport(kPrefixes[family] + layout);
}

}  // namespace fuzz
