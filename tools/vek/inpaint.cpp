// vek inpaint: restores the pixels that a mask marks from those around them.
#include <algorithm>
#include <memory>

#include "commands.h"
#include "library_call.h"
#include "mask.h"
#include "options.h"
#include "picture_file.h"
#include "work_buffer.h"

namespace {

constexpr float kLeastRadius = 1, kUsualRadius = 5, kLargestRadius = 100;

struct Options {
    std::string input, mask, output;
    float radius = kUsualRadius;
    int32_t method = 0;
};

/** When a front that starts at the edge of the mask arrives at its pixels. */
std::vector<float> arrivalTimes(const Picture& mask, float radius) {
    std::vector<float> times(mask.bytes.size());
    const WorkBuffer buffer = workBuffer(vekiFastMarchingGetBufferSize_8u32f_C1R, mask.size());
    callLibrary("vekiFastMarching_8u32f_C1R", vekiFastMarching_8u32f_C1R, mask.pixels<uint8_t>(), mask.step(),
                times.data(), mask.width * static_cast<int32_t>(sizeof(float)), mask.size(), radius, buffer.get());
    return times;
}

Picture inpainted(const Picture& picture, const Picture& mask, const Options& options) {
    const bool isGrey = picture.channels == 1;
    const std::string layout = isGrey ? "_8u_C1R" : "_8u_C3R";
    const std::vector<float> times = arrivalTimes(mask, options.radius);
    InpaintState* state = nullptr;
    callLibrary("vekiInpaintInitAlloc" + layout, isGrey ? vekiInpaintInitAlloc_8u_C1R : vekiInpaintInitAlloc_8u_C3R,
                &state, times.data(), mask.width * static_cast<int32_t>(sizeof(float)), mask.pixels<uint8_t>(),
                mask.step(), mask.size(), options.radius, options.method);
    const auto free = isGrey ? vekiInpaintFree_8u_C1R : vekiInpaintFree_8u_C3R;
    const std::unique_ptr<InpaintState, decltype(free)> owner(state, free);
    Picture result(picture.width, picture.height, picture.channels, picture.bits);
    callLibrary("vekiInpaint" + layout, isGrey ? vekiInpaint_8u_C1R : vekiInpaint_8u_C3R, picture.pixels<uint8_t>(),
                picture.step(), result.pixels<uint8_t>(), result.step(), picture.size(), state);
    return result;
}

void inpaint(const Options& options) {
    checkPictureName(options.output);
    const Picture picture = readEightBit(options.input, "pixels are restored in"), mask = readPicture(options.mask);
    checkMask(options.mask, mask, picture, options.input);
    if (std::ranges::find(mask.bytes, 0) == mask.bytes.end())
        throw Failure(options.mask, "has no black pixel, so there is nothing to restore " + options.input + " from");
    writePicture(options.output, inpainted(picture, mask, options));
}

}  // namespace

void addInpaint(CLI::App& app) {
    CLI::App* const command =
        app.add_subcommand("inpaint", "Scratches and writing removed: pixels restored from those around them");
    command->footer(
        "The pixels of IN where MASK is not black are restored from the edge of these places inwards, each\n"
        "as a mean of what is known by then within the radius, with most weight on what is close. Method 0\n"
        "prefers pixels in the direction that the edge moves in; method 1 does not, and keeps more of the\n"
        "contrast. All others stay as they are.");
    const auto options = std::make_shared<Options>();
    command->add_option("IN", options->input, "An 8-bit picture")->required();
    command->add_option("MASK", options->mask, "Grey picture of the same size; pixels where it is not 0 are restored")
        ->required();
    command->add_option("OUT", options->output, "Where the result goes (.png, .jpg)")->required();
    command->add_option("--radius", options->radius, "How far away a pixel counts, 1 to 100 pixels")
        ->check(numberFrom(kLeastRadius, kLargestRadius))
        ->capture_default_str();
    command->add_option("--method", options->method, "How pixels are weighted")
        ->check(CLI::IsMember({0, 1}))
        ->capture_default_str();
    command->callback([=] { inpaint(*options); });
}
