// Frames of a static camera, as benchmarks of models of the background see them.
#pragma once

#include <algorithm>
#include <random>

#include "export_row.h"

namespace bench {

constexpr int32_t kFrames = 8;
/** Models take hundreds of bytes for each pixel, all in one block. */
constexpr int64_t kMostModelPixels = int64_t{1920} * 1080;

/** Draws frames of a scene with noise, in which an object moves. The frames are one below the other. */
inline void drawFrames(const Operand& frames, RoiSize size) {
    std::mt19937 random(1);
    std::normal_distribution<float> noise(0, 5);
    const int32_t channels = frames.channels, objectWidth = std::max(size.width / 8, 1);
    uint8_t* pixel = pointerTo<uint8_t>(frames);
    for (int32_t frame = 0; frame < kFrames; ++frame)
        for (int32_t y = 0; y < size.height; ++y)
            for (int32_t x = 0; x < size.width; ++x) {
                const int32_t left = frame * size.width / kFrames;
                const bool isObject =
                    x >= left && x < left + objectWidth && y >= size.height / 3 && y < size.height / 2;
                const int32_t tile = (x / 16 + y / 16) % 3 * 40;
                for (int32_t c = 0; c < channels; ++c)
                    *pixel++ = static_cast<uint8_t>(std::clamp(
                        static_cast<float>(isObject ? 210 - tile : 50 + tile) + noise(random), 0.0F, 255.0F));
            }
}

/** Memory for the frames of a scene and for the results of a model. */
inline std::vector<Operand> sceneOperands(RoiSize size, int32_t channels) {
    return {Operand::make(Role::kBuffer, Element::k8u, channels, {size.width, size.height * kFrames}),
            Operand::make(Role::kDestination, Element::k8u, channels, size),
            Operand::make(Role::kBuffer, Element::k8u, 1, size)};
}

/** The frame that follows the one before, round and round. */
class NextFrame {
  public:
    NextFrame(const Operand& frames, RoiSize size)
        : first_(pointerTo<uint8_t>(frames)), bytes_(ptrdiff_t{frames.step} * size.height) {}

    uint8_t* operator()() { return first_ + (number_++ % kFrames) * bytes_; }

  private:
    uint8_t* first_;
    ptrdiff_t bytes_;
    int32_t number_ = 0;
};

/** A model that the first call makes, of the first frame, and that has learned some frames when it is measured. */
template <auto InitAlloc, auto Free, typename Parameters, typename State>
class Model {
  public:
    template <typename Learn>
    State* get(const uint8_t* first, int32_t step, RoiSize size, const Learn& learn) {
        if (state_ == nullptr) {
            const Parameters parameters{};
            State* state = nullptr;
            expectOk(InitAlloc(first, step, size, &parameters, &state), nameOf<InitAlloc>());
            state_.reset(state, Free);
            constexpr int32_t kLearned = 60;
            for (int32_t frame = 0; frame < kLearned; ++frame)
                learn(state);
        }
        return state_.get();
    }

  private:
    std::shared_ptr<State> state_;
};

}  // namespace bench
