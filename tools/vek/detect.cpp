// vek detect: finds objects with a trained cascade.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "boxes.h"
#include "commands.h"
#include "detector.h"
#include "grey.h"
#include "options.h"
#include "picture_file.h"

namespace {

constexpr double kLeastScale = 1.01, kLargestScale = 10;

struct Options {
    std::string cascade, input, output;
    bool json = false;
    Detector::Options detector;
};

/** A line on a terminal that tells how far a long search is. */
class ProgressLine {
  public:
    ~ProgressLine() {
        if (percent_ >= 0)
            std::fprintf(stderr, "\r%*s\r", static_cast<int>(sizeof "searching: 100 %"), "");
    }
    void operator()(double part) {
        const auto percent = static_cast<int>(100 * part);
        if (!isTerminal_ || percent == percent_ || Clock::now() - start_ < std::chrono::seconds(1))
            return;
        percent_ = percent;
        std::fprintf(stderr, "\rsearching: %d %%", percent);
    }

  private:
    using Clock = std::chrono::steady_clock;

    const bool isTerminal_ = isatty(STDERR_FILENO) != 0;
    const Clock::time_point start_ = Clock::now();
    int percent_ = -1;
};

void print(const std::vector<Detection>& objects) {
    for (const auto& [place, windows] : objects)
        std::printf("%d %d %d %d\n", place.x, place.y, place.width, place.height);
}

void printJson(const std::vector<Detection>& objects) {
    auto array = nlohmann::ordered_json::array();
    for (const auto& [place, windows] : objects)
        array.push_back(
            {{"x", place.x}, {"y", place.y}, {"width", place.width}, {"height", place.height}, {"windows", windows}});
    std::puts(array.dump(2).c_str());
}

void detect(const Options& options) {
    if (!options.output.empty())
        checkPictureName(options.output);
    Detector detector(readCascade(options.cascade));
    Picture picture = readEightBit(options.input, "objects are found in");
    std::vector<Detection> objects;
    try {
        ProgressLine progress;
        objects = detector.detect(inGrey(picture), options.detector, std::ref(progress));
    } catch (const TooManyWindows& error) {
        throw Failure(options.cascade, error.what());
    }
    if (!options.output.empty()) {
        for (const Detection& object : objects)
            drawBox(picture, object.place);
        writePicture(options.output, picture);
    }
    if (options.json)
        printJson(objects);
    else
        print(objects);
}

}  // namespace

void addDetect(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("detect", "Objects, as faces, found by a trained cascade");
    command->footer(
        "Prints a line of x, y, width and height for each object, from top to bottom. CASCADE is one of\n"
        "stumps on Haar features, upright and tilted, as in /usr/share/opencv4/haarcascades of Debian's\n"
        "package opencv-data. The window moves by two pixels where an object is less than twice as large as\n"
        "it, and by one beyond.");
    const auto options = std::make_shared<Options>();
    command->add_option("CASCADE", options->cascade, "The cascade, an XML file")->required();
    addGreyInput(*command, options->input);
    command->add_option("-o,--output", options->output, "Where IN goes with a box around each object (.png, .jpg)");
    command->add_flag("--json", options->json, "Print JSON, with the number of windows that found each object");
    command->add_option("--scale", options->detector.scale, "From a size of objects to the next, 1.01 to 10")
        ->check(numberFrom(kLeastScale, kLargestScale))
        ->capture_default_str();
    command->add_option("--min-size", options->detector.minSize, "The least width and height of objects, in pixels")
        ->check(CLI::Range(0, INT32_MAX))
        ->capture_default_str();
    command
        ->add_option("--min-neighbors", options->detector.leastNeighbours,
                     "The least number of windows that find an object; with 0, each window is printed")
        ->check(CLI::Range(0, INT32_MAX))
        ->capture_default_str();
    command->callback([=] { detect(*options); });
}
