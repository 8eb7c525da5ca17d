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

    T* row(ptrdiff_t y) const {
        using Byte = std::conditional_t<std::is_const_v<T>, const uint8_t, uint8_t>;
        return reinterpret_cast<T*>(reinterpret_cast<Byte*>(pixels) + y * step);
    }
};

}  // namespace VEKCV_VARIANT
