// How models of Gaussian mixtures are made.
#include "bind.h"
#include "check.h"
#include "gaussian_model.h"
#include "state.h"

namespace VEKCV_VARIANT {
namespace {

/** A pixel's mixture: one component around its value, and the others. */
template <int32_t kChannels>
void setMixture(GaussianComponent<kChannels>* mixture, const uint8_t* pixel) {
    constexpr double kVariance = 12.5;
    for (int32_t k = 0; k < kComponents; ++k) {
        mixture[k] = {};
        mixture[k].variance = kVariance;
    }
    mixture->matchCount = 1;
    mixture->weight = 1;
    if constexpr (kChannels == 1)
        mixture->mean = pixel[0];
    else
        for (int32_t c = 0; c < kChannels; ++c)
            mixture->mean[c] = pixel[c];
}

void setDefaults(ForegroundGaussianState& record) {
    record.windowLength = 200;
    record.componentCount = kComponents;
    record.backgroundRatio = 0.7;
    record.matchDeviations = 2.5;
    record.initialDeviation = 15;
    record.initialWeight = 0.05;
    record.initialVariance = 900;
}

template <int32_t kChannels>
void setPixels(const GaussianModel& model, Image<const uint8_t, kChannels> first) {
    const ptrdiff_t width = model.roi.width;
    for (int32_t y = 0; y < model.roi.height; ++y) {
        GaussianComponent<kChannels>* const mixtures = model.mixturesOfRow<kChannels>(y);
        const uint8_t* const row = first.row(y);
        __builtin_memcpy(model.background + y * width * kChannels, row, static_cast<size_t>(width) * kChannels);
        __builtin_memset(model.foreground + y * width, 0, static_cast<size_t>(width));
        for (ptrdiff_t x = 0; x < width; ++x) {
            model.pixelModels[y * width + x] = mixtures + x * kComponents;
            setMixture<kChannels>(mixtures + x * kComponents, row + x * kChannels);
        }
    }
}

template <int32_t kChannels>
Status initAlloc(const uint8_t* source, int32_t sourceStep, RoiSize roi, const ForegroundGaussianParameters* parameters,
                 ForegroundGaussianState** result) {
    const Image<const uint8_t, kChannels> first{source, sourceStep};
    if (Status status = Check().pointers(first, parameters, result).roi(roi).stepLengths(roi.width, first))
        return status;
    constexpr int64_t kMixture = kComponents * int64_t{sizeof(GaussianComponent<kChannels>)};
    const int64_t pixels = int64_t{roi.width} * roi.height;
    if (pixels > INT32_MAX / kMixture)
        return StatusMemoryAllocation;
    const auto count = [](int64_t elements) { return static_cast<int32_t>(elements); };
    Owned<GaussianModel> model;
    if (Status status = newState(model, StateArray{&GaussianModel::pixelModels, count(pixels)},
                                 StateArray{&GaussianModel::background, count(pixels * kChannels)},
                                 StateArray{&GaussianModel::foreground, count(pixels)},
                                 StateArray{&GaussianModel::mixtures, count(pixels * kMixture)}))
        return status;
    model->channels = kChannels;
    model->roi = roi;
    setDefaults(model->record);
    model->record.backgroundImage = model->background;
    model->record.backgroundStep = roi.width * kChannels;
    model->record.foregroundImage = model->foreground;
    model->record.foregroundStep = roi.width;
    model->record.pixelModels = model->pixelModels;
    setPixels<kChannels>(*model, first);
    *result = &model.keep()->record;
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiForegroundGaussianInitAlloc_8u_C1R, initAlloc<1>);
VEKCV_BIND(vekiForegroundGaussianInitAlloc_8u_C3R, initAlloc<3>);
VEKCV_BIND(vekiForegroundGaussianFree_8u_C1R, freeState);
VEKCV_BIND(vekiForegroundGaussianFree_8u_C3R, freeState);
}  // namespace VEKCV_VARIANT
