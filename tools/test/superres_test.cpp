// vek superres: pictures that come back from small frames of them.
#include <cmath>

#include "run_vek.h"

namespace {

/** The ratio of the range of pixels to the root of the mean square of the differences, in decibels. */
double noiseRatio(const Picture& a, const Picture& b) {
    const size_t count = a.bytes.size() / static_cast<size_t>(a.bits / 8);
    double squares = 0;
    for (size_t i = 0; i < count; ++i)
        squares += std::pow(valueAt(a, i) - valueAt(b, i), 2);
    const double peak = a.bits == 16 ? 65535 : 255;
    return 10 * std::log10(peak * peak * static_cast<double>(count) / squares);
}

struct Ratios {
    double result, usual;
};

/** What a command prints, which must be true of out.png. */
Ratios ratiosOf(const std::string& arguments, const Picture& original) {
    writePicture("original.png", original);
    const Result result = vek("superres" + arguments + " -o out.png --reference original.png");
    EXPECT_EQ(0, result.status) << result.output;
    Ratios ratios{};
    EXPECT_EQ(2, std::sscanf(result.output.c_str(), "%lf dB, and %lf dB of the first frame enlarged\n", &ratios.result,
                             &ratios.usual))
        << result.output;
    EXPECT_NEAR(noiseRatio(readPicture("out.png"), original), ratios.result, 0.006);
    return ratios;
}

/** The photographer's head, in so many channels and bits. */
Picture original(int32_t channels, int32_t bits) {
    const Picture camera = readPicture(photograph("camera.png"));
    Picture result(160, 140, channels, bits);
    for (int32_t i = 0; i < 160 * 140 * channels; ++i) {
        const int32_t x = i / channels % 160, y = i / channels / 160, channel = i % channels;
        const int value = valueAt(camera, static_cast<size_t>((60 + y) * camera.width + 160 + x));
        const int light = channel == 1 ? 255 - value : value;
        if (bits == 16)
            result.pixels<uint16_t>()[i] = static_cast<uint16_t>(257 * light);
        else
            result.bytes[static_cast<size_t>(i)] = static_cast<uint8_t>(light);
    }
    return result;
}

/** Each pixel is the mean of two by two of a picture that is moved by whole pixels; its edge pixels continue it. */
Picture smallFrame(const Picture& of, int32_t right, int32_t down) {
    Picture result(of.width / 2, of.height / 2, of.channels, of.bits);
    for (int32_t i = 0; i < result.width * result.height * of.channels; ++i) {
        const int32_t x = i / of.channels % result.width, y = i / of.channels / result.width, channel = i % of.channels;
        int sum = 2;
        for (const int32_t j : {0, 1})
            for (const int32_t k : {0, 1}) {
                const int32_t column = std::clamp(2 * x + k + right, 0, of.width - 1);
                const int32_t row = std::clamp(2 * y + j + down, 0, of.height - 1);
                sum += valueAt(of, static_cast<size_t>((row * of.width + column) * of.channels + channel));
            }
        if (of.bits == 16)
            result.pixels<uint16_t>()[i] = static_cast<uint16_t>(sum / 4);
        else
            result.bytes[static_cast<size_t>(i)] = static_cast<uint8_t>(sum / 4);
    }
    return result;
}

TEST_F(Vek, RestoresWhatSmallFramesHaveLost) {
    const Result made =
        run(pathIn("MAKE_SMALL_FRAMES", "the program make_small_frames") + " " + photograph("camera.png") + " . 16");
    ASSERT_EQ(0, made.status) << made.output;
    const Ratios ratios = ratiosOf(" frame-*.png", readPicture(photograph("camera.png")));
    EXPECT_LE(ratios.usual + 4, ratios.result);
}

TEST_F(Vek, RestoresPicturesOfEveryKind) {
    for (const auto& [channels, bits] : {std::pair{1, 8}, {3, 8}, {1, 16}}) {
        const Picture picture = original(channels, bits);
        SCOPED_TRACE(picture.shape());
        std::string names;
        for (int i = 0; i < 8; ++i) {
            const std::string name = "s" + std::to_string(i) + ".png";
            writePicture(name, smallFrame(picture, i % 2 + i / 4, -(i / 2 % 2)));
            names += " " + name;
        }
        const Ratios ratios = ratiosOf(names + " --smoothness 0.02", picture);
        EXPECT_LE(ratios.usual + 3, ratios.result);
    }
}

TEST_F(Vek, EnlargesASingleFrame) {
    for (const auto& [channels, bits] : {std::pair{1, 8}, {3, 8}, {1, 16}}) {
        // A ramp stays one, but for what is rounded and what lies beside its edges.
        Picture ramp(20, 16, channels, bits);
        for (int32_t i = 0; i < 20 * 16 * channels; ++i) {
            const int value = 40 + 4 * (i / channels % 20) + 3 * (i / channels / 20);
            if (bits == 16)
                ramp.pixels<uint16_t>()[i] = static_cast<uint16_t>(256 * value);
            else
                ramp.bytes[static_cast<size_t>(i)] = static_cast<uint8_t>(value);
        }
        writePicture("ramp.png", ramp);
        SCOPED_TRACE(ramp.shape());
        const Picture out = outputOf("superres ramp.png -o out.png");
        ASSERT_EQ(Picture(40, 32, channels, bits).shape(), out.shape());
        const int unit = bits == 16 ? 256 : 1;
        for (int32_t y = 4; y < 28; ++y)
            for (int32_t x = 4; x < 36; ++x)
                for (int32_t channel = 0; channel < channels; ++channel)
                    ASSERT_NEAR((40 + 2 * (x - 0.5) + 1.5 * (y - 0.5)) * unit,
                                valueAt(out, static_cast<size_t>((y * 40 + x) * channels + channel)), 1.5 * unit)
                        << x << ", " << y;
    }
}

TEST_F(Vek, SmoothsAsMuchAsIsWanted) {
    const Picture noise = picture(40, 30, 1, 8, 5);
    writePicture("noise.png", noise);
    const auto roughness = [](const Picture& of) {
        double sum = 0;
        for (size_t i = 1; i < of.bytes.size(); ++i)
            sum += std::abs(valueAt(of, i) - valueAt(of, i - 1));
        return sum;
    };
    const double none = roughness(outputOf("superres noise.png -o out.png --smoothness 0"));
    const double usual = roughness(outputOf("superres noise.png -o out.png"));
    EXPECT_EQ(usual, roughness(outputOf("superres noise.png -o out.png --smoothness 0.4")));
    const double much = roughness(outputOf("superres noise.png -o out.png --smoothness 100"));
    EXPECT_LT(usual, none);
    EXPECT_LT(much, 0.9 * usual);
}

TEST_F(Vek, RefusesWrongUseOfSuperres) {
    writePicture("noise.png", picture(40, 30, 1, 8, 1));
    writePicture("flat.png", Picture(40, 30, 1, 8));
    writePicture("color.png", picture(80, 60, 3, 8, 1));
    for (const std::string arguments :
         {"", "noise.png", "-o x.png", "noise.png -o x.png --smoothness", "noise.png -o x.png --smoothness much"})
        expectFailure("superres " + arguments, 2, "");
    for (const std::string smoothness : {"-1", "101", "nan"})
        expectFailure("superres noise.png -o x.png --smoothness " + smoothness, 2,
                      "--smoothness: is not a number from 0 to 100");
    expectFailure("superres noise.png -o x.bmp", 2, "x.bmp: pictures are written as");
    expectFailure("superres missing.png -o x.png", 1, "missing.png: cannot be opened");
    expectFailure("superres noise.png missing.png -o x.png", 1, "missing.png: cannot be opened");
    expectFailure("superres noise.png -o x.png --reference missing.png", 1, "missing.png: cannot be opened");
    expectFailure("superres noise.png -o x.png --reference color.png", 1,
                  "color.png: is 80 x 60, 8-bit colour, but the result is 80 x 60, 8-bit grey");
    expectFailure("superres noise.png color.png -o x.png", 1, "color.png: is 80 x 60, 8-bit colour, but the first");
    expectFailure("superres noise.png flat.png -o x.png", 1, "frame 2: shows too few corners of the first frame");
    expectFailure("superres noise.png -o missing/x.png", 1, "missing/x.png: cannot be written");
}

}  // namespace
