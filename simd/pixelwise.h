// Operations that compute every pixel of an image from the pixels at the same place in others.
#pragma once

#include <hwy/cache_control.h>

#include "image.h"
#include "parallel.h"
#include "simd.h"
#include "streaming.h"

namespace VEKCV_VARIANT {

/** Float lanes from as many elements of any type that converts exactly. */
template <typename D, typename T>
HWY_INLINE hn::Vec<D> loadFloats(D d, const T* values) {
    if constexpr (std::is_same_v<T, float>)
        return hn::LoadU(d, values);
    else
        return hn::ConvertTo(d, hn::PromoteTo(hn::Rebind<int32_t, D>(), hn::LoadU(hn::Rebind<T, D>(), values)));
}

/** Lanes of `value` where the mask byte is not 0, of `otherwise` elsewhere. */
template <typename D>
HWY_INLINE hn::Vec<D> selectMasked(D d, const uint8_t* mask, hn::Vec<D> value, hn::Vec<D> otherwise) {
    using Bits = hwy::MakeSigned<hn::TFromD<D>>;
    const hn::Rebind<Bits, D> bits;
    const auto bytes = hn::PromoteTo(bits, hn::LoadU(hn::Rebind<uint8_t, D>(), mask));
    return hn::IfThenElse(hn::RebindMask(d, hn::Eq(bytes, hn::Zero(bits))), otherwise, value);
}

enum class Stores { kCached, kStreaming };

/**
 * out[x] = rule(tag, x) for every pixel of a row, a vector at a time. What is left of the row is done in vectors of
 * half the width, then a quarter, down to a single lane, so that nothing beyond the row is read or written.
 */
template <Stores kStores, typename D, typename Rule>
HWY_INLINE void writeVectors(D d, hn::TFromD<D>* out, ptrdiff_t x, ptrdiff_t width, const Rule& rule) {
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    for (; x <= width - kLanes; x += kLanes) {
        const auto value = rule(d, x);
        if constexpr (kStores == Stores::kStreaming)
            hn::Stream(value, d, out + x);
        else
            hn::StoreU(value, d, out + x);
    }
    if constexpr (kLanes > 1)
        if (x < width)
            writeVectors<Stores::kCached>(hn::Half<D>(), out, x, width, rule);
}

template <Stores kStores, typename T, typename Rule>
HWY_INLINE void writeRow(T* out, int32_t width, const Rule& rule) {
    const hn::ScalableTag<T> d;
    ptrdiff_t x = 0;
    if constexpr (kStores == Stores::kStreaming) {  // which needs aligned addresses
        const hn::CappedTag<T, 1> single;
        for (; x < width && reinterpret_cast<uintptr_t>(out + x) % (hn::MaxLanes(d) * sizeof(T)) != 0; ++x)
            hn::StoreU(rule(single, x), single, out + x);
    }
    writeVectors<kStores>(d, out, x, width, rule);
}

template <Stores kStores, typename T, typename RuleOfRow>
void writeRows(int32_t first, int32_t rows, int32_t width, Image<T> out, const RuleOfRow& ruleOfRow) {
    for (int32_t y = first; y < first + rows; ++y)
        writeRow<kStores>(out.row(y), width, ruleOfRow(y));
}

/**
 * Writes every pixel of a region: ruleOfRow(y) gives the rule of a row, and the rule gives the vector of pixels from
 * column x on, as rule(tag, x). Where kStreamBytes for each pixel fill the cache, the results are written past it.
 */
template <int32_t kStreamBytes, typename T, typename RuleOfRow>
void writePixels(RoiSize roi, ParallelFrom threshold, Image<T> out, RuleOfRow ruleOfRow) {
    forRowStripes(roi, threshold, [=](int32_t first, int32_t rows) {
        if constexpr (kStreamBytes > 0)
            if (fillsCache(roi.width, rows, kStreamBytes)) {
                writeRows<Stores::kStreaming>(first, rows, roi.width, out, ruleOfRow);
                hwy::FlushStream();
                return;
            }
        writeRows<Stores::kCached>(first, rows, roi.width, out, ruleOfRow);
    });
}

}  // namespace VEKCV_VARIANT
