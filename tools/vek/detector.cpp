#include "detector.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "shrink.h"

namespace {

// So many cannot all be objects, and grouping them would take long.
constexpr size_t kMostWindows = 200000;

/** A size of the picture at which windows are looked for, and how many places windows have in it. */
struct Level {
    double scale;
    RoiSize size;
    RoiSize positions;
};

std::vector<Level> levelsOf(RoiSize picture, RoiSize window, const Detector::Options& options) {
    std::vector<Level> levels;
    for (double scale = 1;; scale *= options.scale) {
        const RoiSize size{static_cast<int32_t>(std::lrint(picture.width / scale)),
                           static_cast<int32_t>(std::lrint(picture.height / scale))};
        const RoiSize positions{size.width - window.width + 1, size.height - window.height + 1};
        if (positions.width < 1 || positions.height < 1)
            return levels;
        if (std::lrint(scale * std::min(window.width, window.height)) >= options.minSize)
            levels.push_back({scale, size, positions});
    }
}

// Windows that are moved by a pixel of a picture of full size are nearly the same.
int32_t spacingOf(const Level& level) {
    return level.scale < 2 ? 2 : 1;
}

double workOf(const Level& level) {
    return static_cast<double>(level.positions.width) * level.positions.height / (spacingOf(level) * spacingOf(level));
}

Picture transposed(const Picture& grey) {
    Picture result(grey.height, grey.width, 1, 8);
    const uint8_t* from = grey.pixels<uint8_t>();
    for (int32_t y = 0; y < grey.height; ++y)
        for (int32_t x = 0; x < grey.width; ++x)
            result.pixels<uint8_t>()[ptrdiff_t{x} * result.step() + y] = *from++;
    return result;
}

ImageRect transposed(const ImageRect& place) {
    return {place.y, place.x, place.height, place.width};
}

/** A picture at smaller and smaller sizes. */
class ScaledPictures {
  public:
    explicit ScaledPictures(const Picture& grey) : largest_(&grey) {}

    const Picture& at(double scale, RoiSize size) {
        if (scale == 1)
            return *largest_;
        // Halves of halves, so that every pixel has its part in what is shrunk to less than a half.
        for (; scale / largestScale_ >= 2; largestScale_ *= 2) {
            half_ = shrunk(*largest_, {(largest_->width + 1) / 2, (largest_->height + 1) / 2});
            largest_ = &half_;
        }
        return shrunk_ = shrunk(*largest_, size);
    }

  private:
    const Picture* largest_;
    double largestScale_ = 1;
    Picture half_, shrunk_;
};

/** A window of a level in the picture. */
ImageRect enlarged(ImagePoint position, RoiSize window, double scale) {
    const auto times = [=](int32_t length) { return static_cast<int32_t>(std::lrint(length * scale)); };
    return {times(position.x), times(position.y), times(window.width), times(window.height)};
}

}  // namespace

Detector::Detector(const Cascade& cascade)
    : transposed_(cascade.hasTilted()), scan_(transposed_ ? cascade.transposed() : cascade) {}

std::vector<Detection> Detector::detect(const Picture& grey, const Options& options, const Progress& progress) {
    const Picture turned = transposed_ ? transposed(grey) : Picture();
    std::vector<ImageRect> windows = windowsIn(transposed_ ? turned : grey, options, progress);
    if (transposed_)
        std::ranges::transform(windows, windows.begin(), [](const ImageRect& window) { return transposed(window); });
    return grouped(std::move(windows), options.leastNeighbours);
}

std::vector<ImageRect> Detector::windowsIn(const Picture& grey, const Options& options, const Progress& progress) {
    const RoiSize window = scan_.window(), part = WindowScan::kMostPositions;
    const std::vector<Level> levels = levelsOf(grey.size(), window, options);
    const double work = std::transform_reduce(levels.begin(), levels.end(), 0., std::plus(), workOf);
    double done = 0;
    std::vector<ImageRect> windows;
    std::vector<ImagePoint> found;
    ScaledPictures pictures(grey);
    for (const Level& level : levels) {
        const Picture& picture = pictures.at(level.scale, level.size);
        for (int32_t y = 0; y < level.positions.height; y += part.height)
            for (int32_t x = 0; x < level.positions.width; x += part.width) {
                const RoiSize positions{std::min(part.width, level.positions.width - x),
                                        std::min(part.height, level.positions.height - y)};
                found.clear();
                scan_.scan(picture.pixels<uint8_t>() + ptrdiff_t{y} * picture.step() + x, picture.step(), positions,
                           spacingOf(level), found);
                for (const ImagePoint& point : found)
                    windows.push_back(enlarged({x + point.x, y + point.y}, window, level.scale));
                if (windows.size() > kMostWindows)
                    throw TooManyWindows("more than " + std::to_string(kMostWindows) + " windows pass the cascade");
                done += workOf({level.scale, level.size, positions});
                if (progress)
                    progress(done / work);
            }
    }
    return windows;
}
