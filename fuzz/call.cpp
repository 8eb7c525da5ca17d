#include "call.h"

#include <algorithm>
#include <cstdio>

namespace fuzz {
namespace {

std::string text(const Value& value, Element element) {
    return withType(element, [&]<typename T>(T) {
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.10g", static_cast<double>(value.as<T>()));
        return std::string(digits);
    });
}

/** The part of the address that is the same in every process, and the extent. */
std::string text(const Operand& operand) {
    const Extent extent = operand.extent();
    char place[32];
    std::snprintf(place, sizeof place, "...%03x",
                  static_cast<unsigned>(reinterpret_cast<uintptr_t>(operand.pointer()) & 0xFFF));
    return std::string(place) + " [columns " + std::to_string(extent.left) + " to " + std::to_string(extent.right - 1) +
           ", rows " + std::to_string(extent.top) + " to " + std::to_string(extent.bottom - 1) + "]";
}

int32_t dataTypeOf(Element element) {
    return element == Element::k8u ? 1 : element == Element::k8s ? 3 : element == Element::k16u ? 5 : 13;
}

}  // namespace

int32_t Call::channelsOf(size_t image) const {
    const Parameter& parameter = target->parameters[image];
    const size_t layout = target->name.rfind("_C");
    const bool isSingle = parameter.name == "mask" || parameter.name == "markers" || parameter.name == "distance" ||
                          parameter.name == "foreground";
    if (isSingle || layout == std::string_view::npos)
        return 1;
    const bool isReduced = !parameter.isConst && target->name.substr(layout).starts_with("_C3C1");
    return isReduced ? 1 : target->name[layout + 2] - '0';
}

std::optional<State::Bytes> Call::stateArgument(std::string_view parameter) const {
    for (const auto& state : states)
        if (state != nullptr)
            if (const auto bytes = state->argument(parameter))
                return bytes;
    return {};
}

bool Call::isArgumentOfQuery(std::string_view parameter) const {
    constexpr std::string_view kOthers[] = {"bufferSize", "roiWidth", "dataType", "channels"};
    return target->has(parameter) || std::ranges::find(kOthers, parameter) != std::end(kOthers);
}

Value Call::argumentOfQuery(std::string_view parameter) const {
    Value value;
    if (parameter == "roiWidth")
        value.set(plainValues[target->indexOf("roiSize")].as<RoiSize>().width);
    else if (parameter == "dataType")
        value.set(dataTypeOf(target->parameters[0].element));
    else if (parameter == "channels")
        value.set(channelsOf(0));
    else
        value = plainValues[target->indexOf(parameter)];
    return value;
}

std::string Call::describe() const {
    std::string all = std::string(target->name) + "(";
    for (size_t i = 0; i < values.size(); ++i) {
        const Parameter& parameter = target->parameters[i];
        all += (i == 0 ? "" : ", ") + std::string(parameter.name) + " = ";
        if (parameter.kind == Kind::kNumber) {
            all += text(values[i], parameter.element);
        } else if (parameter.kind == Kind::kPoint) {
            const auto point = values[i].as<ImagePoint>();
            all += "(" + std::to_string(point.x) + ", " + std::to_string(point.y) + ")";
        } else if (parameter.kind == Kind::kPoint32f) {
            const auto point = values[i].as<ImagePoint32f>();
            all += "(" + std::to_string(point.x) + ", " + std::to_string(point.y) + ")";
        } else if (parameter.kind == Kind::kSize) {
            const auto size = values[i].as<RoiSize>();
            all += std::to_string(size.width) + " x " + std::to_string(size.height);
        } else if (parameter.kind == Kind::kRectangle) {
            const auto r = values[i].as<ImageRect>();
            all += "{" + std::to_string(r.x) + ", " + std::to_string(r.y) + ", " + std::to_string(r.width) + ", " +
                   std::to_string(r.height) + "}";
        } else {
            all += isNull[i] ? "null" : operands[i] == nullptr ? "made for the call" : text(*operands[i]);
        }
    }
    all += ")";
    for (const auto& state : states)
        if (state != nullptr)
            all += " of " + state->describe();
    if (!fault.empty())
        all += " with " + fault;
    if (allowedAllocations < 100)
        all += " and memory for " + std::to_string(allowedAllocations) + " allocations";
    return hasTinyCache ? all + " and a tiny cache" : all;
}

}  // namespace fuzz
