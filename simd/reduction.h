// Reductions of the pixels of rows. They take a row in blocks of 64 bytes of pixels, whatever the width of a vector, so
// that all variants add floats in the same order.
#pragma once

#include "parallel.h"
#include "pixel_rows.h"
#include "promote.h"

namespace VEKCV_VARIANT {

/**
 * How far ahead an image is asked for that is read alone. Processors do not look beyond the page that they are in; with
 * two images and more there is always one that they can go on with.
 */
constexpr ptrdiff_t kPrefetchBytes = 512;

/** So many pixels fill a block. */
template <typename T>
constexpr ptrdiff_t kBlockPixels = 64 / sizeof(T);

/** The vectors of a block. */
template <typename T>
constexpr ptrdiff_t kBlockVectorCount = kBlockPixels<T> / static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<T>()));

/** Pixels of one channel: every kStride-th element. */
template <typename T, int32_t kStride = 1>
struct Pixels {
    /** How many elements a block reads beyond its last pixel. */
    static constexpr ptrdiff_t kBeyond = kStride - 1;

    const T* first;

    HWY_INLINE Pixels operator+(ptrdiff_t x) const { return {first + x * kStride}; }

    /** Asks for the block that is `bytes` ahead, whether or not the row goes on as far as there. */
    HWY_INLINE void prefetch(ptrdiff_t bytes) const {
        for (ptrdiff_t line = 0; line < kStride; ++line)
            __builtin_prefetch(reinterpret_cast<const uint8_t*>(first) + bytes + 64 * line);
    }

    template <typename D>
    HWY_INLINE hn::Vec<D> load(D d) const {
        if constexpr (kStride == 1) {
            return hn::LoadU(d, first);
        } else {
            hn::Vec<D> channel, second, third;
            hn::LoadInterleaved3(d, first, channel, second, third);
            return channel;
        }
    }

    /** The last pixels of a row, and a neutral value in all that the row is short of a block. */
    struct Rest {
        alignas(64) T elements[kBlockPixels<T> * kStride];

        Rest(Pixels pixels, ptrdiff_t count, T neutral) {
            const auto copy = [&](ptrdiff_t copied) {
                __builtin_memcpy(elements, pixels.first, static_cast<size_t>((copied - 1) * kStride + 1) * sizeof(T));
            };
            if (count == kBlockPixels<T>) {  // only the last pixel makes it a rest; a copy of constant size is quick
                copy(kBlockPixels<T>);
                return;
            }
            for (T& element : elements)
                element = neutral;
            copy(count);
        }
        operator Pixels() const { return {elements}; }
    };
};

/** The mask bytes of the pixels: those whose byte is 0 are left out. */
struct MaskBytes {
    static constexpr ptrdiff_t kBeyond = 0;

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
        alignas(64) uint8_t bytes[64] = {};

        template <typename T>
        Rest(MaskBytes mask, ptrdiff_t count, T /*neutral*/) {
            __builtin_memcpy(bytes, mask.first, static_cast<size_t>(count));
        }
        operator MaskBytes() const { return {bytes}; }
    };
};

/** In the place of MaskBytes where there is no mask. */
struct NoMask {
    static constexpr ptrdiff_t kBeyond = 0;

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
        Rest(NoMask /*mask*/, ptrdiff_t /*count*/, T /*neutral*/) {}
        operator NoMask() const { return {}; }
    };
};

template <typename T, int32_t kChannels>
Pixels<T, kChannels> pixelRow(Image<const T, kChannels> image, ptrdiff_t y) {
    return {image.row(y)};
}
inline MaskBytes maskRow(Image<const uint8_t> mask, ptrdiff_t y) {
    return {mask.row(y)};
}
inline NoMask maskRow(NoImage /*mask*/, ptrdiff_t /*y*/) {
    return {};
}

/**
 * Reduces a row: op.add(sources + x...) for each block, the last one with op.neutral() in the place of the pixels that
 * it lacks, and op.endRun() after each run of Op::kRunPixels pixels, a multiple of a block, and at the end of the row.
 */
template <typename Op, typename... Sources>
HWY_INLINE void reduceRow(Op& op, ptrdiff_t width, Sources... sources) {
    constexpr ptrdiff_t kBlock = Op::kBlock;
    // With three channels a block reads beyond its last pixel, which another pixel must follow then.
    constexpr ptrdiff_t kFollowing = ((Sources::kBeyond > 0) || ...) ? 1 : 0;
    for (ptrdiff_t x = 0; x < width;) {
        const ptrdiff_t end = width - x > Op::kRunPixels ? x + Op::kRunPixels : width;
        const ptrdiff_t lastBlock = HWY_MIN(end, width - kFollowing) - kBlock;
        for (; x <= lastBlock; x += kBlock) {
            if constexpr ((std::is_same_v<Sources, NoMask> || ...))
                ((sources + x).prefetch(kPrefetchBytes), ...);
            op.add((sources + x)...);
        }
        if (end == width && x < width) {
            op.add(Sources(typename Sources::Rest(sources + x, width - x, op.neutral()))...);
            x = width;
        }
        op.endRun();
    }
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
            for (int32_t y = lines.first; y < lines.end; ++y)
                reduceRow(reduction, lines.width, pixelRow(sources.from(channel), y)..., maskRow(mask, y));
            return reduction.totals();
        },
        Reduction::Totals::join);
}

}  // namespace VEKCV_VARIANT
