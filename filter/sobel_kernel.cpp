// Kernels of derivatives.
#include <cmath>
#include <limits>

#include "bind.h"
#include "check.h"

namespace VEKCV_VARIANT {
namespace {

constexpr int32_t kLeastSize = 3, kLargestSize = 31;

/** (1 + z)^(size - 1 - order) * (z - 1)^order, times sign: whole numbers below 2^31. */
void makeKernel(int64_t* kernel, int32_t size, int32_t order, int32_t sign) {
    for (int32_t i = 0; i < size; ++i)
        kernel[i] = i == 0 ? sign : 0;
    for (int32_t factor = 0; factor < size - 1; ++factor)
        for (int32_t i = size - 1; i >= 0; --i)
            kernel[i] = (factor < order ? -kernel[i] : kernel[i]) + (i > 0 ? kernel[i - 1] : 0);
}

template <typename T>
Status sobelKernel(T* kernel, int32_t kernelSize, int32_t derivativeOrder, int32_t sign) {
    const bool isSize = kernelSize >= kLeastSize && kernelSize <= kLargestSize && kernelSize % 2 == 1;
    if (Status status = Check()
                            .pointers(kernel)
                            .require(isSize, StatusSizeError)
                            .require(derivativeOrder >= 0 && derivativeOrder <= 2, StatusBadArgument)
                            .require(sign == 1 || sign == -1, StatusBadArgument))
        return status;
    int64_t taps[kLargestSize];
    makeKernel(taps, kernelSize, derivativeOrder, sign);
    for (int32_t i = 0; i < kernelSize; ++i)
        if (!std::is_same_v<T, float> && std::abs(taps[i]) > std::numeric_limits<int16_t>::max())
            return StatusSizeError;
    for (int32_t i = 0; i < kernelSize; ++i)
        kernel[i] = static_cast<T>(taps[i]);
    return StatusOk;
}

}  // namespace

VEKCV_BIND(vekiGenSobelKernel_16s, sobelKernel);
VEKCV_BIND(vekiGenSobelKernel_32f, sobelKernel);
}  // namespace VEKCV_VARIANT
