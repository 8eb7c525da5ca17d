// vek reconstruct and vek fillholes: morphological reconstruction.
#include <algorithm>

#include "commands.h"
#include "grey.h"
#include "library_call.h"
#include "options.h"
#include "picture_file.h"
#include "work_buffer.h"

namespace {

constexpr int32_t kSides = 4, kSidesAndCorners = 8;

struct Options {
    std::string marker, mask, output;
    int32_t neighbors = kSidesAndCorners;
    bool erode = false;
};

void addNeighbors(CLI::App& command, int32_t& neighbors, const std::string& description) {
    command.add_option("--neighbors", neighbors, description)
        ->check(CLI::IsMember({kSides, kSidesAndCorners}))
        ->capture_default_str();
}

/** Makes a marker what is reconstructed from it. */
void reconstructInPlace(Picture& marker, const Picture& mask, const Options& options) {
    const auto reconstruct = [&](const char* name, auto function, auto bufferSize) {
        const WorkBuffer buffer = workBuffer(bufferSize, mask.size());
        callLibrary(name, function, mask.pixels<uint8_t>(), mask.step(), marker.pixels<uint8_t>(), marker.step(),
                    mask.size(), int32_t{options.neighbors == kSides ? NormL1 : NormInf}, buffer.get());
    };
    if (options.erode)
        reconstruct("vekiMorphReconstructErode_8u_C1IR", vekiMorphReconstructErode_8u_C1IR,
                    vekiMorphReconstructErodeGetBufferSize_8u_C1R);
    else
        reconstruct("vekiMorphReconstructDilate_8u_C1IR", vekiMorphReconstructDilate_8u_C1IR,
                    vekiMorphReconstructDilateGetBufferSize_8u_C1R);
}

Picture readGrey(const std::string& path) {
    return inGrey(readEightBit(path, "morphology is for"));
}

void reconstruct(const Options& options) {
    checkPictureName(options.output);
    Picture marker = readGrey(options.marker);
    const Picture mask = readGrey(options.mask);
    checkSameShape(options.mask, mask, options.marker, marker);
    reconstructInPlace(marker, mask, options);
    writePicture(options.output, marker);
}

/** The edge pixels of a picture, and white inside. */
Picture frameOf(const Picture& picture) {
    Picture frame = picture;
    for (int32_t y = 1; y < picture.height - 1; ++y)
        std::fill_n(frame.pixels<uint8_t>() + ptrdiff_t{y} * frame.step() + 1, std::max(picture.width - 2, 0),
                    uint8_t{255});
    return frame;
}

void fillHoles(const Options& options) {
    checkPictureName(options.output);
    const Picture picture = readGrey(options.mask);
    Picture marker = frameOf(picture);
    reconstructInPlace(marker, picture, options);
    writePicture(options.output, marker);
}

}  // namespace

void addReconstruct(CLI::App& app) {
    CLI::App* const command =
        app.add_subcommand("reconstruct", "Light regions of a mask that a marker touches, in grey");
    command->footer(
        "MARKER is dilated, a pixel at a time, until nothing changes, and is kept from being lighter than MASK:\n"
        "of the light regions of MASK those remain that MARKER touches, no lighter than it is there. With --erode\n"
        "it is eroded and kept from being darker than MASK, for dark regions. Both have the same size.");
    const auto options = std::make_shared<Options>();
    addGreyInput(*command, options->marker, "MARKER");
    addGreyInput(*command, options->mask, "MASK");
    command->add_option("OUT", options->output, "Where the result goes (.png, .jpg)")->required();
    command->add_flag("--erode", options->erode, "Reconstruct by erosion");
    addNeighbors(*command, options->neighbors,
                 "Regions spread past the sides of pixels, 4, or past their corners, too, 8");
    command->callback([=] { reconstruct(*options); });
}

void addFillHoles(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("fillholes", "Dark regions with light all around them become light");
    command->footer(
        "A dark region that does not reach the edge of the picture becomes as light as the darkest place in the wall\n"
        "around it. It is a reconstruction by erosion, from a marker that is IN at the edge and white inside.");
    const auto options = std::make_shared<Options>();
    options->neighbors = kSides;
    options->erode = true;
    addGreyInput(*command, options->mask);
    command->add_option("OUT", options->output, "Where the result goes (.png, .jpg)")->required();
    addNeighbors(*command, options->neighbors,
                 "A way out of a hole leads past the sides of pixels, 4, or past their corners, too, 8");
    command->callback([=] { fillHoles(*options); });
}
