// Pictures of scenes that shift, with pyramids of them, and points to follow.
#pragma once

#include <algorithm>
#include <iterator>

#include "flow_reference.h"

namespace flow {

using Points = std::vector<ImagePoint32f>;

/** A scene like a photograph: details of all scales, the coarse ones with more contrast. From 0 to 1 about. */
class Scene {
  public:
    explicit Scene(uint32_t seed) {
        Random random(seed);
        const auto unit = [&] { return double(random.below(65536)) / 65536; };
        for (int i = 0; i < 60; ++i) {
            const double length = 5 * std::pow(24, unit()), angle = 6.2831853 * unit(), frequency = 6.2831853 / length;
            waves_.push_back({frequency * std::cos(angle), frequency * std::sin(angle), 6.2831853 * unit(),
                              0.004 * std::sqrt(length)});
        }
    }
    double at(double x, double y) const {
        double value = 0.5;
        for (const Wave& wave : waves_)
            value += wave.amplitude * std::sin(wave.x * x + wave.y * y + wave.phase);
        return std::clamp(value, 0.0, 1.0);
    }

  private:
    struct Wave {
        double x, y, phase, amplitude;
    };
    std::vector<Wave> waves_;
};

/** A pixel of a brightness from 0 to 1. */
template <typename T>
T pixelOf(double brightness) {
    if constexpr (std::is_same_v<T, float>)
        return float(brightness);
    else
        return T(brightness * std::numeric_limits<T>::max() + 0.5);
}

/** The scene, shifted by so many pixels. */
template <typename T>
TestImage<T> picture(const Scene& scene, RoiSize roi, double dx, double dy, double scale = 1, Layout layout = {}) {
    return TestImage<T>::filled(roi, layout,
                                [&](int x, int y) { return pixelOf<T>(scene.at(x / scale - dx, y / scale - dy)); });
}

/** The next smaller image, of pixels (1 2 1) x (1 2 1) / 16. */
template <typename T>
TestImage<T> halved(const TestImage<T>& image) {
    const RoiSize roi = image.roi();
    const auto at = [&](int x, int y) {
        return double(image.at(std::clamp(x, 0, roi.width - 1), std::clamp(y, 0, roi.height - 1)));
    };
    const auto row = [&](int x, int y) { return at(x - 1, y) + 2 * at(x, y) + at(x + 1, y); };
    return TestImage<T>::filled({(roi.width + 1) / 2, (roi.height + 1) / 2}, {}, [&](int x, int y) {
        const double mean = (row(2 * x, 2 * y - 1) + 2 * row(2 * x, 2 * y) + row(2 * x, 2 * y + 1)) / 16;
        return T(std::is_same_v<T, float> ? mean : mean + 0.5);
    });
}

/** The image as level 0, and those that follow up to maxLevel. */
template <typename T>
Levels<T> pyramidOf(TestImage<T> image, int maxLevel) {
    Levels<T> levels;
    double scale = 1;
    for (int k = 0; k <= maxLevel; ++k, scale /= 2) {
        levels.add(image, scale);
        image = halved(image);
    }
    return levels;
}

/** Some points in an image, at its borders and far away, with fractions and without. */
inline Points pointsAround(RoiSize roi, uint32_t seed) {
    Random random(seed);
    const auto width = float(roi.width), height = float(roi.height);
    Points points{
        {0, 0},      {width - 1, height - 1}, {width - 0.5f, 0.25f}, {-0.75f, height / 2}, {width / 2, height + 3.5f},
        {-70.5f, 2}, {3, height + 1e9f},      {-1e30f, 1e30f}};
    for (int i = 0; i < 6; ++i)
        points.push_back(
            {float(random.below(uint32_t(roi.width) * 64)) / 64, float(random.below(uint32_t(roi.height) * 64)) / 64});
    return points;
}

/** Such points for seeds from 0 on. */
inline Points manyPointsAround(RoiSize roi, uint32_t seeds) {
    Points points;
    for (uint32_t seed = 0; seed < seeds; ++seed)
        std::ranges::copy(pointsAround(roi, seed), std::back_inserter(points));
    return points;
}

}  // namespace flow
