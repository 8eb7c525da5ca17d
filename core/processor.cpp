#include <cpuid.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <string_view>

#include "vekcore.h"

namespace {

uint64_t detectFeatures() {
    __builtin_cpu_init();
    uint64_t features = 0;
    if (__builtin_cpu_supports("ssse3"))
        features |= VekCpuSsse3;
    unsigned a = 0, b = 0, c = 0, d = 0;  // not every compiler knows this feature by name
    if (__get_cpuid(1, &a, &b, &c, &d) && (c & bit_MOVBE) != 0)
        features |= VekCpuMovbe;
    if (__builtin_cpu_supports("avx2"))
        features |= VekCpuAvx2;
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl"))
        features |= VekCpuAvx512;
    return features;
}

// The features that VEKCORE_FEATURES allows.
uint64_t featureCap() {
    struct Cap {
        std::string_view name;
        uint64_t features;
    };
    constexpr Cap kCaps[] = {
        {"ssse3", VekCpuSsse3},
        {"nubo", VekCpuSsse3 | VekCpuMovbe},
        {"avx2", VekCpuSsse3 | VekCpuMovbe | VekCpuAvx2},
        {"avx512", VekCpuSsse3 | VekCpuMovbe | VekCpuAvx2 | VekCpuAvx512},
    };
    const char* value = std::getenv("VEKCORE_FEATURES");
    for (const Cap& cap : kCaps)
        if (value != nullptr && cap.name == value)
            return cap.features;
    return UINT64_MAX;
}

// The bytes of the largest cache that a leaf of processor identification lists; 0 where the leaf does not exist. One
// maker of processors has leaf 4, the other 0x8000001D, in the same format.
int64_t largestCacheOfLeaf(unsigned leaf) {
    int64_t largest = 0;
    constexpr unsigned kMostCaches = 16;  // ends the loop where an emulator never reports "no more caches"
    for (unsigned index = 0; index < kMostCaches; ++index) {
        unsigned a = 0, b = 0, c = 0, d = 0;
        if (!__get_cpuid_count(leaf, index, &a, &b, &c, &d) || (a & 0x1f) == 0)
            break;
        const int64_t lineSize = (b & 0xfff) + 1, partitions = ((b >> 12) & 0x3ff) + 1, ways = (b >> 22) + 1;
        largest = std::max(largest, lineSize * partitions * ways * (int64_t{c} + 1));
    }
    return largest;
}

int detectLargestCache() {
    constexpr int64_t kUnknown = 1 << 20;
    const int64_t largest = std::max(largestCacheOfLeaf(4), largestCacheOfLeaf(0x8000001D));
    return static_cast<int>(largest == 0 ? kUnknown : std::min<int64_t>(largest, INT_MAX));
}

}  // namespace

uint64_t vekGetEnabledCpuFeatures() {
    static const uint64_t features = detectFeatures() & featureCap();
    return features;
}

Status vekGetMaxCacheSizeB(int* bytes) {
    static const int largest = detectLargestCache();
    if (bytes == nullptr)
        return StatusNullPointer;
    *bytes = largest;
    return StatusOk;
}
