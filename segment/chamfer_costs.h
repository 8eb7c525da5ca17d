// What the steps of chamfer distances cost.
#pragma once

#include "simd.h"

namespace VEKCV_VARIANT {

/** Steps to the next pixels of a row or column and of a diagonal; in masks of 5 x 5 pixels also those of a knight. */
template <typename T>
struct ChamferCosts {
    T side, diagonal, knight, twoSides, twoDiagonals;
};

/**
 * The costs of a mask of 3 x 3 pixels. A diagonal that costs no less than two sides is out of reach, for the sum of two
 * sides may be rounded in another way than the diagonal.
 */
template <typename T>
ChamferCosts<T> smallMaskCosts(T side, T diagonal, T outOfReach) {
    return {side, 2 * side > diagonal ? diagonal : outOfReach, outOfReach, 2 * side, outOfReach};
}

/** The costs of a mask of 5 x 5 pixels, where each step costs no more than two or three others that lead as far. */
template <typename T>
ChamferCosts<T> largeMaskCosts(T side, T diagonal, T knight) {
    const T closedSide = HWY_MIN(side, 3 * knight);
    const T closedDiagonal = HWY_MIN(diagonal, HWY_MIN(2 * side, 2 * knight));
    return {closedSide, closedDiagonal, knight, HWY_MIN(2 * closedSide, HWY_MIN(2 * closedDiagonal, 2 * knight)),
            HWY_MIN(knight + closedSide, 2 * closedDiagonal)};
}

/** Whether the step of a knight ever costs less than a side and a diagonal, or three sides. */
inline bool helpsKnight(const int32_t* metrics) {
    const int64_t side = metrics[0], diagonal = metrics[1], knight = metrics[2];
    return side + HWY_MIN(2 * side, diagonal) > knight;
}
inline bool helpsKnight(const float* metrics) {
    const double side = metrics[0], knight = metrics[2], both = side + HWY_MIN(2 * side, double{metrics[1]});
    return knight - both <= -1e-7 * both;
}

/** The same costs in T, where none needs to be above its largest value. */
template <typename T>
ChamferCosts<T> saturated(const ChamferCosts<int64_t>& costs) {
    const auto of = [](int64_t cost) { return static_cast<T>(HWY_MIN(cost, int64_t{hwy::HighestValue<T>()})); };
    return {of(costs.side), of(costs.diagonal), of(costs.knight), of(costs.twoSides), of(costs.twoDiagonals)};
}

}  // namespace VEKCV_VARIANT
