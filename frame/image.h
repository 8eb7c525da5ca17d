#pragma once

#include <cstddef>
#include <type_traits>

#include "vekcv.h"

namespace VEKCV_VARIANT {

/** An image argument: first pixel of the region and bytes from row to row. */
template <typename T, int32_t kChannels = 1>
struct Image {
    using Element = std::remove_const_t<T>;
    static constexpr int32_t kPixelBytes = kChannels * static_cast<int32_t>(sizeof(T));

    T* pixels;
    int32_t step;

    /** The image whose first channel is `channel` (from 1) of this one. */
    Image from(int32_t channel) const { return {pixels + (channel - 1), step}; }

    /** In 32 bits the offset of a row may exceed what a difference of pointers can tell. */
    T* row(ptrdiff_t y) const {
        return reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(pixels) +
                                    static_cast<uintptr_t>(y) * static_cast<uintptr_t>(step));
    }
};

/** Stands for an image that a form of an operation does not have; it passes every check. */
struct NoImage {
    using Element = uint8_t;
    static constexpr int32_t kPixelBytes = 0;
    static constexpr int32_t step = 0;
};

}  // namespace VEKCV_VARIANT
