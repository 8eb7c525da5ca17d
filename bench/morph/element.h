// Structuring elements that are measured.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace bench {

enum class Shape { kRectangle, kCross, kEllipse, kDiagonal };

/** A square element with the anchor in its middle. */
struct SquareElement {
    Shape shape;
    int32_t side;

    std::string name() const {
        constexpr const char* kNames[] = {"", "cross ", "ellipse ", "diagonal "};
        return kNames[static_cast<int>(shape)] + std::to_string(side) + "x" + std::to_string(side);
    }

    std::vector<uint8_t> mask() const {
        std::vector<uint8_t> mask;
        const int32_t middle = side / 2;
        for (int32_t y = -middle; y < side - middle; ++y) {
            const int32_t reach = static_cast<int32_t>(std::lround(std::sqrt(middle * middle - y * y)));
            for (int32_t x = -middle; x < side - middle; ++x)
                mask.push_back(shape == Shape::kRectangle ? 1
                               : shape == Shape::kCross   ? (x == 0 || y == 0 ? 1 : 0)
                               : shape == Shape::kEllipse ? (std::abs(x) <= reach ? 1 : 0)
                                                          : (x == y ? 1 : 0));
        }
        return mask;
    }
};

/** The element among the parameters of a case. */
inline std::vector<double> parametersOf(SquareElement element) {
    return {static_cast<double>(element.shape), static_cast<double>(element.side)};
}
inline SquareElement elementOf(const std::vector<double>& parameters) {
    return {static_cast<Shape>(parameters.at(0)), static_cast<int32_t>(parameters.at(1))};
}

}  // namespace bench
