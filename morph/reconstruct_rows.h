// Reconstruction within a row: its pixels spread along it as far as those of the source let them.
#pragma once

#include "along_row.h"
#include "min_max.h"

namespace VEKCV_VARIANT {

/**
 * Reconstruction by dilation: pixels grow, and the source is their upper bound. Where an argument of join or limit is
 * NaN, the second one is the result.
 */
struct Dilation {
    template <typename V>
    HWY_INLINE static V join(V a, V b) {
        return larger(a, b);
    }
    template <typename V>
    HWY_INLINE static V limit(V a, V b) {
        return smaller(a, b);
    }
    template <typename T>
    static bool isBeyond(T a, T b) {
        return a > b;
    }

    /** The value that no other is below, which adds nothing to a join, and the one that limits nothing. */
    template <typename T>
    static constexpr T least() {
        return hwy::IsFloat<T>() ? static_cast<T>(-__builtin_inff()) : hwy::LowestValue<T>();
    }
    template <typename T>
    static constexpr T most() {
        return hwy::IsFloat<T>() ? static_cast<T>(__builtin_inff()) : hwy::HighestValue<T>();
    }
};

/** Reconstruction by erosion: the same with the order of values reversed. */
struct Erosion {
    template <typename V>
    HWY_INLINE static V join(V a, V b) {
        return Dilation::limit(a, b);
    }
    template <typename V>
    HWY_INLINE static V limit(V a, V b) {
        return Dilation::join(a, b);
    }
    template <typename T>
    static bool isBeyond(T a, T b) {
        return Dilation::isBeyond(b, a);
    }
    template <typename T>
    static constexpr T least() {
        return Dilation::most<T>();
    }
    template <typename T>
    static constexpr T most() {
        return Dilation::least<T>();
    }
};

/** The limit of two numbers, and the second one where an argument is NaN. */
template <typename Rule, typename T>
T limitOf(T a, T b) {
    return Rule::isBeyond(b, a) ? a : b;
}

/**
 * Pixels of the source as bounds, where NaN bounds nothing. Zeros are +0, here and in the marker: the signs of those in
 * the result would depend on the order in which pixels are visited, and so on the variant.
 */
template <typename Rule, typename D, typename T>
HWY_INLINE hn::Vec<D> loadBounds(D d, const T* source) {
    const auto pixels = hn::LoadU(d, source);
    if constexpr (hwy::IsFloat<T>())
        return hn::Add(Rule::limit(pixels, hn::Set(d, Rule::template most<T>())), hn::Zero(d));
    else
        return pixels;
}
/** The same for one pixel, but for NaN, which limitOf passes over. */
template <typename T>
T boundOf(T source) {
    if constexpr (hwy::IsFloat<T>())
        return source + T{0};
    else
        return source;
}

/** Pixels of the marker before the first step, where NaN counts as the least value. */
template <typename Rule, typename D, typename T>
HWY_INLINE hn::Vec<D> loadMarker(D d, const T* marker) {
    const auto pixels = hn::LoadU(d, marker);
    if constexpr (hwy::IsFloat<T>())
        return hn::Add(Rule::join(pixels, hn::Set(d, Rule::template least<T>())), hn::Zero(d));
    else
        return pixels;
}

/** The pixels of a row from begin to end. */
struct Stretch {
    ptrdiff_t begin, end;

    void include(ptrdiff_t first, ptrdiff_t last) {
        begin = HWY_MIN(begin, first);
        end = HWY_MAX(end, last);
    }
    Stretch mirrored(ptrdiff_t width) const { return {width - end, width - begin}; }
};

/**
 * Spreads the pixels of each 128-bit group within it, in steps in each of which a lane sees twice as many lanes:
 * `pixels` becomes what reaches a lane from the group, `bounds` what it lets through from before the group.
 */
template <typename Rule, From kFrom, int kBytes, typename D>
HWY_INLINE void spreadInGroups(D d, hn::Vec<D>& pixels, hn::Vec<D>& bounds) {
    using T = hn::TFromD<D>;
    if constexpr (kBytes < 16) {
        const auto reaching = moved<kFrom, kBytes>(d, pixels, hn::Set(d, Rule::template least<T>()));
        pixels = Rule::join(pixels, Rule::limit(bounds, reaching));
        bounds = Rule::limit(bounds, moved<kFrom, kBytes>(d, bounds, hn::Set(d, Rule::template most<T>())));
        spreadInGroups<Rule, kFrom, 2 * kBytes>(d, pixels, bounds);
    }
}

/**
 * The pixels of all groups, with what reaches each from before it. `carry` is the pixel before the vector, in all
 * lanes, and becomes the last one of the vector.
 */
template <typename Rule, From kFrom, typename D, typename Group>
HWY_INLINE hn::Vec<D> spreadAcrossGroups(D d, hn::Vec<D> pixels, hn::Vec<D> bounds, Group& carry) {
    using T = hn::TFromD<D>;
    if constexpr (hn::MaxLanes(D()) * sizeof(T) > 16) {
        const hn::Half<D> half;
        const auto spreadLower = [&] {
            return spreadAcrossGroups<Rule, kFrom>(half, hn::LowerHalf(half, pixels), hn::LowerHalf(half, bounds),
                                                   carry);
        };
        const auto spreadUpper = [&] {
            return spreadAcrossGroups<Rule, kFrom>(half, hn::UpperHalf(half, pixels), hn::UpperHalf(half, bounds),
                                                   carry);
        };
        if constexpr (kFrom == From::kLeft) {
            const auto lower = spreadLower();
            return hn::Combine(d, spreadUpper(), lower);
        } else {
            const auto upper = spreadUpper();
            return hn::Combine(d, upper, spreadLower());
        }
    } else {
        const auto spread = Rule::join(pixels, Rule::limit(bounds, carry));
        // The last lane of `spread`, with fewer instructions between one carry and the next.
        carry = Rule::join(repeatLast<kFrom>(d, pixels), Rule::limit(repeatLast<kFrom>(d, bounds), carry));
        return spread;
    }
}

/**
 * Spreads pixels away from one end of a row, which has at least as many as D has lanes. The row was stable before the
 * pixels of the stretch changed.
 */
template <typename Rule, From kFrom, typename D, typename T>
HWY_INLINE void spreadFrom(D d, const T* source, T* row, ptrdiff_t width, Stretch stretch) {
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));
    const auto nothing = hn::Set(hn::CappedTag<T, 16 / sizeof(T)>(), Rule::template least<T>());
    // Places are counted from the end that pixels spread from.
    const Stretch changed = kFrom == From::kLeft ? stretch : stretch.mirrored(width);
    const ptrdiff_t last = width - kLanes;
    auto carry = nothing;
    for (ptrdiff_t place = HWY_MIN(changed.begin, last);;) {
        const ptrdiff_t x = kFrom == From::kLeft ? place : last - place;
        const auto before = hn::LoadU(d, row + x);
        auto pixels = before, bounds = loadBounds<Rule>(d, source + x);
        spreadInGroups<Rule, kFrom, sizeof(T)>(d, pixels, bounds);
        pixels = spreadAcrossGroups<Rule, kFrom>(d, pixels, bounds, carry);
        const bool isStable = hn::AllTrue(d, hn::Eq(pixels, before));
        if (!isStable)
            hn::StoreU(pixels, d, row + x);
        // The last pixel of the stretch may change the one behind it, so the vector there is computed, too.
        if (place == last || (isStable && place >= changed.end))
            break;
        place += kLanes;
        if (place > last) {  // The last vector repeats pixels, which have what came from before them.
            place = last;
            carry = nothing;
        }
    }
}

/** What comes back to a pixel that spread is no more than it had, so the same stretch serves both ways. */
template <typename Rule, typename D, typename T>
HWY_NOINLINE void spreadBothWays(D d, const T* source, T* row, ptrdiff_t width, Stretch stretch) {
    spreadFrom<Rule, From::kLeft>(d, source, row, width, stretch);
    spreadFrom<Rule, From::kRight>(d, source, row, width, stretch);
}

/** The same for rows shorter than 16 bytes. */
template <typename Rule, typename T>
void spreadBothWays(const T* source, T* row, ptrdiff_t width) {
    const auto spread = [=](ptrdiff_t x, ptrdiff_t neighbour) {
        const T reaching = limitOf<Rule>(boundOf(source[x]), row[neighbour]);
        if (Rule::isBeyond(reaching, row[x]))
            row[x] = reaching;
    };
    for (ptrdiff_t x = 1; x < width; ++x)
        spread(x, x - 1);
    for (ptrdiff_t x = width - 2; x >= 0; --x)
        spread(x, x + 1);
}

/** Makes a row stable that was so before the pixels of the stretch changed: none can spread along it any more. */
template <typename Rule, typename T>
void spreadAlongRow(const T* source, T* row, ptrdiff_t width, Stretch stretch) {
    const hn::ScalableTag<T> d;
    const hn::CappedTag<T, 16 / sizeof(T)> group;
    if (width >= static_cast<ptrdiff_t>(hn::MaxLanes(d)))
        spreadBothWays<Rule>(d, source, row, width, stretch);
    else if (width >= static_cast<ptrdiff_t>(hn::MaxLanes(group)))
        spreadBothWays<Rule>(group, source, row, width, stretch);
    else
        spreadBothWays<Rule>(source, row, width);
}

}  // namespace VEKCV_VARIANT
