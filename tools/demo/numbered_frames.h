#pragma once

#include <charconv>
#include <string>
#include <string_view>

#include "picture.h"

/** The argument of a program that makes so many frames: 1 to 99, as the names have two digits. */
inline int frameCount(std::string_view text) {
    int count = 0;
    const auto [end, error] = std::from_chars(text.begin(), text.end(), count);
    if (error != std::errc() || end != text.end() || count < 1 || count > 99)
        throw Failure(std::string(text), "is not a number of frames from 1 to 99");
    return count;
}

/** The name of a frame, counted from 0. */
inline std::string frameName(const std::string& folder, int number) {
    return folder + "/frame-" + std::to_string(101 + number).substr(1) + ".png";
}
