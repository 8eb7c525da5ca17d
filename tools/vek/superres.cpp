// vek superres: one large picture from many small ones of the same scene.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <numeric>

#include "commands.h"
#include "corners.h"
#include "enlarge.h"
#include "frames.h"
#include "grey.h"
#include "optical_flow.h"
#include "options.h"
#include "picture_file.h"
#include "super_resolution.h"

namespace {

constexpr double kUsualSmoothness = 0.4, kLargestSmoothness = 100;
constexpr size_t kCorners = 500, kLeastFound = 5;

struct Options {
    std::vector<std::string> frames;
    std::string output, reference;
    double smoothness = kUsualSmoothness;
    bool color = false;
};

/** A picture in grey of 8 bits. */
Picture inEightBitGrey(const Picture& picture) {
    if (picture.bits == 8)
        return inGrey(picture);
    Picture result(picture.width, picture.height, 1, 8);
    std::transform(picture.pixels<uint16_t>(), picture.pixels<uint16_t>() + result.bytes.size(), result.bytes.begin(),
                   [](uint16_t value) { return static_cast<uint8_t>(value >> 8); });
    return result;
}

float median(std::vector<float> values) {
    const auto middle = values.begin() + std::ssize(values) / 2;
    std::ranges::nth_element(values, middle);
    return *middle;
}

/** Finds how frames are shifted against the first one, by the corners of it. */
class Shifts {
  public:
    explicit Shifts(const Picture& first)
        : first_(inEightBitGrey(first)), flow_(first.size(), OpticalFlow::kUsualWindow) {
        addCorners(first_.base(), kCorners, corners_);
    }

    ShiftedFrame shifted(Picture frame, int number) {
        const auto places = flow_.follow(first_, PicturePyramid(inEightBitGrey(frame)), corners_);
        std::vector<float> across, down;
        for (size_t i = 0; i < places.size(); ++i)
            if (places[i]) {
                across.push_back(corners_[i].x - places[i]->x);
                down.push_back(corners_[i].y - places[i]->y);
            }
        if (across.size() < kLeastFound)
            throw Failure("frame " + std::to_string(number),
                          "shows too few corners of the first frame to tell how it is shifted");
        return {std::move(frame), median(std::move(across)), median(std::move(down))};
    }

  private:
    PicturePyramid first_;
    OpticalFlow flow_;
    std::vector<ImagePoint32f> corners_;
};

template <typename T>
double noiseRatioOf(const Picture& picture, const Picture& reference) {
    const double peak = std::numeric_limits<T>::max(), count = static_cast<double>(picture.bytes.size() / sizeof(T));
    const T* const begin = picture.pixels<T>();
    const double squares = std::transform_reduce(begin, begin + picture.bytes.size() / sizeof(T), reference.pixels<T>(),
                                                 0., std::plus(), [](double a, double b) { return (a - b) * (a - b); });
    return 10 * std::log10(peak * peak * count / squares);
}

/** The peak signal-to-noise ratio of a picture against another one, in decibels. */
double noiseRatio(const Picture& picture, const Picture& reference) {
    return picture.bits == 16 ? noiseRatioOf<uint16_t>(picture, reference) : noiseRatioOf<uint8_t>(picture, reference);
}

std::vector<ShiftedFrame> shiftedFrames(const Options& options) {
    const std::unique_ptr<Frames> frames = openFrames(options.frames, options.color);
    Picture first = firstOf(*frames, options.frames);
    if (!canBeSuperResolved(first))
        throw Failure(options.frames[0], "is too large");
    Shifts shifts(first);
    std::vector<ShiftedFrame> result;
    result.push_back({std::move(first)});
    while (std::optional<Picture> frame = frames->next())
        result.push_back(shifts.shifted(std::move(*frame), static_cast<int>(result.size()) + 1));
    return result;
}

void superres(const Options& options) {
    checkPictureName(options.output);
    Picture reference;
    if (!options.reference.empty())
        reference = readPicture(options.reference);
    const std::vector<ShiftedFrame> frames = shiftedFrames(options);
    const Picture usual = enlarged(frames[0].picture);
    if (!options.reference.empty())
        checkSameShape(options.reference, reference, "the result", usual);
    const Picture result = superResolved(frames, options.smoothness);
    writePicture(options.output, result);
    if (!options.reference.empty())
        std::printf("%.2f dB, and %.2f dB of the first frame enlarged\n", noiseRatio(result, reference),
                    noiseRatio(usual, reference));
}

}  // namespace

void addSuperres(CLI::App& app) {
    CLI::App* const command =
        app.add_subcommand("superres", "One picture of twice the width and height from many small ones of a scene");
    command->footer(
        "The frames show the same scene, each shifted by another fraction of a pixel, as a hand that holds a camera\n"
        "shakes. The shifts are those of most of the corners of the first frame, by optical flow. OUT is the picture\n"
        "whose shifted and shrunk copies fit the frames best, and that is smooth beside that.");
    const auto options = std::make_shared<Options>();
    addFrames(*command, options->frames, options->color);
    command->add_option("-o,--output", options->output, "Where the result goes (.png, .jpg)")->required();
    command
        ->add_option("--smoothness", options->smoothness,
                     "How much less noise counts than detail, 0 to 100; the more frames, the less is needed")
        ->check(numberFrom(0, kLargestSmoothness))
        ->capture_default_str();
    command->add_option("--reference", options->reference,
                        "A picture of the size of OUT: print the peak signal-to-noise ratio of OUT and of the first\n"
                        "frame enlarged");
    command->callback([=] { superres(*options); });
}
