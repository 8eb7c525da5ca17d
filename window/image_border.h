// What lies outside of an image, row by row.
#pragma once

#include "border.h"
#include "image.h"

namespace VEKCV_VARIANT {

/** What lies outside of an image: on each side the pixels in memory, or those that a rule gives. */
template <typename T>
struct Border {
    BorderType rule;
    bool top, bottom, left, right;  // whether the pixels in memory
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

/** The row of an image that stands for row y, which may lie outside of it; null for a constant one. */
template <typename T>
const T* rowFor(Image<const T> image, RoiSize roi, const Border<T>& border, int32_t y) {
    if ((y < 0 && border.top) || (y >= roi.height && border.bottom))
        return image.row(y);
    const int32_t index = borderIndex(border.rule, y, roi.height);
    return index < 0 ? nullptr : image.row(index);
}

/** The pixel at x, beside the pixels of a row of rowFor. */
template <typename T>
T pixelBeside(const T* row, int32_t width, const Border<T>& border, int32_t x) {
    if (row == nullptr)
        return border.value;
    if (x < 0 ? border.left : border.right)
        return row[x];
    const int32_t index = borderIndex(border.rule, x, width);
    return index < 0 ? border.value : row[index];
}

}  // namespace VEKCV_VARIANT
