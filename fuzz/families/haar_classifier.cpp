#include <algorithm>
#include <array>
#include <bit>
#include <climits>

#include "call.h"
#include "state.h"

namespace fuzz {
namespace {

struct Corner {
    int64_t x, y;
};
using Corners = std::array<Corner, 4>;

Corners uprightCorners(ImageRect r) {
    return {{{r.x + r.width, r.y + r.height}, {r.x, r.y + r.height}, {r.x + r.width, r.y}, {r.x, r.y}}};
}

Corners tiltedCorners(ImageRect r, bool hasFloats, int32_t orientation) {
    const int64_t x = r.x, y = r.y, w = r.width, h = r.height;
    if (hasFloats && orientation != 0)
        return {{{x + w - h, y + w + h}, {x - h, y + h}, {x + w, y + w}, {x, y}}};
    if (hasFloats)
        return {{{x, y + h}, {x - h, y}, {x + w, y + h - w}, {x + w - h, y - w}}};
    if (orientation != 0)
        return {{{x, y + 2 * w}, {x - w, y + w}, {x + w, y + w}, {x, y}}};
    return {{{x, y + h}, {x - w, y + h - w}, {x + w, y + h - w}, {x, y + h - 2 * w}}};
}

/** What a classifier is built from, and what becomes of it before it is used. */
class Features : public State {
  public:
    Features(Input& input, bool hasFloats);

    void* build(const Call& call) const override;
    void release(void* object) const override { vekiHaarClassifierFree_32f(static_cast<HaarClassifier*>(object)); }
    std::vector<uint8_t> observe(const Call& call, void* object) const override;
    std::string describe() const override;
    std::optional<Bytes> argument(std::string_view parameter) const override;
    std::optional<Extent> extentOf(const Call& call, size_t image) const override;
    std::string addFault(Input& input, Call& call) override;

  private:
    bool hasFloats_;   // else integers
    bool isTilted_;    // built as a tilted classifier
    bool tiltsLater_;  // some features of an upright classifier, by `mask_` and `orientation_`
    int32_t orientation_;
    int32_t featureCount_;
    std::vector<ImageRect> rectangles_;
    std::vector<uint32_t> weights_, thresholds_, valuesBelow_, valuesAbove_;  // the bits of the numbers
    std::vector<int32_t> counts_;
    std::vector<uint8_t> mask_;
};

Features::Features(Input& input, bool hasFloats) : hasFloats_(hasFloats) {
    isTilted_ = input.oneIn(3);
    tiltsLater_ = input.oneIn(2) && !isTilted_;
    orientation_ = input.take<uint8_t>() % 2;
    const bool isMinusOne = input.oneIn(2);
    featureCount_ = static_cast<int32_t>(input.below(7));
    Random random(input.take<uint16_t>());
    const auto number = [&] {
        if (!hasFloats)
            return random.below(4) == 0 ? static_cast<uint32_t>(random.value<int32_t>()) : random.below(5) - 2;
        return std::bit_cast<uint32_t>(random.below(4) == 0 ? random.value<float>()
                                                            : static_cast<float>(random.below(5)) - 2);
    };
    const uint32_t minusOne = hasFloats ? std::bit_cast<uint32_t>(-1.0f) : static_cast<uint32_t>(-1);
    // Tilted rectangles must not begin left of the window.
    const auto mostHeight = [&](int32_t x) { return isTilted_ || tiltsLater_ ? static_cast<uint32_t>(x) + 1 : 9u; };
    for (int32_t i = 0; i < featureCount_; ++i) {
        counts_.push_back(1 + static_cast<int32_t>(random.below(5)));
        for (int32_t k = 0; k < counts_.back(); ++k) {
            const auto x = static_cast<int32_t>(random.below(9));
            rectangles_.push_back({x, static_cast<int32_t>(random.below(9)), 1 + static_cast<int32_t>(random.below(9)),
                                   1 + static_cast<int32_t>(random.below(mostHeight(x)))});
            weights_.push_back(k == 0 && isMinusOne ? minusOne : number());
        }
        thresholds_.push_back(number());
        valuesBelow_.push_back(number());
        valuesAbove_.push_back(number());
        mask_.push_back(random.mask());
    }
}

void* Features::build(const Call& /*call*/) const {
    // There must be a first element of every array even without features.
    const ImageRect noRectangle{0, 0, 1, 1};
    const uint32_t nothing[1] = {};
    const int32_t one = 1;
    HaarClassifier* state = nullptr;
    const auto with = [&]<typename T>(auto initialise, T) {
        const auto numbers = [&](const std::vector<uint32_t>& bits) {
            return reinterpret_cast<const T*>(bits.empty() ? nothing : bits.data());
        };
        initialise(&state, rectangles_.empty() ? &noRectangle : rectangles_.data(), numbers(weights_),
                   numbers(thresholds_), numbers(valuesBelow_), numbers(valuesAbove_),
                   counts_.empty() ? &one : counts_.data(), featureCount_);
    };
    if (hasFloats_)
        with(isTilted_ ? vekiTiltedHaarClassifierInitAlloc_32f : vekiHaarClassifierInitAlloc_32f, float());
    else
        with(isTilted_ ? vekiTiltedHaarClassifierInitAlloc_32s : vekiHaarClassifierInitAlloc_32s, int32_t());
    if (state != nullptr && tiltsLater_ && !mask_.empty())
        (hasFloats_ ? vekiTiltHaarFeatures_32f : vekiTiltHaarFeatures_32s)(mask_.data(), orientation_, state);
    return state;
}

std::vector<uint8_t> Features::observe(const Call& /*call*/, void* object) const {
    RoiSize window{};
    vekiGetHaarClassifierSize_32f(static_cast<const HaarClassifier*>(object), &window);
    const auto* const bytes = reinterpret_cast<const uint8_t*>(&window);
    return {bytes, bytes + sizeof window};
}

std::string Features::describe() const {
    return std::to_string(featureCount_) + " features" + (isTilted_ ? ", tilted" : tiltsLater_ ? ", tilted later" : "");
}

std::optional<State::Bytes> Features::argument(std::string_view parameter) const {
    const std::pair<std::string_view, Bytes> arguments[] = {
        {"rectangles", std::as_bytes(std::span(rectangles_))},
        {"weights", std::as_bytes(std::span(weights_))},
        {"thresholds", std::as_bytes(std::span(thresholds_))},
        {"valuesBelow", std::as_bytes(std::span(valuesBelow_))},
        {"valuesAbove", std::as_bytes(std::span(valuesAbove_))},
        {"rectangleCounts", std::as_bytes(std::span(counts_))},
        {"featureCount", std::as_bytes(std::span(&featureCount_, 1))},
        {"featureMask", std::as_bytes(std::span(mask_))},
    };
    for (const auto& [name, bytes] : arguments)
        if (name == parameter)
            return bytes;
    return {};
}

/** The elements of a table that windows at the positions of the region read. */
std::optional<Extent> Features::extentOf(const Call& call, size_t image) const {
    const std::string_view name = call.target->parameters[image].name;
    if (!name.ends_with("ntegral"))
        return {};
    // The functions with one table read all features from it, those with two the tilted ones from the second.
    const bool hasBoth = call.target->has("tiltedIntegral"), isSecond = name == "tiltedIntegral";
    bool isEmpty = true;
    Corner least{}, most{};
    size_t next = 0;
    for (size_t feature = 0; feature < counts_.size(); ++feature) {
        const bool becomesTilted = tiltsLater_ && mask_[feature] != 0;
        for (int32_t k = 0; k < counts_[feature]; ++k) {
            const ImageRect rectangle = rectangles_[next++];
            if (hasBoth && isSecond != (isTilted_ || becomesTilted))
                continue;
            const Corners corners = isTilted_       ? tiltedCorners(rectangle, true, 1)
                                    : becomesTilted ? tiltedCorners(rectangle, hasFloats_, orientation_)
                                                    : uprightCorners(rectangle);
            for (const Corner corner : corners) {
                const int64_t moved = isSecond ? 1 : 0;
                const Corner at{corner.x + moved, corner.y + moved};
                least = isEmpty ? at : Corner{std::min(least.x, at.x), std::min(least.y, at.y)};
                most = isEmpty ? at : Corner{std::max(most.x, at.x), std::max(most.y, at.y)};
                isEmpty = false;
            }
        }
    }
    const auto region = call.value("roiSize").as<RoiSize>();
    return Extent{least.x, least.y, most.x + region.width, most.y + region.height};
}

/** A number of features, of rectangles of a feature, or a rectangle that is out of range. */
std::string Features::addFault(Input& input, Call& call) {
    const size_t counts = call.target->indexOf("rectangleCounts");
    if (counts == Export::kNone)
        return {};
    if (input.oneIn(4)) {
        call.values[call.target->indexOf("featureCount")].set(-1 - static_cast<int32_t>(input.below(2)));
        return "a bad number of features";
    }
    if (featureCount_ == 0)
        return {};
    const bool isCount = input.oneIn(2);
    Operand& operand = *call.operands[isCount ? counts : call.target->indexOf("rectangles")];
    const uint32_t place = input.below(static_cast<uint32_t>(operand.extent().columns()));
    if (isCount) {
        static_cast<int32_t*>(operand.pointer())[place] = input.oneIn(2) ? 0 : INT_MIN;
    } else {
        constexpr ImageRect kBad[] = {{-1, 0, 1, 1}, {0, INT_MIN, 1, 1}, {5, 5, 0, 1},
                                      {5, 5, 1, 0},  {5, 5, INT_MIN, 1}, {5, 5, -1, -1}};
        static_cast<ImageRect*>(operand.pointer())[place] = input.oneOf(kBad);
    }
    operand.save();
    return isCount ? "a bad number of rectangles" : "a bad rectangle";
}

const StateType haarClassifier("HaarClassifier", [](Input& input, const Export& target) -> std::unique_ptr<State> {
    return std::make_unique<Features>(input, target.name.find("32f") != std::string_view::npos);
});

}  // namespace
}  // namespace fuzz
