// Models of the background by histograms of each pixel.
#pragma once

#include "image.h"

namespace VEKCV_VARIANT {

/** How many values, or changes, of a pixel are kept; the first ones of them, which are the most frequent, classify. */
struct TableSize {
    int32_t levels, entries, capacity;
};
constexpr TableSize kValues{128, 15, 25}, kChanges{64, 25, 40};

/** The share of the frames in which a pixel had some features, and of those in which it was background with them. */
template <int32_t kFeatures>
struct HistogramEntry {
    float frequency;  // 0 behind the last entry
    float background;
    uint8_t features[kFeatures];
};

/** The levels of a pixel's channels; for a change, those of the last frame and those of this one. */
template <int32_t kChannels>
using ValueEntry = HistogramEntry<kChannels>;
template <int32_t kChannels>
using ChangeEntry = HistogramEntry<2 * kChannels>;

/** The object behind a ForegroundHistogramState. All images are packed. */
struct HistogramModel {
    ForegroundHistogramState record;  // the first member, so that both have one address
    int32_t channels;
    RoiSize roi;
    float* reference;   // the background
    uint8_t* previous;  // the frame that was learned last
    uint8_t *values, *changes;
    uint8_t* fillBuffer;

    template <int32_t kChannels>
    ValueEntry<kChannels>* valuesOf(ptrdiff_t pixel) const {
        return reinterpret_cast<ValueEntry<kChannels>*>(values) + pixel * kValues.capacity;
    }
    template <int32_t kChannels>
    ChangeEntry<kChannels>* changesOf(ptrdiff_t pixel) const {
        return reinterpret_cast<ChangeEntry<kChannels>*>(changes) + pixel * kChanges.capacity;
    }
};

}  // namespace VEKCV_VARIANT
