#include "window_scan.h"

#include <algorithm>
#include <cstdlib>

#include "library_call.h"

namespace {

// Deviations are integers, 2 to the power of 12 times as large. From integer tables they are exact, while a table of
// doubles is read as floats, and those far from its corner are so large that the squares in a window drown in rounding.
constexpr int32_t kDeviationScale = 12;
constexpr float kDeviationOne = 1 << kDeviationScale;

/** The window without its border, for whose deviation the thresholds of cascades were trained. */
ImageRect innerOf(RoiSize window) {
    return {1, 1, window.width - 2, window.height - 2};
}

/** Deviations become norms by it: thresholds are for sums of pixels, of a window with one pixel inside. */
float thresholdFactor(RoiSize window) {
    const ImageRect inner = innerOf(window);
    return static_cast<float>(inner.width * inner.height) / kDeviationOne;
}

int32_t halfOf(int32_t count) {
    return (count + 1) / 2;
}

}  // namespace

WindowScan::WindowScan(const Cascade& cascade)
    : window_(cascade.window),
      tilted_(cascade.hasTilted()),
      sums_(kMostPositions.width + window_.width, kMostPositions.height + window_.height),
      squares_(sums_),
      phases_(2 * halfOf(kMostPositions.width + window_.width), 2 * halfOf(kMostPositions.height + window_.height)),
      tiltedSums_(sums_.columns + 1, kMostPositions.height + window_.height + 2),
      deviations_(kMostPositions.width, kMostPositions.height),
      norms_(kMostPositions.width, kMostPositions.height),
      mask_(kMostPositions.width, kMostPositions.height),
      classifiers_(cascade, thresholdFactor(window_), [](const CascadeRectangle& rectangle) { return rectangle; }),
      phaseClassifiers_(tilted_ ? Cascade{} : cascade, thresholdFactor(window_), [this](CascadeRectangle rectangle) {
          // Columns and rows of even numbers come first, those of odd ones after them. A corner that overtakes its
          // opposite turns the sign of the sum.
          const auto turn = [&](int32_t& first, int32_t& count, int32_t phase) {
              const int32_t from = first / 2 + first % 2 * phase, last = first + count;
              const int32_t to = last / 2 + last % 2 * phase;
              first = std::min(from, to);
              count = std::abs(to - from);
              if (to < from)
                  rectangle.weight = -rectangle.weight;
          };
          turn(rectangle.place.x, rectangle.place.width, phases_.columns / 2);
          turn(rectangle.place.y, rectangle.place.height, phases_.rows() / 2);
          return rectangle;
      }) {}

void WindowScan::scan(const uint8_t* pixels, int32_t step, RoiSize positions, int32_t spacing,
                      std::vector<ImagePoint>& found) {
    sumPixels(pixels, step, positions);
    const int32_t apart = tilted_ ? 1 : spacing;
    const RoiSize grid{(positions.width + apart - 1) / apart, (positions.height + apart - 1) / apart};
    if (apart == 2)
        separatePhases(positions);
    computeNorms(grid, apart);
    // Every position of the grid, or every second one of every second row.
    const int32_t every = spacing / apart;
    for (int32_t y = 0; y < grid.height; ++y)
        for (int32_t x = 0; x < grid.width; ++x)
            mask_.row(y)[x] = static_cast<uint8_t>(((x | y) & (every - 1)) == 0);
    if (applyStages(grid, apart) == 0)
        return;
    for (int32_t y = 0; y < grid.height; ++y)
        for (int32_t x = 0; x < grid.width; ++x)
            if (mask_.at(x, y))
                found.push_back({x * apart, y * apart});
}

void WindowScan::sumPixels(const uint8_t* pixels, int32_t step, RoiSize positions) {
    const RoiSize size{positions.width + window_.width - 1, positions.height + window_.height - 1};
    callLibrary("vekiSqrIntegral_8u32s_C1R", vekiSqrIntegral_8u32s_C1R, pixels, step, sums_.row(0), sums_.step(),
                squares_.row(0), squares_.step(), size, 0, 0);
    if (tilted_)  // below a row that is not used, for tilted rectangles are a row too low
        callLibrary("vekiTiltedIntegral_8u32s_C1R", vekiTiltedIntegral_8u32s_C1R, pixels, step, tiltedSums_.row(1),
                    tiltedSums_.step(), size, 0);
}

void WindowScan::separatePhases(RoiSize positions) {
    const int32_t columns = phases_.columns / 2, rows = positions.height + window_.height;
    const int32_t phaseRows = phases_.rows() / 2;
    const int32_t used = (positions.width + window_.width) / 2;
    for (int32_t y = 0; y < rows; ++y) {
        const int32_t* const from = sums_.row(y);
        int32_t* const even = phases_.row(y / 2 + y % 2 * phaseRows);
        int32_t* const odd = even + columns;
        for (int32_t x = 0; x < used; ++x) {
            even[x] = from[2 * x];
            odd[x] = from[2 * x + 1];
        }
        if ((positions.width + window_.width) % 2)
            even[used] = from[2 * used];
    }
}

void WindowScan::computeNorms(RoiSize grid, int32_t spacing) {
    for (int32_t y = 0; y < grid.height; ++y) {
        callLibrary("vekiRectStdDev_32s_C1RSfs", vekiRectStdDev_32s_C1RSfs, sums_.row(y * spacing), sums_.step(),
                    squares_.row(y * spacing), squares_.step(), deviations_.row(0), deviations_.step(),
                    RoiSize{(grid.width - 1) * spacing + 1, 1}, innerOf(window_), -kDeviationScale);
        const int32_t* const deviations = deviations_.row(0);
        float* const norms = norms_.row(y);
        for (int32_t x = 0; x < grid.width; ++x) {
            const int32_t deviation = deviations[x * spacing];
            norms[x] = deviation == 0 ? kDeviationOne : static_cast<float>(deviation);
        }
    }
}

int32_t WindowScan::applyStages(RoiSize grid, int32_t spacing) {
    int32_t passed = 0;
    auto& sums = spacing == 2 ? phases_ : sums_;
    for (const StageClassifiers::Stage& stage : (spacing == 2 ? phaseClassifiers_ : classifiers_).stages()) {
        if (tilted_)
            callLibrary("vekiApplyMixedHaarClassifier_32s32f_C1R", vekiApplyMixedHaarClassifier_32s32f_C1R, sums.row(0),
                        sums.step(), tiltedSums_.row(0), tiltedSums_.step(), norms_.row(0), norms_.step(), mask_.row(0),
                        mask_.step(), grid, &passed, stage.threshold, stage.classifier.get());
        else
            callLibrary("vekiApplyHaarClassifier_32s32f_C1R", vekiApplyHaarClassifier_32s32f_C1R, sums.row(0),
                        sums.step(), norms_.row(0), norms_.step(), mask_.row(0), mask_.step(), grid, &passed,
                        stage.threshold, stage.classifier.get());
        if (passed == 0)
            break;
    }
    return passed;
}
