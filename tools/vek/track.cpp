// vek track: corners followed from frame to frame.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "corners.h"
#include "frames.h"
#include "grey.h"
#include "numbered_name.h"
#include "optical_flow.h"
#include "options.h"
#include "paint.h"
#include "picture_file.h"

namespace {

constexpr int32_t kUsualCorners = 200, kMostCorners = 10000;
constexpr size_t kTrailLength = 30;  // frames
constexpr Color kTrailColor{0, 255, 0}, kPointColor{255, 255, 0};

struct Options {
    std::vector<std::string> frames;
    std::string output;
    int32_t corners = kUsualCorners, window = OpticalFlow::kUsualWindow;
    bool color = false, json = false;
};

/** Where a corner was in each frame from its first one on. */
struct Trail {
    int firstFrame;
    std::vector<ImagePoint32f> places;
    bool isLost = false;
};

class Tracker {
  public:
    Tracker(const Picture& first, const Options& options)
        : most_(static_cast<size_t>(options.corners)), flow_(first.size(), options.window), last_(inGrey(first)) {
        addTrails();
    }

    void follow(const Picture& frame) {
        ++frame_;
        PicturePyramid next(inGrey(frame));
        const std::vector<Trail*> followed = live();
        const auto places = flow_.follow(last_, next, placesOf(followed));
        for (size_t i = 0; i < followed.size(); ++i) {
            followed[i]->isLost = !places[i];
            if (places[i])
                followed[i]->places.push_back(*places[i]);
        }
        last_ = std::move(next);
        if (2 * live().size() < most_)
            addTrails();
    }

    /** All of them; those that are not lost end in the last frame. */
    const std::vector<Trail>& trails() const { return trails_; }

  private:
    std::vector<Trail*> live() {
        std::vector<Trail*> result;
        for (Trail& trail : trails_)
            if (!trail.isLost)
                result.push_back(&trail);
        return result;
    }

    static std::vector<ImagePoint32f> placesOf(const std::vector<Trail*>& trails) {
        std::vector<ImagePoint32f> places;
        for (const Trail* trail : trails)
            places.push_back(trail->places.back());
        return places;
    }

    void addTrails() {
        std::vector<ImagePoint32f> points = placesOf(live());
        const size_t old = points.size();
        addCorners(last_.base(), most_, points);
        for (size_t i = old; i < points.size(); ++i)
            trails_.push_back({frame_, {points[i]}});
    }

    size_t most_;
    OpticalFlow flow_;
    PicturePyramid last_;
    std::vector<Trail> trails_;
    int frame_ = 1;
};

/** A square around a place. */
void drawPoint(Picture& picture, ImagePoint32f place, int32_t side, const Color& color) {
    const auto first = [=](float middle) { return static_cast<int32_t>(std::lrint(middle)) - side / 2; };
    paint(picture, {first(place.x), first(place.y), side, side}, color);
}

void drawLine(Picture& picture, ImagePoint32f from, ImagePoint32f to, int32_t thickness) {
    const float acrossAll = to.x - from.x, downAll = to.y - from.y;
    const float steps = std::ceil(std::max(std::abs(acrossAll), std::abs(downAll))) + 1;
    for (float i = 0; i <= steps; ++i)
        drawPoint(picture, {from.x + acrossAll * i / steps, from.y + downAll * i / steps}, thickness, kTrailColor);
}

Picture withTrails(const Picture& frame, const std::vector<Trail>& trails) {
    Picture picture = inColor(frame);
    // As seen in a picture that fits a screen.
    const int32_t thickness = std::max(1, std::max(picture.width, picture.height) / 400);
    for (const auto& [firstFrame, places, isLost] : trails)
        for (size_t i = places.size() - std::min(places.size(), kTrailLength); !isLost && i + 1 < places.size(); ++i)
            drawLine(picture, places[i], places[i + 1], thickness);
    for (const Trail& trail : trails)
        if (!trail.isLost)
            drawPoint(picture, trail.places.back(), 2 * thickness + 1, kPointColor);
    return picture;
}

void printJson(const std::vector<Trail>& trails) {
    const auto rounded = [](float place) { return std::round(1000 * double{place}) / 1000; };
    auto array = nlohmann::ordered_json::array();
    for (const auto& [firstFrame, places, isLost] : trails) {
        auto pairs = nlohmann::ordered_json::array();
        for (const auto& [x, y] : places)
            pairs.push_back({rounded(x), rounded(y)});
        array.push_back({{"frame", firstFrame}, {"places", pairs}});
    }
    std::puts(array.dump().c_str());
}

void track(const Options& options) {
    if (options.window % 2 == 0)
        throw UsageError("--window", "is not odd");
    const NumberedName name(options.output);
    const std::unique_ptr<Frames> frames = openFrames(options.frames, options.color);
    const Picture first = firstOf(*frames, options.frames);
    checkEightBit(options.frames[0], first, "corners are followed in");
    Tracker tracker(first, options);
    writePicture(name(1), withTrails(first, tracker.trails()));
    for (int number = 2; const std::optional<Picture> frame = frames->next(); ++number) {
        tracker.follow(*frame);
        writePicture(name(number), withTrails(*frame, tracker.trails()));
    }
    if (options.json)
        printJson(tracker.trails());
}

}  // namespace

void addTrack(CLI::App& app) {
    CLI::App* const command = app.add_subcommand("track", "Corners followed from frame to frame, with their trails");
    command->footer(
        "Follows the strongest corners of the first frame by optical flow, and draws where each has been in the last\n"
        "30 frames. Corners are lost where they leave the picture, and where the way back from the next frame does\n"
        "not lead to them. When fewer than half are left, new ones join.");
    const auto options = std::make_shared<Options>();
    addFrames(*command, options->frames, options->color);
    command
        ->add_option("-o,--output", options->output,
                     "Names of the pictures, with %d for the number of the frame, as in track-%03d.png")
        ->required();
    command->add_option("--corners", options->corners, "The most corners at a time, 1 to 10000")
        ->check(CLI::Range(1, kMostCorners))
        ->capture_default_str();
    command
        ->add_option("--window", options->window,
                     "Width and height of what is compared around a corner, odd, 3 to 63 pixels")
        ->check(CLI::Range(OpticalFlow::kLeastWindow, OpticalFlow::kLargestWindow))
        ->capture_default_str();
    command->add_flag("--json", options->json,
                      "Print each corner: the number of its first frame, and its places from there on, x and y");
    command->callback([=] { track(*options); });
}
