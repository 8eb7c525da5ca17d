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

/** The name of an export, from the text that the compiler has for this function; never looked for in a timed call. */
template <auto Export>
consteval std::string_view nameOf() {
    const std::string_view text = __PRETTY_FUNCTION__;
    const size_t begin = text.find("vek", text.find("Export = "));
    return text.substr(begin, text.find_first_of(";]", begin) - begin);
}

/** What the last part of a name tells: "C3IMR" has three channels, is in place and has a mask. */
struct Layout {
    int32_t channels, resultChannels;  // of C3C1 forms 3 and 1
    bool inPlace, masked;

    constexpr explicit Layout(std::string_view name) {
        constexpr std::string_view kScaled = "_Sfs";
        if (name.ends_with(kScaled))
            name.remove_suffix(kScaled.size());
        const std::string_view layout = name.substr(name.rfind('_') + 1);
        channels = layout[1] - '0';
        resultChannels = layout.starts_with("C3C1") ? 1 : channels;
        inPlace = layout.find('I') != layout.npos;
        masked = layout.find('M') != layout.npos;
    }
};

/** Columns and rows by which images are larger than the region. */
struct Excess {
    RoiSize sources{}, destinations{};
};

/**
 * Makes the arguments of a call from left to right: a pointer in front of the size is a new image, the integer behind
 * it the step of that image; behind the size a pointer is a result or the work buffer, a number is the next one of the
 * parameters, and a rectangle the next four.
 */
class Arguments {
  public:
    Arguments(Case& work, Layout layout, int maskIndex, Excess excess, int32_t bufferBytes)
        : case_(work), layout_(layout), maskIndex_(maskIndex), excess_(excess), bufferBytes_(bufferBytes) {}

    template <typename T>
    T next() {
        if constexpr (std::is_same_v<T, RoiSize>) {
            sizeIsPassed_ = true;
            return case_.size;
        } else if constexpr (std::is_pointer_v<T>) {
            return static_cast<T>(operand<std::remove_pointer_t<T>>().memory.get());
        } else if constexpr (std::is_same_v<T, ImageRect>) {
            return {next<int32_t>(), next<int32_t>(), next<int32_t>(), next<int32_t>()};
        } else {
            return sizeIsPassed_ ? static_cast<T>(case_.parameters.at(parameter_++))
                                 : static_cast<T>(case_.operands.back().step);
        }
    }

  private:
    template <typename T>
    Operand& operand() {
        using Value = std::remove_const_t<T>;
        const Role role = static_cast<int>(case_.operands.size()) == maskIndex_ ? Role::kMask
                          : std::is_const_v<T>                                  ? Role::kSource
                          : sizeIsPassed_ && bufferBytes_ > 0                   ? Role::kBuffer
                          : sizeIsPassed_                                       ? Role::kResult
                          : layout_.inPlace                                     ? Role::kInPlace
                                                                                : Role::kDestination;
        const int32_t channels = std::is_same_v<Value, ImagePoint>              ? 2
                                 : role == Role::kMask || role == Role::kResult ? 1
                                 : role == Role::kBuffer                        ? 1
                                 : role == Role::kDestination                   ? layout_.resultChannels
                                                                                : layout_.channels;
        case_.operands.push_back(Operand::make(role, elementOf<Value>(), channels, sizeOf(role)));
        return case_.operands.back();
    }

    RoiSize sizeOf(Role role) const {
        const RoiSize excess = role == Role::kSource        ? excess_.sources
                               : role == Role::kDestination ? excess_.destinations
                                                            : RoiSize{};
        if (role == Role::kBuffer)
            return {bufferBytes_, 1};
        return role == Role::kResult ? RoiSize{1, 1}
                                     : RoiSize{case_.size.width + excess.width, case_.size.height + excess.height};
    }

    Case& case_;
    Layout layout_;
    int maskIndex_;
    Excess excess_;
    int32_t bufferBytes_;
    bool sizeIsPassed_ = false;
    size_t parameter_ = 0;
};

inline void expectOk(Status status, std::string_view name) {
    if (status != StatusOk)
        fail(std::string(name) + " gives " + vekGetStatusString(status));
}

/**
 * The bytes of a work buffer that is large enough for all numbers of threads that are measured, from the query that
 * takes the parameters between the size and the result.
 */
template <auto Query, int32_t... kParameters>
int32_t bufferBytes(RoiSize size) {
    int threads = 1;
    vekGetNumThreads(&threads);
    vekSetNumThreads(kMostThreads);
    int32_t bytes = 0;
    expectOk(Query(size, kParameters..., &bytes), nameOf<Query>());
    vekSetNumThreads(threads);
    return bytes;
}

/** What a row adds to the arguments that follow from the declaration. */
struct Setup {
    std::vector<double> parameters{};
    Excess excess{};
    void (*content)(const Case&) = nullptr;
    int32_t (*bufferBytes)(RoiSize) = nullptr;  // of the work buffer
};

template <auto Export, typename... Types>
Work prepareExport(Status(VEKCV_CALL*)(Types...), RoiSize size, const Setup& setup, Peer* peer) {
    constexpr Layout kLayout(nameOf<Export>());
    // The mask is the last of the images that are only read.
    constexpr int kMaskIndex =
        kLayout.masked ? ((std::is_pointer_v<Types> && std::is_const_v<std::remove_pointer_t<Types>> ? 1 : 0) + ...) - 1
                       : -1;
    Work work{{size, setup.parameters, {}, setup.content}, {}, {}};
    const int32_t bytes = setup.bufferBytes == nullptr ? 0 : setup.bufferBytes(size);
    Arguments arguments(work.data, kLayout, kMaskIndex, setup.excess, bytes);
    work.vekcv = [values = std::tuple<Types...>{arguments.template next<Types>()...}] {
        expectOk(std::apply(Export, values), nameOf<Export>());
    };
    if (peer != nullptr)
        work.peer = peer(work.data);
    return work;
}

/** The row of an export with its peer, where there is one, and with what else it needs. */
template <auto Export>
Row row(Peer* peer, const Setup& setup) {
    return {std::string(nameOf<Export>()),
            [=](RoiSize size) { return prepareExport<Export>(Export, size, setup, peer); }};
}

/** The row of an export with its peer, where there is one, and with the values of its parameters. */
template <auto Export>
Row row(Peer* peer = nullptr, const std::vector<double>& parameters = {}) {
    return row<Export>(peer, Setup{.parameters = parameters});
}

}  // namespace bench
