#pragma once

#include <gtest/gtest.h>
#include <pmmintrin.h>

#include <cfenv>

/** check() in each floating-point mode that a caller may have, with the mode in the trace. */
template <typename Check>
void forCallerModes(Check check) {
    for (const int rounding : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO})
        for (const bool flushes : {false, true}) {
            SCOPED_TRACE(::testing::Message() << "rounding " << rounding << (flushes ? ", flushing" : ""));
            const unsigned before = _mm_getcsr();
            std::fesetround(rounding);
            if (flushes)
                _mm_setcsr(_mm_getcsr() | _MM_FLUSH_ZERO_ON | _MM_DENORMALS_ZERO_ON);
            check();
            _mm_setcsr(before);
            std::fesetround(FE_TONEAREST);
        }
}
