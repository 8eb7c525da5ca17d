#include <cmath>

#include "vekcore.h"

Status vekSqrt_32f_I(float* values, int count) {
    if (values == nullptr)
        return StatusNullPointer;
    if (count < 1)
        return StatusSizeError;
    for (int i = 0; i < count; ++i)
        values[i] = std::sqrt(values[i]);
    return StatusOk;
}
