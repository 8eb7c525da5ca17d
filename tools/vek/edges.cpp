// vek edges: the edges of a picture, by Canny.
#include "commands.h"
#include "grey.h"
#include "library_call.h"
#include "options.h"
#include "picture_file.h"
#include "work_buffer.h"

namespace {

constexpr int32_t kSmallAperture = 3, kLargeAperture = 5;

struct Options {
    std::string input, output;
    float low = 0, high = 0;
    int32_t aperture = kSmallAperture;
};

/** A derivative of a grey picture that its edge pixels continue. */
std::vector<int16_t> derivative(const char* name, auto function, auto bufferSize, const Picture& grey, int32_t mask) {
    std::vector<int16_t> result(grey.bytes.size());
    const WorkBuffer buffer = workBuffer(bufferSize, grey.size(), mask);
    callLibrary(name, function, grey.pixels<uint8_t>(), grey.step(), result.data(),
                grey.width * static_cast<int32_t>(sizeof(int16_t)), grey.size(), mask, int32_t{BorderReplicate},
                uint8_t{0}, buffer.get());
    return result;
}

Picture edgesOf(const Picture& grey, const Options& options) {
    const int32_t mask = options.aperture == kLargeAperture ? MaskSize5x5 : MaskSize3x3;
    const std::vector<int16_t> across =
        derivative("vekiFilterSobelNegVertBorder_8u16s_C1R", vekiFilterSobelNegVertBorder_8u16s_C1R,
                   vekiFilterSobelNegVertGetBufferSize_8u16s_C1R, grey, mask);
    const std::vector<int16_t> down =
        derivative("vekiFilterSobelHorizBorder_8u16s_C1R", vekiFilterSobelHorizBorder_8u16s_C1R,
                   vekiFilterSobelHorizGetBufferSize_8u16s_C1R, grey, mask);
    const int32_t step = grey.width * static_cast<int32_t>(sizeof(int16_t));
    Picture result(grey.width, grey.height, 1, 8);
    const WorkBuffer buffer = workBuffer(vekiCannyGetSize, grey.size());
    callLibrary("vekiCanny_16s8u_C1R", vekiCanny_16s8u_C1R, across.data(), step, down.data(), step,
                result.pixels<uint8_t>(), result.step(), grey.size(), options.low, options.high, buffer.get());
    return result;
}

void edges(const Options& options) {
    if (options.low > options.high)
        throw UsageError("--low", "is above --high");
    checkPictureName(options.output);
    const Picture grey = inGrey(readEightBit(options.input, "edges are those of"));
    writePicture(options.output, edgesOf(grey, options));
}

// Derivatives are no larger: 5 x 5 pixels give 48 * 255 in x and in y.
constexpr float kLargestThreshold = 65535;

}  // namespace

void addEdges(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("edges", "The edges of a picture, by Canny: 255 on them, else 0");
    command->footer(
        "The magnitude of a pixel is |dx| + |dy|, of its derivatives by Sobel. Where it is largest across an\n"
        "edge, pixels above HIGH are on one, and so are those of LOW and more that lead to them. For 3 x 3\n"
        "pixels, 100 and 200 are a start; 5 x 5 pixels give twelve times as much. The edge pixels of IN\n"
        "continue it.");
    const auto options = std::make_shared<Options>();
    addGreyInput(*command, options->input);
    command->add_option("OUT", options->output, "Where the edges go (.png, .jpg)")->required();
    command->add_option("--low", options->low, "The least magnitude of an edge, 0 to 65535; a fraction has no effect")
        ->required()
        ->check(numberFrom(0, kLargestThreshold));
    command->add_option("--high", options->high, "The magnitude above which an edge begins, LOW to 65535")
        ->required()
        ->check(numberFrom(0, kLargestThreshold));
    command->add_option("--aperture", options->aperture, "Width and height of the masks of the derivatives")
        ->check(CLI::IsMember({kSmallAperture, kLargeAperture}))
        ->capture_default_str();
    command->callback([=] { edges(*options); });
}
