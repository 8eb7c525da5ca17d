#include <array>
#include <limits>

#include "flow_pyramid.h"
#include "preconditions.h"

namespace fuzz {
namespace {

constexpr std::string_view kFlow = "vekiOpticalFlowPyrLK";

const Precondition kFamilies[] = {
    {.family = kFlow,
     .arrayLength = [](const Call& call, size_t /*array*/) -> int64_t {
         return call.value("pointCount").as<int32_t>();
     },
     .numbers = {{"windowSize", {21, 3, 5, 7, 15, 31, 63, 4, 65}},
                 {"maxLevel", {3, 0, 1, 2, 7, 100}},
                 {"threshold", {0.01, 0, 0.1, 1, 100}}}},
};
const Families families(kFamilies);

Element elementOf(std::string_view form) {
    return form.starts_with("_8u") ? Element::k8u : form.starts_with("_16u") ? Element::k16u : Element::k32f;
}

/** A record with images of noise. */
class NoisyPyramid {
  public:
    struct Options {
        int32_t levels;
        Content content;
        Place::Guard guard;
        int64_t padding;
    };

    NoisyPyramid(Element element, RoiSize base, const Options& options) {
        vekiPyramidInitAlloc(&record_, options.levels, base, 1.7f);
        for (int32_t k = 0; k <= record_->levelCount; ++k) {
            const Extent extent{0, 0, record_->levelSizes[k].width, record_->levelSizes[k].height};
            const int64_t step = (extent.right + options.padding) * bytesOf(element);
            images_.push_back(std::make_unique<Operand>(element, extent, step, Place{options.guard, 0}));
            images_.back()->fill({options.content.values, options.content.seed + static_cast<uint32_t>(k)});
            record_->levelImages[k] = images_.back()->pointer();
            record_->levelSteps[k] = static_cast<int32_t>(images_.back()->step());
        }
    }
    ~NoisyPyramid() { vekiPyramidFree(record_); }
    NoisyPyramid(const NoisyPyramid&) = delete;
    NoisyPyramid& operator=(const NoisyPyramid&) = delete;

    Pyramid* record() const { return record_; }
    const Operand& image(size_t level) const { return *images_[level]; }

  private:
    Pyramid* record_ = nullptr;
    std::vector<std::unique_ptr<Operand>> images_;
};

class FlowStateOfCall : public State {
  public:
    FlowStateOfCall(Input& input, const Export& target);

    void* build(const Call& call) const override;
    void release(void* object) const override { find("Free").call(std::array{valueOf(object)}.data()); }
    std::vector<uint8_t> observe(const Call& call, void* object) const override;
    std::string describe() const override;
    int threadsFor(int threads) const override { return threads_ == 0 ? threads : threads_; }
    std::optional<Bytes> argument(std::string_view parameter) const override;
    std::string addFault(Input& input, Call& call) override;

    Element element() const { return elementOf(form_); }
    RoiSize base() const { return base_; }

  private:
    const Export& find(std::string_view function) const {
        return *findExport(std::string(kFlow) + std::string(function) + form_);
    }

    std::string form_;    // such as "_8u_C1R"
    bool isForPoints_;    // for a call with points; else for one that makes or releases a state
    RoiSize base_{};      // of the pyramids
    RoiSize more_{};      // columns and rows of the state beyond that
    int32_t windowSize_;  // of the call
    int32_t moreWindow_ = 0;
    int32_t pointCount_, maxIterations_;
    std::vector<ImagePoint32f> from_, guesses_;
    int32_t threads_ = 0;  // configured while the state is made; 0 stands for those of the call
};

FlowStateOfCall::FlowStateOfCall(Input& input, const Export& target)
    : form_(target.name.substr(target.name.find('_'))), isForPoints_(target.has("pointCount")) {
    const auto upTo = [&](uint32_t most) { return 1 + static_cast<int32_t>(input.below(most)); };
    base_.width = upTo(input.oneIn(4) ? 8 : 90);
    base_.height = upTo(input.oneIn(4) ? 8 : 60);
    windowSize_ = 1 + 2 * upTo(input.oneIn(4) ? 31 : 7);
    pointCount_ = upTo(input.oneIn(4) ? 60 : 6);
    maxIterations_ = upTo(6);
    more_.width = input.oneIn(2) ? upTo(20) : 0;
    threads_ = input.oneIn(4) ? upTo(4) : 0;
    Random random(input.take<uint16_t>());
    const bool hasGuesses = input.oneIn(2);
    const auto place = [&](int32_t length) {
        using Limits = std::numeric_limits<float>;
        constexpr float kSpecial[] = {
            Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), -0.0f, Limits::max(), -4e9f, 3e9f};
        const uint32_t special = random.below(64);
        return special < std::size(kSpecial)
                   ? kSpecial[special]
                   : static_cast<float>(random.below(static_cast<uint32_t>(length) * 32 + 320)) / 32 - 5;
    };
    for (int32_t i = 0; i < pointCount_; ++i) {
        const float x = place(base_.width), y = place(base_.height), guessX = place(base_.width);
        from_.push_back({x, y});
        guesses_.push_back({hasGuesses ? guessX : x, y});
    }
}

void* FlowStateOfCall::build(const Call& /*call*/) const {
    void* state = nullptr;
    const RoiSize size{base_.width + more_.width, base_.height + more_.height};
    find("InitAlloc").call(std::array{valueOf(&state), valueOf(size), valueOf(windowSize_ + moreWindow_)}.data());
    return state;
}

/** Where a point goes with a state that a call made, and the status. */
std::vector<uint8_t> FlowStateOfCall::observe(const Call& call, void* object) const {
    const auto argumentOf = [&]<typename T>(std::string_view parameter, T otherwise) {
        return isForPoints_ || !call.target->has(parameter) ? otherwise
                                                            : call.plainValues[call.target->indexOf(parameter)].as<T>();
    };
    const auto size = argumentOf("roiSize", base_);
    const NoisyPyramid pyramid(element(), {std::min(size.width, 40), std::min(size.height, 30)},
                               {2, {Content::kSmall, 1}, Place::kBehind, 0});
    const ImagePoint32f from{7.5f, 3.25f};
    ImagePoint32f to{8, 4};
    int8_t found = 0;
    float error = 0;
    const Status status = find("").call(std::array{valueOf(pyramid.record()), valueOf(pyramid.record()), valueOf(&from),
                                                   valueOf(&to), valueOf(&found), valueOf(&error), valueOf(int32_t{1}),
                                                   valueOf(argumentOf("windowSize", windowSize_)), valueOf(int32_t{1}),
                                                   valueOf(int32_t{2}), valueOf(0.0f), valueOf(object)}
                                            .data());
    std::vector<uint8_t> all{static_cast<uint8_t>(status), static_cast<uint8_t>(found)};
    for (const float value : {to.x, to.y, error})
        appendObserved(all, value);
    return all;
}

std::string FlowStateOfCall::describe() const {
    std::string all = "a state " + form_ + " for windows of " + std::to_string(windowSize_ + moreWindow_) + " in " +
                      std::to_string(base_.width + more_.width) + " x " + std::to_string(base_.height + more_.height) +
                      ", level 0 of " + std::to_string(base_.width) + " x " + std::to_string(base_.height);
    return threads_ == 0 ? all : all + ", made for " + std::to_string(threads_) + " threads";
}

std::optional<State::Bytes> FlowStateOfCall::argument(std::string_view parameter) const {
    const auto bytes = [](const auto& value) { return std::as_bytes(std::span(&value, 1)); };
    if (!isForPoints_)
        return {};
    if (parameter == "windowSize")
        return bytes(windowSize_);
    if (parameter == "pointCount")
        return bytes(pointCount_);
    if (parameter == "maxIterations")
        return bytes(maxIterations_);
    if (parameter == "previousPoints")
        return std::as_bytes(std::span(from_));
    if (parameter == "nextPoints")
        return std::as_bytes(std::span(guesses_));
    return {};
}

std::string FlowStateOfCall::addFault(Input& input, Call& call) {
    if (!isForPoints_)
        return {};
    switch (input.below(4)) {
        case 0:
            moreWindow_ = windowSize_ == 3 ? 2 : -2;
            return "a state for other windows";
        case 1:
            if (base_.width == 1)
                return {};
            more_.width = -1;
            return "a state for smaller images";
        case 2: {
            constexpr std::string_view kNumbers[] = {"pointCount", "maxIterations"};
            call.values[call.target->indexOf(input.oneOf(kNumbers))].set(-static_cast<int32_t>(input.below(3)));
            return "no points or no steps";
        }
        default:
            form_ = form_.starts_with("_8u") ? "_32f_C1R" : "_8u_C1R";
            return "a state of other functions";
    }
}

class FlowPyramidOfCall : public State {
  public:
    explicit FlowPyramidOfCall(Input& input) {
        constexpr Content::Values kValues[] = {Content::kSmall, Content::kAny, Content::kSparse, Content::kConstant};
        constexpr Place::Guard kGuards[] = {Place::kBehind, Place::kBefore, Place::kBehindRows};
        options_.levels = 1 + static_cast<int32_t>(input.below(5));
        options_.content.values = input.oneOf(kValues);
        options_.content.seed = 16 * input.below(3);  // often the same images in both pyramids
        options_.guard = input.oneOf(kGuards);
        options_.padding = input.oneIn(2) ? static_cast<int64_t>(input.below(20)) : 0;
    }

    void* build(const Call& call) const override {
        const auto& state = dynamic_cast<const FlowStateOfCall&>(*call.states[call.target->indexOf("state")]);
        const RoiSize base = state.base();
        pyramid_ = std::make_unique<NoisyPyramid>(elementOf(call.target->name.substr(call.target->name.find('_'))),
                                                  RoiSize{base.width + more_, base.height}, options_);
        Pyramid& record = *pyramid_->record();
        if (isWithoutImage_)
            record.levelImages[0] = nullptr;
        record.levelSteps[0] *= stepFactor_;
        return &record;
    }
    void release(void* /*object*/) const override { pyramid_.reset(); }
    std::vector<uint8_t> observe(const Call& /*call*/, void* /*object*/) const override {
        return pyramid_->image(0).elements();
    }
    std::string describe() const override {
        return "up to " + std::to_string(options_.levels) + " levels, images " + std::to_string(options_.content.seed);
    }

    std::string addFault(Input& input, Call& /*call*/) override {
        switch (input.below(3)) {
            case 0:
                isWithoutImage_ = true;
                return "a level without an image";
            case 1:
                stepFactor_ = input.oneIn(2) ? 0 : -1;
                return "a short step of a level";
            default:
                more_ = 1000;
                return "pyramids of different sizes, or larger than the state's";
        }
    }

  private:
    NoisyPyramid::Options options_{};
    bool isWithoutImage_ = false;
    int32_t stepFactor_ = 1, more_ = 0;  // more_: columns
    mutable std::unique_ptr<NoisyPyramid> pyramid_;
};

const StateType flowState("OpticalFlowState", [](Input& input, const Export& target) -> std::unique_ptr<State> {
    return std::make_unique<FlowStateOfCall>(input, target);
});

}  // namespace

std::unique_ptr<State> drawFlowPyramid(Input& input) {
    return std::make_unique<FlowPyramidOfCall>(input);
}

}  // namespace fuzz
