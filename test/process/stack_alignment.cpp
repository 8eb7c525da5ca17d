// Calls from a stack that is aligned to 4 bytes only, which is all that this file is compiled for.
#include <cstring>
#include <initializer_list>

#include "expect.h"
#include "vekcore.h"

namespace {

constexpr int32_t kSize = 512, kStep = kSize * int32_t{sizeof(float)};
constexpr RoiSize kRoi{kSize, kSize}, kSmall{16, 16};

uint8_t bytes[kSize * kSize], mask[kSize * kSize], buffer[1 << 24];
int16_t derivatives[kSize * kSize];
float floats[kSize * kSize];

struct Results {
    double norm, mean, deviation;
    uint8_t difference[kSize * kSize], edges[kSize * kSize];
    int32_t sums[(kSize + 1) * (kSize + 1)];
    double squares[(kSize + 1) * (kSize + 1)];
    float smooth[kSize * kSize], roots[4];
    int cache, threads, processors;
} results;

void callAll() {
    std::memset(&results, 0, sizeof results);
    for (const RoiSize roi : {kSmall, kRoi}) {
        const Status statuses[] = {vekiNorm_L2_8u_C1MR(bytes, kSize, mask, kSize, roi, &results.norm),
                                   vekiMean_StdDev_8u_C1R(bytes, kSize, roi, &results.mean, &results.deviation),
                                   vekiAbsDiff_8u_C1R(bytes, kSize, mask, kSize, results.difference, kSize, roi),
                                   vekiSqrIntegral_8u32s64f_C1R(bytes, kSize, results.sums, (kSize + 1) * 4,
                                                                results.squares, (kSize + 1) * 8, roi, 0, 0),
                                   vekiFilterGaussBorder_32f_C1R(floats, kStep, results.smooth, kStep, roi, 5, 1.f,
                                                                 BorderReplicate, 0, buffer),
                                   vekiCanny_16s8u_C1R(derivatives, kSize * 2, derivatives, kSize * 2, results.edges,
                                                       kSize, roi, 10.f, 50.f, buffer)};
        for (const Status status : statuses)
            expect(status == StatusOk, "an operation succeeds");
    }
    for (float& root : results.roots)
        root = 2.f;
    expect(vekSqrt_32f_I(results.roots, 4) == StatusOk && vekGetMaxCacheSizeB(&results.cache) == StatusOk &&
               vekGetNumThreads(&results.threads) == StatusOk && vekSetNumThreads(2) == StatusOk,
           "the core library answers");
    results.processors = vekGetNumCoresOnDie();
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
    for (int32_t i = 0; i < kSize * kSize; ++i) {
        bytes[i] = static_cast<uint8_t>(i * 37 ^ i >> 7);
        mask[i] = static_cast<uint8_t>(i % 3);
        derivatives[i] = static_cast<int16_t>((i * 911) % 512 - 256);
        floats[i] = static_cast<float>(bytes[i]);
    }
    static Results first;
    for (const int offset : {0, 4, 8, 12}) {
        callShifted(offset, callAll);
        if (offset == 0)
            first = results;
        expect(std::memcmp(&first, &results, sizeof results) == 0, "the alignment does not show in the results");
    }
    return failures;
}
