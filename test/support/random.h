#pragma once

#include <cstdint>
#include <iterator>
#include <limits>
#include <type_traits>

/** A small generator of its own, so that every build tests the same numbers. */
class Random {
  public:
    explicit Random(uint32_t seed) : state_(seed * 2654435761u + 1u) {}

    uint32_t bits() {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        return uint32_t(state_ >> 33);
    }

    uint32_t below(uint32_t count) { return bits() % count; }

    /** Any value of a type; extremes, and for floats the special values, more often than by chance. */
    template <typename T>
    T value() {
        if constexpr (std::is_floating_point_v<T>) {
            using Limits = std::numeric_limits<T>;
            constexpr T kSpecial[] = {
                T(0),          T(-0.0),          Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(),
                Limits::max(), Limits::lowest(), Limits::min(),      Limits::denorm_min()};
            if (below(12) == 0)
                return kSpecial[below(std::size(kSpecial))];
            const auto numerator = T(int32_t(bits()) - (1 << 30));
            return numerator / T(1 << below(30));
        } else {
            using Limits = std::numeric_limits<T>;
            constexpr T kSpecial[] = {Limits::min(), Limits::max(), T(0), T(1)};
            return below(8) == 0 ? kSpecial[below(4)] : T(bits());
        }
    }

    /** Any value of a type; floats are mostly of one magnitude and seldom special, so that not every sum is a NaN. */
    template <typename T>
    T summand() {
        if constexpr (std::is_floating_point_v<T>)
            if (below(4) != 0)
                return T(int32_t(bits()) - (1 << 30)) / T(1 << 20);
        return value<T>();
    }

    /**
     * A mask byte: 0, or one of several values that count as set. Most bytes are drawn alone, and some in stretches,
     * which select or leave out whole batches of vectors.
     */
    uint8_t mask() {
        if (maskStretch_ == 0) {
            maskStretch_ = below(64) == 0 ? 1 + below(256) : 1;
            isMaskSet_ = below(2) == 0;
        }
        --maskStretch_;
        constexpr uint8_t kSet[] = {1, 2, 128, 255};
        return isMaskSet_ ? kSet[below(4)] : uint8_t{0};
    }

  private:
    uint64_t state_;
    uint32_t maskStretch_ = 0;
    bool isMaskSet_ = false;
};
