// vek detect: what cascades find, against their evaluation pixel by pixel and in pictures of what they were made for.
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "run_vek.h"
#include "test_cascade.h"

namespace {

struct Box {
    int x = 0, y = 0, width = 0, height = 0;
    auto operator<=>(const Box&) const = default;
};

std::vector<Box> boxesIn(const std::string& lines) {
    std::istringstream text(lines);
    std::vector<Box> boxes;
    for (Box box; text >> box.x >> box.y >> box.width >> box.height;)
        boxes.push_back(box);
    EXPECT_EQ(static_cast<size_t>(std::ranges::count(lines, '\n')), boxes.size()) << lines;
    return boxes;
}

std::vector<Box> detected(const std::string& arguments) {
    const Result result = vek("detect " + arguments);
    EXPECT_EQ(0, result.status) << result.output;
    return boxesIn(result.output);
}

/** Of the area of two boxes, the part that they share. */
double shareOf(const Box& a, const Box& b) {
    const int width = std::min(a.x + a.width, b.x + b.width) - std::max(a.x, b.x);
    const int height = std::min(a.y + a.height, b.y + b.height) - std::max(a.y, b.y);
    if (width <= 0 || height <= 0)
        return 0;
    const double both = width * height;
    return both / (a.width * a.height + b.width * b.height - both);
}

/** Random features of two and three rectangles that lie in the window; half of them tilted where that is wanted. */
TestCascade randomCascade(int width, int height, bool tilted, uint32_t seed) {
    const auto random = [&](int least, int largest) {
        seed = seed * 1664525u + 1013904223u;
        return least + static_cast<int>((seed >> 8) % static_cast<uint32_t>(largest - least + 1));
    };
    TestCascade cascade{width, height, {}};
    for (int stage = 0; stage < 3; ++stage) {
        cascade.stages.push_back({stage * 0.25 - 0.85, {}});
        for (int i = 0; i < 5; ++i) {
            TestFeature feature{{}, tilted && random(0, 1) == 1, random(-30, 30) / 1000., -0.3, 0.2};
            // Of one size and with weights whose sum is 0, so that the brightness of a window does not matter.
            const int side = std::min(width, height) / 3, count = random(2, 3);
            TestRectangle one{0, 0, random(1, side), random(1, side), count - 1};
            for (int k = 0; k < count; ++k) {
                one.x = feature.tilted ? random(one.height, width - one.width) : random(0, width - one.width);
                one.y = random(0, height - one.height - (feature.tilted ? one.width : 0));
                feature.rectangles.push_back(one);
                one.weight = -1;
            }
            cascade.stages.back().features.push_back(feature);
        }
    }
    return cascade;
}

/** The windows that are printed must be those that pass, as far as rounding does not decide. */
void checkWindows(const TestCascade& cascade, const Picture& grey, int spacing, int enlarged,
                  const std::string& options) {
    const std::vector<Box> list = detected("cascade.xml in.png --min-neighbors 0 " + options);
    const std::set<Box> boxes(list.begin(), list.end());
    EXPECT_TRUE(std::ranges::is_sorted(list, {}, [](const Box& box) { return std::pair(box.y, box.x); }));
    const DirectDetector direct(cascade, grey);
    size_t passing = 0, failing = 0, unclear = 0;
    for (int y = 0; y + cascade.height <= grey.height; y += spacing)
        for (int x = 0; x + cascade.width <= grey.width; x += spacing) {
            const bool found =
                boxes.contains({enlarged * x, enlarged * y, enlarged * cascade.width, enlarged * cascade.height});
            const int passes = direct.passes(x, y);
            ASSERT_TRUE(passes < 0 || passes == found) << x << ", " << y;
            ++(passes < 0 ? unclear : found ? passing : failing);
        }
    const auto ofThisSize = std::ranges::count(boxes, enlarged * cascade.width, &Box::width);
    EXPECT_LE(static_cast<size_t>(ofThisSize), passing + unclear);
    EXPECT_LT(0u, passing);
    EXPECT_LT(0u, failing);
    EXPECT_LT(unclear, (passing + failing) / 20 + 2);
}

TEST_F(Vek, FindsTheWindowsThatPass) {
    for (const RoiSize size : {RoiSize{90, 70}, {31, 95}, {571, 150}})
        for (const RoiSize window : {RoiSize{20, 20}, {13, 18}, {24, 11}})
            for (const bool tilted : {false, true}) {
                SCOPED_TRACE(::testing::Message() << size.width << "x" << size.height << " " << window.width << "x"
                                                  << window.height << " " << tilted);
                const Picture grey = picture(size.width, size.height, 1, 8, 5);
                writePicture("in.png", grey);
                const TestCascade cascade = randomCascade(window.width, window.height, tilted, 3);
                writeText("cascade.xml", cascade.xml());
                checkWindows(cascade, grey, 2, 1, "--scale 10");
            }
}

// Where every pixel of a picture is four of them, half of it is the picture before; there each position counts.
TEST_F(Vek, FindsLargeWindowsAtEveryPosition) {
    for (const bool tilted : {false, true}) {
        const Picture grey = picture(38, 35, 1, 8, 6);
        Picture twice(2 * grey.width, 2 * grey.height, 1, 8);
        for (int y = 0; y < twice.height; ++y)
            for (int x = 0; x < twice.width; ++x)
                twice.bytes[static_cast<size_t>(y * twice.width + x)] =
                    grey.bytes[static_cast<size_t>(y / 2 * grey.width + x / 2)];
        writePicture("in.png", twice);
        const TestCascade cascade = randomCascade(20, 20, tilted, 3);
        writeText("cascade.xml", cascade.xml());
        checkWindows(cascade, grey, 1, 2, "--scale 2 --min-size 40");
    }
}

/** A square that is bright on dark ground, half as wide as the window; or one that stands on its corner. */
TestCascade squareCascade(bool tilted) {
    if (tilted)
        return {12,
                12,
                {{0.5, {{{{0, 0, 12, 12, -1}, {3, 3, 6, 6, 4}}, false, 1.1, 0, 1}}},
                 {0.5, {{{{6, 0, 6, 6, -1}, {6, 3, 3, 3, 4}}, true, 1.2, 0, 1}}}}};
    // The last stage wants each side of the ground darker than the middle.
    TestCascade cascade{12, 12, {{0.5, {{{{0, 0, 12, 12, -1}, {3, 3, 6, 6, 4}}, false, 1.5, 0, 1}}}, {3.5, {}}}};
    for (const TestRectangle& side :
         {TestRectangle{0, 3, 3, 6, -2}, {9, 3, 3, 6, -2}, {3, 0, 6, 3, -2}, {3, 9, 6, 3, -2}})
        cascade.stages[1].features.push_back({{side, {3, 3, 6, 6, 1}}, false, 0.3, 0, 1});
    return cascade;
}

void drawSquare(Picture& on, int x, int y, int side, bool tilted) {
    const double middle = side / 2.;
    for (int row = 0; row < side; ++row)
        for (int column = 0; column < side; ++column)
            if (!tilted || std::abs(column + 0.5 - middle) + std::abs(row + 0.5 - middle) <= middle)
                on.bytes[static_cast<size_t>((y + row) * on.width + x + column)] = 200;
}

TEST_F(Vek, FindsSquaresOfAnySize) {
    for (const bool tilted : {false, true}) {
        writeText("cascade.xml", squareCascade(tilted).xml());
        for (const auto& [x, y, side] :
             {std::array{20, 30, 14}, {53, 21, 12}, {70, 40, 25}, {31, 31, 41}, {40, 30, 60}}) {
            SCOPED_TRACE(::testing::Message() << tilted << ": " << side << " at " << x << ", " << y);
            Picture dark(160, 120, 1, 8);
            std::ranges::fill(dark.bytes, uint8_t{50});
            drawSquare(dark, x, y, side, tilted);
            writePicture("in.png", dark);
            const std::vector<Box> boxes = detected("cascade.xml in.png --scale 1.05 --min-neighbors 2");
            ASSERT_EQ(1u, boxes.size());
            EXPECT_LT(0.6, shareOf({x - side / 2, y - side / 2, 2 * side, 2 * side}, boxes[0]));
        }
    }
}

TEST_F(Vek, FindsSeveralSquares) {
    writeText("cascade.xml", squareCascade(false).xml());
    Picture dark(200, 120, 3, 8);
    Picture grey(200, 120, 1, 8);
    drawSquare(grey, 130, 20, 20, false);
    drawSquare(grey, 30, 25, 14, false);
    drawSquare(grey, 80, 70, 30, false);
    for (size_t i = 0; i < dark.bytes.size(); ++i)
        dark.bytes[i] = grey.bytes[i / 3];
    writePicture("in.png", dark);
    const std::vector<Box> boxes = detected("cascade.xml in.png");
    ASSERT_EQ(3u, boxes.size());
    EXPECT_LT(0.6, shareOf({120, 10, 40, 40}, boxes[0]));
    EXPECT_LT(0.6, shareOf({23, 18, 28, 28}, boxes[1]));
    EXPECT_LT(0.6, shareOf({65, 55, 60, 60}, boxes[2]));
    EXPECT_EQ(boxes, detected("cascade.xml in.png --scale 1.1 --min-size 0 --min-neighbors 3 --threads 2"));
    EXPECT_EQ(2u, detected("cascade.xml in.png --min-size 44").size());
    EXPECT_EQ(1u, detected("cascade.xml in.png --min-size 66").size());
    EXPECT_EQ(0u, detected("cascade.xml in.png --min-neighbors 100000").size());

    const auto json = nlohmann::json::parse(vek("detect cascade.xml in.png --json").output);
    ASSERT_EQ(3u, json.size());
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(boxes[i], (Box{json[i]["x"], json[i]["y"], json[i]["width"], json[i]["height"]}));
        EXPECT_LE(3, json[i]["windows"].get<int>());
    }
    EXPECT_EQ("[]\n", vek("detect cascade.xml in.png --json --min-size 5000").output);
}

TEST_F(Vek, DrawsBoxes) {
    writeText("cascade.xml", squareCascade(false).xml());
    for (const int32_t channels : {1, 3}) {
        Picture grey(100, 80, 1, 8);
        drawSquare(grey, 40, 30, 20, false);
        Picture source(100, 80, channels, 8);
        for (size_t i = 0; i < source.bytes.size(); ++i)
            source.bytes[i] = grey.bytes[i / static_cast<size_t>(channels)];
        writePicture("in.png", source);
        const std::vector<Box> boxes = detected("cascade.xml in.png -o out.png");
        ASSERT_EQ(1u, boxes.size());
        const Picture out = readPicture("out.png");
        ASSERT_TRUE(out.hasShapeOf(source)) << out.shape();
        const std::vector<uint8_t> line = channels == 1 ? std::vector<uint8_t>{255} : std::vector<uint8_t>{0, 255, 0};
        for (int y = 0; y < out.height; ++y)
            for (int x = 0; x < out.width; ++x) {
                const Box& box = boxes[0];
                // How far outside of the box a pixel lies: 1 on the line, 2 and 0 on the dark lines around it.
                const int distance =
                    std::max({box.x - x, x - box.x - box.width + 1, box.y - y, y - box.y - box.height + 1});
                const auto pixel = out.bytes.begin() + (y * out.width + x) * channels;
                const std::vector<uint8_t> actual(pixel, pixel + channels);
                if (distance == 1)
                    EXPECT_EQ(line, actual) << x << ", " << y;
                else if (distance == 0 || distance == 2)
                    EXPECT_EQ(std::vector<uint8_t>(actual.size()), actual) << x << ", " << y;
                else
                    EXPECT_EQ(grey.bytes[static_cast<size_t>(y * grey.width + x)], actual[0]) << x << ", " << y;
            }
    }
}

TEST_F(Vek, FindsTheFaceOfTheAstronaut) {
    const std::string cascade = "/usr/share/opencv4/haarcascades/haarcascade_frontalface_alt.xml ";
    const std::vector<Box> faces = detected(cascade + photograph("astronaut.png"));
    ASSERT_EQ(1u, faces.size());
    EXPECT_LE(0.6, shareOf({176, 66, 98, 98}, faces[0]));
    EXPECT_EQ(0u, detected(cascade + photograph("text.png")).size());
}

}  // namespace
