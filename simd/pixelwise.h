// Operations that compute every pixel of an image from the pixels at the same place in others.
#pragma once

#include <hwy/cache_control.h>

#include "parallel.h"
#include "pixel_rows.h"
#include "promote.h"
#include "streaming.h"

namespace VEKCV_VARIANT {

enum class Stores { kCached, kStreaming };

constexpr ptrdiff_t kBlockVectors = 4;

/** A rule that has a faster way to the vectors of a whole block: block(tag, x) gives them as an array. */
template <typename Rule, typename Block>
struct BlockRule : Rule {
    Block block;
};

template <typename Rule, typename Block>
BlockRule(Rule, Block) -> BlockRule<Rule, Block>;

/** What a rule gives for both halves of the lanes, where those of a wider type on its way do not fit one vector. */
template <typename D, typename Rule>
HWY_INLINE hn::Vec<D> byHalves(D d, ptrdiff_t x, const Rule& rule) {
    const hn::Half<D> half;
    const auto lower = rule(half, x);
    return hn::Combine(d, rule(half, x + ptrdiff_t{hn::MaxLanes(half)}), lower);
}

/** out[x] = rule(tag, x) for a block of pixels from x on. */
template <Stores kStores, typename D, typename Rule>
HWY_INLINE void writeBlock(D d, hn::TFromD<D>* out, ptrdiff_t x, const Rule& rule) {
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    const auto write = [&](ptrdiff_t i, hn::Vec<D> values) {
        if constexpr (kStores == Stores::kStreaming)
            hn::Stream(values, d, out + i);
        else
            hn::StoreU(values, d, out + i);
    };
    if constexpr (requires { rule.block(d, x); }) {
        const auto values = rule.block(d, x);
#pragma GCC unroll 4
        for (ptrdiff_t i = 0; i < kBlockVectors; ++i)
            write(x + i * kLanes, values[static_cast<size_t>(i)]);
    } else {
#pragma GCC unroll 4
        for (ptrdiff_t i = x; i < x + kBlockVectors * kLanes; i += kLanes)
            write(i, rule(d, i));
    }
}

/**
 * The same for the pixels from x to less than end that are no block: a vector at a time, then one of half the width,
 * down to a single lane. So nothing beyond the row is read or written.
 */
template <typename D, typename Rule>
HWY_INLINE void writeRest(D d, hn::TFromD<D>* out, ptrdiff_t x, ptrdiff_t end, const Rule& rule) {
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    for (; x + kLanes <= end; x += kLanes)
        hn::StoreU(rule(d, x), d, out + x);
    if constexpr (kLanes > 1)
        writeRest(hn::Half<D>(), out, x, end, rule);
}

/** The pixels ahead of the first aligned vector of a row; 0 for short rows, where alignment is not worth its price. */
template <Stores kStores, typename D>
HWY_INLINE ptrdiff_t pixelsToAlign(D /*d*/, const hn::TFromD<D>* out, ptrdiff_t width) {
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    if (kStores == Stores::kCached && width < 2 * kBlockVectors * kLanes)
        return 0;
    const auto beyond = static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(out) / sizeof(hn::TFromD<D>) % kLanes);
    return HWY_MIN((kLanes - beyond) % kLanes, width);
}

/** out[x] = rule(tag, x) for every pixel of a row. */
template <Stores kStores, typename T, typename Rule>
HWY_INLINE void writeRow(T* out, ptrdiff_t width, const Rule& rule) {
    const hn::ScalableTag<T> d;
    constexpr auto kBlock = kBlockVectors * static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<T>()));
    ptrdiff_t x = pixelsToAlign<kStores>(d, out, width);
    writeRest(hn::Half<decltype(d)>(), out, 0, x, rule);
    for (; x + kBlock <= width; x += kBlock)
        writeBlock<kStores>(d, out, x, rule);
    writeRest(d, out, x, width, rule);
}

/**
 * The same where the mask byte is not 0; the other pixels keep their values. Masks mostly select or leave out whole
 * blocks, which are found out with one look.
 */
template <typename Rule>
HWY_INLINE void writeMaskedRow(float* out, ptrdiff_t width, const uint8_t* mask, const Rule& rule) {
    const hn::ScalableTag<float> d;
    const hn::Repartition<uint8_t, decltype(d)> bytes;  // as many lanes as a block has pixels
    constexpr auto kBlock = kBlockVectors * static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<float>()));
    const auto selected = [&](auto part, ptrdiff_t i) {
        return hn::IfThenElse(isZero(part, mask + i), hn::LoadU(part, out + i), rule(part, i));
    };
    ptrdiff_t x = pixelsToAlign<Stores::kCached>(d, out, width);
    writeRest(hn::Half<decltype(d)>(), out, 0, x, selected);
    for (; x + kBlock <= width; x += kBlock) {
        const auto isLeftOut = isZero(bytes, mask + x);
        if (hn::AllFalse(bytes, isLeftOut))
            writeBlock<Stores::kCached>(d, out, x, rule);
        else if (!hn::AllTrue(bytes, isLeftOut))
            writeBlock<Stores::kCached>(d, out, x, selected);
    }
    writeRest(d, out, x, width, selected);
}

/**
 * Writes every pixel of a region: ruleOfRow(y) gives the rule of a row, rule(tag, x) the vector of pixels from x on.
 * Where kStreamBytes for each pixel fill the cache, the results are written past it; 0, which stands for never, is
 * right for what works in place, as its pixels are in the cache already.
 */
template <int32_t kStreamBytes, typename T, typename RuleOfRow, typename... Sources>
void writePixels(RoiSize roi, ParallelFrom threshold, RuleOfRow ruleOfRow, Image<T> out, const Sources&... sources) {
    forRowStripes(roi, threshold, [=](int32_t first, int32_t rows) {
        const PixelRows lines = PixelRows::of(roi, first, rows, out, sources...);
        if constexpr (kStreamBytes > 0) {
            const bool canBeAligned = reinterpret_cast<uintptr_t>(out.pixels) % sizeof(T) == 0;
            if (canBeAligned && fillsCache(roi.width, rows, kStreamBytes)) {
                for (int32_t y = lines.first; y < lines.end; ++y)
                    writeRow<Stores::kStreaming>(out.row(y), lines.width, ruleOfRow(y));
                hwy::FlushStream();
                return;
            }
        }
        for (int32_t y = lines.first; y < lines.end; ++y)
            writeRow<Stores::kCached>(out.row(y), lines.width, ruleOfRow(y));
    });
}

/** The same in place, where the mask is not 0. */
template <typename RuleOfRow, typename... Sources>
void writeMaskedPixels(RoiSize roi, ParallelFrom threshold, RuleOfRow ruleOfRow, Image<float> out,
                       Image<const uint8_t> mask, const Sources&... sources) {
    forRowStripes(roi, threshold, [=](int32_t first, int32_t rows) {
        const PixelRows lines = PixelRows::of(roi, first, rows, out, mask, sources...);
        for (int32_t y = lines.first; y < lines.end; ++y)
            writeMaskedRow(out.row(y), lines.width, mask.row(y), ruleOfRow(y));
    });
}

}  // namespace VEKCV_VARIANT
