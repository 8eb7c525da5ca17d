#pragma once

#include <pmmintrin.h>

#include <cfenv>

/**
 * Sets a rounding for the thread and, with `flushes`, that subnormal numbers count as 0; at the end of the scope the
 * thread has the modes that a program begins with.
 */
class ModesGuard {
  public:
    ModesGuard(int rounding, bool flushes) {
        std::fesetround(rounding);
        if (flushes)
            _mm_setcsr(_mm_getcsr() | _MM_FLUSH_ZERO_ON | _MM_DENORMALS_ZERO_ON);
    }
    ~ModesGuard() {
        _mm_setcsr(before_);
        std::fesetround(FE_TONEAREST);
    }
    ModesGuard(const ModesGuard&) = delete;
    ModesGuard& operator=(const ModesGuard&) = delete;

  private:
    unsigned before_ = _mm_getcsr();
};
