// vek segment: objects that touch each other, told apart by a watershed of their distances from the background.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "commands.h"
#include "distances.h"
#include "grey.h"
#include "library_call.h"
#include "mask.h"
#include "neighbors.h"
#include "options.h"
#include "otsu.h"
#include "picture_file.h"
#include "reconstruction.h"
#include "regions.h"
#include "work_buffer.h"

namespace {

constexpr int32_t kLargestThreshold = 255;
constexpr double kUsualDepth = 2, kLargestDepth = 4000;  // distances end at 4096

struct Options {
    std::string input, output, mask;
    std::optional<int32_t> threshold;
    double depth = kUsualDepth;
    bool dark = false, json = false;
};

/** White where a picture is lighter than a threshold, or with `dark` where it is not, and in holes of that. */
Picture objectsBy(int32_t threshold, bool dark, const Picture& grey) {
    Picture objects(grey.width, grey.height, 1, 8);
    std::ranges::transform(grey.bytes, objects.bytes.begin(),
                           [=](uint8_t value) { return static_cast<uint8_t>((value > threshold) != dark ? 255 : 0); });
    return withHolesFilled(objects, kSides);
}

/** A picture of 16 bits with its values less a number, or 0 where that is negative. */
Picture less(const Picture& picture, int32_t number) {
    Picture result = picture;
    auto* const values = result.pixels<uint16_t>();
    std::transform(values, values + ptrdiff_t{result.width} * result.height, values,
                   [=](int32_t value) { return static_cast<uint16_t>(std::max(value - number, 0)); });
    return result;
}

/** Not 0 on the peaks that rise more than a depth above the way to any higher one, and above 0. */
Picture peaksOf(const Picture& heights, int32_t depth) {
    // Lowered by the depth, lower peaks are no more than slopes of others, and the rest have tops that are flat.
    Picture lowered = less(heights, depth);
    reconstructByDilation(lowered, heights, kSidesAndCorners);
    Picture withoutTops = less(lowered, 1);
    reconstructByDilation(withoutTops, lowered, kSidesAndCorners);
    const auto* below = withoutTops.pixels<uint16_t>();
    auto* const top = lowered.pixels<uint16_t>();
    std::transform(top, top + ptrdiff_t{lowered.width} * lowered.height, below, top,
                   [](int32_t a, int32_t b) { return static_cast<uint16_t>(a - b); });
    return lowered;
}

/** What a watershed floods from 0 on: the largest distance is the lowest, and the background the highest. */
Picture basinsOf(const Picture& distances) {
    constexpr int32_t kBackground = 255, kLeastDeep = kBackground - 1;
    const auto* const begin = distances.pixels<uint16_t>();
    const auto* const end = begin + ptrdiff_t{distances.width} * distances.height;
    const int32_t largest = std::max<int32_t>(*std::max_element(begin, end), 1);
    Picture basins(distances.width, distances.height, 1, 8);
    std::transform(begin, end, basins.bytes.begin(), [=](int32_t distance) {
        return static_cast<uint8_t>(distance == 0 ? kBackground : kLeastDeep - distance * kLeastDeep / largest);
    });
    return basins;
}

/** Makes the labels grow over the objects that they lie in. All other pixels get 0. */
void growOver(const Picture& objects, const Picture& distances, Picture& labels) {
    const Picture basins = basinsOf(distances);
    const WorkBuffer buffer = workBuffer(vekiSegmentWatershedGetBufferSize_8u16u_C1R, labels.size());
    Picture taken(labels.width, labels.height, 1, 8);
    auto* const numbers = labels.pixels<uint16_t>();
    std::transform(numbers, numbers + taken.bytes.size(), taken.bytes.begin(),
                   [](uint16_t number) { return static_cast<uint8_t>(number == 0 ? 0 : 255); });
    reconstructByDilation(taken, objects, kSidesAndCorners);
    callLibrary("vekiSegmentWatershed_8u16u_C1IR", vekiSegmentWatershed_8u16u_C1IR, basins.pixels<uint8_t>(),
                basins.step(), numbers, labels.step(), labels.size(), int32_t{NormInf}, 0, buffer.get());
    // The labels have gone on over the background, and over objects that have none.
    std::transform(numbers, numbers + taken.bytes.size(), taken.bytes.begin(), numbers,
                   [](uint16_t number, uint8_t isTaken) { return isTaken == 0 ? uint16_t{0} : number; });
}

Labels segmentsOf(const Picture& objects, const Options& options) {
    const Picture distances = distancesIn(objects, Measure::kExact);
    const auto depth = static_cast<int32_t>(std::lrint(options.depth * kDistanceUnit));
    Labels labels = labelsOf(peaksOf(distances, depth), kSidesAndCorners, options.input);
    growOver(objects, distances, labels.picture);
    return labels;
}

/** A picture of 8 bits in colour with a green line where regions begin and end. */
Picture withBoundaries(const Picture& picture, Picture labels) {
    constexpr std::array<uint8_t, 3> kGreen{0, 255, 0};
    constexpr uint16_t kBoundary = UINT16_MAX;
    callLibrary("vekiBoundSegments_16u_C1IR", vekiBoundSegments_16u_C1IR, labels.pixels<uint16_t>(), labels.step(),
                labels.size(), kBoundary, int32_t{NormL1});
    Picture result = inColor(picture);
    const uint16_t* label = labels.pixels<uint16_t>();
    for (auto to = result.bytes.begin(); to != result.bytes.end(); to += kGreen.size())
        if (*label++ == kBoundary)
            std::ranges::copy(kGreen, to);
    return result;
}

void print(const std::vector<Region>& regions, const Options& options, const std::optional<int32_t>& threshold) {
    if (options.json)
        printJson(regions);
    else if (threshold)
        std::printf("%zu objects, %s than %d\n", regions.size(), options.dark ? "not lighter" : "lighter", *threshold);
    else
        std::printf("%zu objects\n", regions.size());
}

void segment(const Options& options) {
    checkPictureName(options.output);
    const Picture picture = readEightBit(options.input, "objects are found in");
    Picture objects;
    std::optional<int32_t> threshold = options.threshold;
    if (options.mask.empty()) {
        const Picture grey = inGrey(picture);
        if (!threshold)
            threshold = otsuThreshold(grey);
        if (!threshold)
            throw Failure(options.input, "has the same value everywhere, so no threshold parts it");
        objects = objectsBy(*threshold, options.dark, grey);
    } else {
        objects = readPicture(options.mask);
        checkMask(options.mask, objects, picture, options.input);
    }
    const Labels labels = segmentsOf(objects, options);
    writePicture(options.output, withBoundaries(picture, labels.picture));
    print(regionsOf(labels), options, threshold);
}

}  // namespace

void addSegment(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("segment", "Objects counted and outlined, also where they touch");
    command->footer(
        "Objects are what is lighter than a threshold, by Otsu without --threshold, and their holes. Their\n"
        "middles are where the distance from the background has peaks, and from these they grow by a\n"
        "watershed. What has a waist counts as two objects if the distance falls by more than DEPTH from\n"
        "both middles to the waist, and what is not wider than twice DEPTH does not count. Prints the\n"
        "number of objects, or as JSON each with its number of pixels, area, and the smallest upright\n"
        "rectangle around it.");
    const auto options = std::make_shared<Options>();
    addGreyInput(*command, options->input);
    command->add_option("OUT", options->output, "Where IN goes with green outlines (.png, .jpg)")->required();
    CLI::Option* const mask = command->add_option(
        "--mask", options->mask, "Grey picture of the same size; objects are where it is not 0, without a threshold");
    command->add_option("--threshold", options->threshold, "What objects are lighter than, 0 to 255")
        ->check(CLI::Range(0, kLargestThreshold))
        ->excludes(mask);
    command->add_flag("--dark", options->dark, "Objects are what is not lighter")->excludes(mask);
    command->add_option("--depth", options->depth, "In pixels, 0 to 4000, rounded to sixteenths")
        ->check(numberFrom(0, kLargestDepth))
        ->capture_default_str();
    command->add_flag("--json", options->json, "Print the objects as JSON rather than their number");
    command->callback([=] { segment(*options); });
}
