// Cameras with lenses that bend what they see, and where the pixels of a straight image come from.
#pragma once

#include <ostream>

#include "random.h"
#include "vekcv.h"

namespace undistort {

struct Camera {
    float fx, fy, cx, cy, k1, k2, p1 = 0, p2 = 0;
};

inline std::ostream& operator<<(std::ostream& out, const Camera& c) {
    return out << "f " << c.fx << ", " << c.fy << ", c " << c.cx << ", " << c.cy << ", k " << c.k1 << ", " << c.k2
               << ", p " << c.p1 << ", " << c.p2;
}

/** Cameras that bend images of this size a little, a lot, or not at all. */
inline Camera cameraFor(RoiSize roi, uint32_t seed) {
    Random random(seed);
    const auto between = [&](float least, float most) {
        return least + (most - least) * float(random.below(1 << 16)) / (1 << 16);
    };
    const float bend = seed % 4 == 0 ? 0 : seed % 4 == 1 ? 2 : 0.2f;
    const auto width = float(roi.width), height = float(roi.height);
    return {width * between(0.4f, 2), height * between(0.4f, 2), width * between(0, 1),
            height * between(0, 1),   between(-bend, bend),      between(-bend, bend) / 2};
}

template <typename F>
struct Place {
    F x, y;
};

/** Where a pixel comes from, with all operations in the order that is documented. */
template <typename F>
Place<F> placeOf(const Camera& camera, int column, int row) {
    const F fx = camera.fx, fy = camera.fy, cx = camera.cx, cy = camera.cy, k1 = camera.k1, k2 = camera.k2;
    const F p1 = camera.p1, p2 = camera.p2, x = F(column), y = F(row), dx = x - cx, dy = y - cy;
    const F x2 = dx * dx * (1 / (fx * fx)), y2 = dy * dy * (1 / (fy * fy));
    const F f = (k1 * y2 + k2 * (y2 * y2)) + ((k2 * x2 + k1) * x2 + 2 * k2 * y2 * x2);
    Place<F> place{x + dx * f, y + dy * f};
    if (camera.p1 != 0 || camera.p2 != 0) {
        const F u = dx * (1 / fx), v = dy * (1 / fy), r2 = x2 + y2;
        place.x = place.x + fx * (2 * p1 * u * v + p2 * (r2 + (x2 + x2)));
        place.y = place.y + fy * (2 * p2 * u * v + p1 * (r2 + (y2 + y2)));
    }
    return place;
}

}  // namespace undistort
