// What inpainting is defined to give: means of known pixels, for one unknown pixel after the other.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "test_image.h"

namespace inpaint {

inline constexpr float kInfinity = std::numeric_limits<float>::infinity();

using Bytes = TestImage<uint8_t>;
using Floats = TestImage<float>;

/** What pixels to restore, and how. */
struct Task {
    Bytes mask;
    Floats distance;
    float radius;
    int32_t method;

    static Task of(const Bytes& mask, float radius, int32_t method, Layout layout = {}) {
        Task task{mask, Floats(mask.roi(), layout), radius, method};
        int32_t size = 0;
        EXPECT_EQ(StatusOk, vekiFastMarchingGetBufferSize_8u32f_C1R(mask.roi(), &size));
        std::vector<uint8_t> buffer(static_cast<size_t>(size));
        EXPECT_EQ(StatusOk, vekiFastMarching_8u32f_C1R(mask.data(), mask.step(), task.distance.data(),
                                                       task.distance.step(), mask.roi(), radius, buffer.data()));
        return task;
    }
};

/** What the pixels of a result are to be, each from those that were restored before it. */
class Reference {
  public:
    Reference(const Task& task, const Bytes& source, const Bytes& result)
        : task_(task), roi_(task.mask.roi()), source_(source), result_(result) {
        for (int y = 0; y < roi_.height; ++y)
            for (int x = 0; x < roi_.width; ++x) {
                isKnown_.push_back(task.mask.at(x, y) == 0);
                if (task.mask.at(x, y) != 0)
                    order_.push_back({time(x, y), x, y});
            }
        std::stable_sort(order_.begin(), order_.end(), [](const Pixel& a, const Pixel& b) { return a.time < b.time; });
    }

    ::testing::AssertionResult check() {
        const int channels = source_.elements() / roi_.width;
        for (int y = 0; y < roi_.height; ++y)
            for (int x = 0; x < source_.elements(); ++x)
                if (isKnown_[indexOf(x / channels, y)] && result_.at(x, y) != source_.at(x, y))
                    return ::testing::AssertionFailure() << "the known element (" << x << ", " << y << ") was changed";
        for (const Pixel& pixel : order_) {
            for (int x = pixel.x * channels, end = x + channels; x < end; ++x) {
                const double mean = meanAround(pixel, x % channels, channels);
                // Weights are rounded to float.
                if (!(std::abs(result_.at(x, pixel.y) - mean) <= 0.5 + 0.001))
                    return ::testing::AssertionFailure() << "element (" << x << ", " << pixel.y << "): expected "
                                                         << mean << ", got " << +result_.at(x, pixel.y);
            }
            isKnown_[indexOf(pixel.x, pixel.y)] = true;
        }
        if (!result_.guardsIntact())
            return ::testing::AssertionFailure() << "bytes outside the image were written";
        return ::testing::AssertionSuccess();
    }

  private:
    static constexpr float kLatest = 999999;
    struct Pixel {
        float time;
        int x, y;
    };

    bool isThere(int x, int y) const { return x >= 0 && y >= 0 && x < roi_.width && y < roi_.height; }
    size_t indexOf(int x, int y) const { return size_t(y) * size_t(roi_.width) + size_t(x); }
    float time(int x, int y) const {
        const float distance = task_.distance.at(x, y);
        return distance < kLatest ? std::max(distance, -kLatest) : kLatest;
    }
    double slope(int x, int y, int dx, int dy) const {
        const double before = isThere(x - dx, y - dy) ? time(x - dx, y - dy) : kInfinity;
        const double after = isThere(x + dx, y + dy) ? time(x + dx, y + dy) : kInfinity;
        const double here = time(x, y);
        return std::min(before, after) >= here ? 0 : before <= after ? here - before : after - here;
    }

    double weight(int x, int y, int u, int v) const {
        const double square = double(x - u) * (x - u) + double(y - v) * (y - v);
        const double close = 1.0 / 4096 / (1 + std::abs(double(time(x, y)) - time(u, v)));
        if (task_.method == 1)
            return close / (square * square);
        const double along = std::abs((x - u) * slope(x, y, 1, 0) + (y - v) * slope(x, y, 0, 1));
        return close * std::max(along, 2.5e-25) / (square * std::sqrt(square));
    }

    double meanAround(const Pixel& pixel, int channel, int channels) const {
        double weights = 0, sum = 0;
        const auto reach = int(std::min(task_.radius, 1000.0f));
        for (int v = std::max(pixel.y - reach, 0); v <= std::min(pixel.y + reach, roi_.height - 1); ++v)
            for (int u = std::max(pixel.x - reach, 0); u <= std::min(pixel.x + reach, roi_.width - 1); ++u) {
                const int dx = pixel.x - u, dy = pixel.y - v;
                if (!isKnown_[indexOf(u, v)] || double(dx) * dx + double(dy) * dy > double(task_.radius) * task_.radius)
                    continue;
                const double w = weight(pixel.x, pixel.y, u, v);
                weights += w;
                sum += w * result_.at(u * channels + channel, v);
            }
        return weights < 1e-4 ? 0 : sum / weights;
    }

    const Task& task_;
    RoiSize roi_;
    const Bytes &source_, &result_;
    std::vector<bool> isKnown_;
    std::vector<Pixel> order_;
};

}  // namespace inpaint
