#pragma once

#include "border.h"
#include "image.h"

namespace VEKCV_VARIANT {

/** What lies outside of an image: on each side the pixels in memory, or those that a rule gives. */
template <typename T>
struct Border {
    BorderType rule;
    bool top, bottom, left, right;  // whether that side has the pixels in memory
    T value;

    static constexpr bool isValid(int32_t type) {
        const int32_t rule = type & 0xF;
        return (isBorderRule(rule) || rule == BorderInMemory) && ((type & 0xFFF0) == 0 || (type & kInMemory) != 0);
    }
    static constexpr Border of(int32_t type, T value) {
        const bool all = (type & 0xF) == BorderInMemory;
        const auto has = [=](int32_t side) { return all || (type & side) != 0; };
        return {all ? BorderConstant : static_cast<BorderType>(type & 0xF),
                has(BorderInMemoryTop),
                has(BorderInMemoryBottom),
                has(BorderInMemoryLeft),
                has(BorderInMemoryRight),
                value};
    }

  private:
    static constexpr int32_t kInMemory =
        BorderInMemoryTop | BorderInMemoryBottom | BorderInMemoryLeft | BorderInMemoryRight;
};

}  // namespace VEKCV_VARIANT
