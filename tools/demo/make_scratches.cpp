// Spoils a photograph with scratches and writing, as something to restore, and makes the mask of these pixels. The same
// on every machine. Usage: make_scratches PICTURE SCRATCHED MASK.
#include <algorithm>
#include <cstdio>
#include <initializer_list>
#include <random>

#include "picture_file.h"

namespace {

struct Point {
    double x, y;
};

constexpr int kScratches = 14;
constexpr double kScratchRadius = 1;  // pixels

using Line = std::initializer_list<Point>;
// The letters of VEKCV, 4 wide and 6 high, each 6 to the right of the one before.
constexpr double kPitch = 6, kTextWidth = 28, kTextHeight = 6, kTextRadius = 0.25;
const std::initializer_list<std::initializer_list<Line>> kLetters = {
    {{{0, 0}, {2, 6}, {4, 0}}},
    {{{4, 0}, {0, 0}, {0, 6}, {4, 6}}, {{0, 3}, {3, 3}}},
    {{{0, 0}, {0, 6}}, {{4, 0}, {0, 3}, {4, 6}}},
    {{{4, 1}, {3, 0}, {1, 0}, {0, 1}, {0, 5}, {1, 6}, {3, 6}, {4, 5}}},
    {{{0, 0}, {2, 6}, {4, 0}}},
};

/** Makes the pixels white whose centres are no farther than a radius from the line between two points. */
void draw(Picture& mask, Point from, Point to, double radius) {
    const double dx = to.x - from.x, dy = to.y - from.y, length = std::max(dx * dx + dy * dy, 1e-9);
    for (int32_t y = 0; y < mask.height; ++y)
        for (int32_t x = 0; x < mask.width; ++x) {
            const double part = std::clamp(((x - from.x) * dx + (y - from.y) * dy) / length, 0., 1.);
            const double offX = x - from.x - part * dx, offY = y - from.y - part * dy;
            if (offX * offX + offY * offY <= radius * radius)
                mask.bytes[static_cast<size_t>(ptrdiff_t{y} * mask.width + x)] = 255;
        }
}

void drawText(Picture& mask) {
    // Two thirds of the width, in the middle.
    const double unit = mask.width / (1.5 * kTextWidth);
    Point corner{(mask.width - kTextWidth * unit) / 2, (mask.height - kTextHeight * unit) / 2};
    const auto place = [&](Point point) { return Point{corner.x + unit * point.x, corner.y + unit * point.y}; };
    for (const auto& letter : kLetters) {
        for (const Line& line : letter)
            for (const Point* point = line.begin() + 1; point != line.end(); ++point)
                draw(mask, place(point[-1]), place(*point), unit * kTextRadius);
        corner.x += kPitch * unit;
    }
}

void drawScratches(Picture& mask) {
    // The raw numbers of the generator, as distributions differ between standard libraries.
    std::mt19937 random(1);
    const auto upTo = [&](int32_t size) { return static_cast<double>(random() % static_cast<uint32_t>(size)); };
    for (int i = 0; i < kScratches; ++i) {
        // In steps, as the arguments of a call have no order.
        const double top = upTo(mask.width), bottom = upTo(mask.width);
        draw(mask, {top, 0}, {bottom, mask.height - 1.}, kScratchRadius);
    }
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 4) {
        std::fprintf(stderr, "usage: make_scratches PICTURE SCRATCHED MASK\n");
        return 2;
    }
    Picture picture = readEightBit(argv[1], "scratches are for");
    Picture mask(picture.width, picture.height, 1, 8);
    drawText(mask);
    drawScratches(mask);
    for (size_t i = 0; i < picture.bytes.size(); ++i)
        picture.bytes[i] = std::max(picture.bytes[i], mask.bytes[i / static_cast<size_t>(picture.channels)]);
    writePicture(argv[2], picture);
    writePicture(argv[3], mask);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "make_scratches: %s\n", error.what());
    return 1;
}
