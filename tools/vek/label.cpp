// vek label: the connected regions of a mask, each in a colour of its own.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "commands.h"
#include "grey.h"
#include "neighbors.h"
#include "options.h"
#include "picture_file.h"
#include "regions.h"

namespace {

struct Options {
    std::string mask, output;
    int32_t neighbors = kSidesAndCorners;
    bool json = false;
};

using Color = std::array<uint8_t, 3>;

/** A bright colour of any hue, 0 to 1: that of red, over green and blue back to red. */
Color colorOf(double hue) {
    constexpr double kDarkest = 55, kLightest = 255;
    Color color{};
    for (size_t i = 0; i < color.size(); ++i) {
        // How far the hue is from the channel's own, in sixths of the circle: 0 to 3.
        const double distance = 6 * std::abs(std::remainder(hue - static_cast<double>(i) / 3, 1));
        const double part = std::clamp(2 - distance, 0., 1.);
        color[i] = static_cast<uint8_t>(std::lrint(kDarkest + part * (kLightest - kDarkest)));
    }
    return color;
}

/** Labels that follow each other get hues that are far apart, by the golden section; none gets black. */
Picture colored(const Labels& labels) {
    std::vector<Color> colors(static_cast<size_t>(labels.count) + 1);
    for (size_t label = 1; label < colors.size(); ++label)
        colors[label] = colorOf(std::fmod(static_cast<double>(label - 1) * 0.6180339887, 1));
    const Picture& from = labels.picture;
    Picture result(from.width, from.height, 3, 8);
    uint8_t* to = result.pixels<uint8_t>();
    const auto* const begin = from.pixels<uint16_t>();
    for (const uint16_t* label = begin; label != begin + ptrdiff_t{from.width} * from.height; ++label)
        to = std::ranges::copy(colors[*label], to).out;
    return result;
}

void label(const Options& options) {
    checkPictureName(options.output);
    const Picture mask = inGrey(readEightBit(options.mask, "regions are found in"));
    Picture regions(mask.width, mask.height, 1, 16);
    std::ranges::copy(mask.bytes, regions.pixels<uint16_t>());
    const Labels labels = labelsOf(std::move(regions), options.neighbors, options.mask);
    writePicture(options.output, colored(labels));
    if (options.json)
        printJson(regionsOf(labels));
    else
        std::printf("%d regions\n", labels.count);
}

}  // namespace

void addLabel(CLI::App& app) {
    CLI::App* const command =
        app.add_subcommand("label", "The connected regions of a mask, each in a colour of its own");
    command->footer(
        "Prints the number of regions of pixels that are not black, or as JSON each region with its number of pixels,\n"
        "area, and the smallest upright rectangle around it. They are numbered by their first pixels, row by row.\n"
        "More than 65534 regions are an error. In OUT the hues follow the numbers: red for 1, blue for 2, and so on,\n"
        "though with many regions some look alike.");
    const auto options = std::make_shared<Options>();
    addGreyInput(*command, options->mask, "MASK");
    command->add_option("OUT", options->output, "Where the regions go in colours (.png, .jpg)")->required();
    command->add_flag("--json", options->json, "Print the regions as JSON rather than their number");
    addNeighbors(*command, options->neighbors,
                 "Regions hold together by the sides of pixels, 4, or by their corners, too, 8");
    command->callback([=] { label(*options); });
}
