// vek foreground: what does not belong to a background that is learned from the frames of a sequence.
#include <memory>

#include "commands.h"
#include "frames.h"
#include "library_call.h"
#include "numbered_name.h"
#include "options.h"
#include "picture_file.h"

namespace {

struct Options {
    std::vector<std::string> frames;
    std::string output, background, model = "gauss";
    bool color = false;
};

/** A function of the library for grey or for colour, with its name. */
template <typename Function>
struct Layouts {
    std::string name;
    Function grey, color;

    void operator()(const Picture& frame, auto... arguments) const {
        const bool isGrey = frame.channels == 1;
        callLibrary(name + (isGrey ? "_8u_C1R" : "_8u_C3R"), isGrey ? grey : color, frame.pixels<uint8_t>(),
                    frame.step(), arguments...);
    }
};

/** What a background has learned from the frames so far. */
class Model {
  public:
    explicit Model(const Picture& first) : foreground_(first.width, first.height, 1, 8), background_(first) {}
    virtual ~Model() = default;

    /** 255 where a frame shows something else than the background. */
    virtual const Picture& foregroundOf(const Picture& frame) = 0;
    const Picture& background() const { return background_; }

  protected:
    Picture foreground_, background_;
};

/** A model with the state of the library. */
template <typename State, auto freeGrey, auto freeColor>
class ModelWith : public Model {
  protected:
    ModelWith(const Picture& first, const auto& initAlloc, const auto& parameters)
        : Model(first), state_(nullptr, first.channels == 1 ? freeGrey : freeColor) {
        State* state = nullptr;
        initAlloc(first, first.size(), &parameters, &state);
        state_.reset(state);
    }

    std::unique_ptr<State, decltype(freeGrey)> state_;
};

using GaussBase =
    ModelWith<ForegroundGaussianState, vekiForegroundGaussianFree_8u_C1R, vekiForegroundGaussianFree_8u_C3R>;
class GaussModel : public GaussBase {
  public:
    explicit GaussModel(const Picture& first)
        : GaussBase(first,
                    Layouts{"vekiForegroundGaussianInitAlloc", vekiForegroundGaussianInitAlloc_8u_C1R,
                            vekiForegroundGaussianInitAlloc_8u_C3R},
                    ForegroundGaussianParameters{}) {}

    const Picture& foregroundOf(const Picture& frame) override {
        Layouts{"vekiForegroundGaussian", vekiForegroundGaussian_8u_C1R, vekiForegroundGaussian_8u_C3R}(
            frame, background_.pixels<uint8_t>(), background_.step(), foreground_.pixels<uint8_t>(), foreground_.step(),
            frame.size(), state_.get());
        return foreground_;
    }
};

using HistogramBase =
    ModelWith<ForegroundHistogramState, vekiForegroundHistogramFree_8u_C1R, vekiForegroundHistogramFree_8u_C3R>;
class HistogramModel : public HistogramBase {
  public:
    explicit HistogramModel(const Picture& first)
        : HistogramBase(first,
                        Layouts{"vekiForegroundHistogramInitAlloc", vekiForegroundHistogramInitAlloc_8u_C1R,
                                vekiForegroundHistogramInitAlloc_8u_C3R},
                        ForegroundHistogramParameters{}) {}

    const Picture& foregroundOf(const Picture& frame) override {
        Layouts{"vekiForegroundHistogram", vekiForegroundHistogram_8u_C1R, vekiForegroundHistogram_8u_C3R}(
            frame, foreground_.pixels<uint8_t>(), foreground_.step(), frame.size(), state_.get());
        Layouts{"vekiForegroundHistogramUpdate", vekiForegroundHistogramUpdate_8u_C1R,
                vekiForegroundHistogramUpdate_8u_C3R}(frame, foreground_.pixels<uint8_t>(), foreground_.step(),
                                                      background_.pixels<uint8_t>(), background_.step(), frame.size(),
                                                      state_.get());
        return foreground_;
    }
};

std::unique_ptr<Model> modelOf(const Picture& first, const std::string& name) {
    if (name == "gauss")
        return std::make_unique<GaussModel>(first);
    return std::make_unique<HistogramModel>(first);
}

void foreground(const Options& options) {
    const NumberedName name(options.output);
    if (!options.background.empty())
        checkPictureName(options.background);
    const std::unique_ptr<Frames> frames = openFrames(options.frames, options.color);
    const Picture first = firstOf(*frames, options.frames);
    checkEightBit(options.frames[0], first, "the foreground is that of");
    const std::unique_ptr<Model> model = modelOf(first, options.model);
    for (int number = 2; const std::optional<Picture> frame = frames->next(); ++number)
        writePicture(name(number), model->foregroundOf(*frame));
    if (!options.background.empty())
        writePicture(options.background, model->background());
}

}  // namespace

void addForeground(CLI::App& app) {
    CLI::App* const command = app.add_subcommand(
        "foreground", "For each frame but the first: 255 where it shows something else than a background, else 0");
    command->footer(
        "The background is the first frame to begin with, and each frame teaches it; the camera must not move.\n\n"
        "  gauss       some Gaussian distributions for the values of each pixel. The more frames it has seen, the\n"
        "              more slowly it follows a change of the scene\n"
        "  histogram   how often each pixel had which values and which changes of them. Holes and specks of the mask\n"
        "              are cleaned away, and what comes to stay becomes background");
    const auto options = std::make_shared<Options>();
    addFrames(*command, options->frames, options->color);
    command
        ->add_option("-o,--output", options->output,
                     "Names of the pictures, with %d for the number of the frame, as in mask-%03d.png")
        ->required();
    command->add_option("--model", options->model, "What is learned of a background, gauss or histogram")
        ->check(CLI::IsMember({"gauss", "histogram"}))
        ->capture_default_str();
    command->add_option("--background", options->background,
                        "Where the background learned at the end goes (.png, .jpg)");
    command->callback([=] { foreground(*options); });
}
