#include "super_resolution.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>

#include "enlarge.h"
#include "library_call.h"
#include "table.h"

namespace {

// Pixels of the estimate beyond the picture, on every side: for what frames show that are shifted, and the blocks of
// pixels at their edges. Pixels of frames whose block lies farther out do not take part.
constexpr int32_t kMargin = 8;
constexpr int32_t kBlock = 3;    // side of the blocks that a pixel of a frame is computed from
constexpr int32_t kPhases = 32;  // shifts are rounded to this part of a pixel of the estimate
constexpr int32_t kSteps = 30;
// Differences beyond these count by their amount rather than their square, in parts of the range of pixels: what does
// not fit the other frames, as something that moves, and edges.
constexpr float kLargestNoise = 0.05f, kLeastEdge = 0.008f;
constexpr size_t kWeights = 256;

/** The weights of a block of pixels in a pixel of a frame, for each fraction of the shift across and down. */
std::vector<float> pointSpreads() {
    const auto weights = [](int32_t phase) {
        const float part = static_cast<float>(phase) / kPhases;
        return std::array<float, kBlock>{(1 - part) / 2, 0.5f, part / 2};
    };
    std::vector<float> table;
    for (int32_t down = 0; down < kPhases; ++down)
        for (int32_t across = 0; across < kPhases; ++across)
            for (const float row : weights(down))
                for (const float column : weights(across))
                    table.push_back(row * column);
    return table;
}

struct FreeState {
    void operator()(SrhnState* state) const { vekiSRHNFree_PSF3x3(state); }
};
using State = std::unique_ptr<SrhnState, FreeState>;

State makeState() {
    SrhnState* state = nullptr;
    const std::vector<float> table = pointSpreads();
    callLibrary("vekiSRHNInitAlloc_PSF3x3", vekiSRHNInitAlloc_PSF3x3, &state, table.data(), kPhases * kPhases);
    return State(state);
}

/** The pixels of one channel of a frame, and where they lie in the estimate. */
template <typename T>
struct Samples {
    std::vector<T> values;
    std::vector<uint32_t> offsets;  // of the first pixel of the block
    std::vector<uint16_t> spreads;  // the same for all pixels of a frame
    int32_t count() const { return static_cast<int32_t>(values.size()); }
};

template <typename T>
Samples<T> samplesOf(const ShiftedFrame& frame, int32_t channel, const Table<float>& estimate) {
    const Picture& picture = frame.picture;
    const auto left = std::lround(2 * kPhases * frame.shiftX), top = std::lround(2 * kPhases * frame.shiftY);
    const auto fraction = [](long shift) { return ((shift % kPhases) + kPhases) % kPhases; };
    const auto spread = static_cast<uint16_t>(fraction(top) * kPhases + fraction(left));
    const auto whole = [&](long shift) { return (shift - fraction(shift)) / kPhases + kMargin; };
    const auto fits = [](int64_t place, int32_t size) { return place >= 0 && place <= size - kBlock; };
    Samples<T> samples;
    for (int32_t y = 0; y < picture.height; ++y)
        for (int32_t x = 0; x < picture.width; ++x) {
            const int64_t column = 2 * int64_t{x} + whole(left), row = 2 * int64_t{y} + whole(top);
            if (!fits(column, estimate.columns) || !fits(row, estimate.rows()))
                continue;
            samples.values.push_back(
                picture.pixels<T>()[(ptrdiff_t{y} * picture.width + x) * picture.channels + channel]);
            samples.offsets.push_back(static_cast<uint32_t>(row * estimate.columns + column));
        }
    samples.spreads.assign(samples.values.size(), spread);
    return samples;
}

/** Fits an estimate of one channel to the samples of all frames. */
template <typename T>
class Solver {
  public:
    Solver(const State& state, std::vector<Samples<T>> frames, Table<float> estimate, double smoothness)
        : state_(state),
          frames_(std::move(frames)),
          estimate_(std::move(estimate)),
          smoothness_(static_cast<float>(smoothness)) {
        // Of large differences the squares grow like their amounts: their weights fall.
        const float largestNoise = kLargestNoise * kRange;
        for (size_t i = 0; i < kWeights; ++i)
            weights_[i] = std::min(1.f, largestNoise / (static_cast<float>(i) / kIndex + 1e-6f));
        std::ranges::fill(curvature_.entries, 8 * smoothness_ + 1e-6f);
        // How much a change of each pixel changes all samples.
        for (const Samples<T>& samples : frames_) {
            const std::vector<float> ones(samples.values.size(), 1.f);
            scatter(samples, ones.data(), std::vector<uint8_t>(ones.size()), curvature_);
        }
    }

    const Table<float>& solve() {
        // Each step begins beyond the estimate, by some of the step before (Nesterov 1983).
        Table<float> last = estimate_;
        double momentum = 1;
        for (int32_t i = 0; i < kSteps; ++i) {
            const double next = (1 + std::sqrt(1 + 4 * momentum * momentum)) / 2;
            const auto beyond = static_cast<float>((momentum - 1) / next);
            momentum = next;
            for (size_t j = 0; j < last.entries.size(); ++j) {
                const float pixel = estimate_.entries[j];
                estimate_.entries[j] += beyond * (pixel - last.entries[j]);
                last.entries[j] = pixel;
            }
            step();
        }
        return estimate_;
    }

  private:
    static constexpr float kRange = std::numeric_limits<T>::max();
    static constexpr float kIndex = 255 / kRange;  // from a difference to the index of its weight

    void scatter(const Samples<T>& samples, const float* residuals, const std::vector<uint8_t>& weights,
                 Table<float>& to) {
        callLibrary("vekiSRHNUpdateGradient_PSF3x3_32f_C1R", vekiSRHNUpdateGradient_PSF3x3_32f_C1R, to.entries.data(),
                    to.step(), samples.offsets.data(), samples.spreads.data(), residuals, weights.data(),
                    samples.count(), weights_.data(), state_.get());
    }

    void computeResiduals(const Samples<T>& samples) {
        residuals_.resize(samples.values.size());
        if constexpr (sizeof(T) == 1)
            callLibrary("vekiSRHNCalcResidual_PSF3x3_8u32f_C1R", vekiSRHNCalcResidual_PSF3x3_8u32f_C1R,
                        estimate_.entries.data(), estimate_.step(), samples.values.data(), samples.offsets.data(),
                        samples.spreads.data(), residuals_.data(), samples.count(), state_.get());
        else
            callLibrary("vekiSRHNCalcResidual_PSF3x3_16u32f_C1R", vekiSRHNCalcResidual_PSF3x3_16u32f_C1R,
                        estimate_.entries.data(), estimate_.step(), samples.values.data(), samples.offsets.data(),
                        samples.spreads.data(), residuals_.data(), samples.count(), state_.get());
        weightIndices_.resize(residuals_.size());
        std::ranges::transform(residuals_, weightIndices_.begin(), [](float residual) {
            return static_cast<uint8_t>(std::min(std::abs(residual) * kIndex, float{kWeights - 1}));
        });
    }

    /** Adds the slope of the smoothness: of the square of differences between neighbours, or of their amount. */
    void addRoughness() {
        const float leastEdge = kLeastEdge * kRange;
        const int32_t columns = estimate_.columns, rows = estimate_.rows();
        const auto compare = [&](float* slope, const float* pixel, ptrdiff_t to) {
            const float difference = smoothness_ * std::clamp(pixel[0] - pixel[to], -leastEdge, leastEdge);
            slope[0] += difference;
            slope[to] -= difference;
        };
        for (int32_t y = 0; y < rows; ++y) {
            const float* const row = estimate_.row(y);
            float* const slopes = gradient_.row(y);
            for (int32_t x = 0; x < columns - 1; ++x)
                compare(slopes + x, row + x, 1);
            for (int32_t x = 0; x < columns && y < rows - 1; ++x)
                compare(slopes + x, row + x, columns);
        }
    }

    void step() {
        std::ranges::fill(gradient_.entries, 0.f);
        for (const Samples<T>& samples : frames_) {
            computeResiduals(samples);
            scatter(samples, residuals_.data(), weightIndices_, gradient_);
        }
        addRoughness();
        for (size_t i = 0; i < estimate_.entries.size(); ++i)
            estimate_.entries[i] -= gradient_.entries[i] / curvature_.entries[i];
    }

    const State& state_;
    std::vector<Samples<T>> frames_;
    Table<float> estimate_, gradient_{estimate_.columns, estimate_.rows()};
    Table<float> curvature_{estimate_.columns, estimate_.rows()};
    float smoothness_;
    std::array<float, kWeights> weights_{};
    std::vector<float> residuals_;
    std::vector<uint8_t> weightIndices_;
};

/** A channel of a picture with a margin that its edge pixels continue. */
template <typename T>
Table<float> withMargin(const Picture& picture, int32_t channel) {
    Table<float> result(picture.width + 2 * kMargin, picture.height + 2 * kMargin);
    for (int32_t y = 0; y < result.rows(); ++y) {
        const ptrdiff_t row = ptrdiff_t{std::clamp(y - kMargin, 0, picture.height - 1)} * picture.width;
        for (int32_t x = 0; x < result.columns; ++x) {
            const int32_t column = std::clamp(x - kMargin, 0, picture.width - 1);
            result.row(y)[x] = picture.pixels<T>()[(row + column) * picture.channels + channel];
        }
    }
    return result;
}

template <typename T>
T rounded(float value) {
    return static_cast<T>(std::lrint(std::clamp(value, 0.f, float{std::numeric_limits<T>::max()})));
}

template <typename T>
Picture superResolvedOf(const std::vector<ShiftedFrame>& frames, double smoothness) {
    const State state = makeState();
    Picture result = enlarged(frames[0].picture);
    for (int32_t channel = 0; channel < result.channels; ++channel) {
        Table<float> start = withMargin<T>(result, channel);
        std::vector<Samples<T>> samples;
        for (const ShiftedFrame& frame : frames)
            if (Samples<T> some = samplesOf<T>(frame, channel, start); some.count() > 0)
                samples.push_back(std::move(some));
        Solver<T> solver(state, std::move(samples), std::move(start), smoothness);
        const Table<float>& estimate = solver.solve();
        T* to = result.pixels<T>() + channel;
        for (int32_t y = 0; y < result.height; ++y)
            for (int32_t x = 0; x < result.width; ++x, to += result.channels)
                *to = rounded<T>(estimate.at(x + kMargin, y + kMargin));
    }
    return result;
}

}  // namespace

bool canBeSuperResolved(const Picture& frame) {
    // Tables have less than 2^31 entries: four for a pixel.
    return (int64_t{frame.width} + kMargin) * (int64_t{frame.height} + kMargin) < INT32_MAX / 4;
}

Picture superResolved(const std::vector<ShiftedFrame>& frames, double smoothness) {
    return frames[0].picture.bits == 16 ? superResolvedOf<uint16_t>(frames, smoothness)
                                        : superResolvedOf<uint8_t>(frames, smoothness);
}
