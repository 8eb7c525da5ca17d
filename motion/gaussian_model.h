// Models of the background by Gaussian mixtures.
#pragma once

#include <type_traits>

#include "image.h"

namespace VEKCV_VARIANT {

/** Gaussians of a pixel. */
constexpr int32_t kComponents = 5;

template <int32_t kChannels>
using GaussianComponent = std::conditional_t<kChannels == 1, GaussianComponentC1, GaussianComponentC3>;

/** The object behind a ForegroundGaussianState. The mixtures are one array, by rows. */
struct GaussianModel {
    ForegroundGaussianState record;  // the first member, so that both have one address
    int32_t channels;
    RoiSize roi;
    void** pixelModels;
    uint8_t *background, *foreground, *mixtures;

    template <int32_t kChannels>
    GaussianComponent<kChannels>* mixturesOfRow(int32_t y) const {
        return reinterpret_cast<GaussianComponent<kChannels>*>(mixtures) + ptrdiff_t{y} * roi.width * kComponents;
    }
};

}  // namespace VEKCV_VARIANT
