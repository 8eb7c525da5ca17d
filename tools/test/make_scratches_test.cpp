// The spoilt photograph of the demonstration.
#include "run_vek.h"

namespace {

Result makeScratches(const std::string& arguments) {
    return run(pathIn("MAKE_SCRATCHES", "the program make_scratches") + " " + arguments);
}

TEST_F(Vek, SpoilsPicturesForTheDemonstration) {
    const Picture color = picture(160, 120, 3, 8, 1);
    writePicture("color.png", color);
    writePicture("grey.png", greyOf(color));
    for (const std::string name : {"color.png", "grey.png"}) {
        SCOPED_TRACE(name);
        const Result result = makeScratches(name + " scratched.png mask.png");
        ASSERT_EQ(0, result.status) << result.output;
        EXPECT_EQ("", result.output);
        const Picture mask = readPicture("mask.png");
        Picture expected = readPicture(name);
        for (size_t i = 0; i < expected.bytes.size(); ++i)
            if (mask.bytes[i / static_cast<size_t>(expected.channels)] != 0)
                expected.bytes[i] = 255;
        EXPECT_EQ(expected.bytes, readPicture("scratched.png").bytes);
        // Some of it, but not so much that nothing is left.
        const auto spoilt = std::ranges::count(mask.bytes, 255);
        EXPECT_LT(160 * 120 / 50, spoilt);
        EXPECT_LT(spoilt, 160 * 120 / 3);
        EXPECT_EQ(160 * 120, spoilt + std::ranges::count(mask.bytes, 0));
    }
    EXPECT_EQ(2, makeScratches("color.png x.png").status);
    EXPECT_EQ(1, makeScratches("missing.png x.png y.png").status);
}

}  // namespace
