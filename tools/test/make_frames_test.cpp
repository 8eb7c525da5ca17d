// The frames of the demonstration.
#include "run_vek.h"

namespace {

Result makeFrames(const std::string& count) {
    return run(pathIn("MAKE_FRAMES", "the program make_frames") + " " + photograph("camera.png") + " . " + count);
}

TEST_F(Vek, MakesFramesForTheDemonstration) {
    for (const std::string count : {"0", "-1", "100", "many", "5x", "''", "4294967297"}) {
        SCOPED_TRACE(count);
        const Result result = makeFrames(count);
        EXPECT_EQ(1, result.status);
        EXPECT_NE(std::string::npos, result.output.find("is not a number of frames from 1 to 99")) << result.output;
        EXPECT_EQ(0, countFiles());
    }
    const Result result = makeFrames("99");
    EXPECT_EQ(0, result.status) << result.output;
    EXPECT_EQ(99, countFiles());
    EXPECT_TRUE(std::filesystem::exists("frame-01.png"));
    EXPECT_NE(readPicture("frame-01.png").bytes, readPicture("frame-99.png").bytes);
}

}  // namespace
