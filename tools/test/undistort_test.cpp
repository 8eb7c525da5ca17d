// vek undistort: against its formula, and the picture that a lens would bend.
#include <cmath>

#include "run_vek.h"

namespace {

struct Lens {
    double fx, fy, cx, cy, k1, k2;
    std::string options() const {
        std::array<char, 160> text{};
        std::snprintf(text.data(), text.size(), " --focal %g,%g --centre %g,%g --radial %g,%g", fx, fy, cx, cy, k1, k2);
        return text.data();
    }
};

/** A picture whose pixels change little from one to the next. */
Picture smooth(int32_t width, int32_t height, int32_t channels, int32_t bits) {
    Picture result(width, height, channels, bits);
    for (int32_t i = 0; i < width * height * channels; ++i) {
        const int32_t x = i / channels % width, y = i / channels / width, channel = i % channels;
        const double value = 0.5 + 0.2 * std::sin(0.2 * x + channel) + 0.2 * std::cos(0.15 * y - channel);
        if (bits == 16)
            result.pixels<uint16_t>()[i] = static_cast<uint16_t>(65535 * value);
        else
            result.bytes[static_cast<size_t>(i)] = static_cast<uint8_t>(255 * value);
    }
    return result;
}

void expectUndistorted(const Picture& in, const Lens& lens, const Picture& out) {
    SCOPED_TRACE(in.shape() + lens.options());
    ASSERT_TRUE(out.hasShapeOf(in));
    const double tolerance = in.bits == 16 ? 20 : 1;  // of the rounding, and of places in single precision
    int inside = 0, outside = 0;
    for (int32_t y = 0; y < in.height; ++y)
        for (int32_t x = 0; x < in.width; ++x) {
            const double square = std::pow((x - lens.cx) / lens.fx, 2) + std::pow((y - lens.cy) / lens.fy, 2);
            const double factor = square * (lens.k1 + square * lens.k2);
            const double fromX = x + (x - lens.cx) * factor, fromY = y + (y - lens.cy) * factor;
            // How far it is inside; within a rounding error of an edge both are right.
            const double margin =
                std::min(std::min(fromX, fromY), std::min(in.width - 1 - fromX, in.height - 1 - fromY));
            if (std::abs(margin) < 1e-3)
                continue;
            ++(margin > 0 ? inside : outside);
            const auto left = static_cast<int32_t>(fromX), top = static_cast<int32_t>(fromY);
            const double right = fromX - left, down = fromY - top;
            for (int32_t channel = 0; channel < in.channels; ++channel) {
                const auto pixel = [&](int32_t column, int32_t row) {
                    return valueAt(in, static_cast<size_t>((row * in.width + column) * in.channels + channel));
                };
                const double expected =
                    margin < 0 ? 0
                               : (pixel(left, top) * (1 - right) + pixel(left + 1, top) * right) * (1 - down) +
                                     (pixel(left, top + 1) * (1 - right) + pixel(left + 1, top + 1) * right) * down;
                const int given = valueAt(out, static_cast<size_t>((y * in.width + x) * in.channels + channel));
                ASSERT_NEAR(expected, given, margin < 0 ? 0 : tolerance) << x << ", " << y;
            }
        }
    EXPECT_LT(0, inside);
    EXPECT_LT(0, outside);
}

TEST_F(Vek, Undistorts) {
    for (const auto& [channels, bits] : {std::pair{1, 8}, {3, 8}, {1, 16}}) {
        const Picture in = smooth(71, 53, channels, bits);
        writePicture("in.png", in);
        for (const Lens& lens : {Lens{60, 65, 33.5, 24.25, 0.2, 0.1}, Lens{60, 65, 33.5, 24.25, -0.2, 0.9},
                                 Lens{40, 40, -20, 80, -0.05, 0}})
            expectUndistorted(in, lens, outputOf("undistort in.png out.png" + lens.options()));
    }
}

TEST_F(Vek, UndistortsAroundTheMiddle) {
    writePicture("in.png", picture(40, 31, 3, 8, 1));
    const std::string lens = "undistort in.png out.png --focal 50,60 --radial -0.3,0.1";
    const Picture around = outputOf(lens);
    EXPECT_EQ(outputOf(lens + " --centre 19.5,15").bytes, around.bytes);
    EXPECT_EQ(outputOf(lens + " --center 19.5,15").bytes, around.bytes);
    EXPECT_NE(outputOf(lens + " --centre 19,15").bytes, around.bytes);
}

TEST_F(Vek, LeavesWhatNoLensBends) {
    Picture in = picture(40, 31, 1, 8, 1);
    writePicture("in.png", in);
    for (size_t i = 0; i < in.bytes.size(); ++i)
        if (i % 40 == 39 || i / 40 == 30)
            in.bytes[i] = 0;
    EXPECT_EQ(in.bytes, outputOf("undistort in.png out.png --focal 50,60 --radial 0,0").bytes);
}

/** The mean difference in the middle of two pictures, half as wide and high. */
double meanDifference(const Picture& a, const Picture& b) {
    double sum = 0;
    for (int32_t y = a.height / 4; y < 3 * a.height / 4; ++y)
        for (int32_t x = a.width / 4; x < 3 * a.width / 4; ++x) {
            const auto pixel = static_cast<size_t>(y * a.width + x);
            sum += std::abs(valueAt(a, pixel) - valueAt(b, pixel));
        }
    return sum / (a.width / 2 * (a.height / 2));
}

TEST_F(Vek, StraightensWhatTheDemonstrationBends) {
    const Picture camera = readPicture(photograph("camera.png"));
    const Result bent =
        run(pathIn("MAKE_BENT", "the program make_bent") + " " + photograph("camera.png") + " bent.png");
    ASSERT_EQ(0, bent.status) << bent.output;
    EXPECT_LT(6, meanDifference(camera, readPicture("bent.png")));
    EXPECT_GT(3, meanDifference(camera, outputOf("undistort bent.png out.png --focal 400,400 --radial -0.25,0.05")));
}

TEST_F(Vek, RefusesWrongUseOfUndistort) {
    writePicture("in.png", picture(16, 8, 3, 8, 1));
    const std::string usual = "undistort in.png x.png --focal 10,10 --radial 0.1,0";
    for (const std::string arguments :
         {"undistort", "undistort in.png", "undistort in.png x.png", "undistort in.png x.png --focal 10,10",
          "undistort in.png x.png --radial 0.1,0"})
        expectFailure(arguments, 2, "");
    for (const std::string focal : {"10", "10,10,10", "10x10", "wide", "10,", "nan,10", "inf,10", "1e99,10"})
        expectFailure("undistort in.png x.png --radial 0,0 --focal " + focal, 2,
                      "--focal: " + focal + " is not two numbers of pixels");
    for (const std::string focal : {"0,10", "10,0"})
        expectFailure("undistort in.png x.png --radial 0,0 --focal " + focal, 2,
                      "--focal: " + focal + " is not above 0");
    expectFailure("undistort in.png x.png --focal 10,10 --radial 1", 2, "--radial: 1 is not two coefficients");
    expectFailure(usual + " --centre 5", 2, "--centre: 5 is not a column and a row");
    expectFailure("undistort missing.png x.png --focal 10,10 --radial 0.1,0", 1, "missing.png: cannot be opened");
    expectFailure("undistort in.png x.bmp --focal 10,10 --radial 0.1,0", 2, "x.bmp: pictures are written as");
    expectFailure("undistort in.png missing/x.png --focal 10,10 --radial 0.1,0", 1, "missing/x.png: cannot be written");
}

}  // namespace
