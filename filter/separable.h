// Images filtered by rows, then by columns: filtered rows go into a ring of as many rows as the column has taps.
#pragma once

#include "allocation.h"
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

/** Row y of an image, which may lie outside of it, with `reach` pixels before it and behind it. */
template <typename T>
void extendRow(Image<const T> image, RoiSize roi, const Border<T>& border, int32_t y, int32_t reach, T* extended) {
    const bool isInMemory = (y < 0 && border.top) || (y >= roi.height && border.bottom);
    const int32_t index = isInMemory ? y : borderIndex(border.rule, y, roi.height);
    const ptrdiff_t width = roi.width;
    if (!isInMemory && index < 0) {
        for (ptrdiff_t x = 0; x < width + 2 * reach; ++x)
            extended[x] = border.value;
        return;
    }
    const T* const row = image.row(index);
    const auto fromRule = [&](int32_t x) {
        const int32_t inside = borderIndex(border.rule, x, roi.width);
        return inside < 0 ? border.value : row[inside];
    };
    for (int32_t x = -reach; x < 0; ++x)
        extended[reach + x] = border.left ? row[x] : fromRule(x);
    __builtin_memcpy(extended + reach, row, static_cast<size_t>(width) * sizeof(T));
    for (int32_t i = 0; i < reach; ++i)
        extended[reach + width + i] = border.right ? row[width + i] : fromRule(roi.width + i);
}

/**
 * Filters `rows` rows of an image from row `first` on. rowPass(slot) filters the row in `extended` into a slot of the
 * ring; columnPass(y, slot) makes row y of the result from all slots, of which that one holds the topmost row.
 */
template <typename T, typename RowPass, typename ColumnPass>
void filterStripe(Image<const T> image, RoiSize roi, const Border<T>& border, int32_t reach, int32_t first,
                  int32_t rows, T* extended, RowPass rowPass, ColumnPass columnPass) {
    const int32_t taps = 2 * reach + 1;
    int32_t slot = 0;
    for (int32_t i = 0; i < rows + 2 * reach; ++i) {
        extendRow(image, roi, border, first - reach + i, reach, extended);
        rowPass(slot);
        slot = slot + 1 == taps ? 0 : slot + 1;
        if (i >= 2 * reach)
            columnPass(first + i - 2 * reach, slot);
    }
}

/** A part of a buffer, for arrays that begin at multiples of a vector. */
class Scratch {
  public:
    explicit Scratch(uint8_t* begin) : next_(begin) {}

    template <typename T>
    T* take(int64_t count) {
        T* const array = reinterpret_cast<T*>(next_);
        next_ += alignUp(count * int64_t{sizeof(T)}, int64_t{kAlignment});
        return array;
    }

  private:
    static constexpr int32_t kAlignment = 32;
    uint8_t* next_;
};

}  // namespace VEKCV_VARIANT
