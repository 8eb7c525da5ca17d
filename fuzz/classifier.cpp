#include "classifier.h"

#include <algorithm>
#include <array>
#include <bit>

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

}  // namespace

Features Features::draw(Input& input, bool hasFloats) {
    Features features{hasFloats, input.oneIn(3), input.oneIn(2), input.take<uint8_t>() % 2, {}, {}, {}, {}, {}, {}, {}};
    features.tiltsLater = features.tiltsLater && !features.isTilted;
    const bool isMinusOne = input.oneIn(2);
    const auto featureCount = static_cast<int32_t>(input.below(7));
    Random random(input.take<uint16_t>());
    const auto number = [&] {
        if (!hasFloats)
            return random.below(4) == 0 ? static_cast<uint32_t>(random.value<int32_t>()) : random.below(5) - 2;
        return std::bit_cast<uint32_t>(random.below(4) == 0 ? random.value<float>()
                                                            : static_cast<float>(random.below(5)) - 2);
    };
    const uint32_t minusOne = hasFloats ? std::bit_cast<uint32_t>(-1.0f) : static_cast<uint32_t>(-1);
    // Tilted rectangles must not begin left of the window.
    const auto mostHeight = [&](int32_t x) {
        return features.isTilted || features.tiltsLater ? static_cast<uint32_t>(x) + 1 : 9u;
    };
    for (int32_t i = 0; i < featureCount; ++i) {
        features.counts.push_back(1 + static_cast<int32_t>(random.below(5)));
        for (int32_t k = 0; k < features.counts.back(); ++k) {
            const auto x = static_cast<int32_t>(random.below(9));
            features.rectangles.push_back({x, static_cast<int32_t>(random.below(9)),
                                           1 + static_cast<int32_t>(random.below(9)),
                                           1 + static_cast<int32_t>(random.below(mostHeight(x)))});
            features.weights.push_back(k == 0 && isMinusOne ? minusOne : number());
        }
        features.thresholds.push_back(number());
        features.valuesBelow.push_back(number());
        features.valuesAbove.push_back(number());
        features.mask.push_back(random.mask());
    }
    return features;
}

HaarClassifier* Features::build() const {
    // There must be a first element of every array even without features.
    const ImageRect noRectangle{0, 0, 1, 1};
    const uint32_t nothing[1] = {};
    const int32_t one = 1;
    HaarClassifier* state = nullptr;
    const auto with = [&]<typename T>(auto initialise, T) {
        const auto numbers = [&](const std::vector<uint32_t>& bits) {
            return reinterpret_cast<const T*>(bits.empty() ? nothing : bits.data());
        };
        initialise(&state, rectangles.empty() ? &noRectangle : rectangles.data(), numbers(weights), numbers(thresholds),
                   numbers(valuesBelow), numbers(valuesAbove), counts.empty() ? &one : counts.data(), featureCount());
    };
    if (hasFloats)
        with(isTilted ? vekiTiltedHaarClassifierInitAlloc_32f : vekiHaarClassifierInitAlloc_32f, float());
    else
        with(isTilted ? vekiTiltedHaarClassifierInitAlloc_32s : vekiHaarClassifierInitAlloc_32s, int32_t());
    if (state != nullptr && tiltsLater && !mask.empty())
        (hasFloats ? vekiTiltHaarFeatures_32f : vekiTiltHaarFeatures_32s)(mask.data(), orientation, state);
    return state;
}

Extent Features::extentIn(Table table, RoiSize region) const {
    bool isEmpty = true;
    Corner least{}, most{};
    size_t next = 0;
    for (size_t feature = 0; feature < counts.size(); ++feature) {
        const bool becomesTilted = tiltsLater && mask[feature] != 0, tilted = isTilted || becomesTilted;
        for (int32_t k = 0; k < counts[feature]; ++k) {
            const ImageRect rectangle = rectangles[next++];
            if ((table == Table::kUpright && tilted) || (table == Table::kTilted && !tilted))
                continue;
            const int64_t moved = table == Table::kTilted ? 1 : 0;
            const Corners corners = isTilted        ? tiltedCorners(rectangle, true, 1)
                                    : becomesTilted ? tiltedCorners(rectangle, hasFloats, orientation)
                                                    : uprightCorners(rectangle);
            for (const Corner corner : corners) {
                const Corner at{corner.x + moved, corner.y + moved};
                least = isEmpty ? at : Corner{std::min(least.x, at.x), std::min(least.y, at.y)};
                most = isEmpty ? at : Corner{std::max(most.x, at.x), std::max(most.y, at.y)};
                isEmpty = false;
            }
        }
    }
    return {least.x, least.y, most.x + region.width, most.y + region.height};
}

namespace {

constexpr std::string_view kArrays[] = {"rectangles",  "weights",         "thresholds", "valuesBelow",
                                        "valuesAbove", "rectangleCounts", "featureMask"};

}  // namespace

bool Features::hasArray(std::string_view parameter) {
    return std::find(std::begin(kArrays), std::end(kArrays), parameter) != std::end(kArrays);
}

const void* Features::array(std::string_view parameter) const {
    const void* const arrays[] = {rectangles.data(),  weights.data(), thresholds.data(), valuesBelow.data(),
                                  valuesAbove.data(), counts.data(),  mask.data()};
    return arrays[std::find(std::begin(kArrays), std::end(kArrays), parameter) - std::begin(kArrays)];
}

int64_t Features::arrayLength(std::string_view parameter) const {
    const bool hasEach = parameter == "rectangles" || parameter == "weights";
    return static_cast<int64_t>(hasEach ? rectangles.size() : counts.size());
}

}  // namespace fuzz
