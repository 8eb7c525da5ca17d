// Squares of four neighbouring pixels that lie anywhere in an image, one for each lane of a vector.
#pragma once

#include <cstring>

#include "image.h"
#include "lanes.h"

namespace VEKCV_VARIANT {

/** Two neighbours in a row as 32-bit words. The last word ends where the right one does, and may overlap another. */
template <typename T, int32_t kChannels>
struct PairLayout {
    static constexpr int32_t kElements = 2 * kChannels, kElementBytes = int32_t{sizeof(T)};
    static constexpr int32_t kBytes = kElements * kElementBytes;
    static constexpr int32_t kWords = (kBytes + 3) / 4;

    static constexpr int32_t byteOfWord(int32_t word) { return HWY_MAX(0, HWY_MIN(4 * word, kBytes - 4)); }
    static constexpr int32_t wordOf(int32_t element) { return element * kElementBytes / 4; }
    static constexpr int32_t bitOf(int32_t element) {
        return 8 * (element * kElementBytes - byteOfWord(wordOf(element)));
    }
};

/** One of the elements of pairs as floats. */
template <typename Pair, typename D>
HWY_INLINE hn::Vec<D> elementOf(D d, const hn::Vec<hn::RebindToUnsigned<D>> (&words)[Pair::kWords], int32_t element) {
    const hn::RebindToUnsigned<D> bits;
    constexpr int32_t kBits = 8 * Pair::kElementBytes;
    const int32_t first = Pair::bitOf(element);
    auto word = words[Pair::wordOf(element)];
    if constexpr (kBits == 32) {
        return hn::BitCast(d, word);
    } else {
        if (first > 0)
            word = hn::ShiftRightSame(word, first);
        if (first + kBits < 32)
            word = hn::And(word, hn::Set(bits, (1u << kBits) - 1));
        return hn::ConvertTo(d, hn::BitCast(hn::RebindToSigned<D>(), word));
    }
}

/** Reads pairs lane by lane, of images of any size. */
template <typename T, int32_t kChannels>
struct LoadedPairs {
    using Pair = PairLayout<T, kChannels>;
    using Tag = hn::CappedTag<float, 4>;

    Image<const T, kChannels> source;
    RoiSize roi;

    /** The words of the pairs that begin at the columns: those of the rows, and those of the rows below. */
    template <typename D, typename Integers, typename Words>
    HWY_INLINE void read(D d, Integers columns, Integers rows, Words (&upper)[Pair::kWords],
                         Words (&lower)[Pair::kWords]) const {
        constexpr size_t kLanes = hn::MaxLanes(D());
        const hn::RebindToSigned<D> integers;
        alignas(16) int32_t xs[kLanes], ys[kLanes];
        hn::Store(columns, integers, xs);
        hn::Store(rows, integers, ys);
        const T* pairs[kLanes];
        for (size_t i = 0; i < kLanes; ++i)
            pairs[i] = source.row(ys[i]) + ptrdiff_t{xs[i]} * kChannels;
        readWords(d, pairs, 0, upper);
        readWords(d, pairs, source.step, lower);
    }

  private:
    template <typename D, typename Words, size_t kLanes>
    HWY_INLINE static void readWords(D /*d*/, const T* const (&pairs)[kLanes], ptrdiff_t offset,
                                     Words (&words)[Pair::kWords]) {
#pragma GCC unroll 6
        for (int32_t word = 0; word < Pair::kWords; ++word)
            words[word] = fromLanes(
                hn::RebindToUnsigned<D>(), [&](size_t i) __attribute__((always_inline)) {
                    std::conditional_t<Pair::kBytes == 2, uint16_t, uint32_t> bits;
                    std::memcpy(&bits, reinterpret_cast<const uint8_t*>(pairs[i]) + offset + Pair::byteOfWord(word),
                                sizeof bits);
                    return uint32_t{bits};
                });
    }
};

/** Reads pairs with the instructions that load a vector from several places. */
template <typename T, int32_t kChannels>
struct GatheredPairs {
    using Pair = PairLayout<T, kChannels>;
    using Tag = hn::ScalableTag<float>;

    Image<const T, kChannels> source;
    RoiSize roi;

    /** Whether the places can be told in 32 bits, and rows are as long as what is loaded. */
    static bool canRead(Image<const T, kChannels> source, RoiSize roi) {
        const int64_t rowBytes = int64_t{roi.width} * source.kPixelBytes;
        return HWY_TARGET != HWY_SSSE3 && roi.width >= ptrdiff_t{hn::MaxLanes(Tag())} && rowBytes >= 4 &&
               int64_t{roi.height} * source.step <= INT32_MAX;
    }

    template <typename D, typename Integers, typename Words>
    HWY_INLINE void read(D /*d*/, Integers columns, Integers rows, Words (&upper)[Pair::kWords],
                         Words (&lower)[Pair::kWords]) const {
        const hn::RebindToSigned<D> integers;
        const hn::RebindToUnsigned<D> words;
        const auto* const base = reinterpret_cast<const uint8_t*>(source.pixels);
        const auto gather = [=](Integers offsets, ptrdiff_t first) __attribute__((always_inline)) {
            return hn::GatherOffset(words, reinterpret_cast<const uint32_t*>(base + first), offsets);
        };
        const auto rowOffsets = hn::Mul(rows, hn::Set(integers, source.step));
        if constexpr (Pair::kBytes == 2) {  // words that begin early enough to end in the row
            const auto begin = hn::Min(columns, hn::Set(integers, roi.width - 4));
            const auto bits = hn::BitCast(words, hn::ShiftLeft<3>(hn::Sub(columns, begin)));
            const auto offsets = hn::Add(rowOffsets, begin);
            upper[0] = hn::Shr(gather(offsets, 0), bits);
            lower[0] = hn::Shr(gather(offsets, source.step), bits);
        } else {
            const auto offsets = hn::Add(rowOffsets, hn::Mul(columns, hn::Set(integers, source.kPixelBytes)));
#pragma GCC unroll 6
            for (int32_t word = 0; word < Pair::kWords; ++word) {
                upper[word] = gather(offsets, Pair::byteOfWord(word));
                lower[word] = gather(offsets, ptrdiff_t{source.step} + Pair::byteOfWord(word));
            }
        }
    }
};

}  // namespace VEKCV_VARIANT
