// vek morph, against the definition of the manual.
#include <functional>

#include "border.h"
#include "run_vek.h"

namespace {

/** A drawing of a picture or of an element: # for 255 and members, . for 0 and other pixels. */
using Rows = std::vector<std::string>;

/** The members of an element, as seen from its anchor. */
using Offsets = std::vector<ImagePoint>;

Offsets offsetsOf(const Rows& rows, ImagePoint anchor) {
    Offsets offsets;
    for (size_t y = 0; y < rows.size(); ++y)
        for (size_t x = 0; x < rows[y].size(); ++x)
            if (rows[y][x] == '#')
                offsets.push_back({static_cast<int32_t>(x) - anchor.x, static_cast<int32_t>(y) - anchor.y});
    return offsets;
}

Offsets turned(Offsets offsets) {
    for (ImagePoint& offset : offsets)
        offset = {-offset.x, -offset.y};
    return offsets;
}

/** The pixels under the element, as one value by `choose`. */
template <typename Choose>
Picture chosen(const Picture& source, const Offsets& offsets, Choose choose) {
    Picture result = source;
    for (int32_t y = 0; y < source.height; ++y)
        for (int32_t x = 0; x < source.width; ++x)
            for (int32_t channel = 0; channel < source.channels; ++channel) {
                std::vector<uint8_t> values;
                for (const auto& [dx, dy] : offsets) {
                    const int row = borderPixel(BorderReplicate, y + dy, source.height);
                    const int column = borderPixel(BorderReplicate, x + dx, source.width);
                    values.push_back(
                        source.bytes[static_cast<size_t>((row * source.width + column) * source.channels + channel)]);
                }
                result.bytes[static_cast<size_t>((y * source.width + x) * source.channels + channel)] =
                    *choose(values.begin(), values.end());
            }
    return result;
}

Picture dilated(const Picture& source, const Offsets& offsets) {
    return chosen(source, offsets, [](auto first, auto last) { return std::max_element(first, last); });
}

Picture eroded(const Picture& source, const Offsets& offsets) {
    return chosen(source, offsets, [](auto first, auto last) { return std::min_element(first, last); });
}

/** first - second, or 0 where that is negative. */
Picture less(Picture first, const Picture& second) {
    std::ranges::transform(first.bytes, second.bytes, first.bytes.begin(),
                           [](int a, int b) { return static_cast<uint8_t>(std::max(a - b, 0)); });
    return first;
}

Picture opened(const Picture& source, const Offsets& offsets) {
    return dilated(eroded(source, offsets), turned(offsets));
}

Picture closed(const Picture& source, const Offsets& offsets) {
    return eroded(dilated(source, offsets), turned(offsets));
}

struct Operation {
    const char* name;
    std::function<Picture(const Picture&, const Offsets&)> apply;
};
const Operation kOperations[] = {
    {"dilate", dilated},
    {"erode", eroded},
    {"open", opened},
    {"close", closed},
    {"tophat", [](const Picture& source, const Offsets& offsets) { return less(source, opened(source, offsets)); }},
    {"blackhat", [](const Picture& source, const Offsets& offsets) { return less(closed(source, offsets), source); }},
    {"gradient", [](const Picture& source,
                    const Offsets& offsets) { return less(dilated(source, offsets), eroded(source, offsets)); }},
};

Picture morphed(const Picture& source, const std::string& operation, const std::string& options) {
    writePicture("in.png", source);
    return outputOf("morph " + operation + " in.png out.png " + options);
}

Picture drawn(const Rows& rows) {
    Picture result(static_cast<int32_t>(rows[0].size()), static_cast<int32_t>(rows.size()), 1, 8);
    auto byte = result.bytes.begin();
    for (const std::string& row : rows)
        for (const char c : row)
            *byte++ = c == '#' ? 255 : 0;
    return result;
}

TEST_F(Vek, MorphsAPictureAsByHand) {
    // A block with a hole, and a lone pixel.
    const Picture source = drawn({"........",  //
                                  ".####...",  //
                                  ".#.##.#.",  //
                                  ".####...",  //
                                  "........"});
    const auto expect = [&](const Rows& rows, const std::string& operation, const std::string& options) {
        EXPECT_EQ(drawn(rows).bytes, morphed(source, operation, options).bytes) << operation << " " << options;
    };
    const Rows empty(5, "........");
    const Rows dilation{".####...",  //
                        "#######.",  //
                        "########",  //
                        "#######.",  //
                        ".####..."};
    expect(dilation, "dilate", "--element cross");
    expect(empty, "erode", "--element cross");
    expect(dilation, "gradient", "--element cross");
    expect(empty, "open", "--element cross");
    expect({"..##....",  //
            ".####...",  //
            "#######.",  //
            ".####...",  //
            "..##...."},
           "close", "--element cross");
    expect({"..##....",  //
            "........",  //
            "#.#..#..",  //
            "........",  //
            "..##...."},
           "blackhat", "--element cross");
    expect({"........",  //
            "...##...",  //
            "...##...",  //
            "...##...",  //
            "........"},
           "open", "--size 2x2");
    expect({"........",  //
            ".##.....",  //
            ".#....#.",  //
            ".##.....",  //
            "........"},
           "tophat", "--size 2x2");
    expect({"........",  //
            "#####...",  //
            "#######.",  //
            "#####...",  //
            "........"},
           "dilate", "--size 3x1 --anchor 0,0");
}

TEST_F(Vek, MorphsWithEveryElement) {
    struct Element {
        const char* options;
        Rows rows;
        ImagePoint anchor;
    };
    const Picture mask = drawn({"#..#", "....", ".##."});
    writePicture("mask.png", mask);
    Picture faint = mask;  // every value but 0 counts
    for (uint8_t& byte : faint.bytes)
        byte = byte ? 1 : 0;
    writePicture("faint.png", faint);
    const Picture source = picture(37, 26, 1, 8, 1), color = picture(19, 14, 3, 8, 2);
    for (const Element& element : std::initializer_list<Element>{
             {"", {"###", "###", "###"}, {1, 1}},
             {"--size 4x2", {"####", "####"}, {2, 1}},
             {"--element rect --size 1x1", {"#"}, {0, 0}},
             {"--size 3x2 --anchor 2,0", {"###", "###"}, {2, 0}},
             {"--element cross --size 5x3", {"..#..", "#####", "..#.."}, {2, 1}},
             {"--element cross --size 4x4", {"..#.", "..#.", "####", "..#."}, {2, 2}},
             {"--element cross --size 5x3 --anchor 0,2", {"..#..", "#####", "..#.."}, {0, 2}},
             {"--element ellipse", {"###", "###", "###"}, {1, 1}},
             {"--element ellipse --size 5x5", {".###.", "#####", "#####", "#####", ".###."}, {2, 2}},
             {"--element ellipse --size 7x4", {".#####.", "#######", "#######", ".#####."}, {3, 2}},
             {"--element ellipse --size 5x3 --anchor 4,0", {".###.", "#####", ".###."}, {4, 0}},
             {"--element ellipse --size 9x9",
              {"..#####..", ".#######.", "#########", "#########", "#########", "#########", "#########", ".#######.",
               "..#####.."},
              {4, 4}},
             {"--element mask.png", {"#..#", "....", ".##."}, {2, 1}},
             {"--element faint.png --anchor 3,2", {"#..#", "....", ".##."}, {3, 2}},
         })
        for (const Operation& operation : kOperations) {
            SCOPED_TRACE(::testing::Message() << operation.name << " " << element.options);
            const Offsets offsets = offsetsOf(element.rows, element.anchor);
            EXPECT_EQ(operation.apply(source, offsets).bytes, morphed(source, operation.name, element.options).bytes);
            EXPECT_EQ(operation.apply(color, offsets).bytes, morphed(color, operation.name, element.options).bytes);
        }
}

TEST_F(Vek, MorphsPicturesOfEverySize) {
    const Offsets plus = offsetsOf({".#.", "###", ".#."}, {1, 1});
    for (const Picture& source : {picture(1, 1, 1, 8, 1), picture(2, 1, 3, 8, 2), picture(640, 480, 1, 8, 3)})
        for (const Operation& operation : kOperations) {
            SCOPED_TRACE(::testing::Message() << source.shape() << " " << operation.name);
            EXPECT_EQ(operation.apply(source, plus).bytes,
                      morphed(source, inCapitals(operation.name), "--element cross --threads 3").bytes);
        }
    // An element that is larger than the picture, with all of it under it everywhere.
    const Picture small = picture(5, 4, 1, 8, 4);
    EXPECT_EQ(std::vector<uint8_t>(20, std::ranges::max(small.bytes)), morphed(small, "dilate", "--size 9999x9").bytes);

    const Result timed = vek("morph close in.png out.png --time");
    EXPECT_NE(std::string::npos, timed.output.find("ms  vekiMorphCloseBorderReplicate_8u_C1R")) << timed.output;
    EXPECT_NE(std::string::npos, timed.output.find("ms  vekiMorphologyCompoundInit_8u_C1R")) << timed.output;
}

TEST_F(Vek, RefusesWrongUseOfMorphology) {
    writePicture("in.png", picture(16, 8, 1, 8, 1));
    for (const std::string arguments :
         {"", "dilate", "dilate in.png", "dilate in.png x.png more", "dilate in.png x.png --size",
          "dilate in.png x.png --anchor", "dilate in.png x.png --mask in.png"})
        expectFailure("morph " + arguments, 2, "");
    expectFailure("morph grow in.png x.png", 2, "grow");
    for (const std::string size : {"5", "5x", "x5", "5x5x5", "5,5", "wide", "1.5x3", "3x1.5", "99999999999x3"})
        expectFailure("morph open in.png x.png --size " + size, 2,
                      "--size: " + size + " is not a width and a height, as in 5x3");
    for (const std::string size : {"0x3", "3x0", "-3x3", "10000x1", "1x10000"})
        expectFailure("morph open in.png x.png --size " + size, 2, "--size: " + size + " is not from 1x1 to 9999x9999");
    for (const std::string anchor : {"1", "1,", ",1", "1x1", "1,1,1", "middle", "1.5,1"})
        expectFailure("morph open in.png x.png --anchor " + anchor, 2,
                      "--anchor: " + anchor + " is not a column and a row, as in 2,1");
    for (const std::string anchor : {"5,0", "0,3", "-1,0", "0,-1"})
        expectFailure("morph open in.png x.png --size 5x3 --anchor " + anchor, 2,
                      "--anchor: " + anchor + " lies outside of the element, whose last pixel is 4,2");
    expectFailure("morph open in.png x.png --element in.png --anchor 16,0", 2,
                  "--anchor: 16,0 lies outside of the element, whose last pixel is 15,7");
    expectFailure("morph open in.png x.png --element in.png --size 3x3", 2,
                  "--size: is for rect, cross and ellipse; a picture has its own");
    expectFailure("morph open in.png x.png --element elipse", 2,
                  "--element: elipse is neither rect, cross, ellipse nor a file");
}

TEST_F(Vek, SaysWhatCannotBeMorphed) {
    writePicture("in.png", picture(16, 8, 1, 8, 1));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    writePicture("color.png", picture(16, 8, 3, 8, 1));
    writePicture("black.png", Picture(3, 3, 1, 8));
    writePicture("long.png", Picture(300000, 1, 1, 8));
    expectFailure("morph open missing.png x.png", 1, "missing.png: cannot be opened");
    expectFailure("morph open deep.png x.png", 1, "deep.png: is 16 x 8, 16-bit grey; morphology is for 8-bit pictures");
    expectFailure("morph open in.png x.bmp", 2, "x.bmp: pictures are written as");
    expectFailure("morph open in.png missing/x.png", 1, "missing/x.png: cannot be written");
    expectFailure("morph open long.png x.png --size 1x9999", 1, "the work buffer: would be larger than 2 GiB");
    expectFailure("morph open in.png x.png --element .", 1, ".: is a folder");
    expectFailure("morph open in.png x.png --element /dev/null", 1, "/dev/null: is empty");
    expectFailure("morph open in.png x.png --element deep.png", 1,
                  "deep.png: is 16 x 8, 16-bit grey; elements are 8-bit grey pictures");
    expectFailure("morph open in.png x.png --element color.png", 1,
                  "color.png: is 16 x 8, 8-bit colour; elements are 8-bit grey pictures");
    expectFailure("morph open in.png x.png --element black.png", 1, "black.png: is all black");
}

}  // namespace
