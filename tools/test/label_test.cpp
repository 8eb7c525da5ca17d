// vek label, on drawings of regions.
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "run_vek.h"

namespace {

using Color = std::array<uint8_t, 3>;

/** Colours by the letters of a drawing, in which a region is all pixels of a letter. */
void expectColors(const std::vector<std::string>& rows, const Picture& out) {
    ASSERT_EQ(3, out.channels);
    std::map<char, std::set<Color>> colors;
    std::set<Color> all;
    const uint8_t* pixel = out.pixels<uint8_t>();
    for (const std::string& row : rows)
        for (const char letter : row) {
            const Color color{pixel[0], pixel[1], pixel[2]};
            colors[letter].insert(color);
            all.insert(color);
            pixel += 3;
        }
    for (const auto& [letter, ofLetter] : colors)
        EXPECT_EQ(1u, ofLetter.size()) << letter;
    EXPECT_EQ(colors.size(), all.size());
    EXPECT_EQ(std::set<Color>{Color{}}, colors['.']);
}

Picture drawn(const std::vector<std::string>& rows) {
    Picture result(static_cast<int32_t>(rows[0].size()), static_cast<int32_t>(rows.size()), 1, 8);
    auto byte = result.bytes.begin();
    for (const std::string& row : rows)
        for (const char letter : row)
            *byte++ = letter == '.' ? 0 : static_cast<uint8_t>(letter);
    return result;
}

TEST_F(Vek, LabelsRegionsAsByHand) {
    const std::vector<std::string> sides{"aa.b....c",  //
                                         "a..bbb.c.",  //
                                         "..d....cc",  //
                                         ".dd.ee...",  //
                                         "....eee.f"};
    // Past corners, d belongs to b, and c joins both of its parts.
    const std::vector<std::string> corners{"aa.b....c",  //
                                           "a..bbb.c.",  //
                                           "..b....cc",  //
                                           ".bb.ee...",  //
                                           "....eee.f"};
    const std::vector<std::string> apart{"aa.b....c",  //
                                         "a..bbb.g.",  //
                                         "..d....gg",  //
                                         ".dd.ee...",  //
                                         "....eee.f"};
    writePicture("mask.png", drawn(sides));
    for (const std::string options : {"", " --neighbors 8", " --connectivity 8"}) {
        EXPECT_EQ("5 regions\n", vek("label mask.png out.png" + options).output);
        expectColors(corners, readPicture("out.png"));
    }
    for (const std::string options : {" --neighbors 4", " --connectivity 4"}) {
        EXPECT_EQ("7 regions\n", vek("label mask.png out.png" + options).output);
        expectColors(apart, readPicture("out.png"));
    }

    const auto regions = nlohmann::json::parse(vek("label mask.png out.png --json").output);
    const auto region = [](int number, int area, int x, int y, int width, int height) {
        return nlohmann::json{{"label", number}, {"area", area},   {"x", x},
                              {"y", y},          {"width", width}, {"height", height}};
    };
    EXPECT_EQ(nlohmann::json::array({region(1, 3, 0, 0, 2, 2), region(2, 7, 1, 0, 5, 4), region(3, 4, 7, 0, 2, 3),
                                     region(4, 5, 4, 3, 3, 2), region(5, 1, 8, 4, 1, 1)}),
              regions);
}

TEST_F(Vek, LabelsWhatIsNotBlack) {
    writePicture("black.png", Picture(7, 3, 1, 8));
    EXPECT_EQ("0 regions\n", vek("label black.png out.png").output);
    EXPECT_EQ(Picture(7, 3, 3, 8).bytes, readPicture("out.png").bytes);
    EXPECT_EQ(nlohmann::json::array(), nlohmann::json::parse(vek("label black.png out.png --json").output));

    Picture color = picture(31, 22, 3, 8, 4);
    for (size_t i = 0; i < color.bytes.size(); i += 9)
        std::fill_n(&color.bytes[i], 3, uint8_t{0});
    writePicture("color.png", color);
    writePicture("grey.png", greyOf(color));
    const std::string ofColor = vek("label color.png out.png --neighbors 4 --json").output;
    const Picture out = readPicture("out.png");
    EXPECT_EQ(ofColor, vek("label grey.png out.png --neighbors 4 --json").output);
    EXPECT_EQ(out.bytes, readPicture("out.png").bytes);
    size_t area = 0;
    for (const auto& region : nlohmann::json::parse(ofColor))
        area += region.at("area").get<size_t>();
    EXPECT_EQ(31u * 22 - static_cast<size_t>(std::ranges::count(greyOf(color).bytes, 0)), area);

    const Result timed = vek("label grey.png out.png --time");
    EXPECT_NE(std::string::npos, timed.output.find("ms  vekiLabelMarkers_16u_C1IR")) << timed.output;
}

TEST_F(Vek, LabelsAsManyRegionsAsThereAreNumbers) {
    Picture dots(512, 512, 1, 8);
    for (size_t y = 0; y < 512; y += 2)
        for (size_t x = 0; x < 512; x += 2)
            dots.bytes[y * 512 + x] = 255;
    writePicture("many.png", dots);
    expectFailure("label many.png x.png", 1, "many.png: has 65536 regions; there are numbers for 65534");
    dots.bytes[0] = dots.bytes[510] = 0;
    writePicture("fewer.png", dots);
    EXPECT_EQ("65534 regions\n", vek("label fewer.png out.png").output);
    const auto regions = nlohmann::json::parse(vek("label fewer.png out.png --json").output);
    ASSERT_EQ(65534u, regions.size());
    EXPECT_EQ(510, regions.back().at("x"));
    EXPECT_EQ(510, regions.back().at("y"));
}

TEST_F(Vek, RefusesWrongUseOfLabel) {
    writePicture("in.png", picture(16, 8, 1, 8, 1));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    for (const std::string arguments : {"", "in.png", "in.png x.png more", "in.png x.png --neighbors 6",
                                        "in.png x.png --connectivity", "in.png x.png --labels 3"})
        expectFailure("label " + arguments, 2, "");
    expectFailure("label missing.png x.png", 1, "missing.png: cannot be opened");
    expectFailure("label deep.png x.png", 1, "deep.png: is 16 x 8, 16-bit grey; regions are found in 8-bit pictures");
    expectFailure("label in.png x.bmp", 2, "x.bmp: pictures are written as");
    expectFailure("label in.png missing/x.png", 1, "missing/x.png: cannot be written");
}

}  // namespace
