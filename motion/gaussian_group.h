// The rules of Gaussian mixtures, for some neighbouring pixels at a time.
#pragma once

#include "gaussian_lanes.h"

namespace VEKCV_VARIANT {

/** What all pixels of a frame have in common. */
struct MixtureFrame {
    bool hasFixedRate;
    double windowLength, backgroundRatio, matchSquare, initialVariance;

    static MixtureFrame of(const ForegroundGaussianState& record) {
        return {record.frameCounter == record.windowLength, double(record.windowLength), record.backgroundRatio,
                record.matchDeviations * record.matchDeviations, record.initialVariance};
    }
};

/** The mean of the squared differences of the channels. */
template <int32_t kChannels>
HWY_INLINE LaneVec meanSquare(const LaneVec (&difference)[kChannels]) {
    const PixelLanes d;
    auto sum = hn::Mul(difference[0], difference[0]);
    for (int32_t c = 1; c < kChannels; ++c)
        sum = hn::Add(sum, hn::Mul(difference[c], difference[c]));
    return kChannels == 1 ? sum : hn::Div(sum, hn::Set(d, double(kChannels)));
}

/**
 * The mixtures of a group of pixels, of which the first kLive components have been matched by a pixel of the group; all
 * others are as they were made.
 */
template <int32_t kChannels, int32_t kLive>
class MixtureGroup {
  public:
    using Component = GaussianComponent<kChannels>;
    using Lanes = ComponentLanes<kChannels>;

    HWY_INLINE MixtureGroup(const Component* mixtures, const uint8_t* pixels) {
        loadPixelLanes<kChannels>(pixels, x_);
        for (int32_t k = 0; k < kLive; ++k)
            components_[k] = Lanes::load(mixtures + k);
    }

    /** Finds the first component of each pixel that it matches; false where that may be one that is not live. */
    HWY_INLINE bool match(const MixtureFrame& frame) {
        const PixelLanes d;
        const auto square = hn::Set(d, frame.matchSquare);
        for (int32_t k = 0; k < kLive; ++k) {
            const auto near = isNear(components_[k], square);
            matched_[k] = k == 0 ? near : hn::And(unmatched_, near);
            unmatched_ = k == 0 ? hn::Not(near) : hn::AndNot(near, unmatched_);
        }
        return kLive == kComponents || hn::AllFalse(d, unmatched_);
    }

    HWY_INLINE void learn(const MixtureFrame& frame) {
        const PixelLanes d;
        const auto one = hn::Set(d, 1.0);
        auto total = components_[0].count;
        for (int32_t k = 1; k < kLive; ++k)
            total = hn::Add(total, components_[k].count);
        const auto divisor = hn::Add(total, one), fixedRate = hn::Set(d, 1 / frame.windowLength);
        Lanes matched = components_[0];
        for (int32_t k = 0; k < kLive; ++k) {
            auto& weight = components_[k].weight;
            const auto step = hn::Sub(hn::IfThenElseZero(matched_[k], one), weight);
            weight = hn::Add(weight, frame.hasFixedRate ? hn::Mul(step, fixedRate) : hn::Div(step, divisor));
            matched.setWhere(matched_[k], components_[k]);
        }
        matched.count = hn::Min(hn::Add(matched.count, one), hn::Set(d, double(INT32_MAX)));
        const auto rate =
            hn::Div(one, frame.hasFixedRate ? hn::Mul(hn::Set(d, frame.windowLength), matched.weight) : matched.count);
        LaneVec difference[kChannels];
        for (int32_t c = 0; c < kChannels; ++c) {
            difference[c] = hn::Sub(x_[c], matched.mean[c]);
            matched.mean[c] = hn::Add(matched.mean[c], hn::Mul(difference[c], rate));
        }
        matched.variance = hn::Add(matched.variance, hn::Mul(hn::Sub(meanSquare(difference), matched.variance), rate));
        for (int32_t k = 0; k < kLive; ++k)
            components_[k].setWhere(matched_[k], matched);
        if constexpr (kLive == kComponents)
            if (!hn::AllFalse(d, unmatched_))
                replaceLast(frame);
    }

    /** Sorts the components of each pixel: those of the greatest weight for their deviation come first. */
    HWY_INLINE void rank() {
        if (isRanked())
            return;
        if constexpr (kLive * kChannels > 3) {
            sort();
        } else {
            MixtureGroup sorted = *this;  // so that only the copy has an address, and this object may stay in registers
            sorted.sort();
            *this = sorted;
        }
    }

    HWY_INLINE void store(const MixtureFrame& frame, Component* mixtures, uint8_t* background,
                          uint8_t* foreground) const {
        const PixelLanes d;
        for (int32_t k = 0; k < kLive; ++k)
            components_[k].store(mixtures + k);
        for (int32_t c = 0; c < kChannels; ++c)
            storeByteLanes(hn::Add(components_[0].mean[c], hn::Set(d, 0.5)), background + c, kChannels);
        const auto ratio = hn::Set(d, frame.backgroundRatio);
        auto isBackground = matched_[0];
        auto covered = components_[0].weight;
        for (int32_t k = 1; k < kLive; ++k) {
            isBackground = hn::Or(isBackground, hn::AndNot(hn::Gt(covered, ratio), matched_[k]));
            covered = hn::Add(covered, components_[k].weight);
        }
        storeByteLanes(hn::IfThenZeroElse(isBackground, hn::Set(d, 255.0)), foreground);
    }

  private:
    /** Whether all channels are within the greatest deviation from the mean. */
    HWY_INLINE LaneMask isNear(const Lanes& component, LaneVec square) const {
        const auto most = hn::Mul(component.variance, square);
        const auto isNearIn = [&](int32_t c) __attribute__((always_inline)) {
            const auto difference = hn::Sub(component.mean[c], x_[c]);
            return hn::Gt(most, hn::Mul(difference, difference));
        };
        auto near = isNearIn(0);
        for (int32_t c = 1; c < kChannels; ++c)
            near = hn::And(near, isNearIn(c));
        return near;
    }

    HWY_NOINLINE void replaceLast(const MixtureFrame& frame) {
        const PixelLanes d;
        auto& last = components_[kLive - 1];
        last.count = hn::IfThenElse(unmatched_, hn::Set(d, 1.0), last.count);
        last.variance = hn::IfThenElse(unmatched_, hn::Set(d, frame.initialVariance), last.variance);
        for (int32_t c = 0; c < kChannels; ++c)
            last.mean[c] = hn::IfThenElse(unmatched_, x_[c], last.mean[c]);
        auto total = components_[0].count;
        for (int32_t k = 1; k < kLive; ++k)
            total = hn::Add(total, components_[k].count);
        for (auto& component : components_)
            component.weight = hn::IfThenElse(unmatched_, hn::Div(component.count, total), component.weight);
    }

    /**
     * Whether all components are in their order for certain. Squares spare the root and the division; where they differ
     * by less than rounding errors may amount to, this does not tell.
     */
    HWY_INLINE bool isRanked() const {
        const PixelLanes d;
        bool isInOrder = true;
        for (int32_t k = 0; k + 1 < kLive; ++k) {
            const auto &a = components_[k], &b = components_[k + 1];
            const auto left = hn::Mul(hn::Mul(a.weight, a.weight), b.variance);
            const auto right = hn::Mul(hn::Mul(b.weight, b.weight), a.variance);
            isInOrder &= hn::AllTrue(d, hn::Ge(left, hn::Mul(right, hn::Set(d, 1 + 1e-12))));
        }
        return isInOrder;
    }

    /** A stable insertion sort. */
    HWY_NOINLINE void sort() {
        const PixelLanes d;
        LaneVec ranks[kLive];
        for (int32_t k = 0; k < kLive; ++k)
            ranks[k] = hn::Div(components_[k].weight, hn::Sqrt(components_[k].variance));
        for (int32_t k = 1; k < kLive; ++k)
            for (int32_t i = k; i > 0; --i) {
                const auto isLess = hn::Lt(ranks[i - 1], ranks[i]);
                if (hn::AllFalse(d, isLess))
                    break;
                const Lanes left = components_[i - 1];
                components_[i - 1].setWhere(isLess, components_[i]);
                components_[i].setWhere(isLess, left);
                const auto rank = ranks[i - 1];
                ranks[i - 1] = hn::IfThenElse(isLess, ranks[i], rank);
                ranks[i] = hn::IfThenElse(isLess, rank, ranks[i]);
                const auto leftMatched = matched_[i - 1];
                matched_[i - 1] = choose(isLess, matched_[i], leftMatched);
                matched_[i] = choose(isLess, leftMatched, matched_[i]);
            }
    }

    HWY_INLINE static LaneMask choose(LaneMask which, LaneMask yes, LaneMask no) {
        return hn::Or(hn::And(which, yes), hn::AndNot(which, no));
    }

    LaneVec x_[kChannels];
    Lanes components_[kLive];
    LaneMask matched_[kLive], unmatched_;
};

}  // namespace VEKCV_VARIANT
