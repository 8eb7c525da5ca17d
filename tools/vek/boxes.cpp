#include "boxes.h"

#include <algorithm>
#include <array>

namespace {

using Color = std::array<uint8_t, 3>;
constexpr Color kDark{0, 0, 0}, kGreen{0, 255, 0}, kWhite{255, 255, 255};

/** Sets the pixels of a rectangle, as far as they are in the picture. */
void fill(Picture& picture, const ImageRect& place, const Color& color) {
    const int32_t left = std::max(place.x, 0), right = std::min(place.x + place.width, picture.width);
    const int32_t top = std::max(place.y, 0), bottom = std::min(place.y + place.height, picture.height);
    for (int32_t y = top; y < bottom; ++y)
        for (int32_t x = left; x < right; ++x)
            std::copy_n(color.begin(), picture.channels,
                        picture.pixels<uint8_t>() + ptrdiff_t{y} * picture.step() + ptrdiff_t{x} * picture.channels);
}

/** Lines of a thickness around a rectangle, outside of it. */
void drawFrame(Picture& picture, const ImageRect& inside, int32_t thickness, const Color& color) {
    const int32_t width = inside.width + 2 * thickness;
    const int32_t left = inside.x - thickness, right = inside.x + inside.width;
    fill(picture, {left, inside.y - thickness, width, thickness}, color);
    fill(picture, {left, inside.y + inside.height, width, thickness}, color);
    fill(picture, {left, inside.y, thickness, inside.height}, color);
    fill(picture, {right, inside.y, thickness, inside.height}, color);
}

ImageRect grown(const ImageRect& place, int32_t by) {
    return {place.x - by, place.y - by, place.width + 2 * by, place.height + 2 * by};
}

}  // namespace

void drawBox(Picture& picture, const ImageRect& place) {
    // As seen in a picture that fits a screen.
    const int32_t thickness = std::max(1, std::max(picture.width, picture.height) / 400);
    drawFrame(picture, grown(place, thickness), thickness, kDark);
    drawFrame(picture, place, thickness, picture.channels == 3 ? kGreen : kWhite);
    drawFrame(picture, grown(place, -thickness), thickness, kDark);
}
