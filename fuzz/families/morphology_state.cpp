#include <algorithm>

#include "call.h"
#include "families/structuring_element.h"
#include "morphology_functions.h"
#include "state.h"

namespace fuzz {
namespace {

constexpr std::string_view kLayouts[] = {"8u_C1R", "32f_C1R", "8u_C3R", "8u_C4R", "32f_C3R", "32f_C4R"};
constexpr uint32_t kGrayLayouts = 2;

class MorphologyStateOfCall : public State {
  public:
    MorphologyStateOfCall(Input& input, const Export& target);

    void* build(const Call& call) const override;
    void release(void* object) const override;
    std::vector<uint8_t> observe(const Call& call, void* object) const override;
    std::string describe() const override;
    bool isSlow() const override;
    int threadsFor(int threads) const override { return threads_ == 0 ? threads : threads_; }
    const Operand* memory() const override { return memory_.get(); }
    std::optional<Bytes> argument(std::string_view parameter) const override;
    std::string addFault(Input& input, Call& call) override;

  private:
    RoiSize regionOf(const Call& call) const;
    Status make(const std::string& what, RoiSize region, void* result) const;
    std::string addFaultToMaker(Input& input, Call& call) const;
    std::string addFaultToState(Input& input, const Call& call);

    MorphologyFunctions functions_;
    StructuringElement element_;
    RoiSize region_{};        // that a state is made for, where the call has none
    RoiSize more_{};          // columns and rows of a state beyond the region of the call
    int32_t threads_ = 0;     // configured while a state is made; 0 stands for those of the call
    bool isInPlace_ = false;  // in memory of the caller
    Place place_{};
    uint32_t seed_;  // of the image that a state is observed with

    // There is one object at a time.
    mutable std::unique_ptr<Operand> memory_;
    mutable uint8_t filling_ = 0;
};

MorphologyStateOfCall::MorphologyStateOfCall(Input& input, const Export& target)
    : functions_(MorphologyFunctions::of(target, input.oneOf(kLayouts))), element_(StructuringElement::draw(input)) {
    const auto length = [&](uint32_t most) { return static_cast<int32_t>(input.below(most)); };
    seed_ = input.take<uint16_t>();
    if (target.has("roiSize")) {
        if (input.oneIn(4))
            more_ = {length(100), length(40)};
        if (input.oneIn(4))
            threads_ = 1 + length(4);
    } else if (target.isQuery() && input.oneIn(4)) {
        region_ = {input.take<int32_t>(), input.take<int32_t>()};
    } else {
        region_ = {1 + length(256), 1 + length(40)};
    }
    isInPlace_ = target.makesInPlace() || (target.has("roiSize") && input.oneIn(2));
    place_ = {input.oneIn(2) ? Place::kBefore : Place::kBehind, length(70)};
}

/** Full masks take no longer than small ones, unless they are grey. */
bool MorphologyStateOfCall::isSlow() const {
    const bool isFull = element_.memberCount() == std::ssize(element_.members);
    return element_.memberCount() > 32 && (!isFull || functions_.family == MorphologyFunctions::kGray);
}

/** The region that a state is made for. */
RoiSize MorphologyStateOfCall::regionOf(const Call& call) const {
    if (!call.target->has("roiSize"))
        return region_;
    const auto roi = call.plainValues[call.target->indexOf("roiSize")].as<RoiSize>();
    return {roi.width + more_.width, roi.height + more_.height};
}

Status MorphologyStateOfCall::make(const std::string& what, RoiSize region, void* result) const {
    const Export& function = functions_.find(what);
    std::vector<Value> values;
    for (const Parameter& parameter : function.parameters) {
        Value& value = values.emplace_back();
        if (parameter.name.starts_with("state"))
            value.set(result);
        else if (parameter.name == "mask")
            value.set(argument("mask")->data());
        else if (parameter.name == "roiWidth")
            value.set(region.width);
        else if (parameter.name == "maxRoi")
            value.set(region);
        else
            value.setBytes(*argument(parameter.name));
    }
    return function.call(values.data());
}

void* MorphologyStateOfCall::build(const Call& call) const {
    const RoiSize region = regionOf(call);
    if (!isInPlace_) {
        void* state = nullptr;
        make("InitAlloc", region, &state);
        return state;
    }
    int32_t bytes = 0;
    if (make("GetSize", region, &bytes) != StatusOk)
        return nullptr;
    memory_ = std::make_unique<Operand>(Element::k8u, Extent{0, 0, bytes, 1}, 0, place_);
    void* const state = memory_->pointer();
    std::memset(state, ++filling_, static_cast<size_t>(bytes));
    if (!call.target->makesInPlace() && make("Init", region, state) != StatusOk)
        return nullptr;
    memory_->save();
    return state;
}

void MorphologyStateOfCall::release(void* object) const {
    memory_.reset();
    if (isInPlace_)
        return;
    Value state;
    state.set(object);
    functions_.find("Free").call(&state);
}

/** What an operation computes with a state, and its status. */
std::vector<uint8_t> MorphologyStateOfCall::observe(const Call& call, void* object) const {
    const Export& operation = functions_.operation();
    const RoiSize most = regionOf(call), roi{std::min(most.width, 40), std::min(most.height, 9)};
    const Element element = functions_.hasFloats() ? Element::k32f : Element::k8u;
    const Extent extent{0, 0, int64_t{roi.width} * functions_.channels(), roi.height};
    const Operand source(element, extent, 0, {}), destination(element, extent, 0, {});
    source.fill({Content::kAny, seed_});
    destination.fill({Content::kZero, 0});
    std::vector<Value> values(operation.parameters.size());
    const auto set = [&](std::string_view parameter, auto value) { values[operation.indexOf(parameter)].set(value); };
    set("source", source.pointer());
    set("sourceStep", static_cast<int32_t>(source.step()));
    set("destination", destination.pointer());
    set("destinationStep", static_cast<int32_t>(destination.step()));
    set("roiSize", roi);
    set("borderType", int32_t{BorderReplicate});
    set("state", object);
    const Status status = operation.call(values.data());
    std::vector<uint8_t> result = destination.elements();
    if (functions_.hasFloats())
        unifyFloats(result, [](float value) { return observed(value) + 0.0f; });  // zeros are the same, too
    result.push_back(static_cast<uint8_t>(status));
    return result;
}

std::string MorphologyStateOfCall::describe() const {
    std::string all = element_.describe();
    if (more_.width > 0 || more_.height > 0)
        all += ", " + std::to_string(more_.width) + " columns and " + std::to_string(more_.height) + " rows larger";
    if (threads_ > 0)
        all += ", made for " + std::to_string(threads_) + " threads";
    return isInPlace_ ? all + ", in memory of the caller" : all;
}

std::optional<State::Bytes> MorphologyStateOfCall::argument(std::string_view parameter) const {
    const bool isGray = functions_.family == MorphologyFunctions::kGray;
    const std::pair<std::string_view, Bytes> arguments[] = {
        {"mask", !isGray                  ? std::as_bytes(std::span(element_.members))
                 : functions_.hasFloats() ? std::as_bytes(std::span(element_.heights32f))
                                          : std::as_bytes(std::span(element_.heights))},
        {"maskSize", std::as_bytes(std::span(&element_.size, 1))},
        {"anchor", std::as_bytes(std::span(&element_.anchor, 1))},
        {"roiWidth", std::as_bytes(std::span(&region_.width, 1))},
        {"maxRoi", std::as_bytes(std::span(&region_, 1))},
    };
    for (const auto& [name, bytes] : arguments)
        if (name == parameter)
            return bytes;
    return {};
}

std::string MorphologyStateOfCall::addFault(Input& input, Call& call) {
    if (call.target->has("mask"))
        return addFaultToMaker(input, call);
    return call.target->has("roiSize") ? addFaultToState(input, call) : "";
}

/** A mask without members, or a region without pixels. */
std::string MorphologyStateOfCall::addFaultToMaker(Input& input, Call& call) const {
    if (input.oneIn(2)) {
        const size_t width = call.target->indexOf("roiWidth");
        const int32_t bad = input.oneIn(2) ? 0 : -1 - static_cast<int32_t>(input.below(3));
        if (width != Export::kNone)
            call.values[width].set(bad);
        else
            call.values[call.target->indexOf("maxRoi")].set(input.oneIn(2) ? RoiSize{bad, 1} : RoiSize{1, bad});
        return "a bad region of a state";
    }
    Operand& mask = *call.operands[call.target->indexOf("mask")];
    const auto count = static_cast<size_t>(mask.extent().columns());
    if (mask.element() == Element::k32f)
        std::fill_n(static_cast<float*>(mask.pointer()), count, kNoHeight32f);
    else if (mask.element() == Element::k32s)
        std::fill_n(static_cast<int32_t*>(mask.pointer()), count, kNoHeight);
    else
        std::fill_n(static_cast<uint8_t*>(mask.pointer()), count, uint8_t{0});
    mask.save();
    return "a mask without members";
}

/** A state for other functions, or for smaller regions. */
std::string MorphologyStateOfCall::addFaultToState(Input& input, const Call& call) {
    const auto wanted = MorphologyFunctions::of(*call.target);
    const bool isGray = wanted.family == MorphologyFunctions::kGray;
    const bool isFlat = wanted.family == MorphologyFunctions::kFlat;
    if (input.oneIn(2)) {
        const auto roi = call.plainValues[call.target->indexOf("roiSize")].as<RoiSize>();
        const bool isLow = !isFlat && roi.height > 1 && (roi.width == 1 || input.oneIn(2));
        if (!isLow && roi.width == 1)
            return {};
        (isLow ? more_.height : more_.width) = -1;
        return "a state for smaller regions";
    }
    if (!isGray && input.oneIn(2)) {
        functions_.family = isFlat ? MorphologyFunctions::kCompound : MorphologyFunctions::kFlat;
        return "a state of another family";
    }
    const auto layouts = std::span(kLayouts).first(isGray ? kGrayLayouts : std::size(kLayouts));
    const auto now = static_cast<size_t>(std::ranges::find(layouts, wanted.layout) - layouts.begin());
    const size_t other = 1 + input.below(static_cast<uint32_t>(layouts.size()) - 1);
    functions_.layout = layouts[(now + other) % layouts.size()];
    return "a state of another layout";
}

std::unique_ptr<State> drawState(Input& input, const Export& target) {
    return std::make_unique<MorphologyStateOfCall>(input, target);
}

const StateType flat("MorphologyState", drawState), gray("GrayMorphologyState", drawState);

}  // namespace
}  // namespace fuzz
