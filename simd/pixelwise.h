// Operations that compute every pixel of an image from the pixels at the same place in others.
#pragma once

#include <hwy/cache_control.h>

#include "parallel.h"
#include "pixel_rows.h"
#include "promote.h"
#include "rest.h"
#include "stores.h"
#include "streaming.h"

namespace VEKCV_VARIANT {

/** Vectors of a batch, which are computed in one step of a loop. */
constexpr ptrdiff_t kBatchVectors = 4;

/** A rule that has a faster way to the vectors of a batch: batch(tag, x) gives them as an array. */
template <typename Rule, typename Batch>
struct BatchRule : Rule {
    Batch batch;
};

template <typename Rule, typename Batch>
BatchRule(Rule, Batch) -> BatchRule<Rule, Batch>;

template <typename Rule>
constexpr bool kIsBatchRule = false;
template <typename Rule, typename Batch>
constexpr bool kIsBatchRule<BatchRule<Rule, Batch>> = true;

/** A vector of results in two halves, for rules whose intermediate values are wider and do not fit one vector. */
template <typename D, typename Rule>
HWY_INLINE hn::Vec<D> byHalves(D d, ptrdiff_t x, const Rule& rule) {
    const hn::Half<D> half;
    const auto lower = rule(half, x);
    return hn::Combine(d, rule(half, x + ptrdiff_t{hn::MaxLanes(half)}), lower);
}

/** out[x] = rule(tag, x) for a batch of pixels from x on. */
template <Stores kStores, typename D, typename Rule>
HWY_INLINE void writeBatch(D d, hn::TFromD<D>* out, ptrdiff_t x, const Rule& rule) {
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    if constexpr (kIsBatchRule<Rule>) {
        const auto values = rule.batch(d, x);
#pragma GCC unroll 4
        for (ptrdiff_t i = 0; i < kBatchVectors; ++i)
            store<kStores>(d, values[static_cast<size_t>(i)], out + x + i * kLanes);
    } else {
#pragma GCC unroll 4
        for (ptrdiff_t i = x; i < x + kBatchVectors * kLanes; i += kLanes)
            store<kStores>(d, rule(d, i), out + i);
    }
}

/** out[i] = rule(tag, i) for the pixels from x to end, fewer than the lanes of a vector. Not inlined: it is long. */
template <typename D, typename Rule>
HWY_NOINLINE void writeRest(D /*d*/, hn::TFromD<D>* out, ptrdiff_t x, ptrdiff_t end, const Rule& rule) {
    forHalves(
        hn::Half<D>(), x,
        end, [&](auto part, ptrdiff_t i) __attribute__((always_inline)) { hn::StoreU(rule(part, i), part, out + i); });
}

/** The rule of a row where the mask byte is not 0; the other pixels keep their values. */
template <typename Rule>
struct MaskedRule {
    const Rule& rule;
    const float* out;
    const uint8_t* mask;

    template <typename D>
    HWY_INLINE hn::Vec<D> operator()(D d, ptrdiff_t x) const {
        return hn::IfThenElse(isZero(d, mask + x), hn::LoadU(d, out + x), rule(d, x));
    }
};

/** out[x] = rule(tag, x) for every pixel of a row. */
template <Stores kStores, typename T, typename Rule>
HWY_INLINE void writeRow(T* out, ptrdiff_t width, const Rule& rule) {
    const hn::ScalableTag<T> d;
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<T>()));
    constexpr ptrdiff_t kBatch = kBatchVectors * kLanes;
    const Rule local = rule;  // a copy stays in registers: no store can change it
    ptrdiff_t x = 0;
    // Short rows that are written through the caches are not worth aligning.
    if (kStores == Stores::kStreaming || width >= 2 * kBatch)
        x = HWY_MIN(elementsToAlign(d, out), width);
    if (x > 0)
        writeRest(d, out, 0, x, rule);
    for (; x + kBatch <= width; x += kBatch)
        writeBatch<kStores>(d, out, x, local);
    for (; x + kLanes <= width; x += kLanes)
        hn::StoreU(local(d, x), d, out + x);
    if (x < width)
        writeRest(d, out, x, width, rule);
}

/**
 * out[x] = rule(tag, x) where the mask byte is not 0; the other pixels keep their values. Masks mostly select or leave
 * out whole batches, which one test of all their mask bytes tells.
 */
template <typename Rule>
HWY_INLINE void writeMaskedRow(float* out, ptrdiff_t width, const uint8_t* mask, const Rule& rule) {
    const hn::ScalableTag<float> d;
    const hn::Repartition<uint8_t, decltype(d)> bytes;  // as many lanes as a batch has pixels
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<float>()));
    constexpr ptrdiff_t kBatch = kBatchVectors * kLanes;
    const Rule local = rule;  // a copy stays in registers: no store can change it
    const MaskedRule<Rule> selected{local, out, mask}, selectedRest{rule, out, mask};
    ptrdiff_t x = width < 2 * kBatch ? 0 : elementsToAlign(d, out);
    if (x > 0)
        writeRest(d, out, 0, x, selectedRest);
    for (; x + kBatch <= width; x += kBatch) {
        const auto isLeftOut = isZero(bytes, mask + x);
        if (hn::AllFalse(bytes, isLeftOut))
            writeBatch<Stores::kCached>(d, out, x, local);
        else if (!hn::AllTrue(bytes, isLeftOut))
            writeBatch<Stores::kCached>(d, out, x, selected);
    }
    for (; x + kLanes <= width; x += kLanes)
        hn::StoreU(selected(d, x), d, out + x);
    if (x < width)
        writeRest(d, out, x, width, selectedRest);
}

/**
 * Writes every pixel of a region: ruleOfRow(y) gives the rule of a row, rule(tag, x) the vector of pixels from x on.
 * Where the pixels, counted as kStreamBytes each, fill the cache, results are written past it. With kStreamBytes 0 they
 * never are: operations in place have just read these pixels into the cache.
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

/** Writes the pixels of a region whose mask byte is not 0, in place. */
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
