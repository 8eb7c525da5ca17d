// vek reconstruct and vek fillholes, against the definition: small steps until nothing changes.
#include "run_vek.h"

namespace {

/** Reconstruction by dilation in 4 or 8 neighbours. */
Picture reconstructed(Picture marker, const Picture& mask, int neighbors) {
    const auto at = [&](int x, int y) { return static_cast<size_t>(y * mask.width + x); };
    std::ranges::transform(marker.bytes, mask.bytes, marker.bytes.begin(),
                           [](auto a, auto b) { return std::min(a, b); });
    for (std::vector<uint8_t> before; before != marker.bytes;) {
        before = marker.bytes;
        for (int y = 0; y < mask.height; ++y)
            for (int x = 0; x < mask.width; ++x)
                for (int j = std::max(y - 1, 0); j <= std::min(y + 1, mask.height - 1); ++j)
                    for (int i = std::max(x - 1, 0); i <= std::min(x + 1, mask.width - 1); ++i)
                        if (neighbors == 8 || i == x || j == y)
                            marker.bytes[at(x, y)] =
                                std::max(marker.bytes[at(x, y)], std::min(before[at(i, j)], mask.bytes[at(x, y)]));
    }
    return marker;
}

Picture inverted(Picture picture) {
    for (uint8_t& byte : picture.bytes)
        byte = static_cast<uint8_t>(255 - byte);
    return picture;
}

/** Reconstruction by erosion is that by dilation of the negatives. */
Picture reconstructedByErosion(const Picture& marker, const Picture& mask, int neighbors) {
    return inverted(reconstructed(inverted(marker), inverted(mask), neighbors));
}

Picture rows(int32_t width, const std::vector<uint8_t>& pixels) {
    Picture result(width, static_cast<int32_t>(pixels.size()) / width, 1, 8);
    result.bytes = pixels;
    return result;
}

TEST_F(Vek, ReconstructsAsByHand) {
    writePicture("mask.png", rows(6, {90, 90, 10, 80, 80, 10,  //
                                      90, 70, 10, 80, 10, 60,  //
                                      10, 10, 10, 10, 10, 60}));
    writePicture("marker.png", rows(6, {0, 0, 0, 75, 0, 0,  //
                                        0, 99, 0, 0, 0, 0,  //
                                        0, 0, 0, 0, 0, 0}));
    // The light goes no further than a darker pixel lets it, and from 80 to 60 past a corner alone.
    const std::vector<uint8_t> past{70, 70, 10, 75, 75, 10,  //
                                    70, 70, 10, 75, 10, 60,  //
                                    10, 10, 10, 10, 10, 60};
    std::vector<uint8_t> sides = past;
    sides[11] = sides[17] = 10;
    EXPECT_EQ(past, outputOf("reconstruct marker.png mask.png out.png").bytes);
    EXPECT_EQ(past, outputOf("reconstruct marker.png mask.png out.png --neighbors 8").bytes);
    EXPECT_EQ(sides, outputOf("reconstruct marker.png mask.png out.png --neighbors 4").bytes);
}

TEST_F(Vek, FillsHolesAsByHand) {
    // A hole with a wall of 50 and more, which opens at a corner.
    writePicture("in.png", rows(6, {9, 9,  9,  9,  9, 9,    //
                                    9, 90, 80, 70, 9, 9,    //
                                    9, 60, 10, 50, 9, 9,    //
                                    9, 70, 80, 9,  9, 200,  //
                                    9, 9,  9,  9,  9, 9}));
    const std::vector<uint8_t> corners{9, 9,  9,  9,  9, 9,    //
                                       9, 90, 80, 70, 9, 9,    //
                                       9, 60, 10, 50, 9, 9,    //
                                       9, 70, 80, 9,  9, 200,  //
                                       9, 9,  9,  9,  9, 9};
    std::vector<uint8_t> filled = corners;
    filled[14] = 50;
    EXPECT_EQ(filled, outputOf("fillholes in.png out.png").bytes);
    EXPECT_EQ(filled, outputOf("fillholes in.png out.png --neighbors 4").bytes);
    EXPECT_EQ(corners, outputOf("fillholes in.png out.png --neighbors 8").bytes);
}

TEST_F(Vek, ReconstructsPicturesOfEverySize) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 9}, {9, 1}, {2, 2}, {3, 3}, {70, 41}}) {
        const Picture mask = picture(width, height, 1, 8, 1), other = picture(width, height, 1, 8, 2);
        writePicture("mask.png", mask);
        writePicture("marker.png", other);
        Picture frame = mask;
        for (int y = 1; y < height - 1; ++y)
            for (int x = 1; x < width - 1; ++x)
                frame.bytes[static_cast<size_t>(y * width + x)] = 255;
        for (const int neighbors : {4, 8}) {
            const std::string option = " --neighbors " + std::to_string(neighbors);
            SCOPED_TRACE(mask.shape() + option);
            EXPECT_EQ(reconstructed(other, mask, neighbors).bytes,
                      outputOf("reconstruct marker.png mask.png out.png" + option).bytes);
            EXPECT_EQ(reconstructedByErosion(other, mask, neighbors).bytes,
                      outputOf("reconstruct marker.png mask.png out.png --erode" + option).bytes);
            EXPECT_EQ(reconstructedByErosion(frame, mask, neighbors).bytes,
                      outputOf("fillholes mask.png out.png" + option).bytes);
        }
    }
}

TEST_F(Vek, ReconstructsColorsInGrey) {
    const Picture color = picture(31, 22, 3, 8, 4), marker = picture(31, 22, 3, 8, 5);
    writePicture("color.png", color);
    writePicture("grey.png", greyOf(color));
    writePicture("marker.png", marker);
    const Picture expected = reconstructed(greyOf(marker), greyOf(color), 8);
    for (const std::string mask : {"color.png", "grey.png"}) {
        const Picture result = outputOf("reconstruct marker.png " + mask + " out.png");
        EXPECT_TRUE(result.hasShapeOf(expected)) << result.shape();
        EXPECT_EQ(expected.bytes, result.bytes);
    }
    EXPECT_EQ(outputOf("fillholes grey.png out.png").bytes, outputOf("fillholes color.png out.png").bytes);
    for (const auto& [arguments, name] : {std::pair{"reconstruct marker.png grey.png out.png", "Dilate"},
                                          {"reconstruct marker.png grey.png out.png --erode", "Erode"},
                                          {"fillholes grey.png out.png", "Erode"}}) {
        const Result timed = vek(std::string(arguments) + " --time");
        EXPECT_NE(std::string::npos, timed.output.find("ms  vekiMorphReconstruct" + std::string(name) + "_8u_C1IR"))
            << timed.output;
    }
}

TEST_F(Vek, RefusesWrongUseOfReconstruction) {
    writePicture("in.png", picture(16, 8, 1, 8, 1));
    writePicture("large.png", picture(17, 8, 1, 8, 1));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    for (const std::string arguments :
         {"reconstruct", "reconstruct in.png", "reconstruct in.png in.png", "reconstruct in.png in.png x.png more",
          "reconstruct in.png in.png x.png --neighbors 6", "reconstruct in.png in.png x.png --neighbors all",
          "fillholes", "fillholes in.png", "fillholes in.png x.png more", "fillholes in.png x.png --neighbors 5",
          "fillholes in.png x.png --erode"})
        expectFailure(arguments, 2, "");
    for (const std::string command : {"reconstruct in.png ", "fillholes "}) {
        expectFailure(command + "missing.png x.png", 1, "missing.png: cannot be opened");
        expectFailure(command + "deep.png x.png", 1,
                      "deep.png: is 16 x 8, 16-bit grey; morphology is for 8-bit pictures");
        expectFailure(command + "in.png x.bmp", 2, "x.bmp: pictures are written as");
        expectFailure(command + "in.png missing/x.png", 1, "missing/x.png: cannot be written");
    }
    expectFailure("reconstruct missing.png in.png x.png", 1, "missing.png: cannot be opened");
    expectFailure("reconstruct deep.png in.png x.png", 1, "deep.png: is 16 x 8, 16-bit grey; morphology is for");
    expectFailure("reconstruct in.png large.png x.png", 1,
                  "large.png: is 17 x 8, 8-bit grey, but in.png is 16 x 8, 8-bit grey");
}

}  // namespace
