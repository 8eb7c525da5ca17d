// vek reconstruct and vek fillholes: morphological reconstruction.
#include "commands.h"
#include "grey.h"
#include "neighbors.h"
#include "options.h"
#include "picture_file.h"
#include "reconstruction.h"

namespace {

struct Options {
    std::string marker, mask, output;
    int32_t neighbors = kSidesAndCorners;
    bool erode = false;
};

Picture readGrey(const std::string& path) {
    return inGrey(readEightBit(path, "morphology is for"));
}

void reconstruct(const Options& options) {
    checkPictureName(options.output);
    Picture marker = readGrey(options.marker);
    const Picture mask = readGrey(options.mask);
    checkSameShape(options.mask, mask, options.marker, marker);
    (options.erode ? reconstructByErosion : reconstructByDilation)(marker, mask, options.neighbors);
    writePicture(options.output, marker);
}

void fillHoles(const Options& options) {
    checkPictureName(options.output);
    writePicture(options.output, withHolesFilled(readGrey(options.mask), options.neighbors));
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
    addGreyInput(*command, options->mask);
    command->add_option("OUT", options->output, "Where the result goes (.png, .jpg)")->required();
    addNeighbors(*command, options->neighbors,
                 "A way out of a hole leads past the sides of pixels, 4, or past their corners, too, 8");
    command->callback([=] { fillHoles(*options); });
}
