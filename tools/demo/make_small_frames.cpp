// Makes small frames of a photograph as a shaking camera with few pixels would: half as wide and high, each moved by
// another fraction of a pixel, with noise. The first is not moved. The same frames on every machine.
// Usage: make_small_frames PICTURE FOLDER COUNT, of 1 to 99 frames.
#include <cstdio>
#include <random>

#include "grey.h"
#include "interpolation.h"
#include "numbered_frames.h"
#include "picture_file.h"

namespace {

constexpr double kLargestShift = 2;  // pixels of the photograph
constexpr double kNoise = 3;         // standard deviation

/** From 0 to 1. The raw numbers of the generator, as distributions differ between standard libraries. */
double part(std::mt19937& random) {
    return static_cast<double>(random()) / static_cast<double>(std::mt19937::max());
}

/** A number that is normally distributed, nearly: its deviation is 1. */
double normal(std::mt19937& random) {
    double sum = 0;
    for (int i = 0; i < 12; ++i)
        sum += part(random) - 0.5;
    return sum;
}

Picture makeFrame(const Picture& photograph, double shiftX, double shiftY, std::mt19937& random) {
    Picture frame(photograph.width / 2, photograph.height / 2, 1, 8);
    uint8_t* to = frame.pixels<uint8_t>();
    for (int32_t y = 0; y < frame.height; ++y)
        for (int32_t x = 0; x < frame.width; ++x) {
            double sum = 0;
            for (const int32_t i : {0, 1})
                for (const int32_t j : {0, 1})
                    sum += valueAt(photograph, 2 * x + j + shiftX, 2 * y + i + shiftY);
            *to++ = pixelFrom(sum / 4 + kNoise * normal(random));
        }
    return frame;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 4) {
        std::fprintf(stderr, "usage: make_small_frames PICTURE FOLDER COUNT\n");
        return 2;
    }
    const int count = frameCount(argv[3]);
    const Picture photograph = inGrey(readEightBit(argv[1], "small frames are made of"));
    if (photograph.width < 2 || photograph.height < 2)
        throw Failure(argv[1], "is too small");
    std::mt19937 random(1);
    for (int i = 0; i < count; ++i) {
        // In steps, as the arguments of a call have no order.
        const double shiftX = i == 0 ? 0 : kLargestShift * (2 * part(random) - 1);
        const double shiftY = i == 0 ? 0 : kLargestShift * (2 * part(random) - 1);
        writePicture(frameName(argv[2], i), makeFrame(photograph, shiftX, shiftY, random));
    }
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "make_small_frames: %s\n", error.what());
    return 1;
}
