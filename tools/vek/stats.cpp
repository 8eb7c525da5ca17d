// vek stats: mean, standard deviation, minimum and maximum of every channel of pictures.
#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "library_call.h"
#include "mask.h"
#include "picture_file.h"
#include "printable.h"

namespace {

struct Options {
    std::vector<std::string> pictures;
    std::string mask;
    bool json = false;
};

struct Extremum {
    float value = 0;
    ImagePoint position{-1, -1};  // what the library gives where the mask selects no pixel

    bool exists() const { return position.x >= 0; }
};

struct Statistics {
    std::string file;
    const char* channel = "grey";
    double mean = 0, deviation = 0;
    Extremum minimum, maximum;
};

/** Calls a pair of functions of the same form, as in "8u_C1R", whose arguments begin with those of the image. */
template <typename... Arguments>
void measure(Statistics& result, const std::string& form, auto meanAndDeviation, auto minimumAndMaximum,
             Arguments... image) {
    callLibrary("vekiMean_StdDev_" + form, meanAndDeviation, image..., &result.mean, &result.deviation);
    callLibrary("vekiMinMaxIndx_" + form, minimumAndMaximum, image..., &result.minimum.value, &result.maximum.value,
                &result.minimum.position, &result.maximum.position);
}

/** The statistics of a channel, 1 to 3; an empty mask stands for every pixel. */
Statistics statisticsOf(const Picture& picture, const Picture& mask, int32_t channel) {
    Statistics result;
    const RoiSize roi = picture.size();
    const auto *pixels = picture.pixels<uint8_t>(), *maskPixels = mask.pixels<uint8_t>();
    const auto* const deepPixels = picture.pixels<uint16_t>();
    const int32_t step = picture.step(), maskStep = mask.step();
    const bool masked = !mask.bytes.empty();
    if (picture.channels == 3) {
        constexpr const char* kNames[] = {"red", "green", "blue"};
        result.channel = kNames[channel - 1];
        if (masked)
            measure(result, "8u_C3CMR", vekiMean_StdDev_8u_C3CMR, vekiMinMaxIndx_8u_C3CMR, pixels, step, maskPixels,
                    maskStep, roi, channel);
        else
            measure(result, "8u_C3CR", vekiMean_StdDev_8u_C3CR, vekiMinMaxIndx_8u_C3CR, pixels, step, roi, channel);
    } else if (picture.bits == 16) {
        if (masked)
            measure(result, "16u_C1MR", vekiMean_StdDev_16u_C1MR, vekiMinMaxIndx_16u_C1MR, deepPixels, step, maskPixels,
                    maskStep, roi);
        else
            measure(result, "16u_C1R", vekiMean_StdDev_16u_C1R, vekiMinMaxIndx_16u_C1R, deepPixels, step, roi);
    } else {
        if (masked)
            measure(result, "8u_C1MR", vekiMean_StdDev_8u_C1MR, vekiMinMaxIndx_8u_C1MR, pixels, step, maskPixels,
                    maskStep, roi);
        else
            measure(result, "8u_C1R", vekiMean_StdDev_8u_C1R, vekiMinMaxIndx_8u_C1R, pixels, step, roi);
    }
    return result;
}

nlohmann::ordered_json asJson(const Extremum& extremum) {
    if (!extremum.exists())
        return nullptr;
    return {{"value", static_cast<int>(extremum.value)}, {"x", extremum.position.x}, {"y", extremum.position.y}};
}

void printJson(const std::vector<Statistics>& all) {
    auto array = nlohmann::ordered_json::array();
    for (const Statistics& one : all)
        array.push_back({{"file", one.file},
                         {"channel", one.channel},
                         {"mean", one.mean},
                         {"deviation", one.deviation},
                         {"minimum", asJson(one.minimum)},
                         {"maximum", asJson(one.maximum)}});
    // JSON is UTF-8; a byte of a name that is not is replaced.
    std::puts(array.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
}

std::string asText(double value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f", value);
    return text.data();
}

std::string asText(const Extremum& extremum) {
    if (!extremum.exists())
        return "-";
    return std::to_string(static_cast<int>(extremum.value)) + " (" + std::to_string(extremum.position.x) + ", " +
           std::to_string(extremum.position.y) + ")";
}

/** Columns as wide as what stands in them: names to the left, numbers to the right. */
void printTable(const std::vector<Statistics>& all) {
    using Row = std::array<std::string, 6>;
    std::vector<Row> rows{{"file", "channel", "mean", "deviation", "minimum (x, y)", "maximum (x, y)"}};
    for (const Statistics& one : all)
        rows.push_back({printable(one.file), one.channel, asText(one.mean), asText(one.deviation), asText(one.minimum),
                        asText(one.maximum)});
    // Bytes that continue a letter in UTF-8 take no room.
    const auto widthOf = [](const std::string& text) {
        return std::ranges::count_if(text, [](char c) { return (c & 0xc0) != 0x80; });
    };
    std::array<std::ptrdiff_t, 6> widths{};
    for (const Row& row : rows)
        for (size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], widthOf(row[i]));
    for (const Row& row : rows) {
        std::string line;
        for (size_t i = 0; i < row.size(); ++i) {
            const std::string padding(static_cast<size_t>(widths[i] - widthOf(row[i])), ' ');
            line += (i == 0 ? "" : "  ") + (i < 2 ? row[i] + padding : padding + row[i]);
        }
        std::puts(line.c_str());
    }
}

void stats(const Options& options) {
    const Picture mask = options.mask.empty() ? Picture() : readPicture(options.mask);
    std::vector<Statistics> all;
    for (const std::string& path : options.pictures) {
        const Picture picture = readPicture(path);
        if (!options.mask.empty())
            checkMask(options.mask, mask, picture, path);
        for (int32_t channel = 1; channel <= picture.channels; ++channel) {
            all.push_back(statisticsOf(picture, mask, channel));
            all.back().file = path;
        }
    }
    if (options.json)
        printJson(all);
    else
        printTable(all);
}

}  // namespace

void addStats(CLI::App& app) {
    CLI::App* const command = app.add_subcommand(
        "stats", "Mean, standard deviation, minimum and maximum of every channel, and where these occur first");
    const auto options = std::make_shared<Options>();
    command->add_option("FILE", options->pictures, "Pictures")->required();
    command->add_option("--mask", options->mask, "Grey picture of the same size; pixels where it is 0 do not count");
    command->add_flag("--json", options->json, "Print JSON rather than a table");
    command->callback([=] { stats(*options); });
}
