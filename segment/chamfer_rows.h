// Chamfer distances in integers: the rows of an image one after the other, in vectors of 16 bytes.
#pragma once

#include "along_row.h"
#include "chamfer_costs.h"
#include "image.h"
#include "min_max.h"
#include "promote.h"

namespace VEKCV_VARIANT {

/** The largest distance, whose bits are all set. A sum that saturates at it is no shorter than any distance. */
template <typename D>
HWY_INLINE hn::Vec<D> farthest(D d) {
    return hn::Set(d, hwy::HighestValue<hn::TFromD<D>>());
}

/** Copies elements of a row from x on; those beyond its ends are all ones. */
template <ptrdiff_t kCount, typename T>
HWY_NOINLINE void copyWithin(const T* row, ptrdiff_t x, ptrdiff_t width, T* elements) {
    for (ptrdiff_t i = 0; i < kCount; ++i)
        elements[i] = x + i >= 0 && x + i < width ? row[x + i] : hwy::HighestValue<T>();
}

/** Calls load(elements) with so many elements of a row from x on, or with a copy where some are beyond its ends. */
template <ptrdiff_t kCount, typename T, typename Load>
HWY_INLINE auto loadWithin(const T* row, ptrdiff_t x, ptrdiff_t width, const Load& load) {
    if (x >= 0 && x + kCount <= width) [[likely]]
        return load(row + x);
    T elements[kCount];
    copyWithin<kCount>(row, x, width, elements);
    return load(elements);
}

/** Places of a row in vectors of 16 bytes, which begin at multiples of that. */
template <typename T>
struct RowVectors {
    using D = hn::CappedTag<T, 16 / sizeof(T)>;
    using V = hn::Vec<D>;
    static constexpr ptrdiff_t kLanes = 16 / sizeof(T);

    ptrdiff_t width;

    ptrdiff_t last() const { return (width - 1) / kLanes * kLanes; }

    V load(const T* row, ptrdiff_t x) const {
        return loadWithin<kLanes>(
            row, x, width, [](const T* pixels) __attribute__((always_inline)) { return hn::LoadU(D(), pixels); });
    }
    void store(V v, T* row, ptrdiff_t x) const {
        if (x + kLanes <= width) [[likely]]
            return hn::StoreU(v, D(), row + x);
        T pixels[kLanes];
        hn::StoreU(v, D(), pixels);
        for (ptrdiff_t i = x; i < width; ++i)
            row[i] = pixels[i - x];
    }
};

/** A row of the image that is complete, seen through three vectors that move along it; null where there is none. */
template <From kFrom, typename T>
class RowAbove {
    using Vectors = RowVectors<T>;
    using D = typename Vectors::D;
    using V = typename Vectors::V;

  public:
    RowAbove(const T* row, Vectors vectors)
        : row_(row), vectors_(vectors), ahead_(load(kFrom == From::kLeft ? 0 : vectors.last())) {}

    /** To the vector at x, behind the one before. */
    HWY_INLINE void moveTo(ptrdiff_t x) {
        behind_ = here_;
        here_ = ahead_;
        ahead_ = load(kFrom == From::kLeft ? x + Vectors::kLanes : x - Vectors::kLanes);
    }

    V here() const { return here_; }

    /** The nearer distance of the pixels so many columns to the left and to the right. */
    template <int kColumns>
    HWY_INLINE V beside() const {
        constexpr int kBytes = kColumns * static_cast<int>(sizeof(T));
        const auto left = kFrom == From::kLeft ? behind_ : ahead_, right = kFrom == From::kLeft ? ahead_ : behind_;
        return smaller(moved<From::kLeft, kBytes>(D(), here_, left), moved<From::kRight, kBytes>(D(), here_, right));
    }

  private:
    HWY_INLINE V load(ptrdiff_t x) const { return row_ == nullptr ? farthest(D()) : vectors_.load(row_, x); }

    const T* row_;
    Vectors vectors_;
    V behind_ = farthest(D()), here_ = behind_, ahead_;
};

/** One pass of a transform with a mask of 3 x 3 or 5 x 5 pixels, which reaches 1 or 2 pixels in each direction. */
template <int kReach, From kFrom, typename T>
class ChamferPass {
    using Vectors = RowVectors<T>;
    using V = typename Vectors::V;
    static constexpr typename Vectors::D d{};
    static constexpr ptrdiff_t kLanes = Vectors::kLanes;

  public:
    ChamferPass(const ChamferCosts<int64_t>& costs, ptrdiff_t width) : costs_(saturated<T>(costs)), vectors_{width} {
        for (ptrdiff_t i = 0; i < kLanes; ++i) {
            const ptrdiff_t steps = (kFrom == From::kLeft ? i : kLanes - 1 - i) + 1;
            fromLast_[i] = costAlong(costs, steps);
            fromNextToLast_[i] = costAlong(costs, steps + 1);
            beyond_[i] = vectors_.last() + i < width ? T{0} : hwy::HighestValue<T>();
        }
        ptrdiff_t steps = 1;
        for (T& cost : costsAlong_) {
            cost = costAlong(costs, steps);
            steps *= 2;
        }
    }

    /**
     * Makes distances of the `start` of a row, load(x), from the rows that the pass computed before, the nearest one
     * first.
     */
    template <typename Start>
    HWY_INLINE void computeRow(const T* near, const T* far, T* out, const Start& start) const {
        RowAbove<kFrom, T> nearRow(near, vectors_), farRow(far, vectors_);
        const ptrdiff_t last = vectors_.last();
        V carry = farthest(d), carryBefore = carry;
        for (ptrdiff_t i = 0; i <= last; i += kLanes) {
            const ptrdiff_t x = kFrom == From::kLeft ? i : last - i;
            nearRow.moveTo(x);
            V v = smaller(start(x), smaller(plus(nearRow.here(), costs_.side),
                                            plus(nearRow.template beside<1>(), costs_.diagonal)));
            if constexpr (kReach == 2) {
                farRow.moveTo(x);
                v = smaller(v, plus(smaller(nearRow.template beside<2>(), farRow.template beside<1>()), costs_.knight));
                v = smaller(v, smaller(plus(farRow.here(), costs_.twoSides),
                                       plus(farRow.template beside<2>(), costs_.twoDiagonals)));
            }
            if (kFrom == From::kRight && i == 0)  // nothing spreads from beyond the end of the row
                v = hn::Or(v, hn::Load(d, beyond_));
            spreadInVector<0>(v);
            v = smaller(v, hn::SaturatedAdd(carry, hn::Load(d, fromLast_)));
            if constexpr (kReach == 2) {
                v = smaller(v, hn::SaturatedAdd(carryBefore, hn::Load(d, fromNextToLast_)));
                carryBefore = repeatLast<kFrom, 1>(d, v);
            }
            carry = repeatLast<kFrom>(d, v);
            vectors_.store(v, out, x);
        }
    }

  private:
    static constexpr int kDoublings = sizeof(T) == 1 ? 4 : 3;  // from one lane to all of a vector

    /** So many steps along a row: two at a time, which may cost less than twice a side, and the odd one. */
    static T costAlong(const ChamferCosts<int64_t>& costs, ptrdiff_t steps) {
        const int64_t cost = steps / 2 * costs.twoSides + steps % 2 * costs.side;
        return static_cast<T>(HWY_MIN(cost, int64_t{hwy::HighestValue<T>()}));
    }

    HWY_INLINE static V plus(V v, T cost) { return hn::SaturatedAdd(v, hn::Set(d, cost)); }

    /** Distances along the row within a vector, from lanes 1, 2, 4 and 8 steps away. */
    template <int kDoubling>
    HWY_INLINE void spreadInVector(V& v) const {
        if constexpr (kDoubling < kDoublings) {
            constexpr int kBytes = static_cast<int>(sizeof(T)) << kDoubling;
            v = smaller(v, plus(moved<kFrom, kBytes>(d, v, farthest(d)), costsAlong_[kDoubling]));
            spreadInVector<kDoubling + 1>(v);
        }
    }

    ChamferCosts<T> costs_;
    Vectors vectors_;
    T costsAlong_[kDoublings];
    alignas(16) T fromLast_[kLanes], fromNextToLast_[kLanes];  // from lanes of the vector before
    alignas(16) T beyond_[kLanes];                             // lanes of the rightmost vector that are beyond the row
};

/** Distances to the pixels of the source that are 0. The source may be the result. */
template <int kReach, typename T>
HWY_NOINLINE void transformDistances(Image<const uint8_t> source, Image<T> out, RoiSize roi,
                                     const ChamferCosts<int64_t>& costs) {
    const RowVectors<T> vectors{roi.width};
    const typename RowVectors<T>::D d;
    const ChamferPass<kReach, From::kLeft, T> forward(costs, roi.width);
    for (ptrdiff_t y = 0; y < roi.height; ++y)
        forward.computeRow(
            y < 1 ? nullptr : out.row(y - 1), y < 2 ? nullptr : out.row(y - 2), out.row(y),
            [ =, row = source.row(y) ](ptrdiff_t x) __attribute__((always_inline)) {
                return loadWithin<vectors.kLanes>(
                    row, x, vectors.width, [=](const uint8_t* pixels) __attribute__((always_inline)) {
                        return hn::Not(hn::VecFromMask(d, isZero(d, pixels)));
                    });
            });
    const ChamferPass<kReach, From::kRight, T> backward(costs, roi.width);
    for (ptrdiff_t y = roi.height - 1; y >= 0; --y)
        backward.computeRow(
            y + 1 < roi.height ? out.row(y + 1) : nullptr, y + 2 < roi.height ? out.row(y + 2) : nullptr, out.row(y),
            [ =, row = out.row(y) ](ptrdiff_t x) __attribute__((always_inline)) { return vectors.load(row, x); });
}

}  // namespace VEKCV_VARIANT
