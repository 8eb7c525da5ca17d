// Values between pixels by their definition: in integers with weights of 14 bits, or in floats.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <type_traits>

namespace subpixel {

/** The weights of the upper left, upper right, lower left and lower right pixel. */
inline std::array<int64_t, 4> integerWeights(double fractionX, double fractionY) {
    const auto x = int64_t(fractionX * 16384 + 0.5), y = int64_t(fractionY * 16384 + 0.5);
    int64_t w00 = ((16384 - x) * (16384 - y) + 16384) >> 14, w01 = ((16384 - y) * x + 16384) >> 14;
    int64_t w10 = ((16384 - x) * y + 16384) >> 14, w11 = (x * y + 16384) >> 14;
    if (const int64_t excess = w00 + w01 + w10 + w11 - 16384; excess > 0) {
        if (w00 >= w10 && w00 >= w01 && w11 <= w00)
            w00 -= excess;
        else if (w10 >= w00 && w10 >= w01 && w11 <= w10)
            w10 -= excess;
        else if (w01 <= w11)
            w11 -= excess;
        else
            w01 -= excess;
    }
    return {w00, w01, w10, w11};
}

/** A result from the four pixels around a place. */
template <typename Result, typename T>
class Definition {
  public:
    Definition(double fractionX, double fractionY, int32_t scaleFactor)
        : weights_(integerWeights(fractionX, fractionY)),
          x_(float(fractionX)),
          y_(float(fractionY)),
          exponent_(-14 - std::clamp(scaleFactor, -1000, 1000)) {}

    Result operator()(T a, T b, T c, T d) const {
        if constexpr (std::is_same_v<Result, float>) {
            const float upper = float(a) + x_ * (float(b) - float(a)), lower = float(c) + x_ * (float(d) - float(c));
            return upper + y_ * (lower - upper);
        } else {
            const int64_t sum = weights_[0] * a + weights_[1] * b + weights_[2] * c + weights_[3] * d;
            if constexpr (sizeof(Result) == sizeof(T))
                return Result((sum + 8192) >> 14);
            else
                return Result(std::min(std::floor(std::ldexp(double(sum), exponent_) + 0.5), 65535.0));
        }
    }

  private:
    std::array<int64_t, 4> weights_;
    float x_, y_;
    int32_t exponent_;
};

}  // namespace subpixel
