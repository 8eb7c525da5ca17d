#pragma once

#include "library_call.h"

/** |first - second| of two pictures of the same shape. */
inline Picture absoluteDifference(const Picture& first, const Picture& second) {
    Picture result(first.width, first.height, first.channels, first.bits);
    const auto call = [&]<typename T>(const char* name, auto function, T*) {
        callLibrary(name, function, first.pixels<T>(), first.step(), second.pixels<T>(), second.step(),
                    result.pixels<T>(), result.step(), first.size());
    };
    if (first.bits == 16)
        call("vekiAbsDiff_16u_C1R", vekiAbsDiff_16u_C1R, result.pixels<uint16_t>());
    else if (first.channels == 3)
        call("vekiAbsDiff_8u_C3R", vekiAbsDiff_8u_C3R, result.pixels<uint8_t>());
    else
        call("vekiAbsDiff_8u_C1R", vekiAbsDiff_8u_C1R, result.pixels<uint8_t>());
    return result;
}
