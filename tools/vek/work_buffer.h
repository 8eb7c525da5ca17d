#pragma once

#include <memory>

#include "picture.h"

using WorkBuffer = std::unique_ptr<uint8_t[]>;

/** Memory of the size that a query of the library gives for these arguments. */
WorkBuffer workBuffer(auto query, auto... arguments) {
    int32_t bytes = 0;
    if (query(arguments..., &bytes) != StatusOk)
        throw Failure("the work buffer", "would be larger than 2 GiB");
    return std::make_unique_for_overwrite<uint8_t[]>(static_cast<size_t>(bytes));
}
