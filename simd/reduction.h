// Reductions of the pixels of rows. They process a row in chunks of 64 bytes of pixels, whatever the width of a vector,
// so that all variants add floats in the same order.
#pragma once

#include "every_third.h"
#include "parallel.h"
#include "pixel_rows.h"
#include "promote.h"

namespace VEKCV_VARIANT {

/**
 * How far ahead a reduction without a mask prefetches. Processors by themselves do not prefetch beyond the page that
 * they read; where there is a mask, too, they go on with one image while the next page of the other arrives.
 */
constexpr ptrdiff_t kPrefetchBytes = 512;

/** Pixels for each configured thread, from which on most reductions share them among threads. */
constexpr int64_t kPixelsPerThread = 131072;

/** Pixels of a chunk. */
template <typename T>
constexpr ptrdiff_t kChunkPixels = 64 / sizeof(T);

/**
 * Pixels in each step of the rest of a row, which is shorter than a chunk. Integers may be added in any order, so one
 * vector is enough.
 */
template <typename T>
constexpr ptrdiff_t kRestPixels = hwy::IsFloat<T>() ? kChunkPixels<T>
                                                    : static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<T>()));

/**
 * Copies `count` elements. The code calls nothing, as no accumulator stays in a register across a call, and is short,
 * as it is inlined in every reduction.
 */
template <typename T>
HWY_INLINE void copyElements(T* to, const T* from, ptrdiff_t count) {
    auto* out = reinterpret_cast<uint8_t*>(to);
    asm("" : "+r"(out));  // or the compiler warns of negative offsets, which there are none of
    const auto* const in = reinterpret_cast<const uint8_t*>(from);
    const ptrdiff_t bytes = count * static_cast<ptrdiff_t>(sizeof(T));
    // Both loops stay as they are: neither becomes a call of memcpy, nor is the second unrolled, of 7 bytes at most.
    const auto keepLoop = [](ptrdiff_t & i) __attribute__((always_inline)) {
        asm("" : "+r"(i));
    };
    ptrdiff_t i = 0;
    for (; i + 16 <= bytes; i += 16) {
        __builtin_memcpy(out + i, in + i, 16);
        keepLoop(i);
    }
    if (bytes >= 16) {
        __builtin_memcpy(out + bytes - 16, in + bytes - 16, 16);
    } else if (bytes >= 8) {
        __builtin_memcpy(out, in, 8);
        __builtin_memcpy(out + bytes - 8, in + bytes - 8, 8);
    } else {
        for (; i < bytes; ++i) {
            out[i] = in[i];
            keepLoop(i);
        }
    }
}

/** Copies `count` elements, and fills the rest of the room with the neutral one. */
template <typename T, size_t kRoom>
HWY_INLINE void copyRest(T (&to)[kRoom], const T* from, ptrdiff_t count, T neutral) {
    const hn::ScalableTag<T> d;
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<T>()));
#pragma GCC unroll 1
    for (ptrdiff_t i = count / kLanes * kLanes; i < static_cast<ptrdiff_t>(kRoom); i += kLanes)
        hn::Store(hn::Set(d, neutral), d, to + i);
    copyElements(to, from, count);
}

/** Pixels of one channel: every kStride-th element. */
template <typename T, int32_t kStride = 1>
struct Pixels {
    const T* first;

    HWY_INLINE Pixels operator+(ptrdiff_t x) const { return {first + x * kStride}; }

    /** Prefetches the chunk that is `bytes` ahead, even where the row ends before it. */
    HWY_INLINE void prefetch(ptrdiff_t bytes) const {
        for (ptrdiff_t line = 0; line < kStride; ++line)
            __builtin_prefetch(reinterpret_cast<const uint8_t*>(first) + bytes + 64 * line);
    }

    template <typename D>
    HWY_INLINE hn::Vec<D> load(D d) const {
        static_assert(kStride == 1 || kStride == 3);
        if constexpr (kStride == 1)
            return hn::LoadU(d, first);
        else
            return loadEveryThird(d, first);
    }

    /** Memory for a step: the last pixels of a row, with a neutral value in the place of those that it lacks. */
    struct Rest {
        alignas(64) T elements[kRestPixels<T> * kStride];

        Rest() {}  // leaves them uninitialised

        HWY_INLINE Pixels copy(Pixels pixels, ptrdiff_t count, T neutral) {
            copyRest(elements, pixels.first, (count - 1) * kStride + 1, neutral);
            return {elements};
        }
    };
};

/** The mask bytes of pixels: pixels whose byte is 0 take no part. */
struct MaskBytes {
    const uint8_t* first;

    HWY_INLINE MaskBytes operator+(ptrdiff_t x) const { return {first + x}; }

    /** The pixels that take part, and another value in the place of all others. */
    template <typename D>
    HWY_INLINE hn::Vec<D> selectOr(D d, hn::Vec<D> pixels, hn::Vec<D> otherwise) const {
        return hn::IfThenElse(isZero(d, first), otherwise, pixels);
    }
    template <typename D>
    HWY_INLINE hn::Vec<D> selectOrZero(D d, hn::Vec<D> pixels) const {
        return hn::IfThenZeroElse(isZero(d, first), pixels);
    }
    /** Whether a condition holds for pixels that take part. */
    template <typename D>
    HWY_INLINE hn::Mask<D> select(D d, hn::Mask<D> condition) const {
        return hn::AndNot(isZero(d, first), condition);
    }

    struct Rest {
        alignas(64) uint8_t bytes[64];

        Rest() {}  // leaves them uninitialised

        template <typename T>
        HWY_INLINE MaskBytes copy(MaskBytes mask, ptrdiff_t count, T /*neutral*/) {
            copyRest(bytes, mask.first, count, uint8_t{0});
            return {bytes};
        }
    };
};

/** In the place of MaskBytes where there is no mask. */
struct NoMask {
    HWY_INLINE NoMask operator+(ptrdiff_t /*x*/) const { return {}; }
    HWY_INLINE void prefetch(ptrdiff_t /*bytes*/) const {}

    template <typename D>
    HWY_INLINE hn::Vec<D> selectOr(D /*d*/, hn::Vec<D> pixels, hn::Vec<D> /*otherwise*/) const {
        return pixels;
    }
    template <typename D>
    HWY_INLINE hn::Vec<D> selectOrZero(D /*d*/, hn::Vec<D> pixels) const {
        return pixels;
    }
    template <typename D>
    HWY_INLINE hn::Mask<D> select(D /*d*/, hn::Mask<D> condition) const {
        return condition;
    }

    struct Rest {
        template <typename T>
        NoMask copy(NoMask mask, ptrdiff_t /*count*/, T /*neutral*/) {
            return mask;
        }
    };
};

/** Pixels that short rows are gathered in: two of these rows at least. */
template <typename T>
constexpr ptrdiff_t kGatheredPixels = 2 * kChunkPixels<T>;

/**
 * How many rows are reduced at once. Rows of integers that are shorter than a chunk and would end with a step that
 * lacks pixels are copied one behind the other: loads of such a step wait until its parts, stored a moment ago, are in
 * the cache.
 */
template <typename T>
int32_t rowsAtOnce(PixelRows rows) {
    const bool areGathered = !hwy::IsFloat<T>() && rows.width < kChunkPixels<T> && rows.width % kRestPixels<T> != 0;
    return areGathered ? static_cast<int32_t>(kGatheredPixels<T> / rows.width) : 1;
}

/** Copies rows one behind the other. A function of its own, as every reduction needs it for short rows only. */
template <typename T, int32_t kStride>
HWY_NOINLINE void gatherRows(T* to, Image<const T, kStride> image, int32_t y, int32_t rows, ptrdiff_t width) {
    for (; rows > 0; --rows, ++y, to += width * kStride)
        copyElements(to, image.row(y), (width - 1) * kStride + 1);
}

/** The rows of an image as sources, and memory to gather short ones. */
template <typename Source, typename T, int32_t kStride>
class SourceRows {
  public:
    explicit SourceRows(Image<const T, kStride> image) : image_(image) {}  // leaves the memory uninitialised

    /** Row y or, where there are several, copies of the rows from y on. */
    HWY_INLINE Source at(int32_t y, int32_t rows, ptrdiff_t width) {
        if (rows == 1)
            return {image_.row(y)};
        gatherRows(gathered_, image_, y, rows, width);
        return {gathered_};
    }

  private:
    Image<const T, kStride> image_;
    alignas(64) T gathered_[kGatheredPixels<T> * kStride];
};

struct NoMaskRows {
    HWY_INLINE NoMask at(int32_t /*y*/, int32_t /*rows*/, ptrdiff_t /*width*/) { return {}; }
};

template <typename T, int32_t kChannels>
SourceRows<Pixels<T, kChannels>, T, kChannels> pixelRows(Image<const T, kChannels> image) {
    return SourceRows<Pixels<T, kChannels>, T, kChannels>(image);
}
inline SourceRows<MaskBytes, uint8_t, 1> maskRows(Image<const uint8_t> mask) {
    return SourceRows<MaskBytes, uint8_t, 1>(mask);
}
inline NoMaskRows maskRows(NoImage /*mask*/) {
    return {};
}

/** The position in a row of a source, and memory for its rest, which lies apart so that a cursor stays in registers. */
template <typename Source>
struct Cursor {
    Source at;
    typename Source::Rest* rest;

    HWY_INLINE Cursor(Source source, typename Source::Rest&& room) : at(source), rest(&room) {}
};

template <typename Op, typename... Sources>
HWY_INLINE void reduceRow(Op& op, ptrdiff_t width, Cursor<Sources>... cursors) {
    using T = typename Op::Pixel;
    constexpr ptrdiff_t kChunk = kChunkPixels<T>, kRest = kRestPixels<T>;
    const auto prefetch = [&](ptrdiff_t x) __attribute__((always_inline)) {
        if constexpr ((std::is_same_v<Sources, NoMask> || ...))
            ((cursors.at + x).prefetch(kPrefetchBytes), ...);
    };
    const auto addUntil = [&]<ptrdiff_t kPixels>(ptrdiff_t & x, ptrdiff_t end) __attribute__((always_inline)) {
        for (; x < end; x += kPixels) {
            if constexpr (kPixels == kChunk)
                prefetch(x);
            op.template add<kPixels>((cursors.at + x)...);
        }
    };
    for (ptrdiff_t x = 0; x < width; op.endSection()) {
        const bool isLast = width - x <= Op::kSectionPixels;
        // Where the rest has steps of a chunk, too, they are all in one loop.
        if (kRest < kChunk || !isLast)
            addUntil.template operator()<kChunk>(x, x + (isLast ? (width - x) / kChunk * kChunk : Op::kSectionPixels));
        if (!isLast)
            continue;
        for (ptrdiff_t end = x + (width - x) / kRest * kRest;; end = width = kRest) {
            addUntil.template operator()<kRest>(x, end);
            if (x >= width)
                break;
            // What is left, as a whole step, goes through the same loop, as if the row began there.
            ((cursors.at = cursors.rest->copy(cursors.at + x, width - x, op.neutral())), ...);
            x = 0;
        }
    }
}

/**
 * Reduces a row: op.add<pixels>(sources + x...) for each chunk, for each step of the rest, and at last for a step with
 * op.neutral() in the place of the pixels that it lacks; op.endSection() at the end of each section. A section has
 * Op::kSectionPixels pixels, a whole number of chunks; the last one ends with the row.
 */
template <typename Op, typename... Sources>
HWY_INLINE void reduceRow(Op& op, ptrdiff_t width, Sources... sources) {
    reduceRow(op, width, Cursor<Sources>(sources, typename Sources::Rest())...);
}

/** The totals of Reduction over one channel of the sources, from the threshold on in one stripe for each thread. */
template <typename Reduction, typename Mask, typename... Sources>
auto reducePixels(RoiSize roi, ParallelFrom threshold, int32_t channel, Mask mask, Sources... sources) {
    return reduceRows(
        roi, threshold,
        [=](int32_t first, int32_t rows) {
            // The order in which floats are added must not depend on whether images are packed.
            constexpr bool kInOrder = (hwy::IsFloat<typename Sources::Element>() || ...);
            const PixelRows lines = kInOrder ? PixelRows{first, first + rows, roi.width}
                                             : PixelRows::of(roi, first, rows, sources..., mask);
            Reduction reduction;
            const auto reduce = [&](auto&&... sourceRows) {
                const int32_t atOnce = rowsAtOnce<typename Reduction::Pixel>(lines);
                for (int32_t y = lines.first, count; y < lines.end; y += count) {
                    count = HWY_MIN(atOnce, lines.end - y);
                    reduceRow(reduction, count * lines.width, sourceRows.at(y, count, lines.width)...);
                }
            };
            reduce(pixelRows(sources.from(channel))..., maskRows(mask));
            return reduction.totals();
        },
        Reduction::Totals::join);
}

}  // namespace VEKCV_VARIANT
