// Minimum and maximum with their positions.
#include "bind.h"
#include "channel_forms.h"
#include "check.h"
#include "fold_halves.h"
#include "parallel.h"
#include "reduction.h"
#include "signed_bytes.h"

namespace VEKCV_VARIANT {
namespace {

/** Lanes in the same order as the pixels, of a type whose minimum is one instruction in every variant. */
template <typename V>
HWY_INLINE auto ordered(V pixels) {
    using T = hn::TFromV<V>;
    if constexpr (std::is_same_v<T, int8_t>) {
        return movedToUnsigned(pixels);
    } else if constexpr (std::is_same_v<T, uint16_t>) {
        const hn::RebindToSigned<hn::DFromV<V>> d;
        return hn::Xor(hn::BitCast(d, pixels), hn::Set(d, INT16_MIN));
    } else {
        return pixels;
    }
}

/** Where a section begins. */
struct Section {
    int32_t y;
    ptrdiff_t x;
};

/** Finds the extremes, and the first section that has each. */
template <typename T>
class ExtremaReduction {
    using D = hn::ScalableTag<T>;
    using V = decltype(ordered(hn::Zero(D())));
    using Ordered = hn::DFromV<V>;
    static constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));

  public:
    using Pixel = T;
    static constexpr ptrdiff_t kSectionPixels = 32 * kChunkPixels<T>;

    /** Begins with a pixel that is not NaN, and a section that begins there. */
    HWY_INLINE ExtremaReduction(T pixel, Section section)
        : pixel_(pixel), start_(ordered(hn::Set(D(), pixel))), leastSection_(section), greatestSection_(section) {}

    HWY_INLINE void beginRows(int32_t y) { section_ = {y, 0}; }

    T neutral() const { return pixel_; }

    template <ptrdiff_t kPixels, int32_t kStride, typename Mask>
    HWY_INLINE void add(Pixels<T, kStride> pixels, Mask mask) {
#pragma GCC unroll 4  // accumulators are registers then
        for (ptrdiff_t i = 0; i < kPixels / kLanes; ++i, pixels = pixels + kLanes, mask = mask + kLanes) {
            const V v = mask.selectOr(Ordered(), ordered(pixels.load(D())), start_);
            // The minimum of NaN and another value is the second operand on x86, so that a NaN is passed over.
            minima_[i % 2] = hn::Min(v, minima_[i % 2]);
            maxima_[i % 2] = hn::Max(v, maxima_[i % 2]);
        }
    }

    HWY_INLINE void endSection() {
        const V minima = hn::Min(minima_[0], minima_[1]), maxima = hn::Max(maxima_[0], maxima_[1]);
        if (HWY_UNLIKELY(!hn::AllFalse(Ordered(), hn::Lt(minima, least_)))) {
            least_ = hn::Set(Ordered(), foldHalves(Ordered(), minima, [](auto a, auto b) { return hn::Min(a, b); }));
            leastSection_ = section_;
        }
        if (HWY_UNLIKELY(!hn::AllFalse(Ordered(), hn::Gt(maxima, greatest_)))) {
            greatest_ = hn::Set(Ordered(), foldHalves(Ordered(), maxima, [](auto a, auto b) { return hn::Max(a, b); }));
            greatestSection_ = section_;
        }
        section_.x += kSectionPixels;
    }

    V least() const {
        return least_;
    }
    V greatest() const {
        return greatest_;
    }
    Section leastSection() const {
        return leastSection_;
    }
    Section greatestSection() const {
        return greatestSection_;
    }

  private:
    T pixel_;
    V start_;
    V minima_[2] = {start_, start_}, maxima_[2] = {start_, start_};
    V least_ = start_, greatest_ = start_;
    Section section_{}, leastSection_, greatestSection_;
};

/** The index of the first pixel that takes part and for which holds(vector of pixels) is true; -1 if there is none. */
template <typename T, int32_t kStride, typename Mask, typename Condition>
HWY_INLINE ptrdiff_t findFirst(ptrdiff_t width, Pixels<T, kStride> pixels, Mask mask, Condition holds) {
    const hn::ScalableTag<T> d;
    const hn::DFromV<decltype(ordered(pixels.load(d)))> lanes;
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<T>()));
    const auto select = [&](Pixels<T, kStride> from, Mask fromMask) __attribute__((always_inline)) {
        return fromMask.select(lanes, holds(from.load(d)));
    };
    const auto find = [&](Pixels<T, kStride> from, Mask fromMask) {
        // The search is one of bytes: with AVX2 that of 16-bit lanes needs instructions that the variant does without.
        const hn::Repartition<uint8_t, decltype(d)> bytes;
        const auto selected = hn::BitCast(bytes, hn::VecFromMask(lanes, select(from, fromMask)));
        const intptr_t byte = hn::FindFirstTrue(bytes, hn::MaskFromVec(selected));
        return byte < 0 ? byte : byte / static_cast<intptr_t>(sizeof(T));
    };
    ptrdiff_t x = 0;
    // One test for a chunk passes over it; in the others a vector has one.
    for (constexpr ptrdiff_t kChunk = kChunkPixels<T>; x + kChunk <= width; x += kChunk) {
        auto inChunk = select(pixels + x, mask + x);
#pragma GCC unroll 4
        for (ptrdiff_t i = kLanes; i < kChunk; i += kLanes)
            inChunk = hn::Or(inChunk, select(pixels + (x + i), mask + (x + i)));
        if (!hn::AllFalse(lanes, inChunk))
            break;
    }
    for (; x < width; x += kLanes) {
        const ptrdiff_t count = HWY_MIN(kLanes, width - x);
        const bool isInside = x + kLanes <= width;
        typename Pixels<T, kStride>::Rest pixelRest;
        typename Mask::Rest maskRest;
        const ptrdiff_t found = isInside
                                    ? find(pixels + x, mask + x)
                                    : find(pixelRest.copy(pixels + x, count, T{}), maskRest.copy(mask + x, count, T{}));
        if (found >= 0)
            return found < count ? x + found : -1;
    }
    return -1;
}

/** A value and where it is first. */
template <typename T>
struct Extreme {
    T value;
    ImagePoint point;
};

template <typename T>
struct Extrema {
    bool areFound = false;
    Extreme<T> least{}, greatest{};

    /** Joins the extrema of a later stripe, b, to a; of equal ones those of a stay. */
    static void join(Extrema& a, const Extrema& b) {
        if (!a.areFound)
            a = b;
        if (!b.areFound)
            return;
        if (b.least.value < a.least.value)
            a.least = b.least;
        if (b.greatest.value > a.greatest.value)
            a.greatest = b.greatest;
    }
};

/** The extrema of a stripe: one pass over all pixels, then a search in the two sections that have them. */
template <typename T, int32_t kChannels, typename Mask>
Extrema<T> extremaOf(Image<const T, kChannels> source, Mask mask, RoiSize roi, int32_t firstRow, int32_t rows) {
    using Reduction = ExtremaReduction<T>;
    const PixelRows lines = PixelRows::of(roi, firstRow, rows, source, mask);
    const int32_t atOnce = rowsAtOnce<T>(lines);
    const auto countAt = [=](int32_t y) { return HWY_MIN(atOnce, lines.end - y); };
    auto pixels = pixelRows(source);
    auto masks = maskRows(mask);
    // The first pixel from x on, in the rows from y on that are reduced at once, for which holds() is true.
    const auto find = [&](int32_t y, ptrdiff_t x, ptrdiff_t most, auto holds) {
        const int32_t count = countAt(y);
        return findFirst(HWY_MIN(most, count * lines.width - x), pixels.at(y, count, lines.width) + x,
                         masks.at(y, count, lines.width) + x, holds);
    };
    const auto at = [&](int32_t y, ptrdiff_t x) {
        const auto row = static_cast<int32_t>(y + x / lines.width);
        x %= lines.width;
        Extreme<T> pixel{};
        // It may begin at any address.
        __builtin_memcpy(&pixel.value, source.row(row) + x * kChannels, sizeof(T));
        pixel.point = {static_cast<int32_t>(x % roi.width), row + static_cast<int32_t>(x / roi.width)};
        return pixel;
    };

    int32_t y = lines.first;
    ptrdiff_t start = -1;
    for (; y < lines.end; y += countAt(y)) {
        start = find(y, 0, PTRDIFF_MAX, [](auto v) { return hn::Eq(ordered(v), ordered(v)); });  // false for NaN
        if (start >= 0)
            break;
    }
    if (start < 0)
        return {};

    constexpr ptrdiff_t kSection = Reduction::kSectionPixels;
    Reduction reduction(at(y, start).value, {y, start});
    for (int32_t count; y < lines.end; y += count) {
        count = countAt(y);
        reduction.beginRows(y);
        reduceRow(reduction, count * lines.width, pixels.at(y, count, lines.width), masks.at(y, count, lines.width));
    }

    const auto locate = [&](auto value, Section section) {
        const ptrdiff_t x = find(section.y, section.x, kSection, [=](auto v) { return hn::Eq(ordered(v), value); });
        return at(section.y, section.x + x);
    };
    return {true, locate(reduction.least(), reduction.leastSection()),
            locate(reduction.greatest(), reduction.greatestSection())};
}

struct MinMaxIndx {
    template <typename T, int32_t kChannels, typename Mask>
    static Status run(Image<const T, kChannels> source, Mask mask, RoiSize roi, int32_t channel, float* minimum,
                      float* maximum, ImagePoint* minimumIndex, ImagePoint* maximumIndex) {
        if (Status status = Check()
                                .pointers(source, mask, minimum, maximum, minimumIndex, maximumIndex)
                                .channelImages(roi, channel, source, mask))
            return status;
        const auto extrema = reduceRows(
            roi, ParallelFrom{16384},
            [=](int32_t first, int32_t rows) { return extremaOf(source.from(channel), mask, roi, first, rows); },
            Extrema<T>::join);
        *minimum = static_cast<float>(extrema.least.value);
        *maximum = static_cast<float>(extrema.greatest.value);
        *minimumIndex = extrema.areFound ? extrema.least.point : ImagePoint{-1, -1};
        *maximumIndex = extrema.areFound ? extrema.greatest.point : ImagePoint{-1, -1};
        return StatusOk;
    }
};

}  // namespace

VEKCV_BIND(vekiMinMaxIndx_8u_C1R, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_8s_C1R, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_16u_C1R, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_32f_C1R, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_8u_C1MR, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_8s_C1MR, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_16u_C1MR, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_32f_C1MR, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_8u_C3CR, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_8s_C3CR, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_16u_C3CR, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_32f_C3CR, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_8u_C3CMR, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_8s_C3CMR, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_16u_C3CMR, onChannel<MinMaxIndx>);
VEKCV_BIND(vekiMinMaxIndx_32f_C3CMR, onChannel<MinMaxIndx>);
}  // namespace VEKCV_VARIANT
