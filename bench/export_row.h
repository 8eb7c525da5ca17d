// The row of an export in one line, for exports whose arguments are images, the size, parameters and results.
#pragma once

#include <string_view>
#include <tuple>
#include <type_traits>

#include "row.h"
#include "vekcore.h"

namespace bench {

template <typename T>
constexpr Element elementOf() {
    if constexpr (std::is_floating_point_v<T>)
        return sizeof(T) == 4 ? Element::k32f : Element::k64f;
    else if constexpr (sizeof(T) == 1)
        return std::is_signed_v<T> ? Element::k8s : Element::k8u;
    else if constexpr (sizeof(T) == 2)
        return std::is_signed_v<T> ? Element::k16s : Element::k16u;
    else
        return Element::k32s;
}

/** The name of an export, from the text that the compiler has for this function. */
template <auto Export>
constexpr std::string_view nameOf() {
    const std::string_view text = __PRETTY_FUNCTION__;
    const size_t begin = text.find("vek", text.find("Export = "));
    return text.substr(begin, text.find_first_of(";]", begin) - begin);
}

/** What the last part of a name tells: "C3IMR" has three channels, is in place and has a mask. */
struct Layout {
    int32_t channels;
    bool inPlace, masked;

    constexpr explicit Layout(std::string_view name) {
        const std::string_view layout = name.substr(name.rfind('_') + 1);
        channels = layout[1] - '0';
        inPlace = layout.find('I') != layout.npos;
        masked = layout.find('M') != layout.npos;
    }
};

/**
 * Makes the arguments of a call from left to right: a pointer in front of the size is a new image, the integer behind
 * it the step of that image; behind the size a pointer is a result, and a number is the next one of the parameters.
 */
class Arguments {
  public:
    Arguments(Case& work, Layout layout, int maskIndex) : case_(work), layout_(layout), maskIndex_(maskIndex) {}

    template <typename T>
    T next() {
        if constexpr (std::is_same_v<T, RoiSize>) {
            sizeIsPassed_ = true;
            return case_.size;
        } else if constexpr (std::is_pointer_v<T>) {
            return static_cast<T>(operand<std::remove_pointer_t<T>>().memory.get());
        } else {
            return sizeIsPassed_ ? static_cast<T>(case_.parameters.at(parameter_++))
                                 : static_cast<T>(case_.operands.back().step);
        }
    }

  private:
    template <typename T>
    Operand& operand() {
        const bool isMask = static_cast<int>(case_.operands.size()) == maskIndex_;
        const Role role = isMask                              ? Role::kMask
                          : std::is_const_v<T>                ? Role::kSource
                          : layout_.inPlace && !sizeIsPassed_ ? Role::kInPlace
                                                              : Role::kDestination;
        const bool isImage = !sizeIsPassed_ && !isMask;
        case_.operands.push_back(Operand::make(role, elementOf<std::remove_const_t<T>>(),
                                               isImage ? layout_.channels : 1,
                                               sizeIsPassed_ ? RoiSize{1, 1} : case_.size));
        return case_.operands.back();
    }

    Case& case_;
    Layout layout_;
    int maskIndex_;
    bool sizeIsPassed_ = false;
    size_t parameter_ = 0;
};

template <auto Export, typename... Types>
Work prepareExport(Status(VEKCV_CALL*)(Types...), RoiSize size, const std::vector<double>& parameters, Peer* peer) {
    constexpr Layout kLayout(nameOf<Export>());
    // The mask is the last of the images that are only read.
    constexpr int kMaskIndex =
        kLayout.masked ? ((std::is_pointer_v<Types> && std::is_const_v<std::remove_pointer_t<Types>> ? 1 : 0) + ...) - 1
                       : -1;
    Work work{{size, parameters, {}}, {}, {}};
    Arguments arguments(work.data, kLayout, kMaskIndex);
    work.vekcv = [values = std::tuple<Types...>{arguments.template next<Types>()...}] {
        if (const Status status = std::apply(Export, values); status != StatusOk)
            fail(std::string(nameOf<Export>()) + " gives " + vekGetStatusString(status));
    };
    if (peer != nullptr)
        work.peer = peer(work.data);
    return work;
}

/** The row of an export with the values of its parameters and, where there is one, the peer. */
template <auto Export>
Row row(Peer* peer = nullptr, const std::vector<double>& parameters = {}) {
    return {std::string(nameOf<Export>()),
            [=](RoiSize size) { return prepareExport<Export>(Export, size, parameters, peer); }};
}

}  // namespace bench
