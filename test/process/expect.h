#pragma once

#include <cstdio>

/** The number of expectations that were not met, which a program ends with. */
inline int failures = 0;

inline void expect(bool isMet, const char* what) {
    if (isMet)
        return;
    std::fprintf(stderr, "not met: %s\n", what);
    ++failures;
}
