// Foreground and background by Gaussian mixtures.
#include "bind.h"
#include "check.h"
#include "float_modes.h"
#include "gaussian_group.h"

namespace VEKCV_VARIANT {
namespace {

template <int32_t kChannels, int32_t kLive>
HWY_NOINLINE bool processGroup(const MixtureFrame& frame, GaussianComponent<kChannels>* mixtures, const uint8_t* pixels,
                               uint8_t* background, uint8_t* foreground) {
    MixtureGroup<kChannels, kLive> group(mixtures, pixels);
    if (!group.match(frame))
        return false;
    if constexpr (kLive == kComponents)
        callBody([&] { group.learn(frame); });  // so that it has a stack frame of its own
    else
        group.learn(frame);
    group.rank();
    group.store(frame, mixtures, background, foreground);
    return true;
}

/** Whether a pixel of a group has matched a component, after which all others follow. */
template <int32_t kChannels>
HWY_INLINE bool isLive(const GaussianComponent<kChannels>* mixtures, int32_t component) {
    int32_t counts = 0;
    for (int32_t lane = 0; lane < kPixelLanes; ++lane)
        counts |= mixtures[lane * kComponents + component].matchCount;
    return counts != 0;
}

template <int32_t kChannels>
HWY_INLINE void processPixels(const MixtureFrame& frame, GaussianComponent<kChannels>* mixtures, const uint8_t* pixels,
                              uint8_t* background, uint8_t* foreground) {
    bool isDone = false;
    if (!isLive<kChannels>(mixtures, 1))
        isDone = processGroup<kChannels, 1>(frame, mixtures, pixels, background, foreground);
    else if (!isLive<kChannels>(mixtures, 2))
        isDone = processGroup<kChannels, 2>(frame, mixtures, pixels, background, foreground);
    else if (!isLive<kChannels>(mixtures, 3))
        isDone = processGroup<kChannels, 3>(frame, mixtures, pixels, background, foreground);
    if (!isDone)
        processGroup<kChannels, kComponents>(frame, mixtures, pixels, background, foreground);
}

/** Fetches the first components of pixels that are processed soon: a model is larger than the caches. */
template <int32_t kChannels>
HWY_INLINE void prefetch(const GaussianComponent<kChannels>* mixtures) {
    constexpr ptrdiff_t kAhead = 32, kLine = 64;
    for (int32_t lane = 0; lane < kPixelLanes; ++lane) {
        const auto* const first = reinterpret_cast<const uint8_t*>(mixtures + (kAhead + lane) * kComponents);
        __builtin_prefetch(first);
        __builtin_prefetch(first + kLine);
    }
}

/** Fewer pixels than a group has, with copies of the last one. */
template <int32_t kChannels>
HWY_NOINLINE void processRest(const MixtureFrame& frame, GaussianComponent<kChannels>* mixtures, const uint8_t* pixels,
                              uint8_t* background, uint8_t* foreground, int32_t count) {
    GaussianComponent<kChannels> mixture[kPixelLanes * kComponents];
    uint8_t pixel[kPixelLanes * kChannels], back[kPixelLanes * kChannels], fore[kPixelLanes];
    for (int32_t i = 0; i < kPixelLanes; ++i) {
        const int32_t from = HWY_MIN(i, count - 1);
        __builtin_memcpy(mixture + i * kComponents, mixtures + from * kComponents, kComponents * sizeof *mixture);
        __builtin_memcpy(pixel + i * kChannels, pixels + from * kChannels, kChannels);
    }
    processPixels<kChannels>(frame, mixture, pixel, back, fore);
    const auto bytes = static_cast<size_t>(count);
    __builtin_memcpy(mixtures, mixture, bytes * kComponents * sizeof *mixture);
    __builtin_memcpy(background, back, bytes * kChannels);
    __builtin_memcpy(foreground, fore, bytes);
}

template <int32_t kChannels>
void processRow(const MixtureFrame& frame, GaussianComponent<kChannels>* mixtures, const uint8_t* pixels,
                uint8_t* background, uint8_t* foreground, int32_t width) {
    for (int32_t x = 0; x < width; x += kPixelLanes) {
        if (x + kPixelLanes <= width) {
            prefetch<kChannels>(mixtures);
            processPixels<kChannels>(frame, mixtures, pixels, background, foreground);
        } else {
            processRest<kChannels>(frame, mixtures, pixels, background, foreground, width - x);
        }
        mixtures += kPixelLanes * kComponents;
        pixels += kPixelLanes * kChannels;
        background += kPixelLanes * kChannels;
        foreground += kPixelLanes;
    }
}

template <int32_t kChannels>
void process(GaussianModel& model, Image<const uint8_t, kChannels> in) {
    const auto frame = MixtureFrame::of(model.record);
    for (int32_t y = 0; y < model.roi.height; ++y) {
        const ptrdiff_t first = ptrdiff_t{y} * model.roi.width;
        processRow<kChannels>(frame, model.mixturesOfRow<kChannels>(y), in.row(y), model.background + first * kChannels,
                              model.foreground + first, model.roi.width);
    }
}

template <int32_t kChannels>
void copyOut(const uint8_t* from, RoiSize roi, Image<uint8_t, kChannels> image) {
    const ptrdiff_t bytes = ptrdiff_t{roi.width} * kChannels;
    for (int32_t y = 0; y < roi.height; ++y)
        __builtin_memcpy(image.row(y), from + y * bytes, static_cast<size_t>(bytes));
}

template <int32_t kChannels>
Status foregroundGaussian(const uint8_t* source, int32_t sourceStep, uint8_t* background, int32_t backgroundStep,
                          uint8_t* foreground, int32_t foregroundStep, RoiSize roi, ForegroundGaussianState* state) {
    const Image<const uint8_t, kChannels> in{source, sourceStep};
    const Image<uint8_t, kChannels> back{background, backgroundStep};
    const Image<uint8_t> fore{foreground, foregroundStep};
    auto* const model = reinterpret_cast<GaussianModel*>(state);
    if (Status status = Check().pointers(in, back, fore, model).roi(roi))
        return status;
    if (Status status = Check()
                            .roiOfState(roi, model->roi)
                            .stepLengths(roi.width, in)
                            .require(model->channels == kChannels, StatusBadArgument))
        return status;
    // Without an overflow: the counter is not reset, and starts over from the least number.
    model->record.frameCounter = static_cast<int32_t>(static_cast<uint32_t>(model->record.frameCounter) + 1);
    inUsualModes([=] { process<kChannels>(*model, in); });
    copyOut(model->foreground, roi, fore);
    copyOut(model->background, roi, back);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiForegroundGaussian_8u_C1R, foregroundGaussian<1>);
VEKCV_BIND(vekiForegroundGaussian_8u_C3R, foregroundGaussian<3>);
}  // namespace VEKCV_VARIANT
