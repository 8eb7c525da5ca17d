#pragma once

#include <pmmintrin.h>

#include <cfenv>

/** Sets how the thread rounds floats, and that it takes subnormal numbers for 0, until it goes. */
class RoundingMode {
  public:
    explicit RoundingMode(int rounding) {
        std::fesetround(rounding);
        _mm_setcsr(_mm_getcsr() | _MM_FLUSH_ZERO_ON | _MM_DENORMALS_ZERO_ON);
    }
    ~RoundingMode() {
        std::fesetround(FE_TONEAREST);
        _mm_setcsr(before_);
    }
    RoundingMode(const RoundingMode&) = delete;
    RoundingMode& operator=(const RoundingMode&) = delete;

  private:
    unsigned before_ = _mm_getcsr();
};
