#include <algorithm>
#include <array>

#include "call.h"
#include "preconditions.h"
#include "state.h"

namespace fuzz {
namespace {

const Precondition kFamilies[] = {
    {.family = "vekiForegroundGaussian", .checksFirstStepOnly = true},
    {.family = "vekiForegroundHistogram", .checksFirstStepOnly = true},
};
const Families families(kFamilies);

/** Parameters of a model, which may hold anything. */
class ParametersOfCall : public State {
  public:
    explicit ParametersOfCall(Input& input) : seed_(input.take<uint16_t>()) {}

    void* build(const Call& /*call*/) const override {
        auto* const bytes = new uint8_t[kBytes];
        Random random(seed_);
        for (size_t i = 0; i < kBytes; ++i)
            bytes[i] = static_cast<uint8_t>(random.bits());
        return bytes;
    }
    void release(void* object) const override { delete[] static_cast<uint8_t*>(object); }
    std::vector<uint8_t> observe(const Call& /*call*/, void* object) const override {
        const auto* const bytes = static_cast<const uint8_t*>(object);
        return {bytes, bytes + kBytes};
    }
    std::string describe() const override { return "parameters"; }

  private:
    static constexpr size_t kBytes =
        std::max(sizeof(ForegroundGaussianParameters), sizeof(ForegroundHistogramParameters));

    uint16_t seed_;
};

/** A model that has learned some frames. */
class ModelOfCall : public State {
  public:
    ModelOfCall(Input& input, const Export& target);

    void* build(const Call& call) const override;
    void release(void* object) const override { find("Free").call(std::array{valueOf(object)}.data()); }
    std::vector<uint8_t> observe(const Call& call, void* object) const override;
    std::string describe() const override;
    bool isSlow() const override { return true; }
    std::optional<Bytes> argument(std::string_view parameter) const override;
    std::string addFault(Input& input, Call& call) override;

  private:
    int32_t channels() const { return hasColours_ ? 3 : 1; }
    const Export& find(std::string_view function) const {
        return *findExport("vekiForeground" + std::string(isGaussian_ ? "Gaussian" : "Histogram") +
                           std::string(function) + (hasColours_ ? "_8u_C3R" : "_8u_C1R"));
    }
    Extent pixelsOf(RoiSize size) const { return {0, 0, int64_t{size.width} * channels(), size.height}; }
    void draw(const Operand& image, int32_t number) const;
    Status learn(RoiSize size, int32_t number, void* object, std::vector<uint8_t>& results) const;

    bool isGaussian_, hasColours_,
        isForImages_;            // for a call with results; else for one that makes or releases a model
    RoiSize region_{}, more_{};  // more_: columns and rows of a model beyond the region
    int32_t frames_;
    uint16_t seed_;
};

ModelOfCall::ModelOfCall(Input& input, const Export& target)
    : isGaussian_(target.name.starts_with("vekiForegroundGaussian")),
      hasColours_(target.name.ends_with("C3R")),
      isForImages_(target.has("foreground")) {
    const auto length = [&](uint32_t most) { return 1 + static_cast<int32_t>(input.below(most)); };
    const int32_t width = length(60);
    region_ = {width, length(6)};
    frames_ = static_cast<int32_t>(input.below(input.oneIn(8) ? 220 : 12));
    seed_ = input.take<uint16_t>();
}

/** Pixels that keep their value for some frames, more or less. */
void ModelOfCall::draw(const Operand& image, int32_t number) const {
    auto* const pixels = static_cast<uint8_t*>(image.pointer());
    Random random(seed_ + static_cast<uint32_t>(number) * 77U);
    for (int64_t y = 0; y < image.extent().rows(); ++y)
        for (int64_t x = 0; x < image.extent().columns(); ++x) {
            const auto base = static_cast<uint32_t>(x * 37 + y * 11 + (x % 3) * (number / 8) * 50);
            const uint32_t noise = random.below(1 + static_cast<uint32_t>(x % 7) * 4);
            pixels[y * image.step() + x] = static_cast<uint8_t>(random.below(40) == 0 ? noise : base + noise);
        }
}

/** Gives one more frame to a model, and appends what it tells. */
Status ModelOfCall::learn(RoiSize size, int32_t number, void* object, std::vector<uint8_t>& results) const {
    const Operand source(Element::k8u, pixelsOf(size), 0, {}), background(Element::k8u, pixelsOf(size), 0, {});
    const Operand foreground(Element::k8u, {0, 0, size.width, size.height}, 0, {});
    draw(source, number);
    const auto image = [](const Operand& operand) {
        return std::array{valueOf(operand.pointer()), valueOf(static_cast<int32_t>(operand.step()))};
    };
    const auto in = image(source), back = image(background), fore = image(foreground);
    const Value roi = valueOf(size), state = valueOf(object);
    Status status;
    if (isGaussian_) {
        status = find("").call(std::array{in[0], in[1], back[0], back[1], fore[0], fore[1], roi, state}.data());
    } else {
        status = find("").call(std::array{in[0], in[1], fore[0], fore[1], roi, state}.data());
        if (status == StatusOk)
            status =
                find("Update").call(std::array{in[0], in[1], fore[0], fore[1], back[0], back[1], roi, state}.data());
    }
    for (const Operand* const result : {&background, &foreground}) {
        const std::vector<uint8_t> elements = result->elements();
        results.insert(results.end(), elements.begin(), elements.end());
    }
    return status;
}

void* ModelOfCall::build(const Call& /*call*/) const {
    const RoiSize size{region_.width + more_.width, region_.height + more_.height};
    const Operand first(Element::k8u, pixelsOf(size), 0, {});
    draw(first, 0);
    const double parameters[16] = {};
    void* state = nullptr;
    find("InitAlloc")
        .call(std::array{valueOf(first.pointer()), valueOf(static_cast<int32_t>(first.step())), valueOf(size),
                         valueOf(static_cast<const void*>(parameters)), valueOf(&state)}
                  .data());
    std::vector<uint8_t> results;
    for (int32_t number = 1; number <= frames_ && state != nullptr; ++number)
        learn(size, number, state, results);
    return state;
}

/** What it makes of two more frames, and the statuses. */
std::vector<uint8_t> ModelOfCall::observe(const Call& call, void* object) const {
    const size_t size = call.target->indexOf("roiSize");
    const RoiSize region = size == Export::kNone ? region_ : call.plainValues[size].as<RoiSize>();
    std::vector<uint8_t> results;
    for (const int32_t number : {3, 900})
        results.push_back(static_cast<uint8_t>(learn(region, number, object, results)));
    return results;
}

std::string ModelOfCall::describe() const {
    return "a model of " + std::to_string(region_.width + more_.width) + " x " +
           std::to_string(region_.height + more_.height) + " pixels after " + std::to_string(frames_) + " frames";
}

std::optional<State::Bytes> ModelOfCall::argument(std::string_view parameter) const {
    if (isForImages_ && parameter == "roiSize")
        return std::as_bytes(std::span(&region_, 1));
    return {};
}

std::string ModelOfCall::addFault(Input& input, Call& call) {
    if (!isForImages_)
        return {};
    if (input.oneIn(2)) {
        (input.oneIn(2) ? more_.width : more_.height) = 1 + static_cast<int32_t>(input.below(3));
        return "a model of larger images";
    }
    hasColours_ = !call.target->name.ends_with("C3R");
    return "a model of another number of channels";
}

std::unique_ptr<State> parameters(Input& input, const Export& /*target*/) {
    return std::make_unique<ParametersOfCall>(input);
}
std::unique_ptr<State> model(Input& input, const Export& target) {
    return std::make_unique<ModelOfCall>(input, target);
}
const StateType kTypes[] = {{"ForegroundGaussianParameters", parameters},
                            {"ForegroundHistogramParameters", parameters},
                            {"ForegroundGaussianState", model},
                            {"ForegroundHistogramState", model}};

}  // namespace
}  // namespace fuzz
