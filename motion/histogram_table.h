// The values, or changes, that a pixel had, with how often it had them. The most frequent ones come first.
#pragma once

#include "histogram_model.h"
#include "simd.h"

namespace VEKCV_VARIANT {

/** A table in the memory of a model. Its entries end before the first one with a frequency of 0. */
template <const TableSize& kSize, int32_t kFeatures>
class HistogramTable {
  public:
    using Entry = HistogramEntry<kFeatures>;

    explicit HistogramTable(Entry* entries) : entries_(entries) {}

    /** Whether a pixel was background at least as often as not, in the entries within the tolerance of its features. */
    HWY_INLINE bool isBackground(const uint8_t* features, float tolerance) const {
        float frequency = 0, background = 0;
        for (int32_t i = 0; i < kSize.entries && entries_[i].frequency > 0; ++i)
            if (isNear(entries_[i], features, tolerance)) {
                frequency += entries_[i].frequency;
                background += entries_[i].background;
            }
        return frequency > 0 && 2 * background >= frequency;
    }

    /** Adds an observation, which weighs as much as the rate says; all others weigh less by that. */
    HWY_INLINE void learn(const uint8_t* features, bool isBackground, float rate, float tolerance) {
        constexpr int32_t kNone = -1;
        const float background = isBackground ? 1.0F : 0.0F;
        int32_t matched = kNone, count = 0;
        for (; count < kSize.capacity && entries_[count].frequency > 0; ++count) {
            Entry& entry = entries_[count];
            const bool isMatch = matched == kNone && isNear(entry, features, tolerance);
            if (isMatch)
                matched = count;
            entry.frequency += ((isMatch ? 1.0F : 0.0F) - entry.frequency) * rate;
            entry.background += ((isMatch ? background : 0.0F) - entry.background) * rate;
        }
        while (count > 0 && entries_[count - 1].frequency < kForgotten)
            entries_[--count].frequency = 0;
        if (matched == kNone) {
            matched = HWY_MIN(count, kSize.capacity - 1);
            entries_[matched].frequency = rate;
            entries_[matched].background = background * rate;
            __builtin_memcpy(entries_[matched].features, features, kFeatures);
            if (matched + 1 < kSize.capacity)
                entries_[matched + 1].frequency = 0;
        }
        for (; matched > 0 && entries_[matched].frequency > entries_[matched - 1].frequency; --matched) {
            const Entry before = entries_[matched - 1];
            entries_[matched - 1] = entries_[matched];
            entries_[matched] = before;
        }
    }

    /** Makes all that was seen background, where most of it was foreground; whether that is so. */
    HWY_INLINE bool absorb(float majority) {
        float foreground = 0;
        for (int32_t i = 0; i < kSize.entries && entries_[i].frequency > 0; ++i)
            foreground += entries_[i].frequency - entries_[i].background;
        if (!(foreground > majority))
            return false;
        for (int32_t i = 0; i < kSize.capacity && entries_[i].frequency > 0; ++i)
            entries_[i].background = entries_[i].frequency;
        return true;
    }

  private:
    static constexpr float kForgotten = 1.0F / 65536;

    HWY_INLINE static bool isNear(const Entry& entry, const uint8_t* features, float tolerance) {
        bool isNear = true;
        for (int32_t i = 0; i < kFeatures; ++i) {
            const int32_t difference = entry.features[i] - features[i];
            isNear &= static_cast<float>(difference < 0 ? -difference : difference) <= tolerance;
        }
        return isNear;
    }

    Entry* entries_;
};

}  // namespace VEKCV_VARIANT
