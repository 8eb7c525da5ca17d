// Optical flow: points followed from image to image by windows around them, from level to level of two pyramids.
#include <cmath>
#include <limits>

#include "bind.h"
#include "check.h"
#include "flow_window.h"
#include "parallel.h"

namespace VEKCV_VARIANT {
namespace {

/** Two pyramids, as a call uses them. */
template <typename T>
struct FlowPyramids {
    const Pyramid &previous, &next;
    int32_t topLevel;

    FlowPyramids(const Pyramid& first, const Pyramid& second, int32_t maxLevel)
        : previous(first),
          next(second),
          topLevel(HWY_MAX(HWY_MIN(maxLevel, HWY_MIN(first.levelCount, second.levelCount)), 0)) {}

    static FlowLevel<T> levelOf(const Pyramid& pyramid, int32_t level) {
        return {{static_cast<const T*>(pyramid.levelImages[level]), pyramid.levelSteps[level]},
                pyramid.levelSizes[level]};
    }

    bool haveImages() const {
        return forAll([](const FlowLevel<T>& a, const FlowLevel<T>& b) {
            return a.image.pixels != nullptr && b.image.pixels != nullptr;
        });
    }
    bool haveSizesWithin(RoiSize roi) const {
        const RoiSize base = previous.levelSizes[0];
        return base.width <= roi.width && base.height <= roi.height &&
               forAll([](const FlowLevel<T>& a, const FlowLevel<T>& b) {
                   return a.size.width == b.size.width && a.size.height == b.size.height && a.size.width >= 1 &&
                          a.size.height >= 1;
               });
    }
    bool haveLongSteps() const {
        return forAll([](const FlowLevel<T>& a, const FlowLevel<T>& b) {
            return Check().stepLengths(a.size.width, a.image, b.image) == StatusOk;
        });
    }
    bool haveStepMultiples() const {
        return forAll([](const FlowLevel<T>& a, const FlowLevel<T>& b) {
            return Check().stepMultiples(a.image, b.image) == StatusOk;
        });
    }

  private:
    /** Whether rule(previous, next) holds for all levels in use. */
    template <typename Rule>
    bool forAll(const Rule& rule) const {
        for (int32_t level = 0; level <= topLevel; ++level)
            if (!rule(levelOf(previous, level), levelOf(next, level)))
                return false;
        return true;
    }
};

struct Criteria {
    int32_t maxIterations;
    float threshold;
};

/** The smaller eigenvalue that a pixel of a window has at least on average, where pixels are from 0 to 1. */
constexpr float kLeastEigenvalue = 1e-6F;

/** How the sums over a window lead to a step. */
class StepRule {
  public:
    template <typename T>
    static bool isWeak(const FlowMatrix& matrix, float area) {
        constexpr float kRange = std::is_same_v<T, float> ? 1.0F : static_cast<float>(std::numeric_limits<T>::max());
        const float difference = matrix.xx - matrix.yy;
        const float root = std::sqrt(difference * difference + 4 * (matrix.xy * matrix.xy));
        const float smaller = (matrix.xx + matrix.yy - root) * 0.5F;
        return !(smaller >= kLeastEigenvalue * (kRange * kRange) * area && determinant(matrix) > 0);
    }

    explicit StepRule(const FlowMatrix& matrix) : matrix_(matrix), determinant_(determinant(matrix)) {}

    ImagePoint32f step(float mismatchX, float mismatchY) const {
        return {(matrix_.yy * mismatchX - matrix_.xy * mismatchY) / determinant_,
                (matrix_.xx * mismatchY - matrix_.xy * mismatchX) / determinant_};
    }

  private:
    static float determinant(const FlowMatrix& matrix) { return matrix.xx * matrix.yy - matrix.xy * matrix.xy; }

    FlowMatrix matrix_;
    float determinant_;
};

/** Where a point is, and how it was found. */
struct Followed {
    ImagePoint32f point;
    bool isFound;
    float error;
};

/** Judged in double, which holds all widths. */
bool isInside(ImagePoint32f point, RoiSize size) {
    return point.x >= 0 && point.y >= 0 && double{point.x} <= double{1} * size.width - 1 &&
           double{point.y} <= double{1} * size.height - 1;
}

template <typename T>
Followed follow(const FlowPyramids<T>& pyramids, const Criteria& criteria, FlowWindow& window, ImagePoint32f from,
                ImagePoint32f guess) {
    ImagePoint32f point = guess;
    for (int32_t k = pyramids.topLevel; k >= 0; --k) {
        const auto previous = pyramids.levelOf(pyramids.previous, k), next = pyramids.levelOf(pyramids.next, k);
        const auto scale = static_cast<float>(pyramids.previous.levelScales[k]);
        const FlowMatrix matrix = window.keep(previous, FlowPlace::of(from.x * scale, from.y * scale, previous.size));
        if (StepRule::isWeak<T>(matrix, window.area())) {
            if (k == 0)
                return {point, false, 0};
            continue;
        }
        const StepRule rule(matrix);
        float x = point.x * scale, y = point.y * scale;
        for (int32_t i = 0; i < criteria.maxIterations; ++i) {
            float mismatchX, mismatchY;
            window.mismatch(next, FlowPlace::of(x, y, next.size), mismatchX, mismatchY);
            const ImagePoint32f step = rule.step(mismatchX, mismatchY);
            x += step.x;
            y += step.y;
            // A comparison with NaN is false.
            if (!(std::sqrt(step.x * step.x + step.y * step.y) >= criteria.threshold))
                break;
        }
        point = {x / scale, y / scale};
        if (k == 0) {
            if (!isInside(point, next.size))
                return {point, false, 0};
            return {point, true, window.difference(next, FlowPlace::of(x, y, next.size)) / window.area()};
        }
    }
    return {point, false, 0};
}

/** From so many pixels on, in the windows of all points, the points are shared among threads. */
constexpr ParallelFrom kParallelWindows{16384};

template <typename T>
Status opticalFlow(const Pyramid* previous, const Pyramid* next, const ImagePoint32f* previousPoints,
                   ImagePoint32f* nextPoints, int8_t* found, float* error, int32_t pointCount, int32_t windowSize,
                   int32_t maxLevel, int32_t maxIterations, float threshold, OpticalFlowState* flowState) {
    const auto* const state = reinterpret_cast<const FlowRecord*>(flowState);
    if (Status status = Check().pointers(previous, next, previousPoints, nextPoints, found, error, state))
        return status;
    if (Status status = Check().pointers(previous->levelImages, previous->levelSizes, previous->levelScales,
                                         previous->levelSteps, next->levelImages, next->levelSizes, next->levelSteps))
        return status;
    const FlowPyramids<T> pyramids(*previous, *next, maxLevel);
    if (Status status = Check()
                            .require(pyramids.haveImages(), StatusNullPointer)
                            .require(pointCount >= 1, StatusSizeError)
                            .require(windowSize == state->windowSize, StatusSizeError)
                            .require(maxIterations >= 1, StatusSizeError)
                            .require(pyramids.haveSizesWithin(state->roi), StatusSizeError)
                            .require(pyramids.haveLongSteps(), StatusStepError)
                            .require(pyramids.haveStepMultiples(), StatusStepNotMultiple)
                            .require(maxLevel >= 0, StatusBadArgument)
                            .require(threshold >= 0, StatusBadArgument)
                            .require(state->elementBytes == sizeof(T), StatusBadArgument))
        return status;

    // Points differ in what they take, so a thread that is done with a few goes on with the next ones.
    constexpr int32_t kPixelsAtOnce = 4096;
    const int32_t area = windowSize * windowSize, atOnce = HWY_MAX(kPixelsAtOnce / area, 1);
    const int32_t batches = (pointCount - 1) / atOnce + 1;
    int32_t nextBatch = 0;
    const auto followBatches = [&](int32_t thread, int32_t /*firstRow*/, int32_t /*rowCount*/) {
        FlowWindow window(*state, thread);
        for (;;) {
            const int32_t batch = __atomic_fetch_add(&nextBatch, 1, __ATOMIC_RELAXED);
            if (batch >= batches)
                return;
            const int32_t first = batch * atOnce, count = HWY_MIN(atOnce, pointCount - first);
            for (int32_t i = first; i < first + count; ++i) {
                const Followed result =
                    follow(pyramids, {maxIterations, threshold}, window, previousPoints[i], nextPoints[i]);
                nextPoints[i] = result.point;
                found[i] = result.isFound ? 1 : 0;
                error[i] = result.error;
            }
        }
    };
    const int32_t threads = state->threads;
    const bool isShared = threads > 1 && isForTeam({area, pointCount}, kParallelWindows);
    inUsualModes([&] { forThreadStripes(isShared, threads, followBatches, threads); });
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiOpticalFlowPyrLK_8u_C1R, opticalFlow<uint8_t>);
VEKCV_BIND(vekiOpticalFlowPyrLK_16u_C1R, opticalFlow<uint16_t>);
VEKCV_BIND(vekiOpticalFlowPyrLK_32f_C1R, opticalFlow<float>);
}  // namespace VEKCV_VARIANT
