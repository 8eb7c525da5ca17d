#pragma once

#include <algorithm>
#include <array>
#include <cmath>

#include "picture.h"

/** The value between the second and the third of four pixels in a row, by the cubic polynomial of Catmull and Rom. */
inline double between(const std::array<double, 4>& values, double part) {
    const auto& [a, b, c, d] = values;
    return b + part / 2 * (c - a + part * (2 * a - 5 * b + 4 * c - d + part * (3 * (b - c) + d - a)));
}

/** The value of a channel at a place between the pixels of a picture of 8 bits, which its edge pixels continue. */
inline double valueAt(const Picture& picture, double x, double y, int32_t channel = 0) {
    const double left = std::floor(x), top = std::floor(y);
    std::array<double, 4> rows{}, values{};
    for (int32_t i = 0; i < 4; ++i) {
        const ptrdiff_t row = std::clamp(static_cast<int32_t>(top) - 1 + i, 0, picture.height - 1);
        for (int32_t j = 0; j < 4; ++j) {
            const int32_t column = std::clamp(static_cast<int32_t>(left) - 1 + j, 0, picture.width - 1);
            values[static_cast<size_t>(j)] =
                picture.pixels<uint8_t>()[(row * picture.width + column) * picture.channels + channel];
        }
        rows[static_cast<size_t>(i)] = between(values, x - left);
    }
    return between(rows, y - top);
}

inline uint8_t pixelFrom(double value) {
    return static_cast<uint8_t>(std::lrint(std::clamp(value, 0., double{UINT8_MAX})));
}
