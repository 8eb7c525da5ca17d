// The exports of optical flow by element type, and what calls of them give.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "flow_scenes.h"

namespace flow {

template <typename T, auto kInit, auto kFollowWith, auto kRelease>
struct Form {
    using Pixel = T;
    static constexpr auto kInitAlloc = kInit;
    static constexpr auto kFollow = kFollowWith;
    static constexpr auto kFree = kRelease;
};
using Forms = ::testing::Types<
    Form<uint8_t, vekiOpticalFlowPyrLKInitAlloc_8u_C1R, vekiOpticalFlowPyrLK_8u_C1R, vekiOpticalFlowPyrLKFree_8u_C1R>,
    Form<uint16_t, vekiOpticalFlowPyrLKInitAlloc_16u_C1R, vekiOpticalFlowPyrLK_16u_C1R,
         vekiOpticalFlowPyrLKFree_16u_C1R>,
    Form<float, vekiOpticalFlowPyrLKInitAlloc_32f_C1R, vekiOpticalFlowPyrLK_32f_C1R, vekiOpticalFlowPyrLKFree_32f_C1R>>;

/** The places, flags and errors of all points. */
struct Results {
    Points points;
    std::vector<int8_t> found;
    std::vector<float> errors;

    explicit Results(const Points& guesses) : points(guesses), found(guesses.size(), 77), errors(guesses.size(), 77) {}
    size_t foundCount() const { return size_t(std::count(found.begin(), found.end(), 1)); }
};

inline ::testing::AssertionResult isSame(const Result& expected, const Results& actual, size_t i) {
    if (sameElement(expected.point.x, actual.points[i].x) && sameElement(expected.point.y, actual.points[i].y) &&
        expected.found == actual.found[i] && sameElement(expected.error, actual.errors[i]))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "point " << i << ": expected (" << expected.point.x << ", "
                                         << expected.point.y << ") " << +expected.found << " " << expected.error
                                         << ", got (" << actual.points[i].x << ", " << actual.points[i].y << ") "
                                         << +actual.found[i] << " " << actual.errors[i];
}

inline ::testing::AssertionResult areSame(const Results& expected, const Results& actual) {
    for (size_t i = 0; i < expected.points.size(); ++i)
        if (const auto same = isSame({expected.points[i], expected.found[i], expected.errors[i]}, actual, i); !same)
            return same;
    return ::testing::AssertionSuccess();
}

template <typename Form>
class FlowTest : public ::testing::Test {
  protected:
    using Pixel = typename Form::Pixel;
    struct Release {
        void operator()(OpticalFlowState* state) const { EXPECT_EQ(StatusOk, Form::kFree(state)); }
    };
    using State = std::unique_ptr<OpticalFlowState, Release>;

    static State stateFor(RoiSize roi, int32_t windowSize) {
        OpticalFlowState* state = nullptr;
        EXPECT_EQ(StatusOk, Form::kInitAlloc(&state, roi, windowSize));
        return State(state);
    }
    static Status follow(const Pyramid& previous, const Pyramid& next, const Points& from, Results& results,
                         const Options& options, const State& state) {
        return Form::kFollow(&previous, &next, from.data(), results.points.data(), results.found.data(),
                             results.errors.data(), int32_t(from.size()), options.windowSize, options.maxLevel,
                             options.maxIterations, options.threshold, state.get());
    }
    static Results followed(Levels<Pixel>& previous, Levels<Pixel>& next, const Points& from, const Points& guesses,
                            const Options& options) {
        Results results(guesses);
        EXPECT_EQ(StatusOk, follow(previous.record(), next.record(), from, results, options,
                                   stateFor(previous.sizes[0], options.windowSize)));
        return results;
    }
    static void expectDefinition(Levels<Pixel>& previous, Levels<Pixel>& next, const Points& from,
                                 const Points& guesses, const Options& options) {
        const Results results = followed(previous, next, from, guesses, options);
        for (size_t i = 0; i < from.size(); ++i)
            ASSERT_TRUE(isSame(flow::follow(previous, next, from[i], guesses[i], options), results, i))
                << "from (" << from[i].x << ", " << from[i].y << ")";
        for (const Levels<Pixel>* const levels : {&previous, &next})
            for (int k = 0; k < levels->count(); ++k)
                ASSERT_TRUE(levels->image(k).guardsIntact());
    }
    /** Two pictures of a scene, the second one shifted, each with levels 0 to 3. */
    static std::pair<Levels<Pixel>, Levels<Pixel>> shiftedPair(RoiSize roi, double dx, double dy, uint32_t seed = 1) {
        const Scene scene(seed);
        return {pyramidOf(picture<Pixel>(scene, roi, 0, 0), 3), pyramidOf(picture<Pixel>(scene, roi, dx, dy), 3)};
    }
};

}  // namespace flow
