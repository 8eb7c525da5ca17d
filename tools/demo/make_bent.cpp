// Bends the lines of a picture as a lens does, outwards like a barrel, so that
// `vek undistort --focal 400,400 --radial -0.25,0.05` straightens them. Usage: make_bent PICTURE BENT.
#include <cstdio>

#include "interpolation.h"
#include "picture_file.h"

namespace {

constexpr double kFocal = 400, kRadial1 = -0.25, kRadial2 = 0.05;

/** The distance from the middle, in focal lengths, that a lens shows at another distance. */
double straightened(double bent) {
    double straight = bent;
    for (int i = 0; i < 20; ++i) {  // by Newton
        const double square = straight * straight;
        const double value = straight * (1 + square * (kRadial1 + square * kRadial2));
        const double slope = 1 + square * (3 * kRadial1 + square * 5 * kRadial2);
        straight -= (value - bent) / slope;
    }
    return straight;
}

/** What lies outside of the picture is black. */
Picture bent(const Picture& picture) {
    Picture result(picture.width, picture.height, picture.channels, 8);
    const double middleX = (picture.width - 1) / 2., middleY = (picture.height - 1) / 2.;
    uint8_t* to = result.pixels<uint8_t>();
    for (int32_t row = 0; row < picture.height; ++row)
        for (int32_t column = 0; column < picture.width; ++column) {
            const double distance = std::hypot(column - middleX, row - middleY) / kFocal;
            const double factor = distance == 0 ? 1 : straightened(distance) / distance;
            const double x = middleX + factor * (column - middleX), y = middleY + factor * (row - middleY);
            const bool isInside = x >= 0 && y >= 0 && x <= picture.width - 1 && y <= picture.height - 1;
            for (int32_t channel = 0; channel < picture.channels; ++channel)
                *to++ = isInside ? pixelFrom(valueAt(picture, x, y, channel)) : uint8_t{0};
        }
    return result;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 3) {
        std::fprintf(stderr, "usage: make_bent PICTURE BENT\n");
        return 2;
    }
    writePicture(argv[2], bent(readEightBit(argv[1], "lines are bent in")));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "make_bent: %s\n", error.what());
    return 1;
}
