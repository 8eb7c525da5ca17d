// vek localcontrast, against the deviation of every window by its definition.
#include <algorithm>
#include <cmath>

#include "run_vek.h"

namespace {

/** Twice the deviation of the window around each pixel, by its definition. */
double twiceTheDeviation(const Picture& of, int32_t x, int32_t y, int32_t window) {
    int64_t sum = 0, squares = 0;
    for (int32_t j = y - window / 2; j < y - window / 2 + window; ++j)
        for (int32_t i = x - window / 2; i < x - window / 2 + window; ++i) {
            const int32_t row = std::clamp(j, 0, of.height - 1), column = std::clamp(i, 0, of.width - 1);
            const int64_t value = of.bytes[static_cast<size_t>(row * of.width + column)];
            sum += value;
            squares += value * value;
        }
    const int64_t area = int64_t{window} * window;
    return 2 * std::sqrt(static_cast<double>(squares * area - sum * sum)) / static_cast<double>(area);
}

void checkLocalContrast(const Picture& source, const Picture& grey, int32_t window) {
    SCOPED_TRACE(::testing::Message() << source.shape() << ", window " << window);
    writePicture("in.png", source);
    const Result result = vek("localcontrast in.png out.png --window " + std::to_string(window));
    ASSERT_EQ(0, result.status) << result.output;
    EXPECT_EQ("", result.output);
    const Picture out = readPicture("out.png");
    ASSERT_TRUE(out.hasShapeOf(grey)) << out.shape();
    for (int32_t y = 0; y < grey.height; ++y)
        for (int32_t x = 0; x < grey.width; ++x)
            // Half a level is the rounding of the result; a nearly flat window adds that of floats.
            ASSERT_NEAR(twiceTheDeviation(grey, x, y, window), valueAt(out, static_cast<size_t>(y * grey.width + x)),
                        0.75)
                << x << ", " << y;
}

TEST_F(Vek, ShowsLocalContrast) {
    const Picture random = picture(29, 17, 1, 8, 1);
    for (int32_t window : {2, 3, 4, 5, 16, 40, 181})
        checkLocalContrast(random, random, window);
    checkLocalContrast(picture(1, 1, 1, 8, 1), picture(1, 1, 1, 8, 1), 7);

    const Picture color = picture(29, 17, 3, 8, 2);
    checkLocalContrast(color, greyOf(color), 5);

    // The greatest deviation there is, and small ones far from the corner of a large bright picture.
    Picture stripes(60, 40, 1, 8), bright(400, 300, 1, 8);
    for (size_t i = 0; i < stripes.bytes.size(); ++i)
        stripes.bytes[i] = i % 2 == 0 ? 255 : 0;
    checkLocalContrast(stripes, stripes, 2);
    checkLocalContrast(stripes, stripes, 180);
    for (size_t i = 0; i < bright.bytes.size(); ++i)
        bright.bytes[i] = static_cast<uint8_t>(250 + i * i % 3);
    checkLocalContrast(bright, bright, 3);
}

TEST_F(Vek, RefusesWrongUseOfLocalContrast) {
    for (const std::string arguments :
         {"localcontrast a.png --window 5", "localcontrast a.png x.png", "localcontrast a.png x.png --window 1",
          "localcontrast a.png x.png --window -5", "localcontrast a.png x.png --window 182",
          "localcontrast a.png x.png --window 5.5", "localcontrast a.png x.png --window wide",
          "localcontrast a.png x.png --window 99999999999"})
        expectFailure(arguments, 2, "(see vek --help)");
    writePicture("grey.png", picture(16, 8, 1, 8, 1));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    expectFailure("localcontrast missing.png x.png --window 5", 1, "missing.png: cannot be opened");
    expectFailure("localcontrast deep.png x.png --window 5", 1, "deep.png: is 16 x 8, 16-bit grey; the local contrast");
    expectFailure("localcontrast grey.png x.bmp --window 5", 2, "x.bmp: pictures are written as");
    expectFailure("localcontrast grey.png missing/x.png --window 5", 1, "missing/x.png: cannot be written");
}

}  // namespace
