// Makes a sequence of frames of a scene with some noise: a part of a photograph, and a disc cut from the middle of
// another one that comes in from the left and leaves on the right. The camera moves by PAN pixels to the right and half
// as many down from frame to frame, or stands still with 0. The same frames on every machine.
// Usage: make_scene PICTURE OBJECT FOLDER COUNT PAN, of 1 to 99 frames.
#include <cstdio>
#include <random>

#include "grey.h"
#include "interpolation.h"
#include "numbered_frames.h"
#include "numbers.h"
#include "picture_file.h"

namespace {

constexpr int32_t kWidth = 320, kHeight = 240, kNoise = 3;
constexpr double kRadius = 32;
constexpr double kShrink = 4;  // of the object

Picture makeFrame(const Picture& scene, const Picture& object, double part, double pan, std::mt19937& random) {
    Picture frame(kWidth, kHeight, 3, 8);
    const double middleX = part * (kWidth + 2 * kRadius) - kRadius;
    const double middleY = kHeight / 2. + kHeight / 6. * std::sin(6 * part);
    uint8_t* to = frame.pixels<uint8_t>();
    for (int32_t row = 0; row < kHeight; ++row)
        for (int32_t column = 0; column < kWidth; ++column) {
            const double x = column - middleX, y = row - middleY;
            const bool isObject = x * x + y * y < kRadius * kRadius;
            for (int32_t channel = 0; channel < 3; ++channel) {
                const double value = isObject ? valueAt(object, object.width / 2. + kShrink * x,
                                                        object.height / 2. + kShrink * y, channel)
                                              : valueAt(scene, column + pan, row + pan / 2, channel);
                // The raw numbers of the generator, as distributions differ between standard libraries.
                *to++ = pixelFrom(value + static_cast<double>(random() % (2 * kNoise + 1)) - kNoise);
            }
        }
    return frame;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 6) {
        std::fprintf(stderr, "usage: make_scene PICTURE OBJECT FOLDER COUNT PAN\n");
        return 2;
    }
    const Picture scene = inColor(readEightBit(argv[1], "scenes are made of"));
    const Picture object = inColor(readEightBit(argv[2], "objects are cut from"));
    const int count = frameCount(argv[4]);
    const auto pan = numbersFrom<1, double>(argv[5], ',');
    if (!pan || (*pan)[0] < 0)
        throw Failure(argv[5], "is not a number of pixels");
    std::mt19937 random(1);
    for (int i = 0; i < count; ++i)
        writePicture(frameName(argv[3], i),
                     makeFrame(scene, object, i / std::max(count - 1., 1.), i * (*pan)[0], random));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "make_scene: %s\n", error.what());
    return 1;
}
