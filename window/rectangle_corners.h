#pragma once

#include <cstdint>

namespace VEKCV_VARIANT {

/** A position in an integral image. */
template <typename Coordinate>
struct Corner {
    Coordinate x, y;
};

/** The four entries of an integral image that give the sum over a rectangle, a - b - c + d. */
template <typename Coordinate>
struct RectangleCorners {
    Corner<Coordinate> a, b, c, d;
};

/** The corners of an upright rectangle from (x, y) on. */
template <typename Coordinate>
constexpr RectangleCorners<Coordinate> uprightCorners(Coordinate x, Coordinate y, Coordinate w, Coordinate h) {
    return {{x + w, y + h}, {x, y + h}, {x + w, y}, {x, y}};
}

/** The corners of a tilted rectangle: from the topmost, (x, y), w steps to the lower right and h to the lower left. */
template <typename Coordinate>
constexpr RectangleCorners<Coordinate> tiltedCorners(Coordinate x, Coordinate y, Coordinate w, Coordinate h) {
    return {{x + w - h, y + w + h}, {x - h, y + h}, {x + w, y + w}, {x, y}};
}

}  // namespace VEKCV_VARIANT
