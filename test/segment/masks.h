// Masks of pixels to restore.
#pragma once

#include "test_image.h"

namespace masks {

enum class Kind { kNone, kAll, kSingle, kFewPixels, kFewKnown, kNoise, kShapes, kStripes };
inline constexpr Kind kKinds[] = {Kind::kNone,     Kind::kAll,   Kind::kSingle, Kind::kFewPixels,
                                  Kind::kFewKnown, Kind::kNoise, Kind::kShapes, Kind::kStripes};

/** Any value other than 0 is an unknown pixel. */
inline TestImage<uint8_t> make(Kind kind, RoiSize roi, Layout layout, uint32_t seed) {
    Random random(seed);
    const auto below = [&](int32_t count) { return int32_t(random.below(uint32_t(count))); };
    constexpr uint8_t kValues[] = {1, 2, 128, 255};
    const uint8_t unknown = kValues[below(4)];
    const int32_t singleX = below(roi.width), singleY = below(roi.height);
    struct Rectangle {
        int32_t x, y, width, height;
    } rectangles[4];
    for (Rectangle& r : rectangles)
        r = {below(roi.width), below(roi.height), 1 + below(40), 1 + below(20)};
    return TestImage<uint8_t>::filled(roi, layout, [&](int x, int y) {
        const auto isIn = [=](const Rectangle& r) { return x - r.x < r.width && y - r.y < r.height; };
        bool isUnknown = false;
        switch (kind) {
            case Kind::kNone:
                break;
            case Kind::kAll:
                isUnknown = true;
                break;
            case Kind::kSingle:
                isUnknown = x == singleX && y == singleY;
                break;
            case Kind::kFewPixels:
                isUnknown = random.below(20) == 0;
                break;
            case Kind::kFewKnown:
                isUnknown = random.below(40) != 0;
                break;
            case Kind::kNoise:
                isUnknown = random.below(2) == 0;
                break;
            case Kind::kShapes:
                for (const Rectangle& r : rectangles)
                    isUnknown = isUnknown || (x >= r.x && y >= r.y && isIn(r));
                break;
            case Kind::kStripes:
                isUnknown = x % 13 < 5 || y % 11 == 3;
                break;
        }
        return isUnknown ? unknown : uint8_t{0};
    });
}

}  // namespace masks
