// The scenes and small frames of the demonstration.
#include "run_vek.h"

namespace {

Result makeScene(const std::string& arguments) {
    return run(pathIn("MAKE_SCENE", "the program make_scene") + " " + photograph("camera.png") + " " +
               photograph("chelsea.png") + " " + arguments);
}

Result makeSmallFrames(const std::string& arguments) {
    return run(pathIn("MAKE_SMALL_FRAMES", "the program make_small_frames") + " " + arguments);
}

/** How many pixels of two frames are clearly different. */
int64_t changes(const Picture& a, const Picture& b) {
    int64_t count = 0;
    for (size_t i = 0; i < a.bytes.size(); i += 3)
        count += std::abs(valueAt(a, i) - valueAt(b, i)) > 12;
    return count;
}

TEST_F(Vek, MakesScenesForTheDemonstration) {
    for (const std::string arguments : {". 0 0", ". 100 0", ". many 0", ". 3 fast", ". 3 -1"}) {
        EXPECT_EQ(1, makeScene(arguments).status);
        EXPECT_EQ(0, countFiles());
    }
    EXPECT_EQ(2, makeScene(". 3").status);
    std::filesystem::create_directory("still");
    std::filesystem::create_directory("moving");
    ASSERT_EQ(0, makeScene("still 5 0").status);
    ASSERT_EQ(0, makeScene("moving 5 4").status);
    EXPECT_FALSE(std::filesystem::exists("still/frame-06.png"));
    // Without the object in the first and the last frame; with a disc of it between them.
    const Picture first = readPicture("still/frame-01.png");
    EXPECT_EQ(0, changes(first, readPicture("still/frame-05.png")));
    const int64_t disc = changes(first, readPicture("still/frame-03.png"));
    EXPECT_LT(1000, disc);
    EXPECT_LT(disc, 3300);
    EXPECT_LT(5000, changes(first, readPicture("moving/frame-05.png")));
}

TEST_F(Vek, MakesSmallFramesForTheDemonstration) {
    for (const std::string count : {"0", "100", "many"})
        EXPECT_EQ(1, makeSmallFrames(photograph("camera.png") + " . " + count).status);
    EXPECT_EQ(2, makeSmallFrames(".").status);
    EXPECT_EQ(1, makeSmallFrames("missing.png . 2").status);
    EXPECT_EQ(0, countFiles());
    ASSERT_EQ(0, makeSmallFrames(photograph("camera.png") + " . 2").status);
    const Picture camera = readPicture(photograph("camera.png")), first = readPicture("frame-01.png");
    ASSERT_EQ(Picture(256, 256, 1, 8).shape(), first.shape());
    EXPECT_NE(first.bytes, readPicture("frame-02.png").bytes);
    double squares = 0;
    for (size_t i = 0; i < first.bytes.size(); ++i) {
        const size_t pixel = i / 256 * 1024 + i % 256 * 2;
        const double mean = (valueAt(camera, pixel) + valueAt(camera, pixel + 1) + valueAt(camera, pixel + 512) +
                             valueAt(camera, pixel + 513)) /
                            4.;
        squares += (mean - first.bytes[i]) * (mean - first.bytes[i]);
    }
    EXPECT_NEAR(9, squares / static_cast<double>(first.bytes.size()), 1);  // the variance of the noise
}

}  // namespace
