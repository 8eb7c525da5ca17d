// Sizes of the levels of pyramids.
#pragma once

#include "vekcv.h"

namespace VEKCV_VARIANT {

constexpr int32_t kMostRate = 10;

/** False for NaN, too. */
constexpr bool isPyramidRate(float rate) {
    return rate > 1 && rate <= kMostRate;
}

/** A size or a position without its fraction. Lengths times rates need more than 32 bits. */
constexpr int64_t wholePart(float value) {
    return static_cast<int64_t>(value);
}

/** The lengths that a length may be expanded to; they may exceed an int32_t. */
struct ExpandedLengths {
    int64_t least, most;

    static constexpr ExpandedLengths of(int32_t length, float rate) {
        const int64_t longer = int64_t{length} + 1;
        return {length == 1 ? 1 : greater(longer, wholePart(static_cast<float>(length - 1) * rate) + 1),
                greater(longer, wholePart(static_cast<float>(length) * rate))};
    }

  private:
    static constexpr int64_t greater(int64_t a, int64_t b) { return a > b ? a : b; }
};

/** The sizes that a size may be expanded to, as far as an int32_t goes. */
struct ExpandedSizes {
    RoiSize least, most;

    static constexpr ExpandedSizes of(RoiSize size, float rate) {
        const auto width = ExpandedLengths::of(size.width, rate), height = ExpandedLengths::of(size.height, rate);
        return {{limited(width.least), limited(height.least)}, {limited(width.most), limited(height.most)}};
    }

  private:
    static constexpr int32_t limited(int64_t length) {
        return length < INT32_MAX ? static_cast<int32_t>(length) : INT32_MAX;
    }
};

/**
 * The only length that may be expanded to this one: the ranges of neighbouring lengths adjoin. The division finds it or
 * one close to it.
 */
constexpr int32_t reducedLength(int32_t length, float rate) {
    const int64_t quotient = wholePart(static_cast<float>(length) / rate + 0.5f);
    int32_t reduced = quotient < 1 ? 1 : static_cast<int32_t>(quotient);
    while (length < ExpandedLengths::of(reduced, rate).least)
        --reduced;
    while (length > ExpandedLengths::of(reduced, rate).most)
        ++reduced;
    return reduced;
}

constexpr RoiSize reducedSize(RoiSize size, float rate) {
    return {reducedLength(size.width, rate), reducedLength(size.height, rate)};
}

}  // namespace VEKCV_VARIANT
