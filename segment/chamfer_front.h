// Chamfer distances in floats, whose sums are rounded, so that they must be added one after the other: sixteen rows at
// a time, each a few columns behind the one above it, so that all that a pixel needs is there.
#pragma once

#include <cfloat>

#include "chamfer_costs.h"

namespace VEKCV_VARIANT {

/** The pixels that are computed at a time, one of each row of the front. */
class Front {
    using D = hn::ScalableTag<float>;
    using V = hn::Vec<D>;
    static constexpr ptrdiff_t kLanes = hn::MaxLanes(D());

  public:
    static constexpr ptrdiff_t kRows = 16;

    HWY_INLINE Front() = default;
    HWY_INLINE explicit Front(float value) {
        forVectors([&](ptrdiff_t i) __attribute__((always_inline)) { v_[i] = hn::Set(D(), value); });
    }
    HWY_INLINE explicit Front(const float* pixels) {
        forVectors([&](ptrdiff_t i) __attribute__((always_inline)) { v_[i] = hn::Load(D(), pixels + i * kLanes); });
    }
    HWY_INLINE void store(float* pixels) const {
        forVectors([&](ptrdiff_t i) __attribute__((always_inline)) { hn::Store(v_[i], D(), pixels + i * kLanes); });
    }

    HWY_INLINE Front operator+(float cost) const {
        return of([&](ptrdiff_t i) __attribute__((always_inline)) { return hn::Add(v_[i], hn::Set(D(), cost)); });
    }
    HWY_INLINE friend Front nearer(const Front& a, const Front& b) {
        return of([&](ptrdiff_t i) __attribute__((always_inline)) { return hn::Min(a.v_[i], b.v_[i]); });
    }

    /** Each pixel in the row below its own; nothing reaches the first row. */
    HWY_INLINE Front below() const {
        const D d;
        alignas(64) static constexpr int32_t kRotated[] = {kLanes - 1, 0, 1, 2,  3,  4,  5,  6,
                                                           7,          8, 9, 10, 11, 12, 13, 14};
        const auto indices = hn::SetTableIndices(d, kRotated);
        const hn::RebindToSigned<D> integers;
        const auto isFirst = hn::RebindMask(d, hn::Eq(hn::Iota(integers, 0), hn::Zero(integers)));
        V before = hn::Set(d, FLT_MAX);
        return of([&](ptrdiff_t i) __attribute__((always_inline)) {
            const V rotated = hn::TableLookupLanes(v_[i], indices);
            const V moved = hn::IfThenElse(isFirst, before, rotated);
            before = rotated;
            return moved;
        });
    }

    /** The same where the columns of an image are, and nothing where they are not: row r is at column - r * lag. */
    HWY_INLINE Front within(ptrdiff_t column, ptrdiff_t width, int32_t lag) const {
        const hn::RebindToSigned<D> integers;
        const auto last = hn::Set(integers, static_cast<int32_t>(width - 1));  // a row of floats fits 31 bits
        return of([&](ptrdiff_t i) __attribute__((always_inline)) {
            alignas(64) int32_t columns[kLanes];
            for (ptrdiff_t r = 0; r < kLanes; ++r)
                columns[r] = static_cast<int32_t>(-(i * kLanes + r)) * lag;
            const auto x = hn::Add(hn::Load(integers, columns), hn::Set(integers, static_cast<int32_t>(column)));
            const auto isOutside = hn::Or(hn::Lt(x, hn::Zero(integers)), hn::Gt(x, last));
            return hn::IfThenElse(hn::RebindMask(D(), isOutside), hn::Set(D(), FLT_MAX), v_[i]);
        });
    }

  private:
    static constexpr ptrdiff_t kVectors = kRows / kLanes;

    template <typename F>
    HWY_INLINE static void forVectors(const F& f) {
#pragma GCC unroll 4
        for (ptrdiff_t i = 0; i < kVectors; ++i)
            f(i);
    }
    template <typename F>
    HWY_INLINE static Front of(const F& f) {
        Front result;
        forVectors([&](ptrdiff_t i) __attribute__((always_inline)) { result.v_[i] = f(i); });
        return result;
    }

    V v_[kVectors];
};

/** What the front had so many steps ago. */
template <int kSteps>
class Delay {
  public:
    HWY_INLINE const Front& oldest() const { return items_[kSteps - 1]; }
    HWY_INLINE const Front& operator[](int stepsAgo) const { return items_[stepsAgo - 1]; }
    HWY_INLINE void push(const Front& front) {
#pragma GCC unroll 8
        for (int i = kSteps - 1; i > 0; --i)
            items_[i] = items_[i - 1];
        items_[0] = front;
    }
    HWY_INLINE void clear() {
        for (Front& item : items_)
            item = Front(FLT_MAX);
    }

  private:
    Front items_[kSteps];
};

/**
 * What the pixels of the front get from those that were computed before, with a mask of 3 x 3 or 5 x 5 pixels, which
 * reaches 1 or 2 pixels in each direction.
 */
template <int kReach>
class FrontSteps {
  public:
    /** Columns by which a row is behind the one above it: more of them leave more time until a result is needed. */
    static constexpr int kLag = kReach + 2;

    HWY_INLINE void clear() {
        before_.clear();
        fromNear_.clear();
        fromFar_.clear();
    }

    /** The distances of the next column of each row, from what they are without the rows and columns before. */
    template <typename Limit>
    HWY_INLINE Front next(const Front& start, const ChamferCosts<float>& costs, const Limit& limit) {
        const Front oneSide = before_[1] + costs.side;
        Front front = nearer(start, fromNear_.oldest());
        if constexpr (kReach == 1) {
            front = limit(nearer(front, oneSide));
            fromNear_.push(nearer(nearer(oneSide, before_[2] + costs.diagonal), front + costs.diagonal).below());
        } else {
            const Front twoSides = before_[2] + costs.twoSides;
            front = limit(nearer(nearer(front, twoSides), oneSide));
            const Front diagonals = nearer(before_[1], before_[3]);
            const Front near = nearer(nearer(before_[2] + costs.side, diagonals + costs.diagonal),
                                      nearer(before_[4], front) + costs.knight);
            const Front far =
                nearer(nearer(twoSides, diagonals + costs.knight), nearer(before_[4], front) + costs.twoDiagonals);
            fromNear_.push(nearer(near, fromFar_.oldest()).below());
            fromFar_.push(far.below());
        }
        before_.push(front);
        return front;
    }

  private:
    Delay<2 * kReach> before_;
    Delay<kLag - kReach> fromNear_;  // what the row above, and the one above that, gives to a pixel
    Delay<kLag> fromFar_;            // what the row above gives to the pixel below this one
};

}  // namespace VEKCV_VARIANT
