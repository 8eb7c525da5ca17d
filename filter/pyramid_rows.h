// Rows of images that are halved or enlarged with the weights 1 4 6 4 1.
//
// A line is a row with pixels on both sides of it and kLineSlack bytes behind these, so that its vectors need not end
// where it ends. Sums of bytes are exact; those of floats keep what is constant, as every partial sum of equal values
// is one of them times a power of two.
#pragma once

#include "border.h"
#include "byte_pairs.h"
#include "rest.h"
#include "signed_bytes.h"
#include "stores.h"
#include "strided_groups.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {

/** Bytes that whole vectors may write behind the end of a row, and read behind the end of a line. */
constexpr ptrdiff_t kVectorSlack = 64, kLineSlack = 192;

/** Sums of weighted elements, of bytes at most 256 * 255. */
template <typename T>
using PyramidSum = std::conditional_t<std::is_same_v<T, float>, float, uint16_t>;

template <int32_t kChannels, typename T>
HWY_INLINE void copyPixel(T* row, ptrdiff_t from, ptrdiff_t to) {
    for (int32_t c = 0; c < kChannels; ++c)
        row[to * kChannels + c] = row[from * kChannels + c];
}

/** Copies bytes; signed ones become unsigned. */
template <typename T>
HWY_INLINE void copyBytes(const T* row, ptrdiff_t length, uint8_t* line) {
    if constexpr (std::is_signed_v<T>)
        forOverlapping(hn::ScalableTag<T>(), 0, 0, length, [=](auto d, ptrdiff_t x) {
            hn::StoreU(movedToUnsigned(hn::LoadU(d, row + x)), hn::RebindToUnsigned<decltype(d)>(), line + x);
        });
    else
        __builtin_memcpy(line, row, static_cast<size_t>(length));
}

template <typename V>
HWY_INLINE V fourTimes(V v) {
    const hn::DFromV<V> d;
    if constexpr (hwy::IsFloat<hn::TFromD<decltype(d)>>())
        return hn::Mul(v, hn::Set(d, 4.0F));
    else
        return hn::ShiftLeft<2>(v);
}

/** a + 6 b + c. */
template <typename V>
HWY_INLINE V weigh(V a, V b, V c) {
    return hn::Add(hn::Add(hn::Add(a, c), hn::Add(b, b)), fourTimes(b));
}

/** a + 4 b + 6 c + 4 d + e. */
template <typename V>
HWY_INLINE V weigh(V a, V b, V c, V d, V e) {
    return hn::Add(weigh(a, c, e), fourTimes(hn::Add(b, d)));
}

/** Sums over 2^kShift: of bytes to the nearest, where halves are rounded up, as 16 bits. */
template <int32_t kShift, typename V>
HWY_INLINE V scaleSum(V sum) {
    const hn::DFromV<V> d;
    if constexpr (kShift == 0)
        return sum;
    else if constexpr (hwy::IsFloat<hn::TFromD<decltype(d)>>())
        return hn::Mul(sum, hn::Set(d, 1.0F / (1 << kShift)));
    else
        return hn::ShiftRight<kShift>(hn::Add(sum, hn::Set(d, 1 << kShift >> 1)));
}

/** Stores results: floats, or 16-bit lanes with values of bytes. */
template <typename D, typename T>
HWY_INLINE void storePixels(D d, hn::Vec<D> v, T* out) {
    if constexpr (std::is_same_v<T, float>) {
        hn::StoreU(v, d, out);
    } else {
        const hn::Rebind<uint8_t, D> bytes;
        const auto pixels = hn::DemoteTo(bytes, hn::BitCast(hn::RebindToSigned<D>(), v));
        if constexpr (std::is_same_v<T, int8_t>)
            hn::StoreU(hn::BitCast(hn::Rebind<int8_t, D>(), movedToUnsigned(pixels)), hn::Rebind<int8_t, D>(), out);
        else
            hn::StoreU(pixels, bytes, out);
    }
}

/**
 * Calls vector(x, out + kTimes * x) for all of `length` elements, kElements of them at a time. In three channels a call
 * may write beyond its results, but not beyond those for another pixel; in the end what it writes is copied.
 */
template <int32_t kChannels, ptrdiff_t kElements, ptrdiff_t kTimes, typename T, typename Vector>
HWY_INLINE void forWholeVectors(ptrdiff_t length, T* out, const Vector& vector) {
    constexpr ptrdiff_t kBeyond = kChannels == 1 ? 0 : kChannels;
    ptrdiff_t x = 0;
    for (; x + kElements + kBeyond <= length; x += kElements)
        vector(x, out + kTimes * x);
    if (x == length)
        return;
    T last[kTimes * kElements + kGroupElements<T>];
    if (length >= kElements) {
        x = length - kElements;
        vector(x, last);
        __builtin_memcpy(out + kTimes * x, last, kTimes * kElements * sizeof(T));
    } else {
        vector(0, last);
        __builtin_memcpy(out, last, kTimes * static_cast<size_t>(length) * sizeof(T));
    }
}

/** Sums of even pixels and their neighbours; element x of `line` lies two pixels to the left of element x of a row. */
template <int32_t kChannels>
HWY_NOINLINE void halveRow(const uint8_t* line, ptrdiff_t length, uint16_t* sums) {
    const hn::ScalableTag<uint8_t> d;
    using Sums = hn::ScalableTag<uint16_t>;
    // Pairs of an element of an even pixel and that of the odd pixel behind it.
    constexpr uint8_t kNone = 0x80;
    alignas(16) static constexpr uint8_t kPairs[] = {0, 3, 1, 4, 2, 5, 6, 9, 7, 10, 8, 11, kNone, kNone, kNone, kNone};
    constexpr ptrdiff_t kResults = kChannels == 1 ? 8 : 6;  // of a 128-bit group
    const auto pairs = [=](const uint8_t* from) __attribute__((always_inline)) {
        if constexpr (kChannels == 1)
            return hn::LoadU(d, from);
        else
            return hn::TableLookupBytesOr0(loadGroups(d, from, 2 * kResults), hn::LoadDup128(d, kPairs));
    };
    for (ptrdiff_t x = 0; x < length; x += kGroups<Sums> * kResults) {
        const uint8_t* const from = line + 2 * x;
        const auto left = sumBytePairs(Sums(), pairs(from), 1, 4);
        const auto middle = sumBytePairs(Sums(), pairs(from + 2 * kChannels), 6, 4);
        const auto right = sumBytePairs(Sums(), pairs(from + 4 * kChannels), 1, 0);
        storeGroups(Sums(), hn::Add(hn::Add(left, middle), right), sums + x, kResults);
    }
}

/** The weighted sums of five rows, over 2^kShift. */
template <int32_t kShift, typename Sum, typename T>
HWY_NOINLINE void joinFive(const Sum* const (&rows)[5], ptrdiff_t length, T* out) {
    const Sum *const a = rows[0], *const b = rows[1], *const c = rows[2], *const d = rows[3], *const e = rows[4];
    forOverlapping(
        hn::ScalableTag<Sum>(), 0, 0, length, [=](auto tag, ptrdiff_t x) __attribute__((always_inline)) {
            const auto at = [=](const Sum* row) { return hn::LoadU(tag, row + x); };
            storePixels(tag, scaleSum<kShift>(weigh(at(a), at(b), at(c), at(d), at(e))), out + x);
        });
}

/** A vector of results, of groups of kChannels floats where these are three; a float behind the last is overwritten. */
template <int32_t kChannels>
HWY_INLINE void halveVector(const float* line, float* out) {
    const hn::ScalableTag<float> d;
    if constexpr (kChannels == 1) {
        constexpr ptrdiff_t kLanes = hn::MaxLanes(hn::ScalableTag<float>());
        const auto at = [=](ptrdiff_t i) { return hn::LoadU(d, line + i); };
        const auto a = at(0), b = at(kLanes), c = at(2), e = at(2 + kLanes), f = at(4), g = at(4 + kLanes);
        const auto sum = weigh(hn::ConcatEven(d, b, a), hn::ConcatOdd(d, b, a), hn::ConcatEven(d, e, c),
                               hn::ConcatOdd(d, e, c), hn::ConcatEven(d, g, f));
        hn::StoreU(scaleSum<8>(sum), d, out);
    } else {
        const auto at = [=](int32_t k) { return loadGroups(d, line + k * kChannels, 2 * kChannels); };
        storeGroups(d, scaleSum<8>(weigh(at(0), at(1), at(2), at(3), at(4))), out, kChannels);
    }
}

/** A row of results from sums of five rows. */
template <int32_t kChannels>
HWY_NOINLINE void halveRow(const float* line, ptrdiff_t length, float* out) {
    constexpr ptrdiff_t kResults = kChannels == 1 ? ptrdiff_t{hn::MaxLanes(hn::ScalableTag<float>())}
                                                  : kGroups<hn::ScalableTag<float>> * kChannels;
    forWholeVectors<kChannels, kResults, 1>(
        length, out, [=](ptrdiff_t x, float* results) __attribute__((always_inline)) {
            halveVector<kChannels>(line + 2 * x, results);
        });
}

/** Lines from three rows: `even`, 8 times a row in the place of `row`, and `odd`, twice one between it and `below`. */
template <typename T>
HWY_NOINLINE void joinThree(const T* above, const T* row, const T* below, ptrdiff_t length, PyramidSum<T>* even,
                            PyramidSum<T>* odd) {
    using Sum = PyramidSum<T>;
    forOverlapping(
        hn::ScalableTag<Sum>(), 0, 0, length, [=](auto d, ptrdiff_t x) __attribute__((always_inline)) {
            const auto at = [=](const T* elements) {
                if constexpr (std::is_same_v<T, float>)
                    return hn::LoadU(d, elements + x);
                else if constexpr (std::is_same_v<T, int8_t>)
                    return hn::PromoteTo(d, movedToUnsigned(hn::LoadU(hn::Rebind<T, decltype(d)>(), elements + x)));
                else
                    return hn::PromoteTo(d, hn::LoadU(hn::Rebind<T, decltype(d)>(), elements + x));
            };
            const auto middle = at(row), last = at(below);
            hn::StoreU(weigh(at(above), middle, last), d, even + x);
            hn::StoreU(hn::Add(middle, last), d, odd + x);
        });
}

// Rows of double width from lines that hold kScale times the pixels: element x of `line` lies a pixel to the left of
// element x of a row.

constexpr int32_t log2Of(int32_t scale) {
    return scale == 1 ? 0 : 1 + log2Of(scale / 2);
}

/** Elements of a line that a vector of sums enlarges. */
template <int32_t kChannels, typename T, typename D = hn::ScalableTag<PyramidSum<T>>>
constexpr ptrdiff_t kEnlargedAtOnce = kChannels == 1 ? ptrdiff_t{hn::MaxLanes(D())}
                                                     : kGroups<D>*(kGroupElements<PyramidSum<T>> / 3 * 3);

/** Stores pixels of three floats in turn; a float behind the last one is overwritten. */
template <typename D>
HWY_INLINE void storeInTurn(D d, hn::Vec<D> even, hn::Vec<D> odd, float* out) {
    if constexpr (kGroups<D> == 1) {
        hn::StoreU(even, d, out);
        hn::StoreU(odd, d, out + 3);
    } else {
        const hn::Half<D> half;
        storeInTurn(half, hn::LowerHalf(half, even), hn::LowerHalf(half, odd), out);
        storeInTurn(half, hn::UpperHalf(half, even), hn::UpperHalf(half, odd), out + kGroups<D> / 2 * 6);
    }
}

template <int32_t kChannels, typename D>
HWY_INLINE void storeEnlarged(D d, hn::Vec<D> even, hn::Vec<D> odd, float* out) {
    if constexpr (kChannels == 1)
        hn::StoreInterleaved2(even, odd, d, out);
    else
        storeInTurn(d, even, odd, out);
}

/** In three channels, bytes behind the last pixel are overwritten. */
template <int32_t kChannels, typename D, typename T>
HWY_INLINE void storeEnlarged(D /*d*/, hn::Vec<D> even, hn::Vec<D> odd, T* out) {
    const hn::Repartition<T, D> pixels;
    const hn::Repartition<uint8_t, D> bytes;
    auto pairs = hn::BitCast(bytes, hn::Or(even, hn::ShiftLeft<8>(odd)));
    if constexpr (std::is_same_v<T, int8_t>)
        pairs = movedToUnsigned(pairs);  // and back again
    if constexpr (kChannels == 1) {
        hn::StoreU(hn::BitCast(pixels, pairs), pixels, out);
    } else {
        alignas(16) static constexpr uint8_t kInTurn[] = {0, 2, 4, 1, 3, 5, 6, 8, 10, 7, 9, 11, 12, 13, 14, 15};
        storeGroups(pixels, hn::BitCast(pixels, hn::TableLookupBytes(pairs, hn::LoadDup128(bytes, kInTurn))), out, 12);
    }
}

template <int32_t kChannels, int32_t kScale, typename T>
HWY_INLINE void enlargeVector(const PyramidSum<T>* line, T* out) {
    const hn::ScalableTag<PyramidSum<T>> d;
    const auto at = [=](int32_t k) __attribute__((always_inline)) {
        if constexpr (kChannels == 1)
            return hn::LoadU(d, line + k);
        else
            return loadGroups(d, line + k * kChannels, kGroupElements<PyramidSum<T>> / 3 * 3);
    };
    const auto middle = at(1), last = at(2);
    storeEnlarged<kChannels>(d, scaleSum<log2Of(8 * kScale)>(weigh(at(0), middle, last)),
                             scaleSum<log2Of(2 * kScale)>(hn::Add(middle, last)), out);
}

template <int32_t kChannels, int32_t kScale, typename T>
HWY_NOINLINE void enlargeRow(const PyramidSum<T>* line, ptrdiff_t length, T* out) {
    forWholeVectors<kChannels, kEnlargedAtOnce<kChannels, T>, 2>(
        length, out, [=](ptrdiff_t x, T * results) __attribute__((always_inline)) {
            enlargeVector<kChannels, kScale>(line + x, results);
        });
}

}  // namespace VEKCV_VARIANT
