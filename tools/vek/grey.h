#pragma once

#include "picture.h"

/**
 * A picture of 8 bits in grey: 0.299 red + 0.587 green + 0.114 blue, rounded to nearest (a half upwards); these are the
 * weights of the luma in ITU-R BT.601. What is grey already stays as it is.
 */
inline Picture inGrey(Picture picture) {
    if (picture.channels == 1)
        return picture;
    Picture result(picture.width, picture.height, 1, 8);
    const uint8_t* pixel = picture.pixels<uint8_t>();
    for (uint8_t& grey : result.bytes) {
        grey = static_cast<uint8_t>((299 * pixel[0] + 587 * pixel[1] + 114 * pixel[2] + 500) / 1000);
        pixel += 3;
    }
    return result;
}

/** A picture of 8 bits in colour; each channel of what is grey has the same value. */
inline Picture inColor(Picture picture) {
    if (picture.channels == 3)
        return picture;
    Picture result(picture.width, picture.height, 3, 8);
    for (size_t i = 0; i < result.bytes.size(); ++i)
        result.bytes[i] = picture.bytes[i / 3];
    return result;
}
