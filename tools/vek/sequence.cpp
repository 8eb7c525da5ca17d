// vek background and vek motion: the running average of a sequence, and what differs from it.
#include <cmath>
#include <cstdlib>
#include <limits>

#include "commands.h"
#include "difference.h"
#include "frames.h"
#include "mask.h"
#include "numbered_name.h"
#include "options.h"
#include "picture_file.h"

namespace {

struct Options {
    std::vector<std::string> frames;
    std::string output, mask;
    float alpha = 0;
    bool color = false;
};

/** The mask with each byte as often as a frame has channels; empty without a mask. */
Picture readMask(const std::string& path, const Picture& frame) {
    if (path.empty())
        return {};
    const Picture mask = readPicture(path);
    checkMask(path, mask, frame, "the frames");
    Picture result(frame.width, frame.height, frame.channels, 8);
    for (size_t i = 0; i < result.bytes.size(); ++i)
        result.bytes[i] = mask.bytes[i / static_cast<size_t>(frame.channels)];
    return result;
}

/** The running average of frames, which begins as the first of them. */
class Background {
  public:
    Background(const Picture& first, const std::string& maskPath, float alpha)
        : shape_(first.width, first.height, first.channels, first.bits),
          mask_(readMask(maskPath, first)),
          average_(first.bytes.size() / (static_cast<size_t>(first.bits) / 8)),
          alpha_(alpha) {
        fold(first, 1, Picture());  // (first - 0) * 1 + 0
    }

    void add(const Picture& frame) { fold(frame, alpha_, mask_); }

    /** The average rounded to nearest. */
    Picture picture() const {
        Picture result = shape_;
        const auto round = [&]<typename T>(T* pixels) {
            for (size_t i = 0; i < average_.size(); ++i)
                // A weight beyond 1 can leave the range, and at last be no number.
                pixels[i] = static_cast<T>(
                    std::lrint(std::fmin(std::fmax(average_[i], 0.f), float{std::numeric_limits<T>::max()})));
        };
        if (shape_.bits == 16)
            round(result.pixels<uint16_t>());
        else
            round(result.pixels<uint8_t>());
        return result;
    }

  private:
    void fold(const Picture& frame, float alpha, const Picture& mask) {
        const RoiSize roi = frame.elements();
        const auto step = static_cast<int32_t>(roi.width * static_cast<int32_t>(sizeof(float)));
        const bool masked = !mask.bytes.empty();
        if (frame.bits == 16 && masked)
            callLibrary("vekiAddWeighted_16u32f_C1IMR", vekiAddWeighted_16u32f_C1IMR, frame.pixels<uint16_t>(),
                        frame.step(), mask.pixels<uint8_t>(), mask.step(), average_.data(), step, roi, alpha);
        else if (frame.bits == 16)
            callLibrary("vekiAddWeighted_16u32f_C1IR", vekiAddWeighted_16u32f_C1IR, frame.pixels<uint16_t>(),
                        frame.step(), average_.data(), step, roi, alpha);
        else if (masked)
            callLibrary("vekiAddWeighted_8u32f_C1IMR", vekiAddWeighted_8u32f_C1IMR, frame.pixels<uint8_t>(),
                        frame.step(), mask.pixels<uint8_t>(), mask.step(), average_.data(), step, roi, alpha);
        else
            callLibrary("vekiAddWeighted_8u32f_C1IR", vekiAddWeighted_8u32f_C1IR, frame.pixels<uint8_t>(), frame.step(),
                        average_.data(), step, roi, alpha);
    }

    Picture shape_;
    Picture mask_;
    std::vector<float> average_;
    float alpha_;
};

void background(const Options& options) {
    checkPictureName(options.output);
    const std::unique_ptr<Frames> frames = openFrames(options.frames, options.color);
    Background average(firstOf(*frames, options.frames), options.mask, options.alpha);
    while (const std::optional<Picture> frame = frames->next())
        average.add(*frame);
    writePicture(options.output, average.picture());
}

void motion(const Options& options) {
    const NumberedName name(options.output);
    const std::unique_ptr<Frames> frames = openFrames(options.frames, options.color);
    Background average(firstOf(*frames, options.frames), options.mask, options.alpha);
    for (int number = 2; const std::optional<Picture> frame = frames->next(); ++number) {
        writePicture(name(number), absoluteDifference(*frame, average.picture()));
        average.add(*frame);
    }
}

CLI::App* addSequence(CLI::App& app, const std::string& name, const std::string& description,
                      const std::string& outputDescription, const std::shared_ptr<Options>& options) {
    CLI::App* const command = app.add_subcommand(name, description);
    addFrames(*command, options->frames, options->color);
    command->add_option("-o,--output", options->output, outputDescription)->required();
    command->add_option("--alpha", options->alpha, "Weight of each new frame; 0.1 averages over about ten of them")
        ->required()
        ->check([](const std::string& text) {
            return std::isfinite(std::strtof(text.c_str(), nullptr)) ? "" : std::string("is not a finite number");
        });
    command->add_option("--mask", options->mask, "Grey picture; where it is 0 the background stays the first frame");
    return command;
}

}  // namespace

void addBackground(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addSequence(app, "background", "The running average of a sequence of frames", "Where it goes (.png, .jpg)", options)
        ->callback([=] { background(*options); });
}

void addMotion(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    addSequence(app, "motion",
                "For each frame but the first: its difference from the running average of the frames before it",
                "Names of the pictures, with %d for the number of the frame, as in motion-%03d.png", options)
        ->callback([=] { motion(*options); });
}
