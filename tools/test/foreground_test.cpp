// vek foreground: a square that moves over a scene with noise.
#include <cstdlib>

#include "run_vek.h"

namespace {

constexpr int32_t kWidth = 64, kHeight = 48, kSide = 16;
constexpr int64_t kMostWrong = kWidth * kHeight / 100;  // pixels of a mask; some noise is taken for foreground
const std::string kModels[] = {"", " --model gauss", " --model histogram"};

/** The scene is dark with some noise; the square is light, in all channels. */
Picture frame(int32_t channels, uint32_t number, int32_t left, int32_t top) {
    Picture result = picture(kWidth, kHeight, channels, 8, number);
    for (size_t i = 0; i < result.bytes.size(); ++i) {
        const auto pixel = static_cast<int32_t>(i) / channels, x = pixel % kWidth, y = pixel / kWidth;
        const bool isInside = x >= left && x < left + kSide && y >= top && y < top + kSide;
        result.bytes[i] = static_cast<uint8_t>(x + (isInside ? 120 : 20) + result.bytes[i] % 5);
    }
    return result;
}

/** Frames without and then with the square, which moves by 9 pixels from frame to frame. */
std::string framesWithSquare(int32_t channels, int count, int firstWithSquare) {
    std::string names;
    for (int i = 1; i <= count; ++i) {
        const std::string name = "f" + std::to_string(i) + ".png";
        const int32_t left = i < firstWithSquare ? -100 : 5 + 9 * (i - firstWithSquare);
        writePicture(name, frame(channels, static_cast<uint32_t>(i), left, 14));
        names += " " + name;
    }
    return names;
}

/** How many pixels of a mask are not as they should be: 255 in the square. */
int64_t wrongPixels(const Picture& mask, int32_t left, int32_t top) {
    int64_t wrong = 0;
    for (int32_t y = 0; y < kHeight; ++y)
        for (int32_t x = 0; x < kWidth; ++x) {
            const bool isInside = x >= left && x < left + kSide && y >= top && y < top + kSide;
            wrong += mask.bytes[static_cast<size_t>(y * kWidth + x)] != (isInside ? 255 : 0);
        }
    return wrong;
}

TEST_F(Vek, FindsTheForeground) {
    for (const int32_t channels : {1, 3})
        for (const std::string& model : kModels) {
            SCOPED_TRACE(::testing::Message() << channels << model);
            const std::string frames = framesWithSquare(channels, 16, 12);
            const Result result = vek("foreground" + frames + " -o m-%02d.png --background back.png" + model);
            ASSERT_EQ(0, result.status) << result.output;
            EXPECT_EQ("", result.output);
            EXPECT_FALSE(std::filesystem::exists("m-01.png"));
            EXPECT_FALSE(std::filesystem::exists("m-17.png"));
            for (int number = 2; number <= 16; ++number) {
                const Picture mask = readPicture("m-" + std::to_string(100 + number).substr(1) + ".png");
                ASSERT_EQ(Picture(kWidth, kHeight, 1, 8).shape(), mask.shape());
                EXPECT_EQ(mask.bytes.size(),
                          static_cast<size_t>(std::ranges::count(mask.bytes, 0) + std::ranges::count(mask.bytes, 255)));
                const int32_t left = number < 12 ? -100 : 5 + 9 * (number - 12);
                EXPECT_GE(kMostWrong, wrongPixels(mask, left, 14)) << number;
            }
            const Picture background = readPicture("back.png"), scene = frame(channels, 1, -100, 0);
            ASSERT_TRUE(background.hasShapeOf(scene));
            for (size_t i = 0; i < scene.bytes.size(); ++i)
                ASSERT_NEAR(scene.bytes[i], background.bytes[i], 5) << i;
        }
}

TEST_F(Vek, KeepsModelsOfTheForegroundApart) {
    const std::string frames = framesWithSquare(1, 3, 3);
    const Result gauss = vek("foreground" + frames + " -o m-%d.png --time");
    EXPECT_NE(std::string::npos, gauss.output.find("ms  vekiForegroundGaussian_8u_C1R")) << gauss.output;
    EXPECT_EQ(std::string::npos, gauss.output.find("Histogram")) << gauss.output;
    const Result histogram = vek("foreground" + frames + " -o m-%d.png --time --model histogram");
    EXPECT_EQ(std::string::npos, histogram.output.find("Gaussian")) << histogram.output;
    for (const std::string name : {"vekiForegroundHistogramInitAlloc_8u_C1R", "vekiForegroundHistogram_8u_C1R",
                                   "vekiForegroundHistogramUpdate_8u_C1R"})
        EXPECT_NE(std::string::npos, histogram.output.find("ms  " + name)) << histogram.output;
}

TEST_F(Vek, TakesTheFirstFrameAsBackground) {
    for (const std::string& model : kModels) {
        const std::string first = framesWithSquare(3, 1, 1);
        ASSERT_EQ(0, vek("foreground" + first + " -o m-%d.png --background back.png" + model).status);
        EXPECT_EQ(readPicture("f1.png").bytes, readPicture("back.png").bytes);
        ASSERT_EQ(0, vek("foreground f1.png f1.png f1.png f1.png -o m-%d.png" + model).status);
        EXPECT_EQ(Picture(kWidth, kHeight, 1, 8).bytes, readPicture("m-4.png").bytes);
    }
}

TEST_F(Vek, FindsTheForegroundOfVideos) {
    framesWithSquare(3, 8, 7);
    ASSERT_EQ(0, run("ffmpeg -nostdin -v error -i f%d.png -c:v ffv1 -pix_fmt bgr0 video.mkv").status);
    ASSERT_EQ(0, vek("foreground video.mkv -o grey-%d.png --background grey.png").status);
    ASSERT_EQ(0, vek("foreground video.mkv -o color-%d.png --background color.png --color").status);
    EXPECT_EQ(1, readPicture("grey.png").channels);
    EXPECT_EQ(3, readPicture("color.png").channels);
    EXPECT_GE(kMostWrong, wrongPixels(readPicture("grey-8.png"), 14, 14));
    EXPECT_GE(kMostWrong, wrongPixels(readPicture("color-8.png"), 14, 14));
}

TEST_F(Vek, RefusesWrongUseOfForeground) {
    writeMisfits();
    for (const std::string arguments :
         {"", "grey.png", "-o x%d.png", "grey.png -o x%d.png --model", "grey.png -o x%d.png --model median"})
        expectFailure("foreground " + arguments, 2, "");
    expectFailure("foreground grey.png -o x.png", 2, "x.png: the name needs one %d");
    expectFailure("foreground grey.png -o x%d.bmp", 2, "x%d.bmp: pictures are written as");
    expectFailure("foreground grey.png -o x%d.png --background y.bmp", 2, "y.bmp: pictures are written as");
    expectFailure("foreground missing.png -o x%d.png", 1, "missing.png: cannot be opened");
    expectFailure("foreground deep.png -o x%d.png", 1, "deep.png: is 16 x 8, 16-bit grey; the foreground is that of");
    expectFailure("foreground grey.png color.png -o x%d.png", 1, "color.png: is 16 x 8, 8-bit colour, but the first");
    expectFailure("foreground grey.png grey.png -o missing/x%d.png", 1, "missing/x2.png: cannot be written");
}

}  // namespace
