// Makes a short sequence of frames from a photograph: a crop that shakes by a pixel, with noise, and a bright disc that
// moves across it. The same frames on every machine. Usage: make_frames PICTURE FOLDER COUNT,
// of 1 to 99 frames.
#include <algorithm>
#include <cstdio>
#include <random>

#include "numbered_frames.h"
#include "picture_file.h"

namespace {

constexpr int32_t kWidth = 320, kHeight = 240, kRadius = 22;

Picture makeFrame(const Picture& photograph, int number, int count, std::mt19937& random) {
    Picture frame(kWidth, kHeight, 1, 8);
    // The raw numbers of the generator, as distributions differ between standard libraries.
    const auto shakeX = static_cast<int32_t>(random() % 2), shakeY = static_cast<int32_t>(random() % 2);
    const int32_t discX = kRadius + (kWidth - 2 * kRadius) * number / std::max(count - 1, 1), discY = kHeight / 2;
    const int32_t left = (photograph.width - kWidth) / 2 + shakeX, top = (photograph.height - kHeight) / 2 + shakeY;
    for (int32_t y = 0; y < kHeight; ++y)
        for (int32_t x = 0; x < kWidth; ++x) {
            const ptrdiff_t pixel = ptrdiff_t{top + y} * photograph.step() + (left + x) * photograph.channels;
            const bool inDisc = (x - discX) * (x - discX) + (y - discY) * (y - discY) <= kRadius * kRadius;
            const int value = inDisc ? 235 : photograph.pixels<uint8_t>()[pixel + photograph.channels / 2];
            const int noise = static_cast<int>(random() % 17) - 8;
            frame.bytes[static_cast<size_t>(y * kWidth + x)] = static_cast<uint8_t>(std::clamp(value + noise, 0, 255));
        }
    return frame;
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 4) {
        std::fprintf(stderr, "usage: make_frames PICTURE FOLDER COUNT\n");
        return 2;
    }
    const int count = frameCount(argv[3]);
    const Picture photograph = readPicture(argv[1]);
    if (photograph.width <= kWidth || photograph.height <= kHeight || photograph.bits != 8)
        throw Failure(argv[1], "is too small, or has not 8 bits");
    std::mt19937 random(1);
    for (int i = 0; i < count; ++i)
        writePicture(frameName(argv[2], i), makeFrame(photograph, i, count, random));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "make_frames: %s\n", error.what());
    return 1;
}
