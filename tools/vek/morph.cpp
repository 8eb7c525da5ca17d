// vek morph: dilation, erosion and what they are combined to.
#include <map>

#include "commands.h"
#include "library_call.h"
#include "picture_file.h"
#include "structuring_element.h"
#include "work_buffer.h"

namespace {

struct Options {
    std::string operation, input, output;
    ElementOptions element;
};

using Function = decltype(&vekiDilateBorderReplicate_8u_C1R);

struct Operation {
    std::string name;  // of its functions, as far as they agree
    Function grey, color;
    bool isCompound;
};

const std::map<std::string, Operation> kOperations = {
    {"dilate",
     {"vekiDilateBorderReplicate", vekiDilateBorderReplicate_8u_C1R, vekiDilateBorderReplicate_8u_C3R, false}},
    {"erode", {"vekiErodeBorderReplicate", vekiErodeBorderReplicate_8u_C1R, vekiErodeBorderReplicate_8u_C3R, false}},
    {"open",
     {"vekiMorphOpenBorderReplicate", vekiMorphOpenBorderReplicate_8u_C1R, vekiMorphOpenBorderReplicate_8u_C3R, true}},
    {"close",
     {"vekiMorphCloseBorderReplicate", vekiMorphCloseBorderReplicate_8u_C1R, vekiMorphCloseBorderReplicate_8u_C3R,
      true}},
    {"tophat",
     {"vekiMorphTopHatBorderReplicate", vekiMorphTopHatBorderReplicate_8u_C1R, vekiMorphTopHatBorderReplicate_8u_C3R,
      true}},
    {"blackhat",
     {"vekiMorphBlackHatBorderReplicate", vekiMorphBlackHatBorderReplicate_8u_C1R,
      vekiMorphBlackHatBorderReplicate_8u_C3R, true}},
    {"gradient",
     {"vekiMorphGradientBorderReplicate", vekiMorphGradientBorderReplicate_8u_C1R,
      vekiMorphGradientBorderReplicate_8u_C3R, true}},
};

Picture applied(const Operation& operation, const Picture& picture, const StructuringElement& element) {
    const bool isGrey = picture.channels == 1;
    const std::string layout = isGrey ? "_8u_C1R" : "_8u_C3R";
    const auto apply = [&](const std::string& family, auto getSize, auto init, auto region) {
        const WorkBuffer memory = workBuffer(getSize, region, element.members.data(), element.size);
        auto* const state = reinterpret_cast<MorphologyState*>(memory.get());
        callLibrary(family + "Init" + layout, init, state, region, element.members.data(), element.size,
                    element.anchor);
        Picture result(picture.width, picture.height, picture.channels, picture.bits);
        callLibrary(operation.name + layout, isGrey ? operation.grey : operation.color, picture.pixels<uint8_t>(),
                    picture.step(), result.pixels<uint8_t>(), result.step(), picture.size(), int32_t{BorderReplicate},
                    state);
        return result;
    };
    if (operation.isCompound)
        return apply("vekiMorphologyCompound",
                     isGrey ? vekiMorphologyCompoundGetSize_8u_C1R : vekiMorphologyCompoundGetSize_8u_C3R,
                     isGrey ? vekiMorphologyCompoundInit_8u_C1R : vekiMorphologyCompoundInit_8u_C3R, picture.size());
    return apply("vekiMorphology", isGrey ? vekiMorphologyGetSize_8u_C1R : vekiMorphologyGetSize_8u_C3R,
                 isGrey ? vekiMorphologyInit_8u_C1R : vekiMorphologyInit_8u_C3R, picture.width);
}

void morph(const Options& options) {
    checkPictureName(options.output);
    const StructuringElement element = elementFrom(options.element);
    const Picture picture = readEightBit(options.input, "morphology is for");
    writePicture(options.output, applied(kOperations.at(options.operation), picture, element));
}

}  // namespace

void addMorph(CLI::App& app) {
    CLI::App* const command =
        app.add_subcommand("morph", "Dilation, erosion and what they are combined to, for each channel");
    command->footer(
        "  dilate     the largest value under the element\n"
        "  erode      the smallest one\n"
        "  open       erode, then dilate: without light spots and lines that are smaller than the element\n"
        "  close      dilate, then erode: without the dark ones\n"
        "  tophat     IN less open: the light spots and lines, on black\n"
        "  blackhat   close less IN: the dark ones, light on black\n"
        "  gradient   dilate less erode: edges\n\n"
        "The element lies with its anchor on each pixel in turn; in the second step of open and close it is turned by\n"
        "180 degrees. A cross has the pixels in column W / 2 and those in row H / 2, rounded down, an ellipse those\n"
        "whose centres lie in the one that touches all four sides. The edge pixels of IN continue it.");
    const auto options = std::make_shared<Options>();
    command->add_option("OPERATION", options->operation, "What to do; capitals do not matter")
        ->required()
        ->transform(CLI::IsMember(&kOperations, CLI::ignore_case));
    command->add_option("IN", options->input, "An 8-bit picture")->required();
    command->add_option("OUT", options->output, "Where the result goes (.png, .jpg)")->required();
    addElementOptions(*command, options->element);
    command->callback([=] { morph(*options); });
}
