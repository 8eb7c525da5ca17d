#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "random.h"
#include "regions.h"
#include "test_image.h"
#include "thread_count.h"

// The definitions of the rounding rules, and what the tests of both filters call with.

constexpr int32_t kSizes[] = {1, 2, 3, 5, 7, 15, 31, 64};
constexpr int32_t kDivisors[] = {1, -1, 3, 16, 256, -7, INT32_MIN};

/** Rounds to the nearest integer, to the even one of two, or towards zero, and saturates. */
template <typename Result>
Result rounded(float value, bool isNearest) {
    using Limits = std::numeric_limits<Result>;
    const float least = float(Limits::min()), most = float(Limits::max());
    value = value < least ? least : value > most ? most : value;
    return Result(isNearest ? std::nearbyint(value) : std::trunc(value));
}

/** A sum of products modulo 2^32. */
class IntegerSum {
  public:
    void add(int64_t product) { sum_ = uint32_t(sum_ + uint64_t(product)); }
    int32_t value() const { return int32_t(sum_); }

  private:
    uint32_t sum_ = 0;
};

/** The addresses of the rows of an image. */
template <typename Pointer, typename T>
std::vector<Pointer> rowsOf(const TestImage<T>& image) {
    std::vector<Pointer> rows;
    for (int y = 0; y < image.roi().height; ++y)
        rows.push_back(&image.at(0, y));
    return rows;
}

/** Taps of which sums stay small, or any. */
template <typename Tap>
std::vector<Tap> randomKernel(int32_t size, uint32_t seed, bool isSmall) {
    Random random(seed);
    std::vector<Tap> kernel;
    for (int32_t k = 0; k < size; ++k)
        if constexpr (std::is_floating_point_v<Tap>)
            kernel.push_back(isSmall ? float(int32_t(random.below(2001)) - 1000) / 256 : random.value<float>());
        else
            kernel.push_back(isSmall ? Tap(int32_t(random.below(19)) - 9) : random.value<Tap>());
    return kernel;
}
