#include "table.h"
#include "vekcore.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace vekcv {

int32_t VariantIndex = 0;
bool RegistersHaveUpperHalves = false;

namespace {

enum Variant : int32_t { kSsse3, kNubo, kAvx2, kAvx512 };

int32_t selectVariant(uint64_t features) {
    if (VEKCV_VARIANTS > kAvx512 && (features & VekCpuAvx512) != 0)
        return kAvx512;
    if (VEKCV_VARIANTS > kAvx2 && (features & VekCpuAvx2) != 0)
        return kAvx2;
    constexpr uint64_t kNuboFeatures = VekCpuSsse3 | VekCpuMovbe;
    return VEKCV_VARIANTS > kNubo && (features & kNuboFeatures) == kNuboFeatures ? kNubo : kSsse3;
}

constexpr uint32_t kProcessAttach = 1;

int32_t attach(uint32_t reason) {
    if (reason == kProcessAttach) {
        const uint64_t features = vekGetEnabledCpuFeatures();
        VariantIndex = selectVariant(features);
        RegistersHaveUpperHalves = (features & VekCpuAvx2) != 0;
    }
    return 1;
}

}  // namespace
}  // namespace vekcv

#if defined(_WIN32)
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    return vekcv::attach(reason);
}
#else
// Ahead of the program's own constructors, which may call exports already where the library is linked statically.
__attribute__((constructor(101))) static void attachProcess() {
    vekcv::attach(vekcv::kProcessAttach);
}
#endif
