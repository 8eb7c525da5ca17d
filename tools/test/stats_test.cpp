// vek stats, against statistics that are computed plainly.
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>

#include "run_vek.h"

namespace {

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

TEST_F(Vek, RefusesWrongUseOfStats) {
    for (const std::string arguments : {"stats", "stats --json"})
        expectFailure(arguments, 2, "(see vek --help)");
    writeMisfits();
    std::ofstream("text.png") << "no picture at all";
    expectFailure("stats grey.png missing.png", 1, "missing.png: cannot be opened");
    expectFailure("stats grey.png text.png --json", 1, "text.png: is not a PNG or JPEG");
    expectFailure("stats grey.png --mask missing.png", 1, "missing.png: cannot be opened");
    expectFailure("stats large.png grey.png --mask large.png", 1,
                  "large.png: is 17 x 8, 8-bit grey; the mask must be 8-bit grey and as large as grey.png, 16 x 8");
    expectFailure("stats grey.png --mask color.png", 1, "color.png: is 16 x 8, 8-bit colour; the mask must be");
    expectFailure("stats deep.png --mask deep.png", 1, "deep.png: is 16 x 8, 16-bit grey; the mask must be");
}

}  // namespace
