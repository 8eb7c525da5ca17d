// Vectors for kernels: Highway, compiled for the one target that the flags of the variant give.
#pragma once

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>

namespace VEKCV_VARIANT {
namespace hn = hwy::HWY_NAMESPACE;

#if defined(__i386__) || defined(__x86_64__)
// A slip in the flags would fall back to a lesser target, and nothing but the speed would show it.
constexpr int64_t kVariantTargets[] = {HWY_SSSE3, HWY_SSSE3, HWY_AVX2, HWY_AVX3};
static_assert(HWY_STATIC_TARGET == kVariantTargets[VEKCV_VARIANT_INDEX]);
#endif

}  // namespace VEKCV_VARIANT
