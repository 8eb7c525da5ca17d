#pragma once

#include "image.h"

namespace VEKCV_VARIANT {

/** The rows of an image, or of a ring of rows that holds a part of an image: row y lies where row y + slots does. */
template <typename T>
struct Rows {
    T* first;
    int32_t step;       // in bytes
    int32_t slots = 0;  // 0 for an image

    template <int32_t kChannels>
    static Rows of(Image<T, kChannels> image) {
        return {image.pixels, image.step};
    }

    T* operator[](int32_t y) const { return image().row(slots == 0 ? y : y % slots); }

    /** The row below a row. */
    T* below(T* row) const {
        T* const next = Image<T>{row, step}.row(1);
        return slots > 0 && next == image().row(slots) ? first : next;
    }

    Rows<const T> asSource() const { return {first, step, slots}; }

  private:
    Image<T> image() const { return {first, step}; }
};

/** The row of an image of this height that stands for row y, which may lie outside. */
constexpr int32_t rowInside(int64_t y, int32_t height) {
    return y < 0 ? 0 : y < height ? static_cast<int32_t>(y) : height - 1;
}

/** Sets pointers to the rows that stand for `count` rows from `top` on. */
template <typename T>
void findRows(const Rows<T>& source, int64_t top, int32_t height, int32_t count, T** rows) {
    T* row = source[rowInside(top, height)];
    for (int32_t i = 0; i < count; ++i) {
        rows[i] = row;
        if (top + i >= 0 && top + i < height - 1)
            row = source.below(row);
    }
}

}  // namespace VEKCV_VARIANT
