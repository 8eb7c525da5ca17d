// The states of inpainting.
#pragma once

#include <limits>

#include "image.h"
#include "simd.h"

namespace VEKCV_VARIANT {

/** The weights of the pixels around an unknown one are computed and added in so many lanes, whatever the vectors. */
constexpr int32_t kTapLanes = 8;

/** kTapLanes pixels of a row in the neighbourhood of a pixel. */
struct Taps {
    float factors[kTapLanes];  // by the distance to the pixel; 0 beyond the radius
    float dx[kTapLanes];
    float dy;
    int32_t offset;  // of the first from the pixel, in the planes of a state
};

/** Times of a map are within +-kLatest, and kNever is that of pixels that must not be used. */
constexpr float kLatest = 999999, kNever = std::numeric_limits<float>::infinity();

/** A pixel to restore. */
struct Unknown {
    int32_t x, y;          // in the region
    int32_t offset;        // in a plane
    float time;            // when the front arrives
    float slopeX, slopeY;  // the gradient of the times
};

/** How pixels are weighted. */
enum class Method : int32_t { kDirection = 0, kDistance = 1 };

/**
 * The record behind an InpaintState. Its planes hold the part of the region that the pixels to restore depend on, in a
 * margin as wide as a neighbourhood reaches.
 */
struct InpaintRecord {
    int32_t channels;
    RoiSize roi;
    Method method;
    ImageRect part;
    ptrdiff_t stride, pixels;  // of a plane
    ptrdiff_t first;           // of the pixels of the part, in a plane
    int32_t tapsCount, unknownCount;
    Taps* taps;
    Unknown* unknowns;  // in the order in which they are restored
    float* times;       // infinite in the margin, and where a pixel is not restored yet
    uint8_t* values;    // a plane for each channel

    ptrdiff_t offsetOf(int32_t x, int32_t y) const { return first + ptrdiff_t{y - part.y} * stride + (x - part.x); }
    uint8_t* plane(ptrdiff_t channel) const { return values + channel * pixels; }
};

}  // namespace VEKCV_VARIANT
