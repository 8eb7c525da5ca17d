#include "optical_flow.h"

#include <cmath>

#include "library_call.h"
#include "work_buffer.h"

namespace {

constexpr int32_t kLevels = 3, kIterations = 30;
constexpr float kRate = 2;
constexpr float kLeastStep = 0.01f, kLargestReturn = 0.5f;  // pixels

Picture halved(const Picture& picture) {
    constexpr int32_t kEightBits = 1, kChannels = 1;  // as the library counts types
    Picture result((picture.width + 1) / 2, (picture.height + 1) / 2, 1, 8);
    const WorkBuffer buffer = workBuffer(vekiPyrDownGetBufSize_Gauss5x5, picture.width, kEightBits, kChannels);
    callLibrary("vekiPyrDown_Gauss5x5_8u_C1R", vekiPyrDown_Gauss5x5_8u_C1R, picture.pixels<uint8_t>(), picture.step(),
                result.pixels<uint8_t>(), result.step(), picture.size(), buffer.get());
    return result;
}

}  // namespace

PicturePyramid::PicturePyramid(Picture grey) {
    Pyramid* record = nullptr;
    callLibrary("vekiPyramidInitAlloc", vekiPyramidInitAlloc, &record, kLevels, grey.size(), kRate);
    record_.reset(record);
    levels_.push_back(std::move(grey));
    while (std::ssize(levels_) <= record->levelCount)
        levels_.push_back(halved(levels_.back()));
    for (size_t i = 0; i < levels_.size(); ++i) {
        record->levelImages[i] = levels_[i].bytes.data();
        record->levelSteps[i] = levels_[i].step();
    }
}

OpticalFlow::OpticalFlow(RoiSize size, int32_t window) : window_(window) {
    OpticalFlowState* state = nullptr;
    callLibrary("vekiOpticalFlowPyrLKInitAlloc_8u_C1R", vekiOpticalFlowPyrLKInitAlloc_8u_C1R, &state, size, window);
    state_.reset(state);
}

OpticalFlow::Places OpticalFlow::placesIn(const PicturePyramid& previous, const PicturePyramid& next,
                                          const std::vector<ImagePoint32f>& points) {
    Places places{points, std::vector<int8_t>(points.size())};  // the points are the first guess
    std::vector<float> errors(points.size());
    callLibrary("vekiOpticalFlowPyrLK_8u_C1R", vekiOpticalFlowPyrLK_8u_C1R, previous.get(), next.get(), points.data(),
                places.points.data(), places.found.data(), errors.data(), static_cast<int32_t>(points.size()), window_,
                kLevels, kIterations, kLeastStep, state_.get());
    return places;
}

std::vector<std::optional<ImagePoint32f>> OpticalFlow::follow(const PicturePyramid& previous,
                                                              const PicturePyramid& next,
                                                              const std::vector<ImagePoint32f>& points) {
    std::vector<std::optional<ImagePoint32f>> result(points.size());
    if (points.empty())
        return result;
    const Places there = placesIn(previous, next, points);
    const Places back = placesIn(next, previous, there.points);
    for (size_t i = 0; i < points.size(); ++i) {
        const float off = std::hypot(back.points[i].x - points[i].x, back.points[i].y - points[i].y);
        if (there.found[i] != 0 && back.found[i] != 0 && off <= kLargestReturn)
            result[i] = there.points[i];
    }
    return result;
}
