#pragma once

#include "picture.h"

/** Throws Failure where a picture cannot be the mask of another, whose `name` is for the message. */
inline void checkMask(const std::string& path, const Picture& mask, const Picture& picture, const std::string& name) {
    if (mask.channels != 1 || mask.bits != 8 || mask.width != picture.width || mask.height != picture.height)
        throw Failure(path, "is " + mask.shape() + "; the mask must be 8-bit grey and as large as " + name + ", " +
                                std::to_string(picture.width) + " x " + std::to_string(picture.height));
}
