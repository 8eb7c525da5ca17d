#pragma once

#include <vector>

#include "input.h"
#include "memory.h"

namespace fuzz {

/** What a classifier is built from, and what becomes of it before it is used. */
struct Features {
    bool hasFloats;   // else integers
    bool isTilted;    // built as a tilted classifier
    bool tiltsLater;  // some features of an upright classifier, by `mask` and `orientation`
    int32_t orientation;
    std::vector<ImageRect> rectangles;
    std::vector<uint32_t> weights, thresholds, valuesBelow, valuesAbove;  // the bits of the numbers
    std::vector<int32_t> counts;
    std::vector<uint8_t> mask;

    static Features draw(Input& input, bool hasFloats);

    int32_t featureCount() const { return static_cast<int32_t>(counts.size()); }

    /** Null where there is no memory. */
    HaarClassifier* build() const;

    enum class Table { kOnly, kUpright, kTilted };  // of the functions that read one table, or of those that read two

    /** The elements of a table that windows at the positions of a region may read. */
    Extent extentIn(Table table, RoiSize region) const;

    /** Whether a parameter of this name is one of the arrays, and which. */
    static bool hasArray(std::string_view parameter);
    const void* array(std::string_view parameter) const;
    int64_t arrayLength(std::string_view parameter) const;
};

}  // namespace fuzz
