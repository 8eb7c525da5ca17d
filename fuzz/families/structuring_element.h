// Structuring elements of any shape.
#pragma once

#include <limits>
#include <string>
#include <vector>

#include "input.h"
#include "vekcv.h"

namespace fuzz {

/** A mask with at least one member, as the functions for flat and for grey elements take it. */
struct StructuringElement {
    RoiSize size;
    ImagePoint anchor;
    std::vector<uint8_t> members;  // 0 or any other byte
    std::vector<int32_t> heights;  // of 8u
    std::vector<float> heights32f{};
    const char* shape = "";

    static StructuringElement draw(Input& input);

    int64_t memberCount() const;
    std::string describe() const;
};

/** The height of a place that is not a member. */
inline constexpr int32_t kNoHeight = std::numeric_limits<int32_t>::min();
inline constexpr float kNoHeight32f = std::numeric_limits<float>::lowest();

}  // namespace fuzz
