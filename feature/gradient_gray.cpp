// Images of three channels to one by a norm of their channels.
#include "bind.h"
#include "check.h"
#include "pixelwise.h"
#include "strided_groups.h"

namespace VEKCV_VARIANT {
namespace {

/**
 * rule(tag, channels...) in lanes of another type that hold the channels exactly. Its results, which fit those of d,
 * are cut off to integers.
 */
template <typename Wide, typename D, typename V, typename Rule>
HWY_INLINE V inWideLanes(D d, V c0, V c1, V c2, const Rule& rule) {
    if constexpr (hn::MaxLanes(D()) > hn::MaxLanes(hn::ScalableTag<Wide>())) {
        const hn::Half<D> half;
        const auto lower =
            inWideLanes<Wide>(half, hn::LowerHalf(half, c0), hn::LowerHalf(half, c1), hn::LowerHalf(half, c2), rule);
        const auto upper =
            inWideLanes<Wide>(half, hn::UpperHalf(half, c0), hn::UpperHalf(half, c1), hn::UpperHalf(half, c2), rule);
        return hn::Combine(d, upper, lower);
    } else {
        const hn::Rebind<Wide, D> wide;
        const hn::Rebind<int32_t, D> integers;
        if constexpr (sizeof(Wide) == 2) {
            return hn::DemoteTo(d,
                                rule(wide, hn::PromoteTo(wide, c0), hn::PromoteTo(wide, c1), hn::PromoteTo(wide, c2)));
        } else if constexpr (sizeof(Wide) == 4) {
            const auto floats = [=](V c) { return hn::ConvertTo(wide, hn::PromoteTo(integers, c)); };
            return hn::DemoteTo(d, hn::ConvertTo(integers, rule(wide, floats(c0), floats(c1), floats(c2))));
        } else {
            const auto doubles = [=](V c) { return hn::PromoteTo(wide, hn::PromoteTo(integers, c)); };
            return hn::DemoteTo(d, hn::DemoteTo(integers, rule(wide, doubles(c0), doubles(c1), doubles(c2))));
        }
    }
}

template <typename D, typename V>
HWY_INLINE V sum(D /*d*/, V c0, V c1, V c2) {
    return hn::Add(hn::Add(c0, c1), c2);
}

template <typename D, typename V>
HWY_INLINE V sumOfSquares(D d, V c0, V c1, V c2) {
    return sum(d, hn::Mul(c0, c0), hn::Mul(c1, c1), hn::Mul(c2, c2));
}

/** The sums of 8 pixels for each 128-bit group: of four that begin at byte kFirst of `first`, then likewise. */
template <size_t kFirst, size_t kSecond, typename D>
HWY_INLINE hn::Vec<hn::Repartition<int16_t, D>> sumsOfGroups(D d, hn::Vec<D> first, hn::Vec<D> second) {
    constexpr uint8_t k0 = 0x80;  // gives 0
    alignas(16) static constexpr uint8_t kPairs[] = {0, 1, 3, 4, 6, 7, 9, 10, 2, k0, 5, k0, 8, k0, 11, k0};
    const hn::Repartition<int16_t, D> sums;
    const hn::Repartition<uint16_t, D> pairs;
    const hn::Repartition<uint64_t, D> halves;
    const auto split = [=](hn::Vec<D> v, uint8_t begin) __attribute__((always_inline)) {
        const auto places = hn::Add(hn::LoadDup128(d, kPairs), hn::Set(d, begin));
        return hn::BitCast(halves, hn::TableLookupBytesOr0(v, places));
    };
    const auto a = split(first, kFirst), b = split(second, kSecond);
    const auto both = hn::BitCast(pairs, hn::InterleaveLower(halves, a, b));  // the first and the second channel
    const auto third = hn::BitCast(pairs, hn::InterleaveUpper(halves, a, b));
    const auto one = hn::And(both, hn::Set(pairs, 0xFF)), other = hn::ShiftRight<8>(both);
    return hn::BitCast(sums, hn::Add(hn::Add(one, other), third));
}

struct Largest {
    template <typename D, typename V>
    HWY_INLINE V operator()(D /*d*/, V c0, V c1, V c2) const {
        return hn::Max(hn::Max(c0, c1), c2);
    }
};

/** The mean; of integers the nearest one. A third is never halfway between two. */
struct Mean {
    /** Whole vectors of bytes, without taking all three channels apart. */
    template <typename D>
    HWY_INLINE static hn::Vec<D> ofBytes(D d, const uint8_t* pixels) {
        const hn::Repartition<int16_t, D> wide;
        const auto at = [=](ptrdiff_t byte) __attribute__((always_inline)) {
            return loadGroups(d, pixels + byte, 48);  // 16 pixels for each
        };
        // The last four pixels of a group are at the end of what is loaded, and the pixels end there, too.
        const auto lower = thirdOf(wide, sumsOfGroups<0, 0>(d, at(0), at(12)));
        const auto upper = thirdOf(wide, sumsOfGroups<0, 4>(d, at(24), at(32)));
        alignas(16) static constexpr uint8_t kInOrder[] = {0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15};
        const auto mixed = hn::BitCast(d, hn::Or(lower, hn::ShiftLeft<8>(upper)));
        return hn::TableLookupBytes(mixed, hn::LoadDup128(d, kInOrder));
    }

    template <typename D, typename V>
    HWY_INLINE V operator()(D d, V c0, V c1, V c2) const {
        using T = hn::TFromD<D>;
        if constexpr (sizeof(T) == 1) {
            return inWideLanes<int16_t>(
                d, c0, c1, c2, [](auto wide, auto a, auto b, auto c) { return thirdOf(wide, sum(wide, a, b, c)); });
        } else if constexpr (sizeof(T) == 2) {
            // Thirds of s + 1.5 are at least 1/6 away from the next integer, in any rounding.
            return inWideLanes<float>(d, c0, c1, c2, [](auto wide, auto a, auto b, auto c) {
                return hn::Mul(hn::Add(sum(wide, a, b, c), hn::Set(wide, 1.5F)), hn::Set(wide, 1.0F / 3));
            });
        } else {
            return hn::Div(sum(d, c0, c1, c2), hn::Set(d, 3.0F));
        }
    }

  private:
    /** (sum * 1365 + 2048) >> 12, as (sum * 10920 + 16384) >> 15. */
    template <typename D, typename V>
    HWY_INLINE static V thirdOf(D d, V sum) {
        return hn::MulFixedPoint15(sum, hn::Set(d, 10920));
    }
};

/**
 * The root of the mean of squares; of integers the nearest one. Near k + 1/2 sums are at least 1/4 away from
 * 3 (k + 1/2)^2, which is more than what rounding in the types below changes, in any mode.
 */
struct RootMeanSquare {
    template <typename D, typename V>
    HWY_INLINE V operator()(D d, V c0, V c1, V c2) const {
        using T = hn::TFromD<D>;
        if constexpr (hwy::IsFloat<T>()) {
            return hn::Sqrt(hn::Div(sumOfSquares(d, c0, c1, c2), hn::Set(d, T{3})));
        } else {
            using Wide = std::conditional_t<sizeof(T) == 1, float, double>;
            return inWideLanes<Wide>(d, c0, c1, c2, [](auto wide, auto a, auto b, auto c) {
                return hn::Add(hn::Sqrt(hn::Mul(sumOfSquares(wide, a, b, c), hn::Set(wide, Wide{1} / 3))),
                               hn::Set(wide, Wide{0.5}));
            });
        }
    }
};

template <typename Norm, typename T>
void writeNorm(Image<const T, 3> in, Image<T> out, RoiSize roi) {
    constexpr int32_t kStreamBytes = 4 * sizeof(T);
    // Processors by themselves do not prefetch beyond a page, and three channels take one quickly.
    constexpr ptrdiff_t kLinesAhead = 16, kLineElements = 64 / sizeof(T);
    writePixels<kStreamBytes>(
        roi, kParallelFrom,
        [=](int32_t y) {
            return [source = in.row(y)](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(d));
                const T* const pixels = source + 3 * x;
                for (ptrdiff_t i = 0; i < 3 * kLanes; i += kLineElements)
                    hwy::Prefetch(pixels + kLinesAhead * kLineElements + i);
                if constexpr (std::is_same_v<Norm, Mean> && sizeof(T) == 1 && kLanes >= 16)
                    return Mean::ofBytes(d, pixels);
                hn::Vec<decltype(d)> c0, c1, c2;
                hn::LoadInterleaved3(d, pixels, c0, c1, c2);
                return Norm()(d, c0, c1, c2);
            };
        },
        out, in);
}

template <typename T>
Status gradientColorToGray(const T* source, int32_t sourceStep, T* destination, int32_t destinationStep, RoiSize roi,
                           int32_t norm) {
    const Image<const T, 3> in{source, sourceStep};
    const Image<T> out{destination, destinationStep};
    if (Status status = Check().pointers(in, out).roi(roi).steps(roi.width, in, out))
        return status;
    switch (norm) {
        case NormInf:
            writeNorm<Largest>(in, out, roi);
            return StatusOk;
        case NormL1:
            writeNorm<Mean>(in, out, roi);
            return StatusOk;
        case NormL2:
            writeNorm<RootMeanSquare>(in, out, roi);
            return StatusOk;
        default:
            return StatusBadArgument;
    }
}

}  // namespace

VEKCV_BIND(vekiGradientColorToGray_8u_C3C1R, gradientColorToGray);
VEKCV_BIND(vekiGradientColorToGray_16u_C3C1R, gradientColorToGray);
VEKCV_BIND(vekiGradientColorToGray_32f_C3C1R, gradientColorToGray);
}  // namespace VEKCV_VARIANT
