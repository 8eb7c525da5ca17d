// What optical flow is defined to give: one point, one window and one sample at a time.
#pragma once

#include <cmath>
#include <limits>
#include <vector>

#include "sixteen_sums.h"
#include "test_image.h"

namespace flow {

/** The images of a pyramid and the record that tells of them. */
template <typename T>
class Levels {
  public:
    void add(const TestImage<T>& image, double scale) {
        images_.push_back(image);
        pixels.push_back(image.data());
        sizes.push_back(image.roi());
        scales.push_back(scale);
        steps.push_back(image.step());
    }
    /** A record of as many levels as there are images; it points into this object. */
    Pyramid record() { return {pixels.data(), sizes.data(), scales.data(), steps.data(), nullptr, count() - 1}; }

    int count() const { return int(images_.size()); }
    const TestImage<T>& image(int level) const { return images_[size_t(level)]; }

    std::vector<void*> pixels;
    std::vector<RoiSize> sizes;
    std::vector<double> scales;
    std::vector<int32_t> steps;

  private:
    std::vector<TestImage<T>> images_;
};

struct Options {
    int32_t windowSize = 21, maxLevel = 3, maxIterations = 30;
    float threshold = 0.01f;
};

struct Result {
    ImagePoint32f point;
    int8_t found;
    float error;
};

/** An image between its pixels; outside of it the nearest one in it counts. */
template <typename T>
class Samples {
  public:
    Samples(const TestImage<T>& image, float x, float y) : image_(image) {
        split(x, x_, fractionX_);
        split(y, y_, fractionY_);
    }
    /** So many pixels away from the place. */
    float at(int dx, int dy) const {
        const float top = between(pixel(dx, dy), pixel(dx + 1, dy), fractionX_);
        const float bottom = between(pixel(dx, dy + 1), pixel(dx + 1, dy + 1), fractionX_);
        return between(top, bottom, fractionY_);
    }

  private:
    static float between(float a, float b, float fraction) { return a + fraction * (b - a); }
    /** No test image has a million columns or rows. */
    static void split(float place, int& whole, float& fraction) {
        const float near = std::isnan(place) ? place : std::fmin(std::fmax(place, -1e6f), 1e6f);
        whole = std::isnan(near) ? 0 : int(std::floor(near));
        fraction = near - float(whole);
    }
    float pixel(int dx, int dy) const {
        return float(
            image_.at(std::clamp(x_ + dx, 0, image_.roi().width - 1), std::clamp(y_ + dy, 0, image_.roi().height - 1)));
    }

    const TestImage<T>& image_;
    int x_ = 0, y_ = 0;
    float fractionX_ = 0, fractionY_ = 0;
};

/** The sum of term(dx, dy) over a window. */
template <typename Term>
float sum(int windowSize, Term term) {
    SixteenSums<float> sums;
    for (int x = 0; x < windowSize; ++x)
        for (int y = 0; y < windowSize; ++y)
            sums.add(x, term(x - windowSize / 2, y - windowSize / 2));
    return sums.total();
}

template <typename T>
Result follow(const Levels<T>& previous, const Levels<T>& next, ImagePoint32f from, ImagePoint32f guess,
              const Options& options) {
    const int size = options.windowSize;
    const float range = std::is_same_v<T, float> ? 1.0f : float(std::numeric_limits<T>::max());
    const float least = 1e-6f * (range * range) * float(size * size);
    ImagePoint32f point = guess;
    for (int k = std::min({options.maxLevel, previous.count() - 1, next.count() - 1}); k >= 0; --k) {
        const float scale = float(previous.scales[size_t(k)]);
        const Samples<T> before(previous.image(k), from.x * scale, from.y * scale);
        const auto slopeX = [&](int x, int y) { return (before.at(x + 1, y) - before.at(x - 1, y)) * 0.5f; };
        const auto slopeY = [&](int x, int y) { return (before.at(x, y + 1) - before.at(x, y - 1)) * 0.5f; };
        const float xx = sum(size, [&](int x, int y) { return slopeX(x, y) * slopeX(x, y); });
        const float xy = sum(size, [&](int x, int y) { return slopeX(x, y) * slopeY(x, y); });
        const float yy = sum(size, [&](int x, int y) { return slopeY(x, y) * slopeY(x, y); });
        const float determinant = xx * yy - xy * xy;
        const float root = std::sqrt((xx - yy) * (xx - yy) + 4 * (xy * xy));
        if (!((xx + yy - root) * 0.5f >= least && determinant > 0)) {
            if (k == 0)
                return {point, 0, 0};
            continue;
        }
        float u = point.x * scale, v = point.y * scale;
        const auto difference = [&](const Samples<T>& after, int x, int y) { return before.at(x, y) - after.at(x, y); };
        for (int i = 0; i < options.maxIterations; ++i) {
            const Samples<T> after(next.image(k), u, v);
            const float bx = sum(size, [&](int x, int y) { return difference(after, x, y) * slopeX(x, y); });
            const float by = sum(size, [&](int x, int y) { return difference(after, x, y) * slopeY(x, y); });
            const float stepX = (yy * bx - xy * by) / determinant, stepY = (xx * by - xy * bx) / determinant;
            u += stepX;
            v += stepY;
            const float length = std::sqrt(stepX * stepX + stepY * stepY);
            if (length < options.threshold || std::isnan(length))
                break;
        }
        point = {u / scale, v / scale};
        if (k > 0)
            continue;
        const RoiSize roi = next.image(0).roi();
        if (!(point.x >= 0 && point.y >= 0 && point.x <= float(roi.width - 1) && point.y <= float(roi.height - 1)))
            return {point, 0, 0};
        const Samples<T> after(next.image(0), u, v);
        const float all = sum(size, [&](int x, int y) { return std::fabs(difference(after, x, y)); });
        return {point, 1, all / float(size * size)};
    }
    return {point, 0, 0};
}

}  // namespace flow
