// Runs vek as a user would: what it computes from pictures and videos, and what it says of input that is no good.
// Pictures are decoded by ffmpeg where a mistake of reading and writing could cancel out.
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>

#include "run_vek.h"

namespace {

namespace fs = std::filesystem;

/** The pixels of a picture as ffmpeg sees them. */
std::vector<uint8_t> decodedByFfmpeg(const std::string& path, const std::string& format) {
    const Result result = run("ffmpeg -nostdin -v error -i " + path + " -f rawvideo -pix_fmt " + format + " -");
    EXPECT_EQ(0, result.status) << result.output;
    return {result.output.begin(), result.output.end()};
}

TEST_F(Vek, SubtractsPicturesOfEveryKind) {
    struct Kind {
        int32_t channels, bits;
        const char* format;
    };
    for (const Kind& kind : {Kind{1, 8, "gray"}, Kind{3, 8, "rgb24"}, Kind{1, 16, "gray16le"}}) {
        SCOPED_TRACE(kind.format);
        const Picture a = picture(37, 21, kind.channels, kind.bits, 1),
                      b = picture(37, 21, kind.channels, kind.bits, 2);
        writePicture("a.png", a);
        writePicture("b.png", b);
        ASSERT_EQ(a.bytes, decodedByFfmpeg("a.png", kind.format));
        const Result result = vek("diff a.png b.png out.png");
        ASSERT_EQ(0, result.status) << result.output;
        EXPECT_EQ("", result.output);
        Picture expected = a;
        for (size_t i = 0; i < size_t(37 * 21 * kind.channels); ++i) {
            const int difference = std::abs(valueAt(a, i) - valueAt(b, i));
            if (kind.bits == 8)
                expected.bytes[i] = static_cast<uint8_t>(difference);
            else
                expected.pixels<uint16_t>()[i] = static_cast<uint16_t>(difference);
        }
        EXPECT_EQ(expected.bytes, decodedByFfmpeg("out.png", kind.format));
    }
}

TEST_F(Vek, ReadsEveryKindOfPng) {
    writePicture("color.png", picture(32, 16, 3, 8, 3));
    struct Kind {
        const char *converted, *format;
        int32_t channels;
    };
    for (const Kind& kind : {Kind{"pal8", "rgb24", 3}, Kind{"rgba", "rgb24", 3}, Kind{"monob", "gray", 1},
                             Kind{"gray", "gray", 1}, Kind{"gray16be", "gray16le", 1}}) {
        SCOPED_TRACE(kind.converted);
        ASSERT_EQ(0,
                  run("ffmpeg -nostdin -y -v error -i color.png -pix_fmt " + std::string(kind.converted) + " kind.png")
                      .status);
        const Picture read = readPicture("kind.png");
        EXPECT_EQ(kind.channels, read.channels);
        EXPECT_EQ(decodedByFfmpeg("kind.png", kind.format), read.bytes);
    }
}

TEST_F(Vek, KeepsSmoothPicturesInJpeg) {
    for (int32_t channels : {1, 3}) {
        Picture smooth(64, 48, channels, 8);
        for (size_t i = 0; i < smooth.bytes.size(); ++i)
            smooth.bytes[i] = static_cast<uint8_t>(40 + 2 * (i / size_t(channels) % 64));
        writePicture("smooth.jpg", smooth);
        const Picture read = readPicture("smooth.jpg");
        ASSERT_TRUE(read.hasShapeOf(smooth));
        for (size_t i = 0; i < smooth.bytes.size(); ++i)
            ASSERT_NEAR(smooth.bytes[i], read.bytes[i], 4) << i;
    }
}

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

/** Whether a description by vek stats is that of the values of a channel, computed plainly. */
void expectStatistics(const nlohmann::json& given, const Picture& of, const Picture* mask, size_t channel) {
    SCOPED_TRACE(given.dump());
    double count = 0, sum = 0, deviations = 0;
    std::optional<size_t> least, most;  // pixels
    const auto value = [&](size_t i) { return valueAt(of, i * size_t(of.channels) + channel); };
    const auto forEachPixel = [&](auto visit) {
        for (size_t i = 0; i < size_t(of.width) * size_t(of.height); ++i)
            if (mask == nullptr || mask->bytes[i] != 0)
                visit(i);
    };
    forEachPixel([&](size_t i) {
        ++count;
        sum += value(i);
        if (!least || value(i) < value(*least))
            least = i;
        if (!most || value(i) > value(*most))
            most = i;
    });
    const double mean = count == 0 ? 0 : sum / count;
    forEachPixel([&](size_t i) { deviations += (value(i) - mean) * (value(i) - mean); });
    EXPECT_DOUBLE_EQ(mean, given.at("mean"));
    EXPECT_NEAR(count == 0 ? 0 : std::sqrt(deviations / count), given.at("deviation").get<double>(), 1e-6);
    const auto expectExtremum = [&](const std::optional<size_t>& pixel, const nlohmann::json& extremum) {
        if (!pixel) {
            EXPECT_TRUE(extremum.is_null());
            return;
        }
        EXPECT_EQ(value(*pixel), extremum.at("value"));
        EXPECT_EQ(*pixel % size_t(of.width), extremum.at("x"));
        EXPECT_EQ(*pixel / size_t(of.width), extremum.at("y"));
    };
    expectExtremum(least, given.at("minimum"));
    expectExtremum(most, given.at("maximum"));
}

TEST_F(Vek, GivesStatisticsOfPicturesOfEveryKind) {
    const std::array<Picture, 3> pictures = {picture(37, 21, 1, 8, 1), picture(37, 21, 3, 8, 2),
                                             picture(37, 21, 1, 16, 3)};
    // With quotation marks, a backslash, UTF-8 and a byte that is not UTF-8.
    const std::array<std::string, 3> names = {"grey \"1\".png", "back\\slash \xc3\xa9.png", "deep \xff.png"};
    const std::array<std::string, 3> namesInJson = {names[0], names[1], "deep \xef\xbf\xbd.png"};
    std::string arguments = "stats --json";
    for (size_t i = 0; i < 3; ++i) {
        writePicture(names[i], pictures[i]);
        arguments += " '" + names[i] + "'";
    }
    Picture some(37, 21, 1, 8), none(37, 21, 1, 8);
    for (size_t i = 0; i < some.bytes.size(); ++i)
        some.bytes[i] = i % 5 < 3 ? 0 : static_cast<uint8_t>(i % 255 + 1);
    writePicture("some.png", some);
    writePicture("none.png", none);

    struct Selection {
        std::string option;
        const Picture* mask;
    };
    for (const Selection& selection :
         {Selection{"", nullptr}, Selection{" --mask some.png", &some}, Selection{" --mask none.png", &none}}) {
        SCOPED_TRACE(selection.option);
        const Result result = vek(arguments + selection.option);
        ASSERT_EQ(0, result.status) << result.output;
        const auto all = nlohmann::json::parse(result.output);
        ASSERT_EQ(5u, all.size());
        constexpr std::array<const char*, 5> kChannels = {"grey", "red", "green", "blue", "grey"};
        for (size_t i = 0; i < 5; ++i) {
            const size_t file = i == 0 ? 0 : i < 4 ? 1 : 2;
            EXPECT_EQ(namesInJson[file], all[i].at("file"));
            EXPECT_EQ(kChannels[i], all[i].at("channel"));
            expectStatistics(all[i], pictures[file], selection.mask, file == 1 ? i - 1 : 0);
        }
    }
}

TEST_F(Vek, PrintsStatisticsAsATable) {
    Picture color(3, 2, 3, 8);
    std::ranges::fill(color.bytes, uint8_t{7});
    color.bytes[0] = 255;        // red, first pixel
    color.bytes[3 * 5 + 1] = 1;  // green, last pixel
    writePicture("\xc3\xa9.png", color);
    Picture deep(1, 2, 1, 16);
    deep.pixels<uint16_t>()[1] = 65535;
    writePicture("two\nlines.png", deep);
    EXPECT_EQ(
        "file           channel       mean  deviation  minimum (x, y)  maximum (x, y)\n"
        "\xc3\xa9.png          red         48.333     92.424        7 (1, 0)      255 (0, 0)\n"
        "\xc3\xa9.png          green        6.000      2.236        1 (2, 1)        7 (0, 0)\n"
        "\xc3\xa9.png          blue         7.000      0.000        7 (0, 0)        7 (0, 0)\n"
        "two?lines.png  grey     32767.500  32767.500        0 (0, 0)    65535 (0, 1)\n",
        vek("stats \xc3\xa9.png 'two\nlines.png'").output);
    writePicture("none.png", Picture(1, 2, 1, 8));
    EXPECT_EQ(
        "file      channel   mean  deviation  minimum (x, y)  maximum (x, y)\n"
        "none.png  grey     0.000      0.000               -               -\n",
        vek("stats none.png --mask none.png").output);
    const Result timed = vek("stats none.png --time");
    EXPECT_NE(std::string::npos, timed.output.find("ms  vekiMinMaxIndx_8u_C1R")) << timed.output;
    expectFailure("stats none.png > /dev/full", 1, "standard output: cannot be written");
}

/** Twice the deviation of the window around each pixel, by its definition. */
double twiceTheDeviation(const Picture& of, int32_t x, int32_t y, int32_t window) {
    int64_t sum = 0, squares = 0;
    for (int32_t j = y - window / 2; j < y - window / 2 + window; ++j)
        for (int32_t i = x - window / 2; i < x - window / 2 + window; ++i) {
            const int32_t row = std::clamp(j, 0, of.height - 1), column = std::clamp(i, 0, of.width - 1);
            const int64_t value = of.bytes[static_cast<size_t>(row * of.width + column)];
            sum += value;
            squares += value * value;
        }
    const int64_t area = int64_t{window} * window;
    return 2 * std::sqrt(static_cast<double>(squares * area - sum * sum)) / static_cast<double>(area);
}

void checkLocalContrast(const Picture& source, const Picture& grey, int32_t window) {
    SCOPED_TRACE(::testing::Message() << source.shape() << ", window " << window);
    writePicture("in.png", source);
    const Result result = vek("localcontrast in.png out.png --window " + std::to_string(window));
    ASSERT_EQ(0, result.status) << result.output;
    EXPECT_EQ("", result.output);
    const Picture out = readPicture("out.png");
    ASSERT_TRUE(out.hasShapeOf(grey)) << out.shape();
    for (int32_t y = 0; y < grey.height; ++y)
        for (int32_t x = 0; x < grey.width; ++x)
            // Half a level is the rounding of the result; a nearly flat window adds that of floats.
            ASSERT_NEAR(twiceTheDeviation(grey, x, y, window), valueAt(out, static_cast<size_t>(y * grey.width + x)),
                        0.75)
                << x << ", " << y;
}

TEST_F(Vek, ShowsLocalContrast) {
    const Picture random = picture(29, 17, 1, 8, 1);
    for (int32_t window : {2, 3, 4, 5, 16, 40, 181})
        checkLocalContrast(random, random, window);
    checkLocalContrast(picture(1, 1, 1, 8, 1), picture(1, 1, 1, 8, 1), 7);

    const Picture color = picture(29, 17, 3, 8, 2);
    checkLocalContrast(color, greyOf(color), 5);

    // The greatest deviation there is, and small ones far from the corner of a large bright picture.
    Picture stripes(60, 40, 1, 8), bright(400, 300, 1, 8);
    for (size_t i = 0; i < stripes.bytes.size(); ++i)
        stripes.bytes[i] = i % 2 == 0 ? 255 : 0;
    checkLocalContrast(stripes, stripes, 2);
    checkLocalContrast(stripes, stripes, 180);
    for (size_t i = 0; i < bright.bytes.size(); ++i)
        bright.bytes[i] = static_cast<uint8_t>(250 + i * i % 3);
    checkLocalContrast(bright, bright, 3);
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

TEST_F(Vek, TellsWhatItIsAndHas) {
    EXPECT_NE(std::string::npos, vek("info --threads 3").output.find("threads     3"));
    EXPECT_NE(std::string::npos, vek("info").output.find("7.1.0 (r36264)"));
    EXPECT_NE(std::string::npos, vek("--help").output.find("background"));
    EXPECT_EQ(0, vek("diff --help").status);

    const std::string list = vek("list").output;
    EXPECT_NE(std::string::npos, list.find("vekcvGetLibVersion  "));
    EXPECT_EQ(4, std::ranges::count(vek("list '*absdiff_*'").output, '\n'));
    EXPECT_EQ(7, std::ranges::count(vek("list absdiff").output, '\n'));
    EXPECT_EQ("vekiAbsDiff_16u_C1R  destination = |source1 - source2|\n", vek("list vekiAbsDiff_16u").output);
    expectFailure("list nothing", 1, "nothing: no function");
    expectFailure("list > /dev/full", 1, "standard output: cannot be written");
    // Without a buffer nothing is left to be written at the end.
    EXPECT_EQ(1, run("stdbuf -o0 " + program() + " list > /dev/full").status);

    writePicture("a.png", picture(8, 8, 1, 8, 1));
    const Result timed = vek("diff a.png a.png out.png --time");
    EXPECT_NE(std::string::npos, timed.output.find("ms  vekiAbsDiff_8u_C1R")) << timed.output;
}

TEST_F(Vek, RefusesWrongUsage) {
    for (const std::string arguments : {"",
                                        "fly",
                                        "diff",
                                        "diff a.png",
                                        "background -o x.png --alpha 1",
                                        "background a.png -o x.png",
                                        "background a.png -o x.png --alpha fast",
                                        "background a.png -o x.png --alpha NaN",
                                        "background a.png -o x.png --alpha -inf",
                                        "info --threads 0",
                                        "info --wrong",
                                        "stats",
                                        "stats --json",
                                        "localcontrast a.png --window 5",
                                        "localcontrast a.png x.png",
                                        "localcontrast a.png x.png --window 1",
                                        "localcontrast a.png x.png --window -5",
                                        "localcontrast a.png x.png --window 182",
                                        "localcontrast a.png x.png --window 5.5",
                                        "localcontrast a.png x.png --window wide",
                                        "localcontrast a.png x.png --window 99999999999"})
        expectFailure(arguments, 2, "");
}

TEST_F(Vek, SaysWhatIsWrongWithAFile) {
    writePicture("grey.png", picture(16, 8, 1, 8, 1));
    writePicture("color.png", picture(16, 8, 3, 8, 1));
    writePicture("deep.png", picture(16, 8, 1, 16, 1));
    writePicture("large.png", picture(17, 8, 1, 8, 1));
    std::ofstream("empty.png").close();
    std::ofstream("text.png") << "no picture at all";
    fs::create_directory("folder.png");
    expectFailure("diff grey.png missing.png x.png", 1, "missing.png: cannot be opened");
    expectFailure("diff grey.png folder.png x.png", 1, "folder.png: is a folder");
    expectFailure("diff grey.png empty.png x.png", 1, "empty.png: is empty");
    expectFailure("diff text.png grey.png x.png", 1, "text.png: is not a PNG or JPEG");
    expectFailure("diff /dev/zero grey.png x.png", 1, "/dev/zero: is not a PNG or JPEG");
    expectFailure("diff '" + std::string(300, 'n') + "' grey.png x.png", 1, "cannot be opened");
    expectFailure("diff 'two\nlines.png' grey.png x.png", 1, "cannot be opened");
    expectFailure("diff grey.png large.png x.png", 1, "large.png: is 17 x 8");
    expectFailure("diff grey.png color.png x.png", 1, "color.png: is 16 x 8, 8-bit colour");
    expectFailure("diff deep.png grey.png x.png", 1, "grey.png");
    expectFailure("diff grey.png grey.png x.bmp", 2, "x.bmp: pictures are written as");
    expectFailure("diff grey.png grey.png missing/x.png", 1, "missing/x.png: cannot be written");
    expectFailure("diff grey.png grey.png folder.png", 1, "folder.png: cannot be written");
    expectFailure("diff deep.png deep.png x.jpg", 1, "x.jpg");
    expectFailure("background grey.png color.png -o x.png --alpha 1", 1, "color.png: is 16 x 8, 8-bit colour");
    expectFailure("background grey.png grey.png -o x.png --alpha 1 --mask color.png", 1, "color.png");
    expectFailure("background grey.png grey.png -o x.png --alpha 1 --mask large.png", 1, "large.png");
    expectFailure("motion grey.png grey.png -o x.png --alpha 1", 2, "x.png: the name needs one %d");
    expectFailure("motion grey.png grey.png -o x-%s.png --alpha 1", 2, "x-%s.png: the name needs one %d");
    expectFailure("stats grey.png missing.png", 1, "missing.png: cannot be opened");
    expectFailure("stats grey.png text.png --json", 1, "text.png: is not a PNG or JPEG");
    expectFailure("stats grey.png --mask missing.png", 1, "missing.png: cannot be opened");
    expectFailure("stats large.png grey.png --mask large.png", 1,
                  "large.png: is 17 x 8, 8-bit grey; the mask must be 8-bit grey and as large as grey.png, 16 x 8");
    expectFailure("stats grey.png --mask color.png", 1, "color.png: is 16 x 8, 8-bit colour; the mask must be");
    expectFailure("stats deep.png --mask deep.png", 1, "deep.png: is 16 x 8, 16-bit grey; the mask must be");
    expectFailure("localcontrast missing.png x.png --window 5", 1, "missing.png: cannot be opened");
    expectFailure("localcontrast deep.png x.png --window 5", 1, "deep.png: is 16 x 8, 16-bit grey; the local contrast");
    expectFailure("localcontrast grey.png x.bmp --window 5", 2, "x.bmp: pictures are written as");
    expectFailure("localcontrast grey.png missing/x.png --window 5", 1, "missing/x.png: cannot be written");
}

TEST_F(Vek, RefusesPicturesThatEndTooEarly) {
    for (const std::string extension : {".png", ".jpg"}) {
        const std::string whole = "whole" + extension, part = "part" + extension;
        writePicture(whole, picture(40, 30, 3, 8, 1));
        writePicture(part, picture(40, 30, 3, 8, 1));
        for (size_t keep = fs::file_size(whole) - 3; keep > 23; keep -= 23) {
            fs::resize_file(part, keep);
            expectFailure("diff " + part + " " + part + " x.png", 1, part + ": ");
        }
    }
}

// A header that tells of a size that the rest of the file cannot hold must not cost the memory for it.
TEST_F(Vek, RefusesFalseSizes) {
    writePicture("small.png", picture(8, 8, 3, 8, 1));
    std::fstream file("small.png", std::ios::in | std::ios::out | std::ios::binary);
    const unsigned char header[] = {0x00, 0x00, 0xea, 0x60, 0x00, 0x00, 0xea, 0x60, 0x08, 0x02, 0x00, 0x00, 0x00};
    uint32_t check = 0xffffffffu;  // of the chunk's name and content, as PNG wants it
    const auto add = [&](unsigned char byte) {
        check ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            check = (check >> 1) ^ (0xedb88320u & (0u - (check & 1u)));
    };
    for (const char c : {'I', 'H', 'D', 'R'})
        add(static_cast<unsigned char>(c));
    file.seekp(16);
    for (const unsigned char byte : header) {
        add(byte);
        file.put(static_cast<char>(byte));
    }
    for (int shift : {24, 16, 8, 0})
        file.put(static_cast<char>(~check >> shift));
    file.close();
    expectFailure("diff small.png small.png x.png", 1, "too short for its size");
}

// What stood in the file before stays there when the new picture cannot be written.
TEST_F(Vek, NeverLeavesHalfAPicture) {
    writePicture("a.png", picture(300, 300, 3, 8, 1));
    writePicture("b.png", picture(300, 300, 3, 8, 2));
    std::ofstream("out.png") << "old";
    const Result result = run("ulimit -f 8; env --default-signal=XFSZ " + program() + " diff a.png b.png out.png");
    EXPECT_EQ(1, result.status);
    EXPECT_NE(std::string::npos, result.output.find("out.png: cannot be written")) << result.output;
    EXPECT_EQ(3u, fs::file_size("out.png"));
    EXPECT_EQ(3, countFiles());
}

TEST_F(Vek, KeepsLinksAndPermissionsOfWhatItReplaces) {
    writePicture("a.png", picture(30, 20, 3, 8, 1));
    const std::string difference = "umask 022; " + program() + " diff a.png a.png ";
    const auto permissionsOf = [](const char* path) { return static_cast<int>(fs::status(path).permissions()); };
    ASSERT_EQ(0, run(difference + "new.png").status);
    EXPECT_EQ(0644, permissionsOf("new.png"));

    fs::create_directories("folder");
    for (const int permissions : {0600, 0664}) {
        std::ofstream("folder/old.png") << "old";
        fs::permissions("folder/old.png", fs::perms(permissions));
        fs::remove("link.png");
        fs::create_symlink("folder/old.png", "link.png");
        const Result result = run(difference + "link.png");
        ASSERT_EQ(0, result.status) << result.output;
        EXPECT_TRUE(fs::is_symlink("link.png"));
        EXPECT_EQ(readPicture("new.png").bytes, readPicture("folder/old.png").bytes);
        EXPECT_EQ(permissions, permissionsOf("folder/old.png"));
    }
}

}  // namespace
