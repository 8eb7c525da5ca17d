// vek diff: the absolute difference of two pictures.
#include "commands.h"
#include "difference.h"
#include "picture_file.h"

namespace {

struct Options {
    std::string first, second, output;
};

void diff(const Options& options) {
    checkPictureName(options.output);
    const Picture first = readPicture(options.first), second = readPicture(options.second);
    checkSameShape(options.second, second, options.first, first);
    writePicture(options.output, absoluteDifference(first, second));
}

}  // namespace

void addDiff(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("diff", "The absolute difference of two pictures of the same kind");
    const auto options = std::make_shared<Options>();
    command->add_option("A", options->first, "A picture")->required();
    command->add_option("B", options->second, "Another of the same size and kind")->required();
    command->add_option("OUT", options->output, "Where the difference goes (.png, .jpg)")->required();
    command->callback([=] { diff(*options); });
}
