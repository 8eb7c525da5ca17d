// vek segment, on drawings of objects and on coins.
#include <nlohmann/json.hpp>

#include "run_vek.h"

namespace {

size_t at(const Picture& of, int x, int y) {
    return static_cast<size_t>(y * of.width + x);
}

struct Disc {
    int x, y, radius;
};

/** Makes the pixels of a disc a value. */
void draw(Picture& picture, const Disc& disc, uint8_t value) {
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
            if ((x - disc.x) * (x - disc.x) + (y - disc.y) * (y - disc.y) <= disc.radius * disc.radius)
                picture.bytes[at(picture, x, y)] = value;
}

Picture negative(Picture picture) {
    for (uint8_t& byte : picture.bytes)
        byte = static_cast<uint8_t>(255 - byte);
    return picture;
}

/** A grey picture in colour with green where pixels differ from the one to the left or above, unless that is green. */
Picture outlined(const Picture& grey, const std::vector<int>& labels) {
    std::vector<int> marked = labels;  // -1 on outlines
    Picture result(grey.width, grey.height, 3, 8);
    for (int y = 0; y < grey.height; ++y)
        for (int x = 0; x < grey.width; ++x) {
            const auto differs = [&](int i, int j) {
                return i >= 0 && j >= 0 && marked[at(grey, i, j)] != -1 &&
                       marked[at(grey, i, j)] != labels[at(grey, x, y)];
            };
            const bool isOutline = differs(x - 1, y) || differs(x, y - 1);
            if (isOutline)
                marked[at(grey, x, y)] = -1;
            const uint8_t value = grey.bytes[at(grey, x, y)];
            uint8_t* const pixel = &result.bytes[3 * at(grey, x, y)];
            pixel[0] = pixel[2] = isOutline ? uint8_t{0} : value;
            pixel[1] = isOutline ? uint8_t{255} : value;
        }
    return result;
}

nlohmann::json segments(const std::string& arguments) {
    const Result result = vek("segment " + arguments + " --json");
    EXPECT_EQ(0, result.status) << result.output;
    return nlohmann::json::parse(result.output);
}

TEST_F(Vek, OutlinesObjectsThatLieApart) {
    // A disc with a hole, a square at the edge, and a line that is too narrow.
    Picture scene(90, 60, 1, 8);
    for (size_t i = 0; i < scene.bytes.size(); ++i)
        scene.bytes[i] = static_cast<uint8_t>(20 + i % 7);
    std::vector<int> labels(scene.bytes.size());
    Picture discs(90, 60, 1, 8);
    draw(discs, {30, 30, 14}, 1);
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 90; ++x) {
            const bool square = x >= 75 && y >= 5 && y < 20;
            labels[at(scene, x, y)] = discs.bytes[at(scene, x, y)] != 0 ? 2 : square ? 1 : 0;
            if (labels[at(scene, x, y)] != 0 || (y == 55 && x > 20))
                scene.bytes[at(scene, x, y)] = static_cast<uint8_t>(180 + (x + y) % 9);
        }
    draw(scene, {33, 28, 4}, 22);
    writePicture("in.png", scene);
    EXPECT_EQ("2 objects, lighter than 26\n", vek("segment in.png out.png").output);
    const Picture expected = outlined(scene, labels);
    EXPECT_EQ(expected.bytes, readPicture("out.png").bytes);
    EXPECT_EQ("2 objects, lighter than 100\n", vek("segment in.png out.png --threshold 100").output);
    EXPECT_EQ(expected.bytes, readPicture("out.png").bytes);
    const nlohmann::json objects = segments("in.png out.png");
    ASSERT_EQ(2u, objects.size());
    EXPECT_EQ((nlohmann::json{{"label", 1}, {"area", 225}, {"x", 75}, {"y", 5}, {"width", 15}, {"height", 15}}),
              objects[0]);
    EXPECT_EQ((nlohmann::json{{"label", 2},
                              {"area", std::ranges::count(labels, 2)},
                              {"x", 16},
                              {"y", 16},
                              {"width", 29},
                              {"height", 29}}),
              objects[1]);

    // Dark objects on light ground, and objects that a mask tells whatever the picture is there.
    writePicture("dark.png", negative(scene));
    EXPECT_EQ("2 objects, not lighter than 75\n", vek("segment dark.png out.png --dark").output);
    EXPECT_EQ(outlined(negative(scene), labels).bytes, readPicture("out.png").bytes);
    Picture mask(90, 60, 1, 8);
    std::ranges::copy(labels, mask.bytes.begin());
    writePicture("mask.png", mask);
    const Picture noise = picture(90, 60, 1, 8, 1);
    writePicture("noise.png", noise);
    EXPECT_EQ("2 objects\n", vek("segment noise.png out.png --mask mask.png").output);
    EXPECT_EQ(outlined(noise, labels).bytes, readPicture("out.png").bytes);

    Picture color(90, 60, 3, 8);
    for (size_t i = 0; i < color.bytes.size(); ++i)
        color.bytes[i] = scene.bytes[i / 3];
    color.bytes[1] = 0;
    writePicture("color.png", color);
    EXPECT_EQ("2 objects, lighter than 26\n", vek("segment color.png out.png").output);
    Picture expectedColor = expected;
    expectedColor.bytes[1] = 0;
    EXPECT_EQ(expectedColor.bytes, readPicture("out.png").bytes);
}

TEST_F(Vek, PartsObjectsThatTouch) {
    Picture scene(120, 80, 1, 8);
    draw(scene, {40, 40, 20}, 255);
    draw(scene, {72, 40, 20}, 255);
    const auto area = std::ranges::count(scene.bytes, 255);
    writePicture("in.png", scene);
    EXPECT_EQ("1 regions\n", vek("label in.png out.png").output);
    const nlohmann::json objects = segments("in.png out.png --threshold 0");
    ASSERT_EQ(2u, objects.size());
    // The column in the middle may belong to either.
    EXPECT_EQ(area, objects[0].at("area").get<int>() + objects[1].at("area").get<int>());
    EXPECT_NEAR(static_cast<double>(area) / 2, objects[0].at("area").get<double>(), 13);
    EXPECT_EQ(20, objects[0].at("x"));
    EXPECT_NEAR(37, objects[0].at("width").get<int>(), 1);
    EXPECT_EQ(92, objects[1].at("x").get<int>() + objects[1].at("width").get<int>() - 1);
    // From its first row to the last, the waist is a line of green in the columns where they meet.
    const Picture out = readPicture("out.png");
    for (int y = 29; y <= 51; ++y) {
        int green = 0;
        for (int x = 54; x <= 59; ++x) {
            const uint8_t* const pixel = &out.bytes[3 * at(out, x, y)];
            green += pixel[0] == 0 && pixel[1] == 255 && pixel[2] == 0;
        }
        EXPECT_LE(1, green) << y;
    }

    // The distance is sqrt(401) in the middles and 13 in the waist.
    EXPECT_EQ(2u, segments("in.png out.png --threshold 0 --depth 6.9").size());
    EXPECT_EQ(1u, segments("in.png out.png --threshold 0 --depth 7.1").size());
    EXPECT_EQ(1u, segments("in.png out.png --threshold 0 --depth 19.9").size());
    EXPECT_EQ(0u, segments("in.png out.png --threshold 0 --depth 20.1").size());
    EXPECT_EQ(0u, segments("in.png out.png --threshold 255").size());
}

/** The sum of the squared differences from the mean, of pixels up to a threshold and of those above it. */
double within(const Picture& of, int threshold) {
    double result = 0;
    for (const bool above : {false, true}) {
        double count = 0, sum = 0;
        for (const uint8_t value : of.bytes)
            if ((value > threshold) == above) {
                ++count;
                sum += value;
            }
        for (const uint8_t value : of.bytes)
            if ((value > threshold) == above)
                result += (value - sum / count) * (value - sum / count);
    }
    return result;
}

TEST_F(Vek, ChoosesTheThresholdByOtsu) {
    for (uint32_t seed = 1; seed <= 5; ++seed) {
        Picture source = picture(37, 26, 1, 8, seed);
        for (size_t i = 0; i < source.bytes.size(); ++i)
            source.bytes[i] = static_cast<uint8_t>(i % seed == 0 ? source.bytes[i] / 3 : 100 + source.bytes[i] / 2);
        writePicture("in.png", source);
        int best = 0;
        for (int threshold = 1; threshold < 255; ++threshold)
            if (within(source, threshold) < within(source, best) * (1 - 1e-12))
                best = threshold;
        const std::string output = vek("segment in.png out.png").output;
        EXPECT_NE(std::string::npos, output.find(" objects, lighter than " + std::to_string(best) + "\n")) << output;
    }
}

TEST_F(Vek, CountsCoins) {
    writePicture("in.png", readPicture(photograph("coins.png")));
    ASSERT_EQ(0, vek("morph tophat in.png flat.png --element ellipse --size 75x75").status);
    const Result result = vek("segment flat.png out.png");
    EXPECT_EQ(0u, result.output.find("24 objects, ")) << result.output;
    const Result timed = vek("segment flat.png out.png --time");
    for (const std::string name : {"vekiTrueDistanceTransform_8u32f_C1R", "vekiLabelMarkers_16u_C1IR",
                                   "vekiSegmentWatershed_8u16u_C1IR", "vekiBoundSegments_16u_C1IR"})
        EXPECT_NE(std::string::npos, timed.output.find("ms  " + name)) << timed.output;
}

TEST_F(Vek, RefusesWrongUseOfSegment) {
    writePicture("in.png", picture(16, 8, 1, 8, 1));
    writePicture("large.png", picture(17, 8, 1, 8, 1));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    writePicture("flat.png", Picture(16, 8, 1, 8));
    for (const std::string arguments :
         {"", "in.png", "in.png x.png more", "in.png x.png --threshold 256", "in.png x.png --threshold -1",
          "in.png x.png --threshold low", "in.png x.png --depth deep", "in.png x.png --mask in.png --threshold 3",
          "in.png x.png --mask in.png --dark"})
        expectFailure("segment " + arguments, 2, "");
    for (const std::string depth : {"-1", "4001", "nan"})
        expectFailure("segment in.png x.png --depth " + depth, 2, "--depth: is not a number from 0 to 4000");
    expectFailure("segment missing.png x.png", 1, "missing.png: cannot be opened");
    expectFailure("segment deep.png x.png", 1, "deep.png: is 16 x 8, 16-bit grey; objects are found in 8-bit pictures");
    expectFailure("segment flat.png x.png", 1, "flat.png: has the same value everywhere, so no threshold parts it");
    expectFailure("segment in.png x.png --mask missing.png", 1, "missing.png: cannot be opened");
    expectFailure("segment in.png x.png --mask large.png", 1,
                  "large.png: is 17 x 8, 8-bit grey; the mask must be 8-bit grey and as large as in.png, 16 x 8");
    expectFailure("segment in.png x.bmp", 2, "x.bmp: pictures are written as");
    expectFailure("segment in.png missing/x.png", 1, "missing/x.png: cannot be written");
}

}  // namespace
