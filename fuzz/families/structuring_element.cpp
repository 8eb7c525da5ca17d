#include "families/structuring_element.h"

#include <algorithm>

#include "random.h"
#include "window.h"

namespace fuzz {
namespace {

/** A place in a mask of w x h places. */
struct At {
    int64_t x, y, w, h;

    /** The square of the distance from the centre, relative to the ellipse that fills the mask: within(1, 1). */
    bool isWithin(int64_t numerator, int64_t denominator) const {
        const auto square = [](int64_t value) { return value * value; };
        const int64_t distance = square((2 * x + 1 - w) * h) + square((2 * y + 1 - h) * w);
        return distance * denominator <= square(w * h) * numerator;
    }
};

struct Shape {
    const char* name;
    bool (*isMember)(At at, Random& random);
};

constexpr Shape kShapes[] = {
    {"full mask", [](At, Random&) { return true; }},
    {"cross", [](At at, Random&) { return at.x == at.w / 2 || at.y == at.h / 2; }},
    {"ellipse", [](At at, Random&) { return at.isWithin(1, 1); }},
    {"ring", [](At at, Random&) { return at.isWithin(1, 1) && !at.isWithin(1, 2); }},
    {"diagonal", [](At at, Random&) { return at.x == at.y * at.w / at.h; }},
    {"rising diagonal", [](At at, Random&) { return at.x == at.w - 1 - at.y * at.w / at.h; }},
    {"broad diagonal", [](At at, Random&) { return at.x >= at.y && at.x < at.y + (at.w + 1) / 2; }},
    {"triangle", [](At at, Random&) { return at.x <= at.y * at.w / at.h; }},
    {"sparse mask", [](At, Random& random) { return random.below(10) == 0; }},
    {"mask", [](At, Random& random) { return random.below(2) == 0; }},
    {"dense mask", [](At, Random& random) { return random.below(10) != 0; }},
    {"single member", [](At, Random&) { return false; }},
};

/** The heights of members are of one kind, which `choice` tells. */
template <typename T>
T drawHeight(uint32_t choice, Random& random) {
    const auto within = [&](int32_t most) {
        return static_cast<T>(static_cast<int32_t>(random.below(2 * static_cast<uint32_t>(most) + 1)) - most);
    };
    switch (choice) {
        case 0:
            return T(0);
        case 1:
            return within(8);
        case 2:
            return within(300);
        default:
            return random.value<T>();
    }
}

}  // namespace

StructuringElement StructuringElement::draw(Input& input) {
    StructuringElement element{drawWindow(input), {}, {}, {}};
    const auto [w, h] = element.size;
    element.anchor = drawAnchor(input, element.size);
    const Shape& shape = input.oneOf(kShapes);
    const uint32_t heights = input.below(4);
    Random random(input.take<uint16_t>());
    element.shape = shape.name;

    const uint32_t certain = random.below(static_cast<uint32_t>(w * h));
    bool isEmpty = true;
    const auto add = [&](bool isMember) {
        constexpr uint8_t kSet[] = {1, 2, 128, 255};
        element.members.push_back(isMember ? kSet[random.below(4)] : 0);
        isEmpty = isEmpty && !isMember;
    };
    for (int32_t y = 0; y < h; ++y)
        for (int32_t x = 0; x < w; ++x)
            add(shape.isMember({x, y, w, h}, random));
    if (isEmpty)
        element.members[certain] = 1;

    for (const uint8_t member : element.members) {
        const auto integer = drawHeight<int32_t>(heights, random);
        const auto number = drawHeight<float>(heights, random);
        const bool isLow = random.below(2) == 0;
        if (member == 0) {
            element.heights.push_back(kNoHeight);
            element.heights32f.push_back(isLow ? -std::numeric_limits<float>::infinity() : kNoHeight32f);
        } else {
            element.heights.push_back(std::max(integer, kNoHeight + 1));
            // NaN is not supported.
            element.heights32f.push_back(number > kNoHeight32f ? number : -0.0f);
        }
    }
    return element;
}

int64_t StructuringElement::memberCount() const {
    return std::ranges::count_if(members, [](uint8_t member) { return member != 0; });
}

std::string StructuringElement::describe() const {
    return std::string(shape) + " of " + std::to_string(size.width) + " x " + std::to_string(size.height) + " with " +
           std::to_string(memberCount()) + " members and anchor (" + std::to_string(anchor.x) + ", " +
           std::to_string(anchor.y) + ")";
}

}  // namespace fuzz
