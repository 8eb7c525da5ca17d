#pragma once

#include <cmath>

#include "random.h"

/** Running sums of the values at x modulo 16, which are added in pairs: the order in which floats are added. */
template <typename T>
class SixteenSums {
  public:
    void add(int x, T value) { sums_[x % 16] += value; }
    T total() {
        for (int half = 8; half > 0; half /= 2)
            for (int k = 0; k < half; ++k)
                sums_[k] += sums_[k + half];
        return sums_[0];
    }

  private:
    T sums_[16] = {};
};

/** Numbers without the special floats of Random::value, with which most sums would be a NaN. */
template <typename T>
T ordinary(Random& random) {
    if constexpr (std::is_floating_point_v<T>)
        return float(int32_t(random.below(2000001)) - 1000000) / 1024;
    else
        return random.value<T>();
}

/** Floats of very different magnitudes, so that every sum is rounded, in double too. */
inline float inexact(Random& random) {
    return std::ldexp(float(random.below(1 << 24)), int(random.below(60)) - 54);
}
