#include "boxes.h"

#include <algorithm>

#include "paint.h"

namespace {

constexpr Color kDark{0, 0, 0}, kGreen{0, 255, 0}, kWhite{255, 255, 255};

/** Lines of a thickness around a rectangle, outside of it. */
void drawFrame(Picture& picture, const ImageRect& inside, int32_t thickness, const Color& color) {
    const int32_t width = inside.width + 2 * thickness;
    const int32_t left = inside.x - thickness, right = inside.x + inside.width;
    paint(picture, {left, inside.y - thickness, width, thickness}, color);
    paint(picture, {left, inside.y + inside.height, width, thickness}, color);
    paint(picture, {left, inside.y, thickness, inside.height}, color);
    paint(picture, {right, inside.y, thickness, inside.height}, color);
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
