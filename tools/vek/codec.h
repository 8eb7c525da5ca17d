#pragma once

#include "picture.h"

/** What a decoder or an encoder complains about. */
struct CodecError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/** An empty picture of the size that a file tells, if its rows can be described by a step. */
inline Picture makePicture(int64_t width, int64_t height, int32_t channels, int32_t bits) {
    if (width < 1 || height < 1 || width * channels * (bits / 8) > INT32_MAX || height > INT32_MAX)
        throw CodecError("has a size of " + std::to_string(width) + " x " + std::to_string(height) +
                         ", which is not supported");
    return {static_cast<int32_t>(width), static_cast<int32_t>(height), channels, bits};
}
