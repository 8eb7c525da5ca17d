// The states of pyramid layers.
#pragma once

#include "check.h"
#include "pyramid_size.h"
#include "work_buffer.h"

namespace VEKCV_VARIANT {

/** From one level of a pyramid to the next smaller one, or to the next larger one. */
enum class Direction : int32_t { kDown = 1, kUp };

/** Which functions take a state. */
struct LayerKind {
    Direction direction;
    int32_t elementBytes, channels;

    bool operator==(const LayerKind&) const = default;
};

/** A place between two pixels of a row or a column: the one before it, and the distance from there, below 1. */
struct LayerPosition {
    int32_t whole;
    float fraction;

    /** The place in the source, of so many pixels, that a pixel of the interpolated image lies at. */
    static LayerPosition of(Direction direction, int32_t pixel, float rate, int32_t length) {
        const auto place = static_cast<float>(pixel);
        const float position = direction == Direction::kDown ? place * rate : place / rate;
        const int64_t whole = wholePart(position);
        // In long rows positions are rounded, beyond the last pixel even.
        return {static_cast<int32_t>(whole < length ? whole : length - 1), position - static_cast<float>(whole)};
    }
};

/** The record behind a PyramidLayerState. */
struct LayerRecord {
    const LayerRecord* self;  // its address; a copy of a state elsewhere is refused
    LayerKind kind;
    RoiSize roi;  // of the largest source
    float rate;
    int32_t wholeRate;  // of a smaller level the rate, if it is an integer and all positions in a row are exact; else 0
    int32_t kernelSize;
    int32_t threads;       // for which there is scratch memory
    int64_t scratchBytes;  // of a thread
    float* taps;
    // For each element of a row of the interpolated image: the element of the source before its position, and the
    // fraction of the position.
    int32_t* elements;
    float* fractions;
    uint8_t* scratch;

    Scratch scratchOf(int32_t thread) const { return {scratch + thread * scratchBytes, scratchBytes}; }
};

}  // namespace VEKCV_VARIANT
