// Calls from a stack that is aligned to 4 bytes only, which is all that this file is compiled for.
#include "calls.h"
#include "vekcore.h"

namespace {

Calls calls;

void callAll() {
    calls.run();
    float roots[] = {2.f, 2.f, 2.f, 2.f};
    int cache = 0, threads = 0;
    expect(vekSqrt_32f_I(roots, 4) == StatusOk && vekGetMaxCacheSizeB(&cache) == StatusOk &&
               vekGetNumThreads(&threads) == StatusOk && vekSetNumThreads(2) == StatusOk && vekGetNumCoresOnDie() >= 1,
           "the core library answers");
    vekFree(vekMalloc(100));
    expect(vekGetEnabledCpuFeatures() != 0 && vekcvGetLibVersion() != nullptr, "features and version are known");
}

/** Calls a function with the stack so many bytes off a multiple of 16. */
void callShifted(int offset, void (*function)()) {
    __asm__ volatile(
        "movl %%esp, %%ebx\n\t"
        "andl $-16, %%esp\n\t"
        "subl %0, %%esp\n\t"
        "call *%1\n\t"
        "movl %%ebx, %%esp"
        :
        : "S"(offset), "D"(function)
        : "ebx", "eax", "ecx", "edx", "memory", "cc");
}

}  // namespace

int main() {
    calls.fill();
    static Calls::Results first;
    for (const int offset : {0, 4, 8, 12}) {
        callShifted(offset, callAll);
        if (offset == 0)
            first = calls.results;
        expect(std::memcmp(&first, &calls.results, sizeof first) == 0, "the alignment does not show in the results");
    }
    return failures;
}
