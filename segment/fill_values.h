// Fills by the values of pixels alone: equal to one, or between two. A pixel that is filled does not join any more.
#pragma once

#include "fill_runs.h"
#include "fill_walk.h"
#include "image.h"

namespace VEKCV_VARIANT {

/** A row of a fill in which pixels join by their values. */
template <typename T, int32_t kChannels, typename Rule>
class RowOfValues {
  public:
    static constexpr bool kIsDirected = false;

    RowOfValues(const Rule& rule, const T* row, int32_t width) : rule_(rule), row_(row), width_(width) {}

    HWY_INLINE Block block(int32_t base) const {
        const uint64_t bits = width_ < Blocks<T>::kLength
                                  ? bitsOfShortRow(rule_, row_, width_)
                                  : bitsOf(typename Blocks<T>::D(), rule_, row_ + ptrdiff_t{base} * kChannels);
        return {base, bits, bits};
    }
    HWY_INLINE uint64_t follows(Block block) const { return block.starts; }
    HWY_INLINE uint64_t precedes(Block block) const { return block.starts; }

    static HWY_NOINLINE uint64_t bitsOfShortRow(const Rule& rule, const T* row, int32_t width) {
        uint64_t bits = 0;
        for (int32_t x = 0; x < width; ++x)
            bits |= bitsOf(hn::CappedTag<T, 1>(), rule, row + ptrdiff_t{x} * kChannels) << x;
        return bits;
    }

  private:
    template <typename D>
    static HWY_INLINE uint64_t bitsOf(D d, const Rule& rule, const T* first) {
        return maskBits(d, rule.joins(d, loadPixels<kChannels>(d, first)));
    }

    const Rule rule_;
    const T* row_;
    int32_t width_;
};

template <typename T, int32_t kChannels, typename Rule>
class FillByValue {
  public:
    /** Of more than `capacity` runs on the stack all are forgotten; 0 where any number is kept. */
    FillByValue(Image<T, kChannels> image, int32_t width, const Rule& rule, const Value<T, kChannels>& newValue,
                int64_t capacity = 0)
        : image_(image), width_(width), rule_(rule), painter_(newValue), capacity_(capacity) {}

    HWY_INLINE Run firstRun(ImagePoint seed) {
        T* const pixels = image_.row(seed.y);
        const Row row(rule_, pixels, width_);
        Block block = row.block(Blocks<T>::around(seed.x, width_));
        const int32_t left = beginOfRun<T>(row, block, seed.x), end = endOfRun<T>(row, block, seed.x + 1, width_);
        painter_.paint(pixels, left, end - 1);
        return {seed.y, left, end - 1, 1, false};
    }

    template <typename Take>
    HWY_INLINE void forRunsBeside(const Run& /*run*/, int32_t y, int32_t first, int32_t last, const Take& take) {
        T* const pixels = image_.row(y);
        forRuns<T>(
            Row(rule_, pixels, width_), first, last,
            width_, [&](int32_t left, int32_t right) __attribute__((always_inline)) {
                painter_.paint(pixels, left, right);
                take(left, right);
            });
    }

    HWY_INLINE void push(RunStack& stack, const Run& run) {
        stack.push(run);
        if (stack.has(capacity_))
            stack.clear();
    }

    bool refill(RunStack& /*stack*/) const { return false; }
    void leave(const Run& /*run*/) const {}

  private:
    using Row = RowOfValues<T, kChannels, Rule>;

    Image<T, kChannels> image_;
    int32_t width_;
    Rule rule_;
    Painter<T, kChannels> painter_;
    int64_t capacity_;
};

}  // namespace VEKCV_VARIANT
