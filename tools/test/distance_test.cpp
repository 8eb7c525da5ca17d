// vek distance, against the nearest black pixel of all.
#include <cmath>
#include <cstdlib>
#include <functional>

#include "run_vek.h"

namespace {

/** The length of the shortest path of steps by (1, 0), (1, 1) and (2, 1), as the manual gives them. */
double steps(int dx, int dy) {
    const int large = std::max(dx, dy), small = std::min(dx, dy);
    if (2 * small <= large)
        return 2.1969 * small + (large - 2 * small);
    return 2.1969 * (large - small) + 1.4 * (2 * small - large);
}

struct Norm {
    const char* option;
    std::function<double(int dx, int dy)> length;
};
const Norm kNorms[] = {
    {"", [](int dx, int dy) { return std::hypot(dx, dy); }},
    {" --norm exact", [](int dx, int dy) { return std::hypot(dx, dy); }},
    {" --norm inf", [](int dx, int dy) { return std::max(dx, dy); }},
    {" --norm L1", [](int dx, int dy) { return dx + dy; }},
    {" --norm l2", steps},
};

void expectDistances(const Picture& mask, const Norm& norm, const Picture& distances) {
    SCOPED_TRACE(mask.shape() + norm.option);
    ASSERT_EQ(16, distances.bits);
    ASSERT_EQ(mask.width, distances.width);
    ASSERT_EQ(mask.height, distances.height);
    std::vector<ImagePoint> black;
    for (int y = 0; y < mask.height; ++y)
        for (int x = 0; x < mask.width; ++x)
            if (mask.bytes[static_cast<size_t>(y * mask.width + x)] == 0)
                black.push_back({x, y});
    for (int y = 0; y < mask.height; ++y)
        for (int x = 0; x < mask.width; ++x) {
            double least = 1e30;
            for (const auto& [i, j] : black)
                least = std::min(least, norm.length(std::abs(x - i), std::abs(y - j)));
            // Half a unit is the rounding; floats add to that where it decides.
            ASSERT_NEAR(std::min(16 * least, 65535.), valueAt(distances, static_cast<size_t>(y * mask.width + x)), 0.51)
                << x << ", " << y;
        }
}

/** Some pixels in a hundred are black, and the rest has all other values. */
Picture sparse(int32_t width, int32_t height, int blackOfHundred) {
    Picture mask = picture(width, height, 1, 8, 3);
    const Picture other = picture(width, height, 1, 8, 4);
    for (size_t i = 0; i < mask.bytes.size(); ++i)
        mask.bytes[i] = other.bytes[i] * 100 < blackOfHundred * 256 ? uint8_t{0} : std::max(mask.bytes[i], uint8_t{1});
    mask.bytes[mask.bytes.size() / 2] = 0;
    return mask;
}

TEST_F(Vek, MeasuresDistances) {
    for (const Picture& mask : {sparse(1, 1, 50), sparse(1, 9, 10), sparse(9, 1, 10), sparse(2, 3, 10),
                                sparse(61, 47, 1), sparse(61, 47, 60), sparse(200, 90, 0)}) {
        writePicture("mask.png", mask);
        for (const Norm& norm : kNorms)
            expectDistances(mask, norm, outputOf("distance mask.png out.png" + std::string(norm.option)));
    }
}

TEST_F(Vek, MeasuresDistancesBeyondItsNumbers) {
    Picture line(4200, 1, 1, 8), white(7, 5, 1, 8);
    std::fill(line.bytes.begin() + 1, line.bytes.end(), uint8_t{1});
    std::ranges::fill(white.bytes, uint8_t{255});
    writePicture("line.png", line);
    writePicture("white.png", white);
    for (const Norm& norm : kNorms) {
        SCOPED_TRACE(norm.option);
        const Picture far = outputOf("distance line.png out.png" + std::string(norm.option));
        for (size_t x = 0; x < 4200; ++x)
            ASSERT_EQ(std::min<int>(16 * static_cast<int>(x), 65535), valueAt(far, x)) << x;
        const Picture everywhere = outputOf("distance white.png out.png" + std::string(norm.option));
        for (size_t i = 0; i < 35; ++i)
            EXPECT_EQ(65535, valueAt(everywhere, i)) << i;
    }
}

TEST_F(Vek, ShowsDistancesInColors) {
    Picture mask(5, 1, 1, 8);
    std::fill(mask.bytes.begin() + 1, mask.bytes.end(), uint8_t{255});
    writePicture("mask.png", mask);
    ASSERT_EQ(0, vek("distance mask.png out.png --view view.png").status);
    const Picture view = readPicture("view.png");
    EXPECT_EQ(3, view.channels);
    EXPECT_EQ((std::vector<uint8_t>{0, 0, 0, 80, 18, 124, 182, 54, 122, 252, 137, 97, 252, 253, 191}), view.bytes);

    // A picture of colours counts as the grey that it is taken for, and where all is black, so is its view.
    const Picture color = picture(31, 22, 3, 8, 4);
    writePicture("color.png", color);
    const Picture result = outputOf("distance color.png out.png --view view.jpg");
    expectDistances(greyOf(color), kNorms[0], result);
    EXPECT_TRUE(readPicture("view.jpg").hasShapeOf(color));
    writePicture("black.png", Picture(3, 2, 1, 8));
    EXPECT_EQ(Picture(3, 2, 1, 16).bytes, outputOf("distance black.png out.png --view view.png").bytes);
    EXPECT_EQ(Picture(3, 2, 3, 8).bytes, readPicture("view.png").bytes);

    for (const auto& [norm, name] : {std::pair{"exact", "vekiTrueDistanceTransform_8u32f_C1R"},
                                     {"inf", "vekiDistanceTransform_3x3_8u16u_C1R"},
                                     {"l1", "vekiDistanceTransform_3x3_8u16u_C1R"},
                                     {"l2", "vekiDistanceTransform_5x5_8u32f_C1R"}}) {
        const Result timed = vek("distance color.png out.png --time --norm " + std::string(norm));
        EXPECT_NE(std::string::npos, timed.output.find("ms  " + std::string(name))) << timed.output;
    }
}

TEST_F(Vek, RefusesWrongUseOfDistance) {
    writePicture("in.png", picture(16, 8, 1, 8, 1));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    for (const std::string arguments : {"", "in.png", "in.png x.png more", "in.png x.png --norm", "in.png x.png --view",
                                        "in.png x.png --norm l3", "in.png x.png --norm 1"})
        expectFailure("distance " + arguments, 2, "");
    expectFailure("distance missing.png x.png", 1, "missing.png: cannot be opened");
    expectFailure("distance deep.png x.png", 1, "deep.png: is 16 x 8, 16-bit grey; distances are those of 8-bit");
    expectFailure("distance in.png x.bmp", 2, "x.bmp: pictures are written as");
    expectFailure("distance in.png x.png --view x.bmp", 2, "x.bmp: pictures are written as");
    expectFailure("distance in.png x.jpg", 1, "x.jpg");
    expectFailure("distance in.png missing/x.png", 1, "missing/x.png: cannot be written");
}

}  // namespace
