// Euclidean distances along a row, from the distances in each of its columns.
#pragma once

#include <cfloat>

#include "fold_halves.h"
#include "rest.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {

/** The rows to the nearest zero pixel of a column that has none, or more. */
constexpr int32_t kNoZero = 1 << 30;

/** Rows to the nearest zero pixel of a column, whose bits are stored in the place of floats. */
template <typename D>
HWY_INLINE hn::Vec<D> loadRows(D d, const float* pixels) {
    return hn::BitCast(d, hn::LoadU(hn::Rebind<float, D>(), pixels));
}
template <typename D>
HWY_INLINE void storeRows(hn::Vec<D> rows, D /*d*/, float* pixels) {
    const hn::Rebind<float, D> floats;
    hn::StoreU(hn::BitCast(floats, rows), floats, pixels);
}

/**
 * The squared distances of a row: of column x the least (x - j) * (x - j) + rows(j) * rows(j) of all columns j. Numbers
 * are floats where these are exact, and doubles.
 *
 * The j of a column is never less than that of a column further left. So it is searched for in every kSpacing-th
 * column first, in the first and the last one, then between those, and so on, between the j of the columns on both
 * sides; the columns in between then take the best of the few j that are left. (The search for the minima of totally
 * monotone rows, after Aggarwal, Klawe, Moran, Shor and Wilber, "Geometric Applications of a Matrix-Searching
 * Algorithm", 1987, by halves.)
 */
template <typename Number>
class RowDistances {
    using D = hn::ScalableTag<Number>;
    using V = hn::Vec<D>;
    static constexpr ptrdiff_t kLanes = hn::MaxLanes(D());
    static constexpr ptrdiff_t kSpacing = 16;

  public:
    RowDistances(Scratch memory, ptrdiff_t width)
        : width_(width),
          anchors_((width - 1) / kSpacing + 1),
          squares_(memory.take<Number>(width + kLanes - 1)),
          nearest_(memory.take<int32_t>(anchors_ + 1)) {}

    /** Replaces the rows to the nearest zero pixel of each column, the bits of integers, by squared distances. */
    HWY_NOINLINE void compute(float* row) {
        squareRows(row);
        const ptrdiff_t most = width_ - 1;
        nearest_[0] = nearest(row, 0, 0, most);
        nearest_[anchors_] = nearest(row, most, 0, most);
        ptrdiff_t stride = 1;
        while (stride < anchors_)
            stride *= 2;
        for (; stride > 1; stride /= 2)
            for (ptrdiff_t i = stride / 2; i < anchors_; i += stride)
                nearest_[i] =
                    nearest(row, i * kSpacing, nearest_[i - stride / 2], nearest_[HWY_MIN(i + stride / 2, anchors_)]);
        for (ptrdiff_t i = 0; i < anchors_; ++i)
            computeBetween(row, i);
    }

  private:
    static int32_t rowsOf(const float* row, ptrdiff_t x) {
        return hn::GetLane(loadRows(hn::CappedTag<int32_t, 1>(), row + x));
    }

    template <typename DN, typename Integers>
    static auto toNumbers(DN d, Integers integers) {
        if constexpr (sizeof(Number) == 4)
            return hn::ConvertTo(d, integers);
        else
            return hn::PromoteTo(d, integers);
    }

    void squareRows(const float* row) {
        forHalves(
            D(), 0, width_, [ =, this ](auto d, ptrdiff_t x) __attribute__((always_inline)) {
                const auto number = toNumbers(d, loadRows(hn::Rebind<int32_t, decltype(d)>(), row + x));
                const auto isNone = hn::Not(hn::Lt(number, hn::Set(d, Number{kNoZero})));
                hn::StoreU(hn::IfThenElse(isNone, hn::Set(d, Number{FLT_MAX}), hn::Mul(number, number)), d,
                           squares_ + x);
            });
        for (ptrdiff_t x = width_; x < width_ + kLanes - 1; ++x)
            squares_[x] = Number{FLT_MAX};
    }

    /** The j of a column between two others. It is no farther from the column than the zero pixel of that. */
    int32_t nearest(const float* row, ptrdiff_t x, ptrdiff_t first, ptrdiff_t last) const {
        const D d;
        const ptrdiff_t rows = rowsOf(row, x);
        first = HWY_MAX(first, x - rows);
        last = HWY_MIN(last, x + rows);
        const auto step = hn::Set(d, Number{kLanes});
        V offset = hn::Add(hn::Iota(d, 0), hn::Set(d, static_cast<Number>(first - x)));
        V least = hn::Set(d, Number{FLT_MAX}), best = offset;
        for (ptrdiff_t j = first; j <= last; j += kLanes) {
            const V square = hn::Add(hn::Mul(offset, offset), hn::LoadU(d, squares_ + j));
            best = hn::IfThenElse(hn::Lt(square, least), offset, best);
            least = hn::Min(square, least);
            offset = hn::Add(offset, step);
        }
        const auto smaller = [](auto a, auto b) { return hn::Min(a, b); };
        const V all = hn::Set(d, foldHalves(d, least, smaller));
        best = hn::IfThenElse(hn::Eq(least, all), best, hn::Set(d, Number{FLT_MAX}));
        return static_cast<int32_t>(x) + static_cast<int32_t>(foldHalves(d, best, smaller));
    }

    /** The distances of the columns from one whose j is known up to the next such. */
    HWY_INLINE void computeBetween(float* row, ptrdiff_t anchor) const {
        const D d;
        constexpr ptrdiff_t kVectors = kSpacing / kLanes;
        const ptrdiff_t x = anchor * kSpacing, first = nearest_[anchor], last = nearest_[anchor + 1];
        V offsets[kVectors], least[kVectors];
#pragma GCC unroll 8
        for (ptrdiff_t i = 0; i < kVectors; ++i) {
            offsets[i] = hn::Add(hn::Iota(d, 0), hn::Set(d, static_cast<Number>(x + i * kLanes - first)));
            least[i] = hn::Set(d, Number{FLT_MAX});
        }
        const auto one = hn::Set(d, Number{1});
        for (ptrdiff_t j = first; j <= last; ++j) {
            const auto square = hn::Set(d, squares_[j]);
#pragma GCC unroll 8
            for (ptrdiff_t i = 0; i < kVectors; ++i) {
                least[i] = hn::Min(hn::Add(hn::Mul(offsets[i], offsets[i]), square), least[i]);
                offsets[i] = hn::Sub(offsets[i], one);
            }
        }
        const ptrdiff_t count = HWY_MIN(kSpacing, width_ - x);
        float results[kSpacing];
#pragma GCC unroll 8
        for (ptrdiff_t i = 0; i < kVectors; ++i)
            storeFloats(least[i], (count == kSpacing ? row + x : results) + i * kLanes);
        for (ptrdiff_t i = 0; count < kSpacing && i < count; ++i)
            row[x + i] = results[i];
    }

    static void storeFloats(V v, float* out) {
        const hn::Rebind<float, D> floats;
        if constexpr (sizeof(Number) == 4)
            hn::StoreU(v, floats, out);
        else
            hn::StoreU(hn::DemoteTo(floats, v), floats, out);
    }

    ptrdiff_t width_, anchors_;
    Number* squares_;
    int32_t* nearest_;
};

}  // namespace VEKCV_VARIANT
