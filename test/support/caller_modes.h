#pragma once

#include <gtest/gtest.h>

#include "modes_guard.h"

/** check() in each floating-point mode that a caller may have, with the mode in the trace. */
template <typename Check>
void forCallerModes(Check check) {
    for (const int rounding : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO})
        for (const bool flushes : {false, true}) {
            SCOPED_TRACE(::testing::Message() << "rounding " << rounding << (flushes ? ", flushing" : ""));
            const ModesGuard guard(rounding, flushes);
            check();
        }
}
