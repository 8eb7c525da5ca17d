#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "vekcv.h"

/** What stops the program: one line for the user, which begins with what it is about, most often the name of a file. */
struct Failure : std::runtime_error {
    Failure(const std::string& subject, const std::string& message) : std::runtime_error(subject + ": " + message) {}
};

/** The same for a name that the program could not use in any case. */
struct UsageError : Failure {
    using Failure::Failure;
};

/** A picture in memory: rows without padding, 1 or 3 channels of 8 bits, or 1 channel of 16 bits. */
struct Picture {
    int32_t width = 0, height = 0, channels = 1, bits = 8;
    std::vector<uint8_t> bytes;

    Picture() = default;
    Picture(int32_t pictureWidth, int32_t pictureHeight, int32_t pictureChannels, int32_t pictureBits)
        : width(pictureWidth),
          height(pictureHeight),
          channels(pictureChannels),
          bits(pictureBits),
          bytes(static_cast<size_t>(step()) * static_cast<size_t>(height)) {}

    int32_t step() const { return width * channels * (bits / 8); }
    RoiSize size() const { return {width, height}; }
    /** The size when every channel of a pixel counts as a pixel. */
    RoiSize elements() const { return {width * channels, height}; }
    bool hasShapeOf(const Picture& other) const {
        return width == other.width && height == other.height && channels == other.channels && bits == other.bits;
    }

    template <typename T>
    T* pixels() {
        return reinterpret_cast<T*>(bytes.data());
    }
    template <typename T>
    const T* pixels() const {
        return reinterpret_cast<const T*>(bytes.data());
    }

    /** As in "640 x 480, 8-bit colour". */
    std::string shape() const {
        return std::to_string(width) + " x " + std::to_string(height) + ", " + std::to_string(bits) + "-bit " +
               (channels == 1 ? "grey" : "colour");
    }
};
