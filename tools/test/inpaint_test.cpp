// vek inpaint: what stays, and what comes back of pictures whose hidden pixels are known.
#include "run_vek.h"

namespace {

/** A blot, lines and the corner of a picture. */
Picture blots(int32_t width, int32_t height) {
    Picture mask(width, height, 1, 8);
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const bool blot = (x - width / 2) * (x - width / 2) + (y - height / 2) * (y - height / 2) < 20;
            if (blot || x == width / 4 || y == 2 || (x < 3 && y < 5))
                mask.bytes[static_cast<size_t>(y * width + x)] = static_cast<uint8_t>(x % 255 + 1);
        }
    return mask;
}

/** White where a picture is to be restored. */
Picture spoilt(Picture picture, const Picture& mask) {
    for (size_t i = 0; i < picture.bytes.size(); ++i)
        if (mask.bytes[i / static_cast<size_t>(picture.channels)] != 0)
            picture.bytes[i] = 255;
    return picture;
}

Picture inpainted(const Picture& source, const Picture& mask, const std::string& options) {
    writePicture("in.png", source);
    writePicture("mask.png", mask);
    return outputOf("inpaint in.png mask.png out.png" + options);
}

const std::string kMethods[] = {"", " --method 0", " --method 1", " --method 1 --radius 1", " --radius 20.5"};

TEST_F(Vek, RestoresPictures) {
    const Picture mask = blots(61, 47);
    for (const int32_t channels : {1, 3}) {
        Picture flat(61, 47, channels, 8), ramp = flat;
        for (size_t i = 0; i < flat.bytes.size(); ++i) {
            const auto channel = i % static_cast<size_t>(channels), x = i / static_cast<size_t>(channels) % 61;
            flat.bytes[i] = static_cast<uint8_t>(40 + 30 * channel);
            ramp.bytes[i] = static_cast<uint8_t>(50 + 2 * x + 20 * channel);
        }
        for (const std::string& options : kMethods) {
            SCOPED_TRACE(::testing::Message() << channels << options);
            EXPECT_EQ(flat.bytes, inpainted(spoilt(flat, mask), mask, options).bytes);
            const Picture restored = inpainted(spoilt(ramp, mask), mask, options);
            for (size_t i = 0; i < ramp.bytes.size(); ++i)
                ASSERT_NEAR(ramp.bytes[i], restored.bytes[i],
                            mask.bytes[i / static_cast<size_t>(channels)] == 0 ? 0 : 16)
                    << i;
        }
    }
}

TEST_F(Vek, RestoresWhatTheMaskMarksAlone) {
    const Picture mask = blots(40, 30);
    for (const int32_t channels : {1, 3}) {
        const Picture source = picture(40, 30, channels, 8, 5);
        for (const std::string& options : kMethods) {
            SCOPED_TRACE(::testing::Message() << channels << options);
            const Picture restored = inpainted(source, mask, options);
            ASSERT_TRUE(restored.hasShapeOf(source));
            for (size_t i = 0; i < source.bytes.size(); ++i)
                if (mask.bytes[i / static_cast<size_t>(channels)] == 0) {
                    ASSERT_EQ(source.bytes[i], restored.bytes[i]) << i;
                }
            // What stood there before has no part in it.
            EXPECT_EQ(restored.bytes, inpainted(spoilt(source, mask), mask, options).bytes);
        }
        EXPECT_TRUE(inpainted(source, mask, " --method 0").bytes != inpainted(source, mask, " --method 1").bytes);
        EXPECT_EQ(inpainted(source, mask, " --method 0 --radius 5").bytes, inpainted(source, mask, "").bytes);
        EXPECT_EQ(source.bytes, inpainted(source, Picture(40, 30, 1, 8), "").bytes);
    }
}

TEST_F(Vek, RestoresFromWithinTheRadius) {
    // Black, but for a frame of white that is 2 pixels away from the one that is restored.
    Picture source(5, 5, 1, 8), mask(5, 5, 1, 8);
    for (size_t y = 0; y < 5; ++y)
        for (size_t x = 0; x < 5; ++x)
            source.bytes[y * 5 + x] = x == 0 || y == 0 || x == 4 || y == 4 ? 255 : 0;
    mask.bytes[12] = 1;
    for (const std::string method : {" --method 0", " --method 1"}) {
        EXPECT_EQ(0, inpainted(source, mask, method + " --radius 1.9").bytes[12]);
        EXPECT_LT(0, inpainted(source, mask, method + " --radius 2").bytes[12]);
    }
}

TEST_F(Vek, TellsTheTimeOfRestoring) {
    writePicture("in.png", picture(16, 8, 3, 8, 1));
    writePicture("mask.png", blots(16, 8));
    const Result timed = vek("inpaint in.png mask.png out.png --time");
    for (const std::string name : {"vekiFastMarching_8u32f_C1R", "vekiInpaintInitAlloc_8u_C3R", "vekiInpaint_8u_C3R"})
        EXPECT_NE(std::string::npos, timed.output.find("ms  " + name)) << timed.output;
}

TEST_F(Vek, RefusesWrongUseOfInpaint) {
    writePicture("in.png", picture(16, 8, 3, 8, 1));
    writePicture("mask.png", blots(16, 8));
    writePicture("large.png", Picture(17, 8, 1, 8));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    Picture white(16, 8, 1, 8);
    std::ranges::fill(white.bytes, uint8_t{1});
    writePicture("white.png", white);
    for (const std::string arguments :
         {"", "in.png", "in.png mask.png", "in.png mask.png x.png more", "in.png mask.png x.png --radius",
          "in.png mask.png x.png --method 2", "in.png mask.png x.png --method fast"})
        expectFailure("inpaint " + arguments, 2, "");
    for (const std::string radius : {"0.9", "101", "nan", "wide", "-1"})
        expectFailure("inpaint in.png mask.png x.png --radius " + radius, 2, "--radius: is not a number from 1 to 100");
    expectFailure("inpaint missing.png mask.png x.png", 1, "missing.png: cannot be opened");
    expectFailure("inpaint in.png missing.png x.png", 1, "missing.png: cannot be opened");
    expectFailure("inpaint deep.png mask.png x.png", 1, "deep.png: is 16 x 8, 16-bit grey; pixels are restored in");
    expectFailure("inpaint in.png large.png x.png", 1,
                  "large.png: is 17 x 8, 8-bit grey; the mask must be 8-bit grey and as large as in.png, 16 x 8");
    expectFailure("inpaint in.png in.png x.png", 1, "in.png: is 16 x 8, 8-bit colour; the mask must be");
    expectFailure("inpaint in.png white.png x.png", 1, "white.png: has no black pixel");
    expectFailure("inpaint in.png mask.png x.bmp", 2, "x.bmp: pictures are written as");
    expectFailure("inpaint in.png mask.png missing/x.png", 1, "missing/x.png: cannot be written");
}

}  // namespace
