#include "paint.h"

#include <algorithm>

void paint(Picture& picture, const ImageRect& place, const Color& color) {
    const int32_t left = std::max(place.x, 0), right = std::min(place.x + place.width, picture.width);
    const int32_t top = std::max(place.y, 0), bottom = std::min(place.y + place.height, picture.height);
    for (int32_t y = top; y < bottom; ++y)
        for (int32_t x = left; x < right; ++x)
            std::copy_n(color.begin(), picture.channels,
                        picture.pixels<uint8_t>() + ptrdiff_t{y} * picture.step() + ptrdiff_t{x} * picture.channels);
}
