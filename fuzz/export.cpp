#include "export.h"

#include <algorithm>
#include <type_traits>
#include <utility>

namespace fuzz {
namespace {

/** Whether T is an object of the library. Other structures are elements, listed here and in elementOf(). */
template <typename T>
constexpr bool isObject() {
    return std::is_class_v<T> && !std::is_same_v<T, ImagePoint> && !std::is_same_v<T, RoiSize> &&
           !std::is_same_v<T, ImageRect> && !std::is_same_v<T, ConnectedComponent> && !std::is_same_v<T, ImagePoint32f>;
}

template <typename T>
constexpr Element elementOf() {
    if constexpr (std::is_same_v<T, ImagePoint>)
        return Element::kPoint;
    else if constexpr (std::is_same_v<T, RoiSize>)
        return Element::kSize;
    else if constexpr (std::is_same_v<T, ImageRect>)
        return Element::kRectangle;
    else if constexpr (std::is_same_v<T, ImagePoint32f>)
        return Element::kPoint32f;
    else if constexpr (std::is_same_v<T, ConnectedComponent>)
        return Element::kComponent;
    else if constexpr (std::is_pointer_v<T> || isObject<T>())
        return Element::kPointer;
    else if constexpr (std::is_floating_point_v<T>)
        return sizeof(T) == 4 ? Element::k32f : Element::k64f;
    else if constexpr (sizeof(T) == 1)
        return std::is_signed_v<T> ? Element::k8s : Element::k8u;
    else if constexpr (sizeof(T) == 2)
        return std::is_signed_v<T> ? Element::k16s : Element::k16u;
    else
        return Element::k32s;
}

/** The name of a type, from the text that the compiler has for this function. */
template <typename T>
consteval std::string_view nameOf() {
    const std::string_view text = __PRETTY_FUNCTION__;
    const size_t begin = text.find("T = ") + 4;
    return text.substr(begin, text.find_first_of(";]", begin) - begin);
}

template <typename T>
constexpr Parameter parameterOf(std::string_view name) {
    if constexpr (!std::is_pointer_v<T>) {
        constexpr Kind kKind = std::is_same_v<T, ImagePoint>      ? Kind::kPoint
                               : std::is_same_v<T, ImagePoint32f> ? Kind::kPoint32f
                               : std::is_same_v<T, RoiSize>       ? Kind::kSize
                               : std::is_same_v<T, ImageRect>     ? Kind::kRectangle
                                                                  : Kind::kNumber;
        return {name, kKind, elementOf<T>(), true};
    } else {
        using Target = std::remove_pointer_t<T>;
        using Object = std::remove_cv_t<std::remove_pointer_t<Target>>;
        constexpr bool kIsConst = std::is_const_v<std::remove_pointer_t<Target>>;
        constexpr std::string_view kType = isObject<Object>() ? nameOf<Object>() : "";
        if constexpr (!std::is_pointer_v<Target>)
            return {name, isObject<Object>() ? Kind::kState : Kind::kPointer, elementOf<Object>(), kIsConst, kType};
        else
            return {name, isObject<Object>() ? Kind::kStateSlot : Kind::kRows, elementOf<Object>(), kIsConst, kType};
    }
}

std::vector<std::string_view> split(std::string_view names) {
    std::vector<std::string_view> all;
    while (!names.empty()) {
        all.push_back(names.substr(0, names.find(' ')));
        names.remove_prefix(std::min(all.back().size() + 1, names.size()));
    }
    return all;
}

template <auto Export, typename... Types, size_t... kIndices>
Status callWith(const Value* values, std::index_sequence<kIndices...>) {
    return Export(values[kIndices].template as<Types>()...);
}

/** An export without a status is listed only. */
template <auto Function, typename Result, typename... Types>
Export describe(std::string_view name, std::string_view names, Result(VEKCV_CALL*)(Types...)) {
    Export result{name, {}, nullptr};
    [[maybe_unused]] size_t index = 0;
    [[maybe_unused]] const std::vector<std::string_view> parts = split(names);
    (result.parameters.push_back(parameterOf<Types>(parts.at(index++))), ...);
    if constexpr (std::is_same_v<Result, Status>)
        result.call = [](const Value* values) {
            return callWith<Function, Types...>(values, std::index_sequence_for<Types...>());
        };
    return result;
}

}  // namespace

int64_t bytesOf(Element element) {
    switch (element) {
        case Element::k8u:
        case Element::k8s:
            return 1;
        case Element::k16u:
        case Element::k16s:
            return 2;
        case Element::k32s:
        case Element::k32f:
            return 4;
        case Element::kRectangle:
            return 16;
        case Element::kComponent:
            return sizeof(ConnectedComponent);
        default:
            return 8;
    }
}

size_t Export::indexOf(std::string_view parameter) const {
    const auto found =
        std::find_if(parameters.begin(), parameters.end(), [=](const Parameter& p) { return p.name == parameter; });
    return found == parameters.end() ? kNone : static_cast<size_t>(found - parameters.begin());
}

bool Export::isStepOf(size_t step, size_t image) const {
    if (step != image + 1 || step >= parameters.size() || !parameters[step].name.ends_with("Step"))
        return false;
    return parameters[step].name.substr(0, parameters[step].name.size() - 4) == parameters[image].name;
}

const std::vector<Export>& exports() {
    static const std::vector<Export> all = {
#define VEKCV_EXPORT(name, parameters) describe<&name>(#name, parameters, &name),
#include "vekcv_parameters.inc"
#undef VEKCV_EXPORT
    };
    return all;
}

const Export* findExport(std::string_view name) {
    const auto found =
        std::find_if(exports().begin(), exports().end(), [=](const Export& e) { return e.name == name; });
    return found == exports().end() ? nullptr : &*found;
}

}  // namespace fuzz
