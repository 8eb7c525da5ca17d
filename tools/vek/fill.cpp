// vek fill: the connected region around a pixel in one colour.
#include <algorithm>
#include <array>
#include <cstdio>
#include <optional>
#include <span>

#include "commands.h"
#include "library_call.h"
#include "neighbors.h"
#include "numbers.h"
#include "picture_file.h"
#include "regions.h"
#include "work_buffer.h"

namespace {

struct Options {
    std::string input, output, seed;
    std::optional<std::string> value, delta;
    bool range = false, gradient = false, json = false;
    int32_t neighbors = kSides;
};

using Values = std::array<int32_t, 3>;

struct Settings {
    ImagePoint seed;
    Values value, below, above;  // by channel
};

int32_t largestValue(const Picture& picture) {
    return picture.bits == 16 ? UINT16_MAX : UINT8_MAX;
}

/** Throws UsageError where a picture cannot have one of the values. */
void checkValues(const std::string& option, const std::string& text, std::span<const int32_t> values,
                 const Picture& picture) {
    const auto isWrong = [&](int32_t value) { return value < 0 || value > largestValue(picture); };
    if (std::ranges::any_of(values, isWrong))
        throw UsageError(option, text + " is not from 0 to " + std::to_string(largestValue(picture)));
}

ImagePoint seedFrom(const Options& options, const Picture& picture) {
    const auto place = numbersFrom<2>(options.seed, ',');
    if (!place)
        throw UsageError("--seed", options.seed + " is not a column and a row, as in 20,10");
    const auto [x, y] = *place;
    if (x < 0 || y < 0 || x >= picture.width || y >= picture.height)
        throw UsageError("--seed", options.seed + " lies outside of " + options.input + ", whose last pixel is " +
                                       std::to_string(picture.width - 1) + "," + std::to_string(picture.height - 1));
    return {x, y};
}

/** White without the option; a grey value stands for all channels. */
Values valueFrom(const Options& options, const Picture& picture) {
    const std::string text = options.value.value_or(std::to_string(largestValue(picture)));
    auto values = numbersFrom<3>(text, ',');
    if (const auto grey = numbersFrom<1>(text, ','))
        values.emplace().fill((*grey)[0]);
    else if (picture.channels == 1 || !values)
        throw UsageError("--value", text + (picture.channels == 1 ? " is not a grey value, as in 200"
                                                                  : " is not red, green and blue, as in 255,128,0"));
    checkValues("--value", text, *values, picture);
    return *values;
}

/** How much darker and how much lighter a pixel may be. */
std::array<int32_t, 2> deltasFrom(const Options& options, const Picture& picture) {
    if (options.delta.has_value() != (options.range || options.gradient))
        throw UsageError("--delta", options.delta ? "is for --range and --gradient"
                                                  : "is missing: how far a pixel may be off, as in --delta 10");
    if (!options.delta)
        return {};
    auto deltas = numbersFrom<2>(*options.delta, ',');
    if (const auto both = numbersFrom<1>(*options.delta, ','))
        deltas.emplace().fill((*both)[0]);
    if (!deltas)
        throw UsageError("--delta", *options.delta + " is not one number or two, as in 10 or 20,5");
    checkValues("--delta", *options.delta, *deltas, picture);
    return *deltas;
}

Settings settingsFrom(const Options& options, const Picture& picture) {
    Settings settings{seedFrom(options, picture), valueFrom(options, picture), {}, {}};
    const auto [below, above] = deltasFrom(options, picture);
    settings.below.fill(below);
    settings.above.fill(above);
    return settings;
}

/** Values as an argument of the library: of one channel, the number itself. */
template <typename T, int32_t channels>
class Argument {
  public:
    explicit Argument(const Values& values) {
        std::ranges::transform(values, values_.begin(), [](int32_t value) { return static_cast<T>(value); });
    }
    auto get() const {
        if constexpr (channels == 1)
            return values_[0];
        else
            return values_.data();
    }

  private:
    std::array<T, 3> values_{};
};

/** Calls one of three functions for the same pixels and connectivity. An area of 0 tells that nothing was done. */
template <typename T, int32_t channels>
ConnectedComponent filled(const std::string& layout, auto plain, auto gradient, auto range, Picture& picture,
                          const Settings& settings, const Options& options) {
    ConnectedComponent component{};
    const Argument<T, channels> value(settings.value), below(settings.below), above(settings.above);
    const auto fill = [&](const std::string& rule, auto function, auto bufferSize, auto... deltas) {
        const WorkBuffer buffer = workBuffer(bufferSize, picture.size());
        callLibrary("vekiFloodFill_" + rule + std::to_string(options.neighbors) + "Con_" + layout, function,
                    picture.pixels<T>(), picture.step(), picture.size(), settings.seed, value.get(), deltas...,
                    &component, buffer.get());
    };
    if (options.gradient)
        fill("Grad", gradient, vekiFloodFillGetSize_Grad, below.get(), above.get());
    else if (options.range)
        fill("Range", range, vekiFloodFillGetSize, below.get(), above.get());
    else
        fill("", plain, vekiFloodFillGetSize);
    return component;
}

ConnectedComponent filled(Picture& picture, const Settings& settings, const Options& options) {
    const auto chosen = [&](auto four, auto eight) { return options.neighbors == kSides ? four : eight; };
    if (picture.bits == 16)
        return filled<uint16_t, 1>("16u_C1IR", chosen(vekiFloodFill_4Con_16u_C1IR, vekiFloodFill_8Con_16u_C1IR),
                                   chosen(vekiFloodFill_Grad4Con_16u_C1IR, vekiFloodFill_Grad8Con_16u_C1IR),
                                   chosen(vekiFloodFill_Range4Con_16u_C1IR, vekiFloodFill_Range8Con_16u_C1IR), picture,
                                   settings, options);
    if (picture.channels == 3)
        return filled<uint8_t, 3>("8u_C3IR", chosen(vekiFloodFill_4Con_8u_C3IR, vekiFloodFill_8Con_8u_C3IR),
                                  chosen(vekiFloodFill_Grad4Con_8u_C3IR, vekiFloodFill_Grad8Con_8u_C3IR),
                                  chosen(vekiFloodFill_Range4Con_8u_C3IR, vekiFloodFill_Range8Con_8u_C3IR), picture,
                                  settings, options);
    return filled<uint8_t, 1>("8u_C1IR", chosen(vekiFloodFill_4Con_8u_C1IR, vekiFloodFill_8Con_8u_C1IR),
                              chosen(vekiFloodFill_Grad4Con_8u_C1IR, vekiFloodFill_Grad8Con_8u_C1IR),
                              chosen(vekiFloodFill_Range4Con_8u_C1IR, vekiFloodFill_Range8Con_8u_C1IR), picture,
                              settings, options);
}

void print(const Region& region, bool json) {
    if (json)
        std::puts(asJson(region).dump(2).c_str());
    else if (region.area == 0)
        std::puts("0 pixels, as the seed has the value already");
    else
        std::printf("%lld pixels, in %d x %d at %d,%d\n", static_cast<long long>(region.area), region.box.width,
                    region.box.height, region.box.x, region.box.y);
}

void fill(const Options& options) {
    checkPictureName(options.output);
    Picture picture = readPicture(options.input);
    const ConnectedComponent component = filled(picture, settingsFrom(options, picture), options);
    writePicture(options.output, picture);
    print({static_cast<int64_t>(component.area), component.rect}, options.json);
}

}  // namespace

void addFill(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("fill", "The connected region around a pixel in one colour");
    command->footer(
        "The region holds the pixels that lead to the seed past pixels of its own:\n\n"
        "  no option    those with the same value as the seed\n"
        "  --range      those at most DELTA darker or lighter than the seed\n"
        "  --gradient   those at most DELTA darker or lighter than the neighbour that leads to them\n\n"
        "In colour, all three channels are. Prints the number of pixels and the smallest upright rectangle around\n"
        "them, its size and its first column and row. A seed that has the new value already leaves IN as it is,\n"
        "except with --gradient; with --range, other pixels that have it do not belong to the region, and a region\n"
        "that is mostly ragged edges may stay incomplete.");
    const auto options = std::make_shared<Options>();
    command->add_option("IN", options->input, "A picture")->required();
    command->add_option("OUT", options->output, "Where the result goes (.png, .jpg)")->required();
    command->add_option("--seed", options->seed, "Column and row of a pixel of the region, from 0,0")->required();
    CLI::Option* const range = command->add_flag("--range", options->range, "Compare with the seed");
    command->add_flag("--gradient", options->gradient, "Compare neighbours")->excludes(range);
    command->add_option("--delta", options->delta, "For these, one number, or as in 20,5 how much darker and lighter");
    command->add_option("--value", options->value,
                        "The colour, as in 200 or, for a colour picture, 255,128,0; white without it");
    addNeighbors(*command, options->neighbors,
                 "Regions hold together by the sides of pixels, 4, or by their corners, too, 8");
    command->add_flag("--json", options->json, "Print JSON rather than a line");
    command->callback([=] { fill(*options); });
}
