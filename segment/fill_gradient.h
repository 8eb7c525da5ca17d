// Fills by the differences of neighbours. Runs are filled when all runs beside them have been found, and a map tells
// which pixels joined.
#pragma once

#include "fill_values.h"

namespace VEKCV_VARIANT {

/** What became of a pixel. Those of a run for which there was no room on the stack wait. */
enum class PixelState : uint8_t { kFree, kJoined, kWaiting };

/** A row of a fill next to a run of its region, in which pixels join on account of their neighbours. */
template <typename T, int32_t kChannels>
class RowOfGradients {
  public:
    static constexpr bool kIsDirected = true;
    using Rule = Close<T, kChannels>;

    /** Of a run without pixels none joins. */
    RowOfGradients(const Rule& rule, const T* row, const uint8_t* states, int32_t width, const T* runRow,
                   const Run& run, int32_t reach)
        : rule_(rule), row_(row), states_(states), runRow_(runRow), run_(run), width_(width), reach_(reach) {}

    HWY_INLINE Block block(int32_t base) const {
        // Of the run, from the pixel in front of the block to the one behind it.
        const uint64_t parents = range(run_.left - base + 1, run_.right - base + 1);
        const uint64_t free = freePixels(base);
        const uint64_t beside = reach_ == 0 ? parents >> 1 : parents | parents >> 1 | parents >> 2;
        return {base, free, (free & beside) == 0 ? 0 : free & reachedFromRun(base, parents)};
    }
    HWY_INLINE uint64_t follows(Block block) const {
        return block.starts | (block.free & reachedInRow<-1>(block.base));
    }
    HWY_INLINE uint64_t precedes(Block block) const { return block.free & reachedInRow<1>(block.base); }

  private:
    static constexpr int32_t kLength = Blocks<T>::kLength;
    static_assert(kLength + 2 <= 64);

    /** The bits from `first` to `last`, of which those are left out that do not exist. */
    static HWY_INLINE uint64_t range(int32_t first, int32_t last) {
        const int32_t begin = HWY_MAX(first, 0), count = HWY_MIN(last, 63) - begin + 1;
        return count <= 0 ? 0 : ~uint64_t{0} >> (64 - count) << begin;
    }

    HWY_INLINE uint64_t freePixels(int32_t base) const {
        if (width_ < kLength)
            return RowOfValues<uint8_t, 1, Equal<uint8_t, 1>>::bitsOfShortRow(kFreePixels, states_, width_);
        const hn::CappedTag<uint8_t, kLength> d;
        return maskBits(d, kFreePixels.joins(d, loadPixels<1>(d, states_ + base)));
    }

    /** Whether all pixels of a block and those in front of and behind it are in the image. */
    HWY_INLINE bool isInside(int32_t base) const { return base > 0 && base < width_ - kLength; }

    HWY_INLINE uint64_t reachedFromRun(int32_t base, uint64_t parents) const {
        if (!isInside(base))
            return reachedFromRunAtEnd(base, parents);
        const typename Blocks<T>::D d;
        const auto pixels = loadPixels<kChannels>(d, row_ + ptrdiff_t{base} * kChannels);
        const auto closeTo = [&](int32_t x) __attribute__((always_inline)) {
            const auto from = loadPixels<kChannels>(d, runRow_ + ptrdiff_t{x} * kChannels);
            return maskBits(d, rule_.joins(d, pixels, from));
        };
        const uint64_t below = parents >> 1 & closeTo(base);
        return reach_ == 0 ? below : below | (parents & closeTo(base - 1)) | (parents >> 2 & closeTo(base + 1));
    }
    HWY_NOINLINE uint64_t reachedFromRunAtEnd(int32_t base, uint64_t parents) const {
        const uint64_t below = parents >> 1 & reachedAtEnd<0>(runRow_, base);
        return reach_ == 0 ? below
                           : below | (parents & reachedAtEnd<-1>(runRow_, base)) |
                                 (parents >> 2 & reachedAtEnd<1>(runRow_, base));
    }

    /** Pixels x that are close to the pixel x + kShift of their row. */
    template <int32_t kShift>
    HWY_INLINE uint64_t reachedInRow(int32_t base) const {
        return isInside(base) ? closeAt<kShift>(typename Blocks<T>::D(), row_, base) : reachedAtEnd<kShift>(row_, base);
    }

    /** Pixels x of a block that are close to x + kShift of a row. Some of either may not be in the image. */
    template <int32_t kShift>
    HWY_NOINLINE uint64_t reachedAtEnd(const T* from, int32_t base) const {
        const int32_t first = HWY_MAX(0, -kShift), end = width_ - HWY_MAX(0, kShift);
        if (end - first >= kLength) {
            const int32_t x = HWY_MAX(first, HWY_MIN(base, end - kLength));
            const uint64_t bits = closeAt<kShift>(typename Blocks<T>::D(), from, x);
            return x > base ? bits << (x - base) : bits >> (base - x);
        }
        uint64_t bits = 0;
        for (int32_t x = first; x < end; ++x)
            bits |= closeAt<kShift>(hn::CappedTag<T, 1>(), from, x) << (x - base);
        return bits;
    }

    template <int32_t kShift, typename D>
    HWY_INLINE uint64_t closeAt(D d, const T* from, int32_t x) const {
        return maskBits(d, rule_.joins(d, loadPixels<kChannels>(d, row_ + ptrdiff_t{x} * kChannels),
                                       loadPixels<kChannels>(d, from + ptrdiff_t{x + kShift} * kChannels)));
    }

    static constexpr Equal<uint8_t, 1> kFreePixels{{{static_cast<uint8_t>(PixelState::kFree)}}};

    const Rule rule_;
    const T* row_;
    const uint8_t* states_;
    const T* runRow_;
    const Run& run_;
    int32_t width_, reach_;
};

template <typename T, int32_t kChannels>
class FillByGradient {
  public:
    /** Bytes of the work buffer in front of the stack. */
    static int64_t mapBytes(RoiSize roi) { return (int64_t{roi.width} + 2) * (int64_t{roi.height} + 2); }

    FillByGradient(Image<T, kChannels> image, RoiSize roi, const Close<T, kChannels>& rule,
                   const Value<T, kChannels>& newValue, int32_t reach, uint8_t* map)
        : image_(image), map_(map), roi_(roi), reach_(reach), rule_(rule), painter_(newValue) {
        const auto clear = painterOf(PixelState::kFree);
        for (int32_t y = 0; y < roi.height; ++y)
            clear.paint(states(y), 0, roi.width - 1);
    }

    HWY_INLINE Run firstRun(ImagePoint seed) {
        const Run none{seed.y, 1, 0, 1, false};
        const Row row = rowBeside(none, seed.y);
        Block block = row.block(Blocks<T>::around(seed.x, roi_.width));
        const int32_t left = beginOfRun<T>(row, block, seed.x), end = endOfRun<T>(row, block, seed.x + 1, roi_.width);
        joined_.paint(states(seed.y), left, end - 1);
        return {seed.y, left, end - 1, 1, false};
    }

    template <typename Take>
    HWY_INLINE void forRunsBeside(const Run& run, int32_t y, int32_t first, int32_t last, const Take& take) {
        forRuns<T>(
            rowBeside(run, y), first, last,
            roi_.width, [&](int32_t left, int32_t right) __attribute__((always_inline)) {
                joined_.paint(states(y), left, right);
                take(left, right);
            });
    }

    HWY_INLINE void push(RunStack& stack, const Run& run) {
        if (stack.isFull()) {
            painterOf(PixelState::kWaiting).paint(states(run.y), run.left, run.right);
            isAnyWaiting_ = true;
        } else {
            stack.push(run);
        }
    }

    bool refill(RunStack& stack) {
        if (!isAnyWaiting_)
            return false;
        isAnyWaiting_ = false;
        using Waiting = Equal<uint8_t, 1>;
        const Waiting waiting{{{static_cast<uint8_t>(PixelState::kWaiting)}}};
        for (int32_t y = 0; y < roi_.height; ++y)
            forRuns<uint8_t>(RowOfValues<uint8_t, 1, Waiting>(waiting, states(y), roi_.width), 0, roi_.width - 1,
                             roi_.width, [&](int32_t left, int32_t right) {
                                 joined_.paint(states(y), left, right);
                                 push(stack, {y, left, right, 1, false});
                             });
        return true;
    }

    HWY_INLINE void leave(const Run& run) const { painter_.paint(image_.row(run.y), run.left, run.right); }

  private:
    using Row = RowOfGradients<T, kChannels>;

    static Painter<uint8_t, 1> painterOf(PixelState state) {
        return Painter<uint8_t, 1>(Value<uint8_t, 1>{{static_cast<uint8_t>(state)}});
    }

    uint8_t* states(int32_t y) const { return map_ + ptrdiff_t{y} * roi_.width; }

    HWY_INLINE Row rowBeside(const Run& run, int32_t y) const {
        return Row(rule_, image_.row(y), states(y), roi_.width, image_.row(run.y), run, reach_);
    }

    Image<T, kChannels> image_;
    uint8_t* map_;
    RoiSize roi_;
    int32_t reach_;
    Close<T, kChannels> rule_;
    Painter<T, kChannels> painter_;
    Painter<uint8_t, 1> joined_ = painterOf(PixelState::kJoined);
    bool isAnyWaiting_ = false;
};

}  // namespace VEKCV_VARIANT
