#include <algorithm>
#include <array>

#include "call.h"
#include "flow_pyramid.h"
#include "pyramid_sizes.h"
#include "state.h"

namespace fuzz {
namespace {

// --- records

class PyramidOfCall : public State {
  public:
    explicit PyramidOfCall(Input& input)
        : levels_(1 + static_cast<int32_t>(input.below(12))),
          base_{1 + static_cast<int32_t>(input.below(300)), 1 + static_cast<int32_t>(input.below(300))} {}

    void* build(const Call& /*call*/) const override {
        Pyramid* pyramid = nullptr;
        vekiPyramidInitAlloc(&pyramid, levels_, base_, 1.7f);
        return pyramid;
    }
    void release(void* object) const override { vekiPyramidFree(static_cast<Pyramid*>(object)); }

    std::vector<uint8_t> observe(const Call& /*call*/, void* object) const override {
        const auto& pyramid = *static_cast<const Pyramid*>(object);
        std::vector<uint8_t> all;
        const auto add = [&](const auto* elements) {
            const auto* const bytes = reinterpret_cast<const uint8_t*>(elements);
            all.insert(all.end(), bytes, bytes + static_cast<size_t>(pyramid.levelCount + 1) * sizeof *elements);
        };
        add(pyramid.levelImages);
        add(pyramid.levelSizes);
        add(pyramid.levelScales);
        add(pyramid.levelSteps);
        all.push_back(pyramid.layerState == nullptr);
        return all;
    }

    std::string describe() const override {
        return "up to " + std::to_string(levels_) + " levels of " + std::to_string(base_.width) + " x " +
               std::to_string(base_.height);
    }

  private:
    int32_t levels_;
    RoiSize base_;
};

const StateType record("Pyramid", [](Input& input, const Export& target) -> std::unique_ptr<State> {
    if (target.has("previousPoints"))
        return drawFlowPyramid(input);
    return std::make_unique<PyramidOfCall>(input);
});

// --- states of layers

constexpr std::string_view kForms[] = {"Down_8u_C1R",  "Down_16u_C1R", "Down_32f_C1R", "Down_8u_C3R",
                                       "Down_16u_C3R", "Down_32f_C3R", "Up_8u_C1R",    "Up_16u_C1R",
                                       "Up_32f_C1R",   "Up_8u_C3R",    "Up_16u_C3R",   "Up_32f_C3R"};
constexpr std::string_view kLayer = "vekiPyramidLayer", kInitAlloc = "InitAlloc", kFree = "Free";

/** Direction, type and layout of an export: its name without what all names have, and what it does. */
std::string formOf(const Export& target) {
    std::string form(target.name.substr(kLayer.size()));
    for (const std::string_view function : {kInitAlloc, kFree})
        if (const size_t at = form.find(function); at != std::string::npos)
            form.erase(at, function.size());
    return form;
}

const Export& find(std::string form, std::string_view function) {
    return *findExport(std::string(kLayer) + form.insert(form.find('_'), function));
}

class PyramidLayerStateOfCall : public State {
  public:
    PyramidLayerStateOfCall(Input& input, const Export& target);

    void* build(const Call& call) const override;
    void release(void* object) const override { find(form_, kFree).call(std::array{valueOf(object)}.data()); }
    std::vector<uint8_t> observe(const Call& call, void* object) const override;
    std::string describe() const override;
    int threadsFor(int threads) const override { return threads_ == 0 ? threads : threads_; }
    std::optional<Bytes> argument(std::string_view parameter) const override;
    std::string addFault(Input& input, Call& call) override;

  private:
    bool isUp() const { return form_.starts_with("Up"); }
    bool hasFloats() const { return form_.find("32f") != std::string::npos; }
    RoiSize resultSize(RoiSize size, float rate) const;

    std::string form_;
    bool isOfLayer_;  // for a call of a layer; else for one that makes or releases a state
    RoiSize source_{}, destination_{};
    RoiSize more_{};  // columns and rows of a state beyond the source of the call
    float rate_ = 2;
    std::vector<int16_t> taps_;
    std::vector<float> floatTaps_;
    int32_t threads_ = 0;     // configured while a state is made; 0 stands for those of the call
    uint16_t choice_, seed_;  // of the size of a result, and of the image that a state is observed with
};

PyramidLayerStateOfCall::PyramidLayerStateOfCall(Input& input, const Export& target)
    : form_(formOf(target)), isOfLayer_(target.has("destination")) {
    const auto length = [&](uint32_t most) { return 1 + static_cast<int32_t>(input.below(most)); };
    constexpr float kUsual[] = {2, 1.5f, 3, 1.0000001f, 10, 1.25f};
    rate_ = input.oneIn(2) ? input.oneOf(kUsual) : 1 + static_cast<float>(1 + input.below(9000)) / 1000;
    const int32_t width = length(200);
    source_ = {width, length(input.oneIn(2) ? 8 : 40)};
    if (input.oneIn(24))  // for threads
        source_ = isUp() ? RoiSize{200 + length(50), 200 + length(50)} : RoiSize{250 + length(90), 260 + length(9)};
    const int32_t kernelSize = 1 + 2 * length(input.oneIn(8) ? 40 : 5);
    Random random(input.take<uint16_t>());
    const bool isSmall = input.oneIn(2);
    for (int32_t k = 0; k < kernelSize; ++k) {
        taps_.push_back(isSmall ? static_cast<int16_t>(random.below(9)) : random.value<int16_t>());
        floatTaps_.push_back(isSmall ? taps_.back() : random.value<float>());
    }
    if (input.oneIn(4))
        more_ = {length(100) - 1, length(40) - 1};
    if (input.oneIn(4))
        threads_ = length(4);
    choice_ = input.take<uint16_t>();
    seed_ = input.take<uint16_t>();
    destination_ = resultSize(source_, rate_);
}

RoiSize PyramidLayerStateOfCall::resultSize(RoiSize size, float rate) const {
    if (!isUp())
        return pyramid::reduced(size, rate);
    const auto between = [](pyramid::Range range, int32_t choice) {
        return static_cast<int32_t>(range.least + choice % (range.most - range.least + 1));
    };
    return {between(pyramid::expanded(size.width, rate), choice_ & 0xFF),
            between(pyramid::expanded(size.height, rate), choice_ >> 8)};
}

void* PyramidLayerStateOfCall::build(const Call& /*call*/) const {
    void* state = nullptr;
    const auto kernelSize = static_cast<int32_t>(taps_.size());
    const RoiSize size{source_.width + more_.width, source_.height + more_.height};
    const void* const kernel =
        hasFloats() ? static_cast<const void*>(floatTaps_.data()) : static_cast<const void*>(taps_.data());
    find(form_, kInitAlloc)
        .call(std::array{valueOf(&state), valueOf(size), valueOf(rate_), valueOf(kernel), valueOf(kernelSize),
                         valueOf(int32_t{2})}
                  .data());
    return state;
}

/** What a layer is made with a state that a call made, and the status. */
std::vector<uint8_t> PyramidLayerStateOfCall::observe(const Call& call, void* object) const {
    const bool isNew = call.target->has("kernel");
    const RoiSize most = isNew ? call.plainValues[call.target->indexOf("sourceRoi")].as<RoiSize>() : source_;
    const float rate = isNew ? call.plainValues[call.target->indexOf("rate")].as<float>() : rate_;
    const RoiSize size{std::min(most.width, 40), std::min(most.height, 9)}, result = resultSize(size, rate);
    const Export& layer = find(form_, "");
    const Element element = layer.parameters[0].element;
    const int64_t channels = form_[form_.rfind('C') + 1] - '0';
    const Operand source(element, {0, 0, size.width * channels, size.height}, 0, {});
    const Operand destination(element, {0, 0, result.width * channels, result.height}, 0, {});
    source.fill({Content::kAny, seed_});
    destination.fill({Content::kZero, 0});
    const Status status =
        layer.call(std::array{valueOf(source.pointer()), valueOf(static_cast<int32_t>(source.step())), valueOf(size),
                              valueOf(destination.pointer()), valueOf(static_cast<int32_t>(destination.step())),
                              valueOf(result), valueOf(object)}
                       .data());
    std::vector<uint8_t> bytes = destination.elements();
    if (hasFloats())
        unifyFloats(bytes);
    bytes.push_back(static_cast<uint8_t>(status));
    return bytes;
}

std::string PyramidLayerStateOfCall::describe() const {
    std::string all = "a state " + form_ + " for " + std::to_string(source_.width + more_.width) + " x " +
                      std::to_string(source_.height + more_.height) + ", rate " + std::to_string(rate_) + ", " +
                      std::to_string(taps_.size()) + " taps";
    return threads_ == 0 ? all : all + ", made for " + std::to_string(threads_) + " threads";
}

std::optional<State::Bytes> PyramidLayerStateOfCall::argument(std::string_view parameter) const {
    if (isOfLayer_ && parameter == "sourceRoi")
        return std::as_bytes(std::span(&source_, 1));
    if (isOfLayer_ && parameter == "destinationRoi")
        return std::as_bytes(std::span(&destination_, 1));
    return {};
}

std::string PyramidLayerStateOfCall::addFault(Input& input, Call& call) {
    const int32_t bad = input.oneIn(2) ? 0 : -1 - static_cast<int32_t>(input.below(3));
    const bool isAcross = input.oneIn(2);
    if (call.target->has("sourceRoi") && (!isOfLayer_ || input.oneIn(4))) {
        call.values[call.target->indexOf("sourceRoi")].set(isAcross ? RoiSize{bad, 1} : RoiSize{1, bad});
        return "a bad size of the source";
    }
    if (!isOfLayer_)
        return {};
    if (input.oneIn(3)) {
        RoiSize size = destination_;
        (isAcross ? size.width : size.height) = input.oneIn(2) ? bad : 1000000 + bad;
        call.values[call.target->indexOf("destinationRoi")].set(size);
        return "a bad size of the result";
    }
    if (input.oneIn(2) && source_.width > 1) {
        more_.width = -1;
        return "a state for smaller sources";
    }
    const auto right = static_cast<size_t>(std::ranges::find(kForms, formOf(*call.target)) - std::begin(kForms));
    form_ = kForms[(right + 1 + input.below(std::size(kForms) - 1)) % std::size(kForms)];
    return "a state of other functions";
}

const StateType layerState("PyramidLayerState", [](Input& input, const Export& target) -> std::unique_ptr<State> {
    return std::make_unique<PyramidLayerStateOfCall>(input, target);
});

}  // namespace
}  // namespace fuzz
