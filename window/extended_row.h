// Rows of an image with the pixels that a border rule puts beside them.
#pragma once

#include "image_border.h"
#include "simd.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {

/** Copies parts of rows of `width` pixels that are extended by `before` pixels on the left and `after` on the right. */
template <typename T, int32_t kChannels = 1>
class ExtendedRow {
  public:
    /** Finds where the pixels beside a row come from once, and keeps it in scratch memory. */
    ExtendedRow(Scratch& scratch, const Border<T>& border, int32_t width, int32_t before, int32_t after)
        : left_(scratch.take<int32_t>(int64_t{before} + after)),
          width_(width),
          before_(before),
          after_(after),
          value_(border.value) {
        for (int32_t i = 0; i < before; ++i)
            left_[i] = border.left ? i - before : sourceOf(border, int64_t{i} - before);
        for (int32_t i = 0; i < after; ++i)
            left_[before + i] = border.right ? width + i : sourceOf(border, int64_t{width} + i);
    }

    /** Copies the pixels on the left, or those on the right. */
    void copyLeft(const T* row, T* out) const { copyBeside(row, left_, before_, out); }
    void copyRight(const T* row, T* out) const { copyBeside(row, left_ + before_, after_, out); }

    /** Copies the pixels from `begin` to `end`; those of the row itself are 0 to width - 1. */
    HWY_NOINLINE void copy(const T* row, int64_t begin, int64_t end, T* out) const {
        constexpr int64_t kFirst = 0;
        const int64_t left = HWY_MIN(end, kFirst) - begin;
        const int64_t inside = HWY_MIN(end, int64_t{width_}) - HWY_MAX(begin, kFirst);
        if (left > 0) {
            copyBeside(row, left_ + (before_ + begin), left, out);
            begin += left;
            out += left * kChannels;
        }
        if (inside > 0) {
            const int64_t elements = inside * kChannels;
            __builtin_memcpy(out, row + begin * kChannels, static_cast<size_t>(elements) * sizeof(T));
            begin += inside;
            out += elements;
        }
        if (begin < end)
            copyBeside(row, left_ + (before_ + begin - width_), end - begin, out);
    }

  private:
    static constexpr int32_t kConstant = INT32_MIN;

    int32_t sourceOf(const Border<T>& border, int64_t x) const {
        const int32_t index = borderIndex(border.rule, x, width_);
        return index < 0 ? kConstant : index;
    }

    HWY_NOINLINE void copyBeside(const T* row, const int32_t* sources, int64_t count, T* out) const {
        for (int64_t i = 0; i < count; ++i, out += kChannels)
            for (int32_t c = 0; c < kChannels; ++c)
                out[c] = sources[i] == kConstant ? value_ : row[ptrdiff_t{sources[i]} * kChannels + c];
    }

    int32_t* left_;  // which pixels of a row lie on its left, and behind them which lie on its right
    int32_t width_, before_, after_;
    T value_;
};

/** The rows of an image that is extended by `reach` pixels on all sides. */
template <typename T>
class ExtendedImage {
  public:
    ExtendedImage(Scratch& scratch, Image<const T> image, RoiSize roi, const Border<T>& border, int32_t reach)
        : image_(image), roi_(roi), border_(border), row_(scratch, border, roi.width, reach, reach) {
        if (border.rule != BorderConstant || (border.top && border.bottom))
            return;
        const int32_t width = roi.width + 2 * reach;
        T* const constant = scratch.take<T>(width);
        for (ptrdiff_t x = 0; x < width; ++x)
            constant[x] = border.value;
        constant_ = constant + reach;
    }

    /** The pixels of row y, which may lie outside of the image, from x = 0 on. */
    const T* row(int32_t y) const {
        if ((y < 0 && border_.top) || (y >= roi_.height && border_.bottom))
            return image_.row(y);
        const int32_t index = borderIndex(border_.rule, y, roi_.height);
        return index < 0 ? constant_ : image_.row(index);
    }

    /** Copies the pixels beside the rows that row() gives. */
    const ExtendedRow<T>& ends() const { return row_; }

  private:
    Image<const T> image_;
    RoiSize roi_;
    Border<T> border_;
    ExtendedRow<T> row_;
    const T* constant_ = nullptr;
};

}  // namespace VEKCV_VARIANT
