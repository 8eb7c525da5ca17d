// vek localcontrast: the standard deviation of the window around each pixel.
#include <algorithm>

#include "commands.h"
#include "grey.h"
#include "library_call.h"
#include "options.h"
#include "picture_file.h"

namespace {

// The squares of 33025 white pixels fit the entries of an integral image; those of 182 x 182 do not.
constexpr int32_t kLeastWindow = 2, kLargestWindow = 181;

struct Options {
    std::string input, output;
    int32_t window = 0;
};

/** A grey picture that its edge pixels continue, so that there is a window for each of its pixels. */
Picture padded(const Picture& picture, int32_t window) {
    const int32_t before = window / 2;
    Picture result(picture.width + window - 1, picture.height + window - 1, 1, 8);
    uint8_t* to = result.pixels<uint8_t>();
    for (int32_t y = 0; y < result.height; ++y) {
        const int32_t row = std::clamp(y - before, 0, picture.height - 1);
        const uint8_t* const from = picture.pixels<uint8_t>() + ptrdiff_t{row} * picture.step();
        to = std::fill_n(to, before, from[0]);
        to = std::copy_n(from, picture.width, to);
        to = std::fill_n(to, window - 1 - before, from[picture.width - 1]);
    }
    return result;
}

/** Twice the deviation, rounded, of the window around each pixel. */
Picture localContrastOf(const Picture& picture, int32_t window) {
    const Picture source = padded(picture, window);
    const auto columns = static_cast<size_t>(source.width) + 1, rows = static_cast<size_t>(source.height) + 1;
    constexpr auto kEntry = static_cast<int32_t>(sizeof(int32_t));
    const int32_t tableStep = (source.width + 1) * kEntry;
    std::vector<int32_t> sums(columns * rows), squares(columns * rows);
    callLibrary("vekiSqrIntegral_8u32s_C1R", vekiSqrIntegral_8u32s_C1R, source.pixels<uint8_t>(), source.step(),
                sums.data(), tableStep, squares.data(), tableStep, source.size(), 0, 0);

    Picture result(picture.width, picture.height, 1, 8);
    std::vector<int32_t> deviations(result.bytes.size());
    // Divided by 2 to the power of -1, and rounded. From integers, which are exact: a table of doubles is read as
    // floats, and those far from its corner are so large that the squares in a small window drown in their rounding.
    callLibrary("vekiRectStdDev_32s_C1RSfs", vekiRectStdDev_32s_C1RSfs, sums.data(), tableStep, squares.data(),
                tableStep, deviations.data(), picture.width * kEntry, picture.size(), ImageRect{0, 0, window, window},
                -1);
    std::ranges::transform(deviations, result.bytes.begin(),
                           [](int32_t value) { return static_cast<uint8_t>(std::min(value, 255)); });
    return result;
}

void localContrast(const Options& options) {
    checkPictureName(options.output);
    Picture picture = readEightBit(options.input, "the local contrast is that of");
    if (std::max(picture.width, picture.height) > INT32_MAX / 4 - options.window)
        throw Failure(options.input, "is too large");
    writePicture(options.output, localContrastOf(inGrey(std::move(picture)), options.window));
}

}  // namespace

void addLocalContrast(CLI::App& app) {
    CLI::App* const command = app.add_subcommand(
        "localcontrast", "The standard deviation of the window around each pixel, as a grey picture");
    command->footer(
        "OUT holds twice the deviation, which is at most 127.5, rounded. The edge pixels of IN continue it.");
    const auto options = std::make_shared<Options>();
    addGreyInput(*command, options->input);
    command->add_option("OUT", options->output, "Where the local contrast goes (.png, .jpg)")->required();
    command->add_option("--window", options->window, "Width and height of the window, N")
        ->required()
        ->check(CLI::Range(kLeastWindow, kLargestWindow));
    command->callback([=] { localContrast(*options); });
}
