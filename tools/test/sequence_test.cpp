// vek background and vek motion, on sequences of pictures and on videos.
#include <cmath>
#include <fstream>

#include "run_vek.h"

namespace {

namespace fs = std::filesystem;

void checkAverage(int32_t bits, int32_t channels, bool masked) {
    SCOPED_TRACE(::testing::Message() << bits << " bits, " << channels << " channels, mask " << masked);
    std::vector<Picture> frames;
    for (uint32_t i = 0; i < 4; ++i) {
        frames.push_back(picture(29, 7, channels, bits, 10 + i));
        writePicture("f" + std::to_string(i) + ".png", frames[i]);
    }
    Picture mask(29, 7, 1, 8);
    for (size_t i = 0; i < mask.bytes.size(); ++i)
        mask.bytes[i] = i % 3 == 0 ? 0 : static_cast<uint8_t>(i % 255 + 1);
    writePicture("mask.png", mask);
    const Result result = vek("background f0.png f1.png f2.png f3.png -o out.png --alpha 0.25" +
                              std::string(masked ? " --mask mask.png" : ""));
    ASSERT_EQ(0, result.status) << result.output;
    const Picture out = readPicture("out.png");
    ASSERT_TRUE(out.hasShapeOf(frames[0]));
    for (size_t i = 0; i < size_t(29 * 7 * channels); ++i) {
        auto average = static_cast<float>(valueAt(frames[0], i));
        if (!masked || mask.bytes[i / size_t(channels)] != 0)
            for (size_t f = 1; f < 4; ++f)
                average += (static_cast<float>(valueAt(frames[f], i)) - average) * 0.25f;
        ASSERT_EQ(std::lrint(average), valueAt(out, i)) << i;
    }
}

TEST_F(Vek, AveragesSequences) {
    for (bool masked : {false, true}) {
        checkAverage(8, 1, masked);
        checkAverage(8, 3, masked);
        checkAverage(16, 1, masked);
    }
}

TEST_F(Vek, ShowsMotionAgainstTheBackgroundSoFar) {
    const std::array<uint8_t, 3> values = {100, 140, 40};
    for (size_t i = 0; i < values.size(); ++i) {
        Picture frame(5, 4, 1, 8);
        std::ranges::fill(frame.bytes, values[i]);
        writePicture("f" + std::to_string(i) + ".png", frame);
    }
    const Result result = vek("motion f0.png f1.png f2.png -o m-%02d.png --alpha 0.5");
    ASSERT_EQ(0, result.status) << result.output;
    EXPECT_FALSE(fs::exists("m-01.png"));
    EXPECT_EQ(40, readPicture("m-02.png").bytes[19]);  // 140 - 100
    EXPECT_EQ(80, readPicture("m-03.png").bytes[0]);   // 120 - 40
}

TEST_F(Vek, ReadsVideos) {
    writePicture("f1.png", picture(48, 32, 1, 8, 5));
    writePicture("f2.png", picture(48, 32, 1, 8, 6));
    ASSERT_EQ(0, run("ffmpeg -nostdin -v error -i f%d.png -c:v ffv1 -pix_fmt gray video.mkv").status);
    ASSERT_EQ(0, vek("background f1.png f2.png -o files.png --alpha 0.5").status);
    const Result result = vek("background video.mkv -o video.png --alpha 0.5");
    ASSERT_EQ(0, result.status) << result.output;
    EXPECT_EQ(readPicture("files.png").bytes, readPicture("video.png").bytes);
    ASSERT_EQ(0, vek("background video.mkv -o color.jpg --color --alpha 0.5").status);
    EXPECT_EQ(3, readPicture("color.jpg").channels);

    // Ten bits, and frames of uneven length, of which each counts once.
    ASSERT_EQ(
        0,
        run("ffmpeg -nostdin -v error -i f%d.png -vf 'setpts=N*N*9/TB' -c:v ffv1 -pix_fmt gray10le deep.mkv").status);
    ASSERT_EQ(0, vek("motion deep.mkv -o deep-%d.png --alpha 1").status);
    EXPECT_TRUE(fs::exists("deep-2.png"));
    EXPECT_FALSE(fs::exists("deep-3.png"));

    std::ofstream("list.ffconcat") << "ffconcat version 1.0\nfile video.mkv\n";
    expectFailure("background list.ffconcat -o x.png --alpha 1", 1, "list.ffconcat: is neither a picture nor a video");
    std::ofstream("text.txt") << std::string(2000, 'a');
    expectFailure("background text.txt -o x.png --alpha 1", 1, "text.txt: is neither a picture nor a video");
    std::ofstream("text.avi") << "this is not a video";
    expectFailure("background text.avi -o x.png --alpha 1", 1, "text.avi: is neither a picture nor a video");
    std::ofstream broken("broken.y4m", std::ios::binary);
    broken << "YUV4MPEG2 W16 H8 F25:1 C420jpeg\n";
    for (int i = 0; i < 3; ++i)
        broken << "FRAME\n" << std::string(16 * 8 * 3 / 2, static_cast<char>(100 + i));
    broken << "no frame at all\n" << std::string(16 * 8 * 3 / 2, 'a');
    broken.close();
    expectFailure("background broken.y4m -o x.png --alpha 1", 1, "broken.y4m: ffmpeg cannot decode the rest of it");
    const Result missing = run("PATH=/nonexistent " + program() + " background video.mkv -o x.png --alpha 1");
    EXPECT_EQ(1, missing.status);
    EXPECT_NE(std::string::npos, missing.output.find("ffmpeg, which cannot be started")) << missing.output;
}

TEST_F(Vek, RefusesWrongUseOfSequences) {
    for (const std::string arguments :
         {"background -o x.png --alpha 1", "background a.png -o x.png", "background a.png -o x.png --alpha fast",
          "background a.png -o x.png --alpha NaN", "background a.png -o x.png --alpha -inf"})
        expectFailure(arguments, 2, "(see vek --help)");
    writeMisfits();
    expectFailure("background grey.png color.png -o x.png --alpha 1", 1, "color.png: is 16 x 8, 8-bit colour");
    expectFailure("background grey.png grey.png -o x.png --alpha 1 --mask color.png", 1,
                  "color.png: is 16 x 8, 8-bit colour; the mask must be");
    expectFailure("background grey.png grey.png -o x.png --alpha 1 --mask large.png", 1,
                  "large.png: is 17 x 8, 8-bit grey; the mask must be");
    expectFailure("motion grey.png grey.png -o x.png --alpha 1", 2, "x.png: the name needs one %d");
    expectFailure("motion grey.png grey.png -o x-%s.png --alpha 1", 2, "x-%s.png: the name needs one %d");
}

}  // namespace
