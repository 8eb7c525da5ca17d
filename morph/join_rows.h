// Minima or maxima of rows, element by element.
#pragma once

#include "batches.h"
#include "rank.h"

namespace VEKCV_VARIANT {

/**
 * Computes every element of a row at least once, and no others. vectors(tag, count, x) computes `count` vectors from x
 * on, a constant: a batch of kVectors, two, or single ones for what is left, the last of which may repeat elements (see
 * forOverlapping); single elements of rows shorter than 16 bytes.
 */
template <int32_t kVectors, typename T, typename Vectors>
HWY_INLINE void forElements(ptrdiff_t length, const Vectors& vectors) {
    const hn::ScalableTag<T> d;
    constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(hn::ScalableTag<T>()));
    ptrdiff_t x = 0;
    for (; x + kVectors * kLanes <= length; x += kVectors * kLanes)
        vectors(d, std::integral_constant<int32_t, kVectors>(), x);
    if constexpr (kVectors > 2)
        if (x + 2 * kLanes <= length) {
            vectors(d, std::integral_constant<int32_t, 2>(), x);
            x += 2 * kLanes;
        }
    const auto one = [&](auto part, ptrdiff_t i) __attribute__((always_inline)) {
        vectors(part, std::integral_constant<int32_t, 1>(), i);
    };
    if (!forOverlapping<16 / sizeof(T)>(d, 0, x, length, one))
        for (x = 0; x < length; ++x)
            one(hn::CappedTag<T, 1>(), x);
}

/** Several vectors of neighbouring elements. */
template <typename Rank, typename D, int32_t kVectors>
struct Vectors {
    static constexpr auto kLanes = static_cast<ptrdiff_t>(hn::MaxLanes(D()));

    hn::Vec<D> v[kVectors];

    HWY_INLINE void load(const hn::TFromD<D>* row) {
#pragma GCC unroll 4
        for (int32_t i = 0; i < kVectors; ++i)
            v[i] = Rank::clean(hn::LoadU(D(), row + i * kLanes));
    }
    HWY_INLINE void join(const hn::TFromD<D>* row) {
#pragma GCC unroll 4
        for (int32_t i = 0; i < kVectors; ++i)
            v[i] = Rank::join(Rank::clean(hn::LoadU(D(), row + i * kLanes)), v[i]);
    }
    HWY_INLINE void join(const Vectors& other) {
#pragma GCC unroll 4
        for (int32_t i = 0; i < kVectors; ++i)
            v[i] = Rank::join(other.v[i], v[i]);
    }
    HWY_INLINE void store(hn::TFromD<D>* row) const {
#pragma GCC unroll 4
        for (int32_t i = 0; i < kVectors; ++i)
            hn::StoreU(v[i], D(), row + i * kLanes);
    }
};

/**
 * out[x] = the rank of rows[0][x] to rows[count - 1][x]. Where length is a whole number of vectors, `out` may be the
 * row that begins first.
 */
template <typename Rank, typename T>
HWY_NOINLINE void joinRows(const T* const* rows, int32_t count, ptrdiff_t length, T* out) {
    forElements<kVectorsAtOnce, T>(
        length, [=](auto d, auto vectors, ptrdiff_t x) __attribute__((always_inline)) {
            Vectors<Rank, decltype(d), vectors> joined;
            joined.load(rows[0] + x);
            for (int32_t k = 1; k < count; ++k)
                joined.join(rows[k] + x);
            joined.store(out + x);
        });
}

/** Parts of a line that are joined at once, at most. */
constexpr int32_t kMostJoined = 6;

/** How many pixels along a line are joined in each of the steps to a given number, from the last step to the first. */
struct LineSteps {
    int32_t lengths[16], count = 0;

    explicit LineSteps(int32_t length) {
        for (; length > kMostJoined; length = (length + kMostJoined - 2) / (kMostJoined - 1))
            lengths[count++] = length;
        lengths[count++] = length;
    }
};

/** Sets pointers to ranks of `joined` pixels that make up `length` <= kMostJoined * joined of them; how many. */
template <typename T>
int32_t partsAlong(const T* line, int32_t channels, int32_t joined, int32_t length, const T** parts) {
    int32_t count = 0;
    for (int32_t x = 0; x < length - joined; x += joined)
        parts[count++] = line + ptrdiff_t{x} * channels;
    parts[count++] = line + ptrdiff_t{length - joined} * channels;
    return count;
}

/**
 * The ranks of `length` pixels from those of `joined` pixels, from each element of a line on; `out` may be the line
 * where `elements` are whole vectors.
 */
template <typename Rank, typename T>
void joinAlong(const T* line, int32_t channels, int32_t joined, int32_t length, ptrdiff_t elements, T* out) {
    const T* parts[kMostJoined];
    const int32_t count = partsAlong(line, channels, joined, length, parts);
    joinRows<Rank>(parts, count, elements, out);
}

/** Sets `count` pixels from `out` on, and up to three elements behind them, to a pixel. */
template <typename T>
HWY_INLINE void fillPixels(const T* pixel, int32_t channels, int32_t count, T* out) {
    const hn::CappedTag<T, 4> d;
    const auto value = channels == 1 ? hn::Set(d, *pixel) : hn::LoadU(d, pixel);
    const ptrdiff_t step = channels == 1 ? 4 : channels, elements = ptrdiff_t{count} * channels;
    for (ptrdiff_t i = 0; i < elements; i += step)
        hn::StoreU(value, d, out + i);
}

/**
 * Sets pixels on both sides of a row to its first and its last one. There is memory for three elements more behind
 * them.
 */
template <typename T>
HWY_INLINE void fillBeside(T* row, int32_t width, int32_t channels, int32_t before, int32_t after) {
    const hn::CappedTag<T, 4> d;
    const auto first = hn::LoadU(d, row);
    fillPixels(row, channels, before, row - ptrdiff_t{before} * channels);
    hn::StoreU(first, d, row);
    T* const end = row + ptrdiff_t{width} * channels;
    fillPixels(end - channels, channels, after, end);
}

/** Rows of results: row k begins `stride` elements behind row k - 1. */
template <typename T>
struct ResultRows {
    T* first;
    ptrdiff_t stride;

    T* operator[](int32_t k) const { return first + k * stride; }
};

/** Results that slideDown computes at once: all of them, and a vector more, are in registers. */
constexpr int32_t kMostRowsAtOnce = sizeof(void*) == 8 ? 8 : 4;

/**
 * Row k of kRows results is the rank of rows[k] to rows[k + count - 1], and with `joins` of what it was, too. They
 * share rows[kRows - 1] to rows[count - 1], so count >= kRows.
 */
template <typename Rank, int32_t kRows, typename T>
HWY_NOINLINE void slideDown(const T* const* rows, int32_t count, ptrdiff_t length, bool joins, ResultRows<T> out) {
    constexpr int32_t kRegisters = HWY_TARGET == HWY_AVX3 ? 32 : 2 * sizeof(void*);
    constexpr int32_t kVectors = HWY_MAX(1, HWY_MIN(kVectorsAtOnce, (kRegisters - 4) / (kRows + 1)));
    forElements<kVectors, T>(
        length, [=](auto d, auto vectors, ptrdiff_t x) __attribute__((always_inline)) {
            Vectors<Rank, decltype(d), vectors>
                above[kRows];  // what a result has from the rows down to the last shared
            above[kRows - 1].load(rows[kRows - 1] + x);
            for (int32_t k = kRows; k < count; ++k)
                above[kRows - 1].join(rows[k] + x);
#pragma GCC unroll 8
            for (int32_t k = kRows - 2; k >= 0; --k) {
                above[k] = above[k + 1];
                above[k].join(rows[k] + x);
            }
            if (joins) {
#pragma GCC unroll 8
                for (int32_t k = 0; k < kRows; ++k)
                    above[k].join(out[k] + x);
            }
            above[0].store(out[0] + x);
            Vectors<Rank, decltype(d), vectors> below;
            below.load(rows[count] + x);
#pragma GCC unroll 8
            for (int32_t k = 1; k < kRows; ++k) {
                if (k > 1)
                    below.join(rows[count + k - 1] + x);
                above[k].join(below);
                above[k].store(out[k] + x);
            }
        });
}

/**
 * The same for any number of results, up to count, in two passes (van Herk 1992; Gil and Werman 1993): upwards from the
 * rows that all results share, then downwards from there.
 */
template <typename Rank, typename T>
HWY_NOINLINE void slideFarDown(const T* const* rows, int32_t count, ptrdiff_t length, int32_t results,
                               ResultRows<T> out) {
    forElements<kVectorsAtOnce, T>(
        length, [=](auto d, auto vectors, ptrdiff_t x) __attribute__((always_inline)) {
            Vectors<Rank, decltype(d), vectors> joined;
            joined.load(rows[results - 1] + x);
            for (int32_t k = results; k < count; ++k)
                joined.join(rows[k] + x);
            joined.store(out[results - 1] + x);
            for (int32_t k = results - 2; k >= 0; --k) {
                joined.join(rows[k] + x);
                joined.store(out[k] + x);
            }
            if (results == 1)
                return;
            joined.load(rows[count] + x);
            for (int32_t k = 1;; ++k) {
                auto result = joined;
                result.join(out[k] + x);
                result.store(out[k] + x);
                if (k == results - 1)
                    break;
                joined.join(rows[count + k] + x);
            }
        });
}

}  // namespace VEKCV_VARIANT
