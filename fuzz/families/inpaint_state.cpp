#include <array>
#include <limits>

#include "call.h"
#include "state.h"

namespace fuzz {
namespace {

class InpaintStateOfCall : public State {
  public:
    InpaintStateOfCall(Input& input, const Export& target);

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
        return *findExport("vekiInpaint" + std::string(function) + (hasColours_ ? "_8u_C3R" : "_8u_C1R"));
    }

    bool hasColours_, isForImages_;  // for a call with images; else for one that makes or releases a state
    RoiSize region_{}, more_{};      // more_: columns and rows of a state beyond the region
    float radius_;
    int32_t method_;
    bool isMarched_;  // the distances are those of fast marching, and not any numbers
    uint16_t seed_;
};

InpaintStateOfCall::InpaintStateOfCall(Input& input, const Export& target)
    : hasColours_(target.name.ends_with("C3R")), isForImages_(target.has("destination")) {
    constexpr float kRadii[] = {1, 3, 5, 1.5f, 2.2360679f, 20, std::numeric_limits<float>::infinity()};
    const auto length = [&](uint32_t most) { return 1 + static_cast<int32_t>(input.below(most)); };
    const int32_t width = length(200);
    region_ = {width, length(input.oneIn(2) ? 6 : 40)};
    radius_ = input.oneOf(kRadii);
    method_ = static_cast<int32_t>(input.below(2));
    isMarched_ = !input.oneIn(4);
    seed_ = input.take<uint16_t>();
}

void* InpaintStateOfCall::build(const Call& /*call*/) const {
    const RoiSize size{region_.width + more_.width, region_.height + more_.height};
    const Extent extent{0, 0, size.width, size.height};
    const Operand mask(Element::k8u, extent, 0, {}), distance(Element::k32f, extent, 0, {});
    mask.fill({Content::kMask, seed_});
    distance.fill({Content::kAny, seed_});
    const auto maskStep = static_cast<int32_t>(mask.step()), distanceStep = static_cast<int32_t>(distance.step());
    if (isMarched_) {
        int32_t bytes = 0;
        vekiFastMarchingGetBufferSize_8u32f_C1R(size, &bytes);
        std::vector<uint8_t> buffer(static_cast<size_t>(bytes));
        vekiFastMarching_8u32f_C1R(static_cast<const uint8_t*>(mask.pointer()), maskStep,
                                   static_cast<float*>(distance.pointer()), distanceStep, size, radius_, buffer.data());
    }
    void* state = nullptr;
    find("InitAlloc")
        .call(std::array{valueOf(&state), valueOf(distance.pointer()), valueOf(distanceStep), valueOf(mask.pointer()),
                         valueOf(maskStep), valueOf(size), valueOf(radius_), valueOf(method_)}
                  .data());
    return state;
}

/** What is restored with a state, and the status. */
std::vector<uint8_t> InpaintStateOfCall::observe(const Call& call, void* object) const {
    const size_t size = call.target->indexOf("roiSize");
    const RoiSize region = size == Export::kNone ? region_ : call.plainValues[size].as<RoiSize>();
    const Operand image(Element::k8u, {0, 0, int64_t{region.width} * channels(), region.height}, 0, {});
    image.fill({Content::kAny, seed_});
    const Value pixels = valueOf(image.pointer()), step = valueOf(static_cast<int32_t>(image.step()));
    const Status status =
        find("").call(std::array{pixels, step, pixels, step, valueOf(region), valueOf(object)}.data());
    std::vector<uint8_t> result = image.elements();
    result.push_back(static_cast<uint8_t>(status));
    return result;
}

std::string InpaintStateOfCall::describe() const {
    return "a state for " + std::to_string(region_.width + more_.width) + " x " +
           std::to_string(region_.height + more_.height) + ", radius " + std::to_string(radius_) + ", method " +
           std::to_string(method_);
}

std::optional<State::Bytes> InpaintStateOfCall::argument(std::string_view parameter) const {
    if (isForImages_ && parameter == "roiSize")
        return std::as_bytes(std::span(&region_, 1));
    return {};
}

std::string InpaintStateOfCall::addFault(Input& input, Call& call) {
    if (!isForImages_)
        return {};
    if (input.oneIn(2)) {
        (input.oneIn(2) ? more_.width : more_.height) = 1 + static_cast<int32_t>(input.below(3));
        return "a state for larger images";
    }
    hasColours_ = !call.target->name.ends_with("C3R");
    return "a state for another number of channels";
}

const StateType inpaintState("InpaintState", [](Input& input, const Export& target) -> std::unique_ptr<State> {
    return std::make_unique<InpaintStateOfCall>(input, target);
});

}  // namespace
}  // namespace fuzz
