// The functions around the states of structuring elements.
#pragma once

#include <string>

#include "export.h"

namespace fuzz {

/** What makes and takes the states of a family, a type and a layout. */
struct MorphologyFunctions {
    enum Family { kFlat, kCompound, kGray };

    Family family;
    std::string layout;  // such as "8u_C3R"

    /** Those that belong to an export; one without a layout serves all of them, such as the one here. */
    static MorphologyFunctions of(const Export& target, std::string_view anyLayout = "8u_C1R");

    /** "InitAlloc", "GetSize", "Init" and "Free". */
    const Export& find(const std::string& what) const;
    /** One of the operations that take such a state. */
    const Export& operation() const;

    bool hasFloats() const { return layout.starts_with("32f"); }
    int32_t channels() const { return layout[layout.find('C') + 1] - '0'; }
};

}  // namespace fuzz
