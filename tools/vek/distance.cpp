// vek distance: how far the pixels of a mask are from the nearest black one.
#include <algorithm>
#include <array>
#include <cmath>

#include "commands.h"
#include "distances.h"
#include "grey.h"
#include "options.h"
#include "picture_file.h"

namespace {

struct Options {
    std::string mask, output, view, norm = "exact";
};

/** From black over violet and orange to light yellow, each step lighter than the one before; `part` is 0 to 1. */
std::array<uint8_t, 3> colorOf(double part) {
    constexpr std::array<std::array<double, 3>, 5> kColors = {
        {{0, 0, 0}, {80, 18, 124}, {182, 54, 122}, {252, 137, 97}, {252, 253, 191}}};
    const double place = part * (kColors.size() - 1);
    const size_t first = std::min(static_cast<size_t>(place), kColors.size() - 2);
    const double weight = place - static_cast<double>(first);
    std::array<uint8_t, 3> color{};
    for (size_t i = 0; i < color.size(); ++i)
        color[i] = static_cast<uint8_t>(std::lrint(kColors[first][i] * (1 - weight) + kColors[first + 1][i] * weight));
    return color;
}

/** The largest distance gets the last colour. */
Picture viewOf(const Picture& distances) {
    const auto* const begin = distances.pixels<uint16_t>();
    const auto* const end = begin + ptrdiff_t{distances.width} * distances.height;
    const double largest = std::max<double>(*std::max_element(begin, end), 1);
    Picture view(distances.width, distances.height, 3, 8);
    uint8_t* to = view.pixels<uint8_t>();
    for (const uint16_t* distance = begin; distance != end; ++distance)
        to = std::ranges::copy(colorOf(*distance / largest), to).out;
    return view;
}

void distance(const Options& options) {
    checkPictureName(options.output);
    if (!options.view.empty())
        checkPictureName(options.view);
    const Picture mask = inGrey(readEightBit(options.mask, "distances are those of"));
    const Picture distances = distancesIn(mask, kMeasures.at(options.norm));
    writePicture(options.output, distances);
    if (!options.view.empty())
        writePicture(options.view, viewOf(distances));
}

}  // namespace

void addDistance(CLI::App& app) {
    CLI::App* const command =
        app.add_subcommand("distance", "The distance of every pixel to the nearest black one, as 16-bit grey");
    command->footer(
        "A pixel of OUT is 16 times the distance in pixels, rounded: 0 where MASK is black, 16 beside that. What is\n"
        "4095.9 pixels away or more is 65535, and so is everything where MASK has no black pixel.\n\n"
        "  inf     max(dx, dy): the steps of a king in chess\n"
        "  l1      dx + dy: steps past the sides of pixels\n"
        "  l2      the length of a path of steps by 1 pixel (1), to a corner (1.4) and by a knight's move (2.1969),\n"
        "          at most 2 % off the exact one\n"
        "  exact   the square root of dx * dx + dy * dy\n\n"
        "On a screen OUT is nearly black; --view shows it, from black over violet and orange to light yellow at the\n"
        "largest distance.");
    const auto options = std::make_shared<Options>();
    addGreyInput(*command, options->mask, "MASK");
    command->add_option("OUT", options->output, "Where the distances go (.png, as JPEG has no 16 bits)")->required();
    command->add_option("--norm", options->norm, "How distances are measured; capitals do not matter")
        ->transform(CLI::IsMember(&kMeasures, CLI::ignore_case))
        ->capture_default_str();
    command->add_option("--view", options->view, "Where a picture in colours goes (.png, .jpg)");
    command->callback([=] { distance(*options); });
}
